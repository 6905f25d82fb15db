// Plans as programs use them: the guru interfaces (batches of rank 0, 1 and
// 2, split arrays, 64-bit dimensions), new-array execution, two threads on
// one plan, what planning and execution may touch, the problems FFTW
// refuses, wisdom, memory and plan descriptions.
#include <gtest/gtest.h>

#include <cstdint>
#include <thread>

#include "layout.h"

using namespace fftw_test;

namespace {

template <class R> class Plans : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Plans, Precisions);

template <class R> using C = R[2];
template <class R> C<R>* cx(std::vector<R>& v) { return reinterpret_cast<C<R>*>(v.data()); }

// A complex transform of length 8 with input stride 3, batched over one or
// two dimensions, through guru and guru64, compared with Debian's.
TYPED_TEST(Plans, GuruComplexBatchRanks) {
  using R = TypeParam;
  const api<R>* theirs = peer<R>();
  if (!theirs) GTEST_SKIP() << "Debian's FFTW is not installed";
  const api<R>& a = ours<R>();
  const int n = 8;
  typename api<R>::iodim dims[] = {{n, 3, 1}};
  typename api<R>::iodim how[] = {{3, 1, n}, {2, 30, 3 * n}};
  typename api<R>::iodim64 dims64[] = {{n, 3, 1}};
  typename api<R>::iodim64 how64[] = {{3, 1, n}, {2, 30, 3 * n}};
  for (int hr : {0, 1, 2})
    for (bool wide : {false, true})
      for (int sign : {FFTW_FORWARD, FFTW_BACKWARD}) {
        SCOPED_TRACE("howmany rank " + std::to_string(hr) + (wide ? " guru64" : " guru"));
        const std::vector<R> in0 = random_reals<R>(2 * 60, 7 + hr);
        std::vector<R> out[2];
        for (int side = 0; side < 2; ++side) {
          const api<R>& f = side == 0 ? a : *theirs;
          std::vector<R> in = in0;
          out[side].assign(2 * 6 * n, R(0));
          auto p = wide ? f.plan_guru64_dft(1, dims64, hr, how64, cx(in), cx(out[side]), sign, FFTW_ESTIMATE)
                        : f.plan_guru_dft(1, dims, hr, how, cx(in), cx(out[side]), sign, FFTW_ESTIMATE);
          ASSERT_NE(p, nullptr);
          f.execute(p);
          f.destroy_plan(p);
          if (side == 0) {
            EXPECT_EQ(in, in0);
          }
        }
        std::vector<size_t> all(out[0].size());
        std::iota(all.begin(), all.end(), 0);
        EXPECT_LE(relative_error(out[0], out[1], all), tolerance<R>(n));
      }
}

// Negative strides (the input read backwards from its last element) in a
// batch of complex and of real-to-real transforms, compared with Debian's.
TYPED_TEST(Plans, NegativeStrides) {
  using R = TypeParam;
  const api<R>* theirs = peer<R>();
  if (!theirs) GTEST_SKIP() << "Debian's FFTW is not installed";
  const int n = 10;
  typename api<R>::iodim dims[] = {{n, -2, 1}};
  typename api<R>::iodim how[] = {{3, 20, n}};
  const std::vector<R> in0 = random_reals<R>(2 * 3 * 2 * n, 11);
  std::vector<R> out[2][2];
  for (int side = 0; side < 2; ++side) {
    const api<R>& f = side == 0 ? ours<R>() : *theirs;
    std::vector<R> in = in0;
    out[side][0].assign(2 * 3 * n, R(0));
    out[side][1].assign(3 * n, R(0));
    const int last = 2 * (n - 1);  // element 0 of each transform is the last one read
    auto p = f.plan_guru_dft(1, dims, 1, how, cx(in) + last, cx(out[side][0]), FFTW_FORWARD, FFTW_ESTIMATE);
    const auto k = static_cast<typename api<R>::r2r_kind>(FFTW_REDFT10);
    auto q = f.plan_guru_r2r(1, dims, 1, how, in.data() + last, out[side][1].data(), &k, FFTW_ESTIMATE);
    ASSERT_NE(p, nullptr);
    ASSERT_NE(q, nullptr);
    f.execute(p);
    f.execute(q);
    f.destroy_plan(p);
    f.destroy_plan(q);
  }
  for (int t = 0; t < 2; ++t) {
    std::vector<size_t> all(out[0][t].size());
    std::iota(all.begin(), all.end(), 0);
    EXPECT_LE(relative_error(out[0][t], out[1][t], all), tolerance<R>(n));
  }
}

