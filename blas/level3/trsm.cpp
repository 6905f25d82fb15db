// x?trsm: solve op(A) X = alpha B (side left) or X op(A) = alpha B (side
// right) for X, which overwrites B. B is scaled by alpha first (alpha 0
// clears B without reading A), then solved (tri.h).
#include "blas/level3/tri.h"

#define ZAR_TRSM(t, T, R) ZAR_TRI_EXPORT(t, T, trsm, solve)
ZAR_L3_ALL(ZAR_TRSM)
