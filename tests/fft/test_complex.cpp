// Complex one-dimensional transforms through the public interface: accuracy
// against the long-double reference for every length 1..64, powers of two
// to 2^20, powers of 3, 5 and 7, mixed lengths and primes, in both
// precisions, both directions, in and out of place; scales; round trips.
#include "fft_run.h"

namespace {

using namespace fftt;

std::vector<long> complex_lengths() {
  std::vector<long> v;
  for (long n = 1; n <= 64; ++n) v.push_back(n);
  for (long p = 128; p <= (1L << 20); p *= 2) v.push_back(p);
  for (long n : {81L, 243L, 729L, 2187L, 19683L, 125L, 625L, 3125L, 15625L, 343L, 2401L, 16807L, 105L, 1000L,
                 1536L, 2520L, 97L, 1009L, 65537L})
    v.push_back(n);
  return v;
}

struct length_param {
  int precision;
  long n;
  friend void PrintTo(const length_param& p, std::ostream* os) { *os << precision_name(p.precision) << " n=" << p.n; }
};
std::string length_name(const ::testing::TestParamInfo<length_param>& i) {
  return precision_name(i.param.precision) + "_" + std::to_string(i.param.n);
}
std::vector<length_param> with_precisions(const std::vector<long>& lengths) {
  std::vector<length_param> v;
  for (int p : {ZAR_DFT_SINGLE, ZAR_DFT_DOUBLE})
    for (long n : lengths) v.push_back({p, n});
  return v;
}

template <class F>
void by_precision(int p, F f) {
  if (p == ZAR_DFT_SINGLE) f(float{});
  else f(double{});
}

// Forward and backward, in and out of place (above the direct-sum limit
// one placement per direction: the layouts are the same, only the length
// matters there).
class ComplexLength : public ::testing::TestWithParam<length_param> {};
TEST_P(ComplexLength, MatchesReference) {
  const auto [p, n] = GetParam();
  FFTT_GATE(n);
  by_precision(p, [&](auto t) {
    using T = decltype(t);
    for (int sign : {-1, +1})
      for (bool inplace : {false, true}) {
        if (n > direct_limit && inplace == (sign < 0)) continue;
        complex_case c;
        c.shape = {n};
        c.sign = sign;
        c.inplace = inplace;
        run_complex<T>(c, static_cast<unsigned>(n));
      }
  });
}
INSTANTIATE_TEST_SUITE_P(Lengths, ComplexLength, ::testing::ValuesIn(with_precisions(complex_lengths())),
                         length_name);

// Scales: applied once, to the direction they belong to (a forward scale
// must not touch the backward transform and the other way round).
struct scale_param {
  int precision;
  long n;
  double scale;
  int sign;
  friend void PrintTo(const scale_param& p, std::ostream* os) { *os << precision_name(p.precision) << " n=" << p.n << " scale=" << p.scale << (p.sign < 0 ? " forward" : " backward"); }
};
class ComplexScale : public ::testing::TestWithParam<scale_param> {};
TEST_P(ComplexScale, AppliedOnce) {
  const auto [p, n, s, sign] = GetParam();
  by_precision(p, [&](auto t) {
    using T = decltype(t);
    complex_case c;
    c.shape = {n};
    c.sign = sign;
    c.scale = s;
    for (bool inplace : {false, true}) {
      c.inplace = inplace;
      run_complex<T>(c, 7);
    }
    // The other direction's scale is set, this one's stays 1.
    desc d;
    ZOK(d.create(precision_of<T>, ZAR_DFT_COMPLEX, {n}));
    ZOK(zar_dft_set(d, sign < 0 ? ZAR_DFT_BACKWARD_SCALE : ZAR_DFT_FORWARD_SCALE, s));
    ZOK(zar_dft_commit(d));
    auto x = random_reals<T>(2 * n, 3);
    std::vector<cld> xin(n);
    for (long j = 0; j < n; ++j) xin[j] = {x[2 * j], x[2 * j + 1]};
    ZOK(compute(d, sign, x.data()));
    std::vector<cld> got(n);
    for (long j = 0; j < n; ++j) got[j] = {x[2 * j], x[2 * j + 1]};
    EXPECT_LE(rel_rms(got, reference(xin, {n}, sign)), bound<T>(n)) << "the other direction's scale was applied";
  });
}
std::vector<scale_param> scale_params() {
  std::vector<scale_param> v;
  for (int p : {ZAR_DFT_SINGLE, ZAR_DFT_DOUBLE})
    for (long n : {1L, 5L, 64L, 97L, 1000L})
      for (double s : {0.25, 1.0 / static_cast<double>(n + 2), 3.0})
        for (int sign : {-1, +1}) v.push_back({p, n, s, sign});
  return v;
}
INSTANTIATE_TEST_SUITE_P(Scales, ComplexScale, ::testing::ValuesIn(scale_params()),
                         [](const ::testing::TestParamInfo<scale_param>& i) {
                           return precision_name(i.param.precision) + "_" + std::to_string(i.param.n) + "_" +
                                  std::to_string(i.index) + (i.param.sign < 0 ? "_fwd" : "_bwd");
                         });

// Round trips on one descriptor: backward(forward(x)) = n x with the default
// scales, and = x with a backward scale of 1/n; complex and real domains.
struct trip_param {
  int precision;
  int domain;
  long n;
  friend void PrintTo(const trip_param& p, std::ostream* os) { *os << precision_name(p.precision) << (p.domain == ZAR_DFT_REAL ? " real" : " complex") << " n=" << p.n; }
};
class RoundTrip : public ::testing::TestWithParam<trip_param> {};
TEST_P(RoundTrip, BackwardOfForward) {
  const auto [p, domain, n] = GetParam();
  FFTT_GATE(n);
  by_precision(p, [&](auto t) {
    using T = decltype(t);
    const bool real = domain == ZAR_DFT_REAL;
    for (bool normalised : {false, true}) {
      desc d;
      ZOK(d.create(precision_of<T>, domain, {n}));
      if (normalised) ZOK(zar_dft_set(d, ZAR_DFT_BACKWARD_SCALE, 1.0 / static_cast<double>(n)));
      ZOK(zar_dft_commit(d));
      const long vals = real ? n : 2 * n;
      std::vector<T> x = random_reals<T>(static_cast<size_t>(vals), 11);
      const std::vector<T> x0 = x;
      x.resize(real ? 2 * (n / 2 + 1) : vals, guard<T>);  // in place: room for the half spectrum
      ZOK(zar_dft_compute_forward(d, x.data()));
      ZOK(zar_dft_compute_backward(d, x.data()));
      std::vector<cld> got, want;
      const ld f = normalised ? 1 : static_cast<ld>(n);
      for (long j = 0; j < vals; ++j) {
        got.push_back({x[j], 0});
        want.push_back({x0[j] * f, 0});
      }
      EXPECT_LE(rel_rms(got, want), 2 * bound<T>(n)) << (real ? "real" : "complex") << (normalised ? " 1/n" : "");
    }
  });
}
std::vector<trip_param> trip_params() {
  std::vector<trip_param> v;
  for (int p : {ZAR_DFT_SINGLE, ZAR_DFT_DOUBLE})
    for (int dom : {ZAR_DFT_COMPLEX, ZAR_DFT_REAL})
      for (long n : {1L, 2L, 3L, 16L, 45L, 97L, 1000L, 4096L, 65537L, 1L << 20}) v.push_back({p, dom, n});
  return v;
}
INSTANTIATE_TEST_SUITE_P(Trips, RoundTrip, ::testing::ValuesIn(trip_params()),
                         [](const ::testing::TestParamInfo<trip_param>& i) {
                           return precision_name(i.param.precision) + (i.param.domain == ZAR_DFT_REAL ? "_real_" : "_complex_") +
                                  std::to_string(i.param.n);
                         });

}  // namespace
