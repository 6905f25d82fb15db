// symm and hemm: against the reference BLAS, the same bits as the engine's
// product with the full matrix (also when C is divided among calls or no work
// block can be had), A's other triangle never read, and the special scalars.
#include "sym_test.h"

namespace {
using namespace symt;

template <class T> struct problem {
  bool herm;
  char side, uplo;
  int m, n, order, lda, ldb, ldc;
  T alpha = make<T>(0.625, -0.75), beta = make<T>(1.5, 0.25);
  std::vector<T> a, b, c;

  problem(bool h, char s, char u, int m_, int n_, unsigned seed)
      : herm(h), side(s), uplo(u), m(m_), n(n_), order(s == 'L' ? m_ : n_) {
    lda = order + 2, ldb = m + 1, ldc = m + 3;
    a = random_matrix<T>(static_cast<size_t>(lda) * order, seed);
    b = random_matrix<T>(static_cast<size_t>(ldb) * n, seed + 1);
    c = random_matrix<T>(static_cast<size_t>(ldc) * n, seed + 2);
    // A's other triangle and C's rows past m must not be read or written;
    // hemm's diagonal keeps a non-zero imaginary part, which is ignored.
    for (int j = 0; j < order; ++j)
      for (int i = 0; i < lda; ++i)
        if (i >= order || (i != j && (i < j) != (uplo == 'U'))) el(a, i, j, lda) = sentinel<T>();
    for (int j = 0; j < n; ++j)
      for (int i = m; i < ldc; ++i) el(c, i, j, ldc) = sentinel<T>();
  }

  // The symmetric (Hermitian) matrix A in full.
  std::vector<T> full() const {
    std::vector<T> f(static_cast<size_t>(order) * order);
    for (int j = 0; j < order; ++j)
      for (int i = 0; i < order; ++i) {
        const bool stored = i == j || (i < j) == (uplo == 'U');
        T v = stored ? el(a, i, j, lda) : el(a, j, i, lda);
        if (herm && !stored) v = conj(v);
        if constexpr (cplx<T>)
          if (herm && i == j) v.im = 0;
        el(f, i, j, order) = v;
      }
    return f;
  }

  // The routine on columns [j0, j1) (side 'L') or rows [j0, j1) (side 'R')
  // of C only, as the core's threads divide it.
  void run(std::vector<T>& x, int j0 = 0, int j1 = -1) const {
    const char s[] = {side, 0}, u[] = {uplo, 0};
    const bool left = side == 'L';
    if (j1 < 0) j1 = left ? n : m;
    const int mm = left ? m : j1 - j0, nn = left ? j1 - j0 : n;
    const T* bp = left ? &el(b, 0, j0, ldb) : &b[j0];
    T* cp = left ? &el(x, 0, j0, ldc) : &x[j0];
    if (mm < 1 || nn < 1) return;
    if constexpr (cplx<T>)
      if (herm) return kern<T>::hemm(s, u, &mm, &nn, &alpha, a.data(), &lda, bp, &ldb, &beta, cp, &ldc);
    kern<T>::symm(s, u, &mm, &nn, &alpha, a.data(), &lda, bp, &ldb, &beta, cp, &ldc);
  }

  std::string label() const {
    return std::string(herm ? "hemm" : "symm") + " side " + side + " uplo " + uplo + " m " + std::to_string(m) +
           " n " + std::to_string(n);
  }
};

template <class T, class F> void each_problem(const std::vector<std::pair<int, int>>& shapes, F f) {
  unsigned seed = 11;
  for (bool herm : {false, true}) {
    if (herm && !cplx<T>) continue;
    for (char s : {'L', 'R'})
      for (char u : {'U', 'L'})
        for (auto [m, n] : shapes) f(problem<T>(herm, s, u, m, n, seed += 3));
  }
}

// Orders of A around the engine's depth blocks (one to 255, halves from 257
// to 511, then 256) and register blocks.
const std::vector<std::pair<int, int>> shapes = {{1, 1},   {2, 3},  {5, 33},  {33, 5},   {64, 65},
                                                 {65, 64}, {129, 7}, {257, 20}, {20, 300}, {600, 9}};

template <class T> class Symm : public testing::Test {};
TYPED_TEST_SUITE(Symm, all_types);

TYPED_TEST(Symm, AgreesWithTheReference) {
  using T = TypeParam;
  each_problem<T>(shapes, [](const problem<T>& p) {
    const auto f = symt::reference<T, symm_fn<T>>(p.herm ? "hemm" : "symm");
    SYMT_NEED_REFERENCE(f);
    std::vector<T> mine = p.c, theirs = p.c;
    p.run(mine);
    const char s[] = {p.side, 0}, u[] = {p.uplo, 0};
    f(s, u, &p.m, &p.n, &p.alpha, p.a.data(), &p.lda, p.b.data(), &p.ldb, &p.beta, theirs.data(), &p.ldc);
    double worst = 0;
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.m; ++i) {
        const double e = dist(el(mine, i, j, p.ldc), el(theirs, i, j, p.ldc));
        worst = std::isnan(e) ? INFINITY : std::max(worst, e);
      }
    EXPECT_LE(worst, 2 * bound<T>(p.order)) << p.label();
    for (int j = 0; j < p.n; ++j)
      for (int i = p.m; i < p.ldc; ++i)
        ASSERT_TRUE(same_bits(el(mine, i, j, p.ldc), el(p.c, i, j, p.ldc))) << p.label() << " guard row " << i;
  });
}

