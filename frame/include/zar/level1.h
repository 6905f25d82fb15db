// Level-1 BLAS kernels: prototypes of every exported vector kernel.
//
// The kernel library defines them (blas/level1/*.cpp); the core includes this
// header so that ZAR_KERNEL type-checks each call. Every argument is passed by
// address; scalar results come back by value (complex ones as zar::cx<R>).
//
// Each family is one signature macro SIG(name, T) with fixed parameter names
// and one list of (name, element type) entries. The same lists generate the
// declarations here and the one-line definitions in the kernel sources.
#pragma once
#include "zar/export.h"
#include "zar/types.h"

// ---- signatures: fn the function name, T the element type of the vectors,
// R its real type
#define ZAR_L1_SIG_AXPY(fn, T, R) \
  void fn(const int* n, const T* alpha, const T* x, const int* incx, T* y, const int* incy)
#define ZAR_L1_SIG_AXPBY(fn, T, R) \
  void fn(const int* n, const T* alpha, const T* x, const int* incx, const T* beta, T* y, const int* incy)
#define ZAR_L1_SIG_DOT(fn, T, R) T fn(const int* n, const T* x, const int* incx, const T* y, const int* incy)
#define ZAR_L1_SIG_DSDOT(fn, T, R) double fn(const int* n, const T* x, const int* incx, const T* y, const int* incy)
#define ZAR_L1_SIG_SDSDOT(fn, T, R) \
  float fn(const int* n, const T* sb, const T* x, const int* incx, const T* y, const int* incy)
#define ZAR_L1_SIG_NORM(fn, T, R) R fn(const int* n, const T* x, const int* incx)
#define ZAR_L1_SIG_IAMAX(fn, T, R) int fn(const int* n, const T* x, const int* incx)
#define ZAR_L1_SIG_ROT(fn, T, R) \
  void fn(const int* n, T* x, const int* incx, T* y, const int* incy, const R* c, const R* s)
#define ZAR_L1_SIG_CROT(fn, T, R) \
  void fn(const int* n, T* x, const int* incx, T* y, const int* incy, const R* c, const T* s)
#define ZAR_L1_SIG_ROTM(fn, T, R) void fn(const int* n, T* x, const int* incx, T* y, const int* incy, const T* param)
#define ZAR_L1_SIG_ROTG(fn, T, R) void fn(T* a, T* b, R* c, T* s)
#define ZAR_L1_SIG_ROTMG(fn, T, R) void fn(T* d1, T* d2, T* x1, const T* y1, T* param)
#define ZAR_L1_SIG_SCAL(fn, T, R) void fn(const int* n, const T* alpha, T* x, const int* incx)
#define ZAR_L1_SIG_RSCAL(fn, T, R) void fn(const int* n, const R* alpha, T* x, const int* incx)
#define ZAR_L1_SIG_SWAP(fn, T, R) void fn(const int* n, T* x, const int* incx, T* y, const int* incy)
#define ZAR_L1_SIG_COPY(fn, T, R) void fn(const int* n, const T* x, const int* incx, T* y, const int* incy)
#define ZAR_L1_SIG_AXPYI(fn, T, R) void fn(const int* nz, const T* alpha, const T* x, const int* indx, T* y)
#define ZAR_L1_SIG_DOTI(fn, T, R) T fn(const int* nz, const T* x, const int* indx, const T* y)
#define ZAR_L1_SIG_GTHR(fn, T, R) void fn(const int* nz, const T* y, T* x, const int* indx)
#define ZAR_L1_SIG_GTHRZ(fn, T, R) void fn(const int* nz, T* y, T* x, const int* indx)
#define ZAR_L1_SIG_SCTR(fn, T, R) void fn(const int* nz, const T* x, const int* indx, T* y)
#define ZAR_L1_SIG_ROTI(fn, T, R) void fn(const int* nz, T* x, const int* indx, T* y, const T* c, const T* s)
#define ZAR_L1_SIG_CABS1(fn, T, R) R fn(const T* z)

