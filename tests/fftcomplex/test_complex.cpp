// The complex engine against a long-double DFT: every length 1..64, powers
// of two to 2^20, 3/5/7 mixes, lengths with large prime factors (chirp-z),
// both precisions and signs, in and out of place, strided, batched and split
// layouts, the scale, the fixed small kernels and the footprint's promises.
#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "dft/engine/fft.h"

namespace {
using namespace zar::fft;
using cld = std::complex<long double>;
constexpr long double two_pi = 6.283185307179586476925286766559005768L;

// ---------------------------------------------------------------- reference
// Recursive decimation in time by the smallest prime factor, roots taken in
// long double from exactly reduced angles; primes above 64 other than the
// length itself are not used (cost O(n * sum of factors)).
// the angle is brought into [0, pi/4] exactly first (quadrant and octant in
// integers), where the long double functions are accurate and quick
cld w(long long e, long long n, int sign) {
  e = ((e % n) + n) % n;
  const long long q = 4 * e / n, r = 4 * e % n;
  const long double half_pi = two_pi / 4;
  long double c, s;
  if (2 * r <= n)
    c = std::cos(half_pi * r / n), s = std::sin(half_pi * r / n);
  else
    c = std::sin(half_pi * (n - r) / n), s = std::cos(half_pi * (n - r) / n);
  const long double cs[4][2] = {{c, s}, {-s, c}, {-c, -s}, {s, -c}};
  return {cs[q][0], sign * cs[q][1]};
}
// roots: w_N^e for e < N, where N is a multiple of x.size()
void ref_rec(const cld* x, long stride, long n, const std::vector<cld>& roots, cld* y) {
  if (n == 1) {
    y[0] = x[0];
    return;
  }
  long p = 2;
  while (n % p != 0) ++p;
  const long m = n / p;
  const long N = static_cast<long>(roots.size()), step = N / n;
  std::vector<cld> sub(n);  // sub-transform r at sub[r*m ..]
  for (long r = 0; r < p; ++r) ref_rec(x + r * stride, stride * p, m, roots, sub.data() + r * m);
  for (long k = 0; k < n; ++k) {
    cld s = 0;
    for (long r = 0; r < p; ++r) s += sub[r * m + k % m] * roots[(static_cast<long long>(r) * k % n) * step];
    y[k] = s;
  }
}
std::vector<cld> ref_dft(const std::vector<cld>& x, int sign) {
  const long n = static_cast<long>(x.size());
  std::vector<cld> roots(n), y(n);
  for (long e = 0; e < n; ++e) roots[e] = w(e, n, sign);
  ref_rec(x.data(), 1, n, roots, y.data());
  return y;
}
// outputs k straight from the definition
std::vector<cld> ref_some(const std::vector<cld>& x, const std::vector<long>& ks, int sign) {
  const long long n = static_cast<long long>(x.size());
  std::vector<cld> roots(n), y;
  for (long long e = 0; e < n; ++e) roots[e] = w(e, n, sign);
  for (long k : ks) {
    cld s = 0;
    for (long long j = 0, e = 0; j < n; ++j) {
      s += x[j] * roots[e];
      e += k;
      if (e >= n) e -= n;
    }
    y.push_back(s);
  }
  return y;
}

// Inputs exactly representable in single precision, so both precisions
// transform the same numbers (and share one reference, kept here).
std::vector<cld> random_input(long n, unsigned seed);
const std::vector<cld>& ref_of(long n, unsigned seed, int sign) {
  static std::map<std::tuple<long, unsigned, int>, std::vector<cld>> cache;
  auto& r = cache[{n, seed, sign}];
  if (r.empty()) r = ref_dft(random_input(n, seed), sign);
  return r;
}
std::vector<cld> random_input(long n, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<float> u(-1.f, 1.f);
  std::vector<cld> x(n);
  for (auto& v : x) v = {u(g), u(g)};
  return x;
}

template <class T> constexpr long double eps = std::numeric_limits<T>::epsilon();
// relative RMS error allowed: eps * log2(n) (the engine measures below half of it)
template <class T> long double tolerance(long n) { return eps<T> * std::max(1.0, std::log2(double(n))); }

// relative RMS distance of got (interleaved, stride s) from ref
template <class T> long double rel_rms(const T* got, long s, const std::vector<cld>& ref, long double scale = 1) {
  long double num = 0, den = 0;
  for (size_t k = 0; k < ref.size(); ++k) {
    const cld r = ref[k] * scale;
    const cld d = cld(got[2 * k * s], got[2 * k * s + 1]) - r;
    num += std::norm(d);
    den += std::norm(r);
  }
  return den > 0 ? std::sqrt(num / den) : std::sqrt(num);
}

// ---------------------------------------------------------------- engine harness
struct aligned_bytes {
  unsigned char* p = nullptr;
  size_t n = 0;
  explicit aligned_bytes(size_t bytes) : n(bytes) {
    p = static_cast<unsigned char*>(std::aligned_alloc(64, (bytes + 63) / 64 * 64 + 64));
  }
  ~aligned_bytes() { std::free(p); }
  aligned_bytes(const aligned_bytes&) = delete;
};

// A plan with guard bytes after the plan block and after the scratch: a
// build or run that writes beyond the footprint's promise is caught.
template <class T> struct planned {
  static constexpr unsigned char guard = 0xA5;
  long n;
  footprint f;
  aligned_bytes mem, scratch;
  complex_plan<T>* p;
  explicit planned(long n_)
      : n(n_), f(complex_footprint<T>(n_)), mem(f.plan_bytes + 64), scratch(f.scratch_bytes + 64) {
    std::memset(mem.p + f.plan_bytes, guard, 64);
    std::memset(scratch.p + f.scratch_bytes, guard, 64);
    p = complex_build<T>(n, mem.p);
  }
  bool guards_intact() const {
    for (int i = 0; i < 64; ++i)
      if (mem.p[f.plan_bytes + i] != guard || scratch.p[f.scratch_bytes + i] != guard) return false;
    return true;
  }
  void run(int sign, T scale, const T* x, long is, long idist, T* y, long os, long odist, long howmany) {
    complex_run<T>(p, sign, scale, x, is, idist, y, os, odist, howmany, scratch.p);
  }
};

template <class T> std::vector<T> interleave(const std::vector<cld>& x) {
  std::vector<T> v(2 * x.size());
  for (size_t k = 0; k < x.size(); ++k) {
    v[2 * k] = static_cast<T>(x[k].real());
    v[2 * k + 1] = static_cast<T>(x[k].imag());
  }
  return v;
}

// ---------------------------------------------------------------- lengths
std::vector<long> accuracy_lengths() {
  std::vector<long> v;
  for (long n = 1; n <= 64; ++n) v.push_back(n);
  for (long n = 128; n <= (1L << 20); n *= 2) v.push_back(n);
  // 3^k 5^m 7^p mixes, the usual composite sizes, large prime factors
  for (long n : {81L, 125L, 343L, 105L, 225L, 441L, 735L, 2187L, 3125L, 2401L, 11025L, 33075L, 1000L, 1536L, 2520L,
                 97L, 1009L, 2018L, 3 * 1009L, 65537L, 17 * 11L, 61 * 32L, 100000L, 40000L})
    v.push_back(n);
  return v;
}

// The engine's plans are built once per length and precision here.
template <class T> struct Lengths : ::testing::Test {};
using precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Lengths, precisions);

