// Storage schemes of the symmetric, Hermitian and triangular kernels as
// column accessors: col(j) returns a pointer p with element (i, j) at p[i]
// for every row i of the stored part of column j, and lo(j)/hi(j) bound those
// rows (inclusive). One template per operation then serves the full, packed
// and banded forms.
#pragma once
#include <algorithm>

#include "blas/level2/l2.h"

namespace zar::l2 {

// full column-major storage (the stored triangle of it)
template <class T> struct full_store {
  T* a;
  ptrdiff_t lda;
  int n;
  T* col(int j) const { return zar::offset(a, j * static_cast<long long>(lda)); }
  int lo(int) const { return 0; }
  int hi(int) const { return n - 1; }
};

// packed triangle, column by column: upper column j holds rows 0..j,
// lower column j rows j..n-1
template <class T, char U> struct packed_store {
  T* ap;
  int n;
  T* col(int j) const {
    const ptrdiff_t jj = j;
    if constexpr (U == 'u') return zar::offset(ap, static_cast<long long>(jj) * (jj + 1) / 2);
    else return zar::offset(ap, static_cast<long long>(jj) * n - static_cast<long long>(jj) * (jj - 1) / 2 - jj);
  }
  int lo(int) const { return 0; }
  int hi(int) const { return n - 1; }
};

// band storage with k off-diagonals: upper column j holds rows j-k..j at
// a[k + i - j + j*lda], lower column j rows j..j+k at a[i - j + j*lda]
template <class T, char U> struct band_store {
  T* a;
  ptrdiff_t lda;
  int n, k;
  T* col(int j) const {
    if constexpr (U == 'u') return zar::offset(a, j * static_cast<long long>(lda) + k - j);
    else return zar::offset(a, j * static_cast<long long>(lda) - j);
  }
  int lo(int j) const { return std::max(0, j - k); }
  int hi(int j) const { return std::min(n - 1, j + k); }
};

// the rows of column j inside the stored triangle, diagonal excluded:
// upper [lo(j), j), lower (j, hi(j)]
template <char U, class S> inline int off_begin(const S& s, int j) { return U == 'u' ? s.lo(j) : j + 1; }
template <char U, class S> inline int off_end(const S& s, int j) { return U == 'u' ? j : s.hi(j) + 1; }

}  // namespace zar::l2
