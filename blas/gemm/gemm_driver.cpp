// The GEMM driver: C := alpha op(A) op(B) + beta C for s, d, c and z.
//
// x?gemm is the entry the core calls after its argument checks; x?gemm_par
// is the blocked body (the core's threading layer calls it on each thread's
// share of C). The blocked body packs blocks of B and of alpha op(A) into one
// aligned work area and runs the block kernel of the type's record; problems
// too small for blocking, or whose work area cannot be allocated, go to the
// small-matrix path ?gemm_pst, which reads the caller's arrays directly.
#include <cstring>

#include "blas/gemm/gemm_simd.h"
#include "zar/export.h"
#include "zar/services.h"

namespace zar::gemm {

#define ZAR_GEMM_TABLE_OF(t, T)                                                           \
  inline const ker_info<T>* table_of(const T*) { return zar_avx_##t##_all_gemm_ker; }     \
  inline std::int32_t optimal_of(const T*) { return zar_avx_##t##_opt_gemm_ker; }
ZAR_GEMM_TYPES(ZAR_GEMM_TABLE_OF)
#undef ZAR_GEMM_TABLE_OF

template <class T> void zero_desc(desc<T>* d) { std::memset(d, 0, sizeof *d); }

template <class T> void load_record(int index, desc<T>* d) {
  const ker_info<T>& r = table_of(static_cast<const T*>(nullptr))[index];
  d->kernel_index = index;
  d->buf_set = r.buf_set;
  d->mr = r.mr, d->nr = r.nr, d->kr = r.kr;
  d->m_small = r.m_small, d->n_small = r.n_small, d->k_small = r.k_small;
  d->get_blks_size = r.get_blks_size, d->get_bufs_size = r.get_bufs_size, d->get_bufs = r.get_bufs;
  d->copy_a_n = r.copy_a_n, d->copy_a_t = r.copy_a_t, d->copy_a_c = r.copy_a_c;
  d->copy_b_n = r.copy_b_n, d->copy_b_t = r.copy_b_t, d->copy_b_c = r.copy_b_c;
  d->reserved18 = r.reserved18, d->reserved19 = r.reserved19;
  d->nbuf_mult = r.nbuf_mult;
  d->ker = r.ker;
}

// This library has one record per type: index 0.
template <class T> int get_kernel(const int* index, desc<T>* d) {
  if (*index < 0 || *index >= 1) return 1;
  load_record<T>(*index, d);
  return 0;
}
template <class T> void get_optimal_kernel(desc<T>* d) { load_record<T>(optimal_of(static_cast<const T*>(nullptr)), d); }

template <class T> void set_blks_size(int mb, int nb, int kb, desc<T>* d) { d->mb = mb, d->nb = nb, d->kb = kb; }

// kb from k, mb from the last-level cache, nb from n; each only when still 0.
template <class T> void get_blks_size(const int* m, const int* n, const int* k, desc<T>* d) {
  using c = cfg<T>;
  if (d->kb == 0) d->kb = depth_block<T>(*k);
  if (d->mb == 0) {
    long long rec[ZAR_CACHE_RECORD_ENTRIES] = {};
    zar_serv_cache_info(rec);
    d->mb = (rec[0] == 0 || rec[3] > 4194304LL) ? c::mb_large : c::mb_small;
  }
  if (d->nb == 0) d->nb = round_up(imin(imax(*n, c::nr), c::nb_cap), c::nr);
}

struct areas {
  bool a, b, third;
};
inline bool areas_of(int set, areas* s) {
  if (set < set_a_b_third || set > set_third) return false;
  s->a = set == set_a_b_third || set == set_a || set == set_a_b || set == set_a_third;
  s->b = set == set_a_b_third || set == set_b || set == set_a_b || set == set_b_third;
  s->third = set == set_a_b_third || set == set_b_third || set == set_a_third || set == set_third;
  return true;
}

template <class T>
int get_bufs_size(const int* set, const int* mode, const int* m, const int* n, const int* k, desc<T>* d) {
  areas s;
  if (!areas_of(*set, &s) || (*mode != size_clipped && *mode != size_full)) return 1;
  const bool clip = *mode == size_clipped;
  const int M = round_up(clip ? imin(*m, d->mb) : d->mb, d->mr);
  const int N = round_up(clip ? imin(*n, d->nb) : d->nb, d->nr);
  const int K = round_up(clip ? imin(*k, d->kb) : d->kb, d->kr);
  const int es = sizeof(T);
  if (s.a) d->a_bytes = M * es * K + 512, d->a_stride = d->mr * K, d->a_align_log2 = 12;
  if (s.b) d->b_bytes = N * es * K + 512, d->b_stride = K * d->nr, d->b_align_log2 = 12;
  if (s.third) d->c_bytes = K * es * d->nr * d->nbuf_mult + 512, d->c_align_log2 = 7;
  return 0;
}

// One allocation; the areas follow each other in the order A, third, B, each
// starting at its own alignment.
template <class T> int get_bufs(const int* set, void** raw, desc<T>* d) {
  *raw = nullptr;
  areas s;
  if (!areas_of(*set, &s)) return 1;
  size_t total = 0;
  if (s.a) total += d->a_bytes + 2 * (size_t{1} << d->a_align_log2);
  if (s.third) total += d->c_bytes + 2 * (size_t{1} << d->c_align_log2);
  if (s.b) total += d->b_bytes + 2 * (size_t{1} << d->b_align_log2);
  char* p = static_cast<char*>(zar_serv_allocate(total, 128));
  *raw = p;
  if (!p) return 0;
  std::uintptr_t at = reinterpret_cast<std::uintptr_t>(p);
  auto place = [&](int bytes, int log2) {
    const std::uintptr_t align = std::uintptr_t{1} << log2;
    at = (at + align - 1) & ~(align - 1);
    T* start = reinterpret_cast<T*>(at);
    at += bytes;
    return start;
  };
  if (s.a) d->a_buf = place(d->a_bytes, d->a_align_log2);
  if (s.third) d->c_buf = place(d->c_bytes, d->c_align_log2);
  if (s.b) d->b_buf = place(d->b_bytes, d->b_align_log2);
  return 0;
}

// C := beta C; beta exactly 0 stores zeros, clearing NaN and infinity.
template <class T> void mscale(const int* m, const int* n, const T* beta, T* c, const int* ldc) {
  if (*m < 1 || *n < 1) return;
  const T b = *beta;
  const bool wipe = is_zero(b);
  for (int j = 0; j < *n; ++j) {
    T* cj = zar::offset(c, static_cast<long long>(j) * *ldc);
    if (wipe) {
      for (int i = 0; i < *m; ++i) cj[i] = zero<T>();
    } else {
      for (int i = 0; i < *m; ++i) cj[i] = mul(b, cj[i]);
    }
  }
}

// The small path with A not transposed: the rows of C go in vectors (a
// masked vector for the last few), several columns at a time, and each lane
// sums its products in depth order as direct_product does. Complex columns
// keep two accumulators, A times the real and A times the imaginary part of
// B, combined at the end into (rr - ii, ir + ri); a conjugated B subtracts
// the second, which is adding the negated product.
template <class T, tr TB>
void rows_product(int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, bool beta_zero, T* c,
                  int ldc) {
  using R = real_t<T>;
  using S = simd<R>;
  using V = typename S::V;
  constexpr bool cplx = is_complex_v<T>;
  constexpr int per = cplx ? 2 : 1;  // reals per element
  constexpr int L = S::L / per;      // elements per vector
  // Broadcasts from memory: AVX has no broadcast from a register.
  const R* al = reinterpret_cast<const R*>(&alpha);
  const V ar = S::bcast(al), ai = cplx ? S::bcast(al + 1) : S::zero();
  // Rows i .. i+L-1 of columns j .. j+NJ-1; Tail: the last m - i < L rows.
  auto rows = [&]<int NJ, bool Tail>(int i, int j) {
    const auto mask = Tail ? S::mask((m - i) * per) : __m256i{};
    auto load = [&](const T* x) {
      const R* r = reinterpret_cast<const R*>(x);
      return Tail ? S::maskload(r, mask) : S::load(r);
    };
    V acc[NJ][per];
#pragma GCC unroll 4
    for (int q = 0; q < NJ; ++q)
      for (int h = 0; h < per; ++h) acc[q][h] = S::zero();
    const T* ap = a + i;
    for (int p = 0; p < k; ++p, ap += lda) {
      const V x = load(ap);
      V av;
      if constexpr (cplx) av = S::addsub(S::mul(x, ar), S::mul(S::swap_pairs(x), ai));
      else av = S::mul(ar, x);
      // Unrolled, so that the accumulators stay in registers.
#pragma GCC unroll 4
      for (int q = 0; q < NJ; ++q) {
        const R* bq = reinterpret_cast<const R*>(&op_cols_ref<TB>(b, ldb, p, j + q));
        acc[q][0] = S::add(acc[q][0], S::mul(av, S::bcast(bq)));
        if constexpr (cplx) {
          if constexpr (TB == tr::c) acc[q][1] = S::sub(acc[q][1], S::mul(av, S::bcast(bq + 1)));
          else acc[q][1] = S::add(acc[q][1], S::mul(av, S::bcast(bq + 1)));
        }
      }
    }
#pragma GCC unroll 4
    for (int q = 0; q < NJ; ++q) {
      T* cq = zar::offset(c, static_cast<long long>(j + q) * ldc) + i;
      V v = acc[q][0];
      if constexpr (cplx) v = S::addsub(acc[q][0], S::swap_pairs(acc[q][1]));
      if (!beta_zero) v = S::add(load(cq), v);
      if constexpr (Tail) S::maskstore(reinterpret_cast<R*>(cq), mask, v);
      else S::store(reinterpret_cast<R*>(cq), v);
    }
  };
  const int whole = m / L * L;
  auto columns = [&]<int NJ>(int j) {
    for (int i = 0; i < whole; i += L) rows.template operator()<NJ, false>(i, j);
    if (whole < m) rows.template operator()<NJ, true>(whole, j);
  };
  // Four accumulators in the registers; the last columns together, so that A
  // is read once more only.
  constexpr int NJ = 4 / per;
  int j = 0;
  for (; j + NJ <= n; j += NJ) columns.template operator()<NJ>(j);
  switch (n - j) {
    case 3: columns.template operator()<3>(j); break;
    case 2: columns.template operator()<2>(j); break;
    case 1: columns.template operator()<1>(j); break;
  }
}

// The small-matrix path: no work area; the depth in one block.
template <class T>
void pst(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
         const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc) {
  if (*m < 1 || *n < 1) return;
  T be = *beta;
  if (!is_one(be) && !is_zero(be)) {
    mscale(m, n, &be, c, ldc);
    be = one<T>();
  }
  if (is_zero(*alpha) || *k < 1) {
    if (is_zero(be)) mscale(m, n, &be, c, ldc);
    return;
  }
  // The depth in the blocked path's blocks, each block's sum added into C, so
  // that an element has the same bits whichever path computes it.
  const int kb = depth_block<T>(*k);
  const bool a_n = opt_upper(ta) == 'N', b_n = opt_upper(tb) == 'N';
  with_trans(trans_of(ta), [&]<tr TA>() {
    with_trans(trans_of(tb), [&]<tr TB>() {
      for (int p0 = 0; p0 < *k; p0 += kb) {
        const int kk = imin(kb, *k - p0);
        const T* ap = a_n ? at(a, 0, p0, *lda) : offset(a, p0);
        const T* bp = b_n ? offset(b, p0) : at(b, 0, p0, *ldb);
        const bool b0 = p0 == 0 && is_zero(be);
        if constexpr (TA == tr::n) rows_product<T, TB>(*m, *n, kk, *alpha, ap, *lda, bp, *ldb, b0, c, *ldc);
        else direct_product<T, TA, TB>(*m, *n, kk, *alpha, ap, *lda, bp, *ldb, b0, c, *ldc);
      }
    });
  });
}

// One call of x?gemm_par: the operands, the descriptor and the packers chosen
// for the transpose options.
template <class T> struct body {
  const char *ta, *tb;
  int m, n, k;
  const T* alpha;
  const T* a;
  int lda;
  const T* b;
  int ldb;
  T* c;
  int ldc;
  desc<T>* d;
  bool a_n, b_n;
  typename fn<T>::copy copy_a, copy_b;
  const T one_ = one<T>();

  body(const char* ta_, const char* tb_, int m_, int n_, int k_, const T* al, const T* a_, int lda_, const T* b_,
       int ldb_, T* c_, int ldc_, desc<T>* d_)
      : ta(ta_), tb(tb_), m(m_), n(n_), k(k_), alpha(al), a(a_), lda(lda_), b(b_), ldb(ldb_), c(c_), ldc(ldc_),
        d(d_) {
    const char ua = opt_upper(ta), ub = opt_upper(tb);
    a_n = ua == 'N', b_n = ub == 'N';
    copy_a = a_n ? d->copy_a_n : ua == 'T' ? d->copy_a_t : d->copy_a_c;
    copy_b = b_n ? d->copy_b_n : ub == 'T' ? d->copy_b_t : d->copy_b_c;
  }

  // op(A) at (i, p) and op(B) at (p, j) in the caller's arrays.
  const T* a_at(int i, int p) const { return a_n ? zar::offset(a, static_cast<long long>(p) * lda + i) : zar::offset(a, static_cast<long long>(i) * lda + p); }
  const T* b_at(int p, int j) const { return b_n ? zar::offset(b, static_cast<long long>(j) * ldb + p) : zar::offset(b, static_cast<long long>(p) * ldb + j); }
  T* c_at(int i, int j) const { return zar::offset(c, static_cast<long long>(j) * ldc + i); }

  void pack_a(int i0, int mm, int p0, int kk) const { copy_a(&mm, &kk, a_at(i0, p0), &lda, d->a_buf, &d->a_stride, alpha); }
  void pack_b(int p0, int kk, int j0, int nn, T* dst) const { copy_b(&kk, &nn, b_at(p0, j0), &ldb, dst, &d->b_stride, nullptr); }
  // Block kernel on packed A (a_buf) and packed B at bp.
  void run(int mm, int nn, int kk, const T* bp, const T* beta, int i0, int j0) const {
    const int kp = round_up(kk, d->kr);
    d->ker(ta, tb, &mm, &nn, &kp, &one_, d->a_buf, &d->a_stride, bp, &d->b_stride, beta, c_at(i0, j0), &ldc, d->c_buf,
           ker_both_packed);
  }

  bool sized(int set, void** raw) const {
    const int mode = size_clipped;
    d->get_bufs_size(&set, &mode, &m, &n, &k, d);
    d->get_bufs(&set, raw, d);
    return zar_serv_check_ptr_and_warn(*raw, cfg<T>::name) == 0;
  }

  // Schedule 2: columns, then depth, then rows; B packed per (j, p), A per (i, p).
  void schedule_default(const T* beta) const {
    for (int j0 = 0; j0 < n; j0 += d->nb) {
      const int nn = imin(d->nb, n - j0);
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        const int kk = imin(d->kb, k - p0);
        const T* be = p0 == 0 ? beta : &one_;
        pack_b(p0, kk, j0, nn, d->b_buf);
        for (int i0 = 0; i0 < m; i0 += d->mb) {
          const int mm = imin(d->mb, m - i0);
          pack_a(i0, mm, p0, kk);
          run(mm, nn, kk, d->b_buf, be, i0, j0);
        }
      }
    }
  }

  // Schedule 4: A packed per (i, p), B read in place by the kernel.
  void schedule_b_in_place() const {
    for (int j0 = 0; j0 < n; j0 += d->nb) {
      int nn = imin(d->nb, n - j0);
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        int kk = imin(d->kb, k - p0);
        for (int i0 = 0; i0 < m; i0 += d->mb) {
          int mm = imin(d->mb, m - i0);
          pack_a(i0, mm, p0, kk);
          d->ker(ta, tb, &mm, &nn, &kk, &one_, d->a_buf, &d->a_stride, b_at(p0, j0), &ldb, &one_, c_at(i0, j0),
                 &ldc, d->c_buf, ker_b_in_place);
        }
      }
    }
  }

  // Schedule 8: B packed per (j, p), A read in place by the kernel.
  void schedule_a_in_place() const {
    for (int j0 = 0; j0 < n; j0 += d->nb) {
      int nn = imin(d->nb, n - j0);
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        int kk = imin(d->kb, k - p0), mm = m;
        pack_b(p0, kk, j0, nn, d->b_buf);
        d->ker(ta, tb, &mm, &nn, &kk, alpha, a_at(0, p0), &lda, d->b_buf, &d->b_stride, &one_, c_at(0, j0), &ldc,
               d->c_buf, ker_a_place_b_packed);
      }
    }
  }

