# Level-3 BLAS: the reference test programs (Fortran and CBLAS interfaces),
# each with the input file Debian ships beside it: every routine, every
# error exit.
foreach(t s d c z)
  zar_external_test(blas3_${t} xblat3${t} ${ZAR_REFBLAS_DIR}/${t}blat3.in)
  zar_external_test(cblas3_${t} x${t}cblat3 ${ZAR_REFBLAS_DIR}/${t}in3)
endforeach()
