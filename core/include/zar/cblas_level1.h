/* CBLAS Level-1 routines of zar; included by cblas.h.
 *
 * As in the reference CBLAS, complex scalars and vectors are passed as
 * pointers to (real, imaginary) pairs and the complex dot products write
 * their result through the last argument (the _sub forms). Extensions:
 * cblas_i?amin, cblas_?axpby, and the sparse-vector routines at the end. */
#ifndef ZAR_CBLAS_LEVEL1_H
#define ZAR_CBLAS_LEVEL1_H
#ifdef __cplusplus
extern "C" {
#endif

float cblas_sdsdot(const int N, const float alpha, const float* X, const int incX, const float* Y, const int incY);
double cblas_dsdot(const int N, const float* X, const int incX, const float* Y, const int incY);
float cblas_sdot(const int N, const float* X, const int incX, const float* Y, const int incY);
double cblas_ddot(const int N, const double* X, const int incX, const double* Y, const int incY);
void cblas_cdotu_sub(const int N, const void* X, const int incX, const void* Y, const int incY, void* dotu);
void cblas_cdotc_sub(const int N, const void* X, const int incX, const void* Y, const int incY, void* dotc);
void cblas_zdotu_sub(const int N, const void* X, const int incX, const void* Y, const int incY, void* dotu);
void cblas_zdotc_sub(const int N, const void* X, const int incX, const void* Y, const int incY, void* dotc);

float cblas_snrm2(const int N, const float* X, const int incX);
float cblas_sasum(const int N, const float* X, const int incX);
double cblas_dnrm2(const int N, const double* X, const int incX);
double cblas_dasum(const int N, const double* X, const int incX);
float cblas_scnrm2(const int N, const void* X, const int incX);
float cblas_scasum(const int N, const void* X, const int incX);
double cblas_dznrm2(const int N, const void* X, const int incX);
double cblas_dzasum(const int N, const void* X, const int incX);
float cblas_scabs1(const void* z);  /* |Re z| + |Im z| */
double cblas_dcabs1(const void* z);

/* 0-based index of the largest / smallest magnitude (0 when N < 1 or incX < 1) */
CBLAS_INDEX cblas_isamax(const int N, const float* X, const int incX);
CBLAS_INDEX cblas_idamax(const int N, const double* X, const int incX);
CBLAS_INDEX cblas_icamax(const int N, const void* X, const int incX);
CBLAS_INDEX cblas_izamax(const int N, const void* X, const int incX);
CBLAS_INDEX cblas_isamin(const int N, const float* X, const int incX);
CBLAS_INDEX cblas_idamin(const int N, const double* X, const int incX);
CBLAS_INDEX cblas_icamin(const int N, const void* X, const int incX);
CBLAS_INDEX cblas_izamin(const int N, const void* X, const int incX);

void cblas_sswap(const int N, float* X, const int incX, float* Y, const int incY);
void cblas_scopy(const int N, const float* X, const int incX, float* Y, const int incY);
void cblas_saxpy(const int N, const float alpha, const float* X, const int incX, float* Y, const int incY);
void cblas_dswap(const int N, double* X, const int incX, double* Y, const int incY);
void cblas_dcopy(const int N, const double* X, const int incX, double* Y, const int incY);
void cblas_daxpy(const int N, const double alpha, const double* X, const int incX, double* Y, const int incY);
void cblas_cswap(const int N, void* X, const int incX, void* Y, const int incY);
void cblas_ccopy(const int N, const void* X, const int incX, void* Y, const int incY);
void cblas_caxpy(const int N, const void* alpha, const void* X, const int incX, void* Y, const int incY);
void cblas_zswap(const int N, void* X, const int incX, void* Y, const int incY);
void cblas_zcopy(const int N, const void* X, const int incX, void* Y, const int incY);
void cblas_zaxpy(const int N, const void* alpha, const void* X, const int incX, void* Y, const int incY);

/* Y := alpha X + beta Y (beta = 0: Y is not read; alpha = 0: X is not read) */
void cblas_saxpby(const int N, const float alpha, const float* X, const int incX, const float beta, float* Y,
                  const int incY);
void cblas_daxpby(const int N, const double alpha, const double* X, const int incX, const double beta, double* Y,
                  const int incY);
void cblas_caxpby(const int N, const void* alpha, const void* X, const int incX, const void* beta, void* Y,
                  const int incY);
void cblas_zaxpby(const int N, const void* alpha, const void* X, const int incX, const void* beta, void* Y,
                  const int incY);

void cblas_srotg(float* a, float* b, float* c, float* s);
void cblas_drotg(double* a, double* b, double* c, double* s);
void cblas_crotg(void* a, void* b, float* c, void* s);
void cblas_zrotg(void* a, void* b, double* c, void* s);
void cblas_srotmg(float* d1, float* d2, float* b1, const float b2, float* P);
void cblas_drotmg(double* d1, double* d2, double* b1, const double b2, double* P);
void cblas_srot(const int N, float* X, const int incX, float* Y, const int incY, const float c, const float s);
void cblas_drot(const int N, double* X, const int incX, double* Y, const int incY, const double c, const double s);
void cblas_csrot(const int N, void* X, const int incX, void* Y, const int incY, const float c, const float s);
void cblas_zdrot(const int N, void* X, const int incX, void* Y, const int incY, const double c, const double s);
void cblas_srotm(const int N, float* X, const int incX, float* Y, const int incY, const float* P);
void cblas_drotm(const int N, double* X, const int incX, double* Y, const int incY, const double* P);

void cblas_sscal(const int N, const float alpha, float* X, const int incX);
void cblas_dscal(const int N, const double alpha, double* X, const int incX);
void cblas_cscal(const int N, const void* alpha, void* X, const int incX);
void cblas_zscal(const int N, const void* alpha, void* X, const int incX);
void cblas_csscal(const int N, const float alpha, void* X, const int incX);
void cblas_zdscal(const int N, const double alpha, void* X, const int incX);

/* Sparse vectors (nz, x, indx) with 0-based indices into the dense vector y.
 * Updates follow the order of indx: repeated indices accumulate (axpyi), and
 * gthrz reads the zero its own first occurrence wrote. */
void cblas_saxpyi(const int nz, const float a, const float* x, const int* indx, float* y);
void cblas_daxpyi(const int nz, const double a, const double* x, const int* indx, double* y);
void cblas_caxpyi(const int nz, const void* a, const void* x, const int* indx, void* y);
void cblas_zaxpyi(const int nz, const void* a, const void* x, const int* indx, void* y);
float cblas_sdoti(const int nz, const float* x, const int* indx, const float* y);
double cblas_ddoti(const int nz, const double* x, const int* indx, const double* y);
void cblas_cdotci_sub(const int nz, const void* x, const int* indx, const void* y, void* dotci);
void cblas_zdotci_sub(const int nz, const void* x, const int* indx, const void* y, void* dotci);
void cblas_cdotui_sub(const int nz, const void* x, const int* indx, const void* y, void* dotui);
void cblas_zdotui_sub(const int nz, const void* x, const int* indx, const void* y, void* dotui);
void cblas_sgthr(const int nz, const float* y, float* x, const int* indx);
void cblas_dgthr(const int nz, const double* y, double* x, const int* indx);
void cblas_cgthr(const int nz, const void* y, void* x, const int* indx);
void cblas_zgthr(const int nz, const void* y, void* x, const int* indx);
void cblas_sgthrz(const int nz, float* y, float* x, const int* indx);
void cblas_dgthrz(const int nz, double* y, double* x, const int* indx);
void cblas_cgthrz(const int nz, void* y, void* x, const int* indx);
void cblas_zgthrz(const int nz, void* y, void* x, const int* indx);
void cblas_ssctr(const int nz, const float* x, const int* indx, float* y);
void cblas_dsctr(const int nz, const double* x, const int* indx, double* y);
void cblas_csctr(const int nz, const void* x, const int* indx, void* y);
void cblas_zsctr(const int nz, const void* x, const int* indx, void* y);
void cblas_sroti(const int nz, float* x, const int* indx, float* y, const float c, const float s);
void cblas_droti(const int nz, double* x, const int* indx, double* y, const double c, const double s);

#ifdef __cplusplus
}
#endif
#endif
