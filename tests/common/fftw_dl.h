// FFTW for i386 as a peer, loaded at run time (no FFTW header is included):
// the few entries the FFT tests and the FFT benchmark call, for single
// (libfftw3f), double (libfftw3) and long double (libfftw3l) precision.
// FFTW's complex type is two reals side by side, so interleaved (re, im)
// arrays of R are passed as they are.
#pragma once
#include <dlfcn.h>

namespace fftw_dl {

constexpr int forward = -1;
constexpr int backward = +1;
constexpr unsigned measure = 0u;        // FFTW_MEASURE: times candidate plans, overwrites the arrays
constexpr unsigned estimate = 1u << 6;  // FFTW_ESTIMATE: picks a plan without running anything

template <class R>
struct api {
  using plan = void*;
  // fftw_plan_many_dft(rank, n, howmany, in, inembed, istride, idist, out, onembed, ostride, odist, sign, flags)
  plan (*many_dft)(int, const int*, int, R*, const int*, int, int, R*, const int*, int, int, int, unsigned);
  // fftw_plan_many_dft_r2c / _c2r (no sign)
  plan (*many_r2c)(int, const int*, int, R*, const int*, int, int, R*, const int*, int, int, unsigned);
  plan (*many_c2r)(int, const int*, int, R*, const int*, int, int, R*, const int*, int, int, unsigned);
  void (*execute)(plan);
  void (*destroy)(plan);

  // Null when the library (or one of its entries) is not there.
  static const api* get();
};

namespace detail {
// Loaded by path: the build's lib directory (on the programs' run path)
// holds zar's own libfftw3.so.3 and libfftw3f.so.3, which a bare name
// would find first.
template <class R> struct names;
template <> struct names<float> {
  static constexpr const char* lib = "/usr/lib/i386-linux-gnu/libfftw3f.so.3";
  static constexpr const char* prefix = "fftwf_";
};
template <> struct names<double> {
  static constexpr const char* lib = "/usr/lib/i386-linux-gnu/libfftw3.so.3";
  static constexpr const char* prefix = "fftw_";
};
template <> struct names<long double> {
  static constexpr const char* lib = "/usr/lib/i386-linux-gnu/libfftw3l.so.3";
  static constexpr const char* prefix = "fftwl_";
};

template <class F>
bool bind(void* h, const char* prefix, const char* name, F& f) {
  char full[64] = {};
  int k = 0;
  for (const char* s = prefix; *s; ++s) full[k++] = *s;
  for (const char* s = name; *s && k < 63; ++s) full[k++] = *s;
  f = reinterpret_cast<F>(dlsym(h, full));
  return f != nullptr;
}
}  // namespace detail

template <class R>
const api<R>* api<R>::get() {
  static const api<R>* loaded = [] () -> const api<R>* {
    static api<R> a{};
    void* h = dlopen(detail::names<R>::lib, RTLD_NOW | RTLD_LOCAL);
    if (!h) return nullptr;
    const char* p = detail::names<R>::prefix;
    const bool ok = detail::bind(h, p, "plan_many_dft", a.many_dft) && detail::bind(h, p, "plan_many_dft_r2c", a.many_r2c) &&
                    detail::bind(h, p, "plan_many_dft_c2r", a.many_c2r) && detail::bind(h, p, "execute", a.execute) &&
                    detail::bind(h, p, "destroy_plan", a.destroy);
    return ok ? &a : nullptr;
  }();
  return loaded;
}

}  // namespace fftw_dl
