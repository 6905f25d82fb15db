// Index of the element of largest (amax) or smallest (amin) magnitude.
//
// Magnitude: |x| for real data, |Re x| + |Im x| (in the data's precision)
// for complex data. The `_nonan` kernels keep the first element whose
// magnitude is strictly better than every earlier one, so NaN is never
// chosen; the plain kernels give NaN its meaning: the first NaN wins. They
// clear the SSE exception flags around the `_nonan` search, read whether an
// invalid operation (an ordered comparison or max/min with NaN) occurred, and
// leave the flags as the union of the caller's and those raised.
#include <xmmintrin.h>

#include <algorithm>
#include <cmath>

#include "zar/level1.h"
#include "blas/level1/simd.h"

namespace zar::l1 {
namespace {

// The order of a search: Max picks larger magnitudes, otherwise smaller.
template <bool Max>
struct extreme {
  template <class W, class V>
  static V pick(V m, V best) {
    if constexpr (Max)
      return W::max(m, best);
    else
      return W::min(m, best);
  }
  template <class R>
  static bool better(R a, R b) {
    return Max ? a > b : a < b;
  }
};
using amax = extreme<true>;
using amin = extreme<false>;

template <class R>
inline R magnitude(R a) {
  return std::fabs(a);
}
template <class R>
inline R magnitude(cx<R> a) {
  return std::fabs(a.re) + std::fabs(a.im);
}

// Magnitudes of vec<R>::L consecutive elements from p, in some lane order.
template <class T, class W = vec<real_t<T>>>
inline typename W::V magnitudes(const T* p) {
  const auto* r = reinterpret_cast<const real_t<T>*>(p);
  if constexpr (is_complex_v<T>)
    return W::pair_sums(W::abs(W::load(r)), W::abs(W::load(r + W::L)));
  else
    return W::abs(W::load(r));
}

// Unit stride: chunks of whole vectors keep a per-lane running best (vector
// max/min, which never takes NaN over a number). When a chunk's best beats
// the best so far strictly, the chunk is scanned again for the first element
// of that magnitude. The result equals the strict element-by-element scan.
template <class T, class C>
__attribute__((noinline)) int search_nonan(int n, const T* x, int incx) {
  using R = real_t<T>;
  using W = vec<R>;
  constexpr int L = W::L;
  constexpr int chunk = 64 * L;
  if (n < 1 || incx < 1) return 0;
  if (n == 1) return 1;
  R best = magnitude(x[0]);
  int index = 1;
  int i = 1;
  if (incx == 1) {
    while (n - i >= L) {
      const int len = std::min(chunk, (n - i) / L * L);
      typename W::V acc = W::set1(best);
      for (int k = i; k < i + len; k += L) acc = C::template pick<W>(magnitudes<T>(x + k), acc);
      alignas(32) R lane[L];
      W::store(lane, acc);
      R chunk_best = lane[0];
      for (int j = 1; j < L; ++j)
        if (C::better(lane[j], chunk_best)) chunk_best = lane[j];
      if (C::better(chunk_best, best)) {
        // the first vector holding that magnitude, then its first element
        const auto target = W::set1(chunk_best);
        int k = i;
        while (!W::eq_mask(magnitudes<T>(x + k), target)) k += L;
        while (magnitude(x[k]) != chunk_best) ++k;
        best = chunk_best, index = k + 1;
      }
      i += len;
    }
  }
  for (; i < n; ++i) {
    const R m = magnitude(*zar::offset(x, static_cast<long long>(i) * incx));
    if (C::better(m, best)) best = m, index = i + 1;
  }
  return index;
}

template <class T, class C>
int search(int n, const T* x, int incx) {
  constexpr unsigned flags = 0x3F, invalid = 0x1;
  const unsigned saved = _mm_getcsr();
  _mm_setcsr(saved & ~flags);
  int index = search_nonan<T, C>(n, x, incx);
  if ((_mm_getcsr() & invalid) && n > 0) {
    for (int k = 0; k < n; ++k) {
      const real_t<T> m = magnitude(*zar::offset(x, static_cast<long long>(k) * incx));
      if (m != m) {
        index = k + 1;
        break;
      }
    }
  }
  _mm_setcsr(saved | (_mm_getcsr() & flags));
  return index;
}

}  // namespace
}  // namespace zar::l1

using namespace zar::l1;

#define ZAR_L1_DEF_IAMAX(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(IAMAX, name, T) { return search<T, v>(*n, x, *incx); }
#define ZAR_L1_DEF_IAMAX_NONAN(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(IAMAX, name, T) { return search_nonan<T, v>(*n, x, *incx); }
ZAR_L1_LIST_IAMAX(ZAR_L1_DEF_IAMAX)
ZAR_L1_LIST_IAMAX_NONAN(ZAR_L1_DEF_IAMAX_NONAN)
