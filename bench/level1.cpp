// Level 1: daxpy, ddot, dnrm2, idamax and dscal (unit stride) at n = 1000
// (in the first-level cache), 100000 and 10 million (in memory), through the
// Fortran entries of zar, OpenBLAS (serial) and the reference BLAS for i386.
// Arrays are 64-byte aligned and reused for every repetition (warm caches).
// zar runs on one thread, and once more on two ("zar 2T"), where the
// element-wise front ends divide vectors of 524288 elements or more.
//
// Each routine shows GFLOP/s (daxpy, ddot, dnrm2 2n flops; dscal n; idamax n
// magnitude comparisons) and zar's GB/s (bytes each element needs: daxpy 24,
// ddot 16, dnrm2, idamax and dscal 8 read + 8 written for dscal). At 10
// million the last column relates zar's GB/s to the streaming bandwidth this
// bench measures (first, and again beside each figure) with the simplest
// loops of the same traffic (the better of 256-bit and 128-bit accesses):
// reading two arrays (dot-like, 16 B/element), reading one (8 B), and
// y[i] += x[i] / x[i] *= s (read-modify-write, 24 and 16 B).
#include <immintrin.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "zar/control.h"

namespace {

struct aligned {
  double* p;
  explicit aligned(size_t n) : p(static_cast<double*>(std::aligned_alloc(64, (n * sizeof(double) + 63) / 64 * 64))) {}
  ~aligned() { std::free(p); }
};

// ---- streaming loops (n a multiple of 16) on 256-bit or 128-bit vectors;
// on some processors the narrower accesses stream faster, so the bench takes
// the better of the two as the machine's bandwidth.
template <int Bits>
struct lanes;
template <>
struct lanes<256> {
  using V = __m256d;
  static constexpr int L = 4;
  static __m256d zero() { return _mm256_setzero_pd(); }
  static __m256d set1(double a) { return _mm256_set1_pd(a); }
  static __m256d load(const double* p) { return _mm256_load_pd(p); }
  static void store(double* p, __m256d v) { _mm256_store_pd(p, v); }
  static __m256d add(__m256d a, __m256d b) { return _mm256_add_pd(a, b); }
  static __m256d mul(__m256d a, __m256d b) { return _mm256_mul_pd(a, b); }
};
template <>
struct lanes<128> {
  using V = __m128d;
  static constexpr int L = 2;
  static __m128d zero() { return _mm_setzero_pd(); }
  static __m128d set1(double a) { return _mm_set1_pd(a); }
  static __m128d load(const double* p) { return _mm_load_pd(p); }
  static void store(double* p, __m128d v) { _mm_store_pd(p, v); }
  static __m128d add(__m128d a, __m128d b) { return _mm_add_pd(a, b); }
  static __m128d mul(__m128d a, __m128d b) { return _mm_mul_pd(a, b); }
};

// sum of a (and of b when given), four vector sums
template <int Bits, class W = lanes<Bits>, class V = typename W::V>
double stream_read(const double* a, const double* b, int n) {
  V s[4] = {W::zero(), W::zero(), W::zero(), W::zero()};
  for (int i = 0; i < n; i += 4 * W::L)
    for (int k = 0; k < 4; ++k) {
      const V v = W::load(a + i + k * W::L);
      s[k] = W::add(s[k], b ? W::add(v, W::load(b + i + k * W::L)) : v);
    }
  alignas(32) double out[4 * W::L];
  for (int k = 0; k < 4; ++k) W::store(out + k * W::L, s[k]);
  double t = 0;
  for (double v : out) t += v;
  return t;
}
// y := y + x (x null: y := s y)
template <int Bits, class W = lanes<Bits>, class V = typename W::V>
void stream_update(const double* x, double* y, double s, int n) {
  const V f = W::set1(s);
  for (int i = 0; i < n; i += 2 * W::L)
    for (int k = 0; k < 2; ++k) {
      double* p = y + i + k * W::L;
      W::store(p, x ? W::add(W::load(p), W::load(x + i + k * W::L)) : W::mul(W::load(p), f));
    }
}

volatile double sink;

using axpy_fn = void (*)(const int*, const double*, const double*, const int*, double*, const int*);
using dot_fn = double (*)(const int*, const double*, const int*, const double*, const int*);
using nrm2_fn = double (*)(const int*, const double*, const int*);
using iamax_fn = int (*)(const int*, const double*, const int*);
using scal_fn = void (*)(const int*, const double*, double*, const int*);

// Calls per timed repetition, so that one repetition lasts about 50 us.
int calls_for(int n) { return std::max(1, 400000 / n); }
template <class F>
void repeat(int n, F call) {
  for (int c = 0, k = calls_for(n); c < k; ++c) call(c);
}

void run() {
  const auto& libs = bench::libraries();
  zar_set_num_threads(1);
  const std::vector<int> sizes =
      bench::quick() ? std::vector<int>{1000, 100000} : std::vector<int>{1000, 100000, 10000000};
  const int nmax = sizes.back();
  aligned x(nmax), y(nmax);
  std::mt19937 g(3);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int i = 0; i < nmax; ++i) x.p[i] = u(g), y.p[i] = u(g);

