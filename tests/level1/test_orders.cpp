// Fixed orders of the Level-1 reductions, bit for bit against plain
// references that follow them: axpy into one element (incy = 0), the strided
// dot tree, the unit-stride engine (fast path with its peel, `_cnr` twins
// whatever the alignment), dsdot/sdsdot in double rounded once, asum and the
// single-precision norms.
#include <cmath>

#include "l1_test.h"

namespace {
using namespace l1t;

// ---- axpy with incy = 0: sixteen partial sums, four, then one by one.
template <class T>
T axpy_into_one_ref(int n, T alpha, const T* x, int incx, T y0) {
  auto X = [&](int k) { return x[(incx < 0 ? (1 - n) * incx : 0) + k * incx]; };
  int k = 0;
  T s = y0;
  if (n >= 16) {
    T p[16] = {};
    p[0] = y0;
    for (; k + 16 <= n; k += 16)
      for (int j = 0; j < 16; ++j) p[j] = add(p[j], mul(alpha, X(k + j)));
    T b[4], d[4];
    for (int j = 0; j < 4; ++j) b[j] = add(p[4 + j], p[j]), d[j] = add(p[12 + j], p[8 + j]);
    s = add(add(add(b[0], d[0]), add(b[2], d[2])), add(add(b[1], d[1]), add(b[3], d[3])));
  }
  if (n - k >= 4) {
    T r[4] = {s, T{}, T{}, T{}};
    for (; k + 4 <= n; k += 4)
      for (int j = 0; j < 4; ++j) r[j] = add(r[j], mul(alpha, X(k + j)));
    s = add(add(r[0], r[2]), add(r[1], r[3]));
  }
  for (; k < n; ++k) s = add(s, mul(alpha, X(k)));
  return s;
}

template <class T>
void check_axpy_into_one(void (*kernel)(const int*, const T*, const T*, const int*, T*, const int*)) {
  std::mt19937 g(7);
  for (int n : {0, 1, 3, 4, 7, 15, 16, 17, 19, 20, 31, 32, 33, 36, 40, 1000})
    for (int off = 0; off < 4; ++off)
      for (int incx : {1, 2, -1, -3}) {
        const int len = n * std::abs(incx) + 1;
        buffer<T> x(len, off);
        fill(x.data(), len, g);
        const T alpha = random_elem<T>(g);
        T y[2] = {random_elem<T>(g), random_elem<T>(g)};
        const T expect = n > 0 ? axpy_into_one_ref(n, alpha, x.data(), incx, y[0]) : y[0];
        const T second = y[1];
        const int incy = 0;
        kernel(&n, &alpha, x.data(), &incx, y, &incy);
        EXPECT_TRUE(same_bits(y[0], expect)) << "n=" << n << " off=" << off << " incx=" << incx;
        EXPECT_TRUE(same_bits(y[1], second));
      }
}

TEST(Orders, AxpyIntoOneElement) {
  check_axpy_into_one<double>(zar_blas_avx_xdaxpy);
  check_axpy_into_one<float>(zar_blas_avx_xsaxpy);
  check_axpy_into_one<c64>(zar_blas_avx_xzaxpy);
  check_axpy_into_one<c32>(zar_blas_avx_xcaxpy);
}

// ---- dot: strided tree and unit-stride engine
template <class Acc, class T>
Acc dot_strided_ref(int n, const T* x, int incx, const T* y, int incy) {
  auto t = [&](int k) {
    return Acc(x[(incx < 0 ? (1 - n) * incx : 0) + k * incx]) * Acc(y[(incy < 0 ? (1 - n) * incy : 0) + k * incy]);
  };
  Acc s = 0;
  int k = 0;
  if (n >= 8) {
    Acc a[8] = {};
    for (; k + 8 <= n; k += 8)
      for (int j = 0; j < 8; ++j) a[j] += t(k + j);
    s = ((a[0] + a[2]) + (a[4] + a[6])) + ((a[1] + a[3]) + (a[5] + a[7]));
  }
  for (; k < n; ++k) s += t(k);
  return s;
}

const int sizes[] = {0, 1, 2, 5, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 129, 1000, 1003};

// A reduction kernel over (n, x, incx, y, incy) returning Acc, its `_cnr`
// twin, and the number of Acc lanes of its vectors.
template <class T, class Acc, class K>
void check_dot_family(K fast, K cnr, int lanes) {
  std::mt19937 g(11);
  for (int n : sizes)
    for (int incx : {1, 2, -1, -2})
      for (int incy : {1, 3, -1}) {
        const int nx = std::max(1, n * std::abs(incx)), ny = std::max(1, n * std::abs(incy));
        std::vector<Acc> cnr_results;
        for (int off = 0; off < 4; ++off) {
          buffer<T> x(nx, off), y(ny, 3 - off);
          std::mt19937 same(n * 131 + incx * 7 + incy);
          fill(x.data(), nx, same), fill(y.data(), ny, same);
          const bool unit = incx == 1 && incy == 1;
          auto term = [&](int i) { return Acc(x[i]) * Acc(y[i]); };
          Acc expect_fast = unit ? unit_order<Acc>(n, fast_peel(x.data()), lanes, term)
                                 : dot_strided_ref<Acc>(n, x.data(), incx, y.data(), incy);
          Acc expect_cnr = unit ? unit_order<Acc>(n, 0, lanes, term) : expect_fast;
          if (n < 1) expect_fast = expect_cnr = 0;
          EXPECT_TRUE(same_bits(fast(&n, x.data(), &incx, y.data(), &incy), expect_fast)) << n << " " << off;
          const Acc c = cnr(&n, x.data(), &incx, y.data(), &incy);
          EXPECT_TRUE(same_bits(c, expect_cnr)) << n << " " << off;
          {
            cbwr_scope compatible(ZAR_CBWR_COMPATIBLE);
            EXPECT_TRUE(same_bits(fast(&n, x.data(), &incx, y.data(), &incy), c)) << "fast kernel follows the branch";
          }
          cnr_results.push_back(c);
        }
        for (Acc c : cnr_results) EXPECT_TRUE(same_bits(c, cnr_results[0])) << "cnr depends on alignment, n=" << n;
      }
}

TEST(Orders, Dot) {
  check_dot_family<double, double>(zar_blas_avx_xddot, zar_blas_avx_xddot_cnr, 4);
  check_dot_family<float, float>(zar_blas_avx_xsdot, zar_blas_avx_xsdot_cnr, 8);
  check_dot_family<float, double>(zar_blas_avx_xdsdot, zar_blas_avx_xdsdot_cnr, 4);
}

// Complex dot: unit stride through the engine (never peeling: the same bits
// for every alignment), other increments one running sum.
template <class T>
void check_complex_dot(T (*dotu)(const int*, const T*, const int*, const T*, const int*),
                       T (*dotc)(const int*, const T*, const int*, const T*, const int*)) {
  constexpr int lanes = 32 / sizeof(T);
  for (int n : sizes)
    for (int inc : {1, 2, -1})
      for (int off = 0; off < 4; ++off) {
        const int len = std::max(1, n * std::abs(inc));
        buffer<T> x(len, off), y(len, (off + 3) % 4);
        std::mt19937 g(n + 17 * inc);
        fill(x.data(), len, g), fill(y.data(), len, g);
        for (bool conj : {false, true}) {
          auto term = [&](int i) {
            const T a = x[i], b = y[i];
            return conj ? mul(T{a.re, -a.im}, b) : mul(a, b);
          };
          T expect{};
          if (inc == 1) {
            expect = unit_order<T>(n, 0, lanes, term);
          } else {
            for (int k = 0; k < n; ++k) {
              const int p = (inc < 0 ? (1 - n) * inc : 0) + k * inc;
              expect = add(expect, conj ? mul(T{x[p].re, -x[p].im}, y[p]) : mul(x[p], y[p]));
            }
          }
          const T got = (conj ? dotc : dotu)(&n, x.data(), &inc, y.data(), &inc);
          EXPECT_TRUE(same_bits(got, expect)) << "n=" << n << " inc=" << inc << " off=" << off << " conj=" << conj;
        }
      }
}

TEST(Orders, ComplexDot) {
  check_complex_dot<c64>(zar_blas_avx_xzdotu, zar_blas_avx_xzdotc);
  check_complex_dot<c32>(zar_blas_avx_xcdotu, zar_blas_avx_xcdotc);
}

TEST(Orders, DsdotWithBothIncrementsNegativeSumsFromTheStart) {
  std::mt19937 g(3);
  for (int n : {3, 8, 13, 40}) {
    std::vector<float> x(2 * n), y(3 * n);
    fill(x.data(), 2 * n, g), fill(y.data(), 3 * n, g);
    const int mx = -2, my = -3, px = 2, py = 3;
    const double got = zar_blas_avx_xdsdot(&n, x.data(), &mx, y.data(), &my);
    EXPECT_TRUE(same_bits(got, dot_strided_ref<double>(n, x.data(), px, y.data(), py)));
  }
}

TEST(Orders, SdsdotAddsInDoubleAndRoundsOnce) {
  // Each product is below half an ulp of 1 in single precision: summed in
  // single they would vanish, in double they carry over.
  const int n = 64, one = 1;
  std::vector<float> x(n, 0x1p-13f), y(n, 0x1p-12f);
  const float sb = 1.0f;
  const float got = zar_blas_avx_xsdsdot(&n, &sb, x.data(), &one, y.data(), &one);
  EXPECT_EQ(got, 1.0f + 0x1p-19f);
  const int none = 0;
  const float negative_zero = -0.0f;
  EXPECT_TRUE(same_bits(zar_blas_avx_xsdsdot(&none, &negative_zero, x.data(), &one, y.data(), &one), -0.0f));
  std::mt19937 g(5);
  for (int len : {0, 1, 9, 100})
    for (int inc : {1, 2, -1}) {
      std::vector<float> a(std::max(1, len * std::abs(inc))), b(a.size());
      fill(a.data(), a.size(), g), fill(b.data(), b.size(), g);
      const float s = rnd<float>(g);
      const double d = len < 1    ? 0.0
                       : inc == 1 ? unit_order<double>(len, fast_peel(a.data()), 4,
                                                       [&](int i) { return double(a[i]) * double(b[i]); })
                                  : dot_strided_ref<double>(len, a.data(), inc, b.data(), inc);
      EXPECT_TRUE(same_bits(zar_blas_avx_xsdsdot(&len, &s, a.data(), &inc, b.data(), &inc), float(double(s) + d)));
    }
}

// ---- asum and the single-precision norms run the same engine on |x| and
// on squares widened to double.
template <class T, class Acc, class K>
void check_norm_family(K fast, K cnr, int lanes, bool squares) {
  using R = zar::real_t<T>;
  constexpr int parts = zar::is_complex_v<T> ? 2 : 1;
  auto term_of = [&](const R* r) {
    return [r, squares](int i) { return squares ? Acc(double(r[i]) * double(r[i])) : Acc(std::fabs(r[i])); };
  };
  auto finish = [&](Acc s) { return squares ? R(std::sqrt(double(s))) : R(s); };
  for (int n : sizes)
    for (int off = 0; off < 4; ++off) {
      buffer<T> x(std::max(1, 3 * n), off);
      std::mt19937 g(n);
      fill(x.data(), std::max(1, 3 * n), g);
      const R* r = reinterpret_cast<const R*>(x.data());
      const int one = 1;
      R expect_fast = finish(unit_order<Acc>(parts * n, fast_peel(r), lanes, term_of(r)));
      R expect_cnr = finish(unit_order<Acc>(parts * n, 0, lanes, term_of(r)));
      EXPECT_TRUE(same_bits(fast(&n, x.data(), &one), expect_fast)) << n << " " << off;
      EXPECT_TRUE(same_bits(cnr(&n, x.data(), &one), expect_cnr)) << n << " " << off;
      {
        cbwr_scope compatible(ZAR_CBWR_COMPATIBLE);
        EXPECT_TRUE(same_bits(fast(&n, x.data(), &one), expect_cnr)) << "fast kernel follows the branch";
      }
      // Strided: one running sum, the same elements for incx and -incx
      // (asum takes |incx|; the norms walk from the far end).
      for (int inc : {3, -3}) {
        Acc s = 0;
        for (int k = 0; k < n; ++k) {
          const int e = inc > 0 || !squares ? k * 3 : (n - 1 - k) * 3;
          if (squares) {
            for (int p = 0; p < parts; ++p) s += term_of(r)(parts * e + p);
          } else {
            R m = 0;
            for (int p = 0; p < parts; ++p) m += std::fabs(r[parts * e + p]);
            s += m;
          }
        }
        EXPECT_TRUE(same_bits(fast(&n, x.data(), &inc), n < 1 ? R(0) : finish(s))) << n << " inc " << inc;
      }
    }
}

TEST(Orders, AsumAndSingleNorms) {
  check_norm_family<double, double>(zar_blas_avx_xdasum, zar_blas_avx_xdasum_cnr, 4, false);
  check_norm_family<float, float>(zar_blas_avx_xsasum, zar_blas_avx_xsasum_cnr, 8, false);
  check_norm_family<c64, double>(zar_blas_avx_xdzasum, zar_blas_avx_xdzasum_cnr, 4, false);
  check_norm_family<c32, float>(zar_blas_avx_xscasum, zar_blas_avx_xscasum_cnr, 8, false);
  check_norm_family<float, double>(zar_blas_avx_xsnrm2, zar_blas_avx_xsnrm2_cnr, 4, true);
  check_norm_family<c32, double>(zar_blas_avx_xscnrm2, zar_blas_avx_xscnrm2_cnr, 4, true);
}

TEST(Orders, SingleNormNeedsNoScaling) {
  const float x[2] = {3e30f, 4e30f};
  const c32 z[1] = {{3e30f, 4e30f}};
  const int n2 = 2, n1 = 1, one = 1;
  EXPECT_EQ(zar_blas_avx_xsnrm2(&n2, x, &one), 5e30f);
  EXPECT_EQ(zar_blas_avx_xscnrm2(&n1, z, &one), 5e30f);
  const float tiny[2] = {3e-30f, 4e-30f};
  EXPECT_EQ(zar_blas_avx_xsnrm2(&n2, tiny, &one), 5e-30f);
}

}  // namespace

