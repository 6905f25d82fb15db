/* CBLAS Level-2 routines of zar; included by cblas.h. Signatures are those
 * of the reference CBLAS; complex scalars and arrays are passed as void*
 * (interleaved real, imaginary pairs). Row-major calls are mapped onto the
 * column-major kernels as the reference CBLAS maps them. */
#ifndef ZAR_CBLAS_LEVEL2_H
#define ZAR_CBLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

void cblas_sgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const float alpha,
                 const float* A, const int lda, const float* X, const int incX, const float beta, float* Y, const int incY);
void cblas_sgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const int KL, const int KU,
                 const float alpha, const float* A, const int lda, const float* X, const int incX, const float beta, float* Y,
                 const int incY);
void cblas_ssymv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* A, const int lda,
                 const float* X, const int incX, const float beta, float* Y, const int incY);
void cblas_ssbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const int K, const float alpha, const float* A,
                 const int lda, const float* X, const int incX, const float beta, float* Y, const int incY);
void cblas_sspmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* Ap, const float* X,
                 const int incX, const float beta, float* Y, const int incY);
void cblas_sger(CBLAS_LAYOUT layout, const int M, const int N, const float alpha, const float* X, const int incX,
                const float* Y, const int incY, float* A, const int lda);
void cblas_ssyr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* X, const int incX,
                float* A, const int lda);
void cblas_sspr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* X, const int incX,
                float* Ap);
void cblas_ssyr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* X, const int incX,
                 const float* Y, const int incY, float* A, const int lda);
void cblas_sspr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const float* X, const int incX,
                 const float* Y, const int incY, float* Ap);
void cblas_strmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const float* A, const int lda, float* X, const int incX);
void cblas_strsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const float* A, const int lda, float* X, const int incX);
void cblas_stbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const float* A, const int lda, float* X, const int incX);
void cblas_stbsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const float* A, const int lda, float* X, const int incX);
void cblas_stpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const float* Ap, float* X, const int incX);
void cblas_stpsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const float* Ap, float* X, const int incX);

void cblas_dgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const double alpha,
                 const double* A, const int lda, const double* X, const int incX, const double beta, double* Y, const int incY);
void cblas_dgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const int KL, const int KU,
                 const double alpha, const double* A, const int lda, const double* X, const int incX, const double beta, double* Y,
                 const int incY);
void cblas_dsymv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* A, const int lda,
                 const double* X, const int incX, const double beta, double* Y, const int incY);
void cblas_dsbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const int K, const double alpha, const double* A,
                 const int lda, const double* X, const int incX, const double beta, double* Y, const int incY);
void cblas_dspmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* Ap, const double* X,
                 const int incX, const double beta, double* Y, const int incY);
void cblas_dger(CBLAS_LAYOUT layout, const int M, const int N, const double alpha, const double* X, const int incX,
                const double* Y, const int incY, double* A, const int lda);
void cblas_dsyr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* X, const int incX,
                double* A, const int lda);
void cblas_dspr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* X, const int incX,
                double* Ap);
void cblas_dsyr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* X, const int incX,
                 const double* Y, const int incY, double* A, const int lda);
void cblas_dspr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const double* X, const int incX,
                 const double* Y, const int incY, double* Ap);
void cblas_dtrmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const double* A, const int lda, double* X, const int incX);
void cblas_dtrsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const double* A, const int lda, double* X, const int incX);
void cblas_dtbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const double* A, const int lda, double* X, const int incX);
void cblas_dtbsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const double* A, const int lda, double* X, const int incX);
void cblas_dtpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const double* Ap, double* X, const int incX);
void cblas_dtpsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const double* Ap, double* X, const int incX);

void cblas_cgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const void* alpha,
                 const void* A, const int lda, const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_cgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const int KL, const int KU,
                 const void* alpha, const void* A, const int lda, const void* X, const int incX, const void* beta,
                 void* Y, const int incY);
void cblas_chemv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* A, const int lda,
                 const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_chbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const int K, const void* alpha, const void* A,
                 const int lda, const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_chpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* Ap, const void* X,
                 const int incX, const void* beta, void* Y, const int incY);
void cblas_cgeru(CBLAS_LAYOUT layout, const int M, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_cgerc(CBLAS_LAYOUT layout, const int M, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_cher(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const void* X, const int incX,
                void* A, const int lda);
void cblas_chpr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const float alpha, const void* X, const int incX,
                void* Ap);
void cblas_cher2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_chpr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* Ap);
void cblas_ctrmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* A, const int lda, void* X, const int incX);
void cblas_ctrsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* A, const int lda, void* X, const int incX);
void cblas_ctbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const void* A, const int lda, void* X, const int incX);
void cblas_ctbsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const void* A, const int lda, void* X, const int incX);
void cblas_ctpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* Ap, void* X, const int incX);
void cblas_ctpsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* Ap, void* X, const int incX);

void cblas_zgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const void* alpha,
                 const void* A, const int lda, const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_zgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, const int M, const int N, const int KL, const int KU,
                 const void* alpha, const void* A, const int lda, const void* X, const int incX, const void* beta,
                 void* Y, const int incY);
void cblas_zhemv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* A, const int lda,
                 const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_zhbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const int K, const void* alpha, const void* A,
                 const int lda, const void* X, const int incX, const void* beta, void* Y, const int incY);
void cblas_zhpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* Ap, const void* X,
                 const int incX, const void* beta, void* Y, const int incY);
void cblas_zgeru(CBLAS_LAYOUT layout, const int M, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_zgerc(CBLAS_LAYOUT layout, const int M, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_zher(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const void* X, const int incX,
                void* A, const int lda);
void cblas_zhpr(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const double alpha, const void* X, const int incX,
                void* Ap);
void cblas_zher2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* A, const int lda);
void cblas_zhpr2(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, const int N, const void* alpha, const void* X, const int incX,
                 const void* Y, const int incY, void* Ap);
void cblas_ztrmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* A, const int lda, void* X, const int incX);
void cblas_ztrsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* A, const int lda, void* X, const int incX);
void cblas_ztbmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const void* A, const int lda, void* X, const int incX);
void cblas_ztbsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const int K, const void* A, const int lda, void* X, const int incX);
void cblas_ztpmv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* Ap, void* X, const int incX);
void cblas_ztpsv(CBLAS_LAYOUT layout, CBLAS_UPLO Uplo, CBLAS_TRANSPOSE TransA, CBLAS_DIAG Diag, const int N,
                 const void* Ap, void* X, const int incX);

#ifdef __cplusplus
}
#endif
#endif
