// Level-3 BLAS in the core: the dispatching front ends zar_blas_?trsm ...
// (arguments by address, no checks; the kernels may call them back), their
// threaded splits, and the Fortran interfaces with the published checks and
// quick returns.
//
// Every split gives each thread a disjoint part of the output and hands it
// to a kernel whose per-element order of operations does not depend on the
// part, so a result has the same bits for any number of threads:
//   trsm, trmm, symm, hemm  columns of B/C (side left) or rows (side right),
//                           parts of multiples of 16, one driver call each;
//   syrk, herk, syr2k,      column ranges of C's triangle of equal area,
//   her2k, gemmt            through the kernels' _in_thread bodies;
//   gemm_batch(_strided)    whole products, ranges of equal work;
//   gemm3m                  as gemm: rows or columns of C, multiples of 16.
#include <cmath>

#include "core/src/blas/level3_front.h"

namespace zar::core::l3 {
namespace {

// Problems below this many real multiply-adds (four per complex one) stay on
// one thread, as for gemm: waking the pool costs about what it saves.
constexpr double threaded_min_work = 4.0 * 1024 * 1024;

template <class T> double real_work(double w) { return zar::is_complex_v<T> ? 4 * w : w; }

// body(lo, hi) over parts of [0, len): one part on one thread, or for large
// work parts of at least 16 (multiples of 16 except the last), one per thread.
template <class Body> void parts_of_16(int len, double work, Body body) {
  const int parts = std::min(max_threads(), len / 16);
  if (parts < 2 || work < threaded_min_work) return body(0, len);
  const long long units = (len + 15) / 16;
  parallel(parts, [&](int tid, int np) {
    const int lo = static_cast<int>(units * tid / np) * 16;
    const int hi = std::min(len, static_cast<int>(units * (tid + 1) / np) * 16);
    if (lo < hi) body(lo, hi);
  });
}

// First column of part `tid` of `np` of an n x n triangle cut into parts of
// equal area: upper column j holds j + 1 elements (area to column b about
// b^2 / 2), lower column j holds n - j (area n b - b^2 / 2).
int triangle_cut(bool upper, int n, int tid, int np) {
  if (tid >= np) return n;
  const double f = static_cast<double>(tid) / np;
  const double b = upper ? n * std::sqrt(f) : n * (1 - std::sqrt(1 - f));
  return std::clamp(static_cast<int>(b), 0, n);
}

// A triangle update of C (n x n): the one-thread driver whole(args...), or
// per thread the body range(args..., &first, &last) on its columns.
template <class Whole, class Range, class... Args>
void triangle_update(const char* uplo, int n, double work, Whole whole, Range range, Args... args) {
  const int parts = std::min(max_threads(), n / 16);
  if (parts < 2 || work < threaded_min_work) return whole(args...);
  const bool upper = is(uplo, 'U');
  parallel(parts, [&](int tid, int np) {
    const int first = triangle_cut(upper, n, tid, np), last = triangle_cut(upper, n, tid + 1, np);
    if (first < last) range(args..., &first, &last);
  });
}

}  // namespace

// The operations with a side: B/C (m x n) splits into columns (side left)
// or rows (side right), A (of the side's order) is shared. body(pm, pn, part)
// gets a part's sizes and part(x, ld), the part's start in B or C. The work
// is `scale` times order^2 times the other size.
template <class T, class Body> void side_parts(const char* side, const int* m, const int* n, double scale, Body body) {
  const bool left = is(side, 'L');
  const double order = left ? *m : *n, other = left ? *n : *m;
  parts_of_16(left ? *n : *m, real_work<T>(scale * order * order * other), [&](int lo, int hi) {
    const int len = hi - lo;
    const auto part = [&](auto* x, const int* ld) { return left ? zar::at(x, 0, lo, *ld) : zar::offset(x, lo); };
    body(left ? m : &len, left ? &len : n, part);
  });
}

template <class T, bool Solve> void run_trsm(ZAR_L3_TRSM_ARGS(T)) {
  const auto k = [] {
    if constexpr (Solve) return kern<T>::trsm();
    else return kern<T>::trmm();
  }();
  side_parts<T>(side, m, n, 0.5, [&](const int* pm, const int* pn, auto part) {
    k(side, uplo, transa, diag, pm, pn, alpha, a, lda, part(b, ldb), ldb);
  });
}

template <class T, bool Herm> void run_symm(ZAR_L3_SYMM_ARGS(T)) {
  const auto k = [] {
    if constexpr (Herm) return kern<T>::hemm();
    else return kern<T>::symm();
  }();
  side_parts<T>(side, m, n, 1, [&](const int* pm, const int* pn, auto part) {
    k(side, uplo, pm, pn, alpha, a, lda, part(b, ldb), ldb, beta, part(c, ldc), ldc);
  });
}

// The work of a rank update: n^2 k / 2 multiply-adds per product term.
template <class T, class S> double rank_work(const int* n, const int* k, const S* alpha, int terms) {
  const double nn = *n;
  return is_zero(*alpha) ? 0 : real_work<T>(nn * nn * *k / 2 * terms);
}

template <class T, class S> void run_syrk(ZAR_L3_SYRK_ARGS(T, S)) {
  const double work = rank_work<T>(n, k, alpha, 1);
  if constexpr (herm_v<T, S>) triangle_update(uplo, *n, work, kern<T>::herk(), kern<T>::herk_in(), ZAR_L3_SYRK_NAMES);
  else triangle_update(uplo, *n, work, kern<T>::syrk(), kern<T>::syrk_in(), ZAR_L3_SYRK_NAMES);
}
template <class T, class S> void run_syr2k(ZAR_L3_SYR2K_ARGS(T, S)) {
  const double work = rank_work<T>(n, k, alpha, 2);
  if constexpr (herm_v<T, S>)
    triangle_update(uplo, *n, work, kern<T>::her2k(), kern<T>::her2k_in(), ZAR_L3_SYR2K_NAMES);
  else triangle_update(uplo, *n, work, kern<T>::syr2k(), kern<T>::syr2k_in(), ZAR_L3_SYR2K_NAMES);
}
template <class T> void run_gemmt(ZAR_L3_GEMMT_ARGS(T)) {
  triangle_update(uplo, *n, rank_work<T>(n, k, alpha, 1), kern<T>::gemmt(), kern<T>::gemmt_in(), ZAR_L3_GEMMT_NAMES);
}

// gemm3m: as gemm, the longer side of C in parts of multiples of 16, each
// part a call of the driver with its rows of op(A) or columns of op(B).
template <class T> void run_gemm3m(ZAR_L3_GEMM_ARGS(T)) {
  const bool by_cols = *n >= *m;
  const double work = is_zero(*alpha) ? 0 : real_work<T>(static_cast<double>(*m) * *n * *k);
  parts_of_16(by_cols ? *n : *m, work, [&](int lo, int hi) {
    const int len = hi - lo;
    if (by_cols)
      kern<T>::gemm3m()(transa, transb, m, &len, k, alpha, a, lda,
                        is(transb, 'N') ? zar::at(b, 0, lo, *ldb) : zar::offset(b, lo), ldb, beta,
                        zar::at(c, 0, lo, *ldc), ldc);
    else
      kern<T>::gemm3m()(transa, transb, &len, n, k, alpha,
                        is(transa, 'N') ? zar::offset(a, lo) : zar::at(a, 0, lo, *lda), lda, b, ldb, beta,
                        zar::offset(c, lo), ldc);
  });
}

// gemm_batch: the products, numbered across the groups in order, are divided
// into ranges of about equal work, one per thread; each thread hands the part
// of every group inside its range to the batch driver as a group of its own.
// Groups that the published quick return leaves alone are skipped.
template <class T> void run_batch(ZAR_L3_GEMM_BATCH_ARGS(T)) {
  const int groups = *group_count;
  auto idle = [&](int g) { return group_size[g] < 1 || nothing_to_do(m[g], n[g], k[g], alpha[g], beta[g]); };
  auto work = [&](int g) { return idle(g) ? 0.0 : real_work<T>(static_cast<double>(m[g]) * n[g] * std::max(k[g], 1)); };
  double total = 0;
  long long products = 0;
  for (int g = 0; g < groups; ++g) {
    total += work(g) * std::max(group_size[g], 0);
    products += std::max(group_size[g], 0);
  }
  // The products [p0, p1), group by group.
  auto run_range = [&](long long p0, long long p1) {
    long long start = 0;
    for (int g = 0; g < groups && start < p1; start += std::max(group_size[g], 0), ++g) {
      const long long lo = std::max(p0, start), hi = std::min(p1, start + std::max(group_size[g], 0));
      if (lo >= hi || idle(g)) continue;
      const int one = 1, count = static_cast<int>(hi - lo);
      kern<T>::batch()(transa + g, transb + g, m + g, n + g, k + g, alpha + g, a + lo, lda + g, b + lo, ldb + g,
                       beta + g, c + lo, ldc + g, &one, &count);
    }
  };
  const int parts = static_cast<int>(std::min<long long>(max_threads(), products));
  if (parts < 2 || total < threaded_min_work) return run_range(0, products);
  // The first product whose work starts at or after `target`.
  auto first_at = [&](double target) {
    long long start = 0;
    double done = 0;
    for (int g = 0; g < groups; ++g) {
      const int size = std::max(group_size[g], 0);
      const double w = work(g);
      if (target <= done) return start;
      if (w > 0 && target <= done + w * size) return start + static_cast<long long>(std::ceil((target - done) / w));
      done += w * size;
      start += size;
    }
    return products;
  };
  parallel(parts, [&](int tid, int np) {
    const long long p0 = tid == 0 ? 0 : first_at(total * tid / np);
    const long long p1 = tid + 1 == np ? products : first_at(total * (tid + 1) / np);
    if (p0 < p1) run_range(p0, p1);
  });
}

// gemm_batch_strided: equal ranges of the products, one per thread.
template <class T> void run_strided(ZAR_L3_GEMM_STRIDED_ARGS(T)) {
  const int count = *batch_size;
  const double work = nothing_to_do(*m, *n, *k, *alpha, *beta)
                          ? 0
                          : real_work<T>(static_cast<double>(*m) * *n * std::max(*k, 1)) * count;
  const int parts = std::min(max_threads(), count);
  if (parts < 2 || work < threaded_min_work) return kern<T>::strided()(ZAR_L3_STRIDED_NAMES);
  parallel(parts, [&](int tid, int np) {
    const int p0 = static_cast<int>(static_cast<long long>(count) * tid / np);
    const int p1 = static_cast<int>(static_cast<long long>(count) * (tid + 1) / np);
    const int len = p1 - p0;
    if (len < 1) return;
    kern<T>::strided()(transa, transb, m, n, k, alpha, zar::offset(a, static_cast<long long>(p0) * *stridea), lda,
                       stridea, zar::offset(b, static_cast<long long>(p0) * *strideb), ldb, strideb, beta,
                       zar::offset(c, static_cast<long long>(p0) * *stridec), ldc, stridec, &len);
  });
}

// ---- checked entries: report the first illegal argument, else take the
// published quick return, else dispatch.
template <class T, bool Solve> void checked_trsm(const rep& r, ZAR_L3_TRSM_ARGS(T)) {
  if (r.ok(check_trsm(side, uplo, transa, diag, *m, *n, *lda, *ldb)) && *m > 0 && *n > 0)
    run_trsm<T, Solve>(ZAR_L3_TRSM_NAMES);
}
template <class T, bool Herm> void checked_symm(const rep& r, ZAR_L3_SYMM_ARGS(T)) {
  if (r.ok(check_symm(side, uplo, *m, *n, *lda, *ldb, *ldc)) && !nothing_to_do(*m, *n, 1, *alpha, *beta))
    run_symm<T, Herm>(ZAR_L3_SYMM_NAMES);
}
// syrk/herk with alpha = 0 (or k = 0) and beta != 1 still scale the triangle.
template <class T, class S> void checked_syrk(const rep& r, ZAR_L3_SYRK_ARGS(T, S)) {
  if (r.ok(check_rank<T, herm_v<T, S>>(uplo, trans, *n, *k, *lda, 1, *ldc, false)) &&
      !nothing_to_do(*n, *n, *k, *alpha, *beta))
    run_syrk<T, S>(ZAR_L3_SYRK_NAMES);
}
template <class T, class S> void checked_syr2k(const rep& r, ZAR_L3_SYR2K_ARGS(T, S)) {
  if (r.ok(check_rank<T, herm_v<T, S>>(uplo, trans, *n, *k, *lda, *ldb, *ldc, true)) &&
      !nothing_to_do(*n, *n, *k, *alpha, *beta))
    run_syr2k<T, S>(ZAR_L3_SYR2K_NAMES);
}
template <class T> void checked_gemmt(const rep& r, ZAR_L3_GEMMT_ARGS(T)) {
  if (r.ok(check_gemmt(uplo, transa, transb, *n, *k, *lda, *ldb, *ldc)) && !nothing_to_do(*n, *n, *k, *alpha, *beta))
    run_gemmt<T>(ZAR_L3_GEMMT_NAMES);
}
template <class T> void checked_gemm3m(const rep& r, ZAR_L3_GEMM_ARGS(T)) {
  if (r.ok(check_gemm(transa, transb, *m, *n, *k, *lda, *ldb, *ldc)) && !nothing_to_do(*m, *n, *k, *alpha, *beta))
    run_gemm3m<T>(ZAR_L3_GEMM_NAMES);
}
template <class T> void checked_batch(const rep& r, ZAR_L3_GEMM_BATCH_ARGS(T)) {
  if (r.ok(check_batch<T>(ZAR_L3_BATCH_NAMES))) run_batch<T>(ZAR_L3_BATCH_NAMES);
}
template <class T> void checked_strided(const rep& r, ZAR_L3_GEMM_STRIDED_ARGS(T)) {
  if (r.ok(check_strided<T>(ZAR_L3_STRIDED_NAMES)) && *batch_size > 0 && !nothing_to_do(*m, *n, *k, *alpha, *beta))
    run_strided<T>(ZAR_L3_STRIDED_NAMES);
}

#define ZAR_L3_INSTANTIATE_ALL(t, T, R)                                   \
  template void checked_trsm<T, true>(const rep&, ZAR_L3_TRSM_ARGS(T));   \
  template void checked_trsm<T, false>(const rep&, ZAR_L3_TRSM_ARGS(T));  \
  template void checked_symm<T, false>(const rep&, ZAR_L3_SYMM_ARGS(T));  \
  template void checked_syrk<T, T>(const rep&, ZAR_L3_SYRK_ARGS(T, T));   \
  template void checked_syr2k<T, T>(const rep&, ZAR_L3_SYR2K_ARGS(T, T)); \
  template void checked_gemmt<T>(const rep&, ZAR_L3_GEMMT_ARGS(T));       \
  template void checked_batch<T>(const rep&, ZAR_L3_GEMM_BATCH_ARGS(T));  \
  template void checked_strided<T>(const rep&, ZAR_L3_GEMM_STRIDED_ARGS(T));
#define ZAR_L3_INSTANTIATE_CPLX(t, T, R)                                  \
  template void checked_symm<T, true>(const rep&, ZAR_L3_SYMM_ARGS(T));   \
  template void checked_syrk<T, R>(const rep&, ZAR_L3_SYRK_ARGS(T, R));   \
  template void checked_syr2k<T, R>(const rep&, ZAR_L3_SYR2K_ARGS(T, R)); \
  template void checked_gemm3m<T>(const rep&, ZAR_L3_GEMM_ARGS(T));
ZAR_L3_ALL(ZAR_L3_INSTANTIATE_ALL)
ZAR_L3_CPLX(ZAR_L3_INSTANTIATE_CPLX)

}  // namespace zar::core::l3

