// CBLAS Level-3 interfaces, both layouts.
//
// A row-major call is the column-major call on the transposed matrices, as
// the reference CBLAS maps it:
//   trsm, trmm, symm, hemm   side and uplo flip, M and N swap;
//   syrk, syr2k, herk, her2k uplo flips, NoTrans becomes T (C for the
//                            Hermitian ones) and T or C becomes N; her2k
//                            takes conj(alpha);
//   gemmt, gemm3m, batches   the operands A and B exchange places (and M, N),
//                            gemmt's uplo flips.
// The option values are checked first, in argument order, each reported
// with the reference's own message; then the mapped arguments go through the
// Fortran checks, which report through cblas_xerbla at the column-major
// position plus one. RowMajorStrg is 1 while a row-major call runs (an
// application's cblas_xerbla reads it to translate positions back) and
// CBLAS_CallFromC is 1 while any of these calls runs.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/src/blas/level3_front.h"
#include "zar/services.h"

extern "C" int RowMajorStrg;
extern "C" int CBLAS_CallFromC;

namespace zar::core::l3 {
namespace {

// The reference's messages for an illegal option value.
constexpr const char* bad_side = "Illegal Side setting, %d\n";
constexpr const char* bad_uplo = "Illegal Uplo setting, %d\n";
constexpr const char* bad_trans = "Illegal Trans setting, %d\n";
constexpr const char* bad_transa = "Illegal TransA setting, %d\n";
constexpr const char* bad_transb = "Illegal TransB setting, %d\n";
constexpr const char* bad_diag = "Illegal Diag setting, %d\n";

// One CBLAS call: its name, reporter and layout.
struct call {
  rep r;
  char rout[32];
  bool row = false;
  call(char t, const char* op) : r{t, op, true} { std::snprintf(rout, sizeof rout, "cblas_%c%s", t, op); }
  // Decodes an option: its letter, or 0 after reporting the value.
  char option(char letter, int pos, const char* form, int value) const {
    if (!letter) cblas_xerbla(pos, rout, form, value);
    return letter;
  }
};

// Runs f(call&) with the layout decoded and the reference's globals set.
template <class F> void with_layout(char t, const char* op, int layout, F f) {
  call c(t, op);
  CBLAS_CallFromC = 1;
  RowMajorStrg = 0;
  if (layout == CblasColMajor || layout == CblasRowMajor) {
    c.row = layout == CblasRowMajor;
    RowMajorStrg = c.row;
    f(c);
  } else {
    cblas_xerbla(1, c.rout, "Illegal layout setting, %d\n", layout);
  }
  RowMajorStrg = 0;
  CBLAS_CallFromC = 0;
}

// Option letters of the column-major call; 0 for a value outside the enum.
inline char side_of(int s, bool row) {
  return s == CblasLeft ? (row ? 'R' : 'L') : s == CblasRight ? (row ? 'L' : 'R') : 0;
}
inline char uplo_of(int u, bool row) {
  return u == CblasUpper ? (row ? 'L' : 'U') : u == CblasLower ? (row ? 'U' : 'L') : 0;
}
inline char trans_of(int t) { return t == CblasNoTrans ? 'N' : t == CblasTrans ? 'T' : t == CblasConjTrans ? 'C' : 0; }
inline char diag_of(int d) { return d == CblasNonUnit ? 'N' : d == CblasUnit ? 'U' : 0; }
// The rank updates in row-major: the transpose of the stored operand.
inline char rank_trans_of(int t, bool row, bool herm) {
  const char c = trans_of(t);
  if (!row || !c) return c;
  return c == 'N' ? (herm ? 'C' : 'T') : 'N';
}

template <class T> T conj_of(const T& a) {
  if constexpr (zar::is_complex_v<T>) return T{a.re, -a.im};
  else return a;
}

}  // namespace

template <class T, bool Solve> void cblas_trsm(char t, const char* op, int L, int S, int U, int TA, int D, int M, int N,
                                               const T* alpha, const T* A, int lda, T* B, int ldb) {
  with_layout(t, op, L, [&](const call& c) {
    char side, uplo, ta, diag;
    if (!(side = c.option(side_of(S, c.row), 2, bad_side, S))) return;
    if (!(uplo = c.option(uplo_of(U, c.row), 3, bad_uplo, U))) return;
    if (!(ta = c.option(trans_of(TA), 4, bad_trans, TA))) return;
    if (!(diag = c.option(diag_of(D), 5, bad_diag, D))) return;
    const int m = c.row ? N : M, n = c.row ? M : N;
    checked_trsm<T, Solve>(c.r, &side, &uplo, &ta, &diag, &m, &n, alpha, A, &lda, B, &ldb);
  });
}

template <class T, bool Herm> void cblas_symm(char t, const char* op, int L, int S, int U, int M, int N, const T* alpha,
                                              const T* A, int lda, const T* B, int ldb, const T* beta, T* C, int ldc) {
  with_layout(t, op, L, [&](const call& c) {
    char side, uplo;
    if (!(side = c.option(side_of(S, c.row), 2, bad_side, S))) return;
    if (!(uplo = c.option(uplo_of(U, c.row), 3, bad_uplo, U))) return;
    const int m = c.row ? N : M, n = c.row ? M : N;
    checked_symm<T, Herm>(c.r, &side, &uplo, &m, &n, alpha, A, &lda, B, &ldb, beta, C, &ldc);
  });
}

// syrk/herk (B null) and syr2k/her2k. An illegal uplo is the caller's
// argument 2 in either layout (the reference CBLAS says 3 for a row-major
// call, which names the wrong argument; see "Differences from the reference
// BLAS" in the README).
template <class T, class S> void cblas_rank(char t, const char* op, int L, int U, int TR, int N, int K, const T* alpha,
                                            const T* A, int lda, const T* B, int ldb, const S* beta, T* C, int ldc) {
  with_layout(t, op, L, [&](const call& c) {
    constexpr bool herm = herm_v<T, S>;
    char uplo, trans;
    if (!(uplo = c.option(uplo_of(U, c.row), 2, bad_uplo, U))) return;
    if (!(trans = c.option(rank_trans_of(TR, c.row, herm), 3, bad_trans, TR))) return;
    if (B) {
      const T al = herm && c.row ? conj_of(*alpha) : *alpha;
      checked_syr2k<T, S>(c.r, &uplo, &trans, &N, &K, &al, A, &lda, B, &ldb, beta, C, &ldc);
    } else {
      // herk's alpha is real: S is its type
      checked_syrk<T, S>(c.r, &uplo, &trans, &N, &K, reinterpret_cast<const S*>(alpha), A, &lda, beta, C, &ldc);
    }
  });
}

template <class T> void cblas_gemmt(char t, int L, int U, int TA, int TB, int N, int K, const T* alpha, const T* A,
                                    int lda, const T* B, int ldb, const T* beta, T* C, int ldc) {
  with_layout(t, "gemmt", L, [&](const call& c) {
    char uplo, ta, tb;
    if (!(uplo = c.option(uplo_of(U, c.row), 2, bad_uplo, U))) return;
    if (!(ta = c.option(trans_of(TA), 3, bad_transa, TA))) return;
    if (!(tb = c.option(trans_of(TB), 4, bad_transb, TB))) return;
    if (c.row) checked_gemmt<T>(c.r, &uplo, &tb, &ta, &N, &K, alpha, B, &ldb, A, &lda, beta, C, &ldc);
    else checked_gemmt<T>(c.r, &uplo, &ta, &tb, &N, &K, alpha, A, &lda, B, &ldb, beta, C, &ldc);
  });
}

template <class T> void cblas_gemm3m(char t, int L, int TA, int TB, int M, int N, int K, const T* alpha, const T* A,
                                     int lda, const T* B, int ldb, const T* beta, T* C, int ldc) {
  with_layout(t, "gemm3m", L, [&](const call& c) {
    char ta, tb;
    if (!(ta = c.option(trans_of(TA), 2, bad_transa, TA))) return;
    if (!(tb = c.option(trans_of(TB), 3, bad_transb, TB))) return;
    if (c.row) checked_gemm3m<T>(c.r, &tb, &ta, &N, &M, &K, alpha, B, &ldb, A, &lda, beta, C, &ldc);
    else checked_gemm3m<T>(c.r, &ta, &tb, &M, &N, &K, alpha, A, &lda, B, &ldb, beta, C, &ldc);
  });
}

template <class T> void cblas_strided(char t, int L, int TA, int TB, int M, int N, int K, const T* alpha, const T* A,
                                      int lda, int sa, const T* B, int ldb, int sb, const T* beta, T* C, int ldc,
                                      int sc, int count) {
  with_layout(t, "gemm_batch_strided", L, [&](const call& c) {
    char ta, tb;
    if (!(ta = c.option(trans_of(TA), 2, bad_transa, TA))) return;
    if (!(tb = c.option(trans_of(TB), 3, bad_transb, TB))) return;
    if (c.row)
      checked_strided<T>(c.r, &tb, &ta, &N, &M, &K, alpha, B, &ldb, &sb, A, &lda, &sa, beta, C, &ldc, &sc, &count);
    else checked_strided<T>(c.r, &ta, &tb, &M, &N, &K, alpha, A, &lda, &sa, B, &ldb, &sb, beta, C, &ldc, &sc, &count);
  });
}

// The option arrays of a batch are decoded into letters group by group; an
// illegal value is reported with the group's first one.
template <class T> void cblas_batch(char t, int L, const int* TA, const int* TB, const int* M, const int* N,
                                    const int* K, const T* alpha, const T** A, const int* lda, const T** B,
                                    const int* ldb, const T* beta, T** C, const int* ldc, int groups,
                                    const int* sizes) {
  with_layout(t, "gemm_batch", L, [&](const call& c) {
    const int g_count = std::max(groups, 0);
    char* letters = static_cast<char*>(std::malloc(2 * static_cast<size_t>(g_count) + 2));
    if (!letters) {
      zar_serv_check_ptr_and_warn(nullptr, c.rout);
      return;
    }
    char *ta = letters, *tb = letters + g_count + 1;
    bool legal = true;
    for (int g = 0; g < g_count && legal; ++g)
      legal = (ta[g] = c.option(trans_of(TA[g]), 2, bad_transa, TA[g])) &&
              (tb[g] = c.option(trans_of(TB[g]), 3, bad_transb, TB[g]));
    if (legal) {
      if (c.row) checked_batch<T>(c.r, tb, ta, N, M, K, alpha, B, ldb, A, lda, beta, C, ldc, &groups, sizes);
      else checked_batch<T>(c.r, ta, tb, M, N, K, alpha, A, lda, B, ldb, beta, C, ldc, &groups, sizes);
    }
    std::free(letters);
  });
}

}  // namespace zar::core::l3

