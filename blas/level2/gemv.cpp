// General matrix-vector products: gemv (all types, with the reproducible
// twin), the fused two-product gem2v, and the real-matrix complex-vector
// products dzgemv/scgemv with their copy helpers.
//
// Order of operations, the same on every path of one kernel:
//   no transpose: columns in groups of four, t_j = alpha*x_j, and
//     y_i := y_i + ((a_i,j*t_j + a_i,j+1*t_j+1) + (a_i,j+2*t_j+2 + a_i,j+3*t_j+3)),
//     the last 0-3 columns one at a time (y_i := y_i + a_ij*t_j). Each y_i sees
//     the same operations whether it falls in a vector or a scalar step, so
//     the result does not depend on alignment or on a split of the rows.
//   transpose, real data, unit x: per column, rows before the peel point p
//     summed one by one into s, then vector lanes (lane k takes rows
//     p + k + L*q), reduced pairwise and added to s, then the tail rows one by
//     one; y_j := y_j + alpha*s. The fast path takes p from the alignment of
//     x (32-byte loads of x); the reproducible twin takes p = 0.
//   transpose otherwise: s summed row by row, y_j := y_j + alpha*s.
#include "blas/level2/l2.h"
#include "zar/level2.h"
#include "blas/level2/simd.h"
#include "zar/services.h"

namespace zar::l2 {
namespace {

// y := beta*y over len elements. beta = 0 stores zeros; with incy = 0 the one
// element is multiplied by beta once per element of y's length, sixteen
// factors at a time (beta^16) and then one at a time.
template <class T> void scale_y(int len, T beta, T* y, int incy) {
  if (is_one(beta)) return;
  if (incy == 0) {
    if (is_zero(beta)) {
      *y = zero<T>();
      return;
    }
    T b16 = beta;
    for (int k = 1; k < 16; ++k) b16 = mul(b16, beta);
    int i = 0;
    for (; i + 16 <= len; i += 16) *y = mul(*y, b16);
    for (; i < len; ++i) *y = mul(*y, beta);
    return;
  }
  const vec<T> v = view(y, len, incy);
  if (is_zero(beta))
    for (int i = 0; i < len; ++i) v[i] = zero<T>();
  else
    for (int i = 0; i < len; ++i) v[i] = mul(beta, v[i]);
}

// ---- no transpose: y += alpha*A*x
template <class T>
void gemv_n_generic(int m, int n, T alpha, const T* a, ptrdiff_t lda, vec<const T> x, vec<T> y) {
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    const T t0 = mul(alpha, x[j]), t1 = mul(alpha, x[j + 1]), t2 = mul(alpha, x[j + 2]), t3 = mul(alpha, x[j + 3]);
    const T *a0 = zar::offset(a, j * static_cast<long long>(lda)), *a1 = zar::offset(a0, lda), *a2 = zar::offset(a1, lda), *a3 = zar::offset(a2, lda);
    for (int i = 0; i < m; ++i)
      y[i] = add(y[i], add(add(mul(a0[i], t0), mul(a1[i], t1)), add(mul(a2[i], t2), mul(a3[i], t3))));
  }
  for (; j < n; ++j) {
    const T t = mul(alpha, x[j]);
    const T* aj = zar::offset(a, j * static_cast<long long>(lda));
    for (int i = 0; i < m; ++i) y[i] = add(y[i], mul(aj[i], t));
  }
}

// Real data, contiguous y: rows [0, peel) and the tail are scalar, the rest
// in vectors of two registers per step; the operations per element are those
// of gemv_n_generic.
template <class R>
void gemv_n_avx(int m, int n, R alpha, const R* a, ptrdiff_t lda, vec<const R> x, R* y, int peel) {
  using S = vx<R>;
  constexpr int L = S::L;
  if (peel < 0 || peel > m) peel = m;
  const int vend = peel + (m - peel) / (2 * L) * (2 * L);
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    const R t0 = alpha * x[j], t1 = alpha * x[j + 1], t2 = alpha * x[j + 2], t3 = alpha * x[j + 3];
    const R *a0 = zar::offset(a, j * static_cast<long long>(lda)), *a1 = zar::offset(a0, lda), *a2 = zar::offset(a1, lda), *a3 = zar::offset(a2, lda);
    int i = 0;
    for (; i < peel; ++i) y[i] = y[i] + ((a0[i] * t0 + a1[i] * t1) + (a2[i] * t2 + a3[i] * t3));
    const typename S::V v0 = S::set1(t0), v1 = S::set1(t1), v2 = S::set1(t2), v3 = S::set1(t3);
    for (; i < vend; i += 2 * L) {
      auto p = S::add(S::mul(S::load(a0 + i), v0), S::mul(S::load(a1 + i), v1));
      auto q = S::add(S::mul(S::load(a0 + i + L), v0), S::mul(S::load(a1 + i + L), v1));
      p = S::add(p, S::add(S::mul(S::load(a2 + i), v2), S::mul(S::load(a3 + i), v3)));
      q = S::add(q, S::add(S::mul(S::load(a2 + i + L), v2), S::mul(S::load(a3 + i + L), v3)));
      S::store(y + i, S::add(S::load(y + i), p));
      S::store(y + i + L, S::add(S::load(y + i + L), q));
    }
    for (; i < m; ++i) y[i] = y[i] + ((a0[i] * t0 + a1[i] * t1) + (a2[i] * t2 + a3[i] * t3));
  }
  for (; j < n; ++j) {
    const R t = alpha * x[j];
    const R* aj = zar::offset(a, j * static_cast<long long>(lda));
    int i = 0;
    for (; i < peel; ++i) y[i] = y[i] + aj[i] * t;
    const auto vt = S::set1(t);
    for (; i < vend; i += L) S::store(y + i, S::add(S::load(y + i), S::mul(S::load(aj + i), vt)));
    for (; i < m; ++i) y[i] = y[i] + aj[i] * t;
  }
}

