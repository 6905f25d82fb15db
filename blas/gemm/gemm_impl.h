// Internals of the GEMM engine shared by the driver, the packers and the
// kernels: the blocking constants of each element type (published through
// the kernel record), element arithmetic in the engine's fixed order, and
// the accessors of op(A) and op(B).
//
// Order of operations (every path of the engine follows it, so that the
// blocked path, the small path and the threaded split agree bit for bit):
//   1. a' = alpha * op(A)(i, p), rounded (complex: re = ar*xr - ai*xi,
//      im = ar*xi + ai*xr with alpha = ar + i ai);
//   2. over one depth block, products are summed from zero in depth order;
//      for complex elements four real sums are kept,
//        rr = sum a'.re*b.re, ii = sum a'.im*b.im,
//        ri = sum a'.re*b.im, ir = sum a'.im*b.re,
//      and the block's value is (rr - ii, ir + ri);
//   3. each block's value is added into C (or stored, when beta is 0 on the
//      first block); a beta other than 0 and 1 is applied to C beforehand.
#pragma once
#include "zar/gemm.h"
#include "zar/types.h"

namespace zar::gemm {

// Blocking constants: register block (mr x nr, depth unroll kr), row-block
// sizes for a large (> 4 MiB or unknown) and a smaller last-level cache, and
// the cap of the column block.
template <class T> struct cfg;
template <> struct cfg<double> {
  static constexpr int mr = 4, nr = 4, kr = 4, mb_large = 640, mb_small = 384, nb_cap = 5000;
  static constexpr char name[] = "DGEMM";
};
template <> struct cfg<float> {
  static constexpr int mr = 8, nr = 4, kr = 4, mb_large = 1280, mb_small = 768, nb_cap = 5000;
  static constexpr char name[] = "SGEMM";
};
template <> struct cfg<c32> {
  static constexpr int mr = 4, nr = 2, kr = 4, mb_large = 640, mb_small = 320, nb_cap = 5000;
  static constexpr char name[] = "CGEMM";
};
template <> struct cfg<c64> {
  static constexpr int mr = 2, nr = 2, kr = 4, mb_large = 320, mb_small = 160, nb_cap = 2000;
  static constexpr char name[] = "ZGEMM";
};

inline constexpr int round_up(int x, int to) { return (x + to - 1) / to * to; }
inline constexpr int imin(int a, int b) { return a < b ? a : b; }
inline constexpr int imax(int a, int b) { return a > b ? a : b; }

// The depth block for an inner dimension k: every path of the engine sums
// over blocks of this depth (k below 256: one block; 257 to 511: two
// halves; otherwise 256).
template <class T> inline constexpr int depth_block(int k) {
  if (k < 256) return imax(round_up(k, cfg<T>::kr), 128);
  if (k > 256 && k < 512) return round_up(k / 2, cfg<T>::kr);
  return 256;
}

// ---- element arithmetic
template <class R> inline R mul(R a, R b) { return a * b; }
template <class R> inline cx<R> mul(cx<R> a, cx<R> b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class R> inline R add(R a, R b) { return a + b; }
template <class R> inline cx<R> add(cx<R> a, cx<R> b) { return {a.re + b.re, a.im + b.im}; }
template <class R> inline R conj(R a) { return a; }
template <class R> inline cx<R> conj(cx<R> a) { return {a.re, -a.im}; }
template <class T> inline T zero() { return T{}; }

// A depth sum in the engine's order (step 2 above).
template <class T> struct dot_acc {
  T s{};
  void add(T a, T b) { s = s + a * b; }
  T value() const { return s; }
};
template <class R> struct dot_acc<cx<R>> {
  R rr = 0, ii = 0, ri = 0, ir = 0;
  void add(cx<R> a, cx<R> b) {
    rr = rr + a.re * b.re;
    ii = ii + a.im * b.im;
    ri = ri + a.re * b.im;
    ir = ir + a.im * b.re;
  }
  cx<R> value() const { return {rr - ii, ir + ri}; }
};

// ---- transpose modes, resolved once per call
enum class tr { n, t, c };
inline tr trans_of(const char* o) {
  const char u = opt_upper(o);
  return u == 'N' ? tr::n : u == 'T' ? tr::t : tr::c;
}

// op(X)(r, p) of a matrix stored column-major with leading dimension ld,
// where r runs along the rows of op(X): op(A)(i, p) = at<TA>(a, lda, i, p),
// op(B)(p, j) = at<TB>(b, ldb, j, p) read with the roles swapped (see below).
template <tr M, class T> inline T op_rows(const T* x, int ld, int i, int p) {
  if constexpr (M == tr::n) return *zar::offset(x, i + static_cast<long long>(p) * ld);
  else if constexpr (M == tr::t) return *zar::offset(x, p + static_cast<long long>(i) * ld);
  else return conj(*zar::offset(x, p + static_cast<long long>(i) * ld));
}
// Where op(B)(p, j) is stored (real types: "C" reads as "T").
template <tr M, class T> inline const T& op_cols_ref(const T* x, int ld, int p, int j) {
  if constexpr (M == tr::n) return *zar::offset(x, p + static_cast<long long>(j) * ld);
  else return *zar::offset(x, j + static_cast<long long>(p) * ld);
}
// op(B)(p, j).
template <tr M, class T> inline T op_cols(const T* x, int ld, int p, int j) {
  if constexpr (M == tr::n) return *zar::offset(x, p + static_cast<long long>(j) * ld);
  else if constexpr (M == tr::t) return *zar::offset(x, j + static_cast<long long>(p) * ld);
  else return conj(*zar::offset(x, j + static_cast<long long>(p) * ld));
}

// Calls f.template operator()<TA>() with the transpose mode as a constant.
template <class F> inline decltype(auto) with_trans(tr m, F&& f) {
  switch (m) {
    case tr::n: return f.template operator()<tr::n>();
    case tr::t: return f.template operator()<tr::t>();
    default: return f.template operator()<tr::c>();
  }
}

// C(m x n) += alpha op(A) op(B) computed straight from the caller's arrays
// over the whole depth k in the engine's order; beta_zero stores instead of
// adding. Columns go two at a time and the depth four at a time.
template <class T, tr TA, tr TB>
void direct_product(int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, bool beta_zero, T* c,
                    int ldc) {
  auto finish = [&](T* cij, T v) { *cij = beta_zero ? v : add(*cij, v); };
  const int n2 = n / 2 * 2, k4 = k / 4 * 4;
  for (int j = 0; j < n2; j += 2) {
    T* c0 = zar::offset(c, static_cast<long long>(j) * ldc);
    T* c1 = c0 + ldc;
    for (int i = 0; i < m; ++i) {
      dot_acc<T> s0, s1;
      int p = 0;
      for (; p < k4; p += 4)
        for (int q = p; q < p + 4; ++q) {
          const T ap = mul(alpha, op_rows<TA>(a, lda, i, q));
          s0.add(ap, op_cols<TB>(b, ldb, q, j));
          s1.add(ap, op_cols<TB>(b, ldb, q, j + 1));
        }
      for (; p < k; ++p) {
        const T ap = mul(alpha, op_rows<TA>(a, lda, i, p));
        s0.add(ap, op_cols<TB>(b, ldb, p, j));
        s1.add(ap, op_cols<TB>(b, ldb, p, j + 1));
      }
      finish(c0 + i, s0.value());
      finish(c1 + i, s1.value());
    }
  }
  if (n2 < n) {
    T* c0 = zar::offset(c, static_cast<long long>(n2) * ldc);
    for (int i = 0; i < m; ++i) {
      dot_acc<T> s0;
      for (int p = 0; p < k; ++p) s0.add(mul(alpha, op_rows<TA>(a, lda, i, p)), op_cols<TB>(b, ldb, p, n2));
      finish(c0 + i, s0.value());
    }
  }
}

}  // namespace zar::gemm
