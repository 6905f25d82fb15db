// Fixed small lengths N = 2..64 in double precision: transforms generated
// from the pass templates with every size known at compile time (radices,
// loop counts, twiddles and butterfly constants are constants; the legs of
// every butterfly are straight-line code, the loops over butterflies are
// unrolled by two). Transforms run in pairs, one per
// half of a ymm register (the pass chain started with two interleaved
// transforms), on the stack; no plan and no scratch.
#include <array>
#include <utility>

#include "dft/engine/complex_plan.h"
#include "zar/types.h"

namespace zar::fft {
namespace detail {
namespace {

// The passes of a fixed length: radices (4s first, a 2 for an odd power of
// two, then the odd primes), and where each pass's tables start.
struct small_shape {
  int np = 0;
  int r[8] = {}, m[8] = {}, s[8] = {}, tw_at[8] = {}, rc_at[8] = {};
  int tw_len = 0, rc_len = 0;
};
constexpr small_shape small_factor(int n) {
  small_shape sh;
  int rest = n;
  while (rest % 4 == 0) sh.r[sh.np++] = 4, rest /= 4;
  if (rest % 2 == 0) sh.r[sh.np++] = 2, rest /= 2;
  for (int f = 3; rest > 1; f += 2)
    while (rest % f == 0) sh.r[sh.np++] = f, rest /= f;
  int m = n, s = 2;
  for (int i = 0; i < sh.np; ++i) {
    m /= sh.r[i];
    sh.m[i] = m, sh.s[i] = s;
    s *= sh.r[i];
    sh.tw_at[i] = sh.tw_len;
    sh.tw_len += 2 * (sh.r[i] - 1) * m;
    sh.rc_at[i] = sh.rc_len;
    sh.rc_len += sh.r[i] % 2 ? 2 * sh.r[i] : 0;
  }
  return sh;
}
template <int N> inline constexpr small_shape shape_of = small_factor(N);

constexpr long double two_pi = 6.283185307179586476925286766559005768L;
// twiddles e^{-2 pi i jp/(rm)} of every pass, and cos/sin of 2 pi k/r of the
// odd radices, folded by the compiler in long double
template <int N> constexpr std::array<double, shape_of<N>.tw_len + 2> make_tw() {
  constexpr small_shape sh = shape_of<N>;
  std::array<double, sh.tw_len + 2> t{};
  for (int i = 0; i < sh.np; ++i)
    for (int j = 1; j < sh.r[i]; ++j)
      for (int p = 0; p < sh.m[i]; ++p) {
        const long double a = two_pi * (j * p) / (sh.r[i] * sh.m[i]);
        t[sh.tw_at[i] + 2 * ((j - 1) * sh.m[i] + p)] = static_cast<double>(__builtin_cosl(a));
        t[sh.tw_at[i] + 2 * ((j - 1) * sh.m[i] + p) + 1] = static_cast<double>(-__builtin_sinl(a));
      }
  return t;
}
template <int N> constexpr std::array<double, shape_of<N>.rc_len + 2> make_rc() {
  constexpr small_shape sh = shape_of<N>;
  std::array<double, sh.rc_len + 2> t{};
  for (int i = 0; i < sh.np; ++i)
    if (sh.r[i] % 2)
      for (int k = 0; k < sh.r[i]; ++k) {
        const long double a = two_pi * k / sh.r[i];
        t[sh.rc_at[i] + 2 * k] = static_cast<double>(__builtin_cosl(a));
        t[sh.rc_at[i] + 2 * k + 1] = static_cast<double>(__builtin_sinl(a));
      }
  return t;
}
template <int N> inline constexpr auto tw_of = make_tw<N>();
template <int N> inline constexpr auto rc_of = make_rc<N>();

#define ZAR_UNROLL_ALL _Pragma("GCC unroll 64")
#define ZAR_UNROLL_TWO _Pragma("GCC unroll 2")

// Pass I of length N on two interleaved transforms.
template <int N, int Sign, int I> inline void small_pass(const double* src, double* dst) {
  using V = simd::d2;
  using R = V::R;
  using C = simd::cops<V, Sign>;
  constexpr small_shape sh = shape_of<N>;
  constexpr int r = sh.r[I], m = sh.m[I], s = sh.s[I];
  const double* tw = tw_of<N>.data() + sh.tw_at[I];
  const double* rc = rc_of<N>.data() + sh.rc_at[I];
  ZAR_UNROLL_TWO
  for (int p = 0; p < m; ++p) {
    ZAR_UNROLL_TWO
    for (int q = 0; q < s; q += V::L) {
      R a[r];
      ZAR_UNROLL_ALL
      for (int k = 0; k < r; ++k) a[k] = V::load(src + 2 * (q + s * (p + k * m)));
      bfly<V, Sign>::template run<r>(a, r, rc);
      V::store(dst + 2 * (q + s * r * p), a[0]);
      ZAR_UNROLL_ALL
      for (int j = 1; j < r; ++j)
        V::store(dst + 2 * (q + s * (r * p + j)), p == 0 ? a[j] : C::twiddle_b(a[j], tw + 2 * ((j - 1) * m + p)));
    }
  }
}

template <int N, int Sign, int... I>
inline const double* small_chain(double* b0, double* b1, std::integer_sequence<int, I...>) {
  double* bufs[2] = {b0, b1};
  (small_pass<N, Sign, I>(bufs[I & 1], bufs[(I + 1) & 1]), ...);
  return bufs[sizeof...(I) & 1];
}

}  // namespace
}  // namespace detail

template <int N, int Sign>
void small_run(double scale, const double* x, long is, long idist, double* y, long os, long odist, long howmany) {
  static_assert(N >= 2 && N <= 64);
  alignas(32) double b0[4 * N], b1[4 * N];
  const bool scaled = scale != 1.0;
  const __m256d sc = _mm256_set1_pd(scale);
  for (long t = 0; t < howmany; t += 2) {
    // a pair of transforms (the last one twice when howmany is odd)
    const double* x0 = offset(x, 2 * static_cast<long long>(t) * idist);
    const double* x1 = t + 1 < howmany ? offset(x0, 2 * static_cast<long long>(idist)) : x0;
    for (int j = 0; j < N; ++j) {
      const __m128d lo = _mm_loadu_pd(x0 + 2 * j * is), hi = _mm_loadu_pd(x1 + 2 * j * is);
      _mm256_store_pd(b0 + 4 * j, _mm256_insertf128_pd(_mm256_castpd128_pd256(lo), hi, 1));
    }
    const double* out = detail::small_chain<N, Sign>(b0, b1, std::make_integer_sequence<int, detail::shape_of<N>.np>{});
    double* y0 = offset(y, 2 * static_cast<long long>(t) * odist);
    double* y1 = offset(y0, 2 * static_cast<long long>(odist));
    const bool two = t + 1 < howmany;
    for (int j = 0; j < N; ++j) {
      __m256d v = _mm256_load_pd(out + 4 * j);
      if (scaled) v = _mm256_mul_pd(v, sc);
      _mm_storeu_pd(y0 + 2 * j * os, _mm256_castpd256_pd128(v));
      if (two) _mm_storeu_pd(y1 + 2 * j * os, _mm256_extractf128_pd(v, 1));
    }
  }
}

// Every length's pair, forward then backward (this table instantiates them).
namespace detail {
template <int... K> constexpr std::array<small_fn, 2 * sizeof...(K)> small_list(std::integer_sequence<int, K...>) {
  return {&small_run<K + 2, -1>..., &small_run<K + 2, 1>...};
}
const std::array<small_fn, 126> small_kernels = small_list(std::make_integer_sequence<int, 63>{});
}  // namespace detail

}  // namespace zar::fft
