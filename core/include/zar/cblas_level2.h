/* CBLAS Level-2 routines of zar; included by cblas.h. */
#ifndef ZAR_CBLAS_LEVEL2_H
#define ZAR_CBLAS_LEVEL2_H
#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
