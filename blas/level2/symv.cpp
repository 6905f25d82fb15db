// Symmetric and Hermitian products (symv, hemv and their packed and banded
// forms spmv, hpmv, sbmv, hbmv) and the general band product gbmv.
//
// Each works on the stored triangle only, in the published column order:
// for column j, t1 = alpha*x_j; the off-diagonal rows receive y_i += t1*a_ij
// while s accumulates op(a_ij)*x_i; then y_j := (y_j + t1*a_jj) + alpha*s
// (upper: after the column; lower: the diagonal first, alpha*s after). The
// Hermitian forms read only the real part of the diagonal. Real data with
// contiguous x and y sum s in vector lanes from the first
// off-diagonal row, with unaligned loads. No order depends on alignment, so
// the reproducible twins agree with the plain kernels bit for bit.
#include "blas/level2/l2.h"
#include "zar/level2.h"
#include "blas/level2/simd.h"
#include "blas/level2/storage.h"

namespace zar::l2 {
namespace {

// y := beta*y (beta = 0 stores zeros), as the products require.
template <class T> void scale(int len, T beta, T* y, int incy) {
  if (is_one(beta)) return;
  const vec<T> v = view(y, len, incy);
  for (int i = 0; i < len; ++i) v[i] = is_zero(beta) ? zero<T>() : mul(beta, v[i]);
}

// Real data, contiguous x and y, rows [b, e) of one column:
// y_i := y_i + t*a_i, and the sum of a_i*x_i in vector lanes (lane k takes
// rows b + k + L*q) reduced pairwise, then the tail rows one by one.
template <class R> R axpy_dot(int b, int e, R t, const R* a, const R* x, R* y) {
  using S = vx<R>;
  constexpr int L = S::L;
  const auto vt = S::set1(t);
  auto c = S::zero();
  int i = b;
  for (; i + L <= e; i += L) {
    const auto av = S::load(a + i);
    S::store(y + i, S::add(S::load(y + i), S::mul(vt, av)));
    c = S::add(c, S::mul(av, S::load(x + i)));
  }
  R acc = 0;
  if (i > b) acc = acc + hsum<R>(c);
  for (; i < e; ++i) {
    y[i] = y[i] + t * a[i];
    acc = acc + a[i] * x[i];
  }
  return acc;
}

// y += alpha*A*x with A symmetric (Her: Hermitian) in storage s
template <class T, char U, bool Her, class St>
void symv_cols(const St& s, int n, T alpha, vec<const T> xv, vec<T> yv) {
  if constexpr (!is_complex_v<T>) {
    if (xv.inc == 1 && yv.inc == 1) {
      // the same column order with the off-diagonal rows in vectors
      for (int j = 0; j < n; ++j) {
        const T* aj = s.col(j);
        const T t1 = alpha * xv.p[j];
        if constexpr (U == 'l') yv.p[j] = yv.p[j] + t1 * aj[j];
        const T acc = axpy_dot(off_begin<U>(s, j), off_end<U>(s, j), t1, aj, xv.p, yv.p);
        if constexpr (U == 'u') yv.p[j] = (yv.p[j] + t1 * aj[j]) + alpha * acc;
        else yv.p[j] = yv.p[j] + alpha * acc;
      }
      return;
    }
  }
  for (int j = 0; j < n; ++j) {
    const T* aj = s.col(j);
    const T t1 = mul(alpha, xv[j]);
    T td;  // t1 times the diagonal (its real part for Hermitian data)
    if constexpr (Her) td = rmul(aj[j].re, t1);
    else td = mul(t1, aj[j]);
    T acc = zero<T>();
    if constexpr (U == 'l') yv[j] = add(yv[j], td);
    const int b = off_begin<U>(s, j), e = off_end<U>(s, j);
    for (int i = b; i < e; ++i) {
      yv[i] = add(yv[i], mul(t1, aj[i]));
      acc = add(acc, mul(cj<Her>(aj[i]), xv[i]));
    }
    if constexpr (U == 'u') yv[j] = add(add(yv[j], td), mul(alpha, acc));
    else yv[j] = add(yv[j], mul(alpha, acc));
  }
}

// the driver shared by every symmetric/Hermitian product: quick returns,
// y := beta*y, then the column loop on the storage that make(U) builds
template <class T, bool Her, class Make>
void symmetric_product(const char* uplo, int n, const T* alpha, const T* x, int incx, const T* beta, T* y,
                       int incy, Make make) {
  if (n <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  scale(n, *beta, y, incy);
  if (is_zero(*alpha)) return;
  const vec<const T> xv = view(x, n, incx);
  const vec<T> yv = view(y, n, incy);
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() { symv_cols<T, U, Her>(make.template operator()<U>(), n, *alpha, xv, yv); });
}

template <class T, bool Her> void symv(ZAR_L2_SYMV_ARGS(T)) {
  const int N = *n;
  symmetric_product<T, Her>(uplo, N, alpha, x, *incx, beta, y, *incy,
                            [&]<char U>() { return full_store<const T>{a, *lda, N}; });
}
template <class T> void symv_kernel(ZAR_L2_SYMVK_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on2<'u', 'l'>(uplo_mode(uplo), [&]<char U>() {
    symv_cols<T, U, false>(full_store<const T>{a, *lda, N}, N, *alpha, view(x, N, *incx), view(y, N, *incy));
  });
}
template <class T, bool Her> void spmv(ZAR_L2_SPMV_ARGS(T)) {
  const int N = *n;
  symmetric_product<T, Her>(uplo, N, alpha, x, *incx, beta, y, *incy,
                            [&]<char U>() { return packed_store<const T, U>{ap, N}; });
}
template <class T, bool Her> void sbmv(ZAR_L2_SBMV_ARGS(T)) {
  const int N = *n;
  symmetric_product<T, Her>(uplo, N, alpha, x, *incx, beta, y, *incy,
                            [&]<char U>() { return band_store<const T, U>{a, *lda, N, *k}; });
}

// ---- gbmv: y := alpha*op(A)*x + beta*y, A with kl sub- and ku
// super-diagonals, element (i, j) at a[ku + i - j + j*lda]
template <class T> void gbmv(ZAR_L2_GBMV_ARGS(T)) {
  const int M = *m, N = *n, KL = *kl, KU = *ku;
  if (M <= 0 || N <= 0 || (is_zero(*alpha) && is_one(*beta))) return;
  const char tr = trans_mode<T>(trans);
  const int xlen = tr == 'n' ? N : M, ylen = tr == 'n' ? M : N;
  scale(ylen, *beta, y, *incy);
  const T al = *alpha;
  if (is_zero(al)) return;
  const vec<const T> xv = view(x, xlen, *incx);
  const vec<T> yv = view(y, ylen, *incy);
  const ptrdiff_t ld = *lda;
  on_trans<T>(tr, [&]<char TR>() {
    for (int j = 0; j < N; ++j) {
      const T* aj = zar::offset(a, j * static_cast<long long>(ld) + KU - j);  // element (i, j) at aj[i]
      const int b = std::max(0, j - KU), e = std::min(M, j + KL + 1);
      if constexpr (TR == 'n') {
        const T t = mul(al, xv[j]);
        for (int i = b; i < e; ++i) yv[i] = add(yv[i], mul(t, aj[i]));
      } else {
        T s = zero<T>();
        for (int i = b; i < e; ++i) s = add(s, mul(cj<TR == 'c'>(aj[i]), xv[i]));
        yv[j] = add(yv[j], mul(al, s));
      }
    }
  });
}

}  // namespace
}  // namespace zar::l2

