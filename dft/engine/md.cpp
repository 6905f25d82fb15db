// Multi-dimensional transforms, complex and real.
//
// The batch is one more dimension of the tensor (count, input and output
// distance), so every pass loops over it like over any other dimension.
// Complex: the dimension with the smallest output stride runs first, directly
// from the input to the output (and applies the scale); every other
// dimension is then transformed in place in the output through gathered
// blocks of lines (md_lines.h).
// Real forward: the real transform along dims[0] from the input to the
// output, then the complex passes along the other dimensions in the output.
// Real backward: the complex passes first, the real transform along dims[0]
// last. In place they run in the data; out of place the complex passes write
// a contiguous copy of one transform in scratch, so the input is left as it
// was, and the real transform reads from there.
#include "dft/engine/fft.h"
#include "dft/engine/md_lines.h"
#include "zar/types.h"

namespace zar::fft {

namespace {
using lines::up64;

// dims and the batch as one tensor; returns its rank.
int with_batch(int rank, const dim* dims, long howmany, long idist, long odist, dim* t) {
  for (int d = 0; d < rank; ++d) t[d] = dims[d];
  t[rank] = {howmany, idist, odist};
  return rank + 1;
}

// Block buffer for the passes over dims [first, rank), and the scratch of
// those passes: the buffer, then the engine's scratch.
template <class T> size_t block_part(int first, int rank, const dim* t) {
  size_t b = 0;
  for (int d = first; d < rank; ++d) b = lines::block_bytes<T>(t[d].n) > b ? lines::block_bytes<T>(t[d].n) : b;
  return b;
}
template <class T> size_t pass_scratch(int first, int rank, const dim* t) {
  size_t cs = 0;
  for (int d = first; d < rank; ++d) {
    const size_t c = complex_footprint<T>(t[d].n).scratch_bytes;
    cs = c > cs ? c : cs;
  }
  return block_part<T>(first, rank, t) + cs;
}

// The complex passes along dims [first, rank) of tensor t (rank tr, batch
// included) except dimension skip: the first reads src with the input
// strides, all write dst with the output strides, and the later ones work in
// dst.
template <class T>
void blocked_passes(const complex_plan<T>* const* plans, int first, int rank, int skip, dim* t, int tr, int sign,
                    const T* src, T* dst, void* scratch) {
  T* buf = static_cast<T*>(scratch);
  void* cs = static_cast<char*>(scratch) + block_part<T>(first, rank, t);
  for (int d = first; d < rank; ++d) {
    if (d == skip || t[d].n == 1) continue;
    lines::blocked_pass<T>(plans[d], sign, T(1), t, tr, d, src, dst, buf, cs);
    src = dst;
    for (int k = 0; k < tr; ++k) t[k].is = t[k].os;
  }
  if (src != dst)  // every dimension had length 1: the data still move
    lines::each(tr, t, 0u, [&](long long oi, long long oo) {
      offset(dst, 2 * oo)[0] = offset(src, 2 * oi)[0];
      offset(dst, 2 * oo)[1] = offset(src, 2 * oi)[1];
    });
}

// The real transforms along dimension 0 of tensor t, the neighbouring
// dimension as their batch; f(plan, x offset, y offset, count, distances)
// runs one batch.
template <class F> void along_first(const dim* t, int tr, F&& f) {
  const int e = lines::neighbour(tr, t, 0);
  const long cnt = e < 0 ? 1 : t[e].n, id = e < 0 ? 0 : t[e].is, od = e < 0 ? 0 : t[e].os;
  lines::each(tr, t, 1u | (e < 0 ? 0u : 1u << e), [&](long long oi, long long oo) { f(oi, oo, cnt, id, od); });
}

// The half-spectrum side of a real tensor: dims[0] holds n/2+1 values.
void half_side(const dim* t, int tr, dim* c) {
  for (int d = 0; d < tr; ++d) c[d] = t[d];
  c[0].n = t[0].n / 2 + 1;
}
}  // namespace

template <class T> size_t md_scratch_bytes(int rank, const dim* dims) { return pass_scratch<T>(0, rank, dims); }

template <class T>
void complex_md_run(const complex_plan<T>* const* plans, int rank, const dim* dims, int sign, T scale, const T* x,
                    long idist, T* y, long odist, long howmany, void* scratch) {
  dim t[lines::max_dims];
  const int tr = with_batch(rank, dims, howmany, idist, odist, t);
  // The direct dimension: smallest output stride among those longer than 1.
  int c = 0;
  for (int d = 1; d < rank; ++d)
    if (t[d].n > 1 && (t[c].n == 1 || std::labs(t[d].os) < std::labs(t[c].os))) c = d;
  lines::direct_pass<T>(plans[c], sign, scale, t, tr, c, x, y,
                        static_cast<char*>(scratch) + block_part<T>(0, rank, dims));
  for (int k = 0; k < tr; ++k) t[k].is = t[k].os;
  blocked_passes<T>(plans, 0, rank, c, t, tr, sign, y, y, scratch);
}

template <class T> size_t real_md_scratch_bytes(int rank, const dim* dims) {
  dim c[lines::max_dims];
  half_side(dims, rank, c);
  long long total = 1;
  for (int d = 0; d < rank; ++d) total *= c[d].n;
  const size_t passes = pass_scratch<T>(1, rank, c), real = real_footprint<T>(dims[0].n).scratch_bytes;
  const size_t copy = rank > 1 ? up64(static_cast<size_t>(total) * 2 * sizeof(T)) : 0;
  return copy + (passes > real ? passes : real);
}

template <class T>
void real_md_forward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                     T scale, const T* x, long idist, T* y, long odist, long howmany, void* scratch) {
  dim t[lines::max_dims];
  const int tr = with_batch(rank, dims, howmany, idist, odist, t);
  along_first(t, tr, [&](long long oi, long long oo, long cnt, long id, long od) {
    real_forward<T>(rplan, real_layout::ccs, scale, offset(x, oi), t[0].is, id, offset(y, 2 * oo), t[0].os, od,
                    cnt, scratch);
  });
  dim c[lines::max_dims];
  half_side(t, tr, c);
  for (int k = 0; k < tr; ++k) c[k].is = c[k].os;
  blocked_passes<T>(plans, 1, rank, -1, c, tr, -1, y, y, scratch);
}

