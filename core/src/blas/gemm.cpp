// GEMM front ends: Fortran sgemm_ .. zgemm_, cblas_?gemm in both layouts, and
// the dispatching front end zar_blas_?gemm (also called back by kernels).
//
// The Fortran and CBLAS entries check the arguments as the published
// interfaces do, report an illegal one through xerbla_ (cblas_xerbla for
// CBLAS, with the reference CBLAS positions) and take the published quick
// returns. zar_blas_?gemm then runs the kernel library's x?gemm on one
// thread, or, for large enough products with more than one thread, splits C
// into disjoint column (or row) blocks, one per thread, each computed by
// x?gemm_par with the default schedule. The split only decides which thread
// computes an element, never the order in which its sum is formed, so a
// threaded result has the same bits as a one-thread one.

#include "zar/gemm.h"
#include "cblas.h"
#include "core.h"
#include "zar/blas.h"

// Set by the core while a row-major CBLAS call runs (xerbla.cpp).
extern "C" int RowMajorStrg;

namespace zar::core {
namespace {

using zar::gemm::desc;

// The kernel entries one type's front end uses.
template <class T> struct gemm_entry {
  void (*xgemm)(const char*, const char*, const int*, const int*, const int*, const T*, const T*, const int*,
                const T*, const int*, const T*, T*, const int*);
  int (*par)(const char*, const char*, const int*, const int*, const int*, const T*, const T*, const int*,
             const T*, const int*, const T*, T*, const int*, const int*, desc<T>*);
  void (*zero_desc)(desc<T>*);
  void (*optimal)(desc<T>*);
  void (*mscale)(const int*, const int*, const T*, T*, const int*);
};
template <class T> gemm_entry<T> entries();
#define ZAR_GEMM_ENTRIES(t, T)                                                                               \
  template <> gemm_entry<T> entries<T>() {                                                                    \
    return {ZAR_KERNEL(zar_blas_avx_x##t##gemm), ZAR_KERNEL(zar_blas_avx_x##t##gemm_par),                      \
            ZAR_KERNEL(zar_blas_avx_##t##gemm_zero_desc), ZAR_KERNEL(zar_blas_avx_##t##gemm_get_optimal_kernel), \
            ZAR_KERNEL(zar_blas_avx_##t##gemm_mscale)};                                                       \
  }
ZAR_GEMM_TYPES(ZAR_GEMM_ENTRIES)

// Products below this many real multiply-adds (four per complex one) stay on
// one thread: waking a second thread costs about as much as the work it saves.
constexpr double threaded_min_work = 4.0 * 1024 * 1024;

constexpr int imin(int a, int b) { return a < b ? a : b; }
constexpr int imax(int a, int b) { return a > b ? a : b; }

// The register block (mr x nr) of the kernel the kernel library picks for
// this processor, read from its record once.
template <class T> const desc<T>& optimal_kernel(const gemm_entry<T>& e) {
  static const desc<T> d = [&] {
    desc<T> r;
    e.zero_desc(&r);
    e.optimal(&r);
    return r;
  }();
  return d;
}

template <class T>
void dispatch(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
              const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc) {
  using namespace zar::gemm;
  const gemm_entry<T> e = entries<T>();
  const int nt = max_threads();
  const double work = static_cast<double>(*m) * *n * *k * (is_complex_v<T> ? 4 : 1);
  // Split the longer side of C in nr (or mr) multiples, at least two
  // register blocks per thread.
  const bool by_cols = *n >= *m;
  const desc<T>& ker = optimal_kernel(e);
  const int unit = imax(1, by_cols ? ker.nr : ker.mr);
  const int len = by_cols ? *n : *m;
  const int parts = imin(nt, len / (2 * unit));
  if (parts < 2 || work < threaded_min_work || *k < 1 || is_zero(*alpha)) {
    e.xgemm(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    return;
  }
  const bool a_n = opt_upper(ta) == 'N', b_n = opt_upper(tb) == 'N';
  const int units = (len + unit - 1) / unit;
  // With the workers busy in other callers' regions the call runs whole on
  // this thread, as a one-thread call does.
  parallel_fit(parts, [&](int tid, int np) {
    if (np == 1) return e.xgemm(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    const int u0 = static_cast<int>(static_cast<long long>(units) * tid / np);
    const int u1 = static_cast<int>(static_cast<long long>(units) * (tid + 1) / np);
    const int lo = u0 * unit, hi = imin(u1 * unit, len);
    if (hi <= lo) return;
    int mm = *m, nn = *n;
    const T* as = a;
    const T* bs = b;
    T* cs = c;
    if (by_cols) {
      nn = hi - lo;
      bs = b_n ? zar::offset(b, static_cast<long long>(lo) * *ldb) : b + lo;
      cs = zar::offset(c, static_cast<long long>(lo) * *ldc);
    } else {
      mm = hi - lo;
      as = a_n ? a + lo : zar::offset(a, static_cast<long long>(lo) * *lda);
      cs = c + lo;
    }
    // As x?gemm does on one thread: beta first, then the product with beta 1.
    if (!is_one(*beta)) e.mscale(&mm, &nn, beta, cs, ldc);
    desc<T> d;
    e.zero_desc(&d);
    e.optimal(&d);
    const T b1 = gemm::one<T>();
    const int version = sched_default;
    e.par(ta, tb, &mm, &nn, k, alpha, as, lda, bs, ldb, &b1, cs, ldc, &version, &d);
  });
}

// The published argument checks; 0 when every argument is legal, else the
// position of the first illegal one.
template <class T>
int check(const char* ta, const char* tb, int m, int n, int k, int lda, int ldb, int ldc) {
  auto legal = [](const char* o) {
    const char u = opt_upper(o);
    return u == 'N' || u == 'T' || u == 'C';
  };
  const bool a_n = opt_upper(ta) == 'N', b_n = opt_upper(tb) == 'N';
  if (!legal(ta)) return 1;
  if (!legal(tb)) return 2;
  if (m < 0) return 3;
  if (n < 0) return 4;
  if (k < 0) return 5;
  if (lda < imax(1, a_n ? m : k)) return 8;
  if (ldb < imax(1, b_n ? k : n)) return 10;
  if (ldc < imax(1, m)) return 13;
  return 0;
}

template <class T>
void fortran(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
             const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc) {
  using namespace zar::gemm;
  if (const int info = check<T>(ta, tb, *m, *n, *k, *lda, *ldb, *ldc)) {
    report_routine(elem<T>::letter, "gemm", false, info);
    return;
  }
  if (*m == 0 || *n == 0 || ((is_zero(*alpha) || *k == 0) && is_one(*beta))) return;
  dispatch<T>(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

constexpr const char* trans_char(CBLAS_TRANSPOSE t) {
  return t == CblasNoTrans ? "N" : t == CblasTrans ? "T" : t == CblasConjTrans ? "C" : nullptr;
}

// CBLAS: row-major C = op(A) op(B) is column-major C^T = op(B)^T op(A)^T, so
// the row-major call is the column-major one with the operands exchanged.
// As in the reference CBLAS, an illegal argument found by the checks is
// reported at its position in that column-major call plus one (the layout
// argument): layout 1, TransA 2, TransB 3, then M 4, N 5, K 6, lda 9, ldb 11,
// ldc 14 in column-major; in row-major N is 4, M 5, ldb 9, lda 11, and
// RowMajorStrg is 1 while the call runs, which tells an application's
// cblas_xerbla (the reference test programs read it) to translate back.
template <class T>
void cblas(const char* rout, CBLAS_LAYOUT layout, CBLAS_TRANSPOSE TransA, CBLAS_TRANSPOSE TransB, int M, int N,
           int K, const T* alpha, const T* A, int lda, const T* B, int ldb, const T* beta, T* C, int ldc) {
  using namespace zar::gemm;
  RowMajorStrg = 0;
  if (layout != CblasColMajor && layout != CblasRowMajor) {
    cblas_xerbla(1, rout, "Illegal layout setting, %d\n", static_cast<int>(layout));
    return;
  }
  const bool row = layout == CblasRowMajor;
  RowMajorStrg = row ? 1 : 0;
  const char* ta = trans_char(TransA);
  const char* tb = trans_char(TransB);
  if (!ta || !tb) {
    if (!ta) cblas_xerbla(2, rout, "Illegal TransA setting, %d\n", static_cast<int>(TransA));
    else cblas_xerbla(3, rout, "Illegal TransB setting, %d\n", static_cast<int>(TransB));
  } else if (const int info = row ? check<T>(tb, ta, N, M, K, ldb, lda, ldc) : check<T>(ta, tb, M, N, K, lda, ldb, ldc)) {
    cblas_xerbla(info + 1, rout, "");
  } else if (M != 0 && N != 0 && !((is_zero(*alpha) || K == 0) && is_one(*beta))) {
    if (row) dispatch<T>(tb, ta, &N, &M, &K, alpha, B, &ldb, A, &lda, beta, C, &ldc);
    else dispatch<T>(ta, tb, &M, &N, &K, alpha, A, &lda, B, &ldb, beta, C, &ldc);
  }
  RowMajorStrg = 0;
}

}  // namespace
}  // namespace zar::core

#define ZAR_GEMM_FRONT(t, T, S)                                                                                \
  ZAR_API void zar_blas_##t##gemm(const char* ta, const char* tb, const int* m, const int* n, const int* k,      \
                                  const T* al, const T* a, const int* lda, const T* b, const int* ldb,           \
                                  const T* be, T* c, const int* ldc) {                                           \
    zar::core::dispatch<T>(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc);                                     \
  }                                                                                                             \
  ZAR_API void t##gemm_(const char* ta, const char* tb, const int* m, const int* n, const int* k, const S* al,   \
                        const S* a, const int* lda, const S* b, const int* ldb, const S* be, S* c,               \
                        const int* ldc) {                                                                       \
    zar::core::fortran<T>(ta, tb, m, n, k, static_cast<const T*>(al), static_cast<const T*>(a), lda,            \
                          static_cast<const T*>(b), ldb, static_cast<const T*>(be), static_cast<T*>(c), ldc);   \
  }
ZAR_GEMM_FRONT(s, float, float)
ZAR_GEMM_FRONT(d, double, double)
ZAR_GEMM_FRONT(c, zar::c32, void)
ZAR_GEMM_FRONT(z, zar::c64, void)

// CBLAS passes real scalars by value and complex ones by address.
#define ZAR_CBLAS_GEMM(t, T, S, P, ADDR)                                                                       \
  ZAR_API void cblas_##t##gemm(CBLAS_LAYOUT l, CBLAS_TRANSPOSE ta, CBLAS_TRANSPOSE tb, const int M, const int N,  \
                               const int K, S al, const P* A, const int lda, const P* B, const int ldb,          \
                               S be, P* C, const int ldc) {                                                     \
    zar::core::cblas<T>("cblas_" #t "gemm", l, ta, tb, M, N, K, static_cast<const T*>(ADDR al),                 \
                        static_cast<const T*>(A), lda, static_cast<const T*>(B), ldb,                          \
                        static_cast<const T*>(ADDR be), static_cast<T*>(C), ldc);                              \
  }
ZAR_CBLAS_GEMM(s, float, const float, float, &)
ZAR_CBLAS_GEMM(d, double, const double, double, &)
ZAR_CBLAS_GEMM(c, zar::c32, const void*, void, )
ZAR_CBLAS_GEMM(z, zar::c64, const void*, void, )