// Contiguous single transforms, both signs, out of place and in place,
// against the reference (full for lengths it can afford, otherwise a
// round trip and outputs spot-checked from the definition).
TYPED_TEST(Lengths, AccuracyBothSignsInAndOutOfPlace) {
  using T = TypeParam;
  for (long n : accuracy_lengths()) {
    SCOPED_TRACE(::testing::Message() << "n=" << n);
    const unsigned seed = 7 + static_cast<unsigned>(n);
    const auto x = random_input(n, seed);
    const auto xv = interleave<T>(x);
    planned<T> pl(n);
    // the full reference up to 65536 points (primes above 64 only as
    // short lengths of their own)
    bool full = n <= 65536;
    for (long q = n, f = 2; q > 1 && full; ++f)
      while (q % f == 0) {
        q /= f;
        if (f > 64 && n > 4096) full = false;
      }
    for (int sign : {-1, 1}) {
      SCOPED_TRACE(::testing::Message() << "sign=" << sign);
      std::vector<T> y(2 * n, T(7)), z(xv);
      pl.run(sign, T(1), xv.data(), 1, n, y.data(), 1, n, 1);
      pl.run(sign, T(1), z.data(), 1, n, z.data(), 1, n, 1);
      ASSERT_TRUE(pl.guards_intact());
      // in place and out of place compute the same numbers
      EXPECT_EQ(0, std::memcmp(y.data(), z.data(), y.size() * sizeof(T)));
      if (full) {
        EXPECT_LT(rel_rms(y.data(), 1, ref_of(n, seed, sign)), tolerance<T>(n));
      } else {
        std::vector<long> ks = {0, 1, n / 3, n / 2, n - 1};
        std::mt19937 g(static_cast<unsigned>(n));
        for (int i = 0; i < 3; ++i) ks.push_back(static_cast<long>(g() % n));
        const auto r = ref_some(x, ks, sign);
        long double num = 0, den = 0;
        for (size_t i = 0; i < ks.size(); ++i) {
          num += std::norm(cld(y[2 * ks[i]], y[2 * ks[i] + 1]) - r[i]);
          den += std::norm(r[i]);
        }
        EXPECT_LT(std::sqrt(num / den), 4 * tolerance<T>(n));
        // back with scale 1/n gives x again
        std::vector<T> back(2 * n);
        pl.run(-sign, T(1) / n, y.data(), 1, n, back.data(), 1, n, 1);
        EXPECT_LT(rel_rms(back.data(), 1, x), 2 * tolerance<T>(n));
      }
    }
  }
}

