// Element-wise Level-1 kernels: axpy, axpby, scal, rot, rotm, swap, copy.
//
// Each element's result has one fixed expression (one rounding per product
// and per sum, no fused multiply-add), so the vector bodies, peels and tails
// give the same bits; only axpy with incy = 0, which is a reduction, has an
// order of its own.
#include "zar/level1.h"
#include "blas/level1/simd.h"

namespace zar::l1 {
namespace {

// alpha * v for a vector v of elements of T (real or interleaved complex).
// The broadcasts are loop-invariant and leave the loops once inlined.
template <class T, class V, class W = vec<real_t<T>>>
inline V scale_vec(T alpha, V v) {
  if constexpr (is_complex_v<T>)
    return W::addsub(W::mul(W::set1(alpha.re), v), W::mul(W::set1(alpha.im), W::swap_pairs(v)));
  else
    return W::mul(W::set1(alpha), v);
}

// ---- axpy
// incy = 0: every update falls on y_0, summed with sixteen partial sums,
// then four, then one by one (see the combination order below).
template <class T>
void axpy_into_one(int n, T alpha, strided<const T> x, T* y0) {
  int k = 0;
  T s = *y0;
  if (n >= 16) {
    T p[16];
    p[0] = *y0;
    for (int j = 1; j < 16; ++j) p[j] = zero_of<T>();
    for (; k + 16 <= n; k += 16)
      for (int j = 0; j < 16; ++j) p[j] = add(p[j], mul(alpha, x[k + j]));
    T b[4], d[4];
    for (int j = 0; j < 4; ++j) b[j] = add(p[4 + j], p[j]), d[j] = add(p[12 + j], p[8 + j]);
    s = add(add(add(b[0], d[0]), add(b[2], d[2])), add(add(b[1], d[1]), add(b[3], d[3])));
  }
  if (n - k >= 4) {
    T r[4] = {s, zero_of<T>(), zero_of<T>(), zero_of<T>()};
    for (; k + 4 <= n; k += 4)
      for (int j = 0; j < 4; ++j) r[j] = add(r[j], mul(alpha, x[k + j]));
    s = add(add(r[0], r[2]), add(r[1], r[3]));
  }
  for (; k < n; ++k) s = add(s, mul(alpha, x[k]));
  *y0 = s;
}

template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
  if (n <= 0 || is_zero(alpha)) return;
  if (incx == 1 && incy == 1) {
    using W = vec<real_t<T>>;
    stream_unit(n, y, 2,
                body{[=](int i) { y[i] = add(y[i], mul(alpha, x[i])); },
                     [=](int i, auto m) {
                       auto* yr = reinterpret_cast<real_t<T>*>(y + i);
                       const auto* xr = reinterpret_cast<const real_t<T>*>(x + i);
                       m.store(yr, W::add(m.load(yr), scale_vec(alpha, m.load(xr))));
                     }});
    return;
  }
  const strided<const T> xs(x, n, incx);
  if (incy == 0) return axpy_into_one(n, alpha, xs, y);
  const strided<T> ys(y, n, incy);
  for (int k = 0; k < n; ++k) ys[k] = add(ys[k], mul(alpha, xs[k]));
}

// ---- axpby: y := alpha x + beta y. A zero alpha leaves x unread and a zero
// beta leaves y unread (y := alpha x), as users of beta in BLAS expect.
template <class T>
void axpby(int n, T alpha, const T* x, int incx, T beta, T* y, int incy) {
  if (n <= 0) return;
  const strided<const T> xs(x, n, incx);
  const strided<T> ys(y, n, incy);
  const bool a0 = is_zero(alpha), b0 = is_zero(beta);
  if (a0 && b0)
    for (int k = 0; k < n; ++k) ys[k] = zero_of<T>();
  else if (b0)
    for (int k = 0; k < n; ++k) ys[k] = mul(alpha, xs[k]);
  else if (a0)
    for (int k = 0; k < n; ++k) ys[k] = mul(beta, ys[k]);
  else
    for (int k = 0; k < n; ++k) ys[k] = add(mul(alpha, xs[k]), mul(beta, ys[k]));
}

// ---- scal: x := alpha x with |incx|; a zero alpha is not special (NaN and
// infinity become NaN). S is T, or the real type for csscal/zdscal.
template <class T, class S>
void scal(int n, S alpha, T* x, int incx) {
  if (n <= 0 || incx == 0) return;
  if constexpr (is_complex_v<T> && !is_complex_v<S>) {
    // A real factor scales every part: the real kernel on 2n parts.
    if (incx == 1 || incx == -1) return scal<S, S>(2 * n, alpha, reals(x), 1);
    const int step = incx < 0 ? -incx : incx;
    for (int k = 0; k < n; ++k) x[k * step].re = alpha * x[k * step].re, x[k * step].im = alpha * x[k * step].im;
  } else {
    const int step = incx < 0 ? -incx : incx;
    if (step == 1) {
      stream_unit(n, x, 1,
                  body{[=](int i) { x[i] = mul(alpha, x[i]); },
                       [=](int i, auto m) {
                         auto* xr = reinterpret_cast<real_t<T>*>(x + i);
                         m.store(xr, scale_vec(alpha, m.load(xr)));
                       }});
      return;
    }
    for (int k = 0; k < n; ++k) x[k * step] = mul(alpha, x[k * step]);
  }
}

// ---- rot with real c and s: x' = c x + s y, y' = c y - s x (complex data
// part by part).
template <class R>
inline void rot_pair(R& x, R& y, R c, R s) {
  const R xv = x, yv = y;
  x = c * xv + s * yv;
  y = c * yv - s * xv;
}
template <class R>
inline void rot_pair(cx<R>& x, cx<R>& y, R c, R s) {
  rot_pair(x.re, y.re, c, s);
  rot_pair(x.im, y.im, c, s);
}

template <class T>
void rot(int n, T* x, int incx, T* y, int incy, real_t<T> c, real_t<T> s) {
  using R = real_t<T>;
  if (n < 1) return;
  if (incx == 1 && incy == 1) {
    if constexpr (is_complex_v<T>) {
      return rot<R>(2 * n, reals(x), 1, reals(y), 1, c, s);
    } else {
      using W = vec<R>;
      stream_unit(n, x, 2,
                  body{[=](int i) { rot_pair(x[i], y[i], c, s); },
                       [=](int i, auto m) {
                         const auto xv = m.load(x + i), yv = m.load(y + i), vc = W::set1(c), vs = W::set1(s);
                         m.store(x + i, W::add(W::mul(vc, xv), W::mul(vs, yv)));
                         m.store(y + i, W::sub(W::mul(vc, yv), W::mul(vs, xv)));
                       }});
      return;
    }
  }
  const strided<T> xs(x, n, incx), ys(y, n, incy);
  for (int k = 0; k < n; ++k) rot_pair(xs[k], ys[k], c, s);
}

// crot/zrot: real c, complex s: x' = c x + s y, y' = c y - conj(s) x.
template <class R>
void crot(int n, cx<R>* x, int incx, cx<R>* y, int incy, R c, cx<R> s) {
  if (n < 1) return;
  const strided<cx<R>> xs(x, n, incx), ys(y, n, incy);
  for (int k = 0; k < n; ++k) {
    const cx<R> xv = xs[k], yv = ys[k];
    xs[k] = cadd(cx<R>{c * xv.re, c * xv.im}, cmul(s, yv));
    const cx<R> t = cmulc(s, xv);
    ys[k] = cx<R>{c * yv.re - t.re, c * yv.im - t.im};
  }
}

// ---- rotm: the modified rotation H chosen by the flag param[0]; each flag
// is its own loop with the published expression order.
template <int Flag, class R>
inline void rotm_pair(R& x, R& y, const R* h) {
  const R w = x, z = y;
  if constexpr (Flag == -1)
    x = w * h[1] + z * h[3], y = w * h[2] + z * h[4];
  else if constexpr (Flag == 0)
    x = w + z * h[3], y = w * h[2] + z;
  else
    x = w * h[1] + z, y = -w + h[4] * z;
}
template <int Flag, class R>
void rotm_walk(int n, R* x, int incx, R* y, int incy, const R* h) {
  const strided<R> xs(x, n, incx), ys(y, n, incy);
  for (int k = 0; k < n; ++k) rotm_pair<Flag>(xs[k], ys[k], h);
}
// The flag selects as the published routine does, for every value: -2 is
// the identity, any other negative flag the full matrix, 0 the off-diagonal
// form and anything else (1, other positive values, NaN) the diagonal form.
template <class R>
void rotm(int n, R* x, int incx, R* y, int incy, const R* param) {
  const R flag = param[0];
  if (n < 1 || flag + R(2) == R(0)) return;
  if (flag < 0)
    rotm_walk<-1>(n, x, incx, y, incy, param);
  else if (flag == 0)
    rotm_walk<0>(n, x, incx, y, incy, param);
  else
    rotm_walk<1>(n, x, incx, y, incy, param);
}

// ---- swap and copy: moves of whole elements.
template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
  if (n < 1) return;
  if (incx == 1 && incy == 1) {
    stream_unit(n, y, 2,
                body{[=](int i) {
                       const T t = x[i];
                       x[i] = y[i];
                       y[i] = t;
                     },
                     [=](int i, auto m) {
                       auto* xp = reinterpret_cast<float*>(x + i);
                       auto* yp = reinterpret_cast<float*>(y + i);
                       const __m256 t = m.load(xp);
                       m.store(xp, m.load(yp));
                       m.store(yp, t);
                     }});
    return;
  }
  const strided<T> xs(x, n, incx), ys(y, n, incy);
  for (int k = 0; k < n; ++k) {
    const T t = xs[k];
    xs[k] = ys[k];
    ys[k] = t;
  }
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
  if (n < 1) return;
  if (incx == 1 && incy == 1) {
    stream_unit(n, y, 2,
                body{[=](int i) { y[i] = x[i]; },
                     [=](int i, auto m) {
                       m.store(reinterpret_cast<float*>(y + i), m.load(reinterpret_cast<const float*>(x + i)));
                     }});
    return;
  }
  const strided<const T> xs(x, n, incx);
  const strided<T> ys(y, n, incy);
  for (int k = 0; k < n; ++k) ys[k] = xs[k];
}

}  // namespace
}  // namespace zar::l1