// ---- the parameter names of each signature, to forward a call
#define ZAR_L1_ARGS_AXPY (n, alpha, x, incx, y, incy)
#define ZAR_L1_ARGS_AXPBY (n, alpha, x, incx, beta, y, incy)
#define ZAR_L1_ARGS_DOT (n, x, incx, y, incy)
#define ZAR_L1_ARGS_DSDOT (n, x, incx, y, incy)
#define ZAR_L1_ARGS_SDSDOT (n, sb, x, incx, y, incy)
#define ZAR_L1_ARGS_NORM (n, x, incx)
#define ZAR_L1_ARGS_IAMAX (n, x, incx)
#define ZAR_L1_ARGS_ROT (n, x, incx, y, incy, c, s)
#define ZAR_L1_ARGS_CROT (n, x, incx, y, incy, c, s)
#define ZAR_L1_ARGS_ROTM (n, x, incx, y, incy, param)
#define ZAR_L1_ARGS_ROTG (a, b, c, s)
#define ZAR_L1_ARGS_ROTMG (d1, d2, x1, y1, param)
#define ZAR_L1_ARGS_SCAL (n, alpha, x, incx)
#define ZAR_L1_ARGS_RSCAL (n, alpha, x, incx)
#define ZAR_L1_ARGS_SWAP (n, x, incx, y, incy)
#define ZAR_L1_ARGS_COPY (n, x, incx, y, incy)
#define ZAR_L1_ARGS_AXPYI (nz, alpha, x, indx, y)
#define ZAR_L1_ARGS_DOTI (nz, x, indx, y)
#define ZAR_L1_ARGS_GTHR (nz, y, x, indx)
#define ZAR_L1_ARGS_GTHRZ (nz, y, x, indx)
#define ZAR_L1_ARGS_SCTR (nz, x, indx, y)
#define ZAR_L1_ARGS_ROTI (nz, x, indx, y, c, s)
#define ZAR_L1_ARGS_CABS1 (z)

// ---- lists: X(signature, kernel name, routine, element type, variant). The variant is a tag
// the kernel sources turn into a template argument (for example the fast
// path or its `_cnr` twin); the declarations ignore it.
// clang-format off
#define ZAR_L1_LIST_AXPY(X)                                                               \
  X(AXPY, xsaxpy, saxpy, float, plain)  X(AXPY, xdaxpy, daxpy, double, plain)             \
  X(AXPY, xcaxpy, caxpy, zar::c32, plain)  X(AXPY, xzaxpy, zaxpy, zar::c64, plain)        \
  X(AXPY, caxpy_a, caxpy_a, zar::c32, plain)  X(AXPY, zaxpy_a, zaxpy_a, zar::c64, plain)
#define ZAR_L1_LIST_AXPBY(X)                                                              \
  X(AXPBY, xsaxpby, saxpby, float, plain)  X(AXPBY, xdaxpby, daxpby, double, plain)       \
  X(AXPBY, xcaxpby, caxpby, zar::c32, plain)  X(AXPBY, xzaxpby, zaxpby, zar::c64, plain)
#define ZAR_L1_LIST_DOT(X)                                                           \
  X(DOT, xsdot, sdot, float, fast)  X(DOT, xddot, ddot, double, fast)                \
  X(DOT, xsdot_cnr, sdot_cnr, float, cnr)  X(DOT, xddot_cnr, ddot_cnr, double, cnr)  \
  X(DOT, xcdotc, cdotc, zar::c32, conj)  X(DOT, xzdotc, zdotc, zar::c64, conj)       \
  X(DOT, xcdotu, cdotu, zar::c32, plain)  X(DOT, xzdotu, zdotu, zar::c64, plain)
#define ZAR_L1_LIST_DSDOT(X)                                                         \
  X(DSDOT, xdsdot, dsdot, float, fast)  X(DSDOT, xdsdot_cnr, dsdot_cnr, float, cnr)
#define ZAR_L1_LIST_SDSDOT(X)                                                              \
  X(SDSDOT, xsdsdot, sdsdot, float, fast)  X(SDSDOT, xsdsdot_cnr, sdsdot_cnr, float, cnr)
#define ZAR_L1_LIST_NRM2(X)                                                                    \
  X(NORM, xsnrm2, snrm2, float, fast)  X(NORM, xscnrm2, scnrm2, zar::c32, fast)                \
  X(NORM, xsnrm2_cnr, snrm2_cnr, float, cnr)  X(NORM, xscnrm2_cnr, scnrm2_cnr, zar::c32, cnr)
#define ZAR_L1_LIST_NRM2_X87(X)                                                     \
  X(NORM, xdnrm2, dnrm2, double, plain)  X(NORM, xdznrm2, dznrm2, zar::c64, plain)
