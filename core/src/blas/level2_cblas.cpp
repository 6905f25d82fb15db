// CBLAS Level-2 interfaces, both layouts.
//
// Row-major calls are mapped onto the column-major kernels as the reference
// CBLAS maps them: the row-major matrix is the transposed column-major one,
// so trans N <-> T and uplo U <-> L swap, dimensions (and band widths) swap,
// and ger exchanges x and y. A conjugate transpose of row-major data becomes
// a no-transpose product of conjugated data: x (and y) are conjugated around
// the call, or copied conjugated when they are read-only. The argument checks
// then run on the mapped arguments, so cblas_xerbla receives the positions
// the reference CBLAS reports (its row-major positions included).
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/src/blas/level2_front.h"

extern "C" int RowMajorStrg;

namespace zar::core::l2 {
namespace {

struct crep : rep {
  // an illegal option value, reported at its own position with the
  // reference CBLAS's message ("Illegal Uplo setting, 0")
  void option(int pos, const char* what, int value) const {
    char name[24], form[48];
    std::snprintf(name, sizeof name, "cblas_%c%s", t, op);
    std::snprintf(form, sizeof form, "Illegal %s setting, %%d\n", what);
    cblas_xerbla(pos, name, form, value);
  }
};

// Runs f(row_major) with RowMajorStrg set as the reference CBLAS sets it.
template <class F> void with_layout(const crep& r, int layout, F f) {
  RowMajorStrg = 0;
  if (layout == CblasColMajor) f(false);
  else if (layout == CblasRowMajor) {
    RowMajorStrg = 1;
    f(true);
  } else r.option(1, "layout", layout);
  RowMajorStrg = 0;
}

inline char trans_of(int t, bool row) {
  if (t == CblasNoTrans) return row ? 'T' : 'N';
  if (t == CblasTrans) return row ? 'N' : 'T';
  if (t == CblasConjTrans) return row ? 'N' : 'C';
  return 0;
}
inline char uplo_of(int u, bool row) {
  if (u == CblasUpper) return row ? 'L' : 'U';
  if (u == CblasLower) return row ? 'U' : 'L';
  return 0;
}
inline char diag_of(int d) { return d == CblasNonUnit ? 'N' : d == CblasUnit ? 'U' : 0; }

// ---- conjugation helpers (complex data only)
template <class T> void conj_in_place(int n, T* x, int inc) {
  const long long s = inc < 0 ? -static_cast<long long>(inc) : inc;
  for (int i = 0; i < n; ++i) zar::offset(x, i * s)->im = -zar::offset(x, i * s)->im;
}
// The conjugated copy of a vector, contiguous in the vector's element order;
// null (after a warning) when no memory is left.
template <class T> T* conj_copy(int n, const T* x, int inc, const char* name) {
  T* c = static_cast<T*>(std::malloc(sizeof(T) * std::max(1, n)));
  if (!c) {
    zar_serv_check_ptr_and_warn(nullptr, name);
    return nullptr;
  }
  const T* x0 = zar::offset(x, zar::vec_start(n, inc));
  for (int i = 0; i < n; ++i) {
    const T v = *zar::offset(x0, static_cast<long long>(i) * inc);
    c[i] = T{v.re, -v.im};
  }
  return c;
}
template <class T> T conj_of(const T* a) { return T{a->re, -a->im}; }

// y := alpha*conj(B)*x + beta*y through the column-major no-transpose call
// f(alpha', xcopy, beta'): conj(y) = conj(alpha)*B*conj(x) + conj(beta)*conj(y).
template <class T, class F>
void conj_product(const crep& r, int xlen, const T* x, int incx, const T* alpha, const T* beta, int ylen, T* y,
                  int incy, F f) {
  const char* name = "CBLAS_LEVEL2";
  T* xc = xlen > 0 ? conj_copy(xlen, x, incx, name) : nullptr;
  if (xlen > 0 && !xc) return;
  const T ca = conj_of(alpha), cb = conj_of(beta);
  if (ylen > 0) conj_in_place(ylen, y, incy);
  f(&ca, xc ? xc : x, xc ? 1 : incx, &cb);
  if (ylen > 0) conj_in_place(ylen, y, incy);
  std::free(xc);
}

// ---- the interfaces as templates on the element type
template <class T>
void gemv(char t, int L, int TA, int M, int N, const T* alpha, const T* A, int lda, const T* X,
          int incX, const T* beta, T* Y, int incY) {
  const crep r{{t, "gemv", true}};
  with_layout(r, L, [&](bool row) {
    char ta = trans_of(TA, row);
    if (!ta) return r.option(2, "TransA", TA);
    const int mm = row ? N : M, nn = row ? M : N;
    if (!ok_gemv(r, &ta, mm, nn, lda, incX, incY)) return;
    if (zar::is_complex_v<T> && row && TA == CblasConjTrans) {
      if constexpr (zar::is_complex_v<T>)
        conj_product(r, nn, X, incX, alpha, beta, mm, Y, incY, [&](const T* a2, const T* x2, int ix, const T* b2) {
          run_gemv<T>(&ta, &mm, &nn, a2, A, &lda, x2, &ix, b2, Y, &incY);
        });
      return;
    }
    run_gemv<T>(&ta, &mm, &nn, alpha, A, &lda, X, &incX, beta, Y, &incY);
  });
}

template <class T>
void gbmv(char t, int L, int TA, int M, int N, int KL, int KU, const T* alpha, const T* A,
          int lda, const T* X, int incX, const T* beta, T* Y, int incY) {
  const crep r{{t, "gbmv", true}};
  with_layout(r, L, [&](bool row) {
    char ta = trans_of(TA, row);
    if (!ta) return r.option(2, "TransA", TA);
    const int mm = row ? N : M, nn = row ? M : N, kl = row ? KU : KL, ku = row ? KL : KU;
    if (!ok_gbmv(r, &ta, mm, nn, kl, ku, lda, incX, incY)) return;
    const auto k = kern<T>::gbmv();
    if (zar::is_complex_v<T> && row && TA == CblasConjTrans) {
      if constexpr (zar::is_complex_v<T>)
        conj_product(r, nn, X, incX, alpha, beta, mm, Y, incY, [&](const T* a2, const T* x2, int ix, const T* b2) {
          k(&ta, &mm, &nn, &kl, &ku, a2, A, &lda, x2, &ix, b2, Y, &incY);
        });
      return;
    }
    k(&ta, &mm, &nn, &kl, &ku, alpha, A, &lda, X, &incX, beta, Y, &incY);
  });
}

// symv/hemv (band k < 0, packed lda < 0 select the storage)
enum class store { full, band, packed };
template <class T, store S>
void symv(char t, const char* op, int L, int U, int N, int K, const T* alpha, const T* A, int lda,
          const T* X, int incX, const T* beta, T* Y, int incY) {
  const crep r{{t, op, true}};
  with_layout(r, L, [&](bool row) {
    char ul = uplo_of(U, row);
    if (!ul) return r.option(2, "Uplo", U);
    if constexpr (S == store::full) {
      if (!ok_symv(r, &ul, N, lda, incX, incY)) return;
    } else if constexpr (S == store::band) {
      if (!ok_sbmv(r, &ul, N, K, lda, incX, incY)) return;
    } else {
      if (!ok_spmv(r, &ul, N, incX, incY)) return;
    }
    auto call = [&](const T* a2, const T* x2, int ix, const T* b2) {
      if constexpr (S == store::full) kern<T>::symv()(&ul, &N, a2, A, &lda, x2, &ix, b2, Y, &incY);
      else if constexpr (S == store::band) kern<T>::sbmv()(&ul, &N, &K, a2, A, &lda, x2, &ix, b2, Y, &incY);
      else kern<T>::spmv()(&ul, &N, a2, A, x2, &ix, b2, Y, &incY);
    };
    // Hermitian row-major data are the conjugate of the column-major view
    if constexpr (zar::is_complex_v<T>) {
      if (row) return conj_product(r, N, X, incX, alpha, beta, N, Y, incY, call);
    }
    call(alpha, X, incX, beta);
  });
}

// trmv, trsv, tbmv, tbsv, tpmv, tpsv
enum class tri { trmv, trsv, tbmv, tbsv, tpmv, tpsv };
template <class T, tri W>
void triangular(char t, const char* op, int L, int U, int TA, int D, int N, int K,
                const T* A, int lda, T* X, int incX) {
  const crep r{{t, op, true}};
  with_layout(r, L, [&](bool row) {
    char ul = uplo_of(U, row);
    if (!ul) return r.option(2, "Uplo", U);
    char ta = trans_of(TA, row);
    if (!ta) return r.option(3, "TransA", TA);
    char dg = diag_of(D);
    if (!dg) return r.option(4, "Diag", D);
    constexpr bool band = W == tri::tbmv || W == tri::tbsv, packed = W == tri::tpmv || W == tri::tpsv;
    if (!ok_tri(r, &ul, &ta, &dg, N, K, lda, incX, band, packed)) return;
    const bool conj = zar::is_complex_v<T> && row && TA == CblasConjTrans;
    if (conj) {
      if constexpr (zar::is_complex_v<T>) conj_in_place(N, X, incX);
    }
    if constexpr (W == tri::trmv) run_trmv<T>(&ul, &ta, &dg, &N, A, &lda, X, &incX);
    if constexpr (W == tri::trsv) kern<T>::trsv()(&ul, &ta, &dg, &N, A, &lda, X, &incX);
    if constexpr (W == tri::tbmv) kern<T>::tbmv()(&ul, &ta, &dg, &N, &K, A, &lda, X, &incX);
    if constexpr (W == tri::tbsv) kern<T>::tbsv()(&ul, &ta, &dg, &N, &K, A, &lda, X, &incX);
    if constexpr (W == tri::tpmv) kern<T>::tpmv()(&ul, &ta, &dg, &N, A, X, &incX);
    if constexpr (W == tri::tpsv) kern<T>::tpsv()(&ul, &ta, &dg, &N, A, X, &incX);
    if (conj) {
      if constexpr (zar::is_complex_v<T>) conj_in_place(N, X, incX);
    }
  });
}

template <class T>
void ger(char t, const char* op, bool conj, int L, int M, int N, const T* alpha, const T* X, int incX,
         const T* Y, int incY, T* A, int lda) {
  const crep r{{t, op, true}};
  with_layout(r, L, [&](bool row) {
    if (!row) {
      if (ok_ger(r, M, N, incX, incY, lda)) run_ger<T>(&M, &N, alpha, X, &incX, Y, &incY, A, &lda, conj);
      return;
    }
    if (!ok_ger(r, N, M, incY, incX, lda)) return;
    // A^T += alpha*op(y)*x^T: an unconjugated update with y conjugated for gerc
    if (zar::is_complex_v<T> && conj && N > 0) {
      if constexpr (zar::is_complex_v<T>) {
        T* yc = conj_copy(N, Y, incY, "CBLAS_GERC");
        if (!yc) return;
        const int one = 1;
        run_ger<T>(&N, &M, alpha, yc, &one, X, &incX, A, &lda, false);
        std::free(yc);
      }
      return;
    }
    run_ger<T>(&N, &M, alpha, Y, &incY, X, &incX, A, &lda, false);
  });
}

// syr/her (packed: spr/hpr)
template <class T, bool Packed>
void syr(char t, const char* op, int L, int U, int N, scal_t<T> alpha, const T* X, int incX, T* A,
         int lda) {
  const crep r{{t, op, true}};
  with_layout(r, L, [&](bool row) {
    char ul = uplo_of(U, row);
    if (!ul) return r.option(2, "Uplo", U);
    if (!ok_syr(r, &ul, N, incX, 1, lda, false, Packed)) return;
    const T* x = X;
    int ix = incX;
    T* xc = nullptr;
    if constexpr (zar::is_complex_v<T>) {
      if (row && N > 0) {
        if (!(xc = conj_copy(N, X, incX, "CBLAS_HER"))) return;
        x = xc, ix = 1;
      }
    }
    if constexpr (Packed) kern<T>::spr()(&ul, &N, &alpha, x, &ix, A);
    else run_syr<T>(&ul, &N, &alpha, x, &ix, A, &lda);
    std::free(xc);
  });
}

// syr2/her2 (packed: spr2/hpr2)
template <class T, bool Packed>
void syr2(char t, const char* op, int L, int U, int N, const T* alpha, const T* X, int incX,
          const T* Y, int incY, T* A, int lda) {
  const crep r{{t, op, true}};
  with_layout(r, L, [&](bool row) {
    char ul = uplo_of(U, row);
    if (!ul) return r.option(2, "Uplo", U);
    const bool herm_row = zar::is_complex_v<T> && row;
    // Hermitian row-major: conj(y) and conj(x) exchange places
    const T* x = herm_row ? Y : X;
    const T* y = herm_row ? X : Y;
    int ix = herm_row ? incY : incX, iy = herm_row ? incX : incY;
    if (!ok_syr(r, &ul, N, ix, iy, lda, true, Packed)) return;
    T *xc = nullptr, *yc = nullptr;
    if constexpr (zar::is_complex_v<T>) {
      if (herm_row && N > 0) {
        xc = conj_copy(N, x, ix, "CBLAS_HER2");
        yc = xc ? conj_copy(N, y, iy, "CBLAS_HER2") : nullptr;
        if (!yc) return std::free(xc);
        x = xc, y = yc, ix = iy = 1;
      }
    }
    if constexpr (Packed) kern<T>::spr2()(&ul, &N, alpha, x, &ix, y, &iy, A);
    else run_syr2<T>(&ul, &N, alpha, x, &ix, y, &iy, A, &lda);
    std::free(xc);
    std::free(yc);
  });
}

}  // namespace
}  // namespace zar::core::l2

