// GEMM: GFLOP/s of s, d, c, z GEMM ("N", "N", alpha 1, beta 1) for square
// sizes and a few skinny shapes; zar on one and two threads, OpenBLAS (serial)
// and the reference BLAS for i386 through their Fortran entries. The last
// column is zar's one-thread figure as a fraction of the machine limit: four
// chains of 256-bit adds (eight vector registers in 32-bit mode), each add
// waiting for the previous one. The add latency is measured at start-up
// (about 3 cycles at 3.2 GHz or more, depending on the clock).
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "zar/control.h"

namespace {

using gemm_fn = void (*)(const char*, const char*, const int*, const int*, const int*, const void*, const void*,
                         const int*, const void*, const int*, const void*, void*, const int*);

// Seconds per dependent 256-bit add: a chain of adds, best of a few runs.
double add_latency() {
  static const double t = [] {
    const int turns = 1 << 22;
    return bench::best_seconds(
               [] {
                 int n = turns;
                 asm volatile(
                     "vxorpd %%ymm0, %%ymm0, %%ymm0\n\t"
                     "1:\n\t"
                     "vaddpd %%ymm0, %%ymm0, %%ymm0\n\tvaddpd %%ymm0, %%ymm0, %%ymm0\n\t"
                     "vaddpd %%ymm0, %%ymm0, %%ymm0\n\tvaddpd %%ymm0, %%ymm0, %%ymm0\n\t"
                     "vaddpd %%ymm0, %%ymm0, %%ymm0\n\tvaddpd %%ymm0, %%ymm0, %%ymm0\n\t"
                     "vaddpd %%ymm0, %%ymm0, %%ymm0\n\tvaddpd %%ymm0, %%ymm0, %%ymm0\n\t"
                     "dec %0\n\tjnz 1b\n\t"
                     "vzeroupper"
                     : "+r"(n)
                     :
                     : "xmm0", "cc");
               },
               0.05, 3) /
           (8.0 * turns);
  }();
  return t;
}

struct type_info {
  const char* letter;
  int elem_bytes;   // of one element
  int real_bytes;   // of its real type
  double flops_per_mac;
  double limit() const {  // GFLOP/s: 4 chains x lanes per 256-bit add x 2 flops per add latency
    const double lanes = 32.0 / real_bytes;
    return 4 * lanes * 2 / add_latency() / 1e9;
  }
};

struct shape {
  int m, n, k;
};

void run_type(const type_info& t) {
  const auto& libs = bench::libraries();
  const std::string name = std::string(t.letter) + "gemm_";
  std::vector<shape> shapes;
  const std::vector<int> squares = bench::quick() ? std::vector<int>{64, 128, 500}
                                                  : std::vector<int>{64, 128, 256, 500, 1000, 2000, 4000};
  for (int s : squares) shapes.push_back({s, s, s});
  if (!bench::quick()) {
    shapes.push_back({2000, 2000, 64});
    shapes.push_back({2000, 64, 2000});
    shapes.push_back({64, 2000, 2000});
    shapes.push_back({4000, 16, 4000});
  }
  std::vector<std::string> cols = {"m x n x k", "zar 1T", "zar 2T"};
  for (size_t i = 1; i < libs.size(); ++i) cols.push_back(libs[i].name);
  cols.push_back("zar/" + (libs.size() > 1 ? libs[1].name : std::string("peer")));
  cols.push_back("2T/1T");
  cols.push_back("of limit");
  bench::table tab(std::string(1, static_cast<char>(t.letter[0] - 'a' + 'A')) +
                       "GEMM, GFLOP/s (NN, beta 1; limit " + bench::fmt("%.1f", t.limit()) + " GFLOP/s)",
                   cols);

  std::mt19937 g(1);
  std::uniform_real_distribution<float> u(-1, 1);
  for (const shape& s : shapes) {
    const size_t reals = static_cast<size_t>(t.elem_bytes / t.real_bytes);
    auto fill = [&](size_t count) {
      std::vector<char> v(count * t.elem_bytes);
      for (size_t i = 0; i < count * reals; ++i) {
        if (t.real_bytes == 4) reinterpret_cast<float*>(v.data())[i] = u(g);
        else reinterpret_cast<double*>(v.data())[i] = u(g);
      }
      return v;
    };
    auto a = fill(static_cast<size_t>(s.m) * s.k), b = fill(static_cast<size_t>(s.k) * s.n),
         c = fill(static_cast<size_t>(s.m) * s.n);
    // alpha 1, beta 1 in the element type (complex: imaginary parts 0).
    double one_d[2] = {1, 0};
    float one_f[2] = {1, 0};
    const void* one = t.real_bytes == 4 ? static_cast<const void*>(one_f) : static_cast<const void*>(one_d);
    const double flops = t.flops_per_mac * s.m * s.n * s.k;
    const double work = flops / 1e9;
    auto measure = [&](gemm_fn f) {
      if (!f) return -1.0;
      const double secs = bench::best_seconds(
          [&] { f("N", "N", &s.m, &s.n, &s.k, one, a.data(), &s.m, b.data(), &s.k, one, c.data(), &s.m); },
          0.25, work > 20 ? 2 : 3);
      return work / secs;
    };
    std::vector<std::string> row = {std::to_string(s.m) + "x" + std::to_string(s.n) + "x" + std::to_string(s.k)};
    const gemm_fn zar = libs[0].sym<gemm_fn>(name.c_str());
    zar_set_num_threads(1);
    const double z1 = measure(zar);
    zar_set_num_threads(2);
    const double z2 = measure(zar);
    zar_set_num_threads(0);
    row.push_back(bench::fmt("%.2f", z1));
    row.push_back(bench::fmt("%.2f", z2));
    double peer = -1;
    for (size_t i = 1; i < libs.size(); ++i) {
      // The reference BLAS is skipped where one call would take minutes.
      const bool slow = libs[i].name == "refBLAS" && work > 3;
      const double gf = slow ? -1 : measure(libs[i].sym<gemm_fn>(name.c_str()));
      if (i == 1) peer = gf;
      row.push_back(gf < 0 ? "-" : bench::fmt("%.2f", gf));
    }
    row.push_back(peer > 0 ? bench::fmt("%.2fx", z1 / peer) : "-");
    row.push_back(bench::fmt("%.2fx", z2 / z1));
    row.push_back(bench::fmt("%.0f%%", 100 * z1 / t.limit()));
    tab.row(row);
  }
}

const bench::registrar reg("gemm", 30, [] {
  const type_info types[] = {{"d", 8, 8, 2}, {"s", 4, 4, 2}, {"c", 8, 4, 8}, {"z", 16, 8, 8}};
  for (const auto& t : types) run_type(t);
});

}  // namespace
