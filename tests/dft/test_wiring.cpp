// Enough numbers per variant to know that the descriptor reaches the right
// engine calls with the right layout: a few lengths against a direct DFT.
// The accuracy of the transforms themselves is tested with the engine.
#include <gtest/gtest.h>

#include "dft_test.h"

using namespace dft_test;

namespace {

template <class T> double tol() { return sizeof(T) == 8 ? 1e-10 : 2e-4; }

// Complex 1-D: in place and not in place, forward and backward, with scales
// and a batch at default distances.
template <class T> void complex_1d(long n, bool inplace, long howmany) {
  const int prec = sizeof(T) == 8 ? ZAR_DFT_DOUBLE : ZAR_DFT_SINGLE;
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_COMPLEX, 1, n), ZAR_DFT_OK);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, 0.5), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_BACKWARD_SCALE, 1.0 / n), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, howmany), 0);
  if (!inplace) ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, (long)ZAR_DFT_NOT_INPLACE), 0);
  ASSERT_EQ(zar_dft_commit(d), ZAR_DFT_OK);
  std::vector<T> x(2 * n * howmany), y(2 * n * howmany, T(-7));
  for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<T>(value(static_cast<long>(i)));
  const std::vector<T> x0 = x;
  if (inplace) ASSERT_EQ(zar_dft_compute_forward(d, x.data()), 0);
  else ASSERT_EQ(zar_dft_compute_forward(d, x.data(), y.data()), 0);
  const std::vector<T>& out = inplace ? x : y;
  for (long t = 0; t < howmany; ++t) {
    std::vector<cld> in(n);
    for (long j = 0; j < n; ++j) in[j] = cld(x0[2 * (t * n + j)], x0[2 * (t * n + j) + 1]);
    const auto ref = direct(in, -1, 0.5L);
    for (long k = 0; k < n; ++k) {
      EXPECT_NEAR(out[2 * (t * n + k)], (double)ref[k].real(), tol<T>() * n) << "n=" << n << " t=" << t << " k=" << k;
      EXPECT_NEAR(out[2 * (t * n + k) + 1], (double)ref[k].imag(), tol<T>() * n) << "n=" << n << " k=" << k;
    }
  }
  // backward with 1/n undoes the forward up to the forward scale 0.5
  std::vector<T> back(out.size());
  if (inplace) {
    back = x;
    ASSERT_EQ(zar_dft_compute_backward(d, back.data()), 0);
  } else {
    ASSERT_EQ(zar_dft_compute_backward(d, y.data(), back.data()), 0);
  }
  for (size_t i = 0; i < back.size(); ++i) EXPECT_NEAR(back[i], 0.5 * x0[i], tol<T>() * n) << i;
  zar_dft_free(&d);
}

TEST(Wiring, ComplexOneDimensional) {
  for (long n : {1L, 2L, 7L, 12L, 16L, 64L, 65L, 100L})
    for (bool inplace : {true, false}) {
      complex_1d<double>(n, inplace, 1);
      complex_1d<float>(n, inplace, 1);
    }
  complex_1d<double>(24, true, 5);
  complex_1d<float>(128, false, 3);
}

}  // namespace
