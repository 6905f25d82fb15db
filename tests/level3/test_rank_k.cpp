// The triangle updates syrk, herk, syr2k, her2k and gemmt (and their
// per-thread bodies): against the reference BLAS, the other triangle and the
// rows past n left bit for bit, the same bits as the engine's full products
// and for any division of the columns, and the special scalars.
#include <thread>

#include "sym_test.h"

namespace {
using namespace symt;

enum class kind { syrk, herk, syr2k, her2k, gemmt };

template <class T> std::vector<kind> kinds() {
  if constexpr (cplx<T>) return {kind::syrk, kind::herk, kind::syr2k, kind::her2k, kind::gemmt};
  else return {kind::syrk, kind::syr2k, kind::gemmt};
}
const char* name_of(kind w) {
  static const char* names[] = {"syrk", "herk", "syr2k", "her2k", "gemmt"};
  return names[static_cast<int>(w)];
}
bool hermitian(kind w) { return w == kind::herk || w == kind::her2k; }

// Transpose options of a routine: (ta, tb) pairs; the rank updates use ta.
template <class T> std::vector<std::pair<char, char>> options(kind w) {
  if (w == kind::gemmt) {
    std::vector<std::pair<char, char>> v;
    for (char a : std::string(cplx<T> ? "NTC" : "NT"))
      for (char b : std::string(cplx<T> ? "NTC" : "NT")) v.push_back({a, b});
    return v;
  }
  if (hermitian(w)) return {{'N', 0}, {'C', 0}};
  if (cplx<T>) return {{'N', 0}, {'T', 0}};
  return {{'N', 0}, {'T', 0}, {'C', 0}};  // 'C' reads as 'T' for real data
}

// One problem: the operands, C with its guard rows (ldc = n + 3), and the
// routine under test.
template <class T> struct problem {
  kind w;
  char uplo, ta, tb;
  int n, k, lda, ldb, ldc;
  T alpha, beta;
  std::vector<T> a, b, c;

  problem(kind w_, char u, std::pair<char, char> t, int n_, int k_, unsigned seed)
      : w(w_), uplo(u), ta(t.first), tb(t.second), n(n_), k(k_) {
    // op(A) is n x k; B has A's shape in syr2k/her2k; gemmt's op(B) is k x n.
    const bool a_n = ta == 'N';
    const bool b_n = w == kind::gemmt ? tb == 'N' : !a_n;
    const int ar = a_n ? n : k, ac = a_n ? k : n;
    const int br = w == kind::gemmt ? (b_n ? k : n) : ar, bc = w == kind::gemmt ? (b_n ? n : k) : ac;
    lda = ar + 1, ldb = br + 2, ldc = n + 3;
    a = random_matrix<T>(static_cast<size_t>(lda) * std::max(ac, 1), seed);
    b = random_matrix<T>(static_cast<size_t>(ldb) * std::max(bc, 1), seed + 1);
    c = random_matrix<T>(static_cast<size_t>(ldc) * n, seed + 2);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < ldc; ++i)
        if (!in_triangle(i, j)) el(c, i, j, ldc) = sentinel<T>();
    // herk and her2k take real betas (and herk a real alpha)
    alpha = make<T>(0.75, w == kind::herk ? 0 : -0.5);
    beta = make<T>(-1.25, hermitian(w) ? 0 : 0.375);
  }
  bool in_triangle(int i, int j) const { return i < n && (uplo == 'U' ? i <= j : i >= j); }

