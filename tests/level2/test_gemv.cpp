// gemv: the scaling rules of y, the early returns, the order of operations
// (bit for bit against plain loops that follow it), alignment independence
// of the reproducible twin, threads, and the fused and mixed-type products.
#include <functional>
#include <string>

#include "blas/level2/l2.h"
#include "l2test.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace {

using namespace l2t;

template <class T> class Gemv : public testing::Test {};
TYPED_TEST_SUITE(Gemv, all_types);

template <class T> std::string transes() { return zar::is_complex_v<T> ? "NTC" : "NT"; }
template <class T> bool has_nan(const T& v) {
  if constexpr (zar::is_complex_v<T>) return std::isnan(v.re) || std::isnan(v.im);
  else return std::isnan(v);
}

TYPED_TEST(Gemv, BetaZeroStoresZerosOverNaN) {
  using T = TypeParam;
  const int m = 9, n = 6, lda = 11;
  const auto a = rnd_vec<T>(lda * n, 1);
  const auto x = rnd_vec<T>(span(9, 2), 2);
  const T alpha = from<T>(1.5, -0.5), zero = from<T>(0);
  for (char tr : transes<T>())
    for (int incy : {1, -2}) {
      const int len = tr == 'N' ? m : n, xinc = 2;
      std::vector<T> y(span(len, incy), from<T>(std::nan("")));
      const char t[] = {tr, 0};
      kern<T>::gemv(t, &m, &n, &alpha, a.data(), &lda, x.data(), &xinc, &zero, y.data(), &incy);
      for (int i = 0; i < len; ++i) EXPECT_FALSE(has_nan(y[start(len, incy) + i * incy])) << tr << incy << " " << i;
      // alpha = 0 with beta = 0: exact zeros
      std::vector<T> z(span(len, incy), from<T>(std::nan("")));
      kern<T>::gemv(t, &m, &n, &zero, a.data(), &lda, x.data(), &xinc, &zero, z.data(), &incy);
      for (int i = 0; i < len; ++i) EXPECT_TRUE(same_bits(z[start(len, incy) + i * incy], zero));
    }
}

TYPED_TEST(Gemv, AlphaZeroBetaOneLeavesYUntouched) {
  using T = TypeParam;
  const int m = 7, n = 5, lda = 7, inc = 1;
  const std::vector<T> a(lda * n, from<T>(std::nan(""))), x(7, from<T>(std::nan("")));
  const T alpha = from<T>(0), beta = from<T>(1);
  for (char tr : transes<T>()) {
    auto y = rnd_vec<T>(7, 3);
    y[2] = from<T>(std::nan("0x123"));
    const auto y0 = y;
    const char t[] = {tr, 0};
    kern<T>::gemv(t, &m, &n, &alpha, a.data(), &lda, x.data(), &inc, &beta, y.data(), &inc);
    EXPECT_TRUE(same_bits(y, y0)) << tr;
    // m = 0 or n = 0 returns before scaling
    const int zero = 0;
    const T two = from<T>(2);
    kern<T>::gemv(t, &zero, &n, &alpha, a.data(), &lda, x.data(), &inc, &two, y.data(), &inc);
    kern<T>::gemv(t, &m, &zero, &alpha, a.data(), &lda, x.data(), &inc, &two, y.data(), &inc);
    EXPECT_TRUE(same_bits(y, y0)) << tr;
  }
}

// incy = 0: y_0 is multiplied by beta once per element of y's length,
// sixteen factors at a time, then the products are added into it.
TYPED_TEST(Gemv, IncyZeroRaisesBetaToTheLength) {
  using T = TypeParam;
  using zar::l2::mul;
  const int n = 3, lda = 40, incx = 1, incy = 0;
  const auto a = rnd_vec<T>(lda * n, 4);
  const auto x = rnd_vec<T>(40, 5);
  const T beta = from<T>(1.1, 0.3), zero = from<T>(0);
  for (int m : {5, 16, 37}) {
    const T y0 = from<T>(0.75, -0.25);
    T y = y0;
    kern<T>::gemv("N", &m, &n, &zero, a.data(), &lda, x.data(), &incx, &beta, &y, &incy);
    T b16 = beta, want = y0;
    for (int k = 1; k < 16; ++k) b16 = mul(b16, beta);
    int i = 0;
    for (; i + 16 <= m; i += 16) want = mul(want, b16);
    for (; i < m; ++i) want = mul(want, beta);
    EXPECT_TRUE(same_bits(y, want)) << m;
    // beta = 0 with incy = 0: one zero, then every product added to it
    T s = from<T>(std::nan(""));
    const T one = from<T>(1);
    kern<T>::gemv("N", &m, &n, &one, a.data(), &lda, x.data(), &incx, &zero, &s, &incy);
    lc ref;
    for (int j = 0; j < n; ++j)
      for (int r = 0; r < m; ++r) ref = ref + widen(a[r + j * lda]) * widen(x[j]);
    EXPECT_LT(mag(widen(s) - ref), 16 * m * n * eps<T>() * (1 + mag(ref))) << m;
  }
}

