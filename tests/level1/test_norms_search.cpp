// The double norms in x87 extended precision (range without scaling, the
// caller's control word restored) and the searches with their NaN rule and
// SSE exception flags.
#include <xmmintrin.h>

#include <cmath>
#include <limits>

#include "l1_test.h"

namespace {
using namespace l1t;

unsigned short control_word() {
  unsigned short cw;
  asm volatile("fnstcw %0" : "=m"(cw));
  return cw;
}
void set_control_word(unsigned short cw) { asm volatile("fldcw %0" : : "m"(cw)); }

// Squares of the parts in extended precision: blocks of 8 parts into four
// sums (part j into sum j mod 4), (f0 + f1) + (f2 + f3), then the rest.
double x87_norm_ref(const std::vector<double>& parts) {
  long double f[4] = {0, 0, 0, 0};
  const size_t blocks = parts.size() / 8 * 8;
  for (size_t i = 0; i < blocks; ++i) f[i % 4] += static_cast<long double>(parts[i]) * parts[i];
  long double s = (f[0] + f[1]) + (f[2] + f[3]);
  for (size_t i = blocks; i < parts.size(); ++i) s += static_cast<long double>(parts[i]) * parts[i];
  return static_cast<double>(sqrtl(s));
}

struct norm_case {
  const char* name;
  double scale;  // elements are scale * (random in [-1, 1])
};
class DoubleNorm : public ::testing::TestWithParam<norm_case> {};

TEST_P(DoubleNorm, ExtendedSumsWithoutScalingAndRestoresTheControlWord) {
  const double scale = GetParam().scale;
  std::mt19937 g(19);
  for (int n : {1, 2, 7, 8, 9, 17, 64, 1001})
    for (int inc : {1, 2, -2}) {
      const int len = n * std::abs(inc);
      std::vector<double> x(len);
      for (double& v : x) v = scale * rnd<double>(g);
      std::vector<double> parts;
      for (int k = 0; k < n; ++k) parts.push_back(x[k * std::abs(inc)]);
      const double expect = x87_norm_ref(parts);
      // A caller running the x87 unit in double precision gets the same
      // result and its control word back.
      const unsigned short saved = control_word();
      const unsigned short caller = static_cast<unsigned short>((saved & ~0x300) | 0x200);
      set_control_word(caller);
      const double got = zar_blas_avx_xdnrm2(&n, x.data(), &inc);
      const unsigned short after = control_word();
      set_control_word(saved);
      EXPECT_EQ(after, caller);
      EXPECT_TRUE(std::isfinite(got) && got > 0) << got;
      EXPECT_TRUE(same_bits(got, expect)) << n << " " << inc << ": " << got << " vs " << expect;
      // The same numbers as complex pairs: dznrm2 of n/2 elements.
      const int half = n / 2;
      std::vector<c64> z(half * std::abs(inc));
      std::vector<double> zparts;
      for (int k = 0; k < half; ++k) {
        z[k * std::abs(inc)] = {parts[2 * k], parts[2 * k + 1]};
        zparts.push_back(parts[2 * k]), zparts.push_back(parts[2 * k + 1]);
      }
      if (half > 0) {
        EXPECT_TRUE(same_bits(zar_blas_avx_xdznrm2(&half, z.data(), &inc), x87_norm_ref(zparts))) << half << " " << inc;
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Ranges, DoubleNorm,
                         ::testing::Values(norm_case{"unit", 1.0}, norm_case{"huge", 1e300}, norm_case{"tiny", 1e-300},
                                           norm_case{"denormal", 1e-310}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(DoubleNormValues, HugeAndDenormalPairs) {
  const int two = 2, one = 1;
  const double huge[2] = {1e300, 1e300};
  EXPECT_DOUBLE_EQ(zar_blas_avx_xdnrm2(&two, huge, &one), 1.4142135623730951e300);
  const double den[2] = {3 * 4.9406564584124654e-324, 4 * 4.9406564584124654e-324};
  EXPECT_EQ(zar_blas_avx_xdnrm2(&two, den, &one), 5 * 4.9406564584124654e-324);
  const int zero = 0;
  EXPECT_EQ(zar_blas_avx_xdnrm2(&zero, huge, &one), 0.0);
}

// ---- searches
template <class T>
zar::real_t<T> mag(const T& v) {
  if constexpr (zar::is_complex_v<T>)
    return std::fabs(v.re) + std::fabs(v.im);
  else
    return std::fabs(v);
}
// Strict element-by-element scan; with nan_wins the first NaN is the answer.
template <class T>
int search_ref(int n, const T* x, int inc, bool amax, bool nan_wins) {
  if (n < 1 || inc < 1) return 0;
  for (int k = 0; nan_wins && k < n; ++k)
    if (std::isnan(mag(x[k * inc]))) return k + 1;
  int best = 1;
  for (int k = 1; k < n; ++k) {
    const auto m = mag(x[k * inc]), b = mag(x[(best - 1) * inc]);
    if (amax ? m > b : m < b) best = k + 1;
  }
  return best;
}

template <class T>
void check_search(int (*plain)(const int*, const T*, const int*), int (*nonan)(const int*, const T*, const int*),
                  bool amax) {
  using R = zar::real_t<T>;
  const R nan = std::numeric_limits<R>::quiet_NaN(), inf = std::numeric_limits<R>::infinity();
  std::mt19937 g(23);
  for (int n : {1, 2, 3, 8, 9, 17, 40, 255, 256, 257, 700, 2100})
    for (int inc : {1, 2})
      for (int kind = 0; kind < 5; ++kind) {
        std::vector<T> x(n * inc);
        fill(x.data(), n * inc, g);
        const int a = static_cast<int>(g() % n), b = static_cast<int>(g() % n);
        auto set = [&](int k, R v) {
          if constexpr (zar::is_complex_v<T>)
            x[k * inc] = T{v, R(0)};
          else
            x[k * inc] = v;
        };
        if (kind == 1) set(a, R(2)), set(b, R(-2));  // ties: the lower index wins
        if (kind == 2) set(a, nan), set(b, nan);     // the first NaN wins
        if (kind == 3) set(a, inf), set(b, R(0));
        if (kind == 4) set(a, R(0)), set(b, R(0));  // ties of the smallest
        const unsigned saved = _mm_getcsr();
        _mm_setcsr((saved & ~0x3Fu) | 0x8u);  // an overflow flag of the caller
        const int got = plain(&n, x.data(), &inc);
        const unsigned flags = _mm_getcsr() & 0x3F;
        const int got_nonan = nonan(&n, x.data(), &inc);
        _mm_setcsr(saved);
        const bool has_nan = kind == 2;
        EXPECT_EQ(got, search_ref(n, x.data(), inc, amax, true)) << n << " " << inc << " kind " << kind;
        EXPECT_EQ(got_nonan, search_ref(n, x.data(), inc, amax, false)) << n << " " << inc << " kind " << kind;
        EXPECT_TRUE(flags & 0x8) << "the caller's flags are kept";
        if (n > 1) {
          EXPECT_EQ((flags & 0x1) != 0, has_nan) << "invalid raised exactly when NaN is compared";
        }
      }
  // Degenerate arguments.
  const T v[3] = {};
  for (int bad_inc : {0, -1}) {
    const int three = 3;
    EXPECT_EQ(plain(&three, v, &bad_inc), 0);
  }
  const int zero = 0, one = 1;
  EXPECT_EQ(plain(&zero, v, &one), 0);
  EXPECT_EQ(plain(&one, v, &one), 1);
}

TEST(Search, AmaxAndAminAllTypes) {
  check_search<double>(zar_blas_avx_xidamax, zar_blas_avx_xidamax_nonan, true);
  check_search<float>(zar_blas_avx_xisamax, zar_blas_avx_xisamax_nonan, true);
  check_search<c64>(zar_blas_avx_xizamax, zar_blas_avx_xizamax_nonan, true);
  check_search<c32>(zar_blas_avx_xicamax, zar_blas_avx_xicamax_nonan, true);
  check_search<double>(zar_blas_avx_xidamin, zar_blas_avx_xidamin_nonan, false);
  check_search<float>(zar_blas_avx_xisamin, zar_blas_avx_xisamin_nonan, false);
  check_search<c64>(zar_blas_avx_xizamin, zar_blas_avx_xizamin_nonan, false);
  check_search<c32>(zar_blas_avx_xicamin, zar_blas_avx_xicamin_nonan, false);
}

TEST(Search, PublishedExamples) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double a[3] = {1, nan, 5}, b[3] = {3, -3, 2};
  const int n = 3, one = 1;
  EXPECT_EQ(idamax_(&n, a, &one), 2);
  EXPECT_EQ(idamax_(&n, b, &one), 1);
  EXPECT_EQ(cblas_idamax(n, b, 1), 0u);
  EXPECT_EQ(cblas_idamin(n, b, 1), 2u);
  EXPECT_EQ(cblas_idamax(0, b, 1), 0u);
}

}  // namespace