#define ZAR_L1_LIST_ASUM(X)                                                                         \
  X(NORM, xsasum, sasum, float, fast)  X(NORM, xdasum, dasum, double, fast)                         \
  X(NORM, xscasum, scasum, zar::c32, fast)  X(NORM, xdzasum, dzasum, zar::c64, fast)                \
  X(NORM, xsasum_cnr, sasum_cnr, float, cnr)  X(NORM, xdasum_cnr, dasum_cnr, double, cnr)           \
  X(NORM, xscasum_cnr, scasum_cnr, zar::c32, cnr)  X(NORM, xdzasum_cnr, dzasum_cnr, zar::c64, cnr)
#define ZAR_L1_LIST_IAMAX(X)                                                            \
  X(IAMAX, xisamax, isamax, float, amax)  X(IAMAX, xidamax, idamax, double, amax)       \
  X(IAMAX, xicamax, icamax, zar::c32, amax)  X(IAMAX, xizamax, izamax, zar::c64, amax)  \
  X(IAMAX, xisamin, isamin, float, amin)  X(IAMAX, xidamin, idamin, double, amin)       \
  X(IAMAX, xicamin, icamin, zar::c32, amin)  X(IAMAX, xizamin, izamin, zar::c64, amin)
#define ZAR_L1_LIST_IAMAX_NONAN(X)                                                                              \
  X(IAMAX, xisamax_nonan, isamax_nonan, float, amax)  X(IAMAX, xidamax_nonan, idamax_nonan, double, amax)       \
  X(IAMAX, xicamax_nonan, icamax_nonan, zar::c32, amax)  X(IAMAX, xizamax_nonan, izamax_nonan, zar::c64, amax)  \
  X(IAMAX, xisamin_nonan, isamin_nonan, float, amin)  X(IAMAX, xidamin_nonan, idamin_nonan, double, amin)       \
  X(IAMAX, xicamin_nonan, icamin_nonan, zar::c32, amin)  X(IAMAX, xizamin_nonan, izamin_nonan, zar::c64, amin)
#define ZAR_L1_LIST_ROT(X)                                                        \
  X(ROT, xsrot, srot, float, plain)  X(ROT, xdrot, drot, double, plain)           \
  X(ROT, xcsrot, csrot, zar::c32, plain)  X(ROT, xzdrot, zdrot, zar::c64, plain)
#define ZAR_L1_LIST_CROT(X)                                                     \
  X(CROT, xcrot, crot, zar::c32, plain)  X(CROT, xzrot, zrot, zar::c64, plain)
#define ZAR_L1_LIST_ROTM(X)                                                    \
  X(ROTM, xsrotm, srotm, float, plain)  X(ROTM, xdrotm, drotm, double, plain)
#define ZAR_L1_LIST_ROTG(X)                                                  \
  X(ROTG, srotg, srotg, float, plain)  X(ROTG, drotg, drotg, double, plain)
#define ZAR_L1_LIST_CROTG(X)                                                      \
  X(ROTG, crotg, crotg, zar::c32, plain)  X(ROTG, zrotg, zrotg, zar::c64, plain)
#define ZAR_L1_LIST_ROTMG(X)                                                       \
  X(ROTMG, srotmg, srotmg, float, plain)  X(ROTMG, drotmg, drotmg, double, plain)
#define ZAR_L1_LIST_SCAL(X)                                                         \
  X(SCAL, xsscal, sscal, float, plain)  X(SCAL, xdscal, dscal, double, plain)       \
  X(SCAL, xcscal, cscal, zar::c32, plain)  X(SCAL, xzscal, zscal, zar::c64, plain)
#define ZAR_L1_LIST_RSCAL(X)                                                              \
  X(RSCAL, xcsscal, csscal, zar::c32, plain)  X(RSCAL, xzdscal, zdscal, zar::c64, plain)
#define ZAR_L1_LIST_SWAP(X)                                                         \
  X(SWAP, xsswap, sswap, float, plain)  X(SWAP, xdswap, dswap, double, plain)       \
  X(SWAP, xcswap, cswap, zar::c32, plain)  X(SWAP, xzswap, zswap, zar::c64, plain)
#define ZAR_L1_LIST_COPY(X)                                                         \
  X(COPY, xscopy, scopy, float, plain)  X(COPY, xdcopy, dcopy, double, plain)       \
  X(COPY, xccopy, ccopy, zar::c32, plain)  X(COPY, xzcopy, zcopy, zar::c64, plain)
