// Level 3 beyond GEMM: GFLOP/s of dtrsm (left lower, no transpose; right
// upper, transposed), dtrmm, dsyrk, dsyr2k, dsymm, ztrsm and zherk on square
// operands, zar on one and two threads, OpenBLAS (serial) and the reference
// BLAS side by side. Each rate is also given as a fraction of zar's own GEMM
// of the same type at the largest size, on the same number of threads,
// measured in the same run (the GEMM rows come first). A routine a library
// does not export shows "-".
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "zar/control.h"

namespace {

using gemm_fn = void (*)(const char*, const char*, const int*, const int*, const int*, const void*, const void*,
                         const int*, const void*, const int*, const void*, void*, const int*);
// trsm and trmm: side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb.
using trxm_fn = void (*)(const char*, const char*, const char*, const char*, const int*, const int*, const void*,
                         const void*, const int*, void*, const int*);
// syrk and herk: uplo, trans, n, k, alpha, a, lda, beta, c, ldc.
using rank_k_fn = void (*)(const char*, const char*, const int*, const int*, const void*, const void*, const int*,
                           const void*, void*, const int*);
// syr2k (uplo, trans, n, k, ...) and symm (side, uplo, m, n, ...): alpha, a, lda, b, ldb, beta, c, ldc.
using two_operand_fn = void (*)(const char*, const char*, const int*, const int*, const void*, const void*,
                                const int*, const void*, const int*, const void*, void*, const int*);

// Square n x n operands of one type (reals = 1 real, 2 complex). A is
// diagonally dominant with small off-diagonal elements, so triangular solves
// and products neither grow nor shrink B much, whichever triangle is used.
struct operands {
  int n, reals;
  std::vector<double> a, b, b0, c;
  operands(int n_, int reals_) : n(n_), reals(reals_) {
    const size_t count = static_cast<size_t>(n) * n * reals;
    std::mt19937 g(7);
    std::uniform_real_distribution<double> u(-1, 1);
    a.resize(count);
    for (auto& x : a) x = u(g) / n;
    for (int i = 0; i < n; ++i) a[(static_cast<size_t>(i) * n + i) * reals] = 1.5 + u(g) / 2;
    b0.resize(count);
    for (auto& x : b0) x = u(g);
    b = b0;
    c.resize(count);
    for (auto& x : c) x = u(g);
  }
  void restore_b() { b = b0; }
};

const double one[2] = {1, 0};

// One benchmarked call: its row label, its floating-point operations as a
// multiple of n^3, whether it overwrites B (restored untimed before each
// repetition), and how to call it in a library (an empty function when the
// library lacks the routine).
struct routine {
  std::string label;
  const char* symbol;
  double flops_per_n3;
  bool overwrites_b;
  std::function<void()> (*bind)(void* fn, operands& o, const routine& r);
  const char* args;  // the character arguments, in order
};

std::function<void()> bind_gemm(void* fn, operands& o, const routine&) {
  auto f = reinterpret_cast<gemm_fn>(fn);
  return [f, &o] { f("N", "N", &o.n, &o.n, &o.n, one, o.a.data(), &o.n, o.b.data(), &o.n, one, o.c.data(), &o.n); };
}
std::function<void()> bind_trxm(void* fn, operands& o, const routine& r) {
  auto f = reinterpret_cast<trxm_fn>(fn);
  const std::string s = r.args;
  return [f, &o, s] {
    const char side[2] = {s[0], 0}, uplo[2] = {s[1], 0}, trans[2] = {s[2], 0}, diag[2] = {s[3], 0};
    f(side, uplo, trans, diag, &o.n, &o.n, one, o.a.data(), &o.n, o.b.data(), &o.n);
  };
}
std::function<void()> bind_rank_k(void* fn, operands& o, const routine& r) {
  auto f = reinterpret_cast<rank_k_fn>(fn);
  const std::string s = r.args;
  // alpha and beta are real for herk and of the element type for syrk; the
  // leading real 1 serves both.
  return [f, &o, s] {
    const char uplo[2] = {s[0], 0}, trans[2] = {s[1], 0};
    f(uplo, trans, &o.n, &o.n, one, o.a.data(), &o.n, one, o.c.data(), &o.n);
  };
}
std::function<void()> bind_two_operand(void* fn, operands& o, const routine& r) {
  auto f = reinterpret_cast<two_operand_fn>(fn);
  const std::string s = r.args;
  return [f, &o, s] {
    const char first[2] = {s[0], 0}, second[2] = {s[1], 0};
    f(first, second, &o.n, &o.n, one, o.a.data(), &o.n, o.b.data(), &o.n, one, o.c.data(), &o.n);
  };
}

struct family {
  const char* type;  // "D" or "Z"
  int reals;
  std::vector<routine> routines;  // the GEMM yardstick first
};

const std::vector<family>& families() {
  static const std::vector<family> f = {
      {"D",
       1,
       {{"dgemm NN", "dgemm_", 2, false, bind_gemm, ""},
        {"dtrsm LLNN", "dtrsm_", 1, true, bind_trxm, "LLNN"},
        {"dtrsm RUTN", "dtrsm_", 1, true, bind_trxm, "RUTN"},
        {"dtrmm LLNN", "dtrmm_", 1, true, bind_trxm, "LLNN"},
        {"dsyrk LN", "dsyrk_", 1, false, bind_rank_k, "LN"},
        {"dsyr2k LN", "dsyr2k_", 2, false, bind_two_operand, "LN"},
        {"dsymm LL", "dsymm_", 2, false, bind_two_operand, "LL"}}},
      {"Z",
       2,
       {{"zgemm NN", "zgemm_", 8, false, bind_gemm, ""},
        {"ztrsm LLNN", "ztrsm_", 4, true, bind_trxm, "LLNN"},
        {"zherk LN", "zherk_", 4, false, bind_rank_k, "LN"}}},
  };
  return f;
}

std::string cell(double v, const char* format = "%.2f") { return v > 0 ? bench::fmt(format, v) : "-"; }

void run_family(const family& fam) {
  const auto& libs = bench::libraries();
  const std::vector<int> sizes = bench::quick() ? std::vector<int>{500} : std::vector<int>{2000, 500};
  std::vector<std::string> cols = {"routine, options", "n", "zar 1T", "zar 2T", "2T/1T", "1T/GEMM", "2T/GEMM"};
  for (size_t i = 1; i < libs.size(); ++i) cols.push_back(libs[i].name);
  if (libs.size() > 1) cols.push_back("zar/" + libs[1].name);
  bench::table tab(std::string(fam.type) + "-type Level 3, GFLOP/s; GEMM fractions against zar's " +
                       (fam.type[0] == 'D' ? "dgemm" : "zgemm") + " at n = " + std::to_string(sizes[0]),
                   cols);
  double gemm_rate[3] = {0, 0, 0};  // by thread count, at the first size
  for (int n : sizes) {
    operands o(n, fam.reals);
    for (const routine& r : fam.routines) {
      const double gflop = r.flops_per_n3 * n * n * n / 1e9;
      auto measure = [&](const bench::library& lib) {
        void* fn = lib.sym<void*>(r.symbol);
        if (!fn) return -1.0;
        const std::function<void()> call = r.bind(fn, o, r);
        const std::function<void()> before = r.overwrites_b ? std::function<void()>([&o] { o.restore_b(); }) : nullptr;
        return gflop / bench::best_seconds(call, 0.25, gflop > 10 ? 2 : 3, before);
      };
      double zar[3] = {0, -1, -1};
      for (int t = 1; t <= 2; ++t) {
        zar_set_num_threads(t);
        zar[t] = measure(libs[0]);
      }
      zar_set_num_threads(0);
      if (n == sizes[0] && &r == &fam.routines[0]) {
        gemm_rate[1] = zar[1];
        gemm_rate[2] = zar[2];
      }
      std::vector<std::string> row = {r.label, std::to_string(n), cell(zar[1]), cell(zar[2])};
      row.push_back(zar[1] > 0 ? bench::fmt("%.2fx", zar[2] / zar[1]) : "-");
      for (int t = 1; t <= 2; ++t) row.push_back(zar[t] > 0 && gemm_rate[t] > 0 ? cell(zar[t] / gemm_rate[t]) : "-");
      double peer = -1;
      for (size_t i = 1; i < libs.size(); ++i) {
        // The reference BLAS is skipped where one call would take many seconds.
        const bool slow = libs[i].name == "refBLAS" && gflop > 3;
        const double rate = slow ? -1 : measure(libs[i]);
        if (i == 1) peer = rate;
        row.push_back(cell(rate));
      }
      if (libs.size() > 1) row.push_back(zar[1] > 0 && peer > 0 ? bench::fmt("%.2fx", zar[1] / peer) : "-");
      tab.row(row);
    }
  }
}

const bench::registrar reg("level3", 40, [] {
  for (const auto& f : families()) run_family(f);
});

}  // namespace