using namespace zar::core::l3;

// The value of an option argument as an int: programs may pass values outside
// the enumeration (the reference tests do), which an enum-typed load must not
// see.
template <class E> inline int ev(const E& e) {
  int v;
  std::memcpy(&v, &e, sizeof v);
  return v;
}

// ---- exported names. S: a scalar as passed (by value for real data, by
// address for complex), P(T, s): its address; V the published data type.
#define ZAR_L3C_VAL(T, s) (&s)
#define ZAR_L3C_PTR(T, s) (static_cast<const T*>(s))
using CL = CBLAS_LAYOUT;
using CT = CBLAS_TRANSPOSE;
using CU = CBLAS_UPLO;
using CS = CBLAS_SIDE;
using CD = CBLAS_DIAG;

#define ZAR_L3C_TRI(t, T, S, P, V, op, solve)                                                                         \
  ZAR_API void cblas_##t##op(CL L, CS Sd, CU U, CT TA, CD D, const int M, const int N, S alpha, const V* A,           \
                             const int lda, V* B, const int ldb) {                                                    \
    cblas_trsm<T, solve>(#t[0], #op, ev(L), ev(Sd), ev(U), ev(TA), ev(D), M, N, P(T, alpha), (const T*)A, lda, (T*)B, \
                         ldb);                                                                                        \
  }
