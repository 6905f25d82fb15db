// Stand-in real, multi-dimensional and long transforms built on the complex
// engine the simplest way (full complex transforms, line by line). Correct
// and slow; replaced by the real and multi-dimensional engine.
#include <cmath>
#include <cstring>

#include "dft/engine/fft.h"

namespace zar::fft {

namespace {
inline size_t up64(size_t b) { return (b + 63) & ~size_t(63); }
}  // namespace

template <class T> struct real_plan {
  long n;
  complex_plan<T>* c;
  size_t cscratch;
};

template <class T> footprint real_footprint(long n) {
  footprint f = complex_footprint<T>(n);
  return {up64(sizeof(real_plan<T>)) + f.plan_bytes, up64(4 * (n + 2) * sizeof(T)) + f.scratch_bytes};
}

template <class T> real_plan<T>* real_build(long n, void* mem) {
  auto* p = static_cast<real_plan<T>*>(mem);
  p->n = n;
  p->c = complex_build<T>(n, static_cast<char*>(mem) + up64(sizeof(real_plan<T>)));
  p->cscratch = complex_footprint<T>(n).scratch_bytes;
  return p;
}

namespace {
// Position of the real and imaginary part of spectrum value k (0..n/2) in a
// packed real layout; -1 when the part is not stored (known zero).
inline void packed_place(real_layout l, long n, long k, long* re, long* im) {
  if (k == 0) {
    *re = 0;
    *im = -1;
    return;
  }
  if (n % 2 == 0 && k == n / 2) {
    *re = l == real_layout::perm ? 1 : n - 1;
    *im = -1;
    return;
  }
  long base = l == real_layout::perm && n % 2 == 0 ? 2 * k : 2 * k - 1;
  *re = base;
  *im = base + 1;
}
}  // namespace

template <class T>
void real_forward(const real_plan<T>* p, real_layout layout, T scale, const T* x, long is, long idist, T* y, long os,
                  long odist, long howmany, void* scratch) {
  const long n = p->n, h = n / 2;
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + up64(4 * (n + 2) * sizeof(T));
  for (long t = 0; t < howmany; ++t) {
    const T* xt = x + t * idist;
    T* yt = y + t * odist * (layout == real_layout::ccs ? 2 : 1);
    for (long j = 0; j < n; ++j) {
      buf[2 * j] = xt[j * is];
      buf[2 * j + 1] = 0;
    }
    complex_run<T>(p->c, -1, scale, buf, 1, 0, buf, 1, 0, 1, cs);
    for (long k = 0; k <= h; ++k) {
      if (layout == real_layout::ccs) {
        yt[2 * k * os] = buf[2 * k];
        yt[2 * k * os + 1] = buf[2 * k + 1];
      } else {
        long r, i;
        packed_place(layout, n, k, &r, &i);
        yt[r * os] = buf[2 * k];
        if (i >= 0) yt[i * os] = buf[2 * k + 1];
      }
    }
  }
}

template <class T>
void real_backward(const real_plan<T>* p, real_layout layout, T scale, const T* y, long is, long idist, T* x,
                   long os, long odist, long howmany, void* scratch) {
  const long n = p->n, h = n / 2;
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + up64(4 * (n + 2) * sizeof(T));
  for (long t = 0; t < howmany; ++t) {
    const T* yt = y + t * idist * (layout == real_layout::ccs ? 2 : 1);
    T* xt = x + t * odist;
    for (long k = 0; k <= h; ++k) {
      T re, im;
      if (layout == real_layout::ccs) {
        re = yt[2 * k * is];
        im = yt[2 * k * is + 1];
      } else {
        long r, i;
        packed_place(layout, n, k, &r, &i);
        re = yt[r * is];
        im = i >= 0 ? yt[i * is] : T(0);
      }
      if (k == 0 || (n % 2 == 0 && k == h)) im = 0;
      buf[2 * k] = re;
      buf[2 * k + 1] = im;
      if (k > 0 && n - k > h) {
        buf[2 * (n - k)] = re;
        buf[2 * (n - k) + 1] = -im;
      }
    }
    complex_run<T>(p->c, +1, scale, buf, 1, 0, buf, 1, 0, 1, cs);
    for (long j = 0; j < n; ++j) xt[j * os] = buf[2 * j];
  }
}

// ------------------------------------------------------------- several dimensions
namespace {
// Walks every index combination of the dimensions other than `skip`,
// calling f(input offset, output offset).
template <class F> void each_line(int rank, const dim* dims, int skip, bool use_out, F f) {
  long idx[8] = {0};
  for (;;) {
    long off_i = 0, off_o = 0;
    for (int d = 0; d < rank; ++d) {
      off_i += idx[d] * dims[d].is;
      off_o += idx[d] * dims[d].os;
    }
    f(off_i, off_o);
    int d = 0;
    for (; d < rank; ++d) {
      if (d == skip) continue;
      if (++idx[d] < dims[d].n) break;
      idx[d] = 0;
    }
    if (d == rank) return;
  }
}
}  // namespace

template <class T> size_t md_scratch_bytes(int rank, const dim* dims) {
  long most = 1;
  for (int d = 0; d < rank; ++d) most = dims[d].n > most ? dims[d].n : most;
  return up64(2 * most * sizeof(T)) + complex_footprint<T>(most).scratch_bytes;
}

template <class T>
void complex_md_run(const complex_plan<T>* const* plans, int rank, const dim* dims, int sign, T scale, const T* x,
                    long idist, T* y, long odist, long howmany, void* scratch) {
  long most = 1;
  for (int d = 0; d < rank; ++d) most = dims[d].n > most ? dims[d].n : most;
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + up64(2 * most * sizeof(T));
  for (long t = 0; t < howmany; ++t) {
    const T* xt = x + 2 * t * idist;
    T* yt = y + 2 * t * odist;
    for (int d = 0; d < rank; ++d) {
      // The first pass reads the input layout, later ones work in the output.
      const T* src = d == 0 ? xt : yt;
      each_line(rank, dims, d, true, [&](long oi, long oo) {
        long soff = d == 0 ? oi : oo, sstr = d == 0 ? dims[d].is : dims[d].os;
        for (long j = 0; j < dims[d].n; ++j) {
          buf[2 * j] = src[2 * (soff + j * sstr)];
          buf[2 * j + 1] = src[2 * (soff + j * sstr) + 1];
        }
        complex_run<T>(plans[d], sign, d == rank - 1 ? scale : T(1), buf, 1, 0, buf, 1, 0, 1, cs);
        for (long j = 0; j < dims[d].n; ++j) {
          yt[2 * (oo + j * dims[d].os)] = buf[2 * j];
          yt[2 * (oo + j * dims[d].os) + 1] = buf[2 * j + 1];
        }
      });
    }
  }
}

template <class T> size_t real_md_scratch_bytes(int rank, const dim* dims) {
  long total = dims[0].n / 2 + 1;
  for (int d = 1; d < rank; ++d) total *= dims[d].n;
  return up64(2 * total * sizeof(T)) + md_scratch_bytes<T>(rank, dims) + real_footprint<T>(dims[0].n).scratch_bytes;
}

template <class T>
void real_md_forward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                     T scale, const T* x, long idist, T* y, long odist, long howmany, void* scratch) {
  void* rs = static_cast<char*>(scratch) + md_scratch_bytes<T>(rank, dims);
  for (long t = 0; t < howmany; ++t) {
    const T* xt = x + t * idist;
    T* yt = y + 2 * t * odist;
    each_line(rank, dims, 0, true, [&](long oi, long oo) {
      real_forward<T>(rplan, real_layout::ccs, rank == 1 ? scale : T(1), xt + oi, dims[0].is, 0, yt + 2 * oo,
                      dims[0].os, 0, 1, rs);
    });
    if (rank > 1) {
      dim rest[7];
      for (int d = 1; d < rank; ++d) rest[d - 1] = {dims[d].n, dims[d].os, dims[d].os};
      // Complex passes over the remaining dimensions, for each half-spectrum index.
      for (long k = 0; k <= dims[0].n / 2; ++k)
        complex_md_run<T>(plans + 1, rank - 1, rest, -1, scale, yt + 2 * k * dims[0].os, 0,
                          yt + 2 * k * dims[0].os, 0, 1, scratch);
    }
  }
}

