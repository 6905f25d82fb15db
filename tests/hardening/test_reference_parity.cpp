// Behaviour at the edges compared with Debian's reference BLAS, loaded by
// path: the same arguments must give the same bits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "reference_blas.h"
#include "zar/blas.h"

namespace {

template <class R> using rotm_fn = void (*)(const int*, R*, const int*, R*, const int*, const R*);

// The i386 reference evaluates in x87 extended precision; the data are
// small multiples of 1/4, so every product and sum is exact in both and the
// comparison is bit for bit: a difference means another form was chosen.
template <class R> void rotm_matches_reference(rotm_fn<R> ours, const char* name) {
  zar_test::ReferenceBlas ref;
  if (!ref.available()) GTEST_SKIP() << "reference BLAS not loadable in this build";
  const auto theirs = ref.sym<rotm_fn<R>>(name);
  ASSERT_NE(theirs, nullptr);
  const R nan = std::numeric_limits<R>::quiet_NaN();
  std::mt19937 g(3);
  std::uniform_int_distribution<int> q(-16, 16);
  auto u = [&](std::mt19937& g) { return R(q(g)) / R(4); };
  const int n = 7;
  const int incs[][2] = {{1, 1}, {2, 2}, {2, -1}, {-1, 3}, {-2, -2}};
  for (R flag : {R(-3), R(-0.5), R(0.5), R(2), R(-2), R(-1), R(0), R(1), nan, R(-1e30)}) {
    const R param[5] = {flag, u(g), u(g), u(g), u(g)};
    for (const auto& inc : incs) {
      std::vector<R> x(n * 3), y(n * 3);
      for (R& v : x) v = u(g);
      for (R& v : y) v = u(g);
      auto x2 = x, y2 = y;
      ours(&n, x.data(), &inc[0], y.data(), &inc[1], param);
      theirs(&n, x2.data(), &inc[0], y2.data(), &inc[1], param);
      EXPECT_EQ(std::memcmp(x.data(), x2.data(), x.size() * sizeof(R)), 0) << name << " flag " << flag << " incx " << inc[0];
      EXPECT_EQ(std::memcmp(y.data(), y2.data(), y.size() * sizeof(R)), 0) << name << " flag " << flag << " incy " << inc[1];
    }
  }
}

TEST(ReferenceParity, RotmEveryFlag) {
  rotm_matches_reference<double>(drotm_, "drotm_");
  rotm_matches_reference<float>(srotm_, "srotm_");
}

// scal multiplies by a zero alpha, so NaN and infinity give NaN, as the
// reference does.
TEST(ReferenceParity, ScalByZeroKeepsNaN) {
  zar_test::ReferenceBlas ref;
  if (!ref.available()) GTEST_SKIP() << "reference BLAS not loadable in this build";
  using scal_fn = void (*)(const int*, const double*, double*, const int*);
  const auto theirs = ref.sym<scal_fn>("dscal_");
  ASSERT_NE(theirs, nullptr);
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> x = {1, nan, -inf, 0, inf, -2}, x2 = x;
  const int n = 6, one = 1;
  const double zero = 0;
  dscal_(&n, &zero, x.data(), &one);
  theirs(&n, &zero, x2.data(), &one);
  for (int i = 0; i < n; ++i) {
    EXPECT_EQ(std::isnan(x[i]), std::isnan(x2[i])) << i;
    EXPECT_TRUE(std::isnan(x[i]) == (i == 1 || i == 2 || i == 4)) << i;
  }
}

// A listed difference (README, "Differences from the reference BLAS"): the
// triangular solves divide by the diagonal in every column; the reference
// passes over a column whose x_j is exactly zero. With a zero on the
// diagonal and a zero in the matching entry, we give NaN where the
// reference gives 0.
TEST(ReferenceDifferences, TriangularSolveDividesInEveryColumn) {
  // Upper triangular [[2, 1], [0, 0]], right-hand side (4, 0).
  const double a[4] = {2, 0, 1, 0};
  const int n = 2, lda = 2, one = 1;
  double ours[2] = {4, 0};
  dtrsv_("U", "N", "N", &n, a, &lda, ours, &one);
  EXPECT_TRUE(std::isnan(ours[1]));
  EXPECT_TRUE(std::isnan(ours[0]));
  zar_test::ReferenceBlas ref;
  if (!ref.available()) return;
  using trsv_fn = void (*)(const char*, const char*, const char*, const int*, const double*, const int*, double*,
                           const int*, int, int, int);
  const auto theirs = ref.sym<trsv_fn>("dtrsv_");
  ASSERT_NE(theirs, nullptr);
  double refx[2] = {4, 0};
  theirs("U", "N", "N", &n, a, &lda, refx, &one, 1, 1, 1);
  EXPECT_EQ(refx[1], 0.0);
  EXPECT_EQ(refx[0], 2.0);
}

}  // namespace
