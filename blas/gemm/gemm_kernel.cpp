// GEMM block kernels: C(m x n) := beta C + Apacked Bpacked for beta 0 or 1.
//
// One register-blocked micro-kernel serves the four element types. A packed
// A panel holds, per depth step, one 256-bit vector of reals (d: 4 rows,
// s: 8 rows, c: 4 complex rows, z: 2 complex rows); a packed B panel holds
// four reals per depth step (d, s: 4 columns; c, z: 2 complex columns). The
// kernel keeps four accumulators, acc[u] += A_vector * broadcast(B[u]), with
// separate multiply and add (no fused multiply-add): every accumulator lane
// sums its products in depth order starting from zero, which is the engine's
// order (gemm_impl.h). Four chains of 256-bit adds fill the eight vector
// registers of 32-bit mode: four accumulators, the A vector, the product.
//
// For complex types acc[2j] holds (a.re b.re, a.im b.re) and acc[2j+1]
// (a.re b.im, a.im b.im) for column j; the column is then
// addsub(acc[2j], swap_pairs(acc[2j+1])) = (rr - ii, ir + ri).
#include "blas/gemm/gemm_simd.h"
#include "zar/export.h"

namespace zar::gemm {
namespace {

template <class T> using real_of = real_t<T>;
template <class T> using vec_of = simd<real_of<T>>;

// The four accumulators of one register block.
template <class R> struct block {
  typename simd<R>::V v[4];
};

// Depth loop over kp (a multiple of 4) steps of one A panel and one B panel,
// four steps per turn. Written in assembly so that the four accumulators,
// the A vector and three products stay in the eight vector registers (the
// compiler spills accumulators here). Step u: A = a[u], then for each
// column q: t = broadcast(b[u][q]) * A; acc[q] += t. Each accumulator takes
// its products in depth order; the out-of-order core overlaps the products
// of a step with the adds of the step before.
#define ZAR_GEMM_STEP(u, S, BC, R)                                 \
  "vmovap" S " " #u "*32(%[a]), %[av]\n\t"                         \
  "vbroadcasts" BC " " #u "*4*" #R "(%[b]), %[t0]\n\t"             \
  "vbroadcasts" BC " " #u "*4*" #R "+" #R "(%[b]), %[t1]\n\t"      \
  "vmulp" S " %[av], %[t0], %[t0]\n\t"                             \
  "vbroadcasts" BC " " #u "*4*" #R "+2*" #R "(%[b]), %[t2]\n\t"    \
  "vmulp" S " %[av], %[t1], %[t1]\n\t"                             \
  "vaddp" S " %[t0], %[c0], %[c0]\n\t"                             \
  "vbroadcasts" BC " " #u "*4*" #R "+3*" #R "(%[b]), %[t0]\n\t"    \
  "vmulp" S " %[av], %[t2], %[t2]\n\t"                             \
  "vaddp" S " %[t1], %[c1], %[c1]\n\t"                             \
  "vmulp" S " %[av], %[t0], %[t0]\n\t"                             \
  "vaddp" S " %[t2], %[c2], %[c2]\n\t"                             \
  "vaddp" S " %[t0], %[c3], %[c3]\n\t"

#define ZAR_GEMM_MICRO(S, BC, R)                                                                  \
  "vxorp" S " %[c0], %[c0], %[c0]\n\t"                                                           \
  "vxorp" S " %[c1], %[c1], %[c1]\n\t"                                                           \
  "vxorp" S " %[c2], %[c2], %[c2]\n\t"                                                           \
  "vxorp" S " %[c3], %[c3], %[c3]\n\t"                                                           \
  "test %[n], %[n]\n\t"                                                                          \
  "jle 2f\n\t"                                                                                   \
  ".p2align 4\n"                                                                                 \
  "1:\n\t"                                                                                       \
  "prefetcht0 448(%[a])\n\t"                                                                     \
  ZAR_GEMM_STEP(0, S, BC, R) ZAR_GEMM_STEP(1, S, BC, R) ZAR_GEMM_STEP(2, S, BC, R)              \
  ZAR_GEMM_STEP(3, S, BC, R)                                                                     \
  "add $128, %[a]\n\t"                                                                           \
  "add $16*" #R ", %[b]\n\t"                                                                     \
  "dec %[n]\n\t"                                                                                 \
  "jnz 1b\n"                                                                                     \
  "2:\n"

template <class R> inline block<R> micro(int kp, const R* a, const R* b);

#define ZAR_GEMM_MICRO_FN(R, S, BC, RB)                                                          \
  template <> __attribute__((always_inline)) inline block<R> micro<R>(int kp, const R* a, const R* b) { \
    typename simd<R>::V c0, c1, c2, c3, av, t0, t1, t2;                                           \
    int n = kp / 4;                                                                               \
    asm volatile(ZAR_GEMM_MICRO(S, BC, RB)                                                        \
                 : [c0] "=&x"(c0), [c1] "=&x"(c1), [c2] "=&x"(c2), [c3] "=&x"(c3), [av] "=&x"(av), \
                   [t0] "=&x"(t0), [t1] "=&x"(t1), [t2] "=&x"(t2), [a] "+r"(a), [b] "+r"(b), [n] "+r"(n) \
                 :                                                                                \
                 : "memory", "cc");                                                               \
    return {{c0, c1, c2, c3}};                                                                    \
  }
ZAR_GEMM_MICRO_FN(double, "d", "d", 8)
ZAR_GEMM_MICRO_FN(float, "s", "s", 4)

// The register block as nr columns of vectors in element order.
template <class T> inline int columns(block<real_of<T>>& blk) {
  using S = vec_of<T>;
  if constexpr (is_complex_v<T>) {
    blk.v[0] = S::addsub(blk.v[0], S::swap_pairs(blk.v[1]));
    blk.v[1] = S::addsub(blk.v[2], S::swap_pairs(blk.v[3]));
    return 2;
  } else {
    return 4;
  }
}

// Writes a full mr x nr block into C: C + block, or the block alone.
template <class T, bool B0> inline void store_full(block<real_of<T>> blk, T* c, int ldc) {
  using S = vec_of<T>;
  const int nc = columns<T>(blk);
  for (int j = 0; j < nc; ++j) {
    auto* cj = reinterpret_cast<real_of<T>*>(zar::offset(c, static_cast<long long>(j) * ldc));
    if constexpr (B0) S::store(cj, blk.v[j]);
    else S::store(cj, S::add(S::load(cj), blk.v[j]));
  }
}

// Writes the leading rows x cols part of a block (edges of C).
template <class T, bool B0> inline void store_part(block<real_of<T>> blk, T* c, int ldc, int rows, int cols) {
  using S = vec_of<T>;
  columns<T>(blk);
  alignas(32) T t[4][cfg<T>::mr];
  for (int j = 0; j < cfg<T>::nr; ++j) S::store(reinterpret_cast<real_of<T>*>(t[j]), blk.v[j]);
  for (int j = 0; j < cols; ++j) {
    T* cj = zar::offset(c, static_cast<long long>(j) * ldc);
    for (int i = 0; i < rows; ++i) cj[i] = B0 ? t[j][i] : add(cj[i], t[j][i]);
  }
}

// Row chunk of the packed A block worked on against each B panel, sized so
// that the chunk stays in the level-2 cache.
template <class T> inline int row_chunk(int kp) {
  constexpr int mr = cfg<T>::mr;
  const long bytes = 384L * 1024;
  const int rows = static_cast<int>(bytes / (static_cast<long>(imax(kp, 1)) * sizeof(T))) / mr * mr;
  return imax(rows, mr);
}

// Both operands packed; m rows of whole A panels (Partial: one partial panel
// of m < mr rows).
template <class T, bool B0, bool Partial>
void packed_block(int m, int n, int k, const T* a, int a_stride, const T* b, int b_stride, T* c, int ldc) {
  using R = real_of<T>;
  constexpr int mr = cfg<T>::mr, nr = cfg<T>::nr;
  const int kp = round_up(k, cfg<T>::kr);
  const int mc = Partial ? mr : row_chunk<T>(kp);
  for (int i0 = 0; i0 < m; i0 += mc) {
    const int i1 = imin(m, i0 + mc);
    for (int j = 0; j < n; j += nr) {
      const R* bp = reinterpret_cast<const R*>(zar::offset(b, static_cast<long long>(j / nr) * b_stride));
      T* cj = zar::offset(c, static_cast<long long>(j) * ldc);
      const int cols = imin(nr, n - j);
      for (int i = i0; i < i1; i += mr) {
        const R* ap = reinterpret_cast<const R*>(zar::offset(a, static_cast<long long>(i / mr) * a_stride));
        // The columns of C this block updates, one line ahead: the next
        // blocks down the same columns come out of the cache.
        for (int q = 0; q < cols; ++q)
          _mm_prefetch(reinterpret_cast<const char*>(zar::offset(cj, i + static_cast<long long>(q) * ldc)) + 64, _MM_HINT_T0);
        const block<R> blk = micro<R>(kp, ap, bp);
        if (!Partial && cols == nr) store_full<T, B0>(blk, cj + i, ldc);
        else store_part<T, B0>(blk, cj + i, ldc, Partial ? m : mr, cols);
      }
    }
  }
}

template <class T, bool B0>
void kernel_0(const char*, const char*, const int* m, const int* n, const int* k, const T*, const T* a,
              const int* a_stride, const T* b, const int* b_stride, const T*, T* c, const int* ldc, T*, int) {
  packed_block<T, B0, false>(*m, *n, *k, a, *a_stride, b, *b_stride, c, *ldc);
}

template <class T>
void ker0_pst(const char*, const char*, const int* m, const int* n, const int* k, const T*, const T* a,
              const int* a_stride, const T* b, const int* b_stride, const T* beta, T* c, const int* ldc, T*, int) {
  if (*m <= 0) return;
  if (is_zero(*beta)) packed_block<T, true, true>(*m, *n, *k, a, *a_stride, b, *b_stride, c, *ldc);
  else packed_block<T, false, true>(*m, *n, *k, a, *a_stride, b, *b_stride, c, *ldc);
}

// Both operands packed: whole panels by the main kernel, the last m mod mr
// rows by the edge kernel.
template <class T>
void packed_ker(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha,
                const T* a, const int* a_stride, const T* b, const int* b_stride, const T* beta, T* c,
                const int* ldc, T* work) {
  constexpr int mr = cfg<T>::mr;
  const int m4 = *m / mr * mr, r = *m - m4;
  if (m4 > 0) {
    if (is_zero(*beta)) kernel_0<T, true>(ta, tb, &m4, n, k, alpha, a, a_stride, b, b_stride, beta, c, ldc, work, 2);
    else kernel_0<T, false>(ta, tb, &m4, n, k, alpha, a, a_stride, b, b_stride, beta, c, ldc, work, 2);
  }
  if (r > 0)
    ker0_pst<T>(ta, tb, &r, n, k, alpha, zar::offset(a, static_cast<long long>(m4 / mr) * *a_stride), a_stride, b, b_stride, beta,
                c + m4, ldc, work, 2);
}

}  // namespace

// The block kernel. mode 2: A and B packed (alpha already in A; k is the
// padded depth). mode 3: A packed, B read in place (b_stride is ldb, k the
// true depth): each nr-wide panel of op(B) is packed into the work area,
// which holds one panel of the padded depth. modes 0 and 1: A read in place
// (a_stride is lda) and multiplied by alpha here, B packed (0) or in place
// (1, b_stride is ldb); computed directly over the whole depth k.
template <class T>
void ker0(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
          const int* a_stride, const T* b, const int* b_stride, const T* beta, T* c, const int* ldc, T* work,
          int mode) {
  if (*m <= 0 || *n <= 0) return;
  constexpr int nr = cfg<T>::nr;
  switch (mode) {
    case ker_both_packed:
      packed_ker<T>(ta, tb, m, n, k, alpha, a, a_stride, b, b_stride, beta, c, ldc, work);
      return;
    case ker_b_in_place: {
      const int kp = round_up(*k, cfg<T>::kr), stride = kp * nr;
      const int ldb = *b_stride;
      const tr mb = trans_of(tb);
      for (int j = 0; j < *n; j += nr) {
        const int w = imin(nr, *n - j);
        const T* src = mb == tr::n ? zar::offset(b, static_cast<long long>(j) * ldb) : b + j;
        with_trans(mb, [&]<tr M>() { pack_b<T, M>(*k, w, src, ldb, work, stride); });
        packed_ker<T>(ta, tb, m, &w, &kp, alpha, a, a_stride, work, &stride, beta,
                      zar::offset(c, static_cast<long long>(j) * *ldc), ldc, work);
      }
      return;
    }
    default: {
      const bool b0 = is_zero(*beta);
      with_trans(trans_of(ta), [&]<tr TA>() {
        if (mode == ker_a_place_b_packed) {
          // A packed B panel reads as op(B) = T(panel) with leading dimension nr.
          for (int j = 0; j < *n; j += nr)
            direct_product<T, TA, tr::t>(*m, imin(nr, *n - j), *k, *alpha, a, *a_stride,
                                         zar::offset(b, static_cast<long long>(j / nr) * *b_stride), nr, b0,
                                         zar::offset(c, static_cast<long long>(j) * *ldc), *ldc);
        } else {
          with_trans(trans_of(tb), [&]<tr TB>() {
            direct_product<T, TA, TB>(*m, *n, *k, *alpha, a, *a_stride, b, *b_stride, b0, c, *ldc);
          });
        }
      });
      return;
    }
  }
}

}  // namespace zar::gemm

