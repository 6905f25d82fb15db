# Level-3 BLAS: a smoke run of the reference test programs (Fortran and
# CBLAS interfaces) on GEMM alone. The input files are Debian's, with every
# routine but ?GEMM switched off. The programs bind every Level-3 name when
# they start, so until the other Level-3 routines exist a preloaded library
# stands in for them: each stand-in stops the program if it is ever called
# (the inputs make sure it is not).
set(stub_names)
foreach(t s d c z)
  foreach(r symm trmm trsm syrk syr2k)
    list(APPEND stub_names ${t}${r}_ cblas_${t}${r})
  endforeach()
endforeach()
foreach(t c z)
  foreach(r hemm herk her2k)
    list(APPEND stub_names ${t}${r}_ cblas_${t}${r})
  endforeach()
endforeach()
set(stub_code "#include <stdio.h>\n#include <stdlib.h>\n")
foreach(n ${stub_names})
  string(APPEND stub_code "void ${n}(void) { fputs(\"${n} is not part of the GEMM smoke run\\n\", stderr); abort(); }\n")
endforeach()
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/level3_standins.c "${stub_code}")
add_library(level3_standins SHARED ${CMAKE_CURRENT_BINARY_DIR}/level3_standins.c)

foreach(t s d c z)
  foreach(pair "${t}blat3.in;xblat3${t};blas3_gemm_${t}" "${t}in3;x${t}cblat3;cblas3_gemm_${t}")
    list(GET pair 0 input)
    list(GET pair 1 program)
    list(GET pair 2 name)
    file(READ ${ZAR_REFBLAS_DIR}/${input} text)
    string(REGEX REPLACE "([A-Za-z_0-9]+ +)T( PUT F)" "\\1F\\2" text "${text}")
    string(REGEX REPLACE "(gemm|GEMM)( +)F( PUT F)" "\\1\\2T\\3" text "${text}")
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.in "${text}")
    zar_external_test(${name} ${program} ${CMAKE_CURRENT_BINARY_DIR}/${name}.in)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "ZAR_TEST_PRELOAD=$<TARGET_FILE:level3_standins>")
  endforeach()
endforeach()
