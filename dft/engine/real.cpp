// Real one-dimensional transforms.
//
// Even n: the n reals are read as n/2 complex values z[j] = x[2j] + i x[2j+1]
// and transformed with a half-length complex plan; one pass then separates
// the spectra of the even and odd samples and combines them:
//   A = Z[k], B = conj Z[h-k], t_k = -i w^k / 2, w = e^{-2 pi i/n}, h = n/2
//   X[k] = (A + B)/2 + t_k (A - B),   X[h-k] = conj((A + B)/2 - t_k (A - B)).
// The backward transform runs the same pass first, with factor 1 instead of
// 1/2 and s_k = i conj(w^k), which rebuilds Z (times 2) from the half
// spectrum; the half-length backward transform then yields the reals.
// Both passes work on the pair (k, h-k) at once, so they run in place, with
// AVX on a register's width of k and the mirrored width of h-k.
//
// Odd n: two transforms of a batch share one full-length complex transform
// (one on the real, one on the imaginary part); a single one has it alone.
#include <cmath>
#include <cstring>

#include "dft/engine/fft.h"
#include "dft/engine/md_lines.h"
#include "dft/engine/real_simd.h"
#include "zar/types.h"

namespace zar::fft {

template <class T> struct real_plan {
  long n;
  long m;                // length of the complex transform: n/2 (even n) or n (odd n)
  complex_plan<T>* c;
  const T* fwd;          // t_k, k = 0 .. m/2 + padding (even n)
  const T* bwd;          // s_k, same range
  size_t buf_bytes;      // work buffer at the start of the scratch
};

namespace {
using lines::up64;

template <class T> long complex_length(long n) { return n % 2 == 0 ? n / 2 : n; }
// Twiddle entries per table: the pass reads k = 1 .. m/2 and whole registers.
template <class T> long table_length(long n) { return n % 2 == 0 ? n / 4 + 2 + simd::cvec<T>::width : 0; }
template <class T> size_t buffer_bytes(long n) { return up64((n % 2 == 0 ? n + 2 : 2 * n) * sizeof(T)); }

// The pass shared by both directions (see the top of the file): for
// k = 1 .. h-1, taking A = s[k], B = conj s[h-k],
//   d[k] = scale (c (A + B) + t_k (A - B)),  d[h-k] = scale conj(c (A + B) - t_k (A - B)).
// s[k] is at s1[2(k-1)], d[k] at d1[2(k-1)]; s1 == d1 is allowed.
template <bool Scaled, class T> void fold_as(const T* tw, long h, T c, T scale, const T* s1, T* d1) {
  using V = simd::cvec<T>;
  constexpr int W = V::width;
  const T* s = s1 - 2;  // s[2k] for k >= 1 only
  T* d = d1 - 2;
  const auto vc = V::set1(c), vs = V::set1(scale);
  long k = 1;
  for (; 2 * (k + W - 1) < h; k += W) {
    const long u = h - k - (W - 1);  // the mirrored register holds h-k-W+1 .. h-k
    auto a = V::load(s + 2 * k);
    auto b = V::conj(V::reverse(V::load(s + 2 * u)));
    auto e = V::mul(vc, V::add(a, b));
    auto f = V::cmul(V::load(tw + 2 * k), V::sub(a, b));
    auto lo = V::add(e, f), hi = V::sub(e, f);
    if constexpr (Scaled) {
      lo = V::mul(vs, lo);
      hi = V::mul(vs, hi);
    }
    V::store(d + 2 * k, lo);
    V::store(d + 2 * u, V::reverse(V::conj(hi)));
  }
  for (; 2 * k <= h; ++k) {
    const long u = h - k;
    T ar = s[2 * k], ai = s[2 * k + 1], br = s[2 * u], bi = -s[2 * u + 1];
    T er = c * (ar + br), ei = c * (ai + bi);
    T mr = ar - br, mi = ai - bi, tr = tw[2 * k], ti = tw[2 * k + 1];
    T fr = tr * mr - ti * mi, fi = tr * mi + ti * mr;
    T xr = scale * (er + fr), xi = scale * (ei + fi);
    if (u != k) {
      d[2 * u] = scale * (er - fr);
      d[2 * u + 1] = -(scale * (ei - fi));
    }
    d[2 * k] = xr;
    d[2 * k + 1] = xi;
  }
}

template <class T> void fold(const T* tw, long h, T c, T scale, const T* s1, T* d1) {
  if (scale == T(1))
    fold_as<false>(tw, h, c, scale, s1, d1);
  else
    fold_as<true>(tw, h, c, scale, s1, d1);
}

// Complex transform of one contiguous line (length 1 is a copy).
template <class T> void line(const complex_plan<T>* c, long m, int sign, T scale, const T* x, T* y, void* cs) {
  if (m > 1) {
    complex_run<T>(c, sign, scale, x, 1, 0, y, 1, 0, 1, cs);
  } else {
    y[0] = scale * x[0];
    y[1] = scale * x[1];
  }
}

// ---------------------------------------------------------------- even length
// The half-length spectrum Z in d (contiguous) becomes the layout's storage
// of X, in place.
template <class T> void finish_forward(const real_plan<T>* p, real_layout layout, T scale, T* d) {
  const long n = p->n, h = p->m;
  const T r0 = d[0], i0 = d[1];
  fold(p->fwd, h, T(0.5), scale, d + 2, d + 2);
  const T x0 = scale * (r0 + i0), xh = scale * (r0 - i0);
  if (layout == real_layout::ccs) {
    d[0] = x0;
    d[1] = 0;
    d[2 * h] = xh;
    d[2 * h + 1] = 0;
  } else if (layout == real_layout::perm) {
    d[0] = x0;
    d[1] = xh;
  } else {
    std::memmove(d + 1, d + 2, (n - 2) * sizeof(T));
    d[0] = x0;
    d[n - 1] = xh;
  }
}

// The layout's storage of X in s (contiguous) becomes the n/2 values that
// the half-length backward transform turns into the reals, in d
// (contiguous, n reals); s == d is allowed. Imaginary parts of X[0] and
// X[n/2] are not read.
template <class T> void start_backward(const real_plan<T>* p, real_layout layout, T scale, const T* s, T* d) {
  const long n = p->n, h = p->m;
  const T r0 = s[0];
  const T rh = layout == real_layout::ccs ? s[2 * h] : layout == real_layout::perm ? s[1] : s[n - 1];
  const T* s1 = s + 2;
  if (layout == real_layout::pack) {
    if (static_cast<const void*>(s) == static_cast<void*>(d))
      std::memmove(d + 2, d + 1, (n - 2) * sizeof(T));  // in place: to the PERM places first
    else
      s1 = s + 1;
  }
  fold(p->bwd, h, T(1), scale, s1, d + 2);
  d[0] = scale * (r0 + rh);
  d[1] = scale * (r0 - rh);
}

// The stored spectrum of an even-length transform from stride ss to stride
// ds (in the layout's units: complex pairs for CCS, reals otherwise).
template <class T> void copy_spectrum(real_layout layout, long n, const T* s, long ss, T* d, long ds) {
  if (layout != real_layout::ccs) {
    for (long j = 0; j < n; ++j) d[j * ds] = s[j * ss];
    return;
  }
  for (long k = 0; k <= n / 2; ++k) {
    d[2 * k * ds] = s[2 * k * ss];
    d[2 * k * ds + 1] = s[2 * k * ss + 1];
  }
}

template <class T>
void even_forward(const real_plan<T>* p, real_layout layout, T scale, const T* x, long is, T* y, long os, T* buf,
                  void* cs) {
  const long n = p->n, h = p->m;
  const T* z = x;
  if (is != 1) {
    for (long j = 0; j < n; ++j) buf[j] = x[j * is];
    z = buf;
  }
  T* d = os == 1 ? y : buf;
  line(p->c, h, -1, T(1), z, d, cs);
  finish_forward(p, layout, scale, d);
  if (d == buf) copy_spectrum(layout, n, buf, 1, y, os);
}

template <class T>
void even_backward(const real_plan<T>* p, real_layout layout, T scale, const T* y, long is, T* x, long os, T* buf,
                   void* cs) {
  const long n = p->n, h = p->m;
  const T* s = y;
  if (is != 1) {
    copy_spectrum(layout, n, y, is, buf, 1);
    s = buf;
  }
  // The pre-pass writes the scratch, so that the complex transform runs out
  // of place into a contiguous output.
  start_backward(p, layout, scale, s, buf);
  line(p->c, h, +1, T(1), buf, os == 1 ? x : buf, cs);
  if (os != 1)
    for (long j = 0; j < n; ++j) x[j * os] = buf[j];
}

// ---------------------------------------------------------------- odd length
// Two transforms a, b of a batch share one complex transform of a + i b:
//   A[k] = (Z[k] + conj Z[n-k]) / 2,  B[k] = -i (Z[k] - conj Z[n-k]) / 2,
// and backward z = a + i b is the transform of A + i B. A single transform
// has b = 0.

// Positions of Re X[k] and Im X[k], 1 <= k <= n/2, of an odd length in a
// layout with stride st.
inline void odd_place(real_layout l, long k, long st, long* r, long* i) {
  if (l == real_layout::ccs) {
    *r = 2 * k * st;
    *i = *r + 1;
  } else {
    *r = (2 * k - 1) * st;
    *i = 2 * k * st;
  }
}

// y1 (with x1) may be null: one transform.
template <class T>
void odd_forward(const real_plan<T>* p, real_layout layout, T scale, const T* x0, const T* x1, long is, T* y0, T* y1,
                 long os, T* buf, void* cs) {
  const long n = p->n, h = n / 2;
  for (long j = 0; j < n; ++j) {
    buf[2 * j] = x0[j * is];
    buf[2 * j + 1] = x1 ? x1[j * is] : T(0);
  }
  line(p->c, n, -1, scale, buf, buf, cs);
  const T half = T(0.5);
  y0[0] = buf[0];
  if (layout == real_layout::ccs) y0[1] = 0;
  if (y1) {
    y1[0] = buf[1];
    if (layout == real_layout::ccs) y1[1] = 0;
  }
  for (long k = 1; k <= h; ++k) {
    const T zr = buf[2 * k], zi = buf[2 * k + 1], mr = buf[2 * (n - k)], mi = buf[2 * (n - k) + 1];
    long r, i;
    odd_place(layout, k, os, &r, &i);
    if (!y1) {
      y0[r] = zr;
      y0[i] = zi;
      continue;
    }
    y0[r] = half * (zr + mr);
    y0[i] = half * (zi - mi);
    y1[r] = half * (zi + mi);
    y1[i] = half * (mr - zr);
  }
}

template <class T>
void odd_backward(const real_plan<T>* p, real_layout layout, T scale, const T* y0, const T* y1, long is, T* x0,
                  T* x1, long os, T* buf, void* cs) {
  const long n = p->n, h = n / 2;
  buf[0] = y0[0];
  buf[1] = y1 ? y1[0] : T(0);
  for (long k = 1; k <= h; ++k) {
    long r, i;
    odd_place(layout, k, is, &r, &i);
    const T ar = y0[r], ai = y0[i], br = y1 ? y1[r] : T(0), bi = y1 ? y1[i] : T(0);
    buf[2 * k] = ar - bi;
    buf[2 * k + 1] = ai + br;
    buf[2 * (n - k)] = ar + bi;
    buf[2 * (n - k) + 1] = br - ai;
  }
  line(p->c, n, +1, scale, buf, buf, cs);
  for (long j = 0; j < n; ++j) x0[j * os] = buf[2 * j];
  if (x1)
    for (long j = 0; j < n; ++j) x1[j * os] = buf[2 * j + 1];
}

// Batches of short contiguous even-length transforms go to the complex plan
// as one batch; this many bytes of data per batch.
constexpr long batch_bytes = 1 << 16;

template <class T> long batch_count(long n, long howmany) {
  long c = batch_bytes / static_cast<long>(n * sizeof(T));
  return c < 1 ? 1 : c > howmany ? howmany : c;
}
}  // namespace

template <class T> footprint real_footprint(long n) {
  const long m = complex_length<T>(n);
  footprint c = complex_footprint<T>(m);
  return {up64(sizeof(real_plan<T>)) + 2 * up64(2 * table_length<T>(n) * sizeof(T)) + c.plan_bytes,
          buffer_bytes<T>(n) + c.scratch_bytes};
}

template <class T> real_plan<T>* real_build(long n, void* mem) {
  auto* p = static_cast<real_plan<T>*>(mem);
  char* at = static_cast<char*>(mem) + up64(sizeof(real_plan<T>));
  const long tl = table_length<T>(n);
  T* fwd = reinterpret_cast<T*>(at);
  at += up64(2 * tl * sizeof(T));
  T* bwd = reinterpret_cast<T*>(at);
  at += up64(2 * tl * sizeof(T));
  p->n = n;
  p->m = complex_length<T>(n);
  p->fwd = fwd;
  p->bwd = bwd;
  p->buf_bytes = buffer_bytes<T>(n);
  for (long k = 0; k < tl; ++k) {
    // w^k = cos a + i sin a, a = -2 pi k / n; t_k = -i w^k / 2, s_k = i conj(w^k).
    const long double a = -2.0L * 3.14159265358979323846264338327950288L * k / n;
    const long double c = std::cos(a), s = std::sin(a);
    fwd[2 * k] = static_cast<T>(s / 2);
    fwd[2 * k + 1] = static_cast<T>(-c / 2);
    bwd[2 * k] = static_cast<T>(s);
    bwd[2 * k + 1] = static_cast<T>(c);
  }
  p->c = complex_build<T>(p->m, at);
  return p;
}

template <class T>
void real_forward(const real_plan<T>* p, real_layout layout, T scale, const T* x, long is, long idist, T* y, long os,
                  long odist, long howmany, void* scratch) {
  const long n = p->n;
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + p->buf_bytes;
  const long ounit = layout == real_layout::ccs ? 2 : 1;  // reals per output stride unit
  if (n % 2 == 0 && n > 2 && is == 1 && os == 1 && idist % 2 == 0 && (odist * ounit) % 2 == 0) {
    // Contiguous: the half-length transforms of a group run as one batch
    // straight into the output, then each is finished in place.
    const long group = batch_count<T>(n, howmany);
    for (long t0 = 0; t0 < howmany; t0 += group) {
      const long cnt = howmany - t0 < group ? howmany - t0 : group;
      const T* xt = offset(x, static_cast<long long>(t0) * idist);
      T* yt = offset(y, static_cast<long long>(t0) * odist * ounit);
      complex_run<T>(p->c, -1, T(1), xt, 1, idist / 2, yt, 1, odist * ounit / 2, cnt, cs);
      for (long t = 0; t < cnt; ++t) {
        finish_forward(p, layout, scale, yt + t * odist * ounit);
      }
    }
    return;
  }
  for (long t = 0; t < howmany; ++t) {
    const T* xt = offset(x, static_cast<long long>(t) * idist);
    T* yt = offset(y, static_cast<long long>(t) * odist * ounit);
    if (n % 2 == 0) {
      even_forward(p, layout, scale, xt, is, yt, os, buf, cs);
    } else if (t + 1 < howmany) {  // two at once
      odd_forward(p, layout, scale, xt, xt + idist, is, yt, yt + odist * ounit, os, buf, cs);
      ++t;
    } else {
      odd_forward<T>(p, layout, scale, xt, nullptr, is, yt, nullptr, os, buf, cs);
    }
  }
}

template <class T>
void real_backward(const real_plan<T>* p, real_layout layout, T scale, const T* y, long is, long idist, T* x,
                   long os, long odist, long howmany, void* scratch) {
  const long n = p->n;
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + p->buf_bytes;
  const long iunit = layout == real_layout::ccs ? 2 : 1;
  if (n % 2 != 0) {
    for (long t = 0; t < howmany; t += 2) {
      const T* yt = offset(y, static_cast<long long>(t) * idist * iunit);
      T* xt = offset(x, static_cast<long long>(t) * odist);
      if (t + 1 < howmany)  // two at once
        odd_backward(p, layout, scale, yt, yt + idist * iunit, is, xt, xt + odist, os, buf, cs);
      else
        odd_backward<T>(p, layout, scale, yt, nullptr, is, xt, nullptr, os, buf, cs);
    }
    return;
  }
  // Groups of short contiguous transforms: the pre-pass of each in its
  // output, then the group's half-length transforms as one batch.
  const long group = n > 2 && is == 1 && os == 1 && odist % 2 == 0 ? batch_count<T>(n, howmany) : 1;
  const bool contiguous = group > 1;
  for (long t0 = 0; t0 < howmany; t0 += group) {
    const long cnt = howmany - t0 < group ? howmany - t0 : group;
    for (long t = t0; t < t0 + cnt; ++t) {
      const T* yt = offset(y, static_cast<long long>(t) * idist * iunit);
      T* xt = offset(x, static_cast<long long>(t) * odist);
      if (!contiguous)
        even_backward(p, layout, scale, yt, is, xt, os, buf, cs);
      else
        start_backward(p, layout, scale, yt, xt);
    }
    if (contiguous) {
      T* xt = offset(x, static_cast<long long>(t0) * odist);
      complex_run<T>(p->c, +1, T(1), xt, 1, odist / 2, xt, 1, odist / 2, cnt, cs);
    }
  }
}

#define ZAR_FFT_REAL(T)                                                                                          \
  template footprint real_footprint<T>(long);                                                                    \
  template real_plan<T>* real_build<T>(long, void*);                                                             \
  template void real_forward<T>(const real_plan<T>*, real_layout, T, const T*, long, long, T*, long, long, long,  \
                                void*);                                                                          \
  template void real_backward<T>(const real_plan<T>*, real_layout, T, const T*, long, long, T*, long, long, long, \
                                 void*);
ZAR_FFT_REAL(float)
ZAR_FFT_REAL(double)

}  // namespace zar::fft
