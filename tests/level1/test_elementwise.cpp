// Element-wise kernels (axpy, axpby, scal, rot, rotm, swap, copy) against
// the per-element expressions, over sizes around the block boundaries, every
// alignment of the written vector and negative increments.
#include <cmath>
#include <limits>

#include "l1_test.h"

namespace {
using namespace l1t;

const int sizes[] = {0, 1, 3, 4, 15, 16, 17, 31, 32, 33, 47, 64, 67, 1000};
const int incs[][2] = {{1, 1}, {2, 1}, {1, -1}, {-2, 3}};

// Position of element k of a vector walked with increment inc.
inline int pos(int n, int inc, int k) { return (inc < 0 ? (1 - n) * inc : 0) + k * inc; }

// Runs body(n, incx, incy, offset, x, y, x0, y0) on fresh random data, with
// x0/y0 copies of the inputs for the expected values.
template <class T, class Body>
void each_case(Body body) {
  std::mt19937 g(29);
  for (int n : sizes)
    for (const auto& inc : incs)
      for (int off = 0; off < 4; ++off) {
        const int lx = std::max(1, n * std::abs(inc[0])), ly = std::max(1, n * std::abs(inc[1]));
        // the last offset also moves complex y by one part, off the
        // alignment of its elements' size
        const int odd = off == 3 && zar::is_complex_v<T> ? sizeof(zar::real_t<T>) : 0;
        buffer<T> x(lx, off), y(ly, (off + 1) % 4, odd);
        fill(x.data(), lx, g), fill(y.data(), ly, g);
        std::vector<T> x0(x.data(), x.data() + lx), y0(y.data(), y.data() + ly);
        SCOPED_TRACE(::testing::Message() << "n=" << n << " incx=" << inc[0] << " incy=" << inc[1] << " off=" << off);
        body(n, inc[0], inc[1], x.data(), y.data(), x0, y0, g);
      }
}

template <class T>
class Elementwise : public ::testing::Test {};
using types = ::testing::Types<float, double, c32, c64>;
TYPED_TEST_SUITE(Elementwise, types);

template <class T>
struct kernels;
#define L1T_KERNELS(T, t, r)                                \
  template <>                                               \
  struct kernels<T> {                                       \
    static constexpr auto axpy = zar_blas_avx_x##t##axpy;   \
    static constexpr auto axpby = zar_blas_avx_x##t##axpby; \
    static constexpr auto scal = zar_blas_avx_x##t##scal;   \
    static constexpr auto rot = zar_blas_avx_x##r##rot;     \
    static constexpr auto swap = zar_blas_avx_x##t##swap;   \
    static constexpr auto copy = zar_blas_avx_x##t##copy;   \
  };
L1T_KERNELS(float, s, s)
L1T_KERNELS(double, d, d)
L1T_KERNELS(c32, c, cs)
L1T_KERNELS(c64, z, zd)

TYPED_TEST(Elementwise, AxpyIsOneProductAndOneSumPerElement) {
  using T = TypeParam;
  each_case<T>([](int n, int incx, int incy, T* x, T* y, auto& x0, auto& y0, auto& g) {
    const T alpha = random_elem<T>(g);
    kernels<T>::axpy(&n, &alpha, x, &incx, y, &incy);
    std::vector<T> expect = y0;
    for (int k = 0; k < n; ++k) expect[pos(n, incy, k)] = add(y0[pos(n, incy, k)], mul(alpha, x0[pos(n, incx, k)]));
    EXPECT_TRUE(bits_equal(y, expect.data(), expect.size()));
  });
}

TYPED_TEST(Elementwise, AxpyWithZeroAlphaIgnoresNaN) {
  using T = TypeParam;
  using R = zar::real_t<T>;
  const int n = 40, one = 1;
  std::vector<T> x(n), y(n);
  std::mt19937 g(1);
  fill(y.data(), n, g);
  for (auto& v : x) std::memset(&v, 0xff, sizeof v);  // NaN everywhere
  const std::vector<T> y0 = y;
  const T zero{};
  kernels<T>::axpy(&n, &zero, x.data(), &one, y.data(), &one);
  EXPECT_TRUE(bits_equal(y.data(), y0.data(), n));
  T nan_alpha{};
  std::memcpy(&nan_alpha, x.data(), sizeof(R));  // NaN in the real part: it proceeds
  kernels<T>::axpy(&n, &nan_alpha, x.data(), &one, y.data(), &one);
  EXPECT_TRUE(std::isnan(reinterpret_cast<R*>(y.data())[0]));
}

TYPED_TEST(Elementwise, Axpby) {
  using T = TypeParam;
  each_case<T>([](int n, int incx, int incy, T* x, T* y, auto& x0, auto& y0, auto& g) {
    const T alpha = random_elem<T>(g), beta = random_elem<T>(g);
    kernels<T>::axpby(&n, &alpha, x, &incx, &beta, y, &incy);
    std::vector<T> expect = y0;
    for (int k = 0; k < n; ++k)
      expect[pos(n, incy, k)] = add(mul(alpha, x0[pos(n, incx, k)]), mul(beta, y0[pos(n, incy, k)]));
    EXPECT_TRUE(bits_equal(y, expect.data(), expect.size()));
    // beta = 0 does not read y (NaN there is overwritten).
    std::memset(y, 0xff, sizeof(T) * expect.size());
    const T zero{};
    kernels<T>::axpby(&n, &alpha, x, &incx, &zero, y, &incy);
    for (int k = 0; k < n; ++k) expect[pos(n, incy, k)] = mul(alpha, x0[pos(n, incx, k)]);
    for (int k = 0; k < n; ++k) EXPECT_TRUE(same_bits(y[pos(n, incy, k)], expect[pos(n, incy, k)]));
  });
}

TYPED_TEST(Elementwise, ScalTakesTheMagnitudeOfTheIncrement) {
  using T = TypeParam;
  each_case<T>([](int n, int incx, int, T* x, T*, auto& x0, auto&, auto& g) {
    const T alpha = random_elem<T>(g);
    kernels<T>::scal(&n, &alpha, x, &incx);
    std::vector<T> expect = x0;
    for (int k = 0; k < n; ++k) expect[k * std::abs(incx)] = mul(alpha, x0[k * std::abs(incx)]);
    EXPECT_TRUE(bits_equal(x, expect.data(), expect.size()));
  });
}

TYPED_TEST(Elementwise, ScalByZeroTurnsInfinityIntoNaN) {
  using T = TypeParam;
  using R = zar::real_t<T>;
  for (int n : {1, 20, 40}) {
    std::vector<T> x(n);
    reinterpret_cast<R*>(x.data())[n - 1] = std::numeric_limits<R>::infinity();
    const T zero{};
    const int one = 1;
    kernels<T>::scal(&n, &zero, x.data(), &one);
    EXPECT_TRUE(std::isnan(reinterpret_cast<R*>(x.data())[n - 1]));
    if (n > 1) {
      EXPECT_EQ(reinterpret_cast<R*>(x.data())[0], R(0)) << "finite elements become zero";
    }
  }
}

TYPED_TEST(Elementwise, RotSwapCopy) {
  using T = TypeParam;
  using R = zar::real_t<T>;
  each_case<T>([](int n, int incx, int incy, T* x, T* y, auto& x0, auto& y0, auto& g) {
    const R c = rnd<R>(g), s = rnd<R>(g);
    kernels<T>::rot(&n, x, &incx, y, &incy, &c, &s);
    std::vector<T> ex = x0, ey = y0;
    const int parts = zar::is_complex_v<T> ? 2 : 1;
    for (int k = 0; k < n; ++k)
      for (int p = 0; p < parts; ++p) {
        const R xv = reinterpret_cast<const R*>(&x0[pos(n, incx, k)])[p];
        const R yv = reinterpret_cast<const R*>(&y0[pos(n, incy, k)])[p];
        reinterpret_cast<R*>(&ex[pos(n, incx, k)])[p] = c * xv + s * yv;
        reinterpret_cast<R*>(&ey[pos(n, incy, k)])[p] = c * yv - s * xv;
      }
    EXPECT_TRUE(bits_equal(x, ex.data(), ex.size()));
    EXPECT_TRUE(bits_equal(y, ey.data(), ey.size()));
    kernels<T>::swap(&n, x, &incx, y, &incy);
    for (int k = 0; k < n; ++k) std::swap(ex[pos(n, incx, k)], ey[pos(n, incy, k)]);
    EXPECT_TRUE(bits_equal(x, ex.data(), ex.size()));
    EXPECT_TRUE(bits_equal(y, ey.data(), ey.size()));
    kernels<T>::copy(&n, x, &incx, y, &incy);
    for (int k = 0; k < n; ++k) ey[pos(n, incy, k)] = ex[pos(n, incx, k)];
    EXPECT_TRUE(bits_equal(y, ey.data(), ey.size()));
  });
}

// rotm: each flag with its published expressions; -2 leaves x and y alone.
template <class R>
void check_rotm(void (*rotm)(const int*, R*, const int*, R*, const int*, const R*)) {
  std::mt19937 g(31);
  for (R flag : {R(-2), R(-1), R(0), R(1)})
    for (int n : {0, 1, 9, 33})
      for (const auto& inc : incs) {
        const R p[5] = {flag, rnd<R>(g), rnd<R>(g), rnd<R>(g), rnd<R>(g)};
        std::vector<R> x(std::max(1, n * std::abs(inc[0]))), y(std::max(1, n * std::abs(inc[1])));
        fill(x.data(), x.size(), g), fill(y.data(), y.size(), g);
        std::vector<R> ex = x, ey = y;
        for (int k = 0; k < n && flag != -2; ++k) {
          const R w = x[pos(n, inc[0], k)], z = y[pos(n, inc[1], k)];
          R& xo = ex[pos(n, inc[0], k)];
          R& yo = ey[pos(n, inc[1], k)];
          if (flag == -1) xo = w * p[1] + z * p[3], yo = w * p[2] + z * p[4];
          if (flag == 0) xo = w + z * p[3], yo = w * p[2] + z;
          if (flag == 1) xo = w * p[1] + z, yo = -w + p[4] * z;
        }
        rotm(&n, x.data(), &inc[0], y.data(), &inc[1], p);
        EXPECT_TRUE(bits_equal(x.data(), ex.data(), x.size())) << "flag " << flag << " n " << n;
        EXPECT_TRUE(bits_equal(y.data(), ey.data(), y.size())) << "flag " << flag << " n " << n;
      }
}

TEST(Rotm, EveryFlag) {
  check_rotm<double>(zar_blas_avx_xdrotm);
  check_rotm<float>(zar_blas_avx_xsrotm);
}

TEST(Crot, ComplexSineConjugatedForY) {
  std::mt19937 g(37);
  const int n = 21, one = 1;
  std::vector<c64> x(n), y(n);
  fill(x.data(), n, g), fill(y.data(), n, g);
  const double c = 0.6;
  const c64 s{0.48, 0.64};
  std::vector<c64> ex(n), ey(n);
  for (int k = 0; k < n; ++k) {
    ex[k] = add(c64{c * x[k].re, c * x[k].im}, mul(s, y[k]));
    const c64 t = mul(c64{s.re, -s.im}, x[k]);
    ey[k] = c64{c * y[k].re - t.re, c * y[k].im - t.im};
  }
  zar_blas_avx_xzrot(&n, x.data(), &one, y.data(), &one, &c, &s);
  EXPECT_TRUE(bits_equal(x.data(), ex.data(), n));
  EXPECT_TRUE(bits_equal(y.data(), ey.data(), n));
}

}  // namespace
