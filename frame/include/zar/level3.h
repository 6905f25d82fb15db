// Level-3 BLAS kernels of the kernel library: the contract between the
// core's front ends and the drivers. Prototypes of every exported Level-3
// kernel, generated from the type lists below, so that the core's ZAR_KERNEL
// calls are type-checked.
//
// Every argument is passed by address in the published order; the drivers
// check nothing (the core's front ends have checked the arguments and taken
// the published quick returns). Option characters are case-insensitive:
// side 'L' (else right), uplo 'U' (else lower), trans 'N', 'T' or 'C' ('C'
// reads as 'T' for real data), diag 'N' (else unit).
//
// The drivers run on one thread. The core divides large problems among its
// threads: trsm, trmm, symm and hemm by columns of B/C (side left) or rows
// (side right), each part an independent call of the driver; the routines
// that update one triangle of C (syrk, herk, syr2k, her2k, gemmt) through
// their _in_thread bodies, which compute the columns [first, last) of the
// referenced triangle only. A result does not depend on that division.
#pragma once
#include "zar/types.h"

// Type lists: (letter, element type, real type)
#define ZAR_L3_REAL(X) X(s, float, float) X(d, double, double)
#define ZAR_L3_CPLX(X) X(c, zar::c32, float) X(z, zar::c64, double)
#define ZAR_L3_ALL(X) ZAR_L3_REAL(X) ZAR_L3_CPLX(X)

// Argument lists shared by declarations and definitions.
#define ZAR_L3_GEMM_ARGS(T)                                                                                \
  const char *transa, const char *transb, const int *m, const int *n, const int *k, const T *alpha,       \
      const T *a, const int *lda, const T *b, const int *ldb, const T *beta, T *c, const int *ldc
#define ZAR_L3_TRSM_ARGS(T)                                                                                \
  const char *side, const char *uplo, const char *transa, const char *diag, const int *m, const int *n,   \
      const T *alpha, const T *a, const int *lda, T *b, const int *ldb
#define ZAR_L3_SYMM_ARGS(T)                                                                                \
  const char *side, const char *uplo, const int *m, const int *n, const T *alpha, const T *a,             \
      const int *lda, const T *b, const int *ldb, const T *beta, T *c, const int *ldc
// syrk (S = T) and herk (S = real type: alpha and beta are real)
#define ZAR_L3_SYRK_ARGS(T, S)                                                                             \
  const char *uplo, const char *trans, const int *n, const int *k, const S *alpha, const T *a,            \
      const int *lda, const S *beta, T *c, const int *ldc
// syr2k (S = T) and her2k (S = real type: beta is real, alpha complex)
#define ZAR_L3_SYR2K_ARGS(T, S)                                                                            \
  const char *uplo, const char *trans, const int *n, const int *k, const T *alpha, const T *a,            \
      const int *lda, const T *b, const int *ldb, const S *beta, T *c, const int *ldc
#define ZAR_L3_GEMMT_ARGS(T)                                                                               \
  const char *uplo, const char *transa, const char *transb, const int *n, const int *k, const T *alpha,   \
      const T *a, const int *lda, const T *b, const int *ldb, const T *beta, T *c, const int *ldc
// the per-thread bodies add the half-open column range [first, last) of C
#define ZAR_L3_RANGE const int *first, const int *last
// Groups of shapes: group g holds group_size[g] products sharing its
// options, sizes and scalars; a, b, c list the matrices of all groups in
// order.
#define ZAR_L3_GEMM_BATCH_ARGS(T)                                                                          \
  const char *transa, const char *transb, const int *m, const int *n, const int *k, const T *alpha,       \
      const T **a, const int *lda, const T **b, const int *ldb, const T *beta, T **c, const int *ldc,      \
      const int *group_count, const int *group_size
// batch_size products of one shape, the matrices stride elements apart
#define ZAR_L3_GEMM_STRIDED_ARGS(T)                                                                        \
  const char *transa, const char *transb, const int *m, const int *n, const int *k, const T *alpha,       \
      const T *a, const int *lda, const int *stridea, const T *b, const int *ldb, const int *strideb,     \
      const T *beta, T *c, const int *ldc, const int *stridec, const int *batch_size

