// The GEMM front ends of the core: argument checks reaching xerbla_ and
// cblas_xerbla at the right positions, the threaded split (same bits as one
// thread), and both layouts against the reference BLAS.
#include <dlfcn.h>

#include <string>

#include "cblas.h"
#include "gemm_test.h"
#include "reference_blas.h"

extern "C" int RowMajorStrg;

namespace {
std::string seen_name;
int seen_info = 0, seen_cblas = 0, seen_row_major = -1, xerbla_calls = 0;
std::string seen_rout;
}  // namespace

// The application's handlers win over the core's.
extern "C" void xerbla_(const char* name, const int* info, int len) {
  seen_name.assign(name, len);
  seen_info = *info;
  ++xerbla_calls;
}
extern "C" void cblas_xerbla(int p, const char* rout, const char*, ...) {
  seen_cblas = p;
  seen_rout = rout;
  seen_row_major = RowMajorStrg;
  ++xerbla_calls;
}

namespace gemm_test {
namespace {

// CBLAS entries of one type with the scalars by address.
template <class T> struct cblas_api;
#define GEMM_TEST_CBLAS(t, T, DEREF)                                                                           \
  template <> struct cblas_api<T> {                                                                            \
    static void call(CBLAS_LAYOUT l, CBLAS_TRANSPOSE ta, CBLAS_TRANSPOSE tb, int m, int n, int k, const T* al, \
                     const T* a, int lda, const T* b, int ldb, const T* be, T* c, int ldc) {                   \
      cblas_##t##gemm(l, ta, tb, m, n, k, DEREF al, a, lda, b, ldb, DEREF be, c, ldc);                         \
    }                                                                                                          \
  };
GEMM_TEST_CBLAS(s, float, *)
GEMM_TEST_CBLAS(d, double, *)
GEMM_TEST_CBLAS(c, c32, )
GEMM_TEST_CBLAS(z, c64, )

template <class T> class Front : public ::testing::Test {
 protected:
  void SetUp() override {
    seen_info = seen_cblas = xerbla_calls = 0;
    seen_row_major = -1;
  }
  void TearDown() override { zar_set_num_threads(0); }
};
TYPED_TEST_SUITE(Front, all_types);

TYPED_TEST(Front, FortranArgumentChecks) {
  using T = TypeParam;
  const std::string name = std::string(1, static_cast<char>(api<T>::letter - 'a' + 'A')) + "GEMM ";
  std::vector<T> a(400), b(400), c(400, make<T>(5, 5));
  const T al = make<T>(1, 0), be = make<T>(0, 0);
  struct call {
    const char *ta, *tb;
    int m, n, k, lda, ldb, ldc, info;
  } calls[] = {
      {"X", "N", 2, 2, 2, 2, 2, 2, 1},   {"N", "/", 2, 2, 2, 2, 2, 2, 2},   {"N", "N", -1, 2, 2, 2, 2, 2, 3},
      {"n", "t", 2, -1, 2, 2, 2, 2, 4},  {"N", "N", 2, 2, -1, 2, 2, 2, 5},  {"N", "N", 3, 2, 2, 2, 2, 3, 8},
      {"T", "N", 2, 2, 3, 2, 3, 2, 8},   {"N", "N", 2, 2, 3, 2, 2, 2, 10},  {"c", "T", 2, 3, 2, 2, 2, 2, 10},
      {"N", "N", 3, 2, 2, 3, 2, 2, 13},  {"N", "N", -1, 2, 2, 0, 0, 0, 3},  {"N", "N", 0, 0, 0, 0, 1, 0, 8},
  };
  for (const call& x : calls) {
    seen_info = 0;
    const auto before = c;
    api<T>::fortran(x.ta, x.tb, &x.m, &x.n, &x.k, &al, a.data(), &x.lda, b.data(), &x.ldb, &be, c.data(), &x.ldc);
    EXPECT_EQ(seen_info, x.info) << x.ta << x.tb << " m=" << x.m << " n=" << x.n << " k=" << x.k;
    EXPECT_EQ(seen_name, name);
    EXPECT_TRUE(same_bits(c, before)) << "C is left alone";
  }
  // Legal calls reach no handler: lower-case options, "C" for every type,
  // the quick returns (m = 0, alpha = 0 with beta = 1 and null operands).
  xerbla_calls = 0;
  const int two = 2, zero = 0;
  const T one = make<T>(1, 0), zero_s = make<T>(0, 0);
  api<T>::fortran("c", "n", &two, &two, &two, &al, a.data(), &two, b.data(), &two, &be, c.data(), &two);
  api<T>::fortran("N", "N", &zero, &two, &two, &al, nullptr, &two, nullptr, &two, &be, c.data(), &two);
  const auto before = c;
  api<T>::fortran("N", "N", &two, &two, &two, &zero_s, nullptr, &two, nullptr, &two, &one, c.data(), &two);
  EXPECT_EQ(xerbla_calls, 0);
  EXPECT_TRUE(same_bits(c, before));
}

TYPED_TEST(Front, CblasArgumentChecks) {
  using T = TypeParam;
  const std::string rout = std::string("cblas_") + api<T>::letter + "gemm";
  std::vector<T> a(400), b(400), c(400);
  const T al = make<T>(1, 0), be = make<T>(0, 0);
  const auto col = CblasColMajor, row = CblasRowMajor;
  const auto N = CblasNoTrans, Tr = CblasTrans;
  // Positions as the reference CBLAS reports them; in row-major the operands
  // are exchanged and RowMajorStrg is 1 (M is 5, N 4, lda 11, ldb 9).
  struct call {
    CBLAS_LAYOUT l;
    CBLAS_TRANSPOSE ta, tb;
    int m, n, k, lda, ldb, ldc, pos, row_flag;
  } calls[] = {
      {static_cast<CBLAS_LAYOUT>(7), N, N, 2, 2, 2, 2, 2, 2, 1, 0},
      {col, static_cast<CBLAS_TRANSPOSE>(0), N, 2, 2, 2, 2, 2, 2, 2, 0},
      {row, N, static_cast<CBLAS_TRANSPOSE>(114), 2, 2, 2, 2, 2, 2, 3, 1},
      {col, N, N, -1, 2, 2, 2, 2, 2, 4, 0},
      {col, N, N, 2, -1, 2, 2, 2, 2, 5, 0},
      {col, N, N, 2, 2, -1, 2, 2, 2, 6, 0},
      {col, N, N, 3, 2, 2, 2, 2, 3, 9, 0},
      {col, N, Tr, 2, 3, 2, 2, 2, 2, 11, 0},
      {col, N, N, 3, 2, 2, 3, 2, 2, 14, 0},
      {row, N, N, -1, 2, 2, 2, 2, 2, 5, 1},
      {row, N, N, 2, -1, 2, 2, 2, 2, 4, 1},
      {row, N, N, 2, 2, -1, 2, 2, 2, 6, 1},
      {row, N, N, 2, 2, 3, 2, 3, 2, 11, 1},   // row-major A is M x K: lda >= K
      {row, Tr, N, 3, 2, 2, 2, 2, 2, 11, 1},  // transposed: lda >= M
      {row, N, N, 2, 3, 2, 2, 2, 3, 9, 1},    // B is K x N: ldb >= N
      {row, N, N, 3, 3, 2, 2, 3, 2, 14, 1},   // C is M x N: ldc >= N
  };
  for (const call& x : calls) {
    seen_cblas = 0;
    seen_row_major = -1;
    cblas_api<T>::call(x.l, x.ta, x.tb, x.m, x.n, x.k, &al, a.data(), x.lda, b.data(), x.ldb, &be, c.data(), x.ldc);
    EXPECT_EQ(seen_cblas, x.pos) << "layout " << x.l << " m=" << x.m << " n=" << x.n << " k=" << x.k;
    EXPECT_EQ(seen_row_major, x.row_flag);
    EXPECT_EQ(seen_rout, rout);
  }
  EXPECT_EQ(RowMajorStrg, 0) << "reset when the call returns";
}

// The threaded split (columns when n >= m, else rows) gives the bits of one
// thread, which are the reference's.
TYPED_TEST(Front, ThreadedSplitGivesOneThreadBits) {
  using T = TypeParam;
  struct {
    int m, n, k;
    char ta, tb;
  } cases[] = {{150, 161, 300, 'N', 'N'}, {403, 41, 280, 'T', 'C'}, {97, 230, 600, 'C', 'T'}};
  unsigned seed = 40;
  for (auto s : cases) {
    const int lda = (s.ta == 'N' ? s.m : s.k) + 1, ldb = (s.tb == 'N' ? s.k : s.n) + 2, ldc = s.m + 3;
    const auto a = random_matrix<T>(static_cast<size_t>(lda) * std::max(s.m, s.k), seed++);
    const auto b = random_matrix<T>(static_cast<size_t>(ldb) * std::max(s.n, s.k), seed++);
    const auto c0 = random_matrix<T>(static_cast<size_t>(ldc) * s.n, seed++);
    const T al = make<T>(0.5, 0.25), be = make<T>(-0.75, 1);
    std::vector<T> want = c0;
    reference(s.ta, s.tb, s.m, s.n, s.k, al, a.data(), lda, b.data(), ldb, be, want.data(), ldc, kb_for(s.k));
    for (int threads : {1, 2, 3}) {
      zar_set_num_threads(threads);
      std::vector<T> c = c0;
      api<T>::fortran(&s.ta, &s.tb, &s.m, &s.n, &s.k, &al, a.data(), &lda, b.data(), &ldb, &be, c.data(), &ldc);
      EXPECT_EQ(first_difference(c, want), -1) << threads << " threads, m=" << s.m << " n=" << s.n;
    }
  }
}

template <class T> double magnitude(T x) {
  if constexpr (is_cx<T>) return std::abs(x.re) + std::abs(x.im);
  else return std::abs(x);
}
template <class T> double distance(T x, T y) {
  if constexpr (is_cx<T>) return std::abs(x.re - y.re) + std::abs(x.im - y.im);
  else return std::abs(x - y);
}

// zar against the reference BLAS through both interfaces and both layouts.
// The summation orders differ, so the results agree to a rounding bound.
TYPED_TEST(Front, AgreesWithTheReferenceBlas) {
  using T = TypeParam;
  using R = typename real_of<T>::type;
  static const zar_test::ReferenceBlas ref;
  using fortran_fn = void (*)(const char*, const char*, const int*, const int*, const int*, const T*, const T*,
                              const int*, const T*, const int*, const T*, T*, const int*);
  const std::string f_name = std::string(1, api<T>::letter) + "gemm_";
  const auto ref_f = ref.sym<fortran_fn>(f_name.c_str());
  const auto ref_c = ref.sym<void*>(("cblas_" + f_name.substr(0, 5)).c_str());
  if (!ref_f || !ref_c) GTEST_SKIP() << "the reference BLAS for i386 is not available (or a sanitizer build)";

  const int m = 37, n = 29, k = 45;
  const T al = make<T>(0.7, -0.9), be = make<T>(1.3, -1.1);
  const double eps = std::numeric_limits<R>::epsilon();
  const CBLAS_TRANSPOSE ct[] = {CblasNoTrans, CblasTrans, CblasConjTrans};
  const char ft[] = {'n', 't', 'c'};
  unsigned seed = 70;
  for (int layout = 0; layout < 3; ++layout)  // 0: Fortran, 1: CBLAS column-major, 2: CBLAS row-major
    for (int x = 0; x < 3; ++x)
      for (int y = 0; y < 3; ++y) {
        const bool row = layout == 2;
        // Shapes as stored: op(A) is m x k, op(B) k x n, C m x n in the layout.
        const int ar = (x == 0) != row ? m : k, ac = (x == 0) != row ? k : m;
        const int br = (y == 0) != row ? k : n, bc = (y == 0) != row ? n : k;
        const int lda = ar + 2, ldb = br + 1, ldc = (row ? n : m) + 3;
        const auto a = random_matrix<T>(static_cast<size_t>(lda) * ac, seed++);
        const auto b = random_matrix<T>(static_cast<size_t>(ldb) * bc, seed++);
        const auto c0 = random_matrix<T>(static_cast<size_t>(ldc) * (row ? m : n), seed++);
        std::vector<T> mine = c0, theirs = c0;
        if (layout == 0) {
          api<T>::fortran(&ft[x], &ft[y], &m, &n, &k, &al, a.data(), &lda, b.data(), &ldb, &be, mine.data(), &ldc);
          ref_f(&ft[x], &ft[y], &m, &n, &k, &al, a.data(), &lda, b.data(), &ldb, &be, theirs.data(), &ldc);
        } else {
          const auto l = row ? CblasRowMajor : CblasColMajor;
          cblas_api<T>::call(l, ct[x], ct[y], m, n, k, &al, a.data(), lda, b.data(), ldb, &be, mine.data(), ldc);
          // The peer's CBLAS has the same prototype as ours.
          if constexpr (is_cx<T>) {
            using F = void (*)(CBLAS_LAYOUT, CBLAS_TRANSPOSE, CBLAS_TRANSPOSE, int, int, int, const void*,
                               const void*, int, const void*, int, const void*, void*, int);
            reinterpret_cast<F>(ref_c)(l, ct[x], ct[y], m, n, k, &al, a.data(), lda, b.data(), ldb, &be,
                                       theirs.data(), ldc);
          } else {
            using F = void (*)(CBLAS_LAYOUT, CBLAS_TRANSPOSE, CBLAS_TRANSPOSE, int, int, int, R, const R*, int,
                               const R*, int, R, R*, int);
            reinterpret_cast<F>(ref_c)(l, ct[x], ct[y], m, n, k, al, a.data(), lda, b.data(), ldb, be,
                                       theirs.data(), ldc);
          }
        }
        // |error| <= 4 (k + 2) eps (|alpha| sum |a||b| + |beta||c|); the
        // entries are below 1 in magnitude.
        const double bound = 4.0 * (k + 2) * eps * (magnitude(al) * 2 * k + magnitude(be) * 2);
        double worst = 0;
        for (size_t i = 0; i < mine.size(); ++i) worst = std::max(worst, distance(mine[i], theirs[i]));
        EXPECT_LE(worst, bound) << "interface " << layout << " " << ft[x] << ft[y];
      }
}

}  // namespace
}  // namespace gemm_test
