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
  if (!inplace) { ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, (long)ZAR_DFT_NOT_INPLACE), 0); }
  ASSERT_EQ(zar_dft_commit(d), ZAR_DFT_OK);
  std::vector<T> x(2 * n * howmany), y(2 * n * howmany, T(-7));
  for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<T>(value(static_cast<long>(i)));
  const std::vector<T> x0 = x;
  if (inplace) { ASSERT_EQ(zar_dft_compute_forward(d, x.data()), 0); }
  else { ASSERT_EQ(zar_dft_compute_forward(d, x.data(), y.data()), 0); }
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

// Split complex storage: real and imaginary parts in separate arrays.
template <class T> void split_1d(long n, bool inplace) {
  const int prec = sizeof(T) == 8 ? ZAR_DFT_DOUBLE : ZAR_DFT_SINGLE;
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_COMPLEX, 1, n), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, (long)ZAR_DFT_REAL_REAL), 0);
  if (!inplace) { ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, (long)ZAR_DFT_NOT_INPLACE), 0); }
  ASSERT_EQ(zar_dft_commit(d), 0);
  std::vector<T> re(n), im(n), ore(n, T(9)), oim(n, T(9));
  std::vector<cld> in(n);
  for (long j = 0; j < n; ++j) {
    re[j] = static_cast<T>(value(j, 1));
    im[j] = static_cast<T>(value(j, 2));
    in[j] = cld(re[j], im[j]);
  }
  if (inplace) { ASSERT_EQ(zar_dft_compute_backward(d, re.data(), im.data()), 0); }
  else { ASSERT_EQ(zar_dft_compute_backward(d, re.data(), im.data(), ore.data(), oim.data()), 0); }
  const auto ref = direct(in, +1);
  for (long k = 0; k < n; ++k) {
    EXPECT_NEAR(inplace ? re[k] : ore[k], (double)ref[k].real(), tol<T>() * n) << n << " " << k;
    EXPECT_NEAR(inplace ? im[k] : oim[k], (double)ref[k].imag(), tol<T>() * n) << n << " " << k;
  }
  zar_dft_free(&d);
}

TEST(Wiring, SplitComplex) {
  for (long n : {3L, 8L, 30L})
    for (bool inplace : {true, false}) {
      split_1d<double>(n, inplace);
      split_1d<float>(n, inplace);
    }
}

// Real 1-D in the three packed layouts and the conjugate-even default,
// forward against a direct DFT and backward round trip.
struct real_case {
  long cestorage, packed;
};
// Where spectrum value k's real and imaginary parts sit (-1: not stored).
void place(long layout, long n, long k, long* re, long* im) {
  if (layout == 0) {  // CCS pairs
    *re = 2 * k;
    *im = 2 * k + 1;
    return;
  }
  if (k == 0) {
    *re = 0;
    *im = -1;
  } else if (n % 2 == 0 && k == n / 2) {
    *re = layout == ZAR_DFT_PERM_FORMAT ? 1 : n - 1;
    *im = -1;
  } else {
    const long base = layout == ZAR_DFT_PERM_FORMAT && n % 2 == 0 ? 2 * k : 2 * k - 1;
    *re = base;
    *im = base + 1;
  }
}

template <class T> void real_1d(long n, real_case c, bool inplace) {
  const int prec = sizeof(T) == 8 ? ZAR_DFT_DOUBLE : ZAR_DFT_SINGLE;
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_REAL, 1, n), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, c.cestorage), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, c.packed), 0);
  if (!inplace) { ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, (long)ZAR_DFT_NOT_INPLACE), 0); }
  ASSERT_EQ(zar_dft_commit(d), 0);
  const long layout = c.cestorage == ZAR_DFT_COMPLEX_COMPLEX || c.packed == ZAR_DFT_CCS_FORMAT ? 0 : c.packed;
  const long room = 2 * (n / 2 + 1);
  std::vector<T> x(room, T(0)), y(room, T(5));
  std::vector<cld> in(n);
  for (long j = 0; j < n; ++j) {
    x[j] = static_cast<T>(value(j, 3));
    in[j] = cld(x[j], 0);
  }
  if (inplace) { ASSERT_EQ(zar_dft_compute_forward(d, x.data()), 0); }
  else { ASSERT_EQ(zar_dft_compute_forward(d, x.data(), y.data()), 0); }
  std::vector<T>& spectrum = inplace ? x : y;
  const auto ref = direct(in, -1);
  for (long k = 0; k <= n / 2; ++k) {
    long r, i;
    place(layout, n, k, &r, &i);
    EXPECT_NEAR(spectrum[r], (double)ref[k].real(), tol<T>() * n) << "n=" << n << " layout=" << layout << " k=" << k;
    if (i >= 0) { EXPECT_NEAR(spectrum[i], (double)ref[k].imag(), tol<T>() * n) << "n=" << n << " layout=" << layout; }
  }
  std::vector<T> back(room, T(3));
  if (inplace) {
    ASSERT_EQ(zar_dft_compute_backward(d, spectrum.data()), 0);
    back = spectrum;
  } else {
    ASSERT_EQ(zar_dft_compute_backward(d, spectrum.data(), back.data()), 0);
  }
  for (long j = 0; j < n; ++j) EXPECT_NEAR(back[j], n * (double)in[j].real(), tol<T>() * n * n) << n << " " << j;
  zar_dft_free(&d);
}

