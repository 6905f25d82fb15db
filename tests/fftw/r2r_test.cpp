// Every real-to-real kind against its definition, evaluated directly in
// long double, for n = 1 .. 64 and larger even and odd lengths, in both
// precisions, out of place and in place.
#include <gtest/gtest.h>

#include "peer.h"

using namespace fftw_test;

namespace {

using ld = long double;
const ld pi = 3.141592653589793238462643383279502884L;

// cos and sin of pi p / q for integer p, from one table of 2q entries
// computed in long double (the angle reduced exactly, in integers).
struct trig {
  explicit trig(long q) : q(q), c(2 * q), s(2 * q) {
    for (long m = 0; m < 2 * q; ++m) {
      c[m] = std::cos(pi * m / q);
      s[m] = std::sin(pi * m / q);
    }
  }
  ld cos(long p) const { return c[p % (2 * q)]; }
  ld sin(long p) const { return s[p % (2 * q)]; }
  long q;
  std::vector<ld> c, s;
};

// FFTW's definitions of the eleven kinds (unnormalised), each angle written
// as pi p / q.
std::vector<ld> definition(int kind, const std::vector<ld>& x) {
  const long n = static_cast<long>(x.size());
  std::vector<ld> y(n, 0);
  const long q = kind <= FFTW_DHT ? n
                 : kind == FFTW_REDFT00 ? n - 1
                 : kind == FFTW_RODFT00 ? n + 1
                 : kind == FFTW_REDFT11 || kind == FFTW_RODFT11 ? 4 * n
                                                                  : 2 * n;
  const trig t(q);
  for (long k = 0; k < n; ++k) {
    ld s = 0;
    switch (kind) {
      case FFTW_R2HC:
        if (k <= n / 2)
          for (long j = 0; j < n; ++j) s += x[j] * t.cos(2 * j * k);
        else
          for (long j = 0; j < n; ++j) s -= x[j] * t.sin(2 * j * (n - k));
        break;
      case FFTW_HC2R:
        s = x[0];
        for (long m = 1; 2 * m < n; ++m) s += 2 * (x[m] * t.cos(2 * k * m) - x[n - m] * t.sin(2 * k * m));
        if (n % 2 == 0) s += x[n / 2] * (k % 2 ? -1 : 1);
        break;
      case FFTW_DHT:
        for (long j = 0; j < n; ++j) s += x[j] * (t.cos(2 * j * k) + t.sin(2 * j * k));
        break;
      case FFTW_REDFT00:
        s = x[0] + (k % 2 ? -1 : 1) * x[n - 1];
        for (long j = 1; j < n - 1; ++j) s += 2 * x[j] * t.cos(j * k);
        break;
      case FFTW_REDFT10:
        for (long j = 0; j < n; ++j) s += 2 * x[j] * t.cos((2 * j + 1) * k);
        break;
      case FFTW_REDFT01:
        s = x[0];
        for (long j = 1; j < n; ++j) s += 2 * x[j] * t.cos(j * (2 * k + 1));
        break;
      case FFTW_REDFT11:
        for (long j = 0; j < n; ++j) s += 2 * x[j] * t.cos((2 * j + 1) * (2 * k + 1));
        break;
      case FFTW_RODFT00:
        for (long j = 0; j < n; ++j) s += 2 * x[j] * t.sin((j + 1) * (k + 1));
        break;
      case FFTW_RODFT10:
        for (long j = 0; j < n; ++j) s += 2 * x[j] * t.sin((2 * j + 1) * (k + 1));
        break;
      case FFTW_RODFT01:
        s = (k % 2 ? -1 : 1) * x[n - 1];
        for (long j = 0; j < n - 1; ++j) s += 2 * x[j] * t.sin((j + 1) * (2 * k + 1));
        break;
      case FFTW_RODFT11:
        for (long j = 0; j < n; ++j) s += 2 * x[j] * t.sin((2 * j + 1) * (2 * k + 1));
        break;
    }
    y[k] = s;
  }
  return y;
}

template <class R> class RealToReal : public ::testing::Test {};
using Precisions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(RealToReal, Precisions);

std::vector<int> lengths() {
  std::vector<int> v;
  for (int n = 1; n <= 64; ++n) v.push_back(n);
  for (int n : {100, 101, 255, 256, 1000, 1023, 1024}) v.push_back(n);
  return v;
}

TYPED_TEST(RealToReal, EveryKindMatchesItsDefinition) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  unsigned seed = 1;
  for (int kind = FFTW_R2HC; kind <= FFTW_RODFT11; ++kind)
    for (int n : lengths())
      for (bool inplace : {false, true}) {
        SCOPED_TRACE("kind " + std::to_string(kind) + " n " + std::to_string(n) + (inplace ? " in place" : ""));
        std::vector<R> in = random_reals<R>(n, seed++), out(n, R(9));
        R* o = inplace ? in.data() : out.data();
        const auto k = static_cast<typename api<R>::r2r_kind>(kind);
        auto p = a.plan_r2r_1d(n, in.data(), o, k, FFTW_ESTIMATE);
        if (kind == FFTW_REDFT00 && n == 1) {  // undefined for one point, as in FFTW
          EXPECT_EQ(p, nullptr);
          continue;
        }
        ASSERT_NE(p, nullptr);
        const std::vector<R> x = in;
        a.execute(p);
        a.destroy_plan(p);
        const std::vector<ld> ref = definition(kind, std::vector<ld>(x.begin(), x.end()));
        std::vector<R> got(o, o + n);
        std::vector<R> want(ref.begin(), ref.end());
        double err = 0, scale = 0;
        for (int k2 = 0; k2 < n; ++k2) {
          err = std::max(err, static_cast<double>(std::abs(static_cast<ld>(got[k2]) - ref[k2])));
          scale = std::max(scale, static_cast<double>(std::abs(ref[k2])));
        }
        EXPECT_LE(err / scale, tolerance<R>(2.0 * n));
        if (!inplace) {
          EXPECT_EQ(in, x);  // input preserved
        }
      }
}

