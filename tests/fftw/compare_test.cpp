// zar's FFTW interface against Debian's FFTW on the same problems: complex
// transforms of rank 1 to 3, real-to-complex and complex-to-real ones in and
// out of place, batches with strides and embeddings, multi-dimensional
// real-to-real transforms, in both precisions.
#include <gtest/gtest.h>

#include "layout.h"

using namespace fftw_test;

namespace {

template <class R> class Compare : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Compare, Precisions);

template <class R> void compare(kind k, const shape& s, unsigned seed) {
  const api<R>* theirs = peer<R>();
  if (!theirs) GTEST_SKIP() << "Debian's FFTW is not installed";
  SCOPED_TRACE(s.name());
  const std::vector<R> input = make_input(*theirs, k, s, seed);
  bool ok_ours = false, ok_peer = false;
  const buffers<R> a = run_many(ours<R>(), k, s, input, FFTW_ESTIMATE, ok_ours);
  const buffers<R> b = run_many(*theirs, k, s, input, FFTW_ESTIMATE, ok_peer);
  ASSERT_EQ(ok_ours, ok_peer) << "one library planned the problem, the other did not";
  if (!ok_ours) return;
  double total = 1;
  for (int x : s.n) total *= x;
  const std::vector<size_t> at = output_side(k, s).reals(s.howmany);
  EXPECT_LE(relative_error(a.out, b.out, at), tolerance<R>(total));
  // Out of place, the input is left as it was (c2r included: both keep it
  // for these problems, and FFTW_PRESERVE_INPUT is tested separately).
  if (!s.inplace && k != kind::c2r) {
    EXPECT_EQ(a.in, input);
  }
}

const int lengths_1d[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 15, 16, 17, 31, 32, 64, 100, 127, 128, 243, 256, 1000, 1009,
                          1024, 2520, 4096};

TYPED_TEST(Compare, ComplexOneDimension) {
  unsigned seed = 1;
  for (int n : lengths_1d)
    for (bool inplace : {false, true})
      for (int sign : {FFTW_FORWARD, FFTW_BACKWARD}) {
        shape s;
        s.n = {n};
        s.inplace = inplace;
        s.sign = sign;
        compare<TypeParam>(kind::c2c, s, seed++);
      }
}

TYPED_TEST(Compare, ComplexSeveralDimensions) {
  const std::vector<std::vector<int>> sizes = {{8, 8}, {5, 12}, {16, 9}, {1, 7}, {7, 1}, {4, 6, 5}, {8, 8, 8}, {2, 3, 1}, {3, 1, 4, 5}};
  unsigned seed = 100;
  for (const auto& n : sizes)
    for (bool inplace : {false, true})
      for (int sign : {FFTW_FORWARD, FFTW_BACKWARD}) {
        shape s;
        s.n = n;
        s.inplace = inplace;
        s.sign = sign;
        compare<TypeParam>(kind::c2c, s, seed++);
      }
}

// Batches with strides, distances and embeddings (the advanced interface).
std::vector<shape> batched_shapes() {
  std::vector<shape> v;
  shape s;
  s.n = {12};
  s.howmany = 3;
  s.istride = 2;
  s.idist = 30;
  s.ostride = 3;
  s.odist = 40;
  v.push_back(s);
  s = shape();
  s.n = {16};  // interleaved batch: stride = howmany, distance 1
  s.howmany = 5;
  s.istride = 5;
  s.idist = 1;
  s.ostride = 5;
  s.odist = 1;
  v.push_back(s);
  s = shape();
  s.n = {8, 6};
  s.howmany = 4;
  s.inembed = {10, 7};
  s.idist = 75;
  s.onembed = {9, 8};
  s.ostride = 2;
  s.odist = 150;
  v.push_back(s);
  s = shape();
  s.n = {6, 10};
  s.howmany = 3;
  s.istride = 2;
  s.ostride = 2;
  s.inplace = true;
  v.push_back(s);
  s = shape();
  s.n = {4, 3, 5};
  s.howmany = 2;
  s.inembed = {5, 4, 6};
  s.onembed = {4, 3, 5};
  v.push_back(s);
  return v;
}

