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

/* The other Level-3 routines, declared per type from one list. T is the
 * element type as passed (float, double, or void for complex data), R the
 * real type (the real scalars of herk and her2k).
 *   ?trsm_   solve op(A) X = alpha B (side "L") or X op(A) = alpha B ("R"),
 *            A triangular (uplo "U"/"L", diag "N"/"U"); X overwrites B.
 *   ?trmm_   B := alpha op(A) B or alpha B op(A), A triangular.
 *   ?symm_   C := alpha A B + beta C (side "L") or alpha B A + beta C, A
 *            symmetric (?hemm_: Hermitian), its uplo triangle referenced.
 *   ?syrk_   C := alpha A A^T + beta C (trans "N") or alpha A^T A + beta C,
 *            the uplo triangle of C updated; ?herk_ with A^H and real
 *            scalars; ?syr2k_/?her2k_ the rank-2k forms with B.
 *   ?gemmt_  the uplo triangle of C := alpha op(A) op(B) + beta C, C n x n.
 *   ?gemm3m_ gemm for complex data with three real products per block.
 *   ?gemm_batch_         group g holds group_size[g] products
 *            C_i := alpha[g] op(A_i) op(B_i) + beta[g] C_i with the options,
 *            sizes and leading dimensions of entry g of the arrays; a, b, c
 *            list the matrices of all groups in order.
 *   ?gemm_batch_strided_ batch_size products of one shape, matrix i at
 *            a + i stridea, b + i strideb, c + i stridec (elements). */
#define ZAR_BLAS3_DECL_ALL(t, T)                                                                                  \
  void t##trsm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,           \
                const int* n, const T* alpha, const T* a, const int* lda, T* b, const int* ldb);                 \
  void t##trmm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,           \
                const int* n, const T* alpha, const T* a, const int* lda, T* b, const int* ldb);                 \
  void t##symm_(const char* side, const char* uplo, const int* m, const int* n, const T* alpha, const T* a,       \
                const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc);                \
  void t##syrk_(const char* uplo, const char* trans, const int* n, const int* k, const T* alpha, const T* a,      \
                const int* lda, const T* beta, T* c, const int* ldc);                                            \
  void t##syr2k_(const char* uplo, const char* trans, const int* n, const int* k, const T* alpha, const T* a,     \
                 const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc);               \
  void t##gemmt_(const char* uplo, const char* transa, const char* transb, const int* n, const int* k,            \
                 const T* alpha, const T* a, const int* lda, const T* b, const int* ldb, const T* beta, T* c,    \
                 const int* ldc);                                                                                \
  void t##gemm_batch_(const char* transa, const char* transb, const int* m, const int* n, const int* k,           \
                      const T* alpha, const T** a, const int* lda, const T** b, const int* ldb, const T* beta,   \
                      T** c, const int* ldc, const int* group_count, const int* group_size);                      \
  void t##gemm_batch_strided_(const char* transa, const char* transb, const int* m, const int* n, const int* k,   \
                              const T* alpha, const T* a, const int* lda, const int* stridea, const T* b,        \
                              const int* ldb, const int* strideb, const T* beta, T* c, const int* ldc,           \
                              const int* stridec, const int* batch_size);
#define ZAR_BLAS3_DECL_CPLX(t, R)                                                                                 \
  void t##hemm_(const char* side, const char* uplo, const int* m, const int* n, const void* alpha,                \
                const void* a, const int* lda, const void* b, const int* ldb, const void* beta, void* c,         \
                const int* ldc);                                                                                 \
  void t##herk_(const char* uplo, const char* trans, const int* n, const int* k, const R* alpha, const void* a,   \
                const int* lda, const R* beta, void* c, const int* ldc);                                         \
  void t##her2k_(const char* uplo, const char* trans, const int* n, const int* k, const void* alpha,              \
                 const void* a, const int* lda, const void* b, const int* ldb, const R* beta, void* c,           \
                 const int* ldc);                                                                                \
  void t##gemm3m_(const char* transa, const char* transb, const int* m, const int* n, const int* k,               \
                  const void* alpha, const void* a, const int* lda, const void* b, const int* ldb,               \
                  const void* beta, void* c, const int* ldc);
ZAR_BLAS3_DECL_ALL(s, float)
ZAR_BLAS3_DECL_ALL(d, double)
ZAR_BLAS3_DECL_ALL(c, void)
ZAR_BLAS3_DECL_ALL(z, void)
ZAR_BLAS3_DECL_CPLX(c, float)
ZAR_BLAS3_DECL_CPLX(z, double)
#undef ZAR_BLAS3_DECL_ALL
#undef ZAR_BLAS3_DECL_CPLX

/* xerbla_ for a routine name held in a character array of srname_len
 * characters (at most 32 are used). */
void xerbla_array_(const char* srname_array, const int* srname_len, const int* info, int srname_array_len);

/* The Level-1 functions as subroutines: the value is stored into the last
 * argument (e.g. ddotsub_(n, x, incx, y, incy, &dot)). */
void sdotsub_(const int* n, const float* x, const int* incx, const float* y, const int* incy, float* dot);
void ddotsub_(const int* n, const double* x, const int* incx, const double* y, const int* incy, double* dot);
void dsdotsub_(const int* n, const float* x, const int* incx, const float* y, const int* incy, double* dot);
void sdsdotsub_(const int* n, const float* sb, const float* x, const int* incx, const float* y, const int* incy,
                float* dot);
void cdotusub_(const int* n, const void* x, const int* incx, const void* y, const int* incy, void* dot);
void cdotcsub_(const int* n, const void* x, const int* incx, const void* y, const int* incy, void* dot);
void zdotusub_(const int* n, const void* x, const int* incx, const void* y, const int* incy, void* dot);
void zdotcsub_(const int* n, const void* x, const int* incx, const void* y, const int* incy, void* dot);
/* p: the prefix of nrm2/asum (s, d, sc, dz), l: the letter of i?amax */
#define ZAR_BLAS1_SUB_DECL(p, l, T, R)                                    \
  void p##nrm2sub_(const int* n, const T* x, const int* incx, R* result); \
  void p##asumsub_(const int* n, const T* x, const int* incx, R* result); \
  void i##l##amaxsub_(const int* n, const T* x, const int* incx, int* result);
ZAR_BLAS1_SUB_DECL(s, s, float, float)
ZAR_BLAS1_SUB_DECL(d, d, double, double)
ZAR_BLAS1_SUB_DECL(sc, c, void, float)
ZAR_BLAS1_SUB_DECL(dz, z, void, double)
#undef ZAR_BLAS1_SUB_DECL
void scabs1sub_(const void* z, float* result);
void dcabs1sub_(const void* z, double* result);

#ifdef __cplusplus
}
#endif
#endif
