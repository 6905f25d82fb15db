// The complex plan: its record, its construction inside caller memory and
// the data access shared by the complex engine's routes.
#pragma once
#include <array>
#include <cstddef>
#include <cstring>

#include "dft/engine/complex_kernels.h"
#include "dft/engine/fft.h"

namespace zar::fft {

namespace detail {
// Routes of a complex plan.
enum class route : int {
  chain,   // mixed-radix passes (every prime factor up to max_generic_radix)
  chirp,   // chirp-z: a circular convolution through a power-of-two chain
  sixstep  // n = n1 x n2: column transforms, twiddles, row transforms
};
constexpr int max_passes = 40;
// The fixed small transforms (complex_small.cpp): small_run<N, -1> at
// N - 2, small_run<N, +1> at 63 + N - 2.
using small_fn = void (*)(double, const double*, long, long, double*, long, long, long);
extern const std::array<small_fn, 126> small_kernels;
}  // namespace detail

template <class T> struct complex_plan {
  long n;
  detail::route how;
  // chain
  int np;
  long batch;  // transforms interleaved per block in batched or strided runs
  detail::pass<T> passes[detail::max_passes];
  // chirp-z: chirp e^{-i pi k^2/n} (k < n) and the transformed kernel
  // FFT_M(conj chirp) / M of the convolution of length M
  long M;
  const T* chirp;
  const T* kernel;
  const complex_plan<T>* sub;
  // six-step
  long n1, n2;
  const complex_plan<T>* cols;  // length n1
  const complex_plan<T>* rows;  // length n2
  const T* tw;                  // w_n^{k1 j2} at k1*n2 + j2
  size_t scratch;               // bytes of scratch a run needs
};

}  // namespace zar::fft
