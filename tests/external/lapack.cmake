# LAPACK's test programs (Debian's liblapack-test, with Debian's reference
# liblapack.so.3) over zar's libblas.so.3, one test per program and input.
# The runs and what each reports over the reference BLAS come from
# lapack_baseline.txt (record_lapack_baseline.sh writes it); a run passes
# when it reports no more failures than its baseline line. All of them
# together take about two and a half minutes of one core over the reference
# BLAS (the seconds= field; CTest starts the long ones first).
set(ZAR_LAPACK_DIR /usr/lib/i386-linux-gnu/lapack)
set(baseline ${CMAKE_CURRENT_SOURCE_DIR}/lapack_baseline.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${baseline})
file(STRINGS ${baseline} runs REGEX "^xl|^xe")
foreach(run ${runs})
  string(REGEX MATCH "^([a-z]+) ([a-z_0-9]+)\\.in .* seconds=([0-9]+)" _ "${run}")
  set(program ${CMAKE_MATCH_1})
  set(input ${CMAKE_MATCH_2})
  set(seconds ${CMAKE_MATCH_3})
  set(name lapack_${program}_${input})
  add_test(NAME ${name}
    COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/run_lapack.sh ${ZAR_LIB_DIR} ${ZAR_LAPACK_DIR}/${program}
      ${ZAR_LAPACK_DIR}/${input}.in ${baseline} "${ZAR_RUNTIME_PRELOAD}"
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  set_tests_properties(${name} PROPERTIES LABELS lapack COST ${seconds})
endforeach()
