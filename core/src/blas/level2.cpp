// Level-2 BLAS in the core: the dispatching gemv front ends (also reached by
// the kernels' triangular solve), the threaded splits of gemv, ger, syr/her,
// syr2/her2 and trmv, and the Fortran interfaces with the published checks.
//
// Threaded splits give every thread a disjoint part of the output and call
// kernels whose per-element order does not depend on the split, so a result
// does not depend on the number of threads.
#include <cstring>

#include "core/src/blas/level2_front.h"

namespace zar::core::l2 {

// Elements of A per thread below which a split does not pay: waking the pool
// costs tens of microseconds, and matrices that fit in the caches are served
// faster by one core (measured on a two-core AMD EPYC: n = 1000 ran slower on
// two threads).
constexpr double kGrain = 1 << 19;

// Parts of [0, len) for nt threads, boundaries rounded to multiples of 16.
inline void split(int len, int tid, int nt, int& s, int& e) {
  int chunk = (len + nt - 1) / nt;
  chunk = (chunk + 15) / 16 * 16;
  s = std::min(len, tid * chunk);
  e = std::min(len, s + chunk);
}

// gemv: the rows of y (no transpose) or the columns of A (transpose) are
// divided among the threads; y with increment 0 is never divided.
template <class T> void run_gemv(ZAR_L2_GEMV_ARGS(T)) {
  const auto k = kern<T>::gemv();
  const int M = *m, N = *n;
  const int nt = (M > 0 && N > 0 && *incy != 0) ? threads_for(double(M) * N, kGrain) : 1;
  if (nt <= 1) return k(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
  const bool notrans = up(trans) == 'N';
  const int len = notrans ? M : N;
  parallel(nt, [&](int tid, int nth) {
    int s, e;
    split(len, tid, nth, s, e);
    if (s >= e) return;
    const int l = e - s;
    T* ys = sub_vec(y, s, l, *incy, len);
    if (notrans) k(trans, &l, n, alpha, a + s, lda, x, incx, beta, ys, incy);
    else k(trans, m, &l, alpha, zar::offset(a, static_cast<long long>(s) * *lda), lda, x, incx, beta, ys, incy);
  });
}

// ger: columns divided among the threads.
template <class T>
void run_ger(const int* m, const int* n, const T* alpha, const T* x, const int* incx, const T* y, const int* incy,
             T* a, const int* lda, bool conj) {
  auto k = kern<T>::ger();
  if constexpr (zar::is_complex_v<T>) {
    if (conj) k = kern<T>::gerc();
  }
  const int N = *n;
  const int nt = (*m > 0 && N > 0) ? threads_for(double(*m) * N, kGrain) : 1;
  if (nt <= 1) return k(m, n, alpha, x, incx, y, incy, a, lda);
  parallel(nt, [&](int tid, int nth) {
    int s, e;
    split(N, tid, nth, s, e);
    if (s >= e) return;
    const int l = e - s;
    k(m, &l, alpha, x, incx, sub_vec(y, s, l, *incy, N), incy, zar::offset(a, static_cast<long long>(s) * *lda), lda);
  });
}

// Column ranges of a triangle with equal areas: upper column j holds j + 1
// elements, lower n - j.
inline void tri_split(bool upper, int n, int tid, int nt, int& s, int& e) {
  auto at = [&](int t) {
    if (t >= nt) return n;
    const double f = double(t) / nt;
    const int b = static_cast<int>(upper ? n * std::sqrt(f) : n * (1 - std::sqrt(1 - f)));
    return std::clamp(b, 0, n);
  };
  s = at(tid);
  e = at(tid + 1);
}

template <class Body> void tri_columns(const char* uplo, int n, Body body) {
  const int nt = n > 0 ? threads_for(double(n) * n / 2, kGrain) : 1;
  if (nt <= 1) return body(0, n);
  const bool upper = up(uplo) == 'U';
  parallel(nt, [&](int tid, int nth) {
    int s, e;
    tri_split(upper, n, tid, nth, s, e);
    if (s < e) body(s, e);
  });
}

template <class T>
void run_syr(const char* uplo, const int* n, const scal_t<T>* alpha, const T* x, const int* incx, T* a,
             const int* lda) {
  const auto k = reproducible() ? kern<T>::syr_cnr() : kern<T>::syr();
  tri_columns(uplo, *n, [&](int s, int e) { k(uplo, n, alpha, x, incx, a, lda, &s, &e); });
}
template <class T> void run_syr2(ZAR_L2_SYR2_ARGS(T)) {
  const auto k = reproducible() ? kern<T>::syr2_cnr() : kern<T>::syr2();
  tri_columns(uplo, *n, [&](int s, int e) { k(uplo, n, alpha, x, incx, y, incy, a, lda, &s, &e); });
}

// trmv: x is copied once and the threads form disjoint rows of op(A)*x.
template <class T> void run_trmv(ZAR_L2_TRMV_ARGS(T)) {
  const int N = *n;
  const int nt = N > 0 ? threads_for(double(N) * N / 2, kGrain) : 1;
  T* src = nt > 1 ? static_cast<T*>(std::malloc(sizeof(T) * N)) : nullptr;
  if (!src) return kern<T>::trmv()(uplo, trans, diag, n, a, lda, x, incx);
  const T* x0 = zar::offset(x, zar::vec_start(N, *incx));
  for (int i = 0; i < N; ++i) src[i] = *zar::offset(x0, static_cast<long long>(i) * *incx);
  const auto k = kern<T>::trmv_rows();
  parallel(nt, [&](int tid, int nth) {
    int s, e;
    split(N, tid, nth, s, e);
    if (s < e) k(uplo, trans, diag, n, a, lda, src, x, incx, &s, &e);
  });
  std::free(src);
}

#define ZAR_L2_INSTANTIATE(t, T, R)                                                                          \
  template void run_gemv<T>(ZAR_L2_GEMV_ARGS(T));                                                           \
  template void run_ger<T>(const int*, const int*, const T*, const T*, const int*, const T*, const int*, T*, \
                           const int*, bool);                                                               \
  template void run_syr<T>(const char*, const int*, const scal_t<T>*, const T*, const int*, T*, const int*); \
  template void run_syr2<T>(ZAR_L2_SYR2_ARGS(T));                                                           \
  template void run_trmv<T>(ZAR_L2_TRMV_ARGS(T));
ZAR_L2_ALL(ZAR_L2_INSTANTIATE)

}  // namespace zar::core::l2

using namespace zar::core::l2;

// ---- the dispatching front ends: no checks, arguments by address
#define ZAR_L2_DISPATCH(t, T, R) \
  ZAR_API void zar_blas_##t##gemv(ZAR_L2_GEMV_ARGS(T)) { run_gemv<T>(trans, m, n, alpha, a, lda, x, incx, beta, y, incy); }
ZAR_L2_ALL(ZAR_L2_DISPATCH)

// ---- Fortran interfaces. Complex data arrive as void* (zar/blas.h); the
// wrappers take the element type, which has the same layout.
#define ZAR_L2_REP(t, op) rep{#t[0], #op, false}

#define ZAR_L2_F_ALL(t, T, R)                                                                                     \
  ZAR_API void t##gemv_(ZAR_L2_GEMV_ARGS(T)) {                                                                    \
    if (ok_gemv(ZAR_L2_REP(t, gemv), trans, *m, *n, *lda, *incx, *incy))                                          \
      run_gemv<T>(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                                            \
  }                                                                                                               \
  ZAR_API void t##gbmv_(ZAR_L2_GBMV_ARGS(T)) {                                                                    \
    if (ok_gbmv(ZAR_L2_REP(t, gbmv), trans, *m, *n, *kl, *ku, *lda, *incx, *incy))                                \
      kern<T>::gbmv()(trans, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy);                                \
  }                                                                                                               \
  ZAR_API void t##trmv_(ZAR_L2_TRMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, trmv), uplo, trans, diag, *n, -1, *lda, *incx, false, false))                        \
      run_trmv<T>(uplo, trans, diag, n, a, lda, x, incx);                                                         \
  }                                                                                                               \
  ZAR_API void t##trsv_(ZAR_L2_TRMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, trsv), uplo, trans, diag, *n, -1, *lda, *incx, false, false))                        \
      kern<T>::trsv()(uplo, trans, diag, n, a, lda, x, incx);                                                     \
  }                                                                                                               \
  ZAR_API void t##tbmv_(ZAR_L2_TBMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, tbmv), uplo, trans, diag, *n, *k, *lda, *incx, true, false))                         \
      kern<T>::tbmv()(uplo, trans, diag, n, k, a, lda, x, incx);                                                  \
  }                                                                                                               \
  ZAR_API void t##tbsv_(ZAR_L2_TBMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, tbsv), uplo, trans, diag, *n, *k, *lda, *incx, true, false))                         \
      kern<T>::tbsv()(uplo, trans, diag, n, k, a, lda, x, incx);                                                  \
  }                                                                                                               \
  ZAR_API void t##tpmv_(ZAR_L2_TPMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, tpmv), uplo, trans, diag, *n, -1, -1, *incx, false, true))                           \
      kern<T>::tpmv()(uplo, trans, diag, n, ap, x, incx);                                                         \
  }                                                                                                               \
  ZAR_API void t##tpsv_(ZAR_L2_TPMV_ARGS(T)) {                                                                    \
    if (ok_tri(ZAR_L2_REP(t, tpsv), uplo, trans, diag, *n, -1, -1, *incx, false, true))                           \
      kern<T>::tpsv()(uplo, trans, diag, n, ap, x, incx);                                                         \
  }

