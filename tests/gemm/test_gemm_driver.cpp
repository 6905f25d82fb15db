// The GEMM driver's contract: the kernel tables, the descriptor functions,
// the packed layouts, and the edges (quick returns, beta 0 over NaN, alpha 0,
// the small path, allocation failure, unknown schedules).
#include <cstdint>
#include <limits>

#include "gemm_test.h"

namespace gemm_test {
namespace {

template <class T> class Driver : public ::testing::Test {
 protected:
  void TearDown() override {
    zar_fail_allocation(0);
    zar_set_cache_size(-1);
  }
};
TYPED_TEST_SUITE(Driver, all_types);

// Register blocks and row-block sizes (large cache, small cache) per type.
template <class T> struct expect;
template <> struct expect<float> { static constexpr int mr = 8, nr = 4, mb_l = 1280, mb_s = 768, nb_cap = 5000; };
template <> struct expect<double> { static constexpr int mr = 4, nr = 4, mb_l = 640, mb_s = 384, nb_cap = 5000; };
template <> struct expect<c32> { static constexpr int mr = 4, nr = 2, mb_l = 640, mb_s = 320, nb_cap = 5000; };
template <> struct expect<c64> { static constexpr int mr = 2, nr = 2, mb_l = 320, mb_s = 160, nb_cap = 2000; };

// Record fields 8 to 17; the real types reuse the transposing packers for
// the conjugating fields.
template <class T> std::vector<const void*> record_functions();
#define GEMM_TEST_FUNCS(t, T, ac, bc)                                                                        \
  template <> std::vector<const void*> record_functions<T>() {                                              \
    return {reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_get_blks_size),                           \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_get_bufs_size),                           \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_get_bufs),                                \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_copyan),                                  \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_copyat),                                  \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_##ac),                                    \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_copybn),                                  \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_copybt),                                  \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_##bc),                                    \
            reinterpret_cast<const void*>(&zar_blas_avx_##t##gemm_ker0)};                                   \
  }
GEMM_TEST_FUNCS(s, float, copyat, copybt)
GEMM_TEST_FUNCS(d, double, copyat, copybt)
GEMM_TEST_FUNCS(c, c32, copyac, copybc)
GEMM_TEST_FUNCS(z, c64, copyac, copybc)

TYPED_TEST(Driver, TableRecordAndDefaultIndex) {
  using T = TypeParam;
  using E = expect<T>;
  const auto* r = api<T>::table();
  const std::int32_t* f = reinterpret_cast<const std::int32_t*>(r);
  const std::int32_t fields[8] = {E::mr, E::nr, 4, 1, E::mr, E::nr, 4, 106};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(f[i], fields[i]) << "field " << i;
  const auto want = record_functions<T>();
  for (int i = 0; i < 10; ++i)
    EXPECT_EQ(reinterpret_cast<const void*>(static_cast<std::uintptr_t>(static_cast<std::uint32_t>(f[8 + i]))),
              want[i])
        << "field " << 8 + i;
  EXPECT_EQ(f[18], 0);
  EXPECT_EQ(f[19], 0);
  EXPECT_EQ(api<T>::optimal_index(), 0);
}

TYPED_TEST(Driver, KernelQueriesAndDescriptorFill) {
  using T = TypeParam;
  desc<T> opt, d;
  api<T>::zero_desc(&opt);
  api<T>::optimal(&opt);
  const auto* r = api<T>::table();
  EXPECT_EQ(opt.kernel_index, 0);
  EXPECT_EQ(opt.buf_set, 106);
  EXPECT_EQ(opt.mr, r->mr);
  EXPECT_EQ(opt.kr, 4);
  EXPECT_EQ(opt.m_small, r->m_small);
  EXPECT_EQ(opt.nbuf_mult, 1);
  EXPECT_EQ(opt.ker, r->ker);
  EXPECT_EQ(opt.copy_b_c, r->copy_b_c);
  EXPECT_EQ(opt.mb, 0);
  EXPECT_EQ(opt.a_buf, nullptr);

  std::memset(&d, 0x5a, sizeof d);
  api<T>::zero_desc(&d);
  const int zero = 0, one = 1, minus = -1;
  EXPECT_EQ(api<T>::get_kernel(&zero, &d), 0);
  EXPECT_EQ(std::memcmp(&d, &opt, sizeof d), 0) << "get_kernel(0) fills as get_optimal_kernel does";
  desc<T> untouched = d;
  EXPECT_EQ(api<T>::get_kernel(&one, &d), 1);
  EXPECT_EQ(api<T>::get_kernel(&minus, &d), 1);
  EXPECT_EQ(std::memcmp(&d, &untouched, sizeof d), 0);
}

