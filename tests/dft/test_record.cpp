// The descriptor record: defaults after create, kernel choice per length,
// the long-route decision, the PACK inverse and the threaded batch split.
#include <gtest/gtest.h>

#include <cstring>

#include "dft_test.h"

using namespace dft_test;

namespace {

struct variant {
  int precision, domain;
  long rank;
};
const variant variants[] = {{ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 1}, {ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 3},
                            {ZAR_DFT_SINGLE, ZAR_DFT_REAL, 1},    {ZAR_DFT_SINGLE, ZAR_DFT_REAL, 3},
                            {ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1}, {ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 3},
                            {ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1},    {ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 3}};

zar_dft_descriptor* make(const variant& v, const long* lens) {
  zar_dft_descriptor* d = nullptr;
  const long st = v.rank == 1 ? zar_dft_create(&d, v.precision, v.domain, 1L, lens[0])
                              : zar_dft_create(&d, v.precision, v.domain, v.rank, lens);
  EXPECT_EQ(st, ZAR_DFT_OK);
  return d;
}

TEST(Record, DefaultsAfterCreate) {
  const long lens[3] = {5, 3, 4};  // row-major: the last (4) is contiguous
  for (const variant& v : variants) {
    zar_dft_descriptor* d = make(v, lens);
    ASSERT_NE(d, nullptr);
    const zar_dfti_desc* r = d;
    EXPECT_EQ(std::memcmp(&r->magic, "DFT\0", 4), 0);
    EXPECT_EQ(r->magic, 0x00544644u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(r) % 64, 0u);
    EXPECT_EQ(r->status, 31);
    EXPECT_EQ(r->cstorage, 39);
    EXPECT_EQ(r->rstorage, 42);
    EXPECT_EQ(r->cestorage, 39);
    EXPECT_EQ(r->placement, 43);
    EXPECT_EQ(r->packed, 57);
    EXPECT_EQ(r->ordering, 48);
    EXPECT_EQ(r->transpose, 53);
    EXPECT_EQ(r->workspace, 51);
    EXPECT_EQ(r->fscale, 1.0);
    EXPECT_EQ(r->bscale, 1.0);
    EXPECT_EQ(r->count, 1);
    EXPECT_EQ(r->flags, 0);
    EXPECT_EQ(r->precision, v.precision);
    EXPECT_EQ(r->domain, v.domain);
    EXPECT_EQ(r->rank, v.rank);
    EXPECT_EQ(r->mem, nullptr);
    ASSERT_EQ(r->in.rank, v.rank);
    long stride = 1;
    for (long k = 0; k < v.rank; ++k) {
      const long expect_n = v.rank == 1 ? lens[0] : lens[v.rank - 1 - k];
      EXPECT_EQ(r->in.dims[k].n, expect_n) << k;
      EXPECT_EQ(r->in.dims[k].is, stride) << k;
      EXPECT_EQ(r->in.dims[k].os, stride) << k;
      EXPECT_EQ(r->in.dims[k].r0, 0);
      EXPECT_EQ(r->in.dims[k].r1, 0);
      stride *= expect_n;
    }
    ASSERT_EQ(r->batch.rank, 1);
    EXPECT_EQ(r->batch.dims[0].n, 1);
    EXPECT_EQ(r->batch.dims[0].is, 0);
    EXPECT_EQ(r->batch.dims[0].os, 0);
    // committed copies equal the tensors at creation
    EXPECT_EQ(std::memcmp(r->in_c.dims, r->in.dims, sizeof(zar_dfti_dim) * v.rank), 0);
    EXPECT_NE(r->bkdlist, nullptr);
    EXPECT_NE(r->methods, nullptr);
    EXPECT_NE(r->uncommit, nullptr);
    EXPECT_NE(r->destroy, nullptr);
    // The public view agrees: lengths row-major.
    long got[3] = {};
    ASSERT_EQ(zar_dft_get(d, ZAR_DFT_LENGTHS, got), 0);
    for (long k = 0; k < v.rank; ++k) EXPECT_EQ(got[k], lens[k]);
    long value = 0;
    ASSERT_EQ(zar_dft_get(d, ZAR_DFT_COMMIT_STATUS, &value), 0);
    EXPECT_EQ(value, ZAR_DFT_UNCOMMITTED);
    ASSERT_EQ(zar_dft_commit(d), 0);
    EXPECT_EQ(r->status, 30);
    EXPECT_EQ(r->nodes, v.rank);
    EXPECT_EQ(r->nptr, 1);
    ASSERT_EQ(zar_dft_free(&d), 0);
    EXPECT_EQ(d, nullptr);
  }
}

// Double: lengths 2..64 that are not powers of two use that length's
// table pair; powers of two (64 too) and longer lengths the general pair.
// Single: the general pair always.
TEST(Record, KernelChoicePerLength) {
  for (long n = 1; n <= 130; ++n) {
    for (int prec : {ZAR_DFT_DOUBLE, ZAR_DFT_SINGLE}) {
      zar_dft_descriptor* d = nullptr;
      ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_COMPLEX, 1L, n), 0);
      ASSERT_EQ(zar_dft_commit(d), 0);
      const bool pow2 = (n & (n - 1)) == 0;
      if (prec == ZAR_DFT_SINGLE) {
        EXPECT_EQ(d->kfwd, zar_dft_avx_xruds_fwd_32fc) << n;
        EXPECT_EQ(d->kbwd, zar_dft_avx_xruds_inv_32fc) << n;
      } else if (!pow2 && n >= 2 && n <= 64) {
        EXPECT_EQ(d->kfwd, zar_dft_avx_zsmallradix_forward[n]) << n;
        EXPECT_EQ(d->kbwd, zar_dft_avx_zsmallradix_inverse[n]) << n;
        EXPECT_NE(d->kfwd, zar_dft_avx_zsmallradix_forward[n == 3 ? 5 : 3]) << n;
      } else {
        EXPECT_EQ(d->kfwd, zar_dft_avx_xruds_fwd_64fc) << n;
        EXPECT_EQ(d->kbwd, zar_dft_avx_xruds_inv_64fc) << n;
      }
      zar_dft_free(&d);
    }
  }
  // Split storage takes the split pair whatever the length.
  for (long n : {6L, 64L}) {
    zar_dft_descriptor* d = nullptr;
    ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, n), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, (long)ZAR_DFT_REAL_REAL), 0);
    ASSERT_EQ(zar_dft_commit(d), 0);
    EXPECT_EQ(d->kfwd, zar_dft_avx_xruds_fwd_64f);
    EXPECT_EQ(d->kbwd, zar_dft_avx_xruds_inv_64f);
    EXPECT_EQ(d->nptr, 2);
    zar_dft_free(&d);
  }
  // The real kernel pair follows the layout.
  struct {
    long ce, packed;
    zar_dfti_kernel_fn f, b;
  } real[] = {{39, 57, zar_dft_avx_rudsDFTFwd_RToCCS_64f, zar_dft_avx_rudsDFTInv_CCSToR_64f},
              {40, 54, zar_dft_avx_rudsDFTFwd_RToCCS_64f, zar_dft_avx_rudsDFTInv_CCSToR_64f},
              {40, 55, zar_dft_avx_rudsDFTFwd_RToPack_64f, zar_dft_avx_workaround_for_DFTInv_RPack_64f},
              {40, 56, zar_dft_avx_rudsDFTFwd_RToPerm_64f, zar_dft_avx_rudsDFTInv_PermToR_64f}};
  for (const auto& c : real) {
    zar_dft_descriptor* d = nullptr;
    ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1L, 12L), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, c.ce), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, c.packed), 0);
    ASSERT_EQ(zar_dft_commit(d), 0);
    EXPECT_EQ(d->kfwd, c.f) << c.packed;
    EXPECT_EQ(d->kbwd, c.b) << c.packed;
    zar_dft_free(&d);
  }
}

