// Level-1 building blocks: AVX vectors of the real types, the walkers that
// every vector kernel shares (unit-stride streaming with a peel to a 32-byte
// boundary, strided walks with the negative-increment rule) and the
// unit-stride reduction engine whose partial-sum layout fixes the rounding of
// dot, asum and the single-precision norms.
#pragma once
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "zar/avx.h"
#include "zar/cbwr.h"
#include "zar/types.h"

namespace zar::l1 {

// AVX vectors of one real type.
template <class R>
using vec = zar::avx<R>;

// Elements of T per 32-byte vector.
template <class T>
inline constexpr int per_vec = static_cast<int>(32 / sizeof(T));

// ---- memory access of the vector bodies. In cache, whole 32-byte accesses
// are fastest; streaming from memory, two 16-byte halves per vector move more
// bytes per second on the processors this library targets. Both give the
// same register contents, so the choice never changes a result.
struct wide_access {
  template <class R>
  static auto load(const R* p) {
    return vec<R>::load(p);
  }
  template <class R, class V>
  static void store(R* p, V v) {
    vec<R>::store(p, v);
  }
};
struct narrow_access {
  static __m256d load(const double* p) {
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(p)), _mm_loadu_pd(p + 2), 1);
  }
  static __m256 load(const float* p) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)), _mm_loadu_ps(p + 4), 1);
  }
  static void store(double* p, __m256d v) {
    _mm_storeu_pd(p, _mm256_castpd256_pd128(v));
    _mm_storeu_pd(p + 2, _mm256_extractf128_pd(v, 1));
  }
  static void store(float* p, __m256 v) {
    _mm_storeu_ps(p, _mm256_castps256_ps128(v));
    _mm_storeu_ps(p + 4, _mm256_extractf128_ps(v, 1));
  }
};

// 16-byte vectors, for reductions streaming from memory: their partial sums
// are kept as pairs of halves, lane for lane the same sums as the 32-byte
// ones.
template <class R>
struct half;
template <>
struct half<double> {
  using V = __m128d;
  static V load(const double* p) { return _mm_loadu_pd(p); }
  static V zero() { return _mm_setzero_pd(); }
  static V add(V a, V b) { return _mm_add_pd(a, b); }
  static V mul(V a, V b) { return _mm_mul_pd(a, b); }
  static V abs(V a) { return _mm_andnot_pd(_mm_set1_pd(-0.0), a); }
  static __m256d join(V lo, V hi) { return _mm256_insertf128_pd(_mm256_castpd128_pd256(lo), hi, 1); }
};
template <>
struct half<float> {
  using V = __m128;
  static V load(const float* p) { return _mm_loadu_ps(p); }
  static V zero() { return _mm_setzero_ps(); }
  static V add(V a, V b) { return _mm_add_ps(a, b); }
  static V mul(V a, V b) { return _mm_mul_ps(a, b); }
  static V abs(V a) { return _mm_andnot_ps(_mm_set1_ps(-0.0f), a); }
  static __m256 join(V lo, V hi) { return _mm256_insertf128_ps(_mm256_castps128_ps256(lo), hi, 1); }
};

// Whether a call moving `bytes` streams from memory: more than the last-level
// cache holds (as the core answers; never when nothing is known).
inline bool streams_from_memory(double bytes) {
  if (bytes < (1 << 20)) return false;
  long long record[ZAR_CACHE_RECORD_ENTRIES];
  zar_serv_cache_info(record);
  return record[0] != 0 && bytes > static_cast<double>(record[3]);
}