TEST(DriverQueries, VersionCountAndSupport) {
  int count = 0;
  zar_blas_avx_dgemm_num_kernels(&count);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(zar_blas_avx_dgemm_get_kernel_version(), 2);
  EXPECT_EQ(zar_blas_avx_zgemm_get_kernel_version(), 2);
  EXPECT_EQ(zar_blas_avx_sgemm_api_support(), 1);
  // The threading hooks exist and do nothing.
  zar_blas_avx_xdgemm_internal_team();
  zar_blas_avx_cgemm_map_thread_to_kernel();
  zar_blas_avx_sgemm_initialize_kernel_info();
  zar_blas_avx_zgemm_blk_info_bdz();
  zar_blas_avx_dgemm_blk_info_hi_thr_bdz();
  zar_blas_avx_dgemm_getbufs_bdz();
  zar_blas_avx_cgemm_initialize_buffers();
}

TYPED_TEST(Driver, BlockSizes) {
  using T = TypeParam;
  using E = expect<T>;
  struct {
    int k, kb;
  } depth[] = {{1, 128}, {100, 128}, {129, 132}, {255, 256}, {256, 256}, {257, 128},
               {262, 132}, {511, 256}, {512, 256}, {600, 256}, {100000, 256}};
  const int m = 50, n = 10;
  for (auto [k, kb] : depth) {
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    api<T>::get_blks(&m, &n, &k, &d);
    EXPECT_EQ(d.kb, kb) << "k = " << k;
  }
  // mb from the last-level cache: unknown or above 4 MiB: the larger block.
  struct {
    long long bytes;
    int mb;
  } caches[] = {{0, E::mb_l}, {1 << 20, E::mb_s}, {4194304, E::mb_s}, {4194305, E::mb_l}, {32 << 20, E::mb_l}};
  for (auto [bytes, mb] : caches) {
    zar_set_cache_size(bytes);
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    const int k = 10;
    api<T>::get_blks(&m, &n, &k, &d);
    EXPECT_EQ(d.mb, mb) << bytes << " bytes";
  }
  zar_set_cache_size(-1);
  // nb: max(n, nr), capped, rounded up to nr.
  const int ns[][2] = {{1, E::nr}, {E::nr + 1, 2 * E::nr}, {7, (7 + E::nr - 1) / E::nr * E::nr},
                       {100000, E::nb_cap}};
  for (auto [nn, nb] : ns) {
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    const int k = 10;
    api<T>::get_blks(&m, &nn, &k, &d);
    EXPECT_EQ(d.nb, nb) << "n = " << nn;
  }
  // Sizes set beforehand are kept.
  desc<T> d;
  api<T>::zero_desc(&d);
  api<T>::optimal(&d);
  api<T>::set_blks(24, 0, 36, &d);
  const int k = 600;
  api<T>::get_blks(&m, &n, &k, &d);
  EXPECT_EQ(d.mb, 24);
  EXPECT_EQ(d.kb, 36);
  EXPECT_EQ(d.nb, (n + E::nr - 1) / E::nr * E::nr);
}

