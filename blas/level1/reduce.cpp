// Reductions: dot (real, complex, single inputs with double accumulation),
// the single-precision norms and the sums of magnitudes.
//
// Unit-stride real reductions run the engine of simd.h (four vector partial
// sums). The fast kernels peel x to a 32-byte boundary first, so their bits
// depend on x's alignment; the `_cnr` twins never peel and give the same bits
// for every alignment. Strided walks have one fixed order each.
#include <cmath>
#include <type_traits>

#include "zar/level1.h"
#include "blas/level1/simd.h"

namespace zar::l1 {
namespace {

// L elements of T from p as a vector of Acc (single data widened to double
// four at a time).
template <class Acc, class T, class Access>
inline typename vec<Acc>::V load_as(const T* p, Access m) {
  if constexpr (std::is_same_v<Acc, T>)
    return m.load(p);
  else
    return _mm256_cvtps_pd(_mm_loadu_ps(p));
}

// ---- dot
// Unit stride: the engine on products x_i y_i.
template <class Acc, class T>
Acc dot_unit(int n, int peel, const T* x, const T* y) {
  using W = vec<Acc>;
  auto one = [=](int i) { return static_cast<Acc>(x[i]) * static_cast<Acc>(y[i]); };
  auto vec = [=](int i, auto m) { return W::mul(load_as<Acc>(x + i, m), load_as<Acc>(y + i, m)); };
  if constexpr (std::is_same_v<Acc, T>)
    return reduce_unit<Acc>(n, peel, 2.0 * n * sizeof(T),
                            body_halves{one, vec, [=](int i, auto h) { return h.mul(h.load(x + i), h.load(y + i)); }});
  else
    return reduce_unit<Acc>(n, peel, 2.0 * n * sizeof(T), body{one, vec});
}

// Other increments: eight partial sums (a_k takes the products of elements
// 8m + k), combined as ((a0 + a2) + (a4 + a6)) + ((a1 + a3) + (a5 + a7)); the
// elements after the last block of 8 are added one by one.
template <class Acc, class T>
Acc dot_strided(int n, const T* x, int incx, const T* y, int incy) {
  const strided<const T> xs(x, n, incx), ys(y, n, incy);
  auto term = [&](int k) { return static_cast<Acc>(xs[k]) * static_cast<Acc>(ys[k]); };
  Acc s = 0;
  int k = 0;
  if (n >= 8) {
    Acc a[8] = {0, 0, 0, 0, 0, 0, 0, 0};
    for (; k + 8 <= n; k += 8)
      for (int j = 0; j < 8; ++j) a[j] += term(k + j);
    s = ((a[0] + a[2]) + (a[4] + a[6])) + ((a[1] + a[3]) + (a[5] + a[7]));
  }
  for (; k < n; ++k) s += term(k);
  return s;
}

template <class Acc, class T, class V>
Acc dot_real(int n, const T* x, int incx, const T* y, int incy) {
  if (n < 1) return 0;
  if (incx == 1 && incy == 1) return dot_unit<Acc>(n, V::peel(x), x, y);
  return dot_strided<Acc>(n, x, incx, y, incy);
}

// Complex dot. Unit stride: the engine on the products x_i y_i (x
// conjugated for the `c` variant), each product formed in the vector exactly
// as in scalar code, the parts summed lane by lane; it never peels, so the
// bits do not depend on alignment. Other increments: one running sum.
template <class R, class V>
cx<R> dot_complex(int n, const cx<R>* x, int incx, const cx<R>* y, int incy) {
  using W = vec<R>;
  constexpr bool conjugate = std::is_same_v<V, conj>;
  auto term = [](cx<R> a, cx<R> b) { return conjugate ? cmulc(a, b) : cmul(a, b); };
  if (n < 1) return cx<R>{0, 0};
  if (incx == 1 && incy == 1) {
    return reduce_unit<cx<R>>(n, 0, 2.0 * n * sizeof(cx<R>),
                              body{[=](int i) { return term(x[i], y[i]); },
                                   [=](int i, auto m) {
                                     const auto xv = m.load(reals(x + i)), yv = m.load(reals(y + i));
                                     const auto t1 = W::mul(W::dup_re(xv), yv);
                                     const auto t2 = W::mul(W::dup_im(xv), W::swap_pairs(yv));
                                     return W::addsub(t1, conjugate ? W::neg(t2) : t2);
                                   }});
  }
  cx<R> s{0, 0};
  const strided<const cx<R>> xs(x, n, incx), ys(y, n, incy);
  for (int k = 0; k < n; ++k) s = cadd(s, term(xs[k], ys[k]));
  return s;
}

template <class T, class V>
T dot(int n, const T* x, int incx, const T* y, int incy) {
  if constexpr (is_complex_v<T>)
    return dot_complex<real_t<T>, V>(n, x, incx, y, incy);
  else
    return dot_real<T, T, V>(n, x, incx, y, incy);
}

// dsdot: single inputs, double products and sums. With both increments
// negative both are negated: the same pairs, summed from the start.
template <class V>
double dsdot(int n, const float* x, int incx, const float* y, int incy) {
  if (incx < 0 && incy < 0) incx = -incx, incy = -incy;
  return dot_real<double, float, V>(n, x, incx, y, incy);
}

// sdsdot: sb + (the double-precision dot), rounded once to single; with
// n < 1 just sb through double.
template <class V>
float sdsdot(int n, float sb, const float* x, int incx, const float* y, int incy) {
  if (n < 1) return static_cast<float>(static_cast<double>(sb));
  return static_cast<float>(static_cast<double>(sb) + dot_real<double, float, V>(n, x, incx, y, incy));
}

// ---- single-precision norms: squares of the parts widened to double,
// summed in double, square root in double, rounded once to single. A
// negative increment walks from the far end (the same elements).
template <class T, class V>
float snrm2(int n, const T* x, int incx) {
  if (n < 1) return 0;
  using W = vec<double>;
  const float* r = reinterpret_cast<const float*>(x);
  constexpr int parts = is_complex_v<T> ? 2 : 1;
  double s = 0;
  if (incx == 1) {
    s = reduce_unit<double>(parts * n, V::peel(r), double(parts) * n * sizeof(float),
                            body{[=](int i) { return static_cast<double>(r[i]) * static_cast<double>(r[i]); },
                                 [=](int i, auto m) {
                                   const W::V v = load_as<double>(r + i, m);
                                   return W::mul(v, v);
                                 }});
  } else {
    const strided<const T> xs(x, n, incx);
    for (int k = 0; k < n; ++k) {
      const float* e = reinterpret_cast<const float*>(&xs[k]);
      for (int p = 0; p < parts; ++p) s += static_cast<double>(e[p]) * static_cast<double>(e[p]);
    }
  }
  return static_cast<float>(std::sqrt(s));
}

// ---- asum: sum of |x_i| (complex: |Re| + |Im|) in the data's precision,
// increment taken as |incx|. Unit stride runs the engine over all parts.
template <class T, class V>
real_t<T> asum(int n, const T* x, int incx) {
  using R = real_t<T>;
  using W = vec<R>;
  if (n < 1) return 0;
  const int step = incx < 0 ? -incx : incx;
  if (step == 1) {
    const R* r = reinterpret_cast<const R*>(x);
    const int parts = (is_complex_v<T> ? 2 : 1) * n;
    return reduce_unit<R>(
        parts, V::peel(r), double(parts) * sizeof(R),
        body_halves{[=](int i) { return std::fabs(r[i]); }, [=](int i, auto m) { return W::abs(m.load(r + i)); },
                    [=](int i, auto h) { return h.abs(h.load(r + i)); }});
  }
  R s = 0;
  for (int k = 0; k < n; ++k) {
    if constexpr (is_complex_v<T>)
      s += std::fabs((*zar::offset(x, static_cast<long long>(k) * step)).re) + std::fabs((*zar::offset(x, static_cast<long long>(k) * step)).im);
    else
      s += std::fabs((*zar::offset(x, static_cast<long long>(k) * step)));
  }
  return s;
}

}  // namespace
}  // namespace zar::l1

using namespace zar::l1;

#define ZAR_L1_DEF_DOT(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(DOT, name, T) { return dot<T, v>(*n, x, *incx, y, *incy); }
#define ZAR_L1_DEF_DSDOT(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(DSDOT, name, T) { return dsdot<v>(*n, x, *incx, y, *incy); }
#define ZAR_L1_DEF_SDSDOT(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(SDSDOT, name, T) { return sdsdot<v>(*n, *sb, x, *incx, y, *incy); }
#define ZAR_L1_DEF_NRM2(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(NORM, name, T) { return snrm2<T, v>(*n, x, *incx); }
#define ZAR_L1_DEF_ASUM(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(NORM, name, T) { return asum<T, v>(*n, x, *incx); }

ZAR_L1_LIST_DOT(ZAR_L1_DEF_DOT)
ZAR_L1_LIST_DSDOT(ZAR_L1_DEF_DSDOT)
ZAR_L1_LIST_SDSDOT(ZAR_L1_DEF_SDSDOT)
ZAR_L1_LIST_NRM2(ZAR_L1_DEF_NRM2)
ZAR_L1_LIST_ASUM(ZAR_L1_DEF_ASUM)