  // Streaming bandwidth at the largest size, GB/s of each pattern. It is
  // measured again beside each routine's figure, as the machine's load
  // changes.
  const double total = bench::quick() ? 0.1 : 0.5;
  const double bytes = double(nmax) * sizeof(double);
  int flip = 0;
  // GB/s of a pattern: the better of the 256-bit and 128-bit loops
  auto best_of = [&](double traffic, const std::function<void()>& wide, const std::function<void()>& narrow) {
    return traffic / std::min(bench::best_seconds(wide, total), bench::best_seconds(narrow, total)) / 1e9;
  };
  const std::function<double()> bw_read2 = [&] {
    return best_of(
        2 * bytes, [&] { sink = stream_read<256>(x.p, y.p, nmax); }, [&] { sink = stream_read<128>(x.p, y.p, nmax); });
  };
  const std::function<double()> bw_read1 = [&] {
    return best_of(
        bytes, [&] { sink = stream_read<256>(x.p, nullptr, nmax); },
        [&] { sink = stream_read<128>(x.p, nullptr, nmax); });
  };
  const std::function<double()> bw_update = [&] {
    return best_of(
        3 * bytes, [&] { stream_update<256>(x.p, y.p, 1, nmax); }, [&] { stream_update<128>(x.p, y.p, 1, nmax); });
  };
  const std::function<double()> bw_scale = [&] {
    return best_of(
        2 * bytes, [&] { stream_update<256>(nullptr, y.p, (flip ^= 1) ? 2.0 : 0.5, nmax); },
        [&] { stream_update<128>(nullptr, y.p, (flip ^= 1) ? 2.0 : 0.5, nmax); });
  };
  {
    bench::table tab(
        "Level 1: streaming bandwidth at n = " + std::to_string(nmax) + " (simplest loops, 256- or 128-bit), GB/s",
        {"pattern", "GB/s"});
    tab.row({"read 2 arrays", bench::fmt("%.1f", bw_read2())});
    tab.row({"read 1 array", bench::fmt("%.1f", bw_read1())});
    tab.row({"y += x", bench::fmt("%.1f", bw_update())});
    tab.row({"x *= s", bench::fmt("%.1f", bw_scale())});
  }

  struct routine {
    const char* name;
    double flops_per_elem, bytes_per_elem;
    std::function<double()> stream;                        // GB/s of the same traffic pattern
    std::function<void(const bench::library&, int)> call;  // calls_for(n) calls on n elements
  };
  const int one = 1;
  const std::vector<routine> routines = {
      {"daxpy", 2, 24, bw_update,
       [&](const bench::library& l, int n) {
         const auto f = l.sym<axpy_fn>("daxpy_");
         const double a[2] = {1e-3, -1e-3};
         repeat(n, [&](int c) { f(&n, &a[c & 1], x.p, &one, y.p, &one); });
       }},
      {"ddot", 2, 16, bw_read2,
       [&](const bench::library& l, int n) {
         const auto f = l.sym<dot_fn>("ddot_");
         repeat(n, [&](int) { sink = f(&n, x.p, &one, y.p, &one); });
       }},
      {"dnrm2", 2, 8, bw_read1,
       [&](const bench::library& l, int n) {
         const auto f = l.sym<nrm2_fn>("dnrm2_");
         repeat(n, [&](int) { sink = f(&n, x.p, &one); });
       }},
      {"idamax", 1, 8, bw_read1,
       [&](const bench::library& l, int n) {
         const auto f = l.sym<iamax_fn>("idamax_");
         repeat(n, [&](int) { sink = f(&n, x.p, &one); });
       }},
      {"dscal", 1, 16, bw_scale,
       [&](const bench::library& l, int n) {
         const auto f = l.sym<scal_fn>("dscal_");
         const double a[2] = {2.0, 0.5};
         repeat(n, [&](int c) { f(&n, &a[c & 1], y.p, &one); });
       }},
  };

  std::vector<std::string> cols = {"routine", "n"};
  for (const auto& l : libs) cols.push_back(l.name + " GF/s");
  cols.insert(cols.begin() + 3, "zar 2T");
  if (libs.size() > 1) cols.push_back("zar/" + libs[1].name);
  cols.push_back("zar GB/s");
  cols.push_back("of stream");
  bench::table tab(
      "Level 1 (double, unit stride): one thread, and zar on two (element-wise routines split "
      "long vectors)",
      cols);
  for (const auto& r : routines)
    for (int n : sizes) {
      auto seconds = [&](const bench::library& l) {
        return bench::best_seconds([&] { r.call(l, n); }, n >= 1000000 ? total / 2 : 0.25) / calls_for(n);
      };
      // In memory the machine's load drifts: the libraries (and, at the
      // largest size, the streaming loop) take turns over three rounds and
      // each keeps its best.
      const bool streaming = n == nmax && !bench::quick();
      const int rounds = n >= 1000000 ? 3 : 1;
      std::vector<double> secs(libs.size(), 1e30);
      double two = 1e30, stream = 0;
      for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < libs.size(); ++i) secs[i] = std::min(secs[i], seconds(libs[i]));
        zar_set_num_threads(2);
        two = std::min(two, seconds(libs[0]));
        zar_set_num_threads(1);
        if (streaming) stream = std::max(stream, r.stream());
      }
      auto gf = [&](double t) { return bench::fmt("%.2f", r.flops_per_elem * n / t / 1e9); };
      std::vector<std::string> cells = {r.name, std::to_string(n)};
      for (double t : secs) cells.push_back(gf(t));
      cells.insert(cells.begin() + 3, gf(two));
      if (secs.size() > 1) cells.push_back(bench::fmt("%.2f", secs[1] / secs[0]));
      const double gbs = r.bytes_per_elem * n / secs[0] / 1e9;
      cells.push_back(bench::fmt("%.1f", gbs));
      cells.push_back(streaming ? bench::fmt("%.0f%%", 100 * gbs / stream) : "");
      tab.row(cells);
    }
  zar_set_num_threads(0);
}

const bench::registrar reg("level1", 10, run);

}  // namespace