using namespace zar::core::l2;
using zar::c32;

// The value of an option argument as an int: programs may pass values outside
// the enumeration (the reference tests do), which an enum-typed load must not see.
template <class E> inline int ev(const E& e) {
  int v;
  std::memcpy(&v, &e, sizeof v);
  return v;
}
using zar::c64;

// ---- exported names. S: the scalar as passed (value for real data, pointer
// for complex), P(a): its address as the templates take it.
#define ZAR_L2_C_ALL(t, T, S, P, V)                                                                                   \
  ZAR_API void cblas_##t##gemv(CBLAS_LAYOUT L, CBLAS_TRANSPOSE TA, const int M, const int N, S alpha, const V* A,     \
                               const int lda, const V* X, const int incX, S beta, V* Y, const int incY) {             \
    gemv<T>(#t[0], ev(L), ev(TA), M, N, P(T, alpha), (const T*)A, lda, (const T*)X, incX, P(T, beta), (T*)Y, incY);   \
  }                                                                                                                   \
  ZAR_API void cblas_##t##gbmv(CBLAS_LAYOUT L, CBLAS_TRANSPOSE TA, const int M, const int N, const int KL,            \
                               const int KU, S alpha, const V* A, const int lda, const V* X, const int incX,          \
                               S beta, V* Y, const int incY) {                                                        \
    gbmv<T>(#t[0], ev(L), ev(TA), M, N, KL, KU, P(T, alpha), (const T*)A, lda, (const T*)X, incX, P(T, beta), (T*)Y, incY); \
  }                                                                                                                   \
  ZAR_API void cblas_##t##trmv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const V* A, const int lda, V* X, const int incX) {                                     \
    triangular<T, tri::trmv>(#t[0], "trmv", ev(L), ev(U), ev(TA), ev(D), N, -1, (const T*)A, lda, (T*)X, incX);       \
  }                                                                                                                   \
  ZAR_API void cblas_##t##trsv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const V* A, const int lda, V* X, const int incX) {                                     \
    triangular<T, tri::trsv>(#t[0], "trsv", ev(L), ev(U), ev(TA), ev(D), N, -1, (const T*)A, lda, (T*)X, incX);       \
  }                                                                                                                   \
  ZAR_API void cblas_##t##tbmv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const int K, const V* A, const int lda, V* X, const int incX) {                        \
    triangular<T, tri::tbmv>(#t[0], "tbmv", ev(L), ev(U), ev(TA), ev(D), N, K, (const T*)A, lda, (T*)X, incX);        \
  }                                                                                                                   \
  ZAR_API void cblas_##t##tbsv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const int K, const V* A, const int lda, V* X, const int incX) {                        \
    triangular<T, tri::tbsv>(#t[0], "tbsv", ev(L), ev(U), ev(TA), ev(D), N, K, (const T*)A, lda, (T*)X, incX);        \
  }                                                                                                                   \
  ZAR_API void cblas_##t##tpmv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const V* Ap, V* X, const int incX) {                                                   \
    triangular<T, tri::tpmv>(#t[0], "tpmv", ev(L), ev(U), ev(TA), ev(D), N, -1, (const T*)Ap, -1, (T*)X, incX);       \
  }                                                                                                                   \
  ZAR_API void cblas_##t##tpsv(CBLAS_LAYOUT L, CBLAS_UPLO U, CBLAS_TRANSPOSE TA, CBLAS_DIAG D, const int N,           \
                               const V* Ap, V* X, const int incX) {                                                   \
    triangular<T, tri::tpsv>(#t[0], "tpsv", ev(L), ev(U), ev(TA), ev(D), N, -1, (const T*)Ap, -1, (T*)X, incX);       \
  }

// symmetric/Hermitian members: sy = sy/he, pk = s/h; R1 the scalar of syr/her
#define ZAR_L2_C_SYM(t, T, S, P, V, sy, pk, R1)                                                                       \
  ZAR_API void cblas_##t##sy##mv(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, S alpha, const V* A, const int lda,       \
                                 const V* X, const int incX, S beta, V* Y, const int incY) {                          \
    symv<T, store::full>(#t[0], #sy "mv", ev(L), ev(U), N, -1, P(T, alpha), (const T*)A, lda, (const T*)X, incX, P(T, beta), \
                         (T*)Y, incY);                                                                                \
  }                                                                                                                   \
  ZAR_API void cblas_##t##pk##bmv(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, const int K, S alpha, const V* A,        \
                                  const int lda, const V* X, const int incX, S beta, V* Y, const int incY) {          \
    symv<T, store::band>(#t[0], #pk "bmv", ev(L), ev(U), N, K, P(T, alpha), (const T*)A, lda, (const T*)X, incX, P(T, beta), \
                         (T*)Y, incY);                                                                                \
  }                                                                                                                   \
  ZAR_API void cblas_##t##pk##pmv(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, S alpha, const V* Ap, const V* X,        \
                                  const int incX, S beta, V* Y, const int incY) {                                     \
    symv<T, store::packed>(#t[0], #pk "pmv", ev(L), ev(U), N, -1, P(T, alpha), (const T*)Ap, -1, (const T*)X, incX,   \
                           P(T, beta), (T*)Y, incY);                                                                  \
  }                                                                                                                   \
  ZAR_API void cblas_##t##sy##r(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, const R1 alpha, const V* X,                \
                                const int incX, V* A, const int lda) {                                                \
    syr<T, false>(#t[0], #sy "r", ev(L), ev(U), N, alpha, (const T*)X, incX, (T*)A, lda);                             \
  }                                                                                                                   \
  ZAR_API void cblas_##t##pk##pr(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, const R1 alpha, const V* X,               \
                                 const int incX, V* Ap) {                                                             \
    syr<T, true>(#t[0], #pk "pr", ev(L), ev(U), N, alpha, (const T*)X, incX, (T*)Ap, -1);                             \
  }                                                                                                                   \
  ZAR_API void cblas_##t##sy##r2(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, S alpha, const V* X, const int incX,      \
                                 const V* Y, const int incY, V* A, const int lda) {                                   \
    syr2<T, false>(#t[0], #sy "r2", ev(L), ev(U), N, P(T, alpha), (const T*)X, incX, (const T*)Y, incY, (T*)A, lda);  \
  }                                                                                                                   \
  ZAR_API void cblas_##t##pk##pr2(CBLAS_LAYOUT L, CBLAS_UPLO U, const int N, S alpha, const V* X, const int incX,     \
                                  const V* Y, const int incY, V* Ap) {                                                \
    syr2<T, true>(#t[0], #pk "pr2", ev(L), ev(U), N, P(T, alpha), (const T*)X, incX, (const T*)Y, incY, (T*)Ap, -1);  \
  }

#define ZAR_L2_C_GER(t, T, S, P, V, name, conj)                                                                       \
  ZAR_API void cblas_##t##name(CBLAS_LAYOUT L, const int M, const int N, S alpha, const V* X, const int incX,         \
                               const V* Y, const int incY, V* A, const int lda) {                                     \
    ger<T>(#t[0], #name, conj, ev(L), M, N, P(T, alpha), (const T*)X, incX, (const T*)Y, incY, (T*)A, lda);           \
  }

#define ZAR_L2_ADDR(T, a) (&a)
#define ZAR_L2_PTR(T, a) (static_cast<const T*>(a))
#define ZAR_L2_C_REAL(t, T, R)                                                                                        \
  ZAR_L2_C_ALL(t, T, const T, ZAR_L2_ADDR, T)                                                                         \
  ZAR_L2_C_SYM(t, T, const T, ZAR_L2_ADDR, T, sy, s, T)                                                               \
  ZAR_L2_C_GER(t, T, const T, ZAR_L2_ADDR, T, ger, false)
#define ZAR_L2_C_CPLX(t, T, R)                                                                                        \
  ZAR_L2_C_ALL(t, T, const void*, ZAR_L2_PTR, void)                                                                   \
  ZAR_L2_C_SYM(t, T, const void*, ZAR_L2_PTR, void, he, h, R)                                                         \
  ZAR_L2_C_GER(t, T, const void*, ZAR_L2_PTR, void, geru, false)                                                      \
  ZAR_L2_C_GER(t, T, const void*, ZAR_L2_PTR, void, gerc, true)
ZAR_L2_REAL(ZAR_L2_C_REAL)
ZAR_L2_CPLX(ZAR_L2_C_CPLX)
