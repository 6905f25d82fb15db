// Triangle updates on the GEMM engine: ?syrk, ?herk, ?syr2k, ?her2k and
// ?gemmt, each with its _in_thread body for the columns [first, last) of the
// referenced triangle (triangle.h describes the decomposition).
//
//   syrk   C := alpha A A^T + beta C            (trans 'T': A^T A)
//   herk   C := alpha A A^H + beta C, alpha and beta real  ('C': A^H A)
//   syr2k  C := alpha A B^T + alpha B A^T + beta C         ('T': A^T B, B^T A)
//   her2k  C := alpha A B^H + conj(alpha) B A^H + beta C   ('C': A^H B, B^H A)
//   gemmt  C := alpha op(A) op(B) + beta C
// The two-term updates add all of the first product's depth blocks, then
// all of the second's. herk and her2k store 0 in the imaginary parts of C's
// diagonal, as the reference BLAS does.
#include <type_traits>

#include "blas/level3/triangle.h"

namespace zar::l3 {
namespace {

// A real scalar of herk/her2k as the element type.
template <class T, class S> T as_elem(S x) {
  if constexpr (std::is_same_v<T, S>) return x;
  else return T{x, 0};
}

// b null: the one-term update with B = A.
template <class T>
void rank_update(const char* uplo, const char* trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
                 T beta, bool herm, T* c, int ldc, int first, int last) {
  const bool plain = opt_upper(trans) == 'N';
  const char conj_t = herm ? 'C' : 'T';
  const char ta = plain ? 'N' : conj_t, tb = plain ? conj_t : 'N';
  const term<T> terms[2] = {{ta, tb, alpha, a, lda, b ? b : a, b ? ldb : lda},
                            {ta, tb, herm ? gemm::conj(alpha) : alpha, b, ldb, a, lda}};
  triangle_update<T>(opt_upper(uplo), n, k, terms, b ? 2 : 1, beta, herm, c, ldc).columns(first, last);
}

// S is the type of the scalars given as reals (herk, her2k) or T.
template <class T, class S> void syrk(ZAR_L3_SYRK_ARGS(T, S), int first, int last) {
  rank_update<T>(uplo, trans, *n, *k, as_elem<T>(*alpha), a, *lda, nullptr, 0, as_elem<T>(*beta),
                 !std::is_same_v<T, S>, c, *ldc, first, last);
}

template <class T, class S> void syr2k(ZAR_L3_SYR2K_ARGS(T, S), int first, int last) {
  rank_update<T>(uplo, trans, *n, *k, *alpha, a, *lda, b, *ldb, as_elem<T>(*beta), !std::is_same_v<T, S>, c, *ldc,
                 first, last);
}

template <class T> void gemmt(ZAR_L3_GEMMT_ARGS(T), int first, int last) {
  // 'C' reads as 'T' for real data: a term only tells 'N' from the others.
  const term<T> t{opt_upper(transa), opt_upper(transb), *alpha, a, *lda, b, *ldb};
  triangle_update<T>(opt_upper(uplo), *n, *k, &t, 1, *beta, false, c, *ldc).columns(first, last);
}

}  // namespace
}  // namespace zar::l3

#define ZAR_L3_SYRK_NAMES uplo, trans, n, k, alpha, a, lda, beta, c, ldc
#define ZAR_L3_SYR2K_NAMES uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc
#define ZAR_L3_GEMMT_NAMES uplo, transa, transb, n, k, alpha, a, lda, b, ldb, beta, c, ldc

// The whole triangle and the per-thread body of one routine.
#define ZAR_L3_TRI_EXPORT(name, ARGS, fn, NAMES)                                                            \
  ZAR_EXPORT void ZAR_BLAS(name)(ARGS) { fn(NAMES, 0, *n); }                                                \
  ZAR_EXPORT void ZAR_BLAS(name##_in_thread)(ARGS, ZAR_L3_RANGE) { fn(NAMES, *first, *last); }

#define ZAR_L3_TRI_ALL(t, T, R)                                                                             \
  ZAR_L3_TRI_EXPORT(x##t##syrk, ZAR_L3_SYRK_ARGS(T, T), (zar::l3::syrk<T, T>), ZAR_L3_SYRK_NAMES)         \
  ZAR_L3_TRI_EXPORT(x##t##syr2k, ZAR_L3_SYR2K_ARGS(T, T), (zar::l3::syr2k<T, T>), ZAR_L3_SYR2K_NAMES)     \
  ZAR_L3_TRI_EXPORT(x##t##gemmt, ZAR_L3_GEMMT_ARGS(T), zar::l3::gemmt<T>, ZAR_L3_GEMMT_NAMES)
#define ZAR_L3_TRI_CPLX(t, T, R)                                                                            \
  ZAR_L3_TRI_EXPORT(x##t##herk, ZAR_L3_SYRK_ARGS(T, R), (zar::l3::syrk<T, R>), ZAR_L3_SYRK_NAMES)         \
  ZAR_L3_TRI_EXPORT(x##t##her2k, ZAR_L3_SYR2K_ARGS(T, R), (zar::l3::syr2k<T, R>), ZAR_L3_SYR2K_NAMES)

ZAR_L3_ALL(ZAR_L3_TRI_ALL)
ZAR_L3_CPLX(ZAR_L3_TRI_CPLX)