TEST(Wiring, RealOneDimensionalLayouts) {
  const real_case cases[] = {{ZAR_DFT_COMPLEX_COMPLEX, ZAR_DFT_CCE_FORMAT},
                             {ZAR_DFT_COMPLEX_REAL, ZAR_DFT_CCS_FORMAT},
                             {ZAR_DFT_COMPLEX_REAL, ZAR_DFT_PACK_FORMAT},
                             {ZAR_DFT_COMPLEX_REAL, ZAR_DFT_PERM_FORMAT}};
  for (const real_case& c : cases)
    for (long n : {1L, 2L, 5L, 8L, 13L, 32L})
      for (bool inplace : {true, false}) {
        real_1d<double>(n, c, inplace);
        real_1d<float>(n, c, inplace);
      }
}

// A real batch at the default distances: the real side n reals apart (in
// place 2(n/2+1), the padded span), the complex side n/2+1 pairs in CCS and
// n reals in PACK and PERM (in place the padded span); each transform of the
// batch equals the same transform done alone.
TEST(Wiring, RealBatchDefaultDistances) {
  const long n = 10, howmany = 3, padded = 2 * (n / 2 + 1);
  for (long packed : {54L, 55L, 56L})
    for (bool inplace : {true, false}) {
      zar_dft_descriptor *batch = nullptr, *one = nullptr;
      for (auto [dd, count] : {std::pair{&batch, howmany}, std::pair{&one, 1L}}) {
        ASSERT_EQ(zar_dft_create(dd, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1L, n), 0);
        ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40L), 0);
        ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_PACKED_FORMAT, packed), 0);
        ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_NUMBER_OF_TRANSFORMS, count), 0);
        if (!inplace) { ASSERT_EQ(zar_dft_set(*dd, ZAR_DFT_PLACEMENT, 44L), 0); }
        ASSERT_EQ(zar_dft_commit(*dd), 0);
      }
      const long in_dist = inplace ? padded : n;
      const long out_dist = packed == 54 || inplace ? padded : n;
      std::vector<double> x(howmany * padded + 8, 0.0), y(howmany * padded + 8, 0.0);
      for (long t = 0; t < howmany; ++t)
        for (long j = 0; j < n; ++j) x[t * in_dist + j] = value(j, static_cast<int>(t));
      const std::vector<double> x0 = x;
      if (inplace) { ASSERT_EQ(zar_dft_compute_forward(batch, x.data()), 0); }
      else { ASSERT_EQ(zar_dft_compute_forward(batch, x.data(), y.data()), 0); }
      const std::vector<double>& out = inplace ? x : y;
      for (long t = 0; t < howmany; ++t) {
        std::vector<double> a(padded, 0.0), b(padded, 0.0);
        for (long j = 0; j < n; ++j) a[j] = x0[t * in_dist + j];
        if (inplace) { ASSERT_EQ(zar_dft_compute_forward(one, a.data()), 0); }
        else { ASSERT_EQ(zar_dft_compute_forward(one, a.data(), b.data()), 0); }
        const std::vector<double>& ref = inplace ? a : b;
        const long len = packed == 54 ? padded : n;
        for (long j = 0; j < len; ++j)
          EXPECT_EQ(out[t * out_dist + j], ref[j]) << "packed " << packed << " inplace " << inplace << " t " << t;
      }
      zar_dft_free(&batch);
      zar_dft_free(&one);
    }
}

