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

// (name, result type, argument list, argument names)
#define ZAR_SUB_LIST(X)                                                                                       \
  X(sdot, float, (const int* n, const float* x, const int* incx, const float* y, const int* incy),            \
    (n, x, incx, y, incy))                                                                                    \
  X(ddot, double, (const int* n, const double* x, const int* incx, const double* y, const int* incy),         \
    (n, x, incx, y, incy))                                                                                    \
  X(dsdot, double, (const int* n, const float* x, const int* incx, const float* y, const int* incy),          \
    (n, x, incx, y, incy))                                                                                    \
  X(sdsdot, float,                                                                                            \
    (const int* n, const float* sb, const float* x, const int* incx, const float* y, const int* incy),        \
    (n, sb, x, incx, y, incy))                                                                                \
  X(cdotu, zar_fcomplex, (const int* n, const void* x, const int* incx, const void* y, const int* incy),      \
    (n, x, incx, y, incy))                                                                                    \
  X(cdotc, zar_fcomplex, (const int* n, const void* x, const int* incx, const void* y, const int* incy),      \
    (n, x, incx, y, incy))                                                                                    \
  X(zdotu, zar_dcomplex, (const int* n, const void* x, const int* incx, const void* y, const int* incy),      \
    (n, x, incx, y, incy))                                                                                    \
  X(zdotc, zar_dcomplex, (const int* n, const void* x, const int* incx, const void* y, const int* incy),      \
    (n, x, incx, y, incy))                                                                                    \
  X(snrm2, float, (const int* n, const float* x, const int* incx), (n, x, incx))                              \
  X(dnrm2, double, (const int* n, const double* x, const int* incx), (n, x, incx))                            \
  X(scnrm2, float, (const int* n, const void* x, const int* incx), (n, x, incx))                              \
  X(dznrm2, double, (const int* n, const void* x, const int* incx), (n, x, incx))                             \
  X(sasum, float, (const int* n, const float* x, const int* incx), (n, x, incx))                              \
  X(dasum, double, (const int* n, const double* x, const int* incx), (n, x, incx))                            \
  X(scasum, float, (const int* n, const void* x, const int* incx), (n, x, incx))                              \
  X(dzasum, double, (const int* n, const void* x, const int* incx), (n, x, incx))                             \
  X(isamax, int, (const int* n, const float* x, const int* incx), (n, x, incx))                               \
  X(idamax, int, (const int* n, const double* x, const int* incx), (n, x, incx))                              \
  X(icamax, int, (const int* n, const void* x, const int* incx), (n, x, incx))                                \
  X(izamax, int, (const int* n, const void* x, const int* incx), (n, x, incx))                                \
  X(scabs1, float, (const void* z), (z))                                                                      \
  X(dcabs1, double, (const void* z), (z))

// fn##sub_(arguments..., result): the function's arguments with the
// address of its result appended.
#define ZAR_SUB_UNPAREN(...) __VA_ARGS__
#define ZAR_SUB_DEFINE(fn, R, ARGS, NAMES) \
  ZAR_API void fn##sub_(ZAR_SUB_UNPAREN ARGS, R* result) { *result = fn##_ NAMES; }
ZAR_SUB_LIST(ZAR_SUB_DEFINE)