// The 1-D-through-2-D decision, taken in size-query mode so that nothing of
// these lengths is allocated: the kernel commit runs on a record whose node
// plan the test sets as the threaded layer would.
struct route_case {
  int precision;
  long n;
  int work;
  long workspace;
  bool long_route;
};

TEST(Record, LongRouteDecision) {
  const route_case cases[] = {
      {ZAR_DFT_DOUBLE, 16777217, 16, 51, true},    {ZAR_DFT_DOUBLE, 16777217, 15, 51, false},
      {ZAR_DFT_DOUBLE, 16777216, 16, 51, false},   {ZAR_DFT_DOUBLE, 16777216, 16, 52, true},
      {ZAR_DFT_DOUBLE, 16777216, 32, 51, true},    {ZAR_DFT_DOUBLE, 16777216, 15, 52, false},
      {ZAR_DFT_DOUBLE, 67108864, 16, 51, false},   {ZAR_DFT_DOUBLE, 134217728, 16, 51, true},
      {ZAR_DFT_DOUBLE, 16777215, 31, 51, false},   {ZAR_DFT_DOUBLE, 1000, 32, 51, true},
      {ZAR_DFT_SINGLE, 33554433, 16, 51, true},    {ZAR_DFT_SINGLE, 16777217, 16, 51, false},
      {ZAR_DFT_SINGLE, 134217728, 16, 51, false},  {ZAR_DFT_SINGLE, 268435456, 16, 51, true},
      {ZAR_DFT_SINGLE, 1024, 16, 52, true},
  };
  for (const route_case& c : cases) {
    zar_dft_descriptor* d = nullptr;
    ASSERT_EQ(zar_dft_create(&d, c.precision, ZAR_DFT_COMPLEX, 1L, c.n), 0) << c.n;
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_WORKSPACE, c.workspace), 0);
    zar_dfti_mem q{};
    q.mode = ZAR_DFTI_MODE_QUERY;
    for (auto& a : q.arena) a = {0, UINTPTR_MAX, 0, 0};
    d->mem = &q;
    d->node_count = 1;
    d->node_len[0] = static_cast<int32_t>(c.n);
    d->node_work[0] = c.work;
    d->thr_slots = 1;
    const int st = c.precision == ZAR_DFT_DOUBLE ? zar_dft_avx_commit_descriptor_core_d_c2c_1d(d)
                                                 : zar_dft_avx_commit_descriptor_core_s_c2c_1d(d);
    ASSERT_EQ(st, 0) << c.n;
    const zar_dfti_kernel_fn via = c.precision == ZAR_DFT_DOUBLE ? zar_dft_avx_xz_1d_via_2d_f : zar_dft_avx_xc_1d_via_2d_f;
    EXPECT_EQ(d->kfwd == via, c.long_route) << "n=" << c.n << " work=" << c.work << " workspace=" << c.workspace;
    EXPECT_EQ((d->flags & 4) != 0, c.long_route) << c.n;
    EXPECT_EQ(d->compute_fwd, nullptr);  // a size query sets no compute entries
    EXPECT_GT(q.arena[1].cursor, 0u);   // the plan was measured
    d->mem = nullptr;
    d->flags = 0;
    zar_dft_free(&d);
  }
  // The threaded layer's own measure: 2^24 + 1 double complex points is
  // measure 25, so the public commit of that length would take the route.
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 16777217L), 0);
  size_t s0 = 0, s1 = 0, s2 = 0;
  ASSERT_EQ(zar_dft_avx_dfti_get_size_dc1d(16777217L, 1.0, 1.0, 1, &s0, &s1, &s2), 0);
  EXPECT_GE(s0, sizeof(zar_dfti_desc));
  EXPECT_GT(s1, 0u);  // the long route was measured
  EXPECT_EQ(s2, 0u);
  zar_dft_free(&d);
}

