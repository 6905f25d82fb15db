// Lines of a strided tensor of complex values, for the passes of the
// multi-dimensional and the long transforms.
//
// A pass transforms every line along one dimension of a tensor (a list of
// lengths with input and output strides, counted in complex elements). The
// dimension with unit stride runs directly through the complex engine, which
// takes the neighbouring dimension as its batch; every other dimension is
// transformed through blocks of B lines: the block is gathered into
// contiguous scratch (the lines side by side, so each gathered row is B
// neighbouring elements of the data), transformed as one batch and scattered
// back. B is chosen so that a block stays in the second-level cache.
#pragma once
#include <cstddef>
#include <cstdlib>

#include "dft/engine/fft.h"
#include "zar/types.h"

namespace zar::fft::lines {

inline size_t up64(size_t b) { return (b + 63) & ~size_t(63); }

constexpr int max_dims = 8;  // rank 7 and the batch

// Bytes of one gathered block that the blocking aims at, and the bounds of B.
constexpr long block_target = 192 * 1024;
constexpr long block_most = 16;

// Lines per block for lines of n complex values: enough for every gathered
// row to fill a cache line, at most block_most.
template <class T> long block_lines(long n) {
  const long least = 64 / static_cast<long>(2 * sizeof(T));
  long b = block_target / (n * 2 * static_cast<long>(sizeof(T)));
  return b < least ? least : b > block_most ? block_most : b;
}
// Distance between the gathered lines, in complex elements: n, padded when
// lines of a power-of-two size would make the gather's stores to the B
// lines fall into the same cache sets.
template <class T> long line_distance(long n) {
  const long bytes = n * 2 * static_cast<long>(sizeof(T));
  return bytes % 512 == 0 ? n + 64 / static_cast<long>(2 * sizeof(T)) : n;
}
template <class T> size_t block_bytes(long n) { return up64(block_lines<T>(n) * line_distance<T>(n) * 2 * sizeof(T)); }

// Calls f(input offset, output offset) for every index combination of the
// dimensions not marked in skip (a bit per dimension).
template <class F> void each(int rank, const dim* t, unsigned skip, F&& f) {
  for (int d = 0; d < rank; ++d)
    if (!(skip >> d & 1) && t[d].n < 1) return;  // nothing to do (an empty batch)
  long idx[max_dims] = {};
  long long oi = 0, oo = 0;
  for (;;) {
    f(oi, oo);
    int d = 0;
    for (; d < rank; ++d) {
      if (skip >> d & 1) continue;
      if (++idx[d] < t[d].n) {
        oi += t[d].is;
        oo += t[d].os;
        break;
      }
      oi -= static_cast<long long>(idx[d] - 1) * t[d].is;
      oo -= static_cast<long long>(idx[d] - 1) * t[d].os;
      idx[d] = 0;
    }
    if (d == rank) return;
  }
}

// The dimension other than d with the smallest output stride among those
// longer than 1, or -1.
inline int neighbour(int rank, const dim* t, int d) {
  int e = -1;
  for (int k = 0; k < rank; ++k)
    if (k != d && t[k].n > 1 && (e < 0 || std::labs(t[k].os) < std::labs(t[e].os))) e = k;
  return e;
}

// Transform along dimension c from x (input strides) to y (output strides),
// the neighbouring dimension as the engine's batch.
template <class T>
void direct_pass(const complex_plan<T>* plan, int sign, T scale, const dim* t, int rank, int c, const T* x, T* y,
                 void* cs) {
  const int e = neighbour(rank, t, c);
  const long cnt = e < 0 ? 1 : t[e].n, id = e < 0 ? 0 : t[e].is, od = e < 0 ? 0 : t[e].os;
  unsigned skip = 1u << c | (e < 0 ? 0u : 1u << e);
  each(rank, t, skip, [&](long long oi, long long oo) {
    complex_run<T>(plan, sign, scale, offset(x, 2 * oi), t[c].is, id, offset(y, 2 * oo), t[c].os, od, cnt, cs);
  });
}

// count complex values from s (stride ss reals) to d (stride ds reals), each
// moved as one unit.
template <class T> inline void move(const T* s, long ss, T* d, long ds, long count) {
  for (long b = 0; b < count; ++b) *reinterpret_cast<cx<T>*>(d + b * ds) = *reinterpret_cast<const cx<T>*>(s + b * ss);
}

// No twiddles between the transform and the scatter of a block.
struct no_twiddle {
  template <class T> void operator()(T*, long, long, long, long) const {}
};

// Transform along dimension d from src (input strides) to dst (output
// strides) through gathered blocks; src == dst is allowed. Between transform
// and scatter, tw(block, first line index along the neighbour, lines, n,
// line distance) may modify the block (the long route multiplies its twiddles there).
template <class T, class Tw = no_twiddle>
void blocked_pass(const complex_plan<T>* plan, int sign, T scale, const dim* t, int rank, int d, const T* src,
                  T* dst, T* buf, void* cs, Tw tw = {}) {
  const long n = t[d].n, ld = line_distance<T>(n);
  const int e = neighbour(rank, t, d);
  const long lines = e < 0 ? 1 : t[e].n;
  const long B = block_lines<T>(n);
  const long isd = 2 * t[d].is, osd = 2 * t[d].os;
  const long ise = e < 0 ? 0 : 2 * t[e].is, ose = e < 0 ? 0 : 2 * t[e].os;
  unsigned skip = 1u << d | (e < 0 ? 0u : 1u << e);
  each(rank, t, skip, [&](long long oi, long long oo) {
    for (long b0 = 0; b0 < lines; b0 += B) {
      const long nb = lines - b0 < B ? lines - b0 : B;
      const T* s = offset(src, 2 * oi + static_cast<long long>(b0) * ise);
      for (long j = 0; j < n; ++j, s += isd) move(s, ise, buf + 2 * j, 2 * ld, nb);
      complex_run<T>(plan, sign, scale, buf, 1, ld, buf, 1, ld, nb, cs);
      tw(buf, b0, nb, n, ld);
      T* o = offset(dst, 2 * oo + static_cast<long long>(b0) * ose);
      for (long j = 0; j < n; ++j, o += osd) move(buf + 2 * j, 2 * ld, o, ose, nb);
    }
  });
}

}  // namespace zar::fft::lines
