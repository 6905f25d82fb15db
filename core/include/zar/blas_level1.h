/* Fortran BLAS Level-1 routines of zar (arguments by address, hidden
 * string lengths omitted); included by zar/blas.h.
 *
 * Complex vectors and scalars are passed as pointers to (real, imaginary)
 * pairs (void * here). The complex dot products return the C complex type,
 * as gfortran does. Besides the reference set: i?amin_ (index of the smallest
 * magnitude) and ?axpby_ (y := alpha x + beta y). */
#ifndef ZAR_BLAS_LEVEL1_H
#define ZAR_BLAS_LEVEL1_H
#ifdef __cplusplus
extern "C" {
typedef __complex__ float zar_fcomplex;
typedef __complex__ double zar_dcomplex;
#else
typedef float _Complex zar_fcomplex;
typedef double _Complex zar_dcomplex;
#endif

/* y := alpha x + y */
void saxpy_(const int* n, const float* alpha, const float* x, const int* incx, float* y, const int* incy);
void daxpy_(const int* n, const double* alpha, const double* x, const int* incx, double* y, const int* incy);
void caxpy_(const int* n, const void* alpha, const void* x, const int* incx, void* y, const int* incy);
void zaxpy_(const int* n, const void* alpha, const void* x, const int* incx, void* y, const int* incy);
/* y := alpha x + beta y */
void saxpby_(const int* n, const float* alpha, const float* x, const int* incx, const float* beta, float* y,
             const int* incy);
void daxpby_(const int* n, const double* alpha, const double* x, const int* incx, const double* beta, double* y,
             const int* incy);
void caxpby_(const int* n, const void* alpha, const void* x, const int* incx, const void* beta, void* y,
             const int* incy);
void zaxpby_(const int* n, const void* alpha, const void* x, const int* incx, const void* beta, void* y,
             const int* incy);

/* inner products */
float sdot_(const int* n, const float* x, const int* incx, const float* y, const int* incy);
double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
double dsdot_(const int* n, const float* x, const int* incx, const float* y, const int* incy);
float sdsdot_(const int* n, const float* sb, const float* x, const int* incx, const float* y, const int* incy);
zar_fcomplex cdotu_(const int* n, const void* x, const int* incx, const void* y, const int* incy);
zar_fcomplex cdotc_(const int* n, const void* x, const int* incx, const void* y, const int* incy);
zar_dcomplex zdotu_(const int* n, const void* x, const int* incx, const void* y, const int* incy);
zar_dcomplex zdotc_(const int* n, const void* x, const int* incx, const void* y, const int* incy);

/* norms and sums of magnitudes */
float snrm2_(const int* n, const float* x, const int* incx);
double dnrm2_(const int* n, const double* x, const int* incx);
float scnrm2_(const int* n, const void* x, const int* incx);
double dznrm2_(const int* n, const void* x, const int* incx);
float sasum_(const int* n, const float* x, const int* incx);
double dasum_(const int* n, const double* x, const int* incx);
float scasum_(const int* n, const void* x, const int* incx);
double dzasum_(const int* n, const void* x, const int* incx);
float scabs1_(const void* z);
double dcabs1_(const void* z);

/* 1-based index of the largest / smallest magnitude (0 when n < 1 or incx < 1) */
int isamax_(const int* n, const float* x, const int* incx);
int idamax_(const int* n, const double* x, const int* incx);
int icamax_(const int* n, const void* x, const int* incx);
int izamax_(const int* n, const void* x, const int* incx);
int isamin_(const int* n, const float* x, const int* incx);
int idamin_(const int* n, const double* x, const int* incx);
int icamin_(const int* n, const void* x, const int* incx);
int izamin_(const int* n, const void* x, const int* incx);

/* plane rotations */
void srot_(const int* n, float* x, const int* incx, float* y, const int* incy, const float* c, const float* s);
void drot_(const int* n, double* x, const int* incx, double* y, const int* incy, const double* c, const double* s);
void csrot_(const int* n, void* x, const int* incx, void* y, const int* incy, const float* c, const float* s);
void zdrot_(const int* n, void* x, const int* incx, void* y, const int* incy, const double* c, const double* s);
void srotm_(const int* n, float* x, const int* incx, float* y, const int* incy, const float* param);
void drotm_(const int* n, double* x, const int* incx, double* y, const int* incy, const double* param);
void srotg_(float* a, float* b, float* c, float* s);
void drotg_(double* a, double* b, double* c, double* s);
void crotg_(void* a, void* b, float* c, void* s);
void zrotg_(void* a, void* b, double* c, void* s);
void srotmg_(float* d1, float* d2, float* x1, const float* y1, float* param);
void drotmg_(double* d1, double* d2, double* x1, const double* y1, double* param);

/* scaling, exchange, copy */
void sscal_(const int* n, const float* alpha, float* x, const int* incx);
void dscal_(const int* n, const double* alpha, double* x, const int* incx);
void cscal_(const int* n, const void* alpha, void* x, const int* incx);
void zscal_(const int* n, const void* alpha, void* x, const int* incx);
void csscal_(const int* n, const float* alpha, void* x, const int* incx);
void zdscal_(const int* n, const double* alpha, void* x, const int* incx);
void sswap_(const int* n, float* x, const int* incx, float* y, const int* incy);
void dswap_(const int* n, double* x, const int* incx, double* y, const int* incy);
void cswap_(const int* n, void* x, const int* incx, void* y, const int* incy);
void zswap_(const int* n, void* x, const int* incx, void* y, const int* incy);
void scopy_(const int* n, const float* x, const int* incx, float* y, const int* incy);
void dcopy_(const int* n, const double* x, const int* incx, double* y, const int* incy);
void ccopy_(const int* n, const void* x, const int* incx, void* y, const int* incy);
void zcopy_(const int* n, const void* x, const int* incx, void* y, const int* incy);

#ifdef __cplusplus
}
#endif
#endif
