/* Fortran BLAS Level-3 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. */
#ifndef ZAR_BLAS_LEVEL3_H
#define ZAR_BLAS_LEVEL3_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
