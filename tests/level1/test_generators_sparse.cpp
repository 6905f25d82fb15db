// Rotation generators, sparse-vector kernels and the public front ends
// (published quick returns, 0-based CBLAS indices, complex function results).
#include <cmath>

#include "cblas.h"
#include "l1_test.h"
#include "zar/blas.h"

namespace {
using namespace l1t;

// ---- rotg: [c s; -s c] (a, b) = (r, 0), r signed like the larger of a and
// b, and z encodes (c, s).
struct rotg_case {
  double a, b;
};
class Rotg : public ::testing::TestWithParam<rotg_case> {};
TEST_P(Rotg, RotatesOntoTheFirstAxis) {
  const auto [a0, b0] = GetParam();
  double a = a0, b = b0, c, s;
  drotg_(&a, &b, &c, &s);
  const double r = a, z = b;
  if (a0 == 0 && b0 == 0) {
    EXPECT_EQ(c, 1);
    EXPECT_EQ(s, 0);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(z, 0);
    return;
  }
  EXPECT_NEAR(c * c + s * s, 1, 1e-15);
  EXPECT_NEAR(c * a0 + s * b0, r, 1e-15 * std::fabs(r));
  EXPECT_NEAR(-s * a0 + c * b0, 0, 1e-15 * std::fabs(r));
  const double roe = std::fabs(a0) > std::fabs(b0) ? a0 : b0;
  EXPECT_EQ(std::signbit(r), std::signbit(roe));
  if (std::fabs(a0) > std::fabs(b0))
    EXPECT_EQ(z, s);
  else if (c != 0)
    EXPECT_EQ(z, 1 / c);
  else
    EXPECT_EQ(z, 1);
  if (std::fabs(a0) + std::fabs(b0) > 1e30 || std::fabs(a0) + std::fabs(b0) < 1e-30) return;  // not a float pair
  float af = float(a0), bf = float(b0), cf, sf;
  srotg_(&af, &bf, &cf, &sf);
  EXPECT_NEAR(cf, c, 1e-6);
  EXPECT_NEAR(sf, s, 1e-6);
}
INSTANTIATE_TEST_SUITE_P(Signs, Rotg,
                         ::testing::Values(rotg_case{3, 4}, rotg_case{-3, 4}, rotg_case{3, -4}, rotg_case{-3, -4},
                                           rotg_case{4, 3}, rotg_case{-4, 3}, rotg_case{4, -3}, rotg_case{-4, -3},
                                           rotg_case{0, 2}, rotg_case{0, -2}, rotg_case{2, 0}, rotg_case{-2, 0},
                                           rotg_case{0, 0}, rotg_case{1e300, 1e300}, rotg_case{1e-300, 3e-300}));

TEST(Crotg, RotatesOntoTheFirstAxis) {
  for (auto [a0, b0] : {std::pair{c64{3, 4}, c64{1, -2}}, {c64{0, 0}, c64{1, 2}}, {c64{-1, 0.5}, c64{0, 0}}}) {
    c64 a = a0, b = b0, s;
    double c;
    zrotg_(&a, &b, &c, &s);
    // c a0 + s b0 = r and -conj(s) a0 + c b0 = 0
    const c64 r = add(c64{c * a0.re, c * a0.im}, mul(s, b0));
    const c64 t = add(mul(c64{-s.re, s.im}, a0), c64{c * b0.re, c * b0.im});
    EXPECT_NEAR(r.re, a.re, 1e-14);
    EXPECT_NEAR(r.im, a.im, 1e-14);
    EXPECT_NEAR(t.re, 0, 1e-14);
    EXPECT_NEAR(t.im, 0, 1e-14);
  }
}

// ---- rotmg: H (x1, y1) = (x1', 0) and H^T diag(d1', d2') H = diag(d1, d2).
struct rotmg_case {
  const char* name;
  double d1, d2, x1, y1, flag;
};
class Rotmg : public ::testing::TestWithParam<rotmg_case> {};
TEST_P(Rotmg, FlagAndInvariants) {
  const auto& k = GetParam();
  double d1 = k.d1, d2 = k.d2, x1 = k.x1, p[5] = {9, 9, 9, 9, 9};
  drotmg_(&d1, &d2, &x1, &k.y1, p);
  EXPECT_EQ(p[0], k.flag);
  if (k.flag == -2) {  // nothing but the flag changes
    EXPECT_EQ(d1, k.d1);
    EXPECT_EQ(d2, k.d2);
    EXPECT_EQ(x1, k.x1);
    EXPECT_EQ(p[1], 9);
    return;
  }
  if (k.d1 < 0) {
    EXPECT_EQ(d1, 0);
    EXPECT_EQ(d2, 0);
    EXPECT_EQ(x1, 0);
    for (int i = 1; i < 5; ++i) EXPECT_EQ(p[i], 0);
    return;
  }
  double h11 = p[1], h21 = p[2], h12 = p[3], h22 = p[4];
  if (k.flag == 0) h11 = h22 = 1;
  if (k.flag == 1) h12 = 1, h21 = -1;
  EXPECT_NEAR(h21 * k.x1 + h22 * k.y1, 0, 1e-12 * (std::fabs(h21 * k.x1) + std::fabs(h22 * k.y1)));
  EXPECT_NEAR((h11 * k.x1 + h12 * k.y1) / x1, 1, 1e-12);
  const double a = d1 * h11 * h11 + d2 * h21 * h21, b = d1 * h12 * h12 + d2 * h22 * h22;
  const double off = d1 * h11 * h12 + d2 * h21 * h22;
  EXPECT_NEAR(a / k.d1, 1, 1e-12);
  EXPECT_NEAR(b / k.d2, 1, 1e-12);
  EXPECT_NEAR(off / std::sqrt(k.d1 * k.d2), 0, 1e-12);
  // rescaled into range
  EXPECT_TRUE(d1 == 0 || (d1 > 0x1p-24 && d1 < 0x1p24)) << d1;
  EXPECT_TRUE(d2 == 0 || (std::fabs(d2) > 0x1p-24 && std::fabs(d2) < 0x1p24)) << d2;
}
INSTANTIATE_TEST_SUITE_P(
    Flags, Rotmg,
    ::testing::Values(rotmg_case{"NoRotation", 2, 0, 1, 3, -2}, rotmg_case{"ZeroY", 2, 3, 1, 0, -2},
                      rotmg_case{"NegativeD1", -1, 2, 3, 4, -1}, rotmg_case{"DiagonalOnes", 4, 1, 3, 1, 0},
                      rotmg_case{"AntiDiagonalOnes", 1, 4, 1, 3, 1}, rotmg_case{"RescaleTinyD1", 1e-9, 1, 1e-3, 1, -1},
                      rotmg_case{"RescaleHugeD1", 1e9, 1, 1e3, 1e-6, -1},
                      rotmg_case{"RescaleTinyD2", 1, 1e-12, 1, 1e-3, -1},
                      rotmg_case{"RescaleHugeD2", 1, 1e12, 1e7, 1, -1}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- sparse vectors
TEST(Sparse, RepeatedIndicesFollowTheOrderOfIndx) {
  const int nz = 5, indx[5] = {3, 1, 3, 5, 3};
  const double x[5] = {1, 2, 4, 8, 16};
  double y[6] = {10, 20, 30, 40, 50, 60};
  const double alpha = 0.5;
  zar_blas_avx_daxpyi(&nz, &alpha, x, indx, y);
  const double ya[6] = {11, 20, 40.5, 40, 54, 60};
  EXPECT_TRUE(bits_equal(y, ya, 6));
  EXPECT_EQ(zar_blas_avx_ddoti(&nz, x, indx, y), 40.5 + 2 * 11 + 4 * 40.5 + 8 * 54 + 16 * 40.5);
  double g[5];
  zar_blas_avx_dgthrz(&nz, y, g, indx);
  const double gz[5] = {40.5, 11, 0, 54, 0}, yz[6] = {0, 20, 0, 40, 0, 60};
  EXPECT_TRUE(bits_equal(g, gz, 5));
  EXPECT_TRUE(bits_equal(y, yz, 6));
  zar_blas_avx_dsctr(&nz, x, indx, y);  // the last store to index 3 wins
  EXPECT_EQ(y[2], 16);
  EXPECT_EQ(y[0], 2);
  EXPECT_EQ(y[4], 8);
  const double c = 0.6, s = 0.8;
  double xr[2] = {1, 2}, yr[3] = {3, 4, 5};
  const int two = 2, ir[2] = {3, 3};
  zar_blas_avx_droti(&two, xr, ir, yr, &c, &s);
  // second pair sees the first update of y[2]
  const double y1 = c * 5 - s * 1, x0 = c * 1 + s * 5, x1 = c * 2 + s * y1, y2 = c * y1 - s * 2;
  EXPECT_EQ(xr[0], x0);
  EXPECT_EQ(xr[1], x1);
  EXPECT_EQ(yr[2], y2);
}

TEST(Sparse, CblasIndicesCountFromZero) {
  const int indx[3] = {0, 2, 0};
  const c64 x[3] = {{1, 1}, {2, 0}, {0, 3}};
  c64 y[3] = {{1, 0}, {5, 5}, {0, 1}};
  c64 dc, du;
  cblas_zdotci_sub(3, x, indx, y, &dc);
  cblas_zdotui_sub(3, x, indx, y, &du);
  // conj(x) y summed in order: (1-i)(1) + 2 i + (-3i)(1)
  EXPECT_EQ(dc.re, 1);
  EXPECT_EQ(dc.im, -1 + 2 - 3);
  EXPECT_EQ(du.re, 1);
  EXPECT_EQ(du.im, 1 + 2 + 3);
  const c64 a{0, 1};
  cblas_zaxpyi(3, &a, x, indx, y);  // y0 += i(1+i) + i(3i) = -1+i - 3
  EXPECT_EQ(y[0].re, 1 - 1 - 3);
  EXPECT_EQ(y[0].im, 1);
  float ys[3] = {1, 2, 3}, xs[3];
  cblas_sgthrz(3, ys, xs, indx);
  EXPECT_EQ(xs[0], 1);
  EXPECT_EQ(xs[1], 3);
  EXPECT_EQ(xs[2], 0);
}

// ---- front ends
TEST(Front, PublishedQuickReturns) {
  double x[4] = {1, -2, 3, -4};
  const double two = 2;
  for (int inc : {0, -1}) {
    const int n = 2;
    dscal_(&n, &two, x, &inc);
    EXPECT_EQ(dasum_(&n, x, &inc), 0);
  }
  EXPECT_EQ(x[0], 1);
  cblas_dscal(2, 2.0, x, -1);
  EXPECT_EQ(x[0], 1);
  // The kernels themselves take |incx|.
  const int n = 2, m2 = -2;
  EXPECT_EQ(zar_blas_dasum(&n, x, &m2), 4);
  zar_blas_dscal(&n, &two, x, &m2);
  EXPECT_EQ(x[2], 6);
}

TEST(Front, ComplexFunctionsAndDotSub) {
  const c32 x[2] = {{1, 2}, {3, -1}}, y[2] = {{2, 0.5}, {-1, 1}};
  const int n = 2, one = 1;
  const zar_fcomplex u = cdotu_(&n, x, &one, y, &one), c = cdotc_(&n, x, &one, y, &one);
  c32 us, cs;
  cblas_cdotu_sub(n, x, one, y, one, &us);
  cblas_cdotc_sub(n, x, one, y, one, &cs);
  EXPECT_EQ(__real__ u, us.re);
  EXPECT_EQ(__imag__ u, us.im);
  EXPECT_EQ(__real__ c, cs.re);
  EXPECT_EQ(__imag__ c, cs.im);
  EXPECT_EQ(us.re, (1 * 2 - 2 * 0.5f) + (3 * -1 - -1 * 1));
  EXPECT_EQ(cs.im, (1 * 0.5f - 2 * 2) + (3 * 1 - -1 * -1));
  const c64 zx[1] = {{3, -4}};
  EXPECT_EQ(dcabs1_(zx), 7);
  EXPECT_EQ(cblas_dcabs1(zx), 7);
  EXPECT_EQ(cblas_dznrm2(1, zx, 1), 5);
  const zar_dcomplex zd = zdotc_(&one, zx, &one, zx, &one);
  EXPECT_EQ(__real__ zd, 25);
  EXPECT_EQ(__imag__ zd, 0);
}

}  // namespace

namespace {
using namespace l1t;

// Long vectors are divided among threads by the front ends; every element is
// computed alone, so the result must be the one of a single kernel call.
TEST(Front, ThreadedPartsGiveTheSameBits) {
  const int n = 600001;
  zar_set_num_threads(2);
  std::mt19937 g(41);
  for (auto [incx, incy] : {std::pair{1, 1}, {-2, 3}, {2, -1}}) {
    const int lx = n * std::abs(incx), ly = n * std::abs(incy);
    std::vector<double> x(lx), y(ly);
    fill(x.data(), lx, g), fill(y.data(), ly, g);
    std::vector<double> xk = x, yk = y;
    const double alpha = 0.75, c = 0.6, s = 0.8;
    zar_blas_avx_xdaxpy(&n, &alpha, xk.data(), &incx, yk.data(), &incy);
    daxpy_(&n, &alpha, x.data(), &incx, y.data(), &incy);
    EXPECT_TRUE(bits_equal(y.data(), yk.data(), ly)) << "daxpy " << incx << " " << incy;
    zar_blas_avx_xdrot(&n, xk.data(), &incx, yk.data(), &incy, &c, &s);
    drot_(&n, x.data(), &incx, y.data(), &incy, &c, &s);
    EXPECT_TRUE(bits_equal(x.data(), xk.data(), lx)) << "drot x";
    EXPECT_TRUE(bits_equal(y.data(), yk.data(), ly)) << "drot y";
    const int step = std::abs(incx);
    zar_blas_avx_xdscal(&n, &alpha, xk.data(), &step);
    dscal_(&n, &alpha, x.data(), &step);
    EXPECT_TRUE(bits_equal(x.data(), xk.data(), lx)) << "dscal";
    zar_blas_avx_xdcopy(&n, xk.data(), &incx, yk.data(), &incy);
    dcopy_(&n, x.data(), &incx, y.data(), &incy);
    EXPECT_TRUE(bits_equal(y.data(), yk.data(), ly)) << "dcopy";
  }
  std::vector<c64> z(n), zk;
  fill(z.data(), n, g);
  zk = z;
  const c64 a{0.5, -1.5};
  const int one = 1;
  zar_blas_avx_xzscal(&n, &a, zk.data(), &one);
  cblas_zscal(n, &a, z.data(), 1);
  EXPECT_TRUE(bits_equal(z.data(), zk.data(), n));
  zar_set_num_threads(0);
}

}  // namespace
