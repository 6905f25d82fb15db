# Level-2 BLAS: the reference test programs (Fortran and CBLAS interfaces),
# each with the input file Debian ships beside it.
foreach(t s d c z)
  zar_external_test(blas2_${t} xblat2${t} ${ZAR_REFBLAS_DIR}/${t}blat2.in)
  zar_external_test(cblas2_${t} x${t}cblat2 ${ZAR_REFBLAS_DIR}/${t}in2)
endforeach()