// ---- transpose: y += alpha*op(A)^T x
template <class T, bool Conj>
void gemv_t_generic(int m, int n, T alpha, const T* a, ptrdiff_t lda, vec<const T> x, vec<T> y) {
  for (int j = 0; j < n; ++j) {
    const T* aj = zar::offset(a, j * static_cast<long long>(lda));
    T s = zero<T>();
    for (int i = 0; i < m; ++i) s = add(s, mul(cj<Conj>(aj[i]), x[i]));
    y[j] = add(y[j], mul(alpha, s));
  }
}

// Real data, contiguous x: see the order at the top of the file.
template <class R>
void gemv_t_avx(int m, int n, R alpha, const R* a, ptrdiff_t lda, const R* x, vec<R> y, int peel) {
  using S = vx<R>;
  constexpr int L = S::L;
  if (peel < 0 || peel > m) peel = m;
  const int vend = peel + (m - peel) / L * L;
  int j = 0;
  for (; j + 4 <= n; j += 4) {
    const R *a0 = zar::offset(a, j * static_cast<long long>(lda)), *a1 = zar::offset(a0, lda), *a2 = zar::offset(a1, lda), *a3 = zar::offset(a2, lda);
    R s0 = 0, s1 = 0, s2 = 0, s3 = 0;
    int i = 0;
    for (; i < peel; ++i) {
      s0 = s0 + a0[i] * x[i];
      s1 = s1 + a1[i] * x[i];
      s2 = s2 + a2[i] * x[i];
      s3 = s3 + a3[i] * x[i];
    }
    auto c0 = S::zero(), c1 = S::zero(), c2 = S::zero(), c3 = S::zero();
    for (; i < vend; i += L) {
      auto xv = S::load(x + i);
      asm("" : "+x"(xv));  // one load of x for the four columns
      c0 = S::add(c0, S::mul(S::load(a0 + i), xv));
      c1 = S::add(c1, S::mul(S::load(a1 + i), xv));
      c2 = S::add(c2, S::mul(S::load(a2 + i), xv));
      c3 = S::add(c3, S::mul(S::load(a3 + i), xv));
    }
    if (vend > peel) {
      s0 = s0 + hsum<R>(c0);
      s1 = s1 + hsum<R>(c1);
      s2 = s2 + hsum<R>(c2);
      s3 = s3 + hsum<R>(c3);
    }
    for (; i < m; ++i) {
      s0 = s0 + a0[i] * x[i];
      s1 = s1 + a1[i] * x[i];
      s2 = s2 + a2[i] * x[i];
      s3 = s3 + a3[i] * x[i];
    }
    y[j] = y[j] + alpha * s0;
    y[j + 1] = y[j + 1] + alpha * s1;
    y[j + 2] = y[j + 2] + alpha * s2;
    y[j + 3] = y[j + 3] + alpha * s3;
  }
  for (; j < n; ++j) {
    const R* aj = zar::offset(a, j * static_cast<long long>(lda));
    R s = 0;
    int i = 0;
    for (; i < peel; ++i) s = s + aj[i] * x[i];
    auto c = S::zero();
    for (; i < vend; i += L) c = S::add(c, S::mul(S::load(aj + i), S::load(x + i)));
    if (vend > peel) s = s + hsum<R>(c);
    for (; i < m; ++i) s = s + aj[i] * x[i];
    y[j] = y[j] + alpha * s;
  }
}

