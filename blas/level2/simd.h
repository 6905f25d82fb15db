// AVX vectors of the real types for the Level-2 kernels: the Level-1 vector
// wrappers, and the pairwise lane reduction that fixes the order of the
// transposed products.
#pragma once
#include "blas/level1/simd.h"

namespace zar::l2 {

template <class R> using vx = zar::l1::vec<R>;

// Pairwise sum of n (a power of two) lanes: ((l0 + l1) + (l2 + l3)) + ...
template <class R> inline R lane_tree(const R* l, int n) {
  if (n == 1) return l[0];
  return lane_tree(l, n / 2) + lane_tree(l + n / 2, n / 2);
}
template <class R> inline R hsum(typename vx<R>::V v) {
  alignas(32) R l[vx<R>::L];
  vx<R>::store(l, v);
  return lane_tree(l, vx<R>::L);
}

}  // namespace zar::l2
