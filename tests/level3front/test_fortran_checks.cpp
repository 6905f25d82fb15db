// The Fortran Level-3 extensions (gemmt, gemm3m, the batches): every
// argument check reaches xerbla_ with the routine's name and the position of
// the first illegal argument and leaves the output alone; and the quick
// returns of every Level-3 routine touch nothing (null operands are never
// read). The checks of the reference routines (trsm ... her2k) are covered,
// every position of every routine, by the reference test programs' error
// exits (tests/external).
#include "l3front.h"

extern "C" int RowMajorStrg;
extern "C" int CBLAS_CallFromC;

namespace l3f {
report seen;
}

// The program's handlers win over the core's.
extern "C" void xerbla_(const char* name, const int* info, int len) {
  l3f::seen.name.assign(name, len);
  l3f::seen.info = *info;
  ++l3f::seen.calls;
}
extern "C" void cblas_xerbla(int p, const char* rout, const char* form, ...) {
  l3f::seen.name = rout;
  l3f::seen.form = form;
  l3f::seen.info = p;
  l3f::seen.row = RowMajorStrg;
  l3f::seen.from_c = CBLAS_CallFromC;
  ++l3f::seen.calls;
}

namespace l3f {
namespace {

template <class T> class FortranChecks : public ::testing::Test {
 public:
  void SetUp() override { seen = report{}; }
  // Runs call(), then expects one report `info` under `name` and the output
  // unchanged.
  template <class F> void expect(const std::string& name, int info, std::vector<T>& out, F call, const char* what) {
    seen = report{};
    const auto before = out;
    call();
    EXPECT_EQ(seen.info, info) << name << ": " << what;
    EXPECT_EQ(seen.name, name) << what;
    EXPECT_EQ(seen.calls, 1) << name << ": " << what;
    EXPECT_TRUE(same_bits(out, before)) << name << ": " << what << " changed the output";
  }
  std::vector<T> a = std::vector<T>(64, val<T>(1)), b = random_values<T>(64, 3), c = random_values<T>(64, 4);
  const T one = val<T>(1), zero = val<T>(0), two = val<T>(2, 1);
};
TYPED_TEST_SUITE(FortranChecks, types);

TYPED_TEST(FortranChecks, Gemmt) {
  using T = TypeParam;
  struct {
    const char *uplo, *ta, *tb;
    int n, k, lda, ldb, ldc, info;
  } cases[] = {
      {"A", "N", "N", 2, 2, 2, 2, 2, 1},  {"U", "B", "N", 2, 2, 2, 2, 2, 2},  {"U", "N", "D", 2, 2, 2, 2, 2, 3},
      {"U", "N", "N", -1, 2, 2, 2, 2, 4}, {"l", "t", "c", 2, -1, 2, 2, 2, 5}, {"U", "N", "N", 3, 2, 2, 2, 3, 8},
      {"U", "T", "N", 3, 4, 3, 4, 3, 8},  {"U", "N", "N", 3, 4, 3, 3, 3, 10}, {"U", "N", "C", 3, 2, 3, 2, 3, 10},
      {"U", "N", "N", 3, 2, 3, 2, 2, 13},
  };
  const auto f = fortran<gemmt_f<T>, T>("gemmt");
  for (const auto& x : cases)
    this->expect(
        fortran_name(letter<T>(), "gemmt"), x.info, this->c,
        [&] {
          f(x.uplo, x.ta, x.tb, &x.n, &x.k, &this->two, this->a.data(), &x.lda, this->b.data(), &x.ldb, &this->one,
            this->c.data(), &x.ldc);
        },
        x.uplo);
}

TYPED_TEST(FortranChecks, Gemm3m) {
  using T = TypeParam;
  if constexpr (zar::is_complex_v<T>) {
    struct {
      const char *ta, *tb;
      int m, n, k, lda, ldb, ldc, info;
    } cases[] = {
        {"X", "N", 2, 2, 2, 2, 2, 2, 1},  {"N", "X", 2, 2, 2, 2, 2, 2, 2},  {"N", "N", -1, 2, 2, 2, 2, 2, 3},
        {"N", "N", 2, -1, 2, 2, 2, 2, 4}, {"n", "n", 2, 2, -1, 2, 2, 2, 5}, {"N", "N", 3, 2, 2, 2, 2, 3, 8},
        {"C", "N", 2, 2, 3, 2, 3, 2, 8},  {"N", "N", 2, 2, 3, 3, 2, 2, 10}, {"N", "T", 2, 3, 2, 2, 2, 2, 10},
        {"N", "N", 3, 2, 2, 3, 2, 2, 13},
    };
    const auto g = fortran<gemm_f<T>, T>("gemm3m");
    for (const auto& x : cases)
      this->expect(
          fortran_name(letter<T>(), "gemm3m"), x.info, this->c,
          [&] {
            g(x.ta, x.tb, &x.m, &x.n, &x.k, &this->two, this->a.data(), &x.lda, this->b.data(), &x.ldb, &this->one,
              this->c.data(), &x.ldc);
          },
          x.ta);
  }
}

// Two groups; group 0 is legal and would change its C, so a report about
// group 1 must come before anything is computed.
TYPED_TEST(FortranChecks, Batch) {
  using T = TypeParam;
  const std::string name = fortran_name(letter<T>(), "gemm_batch");
  const auto f = fortran<batch_f<T>, T>("gemm_batch");
  const T* a[3] = {this->a.data(), this->a.data(), this->a.data()};
  const T* b[3] = {this->b.data(), this->b.data(), this->b.data()};
  T* c[3] = {this->c.data(), this->c.data() + 16, this->c.data() + 32};
  const T alpha[2] = {this->two, this->two}, beta[2] = {this->one, this->zero};
  struct {
    char ta1, tb1;
    int m1, n1, k1, lda1, ldb1, ldc1, count, size1, info;
  } cases[] = {
      {'N', 'N', 2, 2, 2, 2, 2, 2, -1, 2, 14}, {'N', 'N', 2, 2, 2, 2, 2, 2, 2, -1, 15},
      {'Q', 'N', 2, 2, 2, 2, 2, 2, 2, 2, 1},   {'N', 'Q', 2, 2, 2, 2, 2, 2, 2, 2, 2},
      {'N', 'N', -1, 2, 2, 2, 2, 2, 2, 2, 3},  {'T', 'N', 2, -1, 2, 2, 2, 2, 2, 2, 4},
      {'N', 'T', 2, 2, -2, 2, 2, 2, 2, 2, 5},  {'N', 'N', 3, 2, 2, 2, 2, 3, 2, 2, 8},
      {'N', 'T', 2, 3, 2, 2, 2, 2, 2, 2, 10},  {'N', 'N', 3, 2, 2, 3, 2, 2, 2, 2, 13},
  };
  for (const auto& x : cases) {
    const char ta[2] = {'N', x.ta1}, tb[2] = {'T', x.tb1};
    const int m[2] = {2, x.m1}, n[2] = {2, x.n1}, k[2] = {2, x.k1};
    const int lda[2] = {2, x.lda1}, ldb[2] = {2, x.ldb1}, ldc[2] = {2, x.ldc1}, size[2] = {1, x.size1};
    this->expect(
        name, x.info, this->c, [&] { f(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, &x.count, size); },
        "batch");
  }
}

TYPED_TEST(FortranChecks, BatchStrided) {
  using T = TypeParam;
  const std::string name = fortran_name(letter<T>(), "gemm_batch_strided");
  const auto f = fortran<strided_f<T>, T>("gemm_batch_strided");
  struct {
    const char *ta, *tb;
    int m, n, k, lda, sa, ldb, sb, ldc, sc, count, info;
  } cases[] = {
      {"Y", "N", 2, 2, 2, 2, 4, 2, 4, 2, 4, 2, 1},   {"N", "Y", 2, 2, 2, 2, 4, 2, 4, 2, 4, 2, 2},
      {"N", "N", -1, 2, 2, 2, 4, 2, 4, 2, 4, 2, 3},  {"N", "N", 2, -1, 2, 2, 4, 2, 4, 2, 4, 2, 4},
      {"N", "N", 2, 2, -1, 2, 4, 2, 4, 2, 4, 2, 5},  {"N", "N", 3, 2, 2, 2, 6, 2, 4, 3, 6, 2, 8},
      {"N", "N", 2, 2, 2, 2, -1, 2, 4, 2, 4, 2, 9},  {"N", "C", 2, 3, 2, 2, 4, 2, 6, 2, 6, 2, 11},
      {"N", "N", 2, 2, 2, 2, 0, 2, -4, 2, 4, 2, 12}, {"N", "N", 3, 2, 2, 3, 6, 2, 4, 2, 6, 2, 15},
      {"N", "N", 2, 2, 2, 2, 4, 2, 4, 2, 3, 2, 16},  {"N", "N", 2, 2, 2, 2, 4, 2, 4, 2, 4, -1, 17},
  };
  for (const auto& x : cases)
    this->expect(
        name, x.info, this->c,
        [&] {
          f(x.ta, x.tb, &x.m, &x.n, &x.k, &this->two, this->a.data(), &x.lda, &x.sa, this->b.data(), &x.ldb, &x.sb,
            &this->one, this->c.data(), &x.ldc, &x.sc, &x.count);
        },
        x.ta);
}

// The published quick returns: nothing is read (null operands), written or
// reported. (alpha = 0 with beta != 1 still scales C, so it is not here.)
TYPED_TEST(FortranChecks, QuickReturnsTouchNothing) {
  using T = TypeParam;
  using R = real_t<T>;
  const int zero = 0, two = 2;
  const T al0 = this->zero, al = this->two, be1 = this->one;
  const R r0 = 0, r1 = 1;
  T* c = this->c.data();
  const auto before = this->c;
  const auto trsm = fortran<trsm_f<T>, T>("trsm"), trmm = fortran<trsm_f<T>, T>("trmm");
  for (auto f : {trsm, trmm}) {
    f("L", "U", "N", "N", &zero, &two, &al, nullptr, &two, c, &two);
    f("R", "L", "T", "U", &two, &zero, &al, nullptr, &two, c, &two);
  }
  const auto symm = fortran<symm_f<T>, T>("symm");
  symm("L", "U", &zero, &two, &al, nullptr, &two, nullptr, &two, &al, c, &two);
  symm("R", "U", &two, &two, &al0, nullptr, &two, nullptr, &two, &be1, c, &two);
  const auto syrk = fortran<syrk_f<T, T>, T>("syrk");
  const auto syr2k = fortran<syr2k_f<T, T>, T>("syr2k");
  for (const int* k : {&zero, &two}) {
    const T& alpha = k == &zero ? al : al0;  // k = 0 or alpha = 0, with beta = 1
    syrk("U", "N", &two, k, &alpha, nullptr, &two, &be1, c, &two);
    syr2k("L", "T", &two, k, &alpha, nullptr, &two, nullptr, &two, &be1, c, &two);
  }
  syrk("U", "N", &zero, &two, &al, nullptr, &two, &al, c, &two);
  const auto gemmt = fortran<gemmt_f<T>, T>("gemmt");
  gemmt("U", "N", "N", &zero, &two, &al, nullptr, &two, nullptr, &two, &al, c, &two);
  gemmt("L", "N", "T", &two, &two, &al0, nullptr, &two, nullptr, &two, &be1, c, &two);
  const auto strided = fortran<strided_f<T>, T>("gemm_batch_strided");
  strided("N", "N", &two, &two, &two, &al, nullptr, &two, &zero, nullptr, &two, &zero, &al, c, &two, &zero, &zero);
  const int four = 4;  // the products' C must not overlap
  strided("N", "N", &two, &two, &two, &al0, nullptr, &two, &zero, nullptr, &two, &zero, &be1, c, &two, &four, &two);
  // batches: no group, an empty group, a group with alpha = 0 and beta = 1
  const auto batch = fortran<batch_f<T>, T>("gemm_batch");
  const char tr[2] = {'N', 'N'};
  const int dims[2] = {2, 2}, sizes[2] = {0, 1};
  const T alphas[2] = {al, al0}, betas[2] = {al, be1};
  const T* none[1] = {nullptr};
  T* cs[1] = {c};
  batch(tr, tr, dims, dims, dims, alphas, none, dims, none, dims, betas, cs, dims, &zero, sizes);
  batch(tr, tr, dims, dims, dims, alphas, none, dims, none, dims, betas, cs, dims, &two, sizes);
  if constexpr (zar::is_complex_v<T>) {
    const auto herk = fortran<syrk_f<T, R>, T>("herk");
    const auto her2k = fortran<syr2k_f<T, R>, T>("her2k");
    herk("U", "C", &two, &zero, &r1, nullptr, &two, &r1, c, &two);
    herk("L", "N", &two, &two, &r0, nullptr, &two, &r1, c, &two);
    her2k("U", "N", &two, &zero, &al, nullptr, &two, nullptr, &two, &r1, c, &two);
    const auto hemm = fortran<symm_f<T>, T>("hemm");
    hemm("L", "L", &two, &zero, &al, nullptr, &two, nullptr, &two, &al, c, &two);
    const auto gemm3m = fortran<gemm_f<T>, T>("gemm3m");
    gemm3m("N", "N", &two, &two, &zero, &al, nullptr, &two, nullptr, &two, &be1, c, &two);
    gemm3m("N", "N", &zero, &two, &two, &al, nullptr, &two, nullptr, &two, &al, c, &two);
  }
  EXPECT_EQ(seen.calls, 0) << seen.name << " " << seen.info;
  EXPECT_TRUE(same_bits(this->c, before));
}

}  // namespace
}  // namespace l3f