  // Schedule 16: neither operand packed, one kernel call per column block.
  void schedule_columns_in_place() const {
    for (int j0 = 0; j0 < n; j0 += d->nb) {
      int nn = imin(d->nb, n - j0), mm = m, kk = k;
      d->ker(ta, tb, &mm, &nn, &kk, alpha, a, &lda, b_at(0, j0), &ldb, &one_, c_at(0, j0), &ldc, d->c_buf,
             ker_none_packed);
    }
  }

  // Schedule 32: rows outermost; A packed per (i, p), B read in place.
  void schedule_rows_b_in_place() const {
    for (int i0 = 0; i0 < m; i0 += d->mb) {
      int mm = imin(d->mb, m - i0), nn = n;
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        int kk = imin(d->kb, k - p0);
        pack_a(i0, mm, p0, kk);
        d->ker(ta, tb, &mm, &nn, &kk, &one_, d->a_buf, &d->a_stride, b_at(p0, 0), &ldb, &one_, c_at(i0, 0), &ldc,
               d->c_buf, ker_b_in_place);
      }
    }
  }

  // Schedule 64: the whole problem in one kernel call.
  void schedule_whole() const {
    int mm = m, nn = n, kk = k;
    d->ker(ta, tb, &mm, &nn, &kk, alpha, a, &lda, b, &ldb, &one_, c, &ldc, d->c_buf, ker_none_packed);
  }

  // Schedule 128: rows outermost, then depth, then column chunks (narrowed
  // to the depth when the depth block is short).
  void schedule_rows_first() const {
    for (int i0 = 0; i0 < m; i0 += d->mb) {
      const int mm = imin(d->mb, m - i0);
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        const int kk = imin(d->kb, k - p0);
        const int chunk = kk < d->kb ? imin(d->nb, round_up(kk, d->nr)) : d->nb;
        pack_a(i0, mm, p0, kk);
        for (int j0 = 0; j0 < n; j0 += chunk) {
          const int nn = imin(chunk, n - j0);
          pack_b(p0, kk, j0, nn, d->b_buf);
          run(mm, nn, kk, d->b_buf, &one_, i0, j0);
        }
      }
    }
  }

  // Schedule 256: per (j, p) the first row block of A is packed, then B is
  // packed and multiplied in slivers of nr columns; the other row blocks of A
  // follow against the whole packed B.
  void schedule_slivers() const {
    for (int j0 = 0; j0 < n; j0 += d->nb) {
      const int nn = imin(d->nb, n - j0);
      for (int p0 = 0; p0 < k; p0 += d->kb) {
        const int kk = imin(d->kb, k - p0);
        const int mm0 = imin(d->mb, m);
        pack_a(0, mm0, p0, kk);
        for (int js = 0; js < nn; js += d->nr) {
          const int w = imin(d->nr, nn - js);
          T* panel = zar::offset(d->b_buf, static_cast<long long>(js / d->nr) * d->b_stride);
          pack_b(p0, kk, j0 + js, w, panel);
          run(mm0, w, kk, panel, &one_, 0, j0 + js);
        }
        for (int i0 = mm0; i0 < m; i0 += d->mb) {
          const int mm = imin(d->mb, m - i0);
          pack_a(i0, mm, p0, kk);
          run(mm, nn, kk, d->b_buf, &one_, i0, j0);
        }
      }
    }
  }
};

