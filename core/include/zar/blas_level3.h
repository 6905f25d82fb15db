/* Fortran BLAS Level-3 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h. Complex scalars and
 * arrays are (real, imaginary) pairs, passed as void pointers. */
#ifndef ZAR_BLAS_LEVEL3_H
#define ZAR_BLAS_LEVEL3_H
#ifdef __cplusplus
extern "C" {
#endif

/* C := alpha op(A) op(B) + beta C, op(X) = X, X^T or X^H ("N", "T", "C"). */
void sgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const float* alpha,
            const float* a, const int* lda, const float* b, const int* ldb, const float* beta, float* c,
            const int* ldc);
void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const double* alpha,
            const double* a, const int* lda, const double* b, const int* ldb, const double* beta, double* c,
            const int* ldc);
void cgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const void* alpha,
            const void* a, const int* lda, const void* b, const int* ldb, const void* beta, void* c, const int* ldc);
void zgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const void* alpha,
            const void* a, const int* lda, const void* b, const int* ldb, const void* beta, void* c, const int* ldc);

#ifdef __cplusplus
}
#endif
#endif