// A batch that reads one input again and again (distance 0) into separate
// outputs, as FFTW allows out of place.
TYPED_TEST(Plans, BatchOfDistanceZero) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  const int n = 16;
  typename api<R>::iodim dims[] = {{n, 1, 1}};
  typename api<R>::iodim how[] = {{3, 0, n}};
  std::vector<R> in = random_reals<R>(2 * n, 13), out(2 * 3 * n, R(0)), ref(2 * n);
  auto p = a.plan_guru_dft(1, dims, 1, how, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE);
  ASSERT_NE(p, nullptr);
  a.execute(p);
  a.destroy_plan(p);
  auto q = a.plan_dft_1d(n, cx(in), cx(ref), FFTW_FORWARD, FFTW_ESTIMATE);
  a.execute(q);
  a.destroy_plan(q);
  for (int b = 0; b < 3; ++b) EXPECT_TRUE(std::equal(ref.begin(), ref.end(), out.begin() + 2 * n * b)) << "transform " << b;
}

// Rank 0 is a copy of every element of the batch.
TYPED_TEST(Plans, RankZeroCopies) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  typename api<R>::iodim how[] = {{5, 2, 1}};
  std::vector<R> in = random_reals<R>(20, 3), out(10, R(0));
  auto p = a.plan_guru_dft(0, nullptr, 1, how, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE);
  ASSERT_NE(p, nullptr);
  a.execute(p);
  a.destroy_plan(p);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(out[2 * i], in[4 * i]);
    EXPECT_EQ(out[2 * i + 1], in[4 * i + 1]);
  }
}

// Split arrays, here interleaved (ii = ri + 1, stride 2), compared with the
// complex transform of the same data; swapping the real and imaginary
// arrays gives the backward transform.
TYPED_TEST(Plans, GuruSplitIsTheComplexTransform) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  for (int n : {1, 6, 16, 45}) {
    for (bool backward : {false, true}) {
      SCOPED_TRACE("n " + std::to_string(n) + (backward ? " backward" : " forward"));
      std::vector<R> in = random_reals<R>(2 * n, n), out(2 * n), ref(2 * n);
      typename api<R>::iodim dims[] = {{n, 2, 2}};
      R* ri = in.data() + (backward ? 1 : 0);
      R* ii = in.data() + (backward ? 0 : 1);
      R* ro = out.data() + (backward ? 1 : 0);
      R* io = out.data() + (backward ? 0 : 1);
      auto p = a.plan_guru_split_dft(1, dims, 0, nullptr, ri, ii, ro, io, FFTW_ESTIMATE);
      ASSERT_NE(p, nullptr);
      a.execute(p);
      a.destroy_plan(p);
      auto q = a.plan_dft_1d(n, cx(in), cx(ref), backward ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
      a.execute(q);
      a.destroy_plan(q);
      std::vector<size_t> all(2 * n);
      std::iota(all.begin(), all.end(), 0);
      EXPECT_LE(relative_error(out, ref, all), tolerance<R>(n));
    }
  }
}

