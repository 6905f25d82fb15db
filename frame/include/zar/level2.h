// Level-2 BLAS kernels of the kernel library: prototypes of every exported
// kernel (the core includes this header so that ZAR_KERNEL type-checks its
// calls), generated from the type lists below, and the core's dispatching
// gemv front ends that the triangular solve calls back into.
//
// Every argument is passed by address in the published order. Option
// characters: trans 'N' (else transpose; 'C' conjugates complex data), uplo
// 'U' (else lower), diag 'N' (else unit). Kernels check nothing: the core's
// front ends have checked the arguments.
#pragma once
#include "zar/export.h"
#include "zar/types.h"

// Type lists: (letter, element type, real type)
#define ZAR_L2_REAL(X) X(s, float, float) X(d, double, double)
#define ZAR_L2_CPLX(X) X(c, zar::c32, float) X(z, zar::c64, double)
#define ZAR_L2_ALL(X) ZAR_L2_REAL(X) ZAR_L2_CPLX(X)

// Argument lists shared by declarations and definitions.
#define ZAR_L2_GEMV_ARGS(T)                                                                             \
  const char *trans, const int *m, const int *n, const T *alpha, const T *a, const int *lda, const T *x, \
      const int *incx, const T *beta, T *y, const int *incy
#define ZAR_L2_GBMV_ARGS(T)                                                                           \
  const char *trans, const int *m, const int *n, const int *kl, const int *ku, const T *alpha,        \
      const T *a, const int *lda, const T *x, const int *incx, const T *beta, T *y, const int *incy
#define ZAR_L2_SYMV_ARGS(T)                                                                      \
  const char *uplo, const int *n, const T *alpha, const T *a, const int *lda, const T *x,        \
      const int *incx, const T *beta, T *y, const int *incy
#define ZAR_L2_SYMVK_ARGS(T)                                                                     \
  const char *uplo, const int *n, const T *alpha, const T *a, const int *lda, const T *x,        \
      const int *incx, T *y, const int *incy
#define ZAR_L2_SBMV_ARGS(T)                                                                      \
  const char *uplo, const int *n, const int *k, const T *alpha, const T *a, const int *lda,      \
      const T *x, const int *incx, const T *beta, T *y, const int *incy
#define ZAR_L2_SPMV_ARGS(T)                                                                              \
  const char *uplo, const int *n, const T *alpha, const T *ap, const T *x, const int *incx, const T *beta, \
      T *y, const int *incy
#define ZAR_L2_GER_ARGS(T) \
  const int *m, const int *n, const T *alpha, const T *x, const int *incx, const T *y, const int *incy, T *a, const int *lda
#define ZAR_L2_SYR_ARGS(T, S) const char *uplo, const int *n, const S *alpha, const T *x, const int *incx, T *a, const int *lda
#define ZAR_L2_SYR2_ARGS(T)                                                                            \
  const char *uplo, const int *n, const T *alpha, const T *x, const int *incx, const T *y, const int *incy, \
      T *a, const int *lda
// the per-thread bodies add the half-open column range [first, last)
#define ZAR_L2_RANGE const int *first, const int *last
#define ZAR_L2_SPR_ARGS(T, S) const char *uplo, const int *n, const S *alpha, const T *x, const int *incx, T *ap
#define ZAR_L2_SPR2_ARGS(T) \
  const char *uplo, const int *n, const T *alpha, const T *x, const int *incx, const T *y, const int *incy, T *ap
#define ZAR_L2_TRMV_ARGS(T) \
  const char *uplo, const char *trans, const char *diag, const int *n, const T *a, const int *lda, T *x, const int *incx
// trmv per-thread body: rows [first, last) of op(A)*src (src contiguous) into x
#define ZAR_L2_TRMV_T_ARGS(T)                                                                            \
  const char *uplo, const char *trans, const char *diag, const int *n, const T *a, const int *lda,       \
      const T *src, T *x, const int *incx, const int *first, const int *last
#define ZAR_L2_TRCASE_ARGS(T) const int *n, const T *a, const int *lda, T *x, const int *incx
#define ZAR_L2_TBMV_ARGS(T)                                                                           \
  const char *uplo, const char *trans, const char *diag, const int *n, const int *k, const T *a,     \
      const int *lda, T *x, const int *incx
#define ZAR_L2_TPMV_ARGS(T) \
  const char *uplo, const char *trans, const char *diag, const int *n, const T *ap, T *x, const int *incx
#define ZAR_L2_TRPIECE_ARGS(T) const char *diag, const int *n, const T *a, const int *lda, T *x, const int *incx
#define ZAR_L2_GEM2V_ARGS(T)                                                                            \
  const int *m, const int *n, const T *alpha, const T *a, const int *lda, const T *x1, const int *incx1, \
      const T *x2, const int *incx2, const T *beta, T *y1, const int *incy1, T *y2, const int *incy2
// real matrix, complex vectors (dzgemv, scgemv)
#define ZAR_L2_MIXGEMV_ARGS(C, R)                                                                       \
  const char *trans, const int *m, const int *n, const C *alpha, const R *a, const int *lda, const C *x, \
      const int *incx, const C *beta, C *y, const int *incy

