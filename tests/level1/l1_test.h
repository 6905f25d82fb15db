// Shared helpers of the Level-1 tests: misaligned buffers, random data, bit
// comparison, and the plain references of the fixed reduction orders.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "zar/level1.h"
#include "cblas.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace l1t {

using zar::c32;
using zar::c64;

// n elements of T starting `offset` elements (and `bytes` more) past a
// 32-byte boundary.
template <class T>
class buffer {
 public:
  buffer(int n, int offset, int bytes = 0) : raw_((n + offset) * sizeof(T) + 64) {
    auto a = reinterpret_cast<std::uintptr_t>(raw_.data());
    data_ = reinterpret_cast<T*>((a + 31) / 32 * 32 + offset * sizeof(T) + bytes);
  }
  T* data() { return data_; }
  T& operator[](int i) { return data_[i]; }

 private:
  std::vector<unsigned char> raw_;
  T* data_;
};

template <class R>
inline R rnd(std::mt19937& g) {
  return std::uniform_real_distribution<R>(-1, 1)(g);
}
template <class T>
inline T random_elem(std::mt19937& g) {
  if constexpr (zar::is_complex_v<T>)
    return T{rnd<zar::real_t<T>>(g), rnd<zar::real_t<T>>(g)};
  else
    return rnd<T>(g);
}
template <class T>
inline void fill(T* p, int n, std::mt19937& g) {
  for (int i = 0; i < n; ++i) p[i] = random_elem<T>(g);
}

template <class T>
inline bool same_bits(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}
template <class T>
inline ::testing::AssertionResult bits_equal(const T* a, const T* b, int n) {
  for (int i = 0; i < n; ++i)
    if (!same_bits(a[i], b[i])) return ::testing::AssertionFailure() << "element " << i << " differs";
  return ::testing::AssertionSuccess();
}

// Plain complex arithmetic (one rounding per product and sum).
template <class R>
inline zar::cx<R> mul(zar::cx<R> a, zar::cx<R> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class R>
inline zar::cx<R> add(zar::cx<R> a, zar::cx<R> b) {
  return {a.re + b.re, a.im + b.im};
}
inline float mul(float a, float b) { return a * b; }
inline double mul(double a, double b) { return a * b; }
inline float add(float a, float b) { return a + b; }
inline double add(double a, double b) { return a + b; }

// The unit-stride reduction order: `peel` terms one by one into s; then full
// vectors of L terms, vector g into partial sum g mod 4; lanes combined as
// (a0 + a1) + (a2 + a3); horizontal sum (L = 2: v0 + v1; L = 4:
// (v0 + v2) + (v1 + v3); L = 8: ((v0 + v4) + (v2 + v6)) + ((v1 + v5) + (v3 + v7)));
// s + that; the remaining terms one by one. Complex terms are summed part
// by part with L complex lanes.
template <class Acc, class Term>
Acc unit_order(int n, int peel, int L, Term term) {
  if (peel > n) peel = n;
  Acc s{};
  int i = 0;
  for (; i < peel; ++i) s = add(s, term(i));
  const int nv = (n - peel) / L;
  if (nv > 0) {
    std::vector<Acc> a(4 * L, Acc{});
    for (int g = 0; g < nv; ++g)
      for (int l = 0; l < L; ++l) a[(g % 4) * L + l] = add(a[(g % 4) * L + l], term(peel + g * L + l));
    std::vector<Acc> v(L);
    for (int l = 0; l < L; ++l) v[l] = add(add(a[l], a[L + l]), add(a[2 * L + l], a[3 * L + l]));
    const Acc h = L == 2   ? add(v[0], v[1])
                  : L == 4 ? add(add(v[0], v[2]), add(v[1], v[3]))
                           : add(add(add(v[0], v[4]), add(v[2], v[6])), add(add(v[1], v[5]), add(v[3], v[7])));
    s = add(s, h);
    i = peel + nv * L;
  }
  for (; i < n; ++i) s = add(s, term(i));
  return s;
}

// The fast path's peel: elements until p is 32-byte aligned (0 when p is
// not element-aligned).
template <class T>
inline int fast_peel(const T* p) {
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  if (a % sizeof(T)) return 0;
  return static_cast<int>((32 - a % 32) % 32 / sizeof(T));
}

// Runs the body with the reproducibility branch set, then restores it.
struct cbwr_scope {
  int saved = zar_cbwr_get();
  explicit cbwr_scope(int branch) { zar_cbwr_set(branch); }
  ~cbwr_scope() { zar_cbwr_set(saved); }
};

}  // namespace l1t
