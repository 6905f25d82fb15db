/* CBLAS Level-3 routines of zar; included by cblas.h. */
#ifndef ZAR_CBLAS_LEVEL3_H
#define ZAR_CBLAS_LEVEL3_H
#ifdef __cplusplus
extern "C" {
#endif

/* C := alpha op(A) op(B) + beta C in either layout. */
void cblas_sgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, const int M, const int N,
                 const int K, const float alpha, const float* A, const int lda, const float* B, const int ldb,
                 const float beta, float* C, const int ldc);
void cblas_dgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, const int M, const int N,
                 const int K, const double alpha, const double* A, const int lda, const double* B, const int ldb,
                 const double beta, double* C, const int ldc);
void cblas_cgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, const int M, const int N,
                 const int K, const void* alpha, const void* A, const int lda, const void* B, const int ldb,
                 const void* beta, void* C, const int ldc);
void cblas_zgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, const int M, const int N,
                 const int K, const void* alpha, const void* A, const int lda, const void* B, const int ldb,
                 const void* beta, void* C, const int ldc);

/* The other Level-3 routines in either layout, declared per type from one
 * list (as zar/blas_level3.h describes them). S is a scalar as passed: real
 * scalars by value, complex ones by address; T the data type (void for
 * complex data), R the real type of the Hermitian updates' real scalars. The
 * batch routines take their scalars as arrays:
 *   cblas_?gemm_batch(layout, transa_array, transb_array, m_array, n_array,
 *     k_array, alpha_array, a_array, lda_array, b_array, ldb_array,
 *     beta_array, c_array, ldc_array, group_count, group_size)
 *   cblas_?gemm_batch_strided(layout, transa, transb, m, n, k, alpha, a, lda,
 *     stridea, b, ldb, strideb, beta, c, ldc, stridec, batch_size) */
#define ZAR_CBLAS3_DECL_ALL(t, S, T)                                                                              \
  void cblas_##t##trsm(CBLAS_LAYOUT layout, CBLAS_SIDE Side, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA,             \
                       CBLAS_DIAG Diag, const int M, const int N, S alpha, const T* A, const int lda, T* B,       \
                       const int ldb);                                                                            \
  void cblas_##t##trmm(CBLAS_LAYOUT layout, CBLAS_SIDE Side, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA,             \
                       CBLAS_DIAG Diag, const int M, const int N, S alpha, const T* A, const int lda, T* B,       \
                       const int ldb);                                                                            \
  void cblas_##t##symm(CBLAS_LAYOUT layout, CBLAS_SIDE Side, CBLAS_UPLO Uplo, const int M, const int N, S alpha, \
                       const T* A, const int lda, const T* B, const int ldb, S beta, T* C, const int ldc);        \
  void cblas_##t##syrk(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE Trans, const int N, const int K,    \
                       S alpha, const T* A, const int lda, S beta, T* C, const int ldc);                         \
  void cblas_##t##syr2k(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE Trans, const int N, const int K,   \
                        S alpha, const T* A, const int lda, const T* B, const int ldb, S beta, T* C,             \
                        const int ldc);                                                                           \
  void cblas_##t##gemmt(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB,    \
                        const int N, const int K, S alpha, const T* A, const int lda, const T* B, const int ldb, \
                        S beta, T* C, const int ldc);                                                             \
  void cblas_##t##gemm_batch(CBLAS_LAYOUT layout, const CBLAS_TRANSPOSE* transa_array,                           \
                             const CBLAS_TRANSPOSE* transb_array, const int* m_array, const int* n_array,       \
                             const int* k_array, const T* alpha_array, const T** a_array, const int* lda_array,  \
                             const T** b_array, const int* ldb_array, const T* beta_array, T** c_array,         \
                             const int* ldc_array, const int group_count, const int* group_size);               \
  void cblas_##t##gemm_batch_strided(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb,        \
                                     const int m, const int n, const int k, S alpha, const T* a, const int lda, \
                                     const int stridea, const T* b, const int ldb, const int strideb, S beta,   \
                                     T* c, const int ldc, const int stridec, const int batch_size);
#define ZAR_CBLAS3_DECL_CPLX(t, R)                                                                                \
  void cblas_##t##hemm(CBLAS_LAYOUT layout, CBLAS_SIDE Side, CBLAS_UPLO Uplo, const int M, const int N,          \
                       const void* alpha, const void* A, const int lda, const void* B, const int ldb,           \
                       const void* beta, void* C, const int ldc);                                               \
  void cblas_##t##herk(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE Trans, const int N, const int K,    \
                       const R alpha, const void* A, const int lda, const R beta, void* C, const int ldc);      \
  void cblas_##t##her2k(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE Trans, const int N, const int K,   \
                        const void* alpha, const void* A, const int lda, const void* B, const int ldb,          \
                        const R beta, void* C, const int ldc);                                                  \
  void cblas_##t##gemm3m(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, const int M,       \
                         const int N, const int K, const void* alpha, const void* A, const int lda,             \
                         const void* B, const int ldb, const void* beta, void* C, const int ldc);
ZAR_CBLAS3_DECL_ALL(s, const float, float)
ZAR_CBLAS3_DECL_ALL(d, const double, double)
ZAR_CBLAS3_DECL_ALL(c, const void*, void)
ZAR_CBLAS3_DECL_ALL(z, const void*, void)
ZAR_CBLAS3_DECL_CPLX(c, float)
ZAR_CBLAS3_DECL_CPLX(z, double)
#undef ZAR_CBLAS3_DECL_ALL
#undef ZAR_CBLAS3_DECL_CPLX

#ifdef __cplusplus
}
#endif
#endif