TYPED_TEST(Symm, SameBitsAsTheEngineWithTheFullMatrix) {
  using T = TypeParam;
  each_problem<T>(shapes, [](const problem<T>& p) {
    std::vector<T> mine = p.c, engine = p.c;
    p.run(mine);
    const std::vector<T> f = p.full();
    if (p.side == 'L')
      kern<T>::gemm("N", "N", &p.m, &p.n, &p.m, &p.alpha, f.data(), &p.order, p.b.data(), &p.ldb, &p.beta,
                    engine.data(), &p.ldc);
    else
      kern<T>::gemm("N", "N", &p.m, &p.n, &p.n, &p.alpha, p.b.data(), &p.ldb, f.data(), &p.order, &p.beta,
                    engine.data(), &p.ldc);
    EXPECT_TRUE(same_bits(mine, engine)) << p.label();
    // C divided in two parts along the dimension the core splits
    const int cut = (p.side == 'L' ? p.n : p.m) / 3;
    std::vector<T> parts = p.c;
    p.run(parts, cut, -1);
    p.run(parts, 0, cut);
    EXPECT_TRUE(same_bits(parts, mine)) << p.label() << " in two parts at " << cut;
  });
}

TYPED_TEST(Symm, SameBitsWithoutTheWorkBlock) {
  using T = TypeParam;
  each_problem<T>({{9, 70}, {300, 5}, {4, 260}}, [](const problem<T>& p) { expect_same_bits_without_work_area(p); });
}

// beta 0 clears NaN in C; alpha 0 reads neither A nor B and scales C.
TYPED_TEST(Symm, SpecialScalars) {
  using T = TypeParam;
  each_problem<T>({{6, 5}, {70, 90}}, [](problem<T> p) {
    p.beta = T{};
    std::vector<T> zeros = p.c, nans = p.c;
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.m; ++i) el(zeros, i, j, p.ldc) = T{}, el(nans, i, j, p.ldc) = sentinel<T>();
    p.run(zeros);
    p.run(nans);
    EXPECT_TRUE(same_bits(zeros, nans)) << p.label() << " beta 0";
    std::fill(p.a.begin(), p.a.end(), sentinel<T>());
    std::fill(p.b.begin(), p.b.end(), sentinel<T>());
    p.alpha = T{}, p.beta = make<T>(-2);
    std::vector<T> scaled = p.c;
    p.run(scaled);
    for (int j = 0; j < p.n; ++j)
      for (int i = 0; i < p.ldc; ++i) {
        T want = el(p.c, i, j, p.ldc);
        if (i < p.m) {
          if constexpr (cplx<T>) want.re *= -2, want.im *= -2;
          else want *= -2;
        }
        ASSERT_TRUE(same_bits(el(scaled, i, j, p.ldc), want)) << p.label() << " alpha 0 at " << i << "," << j;
      }
  });
}

}  // namespace