#define ZAR_L1_LIST_AXPYI(X)                                                            \
  X(AXPYI, saxpyi, saxpyi, float, plain)  X(AXPYI, daxpyi, daxpyi, double, plain)       \
  X(AXPYI, caxpyi, caxpyi, zar::c32, plain)  X(AXPYI, zaxpyi, zaxpyi, zar::c64, plain)
#define ZAR_L1_LIST_DOTI(X)                                                           \
  X(DOTI, sdoti, sdoti, float, plain)  X(DOTI, ddoti, ddoti, double, plain)           \
  X(DOTI, cdotci, cdotci, zar::c32, conj)  X(DOTI, zdotci, zdotci, zar::c64, conj)    \
  X(DOTI, cdotui, cdotui, zar::c32, plain)  X(DOTI, zdotui, zdotui, zar::c64, plain)
#define ZAR_L1_LIST_GTHR(X)                                                       \
  X(GTHR, sgthr, sgthr, float, plain)  X(GTHR, dgthr, dgthr, double, plain)       \
  X(GTHR, cgthr, cgthr, zar::c32, plain)  X(GTHR, zgthr, zgthr, zar::c64, plain)
#define ZAR_L1_LIST_GTHRZ(X)                                                            \
  X(GTHRZ, sgthrz, sgthrz, float, plain)  X(GTHRZ, dgthrz, dgthrz, double, plain)       \
  X(GTHRZ, cgthrz, cgthrz, zar::c32, plain)  X(GTHRZ, zgthrz, zgthrz, zar::c64, plain)
#define ZAR_L1_LIST_SCTR(X)                                                       \
  X(SCTR, ssctr, ssctr, float, plain)  X(SCTR, dsctr, dsctr, double, plain)       \
  X(SCTR, csctr, csctr, zar::c32, plain)  X(SCTR, zsctr, zsctr, zar::c64, plain)
#define ZAR_L1_LIST_ROTI(X)                                                  \
  X(ROTI, sroti, sroti, float, plain)  X(ROTI, droti, droti, double, plain)
#define ZAR_L1_LIST_CABS1(X)                                                            \
  X(CABS1, scabs1, scabs1, zar::c32, plain)  X(CABS1, dcabs1, dcabs1, zar::c64, plain)

// Every kernel of the family.
#define ZAR_L1_KERNELS(X)                           \
  ZAR_L1_LIST_AXPY(X)  ZAR_L1_LIST_AXPBY(X)         \
  ZAR_L1_LIST_DOT(X)  ZAR_L1_LIST_DSDOT(X)          \
  ZAR_L1_LIST_SDSDOT(X)  ZAR_L1_LIST_NRM2(X)        \
  ZAR_L1_LIST_NRM2_X87(X)  ZAR_L1_LIST_ASUM(X)      \
  ZAR_L1_LIST_IAMAX(X)  ZAR_L1_LIST_IAMAX_NONAN(X)  \
  ZAR_L1_LIST_ROT(X)  ZAR_L1_LIST_CROT(X)           \
  ZAR_L1_LIST_ROTM(X)  ZAR_L1_LIST_ROTG(X)          \
  ZAR_L1_LIST_CROTG(X)  ZAR_L1_LIST_ROTMG(X)        \
  ZAR_L1_LIST_SCAL(X)  ZAR_L1_LIST_RSCAL(X)         \
  ZAR_L1_LIST_SWAP(X)  ZAR_L1_LIST_COPY(X)          \
  ZAR_L1_LIST_AXPYI(X)  ZAR_L1_LIST_DOTI(X)         \
  ZAR_L1_LIST_GTHR(X)  ZAR_L1_LIST_GTHRZ(X)         \
  ZAR_L1_LIST_SCTR(X)  ZAR_L1_LIST_ROTI(X)          \
  ZAR_L1_LIST_CABS1(X)

// clang-format on

// The kernel zar_blas_avx_<kernel name> and the core's dispatching front end
// zar_blas_<routine> (same arguments, no checks) that kernels may call.
#define ZAR_L1_KERNEL_SIG(F, name, T) ZAR_L1_SIG_##F(ZAR_BLAS(name), T, zar::real_t<T>)
#define ZAR_L1_FRONT_SIG(F, routine, T) ZAR_L1_SIG_##F(zar_blas_##routine, T, zar::real_t<T>)
#define ZAR_L1_DECLARE(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(F, name, T);    \
  ZAR_EXPORT ZAR_L1_FRONT_SIG(F, routine, T);
ZAR_L1_KERNELS(ZAR_L1_DECLARE)
#undef ZAR_L1_DECLARE
