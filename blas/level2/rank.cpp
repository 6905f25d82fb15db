// Rank-one and rank-two updates: ger (geru, gerc), syr/her, syr2/her2 and
// their packed forms spr/hpr, spr2/hpr2.
//
// Every element is updated by the published formula, a := a + x_i*t (and
// + y_i*t2 for the rank-two forms), where t is formed once per column; the
// vector and scalar steps apply the same operations to each element, so the
// result depends neither on alignment nor on how the columns are split among
// threads. The reproducible twins and the per-thread bodies therefore agree
// bit for bit with the whole call.
#include "blas/level2/l2.h"
#include "zar/level2.h"
#include "blas/level2/simd.h"
#include "blas/level2/storage.h"

namespace zar::l2 {
namespace {

// a[i] += x[i]*t for i in [0, m), x contiguous
template <class R> inline void axpy_col(int m, R t, const R* x, R* a) {
  using S = vx<R>;
  constexpr int L = S::L;
  const auto vt = S::set1(t);
  int i = 0;
  for (; i + L <= m; i += L) S::store(a + i, S::add(S::load(a + i), S::mul(S::load(x + i), vt)));
  for (; i < m; ++i) a[i] = a[i] + x[i] * t;
}

// ---- ger: A += alpha*x*op(y)^T. Columns two at a time; a column whose y_j
// is exactly zero is left untouched (even where x holds NaN).
template <class T, bool Conj> void ger(ZAR_L2_GER_ARGS(T)) {
  const int M = *m, N = *n;
  if (M <= 0 || N <= 0) return;
  const T al = *alpha;
  if (is_zero(al)) return;
  const vec<const T> xv = view(x, M, *incx), yv = view(y, N, *incy);
  const ptrdiff_t ld = *lda;
  const bool unit = *incx == 1;
  auto column = [&](int j) {
    const T t = mul(al, cj<Conj>(yv[j]));
    T* aj = zar::offset(a, j * static_cast<long long>(ld));
    if constexpr (!is_complex_v<T>) {
      if (unit) return axpy_col(M, t, x, aj);
    }
    for (int i = 0; i < M; ++i) aj[i] = add(aj[i], mul(xv[i], t));
  };
  int j = 0;
  for (; j + 2 <= N; j += 2) {
    const bool z0 = is_zero(yv[j]), z1 = is_zero(yv[j + 1]);
    if (!z0 && !z1 && !unit) {
      const T t0 = mul(al, cj<Conj>(yv[j])), t1 = mul(al, cj<Conj>(yv[j + 1]));
      T *a0 = zar::offset(a, j * static_cast<long long>(ld)), *a1 = zar::offset(a0, ld);
      for (int i = 0; i < M; ++i) {
        const T xi = xv[i];
        a0[i] = add(a0[i], mul(xi, t0));
        a1[i] = add(a1[i], mul(xi, t1));
      }
      continue;
    }
    if (!z0) column(j);
    if (!z1) column(j + 1);
  }
  if (j < N && !is_zero(yv[j])) column(j);
}

// ---- syr / her: A += alpha*x*x^H on the stored triangle, columns [j0, j1)
template <class T, char U, bool Her, class St>
void syr_cols(const St& s, real_t<T> alpha, vec<const T> xv, int j0, int j1) {
  for (int j = j0; j < j1; ++j) {
    T* aj = s.col(j);
    const T xj = xv[j];
    if (is_zero(xj)) {
      if constexpr (Her) aj[j] = real_part(aj[j]);
      continue;
    }
    const T t = rmul(alpha, cj<Her>(xj));
    const int b = off_begin<U>(s, j), e = off_end<U>(s, j);
    for (int i = b; i < e; ++i) aj[i] = add(aj[i], mul(xv[i], t));
    if constexpr (Her) aj[j] = T{aj[j].re + mul(xj, t).re, real_t<T>(0)};
    else aj[j] = add(aj[j], mul(xj, t));
  }
}

// ---- syr2 / her2: A += alpha*x*y^H + conj(alpha)*y*x^H, columns [j0, j1)
template <class T, char U, bool Her, class St>
void syr2_cols(const St& s, T alpha, vec<const T> xv, vec<const T> yv, int j0, int j1) {
  for (int j = j0; j < j1; ++j) {
    T* aj = s.col(j);
    const T xj = xv[j], yj = yv[j];
    if (is_zero(xj) && is_zero(yj)) {
      if constexpr (Her) aj[j] = real_part(aj[j]);
      continue;
    }
    const T t1 = mul(alpha, cj<Her>(yj)), t2 = cj<Her>(mul(alpha, xj));
    const int b = off_begin<U>(s, j), e = off_end<U>(s, j);
    for (int i = b; i < e; ++i) aj[i] = add(add(aj[i], mul(xv[i], t1)), mul(yv[i], t2));
    if constexpr (Her) {
      const T d = add(mul(xj, t1), mul(yj, t2));
      aj[j] = T{aj[j].re + d.re, real_t<T>(0)};
    } else {
      aj[j] = add(add(aj[j], mul(xj, t1)), mul(yj, t2));
    }
  }
}

template <class T, bool Her, class S>
void syr_full(const char* uplo, const int* n, const S* alpha, const T* x, const int* incx, T* a,
              const int* lda, int j0, int j1) {
  const int N = *n;
  if (N <= 0 || *alpha == S(0)) return;
  const vec<const T> xv = view(x, N, *incx);
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    syr_cols<T, U, Her>(full_store<T>{a, *lda, N}, *alpha, xv, j0, j1);
  });
}
template <class T, bool Her>
void syr2_full(ZAR_L2_SYR2_ARGS(T), int j0, int j1) {
  const int N = *n;
  if (N <= 0 || is_zero(*alpha)) return;
  const vec<const T> xv = view(x, N, *incx), yv = view(y, N, *incy);
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    syr2_cols<T, U, Her>(full_store<T>{a, *lda, N}, *alpha, xv, yv, j0, j1);
  });
}
template <class T, bool Her, class S>
void spr(const char* uplo, const int* n, const S* alpha, const T* x, const int* incx, T* ap) {
  const int N = *n;
  if (N <= 0 || *alpha == S(0)) return;
  const vec<const T> xv = view(x, N, *incx);
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    syr_cols<T, U, Her>(packed_store<T, U>{ap, N}, *alpha, xv, 0, N);
  });
}
template <class T, bool Her> void spr2(ZAR_L2_SPR2_ARGS(T)) {
  const int N = *n;
  if (N <= 0 || is_zero(*alpha)) return;
  const vec<const T> xv = view(x, N, *incx), yv = view(y, N, *incy);
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    syr2_cols<T, U, Her>(packed_store<T, U>{ap, N}, *alpha, xv, yv, 0, N);
  });
}

}  // namespace
}  // namespace zar::l2

