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

#ifdef __cplusplus
}
#endif
#endif
