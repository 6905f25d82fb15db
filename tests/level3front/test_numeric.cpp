// The Level-3 routines computing through the front ends: gemmt, gemm3m and
// the batches against the reference gemm (to a rounding bound: the orders of
// summation differ), and the threaded splits against one thread, bit for
// bit. The reference routines' every option, through the Fortran interface
// and both CBLAS layouts, is checked numerically by the reference test
// programs (tests/external), and on large shapes by the kernel suites.
#include <cmath>
#include <limits>

#include "l3front.h"
#include "reference_blas.h"
#include "zar/blas.h"

namespace l3f {
namespace {

const zar_test::ReferenceBlas& ref() {
  static const zar_test::ReferenceBlas r;
  return r;
}

// Both implementations of the routine `name` (Fortran name with its
// underscore, or a cblas_ name), typed F.
template <class F> struct pair_of { F mine, theirs; };
template <class F> pair_of<F> both(const std::string& name) {
  return {entry<F>(name), ref().template sym<F>(name.c_str())};
}

constexpr int ld = 17;    // every operand: 17 x 17 storage, large enough for both layouts
constexpr int size = 15;  // largest dimension used

template <class T> double mag(const T& x) {
  if constexpr (zar::is_complex_v<T>) return std::abs(x.re) + std::abs(x.im);
  else return std::abs(static_cast<double>(x));
}
template <class T> double gap(const T& x, const T& y) {
  if constexpr (zar::is_complex_v<T>) return std::abs(x.re - y.re) + std::abs(x.im - y.im);
  else return std::abs(static_cast<double>(x) - static_cast<double>(y));
}

template <class T> class Numeric : public ::testing::Test {
 public:
  void SetUp() override {
    if (!ref().available()) GTEST_SKIP() << "the reference BLAS for i386 is not available (or a sanitizer build)";
  }
  // Skips unless the kernel library carries the driver `kernel` (x?<name>).
  bool need(const char* kernel) {
    return kernel_entry(std::string("zar_blas_avx_x") + letter<T>() + kernel) != nullptr;
  }
  // Runs run(out) for zar (mine = true) and the reference on copies of c0 and
  // compares the results element by element to a rounding bound.
  template <class Run> void agree(const std::string& what, const std::vector<T>& c0, Run run) {
    auto mine = c0, theirs = c0;
    run(true, mine.data());
    run(false, theirs.data());
    double scale = 1;
    for (const T& x : theirs) scale = std::max(scale, mag(x));
    const double tol = 64 * size * std::numeric_limits<real_t<T>>::epsilon() * scale;
    int bad = 0;
    for (size_t i = 0; i < mine.size() && bad < 3; ++i) {
      const bool nan_mine = mag(mine[i]) != mag(mine[i]), nan_theirs = mag(theirs[i]) != mag(theirs[i]);
      if (nan_mine != nan_theirs || (!nan_mine && gap(mine[i], theirs[i]) > tol)) {
        ADD_FAILURE() << what << ": element " << i % ld << "," << i / ld << " differs: " << mag(mine[i]) << " vs "
                      << mag(theirs[i]);
        ++bad;
      }
    }
  }
  // a triangular/symmetric operand with a dominant diagonal (solves stay tame)
  std::vector<T> a = [] {
    auto v = random_values<T>(ld * ld, 21);
    for (int i = 0; i < ld; ++i) v[i + i * ld] = val<T>(3 + i % 3, 0.5);
    return v;
  }();
  std::vector<T> b = random_values<T>(ld * ld, 22), c = random_values<T>(ld * ld, 23);
  const T alpha = val<T>(0.75, -0.5), beta = val<T>(0.5, 0.25), zero = val<T>(0);
};
TYPED_TEST_SUITE(Numeric, types);

const char* layouts[] = {"Fortran", "CBLAS column-major", "CBLAS row-major"};
constexpr int cblas_layout(int l) { return l == 2 ? CblasRowMajor : CblasColMajor; }
constexpr int uplo_e(char u) { return u == 'U' ? CblasUpper : CblasLower; }
constexpr int trans_e(char t) { return t == 'N' ? CblasNoTrans : t == 'T' ? CblasTrans : CblasConjTrans; }

// gemmt: the reference gemm's result on the chosen triangle, the other
// triangle untouched.
TYPED_TEST(Numeric, GemmtIsGemmOnOneTriangle) {
  using T = TypeParam;
  if (!this->need("gemmt")) GTEST_SKIP() << "no gemmt kernel";
  const std::string ty(1, letter<T>());
  const auto mine = fortran<gemmt_f<T>, T>("gemmt");
  const auto cmine = entry<void (*)(int, int, int, int, int, int, decltype(sc(T())), const T*, int, const T*, int,
                                    decltype(sc(T())), T*, int)>("cblas_" + ty + "gemmt");
  const auto gemm = ref().template sym<gemm_f<T>>((ty + "gemm_").c_str());
  const auto cgemm = ref().template sym<typename cfn<T>::gemm>(("cblas_" + ty + "gemm").c_str());
  const int n = 13, k = 9;
  for (int l = 0; l < 3; ++l)
    for (char u : {'U', 'L'})
      for (char ta : {'N', 'T', 'C'})
        for (char tb : {'N', 'T', 'C'}) {
          const std::string what = std::string("gemmt ") + layouts[l] + " " + u + ta + tb;
          this->agree(what, this->c, [&](bool zar_side, T* out) {
            const int L = cblas_layout(l);
            if (zar_side) {
              if (l == 0)
                mine(&u, &ta, &tb, &n, &k, &this->alpha, this->a.data(), &ld, this->b.data(), &ld, &this->beta, out,
                     &ld);
              else
                cmine(L, uplo_e(u), trans_e(ta), trans_e(tb), n, k, sc(this->alpha), this->a.data(), ld, this->b.data(),
                      ld, sc(this->beta), out, ld);
              return;
            }
            std::vector<T> full(out, out + ld * ld);
            if (l == 0)
              gemm(&ta, &tb, &n, &n, &k, &this->alpha, this->a.data(), &ld, this->b.data(), &ld, &this->beta,
                   full.data(), &ld);
            else
              cgemm(CBLAS_LAYOUT(L), CBLAS_TRANSPOSE(trans_e(ta)), CBLAS_TRANSPOSE(trans_e(tb)), n, n, k,
                    sc(this->alpha), this->a.data(), ld, this->b.data(), ld, sc(this->beta), full.data(), ld);
            // (i, j) of the stored matrix is in the triangle when the
            // layout's row/column indices are
            for (int j = 0; j < n; ++j)
              for (int i = 0; i < n; ++i) {
                const int r = l == 2 ? j : i, cidx = l == 2 ? i : j;  // row and column in the user's view
                if (u == 'U' ? r <= cidx : r >= cidx) out[i + j * ld] = full[i + j * ld];
              }
          });
        }
}

// gemm3m and the batches: the reference gemm product by product.
TYPED_TEST(Numeric, Gemm3mAndBatchesAreGemm) {
  using T = TypeParam;
  if (!this->need("gemm_batch") || !this->need("gemm_batch_strided")) GTEST_SKIP() << "no batch kernels";
  const std::string ty(1, letter<T>());
  const auto gemm = ref().template sym<gemm_f<T>>((ty + "gemm_").c_str());
  const int m = 11, n = 7, k = 5;
  for (char ta : {'N', 'T', 'C'})
    for (char tb : {'N', 'C'}) {
      const std::string what = std::string(1, ta) + tb;
      if constexpr (zar::is_complex_v<T>) {
        const auto g3 = fortran<gemm_f<T>, T>("gemm3m");
        this->agree("gemm3m " + what, this->c, [&](bool mine, T* out) {
          (mine ? g3 : gemm)(&ta, &tb, &m, &n, &k, &this->alpha, this->a.data(), &ld, this->b.data(), &ld, &this->beta,
                             out, &ld);
        });
      }
      // three products in two groups (the second with other sizes), and
      // three strided products, each C in its own stride
      const auto batch = fortran<batch_f<T>, T>("gemm_batch");
      const auto strided = fortran<strided_f<T>, T>("gemm_batch_strided");
      const char tas[2] = {ta, 'N'}, tbs[2] = {tb, tb};
      const int ms[2] = {m, 4}, ns[2] = {n, 6}, ks[2] = {k, 3}, lds[2] = {ld, ld}, sizes[2] = {2, 1};
      const T als[2] = {this->alpha, this->beta}, bes[2] = {this->beta, this->zero};
      const int stride = ld * n, count = 3, groups = 2;
      const auto c_big = random_values<T>(3 * stride, 24);  // three disjoint C
      this->agree("gemm_batch " + what, c_big, [&](bool mine, T* out) {
        const T* as[3] = {this->a.data(), this->b.data(), this->a.data() + 3};
        const T* bs[3] = {this->b.data(), this->a.data(), this->b.data() + 1};
        T* cs[3] = {out, out + stride, out + 2 * stride};
        if (mine) return batch(tas, tbs, ms, ns, ks, als, as, lds, bs, lds, bes, cs, lds, &groups, sizes);
        for (int p = 0; p < 3; ++p) {
          const int g = p < 2 ? 0 : 1;
          gemm(tas + g, tbs + g, ms + g, ns + g, ks + g, als + g, as[p], &ld, bs[p], &ld, bes + g, cs[p], &ld);
        }
      });
      this->agree("gemm_batch_strided " + what, c_big, [&](bool mine, T* out) {
        const int sa = 5, sb = 0;  // overlapping A, one B for all products
        if (mine)
          return strided(&ta, &tb, &m, &n, &k, &this->alpha, this->a.data(), &ld, &sa, this->b.data(), &ld, &sb,
                         &this->beta, out, &ld, &stride, &count);
        for (int p = 0; p < count; ++p)
          gemm(&ta, &tb, &m, &n, &k, &this->alpha, this->a.data() + p * sa, &ld, this->b.data(), &ld, &this->beta,
               out + p * stride, &ld);
      });
    }
}

// Problems large enough for the threaded splits give the bits of one thread.
TYPED_TEST(Numeric, ThreadedSplitsGiveOneThreadBits) {
  using T = TypeParam;
  if (!this->need("trsm") || !this->need("symm") || !this->need("syrk") || !this->need("gemm_batch"))
    GTEST_SKIP() << "no Level-3 kernels";
  const int big = 224, k = 180;  // every product over 4M multiply-adds: threaded
  const int ldb = big + 3;
  const auto a = [&] {
    auto v = random_values<T>(ldb * big, 31);
    for (int i = 0; i < big; ++i) v[i + i * ldb] = val<T>(4, 1);
    return v;
  }();
  const auto b = random_values<T>(ldb * big, 32), c0 = random_values<T>(ldb * big, 33);
  const T al = val<T>(0.5, 0.25), be = val<T>(-0.75, 0.5);
  const std::string ty(1, letter<T>());
  const auto trsm = fortran<trsm_f<T>, T>("trsm");
  const auto trmm = fortran<trsm_f<T>, T>("trmm");
  const auto symm = fortran<symm_f<T>, T>("symm");
  const auto syrk = fortran<syrk_f<T, T>, T>("syrk");
  const auto syr2k = fortran<syr2k_f<T, T>, T>("syr2k");
  const auto gemmt = fortran<gemmt_f<T>, T>("gemmt");
  const auto strided = fortran<strided_f<T>, T>("gemm_batch_strided");
  const int m2 = big, n2 = big - 19, count = 6, sa = 0, stride = ldb * 32, nn = 30, mm = 150;
  struct job {
    std::string name;
    std::function<void(T*)> run;
  };
  std::vector<job> jobs;
  for (char s : {'L', 'R'})
    for (char u : {'U', 'L'}) {
      const std::string o = std::string(1, s) + u;
      jobs.push_back(
          {"trsm " + o, [=, &a](T* out) { trsm(&s, &u, "N", "N", &m2, &n2, &al, a.data(), &ldb, out, &ldb); }});
      jobs.push_back(
          {"trmm " + o, [=, &a](T* out) { trmm(&s, &u, "C", "U", &m2, &n2, &al, a.data(), &ldb, out, &ldb); }});
      jobs.push_back({"symm " + o, [=, &a, &b](T* out) {
                        symm(&s, &u, &m2, &n2, &al, a.data(), &ldb, b.data(), &ldb, &be, out, &ldb);
                      }});
      jobs.push_back({"syrk " + o, [=, &a](T* out) { syrk(&u, "N", &m2, &k, &al, a.data(), &ldb, &be, out, &ldb); }});
      jobs.push_back({"syr2k " + o, [=, &a, &b](T* out) {
                        syr2k(&u, "T", &m2, &k, &al, a.data(), &ldb, b.data(), &ldb, &be, out, &ldb);
                      }});
      jobs.push_back({"gemmt " + o, [=, &a, &b](T* out) {
                        gemmt(&u, "N", "T", &m2, &k, &al, a.data(), &ldb, b.data(), &ldb, &be, out, &ldb);
                      }});
    }
  jobs.push_back({"gemm_batch_strided", [=, &a, &b](T* out) {
                    strided("N", "N", &mm, &nn, &k, &al, a.data(), &ldb, &sa, b.data(), &ldb, &stride, &be, out, &ldb,
                            &stride, &count);
                  }});
  if constexpr (zar::is_complex_v<T>) {
    // gemm3m split by rows (600 x 40), then by columns (40 x 600): both cross
    // the driver's 512-wide blocks
    const auto g3 = fortran<gemm_f<T>, T>("gemm3m");
    const auto wide = random_values<T>(600 * 64, 34);
    const int depth = 64;
    for (const int rows : {600, 40}) {
      const int cols = 640 - rows, ld3 = rows;
      jobs.push_back({"gemm3m " + std::to_string(rows) + " rows", [=](T* out) {
                        const int lda3 = rows, ldb3 = rows == 600 ? depth : cols;
                        g3("N", rows == 600 ? "N" : "C", &rows, &cols, &depth, &al, wide.data(), &lda3, wide.data(),
                           &ldb3, &be, out, &ld3);
                      }});
    }
  }
  for (const auto& j : jobs) {
    zar_set_num_threads(1);
    auto one = c0;
    j.run(one.data());
    zar_set_num_threads(2);
    auto two = c0;
    j.run(two.data());
    EXPECT_TRUE(same_bits(one, two)) << j.name;
  }
  zar_set_num_threads(0);
}

}  // namespace
}  // namespace l3f
