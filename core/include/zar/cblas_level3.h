/* CBLAS Level-3 routines of zar; included by cblas.h. */
#ifndef ZAR_CBLAS_LEVEL3_H
#define ZAR_CBLAS_LEVEL3_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