// fftw_execute_* on other arrays of the same layout: the same result as a
// plan made for those arrays, and the planning arrays untouched.
TYPED_TEST(Plans, NewArrayExecution) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  const int n = 96;
  std::vector<R> pin(2 * n, R(1)), pout(2 * n, R(2));
  std::vector<R> in = random_reals<R>(2 * n, 5), out(2 * n), ref(2 * n);
  auto p = a.plan_dft_1d(n, cx(pin), cx(pout), FFTW_FORWARD, FFTW_ESTIMATE);
  auto q = a.plan_dft_1d(n, cx(in), cx(ref), FFTW_FORWARD, FFTW_ESTIMATE);
  a.execute_dft(p, cx(in), cx(out));
  a.execute(q);
  EXPECT_EQ(out, ref);
  EXPECT_EQ(pin, std::vector<R>(2 * n, R(1)));
  EXPECT_EQ(pout, std::vector<R>(2 * n, R(2)));
  a.destroy_plan(p);
  a.destroy_plan(q);

  // Real to complex, complex to real, real to real.
  std::vector<R> rin = random_reals<R>(n, 6), rout(n + 2), rref(n + 2), back(n), back_ref(n);
  auto f1 = a.plan_dft_r2c_1d(n, pin.data(), cx(pout), FFTW_ESTIMATE);
  auto f2 = a.plan_dft_r2c_1d(n, rin.data(), cx(rref), FFTW_ESTIMATE);
  a.execute_dft_r2c(f1, rin.data(), cx(rout));
  a.execute(f2);
  EXPECT_EQ(rout, rref);
  auto b1 = a.plan_dft_c2r_1d(n, cx(pout), pin.data(), FFTW_ESTIMATE);
  auto b2 = a.plan_dft_c2r_1d(n, cx(rref), back_ref.data(), FFTW_ESTIMATE);
  a.execute_dft_c2r(b1, cx(rout), back.data());
  a.execute(b2);
  EXPECT_EQ(back, back_ref);
  for (int i = 0; i < n; ++i) EXPECT_NEAR(back[i] / n, rin[i], 1e3 * tolerance<R>(n));
  auto t1 = a.plan_r2r_1d(n, pin.data(), pout.data(), FFTW_REDFT10, FFTW_ESTIMATE);
  auto t2 = a.plan_r2r_1d(n, rin.data(), rref.data(), FFTW_REDFT10, FFTW_ESTIMATE);
  a.execute_r2r(t1, rin.data(), rout.data());
  a.execute(t2);
  EXPECT_TRUE(std::equal(rref.begin(), rref.begin() + n, rout.begin()));
  for (auto x : {f1, f2, b1, b2, t1, t2}) a.destroy_plan(x);
}

// Two threads executing one plan at the same time on their own arrays get
// the results of executing it alone.
TYPED_TEST(Plans, TwoThreadsOnOnePlan) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  const int n = 1000;
  std::vector<R> pin(2 * n), pout(2 * n);
  auto c = a.plan_dft_1d(n, cx(pin), cx(pout), FFTW_BACKWARD, FFTW_ESTIMATE);
  auto r = a.plan_r2r_2d(20, 50, pin.data(), pout.data(), FFTW_REDFT10, FFTW_RODFT11, FFTW_ESTIMATE);
  ASSERT_NE(c, nullptr);
  ASSERT_NE(r, nullptr);
  std::vector<R> in[2] = {random_reals<R>(2 * n, 1), random_reals<R>(2 * n, 2)};
  std::vector<R> want_c[2], want_r[2];
  for (int t = 0; t < 2; ++t) {
    want_c[t].assign(2 * n, 0);
    want_r[t].assign(n, 0);
    a.execute_dft(c, cx(in[t]), cx(want_c[t]));
    a.execute_r2r(r, in[t].data(), want_r[t].data());
  }
  int wrong[2] = {0, 0};
  auto work = [&](int t) {
    std::vector<R> oc(2 * n), orr(n);
    for (int rep = 0; rep < 60; ++rep) {
      a.execute_dft(c, cx(in[t]), cx(oc));
      a.execute_r2r(r, in[t].data(), orr.data());
      wrong[t] += oc != want_c[t] || orr != want_r[t];
    }
  };
  std::thread t0(work, 0), t1(work, 1);
  t0.join();
  t1.join();
  EXPECT_EQ(wrong[0], 0);
  EXPECT_EQ(wrong[1], 0);
  a.destroy_plan(c);
  a.destroy_plan(r);
}

