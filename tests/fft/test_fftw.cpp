// FFTW for i386 as the independent peer: it shows the error bound is one an
// honest FFT meets (and that the long-double reference is sound), and it is
// the differential oracle for a representative set of problems, including
// the longest transform, which also gets single bins summed directly.
#include "fft_run.h"

namespace {

using namespace fftt;

template <class T>
std::vector<cld> to_cld(const std::vector<T>& v) {  // interleaved pairs
  std::vector<cld> r(v.size() / 2);
  for (size_t i = 0; i < r.size(); ++i) r[i] = {v[2 * i], v[2 * i + 1]};
  return r;
}

// FFTW, out of place, contiguous batch: complex (sign) or real-to-half.
template <class T>
std::vector<T> fftw_run(bool real, const std::vector<long>& shape, int howmany, int sign, std::vector<T> x) {
  const auto* f = fftw_dl::api<T>::get();
  std::vector<int> dims(shape.begin(), shape.end());
  const int n = static_cast<int>(product(shape));
  std::vector<long> hshape = shape;
  hshape.back() = shape.back() / 2 + 1;
  const int nh = static_cast<int>(product(hshape));
  std::vector<T> y(static_cast<size_t>(2 * (real ? nh : n) * howmany));
  const int rank = static_cast<int>(dims.size());
  auto p = real ? f->many_r2c(rank, dims.data(), howmany, x.data(), nullptr, 1, n, y.data(), nullptr, 1, nh,
                              fftw_dl::estimate)
                : f->many_dft(rank, dims.data(), howmany, x.data(), nullptr, 1, n, y.data(), nullptr, 1, n, sign,
                              fftw_dl::estimate);
  f->execute(p);
  f->destroy(p);
  return y;
}

// zar on the same problem with the same settings spelled out.
template <class T>
std::vector<T> zar_run(bool real, const std::vector<long>& shape, long howmany, int sign, std::vector<T> x) {
  const long n = product(shape);
  std::vector<long> hshape = shape;
  hshape.back() = shape.back() / 2 + 1;
  const long nh = product(hshape);
  std::vector<T> y(static_cast<size_t>(2 * (real ? nh : n) * howmany));
  desc d;
  EXPECT_EQ(d.create(precision_of<T>, real ? ZAR_DFT_REAL : ZAR_DFT_COMPLEX, shape), 0);
  if (!d.d) return y;
  layout in{0, contiguous(shape), n}, out{0, contiguous(real ? hshape : shape), real ? nh : n};
  EXPECT_EQ(apply_common(d, false, howmany, in, out, true, true, sign, 1.0), 0);
  EXPECT_EQ(compute(d, sign, x.data(), y.data()), 0);
  return y;
}

struct peer_param {
  int precision;
  bool real;
  std::vector<long> shape;
  long howmany;
  std::string name;
  friend void PrintTo(const peer_param& p, std::ostream* os) { *os << p.name; }
};

class FftwDifferential : public ::testing::TestWithParam<peer_param> {};
TEST_P(FftwDifferential, SameResults) {
  const auto& prm = GetParam();
  const long n = product(prm.shape);
  FFTT_GATE(n);
  auto body = [&](auto t) {
    using T = decltype(t);
    if (!fftw_dl::api<T>::get()) GTEST_SKIP() << "FFTW for i386 is not installed";
    for (int sign : {-1, +1}) {
      if (prm.real && sign > 0) continue;
      const auto x = random_reals<T>(static_cast<size_t>((prm.real ? 1 : 2) * n * prm.howmany), 23);
      const auto ours = to_cld(zar_run<T>(prm.real, prm.shape, prm.howmany, sign, x));
      const auto peer = to_cld(fftw_run<T>(prm.real, prm.shape, static_cast<int>(prm.howmany), sign, x));
      EXPECT_LE(rel_rms(ours, peer), 2 * bound<T>(n)) << prm.name << (sign < 0 ? " forward" : " backward");
    }
  };
  if (prm.precision == ZAR_DFT_SINGLE) body(float{});
  else body(double{});
}
std::vector<peer_param> peer_params() {
  std::vector<peer_param> v;
  auto add = [&](int p, bool real, std::vector<long> shape, long howmany) {
    std::string name = precision_name(p) + (real ? "_real" : "_complex");
    for (long s : shape) name += "_" + std::to_string(s);
    name += "_x" + std::to_string(howmany);
    v.push_back({p, real, shape, howmany, name});
  };
  for (long n : {64L, 1000L, 1009L, 1024L, 2520L, 4096L, 65536L, 65537L, 1L << 20}) add(ZAR_DFT_DOUBLE, false, {n}, 1);
  for (long n : {1024L, 4096L, 1000L}) add(ZAR_DFT_SINGLE, false, {n}, 1);
  add(ZAR_DFT_DOUBLE, false, {256}, 16);
  add(ZAR_DFT_DOUBLE, false, {64, 48}, 1);
  add(ZAR_DFT_DOUBLE, false, {512, 512}, 1);
  add(ZAR_DFT_SINGLE, false, {9, 10, 11}, 2);
  for (long n : {4096L, 4095L, 1L << 16}) add(ZAR_DFT_DOUBLE, true, {n}, 1);
  add(ZAR_DFT_SINGLE, true, {4096}, 3);
  add(ZAR_DFT_DOUBLE, true, {30, 40}, 2);
  add(ZAR_DFT_DOUBLE, true, {15, 16, 17}, 1);
  return v;
}
INSTANTIATE_TEST_SUITE_P(Problems, FftwDifferential, ::testing::ValuesIn(peer_params()),
                         [](const ::testing::TestParamInfo<peer_param>& i) { return i.param.name; });

// The longest transforms: single bins summed directly in long double.
TEST(LongTransform, DirectBins) {
  for (long n : {65537L, 1L << 20}) {
    if (too_long(n)) continue;
    const auto x = random_reals<double>(static_cast<size_t>(2 * n), 29);
    const auto xs = to_cld(x);
    for (int sign : {-1, +1}) {
      const auto y = to_cld(zar_run<double>(false, {n}, 1, sign, x));
      ld norm = 0;  // ||x||_2, the RMS size of a bin
      for (const auto& c : xs) norm += c.re * c.re + c.im * c.im;
      norm = sqrtl(norm);
      for (long k : {0L, 1L, 2L, n / 3, n / 2, n - 1}) {
        const cld r = direct_bin(xs, k, sign);
        const double e = static_cast<double>(hypotl(y[k].re - r.re, y[k].im - r.im) / norm);
        EXPECT_LE(e, 4 * bound<double>(n)) << "n " << n << " bin " << k << (sign < 0 ? " forward" : " backward");
      }
    }
  }
}

// The oracles themselves. FFTW in single and double meets the bound the
// suite applies to zar on the lengths it tests (which is what makes c = 2
// a fair constant), and FFTW's long-double transform, the reference above
// the direct-sum limit, agrees with the direct sums to far below double
// rounding.
template <class T>
void fftw_meets_bound(long n, double& worst) {
  const auto x = random_reals<T>(static_cast<size_t>(2 * n), 31);
  for (int sign : {-1, +1}) {
    const auto y = to_cld(fftw_run<T>(false, {n}, 1, sign, x));
    const double e = rel_rms(y, reference(to_cld(x), {n}, sign));
    EXPECT_LE(e, bound<T>(n)) << "FFTW n " << n;
    worst = std::max(worst, e / bound<T>(n));
  }
}
TEST(Oracles, FftwMeetsBound) {
  if (!fftw_dl::api<float>::get() || !fftw_dl::api<double>::get() || !fftw_dl::api<ld>::get())
    GTEST_SKIP() << "FFTW for i386 is not installed";
  std::vector<long> lengths;
  for (long n = 1; n <= 64; ++n) lengths.push_back(n);
  for (long n : {97L, 128L, 1000L, 1009L, 1536L, 2187L, 2520L, 3125L, 4096L, 16807L, 65536L, 65537L})
    lengths.push_back(n);
  double worst_s = 0, worst_d = 0;
  for (long n : lengths) {
    fftw_meets_bound<float>(n, worst_s);
    fftw_meets_bound<double>(n, worst_d);
  }
  std::printf("FFTW's largest error as a fraction of the bound: single %.3f, double %.3f\n", worst_s, worst_d);
}
TEST(Oracles, LongDoubleReferenceAgreesWithDirectSums) {
  if (!fftw_dl::api<ld>::get()) GTEST_SKIP() << "libfftw3l.so.3 is not installed";
  for (long n : {1000L, 1009L, 2520L, 4096L}) {
    std::vector<cld> x(n);
    const auto v = random_reals<double>(static_cast<size_t>(2 * n), 37);
    for (long j = 0; j < n; ++j) x[j] = {v[2 * j], v[2 * j + 1]};
    std::vector<cld> direct(n);
    direct_line(x.data(), 1, direct.data(), 1, n, -1);
    const int ni = static_cast<int>(n);
    std::vector<cld> y(n);
    const auto* f = fftw_dl::api<ld>::get();
    auto p = f->many_dft(1, &ni, 1, &x[0].re, nullptr, 1, ni, &y[0].re, nullptr, 1, ni, -1, fftw_dl::estimate);
    f->execute(p);
    f->destroy(p);
    EXPECT_LE(rel_rms(y, direct), bound<double>(n) / 100) << "n " << n;
  }
}

}  // namespace