using namespace zar::l1;

#define ZAR_L1_DEF_AXPY(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(AXPY, name, T) { axpy<T>(*n, *alpha, x, *incx, y, *incy); }
#define ZAR_L1_DEF_AXPBY(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(AXPBY, name, T) { axpby<T>(*n, *alpha, x, *incx, *beta, y, *incy); }
#define ZAR_L1_DEF_SCAL(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(SCAL, name, T) { scal<T, T>(*n, *alpha, x, *incx); }
#define ZAR_L1_DEF_RSCAL(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(RSCAL, name, T) { scal<T, zar::real_t<T>>(*n, *alpha, x, *incx); }
#define ZAR_L1_DEF_ROT(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(ROT, name, T) { rot<T>(*n, x, *incx, y, *incy, *c, *s); }
#define ZAR_L1_DEF_CROT(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(CROT, name, T) { crot(*n, x, *incx, y, *incy, *c, *s); }
#define ZAR_L1_DEF_ROTM(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(ROTM, name, T) { rotm<T>(*n, x, *incx, y, *incy, param); }
#define ZAR_L1_DEF_SWAP(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(SWAP, name, T) { swap<T>(*n, x, *incx, y, *incy); }
#define ZAR_L1_DEF_COPY(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(COPY, name, T) { copy<T>(*n, x, *incx, y, *incy); }

ZAR_L1_LIST_AXPY(ZAR_L1_DEF_AXPY)
ZAR_L1_LIST_AXPBY(ZAR_L1_DEF_AXPBY)
ZAR_L1_LIST_SCAL(ZAR_L1_DEF_SCAL)
ZAR_L1_LIST_RSCAL(ZAR_L1_DEF_RSCAL)
ZAR_L1_LIST_ROT(ZAR_L1_DEF_ROT)
ZAR_L1_LIST_CROT(ZAR_L1_DEF_CROT)
ZAR_L1_LIST_ROTM(ZAR_L1_DEF_ROTM)
ZAR_L1_LIST_SWAP(ZAR_L1_DEF_SWAP)
ZAR_L1_LIST_COPY(ZAR_L1_DEF_COPY)
