// Level-1 BLAS in the core: the dispatching front ends zar_blas_<routine>
// (arguments by address, no checks; kernels may call them), the Fortran
// interfaces and the CBLAS interfaces.
//
// Level-1 routines report no errors. The Fortran interfaces apply the quick
// returns of the published routines before calling the kernel (scal and asum
// do nothing for incx <= 0; every other routine's quick return is also the
// kernel's own); the CBLAS interfaces call the Fortran ones, as the reference
// CBLAS does, except for the complex dot products (written through a pointer)
// and the sparse-vector routines (0-based indices).
#include "zar/level1.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "cblas.h"
#include "core.h"
#include "zar/blas.h"

namespace zar::core::l1 {

// Element types as the public interfaces spell them: complex data is void.
template <class T>
using pub = std::conditional_t<is_complex_v<T>, void, T>;
template <class T>
using vptr = pub<T>*;
template <class T>
using cvptr = const pub<T>*;
// CBLAS scalars: real ones by value, complex ones by address.
template <class T>
using cscalar = std::conditional_t<is_complex_v<T>, const void*, T>;

// One argument of a front end as the callee's parameter P: pointers are
// converted (void * to the element type), values passed by address.
template <class P, class A>
P arg(A& a) {
  if constexpr (std::is_pointer_v<A>)
    return static_cast<P>(a);
  else
    return &a;
}

// Calls f with the converted arguments, or returns a zero result when skip.
template <class R, class... P>
struct forward {
  R (*f)(P...);
  bool skip;
  template <class... A>
  R operator()(A&... a) const {
    if (skip) {
      if constexpr (std::is_void_v<R>)
        return;
      else
        return R{};
    }
    return f(arg<P>(a)...);
  }
};
template <class R, class... P>
forward(R (*)(P...), bool) -> forward<R, P...>;

// Sparse-vector routines of CBLAS take 0-based indices; the kernels count
// from 1, so they are given y one element on.
template <class T, class P>
auto base1(P* y) {
  using E = std::conditional_t<std::is_const_v<P>, const T, T>;
  return static_cast<E*>(y) + 1;
}

// A front end's pointer as a pointer to the element type T.
template <class T, class P>
auto typed(P* p) {
  using E = std::conditional_t<std::is_const_v<P>, const T, T>;
  return static_cast<E*>(p);
}

// The part [s, s + len) of a vector of n elements walked with increment inc.
template <class E>
E* part_of(E* v, int s, int len, int inc, int n) {
  return inc >= 0 ? zar::offset(v, static_cast<long long>(s) * inc) : zar::offset(v, static_cast<long long>(n - s - len) * -inc);
}

// Element-wise work on long vectors is divided among the core's threads:
// each element's result is computed alone, so the bits do not depend on the
// number of threads. body(s, len) runs the part [s, s + len).
template <class Body>
void in_parts(int n, Body body) {
  constexpr int grain = 1 << 18;
  const int nt = n >= 2 * grain ? std::min(max_threads(), n / grain) : 1;
  if (nt <= 1) return body(0, n);
  parallel(nt, [&](int tid, int nth) {
    const int chunk = ((n + nth - 1) / nth + 63) / 64 * 64;
    const int s = std::min(n, tid * chunk), e = std::min(n, s + chunk);
    if (s < e) body(s, e - s);
  });
}

// kernel(&len, x part, y part) over the parts of two vectors; a zero
// increment (a reduction into one element, or a repeated source) runs whole.
template <class T, class X, class Y, class K>
void split_xy(const int* n, int incx, int incy, X* x, Y* y, K kernel) {
  auto xt = typed<T>(x);
  auto yt = typed<T>(y);
  if (incx == 0 || incy == 0) return kernel(n, xt, yt);
  const int total = *n;
  in_parts(total,
           [&](int s, int len) { kernel(&len, part_of(xt, s, len, incx, total), part_of(yt, s, len, incy, total)); });
}

// kernel(&len, x part) over the parts of one vector walked with |incx|.
template <class T, class X, class K>
void split_x(const int* n, int incx, X* x, K kernel) {
  auto xt = typed<T>(x);
  const int step = incx < 0 ? -incx : incx, total = *n;
  if (step == 0) return kernel(n, xt);
  in_parts(total, [&](int s, int len) { kernel(&len, part_of(xt, s, len, step, total)); });
}

template <class C, class R>
C to_c_complex(cx<R> v) {
  C c;
  __real__ c = v.re;
  __imag__ c = v.im;
  return c;
}

}  // namespace zar::core::l1

