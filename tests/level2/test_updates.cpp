// Rank updates and triangular products: ger's zero-column rule, the
// per-thread bodies of syr/her, syr2/her2 and trmv against the whole call
// (bit for bit), the reproducible twins, and the threaded front ends.
#include <string>

#include "blas/level2/l2.h"
#include "l2test.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace {

using namespace l2t;

template <class T>
class Updates : public testing::Test {};
TYPED_TEST_SUITE(Updates, all_types);

// A column whose y_j is exactly zero is passed over even when x holds NaN;
// every other element receives a + x_i*(alpha*y_j) exactly.
TYPED_TEST(Updates, GerSkipsZeroColumnsAndFollowsTheFormula) {
  using T = TypeParam;
  using zar::l2::add;
  using zar::l2::mul;
  for (int incx : {1, 2})
    for (int n : {6, 7}) {
      const int m = 21, lda = 23, incy = -1;
      auto x = rnd_vec<T>(span(m, incx), 30);
      x[start(m, incx) + 4 * incx] = from<T>(std::nan(""));
      auto y = rnd_vec<T>(n, 31);
      y[n - 1 - 1] = from<T>(0);  // element 1 (incy = -1 walks backwards)
      y[n - 1 - 4] = from<T>(-0.0);
      const auto a0 = rnd_vec<T>(lda * n, 32);
      auto a = a0;
      const T alpha = from<T>(0.75, -0.5);
      kern<T>::ger(&m, &n, &alpha, x.data(), &incx, y.data(), &incy, a.data(), &lda);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < lda; ++i) {
          const size_t k = i + j * lda;
          const T yj = y[n - 1 - j];
          T want = a0[k];
          if (i < m && !(j == 1 || j == 4)) want = add(a0[k], mul(x[start(m, incx) + i * incx], mul(alpha, yj)));
          ASSERT_TRUE(same_bits(a[k], want)) << "incx " << incx << " n " << n << " (" << i << ", " << j << ")";
        }
      // alpha = 0 returns before reading anything
      const T zero = from<T>(0);
      auto b = a0;
      std::vector<T> nanx(span(m, incx), from<T>(std::nan("")));
      kern<T>::ger(&m, &n, &zero, nanx.data(), &incx, y.data(), &incy, b.data(), &lda);
      EXPECT_TRUE(same_bits(a0, b));
    }
}

// syr/her and syr2/her2: the per-thread bodies on disjoint column ranges
// give the whole call's bits, as do the reproducible twins.
TYPED_TEST(Updates, RankUpdateBodiesOnDisjointColumnsMatchTheWholeCall) {
  using T = TypeParam;
  using R = zar::real_t<T>;
  const int n = 37, lda = 40;
  const R ralpha = R(0.625);
  const T alpha = from<T>(0.5, 0.25);
  for (const char* uplo : {"U", "L", "u"})
    for (int incx : {1, -2}) {
      SCOPED_TRACE(testing::Message() << uplo << " incx " << incx);
      auto x = rnd_vec<T>(span(n, incx), 40);
      const auto y = rnd_vec<T>(n, 41);
      x[start(n, incx) + 5 * incx] = from<T>(0);  // a skipped column
      const int inc1 = 1;
      const auto a0 = rnd_vec<T>(lda * n, 42);
      auto whole = a0, twin = a0, parts = a0, parts_c = a0;
      kern<T>::syr(uplo, &n, &ralpha, x.data(), &incx, whole.data(), &lda);
      kern<T>::syr_cnr(uplo, &n, &ralpha, x.data(), &incx, twin.data(), &lda);
      for (auto [s, e] : {std::pair{0, 9}, {9, 30}, {30, 37}}) {
        kern<T>::syr_t(uplo, &n, &ralpha, x.data(), &incx, parts.data(), &lda, &s, &e);
        kern<T>::syr_tc(uplo, &n, &ralpha, x.data(), &incx, parts_c.data(), &lda, &s, &e);
      }
      EXPECT_TRUE(same_bits(whole, twin));
      EXPECT_TRUE(same_bits(whole, parts));
      EXPECT_TRUE(same_bits(whole, parts_c));
      // only the stored triangle changes; a Hermitian diagonal becomes real
      const bool upper = (uplo[0] & ~0x20) == 'U';
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
          const size_t k = i + j * lda;
          if (i != j && upper != (i < j)) {
            EXPECT_TRUE(same_bits(whole[k], a0[k])) << i << "," << j;
          }
          if constexpr (zar::is_complex_v<T>) {
            if (i == j) {
              EXPECT_EQ(whole[k].im, R(0)) << j;
            }
          }
        }
      auto whole2 = a0, parts2 = a0, parts2c = a0;
      kern<T>::syr2(uplo, &n, &alpha, x.data(), &incx, y.data(), &inc1, whole2.data(), &lda);
      for (auto [s, e] : {std::pair{0, 20}, {20, 21}, {21, 37}}) {
        kern<T>::syr2_t(uplo, &n, &alpha, x.data(), &incx, y.data(), &inc1, parts2.data(), &lda, &s, &e);
        kern<T>::syr2_tc(uplo, &n, &alpha, x.data(), &incx, y.data(), &inc1, parts2c.data(), &lda, &s, &e);
      }
      EXPECT_TRUE(same_bits(whole2, parts2));
      EXPECT_TRUE(same_bits(whole2, parts2c));
    }
}

