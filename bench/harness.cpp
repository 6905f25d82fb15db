#include "harness.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "zar/control.h"

namespace bench {
namespace {

struct entry {
  std::string family;
  int order;
  std::function<void()> run;
};
std::vector<entry>& entries() {
  static std::vector<entry> e;
  return e;
}
bool g_quick = false;

}  // namespace

const std::vector<library>& libraries() {
  static const std::vector<library> libs = [] {
    std::vector<library> v;
    v.push_back({"zar", dlopen(zar_core_path(), RTLD_NOW)});
    const struct { const char* name; const char* path; } peers[] = {
        {"OpenBLAS", "/usr/lib/i386-linux-gnu/openblas-serial/libopenblas.so.0"},
        {"refBLAS", "/usr/lib/i386-linux-gnu/blas/libblas.so.3"}};
    for (const auto& p : peers) {
      // Deep binding keeps each peer's calls inside the peer.
      void* h = dlopen(p.path, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
      if (h) v.push_back({p.name, h});
      else std::fprintf(stderr, "bench: peer %s not available: %s\n", p.name, dlerror());
    }
    return v;
  }();
  return libs;
}

double best_seconds(const std::function<void()>& f, double min_total, int min_reps,
                    const std::function<void()>& before) {
  using clock = std::chrono::steady_clock;
  if (g_quick) min_total /= 5;
  double best = 1e30, total = 0;
  for (int r = 0; r < min_reps || total < min_total; ++r) {
    if (before) before();
    const auto t0 = clock::now();
    f();
    const double s = std::chrono::duration<double>(clock::now() - t0).count();
    best = std::min(best, s);
    total += s;
    if (r > 100000) break;
  }
  return best;
}

bool quick() { return g_quick; }

table::table(std::string title, std::vector<std::string> columns) {
  std::printf("\n%s\n", title.c_str());
  for (const auto& c : columns) widths_.push_back(std::max<size_t>(c.size(), 9));
  row(columns);
}
void table::row(const std::vector<std::string>& cells) {
  for (size_t i = 0; i < cells.size(); ++i)
    std::printf(i == 0 ? "%-*s" : "  %*s", static_cast<int>(i < widths_.size() ? widths_[i] : 9), cells[i].c_str());
  std::printf("\n");
  std::fflush(stdout);
}
table::~table() {}

std::string fmt(const char* format, double v) {
  char b[64];
  std::snprintf(b, sizeof b, format, v);
  return b;
}

registrar::registrar(const char* family, int order, std::function<void()> run) {
  entries().push_back({family, order, std::move(run)});
}

}  // namespace bench

// zar-bench [--quick] [family ...]: runs every registered family, or those named.
int main(int argc, char** argv) {
  std::vector<std::string> wanted;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0) bench::g_quick = true;
    else wanted.push_back(argv[i]);
  }
  if (zar_kernel_load(nullptr) != ZAR_LOAD_OK) {
    std::fprintf(stderr, "%s\n", zar_kernel_error());
    return 1;
  }
  std::printf("zar-bench: %s, %d thread(s) available; best of repeated runs, warm caches\n", zar_cpu_brand(),
              zar_get_max_threads());
  std::printf("libraries:");
  for (const auto& l : bench::libraries()) std::printf(" %s", l.name.c_str());
  std::printf("\n");
  auto& e = bench::entries();
  std::stable_sort(e.begin(), e.end(), [](const auto& a, const auto& b) { return a.order < b.order; });
  int ran = 0;
  for (const auto& x : e) {
    if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), x.family) == wanted.end()) continue;
    x.run();
    ++ran;
  }
  if (ran == 0) std::printf("no benchmarks registered%s\n", wanted.empty() ? "" : " under those names");
  return 0;
}