// Planning with FFTW_MEASURE leaves the arrays alone here; an out-of-place
// complex-to-real plan with FFTW_PRESERVE_INPUT keeps its input.
TYPED_TEST(Plans, WhatPlanningAndExecutionTouch) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  std::vector<R> in = random_reals<R>(2 * 64, 9), out(2 * 64, R(3));
  const std::vector<R> in0 = in, out0 = out;
  for (unsigned flags : {FFTW_MEASURE, FFTW_PATIENT, FFTW_EXHAUSTIVE}) {
    auto p = a.plan_dft_2d(8, 8, cx(in), cx(out), FFTW_FORWARD, flags);
    auto q = a.plan_dft_r2c_2d(8, 8, in.data(), cx(out), flags);
    auto r = a.plan_r2r_1d(64, in.data(), out.data(), FFTW_RODFT00, flags);
    EXPECT_EQ(in, in0);
    EXPECT_EQ(out, out0);
    for (auto x : {p, q, r}) a.destroy_plan(x);
  }
  for (const std::vector<int>& n : {std::vector<int>{64}, std::vector<int>{8, 8}, std::vector<int>{4, 4, 4}}) {
    shape s;
    s.n = n;
    bool ok = false;
    const std::vector<R> spec = make_input(a, kind::c2r, s, 4);
    const buffers<R> b = run_many(a, kind::c2r, s, spec, FFTW_ESTIMATE | FFTW_PRESERVE_INPUT, ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(b.in, spec);
  }
}

// The problems FFTW refuses are refused, and the others planned, alike.
TYPED_TEST(Plans, RefusedProblemsAgreeWithFFTW) {
  using R = TypeParam;
  const api<R>* theirs = peer<R>();
  if (!theirs) GTEST_SKIP() << "Debian's FFTW is not installed";
  std::vector<R> in(64), out(64);
  const int negative[] = {4, -2};
  for (int side = 0; side < 2; ++side) {
    const api<R>& f = side == 0 ? ours<R>() : *theirs;
    auto check = [&](typename api<R>::plan p, bool planned, const char* what) {
      EXPECT_EQ(p != nullptr, planned) << what << (side == 0 ? " (zar)" : " (FFTW)");
      if (p) f.destroy_plan(p);
    };
    check(f.plan_dft(2, negative, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE), false, "negative length");
    check(f.plan_many_dft(1, negative, -1, cx(in), nullptr, 1, 4, cx(out), nullptr, 1, 4, FFTW_FORWARD, FFTW_ESTIMATE),
          false, "negative batch");
    check(f.plan_r2r_1d(1, in.data(), out.data(), FFTW_REDFT00, FFTW_ESTIMATE), false, "REDFT00 of one point");
    check(f.plan_r2r_1d(2, in.data(), out.data(), FFTW_REDFT00, FFTW_ESTIMATE), true, "REDFT00 of two points");
    check(f.plan_dft_1d(1, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE), true, "length 1");
    check(f.plan_dft_1d(0, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE), false, "length 0");
    const int eight[] = {8};
    check(f.plan_many_dft(1, eight, 0, cx(in), nullptr, 1, 8, cx(out), nullptr, 1, 8, FFTW_FORWARD, FFTW_ESTIMATE),
          true, "empty batch");
    check(f.plan_dft(0, eight, cx(in), cx(out), FFTW_FORWARD, FFTW_ESTIMATE), true, "rank 0");
  }
}