TYPED_TEST(Driver, BufferSizesAndPlacement) {
  using T = TypeParam;
  const int es = sizeof(T);
  desc<T> d;
  api<T>::zero_desc(&d);
  api<T>::optimal(&d);
  api<T>::set_blks(100, 60, 128, &d);
  const int m = 37, n = 90, k = 50;
  const int mr = d.mr, nr = d.nr;
  const int M = (37 + mr - 1) / mr * mr, N = (60 + nr - 1) / nr * nr, K = 52;
  const int all = 100, clipped = 107, full = 108;
  ASSERT_EQ(api<T>::bufs_size(&all, &clipped, &m, &n, &k, &d), 0);
  EXPECT_EQ(d.a_bytes, M * es * K + 512);
  EXPECT_EQ(d.a_stride, mr * K);
  EXPECT_EQ(d.a_align_log2, 12);
  EXPECT_EQ(d.b_bytes, N * es * K + 512);
  EXPECT_EQ(d.b_stride, K * nr);
  EXPECT_EQ(d.b_align_log2, 12);
  EXPECT_EQ(d.c_bytes, K * es * nr + 512);
  EXPECT_EQ(d.c_align_log2, 7);

  void* raw = reinterpret_cast<void*>(1);
  ASSERT_EQ(api<T>::get_bufs(&all, &raw, &d), 0);
  ASSERT_NE(raw, nullptr);
  const auto at = [](const void* p) { return reinterpret_cast<std::uintptr_t>(p); };
  const std::uintptr_t total = d.a_bytes + d.b_bytes + d.c_bytes + 2 * 4096 + 2 * 4096 + 2 * 128;
  EXPECT_EQ(at(d.a_buf) % 4096, 0u);
  EXPECT_EQ(at(d.c_buf) % 128, 0u);
  EXPECT_EQ(at(d.b_buf) % 4096, 0u);
  EXPECT_GE(at(d.a_buf), at(raw));
  EXPECT_GE(at(d.c_buf), at(d.a_buf) + d.a_bytes) << "A, then the third area";
  EXPECT_LT(at(d.c_buf), at(d.a_buf) + d.a_bytes + 128);
  EXPECT_GE(at(d.b_buf), at(d.c_buf) + d.c_bytes) << "then B";
  EXPECT_LE(at(d.b_buf) + d.b_bytes, at(raw) + total);
  std::memset(d.a_buf, 0, d.a_bytes);  // the areas are usable (ASan checks the bounds)
  std::memset(d.b_buf, 0, d.b_bytes);
  std::memset(d.c_buf, 0, d.c_bytes);
  api<T>::free_bufs(raw);

  ASSERT_EQ(api<T>::bufs_size(&all, &full, &m, &n, &k, &d), 0);
  EXPECT_EQ(d.a_bytes, (100 + mr - 1) / mr * mr * es * 128 + 512) << "mode l: the block sizes";
  const int third = 106;
  d.a_buf = d.b_buf = nullptr;
  ASSERT_EQ(api<T>::get_bufs(&third, &raw, &d), 0);
  EXPECT_EQ(d.a_buf, nullptr);
  EXPECT_EQ(d.b_buf, nullptr);
  EXPECT_EQ(at(d.c_buf) % 128, 0u);
  api<T>::free_bufs(raw);

  for (int bad : {99, 107, 0}) {
    raw = reinterpret_cast<void*>(1);
    EXPECT_EQ(api<T>::bufs_size(&bad, &clipped, &m, &n, &k, &d), 1) << bad;
    EXPECT_EQ(api<T>::get_bufs(&bad, &raw, &d), 1) << bad;
    EXPECT_EQ(raw, nullptr);
  }
  const int bad_mode = 106;
  EXPECT_EQ(api<T>::bufs_size(&all, &bad_mode, &m, &n, &k, &d), 1);
}

template <class T> T nan_value() {
  const auto q = std::numeric_limits<typename real_of<T>::type>::quiet_NaN();
  return make<T>(q, q);
}

TYPED_TEST(Driver, Mscale) {
  using T = TypeParam;
  const int m = 5, n = 3, ld = 7;
  auto c = random_matrix<T>(ld * n, 9);
  c[1] = nan_value<T>();
  c[ld + 2] = make<T>(std::numeric_limits<double>::infinity(), 0);
  auto want = c;
  const T zero = make<T>(0, 0), beta = make<T>(-2.5, 0.75);
  reference<T>('N', 'N', m, n, 0, zero, nullptr, 1, nullptr, 1, beta, want.data(), ld, 1);
  api<T>::mscale(&m, &n, &beta, c.data(), &ld);
  EXPECT_EQ(first_difference(c, want), -1);
  api<T>::mscale(&m, &n, &zero, c.data(), &ld);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < ld; ++i) {
      const T x = c[i + j * ld];
      if (i < m) EXPECT_TRUE(exactly(x, 0)) << "beta 0 stores zeros over NaN and infinity";
      else EXPECT_EQ(std::memcmp(&x, &want[i + j * ld], sizeof x), 0) << "rows below m stay";
    }
}

