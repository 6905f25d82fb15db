// Real, multi-dimensional and long FFTs of the engine, against transforms
// computed directly in long double (long ones against FFTW in long double),
// and a few against Debian's FFTW in double.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dft/engine/fft.h"

namespace {
using namespace zar::fft;
using ld = long double;
using cld = std::complex<ld>;
const ld pi = 3.14159265358979323846264338327950288L;

// 64-byte aligned memory that frees itself.
struct mem {
  void* p;
  explicit mem(size_t bytes) : p(std::aligned_alloc(64, ((bytes ? bytes : 1) + 63) & ~size_t(63))) {}
  ~mem() { std::free(p); }
  mem(const mem&) = delete;
};

// ---------------------------------------------------------------- references
// Direct DFT of one line in long double (twiddles from exact angle reduction).
std::vector<cld> dft(const std::vector<cld>& x, int sign) {
  const long n = static_cast<long>(x.size());
  std::vector<cld> w(n), y(n);
  for (long k = 0; k < n; ++k) w[k] = std::polar(1.0L, sign * 2 * pi * k / n);
  for (long k = 0; k < n; ++k) {
    cld s = 0;
    for (long j = 0; j < n; ++j) s += x[j] * w[(j * k) % n];
    y[k] = s;
  }
  return y;
}

// FFTW in long double for long lines (dlopen'ed; empty result when missing).
std::vector<cld> dft_fftwl(const std::vector<cld>& x, int sign) {
  static void* h = dlopen("libfftw3l.so.3", RTLD_NOW | RTLD_LOCAL);
  if (!h) return {};
  using plan_fn = void* (*)(int, void*, void*, int, unsigned);
  auto plan = reinterpret_cast<plan_fn>(dlsym(h, "fftwl_plan_dft_1d"));
  auto exec = reinterpret_cast<void (*)(void*)>(dlsym(h, "fftwl_execute"));
  auto destroy = reinterpret_cast<void (*)(void*)>(dlsym(h, "fftwl_destroy_plan"));
  std::vector<cld> in(x), out(x.size());
  void* p = plan(static_cast<int>(x.size()), in.data(), out.data(), sign, 1u << 6 /* FFTW_ESTIMATE */);
  exec(p);
  destroy(p);
  return out;
}

std::vector<cld> reference(const std::vector<cld>& x, int sign) {
  if (x.size() > 8192) {
    auto y = dft_fftwl(x, sign);
    if (!y.empty()) return y;
  }
  return dft(x, sign);
}

// Multi-dimensional DFT of a contiguous array (dimension 0 fastest).
std::vector<cld> dft_md(std::vector<cld> a, const std::vector<long>& n, int sign) {
  long stride = 1;
  const long total = static_cast<long>(a.size());
  for (size_t d = 0; d < n.size(); ++d) {
    for (long base = 0; base < total; ++base) {
      if ((base / stride) % n[d] != 0) continue;  // start of a line along d
      std::vector<cld> line(n[d]);
      for (long j = 0; j < n[d]; ++j) line[j] = a[base + j * stride];
      line = dft(line, sign);
      for (long j = 0; j < n[d]; ++j) a[base + j * stride] = line[j];
    }
    stride *= n[d];
  }
  return a;
}

// Relative RMS error and the bound it must meet.
template <class T> double rms(const std::vector<cld>& got, const std::vector<cld>& want) {
  ld e = 0, s = 0;
  for (size_t i = 0; i < got.size(); ++i) {
    e += std::norm(got[i] - want[i]);
    s += std::norm(want[i]);
  }
  return s == 0 ? std::sqrt(static_cast<double>(e)) : std::sqrt(static_cast<double>(e / s));
}
template <class T> double bound(long n) {
  return 4 * std::numeric_limits<T>::epsilon() * (std::log2(static_cast<double>(n > 2 ? n : 2)) + 1);
}

std::mt19937 rng(2026);
ld uniform() { return std::uniform_real_distribution<double>(-1, 1)(rng); }

// ---------------------------------------------------------------- plans
template <class T> struct real_p {
  footprint f;
  mem plan, scratch;
  real_plan<T>* p;
  explicit real_p(long n)
      : f(real_footprint<T>(n)), plan(f.plan_bytes), scratch(f.scratch_bytes), p(real_build<T>(n, plan.p)) {}
};
template <class T> struct complex_p {
  footprint f;
  mem plan;
  complex_plan<T>* p;
  explicit complex_p(long n) : f(complex_footprint<T>(n)), plan(f.plan_bytes), p(complex_build<T>(n, plan.p)) {}
};

// Where X[k] (k = 0 .. n/2) of an n-point real transform lives in a layout,
// in stride units: real part, imaginary part (-1 when not stored).
void place(real_layout l, long n, long k, long* re, long* im) {
  if (l == real_layout::ccs) {
    *re = 2 * k;
    *im = 2 * k + 1;
  } else if (k == 0) {
    *re = 0;
    *im = -1;
  } else if (n % 2 == 0 && k == n / 2) {
    *re = l == real_layout::perm ? 1 : n - 1;
    *im = -1;
  } else {
    *re = l == real_layout::perm && n % 2 == 0 ? 2 * k : 2 * k - 1;
    *im = *re + 1;
  }
}
// Reals a layout occupies (per transform, contiguous).
long stored(real_layout l, long n) { return l == real_layout::ccs ? 2 * (n / 2 + 1) : n; }
const char* name(real_layout l) { return l == real_layout::ccs ? "ccs" : l == real_layout::pack ? "pack" : "perm"; }
const real_layout layouts[] = {real_layout::ccs, real_layout::pack, real_layout::perm};

// A real n-point problem in a layout: x (reals), its spectrum.
struct real_case {
  std::vector<ld> x;
  std::vector<cld> X;  // k = 0 .. n/2
};
real_case make_real(long n) {
  real_case c;
  std::vector<cld> z(n);
  for (long j = 0; j < n; ++j) c.x.push_back(uniform()), z[j] = c.x[j];
  auto Z = reference(z, -1);
  c.X.assign(Z.begin(), Z.begin() + n / 2 + 1);
  return c;
}

// One real transform of length n: forward and backward, in place and out of
// place, every layout, unit strides, scale applied. Long ones (brief): CCS
// out of place only.
template <class T> void check_real_1d(long n, bool brief = false) {
  SCOPED_TRACE("n = " + std::to_string(n));
  real_p<T> rp(n);
  const real_case c = make_real(n);
  for (real_layout l : layouts) {
    if (brief && l != real_layout::ccs) continue;
    SCOPED_TRACE(name(l));
    const long st = stored(l, n);
    for (bool inplace : {false, true}) {
      if (brief && inplace) continue;
      SCOPED_TRACE(inplace ? "in place" : "out of place");
      // Forward, scale 2 (the output multiplied exactly by 2).
      std::vector<T> x(st + 2, T(7)), y(st + 2, T(7));
      for (long j = 0; j < n; ++j) x[j] = static_cast<T>(c.x[j]);
      T* out = inplace ? x.data() : y.data();
      real_forward<T>(rp.p, l, T(2), x.data(), 1, 0, out, 1, 0, 1, rp.scratch.p);
      std::vector<cld> got, want;
      for (long k = 0; k <= n / 2; ++k) {
        long re, im;
        place(l, n, k, &re, &im);
        got.emplace_back(out[re], im < 0 ? 0 : out[im]);
        cld w = 2.0L * c.X[k];
        if (im < 0) w.imag(0);
        want.push_back(w);
      }
      EXPECT_LE(rms<T>(got, want), bound<T>(n));
      EXPECT_EQ(out[st], T(7)) << "wrote past the layout";
      if (l == real_layout::ccs) {
        EXPECT_EQ(out[1], T(0));
        if (n % 2 == 0) {
          EXPECT_EQ(out[n + 1], T(0));
        }
      }
      // Backward of the exact spectrum, scale 1/n: the reals again. The
      // unused imaginary parts of CCS hold garbage that must be ignored.
      std::vector<T> s(st + 2, T(7)), r(n + 2, T(7));
      for (long k = 0; k <= n / 2; ++k) {
        long re, im;
        place(l, n, k, &re, &im);
        s[re] = static_cast<T>(c.X[k].real());
        if (im >= 0) s[im] = static_cast<T>(c.X[k].imag());
      }
      if (l == real_layout::ccs) {
        s[1] = T(5);
        if (n % 2 == 0) s[n + 1] = T(-3);
      }
      const std::vector<T> s0 = s;
      T* back = inplace ? s.data() : r.data();
      real_backward<T>(rp.p, l, T(1) / T(n), s.data(), 1, 0, back, 1, 0, 1, rp.scratch.p);
      got.clear();
      want.clear();
      for (long j = 0; j < n; ++j) got.emplace_back(back[j]), want.emplace_back(c.x[j]);
      EXPECT_LE(rms<T>(got, want), bound<T>(n) * 2);
      if (!inplace) {
        EXPECT_EQ(r[n], T(7));
        EXPECT_TRUE(s == s0) << "backward changed its input";
      }
    }
  }
}

std::vector<long> real_lengths() {
  std::vector<long> v;
  for (long n = 1; n <= 64; ++n) v.push_back(n);
  for (long n = 128; n <= 4096; n *= 2) v.push_back(n);
  for (long n : {75L, 99L, 105L, 225L, 243L, 375L, 1000L, 1001L, 97L, 101L, 127L, 257L, 509L}) v.push_back(n);
  return v;
}

TEST(RealFft, OneDimensionAllLayoutsDouble) {
  for (long n : real_lengths()) check_real_1d<double>(n);
}
TEST(RealFft, OneDimensionAllLayoutsFloat) {
  for (long n : real_lengths()) check_real_1d<float>(n);
}
TEST(RealFft, LongerPowersOfTwo) {
  for (long n : {8192L, 16384L, 65536L}) check_real_1d<double>(n, true);
  check_real_1d<float>(16384, true);
}

// Batches with strides and distances; the gaps between elements stay as
// they were.
template <class T> void check_batch(long n, real_layout l, long is, long os, long pad, long count) {
  SCOPED_TRACE("n = " + std::to_string(n) + " " + name(l) + " is " + std::to_string(is) + " os " +
               std::to_string(os) + " pad " + std::to_string(pad));
  real_p<T> rp(n);
  const long unit = l == real_layout::ccs ? 2 : 1;         // reals per output stride unit
  const long span_out = (l == real_layout::ccs ? n / 2 + 1 : n) * os;  // in stride units
  // Even real distances reach the batched paths, odd ones the single ones.
  const long idist = n * is + pad, odist = span_out + 1;  // in their units
  std::vector<real_case> cs;
  std::vector<T> x(idist * count, T(9)), y(odist * unit * count, T(9)), back(idist * count, T(9));
  for (long t = 0; t < count; ++t) {
    cs.push_back(make_real(n));
    for (long j = 0; j < n; ++j) x[t * idist + j * is] = static_cast<T>(cs[t].x[j]);
  }
  const std::vector<T> x0 = x;
  real_forward<T>(rp.p, l, T(1), x.data(), is, idist, y.data(), os, odist, count, rp.scratch.p);
  EXPECT_TRUE(x == x0);
  long touched = 0;
  for (long t = 0; t < count; ++t) {
    std::vector<cld> got, want;
    for (long k = 0; k <= n / 2; ++k) {
      long re, im;
      place(l, n, k, &re, &im);
      const T* yt = y.data() + t * odist * unit;
      const long f = l == real_layout::ccs ? 1 : os;  // CCS: stride over pairs
      auto at = [&](long p) { return l == real_layout::ccs ? yt[(p / 2) * 2 * os + p % 2] : yt[p * f]; };
      got.emplace_back(at(re), im < 0 ? 0 : at(im));
      cld w = cs[t].X[k];
      if (im < 0) w.imag(0);
      want.push_back(w);
      touched += im < 0 ? 1 : 2;
    }
    EXPECT_LE(rms<T>(got, want), bound<T>(n)) << "transform " << t;
  }
  long untouched = 0;
  for (T v : y) untouched += v == T(9);
  EXPECT_GE(untouched, static_cast<long>(y.size()) - touched - 2 * count);
  // Backward from the output just made, back into a strided real array.
  real_backward<T>(rp.p, l, T(1) / T(n), y.data(), os, odist, back.data(), is, idist, count, rp.scratch.p);
  for (long t = 0; t < count; ++t)
    for (long j = 0; j < idist; ++j) {
      const T want = j % is == 0 && j / is < n ? x[t * idist + j] : T(9);
      EXPECT_NEAR(back[t * idist + j], want, 50 * bound<T>(n)) << "transform " << t << " position " << j;
    }
}

TEST(RealFft, StridedBatches) {
  for (real_layout l : layouts)
    for (long n : {1L, 2L, 6L, 7L, 16L, 33L, 100L})
      for (long is : {1L, 3L})
        for (long os : {1L, 2L})
          for (long pad : {3L, 4L}) {
            check_batch<double>(n, l, is, os, pad, 5);
            check_batch<float>(n, l, is, os, pad, 3);
          }
}

// Contiguous batches in place: CCS in its padded layout, PACK and PERM in n reals.
TEST(RealFft, InPlaceBatches) {
  for (real_layout l : layouts)
    for (long n : {4L, 9L, 64L, 250L}) {
      SCOPED_TRACE(std::to_string(n) + name(l));
      const long st = stored(l, n), count = 40;
      real_p<double> rp(n);
      std::vector<double> a(st * count);
      std::vector<real_case> cs;
      for (long t = 0; t < count; ++t) {
        cs.push_back(make_real(n));
        for (long j = 0; j < n; ++j) a[t * st + j] = static_cast<double>(cs[t].x[j]);
      }
      const long odist = l == real_layout::ccs ? st / 2 : st;
      real_forward<double>(rp.p, l, 1.0, a.data(), 1, st, a.data(), 1, odist, count, rp.scratch.p);
      for (long t = 0; t < count; ++t) {
        std::vector<cld> got, want;
        for (long k = 0; k <= n / 2; ++k) {
          long re, im;
          place(l, n, k, &re, &im);
          got.emplace_back(a[t * st + re], im < 0 ? 0 : a[t * st + im]);
          want.emplace_back(cs[t].X[k].real(), im < 0 ? 0 : cs[t].X[k].imag());
        }
        EXPECT_LE(rms<double>(got, want), bound<double>(n));
      }
      real_backward<double>(rp.p, l, 1.0 / n, a.data(), 1, odist, a.data(), 1, st, count, rp.scratch.p);
      for (long t = 0; t < count; ++t)
        for (long j = 0; j < n; ++j) EXPECT_NEAR(a[t * st + j], static_cast<double>(cs[t].x[j]), 1e-13);
    }
}

// The PACK inverse is the PERM inverse of the same values with R(n/2) moved
// from the end to place 1 (even n); for odd n the layouts are one.
TEST(RealFft, PackInverseIsPermInverse) {
  for (long n = 1; n <= 40; ++n) {
    real_p<double> rp(n);
    std::vector<double> pack(n), perm(n), a(n), b(n);
    for (auto& v : pack) v = static_cast<double>(uniform());
    perm = pack;
    if (n % 2 == 0 && n > 1) {
      perm[1] = pack[n - 1];
      for (long i = 2; i < n; ++i) perm[i] = pack[i - 1];
    }
    real_backward<double>(rp.p, real_layout::pack, 1.0, pack.data(), 1, 0, a.data(), 1, 0, 1, rp.scratch.p);
    real_backward<double>(rp.p, real_layout::perm, 1.0, perm.data(), 1, 0, b.data(), 1, 0, 1, rp.scratch.p);
    EXPECT_EQ(0, std::memcmp(a.data(), b.data(), n * sizeof(double))) << "n = " << n;
  }
}

// ---------------------------------------------------------------- several dimensions
// A tensor of dims with padded strides (or reversed order of strides), batch
// of count at distances; returns the element count of one transform's span.
struct layout_md {
  std::vector<dim> dims;
  long idist, odist, in_span, out_span;
};
// Strides for lengths n (as stored: in/out), dims in order, padding pad per dimension,
// reversed: the last dimension is the fastest.
std::vector<long> strides(const std::vector<long>& n, long pad, bool reversed) {
  std::vector<long> s(n.size());
  long st = 1;
  for (size_t i = 0; i < n.size(); ++i) {
    size_t d = reversed ? n.size() - 1 - i : i;
    s[d] = st;
    st = st * n[d] + pad;
  }
  return s;
}
long span(const std::vector<long>& n, const std::vector<long>& s) {
  long m = 0;
  for (size_t d = 0; d < n.size(); ++d) m += (n[d] - 1) * s[d];
  return m + 1;
}
long index_of(long lin, const std::vector<long>& n, const std::vector<long>& s) {
  long off = 0;
  for (size_t d = 0; d < n.size(); ++d) off += (lin % n[d]) * s[d], lin /= n[d];
  return off;
}

template <class T>
void check_complex_md(const std::vector<long>& n, long pad_in, long pad_out, bool rev_in, bool rev_out, bool inplace,
                      long count, int sign) {
  std::string tag;
  for (long v : n) tag += std::to_string(v) + " ";
  SCOPED_TRACE(tag + (inplace ? "in place" : "out of place") + " pads " + std::to_string(pad_in) + "/" +
               std::to_string(pad_out) + (rev_in ? " rev-in" : "") + (rev_out ? " rev-out" : ""));
  const int rank = static_cast<int>(n.size());
  auto si = strides(n, pad_in, rev_in), so = inplace ? si : strides(n, pad_out, rev_out);
  const long idist = span(n, si) + 2, odist = inplace ? idist : span(n, so) + 5;
  std::vector<dim> dims(rank);
  std::vector<std::unique_ptr<complex_p<T>>> plans;
  std::vector<const complex_plan<T>*> pp;
  for (int d = 0; d < rank; ++d) {
    dims[d] = {n[d], si[d], so[d]};
    plans.push_back(std::make_unique<complex_p<T>>(n[d]));
    pp.push_back(plans.back()->p);
  }
  mem scratch(md_scratch_bytes<T>(rank, dims.data()));
  long total = 1;
  for (long v : n) total *= v;
  std::vector<T> x(2 * idist * count, T(3)), y(2 * odist * count, T(3));
  std::vector<std::vector<cld>> in(count);
  for (long t = 0; t < count; ++t)
    for (long i = 0; i < total; ++i) {
      in[t].emplace_back(uniform(), uniform());
      const long o = 2 * (t * idist + index_of(i, n, si));
      x[o] = static_cast<T>(in[t][i].real());
      x[o + 1] = static_cast<T>(in[t][i].imag());
      in[t][i] = cld(x[o], x[o + 1]);
    }
  T* out = inplace ? x.data() : y.data();
  complex_md_run<T>(pp.data(), rank, dims.data(), sign, T(0.5), x.data(), idist, out, odist, count, scratch.p);
  for (long t = 0; t < count; ++t) {
    auto want = dft_md(in[t], n, sign);
    std::vector<cld> got;
    for (long i = 0; i < total; ++i) {
      const long o = 2 * (t * odist + index_of(i, n, so));
      got.emplace_back(out[o], out[o + 1]);
      want[i] *= 0.5L;
    }
    EXPECT_LE(rms<T>(got, want), bound<T>(total)) << "transform " << t;
  }
}

TEST(MdFft, ComplexTwoAndThreeDimensions) {
  for (bool inplace : {false, true})
    for (int sign : {-1, 1}) {
      check_complex_md<double>({5, 7}, 0, 0, false, false, inplace, 1, sign);
      check_complex_md<double>({20, 37}, 1, 3, false, true, inplace, 2, sign);
      check_complex_md<float>({9, 6, 4}, 2, 0, true, false, inplace, 3, sign);
      check_complex_md<double>({3, 4, 5}, 0, 1, true, true, inplace, 2, sign);
      check_complex_md<double>({17, 1, 33}, 1, 0, false, false, inplace, 1, sign);
      check_complex_md<float>({64, 48}, 0, 2, false, false, inplace, 1, sign);
      check_complex_md<double>({1}, 0, 0, false, false, inplace, 4, sign);
      check_complex_md<double>({11}, 2, 0, false, false, inplace, 3, sign);
    }
}
// An empty batch writes nothing.
TEST(MdFft, EmptyBatch) {
  complex_p<double> p5(5), p3(3);
  const complex_plan<double>* pp[2] = {p5.p, p3.p};
  dim dims[2] = {{5, 1, 1}, {3, 5, 5}};
  mem scratch(md_scratch_bytes<double>(2, dims));
  std::vector<double> x(30, 1.0), y(30, 7.0);
  complex_md_run<double>(pp, 2, dims, -1, 1.0, x.data(), 15, y.data(), 15, 0, scratch.p);
  real_p<double> r6(6);
  dim rd[2] = {{6, 1, 1}, {3, 6, 4}};
  mem rs(real_md_scratch_bytes<double>(2, rd));
  real_md_forward<double>(r6.p, pp, 2, rd, 1.0, x.data(), 18, y.data(), 12, 0, rs.p);
  real_md_backward<double>(r6.p, pp, 2, rd, 1.0, x.data(), 12, y.data(), 18, 0, rs.p);
  for (double v : y) EXPECT_EQ(v, 7.0);
}

TEST(MdFft, ComplexHigherRanks) {
  check_complex_md<double>({2, 3, 2, 5}, 1, 0, false, true, false, 2, -1);
  check_complex_md<double>({2, 1, 3, 1, 2, 2, 3}, 0, 0, false, false, true, 2, 1);
  check_complex_md<float>({3, 2, 2, 2, 2, 2, 2}, 0, 1, true, false, false, 1, -1);
}

// Real multi-dimensional transforms. Out of place: the real side and the
// half-spectrum side have padded strides of their own; in place: the
// standard padded layout (2 (n0/2+1) reals per line of dims[0]).
template <class T>
void check_real_md(const std::vector<long>& n, bool inplace, long pad, long count) {
  std::string tag;
  for (long v : n) tag += std::to_string(v) + " ";
  SCOPED_TRACE(tag + (inplace ? "in place" : "out of place") + " pad " + std::to_string(pad));
  const int rank = static_cast<int>(n.size());
  std::vector<long> nh = n;
  nh[0] = n[0] / 2 + 1;
  std::vector<long> sc = strides(nh, inplace ? 0 : pad, false), sr(rank);
  if (inplace) {
    sr = sc;
    for (int d = 1; d < rank; ++d) sr[d] = 2 * sc[d];
  } else {
    sr = strides(n, pad + 1, false);
  }
  const long cdist = span(nh, sc) + (inplace ? 0 : 3);
  const long rdist = inplace ? 2 * cdist : span(n, sr) + 1;
  std::vector<dim> fwd(rank), bwd(rank);
  std::vector<std::unique_ptr<complex_p<T>>> plans;
  std::vector<const complex_plan<T>*> pp;
  for (int d = 0; d < rank; ++d) {
    fwd[d] = {n[d], sr[d], sc[d]};
    bwd[d] = {n[d], sc[d], sr[d]};
    plans.push_back(std::make_unique<complex_p<T>>(d == 0 ? 1 : n[d]));
    pp.push_back(plans.back()->p);
  }
  real_p<T> rp(n[0]);
  mem scratch(real_md_scratch_bytes<T>(rank, fwd.data()));
  long total = 1, htotal = 1;
  for (int d = 0; d < rank; ++d) total *= n[d], htotal *= nh[d];
  std::vector<T> x(rdist * count + 2, T(3)), y(2 * cdist * count + 2, T(3));
  std::vector<std::vector<cld>> in(count);
  for (long t = 0; t < count; ++t)
    for (long i = 0; i < total; ++i) {
      const long o = t * rdist + index_of(i, n, sr);
      x[o] = static_cast<T>(uniform());
      in[t].emplace_back(x[o], 0);
    }
  T* out = inplace ? x.data() : y.data();
  real_md_forward<T>(rp.p, pp.data(), rank, fwd.data(), T(1), x.data(), rdist, out, cdist, count, scratch.p);
  for (long t = 0; t < count; ++t) {
    auto full = dft_md(in[t], n, -1);
    std::vector<cld> got, want;
    for (long i = 0; i < htotal; ++i) {
      const long o = 2 * (t * cdist + index_of(i, nh, sc));
      got.emplace_back(out[o], out[o + 1]);
      // Index i of the half side in the full array.
      long rem = i, full_i = 0, st = 1;
      for (int d = 0; d < rank; ++d) full_i += (rem % nh[d]) * st, rem /= nh[d], st *= n[d];
      want.push_back(full[full_i]);
    }
    EXPECT_LE(rms<T>(got, want), bound<T>(total)) << "forward, transform " << t;
  }
  // Backward with scale 1/total gives the reals back; out of place the
  // spectrum is left as it was.
  const std::vector<T> y0 = inplace ? x : y;
  std::vector<T> back(rdist * count + 2, T(3));
  T* dst = inplace ? x.data() : back.data();
  real_md_backward<T>(rp.p, pp.data(), rank, bwd.data(), T(1) / T(total), out, cdist, dst, rdist, count,
                      scratch.p);
  if (!inplace) {
    EXPECT_TRUE(y == y0) << "backward changed its input";
  }
  for (long t = 0; t < count; ++t) {
    std::vector<cld> got;
    for (long i = 0; i < total; ++i) got.emplace_back(dst[t * rdist + index_of(i, n, sr)], 0);
    EXPECT_LE(rms<T>(got, in[t]), 4 * bound<T>(total)) << "backward, transform " << t;
  }
}

TEST(MdFft, RealTwoAndThreeDimensions) {
  for (bool inplace : {false, true}) {
    check_real_md<double>({6, 5}, inplace, 1, 2);
    check_real_md<double>({7, 9}, inplace, 0, 1);
    check_real_md<float>({10, 3, 4}, inplace, 2, 2);
    check_real_md<double>({9, 5, 3}, inplace, 1, 1);
    check_real_md<double>({32, 40}, inplace, 0, 1);
    check_real_md<double>({15}, inplace, 1, 3);
    check_real_md<float>({1, 7}, inplace, 0, 2);
  }
}

// ---------------------------------------------------------------- the long route
template <class T> void check_long(long n1, long n2, bool inplace, int sign) {
  const long n = n1 * n2;
  SCOPED_TRACE(std::to_string(n1) + " x " + std::to_string(n2) + (inplace ? " in place" : ""));
  footprint f = long_footprint<T>(n1, n2);
  mem plan(f.plan_bytes), scratch(f.scratch_bytes);
  long_plan<T>* p = long_build<T>(n1, n2, plan.p);
  std::vector<T> x(2 * n), y(2 * n);
  std::vector<cld> in(n);
  for (long j = 0; j < n; ++j) {
    x[2 * j] = static_cast<T>(uniform());
    x[2 * j + 1] = static_cast<T>(uniform());
    in[j] = cld(x[2 * j], x[2 * j + 1]);
  }
  T* out = inplace ? x.data() : y.data();
  long_run<T>(p, sign, T(2), x.data(), out, scratch.p);
  auto want = reference(in, sign);
  std::vector<cld> got(n);
  for (long k = 0; k < n; ++k) got[k] = cld(out[2 * k], out[2 * k + 1]), want[k] *= 2.0L;
  EXPECT_LE(rms<T>(got, want), bound<T>(n));
}

TEST(LongFft, SplitsAndTranspositions) {
  long n1, n2;
  ASSERT_TRUE(long_split(4096, &n1, &n2));
  EXPECT_EQ(n1, 64);
  EXPECT_EQ(n2, 64);
  ASSERT_TRUE(long_split(3 * 4096, &n1, &n2));
  EXPECT_EQ(n1 * n2, 3 * 4096);
  EXPECT_EQ(n1 % n2, 0);
  ASSERT_TRUE(long_split(100000, &n1, &n2));
  EXPECT_EQ(n1 * n2, 100000);
  EXPECT_FALSE(long_split(1009, &n1, &n2));
  EXPECT_FALSE(long_split(3, &n1, &n2));
  for (long n : {6L, 210L, 1L << 20, 999999L, 2L * 65537}) {
    ASSERT_TRUE(long_split(n, &n1, &n2)) << n;
    EXPECT_EQ(n1 * n2, n);
    EXPECT_GE(n2, 2);
    EXPECT_GE(n1, n2);
  }
  // Every kind of in-place transposition: square, n1 = c n2, n2 = c n1, neither.
  for (bool inplace : {false, true})
    for (int sign : {-1, 1}) {
      check_long<double>(16, 16, inplace, sign);
      check_long<double>(48, 16, inplace, sign);
      check_long<double>(8, 40, inplace, sign);
      check_long<double>(12, 10, inplace, sign);
      check_long<float>(33, 7, inplace, sign);
    }
}

TEST(LongFft, LongLengths) {
  long n1, n2;
  for (long n : {4096L, 3L * 4096, 100000L}) {
    ASSERT_TRUE(long_split(n, &n1, &n2));
    for (bool inplace : {false, true}) check_long<double>(n1, n2, inplace, -1);
  }
  ASSERT_TRUE(long_split(100000, &n1, &n2));
  check_long<float>(n1, n2, true, 1);
}

// ---------------------------------------------------------------- against FFTW
struct fftw {
  void* h = dlopen("/usr/lib/i386-linux-gnu/libfftw3.so.3", RTLD_NOW | RTLD_LOCAL);
  template <class F> F fn(const char* s) { return reinterpret_cast<F>(dlsym(h, s)); }
  ~fftw() {
    // FFTW keeps its planner's tables until fftw_cleanup; release them
    // before the library goes away.
    if (!h) return;
    if (auto cleanup = fn<void (*)()>("fftw_cleanup")) cleanup();
    dlclose(h);
  }
};

TEST(AgainstFftw, RealOneDimensionCcs) {
  fftw f;
  if (!f.h) GTEST_SKIP() << "FFTW for i386 not installed";
  auto plan = f.fn<void* (*)(int, double*, double*, unsigned)>("fftw_plan_dft_r2c_1d");
  auto exec = f.fn<void (*)(void*)>("fftw_execute");
  auto destroy = f.fn<void (*)(void*)>("fftw_destroy_plan");
  for (long n : {1000L, 4096L, 1536L, 999L}) {
    std::vector<double> x(n), a(n + 2), b(n + 2);
    for (auto& v : x) v = static_cast<double>(uniform());
    std::vector<double> xin = x;
    void* p = plan(static_cast<int>(n), xin.data(), a.data(), 1u << 6);
    for (long j = 0; j < n; ++j) xin[j] = x[j];
    exec(p);
    destroy(p);
    real_p<double> rp(n);
    real_forward<double>(rp.p, real_layout::ccs, 1.0, x.data(), 1, 0, b.data(), 1, 0, 1, rp.scratch.p);
    std::vector<cld> got, want;
    for (long k = 0; k <= n / 2; ++k) got.emplace_back(b[2 * k], b[2 * k + 1]), want.emplace_back(a[2 * k], a[2 * k + 1]);
    EXPECT_LE(rms<double>(got, want), 2 * bound<double>(n)) << n;
  }
}

TEST(AgainstFftw, ComplexTwoDimensions) {
  fftw f;
  if (!f.h) GTEST_SKIP() << "FFTW for i386 not installed";
  auto plan = f.fn<void* (*)(int, int, double*, double*, int, unsigned)>("fftw_plan_dft_2d");
  auto exec = f.fn<void (*)(void*)>("fftw_execute");
  auto destroy = f.fn<void (*)(void*)>("fftw_destroy_plan");
  const long r = 96, c = 80;  // FFTW row-major r x c: our dims[0] = c (fastest), dims[1] = r
  std::vector<double> x(2 * r * c), a(2 * r * c), b(2 * r * c), xin(2 * r * c);
  void* p = plan(r, c, xin.data(), a.data(), -1, 1u << 6);
  for (auto& v : x) v = static_cast<double>(uniform());
  xin = x;
  exec(p);
  destroy(p);
  complex_p<double> pc(c), pr(r);
  const complex_plan<double>* pp[2] = {pc.p, pr.p};
  dim dims[2] = {{c, 1, 1}, {r, c, c}};
  mem scratch(md_scratch_bytes<double>(2, dims));
  complex_md_run<double>(pp, 2, dims, -1, 1.0, x.data(), 0, b.data(), 0, 1, scratch.p);
  std::vector<cld> got, want;
  for (long i = 0; i < r * c; ++i) got.emplace_back(b[2 * i], b[2 * i + 1]), want.emplace_back(a[2 * i], a[2 * i + 1]);
  EXPECT_LE(rms<double>(got, want), 2 * bound<double>(r * c));
}

}  // namespace