template <class T> constexpr int kernel_version = sched_default;

template <class T>
int gemm_par(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
             const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc, const int* version,
             desc<T>* d) {
  const int v = *version == 0 ? kernel_version<T> : *version;
  int set;
  switch (v) {
    case 2: set = set_a_b_third; break;
    case 4: case 32: set = set_a_third; break;
    case 8: set = set_b_third; break;
    case 16: case 64: set = set_third; break;
    case 128: case 256: set = set_a_b_third; break;
    default: return 1;
  }
  if (*m < 1 || *n < 1) return 0;
  if (d->mb == 0 || d->nb == 0 || d->kb == 0) d->get_blks_size(m, n, k, d);

  // The default schedule keeps a beta of 0 for the kernel's first depth
  // block; the others scale C by any beta but 1 first.
  T be = *beta;
  if (!is_one(be) && (v != 2 || !is_zero(be))) {
    mscale(m, n, &be, c, ldc);
    be = one<T>();
  }
  if (is_zero(*alpha)) return 0;

  const bool big = v == 4 ? (*m >= d->m_small && *n >= d->n_small && *k >= d->k_small)
                          : (*m > d->m_small && *n > d->n_small && *k > d->k_small);
  int status = 0;
  if (big) {
    body<T> w(ta, tb, *m, *n, *k, alpha, a, *lda, b, *ldb, c, *ldc, d);
    void* raw = nullptr;
    if (w.sized(set, &raw)) {
      switch (v) {
        case 2: w.schedule_default(&be); break;
        case 4: w.schedule_b_in_place(); break;
        case 8: w.schedule_a_in_place(); break;
        case 16: w.schedule_columns_in_place(); break;
        case 32: w.schedule_rows_b_in_place(); break;
        case 64: w.schedule_whole(); break;
        case 128: w.schedule_rows_first(); break;
        case 256: w.schedule_slivers(); break;
      }
      zar_serv_deallocate(raw);
      return 0;
    }
    status = v == 2 ? 0 : 1;
  }
  pst(ta, tb, m, n, k, alpha, a, lda, b, ldb, &be, c, ldc);
  return status;
}

