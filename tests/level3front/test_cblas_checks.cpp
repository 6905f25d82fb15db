// The CBLAS Level-3 interfaces: an illegal option value is reported with
// the reference CBLAS's message at its own position, an illegal dimension at
// its position in the column-major call plus one (row-major calls map onto
// the transposed problem, so M and N, lda and ldb trade places), with
// RowMajorStrg telling the layout and CBLAS_CallFromC set during the call.
// Here: the rank updates (which options each layout accepts, the reference's
// uplo position, the caller's in either layout) and the extensions; the positions of the other
// reference routines are checked by the reference test programs' error exits
// and compared with the reference CBLAS in tests/hardening.
#include <functional>

#include "l3front.h"

extern "C" int RowMajorStrg;
extern "C" int CBLAS_CallFromC;

namespace l3f {
namespace {

constexpr int col = CblasColMajor, row = CblasRowMajor, bad = 0;
constexpr int Lt = CblasLeft, Rt = CblasRight, Up = CblasUpper, Lo = CblasLower;
constexpr int Nt = CblasNoTrans, Tr = CblasTrans, Ct = CblasConjTrans, NU = CblasNonUnit, UD = CblasUnit;

const char* const layout_msg = "Illegal layout setting, %d\n";
const char* const uplo_msg = "Illegal Uplo setting, %d\n";
const char* const trans_msg = "Illegal Trans setting, %d\n";
const char* const transa_msg = "Illegal TransA setting, %d\n";
const char* const transb_msg = "Illegal TransB setting, %d\n";

// One call and what it must report: position, RowMajorStrg at the report,
// message form ("" for the checks of the column-major call).
struct expected {
  int pos, row;
  const char* form;
  std::function<void()> call;
};

template <class T> class CblasChecks : public ::testing::Test {
 public:
  void check(const std::string& op, const std::vector<expected>& cases) {
    const std::string rout = std::string("cblas_") + letter<T>() + op;
    const auto before = c;
    for (size_t i = 0; i < cases.size(); ++i) {
      seen = report{};
      cases[i].call();
      EXPECT_EQ(seen.calls, 1) << rout << " case " << i;
      EXPECT_EQ(seen.name, rout) << "case " << i;
      EXPECT_EQ(seen.info, cases[i].pos) << rout << " case " << i;
      EXPECT_EQ(seen.row, cases[i].row) << rout << " case " << i;
      EXPECT_EQ(seen.form, cases[i].form) << rout << " case " << i;
      EXPECT_EQ(seen.from_c, 1) << rout << " case " << i;
      EXPECT_EQ(RowMajorStrg, 0) << "reset after " << rout;
      EXPECT_EQ(CBLAS_CallFromC, 0) << "reset after " << rout;
    }
    EXPECT_TRUE(same_bits(c, before)) << rout << " wrote its output";
  }
  std::vector<T> a = std::vector<T>(64, val<T>(1)), b = random_values<T>(64, 5), c = random_values<T>(64, 6);
  const T one = val<T>(1), two = val<T>(2, -1);
  const real_t<T> r1 = 1, r2 = 2;
};
TYPED_TEST_SUITE(CblasChecks, types);

// the CBLAS prototypes of the rank updates
template <class T, bool Herm> struct rank_fns {
  using one = typename cfn<T>::syrk;
  using two = typename cfn<T>::syr2k;
};
template <class T> struct rank_fns<T, true> {
  using one = typename cfn<T>::herk;
  using two = typename cfn<T>::her2k;
};

// syrk, syr2k (herk, her2k): the transposes each layout accepts, the
// caller's position 2 for an illegal uplo in both layouts, the dimensions.
template <class T, class S> void rank_cases(CblasChecks<T>& t, bool herm) {
  const bool cx = zar::is_complex_v<T>;
  const S sa = val<S>(1), sb = val<S>(0.5);
  const T ta = val<T>(2, 1);
  // Column-major rejects the transpose the Fortran routine rejects (C for
  // complex syrk, T for herk); row-major reads either transpose as one.
  const int refused = herm ? Tr : Ct;
  const bool col_refuses = cx;
  using fns = rank_fns<T, !std::is_same_v<T, S>>;
  const auto f1 = cblas<typename fns::one, T>(herm ? "herk" : "syrk");
  const auto f2 = cblas<typename fns::two, T>(herm ? "her2k" : "syr2k");
  for (bool two : {false, true}) {
    auto call = [&, two](int l, int u, int tr, int N, int K, int lda, int ldb, int ldc) {
      return [=, &t] {
        if (two) cblas_call(f2, l, u, tr, N, K, sc(ta), t.a.data(), lda, t.b.data(), ldb, sc(sb), t.c.data(), ldc);
        else cblas_call(f1, l, u, tr, N, K, sc(sa), t.a.data(), lda, sc(sb), t.c.data(), ldc);
      };
    };
    const int ldc_pos = two ? 13 : 11;
    std::vector<expected> cases{
        {1, 0, layout_msg, call(0, Up, Nt, 2, 2, 2, 2, 2)},
        {2, 0, uplo_msg, call(col, bad, Nt, 2, 2, 2, 2, 2)},
        {2, 1, uplo_msg, call(row, bad, Nt, 2, 2, 2, 2, 2)},  // the reference says 3
        {3, 0, trans_msg, call(col, Up, bad, 2, 2, 2, 2, 2)},
        {3, 1, trans_msg, call(row, Lo, bad, 2, 2, 2, 2, 2)},
        {col_refuses ? 3 : 4, 0, "", call(col, Up, refused, -1, 2, 2, 2, 2)},
        {4, 1, "", call(row, Up, refused, -1, 2, 2, 2, 2)},
        {5, 0, "", call(col, Up, Nt, 2, -1, 2, 2, 2)},
        {8, 0, "", call(col, Up, Nt, 3, 2, 2, 3, 3)},              // A is N x K
        {8, 1, "", call(row, Up, Nt, 3, 4, 3, 4, 3)},              // row-major A is N x K: lda >= K
        {8, 1, "", call(row, Lo, herm ? Ct : Tr, 3, 2, 2, 3, 3)},  // K x N: lda >= N
        {ldc_pos, 0, "", call(col, Up, Nt, 3, 2, 3, 3, 2)},
        {ldc_pos, 1, "", call(row, Lo, Nt, 3, 2, 2, 2, 2)},
    };
    if (two) {
      cases.push_back({10, 0, "", call(col, Up, Nt, 3, 2, 3, 2, 3)});
      cases.push_back({10, 1, "", call(row, Up, Nt, 3, 4, 4, 3, 3)});
    }
    t.check(std::string(herm ? "her" : "syr") + (two ? "2k" : "k"), cases);
  }
}

TYPED_TEST(CblasChecks, RankUpdates) {
  using T = TypeParam;
  rank_cases<T, T>(*this, false);
  if constexpr (zar::is_complex_v<T>) rank_cases<T, real_t<T>>(*this, true);
}

TYPED_TEST(CblasChecks, GemmtAndGemm3m) {
  using T = TypeParam;
  auto* t = this;
  auto call = [=](int l, int u, int ta, int tb, int N, int K, int lda, int ldb, int ldc) {
    return [=] {
      cblas_call(cblas<typename cfn<T>::gemmt, T>("gemmt"), l, u, ta, tb, N, K, sc(t->two), t->a.data(), lda,
                 t->b.data(), ldb, sc(t->one), t->c.data(), ldc);
    };
  };
  this->check("gemmt", {
                           {1, 0, layout_msg, call(5, Up, Nt, Nt, 2, 2, 2, 2, 2)},
                           {2, 0, uplo_msg, call(col, bad, Nt, Nt, 2, 2, 2, 2, 2)},
                           {3, 1, transa_msg, call(row, Up, bad, Nt, 2, 2, 2, 2, 2)},
                           {4, 0, transb_msg, call(col, Up, Nt, bad, 2, 2, 2, 2, 2)},
                           {5, 1, "", call(row, Up, Nt, Nt, -1, 2, 2, 2, 2)},
                           {6, 0, "", call(col, Lo, Tr, Ct, 2, -1, 2, 2, 2)},
                           {9, 0, "", call(col, Up, Nt, Nt, 3, 2, 2, 2, 3)},
                           {11, 1, "", call(row, Up, Nt, Nt, 3, 4, 3, 3, 3)},  // row-major A: lda >= K
                           {9, 1, "", call(row, Up, Nt, Nt, 3, 2, 2, 2, 3)},   // row-major B: ldb >= N
                           {14, 1, "", call(row, Lo, Nt, Nt, 3, 2, 2, 3, 2)},
                       });
  if constexpr (zar::is_complex_v<T>) {
    auto g = [=](int l, int ta, int tb, int M, int N, int K, int lda, int ldb, int ldc) {
      return [=] {
        cblas_call(cblas<typename cfn<T>::gemm, T>("gemm3m"), l, ta, tb, M, N, K, sc(t->two), t->a.data(), lda,
                   t->b.data(), ldb, sc(t->one), t->c.data(), ldc);
      };
    };
    this->check("gemm3m", {
                              {1, 0, layout_msg, g(3, Nt, Nt, 2, 2, 2, 2, 2, 2)},
                              {2, 0, transa_msg, g(col, bad, Nt, 2, 2, 2, 2, 2, 2)},
                              {3, 1, transb_msg, g(row, Nt, bad, 2, 2, 2, 2, 2, 2)},
                              {4, 0, "", g(col, Nt, Nt, -1, 2, 2, 2, 2, 2)},
                              {5, 1, "", g(row, Nt, Nt, -1, 2, 2, 2, 2, 2)},
                              {9, 0, "", g(col, Nt, Nt, 3, 2, 2, 2, 2, 3)},
                              {11, 1, "", g(row, Nt, Nt, 2, 2, 3, 2, 3, 2)},
                              {14, 0, "", g(col, Ct, Tr, 3, 2, 2, 2, 2, 2)},
                          });
  }
}

TYPED_TEST(CblasChecks, Batches) {
  using T = TypeParam;
  auto* t = this;
  auto s = [=](int l, int ta, int M, int sa, int sc_, int count) {
    return [=] {
      cblas_call(cblas<typename cfn<T>::strided, T>("gemm_batch_strided"), l, ta, Nt, M, 2, 2, sc(t->two), t->a.data(),
                 2, sa, t->b.data(), 2, 4, sc(t->one), t->c.data(), 2, sc_, count);
    };
  };
  this->check("gemm_batch_strided", {
                                        {1, 0, layout_msg, s(bad, Nt, 2, 4, 4, 2)},
                                        {2, 1, transa_msg, s(row, bad, 2, 4, 4, 2)},
                                        {4, 0, "", s(col, Nt, -1, 4, 4, 2)},
                                        {5, 1, "", s(row, Nt, -1, 4, 4, 2)},
                                        {10, 0, "", s(col, Nt, 2, -1, 4, 2)},
                                        {13, 1, "", s(row, Nt, 2, -1, 4, 2)},
                                        {17, 0, "", s(col, Nt, 2, 4, 3, 2)},
                                        {18, 1, "", s(row, Nt, 2, 4, 4, -1)},
                                    });
  // two groups, the second one holding the faults
  auto g = [=](int l, int ta1, int tb1, int m1, int groups, int size1) {
    return [=] {
      const int ta[2] = {Nt, ta1}, tb[2] = {Tr, tb1}, m[2] = {2, m1}, two[2] = {2, 2}, size[2] = {1, size1};
      const T al[2] = {t->two, t->two}, be[2] = {t->one, t->one};
      const T* a[2] = {t->a.data(), t->a.data()};
      const T* b[2] = {t->b.data(), t->b.data()};
      T* c[2] = {t->c.data(), t->c.data() + 8};
      // option arrays as ints, data as void for complex types: converted by hand
      using V = std::conditional_t<zar::is_complex_v<T>, void, T>;
      cblas<typename cfn<T>::batch, T>("gemm_batch")(
          CBLAS_LAYOUT(l), reinterpret_cast<const CBLAS_TRANSPOSE*>(ta), reinterpret_cast<const CBLAS_TRANSPOSE*>(tb),
          m, two, two, al, reinterpret_cast<const V**>(a), two, reinterpret_cast<const V**>(b), two, be,
          reinterpret_cast<V**>(c), two, groups, size);
    };
  };
  this->check("gemm_batch", {
                                {1, 0, layout_msg, g(99, Nt, Nt, 2, 2, 1)},
                                {2, 0, transa_msg, g(col, bad, Nt, 2, 2, 1)},
                                {3, 1, transb_msg, g(row, Nt, bad, 2, 2, 1)},
                                {15, 0, "", g(col, Nt, Nt, 2, -1, 1)},
                                {16, 1, "", g(row, Nt, Nt, 2, 2, -1)},
                                {4, 0, "", g(col, Nt, Nt, -1, 2, 1)},
                                {5, 1, "", g(row, Nt, Nt, -1, 2, 1)},
                            });
}

}  // namespace
}  // namespace l3f