template <class T>
void real_md_backward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                      T scale, const T* y, long idist, T* x, long odist, long howmany, void* scratch) {
  const long h = dims[0].n / 2 + 1;
  // The complex passes run on a copy, so that the input is left as it was.
  T* tmp = reinterpret_cast<T*>(static_cast<char*>(scratch) + md_scratch_bytes<T>(rank, dims) +
                                real_footprint<T>(dims[0].n).scratch_bytes);
  void* rs = static_cast<char*>(scratch) + md_scratch_bytes<T>(rank, dims);
  dim cd[7];
  long stride = 1;
  for (int d = 0; d < rank; ++d) {
    long len = d == 0 ? h : dims[d].n;
    cd[d] = {len, dims[d].is, stride};
    stride *= len;
  }
  for (long t = 0; t < howmany; ++t) {
    const T* yt = y + 2 * t * idist;
    T* xt = x + t * odist;
    each_line(rank, cd, -1, true, [&](long oi, long oo) {
      tmp[2 * oo] = yt[2 * oi];
      tmp[2 * oo + 1] = yt[2 * oi + 1];
    });
    if (rank > 1) {
      dim rest[7];
      for (int d = 1; d < rank; ++d) rest[d - 1] = {cd[d].n, cd[d].os, cd[d].os};
      for (long k = 0; k < h; ++k)
        complex_md_run<T>(plans + 1, rank - 1, rest, +1, T(1), tmp + 2 * k, 0, tmp + 2 * k, 0, 1, scratch);
    }
    dim rd[7];
    for (int d = 0; d < rank; ++d) rd[d] = {dims[d].n, cd[d].os, dims[d].os};
    each_line(rank, rd, 0, true, [&](long oi, long oo) {
      real_backward<T>(rplan, real_layout::ccs, scale, tmp + 2 * oi, 1, 0, xt + oo, dims[0].os, 0, 1, rs);
    });
  }
}