template <class T>
void gemm(const char* ta, const char* tb, const int* m, const int* n, const int* k, const T* alpha, const T* a,
          const int* lda, const T* b, const int* ldb, const T* beta, T* c, const int* ldc) {
  if (*m < 1 || *n < 1) return;
  desc<T> d;
  zero_desc(&d);
  get_optimal_kernel(&d);
  if (!is_one(*beta)) mscale(m, n, beta, c, ldc);
  if (is_zero(*alpha)) return;
  const T b1 = one<T>();
  if (*m >= d.mr && *n >= d.nr && *k >= d.kr) {
    d.get_blks_size(m, n, k, &d);
    const int v = kernel_version<T>;
    gemm_par(ta, tb, m, n, k, alpha, a, lda, b, ldb, &b1, c, ldc, &v, &d);
  } else {
    pst(ta, tb, m, n, k, alpha, a, lda, b, ldb, &b1, c, ldc);
  }
}

}  // namespace zar::gemm

#define ZAR_GEMM_DRIVER(t, T)                                                                                 \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemm)(const char* ta, const char* tb, const int* m, const int* n,             \
                                       const int* k, const T* al, const T* a, const int* lda, const T* b,      \
                                       const int* ldb, const T* be, T* c, const int* ldc) {                   \
    zar::gemm::gemm<T>(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc);                                       \
  }                                                                                                           \
  ZAR_EXPORT int ZAR_BLAS(x##t##gemm_par)(const char* ta, const char* tb, const int* m, const int* n,          \
                                          const int* k, const T* al, const T* a, const int* lda, const T* b,   \
                                          const int* ldb, const T* be, T* c, const int* ldc, const int* v,     \
                                          zar::gemm::desc<T>* d) {                                            \
    return zar::gemm::gemm_par<T>(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc, v, d);                      \
  }                                                                                                           \
  ZAR_EXPORT int ZAR_BLAS(t##gemm_get_kernel_version)(void) { return zar::gemm::kernel_version<T>; }          \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_num_kernels)(int* count) { *count = 1; }                                   \
  ZAR_EXPORT int ZAR_BLAS(t##gemm_api_support)(void) { return 1; }                                            \
  ZAR_EXPORT int ZAR_BLAS(t##gemm_get_kernel)(const int* i, zar::gemm::desc<T>* d) {                          \
    return zar::gemm::get_kernel<T>(i, d);                                                                    \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_get_optimal_kernel)(zar::gemm::desc<T>* d) {                               \
    zar::gemm::get_optimal_kernel<T>(d);                                                                      \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_zero_desc)(zar::gemm::desc<T>* d) { zar::gemm::zero_desc<T>(d); }          \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_set_blks_size)(int mb, int nb, int kb, zar::gemm::desc<T>* d) {            \
    zar::gemm::set_blks_size<T>(mb, nb, kb, d);                                                               \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_get_blks_size)(const int* m, const int* n, const int* k,                   \
                                                  zar::gemm::desc<T>* d) {                                    \
    zar::gemm::get_blks_size<T>(m, n, k, d);                                                                  \
  }                                                                                                           \
  ZAR_EXPORT int ZAR_BLAS(t##gemm_get_bufs_size)(const int* s, const int* md, const int* m, const int* n,      \
                                                 const int* k, zar::gemm::desc<T>* d) {                       \
    return zar::gemm::get_bufs_size<T>(s, md, m, n, k, d);                                                    \
  }                                                                                                           \
  ZAR_EXPORT int ZAR_BLAS(t##gemm_get_bufs)(const int* s, void** raw, zar::gemm::desc<T>* d) {                \
    return zar::gemm::get_bufs<T>(s, raw, d);                                                                 \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_free_bufs)(void* raw) { zar_serv_deallocate(raw); }                        \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_mscale)(const int* m, const int* n, const T* be, T* c, const int* ldc) {   \
    zar::gemm::mscale<T>(m, n, be, c, ldc);                                                                   \
  }                                                                                                           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_pst)(const char* ta, const char* tb, const int* m, const int* n,            \
                                        const int* k, const T* al, const T* a, const int* lda, const T* b,     \
                                        const int* ldb, const T* be, T* c, const int* ldc) {                  \
    zar::gemm::pst<T>(ta, tb, m, n, k, al, a, lda, b, ldb, be, c, ldc);                                        \
  }

ZAR_GEMM_TYPES(ZAR_GEMM_DRIVER)
