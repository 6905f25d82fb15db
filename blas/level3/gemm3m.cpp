// ?gemm3m: C := alpha op(A) op(B) + beta C for complex data with three real
// products in place of four (the 3M method). With A' = alpha op(A) split
// into real and imaginary parts Ar, Ai, and op(B) into Br, Bi:
//   P1 = Ar Br,  P2 = Ai Bi,  P3 = (Ar + Ai)(Br + Bi),
//   re(C) += P1 - P2,  im(C) += (P3 - P1) - P2.
// C is cut into blocks of rows and columns and the depth into blocks; for
// each depth block the parts of A' and op(B) and the sums Ar + Ai, Br + Bi
// are copied into a bounded work area (a few MiB, not copies of the whole
// operands) and the real GEMM engine adds the three block products into
// P1, P2, P3; the block of C, scaled by beta once beforehand, then gets the
// combination.
//
// Rounding differs from ?gemm: alpha is folded into A' as gemm does, but the
// sums Ar + Ai and Br + Bi are rounded before multiplying, the imaginary part
// comes from a difference of products (cancellation when |re| and |im|
// differ a lot: the error is bounded by a small multiple of k eps |A'| |B|
// elementwise, not relative to |im(C)|), and re and im are rounded once more
// when P1, P2, P3 are combined. Products too small for the method to pay, or
// whose work area cannot be allocated, go to the ordinary complex gemm.
#include "blas/level3/triangle.h"

namespace zar::l3 {
namespace {

// Blocks of C (rows, columns) and of the depth: the work area holds at most
// 3 (2 x 512 x 256 + 512 x 512) reals, 12 MiB for double.
inline constexpr int block_mn = 512, block_k = 256, small_3m = 32;

template <class T> void gemm3m(ZAR_L3_GEMM_ARGS(T)) {
  using R = real_t<T>;
  const int mm = *m, nn = *n, kk = *k, la = *lda, lb = *ldb, lc = *ldc;
  if (mm < 1 || nn < 1) return;
  const T al = *alpha;
  const auto plain = [&] { gemm(transa, transb, mm, nn, kk, al, a, la, b, lb, *beta, c, lc); };
  if (is_zero(al) || imin(imin(mm, nn), kk) < small_3m) return plain();
  const int mc = imin(mm, block_mn), nc = imin(nn, block_mn), kc = imin(kk, block_k);
  const long long sa = static_cast<long long>(mc) * kc, sb = static_cast<long long>(kc) * nc,
                  sc = static_cast<long long>(mc) * nc;
  work<R> area(3 * (sa + sb + sc));
  if (!area.get()) return plain();
  R *ar = area.get(), *ai = ar + sa, *as = ai + sa, *br = as + sa, *bi = br + sb, *bs = bi + sb;
  R *p1 = bs + sb, *p2 = p1 + sc, *p3 = p2 + sc;
  if (!is_one(*beta)) scale(mm, nn, *beta, c, lc);
  const R r1 = 1, r0 = 0;

  gemm::with_trans(gemm::trans_of(transa), [&]<gemm::tr TA>() {
    gemm::with_trans(gemm::trans_of(transb), [&]<gemm::tr TB>() {
      for (int j0 = 0; j0 < nn; j0 += nc) {
        const int nw = imin(nc, nn - j0);
        for (int i0 = 0; i0 < mm; i0 += mc) {
          const int mw = imin(mc, mm - i0);
          for (int p0 = 0; p0 < kk; p0 += kc) {
            const int kw = imin(kc, kk - p0);
            const T* bb = TB == gemm::tr::n ? at(b, p0, j0, lb) : at(b, j0, p0, lb);
            for (int j = 0; j < nw; ++j)
              for (int p = 0; p < kw; ++p) {
                const T x = gemm::op_cols<TB>(bb, lb, p, j);
                const int q = p + j * kw;
                br[q] = x.re, bi[q] = x.im, bs[q] = x.re + x.im;
              }
            const T* ab = TA == gemm::tr::n ? at(a, i0, p0, la) : at(a, p0, i0, la);
            for (int p = 0; p < kw; ++p)
              for (int i = 0; i < mw; ++i) {
                const T x = gemm::mul(al, gemm::op_rows<TA>(ab, la, i, p));
                const int q = i + p * mw;
                ar[q] = x.re, ai[q] = x.im, as[q] = x.re + x.im;
              }
            const R be = p0 == 0 ? r0 : r1;
            gemm<R>("N", "N", mw, nw, kw, r1, ar, mw, br, kw, be, p1, mw);
            gemm<R>("N", "N", mw, nw, kw, r1, ai, mw, bi, kw, be, p2, mw);
            gemm<R>("N", "N", mw, nw, kw, r1, as, mw, bs, kw, be, p3, mw);
          }
          for (int j = 0; j < nw; ++j) {
            T* cj = at(c, i0, j0 + j, lc);
            for (int i = 0; i < mw; ++i) {
              const int q = i + j * mw;
              cj[i] = gemm::add(cj[i], T{p1[q] - p2[q], (p3[q] - p1[q]) - p2[q]});
            }
          }
        }
      }
    });
  });
}

}  // namespace
}  // namespace zar::l3

#define ZAR_L3_GEMM3M_DEF(t, T, R)                                                                          \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemm3m)(ZAR_L3_GEMM_ARGS(T)) {                                             \
    zar::l3::gemm3m<T>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);                       \
  }
ZAR_L3_CPLX(ZAR_L3_GEMM3M_DEF)