using namespace zar::l2;

#define ZAR_L2_SYMV_DEF(t, T, R)                                                                        \
  ZAR_EXPORT void ZAR_BLAS(x##t##symv)(ZAR_L2_SYMV_ARGS(T)) {                                           \
    symv<T, false>(uplo, n, alpha, a, lda, x, incx, beta, y, incy);                                     \
  }                                                                                                     \
  ZAR_EXPORT void ZAR_BLAS(x##t##symv_kernel)(ZAR_L2_SYMVK_ARGS(T)) {                                   \
    symv_kernel<T>(uplo, n, alpha, a, lda, x, incx, y, incy);                                           \
  }
ZAR_L2_REAL(ZAR_L2_SYMV_DEF)

#define ZAR_L2_HEMV_DEF(t, T, R)                                                                        \
  ZAR_EXPORT void ZAR_BLAS(t##hemv)(ZAR_L2_SYMV_ARGS(T)) {                                              \
    symv<T, true>(uplo, n, alpha, a, lda, x, incx, beta, y, incy);                                      \
  }
ZAR_L2_CPLX(ZAR_L2_HEMV_DEF)

// packed and banded products with their twins (the order is fixed already)
#define ZAR_L2_SPMV_DEF(name, T, H)                                                                              \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SPMV_ARGS(T)) { spmv<T, H>(uplo, n, alpha, ap, x, incx, beta, y, incy); } \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SPMV_ARGS(T)) { spmv<T, H>(uplo, n, alpha, ap, x, incx, beta, y, incy); }
#define ZAR_L2_SBMV_DEF(name, T, H)                                                                   \
  ZAR_EXPORT void ZAR_BLAS(name)(ZAR_L2_SBMV_ARGS(T)) {                                               \
    sbmv<T, H>(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);                                    \
  }                                                                                                   \
  ZAR_EXPORT void ZAR_BLAS(name##_cnr)(ZAR_L2_SBMV_ARGS(T)) {                                         \
    sbmv<T, H>(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);                                    \
  }
#define ZAR_L2_GBMV_DEF(t, T, R)                                                                      \
  ZAR_EXPORT void ZAR_BLAS(t##gbmv)(ZAR_L2_GBMV_ARGS(T)) {                                            \
    gbmv<T>(trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy);                              \
  }                                                                                                   \
  ZAR_EXPORT void ZAR_BLAS(t##gbmv_cnr)(ZAR_L2_GBMV_ARGS(T)) {                                        \
    gbmv<T>(trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy);                              \
  }
#define ZAR_L2_PB_REAL(t, T, R) ZAR_L2_SPMV_DEF(t##spmv, T, false) ZAR_L2_SBMV_DEF(t##sbmv, T, false)
#define ZAR_L2_PB_CPLX(t, T, R) ZAR_L2_SPMV_DEF(t##hpmv, T, true) ZAR_L2_SBMV_DEF(t##hbmv, T, true)
ZAR_L2_REAL(ZAR_L2_PB_REAL)
ZAR_L2_CPLX(ZAR_L2_PB_CPLX)
ZAR_L2_ALL(ZAR_L2_GBMV_DEF)
