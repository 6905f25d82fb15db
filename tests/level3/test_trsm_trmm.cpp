// trsm and trmm kernels against the reference BLAS for every side, triangle,
// transpose and diagonal, over sizes around the diagonal blocks, the
// recursion's cuts and the GEMM engine's blocking; and their edges: alpha 0
// (A not read, NaN in B cleared), empty matrices, lines solved in separate
// calls, a refused work area, divisions by badly scaled diagonals.
#include <cctype>

#include "tri_test.h"
#include "zar/control.h"

namespace tri_test {
namespace {

template <class T> class Tri : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!ref_.available()) GTEST_SKIP() << "reference BLAS not loadable in this build";
  }
  void TearDown() override { zar_fail_allocation(0); }
  ref_fn<T> ref(bool solve) const { return ref_.sym<ref_fn<T>>(solve ? api<T>::ref_trsm : api<T>::ref_trmm); }
  zar_test::ReferenceBlas ref_;
};
TYPED_TEST_SUITE(Tri, all_types);

// B's shape for a triangle of size k and `other` lines.
inline int rows_of(char side, int k, int other) { return side == 'L' ? k : other; }
inline int cols_of(char side, int k, int other) { return side == 'L' ? other : k; }

TYPED_TEST(Tri, AgreesWithReferenceInEveryCase) {
  using T = TypeParam;
  const int sizes[] = {1, 2, 3, 5, 31, 32, 33, 63, 64, 65, 127, 257, 300, 600};
  const int others[] = {1, 3, 17, 70};  // 70: side left B in two panels
  const T alphas[] = {make<T>(1), make<T>(-0.75, 0.5)};
  int seed = 1;
  for (bool solve : {true, false}) {
    const auto want_fn = this->ref(solve);
    ASSERT_NE(want_fn, nullptr);
    const tri_fn<T> got_fn = solve ? api<T>::trsm : api<T>::trmm;
    each_case([&](char s, char u, char t, char d) {
      for (size_t i = 0; i < std::size(sizes); ++i) {
        // 600 lines: B in several passes of the recursion
        const int k = sizes[i], other = k > 300 ? 2 : k == 33 ? 600 : others[i % 4];
        const int m = rows_of(s, k, other), n = cols_of(s, k, other);
        const T alpha = alphas[i % 2];
        auto a = triangle<T>(k, u, d, ++seed);
        guarded<T> got(m, n), want(m, n);
        got.fill(++seed);
        want.v = got.v;
        const char opt[] = {s, u, t, d};
        // the kernel reads the options in either case
        const char low[] = {char(std::tolower(s)), char(std::tolower(u)), char(std::tolower(t)),
                            char(std::tolower(d))};
        const char* o = i % 3 == 0 ? low : opt;
        got_fn(o, o + 1, o + 2, o + 3, &m, &n, &alpha, a.data(), &a.ld, got.data(), &got.ld);
        want_fn(opt, opt + 1, opt + 2, opt + 3, &m, &n, &alpha, a.data(), &a.ld, want.data(), &want.ld, 1, 1, 1, 1);
        const double tol = 8 * eps<T>() * (k + 4);
        ASSERT_LE(rel_error(got, want), tol) << (solve ? "trsm " : "trmm ") << s << u << t << d << " m=" << m
                                             << " n=" << n;
        ASSERT_TRUE(got.guards_intact()) << s << u << t << d << " m=" << m << " n=" << n;
      }
    });
  }
}

// The core splits B by columns (side left) or rows (side right) among its
// threads: each part solved alone has the bits of the whole.
TYPED_TEST(Tri, LinesSolvedApartGiveTheSameBits) {
  using T = TypeParam;
  const T alpha = make<T>(0.5, -0.25);
  int seed = 100;
  for (bool solve : {true, false}) {
    const tri_fn<T> fn = solve ? api<T>::trsm : api<T>::trmm;
    each_case([&](char s, char u, char t, char d) {
      // parts of 1 (the engine's unblocked path), 12 and 62 lines (two panels)
      const int k = 300, other = 75, cuts[] = {0, 1, 13, other};
      const int m = rows_of(s, k, other), n = cols_of(s, k, other);
      auto a = triangle<T>(k, u, d, ++seed);
      guarded<T> whole(m, n), parts(m, n);
      whole.fill(++seed);
      parts.v = whole.v;
      const char o[] = {s, u, t, d};
      fn(o, o + 1, o + 2, o + 3, &m, &n, &alpha, a.data(), &a.ld, whole.data(), &whole.ld);
      for (int p = 0; p + 1 < 4; ++p) {
        const int first = cuts[p], lines = cuts[p + 1] - first;
        if (s == 'L') fn(o, o + 1, o + 2, o + 3, &m, &lines, &alpha, a.data(), &a.ld, &parts(0, first), &parts.ld);
        else fn(o, o + 1, o + 2, o + 3, &lines, &n, &alpha, a.data(), &a.ld, &parts(first, 0), &parts.ld);
      }
      ASSERT_TRUE(same_bits(whole, parts)) << (solve ? "trsm " : "trmm ") << s << u << t << d;
    });
  }
}

