// Level-2 front ends of the core, shared by the Fortran and CBLAS
// interfaces: the kernels of each type, the published argument checks (each
// reports the first illegal argument through xerbla_, or cblas_xerbla with
// the reference CBLAS position) and the calls after the checks, threaded
// where the problem is large.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "zar/level2.h"
#include "cblas.h"
#include "core.h"
#include "zar/services.h"

namespace zar::core::l2 {

using zar::c32;
using zar::c64;

// ---- kernels per element type. The symmetric entries of the complex types
// are the Hermitian kernels (symv -> hemv, syr -> her, ...).
template <class T> struct kern;
#define ZAR_L2_KERN_COMMON(t)                                           \
  static auto gemv() { return ZAR_KERNEL(zar_blas_avx_x##t##gemv); }   \
  static auto gbmv() { return ZAR_KERNEL(zar_blas_avx_##t##gbmv); }    \
  static auto trmv() { return ZAR_KERNEL(zar_blas_avx_x##t##trmv); }   \
  static auto trmv_rows() { return ZAR_KERNEL(zar_blas_avx_x##t##trmv_in_thread); } \
  static auto trsv() { return ZAR_KERNEL(zar_blas_avx_x##t##trsv); }   \
  static auto tbmv() { return ZAR_KERNEL(zar_blas_avx_##t##tbmv); }    \
  static auto tbsv() { return ZAR_KERNEL(zar_blas_avx_##t##tbsv); }    \
  static auto tpmv() { return ZAR_KERNEL(zar_blas_avx_##t##tpmv); }    \
  static auto tpsv() { return ZAR_KERNEL(zar_blas_avx_##t##tpsv); }
// the symmetric (real) or Hermitian (complex) entries: pfx is x for the real
// driver names, sy/sp the letters (sy, s or he, h), r1 the rank-one name
#define ZAR_L2_KERN_SYM(t, pfx, sy, sp, r1)                                                \
  static auto ger() { return ZAR_KERNEL(zar_blas_avx_x##t##r1); }                           \
  static auto symv() { return ZAR_KERNEL(zar_blas_avx_##pfx##t##sy##mv); }                  \
  static auto sbmv() { return ZAR_KERNEL(zar_blas_avx_##t##sp##bmv); }                      \
  static auto spmv() { return ZAR_KERNEL(zar_blas_avx_##t##sp##pmv); }                      \
  static auto syr() { return ZAR_KERNEL(zar_blas_avx_##pfx##t##sy##r_in_thread); }          \
  static auto syr_cnr() { return ZAR_KERNEL(zar_blas_avx_##pfx##t##sy##r_in_thread_cnr); }  \
  static auto syr2() { return ZAR_KERNEL(zar_blas_avx_##pfx##t##sy##r2_in_thread); }        \
  static auto syr2_cnr() { return ZAR_KERNEL(zar_blas_avx_##pfx##t##sy##r2_in_thread_cnr); } \
  static auto spr() { return ZAR_KERNEL(zar_blas_avx_##t##sp##pr); }                        \
  static auto spr2() { return ZAR_KERNEL(zar_blas_avx_##t##sp##pr2); }
#define ZAR_L2_KERN_REAL(t, T, R) \
  template <> struct kern<T> {    \
    ZAR_L2_KERN_COMMON(t)         \
    ZAR_L2_KERN_SYM(t, x, sy, s, ger) \
  };
#define ZAR_L2_KERN_CPLX(t, T, R)                                    \
  template <> struct kern<T> {                                       \
    ZAR_L2_KERN_COMMON(t)                                            \
    ZAR_L2_KERN_SYM(t, , he, h, geru)                                \
    static auto gerc() { return ZAR_KERNEL(zar_blas_avx_x##t##gerc); } \
  };
ZAR_L2_REAL(ZAR_L2_KERN_REAL)
ZAR_L2_CPLX(ZAR_L2_KERN_CPLX)

// the scalar type of her/hpr (real for complex data)
template <class T> using scal_t = std::conditional_t<zar::is_complex_v<T>, zar::real_t<T>, T>;

// ---- reporting through xerbla_ or cblas_xerbla (report_routine, core.h)
struct rep {
  char t;
  const char* op;
  bool cblas;
  bool bad(int pos) const {
    report_routine(t, op, cblas, pos);
    return false;
  }
};
inline char up(const char* c) { return static_cast<char>(*c & ~0x20); }
inline bool bad_trans(const char* c) { return up(c) != 'N' && up(c) != 'T' && up(c) != 'C'; }
inline bool bad_uplo(const char* c) { return up(c) != 'U' && up(c) != 'L'; }
inline bool bad_diag(const char* c) { return up(c) != 'N' && up(c) != 'U'; }

// ---- checks: true when every argument is legal
inline bool ok_gemv(const rep& r, const char* trans, int m, int n, int lda, int incx, int incy) {
  if (bad_trans(trans)) return r.bad(1);
  if (m < 0) return r.bad(2);
  if (n < 0) return r.bad(3);
  if (lda < std::max(1, m)) return r.bad(6);
  if (incx == 0) return r.bad(8);
  if (incy == 0) return r.bad(11);
  return true;
}
inline bool ok_gbmv(const rep& r, const char* trans, int m, int n, int kl, int ku, int lda, int incx, int incy) {
  if (bad_trans(trans)) return r.bad(1);
  if (m < 0) return r.bad(2);
  if (n < 0) return r.bad(3);
  if (kl < 0) return r.bad(4);
  if (ku < 0) return r.bad(5);
  if (lda < kl + ku + 1) return r.bad(8);
  if (incx == 0) return r.bad(10);
  if (incy == 0) return r.bad(13);
  return true;
}
inline bool ok_symv(const rep& r, const char* uplo, int n, int lda, int incx, int incy) {
  if (bad_uplo(uplo)) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (lda < std::max(1, n)) return r.bad(5);
  if (incx == 0) return r.bad(7);
  if (incy == 0) return r.bad(10);
  return true;
}
inline bool ok_sbmv(const rep& r, const char* uplo, int n, int k, int lda, int incx, int incy) {
  if (bad_uplo(uplo)) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (k < 0) return r.bad(3);
  if (lda < k + 1) return r.bad(6);
  if (incx == 0) return r.bad(8);
  if (incy == 0) return r.bad(11);
  return true;
}
inline bool ok_spmv(const rep& r, const char* uplo, int n, int incx, int incy) {
  if (bad_uplo(uplo)) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (incx == 0) return r.bad(6);
  if (incy == 0) return r.bad(9);
  return true;
}
// trmv, trsv; tbmv, tbsv (band: k and lda checked); tpmv, tpsv (packed: no lda)
inline bool ok_tri(const rep& r, const char* uplo, const char* trans, const char* diag, int n, int k, int lda, int incx,
                   bool band, bool packed) {
  if (bad_uplo(uplo)) return r.bad(1);
  if (bad_trans(trans)) return r.bad(2);
  if (bad_diag(diag)) return r.bad(3);
  if (n < 0) return r.bad(4);
  if (band && k < 0) return r.bad(5);
  if (band && lda < k + 1) return r.bad(7);
  if (!band && !packed && lda < std::max(1, n)) return r.bad(6);
  if (incx == 0) return r.bad(packed ? 7 : band ? 9 : 8);
  return true;
}
// gem2vu/gem2vc: (m, n, alpha, a, lda, x1, incx1, x2, incx2, beta, y1, incy1, y2, incy2)
inline bool ok_gem2v(const rep& r, int m, int n, int lda, int incx1, int incx2, int incy1, int incy2) {
  if (m < 0) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (lda < std::max(1, m)) return r.bad(5);
  if (incx1 == 0) return r.bad(7);
  if (incx2 == 0) return r.bad(9);
  if (incy1 == 0) return r.bad(12);
  if (incy2 == 0) return r.bad(14);
  return true;
}
inline bool ok_ger(const rep& r, int m, int n, int incx, int incy, int lda) {
  if (m < 0) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (incx == 0) return r.bad(5);
  if (incy == 0) return r.bad(7);
  if (lda < std::max(1, m)) return r.bad(9);
  return true;
}
// syr, spr (packed: no lda); syr2, spr2 (two: incy checked too)
inline bool ok_syr(const rep& r, const char* uplo, int n, int incx, int incy, int lda, bool two, bool packed) {
  if (bad_uplo(uplo)) return r.bad(1);
  if (n < 0) return r.bad(2);
  if (incx == 0) return r.bad(5);
  if (two && incy == 0) return r.bad(7);
  if (!packed && lda < std::max(1, n)) return r.bad(two ? 9 : 7);
  return true;
}

// ---- work after the checks
// lowest address of the elements [s, s + len) of a vector of total elements
template <class T> inline T* sub_vec(T* v, int s, int len, int inc, int total) {
  return inc >= 0 ? zar::offset(v, static_cast<long long>(s) * inc) : zar::offset(v, static_cast<long long>(total - s - len) * -inc);
}
// threads for a problem of `work` element updates, at least `grain` each
inline int threads_for(double work, double grain) {
  const int nt = std::min<double>(max_threads(), std::floor(work / grain));
  return std::max(1, nt);
}
inline bool reproducible() { return config().cbwr.load() != 1; }

template <class T> void run_gemv(ZAR_L2_GEMV_ARGS(T));  // the dispatching front end, level2.cpp
template <class T> void run_ger(const int* m, const int* n, const T* alpha, const T* x, const int* incx, const T* y,
                                const int* incy, T* a, const int* lda, bool conj);
template <class T> void run_syr(const char* uplo, const int* n, const scal_t<T>* alpha, const T* x, const int* incx,
                                T* a, const int* lda);
template <class T> void run_syr2(ZAR_L2_SYR2_ARGS(T));
template <class T> void run_trmv(ZAR_L2_TRMV_ARGS(T));

}  // namespace zar::core::l2