using namespace zar::core::l1;
using zar::real_t;

#define ZAR_L1_K_(sym) ZAR_KERNEL(sym)
#define ZAR_L1_K(name) ZAR_L1_K_(ZAR_BLAS(name))

// ---- dispatching front ends, one per kernel of the family
#define ZAR_L1_DISPATCH(F, name, routine, T, v) \
  ZAR_API ZAR_L1_FRONT_SIG(F, routine, T) { return forward{ZAR_L1_K(name), false} ZAR_L1_ARGS_##F; }
ZAR_L1_KERNELS(ZAR_L1_DISPATCH)

// ---- Fortran: X(signature, name, kernel, element type, quick return, split)
// split: whole (one call), xy (parts of x and y), x (parts of x) for the threads
#define ZAR_L1_SKIP_none false
#define ZAR_L1_SKIP_inc (*n <= 0 || *incx <= 0)
// clang-format off
#define ZAR_L1_F77_LIST(X)                                                                             \
  X(AXPY, saxpy_, xsaxpy, float, none, xy)        X(AXPY, daxpy_, xdaxpy, double, none, xy)            \
  X(AXPY, caxpy_, xcaxpy, zar::c32, none, xy)     X(AXPY, zaxpy_, xzaxpy, zar::c64, none, xy)          \
  X(AXPBY, saxpby_, xsaxpby, float, none, xy)     X(AXPBY, daxpby_, xdaxpby, double, none, xy)         \
  X(AXPBY, caxpby_, xcaxpby, zar::c32, none, xy)  X(AXPBY, zaxpby_, xzaxpby, zar::c64, none, xy)       \
  X(DOT, sdot_, xsdot, float, none, whole)        X(DOT, ddot_, xddot, double, none, whole)            \
  X(DSDOT, dsdot_, xdsdot, float, none, whole)    X(SDSDOT, sdsdot_, xsdsdot, float, none, whole)      \
  X(NORM, snrm2_, xsnrm2, float, none, whole)     X(NORM, dnrm2_, xdnrm2, double, none, whole)         \
  X(NORM, scnrm2_, xscnrm2, zar::c32, none, whole) X(NORM, dznrm2_, xdznrm2, zar::c64, none, whole)    \
  X(NORM, sasum_, xsasum, float, inc, whole)      X(NORM, dasum_, xdasum, double, inc, whole)          \
  X(NORM, scasum_, xscasum, zar::c32, inc, whole) X(NORM, dzasum_, xdzasum, zar::c64, inc, whole)      \
  X(IAMAX, isamax_, xisamax, float, none, whole)  X(IAMAX, idamax_, xidamax, double, none, whole)      \
  X(IAMAX, icamax_, xicamax, zar::c32, none, whole) X(IAMAX, izamax_, xizamax, zar::c64, none, whole)  \
  X(IAMAX, isamin_, xisamin, float, none, whole)  X(IAMAX, idamin_, xidamin, double, none, whole)      \
  X(IAMAX, icamin_, xicamin, zar::c32, none, whole) X(IAMAX, izamin_, xizamin, zar::c64, none, whole)  \
  X(ROT, srot_, xsrot, float, none, xy)           X(ROT, drot_, xdrot, double, none, xy)               \
  X(ROT, csrot_, xcsrot, zar::c32, none, xy)      X(ROT, zdrot_, xzdrot, zar::c64, none, xy)           \
  X(ROTM, srotm_, xsrotm, float, none, whole)     X(ROTM, drotm_, xdrotm, double, none, whole)         \
  X(ROTG, srotg_, srotg, float, none, whole)      X(ROTG, drotg_, drotg, double, none, whole)          \
  X(ROTG, crotg_, crotg, zar::c32, none, whole)   X(ROTG, zrotg_, zrotg, zar::c64, none, whole)        \
  X(ROTMG, srotmg_, srotmg, float, none, whole)   X(ROTMG, drotmg_, drotmg, double, none, whole)       \
  X(SCAL, sscal_, xsscal, float, inc, x)          X(SCAL, dscal_, xdscal, double, inc, x)              \
  X(SCAL, cscal_, xcscal, zar::c32, inc, x)       X(SCAL, zscal_, xzscal, zar::c64, inc, x)            \
  X(RSCAL, csscal_, xcsscal, zar::c32, inc, x)    X(RSCAL, zdscal_, xzdscal, zar::c64, inc, x)         \
  X(SWAP, sswap_, xsswap, float, none, xy)        X(SWAP, dswap_, xdswap, double, none, xy)            \
  X(SWAP, cswap_, xcswap, zar::c32, none, xy)     X(SWAP, zswap_, xzswap, zar::c64, none, xy)          \
  X(COPY, scopy_, xscopy, float, none, xy)        X(COPY, dcopy_, xdcopy, double, none, xy)            \
  X(COPY, ccopy_, xccopy, zar::c32, none, xy)     X(COPY, zcopy_, xzcopy, zar::c64, none, xy)          \
  X(CABS1, scabs1_, scabs1, zar::c32, none, whole) X(CABS1, dcabs1_, dcabs1, zar::c64, none, whole)
// clang-format on

#define ZAR_L1_RUN_whole(F, kernel, T) forward{ZAR_L1_K(kernel), false} ZAR_L1_ARGS_##F
#define ZAR_L1_RUN_xy(F, kernel, T)                                        \
  split_xy<T>(n, *incx, *incy, x, y, [&](const int* n, auto* x, auto* y) { \
    forward{ZAR_L1_K(kernel), false} ZAR_L1_ARGS_##F;                      \
  })
#define ZAR_L1_RUN_x(F, kernel, T) \
  split_x<T>(n, *incx, x, [&](const int* n, auto* x) { forward{ZAR_L1_K(kernel), false} ZAR_L1_ARGS_##F; })
#define ZAR_L1_F77(F, fname, kernel, T, quick, split)                                \
  ZAR_API ZAR_L1_SIG_##F(fname, pub<T>, real_t<T>) {                                 \
    if (ZAR_L1_SKIP_##quick) return forward{ZAR_L1_K(kernel), true} ZAR_L1_ARGS_##F; \
    return ZAR_L1_RUN_##split(F, kernel, T);                                         \
  }
ZAR_L1_F77_LIST(ZAR_L1_F77)

// Complex functions return the C complex type, as gfortran expects.
#define ZAR_L1_F77_CDOT(fname, kernel, T, C)                                                      \
  ZAR_API C fname(const int* n, const void* x, const int* incx, const void* y, const int* incy) { \
    return to_c_complex<C>(forward{ZAR_L1_K(kernel), false}(n, x, incx, y, incy));                \
  }
ZAR_L1_F77_CDOT(cdotu_, xcdotu, zar::c32, zar_fcomplex)
ZAR_L1_F77_CDOT(cdotc_, xcdotc, zar::c32, zar_fcomplex)
ZAR_L1_F77_CDOT(zdotu_, xzdotu, zar::c64, zar_dcomplex)
ZAR_L1_F77_CDOT(zdotc_, xzdotc, zar::c64, zar_dcomplex)

// ---- CBLAS signatures: T the element type, R its real type
#define ZAR_CB_SIG_AXPY(fn, T, R) \
  void fn(const int N, cscalar<T> alpha, cvptr<T> X, const int incX, vptr<T> Y, const int incY)
#define ZAR_CB_ARGS_AXPY (N, alpha, X, incX, Y, incY)
#define ZAR_CB_SIG_AXPBY(fn, T, R) \
  void fn(const int N, cscalar<T> alpha, cvptr<T> X, const int incX, cscalar<T> beta, vptr<T> Y, const int incY)
#define ZAR_CB_ARGS_AXPBY (N, alpha, X, incX, beta, Y, incY)
#define ZAR_CB_SIG_DOT(fn, T, R) T fn(const int N, const T* X, const int incX, const T* Y, const int incY)
#define ZAR_CB_ARGS_DOT (N, X, incX, Y, incY)
#define ZAR_CB_SIG_DSDOT(fn, T, R) double fn(const int N, const T* X, const int incX, const T* Y, const int incY)
#define ZAR_CB_ARGS_DSDOT ZAR_CB_ARGS_DOT
#define ZAR_CB_SIG_SDSDOT(fn, T, R) \
  float fn(const int N, const T alpha, const T* X, const int incX, const T* Y, const int incY)
#define ZAR_CB_ARGS_SDSDOT (N, alpha, X, incX, Y, incY)
#define ZAR_CB_SIG_NORM(fn, T, R) R fn(const int N, cvptr<T> X, const int incX)
#define ZAR_CB_ARGS_NORM (N, X, incX)
#define ZAR_CB_SIG_ROT(fn, T, R) \
  void fn(const int N, vptr<T> X, const int incX, vptr<T> Y, const int incY, const R c, const R s)
#define ZAR_CB_ARGS_ROT (N, X, incX, Y, incY, c, s)
#define ZAR_CB_SIG_ROTM(fn, T, R) void fn(const int N, vptr<T> X, const int incX, vptr<T> Y, const int incY, const R* P)
#define ZAR_CB_ARGS_ROTM (N, X, incX, Y, incY, P)
#define ZAR_CB_SIG_ROTG(fn, T, R) void fn(vptr<T> a, vptr<T> b, R* c, vptr<T> s)
#define ZAR_CB_ARGS_ROTG (a, b, c, s)
#define ZAR_CB_SIG_ROTMG(fn, T, R) void fn(R* d1, R* d2, R* b1, const R b2, R* P)
#define ZAR_CB_ARGS_ROTMG (d1, d2, b1, b2, P)
#define ZAR_CB_SIG_SCAL(fn, T, R) void fn(const int N, cscalar<T> alpha, vptr<T> X, const int incX)
#define ZAR_CB_ARGS_SCAL (N, alpha, X, incX)
#define ZAR_CB_SIG_RSCAL(fn, T, R) void fn(const int N, const R alpha, vptr<T> X, const int incX)
#define ZAR_CB_ARGS_RSCAL ZAR_CB_ARGS_SCAL
#define ZAR_CB_SIG_SWAP(fn, T, R) void fn(const int N, vptr<T> X, const int incX, vptr<T> Y, const int incY)
#define ZAR_CB_ARGS_SWAP (N, X, incX, Y, incY)
#define ZAR_CB_SIG_COPY(fn, T, R) void fn(const int N, cvptr<T> X, const int incX, vptr<T> Y, const int incY)
#define ZAR_CB_ARGS_COPY ZAR_CB_ARGS_SWAP
#define ZAR_CB_SIG_CABS1(fn, T, R) R fn(const void* z)
#define ZAR_CB_ARGS_CABS1 (z)
// sparse vectors (yb: y one element on, see base1)
#define ZAR_CB_SIG_AXPYI(fn, T, R) void fn(const int nz, cscalar<T> a, cvptr<T> x, const int* indx, vptr<T> y)
#define ZAR_CB_ARGS_AXPYI (nz, a, x, indx, yb)
#define ZAR_CB_SIG_DOTI(fn, T, R) T fn(const int nz, const T* x, const int* indx, const T* y)
#define ZAR_CB_ARGS_DOTI (nz, x, indx, yb)
#define ZAR_CB_SIG_GTHR(fn, T, R) void fn(const int nz, cvptr<T> y, vptr<T> x, const int* indx)
#define ZAR_CB_ARGS_GTHR (nz, yb, x, indx)
#define ZAR_CB_SIG_GTHRZ(fn, T, R) void fn(const int nz, vptr<T> y, vptr<T> x, const int* indx)
#define ZAR_CB_ARGS_GTHRZ ZAR_CB_ARGS_GTHR
#define ZAR_CB_SIG_SCTR(fn, T, R) void fn(const int nz, cvptr<T> x, const int* indx, vptr<T> y)
#define ZAR_CB_ARGS_SCTR (nz, x, indx, yb)
#define ZAR_CB_SIG_ROTI(fn, T, R) void fn(const int nz, vptr<T> x, const int* indx, vptr<T> y, const R c, const R s)
#define ZAR_CB_ARGS_ROTI (nz, x, indx, yb, c, s)

// ---- CBLAS over the Fortran interfaces: X(signature, name, Fortran name, element type)
// clang-format off
#define ZAR_CB_LIST(X)                                                                 \
  X(AXPY, cblas_saxpy, saxpy_, float)  X(AXPY, cblas_daxpy, daxpy_, double)            \
  X(AXPY, cblas_caxpy, caxpy_, zar::c32)  X(AXPY, cblas_zaxpy, zaxpy_, zar::c64)       \
  X(AXPBY, cblas_saxpby, saxpby_, float)  X(AXPBY, cblas_daxpby, daxpby_, double)      \
  X(AXPBY, cblas_caxpby, caxpby_, zar::c32)  X(AXPBY, cblas_zaxpby, zaxpby_, zar::c64) \
  X(DOT, cblas_sdot, sdot_, float)  X(DOT, cblas_ddot, ddot_, double)                  \
  X(DSDOT, cblas_dsdot, dsdot_, float)  X(SDSDOT, cblas_sdsdot, sdsdot_, float)        \
  X(NORM, cblas_snrm2, snrm2_, float)  X(NORM, cblas_dnrm2, dnrm2_, double)            \
  X(NORM, cblas_scnrm2, scnrm2_, zar::c32)  X(NORM, cblas_dznrm2, dznrm2_, zar::c64)   \
  X(NORM, cblas_sasum, sasum_, float)  X(NORM, cblas_dasum, dasum_, double)            \
  X(NORM, cblas_scasum, scasum_, zar::c32)  X(NORM, cblas_dzasum, dzasum_, zar::c64)   \
  X(ROT, cblas_srot, srot_, float)  X(ROT, cblas_drot, drot_, double)                  \
  X(ROT, cblas_csrot, csrot_, zar::c32)  X(ROT, cblas_zdrot, zdrot_, zar::c64)         \
  X(ROTM, cblas_srotm, srotm_, float)  X(ROTM, cblas_drotm, drotm_, double)            \
  X(ROTG, cblas_srotg, srotg_, float)  X(ROTG, cblas_drotg, drotg_, double)            \
  X(ROTG, cblas_crotg, crotg_, zar::c32)  X(ROTG, cblas_zrotg, zrotg_, zar::c64)       \
  X(ROTMG, cblas_srotmg, srotmg_, float)  X(ROTMG, cblas_drotmg, drotmg_, double)      \
  X(SCAL, cblas_sscal, sscal_, float)  X(SCAL, cblas_dscal, dscal_, double)            \
  X(SCAL, cblas_cscal, cscal_, zar::c32)  X(SCAL, cblas_zscal, zscal_, zar::c64)       \
  X(RSCAL, cblas_csscal, csscal_, zar::c32)  X(RSCAL, cblas_zdscal, zdscal_, zar::c64) \
  X(SWAP, cblas_sswap, sswap_, float)  X(SWAP, cblas_dswap, dswap_, double)            \
  X(SWAP, cblas_cswap, cswap_, zar::c32)  X(SWAP, cblas_zswap, zswap_, zar::c64)       \
  X(COPY, cblas_scopy, scopy_, float)  X(COPY, cblas_dcopy, dcopy_, double)            \
  X(COPY, cblas_ccopy, ccopy_, zar::c32)  X(COPY, cblas_zcopy, zcopy_, zar::c64)       \
  X(CABS1, cblas_scabs1, scabs1_, zar::c32)  X(CABS1, cblas_dcabs1, dcabs1_, zar::c64)
// clang-format on
#define ZAR_CB(F, cname, fname, T) \
  ZAR_API ZAR_CB_SIG_##F(cname, T, real_t<T>) { return forward{&fname, false} ZAR_CB_ARGS_##F; }
ZAR_CB_LIST(ZAR_CB)

// 0-based indices: the Fortran answer minus one (0 stays 0).
#define ZAR_CB_IAMAX(cname, fname, T)                                  \
  ZAR_API CBLAS_INDEX cname(const int N, cvptr<T> X, const int incX) { \
    const int i = forward{&fname, false}(N, X, incX);                  \
    return i > 0 ? static_cast<CBLAS_INDEX>(i - 1) : 0;                \
  }
ZAR_CB_IAMAX(cblas_isamax, isamax_, float)
ZAR_CB_IAMAX(cblas_idamax, idamax_, double)
ZAR_CB_IAMAX(cblas_icamax, icamax_, zar::c32)
ZAR_CB_IAMAX(cblas_izamax, izamax_, zar::c64)
ZAR_CB_IAMAX(cblas_isamin, isamin_, float)
ZAR_CB_IAMAX(cblas_idamin, idamin_, double)
ZAR_CB_IAMAX(cblas_icamin, icamin_, zar::c32)
ZAR_CB_IAMAX(cblas_izamin, izamin_, zar::c64)

// Complex dot products written through the last argument.
#define ZAR_CB_DOTSUB(cname, kernel, T)                                                                      \
  ZAR_API void cname(const int N, const void* X, const int incX, const void* Y, const int incY, void* dot) { \
    *static_cast<T*>(dot) = forward{ZAR_L1_K(kernel), false}(N, X, incX, Y, incY);                           \
  }
ZAR_CB_DOTSUB(cblas_cdotu_sub, xcdotu, zar::c32)
ZAR_CB_DOTSUB(cblas_cdotc_sub, xcdotc, zar::c32)
ZAR_CB_DOTSUB(cblas_zdotu_sub, xzdotu, zar::c64)
ZAR_CB_DOTSUB(cblas_zdotc_sub, xzdotc, zar::c64)

// ---- sparse vectors: X(signature, name, kernel, element type)
// clang-format off
#define ZAR_CB_SPARSE_LIST(X)                                                        \
  X(AXPYI, cblas_saxpyi, saxpyi, float)  X(AXPYI, cblas_daxpyi, daxpyi, double)      \
  X(AXPYI, cblas_caxpyi, caxpyi, zar::c32)  X(AXPYI, cblas_zaxpyi, zaxpyi, zar::c64) \
  X(DOTI, cblas_sdoti, sdoti, float)  X(DOTI, cblas_ddoti, ddoti, double)            \
  X(GTHR, cblas_sgthr, sgthr, float)  X(GTHR, cblas_dgthr, dgthr, double)            \
  X(GTHR, cblas_cgthr, cgthr, zar::c32)  X(GTHR, cblas_zgthr, zgthr, zar::c64)       \
  X(GTHRZ, cblas_sgthrz, sgthrz, float)  X(GTHRZ, cblas_dgthrz, dgthrz, double)      \
  X(GTHRZ, cblas_cgthrz, cgthrz, zar::c32)  X(GTHRZ, cblas_zgthrz, zgthrz, zar::c64) \
  X(SCTR, cblas_ssctr, ssctr, float)  X(SCTR, cblas_dsctr, dsctr, double)            \
  X(SCTR, cblas_csctr, csctr, zar::c32)  X(SCTR, cblas_zsctr, zsctr, zar::c64)       \
  X(ROTI, cblas_sroti, sroti, float)  X(ROTI, cblas_droti, droti, double)
// clang-format on
#define ZAR_CB_SPARSE(F, cname, kernel, T)                   \
  ZAR_API ZAR_CB_SIG_##F(cname, T, real_t<T>) {              \
    auto* yb = base1<T>(y);                                  \
    return forward{ZAR_L1_K(kernel), false} ZAR_CB_ARGS_##F; \
  }
ZAR_CB_SPARSE_LIST(ZAR_CB_SPARSE)

#define ZAR_CB_DOTISUB(cname, kernel, T)                                                       \
  ZAR_API void cname(const int nz, const void* x, const int* indx, const void* y, void* dot) { \
    auto* yb = base1<T>(y);                                                                    \
    *static_cast<T*>(dot) = forward{ZAR_L1_K(kernel), false}(nz, x, indx, yb);                 \
  }
ZAR_CB_DOTISUB(cblas_cdotci_sub, cdotci, zar::c32)
ZAR_CB_DOTISUB(cblas_zdotci_sub, zdotci, zar::c64)
ZAR_CB_DOTISUB(cblas_cdotui_sub, cdotui, zar::c32)
ZAR_CB_DOTISUB(cblas_zdotui_sub, zdotui, zar::c64)
