/* zar CBLAS interface: compatible with the reference cblas.h. */
#ifndef CBLAS_H
#define CBLAS_H
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CBLAS_INDEX size_t

typedef enum CBLAS_LAYOUT { CblasRowMajor = 101, CblasColMajor = 102 } CBLAS_LAYOUT;
typedef enum CBLAS_TRANSPOSE { CblasNoTrans = 111, CblasTrans = 112, CblasConjTrans = 113 } CBLAS_TRANSPOSE;
typedef enum CBLAS_UPLO { CblasUpper = 121, CblasLower = 122 } CBLAS_UPLO;
typedef enum CBLAS_DIAG { CblasNonUnit = 131, CblasUnit = 132 } CBLAS_DIAG;
typedef enum CBLAS_SIDE { CblasLeft = 141, CblasRight = 142 } CBLAS_SIDE;
typedef CBLAS_LAYOUT CBLAS_ORDER;

/* Reports an illegal argument of a cblas_ routine; an application may define
 * its own. The default prints the reference message and returns. */
void cblas_xerbla(int p, const char* rout, const char* form, ...);

#ifdef __cplusplus
}
#endif

#include "zar/cblas_level1.h"
#include "zar/cblas_level2.h"
#include "zar/cblas_level3.h"

#endif