// symmetric (real) or Hermitian (complex) members: sym names the family
// (sy/he), pk the packed letter (s/h), bd the band letter (s/h)
#define ZAR_L2_F_SYM(t, T, R, sy, pk)                                                                             \
  ZAR_API void t##sy##mv_(ZAR_L2_SYMV_ARGS(T)) {                                                                  \
    if (ok_symv(ZAR_L2_REP(t, sy##mv), uplo, *n, *lda, *incx, *incy))                                             \
      kern<T>::symv()(uplo, n, alpha, a, lda, x, incx, beta, y, incy);                                            \
  }                                                                                                               \
  ZAR_API void t##pk##bmv_(ZAR_L2_SBMV_ARGS(T)) {                                                                 \
    if (ok_sbmv(ZAR_L2_REP(t, pk##bmv), uplo, *n, *k, *lda, *incx, *incy))                                        \
      kern<T>::sbmv()(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);                                         \
  }                                                                                                               \
  ZAR_API void t##pk##pmv_(ZAR_L2_SPMV_ARGS(T)) {                                                                 \
    if (ok_spmv(ZAR_L2_REP(t, pk##pmv), uplo, *n, *incx, *incy))                                                  \
      kern<T>::spmv()(uplo, n, alpha, ap, x, incx, beta, y, incy);                                                \
  }                                                                                                               \
  ZAR_API void t##sy##r_(ZAR_L2_SYR_ARGS(T, R)) {                                                                 \
    if (ok_syr(ZAR_L2_REP(t, sy##r), uplo, *n, *incx, 1, *lda, false, false))                                     \
      run_syr<T>(uplo, n, alpha, x, incx, a, lda);                                                                \
  }                                                                                                               \
  ZAR_API void t##pk##pr_(ZAR_L2_SPR_ARGS(T, R)) {                                                                \
    if (ok_syr(ZAR_L2_REP(t, pk##pr), uplo, *n, *incx, 1, -1, false, true))                                       \
      kern<T>::spr()(uplo, n, alpha, x, incx, ap);                                                                \
  }                                                                                                               \
  ZAR_API void t##sy##r2_(ZAR_L2_SYR2_ARGS(T)) {                                                                  \
    if (ok_syr(ZAR_L2_REP(t, sy##r2), uplo, *n, *incx, *incy, *lda, true, false))                                 \
      run_syr2<T>(uplo, n, alpha, x, incx, y, incy, a, lda);                                                      \
  }                                                                                                               \
  ZAR_API void t##pk##pr2_(ZAR_L2_SPR2_ARGS(T)) {                                                                 \
    if (ok_syr(ZAR_L2_REP(t, pk##pr2), uplo, *n, *incx, *incy, -1, true, true))                                   \
      kern<T>::spr2()(uplo, n, alpha, x, incx, y, incy, ap);                                                      \
  }

#define ZAR_L2_F_GER(name, t, T, C)                                                                               \
  ZAR_API void t##name##_(ZAR_L2_GER_ARGS(T)) {                                                                   \
    if (ok_ger(ZAR_L2_REP(t, name), *m, *n, *incx, *incy, *lda)) run_ger<T>(m, n, alpha, x, incx, y, incy, a, lda, C); \
  }

#define ZAR_L2_F_REAL(t, T, R) ZAR_L2_F_SYM(t, T, R, sy, s) ZAR_L2_F_GER(ger, t, T, false)
#define ZAR_L2_F_CPLX(t, T, R) ZAR_L2_F_SYM(t, T, R, he, h) ZAR_L2_F_GER(geru, t, T, false) ZAR_L2_F_GER(gerc, t, T, true)
ZAR_L2_ALL(ZAR_L2_F_ALL)
ZAR_L2_REAL(ZAR_L2_F_REAL)
ZAR_L2_CPLX(ZAR_L2_F_CPLX)

// ---- the fused two-product gemv and the real-matrix complex-vector gemv
#define ZAR_L2_F_GEM2V(t, T, name)                                                                                \
  ZAR_API void t##name##_(ZAR_L2_GEM2V_ARGS(T)) {                                                                 \
    if (ok_gem2v(ZAR_L2_REP(t, name), *m, *n, *lda, *incx1, *incx2, *incy1, *incy2))                               \
      ZAR_KERNEL(zar_blas_avx_##t##name)(m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2);  \
  }
#define ZAR_L2_F_GEM2VU(t, T, R) ZAR_L2_F_GEM2V(t, T, gem2vu)
#define ZAR_L2_F_GEM2VC(t, T, R) ZAR_L2_F_GEM2V(t, T, gem2vc)
ZAR_L2_REAL(ZAR_L2_F_GEM2VU)
ZAR_L2_CPLX(ZAR_L2_F_GEM2VC)

#define ZAR_L2_F_MIXED(r, c, C, R)                                                                                \
  ZAR_API void r##c##gemv_(ZAR_L2_MIXGEMV_ARGS(C, R)) {                                                           \
    if (ok_gemv(ZAR_L2_REP(r, c##gemv), trans, *m, *n, *lda, *incx, *incy))                                       \
      ZAR_KERNEL(zar_blas_avx_##r##c##gemv)(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                  \
  }
ZAR_L2_MIXED(ZAR_L2_F_MIXED)