// y += alpha*op(A)*x, y already scaled. Fast selects the alignment peel.
template <class T, char TR, bool Fast>
void gemv_update(int m, int n, T alpha, const T* a, ptrdiff_t lda, const T* x, int incx, T* y, int incy) {
  const int xlen = TR == 'n' ? n : m, ylen = TR == 'n' ? m : n;
  const vec<const T> xv = view(x, xlen, incx);
  const vec<T> yv = view(y, ylen, incy);
  if constexpr (!is_complex_v<T>) {
    if (TR == 'n' && incy == 1) return gemv_n_avx(m, n, alpha, a, lda, xv, y, Fast ? peel_to_32(y) : 0);
    if (TR != 'n' && incx == 1) return gemv_t_avx(m, n, alpha, a, lda, x, yv, Fast ? peel_to_32(x) : 0);
  }
  if constexpr (TR == 'n') gemv_n_generic(m, n, alpha, a, lda, xv, yv);
  else gemv_t_generic<T, TR == 'c'>(m, n, alpha, a, lda, xv, yv);
}

template <class T, bool Fast> void gemv(ZAR_L2_GEMV_ARGS(T)) {
  const int M = *m, N = *n;
  if (M <= 0 || N <= 0) return;
  const T al = *alpha;
  if (is_zero(al) && is_one(*beta)) return;
  const char tr = trans_mode<T>(trans);
  scale_y(tr == 'n' ? M : N, *beta, y, *incy);
  if (is_zero(al)) return;
  on_trans<T>(tr, [&]<char TR>() { gemv_update<T, TR, Fast>(M, N, al, a, *lda, x, *incx, y, *incy); });
}

// ---- gem2v: y1 := alpha*A*x1 + beta*y1 and y2 := alpha*op(A)^T*x2 + beta*y2
// in one pass over A (op conjugates for the complex gem2vc).
template <class T> void gem2v_f(ZAR_L2_GEM2V_ARGS(T)) {
  const int M = *m, N = *n;
  const T al = *alpha;
  const vec<const T> x1v = view(x1, N, *incx1), x2v = view(x2, M, *incx2);
  const vec<T> y1v = view(y1, M, *incy1), y2v = view(y2, N, *incy2);
  for (int j = 0; j < N; ++j) {
    const T* aj = zar::offset(a, static_cast<long long>(j) * *lda);
    const T t = mul(al, x1v[j]);
    T s = zero<T>();
    for (int i = 0; i < M; ++i) {
      y1v[i] = add(y1v[i], mul(aj[i], t));
      s = add(s, mul(cj<is_complex_v<T>>(aj[i]), x2v[i]));
    }
    y2v[j] = add(y2v[j], mul(al, s));
  }
}
template <class T> void gem2v(ZAR_L2_GEM2V_ARGS(T)) {
  if (*m <= 0 || *n <= 0) return;
  if (is_zero(*alpha) && is_one(*beta)) return;
  scale_y(*m, *beta, y1, *incy1);
  scale_y(*n, *beta, y2, *incy2);
  if (is_zero(*alpha)) return;
  gem2v_f<T>(m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2);
}

// ---- real matrix, complex vectors. The vectors are split into real and
// imaginary parts, the two real products A*xr and A*xi (or with A^T) run
// through the real kernel, and y := alpha*t + beta*y is formed on the split
// parts before y is interleaved back.
template <class C, class R> void mix_copyx(const int* n, const C* x, const int* incx, R* xr, R* xi) {
  const vec<const C> v = view(x, *n, *incx);
  for (int i = 0; i < *n; ++i) xr[i] = v[i].re, xi[i] = v[i].im;
}
template <class C, class R> void mix_copyy_bwd(const int* n, const R* yr, const R* yi, C* y, const int* incy) {
  const vec<C> v = view(y, *n, *incy);
  for (int i = 0; i < *n; ++i) v[i] = C{yr[i], yi[i]};
}
template <class C, class R>
void mix_pst(const int* n, const C* alpha, const R* tr, const R* ti, const C* beta, R* yr, R* yi) {
  const C al = *alpha, be = *beta;
  const bool b0 = is_zero(be);
  for (int i = 0; i < *n; ++i) {
    const C t = mul(al, C{tr[i], ti[i]});
    const C yb = b0 ? zero<C>() : mul(be, C{yr[i], yi[i]});
    yr[i] = t.re + yb.re;
    yi[i] = t.im + yb.im;
  }
}