TYPED_TEST(Plans, WisdomIsAcceptedBothWays) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  char* w = a.export_wisdom_to_string();
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(a.import_wisdom_from_string(w), 1);
  EXPECT_EQ(a.import_wisdom_from_string("not wisdom"), 0);
  EXPECT_EQ(a.import_wisdom_from_string("(fftw-3.3.10 fftw_wisdom (unfinished"), 0);
  if (const api<R>* theirs = peer<R>()) {
    std::vector<R> in(2 * 32), out(2 * 32);
    auto p = theirs->plan_dft_1d(32, cx(in), cx(out), FFTW_FORWARD, FFTW_MEASURE);
    theirs->destroy_plan(p);
    char* tw = theirs->export_wisdom_to_string();
    EXPECT_EQ(a.import_wisdom_from_string(tw), 1) << tw;  // and we read FFTW's
    std::free(tw);
  }
  std::free(w);
}

TYPED_TEST(Plans, MemoryIsAligned) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  for (size_t bytes : {size_t(0), size_t(1), size_t(100), size_t(1) << 20}) {
    void* p = a.malloc(bytes);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0u);
    std::memset(p, 0, bytes);
    a.free(p);
  }
  auto* c = a.alloc_complex(10);
  R* r = a.alloc_real(10);
  ASSERT_NE(c, nullptr);
  ASSERT_NE(r, nullptr);
  a.free(c);
  a.free(r);
  EXPECT_EQ(a.alloc_real(SIZE_MAX / 2), nullptr);
}

}  // namespace

// The descriptions and counts a plan gives (double precision only: the
// calls are the same template).
TEST(PlanDescription, PrintFlopsThreads) {
  std::vector<double> in(2 * 256), out(2 * 256);
  fftw_plan_with_nthreads(2);
  EXPECT_EQ(fftw_planner_nthreads(), 2);
  fftw_plan p = fftw_plan_dft_1d(256, reinterpret_cast<fftw_complex*>(in.data()),
                                 reinterpret_cast<fftw_complex*>(out.data()), FFTW_FORWARD, FFTW_ESTIMATE);
  fftw_plan_with_nthreads(1);
  ASSERT_NE(p, nullptr);
  char* s = fftw_sprint_plan(p);
  ASSERT_NE(s, nullptr);
  EXPECT_NE(std::string(s).find("256"), std::string::npos) << s;
  std::free(s);
  double add = 0, mul = 0, fma = -1;
  fftw_flops(p, &add, &mul, &fma);
  EXPECT_GT(add, 256.0);
  EXPECT_GT(mul, 256.0);
  EXPECT_EQ(fma, 0.0);
  fftw_destroy_plan(p);
}

// A plan made after fftw_plan_with_nthreads(2) computes what a one-thread
// plan computes (a batch, which the descriptor may split over threads).
TEST(PlanThreads, TwoThreadPlanMatchesOneThreadPlan) {
  const int n = 256, howmany = 16;
  std::vector<double> in = random_reals<double>(2 * n * howmany, 21), one(in.size()), two(in.size());
  auto* x = reinterpret_cast<fftw_complex*>(in.data());
  fftw_plan p1 = fftw_plan_many_dft(1, &n, howmany, x, nullptr, 1, n, reinterpret_cast<fftw_complex*>(one.data()),
                                    nullptr, 1, n, FFTW_FORWARD, FFTW_ESTIMATE);
  EXPECT_EQ(fftw_init_threads(), 1);
  fftw_plan_with_nthreads(2);
  fftw_plan p2 = fftw_plan_many_dft(1, &n, howmany, x, nullptr, 1, n, reinterpret_cast<fftw_complex*>(two.data()),
                                    nullptr, 1, n, FFTW_FORWARD, FFTW_ESTIMATE);
  fftw_cleanup_threads();
  EXPECT_EQ(fftw_planner_nthreads(), 1);
  ASSERT_NE(p1, nullptr);
  ASSERT_NE(p2, nullptr);
  fftw_execute(p1);
  fftw_execute(p2);
  std::vector<size_t> all(one.size());
  std::iota(all.begin(), all.end(), 0);
  EXPECT_LE(relative_error(two, one, all), tolerance<double>(n));
  fftw_destroy_plan(p1);
  fftw_destroy_plan(p2);
}