// Batches in several layouts: strided elements, distances apart, the
// transforms interleaved element by element, in place with strides; the
// gaps between elements are left untouched.
TYPED_TEST(Lengths, StridedAndBatchedLayouts) {
  using T = TypeParam;
  struct layout {
    long is, idist, os, odist;
    bool in_place;
  };
  for (long n : {1L, 2L, 5L, 12L, 64L, 1000L, 1009L, 4096L, 65536L}) {
    planned<T> pl(n);
    for (long howmany : {1L, 3L, 9L}) {
      const layout layouts[] = {
          {1, n, 1, n, false},                    // contiguous batch
          {1, n + 3, 2, 2 * n + 1, false},        // padded, strided output
          {howmany, 1, howmany, 1, false},        // interleaved transforms
          {3, 3 * n + 1, 3, 3 * n + 1, true},     // strided in place
          {howmany, 1, 2, 2 * n, false},          // interleaved in, strided out
      };
      for (const auto& L : layouts) {
        if (n >= 65536 && howmany > 3) continue;
        SCOPED_TRACE(::testing::Message() << "n=" << n << " howmany=" << howmany << " is=" << L.is << " idist=" << L.idist
                                          << " os=" << L.os << " odist=" << L.odist << " in_place=" << L.in_place);
        const long in_len = (howmany - 1) * L.idist + (n - 1) * L.is + 1;
        const long out_len = (howmany - 1) * L.odist + (n - 1) * L.os + 1;
        const T fill = T(-3.5);
        std::vector<T> xin(2 * in_len, fill), yout(2 * (L.in_place ? in_len : out_len), fill);
        std::vector<std::vector<cld>> xs;
        for (long t = 0; t < howmany; ++t) {
          xs.push_back(random_input(n, 100 + static_cast<unsigned>(t * 31 + n)));
          for (long j = 0; j < n; ++j) {
            xin[2 * (t * L.idist + j * L.is)] = static_cast<T>(xs[t][j].real());
            xin[2 * (t * L.idist + j * L.is) + 1] = static_cast<T>(xs[t][j].imag());
          }
        }
        std::vector<T> x0(xin);
        T* y = L.in_place ? xin.data() : yout.data();
        const T scale = T(0.5);
        pl.run(-1, scale, xin.data(), L.is, L.idist, y, L.os, L.odist, howmany);
        ASSERT_TRUE(pl.guards_intact());
        if (!L.in_place) {
          EXPECT_EQ(x0, xin);  // input untouched
        }
        std::vector<char> used(L.in_place ? in_len : out_len, 0);
        for (long t = 0; t < howmany; ++t) {
          const auto& ref = ref_of(n, 100 + static_cast<unsigned>(t * 31 + n), -1);
          EXPECT_LT(rel_rms(y + 2 * t * L.odist, L.os, ref, 0.5L), tolerance<T>(n)) << "transform " << t;
          for (long j = 0; j < n; ++j) used[t * L.odist + j * L.os] = 1;
        }
        const std::vector<T>& out = L.in_place ? xin : yout;
        const std::vector<T>& before = L.in_place ? x0 : std::vector<T>(yout.size(), fill);
        for (size_t e = 0; e < used.size(); ++e)
          if (!used[e]) {
            ASSERT_EQ(before[2 * e], out[2 * e]) << "gap element " << e << " written";
            ASSERT_EQ(before[2 * e + 1], out[2 * e + 1]) << "gap element " << e << " written";
          }
      }
    }
  }
}

