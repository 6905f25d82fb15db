// Triangular products and solves: trmv (in place, per-thread rows), trsv
// (blocked by 32 over the core's gemv front end, with the fixed-case small
// kernels), the banded tbmv/tbsv and packed tpmv/tpsv, and the complex
// product pieces trml?/trmr?.
//
// Products follow the published column order: no transpose, upper: columns
// ascending, x_i += x_j*a_ij for the rows above, then x_j *= a_jj (a column
// with x_j = 0 is skipped); lower: columns descending, rows below descending.
// Transposed: each x_j is formed as (x_j*op(a_jj)) + sum op(a_ij)*x_i with i
// running away from the diagonal. Solves: no transpose uses the column form
// (x_j := x_j / a_jj, a true division, then x_i -= x_j*a_ij), transposed the
// dot form (x_j := (x_j - sum op(a_ij)*x_i) / op(a_jj)). None of these
// orders depends on alignment, so the reproducible twins agree bit for bit
// with the plain kernels.
#include "blas/level2/l2.h"
#include "zar/level2.h"
#include "blas/level2/simd.h"
#include "blas/level2/storage.h"

namespace zar::l2 {
namespace {

// ---- products, in place
template <class T, char U, char TR, char D, class St> void tri_mul(const St& s, int n, vec<T> x) {
  constexpr bool C = TR == 'c';
  if constexpr (TR == 'n') {
    auto column = [&](int j) {
      const T t = x[j];
      if (is_zero(t)) return;
      const T* aj = s.col(j);
      if constexpr (U == 'u')
        for (int i = s.lo(j); i < j; ++i) x[i] = add(x[i], mul(t, aj[i]));
      else
        for (int i = s.hi(j); i > j; --i) x[i] = add(x[i], mul(t, aj[i]));
      if constexpr (D == 'n') x[j] = mul(x[j], aj[j]);
    };
    if constexpr (U == 'u')
      for (int j = 0; j < n; ++j) column(j);
    else
      for (int j = n - 1; j >= 0; --j) column(j);
  } else {
    auto column = [&](int j) {
      const T* aj = s.col(j);
      T t = x[j];
      if constexpr (D == 'n') t = mul(t, cj<C>(aj[j]));
      if constexpr (U == 'u')
        for (int i = j - 1; i >= s.lo(j); --i) t = add(t, mul(cj<C>(aj[i]), x[i]));
      else
        for (int i = j + 1; i <= s.hi(j); ++i) t = add(t, mul(cj<C>(aj[i]), x[i]));
      x[j] = t;
    };
    if constexpr (U == 'u')
      for (int j = n - 1; j >= 0; --j) column(j);
    else
      for (int j = 0; j < n; ++j) column(j);
  }
}

// Rows [first, last) of op(A)*src into x (src contiguous, unchanged): each
// row in the order the in-place product gives it.
template <class T, char U, char TR, char D>
void tri_mul_rows(int n, const T* a, ptrdiff_t lda, const T* src, vec<T> x, int first, int last) {
  constexpr bool C = TR == 'c';
  for (int r = first; r < last; ++r) {
    T v = src[r];
    if constexpr (TR == 'n') {
      if (D == 'n' && !is_zero(v)) v = mul(v, *zar::offset(a, r + r * static_cast<long long>(lda)));
      if constexpr (U == 'u') {
        for (int j = r + 1; j < n; ++j)
          if (!is_zero(src[j])) v = add(v, mul(src[j], *zar::offset(a, r + j * static_cast<long long>(lda))));
      } else {
        for (int j = r - 1; j >= 0; --j)
          if (!is_zero(src[j])) v = add(v, mul(src[j], *zar::offset(a, r + j * static_cast<long long>(lda))));
      }
    } else {
      const T* ar = zar::offset(a, r * static_cast<long long>(lda));
      if constexpr (D == 'n') v = mul(v, cj<C>(ar[r]));
      if constexpr (U == 'u')
        for (int i = r - 1; i >= 0; --i) v = add(v, mul(cj<C>(ar[i]), src[i]));
      else
        for (int i = r + 1; i < n; ++i) v = add(v, mul(cj<C>(ar[i]), src[i]));
    }
    x[r] = v;
  }
}

// x[i] -= t*a[i] for i in [b, e): blocks of 16 on contiguous real data
template <class T> inline void col_update(int b, int e, T t, const T* a, vec<T> x) {
  int i = b;
  if constexpr (!is_complex_v<T>) {
    if (x.inc == 1) {
      using S = vx<T>;
      constexpr int L = S::L;
      const auto vt = S::set1(t);
      T* xp = x.p;
      for (; i + 16 <= e; i += 16)
        for (int k = 0; k < 16; k += L) S::store(xp + i + k, S::sub(S::load(xp + i + k), S::mul(vt, S::load(a + i + k))));
    }
  }
  for (; i < e; ++i) x[i] = sub(x[i], mul(t, a[i]));
}

// ---- solves, in place
template <class T, char U, char TR, char D, class St> void tri_solve(const St& s, int n, vec<T> x) {
  constexpr bool C = TR == 'c';
  if constexpr (TR == 'n') {
    auto column = [&](int j) {
      const T* aj = s.col(j);
      if constexpr (D == 'n') x[j] = div(x[j], aj[j]);
      const T t = x[j];
      if constexpr (U == 'u') col_update(s.lo(j), j, t, aj, x);
      else col_update(j + 1, s.hi(j) + 1, t, aj, x);
    };
    if constexpr (U == 'u')
      for (int j = n - 1; j >= 0; --j) column(j);
    else
      for (int j = 0; j < n; ++j) column(j);
  } else {
    auto column = [&](int j) {
      const T* aj = s.col(j);
      T t = x[j];
      if constexpr (U == 'u')
        for (int i = s.lo(j); i < j; ++i) t = sub(t, mul(cj<C>(aj[i]), x[i]));
      else
        for (int i = s.hi(j); i > j; --i) t = sub(t, mul(cj<C>(aj[i]), x[i]));
      if constexpr (D == 'n') t = div(t, cj<C>(aj[j]));
      x[j] = t;
    };
    if constexpr (U == 'u')
      for (int j = 0; j < n; ++j) column(j);
    else
      for (int j = n - 1; j >= 0; --j) column(j);
  }
}

// the small kernel of the blocked solve: one diagonal block
template <class T, char U, char TR, char D> void trsv_small(ZAR_L2_TRCASE_ARGS(T)) {
  const int N = *n;
  tri_solve<T, U, TR, D>(full_store<const T>{a, *lda, N}, N, view(x, N, *incx));
}

// The core's gemv front end for each type.
#define ZAR_L2_FRONT(t, T, R) \
  inline void front_gemv(ZAR_L2_GEMV_ARGS(T)) { zar_blas_##t##gemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy); }
ZAR_L2_ALL(ZAR_L2_FRONT)
#undef ZAR_L2_FRONT

// lowest address of the elements [s, s + len) of a strided vector
template <class T> inline T* sub_ptr(vec<T> v, int s, int len) { return v.inc >= 0 ? &v[s] : &v[s + len - 1]; }

// Blocked solve: blocks of 32 from the end where the solve starts, the
// remainder block last. Each block after the first is updated with the part
// of x solved so far through gemv (alpha = -1, beta = 1), then solved with
// the small kernel.
template <class T, char U, char TR, char D> void trsv_blocked(int n, const T* a, ptrdiff_t lda, T* x, int incx) {
  constexpr int NB = 32;
  constexpr bool forward = (U == 'l') == (TR == 'n');
  const vec<T> xv = view(x, n, incx);
  const int q = n / NB, r = n - q * NB, blocks = q + (r > 0);
  const T mone = from_real<T>(-1), one = from_real<T>(1);
  const char gt = TR == 'n' ? 'N' : TR == 't' ? 'T' : 'C';
  const int ld = static_cast<int>(lda);
  for (int b = 0; b < blocks; ++b) {
    const int len = b < q ? NB : r;
    const int s = forward ? b * NB : (b < q ? n - (b + 1) * NB : 0);
    const int done_lo = forward ? 0 : s + len, done_n = forward ? s : n - s - len;  // solved part of x
    if (done_n > 0) {
      T* xb = sub_ptr(xv, s, len);
      const T* xd = sub_ptr(xv, done_lo, done_n);
      if constexpr (TR == 'n') front_gemv(&gt, &len, &done_n, &mone, zar::offset(a, s + done_lo * static_cast<long long>(lda)), &ld, xd, &incx, &one, xb, &incx);
      else front_gemv(&gt, &done_n, &len, &mone, zar::offset(a, done_lo + s * static_cast<long long>(lda)), &ld, xd, &incx, &one, xb, &incx);
    }
    tri_solve<T, U, TR, D>(full_store<const T>{zar::offset(a, s + s * static_cast<long long>(lda)), lda, len}, len, vec<T>{&xv[s], xv.inc});
  }
}

template <class T> void trsv(ZAR_L2_TRMV_ARGS(T)) {
  if (*n <= 0) return;
  on_tri<T>(uplo, trans, diag, [&]<char U, char TR, char D>() { trsv_blocked<T, U, TR, D>(*n, a, *lda, x, *incx); });
}

template <class T> void trmv(ZAR_L2_TRMV_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on_tri<T>(uplo, trans, diag, [&]<char U, char TR, char D>() {
    tri_mul<T, U, TR, D>(full_store<const T>{a, *lda, N}, N, view(x, N, *incx));
  });
}
template <class T> void trmv_rows(ZAR_L2_TRMV_T_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on_tri<T>(uplo, trans, diag, [&]<char U, char TR, char D>() {
    tri_mul_rows<T, U, TR, D>(N, a, *lda, src, view(x, N, *incx), *first, *last);
  });
}

// banded and packed forms; Solve selects tri_solve over tri_mul
template <class T, bool Solve> void tb(ZAR_L2_TBMV_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on_tri<T>(uplo, trans, diag, [&]<char U, char TR, char D>() {
    const band_store<const T, U> s{a, *lda, N, *k};
    if constexpr (Solve) tri_solve<T, U, TR, D>(s, N, view(x, N, *incx));
    else tri_mul<T, U, TR, D>(s, N, view(x, N, *incx));
  });
}
template <class T, bool Solve> void tb_unit(ZAR_L2_TBMV_ARGS(T)) {
  const int one = 1;
  tb<T, Solve>(uplo, trans, diag, n, k, a, lda, x, &one);
}
template <class T, bool Solve> void tp(ZAR_L2_TPMV_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on_tri<T>(uplo, trans, diag, [&]<char U, char TR, char D>() {
    const packed_store<const T, U> s{ap, N};
    if constexpr (Solve) tri_solve<T, U, TR, D>(s, N, view(x, N, *incx));
    else tri_mul<T, U, TR, D>(s, N, view(x, N, *incx));
  });
}

// complex product pieces: lower (l) or upper (r) triangle, trans in the name
template <class T, char U, char TR> void trm_piece(ZAR_L2_TRPIECE_ARGS(T)) {
  const int N = *n;
  if (N <= 0) return;
  on2<'n', 'u'>(diag_mode(diag), [&]<char D>() {
    tri_mul<T, U, TR, D>(full_store<const T>{a, *lda, N}, N, view(x, N, *incx));
  });
}

}  // namespace
}  // namespace zar::l2

using namespace zar::l2;

// Exported forms. xTtrmv, its twin and Ttrmv_in run the in-place product;
// xTtrmv_in_thread forms rows [first, last) from a contiguous copy of x (the
// core's threaded trmv). xTtrsv and its twin run the blocked solve (its gemv
// updates choose their own path through the core). Ttbmv/Ttbsv take any
// increment, the _f forms a contiguous x (incx read as 1), the _cnr forms
// the same fixed order.
#define ZAR_L2_TRI_DEF(t, T, R)                                                                                   \
  ZAR_EXPORT void ZAR_BLAS(x##t##trmv)(ZAR_L2_TRMV_ARGS(T)) { trmv<T>(uplo, trans, diag, n, a, lda, x, incx); }   \
  ZAR_EXPORT void ZAR_BLAS(x##t##trmv_cnr)(ZAR_L2_TRMV_ARGS(T)) { trmv<T>(uplo, trans, diag, n, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##trmv_in)(ZAR_L2_TRMV_ARGS(T)) { trmv<T>(uplo, trans, diag, n, a, lda, x, incx); }     \
  ZAR_EXPORT void ZAR_BLAS(x##t##trmv_in_thread)(ZAR_L2_TRMV_T_ARGS(T)) {                                         \
    trmv_rows<T>(uplo, trans, diag, n, a, lda, src, x, incx, first, last);                                        \
  }                                                                                                               \
  ZAR_EXPORT void ZAR_BLAS(x##t##trsv)(ZAR_L2_TRMV_ARGS(T)) { trsv<T>(uplo, trans, diag, n, a, lda, x, incx); }   \
  ZAR_EXPORT void ZAR_BLAS(x##t##trsv_cnr)(ZAR_L2_TRMV_ARGS(T)) { trsv<T>(uplo, trans, diag, n, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbmv)(ZAR_L2_TBMV_ARGS(T)) { tb<T, false>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbmv_f)(ZAR_L2_TBMV_ARGS(T)) { tb_unit<T, false>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbmv_cnr)(ZAR_L2_TBMV_ARGS(T)) { tb<T, false>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbsv)(ZAR_L2_TBMV_ARGS(T)) { tb<T, true>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbsv_f)(ZAR_L2_TBMV_ARGS(T)) { tb_unit<T, true>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tbsv_cnr)(ZAR_L2_TBMV_ARGS(T)) { tb<T, true>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_EXPORT void ZAR_BLAS(t##tpmv)(ZAR_L2_TPMV_ARGS(T)) { tp<T, false>(uplo, trans, diag, n, ap, x, incx); }     \
  ZAR_EXPORT void ZAR_BLAS(t##tpsv)(ZAR_L2_TPMV_ARGS(T)) { tp<T, true>(uplo, trans, diag, n, ap, x, incx); }
ZAR_L2_ALL(ZAR_L2_TRI_DEF)

#define ZAR_L2_TRSV_CASE_DEF(t, T, u, tr, d)                                       \
  ZAR_EXPORT void ZAR_BLAS(t##trsv_##u##tr##d)(ZAR_L2_TRCASE_ARGS(T)) {            \
    trsv_small<T, #u[0], #tr[0], #d[0]>(n, a, lda, x, incx);                       \
  }
#define ZAR_L2_TRSV_CASES_R(t, T, R) ZAR_L2_TRSV_REAL_CASES(ZAR_L2_TRSV_CASE_DEF, t, T)
#define ZAR_L2_TRSV_CASES_C(t, T, R) \
  ZAR_L2_TRSV_REAL_CASES(ZAR_L2_TRSV_CASE_DEF, t, T) ZAR_L2_TRSV_CONJ_CASES(ZAR_L2_TRSV_CASE_DEF, t, T)
ZAR_L2_REAL(ZAR_L2_TRSV_CASES_R)
ZAR_L2_CPLX(ZAR_L2_TRSV_CASES_C)

// complex extras: Ttbsv_vial1, the band solve as a sequence of level-1 steps
// (column updates without transpose, dot products with), and the in-place
// product pieces Ttrml<t> (lower) and Ttrmr<t> (upper) with trans t
#define ZAR_L2_PIECE_DEF(t, T, name, U, TR) \
  ZAR_EXPORT void ZAR_BLAS(t##name)(ZAR_L2_TRPIECE_ARGS(T)) { trm_piece<T, U, TR>(diag, n, a, lda, x, incx); }
#define ZAR_L2_CPLX_TRI_DEF(t, T, R)                                                                               \
  ZAR_EXPORT void ZAR_BLAS(t##tbsv_vial1)(ZAR_L2_TBMV_ARGS(T)) { tb<T, true>(uplo, trans, diag, n, k, a, lda, x, incx); } \
  ZAR_L2_PIECE_DEF(t, T, trmln, 'l', 'n') ZAR_L2_PIECE_DEF(t, T, trmlt, 'l', 't')                                  \
  ZAR_L2_PIECE_DEF(t, T, trmlc, 'l', 'c') ZAR_L2_PIECE_DEF(t, T, trmrn, 'u', 'n')                                  \
  ZAR_L2_PIECE_DEF(t, T, trmrt, 'u', 't') ZAR_L2_PIECE_DEF(t, T, trmrc, 'u', 'c')
ZAR_L2_CPLX(ZAR_L2_CPLX_TRI_DEF)
