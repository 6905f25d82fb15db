# Level-1 BLAS: the reference test programs for the Fortran and the CBLAS
# interfaces (they print their report; no input file).
foreach(t s d c z)
  zar_external_test(blas1_${t} xblat1${t})
  zar_external_test(cblas1_${t} x${t}cblat1)
endforeach()