// The stated order, written plainly: no transpose in groups of four columns;
// transpose (reproducible order) in lanes of one 32-byte vector.
template <class R>
void plain_n(int m, int n, R alpha, const R* a, int lda, const R* x, R* y) {
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    const R t0 = alpha * x[j], t1 = alpha * x[j + 1], t2 = alpha * x[j + 2], t3 = alpha * x[j + 3];
    for (int i = 0; i < m; ++i)
      y[i] = y[i] + ((a[i + j * lda] * t0 + a[i + (j + 1) * lda] * t1) +
                     (a[i + (j + 2) * lda] * t2 + a[i + (j + 3) * lda] * t3));
  }
  for (; j < n; ++j)
    for (int i = 0; i < m; ++i) y[i] = y[i] + a[i + j * lda] * (alpha * x[j]);
}
template <class R> R tree(const R* l, int k) { return k == 1 ? l[0] : tree(l, k / 2) + tree(l + k / 2, k / 2); }
template <class R>
void plain_t(int m, int n, R alpha, const R* a, int lda, const R* x, R* y) {
  constexpr int L = 32 / sizeof(R);
  const int vend = m / L * L;
  for (int j = 0; j < n; ++j) {
    R lanes[L] = {};
    for (int i = 0; i < vend; ++i) lanes[i % L] = lanes[i % L] + a[i + j * lda] * x[i];
    R s = 0;
    if (vend > 0) s = s + tree(lanes, L);
    for (int i = vend; i < m; ++i) s = s + a[i + j * lda] * x[i];
    y[j] = y[j] + alpha * s;
  }
}

template <class R> class GemvOrder : public testing::Test {};
TYPED_TEST_SUITE(GemvOrder, real_types);

TYPED_TEST(GemvOrder, BitForBitWithThePlainOrderAtEveryAlignment) {
  using R = TypeParam;
  const R alpha = R(0.7), beta = R(1);
  for (int m : {1, 3, 8, 15, 16, 17, 33, 70})
    for (int n : {1, 3, 4, 5, 9})
      for (int off = 0; off < 4; ++off) {
        SCOPED_TRACE(testing::Message() << "m=" << m << " n=" << n << " offset=" << off);
        const int lda = m + 1, inc = 1;
        const auto a0 = rnd_vec<R>(lda * n + 8, m * 31 + n);
        const auto x0 = rnd_vec<R>(80, m + n);
        const auto y0 = rnd_vec<R>(80, m * n);
        const R* a = a0.data() + off;
        // no transpose: fast path (peeled) and twin equal the plain order
        std::vector<R> y1(y0.begin() + off, y0.end()), y2 = y1, want = y1;
        plain_n(m, n, alpha, a, lda, x0.data(), want.data());
        kern<R>::gemv("N", &m, &n, &alpha, a, &lda, x0.data(), &inc, &beta, y1.data(), &inc);
        kern<R>::gemv_cnr("N", &m, &n, &alpha, a, &lda, x0.data(), &inc, &beta, y2.data(), &inc);
        EXPECT_TRUE(same_bits(y1, want));
        EXPECT_TRUE(same_bits(y2, want));
        // a strided y takes the indexed path with the same order
        std::vector<R> ys(2 * m, R(0));
        for (int i = 0; i < m; ++i) ys[2 * i] = y0[off + i];
        const int two = 2;
        kern<R>::gemv("N", &m, &n, &alpha, a, &lda, x0.data(), &inc, &beta, ys.data(), &two);
        for (int i = 0; i < m; ++i) EXPECT_TRUE(same_bits(ys[2 * i], want[i])) << i;
        // transpose: the twin follows the lane order from the first row
        // whatever the alignment of x
        std::vector<R> xs(x0.begin() + off, x0.end()), t1(y0), t2(y0);
        plain_t(m, n, alpha, a, lda, xs.data(), t1.data());
        kern<R>::gemv_cnr("T", &m, &n, &alpha, a, &lda, xs.data(), &inc, &beta, t2.data(), &inc);
        EXPECT_TRUE(same_bits(t1, t2));
      }
}