template <class T>
void real_md_backward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                      T scale, const T* y, long idist, T* x, long odist, long howmany, void* scratch) {
  // The real transforms along dimension 0 from src (strides of r) into x.
  auto c2r = [&](const dim* r, int tr, const T* src, T* dst, void* rs) {
    along_first(r, tr, [&](long long oi, long long oo, long cnt, long id, long od) {
      real_backward<T>(rplan, real_layout::ccs, scale, offset(src, 2 * oi), r[0].is, id, offset(dst, oo), r[0].os,
                       od, cnt, rs);
    });
  };
  dim t[lines::max_dims], c[lines::max_dims];
  if (rank == 1 || static_cast<const void*>(y) == static_cast<void*>(x)) {
    // In place (or nothing but the real transforms): the complex passes in the data.
    const int tr = with_batch(rank, dims, howmany, idist, odist, t);
    half_side(t, tr, c);
    for (int k = 0; k < tr; ++k) c[k].os = c[k].is;
    if (rank > 1) blocked_passes<T>(plans, 1, rank, -1, c, tr, +1, y, x, scratch);
    c2r(t, tr, y, x, scratch);
    return;
  }
  // Out of place: the complex passes of one transform write a contiguous copy.
  dim r[lines::max_dims];
  half_side(dims, rank, c);
  long long total = 1;
  for (int d = 0; d < rank; ++d) {
    c[d].os = static_cast<long>(total);
    r[d] = {dims[d].n, c[d].os, dims[d].os};
    total *= c[d].n;
  }
  T* copy = static_cast<T*>(scratch);
  void* rest = static_cast<char*>(scratch) + up64(static_cast<size_t>(total) * 2 * sizeof(T));
  for (long i = 0; i < howmany; ++i) {
    dim ci[lines::max_dims];
    for (int d = 0; d < rank; ++d) ci[d] = c[d];
    blocked_passes<T>(plans, 1, rank, -1, ci, rank, +1, offset(y, 2LL * i * idist), copy, rest);
    c2r(r, rank, copy, offset(x, static_cast<long long>(i) * odist), rest);
  }
}

#define ZAR_FFT_MD(T)                                                                                             \
  template size_t md_scratch_bytes<T>(int, const dim*);                                                           \
  template void complex_md_run<T>(const complex_plan<T>* const*, int, const dim*, int, T, const T*, long, T*, long, \
                                  long, void*);                                                                   \
  template size_t real_md_scratch_bytes<T>(int, const dim*);                                                      \
  template void real_md_forward<T>(const real_plan<T>*, const complex_plan<T>* const*, int, const dim*, T,         \
                                   const T*, long, T*, long, long, void*);                                        \
  template void real_md_backward<T>(const real_plan<T>*, const complex_plan<T>* const*, int, const dim*, T,        \
                                    const T*, long, T*, long, long, void*);
ZAR_FFT_MD(float)
ZAR_FFT_MD(double)

}  // namespace zar::fft
