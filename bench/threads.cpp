// Application threads sharing the core's pool: eight threads each calling
// dgemm (n = 500) at once, the aggregate throughput with two threads per
// call against one. A caller that finds the workers busy runs with the
// threads that are free instead of waiting, so asking for two threads may
// not cost the callers anything.
#include <random>
#include <thread>
#include <vector>

#include "harness.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace {

double aggregate_gflops(int callers, int n, int per_call, int calls_each) {
  std::mt19937 g(1);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<std::vector<double>> a(callers), b(callers), c(callers);
  for (int t = 0; t < callers; ++t) {
    for (auto* v : {&a[t], &b[t], &c[t]}) {
      v->resize(static_cast<size_t>(n) * n);
      for (double& x : *v) x = u(g);
    }
  }
  zar_set_num_threads(per_call);
  const double one = 1;
  const double secs = bench::best_seconds(
      [&] {
        std::vector<std::thread> th;
        for (int t = 0; t < callers; ++t)
          th.emplace_back([&, t] {
            for (int i = 0; i < calls_each; ++i)
              dgemm_("N", "N", &n, &n, &n, &one, a[t].data(), &n, b[t].data(), &n, &one, c[t].data(), &n);
          });
        for (auto& x : th) x.join();
      },
      0.5, 3);
  zar_set_num_threads(0);
  return 2.0 * n * n * n * callers * calls_each / secs / 1e9;
}

const bench::registrar reg("threads", 90, [] {
  constexpr int callers = 8, n = 500;
  const int calls = bench::quick() ? 1 : 2;
  bench::table tab("8 application threads x dgemm n = 500, aggregate GFLOP/s",
                   {"threads per call", "GFLOP/s", "vs 1 per call"});
  const double one = aggregate_gflops(callers, n, 1, calls);
  const double two = aggregate_gflops(callers, n, 2, calls);
  tab.row({"1", bench::fmt("%.2f", one), "1.00x"});
  tab.row({"2", bench::fmt("%.2f", two), bench::fmt("%.2fx", two / one)});
});

}  // namespace