  // The routine on x; first < 0: the whole triangle, else its per-thread body.
  void run(std::vector<T>& x, int first = -1, int last = -1) const {
    using K = kern<T>;
    const char u[] = {uplo, 0}, a_[] = {ta, 0}, b_[] = {tb, 0};
    const bool whole = first < 0;
    T* cx = x.data();
    if constexpr (cplx<T>) {
      const real<T> ar = alpha.re, br = beta.re;
      if (w == kind::herk) {
        whole ? K::herk(u, a_, &n, &k, &ar, a.data(), &lda, &br, cx, &ldc)
              : K::herk_t(u, a_, &n, &k, &ar, a.data(), &lda, &br, cx, &ldc, &first, &last);
        return;
      }
      if (w == kind::her2k) {
        whole ? K::her2k(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &br, cx, &ldc)
              : K::her2k_t(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &br, cx, &ldc, &first, &last);
        return;
      }
    }
    if (w == kind::syrk)
      whole ? K::syrk(u, a_, &n, &k, &alpha, a.data(), &lda, &beta, cx, &ldc)
            : K::syrk_t(u, a_, &n, &k, &alpha, a.data(), &lda, &beta, cx, &ldc, &first, &last);
    else if (w == kind::syr2k)
      whole ? K::syr2k(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, cx, &ldc)
            : K::syr2k_t(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, cx, &ldc, &first, &last);
    else if (w == kind::gemmt)
      whole ? K::gemmt(u, a_, b_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, cx, &ldc)
            : K::gemmt_t(u, a_, b_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, cx, &ldc, &first, &last);
  }

  // The reference BLAS on x (gemmt: its gemm on the whole of a copy, the
  // triangle copied back). False when the peer is missing.
  bool reference_on(std::vector<T>& x) const {
    const char u[] = {uplo, 0}, a_[] = {ta, 0}, b_[] = {tb, 0};
    if (w == kind::gemmt) {
      const auto f = symt::reference<T, gemm_fn<T>>("gemm");
      if (!f) return false;
      std::vector<T> full = x;
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
          if (!in_triangle(i, j)) el(full, i, j, ldc) = T{};
      f(a_, b_, &n, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, full.data(), &ldc);
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
          if (in_triangle(i, j)) el(x, i, j, ldc) = el(full, i, j, ldc);
      return true;
    }
    if constexpr (cplx<T>) {
      const real<T> ar = alpha.re, br = beta.re;
      if (w == kind::herk) {
        const auto f = symt::reference<T, syrk_fn<T, real<T>>>("herk");
        if (f) f(u, a_, &n, &k, &ar, a.data(), &lda, &br, x.data(), &ldc);
        return f != nullptr;
      }
      if (w == kind::her2k) {
        const auto f = symt::reference<T, syr2k_fn<T, real<T>>>("her2k");
        if (f) f(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &br, x.data(), &ldc);
        return f != nullptr;
      }
    }
    if (w == kind::syrk) {
      const auto f = symt::reference<T, syrk_fn<T, T>>("syrk");
      if (f) f(u, a_, &n, &k, &alpha, a.data(), &lda, &beta, x.data(), &ldc);
      return f != nullptr;
    }
    const auto f = symt::reference<T, syr2k_fn<T, T>>("syr2k");
    if (f) f(u, a_, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, x.data(), &ldc);
    return f != nullptr;
  }

  // The engine's full products on a copy of C whose other triangle holds
  // zeros: C := alpha op(A) op(B) + beta C, then the second product of the
  // two-term updates with beta 1.
  std::vector<T> engine() const {
    std::vector<T> full = c;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        if (!in_triangle(i, j)) el(full, i, j, ldc) = T{};
    const bool plain = ta == 'N';
    const char conj_t[] = {hermitian(w) ? 'C' : 'T', 0};
    const char* ta_ = plain ? "N" : conj_t;
    const char* tb_ = plain ? conj_t : "N";
    const char ga[] = {ta, 0}, gb[] = {tb, 0};
    const T one = make<T>(1);
    if (w == kind::gemmt) {
      kern<T>::gemm(ga, gb, &n, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, full.data(), &ldc);
    } else if (w == kind::syrk || w == kind::herk) {
      kern<T>::gemm(ta_, tb_, &n, &n, &k, &alpha, a.data(), &lda, a.data(), &lda, &beta, full.data(), &ldc);
    } else {
      const T alpha2 = w == kind::her2k ? conj(alpha) : alpha;
      kern<T>::gemm(ta_, tb_, &n, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, full.data(), &ldc);
      kern<T>::gemm(ta_, tb_, &n, &n, &k, &alpha2, b.data(), &ldb, a.data(), &lda, &one, full.data(), &ldc);
    }
    if constexpr (cplx<T>)
      for (int j = 0; j < n && hermitian(w); ++j) el(full, j, j, ldc).im = 0;
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < ldc; ++i)
        if (!in_triangle(i, j)) el(full, i, j, ldc) = el(c, i, j, ldc);
    return full;
  }

  std::string label() const {
    return std::string(name_of(w)) + " uplo " + uplo + " trans " + ta + (tb ? std::string(1, tb) : "") +
           " n " + std::to_string(n) + " k " + std::to_string(k);
  }
};

