// The blocked triangular solve: every case of every type against an
// extended-precision substitution, the number of gemv calls it makes through
// the core's front end (and the only scalars it passes), and the fixed-case
// kernels against the driver.
#include <dlfcn.h>

#include <string>

#include "l2test.h"
#include "zar/control.h"

namespace {

// Every gemv call the kernels make through the core's dispatching front end
// lands here first (the program's definition wins), is counted and goes on
// to the core's.
struct gemv_log {
  int calls = 0;
  int other_scalars = 0;  // calls whose alpha is not -1 or beta not 1
} g_log;

template <class T>
bool is(const T* p, double v) {
  return l2t::same_bits(*p, l2t::from<T>(v));
}

}  // namespace

#define L2T_HOOK(t, T, R)                                                                 \
  extern "C" void zar_blas_##t##gemv(ZAR_L2_GEMV_ARGS(T)) {                               \
    using fn = void (*)(ZAR_L2_GEMV_ARGS(T));                                             \
    static const fn next = reinterpret_cast<fn>(dlsym(RTLD_NEXT, "zar_blas_" #t "gemv")); \
    ++g_log.calls;                                                                        \
    if (!is(alpha, -1) || !is(beta, 1)) ++g_log.other_scalars;                            \
    next(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                             \
  }
ZAR_L2_ALL(L2T_HOOK)

namespace {

using namespace l2t;

// A triangular matrix that is well conditioned: diagonal in [2, 3] (with an
// imaginary part for complex data), off-diagonal entries O(1/n). The other
// triangle holds NaN, which the solve must never read.
template <class T>
std::vector<T> tri_matrix(int n, int lda, char uplo, unsigned seed) {
  std::mt19937 g(seed);
  std::vector<T> a(static_cast<size_t>(lda) * n, from<T>(std::nan("")));
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) {
      if (i == j)
        a[i + j * lda] = from<T>(2.5 + rnd<double>(g) / 2, rnd<double>(g) / 2);
      else if ((uplo == 'U') == (i < j)) {
        const T v = rnd<T>(g);
        if constexpr (zar::is_complex_v<T>)
          a[i + j * lda] = T{v.re / n, v.im / n};
        else
          a[i + j * lda] = v / n;
      }
    }
  return a;
}

// op(A) x = b by substitution in long double
template <class T>
std::vector<lc> reference_solve(const std::vector<T>& a, int n, int lda, char uplo, char trans, char diag,
                                const std::vector<lc>& b) {
  auto op = [&](int i, int j) {  // element (i, j) of op(A), zero outside the triangle
    const int r = trans == 'N' ? i : j, c = trans == 'N' ? j : i;
    if (r == c) return diag == 'U' ? lc{1, 0} : (trans == 'C' ? conj(widen(a[r + c * lda])) : widen(a[r + c * lda]));
    if ((uplo == 'U') != (r < c)) return lc{};
    const lc v = widen(a[r + c * lda]);
    return trans == 'C' ? conj(v) : v;
  };
  const bool lower = (uplo == 'L') == (trans == 'N');
  std::vector<lc> x(b);
  for (int s = 0; s < n; ++s) {
    const int i = lower ? s : n - 1 - s;
    lc v = x[i];
    for (int j = 0; j < n; ++j)
      if (j != i && (lower ? j < i : j > i)) v = v - op(i, j) * x[j];
    x[i] = v / op(i, i);
  }
  return x;
}

template <class T>
class Trsv : public testing::Test {};
TYPED_TEST_SUITE(Trsv, all_types);

TYPED_TEST(Trsv, EveryCaseAgainstSubstitutionAndCountsGemvCalls) {
  using T = TypeParam;
  each_tri_case<T>([](const char* u, const char* t, const char* d) {
    for (int n : {31, 32, 33, 64, 65, 100})
      for (int inc : {1, -1, 3, -2}) {
        SCOPED_TRACE(testing::Message() << u << t << d << " n=" << n << " inc=" << inc);
        const int lda = n + 3;
        const auto a = tri_matrix<T>(n, lda, u[0], 7 + n);
        auto x = rnd_vec<T>(span(n, inc), 11 + n + inc);
        std::vector<lc> b(n);
        for (int i = 0; i < n; ++i) b[i] = widen(x[start(n, inc) + i * inc]);
        const auto want = reference_solve(a, n, lda, u[0], t[0], d[0], b);
        g_log = {};
        kern<T>::trsv(u, t, d, &n, a.data(), &lda, x.data(), &inc);
        const int blocks = (n + 31) / 32;
        EXPECT_EQ(g_log.calls, blocks - 1) << "one gemv per block after the first";
        EXPECT_EQ(g_log.other_scalars, 0) << "only alpha = -1 and beta = 1 are passed";
        double worst = 0;
        for (int i = 0; i < n; ++i) {
          const lc got = widen(x[start(n, inc) + i * inc]);
          worst = worse(worst, mag(got - want[i]) / (1 + mag(want[i])));
        }
        EXPECT_LT(worst, 8 * n * eps<T>());
      }
  });
}

TYPED_TEST(Trsv, FixedCaseKernelsSolveOneBlockLikeTheDriver) {
  using T = TypeParam;
  for (const auto& c : kern<T>::cases()) {
    const char u[] = {static_cast<char>(c.name[0] & ~0x20), 0}, t[] = {static_cast<char>(c.name[1] & ~0x20), 0},
               d[] = {static_cast<char>(c.name[2] & ~0x20), 0};
    for (int n : {1, 5, 16, 17, 31, 32})
      for (int inc : {1, -2}) {
        SCOPED_TRACE(testing::Message() << c.name << " n=" << n << " inc=" << inc);
        const int lda = n + 1;
        const auto a = tri_matrix<T>(n, lda, u[0], 3 + n);
        auto x1 = rnd_vec<T>(span(n, inc), 5 + n);
        auto x2 = x1, x3 = x1;
        c.fn(&n, a.data(), &lda, x1.data(), &inc);
        kern<T>::trsv(u, t, d, &n, a.data(), &lda, x2.data(), &inc);
        kern<T>::trsv_cnr(u, t, d, &n, a.data(), &lda, x3.data(), &inc);
        EXPECT_TRUE(same_bits(x1, x2));
        EXPECT_TRUE(same_bits(x1, x3));
      }
  }
}

// The small kernels divide by the diagonal rather than multiplying by its
// reciprocal: x / 3 and x * (1/3) differ in the last bit for x = 0.1.
TEST(TrsvScalar, DividesByTheDiagonal) {
  const int n = 1, lda = 1, inc = 1;
  for (double v : {0.1, 0.7, 5.0}) {
    const double a = 3;
    double x = v;
    zar_blas_avx_xdtrsv("U", "N", "N", &n, &a, &lda, &x, &inc);
    EXPECT_EQ(x, v / 3);
  }
  const double a[4] = {3, 0, 1, 7};  // upper 2x2 [[3, 1], [0, 7]]
  double x[2] = {0.1, 0.3};
  const int n2 = 2, ld2 = 2;
  zar_blas_avx_dtrsv_unn(&n2, a, &ld2, x, &inc);
  const double x1 = 0.3 / 7;
  EXPECT_EQ(x[1], x1);
  EXPECT_EQ(x[0], (0.1 - x1 * 1) / 3);
}

// With reproducibility requested the solve (and the transposed gemv updates
// inside it) gives the same bits wherever x and A lie.
TYPED_TEST(Trsv, ReproducibleBranchIgnoresAlignment) {
  using T = TypeParam;
  const int saved = zar_cbwr_get();
  zar_cbwr_set(ZAR_CBWR_COMPATIBLE);
  const int n = 150, lda = 151, inc = 1;
  const auto a0 = tri_matrix<T>(n, lda, 'U', 77);
  const auto x0 = rnd_vec<T>(n, 78);
  for (const char* tr : {"T", "N"}) {
    std::vector<T> first;
    for (int off = 0; off < 4; ++off) {
      std::vector<T> a(a0.size() + 4), x(n + 4);
      std::copy(a0.begin(), a0.end(), a.begin() + off);
      std::copy(x0.begin(), x0.end(), x.begin() + 3 - off);
      kern<T>::trsv("U", tr, "N", &n, a.data() + off, &lda, x.data() + 3 - off, &inc);
      std::vector<T> got(x.begin() + 3 - off, x.begin() + 3 - off + n);
      if (off == 0)
        first = got;
      else
        EXPECT_TRUE(same_bits(first, got)) << tr << " offset " << off;
    }
  }
  zar_cbwr_set(saved);
}

TEST(TrsvScalar, ZeroSizeTouchesNothing) {
  const int n = 0, lda = 1, inc = 1;
  double a = std::nan(""), x = 4;
  g_log = {};
  zar_blas_avx_xdtrsv("L", "T", "N", &n, &a, &lda, &x, &inc);
  EXPECT_EQ(x, 4);
  EXPECT_EQ(g_log.calls, 0);
}

}  // namespace
