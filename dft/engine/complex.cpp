// Placeholder complex engine: a direct O(n^2) transform with a precomputed
// table of roots. Correct and slow; replaced by the mixed-radix engine.
#include <cmath>
#include <cstring>

#include "dft/engine/fft.h"

namespace zar::fft {

template <class T> struct complex_plan {
  long n;
  T* roots;  // e^{-2 pi i k/n}, k = 0..n-1, interleaved
};

namespace {
inline size_t up64(size_t b) { return (b + 63) & ~size_t(63); }

template <class T>
void direct(const complex_plan<T>* p, int sign, T scale, const T* x, long is, T* y, long os, T* tmp) {
  const long n = p->n;
  for (long k = 0; k < n; ++k) {
    double re = 0, im = 0;
    for (long j = 0; j < n; ++j) {
      long r = (j * k) % n;
      double c = p->roots[2 * r], s = sign < 0 ? p->roots[2 * r + 1] : -p->roots[2 * r + 1];
      double a = x[2 * j * is], b = x[2 * j * is + 1];
      re += a * c - b * s;
      im += a * s + b * c;
    }
    tmp[2 * k] = static_cast<T>(re);
    tmp[2 * k + 1] = static_cast<T>(im);
  }
  for (long k = 0; k < n; ++k) {
    y[2 * k * os] = scale == T(1) ? tmp[2 * k] : tmp[2 * k] * scale;
    y[2 * k * os + 1] = scale == T(1) ? tmp[2 * k + 1] : tmp[2 * k + 1] * scale;
  }
}
}  // namespace

template <class T> footprint complex_footprint(long n) {
  return {up64(sizeof(complex_plan<T>)) + up64(2 * n * sizeof(T)), up64(4 * n * sizeof(T))};
}

template <class T> complex_plan<T>* complex_build(long n, void* mem) {
  auto* p = static_cast<complex_plan<T>*>(mem);
  p->n = n;
  p->roots = reinterpret_cast<T*>(static_cast<char*>(mem) + up64(sizeof(complex_plan<T>)));
  for (long k = 0; k < n; ++k) {
    long double a = -2.0L * 3.14159265358979323846264338327950288L * k / n;
    p->roots[2 * k] = static_cast<T>(std::cos(a));
    p->roots[2 * k + 1] = static_cast<T>(std::sin(a));
  }
  return p;
}

template <class T>
void complex_run(const complex_plan<T>* p, int sign, T scale, const T* x, long is, long idist, T* y, long os,
                 long odist, long howmany, void* scratch) {
  for (long t = 0; t < howmany; ++t)
    direct(p, sign, scale, x + 2 * t * idist, is, y + 2 * t * odist, os, static_cast<T*>(scratch));
}

template <class T>
void complex_run_split(const complex_plan<T>* p, int sign, T scale, const T* xr, const T* xi, long is, long idist,
                       T* yr, T* yi, long os, long odist, long howmany, void* scratch) {
  const long n = p->n;
  T* buf = static_cast<T*>(scratch) + 2 * n;
  for (long t = 0; t < howmany; ++t) {
    for (long j = 0; j < n; ++j) {
      buf[2 * j] = xr[t * idist + j * is];
      buf[2 * j + 1] = xi[t * idist + j * is];
    }
    direct(p, sign, scale, buf, 1, buf, 1, static_cast<T*>(scratch));
    for (long j = 0; j < n; ++j) {
      yr[t * odist + j * os] = buf[2 * j];
      yi[t * odist + j * os] = buf[2 * j + 1];
    }
  }
}

#define ZAR_FFT_COMPLEX(T)                                                                                      \
  template footprint complex_footprint<T>(long);                                                                \
  template complex_plan<T>* complex_build<T>(long, void*);                                                      \
  template void complex_run<T>(const complex_plan<T>*, int, T, const T*, long, long, T*, long, long, long, void*); \
  template void complex_run_split<T>(const complex_plan<T>*, int, T, const T*, const T*, long, long, T*, T*, long, \
                                     long, long, void*);
ZAR_FFT_COMPLEX(float)
ZAR_FFT_COMPLEX(double)

}  // namespace zar::fft
