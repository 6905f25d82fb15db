// Products that update one triangle of C (syrk, herk, syr2k, her2k, gemmt)
// described over the GEMM engine, and the work areas of the Level-3 drivers.
//
// C's referenced triangle := sum of up to two terms alpha_t op(A_t) op(B_t)
// + beta C. The columns [first, last) of the triangle split into
//   - the rectangle beside the diagonal block (rows above it for 'U', below
//     it for 'L'): one engine product per term,
//   - the diagonal block [first, last), halved recursively into two smaller
//     diagonal blocks and the rectangle between them, down to diagonal tiles
//     of at most tile_max columns.
// A rectangle is an ordinary engine call on C in place (beta with the first
// term, 1 with the second). A diagonal tile is computed whole in a work tile
// that holds a copy of C's triangle (zeros elsewhere), with the same engine
// calls, and only the triangle is copied back, so C's other triangle is
// never written. The engine forms every element the same way whatever the
// shape of the call (beta first, then each depth block's sum added), so the
// result does not depend on the split, on [first, last) or on the tile size.
#pragma once
#include <cstdint>
#include <cstring>

#include "blas/level3/l3.h"
#include "zar/services.h"

namespace zar::l3 {

// Imaginary part := 0 (Hermitian diagonals); nothing for real types.
template <class T> inline void real_part_only(T* x) {
  if constexpr (is_complex_v<T>) x->im = 0;
}

// One term alpha op(A) op(B): transa and transb are 'N', 'T' or 'C'.
template <class T> struct term {
  char ta, tb;
  T alpha;
  const T* a;
  int lda;
  const T* b;
  int ldb;
  // Row r of op(A) and column j of op(B).
  const T* a_row(int r) const { return ta == 'N' ? at(a, r, 0, lda) : at(a, 0, r, lda); }
  const T* b_col(int j) const { return tb == 'N' ? at(b, 0, j, ldb) : at(b, j, 0, ldb); }
};

template <class T> class triangle_update {
 public:
  static constexpr int tile_max = 64;

  // herm: the diagonal's imaginary parts are set to 0 (herk, her2k).
  triangle_update(char uplo, int n, int k, const term<T>* terms, int nterms, T beta, bool herm, T* c, int ldc)
      : upper_(uplo == 'U'), n_(n), k_(k), terms_(terms), nterms_(nterms), beta_(beta), herm_(herm), c_(c),
        ldc_(ldc) {}

  // The columns [first, last) of the triangle.
  void columns(int first, int last) {
    first = imax(first, 0), last = imin(last, n_);
    if (first >= last) return;
    bool any_product = false;
    for (int t = 0; t < nterms_; ++t) any_product = any_product || !is_zero(terms_[t].alpha);
    if (k_ < 1 || !any_product) {
      scale_only(first, last);
      return;
    }
    const long long side = imin(tile_max, last - first);
    work<T> area(side * side);
    tile_ = area.get();
    if (upper_) rect(0, first, first, last - first);
    else rect(last, first, n_ - last, last - first);
    diagonal_block(first, last);
    tile_ = nullptr;
  }

 private:
  T* cat(int i, int j) const { return at(c_, i, j, ldc_); }

  // C(r0 .. r0+rows, c0 .. c0+cols), a rectangle inside the triangle.
  void rect(int r0, int c0, int rows, int cols) { product(rows, cols, r0, c0, cat(r0, c0), ldc_); }

  // Every term over rows r0.. of op(A) and columns c0.. of op(B) into X.
  void product(int rows, int cols, int r0, int c0, T* x, int ldx) const {
    if (rows < 1 || cols < 1) return;
    for (int t = 0; t < nterms_; ++t) {
      const term<T>& p = terms_[t];
      gemm(&p.ta, &p.tb, rows, cols, k_, p.alpha, p.a_row(r0), p.lda, p.b_col(c0), p.ldb,
           t == 0 ? beta_ : one<T>(), x, ldx);
    }
  }

  void diagonal_block(int f, int l) {
    if (l - f <= tile_max) {
      tile(f, l - f);
      return;
    }
    const int mid = f + round_up_half(l - f);
    diagonal_block(f, mid);
    if (upper_) rect(f, mid, mid - f, l - mid);
    else rect(mid, f, l - mid, mid - f);
    diagonal_block(mid, l);
  }
  // Half of a block, a multiple of 16 when the block is large enough.
  static int round_up_half(int s) { return s >= 64 ? gemm::round_up(s / 2, 16) : s / 2; }

  // Rows of column jj of an s-column diagonal tile that lie in the triangle.
  int lo(int jj, int s) const { return upper_ ? 0 : jj; }
  int hi(int jj, int s) const { return upper_ ? jj + 1 : s; }

  void tile(int j0, int s) {
    if (!tile_) {
      // No work tile: one engine product per column, the same elements.
      for (int jj = 0; jj < s; ++jj) {
        const int i0 = lo(jj, s);
        rect(j0 + i0, j0 + jj, hi(jj, s) - i0, 1);
        if (herm_) real_part_only(cat(j0 + jj, j0 + jj));
      }
      return;
    }
    std::memset(static_cast<void*>(tile_), 0, sizeof(T) * static_cast<std::size_t>(s) * s);
    for (int jj = 0; jj < s; ++jj)
      for (int ii = lo(jj, s); ii < hi(jj, s); ++ii) tile_[ii + jj * s] = *cat(j0 + ii, j0 + jj);
    product(s, s, j0, j0, tile_, s);
    for (int jj = 0; jj < s; ++jj) {
      T* cj = cat(j0, j0 + jj);
      for (int ii = lo(jj, s); ii < hi(jj, s); ++ii) cj[ii] = tile_[ii + jj * s];
      if (herm_) real_part_only(cj + jj);
    }
  }

  // No product: the triangle's columns scaled by beta (1 leaves them).
  void scale_only(int first, int last) {
    for (int j = first; j < last; ++j) {
      if (is_one(beta_)) {
      } else if (upper_) scale(j + 1, 1, beta_, cat(0, j), ldc_);
      else scale(n_ - j, 1, beta_, cat(j, j), ldc_);
      if (herm_) real_part_only(cat(j, j));
    }
  }

  bool upper_;
  int n_, k_;
  const term<T>* terms_;
  int nterms_;
  T beta_;
  bool herm_;
  T* c_;
  int ldc_;
  T* tile_ = nullptr;
};

}  // namespace zar::l3
