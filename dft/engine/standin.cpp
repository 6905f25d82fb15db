// Stand-in fixed-length transforms built on the complex engine. Correct and
// slow; replaced by the complex engine's dedicated kernels.
#include <cmath>
#include <cstring>

#include "dft/engine/fft.h"

namespace zar::fft {

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

}  // namespace zar::fft
