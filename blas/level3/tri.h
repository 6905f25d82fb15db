// Triangular Level-3 drivers: trsm (solve op(A) X = alpha B or
// X op(A) = alpha B) and trmm (B := alpha op(A) B or alpha B op(A)).
//
// Both walk the triangle's dimension in panels of kp lines: each panel is
// first updated from the lines before it (in the walk's order) by one GEMM
// engine product, then handled by a recursion: the panel is cut in two, the
// off-diagonal block goes to the engine and the halves recurse until a
// diagonal block of at most nb lines remains. Only the diagonal blocks are
// triangular work.
//
// Every case is brought to one canonical form, X W = B for each line of B
// (a row of B for side right, a column for side left), with W the diagonal
// block of op(A) (side right) or of its transpose (side left):
//   - W upper: the lines are solved or multiplied walking forwards
//     (the first half of the triangle feeds the second);
//   - W lower: backwards.
// The diagonal block is copied into a work area as W (transposed and
// conjugated as needed; for trmm alpha is folded in, a unit diagonal is
// alpha); side left also copies the block of B transposed, so that the lines
// of B run along the vectors. The kernel walks the triangle for a group of
// lines held in vectors. Every line is computed alone, with the same
// operations whether it sits in a vector or in the scalar tail, and the
// recursion's cuts depend only on the triangle's size, so a line of B has
// the same bits whichever other lines are solved with it.
//
// trsm divides by the diagonal (a true division, no reciprocal), complex
// quotients by Smith's scaling. If the work area cannot be allocated the
// same kernel runs on scalar lines reading A and B in place: same
// operations, same bits.
#pragma once
#include <immintrin.h>

#include "blas/level3/l3.h"
#include "zar/avx.h"
#include "zar/services.h"

