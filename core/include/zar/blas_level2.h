/* Fortran BLAS Level-2 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. Complex arrays and
 * scalars are void* (interleaved real, imaginary pairs). */
#ifndef ZAR_BLAS_LEVEL2_H
#define ZAR_BLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

void sgemv_(const char* trans, const int* m, const int* n, const float* alpha, const float* a, const int* lda,
            const float* x, const int* incx, const float* beta, float* y, const int* incy);
void sgbmv_(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const float* alpha,
            const float* a, const int* lda, const float* x, const int* incx, const float* beta, float* y, const int* incy);
void strmv_(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda,
            float* x, const int* incx);
void strsv_(const char* uplo, const char* trans, const char* diag, const int* n, const float* a, const int* lda,
            float* x, const int* incx);
void stbmv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
            const int* lda, float* x, const int* incx);
void stbsv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const float* a,
            const int* lda, float* x, const int* incx);
void stpmv_(const char* uplo, const char* trans, const char* diag, const int* n, const float* ap, float* x,
            const int* incx);
void stpsv_(const char* uplo, const char* trans, const char* diag, const int* n, const float* ap, float* x,
            const int* incx);
void ssymv_(const char* uplo, const int* n, const float* alpha, const float* a, const int* lda, const float* x,
            const int* incx, const float* beta, float* y, const int* incy);
void ssbmv_(const char* uplo, const int* n, const int* k, const float* alpha, const float* a, const int* lda,
            const float* x, const int* incx, const float* beta, float* y, const int* incy);
void sspmv_(const char* uplo, const int* n, const float* alpha, const float* ap, const float* x, const int* incx,
            const float* beta, float* y, const int* incy);
void ssyr_(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, float* a,
           const int* lda);
void sspr_(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, float* ap);
void ssyr2_(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
            const int* incy, float* a, const int* lda);
void sspr2_(const char* uplo, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
             const int* incy, float* ap);
void sger_(const int* m, const int* n, const float* alpha, const float* x, const int* incx, const float* y,
            const int* incy, float* a, const int* lda);

void dgemv_(const char* trans, const int* m, const int* n, const double* alpha, const double* a, const int* lda,
            const double* x, const int* incx, const double* beta, double* y, const int* incy);
void dgbmv_(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const double* alpha,
            const double* a, const int* lda, const double* x, const int* incx, const double* beta, double* y, const int* incy);
void dtrmv_(const char* uplo, const char* trans, const char* diag, const int* n, const double* a, const int* lda,
            double* x, const int* incx);
void dtrsv_(const char* uplo, const char* trans, const char* diag, const int* n, const double* a, const int* lda,
            double* x, const int* incx);
void dtbmv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const double* a,
            const int* lda, double* x, const int* incx);
void dtbsv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const double* a,
            const int* lda, double* x, const int* incx);
void dtpmv_(const char* uplo, const char* trans, const char* diag, const int* n, const double* ap, double* x,
            const int* incx);
void dtpsv_(const char* uplo, const char* trans, const char* diag, const int* n, const double* ap, double* x,
            const int* incx);
void dsymv_(const char* uplo, const int* n, const double* alpha, const double* a, const int* lda, const double* x,
            const int* incx, const double* beta, double* y, const int* incy);
void dsbmv_(const char* uplo, const int* n, const int* k, const double* alpha, const double* a, const int* lda,
            const double* x, const int* incx, const double* beta, double* y, const int* incy);
void dspmv_(const char* uplo, const int* n, const double* alpha, const double* ap, const double* x, const int* incx,
            const double* beta, double* y, const int* incy);
void dsyr_(const char* uplo, const int* n, const double* alpha, const double* x, const int* incx, double* a,
           const int* lda);
void dspr_(const char* uplo, const int* n, const double* alpha, const double* x, const int* incx, double* ap);
void dsyr2_(const char* uplo, const int* n, const double* alpha, const double* x, const int* incx, const double* y,
            const int* incy, double* a, const int* lda);
void dspr2_(const char* uplo, const int* n, const double* alpha, const double* x, const int* incx, const double* y,
             const int* incy, double* ap);
void dger_(const int* m, const int* n, const double* alpha, const double* x, const int* incx, const double* y,
            const int* incy, double* a, const int* lda);

void cgemv_(const char* trans, const int* m, const int* n, const void* alpha, const void* a, const int* lda,
            const void* x, const int* incx, const void* beta, void* y, const int* incy);
void cgbmv_(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const void* alpha,
            const void* a, const int* lda, const void* x, const int* incx, const void* beta, void* y, const int* incy);
void ctrmv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* a, const int* lda,
            void* x, const int* incx);
void ctrsv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* a, const int* lda,
            void* x, const int* incx);
void ctbmv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const void* a,
            const int* lda, void* x, const int* incx);
