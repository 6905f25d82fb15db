// x?trmm: B := alpha op(A) B (side left) or alpha B op(A) (side right), in
// place (tri.h); alpha 0 clears B without reading A.
#include "blas/level3/tri.h"

#define ZAR_TRMM(t, T, R) ZAR_TRI_EXPORT(t, T, trmm, mul)
ZAR_L3_ALL(ZAR_TRMM)