// ------------------------------------------------------------- long route
template <class T> struct long_plan {
  long n;
  complex_plan<T>* c;
};

bool long_split(long n, long* n1, long* n2) {
  long best = 1;
  for (long f = 2; f * f <= n; ++f)
    if (n % f == 0) best = f;
  if (best == 1) return false;
  *n1 = best;
  *n2 = n / best;
  return true;
}

template <class T> footprint long_footprint(long n1, long n2) {
  footprint f = complex_footprint<T>(n1 * n2);
  return {up64(sizeof(long_plan<T>)) + f.plan_bytes, f.scratch_bytes};
}

template <class T> long_plan<T>* long_build(long n1, long n2, void* mem) {
  auto* p = static_cast<long_plan<T>*>(mem);
  p->n = n1 * n2;
  p->c = complex_build<T>(p->n, static_cast<char*>(mem) + up64(sizeof(long_plan<T>)));
  return p;
}

template <class T> void long_run(const long_plan<T>* p, int sign, T scale, const T* x, T* y, void* scratch) {
  complex_run<T>(p->c, sign, scale, x, 1, 0, y, 1, 0, 1, scratch);
}

// Fixed small lengths through a plan built on the stack.
template <int N, int Sign>
void small_run(double scale, const double* x, long is, long idist, double* y, long os, long odist, long howmany) {
  alignas(64) char mem[4096 + 64 * N];
  alignas(64) char scratch[4096 + 64 * N];
  auto* p = complex_build<double>(N, mem);
  complex_run<double>(p, Sign, scale, x, is, idist, y, os, odist, howmany, scratch);
}
#define ZAR_FFT_SMALL(N) \
  template void small_run<N, -1>(double, const double*, long, long, double*, long, long, long); \
  template void small_run<N, 1>(double, const double*, long, long, double*, long, long, long);
#define ZAR_FFT_SMALL8(a) ZAR_FFT_SMALL(a##0) ZAR_FFT_SMALL(a##1) ZAR_FFT_SMALL(a##2) ZAR_FFT_SMALL(a##3) \
  ZAR_FFT_SMALL(a##4) ZAR_FFT_SMALL(a##5) ZAR_FFT_SMALL(a##6) ZAR_FFT_SMALL(a##7) ZAR_FFT_SMALL(a##8) ZAR_FFT_SMALL(a##9)
ZAR_FFT_SMALL(2) ZAR_FFT_SMALL(3) ZAR_FFT_SMALL(4) ZAR_FFT_SMALL(5) ZAR_FFT_SMALL(6) ZAR_FFT_SMALL(7)
ZAR_FFT_SMALL(8) ZAR_FFT_SMALL(9) ZAR_FFT_SMALL8(1) ZAR_FFT_SMALL8(2) ZAR_FFT_SMALL8(3) ZAR_FFT_SMALL8(4)
ZAR_FFT_SMALL8(5) ZAR_FFT_SMALL(60) ZAR_FFT_SMALL(61) ZAR_FFT_SMALL(62) ZAR_FFT_SMALL(63) ZAR_FFT_SMALL(64)

#define ZAR_FFT_STANDIN(T)                                                                                         \
  template footprint real_footprint<T>(long);                                                                      \
  template real_plan<T>* real_build<T>(long, void*);                                                               \
  template void real_forward<T>(const real_plan<T>*, real_layout, T, const T*, long, long, T*, long, long, long,    \
                                void*);                                                                            \
  template void real_backward<T>(const real_plan<T>*, real_layout, T, const T*, long, long, T*, long, long, long,   \
                                 void*);                                                                           \
  template size_t md_scratch_bytes<T>(int, const dim*);                                                            \
  template void complex_md_run<T>(const complex_plan<T>* const*, int, const dim*, int, T, const T*, long, T*, long, \
                                  long, void*);                                                                    \
  template size_t real_md_scratch_bytes<T>(int, const dim*);                                                       \
  template void real_md_forward<T>(const real_plan<T>*, const complex_plan<T>* const*, int, const dim*, T,          \
                                   const T*, long, T*, long, long, void*);                                         \
  template void real_md_backward<T>(const real_plan<T>*, const complex_plan<T>* const*, int, const dim*, T,         \
                                    const T*, long, T*, long, long, void*);                                        \
  template footprint long_footprint<T>(long, long);                                                                \
  template long_plan<T>* long_build<T>(long, long, void*);                                                         \
  template void long_run<T>(const long_plan<T>*, int, T, const T*, T*, void*);
ZAR_FFT_STANDIN(float)
ZAR_FFT_STANDIN(double)

}  // namespace zar::fft