// alpha 0: B becomes zero (NaN in it cleared) and A, full of NaN, is not
// read; empty B: nothing is touched.
TYPED_TEST(Tri, AlphaZeroAndEmptyMatrices) {
  using T = TypeParam;
  const T zero = make<T>(0), alpha = make<T>(2);
  for (tri_fn<T> fn : {api<T>::trsm, api<T>::trmm})
    for (char s : {'L', 'R'}) {
      const int m = 9, n = 6, k = s == 'L' ? m : n;
      guarded<T> a(k, k), b(m, n);
      for (int j = 0; j < k; ++j)
        for (int i = 0; i < k; ++i) a(i, j) = nan_value<T>();
      b.fill(7);
      b(2, 3) = nan_value<T>();
      const char o[] = {s, 'L', 'N', 'N'};
      fn(o, o + 1, o + 2, o + 3, &m, &n, &zero, a.data(), &a.ld, b.data(), &b.ld);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) ASSERT_EQ(mag(b(i, j)), 0.0) << s << " " << i << "," << j;
      EXPECT_TRUE(b.guards_intact());

      b.fill(8);
      const auto before = b.v;
      const int none = 0;
      fn(o, o + 1, o + 2, o + 3, &none, &n, &alpha, a.data(), &a.ld, b.data(), &b.ld);
      fn(o, o + 1, o + 2, o + 3, &m, &none, &alpha, a.data(), &a.ld, b.data(), &b.ld);
      EXPECT_EQ(std::memcmp(before.data(), b.v.data(), before.size() * sizeof(T)), 0) << s;
    }
}

// Without its work area the driver warns once and solves in place with the
// same operations: the same bits.
TYPED_TEST(Tri, RefusedWorkAreaGivesTheSameBits) {
  using T = TypeParam;
  const T alpha = make<T>(1.25, 0.5);
  int seed = 300;
  for (tri_fn<T> fn : {api<T>::trsm, api<T>::trmm})
    each_case([&](char s, char u, char t, char d) {
      if (t == 'T') return;  // 'N' and 'C' cover both ways of reading A
      const int k = 70, other = 11;
      const int m = rows_of(s, k, other), n = cols_of(s, k, other);
      auto a = triangle<T>(k, u, d, ++seed);
      guarded<T> with(m, n), without(m, n);
      with.fill(++seed);
      without.v = with.v;
      const char o[] = {s, u, t, d};
      fn(o, o + 1, o + 2, o + 3, &m, &n, &alpha, a.data(), &a.ld, with.data(), &with.ld);
      zar_reset_warning_count();
      zar_fail_allocation(1);
      fn(o, o + 1, o + 2, o + 3, &m, &n, &alpha, a.data(), &a.ld, without.data(), &without.ld);
      EXPECT_EQ(zar_fail_allocation(0), 0) << "the refusal was not used";
      EXPECT_EQ(zar_warning_count(), 1);
      ASSERT_TRUE(same_bits(with, without)) << s << u << t << d;
    });
}

// A diagonal A: each element of X is b / a_ii, a true quotient. Divisors
// whose reciprocal rounds (3, 10) or overflows (a subnormal) tell it apart
// from a multiplication by the reciprocal.
template <class T> void diagonal_quotients() {
  using Rl = real_of<T>;
  const Rl tiny = std::numeric_limits<Rl>::denorm_min() * 5;
  const Rl divisors[] = {3, 10, -7, tiny};
  const T alpha = make<T>(1);
  for (char s : {'L', 'R'})
    for (char u : {'U', 'L'}) {
      const int k = 40, other = 37;  // whole vector groups and a scalar tail
      const int m = rows_of(s, k, other), n = cols_of(s, k, other);
      guarded<T> a(k, k), b(m, n);
      for (int j = 0; j < k; ++j)
        for (int i = 0; i < k; ++i) a(i, j) = i == j ? divisors[i % 4] : 0;
      b.fill(9);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)  // small enough that b / tiny is finite
          if ((s == 'L' ? i : j) % 4 == 3) b(i, j) *= std::numeric_limits<Rl>::min();
      guarded<T> x = b;
      const char o[] = {s, u, 'N', 'N'};
      api<T>::trsm(o, o + 1, o + 2, o + 3, &m, &n, &alpha, a.data(), &a.ld, x.data(), &x.ld);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
          const Rl want = b(i, j) / divisors[(s == 'L' ? i : j) % 4];
          ASSERT_EQ(std::memcmp(&x(i, j), &want, sizeof want), 0) << s << u << " " << i << "," << j;
        }
    }
}
TEST(TriReal, DiagonalSolveDividesFloat) { diagonal_quotients<float>(); }
TEST(TriReal, DiagonalSolveDividesDouble) { diagonal_quotients<double>(); }

}  // namespace
}  // namespace tri_test