// trmv: rows [first, last) formed from a copy of x give the bits of the
// in-place product, for every case.
TYPED_TEST(Updates, TrmvRowBodiesMatchTheInPlaceProduct) {
  using T = TypeParam;
  each_tri_case<T>([](const char* u, const char* t, const char* d) {
    const char uplo = u[0], trans = t[0], diag = d[0];
    for (int incx : {1, -3}) {
      SCOPED_TRACE(testing::Message() << u << t << d << " incx " << incx);
      const int n = 45, lda = 47;
      const auto a = rnd_vec<T>(lda * n, 50);
      auto x0 = rnd_vec<T>(span(n, incx), 51);
      x0[start(n, incx) + 7 * incx] = from<T>(0);
      std::vector<T> src(n);
      for (int i = 0; i < n; ++i) src[i] = x0[start(n, incx) + i * incx];
      auto whole = x0, twin = x0, in = x0, rows = x0;
      kern<T>::trmv(u, t, d, &n, a.data(), &lda, whole.data(), &incx);
      kern<T>::trmv_cnr(u, t, d, &n, a.data(), &lda, twin.data(), &incx);
      kern<T>::trmv_in(u, t, d, &n, a.data(), &lda, in.data(), &incx);
      for (auto [s, e] : {std::pair{0, 1}, {1, 17}, {17, 44}, {44, 45}})
        kern<T>::trmv_rows(u, t, d, &n, a.data(), &lda, src.data(), rows.data(), &incx, &s, &e);
      EXPECT_TRUE(same_bits(whole, twin));
      EXPECT_TRUE(same_bits(whole, in));
      EXPECT_TRUE(same_bits(whole, rows));
      // and the product is right
      double w = 0;
      for (int i = 0; i < n; ++i) {
        lc s;
        for (int j = 0; j < n; ++j) {
          const int r = trans == 'N' ? i : j, c = trans == 'N' ? j : i;
          if (r != c && (uplo == 'U') != (r < c)) continue;
          lc e = r == c && diag == 'U' ? lc{1, 0} : widen(a[r + c * lda]);
          if (trans == 'C') e = conj(e);
          s = s + e * widen(src[j]);
        }
        w = worse(w, mag(widen(whole[start(n, incx) + i * incx]) - s) / (1 + mag(s)));
      }
      EXPECT_LT(w, 4 * n * eps<T>());
    }
  });
}

// The threaded front ends (ger, syr, syr2, trmv) give one thread's bits.
TEST(UpdatesThreads, FrontEndsGiveTheSameBitsOnTwoThreads) {
  const int n = 1500, lda = 1501, inc = 1, incn = -1;  // above the threading threshold
  const auto x = rnd_vec<double>(n, 60), y = rnd_vec<double>(n, 61), a0 = rnd_vec<double>(lda * n, 62);
  const double alpha = 0.3;
  auto run = [&](int threads) {
    zar_set_num_threads(threads);
    std::vector<std::vector<double>> out;
    auto a = a0;
    dger_(&n, &n, &alpha, x.data(), &inc, y.data(), &incn, a.data(), &lda);
    out.push_back(a);
    a = a0;
    dsyr_("L", &n, &alpha, x.data(), &incn, a.data(), &lda);
    out.push_back(a);
    a = a0;
    dsyr2_("U", &n, &alpha, x.data(), &inc, y.data(), &incn, a.data(), &lda);
    out.push_back(a);
    for (const char* t : {"N", "T"}) {
      auto v = x;
      dtrmv_("U", t, "N", &n, a0.data(), &lda, v.data(), &incn);
      out.push_back(v);
    }
    zar_set_num_threads(0);
    return out;
  };
  const auto one = run(1), two = run(2);
  for (size_t k = 0; k < one.size(); ++k) EXPECT_TRUE(same_bits(one[k], two[k])) << k;
}

}  // namespace

