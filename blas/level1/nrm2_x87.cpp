// Euclidean norms of double and double-complex vectors without scaling.
//
// The squares are formed and summed on the x87 unit with a 64-bit mantissa
// and the extended exponent range, which holds the square of every finite
// double (and of denormals), so nothing overflows or underflows harmfully.
// The precision control is set for the call and the caller's control word is
// restored; the extended square root is rounded once to double.
//
// Order: blocks of 8 parts (real: 8 elements; complex: 4 elements, real part
// then imaginary part) go part j into partial sum j mod 4; the four sums
// combine as (f0 + f1) + (f2 + f3); the parts after the last block are
// added one by one. A negative increment walks |incx| from x's first element.
#include "zar/level1.h"

namespace {

// One part: push it, square it, add it into partial sum k (st(k) once the
// part is on top of the four sums) and pop.
#define ZAR_X87_SQ(addr, k) "fldl " addr "\n\tfmul %%st(0), %%st\n\tfaddp %%st, %%st(" #k ")\n\t"

// The whole loop: four zero sums, `blocks` runs of BLOCK (which advances p
// by 4 strides), the combination, `rest` runs of ONE (which takes one
// element and advances p), the square root, stored as extended.
#define ZAR_X87_SUMSQ(BLOCK, ONE)                                                             \
  asm volatile(                                                                               \
      "fldz\n\tfldz\n\tfldz\n\tfldz\n\t"                                                      \
      "testl %[b], %[b]\n\tjz 2f\n"                                                           \
      "1:\n\t" BLOCK                                                                          \
      "leal (%[p],%[s],4), %[p]\n\tdecl %[b]\n\tjnz 1b\n"                                     \
      "2:\n\t"                                                                                \
      "faddp %%st, %%st(1)\n\tfxch %%st(1)\n\tfaddp %%st, %%st(2)\n\tfaddp %%st, %%st(1)\n\t" \
      "testl %[r], %[r]\n\tjz 4f\n"                                                           \
      "3:\n\t" ONE                                                                            \
      "addl %[s], %[p]\n\tdecl %[r]\n\tjnz 3b\n"                                              \
      "4:\n\tfsqrt\n\tfstpt %[out]\n\t"                                                       \
      : [p] "+r"(p), [b] "+r"(blocks), [r] "+r"(rest), [out] "=m"(root)                       \
      : [s] "r"(stride), [s3] "r"(3u * stride)                                                 \
      : "memory", "cc", "st", "st(1)", "st(2)", "st(3)", "st(4)")

// Real parts at p + k * stride bytes: a block is 8 elements in two runs of 4.
#define ZAR_X87_REAL4 \
  ZAR_X87_SQ("(%[p])", 1) ZAR_X87_SQ("(%[p],%[s],1)", 2) ZAR_X87_SQ("(%[p],%[s],2)", 3) ZAR_X87_SQ("(%[p],%[s3],1)", 4)
long double sumsq_root_real(const double* p, int n, unsigned stride) {
  long double root;
  int blocks = n / 8, rest = n % 8;
  ZAR_X87_SUMSQ(ZAR_X87_REAL4 "leal (%[p],%[s],4), %[p]\n\t" ZAR_X87_REAL4, ZAR_X87_SQ("(%[p])", 1));
  return root;
}

// Complex elements (re at +0, im at +8) at p + k * stride bytes: a block is
// 4 elements.
long double sumsq_root_complex(const double* p, int n, unsigned stride) {
  long double root;
  int blocks = n / 4, rest = n % 4;
  ZAR_X87_SUMSQ(ZAR_X87_SQ("(%[p])", 1) ZAR_X87_SQ("8(%[p])", 2) ZAR_X87_SQ("(%[p],%[s],1)", 3)
                    ZAR_X87_SQ("8(%[p],%[s],1)", 4) ZAR_X87_SQ("(%[p],%[s],2)", 1) ZAR_X87_SQ("8(%[p],%[s],2)", 2)
                        ZAR_X87_SQ("(%[p],%[s3],1)", 3) ZAR_X87_SQ("8(%[p],%[s3],1)", 4),
                ZAR_X87_SQ("(%[p])", 1) ZAR_X87_SQ("8(%[p])", 1));
  return root;
}

template <class T>
double nrm2_x87(int n, const T* x, int incx) {
  if (n < 1) return 0;
  const int step = incx < 0 ? -incx : incx;
  unsigned short saved, extended;
  asm volatile("fnstcw %0" : "=m"(saved));
  extended = static_cast<unsigned short>(saved | 0x300);
  asm volatile("fldcw %0" : : "m"(extended));
  long double root;
  const double* r = reinterpret_cast<const double*>(x);
  if constexpr (zar::is_complex_v<T>) {
    root = step == 1 ? sumsq_root_real(r, 2 * n, 8) : sumsq_root_complex(r, n, 16u * step);
  } else {
    root = sumsq_root_real(r, n, 8u * step);
  }
  asm volatile("fldcw %0" : : "m"(saved));
  return static_cast<double>(root);
}

}  // namespace

#define ZAR_L1_DEF_NRM2_X87(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(NORM, name, T) { return nrm2_x87<T>(*n, x, *incx); }
ZAR_L1_LIST_NRM2_X87(ZAR_L1_DEF_NRM2_X87)
