// FFT: complex one-dimensional transforms of zar's engine against FFTW 3
// for i386 (loaded at run time, planned with FFTW_MEASURE, out of place),
// one thread, forward, warm caches (the same arrays every repetition).
// Per length: nanoseconds per transform of each, zar's GFLOP/s counted as
// 5 n log2 n, and the ratio FFTW time / zar time (above 1: zar faster).
#include <dlfcn.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "dft/engine/fft.h"
#include "harness.h"

namespace {

// The few FFTW entry points used, declared here (fftw_complex is T[2]).
template <class T> struct fftw_api {
  void* (*plan_dft_1d)(int, T*, T*, int, unsigned) = nullptr;
  void (*execute)(void*) = nullptr;
  void (*destroy_plan)(void*) = nullptr;
  bool load(const char* lib, const char* prefix) {
    void* h = dlopen(lib, RTLD_NOW | RTLD_LOCAL);
    if (!h) return false;
    auto sym = [&](const char* name) { return dlsym(h, (std::string(prefix) + name).c_str()); };
    plan_dft_1d = reinterpret_cast<decltype(plan_dft_1d)>(sym("plan_dft_1d"));
    execute = reinterpret_cast<decltype(execute)>(sym("execute"));
    destroy_plan = reinterpret_cast<decltype(destroy_plan)>(sym("destroy_plan"));
    return plan_dft_1d && execute && destroy_plan;
  }
};
constexpr unsigned fftw_measure = 0;
constexpr int fftw_forward = -1;

struct block {
  void* p;
  explicit block(size_t bytes) : p(std::aligned_alloc(64, (bytes + 63) / 64 * 64 + 64)) {}
  ~block() { std::free(p); }
};

template <class T> void fill(T* x, long count) {
  std::mt19937 g(5);
  std::uniform_real_distribution<T> u(-1, 1);
  for (long k = 0; k < count; ++k) x[k] = u(g);
}

template <class T> void lengths(const char* title, const std::vector<long>& ns, const fftw_api<T>* fftw) {
  bench::table t(title, {"n", "zar ns", "FFTW ns", "zar GFLOP/s", "FFTW/zar"});
  const double total = bench::quick() ? 0.05 : 0.3;
  for (long n : ns) {
    block x(2 * n * sizeof(T)), y(2 * n * sizeof(T));
    T* xp = static_cast<T*>(x.p);
    T* yp = static_cast<T*>(y.p);
    const zar::fft::footprint f = zar::fft::complex_footprint<T>(n);
    block mem(f.plan_bytes), scratch(f.scratch_bytes);
    const auto* plan = zar::fft::complex_build<T>(n, mem.p);
    double fftw_s = 0;
    if (fftw) {
      void* fp = fftw->plan_dft_1d(static_cast<int>(n), xp, yp, fftw_forward, fftw_measure);
      fill(xp, 2 * n);
      fftw_s = bench::best_seconds([&] { fftw->execute(fp); }, total);
      fftw->destroy_plan(fp);
    }
    fill(xp, 2 * n);
    const double zar_s = bench::best_seconds(
        [&] { zar::fft::complex_run<T>(plan, -1, T(1), xp, 1, n, yp, 1, n, 1, scratch.p); }, total);
    const double flops = 5.0 * n * std::log2(double(n));
    t.row({std::to_string(n), bench::fmt("%.0f", zar_s * 1e9), fftw ? bench::fmt("%.0f", fftw_s * 1e9) : "-",
           bench::fmt("%.2f", flops / zar_s / 1e9), fftw ? bench::fmt("%.2f", fftw_s / zar_s) : "-"});
  }
}

void run() {
  static fftw_api<double> d;
  static fftw_api<float> s;
  const bool have_d = d.load("libfftw3.so.3", "fftw_"), have_s = s.load("libfftw3f.so.3", "fftwf_");
  const std::vector<long> dn = bench::quick() ? std::vector<long>{64, 1024, 1000}
                                              : std::vector<long>{64, 1024, 4096, 16384, 65536, 1L << 20, 1000,
                                                                  2520, 1009, 65537};
  const std::vector<long> sn = bench::quick() ? std::vector<long>{1024} : std::vector<long>{64, 1024, 4096, 65536};
  lengths<double>("complex double, forward, out of place (FFTW_MEASURE)", dn, have_d ? &d : nullptr);
  lengths<float>("complex single, forward, out of place (FFTW_MEASURE)", sn, have_s ? &s : nullptr);
}

const bench::registrar reg("fft", 60, run);

}  // namespace
