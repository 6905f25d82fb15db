// Shared pieces of the FFT tests: descriptors through the public interface,
// data placed in strided layouts surrounded by guard values, the
// extended-precision references and the error measure.
//
// References. A direct DFT in long double (twiddles from sinl/cosl of the
// exact index j*k mod n, sums of n terms) is accurate to about 1e-17
// relative, far below single and double rounding. Above `direct_limit`
// points the O(n^2) sum is too slow; there the reference is FFTW's long
// double transform (libfftw3l, also about 1e-18), which the suite itself
// checks against the direct DFT (test_fftw.cpp), and the largest lengths
// also get single bins summed directly.
//
// Error measure: relative RMS, ||y - ref||_2 / ||ref||_2 over all outputs.
// Bound: c * eps * log2(n) (log2 taken as at least 1), c = 2 with eps the
// machine epsilon of the precision. A radix pass rounds each output a
// small number of times (an add, and a multiply-add by a twiddle that is
// itself correctly rounded), each rounding contributing at most eps/2 in
// relative terms and, over random data, about eps/(2 sqrt(3)) RMS; log2(n)
// bounds the number of passes' worth of roundings for any mixed radix, and
// Bluestein-type prime transforms add a constant number of such transform
// errors. FFTW meets the same bound on every length here with a margin
// (the `FftwMeetsBound` tests), so a faulty twiddle, a wrong permutation or
// a scale applied twice is far outside it while an honest FFT is inside.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "fftw_dl.h"
#include "zar/control.h"
#include "zar/dft.h"