#define ZAR_L3C_SYMM(t, T, S, P, V, op, herm)                                                                    \
  ZAR_API void cblas_##t##op(CL L, CS Sd, CU U, const int M, const int N, S alpha, const V* A, const int lda,    \
                             const V* B, const int ldb, S beta, V* C, const int ldc) {                           \
    cblas_symm<T, herm>(#t[0], #op, ev(L), ev(Sd), ev(U), M, N, P(T, alpha), (const T*)A, lda, (const T*)B, ldb, \
                        P(T, beta), (T*)C, ldc);                                                                 \
  }
// SK: the scalar type of the update (T or the real type), SA/SB alpha and
// beta as passed, PA/PB their addresses
#define ZAR_L3C_RK(t, T, SK, SA, PA, SB, PB, V, op)                                                                  \
  ZAR_API void cblas_##t##op(CL L, CU U, CT TR, const int N, const int K, SA alpha, const V* A, const int lda,       \
                             SB beta, V* C, const int ldc) {                                                         \
    cblas_rank<T, SK>(#t[0], #op, ev(L), ev(U), ev(TR), N, K, (const T*)PA(SK, alpha), (const T*)A, lda, nullptr, 0, \
                      PB(SK, beta), (T*)C, ldc);                                                                     \
  }
#define ZAR_L3C_R2K(t, T, SK, SA, PA, SB, PB, V, op)                                                            \
  ZAR_API void cblas_##t##op(CL L, CU U, CT TR, const int N, const int K, SA alpha, const V* A, const int lda,  \
                             const V* B, const int ldb, SB beta, V* C, const int ldc) {                         \
    cblas_rank<T, SK>(#t[0], #op, ev(L), ev(U), ev(TR), N, K, PA(T, alpha), (const T*)A, lda, (const T*)B, ldb, \
                      PB(SK, beta), (T*)C, ldc);                                                                \
  }