// op(A) of an x?gemm call with C = 0 and beta = 0 is C itself: helpers for
// the edge tests.
template <class T> struct small_case {
  int m, n, k, lda, ldb, ldc;
  std::vector<T> a, b, c;
  small_case(int m_, int n_, int k_, unsigned seed) : m(m_), n(n_), k(k_), lda(m_), ldb(std::max(k_, 1)), ldc(m_) {
    a = random_matrix<T>(static_cast<size_t>(m) * std::max(k, 1), seed);
    b = random_matrix<T>(static_cast<size_t>(ldb) * n, seed + 1);
    c = random_matrix<T>(static_cast<size_t>(m) * n, seed + 2);
  }
  std::vector<T> expected(T al, T be, int kb) const {
    auto e = c;
    reference('N', 'N', m, n, k, al, a.data(), lda, b.data(), ldb, be, e.data(), ldc, kb);
    return e;
  }
  void x(T al, T be, const T* aa, const T* bb) {
    api<T>::xgemm("N", "N", &m, &n, &k, &al, aa, &lda, bb, &ldb, &be, c.data(), &ldc);
  }
  void x(T al, T be) { x(al, be, a.data(), b.data()); }
};

TYPED_TEST(Driver, QuickReturnsAndScaling) {
  using T = TypeParam;
  const T nan = nan_value<T>(), al = make<T>(0.5, -1), zero = make<T>(0, 0), one = make<T>(1, 0);
  // m or n = 0: C untouched whatever beta is.
  for (auto [m, n] : {std::pair{0, 5}, {5, 0}, {-1, 3}}) {
    small_case<T> s(5, 5, 5, 1);
    const auto before = s.c;
    s.m = m, s.n = n;
    s.x(al, nan);
    EXPECT_TRUE(same_bits(s.c, before)) << m << "x" << n;
  }
  // k = 0 scales and does nothing else; beta 0 writes exact zeros over NaN.
  for (T be : {make<T>(2.5, -0.5), zero}) {
    small_case<T> s(9, 7, 0, 2);
    s.c[3] = nan;
    const auto want = s.expected(al, be, 1);
    s.x(al, be, nullptr, nullptr);
    EXPECT_TRUE(same_bits(s.c, want));
  }
  // alpha = 0 with beta = 1 reads neither A nor B (null arrays).
  {
    small_case<T> s(20, 20, 20, 3);
    const auto before = s.c;
    s.x(zero, one, nullptr, nullptr);
    EXPECT_TRUE(same_bits(s.c, before));
  }
  // beta = 0 over NaN, on the blocked and on the small path.
  for (int size : {3, 40}) {
    small_case<T> s(size, size, size, 4);
    for (auto& x : s.c) x = nan;
    const auto want = s.expected(al, zero, kb_for(size));
    s.x(al, zero);
    EXPECT_TRUE(same_bits(s.c, want)) << size;
  }
}

TYPED_TEST(Driver, SmallPathNeedsNoWorkArea) {
  using T = TypeParam;
  const int mr = api<T>::table()->mr, nr = api<T>::table()->nr;
  // mr x nr x 4 reaches x?gemm_par but not its strict size test.
  small_case<T> s(mr, nr, 4, 5);
  const auto want = s.expected(make<T>(1.5, 0.5), make<T>(0.5, 0), 4);
  zar_reset_warning_count();
  zar_fail_allocation(1);
  s.x(make<T>(1.5, 0.5), make<T>(0.5, 0));
  EXPECT_EQ(zar_fail_allocation(0), 1) << "no allocation was made";
  EXPECT_EQ(zar_warning_count(), 0);
  EXPECT_TRUE(same_bits(s.c, want));
}

TYPED_TEST(Driver, AllocationFailureStillGivesTheProduct) {
  using T = TypeParam;
  const char name[] = {static_cast<char>(api<T>::letter - 'a' + 'A'), 'G', 'E', 'M', 'M', 0};
  small_case<T> s(33, 21, 200, 6);  // one depth block: the small path's order is the same
  const T al = make<T>(-0.75, 0.25), be = make<T>(1.5, 0);
  const auto want = s.expected(al, be, 200);
  zar_reset_warning_count();
  zar_fail_allocation(1);
  testing::internal::CaptureStderr();
  s.x(al, be);
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(zar_warning_count(), 1);
  EXPECT_NE(err.find(name), std::string::npos) << err;
  EXPECT_TRUE(same_bits(s.c, want));

  // The other schedules fall back too, and say so with status 1.
  for (int v : {4, 8, 16, 32, 64, 128, 256}) {
    small_case<T> t(33, 21, 200, 7);
    const auto w = t.expected(al, be, 200);
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    zar_fail_allocation(1);
    testing::internal::CaptureStderr();
    const int st = api<T>::par("N", "N", &t.m, &t.n, &t.k, &al, t.a.data(), &t.lda, t.b.data(), &t.ldb, &be,
                               t.c.data(), &t.ldc, &v, &d);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(st, 1) << v;
    EXPECT_TRUE(same_bits(t.c, w)) << v;
  }
}