// ---- complex arithmetic written out (one rounding per product and per sum)
template <class R>
inline cx<R> cmul(cx<R> a, cx<R> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
// conj(a) * b
template <class R>
inline cx<R> cmulc(cx<R> a, cx<R> b) {
  return {a.re * b.re + a.im * b.im, a.re * b.im - a.im * b.re};
}
template <class R>
inline cx<R> cadd(cx<R> a, cx<R> b) {
  return {a.re + b.re, a.im + b.im};
}

// Scalar arithmetic over real and complex elements alike.
inline float mul(float a, float b) { return a * b; }
inline double mul(double a, double b) { return a * b; }
template <class R>
inline cx<R> mul(cx<R> a, cx<R> b) {
  return cmul(a, b);
}
inline float add(float a, float b) { return a + b; }
inline double add(double a, double b) { return a + b; }
template <class R>
inline cx<R> add(cx<R> a, cx<R> b) {
  return cadd(a, b);
}
template <class T>
inline T zero_of() {
  return T{};
}
template <class T>
inline bool is_zero(const T& a) {
  if constexpr (is_complex_v<T>)
    return a.re == 0 && a.im == 0;
  else
    return a == 0;
}
template <class R>
inline const R* reals(const cx<R>* p) {
  return reinterpret_cast<const R*>(p);
}
template <class R>
inline R* reals(cx<R>* p) {
  return reinterpret_cast<R*>(p);
}

// ---- variants named in the kernel lists of level1.h
// fast: the reproducibility switch chooses the peel of a reduction; cnr: the
// alignment-independent twin (never peels).
struct fast {
  template <class T>
  static int peel(const T* x) {
    if (!fast_path_allowed()) return 0;
    const int p = peel_to_32(x);
    return p < 0 ? 0 : p;
  }
};
struct cnr {
  template <class T>
  static int peel(const T*) {
    return 0;
  }
};
struct conj {};   // complex products with x conjugated
struct plain {};  // the one form of a kernel

// A unit-stride body for the walkers below: one(i) for a single element,
// vec(i, access) for a vector's worth.
template <class One, class Vec>
struct body {
  One one;
  Vec vec;
};
template <class One, class Vec>
body(One, Vec) -> body<One, Vec>;
// The same with half(i, h): the terms of half a vector from i on the 16-byte
// vectors h (see half), for reductions that stream from memory.
template <class One, class Vec, class Half>
struct body_halves {
  One one;
  Vec vec;
  Half half;
};
template <class One, class Vec, class Half>
body_halves(One, Vec, Half) -> body_halves<One, Vec, Half>;

// ---- walkers

// A strided vector: element k at p[start + k * inc], with the
// negative-increment rule for the start.
template <class T>
struct strided {
  T* p;
  std::ptrdiff_t inc;
  strided(T* base, int n, int incx) : p(zar::offset(base, vec_start(n, incx))), inc(incx) {}
  T& operator[](int k) const { return *zar::offset(p, static_cast<long long>(k) * inc); }
};

// Unit-stride streaming update of n elements. Op::one(i) updates element i,
// Op::vec(i, access) the per_vec<T> elements from i through the access
// policy. When n covers the peel plus one block, single elements are taken
// until the written vector w reaches a 32-byte boundary (none when it cannot,
// as for complex data 8 bytes off a 16-byte boundary), then blocks of four
// vectors, then single vectors, then single elements. Element-wise updates
// give the same bits on every path. `vectors` is the number of vectors the
// call reads or writes (for the choice of access).
template <class T, class Op, class Access>
inline void stream_unit_with(int n, const T* w, Op op, Access m) {
  constexpr int E = per_vec<T>;
  const int peel = std::max(peel_to_32(w), 0);
  int i = 0;
  if (n >= peel + 4 * E) {
    for (; i < peel; ++i) op.one(i);
    for (; i + 4 * E <= n; i += 4 * E) {
      op.vec(i, m);
      op.vec(i + E, m);
      op.vec(i + 2 * E, m);
      op.vec(i + 3 * E, m);
    }
    for (; i + E <= n; i += E) op.vec(i, m);
  }
  for (; i < n; ++i) op.one(i);
}
template <class T, class Op>
inline void stream_unit(int n, const T* w, int vectors, Op op) {
  if (streams_from_memory(double(n) * sizeof(T) * vectors)) return stream_unit_with(n, w, op, narrow_access{});
  stream_unit_with(n, w, op, wide_access{});
}

// s + the four vector partial sums, combined lane-wise as (a0 + a1) +
// (a2 + a3) and then horizontally (hsum, or hsum_pairs for complex lanes).
template <class Acc, class V>
inline Acc fold_partials(Acc s, V a0, V a1, V a2, V a3) {
  using W = vec<real_t<Acc>>;
  const V v = W::add(W::add(a0, a1), W::add(a2, a3));
  if constexpr (is_complex_v<Acc>)
    return add(s, W::hsum_pairs(v));
  else
    return s + W::hsum(v);
}

// Unit-stride reduction of n elements into Acc (real, or complex summed part
// by part). The first `peel` elements (the fast path's steps to a 32-byte
// boundary; 0 for the `_cnr` twins) are added one by one to s. The following
// full vectors (L elements: 32 bytes of Acc) go into four vector partial
// sums, vector g into partial sum g mod 4; these combine lane-wise as
// (a0 + a1) + (a2 + a3), then horizontally (vec::hsum, or vec::hsum_pairs
// for complex lanes), and the total is s + that sum. The remaining elements
// are added one by one. Op::one(i) gives element i's term as Acc,
// Op::vec(i, access) the terms of the L elements from i as a vector, read
// through the access policy.
template <class Acc, class Op, class Access>
inline Acc reduce_unit_with(int n, int peel, Op op, Access m) {
  using W = vec<real_t<Acc>>;
  constexpr int L = per_vec<Acc>;
  if (peel > n) peel = n;
  Acc s = zero_of<Acc>();
  int i = 0;
  for (; i < peel; ++i) s = add(s, op.one(i));
  const int nv = (n - peel) / L;
  if (nv > 0) {
    typename W::V a0 = W::zero(), a1 = W::zero(), a2 = W::zero(), a3 = W::zero();
    int g = 0;
    for (; g + 8 <= nv; g += 8, i += 8 * L) {
      a0 = W::add(a0, op.vec(i, m));
      a1 = W::add(a1, op.vec(i + L, m));
      a2 = W::add(a2, op.vec(i + 2 * L, m));
      a3 = W::add(a3, op.vec(i + 3 * L, m));
      a0 = W::add(a0, op.vec(i + 4 * L, m));
      a1 = W::add(a1, op.vec(i + 5 * L, m));
      a2 = W::add(a2, op.vec(i + 6 * L, m));
      a3 = W::add(a3, op.vec(i + 7 * L, m));
    }
    if (g + 4 <= nv) {
      a0 = W::add(a0, op.vec(i, m));
      a1 = W::add(a1, op.vec(i + L, m));
      a2 = W::add(a2, op.vec(i + 2 * L, m));
      a3 = W::add(a3, op.vec(i + 3 * L, m));
      g += 4, i += 4 * L;
    }
    if (g < nv) a0 = W::add(a0, op.vec(i, m)), ++g, i += L;
    if (g < nv) a1 = W::add(a1, op.vec(i, m)), ++g, i += L;
    if (g < nv) a2 = W::add(a2, op.vec(i, m)), ++g, i += L;
    s = fold_partials<Acc>(s, a0, a1, a2, a3);
  }
  for (; i < n; ++i) s = add(s, op.one(i));
  return s;
}
// The engine with every partial sum kept as two 16-byte halves: vector g's
// low half goes into the low half of partial sum g mod 4, its high half into
// the high half, so every lane receives the same additions in the same order
// as above and the result has the same bits.
template <class Acc, class Op>
inline Acc reduce_unit_halves(int n, int peel, Op op) {
  using W = vec<real_t<Acc>>;
  using H = half<real_t<Acc>>;
  constexpr int L = per_vec<Acc>, HL = L / 2;
  if (peel > n) peel = n;
  Acc s = zero_of<Acc>();
  int i = 0;
  for (; i < peel; ++i) s = add(s, op.one(i));
  const int nv = (n - peel) / L;
  if (nv > 0) {
    typename H::V lo[4] = {H::zero(), H::zero(), H::zero(), H::zero()};
    typename H::V hi[4] = {H::zero(), H::zero(), H::zero(), H::zero()};
    int g = 0;
    for (; g + 4 <= nv; g += 4, i += 4 * L)
      for (int k = 0; k < 4; ++k) {
        lo[k] = H::add(lo[k], op.half(i + k * L, H{}));
        hi[k] = H::add(hi[k], op.half(i + k * L + HL, H{}));
      }
    for (int k = 0; g < nv; ++g, ++k, i += L) {
      lo[k] = H::add(lo[k], op.half(i, H{}));
      hi[k] = H::add(hi[k], op.half(i + HL, H{}));
    }
    typename W::V a[4];
    for (int k = 0; k < 4; ++k) a[k] = H::join(lo[k], hi[k]);
    s = fold_partials<Acc>(s, a[0], a[1], a[2], a[3]);
  }
  for (; i < n; ++i) s = add(s, op.one(i));
  return s;
}

// `bytes` is what the call reads: from memory the accesses are narrow, and
// bodies that offer half(i, h) run on 16-byte vectors throughout.
template <class Acc, class Op>
inline Acc reduce_unit(int n, int peel, double bytes, Op op) {
  if (streams_from_memory(bytes)) {
    if constexpr (requires { op.half; })
      return reduce_unit_halves<Acc>(n, peel, op);
    else
      return reduce_unit_with<Acc>(n, peel, op, narrow_access{});
  }
  return reduce_unit_with<Acc>(n, peel, op, wide_access{});
}

}  // namespace zar::l1