// Multi-dimensional complex: lengths row-major, the last fastest; strides
// given explicitly for a padded layout, and a batch of two.
template <class T> void complex_md(std::vector<long> lens) {
  const int prec = sizeof(T) == 8 ? ZAR_DFT_DOUBLE : ZAR_DFT_SINGLE;
  const long rank = static_cast<long>(lens.size());
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_COMPLEX, rank, lens.data()), 0);
  // A padded row (last dimension + 1) for the input, contiguous output.
  std::vector<long> is(rank + 1), os(rank + 1);
  is[0] = 1;  // offset of one element
  os[0] = 0;
  long sin = 1, sout = 1;
  for (long k = rank; k >= 1; --k) {
    is[k] = sin;
    os[k] = sout;
    sin *= lens[k - 1] + (k == rank ? 1 : 0);
    sout *= lens[k - 1];
  }
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, (long)ZAR_DFT_NOT_INPLACE), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, is.data()), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, os.data()), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, 2L), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_INPUT_DISTANCE, sin + 1), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_DISTANCE, sout), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  std::vector<T> x(2 * (2 * (sin + 1) + 1)), y(2 * 2 * sout);
  for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<T>(value(static_cast<long>(i), 4));
  ASSERT_EQ(zar_dft_compute_forward(d, x.data(), y.data()), 0);
  // Reference: the md DFT as a sum over all index tuples.
  const long total = sout;
  std::vector<long> idx(rank);
  const long double pi = 3.14159265358979323846264338327950288L;
  for (long t = 0; t < 2; ++t)
    for (long ko = 0; ko < total; ++ko) {
      std::vector<long> kk(rank);
      for (long r = rank - 1, v = ko; r >= 0; --r) {
        kk[r] = v % lens[r];
        v /= lens[r];
      }
      cld s = 0;
      for (long jo = 0; jo < total; ++jo) {
        long v = jo, off = is[0] + t * (sin + 1);
        long double ph = 0;
        for (long r = rank - 1; r >= 0; --r) {
          const long j = v % lens[r];
          v /= lens[r];
          off += j * is[r + 1];
          ph += static_cast<long double>(j * kk[r] % lens[r]) / lens[r];
        }
        s += cld(x[2 * off], x[2 * off + 1]) * cld(std::cos(-2 * pi * ph), std::sin(-2 * pi * ph));
      }
      const long o = t * sout + ko;
      EXPECT_NEAR(y[2 * o], (double)s.real(), tol<T>() * total) << rank << " " << ko;
      EXPECT_NEAR(y[2 * o + 1], (double)s.imag(), tol<T>() * total) << rank << " " << ko;
    }
  zar_dft_free(&d);
}

TEST(Wiring, ComplexMultiDimensional) {
  complex_md<double>({3, 4});
  complex_md<float>({5, 2});
  complex_md<double>({2, 3, 5});
}

// Real multi-dimensional, default in-place padded layout: forward against
// the complex transform of the same data, backward round trip.
template <class T> void real_md(long n1, long n0) {
  const int prec = sizeof(T) == 8 ? ZAR_DFT_DOUBLE : ZAR_DFT_SINGLE;
  const long lens[2] = {n1, n0};
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, prec, ZAR_DFT_REAL, 2L, lens), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  const long h = n0 / 2 + 1, row = 2 * h;
  std::vector<T> x(row * n1, T(0));
  for (long i = 0; i < n1; ++i)
    for (long j = 0; j < n0; ++j) x[i * row + j] = static_cast<T>(value(i * n0 + j, 5));
  const std::vector<T> x0 = x;
  ASSERT_EQ(zar_dft_compute_forward(d, x.data()), 0);
  const long double pi = 3.14159265358979323846264338327950288L;
  for (long k1 = 0; k1 < n1; ++k1)
    for (long k0 = 0; k0 < h; ++k0) {
      cld s = 0;
      for (long i = 0; i < n1; ++i)
        for (long j = 0; j < n0; ++j) {
          const long double ph = static_cast<long double>(i * k1 % n1) / n1 + static_cast<long double>(j * k0 % n0) / n0;
          s += static_cast<long double>(x0[i * row + j]) * cld(std::cos(-2 * pi * ph), std::sin(-2 * pi * ph));
        }
      EXPECT_NEAR(x[k1 * row + 2 * k0], (double)s.real(), tol<T>() * n0 * n1) << k1 << " " << k0;
      EXPECT_NEAR(x[k1 * row + 2 * k0 + 1], (double)s.imag(), tol<T>() * n0 * n1) << k1 << " " << k0;
    }
  ASSERT_EQ(zar_dft_compute_backward(d, x.data()), 0);
  for (long i = 0; i < n1; ++i)
    for (long j = 0; j < n0; ++j)
      EXPECT_NEAR(x[i * row + j], n0 * n1 * (double)x0[i * row + j], tol<T>() * n0 * n1 * 4) << i << " " << j;
  zar_dft_free(&d);
}

TEST(Wiring, RealMultiDimensional) {
  real_md<double>(3, 4);
  real_md<double>(4, 5);
  real_md<float>(2, 6);
}

}  // namespace
