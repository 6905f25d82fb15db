// ?symm and ?hemm on the GEMM engine:
//   side 'L': C := alpha A B + beta C, A symmetric (Hermitian) of order m,
//   side 'R': C := alpha B A + beta C, A of order n,
// only A's uplo triangle referenced; hemm takes the imaginary parts of A's
// diagonal as zero.
//
// The full matrix A is never formed. beta is applied to C once, then the
// depth (the order of A) goes in the engine's depth blocks, in increasing
// order; for block [p0, p1) the product with A's block column (side 'L') or
// block row (side 'R') is three engine calls:
//   - the part stored in the referenced triangle, read as it is ('N'),
//   - the part mirrored from the other triangle, read transposed from the
//     stored one ('T'; hemm: 'C'),
//   - the diagonal block, densified into a work block (mirrored, hemm:
//     conjugated with a real diagonal).
// Each call is one depth block summed from zero and added into C, so C gets
// exactly the bits the engine gives for alpha A_full B (or alpha B A_full);
// a column of C (side 'L') or a row (side 'R') does not depend on the others,
// so the core may split C among threads. Without a work block the same sums
// are formed element by element.
#include "blas/level3/triangle.h"

namespace zar::l3 {
namespace {

template <class T, bool Herm> struct symmetric {
  const T* a;
  int lda;
  bool upper;
  // A_full(i, j).
  T operator()(int i, int j) const {
    if (i == j) {
      T d = *at(a, i, i, lda);
      if constexpr (Herm) real_part_only(&d);
      return d;
    }
    if ((i < j) == upper) return *at(a, i, j, lda);
    const T m = *at(a, j, i, lda);
    return Herm ? gemm::conj(m) : m;
  }
};

template <class T, bool Herm> void symm(ZAR_L3_SYMM_ARGS(T)) {
  const int mm = *m, nn = *n;
  if (mm < 1 || nn < 1) return;
  if (!is_one(*beta)) scale(mm, nn, *beta, c, *ldc);
  const T al = *alpha;
  if (is_zero(al)) return;
  const bool left = opt_upper(side) == 'L', upper = opt_upper(uplo) == 'U';
  const symmetric<T, Herm> full{a, *lda, upper};
  const int order = left ? mm : nn, kb = gemm::depth_block<T>(order);
  const int la = *lda, lb = *ldb, lc = *ldc;
  const char mirror[2] = {Herm ? 'C' : 'T', 0};
  const T one_ = one<T>();

  const long long edge = imin(kb, order);
  work<T> block(edge * edge);
  T* d = block.get();
  if (!d) {
    // Element by element in the engine's order: alpha folded into the left
    // factor, each depth block summed from zero and added into C.
    for (int j = 0; j < nn; ++j) {
      T* cj = at(c, 0, j, lc);
      for (int i = 0; i < mm; ++i)
        for (int p0 = 0; p0 < order; p0 += kb) {
          gemm::dot_acc<T> s;
          for (int p = p0; p < imin(p0 + kb, order); ++p) {
            if (left) s.add(gemm::mul(al, full(i, p)), *at(b, p, j, lb));
            else s.add(gemm::mul(al, *at(b, i, p, lb)), full(p, j));
          }
          cj[i] = gemm::add(cj[i], s.value());
        }
    }
    return;
  }

  for (int p0 = 0; p0 < order; p0 += kb) {
    const int w = imin(kb, order - p0), p1 = p0 + w, rest = order - p1;
    for (int j = 0; j < w; ++j)
      for (int i = 0; i < w; ++i) d[i + j * w] = full(p0 + i, p0 + j);
    // Stored / mirrored parts before and after the diagonal block: where
    // they start in A and how they are read.
    const T* before = upper ? at(a, 0, p0, la) : at(a, p0, 0, la);
    const T* after = upper ? at(a, p0, p1, la) : at(a, p1, p0, la);
    if (left) {
      // C(rows, :) += alpha A_full(rows, p0:p1) B(p0:p1, :)
      const T* bp = at(b, p0, 0, lb);
      gemm(upper ? "N" : mirror, "N", p0, nn, w, al, before, la, bp, lb, one_, c, lc);
      gemm("N", "N", w, nn, w, al, d, w, bp, lb, one_, at(c, p0, 0, lc), lc);
      gemm(upper ? mirror : "N", "N", rest, nn, w, al, after, la, bp, lb, one_, at(c, p1, 0, lc), lc);
    } else {
      // C(:, cols) += alpha B(:, p0:p1) A_full(p0:p1, cols)
      const T* bp = at(b, 0, p0, lb);
      gemm("N", upper ? mirror : "N", mm, p0, w, al, bp, lb, before, la, one_, c, lc);
      gemm("N", "N", mm, w, w, al, bp, lb, d, w, one_, at(c, 0, p0, lc), lc);
      gemm("N", upper ? "N" : mirror, mm, rest, w, al, bp, lb, after, la, one_, at(c, 0, p1, lc), lc);
    }
  }
}

}  // namespace
}  // namespace zar::l3

#define ZAR_L3_SYMM_DEF(t, T, R)                                                                            \
  ZAR_EXPORT void ZAR_BLAS(x##t##symm)(ZAR_L3_SYMM_ARGS(T)) {                                               \
    zar::l3::symm<T, false>(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                         \
  }
#define ZAR_L3_HEMM_DEF(t, T, R)                                                                            \
  ZAR_EXPORT void ZAR_BLAS(x##t##hemm)(ZAR_L3_SYMM_ARGS(T)) {                                               \
    zar::l3::symm<T, true>(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                          \
  }
ZAR_L3_ALL(ZAR_L3_SYMM_DEF)
ZAR_L3_CPLX(ZAR_L3_HEMM_DEF)