#define ZAR_L3_DECLARE_ALL(t, T, R)                                                                        \
  void zar_blas_avx_x##t##trsm(ZAR_L3_TRSM_ARGS(T));                                                     \
  void zar_blas_avx_x##t##trmm(ZAR_L3_TRSM_ARGS(T));                                                     \
  void zar_blas_avx_x##t##symm(ZAR_L3_SYMM_ARGS(T));                                                     \
  void zar_blas_avx_x##t##syrk(ZAR_L3_SYRK_ARGS(T, T));                                                  \
  void zar_blas_avx_x##t##syrk_in_thread(ZAR_L3_SYRK_ARGS(T, T), ZAR_L3_RANGE);                          \
  void zar_blas_avx_x##t##syr2k(ZAR_L3_SYR2K_ARGS(T, T));                                                \
  void zar_blas_avx_x##t##syr2k_in_thread(ZAR_L3_SYR2K_ARGS(T, T), ZAR_L3_RANGE);                        \
  void zar_blas_avx_x##t##gemmt(ZAR_L3_GEMMT_ARGS(T));                                                   \
  void zar_blas_avx_x##t##gemmt_in_thread(ZAR_L3_GEMMT_ARGS(T), ZAR_L3_RANGE);                           \
  void zar_blas_avx_x##t##gemm_batch(ZAR_L3_GEMM_BATCH_ARGS(T));                                         \
  void zar_blas_avx_x##t##gemm_batch_strided(ZAR_L3_GEMM_STRIDED_ARGS(T));
#define ZAR_L3_DECLARE_CPLX(t, T, R)                                                                       \
  void zar_blas_avx_x##t##hemm(ZAR_L3_SYMM_ARGS(T));                                                     \
  void zar_blas_avx_x##t##herk(ZAR_L3_SYRK_ARGS(T, R));                                                  \
  void zar_blas_avx_x##t##herk_in_thread(ZAR_L3_SYRK_ARGS(T, R), ZAR_L3_RANGE);                          \
  void zar_blas_avx_x##t##her2k(ZAR_L3_SYR2K_ARGS(T, R));                                                \
  void zar_blas_avx_x##t##her2k_in_thread(ZAR_L3_SYR2K_ARGS(T, R), ZAR_L3_RANGE);                        \
  void zar_blas_avx_x##t##gemm3m(ZAR_L3_GEMM_ARGS(T));

#pragma GCC visibility push(default)
extern "C" {
ZAR_L3_ALL(ZAR_L3_DECLARE_ALL)
ZAR_L3_CPLX(ZAR_L3_DECLARE_CPLX)
}
#pragma GCC visibility pop

// The core's dispatching Level-3 front ends (imports of the kernel library):
// the drivers' arguments by address, no argument checks, threaded when the
// problem is large. Kernels may call them back.
#define ZAR_L3_FRONT_ALL(t, T, R)                                        \
  void zar_blas_##t##trsm(ZAR_L3_TRSM_ARGS(T));                          \
  void zar_blas_##t##trmm(ZAR_L3_TRSM_ARGS(T));                          \
  void zar_blas_##t##symm(ZAR_L3_SYMM_ARGS(T));                          \
  void zar_blas_##t##syrk(ZAR_L3_SYRK_ARGS(T, T));                       \
  void zar_blas_##t##syr2k(ZAR_L3_SYR2K_ARGS(T, T));                     \
  void zar_blas_##t##gemmt(ZAR_L3_GEMMT_ARGS(T));                        \
  void zar_blas_##t##gemm_batch(ZAR_L3_GEMM_BATCH_ARGS(T));              \
  void zar_blas_##t##gemm_batch_strided(ZAR_L3_GEMM_STRIDED_ARGS(T));
#define ZAR_L3_FRONT_CPLX(t, T, R)                                       \
  void zar_blas_##t##hemm(ZAR_L3_SYMM_ARGS(T));                          \
  void zar_blas_##t##herk(ZAR_L3_SYRK_ARGS(T, R));                       \
  void zar_blas_##t##her2k(ZAR_L3_SYR2K_ARGS(T, R));                     \
  void zar_blas_##t##gemm3m(ZAR_L3_GEMM_ARGS(T));

#pragma GCC visibility push(default)
extern "C" {
ZAR_L3_ALL(ZAR_L3_FRONT_ALL)
ZAR_L3_CPLX(ZAR_L3_FRONT_CPLX)
}
#pragma GCC visibility pop
