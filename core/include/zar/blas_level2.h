/* Fortran BLAS Level-2 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. */
#ifndef ZAR_BLAS_LEVEL2_H
#define ZAR_BLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
