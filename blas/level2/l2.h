// Shared pieces of the Level-2 kernels: element arithmetic written out for
// real and complex types, strided vector views, and the decoding of option
// characters into compile-time modes.
//
// Modes are characters so that the exported case names and the template
// arguments come from the same letters: uplo 'u'/'l', trans 'n'/'t'/'c',
// diag 'n'/'u'.
#pragma once
#include <cstddef>

#include "zar/cbwr.h"
#include "zar/export.h"
#include "zar/types.h"

namespace zar::l2 {

using std::ptrdiff_t;

// ---- arithmetic (complex products in the published order:
//      re = ar*br - ai*bi, im = ar*bi + ai*br)
template <class R> inline R mul(R a, R b) { return a * b; }
template <class R> inline cx<R> mul(cx<R> a, cx<R> b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
template <class R> inline R add(R a, R b) { return a + b; }
template <class R> inline cx<R> add(cx<R> a, cx<R> b) { return {a.re + b.re, a.im + b.im}; }
template <class R> inline R sub(R a, R b) { return a - b; }
template <class R> inline cx<R> sub(cx<R> a, cx<R> b) { return {a.re - b.re, a.im - b.im}; }
// acc + a*b, product rounded first (no contraction)
template <class T> inline T madd(T acc, T a, T b) { return add(acc, mul(a, b)); }

template <bool C, class R> inline R cj(R a) { return a; }
template <bool C, class R> inline cx<R> cj(cx<R> a) { return C ? cx<R>{a.re, -a.im} : a; }

template <class R> inline bool is_zero(R a) { return a == R(0); }
template <class R> inline bool is_zero(cx<R> a) { return a.re == R(0) && a.im == R(0); }
template <class R> inline bool is_one(R a) { return a == R(1); }
template <class R> inline bool is_one(cx<R> a) { return a.re == R(1) && a.im == R(0); }

template <class T> inline T zero() { return T{}; }
template <class T> inline T from_real(real_t<T> r) {
  if constexpr (is_complex_v<T>) return T{r, real_t<T>(0)};
  else return r;
}
// the real part as an element (Hermitian diagonals)
template <class T> inline T real_part(T a) {
  if constexpr (is_complex_v<T>) return T{a.re, real_t<T>(0)};
  else return a;
}
// real scalar times element
template <class R> inline R rmul(R r, R a) { return r * a; }
template <class R> inline cx<R> rmul(R r, cx<R> a) { return {r * a.re, r * a.im}; }

// a / b: a true division. Complex division scales by the larger part of b
// (Smith's method), which avoids overflow in |b|^2.
template <class R> inline R div(R a, R b) { return a / b; }
template <class R> inline cx<R> div(cx<R> a, cx<R> b) {
  if ((b.re < 0 ? -b.re : b.re) >= (b.im < 0 ? -b.im : b.im)) {
    const R r = b.im / b.re, d = b.re + b.im * r;
    return {(a.re + a.im * r) / d, (a.im - a.re * r) / d};
  }
  const R r = b.re / b.im, d = b.im + b.re * r;
  return {(a.re * r + a.im) / d, (a.im * r - a.re) / d};
}

// ---- strided vector: element i at p[i*inc], p already at element 0
template <class T> struct vec {
  T* p;
  ptrdiff_t inc;
  T& operator[](ptrdiff_t i) const { return *zar::offset(p, static_cast<long long>(i) * inc); }
};
// the vector of n elements passed as (x, inc) by the published rule
template <class T> inline vec<T> view(T* x, int n, int inc) { return {zar::offset(x, vec_start(n, inc)), inc}; }

// ---- option characters to modes
inline char uplo_mode(const char* c) { return opt_upper(c) == 'U' ? 'u' : 'l'; }
inline char diag_mode(const char* c) { return opt_upper(c) == 'N' ? 'n' : 'u'; }
// 'N' no transpose; 'C' conjugate transpose for complex data; anything else
// transposes.
template <class T> inline char trans_mode(const char* c) {
  const char t = opt_upper(c);
  if (t == 'N') return 'n';
  if (is_complex_v<T> && t == 'C') return 'c';
  return 't';
}

// Calls f.template operator()<M>() with the runtime mode m as a constant.
template <char A, char B, class F> inline decltype(auto) on2(char m, F&& f) {
  if (m == A) return f.template operator()<A>();
  return f.template operator()<B>();
}
template <class T, class F> inline decltype(auto) on_trans(char m, F&& f) {
  if constexpr (is_complex_v<T>) {
    if (m == 'c') return f.template operator()<'c'>();
  }
  if (m == 'n') return f.template operator()<'n'>();
  return f.template operator()<'t'>();
}
// uplo, trans, diag together: f.template operator()<U, TR, D>()
template <class T, class F>
inline void on_tri(const char* uplo, const char* trans, const char* diag, F&& f) {
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    on_trans<T>(trans_mode<T>(trans), [&]<char TR>() {
      on2<'n', 'u'>(diag_mode(diag), [&]<char D>() { f.template operator()<U, TR, D>(); });
    });
  });
}

}  // namespace zar::l2
