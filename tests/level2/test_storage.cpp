// The banded and packed triangular kernels against the full-storage ones:
// a band with k = n - 1 and the packed triangle hold the same matrix, and the
// kernels run the same column order, so the bits agree. Also the complex
// product pieces (trml?: lower, trmr?: upper) and the exported variants of
// the band kernels.
#include <string>

#include "l2test.h"

namespace {

using namespace l2t;

template <class T>
class Storage : public testing::Test {};
TYPED_TEST_SUITE(Storage, all_types);

TYPED_TEST(Storage, BandAndPackedTrianglesMatchFullStorage) {
  using T = TypeParam;
  const int n = 23, lda = 25, k = n - 1, ldb = k + 2;
  each_tri_case<T>([&](const char* u, const char* t, const char* d) {
    const char uplo = u[0];
    for (int inc : {1, -2}) {
      SCOPED_TRACE(testing::Message() << u << t << d << " inc " << inc);
      auto a = rnd_vec<T>(lda * n, 80);
      for (int j = 0; j < n; ++j) a[j + j * lda] = from<T>(2 + j % 3, 0.5);  // a safe diagonal
      std::vector<T> band(ldb * n, from<T>(std::nan(""))), packed;
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
          if (uplo == 'U' ? i <= j : i >= j) band[(uplo == 'U' ? k + i - j : i - j) + j * ldb] = a[i + j * lda];
      for (int j = 0; j < n; ++j)
        for (int i = uplo == 'U' ? 0 : j; i <= (uplo == 'U' ? j : n - 1); ++i) packed.push_back(a[i + j * lda]);
      const auto x0 = rnd_vec<T>(span(n, inc), 81);
      auto full = x0, bd = x0, pk = x0;
      kern<T>::trmv(u, t, d, &n, a.data(), &lda, full.data(), &inc);
      kern<T>::tbmv(u, t, d, &n, &k, band.data(), &ldb, bd.data(), &inc);
      kern<T>::tpmv(u, t, d, &n, packed.data(), pk.data(), &inc);
      EXPECT_TRUE(same_bits(full, bd));
      EXPECT_TRUE(same_bits(full, pk));
      // solves: band and packed agree bit for bit and undo the product
      auto sb = full, sp = full, sc = full;
      kern<T>::tbsv(u, t, d, &n, &k, band.data(), &ldb, sb.data(), &inc);
      kern<T>::tbsv_cnr(u, t, d, &n, &k, band.data(), &ldb, sc.data(), &inc);
      kern<T>::tpsv(u, t, d, &n, packed.data(), sp.data(), &inc);
      EXPECT_TRUE(same_bits(sb, sp));
      EXPECT_TRUE(same_bits(sb, sc));
      double w = 0, scale = 1;
      for (size_t i = 0; i < x0.size(); ++i) {
        w = worse(w, mag(widen(sb[i]) - widen(x0[i])));
        scale = std::max<double>(scale, mag(widen(full[i])));
      }
      EXPECT_LT(w, 16 * n * eps<T>() * scale);
      if (inc == 1) {
        auto fb = x0, fs = full;
        const int bad = 5;  // the _f forms read incx as 1
        kern<T>::tbmv_f(u, t, d, &n, &k, band.data(), &ldb, fb.data(), &bad);
        kern<T>::tbsv_f(u, t, d, &n, &k, band.data(), &ldb, fs.data(), &bad);
        EXPECT_TRUE(same_bits(fb, bd));
        EXPECT_TRUE(same_bits(fs, sb));
      }
    }
  });
}

template <class T>
struct pieces;
#define L2T_PIECES(t, T, R)                                                                \
  template <>                                                                              \
  struct pieces<T> {                                                                       \
    static constexpr auto trmv = &zar_blas_avx_x##t##trmv;                                 \
    struct piece {                                                                         \
      const char *uplo, *trans;                                                            \
      void (*fn)(ZAR_L2_TRPIECE_ARGS(T));                                                  \
    };                                                                                     \
    static std::vector<piece> all() {                                                      \
      return {{"L", "N", &zar_blas_avx_##t##trmln}, {"L", "T", &zar_blas_avx_##t##trmlt},  \
              {"L", "C", &zar_blas_avx_##t##trmlc}, {"U", "N", &zar_blas_avx_##t##trmrn},  \
              {"U", "T", &zar_blas_avx_##t##trmrt}, {"U", "C", &zar_blas_avx_##t##trmrc}}; \
    }                                                                                      \
    static constexpr auto tbsv = &zar_blas_avx_##t##tbsv;                                  \
    static constexpr auto vial1 = &zar_blas_avx_##t##tbsv_vial1;                           \
  };
ZAR_L2_CPLX(L2T_PIECES)

template <class T>
class Pieces : public testing::Test {};
using ctypes = testing::Types<c32, c64>;
TYPED_TEST_SUITE(Pieces, ctypes);

TYPED_TEST(Pieces, LowerAndUpperPiecesAreTheTriangularProducts) {
  using T = TypeParam;
  const int n = 19, lda = 20, inc = -1, k = 4, ldb = 5;
  const auto a = rnd_vec<T>(lda * n, 95), x0 = rnd_vec<T>(n, 96);
  for (const auto& p : pieces<T>::all())
    for (const char* diag : {"N", "U"}) {
      auto x1 = x0, x2 = x0;
      p.fn(diag, &n, a.data(), &lda, x1.data(), &inc);
      pieces<T>::trmv(p.uplo, p.trans, diag, &n, a.data(), &lda, x2.data(), &inc);
      EXPECT_TRUE(same_bits(x1, x2)) << p.uplo << p.trans << diag;
      auto b = rnd_vec<T>(ldb * n, 97);
      for (int j = 0; j < n; ++j) b[(p.uplo[0] == 'U' ? k : 0) + j * ldb] = from<T>(3, 1);
      auto s1 = x0, s2 = x0;
      pieces<T>::tbsv(p.uplo, p.trans, diag, &n, &k, b.data(), &ldb, s1.data(), &inc);
      pieces<T>::vial1(p.uplo, p.trans, diag, &n, &k, b.data(), &ldb, s2.data(), &inc);
      EXPECT_TRUE(same_bits(s1, s2)) << p.uplo << p.trans << diag;
    }
}

}  // namespace