using namespace zar::l2;

#define ZAR_L2_GER_DEF(name, T, C) \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_GER_ARGS(T)) { ger<T, C>(m, n, alpha, x, incx, y, incy, a, lda); }
#define ZAR_L2_GER_REAL(t, T, R) ZAR_L2_GER_DEF(x##t##ger, T, false)
#define ZAR_L2_GER_CPLX(t, T, R) ZAR_L2_GER_DEF(x##t##geru, T, false) ZAR_L2_GER_DEF(x##t##gerc, T, true)
ZAR_L2_REAL(ZAR_L2_GER_REAL)
ZAR_L2_CPLX(ZAR_L2_GER_CPLX)

// syr/her and syr2/her2: the whole call, its twin and the per-thread bodies
// on columns [first, last) all run the same column loop.
#define ZAR_L2_SYR_DEF(name, T, R, H)                                                                  \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SYR_ARGS(T, R)) { syr_full<T, H>(uplo, n, alpha, x, incx, a, lda, 0, *n); } \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SYR_ARGS(T, R)) {                                        \
    syr_full<T, H>(uplo, n, alpha, x, incx, a, lda, 0, *n);                                            \
  }                                                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name##_in_thread)(ZAR_L2_SYR_ARGS(T, R), ZAR_L2_RANGE) {                    \
    syr_full<T, H>(uplo, n, alpha, x, incx, a, lda, *first, *last);                                    \
  }                                                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name##_in_thread_cnr)(ZAR_L2_SYR_ARGS(T, R), ZAR_L2_RANGE) {                \
    syr_full<T, H>(uplo, n, alpha, x, incx, a, lda, *first, *last);                                    \
  }
#define ZAR_L2_SYR2_DEF(name, T, H)                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SYR2_ARGS(T)) { syr2_full<T, H>(uplo, n, alpha, x, incx, y, incy, a, lda, 0, *n); } \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SYR2_ARGS(T)) {                                          \
    syr2_full<T, H>(uplo, n, alpha, x, incx, y, incy, a, lda, 0, *n);                                  \
  }                                                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name##_in_thread)(ZAR_L2_SYR2_ARGS(T), ZAR_L2_RANGE) {                      \
    syr2_full<T, H>(uplo, n, alpha, x, incx, y, incy, a, lda, *first, *last);                          \
  }                                                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name##_in_thread_cnr)(ZAR_L2_SYR2_ARGS(T), ZAR_L2_RANGE) {                  \
    syr2_full<T, H>(uplo, n, alpha, x, incx, y, incy, a, lda, *first, *last);                          \
  }
#define ZAR_L2_SPR_DEF(name, T, R, H)                                                                                    \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SPR_ARGS(T, R)) { spr<T, H>(uplo, n, alpha, x, incx, ap); }                   \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SPR_ARGS(T, R)) { spr<T, H>(uplo, n, alpha, x, incx, ap); }
#define ZAR_L2_SPR2_DEF(name, T, H)                                                                                      \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SPR2_ARGS(T)) { spr2<T, H>(uplo, n, alpha, x, incx, y, incy, ap); }           \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SPR2_ARGS(T)) { spr2<T, H>(uplo, n, alpha, x, incx, y, incy, ap); }

#define ZAR_L2_RANK_REAL(t, T, R) \
  ZAR_L2_SYR_DEF(x##t##syr, T, R, false) ZAR_L2_SYR2_DEF(x##t##syr2, T, false) \
  ZAR_L2_SPR_DEF(t##spr, T, R, false) ZAR_L2_SPR2_DEF(t##spr2, T, false)
#define ZAR_L2_RANK_CPLX(t, T, R) \
  ZAR_L2_SYR_DEF(t##her, T, R, true) ZAR_L2_SYR2_DEF(t##her2, T, true) \
  ZAR_L2_SPR_DEF(t##hpr, T, R, true) ZAR_L2_SPR2_DEF(t##hpr2, T, true)
ZAR_L2_REAL(ZAR_L2_RANK_REAL)
ZAR_L2_CPLX(ZAR_L2_RANK_CPLX)