// Split storage: real and imaginary parts in separate arrays, strided and
// batched, both signs, in place and not.
TYPED_TEST(Lengths, SplitStorage) {
  using T = TypeParam;
  for (long n : {1L, 7L, 16L, 60L, 1000L, 1009L, 2048L, 65536L}) {
    planned<T> pl(n);
    const long howmany = n >= 65536 ? 1 : 4, is = 2, idist = 2 * n + 5;
    const long len = (howmany - 1) * idist + (n - 1) * is + 1;
    for (int sign : {-1, 1})
      for (bool in_place : {false, true}) {
        SCOPED_TRACE(::testing::Message() << "n=" << n << " sign=" << sign << " in_place=" << in_place);
        std::vector<T> xr(len, T(9)), xi(len, T(9)), yr(len, T(9)), yi(len, T(9));
        std::vector<std::vector<cld>> xs;
        for (long t = 0; t < howmany; ++t) {
          xs.push_back(random_input(n, 500 + static_cast<unsigned>(t)));
          for (long j = 0; j < n; ++j) {
            xr[t * idist + j * is] = static_cast<T>(xs[t][j].real());
            xi[t * idist + j * is] = static_cast<T>(xs[t][j].imag());
          }
        }
        T* outr = in_place ? xr.data() : yr.data();
        T* outi = in_place ? xi.data() : yi.data();
        complex_run_split<T>(pl.p, sign, T(1), xr.data(), xi.data(), is, idist, outr, outi, is, idist, howmany,
                             pl.scratch.p);
        ASSERT_TRUE(pl.guards_intact());
        for (long t = 0; t < howmany; ++t) {
          const auto& ref = ref_of(n, 500 + static_cast<unsigned>(t), sign);
          long double num = 0, den = 0;
          for (long k = 0; k < n; ++k) {
            const cld got(outr[t * idist + k * is], outi[t * idist + k * is]);
            num += std::norm(got - ref[k]);
            den += std::norm(ref[k]);
          }
          EXPECT_LT(std::sqrt(num / den), tolerance<T>(n)) << "transform " << t;
        }
        // the positions between elements keep their value
        std::vector<char> used(len, 0);
        for (long t = 0; t < howmany; ++t)
          for (long j = 0; j < n; ++j) used[t * idist + j * is] = 1;
        for (long e = 0; e < len; ++e)
          if (!used[e]) {
            ASSERT_EQ(T(9), outr[e]) << e;
            ASSERT_EQ(T(9), outi[e]) << e;
          }
      }
  }
}

// The long routes (six-step from 2^20, chirp-z) through strided and split
// layouts: the data are copied to a contiguous array and transformed there,
// so the results equal the contiguous run's bit for bit.
TYPED_TEST(Lengths, LongRoutesStridedAndSplitMatchContiguous) {
  using T = TypeParam;
  for (long n : {65537L, 1L << 20}) {
    SCOPED_TRACE(::testing::Message() << "n=" << n);
    planned<T> pl(n);
    const auto xv = interleave<T>(random_input(n, 77));
    std::vector<T> ref(2 * n);
    pl.run(1, T(0.25), xv.data(), 1, n, ref.data(), 1, n, 1);
    std::vector<T> xs(4 * n), ys(6 * n, T(0)), xr(n), xi(n), yr(n), yi(n);
    for (long j = 0; j < n; ++j) {
      xs[4 * j] = xv[2 * j], xs[4 * j + 1] = xv[2 * j + 1];
      xr[j] = xv[2 * j], xi[j] = xv[2 * j + 1];
    }
    pl.run(1, T(0.25), xs.data(), 2, 0, ys.data(), 3, 0, 1);
    complex_run_split<T>(pl.p, 1, T(0.25), xr.data(), xi.data(), 1, n, yr.data(), yi.data(), 1, n, 1, pl.scratch.p);
    ASSERT_TRUE(pl.guards_intact());
    for (long k = 0; k < n; ++k) {
      ASSERT_EQ(ref[2 * k], ys[6 * k]) << k;
      ASSERT_EQ(ref[2 * k + 1], ys[6 * k + 1]) << k;
      ASSERT_EQ(ref[2 * k], yr[k]) << k;
      ASSERT_EQ(ref[2 * k + 1], yi[k]) << k;
    }
  }
}

