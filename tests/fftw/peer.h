// The FFTW interface twice in one program: zar's libfftw3 and libfftw3f,
// which this program is linked with (through FFTW's own header), and
// Debian's FFTW, loaded by path with its own symbols bound to itself. A
// table of function pointers per precision lets one test body run on both.
#pragma once
#include <dlfcn.h>
#include <fftw3.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <vector>

namespace fftw_test {

#define FFTW_TEST_FUNCTIONS(F)                                                                                 \
  F(plan_dft_1d) F(plan_dft_2d) F(plan_dft_3d) F(plan_dft) F(plan_many_dft) F(plan_guru_dft) F(plan_guru64_dft) \
  F(plan_guru_split_dft) F(plan_dft_r2c_1d) F(plan_dft_r2c_2d) F(plan_dft_r2c_3d) F(plan_dft_r2c)               \
  F(plan_many_dft_r2c) F(plan_guru_dft_r2c) F(plan_dft_c2r_1d) F(plan_dft_c2r_2d) F(plan_dft_c2r_3d)            \
  F(plan_dft_c2r) F(plan_many_dft_c2r) F(plan_guru_dft_c2r) F(plan_r2r_1d) F(plan_r2r_2d) F(plan_r2r_3d)        \
  F(plan_r2r) F(plan_many_r2r) F(plan_guru_r2r) F(plan_guru64_r2r) F(execute) F(execute_dft)                    \
  F(execute_split_dft) F(execute_dft_r2c) F(execute_dft_c2r) F(execute_r2r) F(destroy_plan)                     \
  F(export_wisdom_to_string) F(import_wisdom_from_string) F(malloc) F(free) F(alloc_complex) F(alloc_real)

template <class R> struct api;
#define FFTW_TEST_FIELD(name) decltype(&fftw_##name) name = nullptr;
#define FFTW_TEST_FIELDF(name) decltype(&fftwf_##name) name = nullptr;
template <> struct api<double> {
  using plan = fftw_plan;
  using iodim = fftw_iodim;
  using iodim64 = fftw_iodim64;
  using r2r_kind = fftw_r2r_kind;
  FFTW_TEST_FUNCTIONS(FFTW_TEST_FIELD)
};
template <> struct api<float> {
  using plan = fftwf_plan;
  using iodim = fftwf_iodim;
  using iodim64 = fftwf_iodim64;
  using r2r_kind = fftwf_r2r_kind;
  FFTW_TEST_FUNCTIONS(FFTW_TEST_FIELDF)
};

// zar's functions, as linked.
template <class R> const api<R>& ours();
// Debian's, or null when it is not installed.
template <class R> const api<R>* peer();

// Debian's FFTW must bind its own calls to itself (its fftw_ names are also
// zar's, already loaded): RTLD_DEEPBIND, which AddressSanitizer does not
// allow; a sanitized build runs the tests that need no peer.
#if defined(__SANITIZE_ADDRESS__)
inline void* open_peer(const char*) { return nullptr; }
#else
inline void* open_peer(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND); }
#endif

template <> inline const api<double>& ours<double>() {
  static const api<double> a = [] {
    api<double> t;
#define FFTW_TEST_OURS(name) t.name = &fftw_##name;
    FFTW_TEST_FUNCTIONS(FFTW_TEST_OURS)
    return t;
  }();
  return a;
}
template <> inline const api<float>& ours<float>() {
  static const api<float> a = [] {
    api<float> t;
#define FFTW_TEST_OURSF(name) t.name = &fftwf_##name;
    FFTW_TEST_FUNCTIONS(FFTW_TEST_OURSF)
    return t;
  }();
  return a;
}
template <> inline const api<double>* peer<double>() {
  static const api<double>* a = []() -> const api<double>* {
    void* h = open_peer("/usr/lib/i386-linux-gnu/libfftw3.so.3");
    if (!h) return nullptr;
    static api<double> t;
#define FFTW_TEST_PEER(name) t.name = reinterpret_cast<decltype(t.name)>(dlsym(h, "fftw_" #name));
    FFTW_TEST_FUNCTIONS(FFTW_TEST_PEER)
    return &t;
  }();
  return a;
}
template <> inline const api<float>* peer<float>() {
  static const api<float>* a = []() -> const api<float>* {
    void* h = open_peer("/usr/lib/i386-linux-gnu/libfftw3f.so.3");
    if (!h) return nullptr;
    static api<float> t;
#define FFTW_TEST_PEERF(name) t.name = reinterpret_cast<decltype(t.name)>(dlsym(h, "fftwf_" #name));
    FFTW_TEST_FUNCTIONS(FFTW_TEST_PEERF)
    return &t;
  }();
  return a;
}

// Reals from a fixed seed in [-1, 1).
template <class R> std::vector<R> random_reals(size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<R> v(n);
  for (auto& x : v) x = static_cast<R>(u(g));
  return v;
}

// Relative error of a against b over the positions listed (max norm over
// the max norm of b): the measure every comparison here uses.
template <class R> double relative_error(const std::vector<R>& a, const std::vector<R>& b, const std::vector<size_t>& at) {
  double err = 0, scale = 0;
  for (size_t i : at) {
    err = std::max(err, std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i])));
    scale = std::max(scale, std::abs(static_cast<double>(b[i])));
  }
  return scale > 0 ? err / scale : err;
}

// Tolerance for a transform of total length n: a small multiple of the
// precision's epsilon times log2 n.
template <class R> double tolerance(double n) {
  const double eps = std::is_same_v<R, float> ? 6e-8 : 1.1e-16;
  return 40 * eps * (2 + std::log2(n + 1));
}

}  // namespace fftw_test