void ctbsv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const void* a,
            const int* lda, void* x, const int* incx);
void ctpmv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* ap, void* x,
            const int* incx);
void ctpsv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* ap, void* x,
            const int* incx);
void chemv_(const char* uplo, const int* n, const void* alpha, const void* a, const int* lda, const void* x,
            const int* incx, const void* beta, void* y, const int* incy);
void chbmv_(const char* uplo, const int* n, const int* k, const void* alpha, const void* a, const int* lda,
            const void* x, const int* incx, const void* beta, void* y, const int* incy);
void chpmv_(const char* uplo, const int* n, const void* alpha, const void* ap, const void* x, const int* incx,
            const void* beta, void* y, const int* incy);
void cher_(const char* uplo, const int* n, const float* alpha, const void* x, const int* incx, void* a,
           const int* lda);
void chpr_(const char* uplo, const int* n, const float* alpha, const void* x, const int* incx, void* ap);
void cher2_(const char* uplo, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);
void chpr2_(const char* uplo, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
             const int* incy, void* ap);
void cgeru_(const int* m, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);
void cgerc_(const int* m, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);

void zgemv_(const char* trans, const int* m, const int* n, const void* alpha, const void* a, const int* lda,
            const void* x, const int* incx, const void* beta, void* y, const int* incy);
void zgbmv_(const char* trans, const int* m, const int* n, const int* kl, const int* ku, const void* alpha,
            const void* a, const int* lda, const void* x, const int* incx, const void* beta, void* y, const int* incy);
void ztrmv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* a, const int* lda,
            void* x, const int* incx);
void ztrsv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* a, const int* lda,
            void* x, const int* incx);
void ztbmv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const void* a,
            const int* lda, void* x, const int* incx);
void ztbsv_(const char* uplo, const char* trans, const char* diag, const int* n, const int* k, const void* a,
            const int* lda, void* x, const int* incx);
void ztpmv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* ap, void* x,
            const int* incx);
void ztpsv_(const char* uplo, const char* trans, const char* diag, const int* n, const void* ap, void* x,
            const int* incx);
void zhemv_(const char* uplo, const int* n, const void* alpha, const void* a, const int* lda, const void* x,
            const int* incx, const void* beta, void* y, const int* incy);
void zhbmv_(const char* uplo, const int* n, const int* k, const void* alpha, const void* a, const int* lda,
            const void* x, const int* incx, const void* beta, void* y, const int* incy);
void zhpmv_(const char* uplo, const int* n, const void* alpha, const void* ap, const void* x, const int* incx,
            const void* beta, void* y, const int* incy);
void zher_(const char* uplo, const int* n, const double* alpha, const void* x, const int* incx, void* a,
           const int* lda);
void zhpr_(const char* uplo, const int* n, const double* alpha, const void* x, const int* incx, void* ap);
void zher2_(const char* uplo, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);
void zhpr2_(const char* uplo, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
             const int* incy, void* ap);
void zgeru_(const int* m, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);
void zgerc_(const int* m, const int* n, const void* alpha, const void* x, const int* incx, const void* y,
            const int* incy, void* a, const int* lda);

/* Not in the reference BLAS: two products with one pass over A,
 * y1 := alpha*A*x1 + beta*y1 and y2 := alpha*A^T*x2 + beta*y2 (A^H for the
 * complex gem2vc), and a real matrix times complex vectors (dzgemv, scgemv). */
void sgem2vu_(const int* m, const int* n, const float* alpha, const float* a, const int* lda, const float* x1,
              const int* incx1, const float* x2, const int* incx2, const float* beta, float* y1, const int* incy1,
              float* y2, const int* incy2);
void dgem2vu_(const int* m, const int* n, const double* alpha, const double* a, const int* lda, const double* x1,
              const int* incx1, const double* x2, const int* incx2, const double* beta, double* y1, const int* incy1,
              double* y2, const int* incy2);
void cgem2vc_(const int* m, const int* n, const void* alpha, const void* a, const int* lda, const void* x1,
              const int* incx1, const void* x2, const int* incx2, const void* beta, void* y1, const int* incy1,
              void* y2, const int* incy2);
void zgem2vc_(const int* m, const int* n, const void* alpha, const void* a, const int* lda, const void* x1,
              const int* incx1, const void* x2, const int* incx2, const void* beta, void* y1, const int* incy1,
              void* y2, const int* incy2);
void dzgemv_(const char* trans, const int* m, const int* n, const void* alpha, const double* a, const int* lda,
             const void* x, const int* incx, const void* beta, void* y, const int* incy);
void scgemv_(const char* trans, const int* m, const int* n, const void* alpha, const float* a, const int* lda,
             const void* x, const int* incx, const void* beta, void* y, const int* incy);

#ifdef __cplusplus
}
#endif
#endif