TYPED_TEST(GemvOrder, ReproducibleBranchIgnoresAlignment) {
  using R = TypeParam;
  const int saved = zar_cbwr_get();
  zar_cbwr_set(ZAR_CBWR_COMPATIBLE);
  const int m = 203, n = 7, lda = 211, inc = 1;
  const R alpha = R(1.25), beta = R(0.5);
  const auto a0 = rnd_vec<R>(lda * n + 8, 9);
  const auto x0 = rnd_vec<R>(m + 8, 10);
  std::vector<R> first;
  for (int off = 0; off < 8; ++off) {
    // the same data at addresses shifted by off elements
    std::vector<R> a(a0.size() + 8), x(x0.size() + 8), y(n + 8, R(1));
    std::copy(a0.begin(), a0.end(), a.begin() + off);
    std::copy(x0.begin(), x0.end(), x.begin() + (off * 3) % 8);
    kern<R>::gemv("T", &m, &n, &alpha, a.data() + off, &lda, x.data() + (off * 3) % 8, &inc, &beta, y.data() + off,
                  &inc);
    std::vector<R> got(y.begin() + off, y.begin() + off + n);
    if (off == 0) first = got;
    else EXPECT_TRUE(same_bits(first, got)) << off;
  }
  zar_cbwr_set(saved);
}

// The threaded front end divides y (or the columns of A) among threads and
// gives the same bits as one thread.
TYPED_TEST(Gemv, ThreadsGiveTheSameBits) {
  using T = TypeParam;
  const int m = 1100, n = 1000, lda = 1103;  // above the threaded front end's threshold
  const auto a = rnd_vec<T>(static_cast<size_t>(lda) * n, 12);
  const auto x = rnd_vec<T>(span(1100, 2), 13);
  const T alpha = from<T>(0.5, 1), beta = from<T>(-1, 0.25);
  for (char tr : transes<T>())
    for (int incy : {1, -3}) {
      const int len = tr == 'N' ? m : n, incx = 2;
      const char t[] = {tr, 0};
      const auto y0 = rnd_vec<T>(span(len, incy), 14);
      auto y1 = y0, y2 = y0;
      zar_set_num_threads(1);
      kern<T>::front_gemv(t, &m, &n, &alpha, a.data(), &lda, x.data(), &incx, &beta, y1.data(), &incy);
      zar_set_num_threads(2);
      kern<T>::front_gemv(t, &m, &n, &alpha, a.data(), &lda, x.data(), &incx, &beta, y2.data(), &incy);
      zar_set_num_threads(0);
      EXPECT_TRUE(same_bits(y1, y2)) << tr << incy;
    }
}

// ---- gem2v and the real-matrix complex-vector products against plain sums
template <class T> std::vector<lc> product(char tr, int m, int n, T alpha, const std::vector<T>& a, int lda,
                                           const std::vector<T>& x, T beta, const std::vector<T>& y) {
  const int len = tr == 'N' ? m : n, k = tr == 'N' ? n : m;
  std::vector<lc> r(len);
  for (int i = 0; i < len; ++i) {
    lc s;
    for (int j = 0; j < k; ++j) {
      lc e = widen(tr == 'N' ? a[i + j * lda] : a[j + i * lda]);
      if (tr == 'C') e = conj(e);
      s = s + e * widen(x[j]);
    }
    r[i] = widen(alpha) * s + widen(beta) * widen(y[i]);
  }
  return r;
}
template <class T> double worst(const std::vector<T>& got, const std::vector<lc>& want) {
  double w = 0;
  for (size_t i = 0; i < want.size(); ++i) w = worse(w, mag(widen(got[i]) - want[i]) / (1 + mag(want[i])));
  return w;
}

template <class T> struct gem2v_of;
template <> struct gem2v_of<float> { static constexpr auto f = &zar_blas_avx_sgem2vu; };
template <> struct gem2v_of<double> { static constexpr auto f = &zar_blas_avx_dgem2vu; };
template <> struct gem2v_of<c32> { static constexpr auto f = &zar_blas_avx_cgem2vc; };
template <> struct gem2v_of<c64> { static constexpr auto f = &zar_blas_avx_zgem2vc; };

TYPED_TEST(Gemv, Gem2vIsTwoProductsInOnePass) {
  using T = TypeParam;
  const int m = 23, n = 17, lda = 25, inc = 1;
  const auto a = rnd_vec<T>(lda * n, 15);
  const auto x1 = rnd_vec<T>(n, 16), x2 = rnd_vec<T>(m, 17), y1_0 = rnd_vec<T>(m, 18), y2_0 = rnd_vec<T>(n, 19);
  const T alpha = from<T>(0.5, -1), beta = from<T>(2, 0.5);
  auto y1 = y1_0, y2 = y2_0;
  gem2v_of<T>::f(&m, &n, &alpha, a.data(), &lda, x1.data(), &inc, x2.data(), &inc, &beta, y1.data(), &inc, y2.data(),
                 &inc);
  const double tol = 64 * m * eps<T>();
  EXPECT_LT(worst(y1, product('N', m, n, alpha, a, lda, x1, beta, y1_0)), tol);
  EXPECT_LT(worst(y2, product(zar::is_complex_v<T> ? 'C' : 'T', m, n, alpha, a, lda, x2, beta, y2_0)), tol);
}

