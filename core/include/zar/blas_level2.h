/* Fortran BLAS Level-2 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. Complex arrays and
 * scalars are void* (interleaved real, imaginary pairs).
 *
 * Declared below for s, d (real) and c, z (complex):
 *   ?gemv_ ?gbmv_ ?trmv_ ?trsv_ ?tbmv_ ?tbsv_ ?tpmv_ ?tpsv_
 *   real:    ?symv_ ?sbmv_ ?spmv_ ?syr_ ?spr_ ?syr2_ ?spr2_ ?ger_ ?gem2vu_
 *   complex: ?hemv_ ?hbmv_ ?hpmv_ ?her_ ?hpr_ ?her2_ ?hpr2_ ?geru_ ?gerc_
 *            ?gem2vc_
 *   mixed:   dzgemv_ scgemv_ (real matrix, complex vectors)
 * ?gem2vu_/?gem2vc_ (not in the reference BLAS) form two products with one
 * pass over A: y1 := alpha*A*x1 + beta*y1 and y2 := alpha*op(A)*x2 + beta*y2
 * with op(A) = A^T (A^H for complex data).
 */
#ifndef ZAR_BLAS_LEVEL2_H
#define ZAR_BLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

/* t: the letter; T: the element (float, double or void); g2: gem2vu or gem2vc */
#define ZAR_BLAS_L2_ALL(t, T, g2)                                                                                     \
  void t##gemv_(const char* trans, const int* m, const int* n, const T* alpha, const T* a, const int* lda,          \
                const T* x, const int* incx, const T* beta, T* y, const int* incy);                                 \
  void t##gbmv_(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const T* alpha,        \
                const T* a, const int* lda, const T* x, const int* incx, const T* beta, T* y, const int* incy);     \
  void t##trmv_(const char* uplo, const char* trans, const char* diag, const int* n, const T* a, const int* lda,    \
                T* x, const int* incx);                                                                             \
  void t##trsv_(const char* uplo, const char* trans, const char* diag, const int* n, const T* a, const int* lda,    \
                T* x, const int* incx);                                                                             \
  void t##tbmv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const T* a,      \
                const int* lda, T* x, const int* incx);                                                             \
  void t##tbsv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const T* a,      \
                const int* lda, T* x, const int* incx);                                                             \
  void t##tpmv_(const char* uplo, const char* trans, const char* diag, const int* n, const T* ap, T* x,             \
                const int* incx);                                                                                   \
  void t##tpsv_(const char* uplo, const char* trans, const char* diag, const int* n, const T* ap, T* x,             \
                const int* incx);                                                                                   \
  void t##g2##_(const int* m, const int* n, const T* alpha, const T* a, const int* lda, const T* x1,               \
                 const int* incx1, const T* x2, const int* incx2, const T* beta, T* y1, const int* incy1, T* y2,    \
                 const int* incy2);

/* symmetric (sy, s) or Hermitian (he, h) members; R: the scalar of syr/her */
#define ZAR_BLAS_L2_SYM(t, T, R, sy, pk)                                                                            \
  void t##sy##mv_(const char* uplo, const int* n, const T* alpha, const T* a, const int* lda, const T* x,           \
                  const int* incx, const T* beta, T* y, const int* incy);                                           \
  void t##pk##bmv_(const char* uplo, const int* n, const int* k, const T* alpha, const T* a, const int* lda,        \
                   const T* x, const int* incx, const T* beta, T* y, const int* incy);                              \
  void t##pk##pmv_(const char* uplo, const int* n, const T* alpha, const T* ap, const T* x, const int* incx,        \
                   const T* beta, T* y, const int* incy);                                                           \
  void t##sy##r_(const char* uplo, const int* n, const R* alpha, const T* x, const int* incx, T* a,                 \
                 const int* lda);                                                                                   \
  void t##pk##pr_(const char* uplo, const int* n, const R* alpha, const T* x, const int* incx, T* ap);              \
  void t##sy##r2_(const char* uplo, const int* n, const T* alpha, const T* x, const int* incx, const T* y,          \
                  const int* incy, T* a, const int* lda);                                                           \
  void t##pk##pr2_(const char* uplo, const int* n, const T* alpha, const T* x, const int* incx, const T* y,         \
                   const int* incy, T* ap);

#define ZAR_BLAS_L2_GER(name, T)                                                                                    \
  void name##_(const int* m, const int* n, const T* alpha, const T* x, const int* incx, const T* y,                 \
               const int* incy, T* a, const int* lda);

#define ZAR_BLAS_L2_MIXED(name, R)                                                                                  \
  void name##_(const char* trans, const int* m, const int* n, const void* alpha, const R* a, const int* lda,        \
               const void* x, const int* incx, const void* beta, void* y, const int* incy);

ZAR_BLAS_L2_ALL(s, float, gem2vu)
ZAR_BLAS_L2_ALL(d, double, gem2vu)
ZAR_BLAS_L2_ALL(c, void, gem2vc)
ZAR_BLAS_L2_ALL(z, void, gem2vc)
ZAR_BLAS_L2_SYM(s, float, float, sy, s)
ZAR_BLAS_L2_SYM(d, double, double, sy, s)
ZAR_BLAS_L2_SYM(c, void, float, he, h)
ZAR_BLAS_L2_SYM(z, void, double, he, h)
ZAR_BLAS_L2_GER(sger, float)
ZAR_BLAS_L2_GER(dger, double)
ZAR_BLAS_L2_GER(cgeru, void)
ZAR_BLAS_L2_GER(cgerc, void)
ZAR_BLAS_L2_GER(zgeru, void)
ZAR_BLAS_L2_GER(zgerc, void)
ZAR_BLAS_L2_MIXED(dzgemv, double)
ZAR_BLAS_L2_MIXED(scgemv, float)

#undef ZAR_BLAS_L2_ALL
#undef ZAR_BLAS_L2_SYM
#undef ZAR_BLAS_L2_GER
#undef ZAR_BLAS_L2_MIXED

#ifdef __cplusplus
}
#endif
#endif