namespace zar::l3::tri {

using gemm::add;
using gemm::mul;
using gemm::tr;

enum class op { solve, mul };

// Blocking: the diagonal block of the recursion (nb), the panel of the
// outer walk (kp, whole diagonal blocks), the lines of B per panel recursion
// (nc: its engine products need about 128 x (128 + nc) elements of work
// area, kept near 384 KiB, below the allocator's fresh-mapping size), the
// columns of B per transposed copy (cw, side left).
template <class T> struct block {
  static constexpr int nb = 32, kp = 256, nc = 3072 / static_cast<int>(sizeof(T)) - 128, cw = 64;
};

template <class T> inline T minus_one() {
  if constexpr (is_complex_v<T>) return T{-1, 0};
  else return T(-1);
}
template <class R> inline R sub(R a, R b) { return a - b; }
template <class R> inline cx<R> sub(cx<R> a, cx<R> b) { return {a.re - b.re, a.im - b.im}; }

// Smith's quotient b / a: the scale ratio r and denominator d depend on the
// divisor only.
template <class R> struct smith {
  bool re_major;
  R r, d;
  explicit smith(cx<R> a) {
    re_major = (a.im < 0 ? -a.im : a.im) <= (a.re < 0 ? -a.re : a.re);
    if (re_major) r = a.im / a.re, d = a.re + a.im * r;
    else r = a.re / a.im, d = a.im + a.re * r;
  }
  cx<R> of(cx<R> b) const {
    if (re_major) return {(b.re + b.im * r) / d, (b.im - b.re * r) / d};
    return {(b.re * r + b.im) / d, (b.im * r - b.re) / d};
  }
};
template <class R> inline R quotient(R b, R a) { return b / a; }
template <class R> inline cx<R> quotient(cx<R> b, cx<R> a) { return smith<R>(a).of(b); }

// The walk over one diagonal block of size nb for the lines of a lane L
// (a group of lines in vectors, or one line). L gives the line's value at
// triangle index t (load), stores it (store), the product line(t) * W(t, k)
// (prod) and the quotient by W(k, k) (div).
//   solve, W upper: x_k = (b_k - sum_{t<k} x_t W(t,k)) / W(k,k), k rising,
//                   the products subtracted in the order the x_t were solved;
//   solve, W lower: the same with k falling and t > k;
//   mul,   W upper: y_k = sum_{t<=k} x_t W(t,k), k falling (x_t, t <= k,
//                   still in place), t rising;
//   mul,   W lower: y_k = sum_{t>=k} x_t W(t,k), k rising, t rising.
template <op O, bool Up, bool Unit, class L> inline void walk(int nb, L& l) {
  using V = typename L::V;
  constexpr bool rising = (O == op::solve) == Up;
  for (int i = 0; i < nb; ++i) {
    const int k = rising ? i : nb - 1 - i;
    if constexpr (O == op::solve) {
      V acc = l.load(k);
      if constexpr (Up)
        for (int t = 0; t < k; ++t) acc = l.sub(acc, l.prod(t, k));
      else
        for (int t = nb - 1; t > k; --t) acc = l.sub(acc, l.prod(t, k));
      if constexpr (!Unit) acc = l.div(acc, k);
      l.store(k, acc);
    } else {
      const int t0 = Up ? 0 : k, t1 = Up ? k + 1 : nb;
      V acc = l.prod(t0, k);
      for (int t = t0 + 1; t < t1; ++t) acc = l.add(acc, l.prod(t, k));
      l.store(k, acc);
    }
  }
}

// One line through accessors: p(t) is the line's element t (a reference),
// w(t, k) the value of W.
template <class T, class P, class W> struct scalar_lane {
  using V = T;
  P p;
  W w;
  V load(int t) { return p(t); }
  void store(int k, V v) { p(k) = v; }
  V prod(int t, int k) { return mul(p(t), w(t, k)); }
  static V add(V a, V b) { return gemm::add(a, b); }
  static V sub(V a, V b) { return tri::sub(a, b); }
  V div(V a, int k) { return quotient(a, w(k, k)); }
};
template <class T, class P, class W> inline scalar_lane<T, P, W> make_scalar_lane(P p, W w) { return {p, w}; }

inline __m256d vdiv(__m256d a, __m256d b) { return _mm256_div_pd(a, b); }
inline __m256 vdiv(__m256 a, __m256 b) { return _mm256_div_ps(a, b); }

// Two vectors of lines: the lines r .. r + 2E - 1 (E elements per vector) of
// a panel whose element (r, t) is at p[r + t ldp]; W contiguous in columns.
// The operations are those of scalar_lane, element by element: a complex
// product is (xr wr - xi wi, xi wr + xr wi), a quotient Smith's.
template <class T> struct vector_lane {
  using R = real_t<T>;
  using S = avx<R>;
  using SV = typename S::V;
  static constexpr int E = is_complex_v<T> ? S::L / 2 : S::L;
  struct V {
    SV x0, x1;
  };
  T* p;
  long ldp;
  const T* w;
  long ldw;

  R* line(int t) const { return reinterpret_cast<R*>(p + t * ldp); }
  V load(int t) const {
    const R* c = line(t);
    return {S::load(c), S::load(c + S::L)};
  }
  void store(int k, V v) const {
    R* c = line(k);
    S::store(c, v.x0);
    S::store(c + S::L, v.x1);
  }
  static SV cmul(SV x, SV wr, SV wi) { return S::addsub(S::mul(x, wr), S::mul(S::swap_pairs(x), wi)); }
  V prod(int t, int k) const {
    const T* wk = w + (t + k * ldw);
    const V x = load(t);
    if constexpr (is_complex_v<T>) {
      const SV wr = S::bcast(&wk->re), wi = S::bcast(&wk->im);
      return {cmul(x.x0, wr, wi), cmul(x.x1, wr, wi)};
    } else {
      const SV wv = S::bcast(wk);
      return {S::mul(x.x0, wv), S::mul(x.x1, wv)};
    }
  }
  static V add(V a, V b) { return {S::add(a.x0, b.x0), S::add(a.x1, b.x1)}; }
  static V sub(V a, V b) { return {S::sub(a.x0, b.x0), S::sub(a.x1, b.x1)}; }
  V div(V a, int k) const {
    const T* wk = w + (k + k * ldw);
    if constexpr (is_complex_v<T>) {
      const smith<R> q(*wk);
      const SV r = S::set1(q.r), d = S::set1(q.d);
      // re-major: (b + flip(swap(b) r)) / d; else (b r + flip(swap(b))) / d
      auto one = [&](SV b) {
        return q.re_major ? vdiv(S::add(b, S::flip_odd(S::mul(S::swap_pairs(b), r))), d)
                          : vdiv(S::add(S::mul(b, r), S::flip_odd(S::swap_pairs(b))), d);
      };
      return {one(a.x0), one(a.x1)};
    } else {
      const SV dv = S::bcast(wk);
      return {vdiv(a.x0, dv), vdiv(a.x1, dv)};
    }
  }
};

// The kernel on `rows` lines of a panel (element (r, t) at p[r + t ldp]),
// W contiguous (ldw).
template <class T, op O, bool Up, bool Unit>
void panel_kernel(int rows, int nb, T* p, int ldp, const T* w, int ldw) {
  constexpr int G = 2 * vector_lane<T>::E;
  int r = 0;
  for (; r + G <= rows; r += G) {
    vector_lane<T> l{p + r, ldp, w, ldw};
    walk<O, Up, Unit>(nb, l);
  }
  for (; r < rows; ++r) {
    T* pr = p + r;
    auto l = make_scalar_lane<T>([=](int t) -> T& { return pr[static_cast<long>(t) * ldp]; },
                                 [=](int t, int k) { return w[t + static_cast<long>(k) * ldw]; });
    walk<O, Up, Unit>(nb, l);
  }
}

// One call of a driver with its modes as constants: side left, W upper
// (forward walk), op(A) mode, unit diagonal.
template <class T, op O, bool Left, bool Up, tr TA, bool Unit> struct driver {
  // W(t, k) is A(k, t) (read across) for side right with op(A) transposed
  // and for side left with op(A) = A.
  static constexpr bool across = Left == (TA == tr::n);
  static constexpr bool cj = TA == tr::c;
  static constexpr int nb = block<T>::nb, cw = block<T>::cw;

  int m, n;
  T alpha;
  const T* a;
  int lda;
  T* b;
  int ldb;
  T* w;     // nb x nb, or null: no work area
  T* pbuf;  // cw x nb (side left)

  char ta() const { return TA == tr::n ? 'N' : TA == tr::t ? 'T' : 'C'; }

  // Element (r, c) of op(A) as a block start: a block of op(A) at (r, c)
  // is the block of A at (r, c) or, transposed, at (c, r).
  const T* opa(int r, int c) const { return TA == tr::n ? at(a, r, c, lda) : at(a, c, r, lda); }

  // W(t, k) of the diagonal block at k0, read from A (trmm: alpha folded in,
  // the unit diagonal is alpha).
  T w_of(const T* d, int t, int k) const {
    T v;
    if (Unit && O == op::mul && t == k) v = one<T>();
    else v = across ? d[k + static_cast<long>(t) * lda] : d[t + static_cast<long>(k) * lda];
    if constexpr (cj) v = gemm::conj(v);
    if constexpr (O == op::mul) v = mul(alpha, v);
    return v;
  }

  void copy_w(const T* d, int kk) const {
    for (int k = 0; k < kk; ++k) {
      const int t0 = Up ? 0 : k, t1 = Up ? k + 1 : kk;
      for (int t = t0; t < t1; ++t)
        if (O == op::mul || !Unit || t != k) w[t + k * nb] = w_of(d, t, k);
    }
  }

  // B's block (kk rows, cols columns) into the panel, lines along the
  // vectors (Back: the other way). Eight columns of B at a time, so that
  // both sides are walked along their cache lines.
  template <bool Back> static void transpose(int cols, int kk, T* bb, int ldb, T* p, int ldp) {
    constexpr int G = 8;
    int r0 = 0;
    for (; r0 + G <= cols; r0 += G) {
      T* src[G];
      for (int r = 0; r < G; ++r) src[r] = at(bb, 0, r0 + r, ldb);
      for (int t = 0; t < kk; ++t)
        for (int r = 0; r < G; ++r) {
          if constexpr (Back) src[r][t] = p[r0 + r + t * ldp];
          else p[r0 + r + t * ldp] = src[r][t];
        }
    }
    for (int r = r0; r < cols; ++r) {
      T* col = at(bb, 0, r, ldb);
      for (int t = 0; t < kk; ++t) {
        if constexpr (Back) col[t] = p[r + t * ldp];
        else p[r + t * ldp] = col[t];
      }
    }
  }

  // The diagonal block of size kk at k0.
  void diagonal(int k0, int kk) const {
    const T* d = at(a, k0, k0, lda);
    if (!w) {  // no work area: scalar lines in place
      auto wv = [=, this](int t, int k) { return w_of(d, t, k); };
      const int lines = Left ? n : m;
      for (int r = 0; r < lines; ++r) {
        T* line = Left ? at(b, k0, r, ldb) : at(b, r, k0, ldb);
        const long step = Left ? 1 : ldb;
        auto l = make_scalar_lane<T>([=](int t) -> T& { return line[t * step]; }, wv);
        walk<O, Up, Unit>(kk, l);
      }
      return;
    }
    copy_w(d, kk);
    if constexpr (!Left) {
      panel_kernel<T, O, Up, Unit>(m, kk, at(b, 0, k0, ldb), ldb, w, nb);
    } else {
      for (int c0 = 0; c0 < n; c0 += cw) {
        const int cols = imin(cw, n - c0);
        T* bb = at(b, k0, c0, ldb);
        transpose<false>(cols, kk, bb, ldb, pbuf, cw);
        panel_kernel<T, O, Up, Unit>(cols, kk, pbuf, cw, w, nb);
        transpose<true>(cols, kk, bb, ldb, pbuf, cw);
      }
    }
  }

  // B's part t (kt lines from t0) gets coef times op(A)'s off-diagonal block
  // against B's part s: side left B_t += coef op(A)(t, s) B_s, side right
  // B_t += coef B_s op(A)(s, t).
  void update(int t0, int kt, int s0, int ks, T coef) const {
    const char tn = 'N', tt = ta();
    if constexpr (Left)
      l3::gemm<T>(&tt, &tn, kt, n, ks, coef, opa(t0, s0), lda, at(b, s0, 0, ldb), ldb, one<T>(),
                  at(b, t0, 0, ldb), ldb);
    else
      l3::gemm<T>(&tn, &tt, m, kt, ks, coef, at(b, 0, s0, ldb), ldb, opa(s0, t0), lda, one<T>(),
                  at(b, 0, t0, ldb), ldb);
  }

  // The whole triangle (k lines): panels of kp lines in the walk's order,
  // each updated from all the lines before it by one engine product (its
  // depth as long as the walk so far), then solved or multiplied by the
  // recursion below. trmm walks the other way, so that the lines a panel
  // reads are not yet overwritten. Every product of a call has the same
  // panel height, so the engine's work areas have few sizes.
  void run_all(int k) const {
    const int kp = block<T>::kp;
    const int panels = (k + kp - 1) / kp;
    constexpr bool rising = (O == op::solve) == Up;
    for (int i = 0; i < panels; ++i) {
      const int q = rising ? i : panels - 1 - i;
      const int j0 = q * kp, kj = imin(kp, k - j0);
      // the lines feeding this panel: those before it (W upper) or after it
      const int s0 = Up ? 0 : j0 + kj, ks = Up ? j0 : k - j0 - kj;
      if constexpr (O == op::solve) {
        if (ks > 0) update(j0, kj, s0, ks, minus_one<T>());
        run_panel(j0, kj);
      } else {
        run_panel(j0, kj);
        if (ks > 0) update(j0, kj, s0, ks, alpha);
      }
    }
  }

  // One panel's recursion, a few lines of B (columns for side left, rows
  // for side right) at a time, so that the engine's work areas for its small
  // products stay below the size the allocator maps afresh each time.
  void run_panel(int j0, int kj) const {
    const int lines = Left ? n : m;
    for (int r0 = 0; r0 < lines; r0 += block<T>::nc) {
      driver part = *this;
      (Left ? part.n : part.m) = imin(block<T>::nc, lines - r0);
      part.b = Left ? at(b, 0, r0, ldb) : at(b, r0, 0, ldb);
      part.run(j0, kj);
    }
  }

  // The triangle's lines [k0, k0 + k): cut after whole diagonal blocks, near
  // the middle. Upper W: the first part is the source of the update.
  void run(int k0, int k) const {
    if (k <= nb) {
      diagonal(k0, k);
      return;
    }
    const int k1 = k / 2, k2 = k - k1;
    const int s0 = Up ? k0 : k0 + k1, ks = Up ? k1 : k2;
    const int t0 = Up ? k0 + k1 : k0, kt = Up ? k2 : k1;
    if constexpr (O == op::solve) {
      run(s0, ks);
      update(t0, kt, s0, ks, minus_one<T>());
      run(t0, kt);
    } else {
      run(t0, kt);
      update(t0, kt, s0, ks, alpha);
      run(s0, ks);
    }
  }
};

// The exported drivers' body: options resolved once into the modes.
template <class T, op O>
void entry(const char* side, const char* uplo, const char* transa, const char* diag, const int* pm, const int* pn,
           const T* palpha, const T* a, const int* plda, T* b, const int* pldb) {
  const int m = *pm, n = *pn, ldb = *pldb;
  if (m < 1 || n < 1) return;
  const T alpha = *palpha;
  if (is_zero(alpha)) {  // B := 0 without reading A
    l3::scale<T>(m, n, zero<T>(), b, ldb);
    return;
  }
  if (O == op::solve && !is_one(alpha)) l3::scale<T>(m, n, alpha, b, ldb);

  const bool left = opt_upper(side) == 'L', a_up = opt_upper(uplo) == 'U', unit = opt_upper(diag) != 'N';
  tr ta = gemm::trans_of(transa);
  if (!is_complex_v<T> && ta == tr::c) ta = tr::t;
  // W is op(A)'s block (right) or its transpose (left); read across it
  // swaps the triangle.
  const bool across = left == (ta == tr::n);
  const bool up = a_up != across;

  using B = block<T>;
  static constexpr char name[] = {elem<T>::upper, 'T', 'R', O == op::solve ? 'S' : 'M', 'M', 0};
  const size_t elems = static_cast<size_t>(B::nb) * B::nb + (left ? static_cast<size_t>(B::cw) * B::nb : 0);
  const l3::work<T> area(static_cast<long long>(elems));
  T* const work = area.get();
  if (!work) zar_serv_check_ptr_and_warn(work, name);

  auto go = [&]<bool L, bool U, tr M, bool D>() {
    const driver<T, O, L, U, M, D> d{m, n, alpha, a, *plda, b, ldb, work, work ? work + B::nb * B::nb : nullptr};
    d.run_all(L ? m : n);
  };
  auto with_bool = [](bool v, auto&& f) {
    if (v) f.template operator()<true>();
    else f.template operator()<false>();
  };
  with_bool(left, [&]<bool L>() {
    with_bool(up, [&]<bool U>() {
      with_bool(unit, [&]<bool D>() {
        if constexpr (is_complex_v<T>) {
          gemm::with_trans(ta, [&]<tr M>() { go.template operator()<L, U, M, D>(); });
        } else {
          if (ta == tr::n) go.template operator()<L, U, tr::n, D>();
          else go.template operator()<L, U, tr::t, D>();
        }
      });
    });
  });
}

}  // namespace zar::l3::tri

// The exported driver of one routine for one type of the list.
#define ZAR_TRI_EXPORT(t, T, routine, O)                                                                     \
  ZAR_EXPORT void ZAR_BLAS(x##t##routine)(ZAR_L3_TRSM_ARGS(T)) {                                             \
    zar::l3::tri::entry<T, zar::l3::tri::op::O>(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);      \
  }