template <class C, class R> void mix_gemv(ZAR_L2_MIXGEMV_ARGS(C, R)) {
  const int M = *m, N = *n;
  if (M <= 0 || N <= 0) return;
  if (is_zero(*alpha) && is_one(*beta)) return;
  const char tr = opt_upper(trans) == 'N' ? 'n' : 't';
  const int xlen = tr == 'n' ? N : M, ylen = tr == 'n' ? M : N;
  R* w = static_cast<R*>(zar_serv_allocate(sizeof(R) * 2 * (static_cast<size_t>(xlen) + 2 * ylen), 64));
  const char* name = sizeof(R) == 8 ? "DZGEMV" : "SCGEMV";
  if (zar_serv_check_ptr_and_warn(w, name) != 0) {
    // no work area: the complex vectors are used in place
    scale_y(ylen, *beta, y, *incy);
    if (is_zero(*alpha)) return;
    const vec<const C> xv = view(x, xlen, *incx);
    const vec<C> yv = view(y, ylen, *incy);
    const ptrdiff_t ld = *lda;
    if (tr == 'n') {
      for (int j = 0; j < N; ++j) {
        const C t = mul(*alpha, xv[j]);
        for (int i = 0; i < M; ++i) yv[i] = add(yv[i], rmul(*zar::offset(a, i + j * static_cast<long long>(ld)), t));
      }
      return;
    }
    for (int j = 0; j < N; ++j) {
      C s = zero<C>();
      for (int i = 0; i < M; ++i) s = add(s, rmul(*zar::offset(a, i + j * static_cast<long long>(ld)), xv[i]));
      yv[j] = add(yv[j], mul(*alpha, s));
    }
    return;
  }
  R *xr = w, *xi = xr + xlen, *tr_ = xi + xlen, *ti = tr_ + ylen, *yr = ti + ylen, *yi = yr + ylen;
  mix_copyx<C, R>(&xlen, x, incx, xr, xi);
  const R one = 1, zero_r = 0;
  const int inc1 = 1;
  const char tc = tr == 'n' ? 'N' : 'T';
  gemv<R, true>(&tc, m, n, &one, a, lda, xr, &inc1, &zero_r, tr_, &inc1);
  gemv<R, true>(&tc, m, n, &one, a, lda, xi, &inc1, &zero_r, ti, &inc1);
  mix_copyx<C, R>(&ylen, y, incy, yr, yi);  // the forward copy of y
  mix_pst<C, R>(&ylen, alpha, tr_, ti, beta, yr, yi);
  mix_copyy_bwd<C, R>(&ylen, yr, yi, y, incy);
  zar_serv_deallocate(w);
}

}  // namespace
}  // namespace zar::l2

using namespace zar::l2;

#define ZAR_L2_GEMV_DEF(t, T, R)                                                                             \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemv)(ZAR_L2_GEMV_ARGS(T)) {                                                \
    zar::cbwr_dispatch<gemv<T, true>, gemv<T, false>>(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);  \
  }                                                                                                          \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemv_cnr)(ZAR_L2_GEMV_ARGS(T)) {                                            \
    gemv<T, false>(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                                      \
  }
ZAR_L2_ALL(ZAR_L2_GEMV_DEF)

#define ZAR_L2_GEM2V_DEF(t, T, R, name)                                                                      \
  ZAR_EXPORT void ZAR_BLAS(t##name)(ZAR_L2_GEM2V_ARGS(T)) {                                                  \
    gem2v<T>(m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2);                         \
  }                                                                                                          \
  ZAR_EXPORT void ZAR_BLAS(t##name##_f)(ZAR_L2_GEM2V_ARGS(T)) {                                              \
    gem2v_f<T>(m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2);                       \
  }
#define ZAR_L2_GEM2VU_DEF(t, T, R) ZAR_L2_GEM2V_DEF(t, T, R, gem2vu)
#define ZAR_L2_GEM2VC_DEF(t, T, R) ZAR_L2_GEM2V_DEF(t, T, R, gem2vc)
ZAR_L2_REAL(ZAR_L2_GEM2VU_DEF)
ZAR_L2_CPLX(ZAR_L2_GEM2VC_DEF)

#define ZAR_L2_MIXED_DEF(r, c, C, R)                                                                          \
  ZAR_EXPORT void ZAR_BLAS(r##c##gemv)(ZAR_L2_MIXGEMV_ARGS(C, R)) {                                           \
    mix_gemv<C, R>(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                                       \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(r##c##gemv_copyx)(const int* n, const C* x, const int* incx, R* xr, R* xi) {       \
    mix_copyx<C, R>(n, x, incx, xr, xi);                                                                      \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(r##c##gemv_copyy_fwd)(const int* n, const C* y, const int* incy, R* yr, R* yi) {   \
    mix_copyx<C, R>(n, y, incy, yr, yi);                                                                      \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(r##c##gemv_copyy_bwd)(const int* n, const R* yr, const R* yi, C* y, const int* incy) { \
    mix_copyy_bwd<C, R>(n, yr, yi, y, incy);                                                                  \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(r##c##gemv_pst)(const int* n, const C* alpha, const R* tr, const R* ti,            \
                                           const C* beta, R* yr, R* yi) {                                     \
    mix_pst<C, R>(n, alpha, tr, ti, beta, yr, yi);                                                            \
  }
ZAR_L2_MIXED(ZAR_L2_MIXED_DEF)
