/* CBLAS Level-1 routines of zar; included by cblas.h. */
#ifndef ZAR_CBLAS_LEVEL1_H
#define ZAR_CBLAS_LEVEL1_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
