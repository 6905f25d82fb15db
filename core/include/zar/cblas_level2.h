/* CBLAS Level-2 routines of zar; included by cblas.h. Signatures are those
 * of the reference CBLAS; complex scalars and arrays are passed as void*
 * (interleaved real, imaginary pairs). Row-major calls are mapped onto the
 * column-major kernels as the reference CBLAS maps them.
 *
 * Declared below for s, d (real) and c, z (complex):
 *   cblas_?gemv cblas_?gbmv cblas_?trmv cblas_?trsv cblas_?tbmv cblas_?tbsv
 *   cblas_?tpmv cblas_?tpsv
 *   real:    cblas_?symv cblas_?sbmv cblas_?spmv cblas_?ger cblas_?syr
 *            cblas_?spr cblas_?syr2 cblas_?spr2
 *   complex: cblas_?hemv cblas_?hbmv cblas_?hpmv cblas_?geru cblas_?gerc
 *            cblas_?her cblas_?hpr cblas_?her2 cblas_?hpr2
 */
#ifndef ZAR_CBLAS_LEVEL2_H
#define ZAR_CBLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

/* t: the letter; S: a scalar argument (value for real, pointer for complex);
 * V: the array element (float, double or void) */
#define ZAR_CBLAS_L2_ALL(t, S, V)                                                                                   \
  void cblas_##t##gemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, S alpha, const V* A,   \
                       const int lda, const V* X, const int incX, S beta, V* Y, const int incY);                     \
  void cblas_##t##gbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const int KL,          \
                       const int KU, S alpha, const V* A, const int lda, const V* X, const int incX, S beta, V* Y,   \
                       const int incY);                                                                              \
  void cblas_##t##trmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const V* A, const int lda, V* X, const int incX);                                             \
  void cblas_##t##trsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const V* A, const int lda, V* X, const int incX);                                             \
  void cblas_##t##tbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const int K, const V* A, const int lda, V* X, const int incX);                                \
  void cblas_##t##tbsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const int K, const V* A, const int lda, V* X, const int incX);                                \
  void cblas_##t##tpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const V* Ap, V* X, const int incX);                                                           \
  void cblas_##t##tpsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,   \
                       const V* Ap, V* X, const int incX);

/* symmetric (sy, s) or Hermitian (he, h) members; R1: the scalar of syr/her */
#define ZAR_CBLAS_L2_SYM(t, S, V, sy, pk, R1)                                                                      \
  void cblas_##t##sy##mv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, S alpha, const V* A, const int lda,      \
                         const V* X, const int incX, S beta, V* Y, const int incY);                                  \
  void cblas_##t##pk##bmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const int K, S alpha, const V* A,       \
                          const int lda, const V* X, const int incX, S beta, V* Y, const int incY);                  \
  void cblas_##t##pk##pmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, S alpha, const V* Ap, const V* X,       \
                          const int incX, S beta, V* Y, const int incY);                                             \
  void cblas_##t##sy##r(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const R1 alpha, const V* X,               \
                        const int incX, V* A, const int lda);                                                        \
  void cblas_##t##pk##pr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const R1 alpha, const V* X,              \
                         const int incX, V* Ap);                                                                     \
  void cblas_##t##sy##r2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, S alpha, const V* X, const int incX,     \
                         const V* Y, const int incY, V* A, const int lda);                                           \
  void cblas_##t##pk##pr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, S alpha, const V* X, const int incX,    \
                          const V* Y, const int incY, V* Ap);

#define ZAR_CBLAS_L2_GER(t, S, V, name)                                                                            \
  void cblas_##t##name(CBLAS_LAYOUT layout, const int M, const int N, S alpha, const V* X, const int incX,            \
                       const V* Y, const int incY, V* A, const int lda);

ZAR_CBLAS_L2_ALL(s, const float, float)
ZAR_CBLAS_L2_ALL(d, const double, double)
ZAR_CBLAS_L2_ALL(c, const void*, void)
ZAR_CBLAS_L2_ALL(z, const void*, void)
ZAR_CBLAS_L2_SYM(s, const float, float, sy, s, float)
ZAR_CBLAS_L2_SYM(d, const double, double, sy, s, double)
ZAR_CBLAS_L2_SYM(c, const void*, void, he, h, float)
ZAR_CBLAS_L2_SYM(z, const void*, void, he, h, double)
ZAR_CBLAS_L2_GER(s, const float, float, ger)
ZAR_CBLAS_L2_GER(d, const double, double, ger)
ZAR_CBLAS_L2_GER(c, const void*, void, geru)
ZAR_CBLAS_L2_GER(c, const void*, void, gerc)
ZAR_CBLAS_L2_GER(z, const void*, void, geru)
ZAR_CBLAS_L2_GER(z, const void*, void, gerc)

#undef ZAR_CBLAS_L2_ALL
#undef ZAR_CBLAS_L2_SYM
#undef ZAR_CBLAS_L2_GER

#ifdef __cplusplus
}
#endif
#endif