// Everything outside the referenced triangle, bit for bit.
template <class T> void expect_outside_kept(const problem<T>& p, const std::vector<T>& x) {
  int changed = 0;
  for (int j = 0; j < p.n; ++j)
    for (int i = 0; i < p.ldc; ++i)
      if (!p.in_triangle(i, j) && !same_bits(el(x, i, j, p.ldc), el(p.c, i, j, p.ldc))) ++changed;
  EXPECT_EQ(changed, 0) << p.label() << ": elements outside the triangle written";
}

// Calls f(problem) for every routine, option and shape.
template <class T, class F> void each_problem(const std::vector<std::pair<int, int>>& shapes, F f) {
  unsigned seed = 1;
  for (kind w : kinds<T>())
    for (auto t : options<T>(w))
      for (char u : {'U', 'L'})
        for (auto [n, k] : shapes) f(problem<T>(w, u, t, n, k, seed += 3));
}

// Shapes (n, k) around the diagonal tile (64), the engine's register and
// depth blocks (one block below 256, halves to 511, 256 after).
const std::vector<std::pair<int, int>> shapes = {{1, 1},   {2, 0},    {3, 5},    {5, 2},   {33, 64}, {64, 65},
                                                 {65, 257}, {129, 3}, {257, 33}, {300, 24}, {96, 300}, {40, 600}};

template <class T> class Triangle : public testing::Test {};
TYPED_TEST_SUITE(Triangle, all_types);

TYPED_TEST(Triangle, AgreesWithTheReferenceAndKeepsTheOtherTriangle) {
  using T = TypeParam;
  each_problem<T>(shapes, [](const problem<T>& p) {
    std::vector<T> mine = p.c, theirs = p.c;
    p.run(mine);
    if (!p.reference_on(theirs)) GTEST_SKIP() << "the reference BLAS for i386 is not available";
    double worst = 0;
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.n; ++i)
        if (p.in_triangle(i, j)) {
          const double e = dist(el(mine, i, j, p.ldc), el(theirs, i, j, p.ldc));
          worst = std::isnan(e) ? INFINITY : std::max(worst, e);
        }
    EXPECT_LE(worst, bound<T>(p.k)) << p.label();
    expect_outside_kept(p, mine);
    if constexpr (cplx<T>) {
      for (int j = 0; j < p.n && hermitian(p.w); ++j)
        EXPECT_TRUE(same_bits(el(mine, j, j, p.ldc).im, real<T>(0))) << p.label() << " diagonal " << j;
    }
  });
}

TYPED_TEST(Triangle, SameBitsAsTheEngineWhateverTheColumnSplit) {
  using T = TypeParam;
  std::mt19937 g(5);
  each_problem<T>(shapes, [&](const problem<T>& p) {
    std::vector<T> whole = p.c;
    p.run(whole);
    EXPECT_TRUE(same_bits(whole, p.engine())) << p.label();
    // three ranges cut at random points, in reverse order
    std::uniform_int_distribution<int> cut(0, p.n);
    int x = cut(g), y = cut(g);
    if (x > y) std::swap(x, y);
    std::vector<T> parts = p.c;
    p.run(parts, y, p.n);
    p.run(parts, x, y);
    p.run(parts, 0, x);
    EXPECT_TRUE(same_bits(parts, whole)) << p.label() << " split at " << x << ", " << y;
    if (p.n <= 65) {  // one column at a time
      std::vector<T> cols = p.c;
      for (int j = 0; j < p.n; ++j) p.run(cols, j, j + 1);
      EXPECT_TRUE(same_bits(cols, whole)) << p.label() << " column by column";
    }
  });
}