namespace {

// symv/hemv read the stored triangle only, and the Hermitian product only the
// real part of the diagonal: NaN elsewhere changes nothing.
TYPED_TEST(Updates, SymmetricProductsReadTheStoredTriangleOnly) {
  using T = TypeParam;
  const int n = 29, lda = 31;
  const T alpha = from<T>(0.5, 0.5), beta = from<T>(-1, 0);
  for (const char* uplo : {"U", "L"})
    for (int inc : {1, -2}) {
      SCOPED_TRACE(testing::Message() << uplo << " inc " << inc);
      const bool upper = uplo[0] == 'U';
      auto a = rnd_vec<T>(lda * n, 70);
      auto full = a;  // the whole symmetric (Hermitian) matrix
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
          const size_t k = i + j * lda, kt = j + i * lda;
          if (i == j) {
            if constexpr (zar::is_complex_v<T>) {
              full[k].im = 0;
              a[k].im = std::nan("");
            }
          } else if (upper != (i < j)) {
            T v = a[kt];
            if constexpr (zar::is_complex_v<T>) v.im = -v.im;
            full[k] = v;
            a[k] = from<T>(std::nan(""), std::nan(""));
          }
        }
      const auto x = rnd_vec<T>(span(n, inc), 71), y0 = rnd_vec<T>(span(n, inc), 72);
      auto y = y0;
      kern<T>::symv(uplo, &n, &alpha, a.data(), &lda, x.data(), &inc, &beta, y.data(), &inc);
      std::vector<T> xs(n), ys(n), got(n);
      for (int i = 0; i < n; ++i) {
        xs[i] = x[start(n, inc) + i * inc];
        ys[i] = y0[start(n, inc) + i * inc];
        got[i] = y[start(n, inc) + i * inc];
      }
      double w = 0;
      for (int i = 0; i < n; ++i) {
        lc s;
        for (int j = 0; j < n; ++j) s = s + widen(full[i + j * lda]) * widen(xs[j]);
        const lc want = widen(alpha) * s + widen(beta) * widen(ys[i]);
        w = worse(w, mag(widen(got[i]) - want) / (1 + mag(want)));
      }
      EXPECT_LT(w, 8 * n * eps<T>());
    }
}

}  // namespace

namespace {

template <class R>
class SymvKernel : public testing::Test {};
TYPED_TEST_SUITE(SymvKernel, real_types);

// The stored-triangle kernel is the driver's work after y := beta*y.
TYPED_TEST(SymvKernel, IsTheDriverWithBetaOne) {
  using R = TypeParam;
  void (*kernel)(ZAR_L2_SYMVK_ARGS(R));
  void (*driver)(ZAR_L2_SYMV_ARGS(R));
  if constexpr (sizeof(R) == 4)
    kernel = &zar_blas_avx_xssymv_kernel, driver = &zar_blas_avx_xssymv;
  else
    kernel = &zar_blas_avx_xdsymv_kernel, driver = &zar_blas_avx_xdsymv;
  const int n = 33, lda = 35;
  const R alpha = R(-0.75), one = R(1);
  const auto a = rnd_vec<R>(lda * n, 100);
  for (const char* uplo : {"U", "L"})
    for (int inc : {1, 2}) {
      const auto x = rnd_vec<R>(span(n, inc), 101);
      auto y1 = rnd_vec<R>(span(n, inc), 102), y2 = y1;
      kernel(uplo, &n, &alpha, a.data(), &lda, x.data(), &inc, y1.data(), &inc);
      driver(uplo, &n, &alpha, a.data(), &lda, x.data(), &inc, &one, y2.data(), &inc);
      EXPECT_TRUE(same_bits(y1, y2)) << uplo << inc;
    }
}

}  // namespace