namespace fftt {

using ld = long double;
struct cld {
  ld re = 0, im = 0;
};

constexpr double c_bound = 2.0;
constexpr long direct_limit = 4096;

template <class T>
double bound(long n) {
  const double lg = n > 2 ? std::log2(static_cast<double>(n)) : 1.0;
  return c_bound * std::numeric_limits<T>::epsilon() * lg;
}

// Lengths above ZAR_FFT_TEST_MAX_N (when set) are skipped: with a slow
// engine only the small sizes run in reasonable time.
inline bool too_long(long n) {
  const char* s = std::getenv("ZAR_FFT_TEST_MAX_N");
  return s && *s && n > std::atol(s);
}
#define FFTT_GATE(n)                                                        \
  do {                                                                      \
    if (fftt::too_long(n)) GTEST_SKIP() << "length above ZAR_FFT_TEST_MAX_N"; \
  } while (0)

template <class T>
constexpr int precision_of = std::is_same_v<T, float> ? ZAR_DFT_SINGLE : ZAR_DFT_DOUBLE;

#define ZOK(call)                                        \
  do {                                                   \
    const long st_ = (call);                             \
    ASSERT_EQ(st_, 0) << #call << ": " << zar_dft_message(st_); \
  } while (0)

// A descriptor freed on scope exit.
struct desc {
  zar_dft_descriptor* d = nullptr;
  ~desc() {
    if (d) zar_dft_free(&d);
  }
  long create(int precision, int domain, const std::vector<long>& lengths) {
    const long rank = static_cast<long>(lengths.size());
    return rank == 1 ? zar_dft_create(&d, precision, domain, 1, lengths[0])
                     : zar_dft_create(&d, precision, domain, rank, lengths.data());
  }
  operator zar_dft_descriptor*() const { return d; }
};

// ---------------------------------------------------------------- data

template <class T>
std::vector<T> random_reals(size_t count, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<T> v(count);
  for (auto& x : v) x = static_cast<T>(u(g));
  return v;
}

// Arrays are filled with this guard before data go in; places outside the
// layout must still hold it after a compute.
template <class T>
constexpr T guard = static_cast<T>(-777.25);

// Element positions of a strided batch: transform t, element j at
// off + j*stride + t*dist, for an n0 x n1 x ... shape with one stride per
// dimension (row-major order as in the descriptor).
struct layout {
  long off = 0;
  std::vector<long> strides;  // one per dimension
  long dist = 0;
  long at(long t, const std::vector<long>& idx) const {
    long p = off + t * dist;
    for (size_t d = 0; d < idx.size(); ++d) p += idx[d] * strides[d];
    return p;
  }
  std::vector<long> stride_setting() const {
    std::vector<long> s{off};
    s.insert(s.end(), strides.begin(), strides.end());
    return s;
  }
};

// Row-major contiguous strides of a shape.
inline std::vector<long> contiguous(const std::vector<long>& shape) {
  std::vector<long> s(shape.size());
  long m = 1;
  for (size_t d = shape.size(); d-- > 0;) {
    s[d] = m;
    m *= shape[d];
  }
  return s;
}

inline long product(const std::vector<long>& shape) {
  long p = 1;
  for (long v : shape) p *= v;
  return p;
}

// Visits every multi-index of a shape in row-major order (k counts them).
template <class F>
void for_each_index(const std::vector<long>& shape, F f) {
  const long total = product(shape);
  std::vector<long> idx(shape.size(), 0);
  for (long k = 0; k < total; ++k) {
    f(k, idx);
    for (size_t d = shape.size(); d-- > 0;) {
      if (++idx[d] < shape[d]) break;
      idx[d] = 0;
    }
  }
}

// The extent (in elements) a layout touches for howmany transforms.
inline long extent(const layout& l, const std::vector<long>& shape, long howmany) {
  long last = l.off + (howmany - 1) * l.dist;
  for (size_t d = 0; d < shape.size(); ++d) last += (shape[d] - 1) * l.strides[d];
  return last + 1;
}

// ---------------------------------------------------------------- references

// Direct DFT of one line in long double: y[k] = sum_j x[j] w^(jk mod n).
inline void direct_line(const cld* x, long xs, cld* y, long ys, long n, int sign) {
  std::vector<cld> w(n);
  const ld two_pi = 6.283185307179586476925286766559005768L;
  for (long m = 0; m < n; ++m) {
    const ld a = two_pi * static_cast<ld>(m) / static_cast<ld>(n);
    w[m] = {cosl(a), sign * sinl(a)};
  }
  std::vector<cld> out(n);
  for (long k = 0; k < n; ++k) {
    ld re = 0, im = 0;
    long m = 0;  // j*k mod n, advanced by k each step
    for (long j = 0; j < n; ++j) {
      const cld& a = x[j * xs];
      re += a.re * w[m].re - a.im * w[m].im;
      im += a.re * w[m].im + a.im * w[m].re;
      m += k;
      if (m >= n) m -= n;
    }
    out[k] = {re, im};
  }
  for (long k = 0; k < n; ++k) y[k * ys] = out[k];
}

// One bin of a long transform, summed directly. The twiddle w^j advances by
// one rotation per term and is recomputed from sinl/cosl every 256 terms, so
// its drift stays near 256 long-double roundings (about 3e-17).
inline cld direct_bin(const std::vector<cld>& x, long k, int sign) {
  const long n = static_cast<long>(x.size());
  const ld two_pi = 6.283185307179586476925286766559005768L;
  auto root = [&](long j) {  // w^j = exp(sign 2 pi i jk/n), from jk mod n
    const long m = static_cast<long>((static_cast<long long>(j) * k) % n);
    const ld a = two_pi * static_cast<ld>(m) / static_cast<ld>(n);
    return cld{cosl(a), sign * sinl(a)};
  };
  const cld step = root(1);
  ld re = 0, im = 0;
  cld w{};
  for (long j = 0; j < n; ++j) {
    if (j % 256 == 0) w = root(j);
    re += x[j].re * w.re - x[j].im * w.im;
    im += x[j].re * w.im + x[j].im * w.re;
    w = {w.re * step.re - w.im * step.im, w.re * step.im + w.im * step.re};
  }
  return {re, im};
}

// Unscaled DFT of a row-major array of the given shape: direct sums along
// each dimension for small lengths, FFTW long double for long 1-D ones.
inline std::vector<cld> reference_uncached(std::vector<cld> x, const std::vector<long>& shape, int sign) {
  if (shape.size() == 1 && shape[0] > direct_limit) {
    const auto* f = fftw_dl::api<ld>::get();
    if (!f) {
      ADD_FAILURE() << "libfftw3l.so.3 is needed for the long-double reference above " << direct_limit;
      return x;
    }
    const int n = static_cast<int>(shape[0]);
    std::vector<cld> y(x.size());
    auto p = f->many_dft(1, &n, 1, &x[0].re, nullptr, 1, n, &y[0].re, nullptr, 1, n, sign, fftw_dl::estimate);
    f->execute(p);
    f->destroy(p);
    return y;
  }
  const auto str = contiguous(shape);
  for (size_t d = 0; d < shape.size(); ++d) {
    // every line along dimension d starts at an index with idx[d] == 0
    std::vector<long> sub = shape;
    sub[d] = 1;
    for_each_index(sub, [&](long, const std::vector<long>& idx) {
      long start = 0;
      for (size_t e = 0; e < idx.size(); ++e) start += idx[e] * str[e];
      direct_line(&x[start], str[d], &x[start], str[d], shape[d], sign);
    });
  }
  return x;
}

// The same, remembering the last few problems: the cases of one length run
// the same data in several layouts and placements.
inline std::vector<cld> reference(const std::vector<cld>& x, const std::vector<long>& shape, int sign) {
  struct entry {
    std::vector<long> shape;
    int sign;
    std::vector<cld> x, y;
  };
  static std::vector<entry> cache;
  auto same = [&](const entry& e) {
    if (e.sign != sign || e.shape != shape || e.x.size() != x.size()) return false;
    for (size_t i = 0; i < x.size(); ++i)  // by value: long double has padding bytes
      if (e.x[i].re != x[i].re || e.x[i].im != x[i].im) return false;
    return true;
  };
  for (size_t i = 0; i < cache.size(); ++i)
    if (same(cache[i])) {
      std::rotate(cache.begin(), cache.begin() + i, cache.begin() + i + 1);  // most recent first
      return cache[0].y;
    }
  entry e{shape, sign, x, reference_uncached(x, shape, sign)};
  cache.insert(cache.begin(), std::move(e));
  if (cache.size() > 8) cache.pop_back();
  return cache[0].y;
}

// Relative RMS distance of got from ref.
inline double rel_rms(const std::vector<cld>& got, const std::vector<cld>& ref) {
  ld num = 0, den = 0;
  for (size_t i = 0; i < ref.size(); ++i) {
    const ld dr = got[i].re - ref[i].re, di = got[i].im - ref[i].im;
    num += dr * dr + di * di;
    den += ref[i].re * ref[i].re + ref[i].im * ref[i].im;
  }
  if (den == 0) return static_cast<double>(sqrtl(num));
  return static_cast<double>(sqrtl(num / den));
}

inline void scale_all(std::vector<cld>& v, ld s) {
  for (auto& c : v) c = {c.re * s, c.im * s};
}

// Positions of the buffer that the layout does not cover must still hold the guard.
template <class T>
::testing::AssertionResult guards_intact(const std::vector<T>& buf, const std::vector<char>& used) {
  for (size_t i = 0; i < buf.size(); ++i)
    if (!used[i] && std::memcmp(&buf[i], &guard<T>, sizeof(T)) != 0)
      return ::testing::AssertionFailure() << "element " << i << " outside the layout changed to " << buf[i];
  return ::testing::AssertionSuccess();
}

inline std::string precision_name(int p) { return p == ZAR_DFT_SINGLE ? "single" : "double"; }

}  // namespace fftt