// The scale multiplies once: forward with 1/n, backward with 1 returns the
// input; forward with 2 gives twice the unscaled result bit for bit (a
// power of two scales exactly).
TYPED_TEST(Lengths, ScaleAppliedOnce) {
  using T = TypeParam;
  for (long n : {3L, 64L, 360L, 1009L, 4096L, 65536L}) {
    SCOPED_TRACE(::testing::Message() << "n=" << n);
    planned<T> pl(n);
    const auto x = random_input(n, 3);
    const auto xv = interleave<T>(x);
    std::vector<T> y(2 * n), y2(2 * n), back(2 * n);
    pl.run(-1, T(1), xv.data(), 1, n, y.data(), 1, n, 1);
    pl.run(-1, T(2), xv.data(), 1, n, y2.data(), 1, n, 1);
    for (long k = 0; k < 2 * n; ++k) ASSERT_EQ(2 * y[k], y2[k]) << k;
    pl.run(-1, T(1) / n, xv.data(), 1, n, y.data(), 1, n, 1);
    pl.run(1, T(1), y.data(), 1, n, back.data(), 1, n, 1);
    EXPECT_LT(rel_rms(back.data(), 1, x), 2 * tolerance<T>(n));
  }
}

// Plans of the same length built twice give the same bits; footprints grow
// with the length; a plan lives wholly inside its block (checked by the
// guards above) and does not depend on where the block is.
TEST(Plan, RelocatedBlockGivesSameResult) {
  for (long n : {48L, 1000L, 1009L, 32768L}) {
    planned<double> a(n), b(n);
    const auto xv = interleave<double>(random_input(n, 11));
    std::vector<double> ya(2 * n), yb(2 * n);
    a.run(1, 1.0, xv.data(), 1, n, ya.data(), 1, n, 1);
    b.run(1, 1.0, xv.data(), 1, n, yb.data(), 1, n, 1);
    EXPECT_EQ(ya, yb) << n;
  }
}

// A length of 0 is planned and run as nothing at all.
TEST(Plan, EmptyLengthWritesNothing) {
  planned<double> pl(0);
  std::vector<double> x(4, 1.0), y(4, 5.0);
  pl.run(-1, 2.0, x.data(), 1, 0, y.data(), 1, 0, 2);
  EXPECT_TRUE(pl.guards_intact());
  EXPECT_EQ(std::vector<double>(4, 5.0), y);
}

// ---------------------------------------------------------------- fixed small lengths
using small_fn = void (*)(double, const double*, long, long, double*, long, long, long);
template <int... K> std::vector<std::pair<small_fn, small_fn>> small_table(std::integer_sequence<int, K...>) {
  return {{&small_run<K + 2, -1>, &small_run<K + 2, 1>}...};
}

TEST(SmallKernels, EveryLengthBothSignsBatchedAndStrided) {
  const auto table = small_table(std::make_integer_sequence<int, 63>{});
  for (int n = 2; n <= 64; ++n) {
    for (int d = 0; d < 2; ++d) {
      const int sign = d == 0 ? -1 : 1;
      const small_fn f = d == 0 ? table[n - 2].first : table[n - 2].second;
      SCOPED_TRACE(::testing::Message() << "N=" << n << " sign=" << sign);
      for (long howmany : {1L, 5L}) {
        const long is = 2, idist = 2 * n + 1, os = 1, odist = n;
        std::vector<double> x(2 * (howmany * idist)), y(2 * howmany * odist, 0.0);
        std::vector<std::vector<cld>> xs;
        for (long t = 0; t < howmany; ++t) {
          xs.push_back(random_input(n, static_cast<unsigned>(n * 10 + t)));
          for (long j = 0; j < n; ++j) {
            x[2 * (t * idist + j * is)] = double(xs[t][j].real());
            x[2 * (t * idist + j * is) + 1] = double(xs[t][j].imag());
          }
        }
        f(0.25, x.data(), is, idist, y.data(), os, odist, howmany);
        for (long t = 0; t < howmany; ++t)
          EXPECT_LT(rel_rms(y.data() + 2 * t * odist, os, ref_dft(xs[t], sign), 0.25L), tolerance<double>(n));
        // in place, contiguous
        std::vector<double> z(2 * n);
        for (long j = 0; j < n; ++j) z[2 * j] = double(xs[0][j].real()), z[2 * j + 1] = double(xs[0][j].imag());
        f(1.0, z.data(), 1, n, z.data(), 1, n, 1);
        EXPECT_LT(rel_rms(z.data(), 1, ref_dft(xs[0], sign)), tolerance<double>(n));
      }
    }
  }
}

}  // namespace
