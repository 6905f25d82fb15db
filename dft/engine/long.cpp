// One long transform as n = n1 * n2 (the six-step scheme, with the
// transpositions folded into gathered blocks):
//   X[k1 + n1 k2] = sum_j2 w_n2^{j2 k2} w_n^{j2 k1} sum_j1 w_n1^{j1 k1} x[j1 n2 + j2].
// Out of place, two passes over the data:
//   1. blocks of columns j2 of x (n1 values at stride n2) are gathered,
//      transformed, multiplied by w_n^{j2 k1} and written as rows of y:
//      y[j2 n1 + k1];
//   2. blocks of the columns k1 of y (n2 values at stride n1) are transformed
//      in place, which leaves X[k1 + n1 k2] at y[k2 n1 + k1].
// In place, pass 1 writes back into its own columns, pass 2 transforms the
// rows (x[k1 n2 + k2]), and an in-place transposition puts them in order:
// square tiles when n1 == n2; when one length divides the other, square
// blocks transposed in place plus a permutation of whole rows by cycles;
// otherwise a permutation of single elements by cycles.
// The twiddles w_n^e come from two tables of about sqrt(n) entries each,
// w_n^e = w_n^{L floor(e/L)} w_n^{e mod L}, computed in long double.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "dft/engine/fft.h"
#include "dft/engine/md_lines.h"
#include "zar/types.h"