template <class C, class R> void check_mixed(void (*f)(ZAR_L2_MIXGEMV_ARGS(C, R))) {
  const int m = 19, n = 13, lda = 21;
  const auto ar = rnd_vec<R>(lda * n, 20);
  std::vector<C> a(ar.size());
  for (size_t i = 0; i < ar.size(); ++i) a[i] = C{ar[i], 0};
  const C alpha = from<C>(0.5, 2), beta = from<C>(-1, 0.5);
  for (char tr : std::string("NT"))
    for (int fail : {0, 1}) {
      const int len = tr == 'N' ? m : n, xlen = tr == 'N' ? n : m, incx = -2, incy = 3;
      const auto xs = rnd_vec<C>(span(xlen, incx), 21), ys = rnd_vec<C>(span(len, incy), 22);
      std::vector<C> x(xlen), y0(len);
      for (int i = 0; i < xlen; ++i) x[i] = xs[start(xlen, incx) + i * incx];
      for (int i = 0; i < len; ++i) y0[i] = ys[start(len, incy) + i * incy];
      auto y = ys;
      const char t[] = {tr, 0};
      zar_reset_warning_count();
      zar_fail_allocation(fail);  // 1: the work area is refused
      f(t, &m, &n, &alpha, ar.data(), &lda, xs.data(), &incx, &beta, y.data(), &incy);
      zar_fail_allocation(0);
      EXPECT_EQ(zar_warning_count(), fail);
      std::vector<C> got(len);
      for (int i = 0; i < len; ++i) got[i] = y[start(len, incy) + i * incy];
      EXPECT_LT(worst(got, product(tr, m, n, alpha, a, lda, x, beta, y0)), 64 * m * eps<C>()) << tr << fail;
    }
}
TEST(MixedGemv, RealMatrixComplexVectors) {
  testing::internal::CaptureStderr();
  check_mixed<c64, double>(&zar_blas_avx_dzgemv);
  check_mixed<c32, float>(&zar_blas_avx_scgemv);
  testing::internal::GetCapturedStderr();
}

}  // namespace

namespace {

// The front ends of the routines outside the reference BLAS check their
// arguments like gemv and name themselves in the report.
TEST(ExtraFrontEnds, ReportTheFirstIllegalArgument) {
  const int m = 3, n = 2, lda = 3, one = 1, zero = 0, neg = -1;
  const double a[6] = {1, 2, 3, 4, 5, 6}, x[3] = {1, 1, 1}, alpha = 1, beta = 0;
  double y1[3] = {7, 7, 7}, y2[3] = {7, 7, 7};
  struct probe {
    const char* want;
    std::function<void()> call;
  };
  const double za[2] = {1, 0}, zx[6] = {1, 0, 1, 0, 1, 0};
  double zy[6] = {};
  const std::vector<probe> probes = {
      {"DGEM2VU parameter number  1", [&] { dgem2vu_(&neg, &n, &alpha, a, &lda, x, &one, x, &one, &beta, y1, &one, y2, &one); }},
      {"DGEM2VU parameter number  5", [&] { dgem2vu_(&m, &n, &alpha, a, &one, x, &one, x, &one, &beta, y1, &one, y2, &one); }},
      {"DGEM2VU parameter number  9", [&] { dgem2vu_(&m, &n, &alpha, a, &lda, x, &one, x, &zero, &beta, y1, &one, y2, &one); }},
      {"DGEM2VU parameter number 14", [&] { dgem2vu_(&m, &n, &alpha, a, &lda, x, &one, x, &one, &beta, y1, &one, y2, &zero); }},
      {"DZGEMV parameter number  1", [&] { dzgemv_("X", &m, &n, za, a, &lda, zx, &one, za, zy, &one); }},
      {"DZGEMV parameter number 11", [&] { dzgemv_("N", &m, &n, za, a, &lda, zx, &one, za, zy, &zero); }},
  };
  for (const auto& p : probes) {
    testing::internal::CaptureStderr();
    p.call();
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find(p.want), std::string::npos) << err;
  }
  for (double v : y1) EXPECT_EQ(v, 7) << "no work after an illegal argument";
  // legal: both products
  dgem2vu_(&m, &n, &alpha, a, &lda, x, &one, x, &one, &beta, y1, &one, y2, &one);
  EXPECT_EQ(y1[0], 1 + 4);
  EXPECT_EQ(y2[1], 4 + 5 + 6);
}

}  // namespace