#define ZAR_GEMM_KERNELS(t, T)                                                                              \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_ker0)(const char* ta, const char* tb, const int* m, const int* n,        \
                                         const int* k, const T* al, const T* a, const int* as, const T* b,  \
                                         const int* bs, const T* be, T* c, const int* ldc, T* w, int mode) { \
    zar::gemm::ker0<T>(ta, tb, m, n, k, al, a, as, b, bs, be, c, ldc, w, mode);                              \
  }                                                                                                         \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_kernel_0)(const char* ta, const char* tb, const int* m, const int* n,     \
                                             const int* k, const T* al, const T* a, const int* as,          \
                                             const T* b, const int* bs, const T* be, T* c, const int* ldc,  \
                                             T* w, int mode) {                                              \
    zar::gemm::kernel_0<T, false>(ta, tb, m, n, k, al, a, as, b, bs, be, c, ldc, w, mode);                   \
  }                                                                                                         \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_kernel_0_b0)(const char* ta, const char* tb, const int* m, const int* n,  \
                                                const int* k, const T* al, const T* a, const int* as,       \
                                                const T* b, const int* bs, const T* be, T* c,               \
                                                const int* ldc, T* w, int mode) {                           \
    zar::gemm::kernel_0<T, true>(ta, tb, m, n, k, al, a, as, b, bs, be, c, ldc, w, mode);                    \
  }                                                                                                         \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_ker0_pst)(const char* ta, const char* tb, const int* m, const int* n,     \
                                             const int* k, const T* al, const T* a, const int* as,          \
                                             const T* b, const int* bs, const T* be, T* c, const int* ldc,  \
                                             T* w, int mode) {                                              \
    zar::gemm::ker0_pst<T>(ta, tb, m, n, k, al, a, as, b, bs, be, c, ldc, w, mode);                          \
  }

ZAR_GEMM_TYPES(ZAR_GEMM_KERNELS)
