// The FFTW interface: the same transforms through zar's libfftw3.so.3 and
// through Debian's FFTW for i386, both planned with FFTW_MEASURE, one
// thread, out of place, warm caches, best of repeated runs. Both libraries
// export the same names, so each is loaded by path with its own symbols
// bound to itself (RTLD_LOCAL | RTLD_DEEPBIND). Ratio: FFTW's time over
// zar's (above 1: zar is faster).
#include <dlfcn.h>
#include <fftw3.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "zar/control.h"

namespace {

struct fftw_lib {
  decltype(&fftw_plan_dft_1d) plan_dft_1d = nullptr;
  decltype(&fftw_plan_r2r_1d) plan_r2r_1d = nullptr;
  decltype(&fftw_execute) execute = nullptr;
  decltype(&fftw_destroy_plan) destroy_plan = nullptr;
  decltype(&fftw_malloc) malloc = nullptr;
  decltype(&fftw_free) free = nullptr;
  explicit operator bool() const { return plan_dft_1d && plan_r2r_1d && execute && destroy_plan && malloc && free; }
};

fftw_lib open_lib(const std::string& path) {
  fftw_lib f;
#if defined(__SANITIZE_ADDRESS__)
  // AddressSanitizer refuses RTLD_DEEPBIND: no comparison in such a build.
  void* h = nullptr;
  (void)path;
#else
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
#endif
  if (!h) return f;
  f.plan_dft_1d = reinterpret_cast<decltype(f.plan_dft_1d)>(dlsym(h, "fftw_plan_dft_1d"));
  f.plan_r2r_1d = reinterpret_cast<decltype(f.plan_r2r_1d)>(dlsym(h, "fftw_plan_r2r_1d"));
  f.execute = reinterpret_cast<decltype(f.execute)>(dlsym(h, "fftw_execute"));
  f.destroy_plan = reinterpret_cast<decltype(f.destroy_plan)>(dlsym(h, "fftw_destroy_plan"));
  f.malloc = reinterpret_cast<decltype(f.malloc)>(dlsym(h, "fftw_malloc"));
  f.free = reinterpret_cast<decltype(f.free)>(dlsym(h, "fftw_free"));
  return f;
}

struct row {
  const char* what;
  int n;
  int kind;  // -1: complex forward; otherwise an r2r kind
};

// Seconds per transform through one library; -1 when it cannot plan.
double time_one(const fftw_lib& f, const row& r) {
  const size_t reals = r.kind < 0 ? 2 * static_cast<size_t>(r.n) : static_cast<size_t>(r.n);
  auto* in = static_cast<double*>(f.malloc(reals * sizeof(double)));
  auto* out = static_cast<double*>(f.malloc(reals * sizeof(double)));
  fftw_plan p = r.kind < 0 ? f.plan_dft_1d(r.n, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out),
                                           FFTW_FORWARD, FFTW_MEASURE)
                           : f.plan_r2r_1d(r.n, in, out, static_cast<fftw_r2r_kind>(r.kind), FFTW_MEASURE);
  double t = -1;
  if (p) {
    // MEASURE may have used the arrays: the data are written after planning.
    std::mt19937 g(1);
    std::uniform_real_distribution<double> u(-1, 1);
    for (size_t i = 0; i < reals; ++i) in[i] = u(g);
    t = bench::best_seconds([&] { f.execute(p); }, bench::quick() ? 0.05 : 0.25);
    f.destroy_plan(p);
  }
  f.free(in);
  f.free(out);
  return t;
}

void run() {
  std::string dir = zar_core_path();
  dir = dir.substr(0, dir.rfind('/'));
  const fftw_lib ours = open_lib(dir + "/libfftw3.so.3");
  const fftw_lib theirs = open_lib("/usr/lib/i386-linux-gnu/libfftw3.so.3");
  if (!ours) {
    std::printf("fftw: %s/libfftw3.so.3 cannot be loaded\n", dir.c_str());
    return;
  }
  std::vector<row> rows;
  const std::vector<int> complex_lengths =
      bench::quick() ? std::vector<int>{1024, 1000} : std::vector<int>{64, 1024, 4096, 65536, 1 << 20, 1000, 2520, 1009};
  for (int n : complex_lengths) rows.push_back({"complex fwd", n, -1});
  for (int kind : {FFTW_REDFT10, FFTW_RODFT00})
    for (int n : {1024, 4096}) rows.push_back({kind == FFTW_REDFT10 ? "REDFT10" : "RODFT00", n, kind});

  bench::table tab("FFTW interface, double, 1 thread, FFTW_MEASURE, out of place: microseconds per transform; "
                   "ratio = FFTW time / zar time (above 1: zar faster)",
                   {"transform", "n", "zar libfftw3", "FFTW 3.3", "ratio"});
  for (const row& r : rows) {
    const double a = time_one(ours, r);
    const double b = theirs ? time_one(theirs, r) : -1;
    auto us = [](double s) { return s > 0 ? bench::fmt("%.2f", s * 1e6) : std::string("-"); };
    tab.row({r.what, std::to_string(r.n), us(a), us(b), a > 0 && b > 0 ? bench::fmt("%.2fx", b / a) : std::string("-")});
  }
}

const bench::registrar reg("fftw", 70, run);

}  // namespace
