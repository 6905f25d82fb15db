// Level 2: GFLOP/s of dgemv (N and T), dger, dsymv (upper) and dtrsv
// (lower, no transpose, non-unit) at n = 500 and 2000, all through the
// Fortran entries; zar on one thread, OpenBLAS (serial) and the reference
// BLAS for i386. Warm caches: the same arrays are used for every repetition
// (at n = 2000 the matrix is 32 MB, the size of the last-level cache).
// Flops: gemv, ger and symv 2n^2, trsv n^2.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "zar/control.h"

namespace {

using gemv_fn = void (*)(const char*, const int*, const int*, const double*, const double*, const int*, const double*,
                         const int*, const double*, double*, const int*);
using ger_fn = void (*)(const int*, const int*, const double*, const double*, const int*, const double*, const int*,
                        double*, const int*);
using symv_fn = void (*)(const char*, const int*, const double*, const double*, const int*, const double*, const int*,
                         const double*, double*, const int*);
using trsv_fn = void (*)(const char*, const char*, const char*, const int*, const double*, const int*, double*,
                         const int*);

void run() {
  const auto& libs = bench::libraries();
  std::vector<std::string> cols = {"routine", "n"};
  for (const auto& l : libs) cols.push_back(l.name == "zar" ? "zar 1T" : l.name);
  if (libs.size() > 1) cols.push_back("zar/" + libs[1].name);
  bench::table tab("Level 2 (double), GFLOP/s, one thread", cols);
  zar_set_num_threads(1);

  std::mt19937 g(5);
  std::uniform_real_distribution<double> u(-1, 1);
  const std::vector<int> sizes = bench::quick() ? std::vector<int>{500} : std::vector<int>{500, 2000};
  for (int n : sizes) {
    const size_t nn = static_cast<size_t>(n) * n;
    std::vector<double> a(nn), x(n), y(n), x0(n);
    for (auto& v : a) v = u(g);
    for (auto& v : x) v = u(g);
    for (auto& v : y) v = u(g);
    // a well-conditioned lower triangle for the solve
    std::vector<double> t(a);
    for (int j = 0; j < n; ++j) {
      for (int i = j + 1; i < n; ++i) t[i + j * static_cast<size_t>(n)] /= n;
      t[j + j * static_cast<size_t>(n)] = 2 + u(g) * 0.5;
    }
    x0 = x;
    const int one = 1;
    const double alpha = 1.0, beta = 1.0, small = 1e-9;
    const double gf2 = 2.0 * nn / 1e9, gf1 = double(nn) / 1e9;

    struct row_def {
      const char* name;
      double gflop;
      std::function<double(const bench::library&)> time;
    };
    const std::vector<row_def> rows = {
        {"dgemv N", gf2,
         [&](const bench::library& l) {
           auto f = l.sym<gemv_fn>("dgemv_");
           return f ? bench::best_seconds([&] { f("N", &n, &n, &small, a.data(), &n, x.data(), &one, &beta, y.data(), &one); }) : -1;
         }},
        {"dgemv T", gf2,
         [&](const bench::library& l) {
           auto f = l.sym<gemv_fn>("dgemv_");
           return f ? bench::best_seconds([&] { f("T", &n, &n, &small, a.data(), &n, x.data(), &one, &beta, y.data(), &one); }) : -1;
         }},
        {"dger", gf2,
         [&](const bench::library& l) {
           auto f = l.sym<ger_fn>("dger_");
           return f ? bench::best_seconds([&] { f(&n, &n, &small, x.data(), &one, y.data(), &one, a.data(), &n); }) : -1;
         }},
        {"dsymv U", gf2,
         [&](const bench::library& l) {
           auto f = l.sym<symv_fn>("dsymv_");
           return f ? bench::best_seconds([&] { f("U", &n, &small, a.data(), &n, x.data(), &one, &beta, y.data(), &one); }) : -1;
         }},
        {"dtrsv LNN", gf1,
         [&](const bench::library& l) {
           auto f = l.sym<trsv_fn>("dtrsv_");
           return f ? bench::best_seconds([&] {
             std::memcpy(x.data(), x0.data(), sizeof(double) * n);
             f("L", "N", "N", &n, t.data(), &n, x.data(), &one);
           })
                    : -1;
         }},
    };
    (void)alpha;
    for (const auto& r : rows) {
      std::vector<std::string> cells = {r.name, std::to_string(n)};
      std::vector<double> rate;
      for (const auto& l : libs) {
        const double s = r.time(l);
        rate.push_back(s > 0 ? r.gflop / s : -1);
        cells.push_back(s > 0 ? bench::fmt("%.2f", rate.back()) : "-");
      }
      if (rate.size() > 1) cells.push_back(rate[1] > 0 ? bench::fmt("%.2fx", rate[0] / rate[1]) : "-");
      tab.row(cells);
      x = x0;
    }
  }
  zar_set_num_threads(0);
}

const bench::registrar reg("level2", 20, run);

}  // namespace
