# LAPACK's test programs (Debian's liblapack-test, with Debian's reference
# liblapack.so.3) over zar's libblas.so.3, one test per program and input.
# The runs and what each reports over the reference BLAS come from
# lapack_baseline.txt (record_lapack_baseline.sh writes it); a run passes
# when it reports no more failures than its baseline line. All of them
# together take about two and a half minutes of one core over the reference
# BLAS (the seconds= field; CTest starts the long ones first).
#
# Runs listed in ZAR_LAPACK_OPEN report more failures over zar than over the
# reference BLAS and are not resolved yet; they carry the label
# "open-failure", which `make check` leaves out and `make check-full` runs.
# xlintstrfc ctest_rfp: the CTFSM case (CFORM N, SIDE L, UPLO U, TRANS C,
# DIAG U, M = N = 50) has the test ratio 30.07 over zar against the
# threshold 30 (24.1 over the reference BLAS, 27.5 over OpenBLAS): a unit
# triangular matrix whose solve magnifies rounding differences.
set(ZAR_LAPACK_OPEN xlintstrfc_ctest_rfp)
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
  set(labels lapack)
  if("${program}_${input}" IN_LIST ZAR_LAPACK_OPEN)
    list(APPEND labels open-failure)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS "${labels}" COST ${seconds})
endforeach()