TYPED_TEST(Compare, ComplexBatches) {
  unsigned seed = 200;
  for (shape s : batched_shapes())
    for (int sign : {FFTW_FORWARD, FFTW_BACKWARD}) {
      s.sign = sign;
      compare<TypeParam>(kind::c2c, s, seed++);
    }
}

const std::vector<std::vector<int>> real_sizes = {{1}, {2}, {3}, {4}, {5}, {8}, {15}, {16}, {17}, {64}, {100}, {1000}, {1024},
                                                  {6, 8}, {5, 7}, {1, 9}, {9, 1}, {4, 5, 6}, {3, 4, 2}};

TYPED_TEST(Compare, RealToComplex) {
  unsigned seed = 300;
  for (const auto& n : real_sizes)
    for (bool inplace : {false, true}) {
      shape s;
      s.n = n;
      s.inplace = inplace;
      compare<TypeParam>(kind::r2c, s, seed++);
    }
}

TYPED_TEST(Compare, ComplexToReal) {
  unsigned seed = 400;
  for (const auto& n : real_sizes)
    for (bool inplace : {false, true}) {
      shape s;
      s.n = n;
      s.inplace = inplace;
      compare<TypeParam>(kind::c2r, s, seed++);
    }
}

TYPED_TEST(Compare, RealBatches) {
  unsigned seed = 500;
  std::vector<shape> v;
  shape s;
  s.n = {10};
  s.howmany = 3;
  s.istride = 2;
  s.idist = 25;
  s.odist = 7;
  v.push_back(s);
  s = shape();
  s.n = {9};  // interleaved
  s.howmany = 4;
  s.istride = 4;
  s.idist = 1;
  s.ostride = 4;
  s.odist = 1;
  v.push_back(s);
  s = shape();
  s.n = {6, 8};
  s.howmany = 3;
  s.inplace = true;  // padded rows, consecutive transforms
  v.push_back(s);
  s = shape();
  s.n = {5, 6};
  s.howmany = 2;
  s.inembed = {7, 9};
  s.onembed = {6, 5};
  s.ostride = 1;
  v.push_back(s);
  for (const shape& x : v) {
    compare<TypeParam>(kind::r2c, x, seed++);
    shape y = x;  // the same layout read backwards: the complex side is the input
    std::swap(y.istride, y.ostride);
    std::swap(y.idist, y.odist);
    std::swap(y.inembed, y.onembed);
    compare<TypeParam>(kind::c2r, y, seed++);
  }
}

// Several dimensions of mixed kinds, batches and strides, in and out of
// place; each kind is also checked against its definition (r2r_test.cpp).
TYPED_TEST(Compare, RealToRealSeveralDimensions) {
  unsigned seed = 600;
  const std::vector<std::pair<std::vector<int>, std::vector<int>>> cases = {
      {{8, 6}, {FFTW_REDFT10, FFTW_RODFT00}},
      {{5, 7}, {FFTW_R2HC, FFTW_REDFT11}},
      {{4, 9}, {FFTW_HC2R, FFTW_RODFT11}},
      {{6, 5, 4}, {FFTW_REDFT01, FFTW_RODFT10, FFTW_DHT}},
      {{3, 4, 5}, {FFTW_REDFT00, FFTW_RODFT01, FFTW_REDFT10}}};
  for (const auto& [n, kinds] : cases)
    for (bool inplace : {false, true}) {
      shape s;
      s.n = n;
      s.kinds = kinds;
      s.inplace = inplace;
      compare<TypeParam>(kind::r2r, s, seed++);
      s.howmany = 3;
      s.istride = 2;
      s.ostride = 2;
      compare<TypeParam>(kind::r2r, s, seed++);
    }
}

}  // namespace