#define ZAR_L3C_GEMMT(t, T, S, P, V)                                                                           \
  ZAR_API void cblas_##t##gemmt(CL L, CU U, CT TA, CT TB, const int N, const int K, S alpha, const V* A,       \
                                const int lda, const V* B, const int ldb, S beta, V* C, const int ldc) {       \
    cblas_gemmt<T>(#t[0], ev(L), ev(U), ev(TA), ev(TB), N, K, P(T, alpha), (const T*)A, lda, (const T*)B, ldb, \
                   P(T, beta), (T*)C, ldc);                                                                    \
  }
#define ZAR_L3C_BATCH(t, T, S, P, V)                                                                                 \
  ZAR_API void cblas_##t##gemm_batch(CL L, const CT* TA, const CT* TB, const int* M, const int* N, const int* K,     \
                                     const V* alpha, const V** A, const int* lda, const V** B, const int* ldb,       \
                                     const V* beta, V** C, const int* ldc, const int groups, const int* sizes) {     \
    static_assert(sizeof(CT) == sizeof(int));                                                                        \
    cblas_batch<T>(#t[0], ev(L), (const int*)TA, (const int*)TB, M, N, K, (const T*)alpha, (const T**)A, lda,        \
                   (const T**)B, ldb, (const T*)beta, (T**)C, ldc, groups, sizes);                                   \
  }                                                                                                                  \
  ZAR_API void cblas_##t##gemm_batch_strided(                                                                        \
      CL L, CT TA, CT TB, const int M, const int N, const int K, S alpha, const V* A, const int lda, const int sa,   \
      const V* B, const int ldb, const int sb, S beta, V* C, const int ldc, const int sc, const int count) {         \
    cblas_strided<T>(#t[0], ev(L), ev(TA), ev(TB), M, N, K, P(T, alpha), (const T*)A, lda, sa, (const T*)B, ldb, sb, \
                     P(T, beta), (T*)C, ldc, sc, count);                                                             \
  }

#define ZAR_L3C_ALL(t, T, S, P, V)           \
  ZAR_L3C_TRI(t, T, S, P, V, trsm, true)     \
  ZAR_L3C_TRI(t, T, S, P, V, trmm, false)    \
  ZAR_L3C_SYMM(t, T, S, P, V, symm, false)   \
  ZAR_L3C_RK(t, T, T, S, P, S, P, V, syrk)   \
  ZAR_L3C_R2K(t, T, T, S, P, S, P, V, syr2k) \
  ZAR_L3C_GEMMT(t, T, S, P, V)               \
  ZAR_L3C_BATCH(t, T, S, P, V)
#define ZAR_L3C_REAL(t, T, R) ZAR_L3C_ALL(t, T, const T, ZAR_L3C_VAL, T)
#define ZAR_L3C_CPLX(t, T, R)                                                                                   \
  ZAR_L3C_ALL(t, T, const void*, ZAR_L3C_PTR, void)                                                             \
  ZAR_L3C_SYMM(t, T, const void*, ZAR_L3C_PTR, void, hemm, true)                                                \
  ZAR_L3C_RK(t, T, R, const R, ZAR_L3C_VAL, const R, ZAR_L3C_VAL, void, herk)                                   \
  ZAR_L3C_R2K(t, T, R, const void*, ZAR_L3C_PTR, const R, ZAR_L3C_VAL, void, her2k)                             \
  ZAR_API void cblas_##t##gemm3m(CL L, CT TA, CT TB, const int M, const int N, const int K, const void* alpha,  \
                                 const void* A, const int lda, const void* B, const int ldb, const void* beta,  \
                                 void* C, const int ldc) {                                                      \
    cblas_gemm3m<T>(#t[0], ev(L), ev(TA), ev(TB), M, N, K, (const T*)alpha, (const T*)A, lda, (const T*)B, ldb, \
                    (const T*)beta, (T*)C, ldc);                                                                \
  }
ZAR_L3_REAL(ZAR_L3C_REAL)
ZAR_L3_CPLX(ZAR_L3C_CPLX)
