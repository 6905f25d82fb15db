// Bit equality of the GEMM engine against the in-test reference that forms
// every sum in the packed order, for shapes around every blocking boundary,
// all transposes, padded leading dimensions, misaligned C and all schedules.
#include "gemm_test.h"

namespace gemm_test {
namespace {

struct shape {
  int m, n, k;
};

// Around mr (2, 4, 8), nr (2, 4), kr (4), the depth blocks (k = 256, 257,
// 262, 511, 512, 600 give kb = 256, 128, 132, 256, 256, 256), and the small
// path (a side below the register block, or 4 x 4 x 4).
const shape shapes[] = {{1, 1, 1},     {3, 8, 8},     {8, 3, 9},    {4, 4, 4},    {5, 5, 5},    {7, 6, 9},
                        {9, 9, 3},     {17, 13, 100}, {9, 7, 255},  {13, 5, 256}, {6, 11, 257}, {12, 10, 262},
                        {5, 17, 511},  {16, 9, 512},  {21, 11, 600}};

// "C" means "T" for the real types; they run it too.
template <class T> std::vector<char> transposes() { return {'N', 'T', 'C'}; }

template <class T> struct problem {
  char ta, tb;
  int m, n, k, lda, ldb, ldc;
  T alpha, beta;
  std::vector<T> a, b, c;
  int c_off;  // C starts this many elements into its array (misaligned)

  problem(char ta_, char tb_, shape s, T al, T be, unsigned seed, int c_off_ = 1)
      : ta(ta_), tb(tb_), m(s.m), n(s.n), k(s.k), alpha(al), beta(be), c_off(c_off_) {
    const int ra = ta == 'N' ? m : k, ca = ta == 'N' ? k : m;
    const int rb = tb == 'N' ? k : n, cb = tb == 'N' ? n : k;
    lda = ra + 3, ldb = rb + 1, ldc = m + 2;
    a = random_matrix<T>(static_cast<size_t>(lda) * std::max(ca, 1), seed);
    b = random_matrix<T>(static_cast<size_t>(ldb) * std::max(cb, 1), seed + 1);
    c = random_matrix<T>(static_cast<size_t>(ldc) * std::max(n, 1) + c_off, seed + 2);
  }
  T* cp() { return c.data() + c_off; }
  // The depth block of x?gemm: kb_for(k) on the blocked and the small path
  // alike, so an element's bits do not depend on the shape around it.
  int driver_kb() const { return std::max(kb_for(k), 1); }
  // The expected C: padding rows and the elements before C stay as they are.
  std::vector<T> expected(int kb, bool store_first = false) const {
    std::vector<T> e = c;
    reference(ta, tb, m, n, k, alpha, a.data(), lda, b.data(), ldb, beta, e.data() + c_off, ldc, kb, store_first);
    return e;
  }
  void run_x() {
    api<T>::xgemm(&ta, &tb, &m, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta, cp(), &ldc);
  }
};

template <class T> class Exact : public ::testing::Test {};
TYPED_TEST_SUITE(Exact, all_types);

template <class T> std::vector<std::pair<T, T>> scalars() {
  return {{make<T>(0.75, -0.375), make<T>(1.25, 0.5)}, {make<T>(1, 0), make<T>(1, 0)},
          {make<T>(-0.3, 0.9), make<T>(0, 0)}};
}

TYPED_TEST(Exact, DriverFollowsThePackedOrderForEveryShapeAndTranspose) {
  using T = TypeParam;
  unsigned seed = 1;
  for (const shape& s : shapes)
    for (char ta : transposes<T>())
      for (char tb : transposes<T>())
        for (auto [al, be] : scalars<T>()) {
          problem<T> p(ta, tb, s, al, be, seed++);
          const auto want = p.expected(p.driver_kb());
          p.run_x();
          ASSERT_EQ(first_difference(p.c, want), -1)
              << api<T>::letter << "gemm " << ta << tb << " m=" << s.m << " n=" << s.n << " k=" << s.k;
        }
}

// Row blocks (mb) and the column-block cap (nb) only change which block an
// element belongs to, never its sum: the results stay exact across them.
TYPED_TEST(Exact, RowAndColumnBlockBoundaries) {
  using T = TypeParam;
  constexpr bool z = std::is_same_v<T, c64>;
  const int mb_small = api<T>::table()->mr == 8 ? 768 : std::is_same_v<T, c32> ? 320 : z ? 160 : 384;
  zar_set_cache_size(1 << 20);  // a small cache: the smaller row block
  const shape cases[] = {{mb_small + 1, 5, 9}, {2 * mb_small + 3, 4, 6}, {9, z ? 2001 : 5001, 5}};
  unsigned seed = 100;
  for (const shape& s : cases)
    for (char ta : {'N', 'T'}) {
      problem<T> p(ta, 'N', s, make<T>(0.5, 0.25), make<T>(-1.5, 0.5), seed++);
      const auto want = p.expected(p.driver_kb());
      p.run_x();
      EXPECT_EQ(first_difference(p.c, want), -1) << "m=" << s.m << " n=" << s.n << " " << ta;
    }
  zar_set_cache_size(-1);
}

// Every schedule of x?gemm_par, with small block sizes so that every loop
// runs several times, against the reference with the schedule's depth blocks.
TYPED_TEST(Exact, EverySchedule) {
  using T = TypeParam;
  const int versions[] = {2, 0, 4, 8, 16, 32, 64, 128, 256};
  const shape cases[] = {{37, 23, 41}, {9, 6, 7}, {5, 5, 5}};
  unsigned seed = 300;
  for (int v : versions)
    for (const shape& s : cases)
      for (auto [ta, tb] : {std::pair{'N', 'N'}, {'T', 'N'}, {'N', 'C'}, {'C', 'T'}})
        for (auto [al, be] : scalars<T>()) {
          problem<T> p(ta, tb, s, al, be, seed++);
          desc<T> d;
          api<T>::zero_desc(&d);
          api<T>::optimal(&d);
          api<T>::set_blks(2 * d.mr + 1, 6, 12, &d);
          // The whole depth is one block for the schedules that read A in
          // place in one call (16, 64) and on the small path.
          const bool big = v == 4 ? s.m >= d.m_small && s.n >= d.n_small && s.k >= d.k_small
                                  : s.m > d.m_small && s.n > d.n_small && s.k > d.k_small;
          const bool whole = !big || v == 16 || v == 64;
          const auto want = p.expected(whole ? std::max(s.k, 1) : 12, (v == 2 || v == 0) && exactly(be, 0));
          const int status =
              api<T>::par(&p.ta, &p.tb, &p.m, &p.n, &p.k, &p.alpha, p.a.data(), &p.lda, p.b.data(), &p.ldb,
                          &p.beta, p.cp(), &p.ldc, &v, &d);
          EXPECT_EQ(status, 0);
          ASSERT_EQ(first_difference(p.c, want), -1)
              << "schedule " << v << " " << ta << tb << " m=" << s.m << " n=" << s.n << " k=" << s.k;
        }
}

// The automatic block sizes inside x?gemm_par (nothing set beforehand).
TYPED_TEST(Exact, DefaultScheduleChoosesItsOwnBlocks) {
  using T = TypeParam;
  problem<T> p('T', 'N', {30, 20, 300}, make<T>(0.5, 1), make<T>(0, 0), 7);
  desc<T> d;
  api<T>::zero_desc(&d);
  api<T>::optimal(&d);
  const int v = 0;
  const auto want = p.expected(kb_for(300), true);
  EXPECT_EQ(api<T>::par(&p.ta, &p.tb, &p.m, &p.n, &p.k, &p.alpha, p.a.data(), &p.lda, p.b.data(), &p.ldb,
                        &p.beta, p.cp(), &p.ldc, &v, &d),
            0);
  EXPECT_EQ(d.kb, 152);
  EXPECT_EQ(first_difference(p.c, want), -1);
}

}  // namespace
}  // namespace gemm_test