using namespace zar::core::l3;

// ---- exported names: the dispatching front ends zar_blas_<name> (no
// checks) and the Fortran interfaces <name>_. Complex arguments arrive as
// void* in the published prototypes (zar/blas.h); the element type has the
// same layout. Each list entry: (name, argument list, dispatcher, checked).
#define ZAR_L3_EXPORT(t, name, ARGS, NAMES, run, checked) \
  ZAR_API void zar_blas_##t##name(ARGS) { run(NAMES); }   \
  ZAR_API void t##name##_(ARGS) { checked(rep{#t[0], #name, false}, NAMES); }

#define ZAR_L3_EXPORT_ALL(t, T, R)                                                                               \
  ZAR_L3_EXPORT(t, trsm, ZAR_L3_TRSM_ARGS(T), ZAR_L3_TRSM_NAMES, (run_trsm<T, true>), (checked_trsm<T, true>))   \
  ZAR_L3_EXPORT(t, trmm, ZAR_L3_TRSM_ARGS(T), ZAR_L3_TRSM_NAMES, (run_trsm<T, false>), (checked_trsm<T, false>)) \
  ZAR_L3_EXPORT(t, symm, ZAR_L3_SYMM_ARGS(T), ZAR_L3_SYMM_NAMES, (run_symm<T, false>), (checked_symm<T, false>)) \
  ZAR_L3_EXPORT(t, syrk, ZAR_L3_SYRK_ARGS(T, T), ZAR_L3_SYRK_NAMES, (run_syrk<T, T>), (checked_syrk<T, T>))      \
  ZAR_L3_EXPORT(t, syr2k, ZAR_L3_SYR2K_ARGS(T, T), ZAR_L3_SYR2K_NAMES, (run_syr2k<T, T>), (checked_syr2k<T, T>)) \
  ZAR_L3_EXPORT(t, gemmt, ZAR_L3_GEMMT_ARGS(T), ZAR_L3_GEMMT_NAMES, run_gemmt<T>, checked_gemmt<T>)              \
  ZAR_L3_EXPORT(t, gemm_batch, ZAR_L3_GEMM_BATCH_ARGS(T), ZAR_L3_BATCH_NAMES, run_batch<T>, checked_batch<T>)    \
  ZAR_L3_EXPORT(t, gemm_batch_strided, ZAR_L3_GEMM_STRIDED_ARGS(T), ZAR_L3_STRIDED_NAMES, run_strided<T>,        \
                checked_strided<T>)
#define ZAR_L3_EXPORT_CPLX(t, T, R)                                                                              \
  ZAR_L3_EXPORT(t, hemm, ZAR_L3_SYMM_ARGS(T), ZAR_L3_SYMM_NAMES, (run_symm<T, true>), (checked_symm<T, true>))   \
  ZAR_L3_EXPORT(t, herk, ZAR_L3_SYRK_ARGS(T, R), ZAR_L3_SYRK_NAMES, (run_syrk<T, R>), (checked_syrk<T, R>))      \
  ZAR_L3_EXPORT(t, her2k, ZAR_L3_SYR2K_ARGS(T, R), ZAR_L3_SYR2K_NAMES, (run_syr2k<T, R>), (checked_syr2k<T, R>)) \
  ZAR_L3_EXPORT(t, gemm3m, ZAR_L3_GEMM_ARGS(T), ZAR_L3_GEMM_NAMES, run_gemm3m<T>, checked_gemm3m<T>)
ZAR_L3_ALL(ZAR_L3_EXPORT_ALL)
ZAR_L3_CPLX(ZAR_L3_EXPORT_CPLX)