namespace {
using namespace l1t;

// Vectors larger than the last-level cache are read and written in 16-byte
// halves; the registers hold the same values, so every result keeps its bits.
// A small cache answer makes a vector of 70001 elements count as streaming.
TEST(Orders, StreamingAccessKeepsTheBits) {
  const int n = 70001, one = 1;
  buffer<double> x(n, 1), y(n, 2);
  buffer<c64> zx(n, 0), zy(n, 1);
  std::mt19937 g(43);
  fill(x.data(), n, g), fill(y.data(), n, g), fill(zx.data(), n, g), fill(zy.data(), n, g);
  const int nf = 2 * n;
  buffer<float> fx(nf, 3), fy(nf, 5);
  fill(fx.data(), nf, g), fill(fy.data(), nf, g);
  const double alpha = 0.25, c = 0.6, s = 0.8;
  auto run = [&] {
    std::vector<double> out;
    out.push_back(zar_blas_avx_xddot(&n, x.data(), &one, y.data(), &one));
    out.push_back(zar_blas_avx_xddot_cnr(&n, x.data(), &one, y.data(), &one));
    out.push_back(zar_blas_avx_xdasum(&n, x.data(), &one));
    out.push_back(zar_blas_avx_xsdot(&nf, fx.data(), &one, fy.data(), &one));
    out.push_back(zar_blas_avx_xsasum(&nf, fx.data(), &one));
    out.push_back(zar_blas_avx_xdsdot(&nf, fx.data(), &one, fy.data(), &one));
    const c64 z = zar_blas_avx_xzdotc(&n, zx.data(), &one, zy.data(), &one);
    out.push_back(z.re), out.push_back(z.im);
    std::vector<double> yy(y.data(), y.data() + n), xx(x.data(), x.data() + n);
    zar_blas_avx_xdaxpy(&n, &alpha, x.data(), &one, yy.data(), &one);
    zar_blas_avx_xdrot(&n, xx.data(), &one, yy.data(), &one, &c, &s);
    zar_blas_avx_xdscal(&n, &alpha, xx.data(), &one);
    out.insert(out.end(), yy.begin(), yy.end());
    out.insert(out.end(), xx.begin(), xx.end());
    return out;
  };
  zar_set_cache_size(1 << 30);
  const std::vector<double> in_cache = run();
  zar_set_cache_size(1 << 16);
  const std::vector<double> streaming = run();
  zar_set_cache_size(-1);
  ASSERT_EQ(in_cache.size(), streaming.size());
  EXPECT_TRUE(bits_equal(streaming.data(), in_cache.data(), in_cache.size()));
}

}  // namespace
