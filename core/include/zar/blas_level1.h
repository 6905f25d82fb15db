/* Fortran BLAS Level-1 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. */
#ifndef ZAR_BLAS_LEVEL1_H
#define ZAR_BLAS_LEVEL1_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
