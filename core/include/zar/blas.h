/* zar Fortran BLAS interface (gfortran calling convention) for C and C++. */
#ifndef ZAR_BLAS_H
#define ZAR_BLAS_H

#ifdef __cplusplus
extern "C" {
#endif
/* Reports an illegal argument; an application may define its own. The
 * default prints " ** On entry to NAME parameter number  N had an illegal
 * value" on standard error and returns. */
void xerbla_(const char* name, const int* info, int name_length);
int lsame_(const char* a, const char* b);
#ifdef __cplusplus
}
#endif

#include "zar/blas_level1.h"
#include "zar/blas_level2.h"
#include "zar/blas_level3.h"

#endif