TYPED_TEST(Driver, UnknownScheduleAndAlphaZero) {
  using T = TypeParam;
  const T al = make<T>(0.5, 0), zero = make<T>(0, 0), be = make<T>(2, 0);
  for (int v : {1, 3, 5, 512, -2}) {
    small_case<T> s(20, 20, 20, 8);
    const auto before = s.c;
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    EXPECT_EQ(api<T>::par("N", "N", &s.m, &s.n, &s.k, &al, s.a.data(), &s.lda, s.b.data(), &s.ldb, &be,
                          s.c.data(), &s.ldc, &v, &d),
              1)
        << v;
    EXPECT_TRUE(same_bits(s.c, before)) << v;
  }
  // alpha = 0 and beta = 0: the default schedule leaves C to its caller,
  // schedule 128 writes zeros.
  for (int v : {2, 128}) {
    small_case<T> s(20, 20, 20, 9);
    for (auto& x : s.c) x = nan_value<T>();
    desc<T> d;
    api<T>::zero_desc(&d);
    api<T>::optimal(&d);
    EXPECT_EQ(api<T>::par("N", "N", &s.m, &s.n, &s.k, &zero, nullptr, &s.lda, nullptr, &s.ldb, &zero,
                          s.c.data(), &s.ldc, &v, &d),
              0);
    for (const T& x : s.c) {
      if (v == 2) EXPECT_FALSE(exactly(x, 0));
      else EXPECT_TRUE(exactly(x, 0));
    }
  }
}

// The packed layouts: panels of W lines, depth outermost inside a panel,
// zeros in the padded depth and in the missing lines; A scaled by alpha.
TYPED_TEST(Driver, PackedLayouts) {
  using T = TypeParam;
  const int mr = api<T>::table()->mr, nr = api<T>::table()->nr;
  const int rows = 2 * mr + 1, depth = 6, kp = 8, ld = 20;
  const auto src = random_matrix<T>(ld * 20, 11);
  const T al = make<T>(0.5, -2);
  const auto* r = api<T>::table();
  struct packer {
    typename zar::gemm::fn<T>::copy f;
    bool is_a, line_contig, conj;
  };
  const packer packers[] = {{r->copy_a_n, true, true, false}, {r->copy_a_t, true, false, false},
                            {r->copy_a_c, true, false, is_cx<T>}, {r->copy_b_n, false, false, false},
                            {r->copy_b_t, false, true, false}, {r->copy_b_c, false, true, is_cx<T>}};
  for (const packer& p : packers) {
    const int W = p.is_a ? mr : nr;
    const int lines = p.is_a ? rows : 2 * nr + 1;
    const int panels = (lines + W - 1) / W, stride = W * kp + 3;  // a stride with a gap
    std::vector<T> dst(panels * stride, make<T>(9, 9));
    const int r_ = p.is_a ? lines : depth, c_ = p.is_a ? depth : lines;
    p.f(&r_, &c_, src.data(), &ld, dst.data(), &stride, p.is_a ? &al : nullptr);
    for (int q = 0; q < panels; ++q)
      for (int d = 0; d < kp; ++d)
        for (int x = 0; x < W; ++x) {
          const int line = q * W + x;
          T want = make<T>(0, 0);
          if (line < lines && d < depth) {
            want = p.line_contig ? src[line + d * ld] : src[d + line * ld];
            if constexpr (is_cx<T>)
              if (p.conj) want.im = -want.im;
            if (p.is_a) want = cmul(al, want);
          }
          const T got = dst[q * stride + d * W + x];
          ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0)
              << (p.is_a ? "A" : "B") << " packer, panel " << q << " depth " << d << " line " << x;
        }
  }
}

}  // namespace
}  // namespace gemm_test
