// The batched products (the same bits as separate engine calls) and the 3M
// complex product (against the reference BLAS, its fallbacks, the special
// scalars).
#include "sym_test.h"

namespace {
using namespace symt;

// One product: its options, sizes, scalars, and where its operands start in
// shared buffers (C with guard rows, ldc = m + 2).
struct shape {
  char ta, tb;
  int m, n, k;
  double alpha, beta;
};
template <class T> struct operands {
  int lda, ldb, ldc;
  size_t a_size, b_size, c_size;
  explicit operands(const shape& s) {
    lda = (s.ta == 'N' ? s.m : s.k) + 1, ldb = (s.tb == 'N' ? s.k : s.n) + 3, ldc = s.m + 2;
    a_size = static_cast<size_t>(lda) * (s.ta == 'N' ? s.k : s.m);
    b_size = static_cast<size_t>(ldb) * (s.tb == 'N' ? s.n : s.k);
    c_size = static_cast<size_t>(ldc) * s.n;
  }
};
template <class T> char real_opt(char t) { return !cplx<T> && t == 'C' ? 'T' : t; }

template <class T> class Batch : public testing::Test {};
TYPED_TEST_SUITE(Batch, all_types);

TYPED_TEST(Batch, GroupsGiveTheBitsOfSeparateProducts) {
  using T = TypeParam;
  // groups of 2, 3, 0 and 1 products
  const std::vector<shape> groups = {{'N', 'N', 5, 7, 3, 1, 0}, {'T', 'C', 33, 17, 65, -0.5, 1},
                                     {'N', 'T', 4, 4, 4, 2, 2}, {'C', 'N', 1, 64, 300, 0.25, -1.5}};
  const std::vector<int> sizes = {2, 3, 0, 1};
  std::vector<char> ta, tb;
  std::vector<int> m, n, k, lda, ldb, ldc;
  std::vector<T> alpha, beta;
  std::vector<std::vector<T>> as, bs, cs, expect;
  unsigned seed = 40;
  for (size_t g = 0; g < groups.size(); ++g) {
    const shape& s = groups[g];
    const operands<T> o(s);
    ta.push_back(real_opt<T>(s.ta)), tb.push_back(real_opt<T>(s.tb));
    m.push_back(s.m), n.push_back(s.n), k.push_back(s.k);
    lda.push_back(o.lda), ldb.push_back(o.ldb), ldc.push_back(o.ldc);
    alpha.push_back(make<T>(s.alpha, 0.5)), beta.push_back(make<T>(s.beta, s.beta == 1 ? 0 : -0.25));
    for (int i = 0; i < sizes[g]; ++i) {
      as.push_back(random_matrix<T>(o.a_size, seed++));
      bs.push_back(random_matrix<T>(o.b_size, seed++));
      cs.push_back(random_matrix<T>(o.c_size, seed++));
      expect.push_back(cs.back());
      kern<T>::gemm(&ta[g], &tb[g], &m[g], &n[g], &k[g], &alpha[g], as.back().data(), &lda[g], bs.back().data(),
                    &ldb[g], &beta[g], expect.back().data(), &ldc[g]);
    }
  }
  std::vector<const T*> ap, bp;
  std::vector<T*> cp;
  for (size_t i = 0; i < as.size(); ++i) ap.push_back(as[i].data()), bp.push_back(bs[i].data()), cp.push_back(cs[i].data());
  const int count = static_cast<int>(groups.size());
  kern<T>::batch(ta.data(), tb.data(), m.data(), n.data(), k.data(), alpha.data(), ap.data(), lda.data(), bp.data(),
                 ldb.data(), beta.data(), cp.data(), ldc.data(), &count, sizes.data());
  for (size_t i = 0; i < cs.size(); ++i) EXPECT_TRUE(same_bits(cs[i], expect[i])) << "product " << i;
}

TYPED_TEST(Batch, StridedGivesTheBitsOfSeparateProducts) {
  using T = TypeParam;
  for (const shape& s : {shape{'N', 'T', 9, 5, 7, 1.5, 0.5}, shape{'C', 'N', 40, 33, 260, -1, 0}}) {
    const operands<T> o(s);
    const char ta = real_opt<T>(s.ta), tb = real_opt<T>(s.tb);
    // the matrices a little further apart than their size: gaps in between
    const int count = 3, sa = static_cast<int>(o.a_size) + 5, sb = static_cast<int>(o.b_size) + 1,
              sc = static_cast<int>(o.c_size) + 7;
    const auto a = random_matrix<T>(static_cast<size_t>(sa) * count, 90);
    const auto b = random_matrix<T>(static_cast<size_t>(sb) * count, 91);
    std::vector<T> c = random_matrix<T>(static_cast<size_t>(sc) * count, 92), expect = c;
    const T alpha = make<T>(s.alpha, -0.5), beta = make<T>(s.beta, 0.125);
    for (int i = 0; i < count; ++i)
      kern<T>::gemm(&ta, &tb, &s.m, &s.n, &s.k, &alpha, &a[static_cast<size_t>(sa) * i], &o.lda,
                    &b[static_cast<size_t>(sb) * i], &o.ldb, &beta, &expect[static_cast<size_t>(sc) * i], &o.ldc);
    kern<T>::strided(&ta, &tb, &s.m, &s.n, &s.k, &alpha, a.data(), &o.lda, &sa, b.data(), &o.ldb, &sb, &beta,
                     c.data(), &o.ldc, &sc, &count);
    EXPECT_TRUE(same_bits(c, expect)) << s.ta << s.tb << " m " << s.m;
  }
}

template <class T> class Gemm3m : public testing::Test {};
TYPED_TEST_SUITE(Gemm3m, complex_types);

// Calls f(shape) for every option pair and the shapes: below the size where
// the method is used, and across its blocks of rows and columns (512) and
// of the depth (256).
template <class F> void each_3m_shape(F f) {
  const int sizes[][3] = {{1, 1, 1}, {31, 40, 50}, {40, 33, 32}, {300, 70, 520}, {520, 40, 257}, {33, 530, 40}};
  for (char ta : std::string("NTC"))
    for (char tb : std::string("NTC"))
      for (auto& z : sizes) f(shape{ta, tb, z[0], z[1], z[2], 0.75, -1.25});
}

template <class T> struct product3m {
  shape s;
  operands<T> o;
  T alpha, beta;
  std::vector<T> a, b, c;
  explicit product3m(const shape& s_, unsigned seed)
      : s(s_), o(s_), alpha(make<T>(s_.alpha, 0.5)), beta(make<T>(s_.beta, -0.25)) {
    a = random_matrix<T>(o.a_size, seed), b = random_matrix<T>(o.b_size, seed + 1);
    c = random_matrix<T>(o.c_size, seed + 2);
    for (int j = 0; j < s.n; ++j)
      for (int i = s.m; i < o.ldc; ++i) el(c, i, j, o.ldc) = sentinel<T>();
  }
  void run(void (*f)(ZAR_L3_GEMM_ARGS(T)), std::vector<T>& x) const {
    f(&s.ta, &s.tb, &s.m, &s.n, &s.k, &alpha, a.data(), &o.lda, b.data(), &o.ldb, &beta, x.data(), &o.ldc);
  }
  std::string label() const {
    return std::string(1, s.ta) + s.tb + " " + std::to_string(s.m) + "x" + std::to_string(s.n) + "x" +
           std::to_string(s.k);
  }
};

TYPED_TEST(Gemm3m, AgreesWithTheReference) {
  using T = TypeParam;
  const auto ref = symt::reference<T, gemm_fn<T>>("gemm");
  SYMT_NEED_REFERENCE(ref);
  unsigned seed = 300;
  each_3m_shape([&](const shape& s) {
    const product3m<T> p(s, seed += 3);
    std::vector<T> mine = p.c, theirs = p.c;
    p.run(kern<T>::gemm3m, mine);
    p.run(ref, theirs);
    double worst = 0;
    for (int j = 0; j < s.n; ++j)
      for (int i = 0; i < s.m; ++i) {
        const double e = dist(el(mine, i, j, p.o.ldc), el(theirs, i, j, p.o.ldc));
        worst = std::isnan(e) ? INFINITY : std::max(worst, e);
      }
    EXPECT_LE(worst, 4 * bound<T>(s.k)) << p.label();
    for (int j = 0; j < s.n; ++j)
      for (int i = s.m; i < p.o.ldc; ++i)
        ASSERT_TRUE(same_bits(el(mine, i, j, p.o.ldc), el(p.c, i, j, p.o.ldc))) << p.label() << " guard row";
  });
}

// Small products, and any product whose work area cannot be allocated, are
// the ordinary complex gemm.
TYPED_TEST(Gemm3m, FallsBackToTheOrdinaryProduct) {
  using T = TypeParam;
  unsigned seed = 500;
  each_3m_shape([&](const shape& s) {
    const product3m<T> p(s, seed += 3);
    std::vector<T> engine = p.c, mine = p.c;
    p.run(kern<T>::gemm, engine);
    const bool small = std::min({s.m, s.n, s.k}) < 32;
    if (!small) zar_fail_allocation(1);
    p.run(kern<T>::gemm3m, mine);
    zar_fail_allocation(0);
    EXPECT_TRUE(same_bits(mine, engine)) << p.label();
  });
}

TYPED_TEST(Gemm3m, SpecialScalars) {
  using T = TypeParam;
  product3m<T> p(shape{'N', 'C', 70, 50, 40, 1, 0}, 700);
  p.beta = T{};
  std::vector<T> zeros = p.c, nans = p.c;
  for (int j = 0; j < p.s.n; ++j)
    for (int i = 0; i < p.s.m; ++i) el(zeros, i, j, p.o.ldc) = T{}, el(nans, i, j, p.o.ldc) = sentinel<T>();
  p.run(kern<T>::gemm3m, zeros);
  p.run(kern<T>::gemm3m, nans);
  EXPECT_TRUE(same_bits(zeros, nans)) << "beta 0 over NaN";
  std::fill(p.a.begin(), p.a.end(), sentinel<T>());
  std::fill(p.b.begin(), p.b.end(), sentinel<T>());
  p.alpha = T{}, p.beta = make<T>(0.5);
  std::vector<T> scaled = p.c;
  p.run(kern<T>::gemm3m, scaled);
  for (int j = 0; j < p.s.n; ++j)
    for (int i = 0; i < p.o.ldc; ++i) {
      T want = el(p.c, i, j, p.o.ldc);
      if (i < p.s.m) want.re *= 0.5, want.im *= 0.5;
      ASSERT_TRUE(same_bits(el(scaled, i, j, p.o.ldc), want)) << "alpha 0 at " << i << "," << j;
    }
}

}  // namespace