// Two threads on column ranges of equal area at the same time, as the core
// runs them: each has its own work tile and writes only its columns.
TYPED_TEST(Triangle, ConcurrentRangesGiveTheSameBits) {
  using T = TypeParam;
  each_problem<T>({{200, 90}}, [](const problem<T>& p) {
    std::vector<T> whole = p.c, parts = p.c;
    p.run(whole);
    const int half = p.uplo == 'U' ? static_cast<int>(p.n / 1.41421356) : p.n - static_cast<int>(p.n / 1.41421356);
    std::thread other([&] { p.run(parts, 0, half); });
    p.run(parts, half, p.n);
    other.join();
    EXPECT_TRUE(same_bits(parts, whole)) << p.label();
  });
}

// Without a work tile the diagonal tiles go column by column: same bits.
TYPED_TEST(Triangle, SameBitsWithoutTheWorkTile) {
  using T = TypeParam;
  each_problem<T>({{65, 40}, {130, 257}}, [](const problem<T>& p) { expect_same_bits_without_work_area(p); });
}

// beta 0 stores (NaN in C cleared); alpha 0 or k 0 only scales C and reads
// neither A nor B (NaN there); beta 1 with alpha 0 leaves C's bits.
TYPED_TEST(Triangle, SpecialScalars) {
  using T = TypeParam;
  each_problem<T>({{7, 5}, {100, 70}}, [](problem<T> p) {
    const std::vector<T> a = p.a, b = p.b;
    // beta 0 over NaN: the same result as over zeros
    p.beta = T{};
    std::vector<T> zeros = p.c, nans = p.c;
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.n; ++i)
        if (p.in_triangle(i, j)) el(zeros, i, j, p.ldc) = T{}, el(nans, i, j, p.ldc) = sentinel<T>();
    p.run(zeros);
    p.run(nans);
    EXPECT_TRUE(same_bits(zeros, nans)) << p.label() << " beta 0";
    expect_outside_kept(p, nans);
    // alpha 0: NaN operands not read, C scaled by beta
    std::fill(p.a.begin(), p.a.end(), sentinel<T>());
    std::fill(p.b.begin(), p.b.end(), sentinel<T>());
    p.alpha = T{};
    p.beta = make<T>(0.5);
    std::vector<T> scaled = p.c;
    p.run(scaled);
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.n; ++i)
        if (p.in_triangle(i, j)) {
          T want = el(p.c, i, j, p.ldc);
          if constexpr (cplx<T>) {
            want.re *= 0.5f, want.im *= 0.5f;
            if (hermitian(p.w) && i == j) want.im = 0;
          } else {
            want *= 0.5f;
          }
          ASSERT_TRUE(same_bits(el(scaled, i, j, p.ldc), want)) << p.label() << " alpha 0 at " << i << "," << j;
        }
    expect_outside_kept(p, scaled);
    // beta 1, alpha 0: C unchanged (Hermitian diagonals lose their imaginary part)
    p.beta = make<T>(1);
    std::vector<T> kept = p.c;
    p.run(kept);
    if constexpr (cplx<T>) {
      for (int j = 0; j < p.n && hermitian(p.w); ++j) {
        EXPECT_EQ(el(kept, j, j, p.ldc).im, 0) << p.label();
        el(kept, j, j, p.ldc).im = el(p.c, j, j, p.ldc).im;
      }
    }
    EXPECT_TRUE(same_bits(kept, p.c)) << p.label() << " alpha 0, beta 1";
    // k 0 with alpha non-zero: the same as alpha 0
    p.a = a, p.b = b, p.alpha = make<T>(2), p.k = 0, p.beta = make<T>(0.5);
    std::vector<T> empty = p.c;
    p.run(empty);
    EXPECT_TRUE(same_bits(empty, scaled)) << p.label() << " k 0";
  });
}

}  // namespace
