// Level-3 front ends of the core, shared by the Fortran and CBLAS
// interfaces: the kernels of each type, the reporter of illegal arguments,
// the published argument checks and the threaded dispatchers that run after
// them (level3.cpp).
//
// The checks follow the reference BLAS routines argument by argument: each
// returns 0 when every argument is legal, else the position of the first
// illegal one in the Fortran call. The CBLAS interfaces map a row-major call
// onto the column-major one first and run the same checks on the mapped
// arguments, so their positions are those of the reference CBLAS.
#pragma once
#include <algorithm>
#include <type_traits>

#include "cblas.h"
#include "core.h"
#include "zar/gemm.h"
#include "zar/level3.h"
#include "zar/types.h"

namespace zar::core::l3 {

using zar::c32;
using zar::c64;

// ---- the kernels of one element type
template <class T> struct kern;
#define ZAR_L3_KERN_ALL(t)                                                          \
  static auto trsm() { return ZAR_KERNEL(zar_blas_avx_x##t##trsm); }                \
  static auto trmm() { return ZAR_KERNEL(zar_blas_avx_x##t##trmm); }                \
  static auto symm() { return ZAR_KERNEL(zar_blas_avx_x##t##symm); }                \
  static auto syrk() { return ZAR_KERNEL(zar_blas_avx_x##t##syrk); }                \
  static auto syrk_in() { return ZAR_KERNEL(zar_blas_avx_x##t##syrk_in_thread); }   \
  static auto syr2k() { return ZAR_KERNEL(zar_blas_avx_x##t##syr2k); }              \
  static auto syr2k_in() { return ZAR_KERNEL(zar_blas_avx_x##t##syr2k_in_thread); } \
  static auto gemmt() { return ZAR_KERNEL(zar_blas_avx_x##t##gemmt); }              \
  static auto gemmt_in() { return ZAR_KERNEL(zar_blas_avx_x##t##gemmt_in_thread); } \
  static auto batch() { return ZAR_KERNEL(zar_blas_avx_x##t##gemm_batch); }         \
  static auto strided() { return ZAR_KERNEL(zar_blas_avx_x##t##gemm_batch_strided); }
#define ZAR_L3_KERN_REAL(t, T, R) \
  template <> struct kern<T> { ZAR_L3_KERN_ALL(t) };
#define ZAR_L3_KERN_CPLX(t, T, R)                                                     \
  template <> struct kern<T> {                                                        \
    ZAR_L3_KERN_ALL(t)                                                                \
    static auto hemm() { return ZAR_KERNEL(zar_blas_avx_x##t##hemm); }                \
    static auto herk() { return ZAR_KERNEL(zar_blas_avx_x##t##herk); }                \
    static auto herk_in() { return ZAR_KERNEL(zar_blas_avx_x##t##herk_in_thread); }   \
    static auto her2k() { return ZAR_KERNEL(zar_blas_avx_x##t##her2k); }              \
    static auto her2k_in() { return ZAR_KERNEL(zar_blas_avx_x##t##her2k_in_thread); } \
    static auto gemm3m() { return ZAR_KERNEL(zar_blas_avx_x##t##gemm3m); }            \
  };
ZAR_L3_REAL(ZAR_L3_KERN_REAL)
ZAR_L3_CPLX(ZAR_L3_KERN_CPLX)

// The rank updates take their scalar type S as a parameter: the element type
// for syrk/syr2k, the real type for herk's alpha and beta and her2k's beta;
// a Hermitian update is one whose S differs from T.
template <class T, class S> inline constexpr bool herm_v = !std::is_same_v<T, S>;

// The quick-return tests of the scalars: the engine's (exactly 0, exactly 1).
using zar::gemm::is_one;
using zar::gemm::is_zero;

// ---- reporting through xerbla_ or cblas_xerbla (report_routine, core.h)
struct rep {
  char t;          // type letter
  const char* op;  // routine name without the letter
  bool cblas;
  // Reports position pos when it is not 0; true when every argument was legal.
  bool ok(int pos) const {
    if (pos == 0) return true;
    report_routine(t, op, cblas, pos);
    return false;
  }
};

// ---- the published checks (0: legal, else the first illegal position)
inline bool is(const char* c, char u) { return opt_upper(c) == u; }
inline bool any_trans(const char* c) { return is(c, 'N') || is(c, 'T') || is(c, 'C'); }

// trsm, trmm: side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb
inline int check_trsm(const char* side, const char* uplo, const char* transa, const char* diag, int m, int n, int lda,
                      int ldb) {
  const int nrowa = is(side, 'L') ? m : n;
  if (!is(side, 'L') && !is(side, 'R')) return 1;
  if (!is(uplo, 'U') && !is(uplo, 'L')) return 2;
  if (!any_trans(transa)) return 3;
  if (!is(diag, 'U') && !is(diag, 'N')) return 4;
  if (m < 0) return 5;
  if (n < 0) return 6;
  if (lda < std::max(1, nrowa)) return 9;
  if (ldb < std::max(1, m)) return 11;
  return 0;
}

// symm, hemm: side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc
inline int check_symm(const char* side, const char* uplo, int m, int n, int lda, int ldb, int ldc) {
  const int nrowa = is(side, 'L') ? m : n;
  if (!is(side, 'L') && !is(side, 'R')) return 1;
  if (!is(uplo, 'U') && !is(uplo, 'L')) return 2;
  if (m < 0) return 3;
  if (n < 0) return 4;
  if (lda < std::max(1, nrowa)) return 7;
  if (ldb < std::max(1, m)) return 9;
  if (ldc < std::max(1, m)) return 12;
  return 0;
}

// The transposes a rank update accepts: real syrk/syr2k N, T and C; complex
// syrk/syr2k N and T; herk/her2k N and C.
template <class T, bool Herm> inline bool rank_trans_ok(const char* trans) {
  if (is(trans, 'N')) return true;
  if constexpr (Herm) return is(trans, 'C');
  else return is(trans, 'T') || (!zar::is_complex_v<T> && is(trans, 'C'));
}

// syrk, herk (ldb < 0: one operand): uplo, trans, n, k, alpha, a, lda, beta,
// c, ldc; syr2k, her2k: uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc
template <class T, bool Herm>
int check_rank(const char* uplo, const char* trans, int n, int k, int lda, int ldb, int ldc, bool two) {
  const int nrowa = is(trans, 'N') ? n : k;
  if (!is(uplo, 'U') && !is(uplo, 'L')) return 1;
  if (!rank_trans_ok<T, Herm>(trans)) return 2;
  if (n < 0) return 3;
  if (k < 0) return 4;
  if (lda < std::max(1, nrowa)) return 7;
  if (two && ldb < std::max(1, nrowa)) return 9;
  if (ldc < std::max(1, n)) return two ? 12 : 10;
  return 0;
}

// gemm argument checks with the positions shifted by `shift` (gemmt has uplo
// first): transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc.
inline int check_gemm(const char* ta, const char* tb, int m, int n, int k, int lda, int ldb, int ldc, int shift = 0) {
  int info = 0;
  if (!any_trans(ta)) info = 1;
  else if (!any_trans(tb)) info = 2;
  else if (m < 0) info = 3;
  else if (n < 0) info = 4;
  else if (k < 0) info = 5;
  else if (lda < std::max(1, is(ta, 'N') ? m : k)) info = 8;
  else if (ldb < std::max(1, is(tb, 'N') ? k : n)) info = 10;
  else if (ldc < std::max(1, m)) info = 13;
  return info ? info + shift : 0;
}

// gemmt: uplo, transa, transb, n, k, alpha, a, lda, b, ldb, beta, c, ldc (C
// is n x n, op(A) n x k, op(B) k x n)
inline int check_gemmt(const char* uplo, const char* ta, const char* tb, int n, int k, int lda, int ldb, int ldc) {
  if (!is(uplo, 'U') && !is(uplo, 'L')) return 1;
  if (!any_trans(ta)) return 2;
  if (!any_trans(tb)) return 3;
  if (n < 0) return 4;
  if (k < 0) return 5;
  if (lda < std::max(1, is(ta, 'N') ? n : k)) return 8;
  if (ldb < std::max(1, is(tb, 'N') ? k : n)) return 10;
  if (ldc < std::max(1, n)) return 13;
  return 0;
}

// gemm_batch: the group count (14), every group's size (15) and the gemm
// checks of every group at gemm's positions. Nothing is computed unless
// every group is legal.
template <class T> int check_batch(ZAR_L3_GEMM_BATCH_ARGS(T)) {
  if (*group_count < 0) return 14;
  for (int g = 0; g < *group_count; ++g) {
    if (group_size[g] < 0) return 15;
    if (const int info = check_gemm(transa + g, transb + g, m[g], n[g], k[g], lda[g], ldb[g], ldc[g])) return info;
  }
  return 0;
}

// gemm_batch_strided: gemm's positions for the shared arguments, then the
// strides and the batch size: A and B may be shared (stride 0), the products'
// C must not overlap.
template <class T> int check_strided(ZAR_L3_GEMM_STRIDED_ARGS(T)) {
  const int ta_n = is(transa, 'N'), tb_n = is(transb, 'N');
  if (!any_trans(transa)) return 1;
  if (!any_trans(transb)) return 2;
  if (*m < 0) return 3;
  if (*n < 0) return 4;
  if (*k < 0) return 5;
  if (*lda < std::max(1, ta_n ? *m : *k)) return 8;
  if (*stridea < 0) return 9;
  if (*ldb < std::max(1, tb_n ? *k : *n)) return 11;
  if (*strideb < 0) return 12;
  if (*ldc < std::max(1, *m)) return 15;
  if (*batch_size > 1 && *stridec < static_cast<long long>(*ldc) * *n) return 16;
  if (*batch_size < 0) return 17;
  return 0;
}

// The argument names of each list in zar/level3.h, for the calls that pass
// them on unchanged.
#define ZAR_L3_GEMM_NAMES transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc
#define ZAR_L3_TRSM_NAMES side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb
#define ZAR_L3_SYMM_NAMES side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc
#define ZAR_L3_SYRK_NAMES uplo, trans, n, k, alpha, a, lda, beta, c, ldc
#define ZAR_L3_SYR2K_NAMES uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc
#define ZAR_L3_GEMMT_NAMES uplo, transa, transb, n, k, alpha, a, lda, b, ldb, beta, c, ldc
#define ZAR_L3_BATCH_NAMES transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, group_count, group_size
#define ZAR_L3_STRIDED_NAMES \
  transa, transb, m, n, k, alpha, a, lda, stridea, b, ldb, strideb, beta, c, ldc, stridec, batch_size

// ---- quick returns of the published routines (after the checks)
template <class T, class S> inline bool nothing_to_do(int m, int n, int k, const T& alpha, const S& beta) {
  return m == 0 || n == 0 || ((is_zero(alpha) || k == 0) && is_one(beta));
}

// ---- the dispatchers (level3.cpp): no checks, threaded when large
template <class T, bool Solve> void run_trsm(ZAR_L3_TRSM_ARGS(T));
template <class T, bool Herm> void run_symm(ZAR_L3_SYMM_ARGS(T));
template <class T, class S> void run_syrk(ZAR_L3_SYRK_ARGS(T, S));
template <class T, class S> void run_syr2k(ZAR_L3_SYR2K_ARGS(T, S));
template <class T> void run_gemmt(ZAR_L3_GEMMT_ARGS(T));
template <class T> void run_gemm3m(ZAR_L3_GEMM_ARGS(T));
template <class T> void run_batch(ZAR_L3_GEMM_BATCH_ARGS(T));
template <class T> void run_strided(ZAR_L3_GEMM_STRIDED_ARGS(T));

// ---- checked entries shared by Fortran and CBLAS (level3.cpp): check,
// report through r, take the quick return, dispatch.
template <class T, bool Solve> void checked_trsm(const rep& r, ZAR_L3_TRSM_ARGS(T));
template <class T, bool Herm> void checked_symm(const rep& r, ZAR_L3_SYMM_ARGS(T));
template <class T, class S> void checked_syrk(const rep& r, ZAR_L3_SYRK_ARGS(T, S));
template <class T, class S> void checked_syr2k(const rep& r, ZAR_L3_SYR2K_ARGS(T, S));
template <class T> void checked_gemmt(const rep& r, ZAR_L3_GEMMT_ARGS(T));
template <class T> void checked_gemm3m(const rep& r, ZAR_L3_GEMM_ARGS(T));
template <class T> void checked_batch(const rep& r, ZAR_L3_GEMM_BATCH_ARGS(T));
template <class T> void checked_strided(const rep& r, ZAR_L3_GEMM_STRIDED_ARGS(T));

}  // namespace zar::core::l3
