// Names the reference BLAS and CBLAS libraries export besides the routines
// themselves, so that programs linked against them find everything here:
//   xerbla_array_   the xerbla of callers that hold the routine name as a
//                   character array (LAPACK's C-callable helpers);
//   <fn>sub_        subroutine forms of the Level-1 functions, which store the
//                   function's value into their last argument (the reference
//                   CBLAS calls them to avoid Fortran function return ABIs);
//   CBLAS_CallFromC set to 1 while a CBLAS call runs.
#include <cstring>

#include "core.h"
#include "zar/blas_level1.h"

extern "C" void xerbla_(const char* name, const int* info, int name_length);

extern "C" {
__attribute__((visibility("default"))) int CBLAS_CallFromC = 0;
}

// As the reference: the name is copied into 32 characters, blank-padded,
// and reported with that length.
ZAR_API void xerbla_array_(const char* srname_array, const int* srname_len, const int* info, int) {
  char name[32];
  std::memset(name, ' ', sizeof name);
  const int len = *srname_len < 0 ? 0 : *srname_len > 32 ? 32 : *srname_len;
  if (len > 0) std::memcpy(name, srname_array, static_cast<size_t>(len));
  xerbla_(name, info, 32);
}

// The argument lists ((declaration), (call)) of the common signatures.
#define ZAR_SUB_DOT(T) ((const int* n, const T* x, const int* incx, const T* y, const int* incy), (n, x, incx, y, incy))
#define ZAR_SUB_VEC(T) ((const int* n, const T* x, const int* incx), (n, x, incx))
#define ZAR_SUB_SDSDOT                                                                                \
  ((const int* n, const float* sb, const float* x, const int* incx, const float* y, const int* incy), \
   (n, sb, x, incx, y, incy))

// (function, result type, argument lists)
#define ZAR_SUB_LIST(X)                                                                                      \
  X(sdot, float, ZAR_SUB_DOT(float))                                                                         \
  X(ddot, double, ZAR_SUB_DOT(double)) X(dsdot, double, ZAR_SUB_DOT(float)) X(sdsdot, float, ZAR_SUB_SDSDOT) \
      X(cdotu, zar_fcomplex, ZAR_SUB_DOT(void)) X(cdotc, zar_fcomplex, ZAR_SUB_DOT(void))                    \
          X(zdotu, zar_dcomplex, ZAR_SUB_DOT(void)) X(zdotc, zar_dcomplex, ZAR_SUB_DOT(void))                \
              X(snrm2, float, ZAR_SUB_VEC(float)) X(dnrm2, double, ZAR_SUB_VEC(double))                      \
                  X(scnrm2, float, ZAR_SUB_VEC(void)) X(dznrm2, double, ZAR_SUB_VEC(void))                   \
                      X(sasum, float, ZAR_SUB_VEC(float)) X(dasum, double, ZAR_SUB_VEC(double))              \
                          X(scasum, float, ZAR_SUB_VEC(void)) X(dzasum, double, ZAR_SUB_VEC(void))           \
                              X(isamax, int, ZAR_SUB_VEC(float)) X(idamax, int, ZAR_SUB_VEC(double))         \
                                  X(icamax, int, ZAR_SUB_VEC(void)) X(izamax, int, ZAR_SUB_VEC(void))        \
                                      X(scabs1, float, ((const void* z), (z)))                               \
                                          X(dcabs1, double, ((const void* z), (z)))

// fn##sub_(arguments..., result): the function's arguments with the
// address of its result appended.
#define ZAR_SUB_UNPAREN(...) __VA_ARGS__
#define ZAR_SUB_DEFINE_WITH(fn, R, ARGS, NAMES) \
  ZAR_API void fn##sub_(ZAR_SUB_UNPAREN ARGS, R* result) { *result = fn##_ NAMES; }
#define ZAR_SUB_APPLY(m, ...) m(__VA_ARGS__)
#define ZAR_SUB_DEFINE(fn, R, LISTS) ZAR_SUB_APPLY(ZAR_SUB_DEFINE_WITH, fn, R, ZAR_SUB_UNPAREN LISTS)
ZAR_SUB_LIST(ZAR_SUB_DEFINE)