namespace zar::fft {

template <class T> struct long_plan {
  long n1, n2, n;
  long L;                        // split of the twiddle exponent
  const T* lo;                   // w^r, r < L
  const T* hi;                   // w^{qL}, q <= (n-1)/L
  complex_plan<T>* p1;           // length n1
  complex_plan<T>* p2;           // length n2
};

namespace {
using lines::up64;

long root(long n) {
  long r = static_cast<long>(std::sqrt(static_cast<double>(n)));
  while (r * r > n) --r;
  while ((r + 1) * (r + 1) <= n) ++r;
  return r;
}

struct tables {
  long L, H;
};
tables table_sizes(long n) {
  long L = root(n);
  if (L * L < n) ++L;
  return {L, (n - 1) / L + 1};
}

// The in-place transposition of the n1 x n2 result: a matrix of rows x cols
// chunks of `chunk` elements each (see the top of the file).
struct shape {
  long rows, cols, chunk;
  bool square_first;  // square blocks before (n1 = c n2) or after (n2 = c n1) the chunk permutation
};
shape transposition(long n1, long n2) {
  if (n1 == n2) return {1, 1, n1 * n2, true};
  if (n1 % n2 == 0) return {n1 / n2, n2, n2, true};
  if (n2 % n1 == 0) return {n1, n2 / n1, n1, false};
  return {n1, n2, 1, false};
}
template <class T> size_t transposition_bytes(long n1, long n2) {
  const shape s = transposition(n1, n2);
  if (s.rows * s.cols == 1) return 0;
  return up64(static_cast<size_t>(s.chunk) * 2 * sizeof(T)) + up64((static_cast<size_t>(s.rows) * s.cols + 7) / 8);
}

// In-place transposition of the m x m matrices at a, a + m*m, ... (count of them).
template <class T> void square_blocks(T* a, long m, long count) {
  constexpr long tile = 16;
  for (long c = 0; c < count; ++c) {
    T* b = offset(a, 2LL * c * m * m);
    for (long i0 = 0; i0 < m; i0 += tile)
      for (long j0 = i0; j0 < m; j0 += tile) {
        const long i1 = i0 + tile < m ? i0 + tile : m, j1 = j0 + tile < m ? j0 + tile : m;
        for (long i = i0; i < i1; ++i)
          for (long j = (j0 == i0 ? i + 1 : j0); j < j1; ++j) {
            T* p = offset(b, 2 * (static_cast<long long>(i) * m + j));
            T* q = offset(b, 2 * (static_cast<long long>(j) * m + i));
            T r = p[0], s = p[1];
            p[0] = q[0];
            p[1] = q[1];
            q[0] = r;
            q[1] = s;
          }
      }
  }
}

// In-place transposition of a rows x cols matrix of chunks by following the
// cycles of the permutation p = r cols + c -> c rows + r.
template <class T> void chunk_cycles(T* a, long rows, long cols, long chunk, void* scratch) {
  const long long count = static_cast<long long>(rows) * cols;
  const size_t cb = static_cast<size_t>(chunk) * 2 * sizeof(T);
  T* tmp = static_cast<T*>(scratch);
  auto* seen = reinterpret_cast<std::uint8_t*>(static_cast<char*>(scratch) + up64(cb));
  std::memset(seen, 0, static_cast<size_t>((count + 7) / 8));
  auto at_chunk = [&](long long p) { return offset(a, p * 2 * chunk); };
  for (long long p = 1; p + 1 < count; ++p) {
    if (seen[p >> 3] >> (p & 7) & 1) continue;
    std::memcpy(tmp, at_chunk(p), cb);
    long long cur = p;
    for (;;) {
      seen[cur >> 3] |= static_cast<std::uint8_t>(1u << (cur & 7));
      const long long src = (cur % rows) * cols + cur / rows;  // the chunk that moves to cur
      if (src == p) break;
      std::memcpy(at_chunk(cur), at_chunk(src), cb);
      cur = src;
    }
    std::memcpy(at_chunk(cur), tmp, cb);
  }
}

template <class T> void transpose_in_place(T* a, long n1, long n2, void* scratch) {
  const shape s = transposition(n1, n2);
  if (n1 == n2) {
    square_blocks(a, n1, 1);
  } else if (s.square_first) {
    square_blocks(a, n2, n1 / n2);
    chunk_cycles(a, s.rows, s.cols, s.chunk, scratch);
  } else {
    chunk_cycles(a, s.rows, s.cols, s.chunk, scratch);
    if (s.chunk > 1) square_blocks(a, n1, n2 / n1);
  }
}

// Multiplies the transformed columns j2 = b0 .. b0+nb-1 (lines of n1 values)
// by w^{j2 k1}, conjugated for the backward transform.
template <class T> struct twiddle {
  const long_plan<T>* p;
  bool conj;
  void operator()(T* buf, long b0, long nb, long n1, long ld) const {
    const long L = p->L;
    const T sg = conj ? T(-1) : T(1);
    for (long b = 0; b < nb; ++b) {
      const long j2 = b0 + b, dq = j2 / L, dr = j2 % L;
      T* v = buf + 2 * b * ld;
      long q = 0, r = 0;
      for (long k = 0; k < n1; ++k) {
        const T hr = p->hi[2 * q], hi = p->hi[2 * q + 1], lr = p->lo[2 * r], li = p->lo[2 * r + 1];
        const T wr = hr * lr - hi * li, wi = sg * (hr * li + hi * lr);
        const T xr = v[2 * k], xi = v[2 * k + 1];
        v[2 * k] = xr * wr - xi * wi;
        v[2 * k + 1] = xr * wi + xi * wr;
        r += dr;
        q += dq;
        if (r >= L) {
          r -= L;
          ++q;
        }
      }
    }
  }
};
}  // namespace

bool long_split(long n, long* n1, long* n2) {
  if (n < 4) return false;
  // First choice: n2 = m with m*m dividing n and n1 = c*m, c <= 16, so that
  // the in-place transposition works on whole rows.
  for (long m = root(n); m >= 2; --m)
    if (n % (m * m) == 0) {
      if (n / (m * m) > 16) break;
      *n1 = n / m;
      *n2 = m;
      return true;
    }
  for (long m = root(n); m >= 2; --m)
    if (n % m == 0) {
      *n1 = n / m;
      *n2 = m;
      return true;
    }
  return false;
}

template <class T> footprint long_footprint(long n1, long n2) {
  const long n = n1 * n2;
  const tables tb = table_sizes(n);
  const footprint f1 = complex_footprint<T>(n1), f2 = complex_footprint<T>(n2);
  const size_t plan = up64(sizeof(long_plan<T>)) + up64(2 * tb.L * sizeof(T)) + up64(2 * tb.H * sizeof(T)) +
                      f1.plan_bytes + f2.plan_bytes;
  const size_t b1 = lines::block_bytes<T>(n1), b2 = lines::block_bytes<T>(n2);
  const size_t cs = f1.scratch_bytes > f2.scratch_bytes ? f1.scratch_bytes : f2.scratch_bytes;
  const size_t passes = (b1 > b2 ? b1 : b2) + cs, tr = transposition_bytes<T>(n1, n2);
  return {plan, passes > tr ? passes : tr};
}

template <class T> long_plan<T>* long_build(long n1, long n2, void* mem) {
  auto* p = static_cast<long_plan<T>*>(mem);
  const long n = n1 * n2;
  const tables tb = table_sizes(n);
  char* at = static_cast<char*>(mem) + up64(sizeof(long_plan<T>));
  T* lo = reinterpret_cast<T*>(at);
  at += up64(2 * tb.L * sizeof(T));
  T* hi = reinterpret_cast<T*>(at);
  at += up64(2 * tb.H * sizeof(T));
  const long double step = -2.0L * 3.14159265358979323846264338327950288L / n;
  for (long r = 0; r < tb.L; ++r) {
    lo[2 * r] = static_cast<T>(std::cos(step * r));
    lo[2 * r + 1] = static_cast<T>(std::sin(step * r));
  }
  for (long q = 0; q < tb.H; ++q) {
    const long double a = step * (static_cast<long double>(q) * tb.L);
    hi[2 * q] = static_cast<T>(std::cos(a));
    hi[2 * q + 1] = static_cast<T>(std::sin(a));
  }
  p->n1 = n1;
  p->n2 = n2;
  p->n = n;
  p->L = tb.L;
  p->lo = lo;
  p->hi = hi;
  p->p1 = complex_build<T>(n1, at);
  p->p2 = complex_build<T>(n2, at + complex_footprint<T>(n1).plan_bytes);
  return p;
}

template <class T> void long_run(const long_plan<T>* p, int sign, T scale, const T* x, T* y, void* scratch) {
  const long n1 = p->n1, n2 = p->n2;
  const size_t block = lines::block_bytes<T>(n1) > lines::block_bytes<T>(n2) ? lines::block_bytes<T>(n1)
                                                                               : lines::block_bytes<T>(n2);
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + block;
  const twiddle<T> tw{p, sign > 0};
  if (static_cast<const void*>(x) != static_cast<void*>(y)) {
    const dim t1[2] = {{n1, n2, 1}, {n2, 1, n1}};
    lines::blocked_pass<T>(p->p1, sign, T(1), t1, 2, 0, x, y, buf, cs, tw);
    const dim t2[2] = {{n2, n1, n1}, {n1, 1, 1}};
    lines::blocked_pass<T>(p->p2, sign, scale, t2, 2, 0, y, y, buf, cs);
    return;
  }
  const dim t1[2] = {{n1, n2, n2}, {n2, 1, 1}};
  lines::blocked_pass<T>(p->p1, sign, T(1), t1, 2, 0, y, y, buf, cs, tw);
  complex_run<T>(p->p2, sign, scale, y, 1, n2, y, 1, n2, n1, cs);
  transpose_in_place(y, n1, n2, scratch);
}

#define ZAR_FFT_LONG(T)                                                    \
  template footprint long_footprint<T>(long, long);                        \
  template long_plan<T>* long_build<T>(long, long, void*);                 \
  template void long_run<T>(const long_plan<T>*, int, T, const T*, T*, void*);
ZAR_FFT_LONG(float)
ZAR_FFT_LONG(double)

}  // namespace zar::fft
