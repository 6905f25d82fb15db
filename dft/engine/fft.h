// The FFT engine: plans and their execution, independent of the descriptor.
//
// A plan describes one transform length; its tables (twiddles, factors,
// permutations) live in one block of memory that the caller provides, sized
// first by the matching *_footprint call, so a descriptor can measure its
// memory without allocating and build inside caller memory. Execution takes
// the data layout (strides, distances, count) and a scratch area of the
// footprint's size per executing thread; it allocates nothing.
//
// Conventions throughout:
// - sign -1 is the forward transform y[k] = sum_j x[j] e^{-2 pi i jk/n},
//   sign +1 the backward one (e^{+2 pi i jk/n}); results are multiplied by
//   scale (no multiplication at all when scale == 1).
// - Complex data are interleaved (re, im) pairs of T; strides and distances
//   of complex data count complex elements, of real data real elements.
// - In place: x == y with equal strides and distances. Any other
//   combination must not overlap.
// - Plan memory is 64-byte aligned; scratch is 64-byte aligned.
#pragma once
#include <cstddef>

namespace zar::fft {

// Memory a plan needs: the plan block, and the scratch (in bytes) each
// executing thread must supply.
struct footprint {
  size_t plan_bytes = 0;
  size_t scratch_bytes = 0;
};

// ---------------------------------------------------------------- complex 1-D
template <class T> struct complex_plan;

template <class T> footprint complex_footprint(long n);
template <class T> complex_plan<T>* complex_build(long n, void* mem);
// howmany transforms; element j of transform t is x[t*idist + j*is].
template <class T>
void complex_run(const complex_plan<T>* p, int sign, T scale, const T* x, long is, long idist, T* y, long os,
                 long odist, long howmany, void* scratch);
// Split storage: real and imaginary parts in separate arrays with the same
// strides (in real elements).
template <class T>
void complex_run_split(const complex_plan<T>* p, int sign, T scale, const T* xr, const T* xi, long is, long idist,
                       T* yr, T* yi, long os, long odist, long howmany, void* scratch);

// Dedicated straight-line transforms of a fixed small length N (2..64),
// double precision, no plan and no scratch.
template <int N, int Sign>
void small_run(double scale, const double* x, long is, long idist, double* y, long os, long odist, long howmany);

// ---------------------------------------------------------------- real 1-D
// Forward: n reals -> the n/2+1 complex values of the conjugate-even half
// spectrum (complex pairs, stride os in complex elements). Backward: the
// reverse; the imaginary parts of y[0] (and y[n/2] for even n) are ignored.
// The packed real layouts of one-dimensional transforms (n reals in all):
//   CCS  : the n/2+1 complex pairs as above (format 54 and CCE 57 in 1-D)
//   PACK : R0 R1 I1 R2 I2 ... (ending R(n/2) for even n)
//   PERM : R0 R(n/2) R1 I1 R2 I2 ... for even n; odd n as PACK
template <class T> struct real_plan;
enum class real_layout { ccs, pack, perm };

template <class T> footprint real_footprint(long n);
template <class T> real_plan<T>* real_build(long n, void* mem);
template <class T>
void real_forward(const real_plan<T>* p, real_layout layout, T scale, const T* x, long is, long idist, T* y, long os,
                  long odist, long howmany, void* scratch);
template <class T>
void real_backward(const real_plan<T>* p, real_layout layout, T scale, const T* y, long is, long idist, T* x,
                   long os, long odist, long howmany, void* scratch);

// ---------------------------------------------------------------- several dimensions
// One dimension of a multi-dimensional problem: length and the input and
// output strides (elements of the data: complex for complex data, real for
// real input, complex for the conjugate-even half spectrum).
struct dim {
  long n, is, os;
};

// Complex transforms of rank 1..7 over dims[0..rank), with a batch of
// howmany at distances idist/odist; plans[d] is a complex plan of dims[d].n.
// Each dimension is transformed through contiguous blocks of lines gathered
// from the data (no strided passes over whole columns).
template <class T> size_t md_scratch_bytes(int rank, const dim* dims);
template <class T>
void complex_md_run(const complex_plan<T>* const* plans, int rank, const dim* dims, int sign, T scale, const T* x,
                    long idist, T* y, long odist, long howmany, void* scratch);

// Real multi-dimensional transforms: dims[0] is the real (halved) dimension,
// dims[0].n its real length; on the complex side dims[0] holds n/2+1 values.
// For the forward transform dims[d].is strides the real input and
// dims[d].os the complex output; for the backward transform the reverse.
template <class T> size_t real_md_scratch_bytes(int rank, const dim* dims);
template <class T>
void real_md_forward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                     T scale, const T* x, long idist, T* y, long odist, long howmany, void* scratch);
template <class T>
void real_md_backward(const real_plan<T>* rplan, const complex_plan<T>* const* plans, int rank, const dim* dims,
                      T scale, const T* y, long idist, T* x, long odist, long howmany, void* scratch);

// ---------------------------------------------------------------- one long transform as n1 x n2
// The six-step route for very long transforms: n = n1 * n2, contiguous
// data, one transform at a time.
template <class T> struct long_plan;
template <class T> footprint long_footprint(long n1, long n2);
template <class T> long_plan<T>* long_build(long n1, long n2, void* mem);
template <class T> void long_run(const long_plan<T>* p, int sign, T scale, const T* x, T* y, void* scratch);
// Factorisation for the long route: n1 * n2 == n with both near sqrt(n);
// returns false when n has no useful split (a prime, for instance).
bool long_split(long n, long* n1, long* n2);

}  // namespace zar::fft