// Batches of lines with strides through the guru interface (howmany rank 1
// and 2), each line checked against the definition.
TYPED_TEST(RealToReal, GuruBatchesOfLines) {
  using R = TypeParam;
  const api<R>& a = ours<R>();
  const int n = 12;
  // Line j: stride 3; batch dimensions 2 (distance 1) and 4 (distance 40).
  typename api<R>::iodim dims[] = {{n, 3, 1}};
  typename api<R>::iodim how[] = {{2, 1, n}, {4, 40, 2 * n}};
  for (int kind : {FFTW_REDFT10, FFTW_RODFT00, FFTW_R2HC, FFTW_REDFT11})
    for (int hr : {1, 2}) {
      SCOPED_TRACE("kind " + std::to_string(kind) + " howmany rank " + std::to_string(hr));
      std::vector<R> in = random_reals<R>(200, kind + 10 * hr), out(8 * n, R(0));
      const auto k = static_cast<typename api<R>::r2r_kind>(kind);
      auto p = a.plan_guru_r2r(1, dims, hr, how, in.data(), out.data(), &k, FFTW_ESTIMATE);
      ASSERT_NE(p, nullptr);
      a.execute(p);
      a.destroy_plan(p);
      const int batches = hr == 1 ? 2 : 8;
      for (int b = 0; b < batches; ++b) {
        const int i0 = (b % 2) * 1 + (b / 2) * 40, o0 = (b % 2) * n + (b / 2) * 2 * n;
        std::vector<ld> x(n);
        for (int j = 0; j < n; ++j) x[j] = in[i0 + 3 * j];
        const std::vector<ld> ref = definition(kind, x);
        for (int j = 0; j < n; ++j) EXPECT_NEAR(static_cast<double>(out[o0 + j]), static_cast<double>(ref[j]), 40 * tolerance<R>(n));
      }
      // Nothing outside the batch is written.
      if (hr == 1) {
        for (int j = 2 * n; j < 8 * n; ++j) EXPECT_EQ(out[j], R(0));
      }
    }
}

}  // namespace