// PACK inverse = PERM inverse of the same data with the value at n/2 moved
// to place 1 (even n); for odd n the two layouts agree as they are.
TEST(Record, PackInverseIsPermInverse) {
  for (long n : {2L, 3L, 8L, 9L, 14L}) {
    for (bool inplace : {true, false}) {
      zar_dft_descriptor *pack = nullptr, *perm = nullptr;
      for (auto [dd, fmt] : {std::pair{&pack, 55L}, std::pair{&perm, 56L}}) {
        ASSERT_EQ(zar_dft_create(dd, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1L, n), 0);
        ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40L), 0);
        ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_PACKED_FORMAT, fmt), 0);
        if (!inplace) { ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_PLACEMENT, 44L), 0); }
        ASSERT_EQ(zar_dft_commit(*dd), 0);
      }
      std::vector<double> p(n), q(n), out_p(n, 1.5), out_q(n, -1.5);
      for (long j = 0; j < n; ++j) p[j] = value(j, 7);
      q = p;
      if (n % 2 == 0) {
        q[1] = p[n - 1];
        for (long j = 1; j <= n - 2; ++j) q[j + 1] = p[j];
      }
      const std::vector<double> p0 = p;
      if (inplace) {
        ASSERT_EQ(zar_dft_compute_backward(pack, p.data()), 0);
        ASSERT_EQ(zar_dft_compute_backward(perm, q.data()), 0);
        out_p = p;
        out_q = q;
      } else {
        ASSERT_EQ(zar_dft_compute_backward(pack, p.data(), out_p.data()), 0);
        ASSERT_EQ(zar_dft_compute_backward(perm, q.data(), out_q.data()), 0);
        EXPECT_EQ(p, p0);  // the input is left as it was
      }
      for (long j = 0; j < n; ++j) EXPECT_EQ(out_p[j], out_q[j]) << "n=" << n << " j=" << j;
      // and it is the inverse of the PACK forward
      std::vector<double> x(n), spectrum(n), back(n);
      for (long j = 0; j < n; ++j) x[j] = value(j, 8);
      if (!inplace) {
        ASSERT_EQ(zar_dft_compute_forward(pack, x.data(), spectrum.data()), 0);
        ASSERT_EQ(zar_dft_compute_backward(pack, spectrum.data(), back.data()), 0);
        for (long j = 0; j < n; ++j) EXPECT_NEAR(back[j], n * x[j], 1e-12 * n * n) << n;
      }
      zar_dft_free(&pack);
      zar_dft_free(&perm);
    }
  }
}

// A batch divided among threads gives the same numbers as one thread, and
// the scratch slots follow the thread limit and the batch.
TEST(Record, ThreadedBatch) {
  const int saved = zar_get_max_threads();
  zar_set_num_threads(3);
  const long n = 20, howmany = 7;
  std::vector<double> serial, threaded;
  for (long limit : {1L, 0L}) {
    zar_dft_descriptor* d = nullptr;
    ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, n), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, howmany), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_THREAD_LIMIT, limit), 0);
    ASSERT_EQ(zar_dft_commit(d), 0);
    EXPECT_EQ(d->thr_slots, limit == 1 ? 1 : 3);
    std::vector<double> x(2 * n * howmany);
    for (size_t i = 0; i < x.size(); ++i) x[i] = value(static_cast<long>(i), 9);
    ASSERT_EQ(zar_dft_compute_forward(d, x.data()), 0);
    (limit == 1 ? serial : threaded) = x;
    zar_dft_free(&d);
  }
  EXPECT_EQ(serial, threaded);
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, n), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, 2L), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  EXPECT_EQ(d->thr_slots, 2);  // never more slots than transforms
  zar_dft_free(&d);
  zar_set_num_threads(saved);
}

}  // namespace