#define ZAR_L2_DECL(name, ...) ZAR_EXPORT void ZAR_BLAS(name)(__VA_ARGS__);

// ---------------------------------------------------------------- all types
#define ZAR_L2_DECL_ALL(t, T, R)                                                  \
  ZAR_L2_DECL(x##t##gemv, ZAR_L2_GEMV_ARGS(T))                                    \
  ZAR_L2_DECL(x##t##gemv_cnr, ZAR_L2_GEMV_ARGS(T))                                \
  ZAR_L2_DECL(t##gbmv, ZAR_L2_GBMV_ARGS(T))                                       \
  ZAR_L2_DECL(t##gbmv_cnr, ZAR_L2_GBMV_ARGS(T))                                   \
  ZAR_L2_DECL(x##t##trmv, ZAR_L2_TRMV_ARGS(T))                                    \
  ZAR_L2_DECL(x##t##trmv_cnr, ZAR_L2_TRMV_ARGS(T))                                \
  ZAR_L2_DECL(t##trmv_in, ZAR_L2_TRMV_ARGS(T))                                    \
  ZAR_L2_DECL(x##t##trmv_in_thread, ZAR_L2_TRMV_T_ARGS(T))                        \
  ZAR_L2_DECL(x##t##trsv, ZAR_L2_TRMV_ARGS(T))                                    \
  ZAR_L2_DECL(x##t##trsv_cnr, ZAR_L2_TRMV_ARGS(T))                                \
  ZAR_L2_DECL(t##tbmv, ZAR_L2_TBMV_ARGS(T))                                       \
  ZAR_L2_DECL(t##tbmv_f, ZAR_L2_TBMV_ARGS(T))                                     \
  ZAR_L2_DECL(t##tbmv_cnr, ZAR_L2_TBMV_ARGS(T))                                   \
  ZAR_L2_DECL(t##tbsv, ZAR_L2_TBMV_ARGS(T))                                       \
  ZAR_L2_DECL(t##tbsv_f, ZAR_L2_TBMV_ARGS(T))                                     \
  ZAR_L2_DECL(t##tbsv_cnr, ZAR_L2_TBMV_ARGS(T))                                   \
  ZAR_L2_DECL(t##tpmv, ZAR_L2_TPMV_ARGS(T))                                       \
  ZAR_L2_DECL(t##tpsv, ZAR_L2_TPMV_ARGS(T))

// ------------------------------------------- symmetric (real), Hermitian
// (complex): pfx is x for the real driver names, sy/sp the letters (sy, s or
// he, h), r1 the rank-one name (ger or geru), g2 the fused product
#define ZAR_L2_DECL_SYM(t, T, R, pfx, sy, sp, r1, g2)                            \
  ZAR_L2_DECL(x##t##r1, ZAR_L2_GER_ARGS(T))                                       \
  ZAR_L2_DECL(pfx##t##sy##mv, ZAR_L2_SYMV_ARGS(T))                                \
  ZAR_L2_DECL(pfx##t##sy##r, ZAR_L2_SYR_ARGS(T, R))                               \
  ZAR_L2_DECL(pfx##t##sy##r_cnr, ZAR_L2_SYR_ARGS(T, R))                           \
  ZAR_L2_DECL(pfx##t##sy##r_in_thread, ZAR_L2_SYR_ARGS(T, R), ZAR_L2_RANGE)       \
  ZAR_L2_DECL(pfx##t##sy##r_in_thread_cnr, ZAR_L2_SYR_ARGS(T, R), ZAR_L2_RANGE)   \
  ZAR_L2_DECL(pfx##t##sy##r2, ZAR_L2_SYR2_ARGS(T))                                \
  ZAR_L2_DECL(pfx##t##sy##r2_cnr, ZAR_L2_SYR2_ARGS(T))                            \
  ZAR_L2_DECL(pfx##t##sy##r2_in_thread, ZAR_L2_SYR2_ARGS(T), ZAR_L2_RANGE)        \
  ZAR_L2_DECL(pfx##t##sy##r2_in_thread_cnr, ZAR_L2_SYR2_ARGS(T), ZAR_L2_RANGE)    \
  ZAR_L2_DECL(t##sp##pmv, ZAR_L2_SPMV_ARGS(T))                                    \
  ZAR_L2_DECL(t##sp##pmv_cnr, ZAR_L2_SPMV_ARGS(T))                                \
  ZAR_L2_DECL(t##sp##pr, ZAR_L2_SPR_ARGS(T, R))                                   \
  ZAR_L2_DECL(t##sp##pr_cnr, ZAR_L2_SPR_ARGS(T, R))                               \
  ZAR_L2_DECL(t##sp##pr2, ZAR_L2_SPR2_ARGS(T))                                    \
  ZAR_L2_DECL(t##sp##pr2_cnr, ZAR_L2_SPR2_ARGS(T))                                \
  ZAR_L2_DECL(t##sp##bmv, ZAR_L2_SBMV_ARGS(T))                                    \
  ZAR_L2_DECL(t##sp##bmv_cnr, ZAR_L2_SBMV_ARGS(T))                                \
  ZAR_L2_DECL(t##g2, ZAR_L2_GEM2V_ARGS(T))                                        \
  ZAR_L2_DECL(t##g2##_f, ZAR_L2_GEM2V_ARGS(T))

#define ZAR_L2_DECL_REAL(t, T, R)                                                 \
  ZAR_L2_DECL_SYM(t, T, R, x, sy, s, ger, gem2vu)                                 \
  ZAR_L2_DECL(x##t##symv_kernel, ZAR_L2_SYMVK_ARGS(T))

#define ZAR_L2_DECL_CPLX(t, T, R)                                                 \
  ZAR_L2_DECL_SYM(t, T, R, , he, h, geru, gem2vc)                                 \
  ZAR_L2_DECL(x##t##gerc, ZAR_L2_GER_ARGS(T))                                     \
  ZAR_L2_DECL(t##tbsv_vial1, ZAR_L2_TBMV_ARGS(T))                                 \
  ZAR_L2_DECL(t##trmln, ZAR_L2_TRPIECE_ARGS(T))                                   \
  ZAR_L2_DECL(t##trmlt, ZAR_L2_TRPIECE_ARGS(T))                                   \
  ZAR_L2_DECL(t##trmlc, ZAR_L2_TRPIECE_ARGS(T))                                   \
  ZAR_L2_DECL(t##trmrn, ZAR_L2_TRPIECE_ARGS(T))                                   \
  ZAR_L2_DECL(t##trmrt, ZAR_L2_TRPIECE_ARGS(T))                                   \
  ZAR_L2_DECL(t##trmrc, ZAR_L2_TRPIECE_ARGS(T))

// The fixed cases of the triangular solve: <t>trsv_<uplo><trans><diag>.
#define ZAR_L2_TRSV_REAL_CASES(X, p, P)                                          \
  X(p, P, u, n, n) X(p, P, u, n, u) X(p, P, u, t, n) X(p, P, u, t, u)             \
  X(p, P, l, n, n) X(p, P, l, n, u) X(p, P, l, t, n) X(p, P, l, t, u)
#define ZAR_L2_TRSV_CONJ_CASES(X, p, P) X(p, P, u, c, n) X(p, P, u, c, u) X(p, P, l, c, n) X(p, P, l, c, u)
#define ZAR_L2_TRSV_DECL(t, T, u, tr, d) ZAR_L2_DECL(t##trsv_##u##tr##d, ZAR_L2_TRCASE_ARGS(T))
#define ZAR_L2_TRSV_DECL_R(t, T, R) ZAR_L2_TRSV_REAL_CASES(ZAR_L2_TRSV_DECL, t, T)
#define ZAR_L2_TRSV_DECL_C(t, T, R) ZAR_L2_TRSV_REAL_CASES(ZAR_L2_TRSV_DECL, t, T) ZAR_L2_TRSV_CONJ_CASES(ZAR_L2_TRSV_DECL, t, T)

// Mixed types: real matrix, complex vectors, with their copy helpers.
// (matrix letter, complex letter, complex type, real type)
#define ZAR_L2_MIXED(X) X(d, z, zar::c64, double) X(s, c, zar::c32, float)
#define ZAR_L2_DECL_MIXED(r, c, C, R)                                                                  \
  ZAR_L2_DECL(r##c##gemv, ZAR_L2_MIXGEMV_ARGS(C, R))                                                   \
  ZAR_L2_DECL(r##c##gemv_copyx, const int *n, const C *x, const int *incx, R *xr, R *xi)               \
  ZAR_L2_DECL(r##c##gemv_copyy_fwd, const int *n, const C *y, const int *incy, R *yr, R *yi)           \
  ZAR_L2_DECL(r##c##gemv_copyy_bwd, const int *n, const R *yr, const R *yi, C *y, const int *incy)     \
  ZAR_L2_DECL(r##c##gemv_pst, const int *n, const C *alpha, const R *tr, const R *ti, const C *beta, R *yr, R *yi)

ZAR_L2_ALL(ZAR_L2_DECL_ALL)
ZAR_L2_REAL(ZAR_L2_DECL_REAL)
ZAR_L2_CPLX(ZAR_L2_DECL_CPLX)
ZAR_L2_REAL(ZAR_L2_TRSV_DECL_R)
ZAR_L2_CPLX(ZAR_L2_TRSV_DECL_C)
ZAR_L2_MIXED(ZAR_L2_DECL_MIXED)

// The core's dispatching gemv front ends (imports of the kernel library):
// arguments by address as in the kernels, no argument checks, possibly
// threaded. The triangular solve sends its off-diagonal updates here.
#define ZAR_L2_FRONT_GEMV(t, T, R) \
  extern "C" __attribute__((visibility("default"))) void zar_blas_##t##gemv(ZAR_L2_GEMV_ARGS(T));
ZAR_L2_ALL(ZAR_L2_FRONT_GEMV)
