// Commit of a descriptor: checks the threaded layer's node plan, builds the
// node records, chooses and plans each node's kernels, sizes the per-thread
// scratch and chooses the compute entries. One template over precision,
// domain and rank; the exported names come from the variant list.
#include "dft/dfti_impl.h"

using namespace zar::dfti;

namespace {

// Per precision: the kernels and planners of zar/dfti.h.
template <class T> struct kit;
#define ZAR_DFTI_KIT(p, T, value, z, bits)                                                              \
  template <> struct kit<T> {                                                                           \
    static constexpr long long long_other = 16777216LL * (sizeof(double) / sizeof(T));                  \
    static constexpr long long long_pow2 = 67108864LL * (sizeof(double) / sizeof(T));                   \
    static constexpr bool small_table = sizeof(T) == sizeof(double);                                     \
    static int c2c(zar_dfti_desc* n) {                                                                  \
      return size_query(n) ? zar_dft_avx_rud_get_size_##p##_c2c(n) : zar_dft_avx_rud_initalloc_##p##_c2c(n); \
    }                                                                                                   \
    static int ri2ri(zar_dfti_desc* n) {                                                                \
      return size_query(n) ? zar_dft_avx_rud_get_size_##p##_ri2ri(n)                                    \
                           : zar_dft_avx_rud_initalloc_##p##_ri2ri(n);                                  \
    }                                                                                                   \
    static int real(zar_dfti_desc* n) {                                                                 \
      return size_query(n) ? zar_dft_avx_##z##_rud_real_get_size(n) : zar_dft_avx_##z##_rud_real_initalloc(n); \
    }                                                                                                   \
    static int complex_for_real(zar_dfti_desc* n) { return zar_dft_avx_complex_for_real_dft_##p(n); }  \
    static int via_2d(zar_dfti_desc* n) { return zar_dft_avx_x##z##_init_data_1d_via_2d(n); }           \
    static constexpr zar_dfti_kernel_fn via_2d_f = zar_dft_avx_x##z##_1d_via_2d_f;                      \
    static constexpr zar_dfti_kernel_fn via_2d_b = zar_dft_avx_x##z##_1d_via_2d_b;                      \
    static constexpr zar_dfti_kernel_fn cfwd = zar_dft_avx_xruds_fwd_##bits##c;                         \
    static constexpr zar_dfti_kernel_fn cinv = zar_dft_avx_xruds_inv_##bits##c;                         \
    static constexpr zar_dfti_kernel_fn sfwd = zar_dft_avx_xruds_fwd_##bits;                            \
    static constexpr zar_dfti_kernel_fn sinv = zar_dft_avx_xruds_inv_##bits;                            \
    static constexpr zar_dfti_kernel_fn r_ccs = zar_dft_avx_rudsDFTFwd_RToCCS_##bits;                   \
    static constexpr zar_dfti_kernel_fn r_pack = zar_dft_avx_rudsDFTFwd_RToPack_##bits;                 \
    static constexpr zar_dfti_kernel_fn r_perm = zar_dft_avx_rudsDFTFwd_RToPerm_##bits;                 \
    static constexpr zar_dfti_kernel_fn ccs_r = zar_dft_avx_rudsDFTInv_CCSToR_##bits;                   \
    static constexpr zar_dfti_kernel_fn perm_r = zar_dft_avx_rudsDFTInv_PermToR_##bits;                 \
    static constexpr zar_dfti_kernel_fn pack_r = zar_dft_avx_workaround_for_DFTInv_RPack_##bits;        \
    static constexpr zar_dfti_twod_fn c2d_in = zar_dft_avx_x##z##dft2d;                                 \
    static constexpr zar_dfti_twod_fn c2d_out = zar_dft_avx_x##z##dft2d_out;                            \
    static constexpr zar_dfti_twod_fn r2d_fwd = zar_dft_avx_x##p##z##dft2d;                             \
    static constexpr zar_dfti_twod_fn r2d_bwd = zar_dft_avx_x##z##p##dft2d;                             \
    static constexpr zar_dfti_twod_fn r2d_fwd_cce = zar_dft_avx_x##p##z##z##dft2d;                      \
    static constexpr zar_dfti_twod_fn r2d_bwd_cce = zar_dft_avx_x##z##z##p##dft2d;                      \
  };
ZAR_DFTI_PRECISIONS(ZAR_DFTI_KIT)
#undef ZAR_DFTI_KIT

// The layouts compute uses. Dimension strides and distances count elements
// of each side; unset ones are the contiguous defaults, which for real data
// are direction-dependent: the complex side holds n/2+1 values of the first
// dimension, and an in-place real side is padded to 2(n/2+1) reals. The
// PACK and PERM layouts are n reals (in place, the padded real span).
void effective_layouts(zar_dfti_desc* d) {
  const int rank = d->in_c.rank;
  const zar_dfti_dim* dims = d->in_c.dims;
  const zar_dfti_dim& b = d->batch_c.dims[0];
  const bool real = d->domain == ZAR_DFTI_REAL;
  const bool inplace = d->placement == ZAR_DFTI_INPLACE;
  const bool packed_reals = real && rank == 1 && d->cestorage == ZAR_DFTI_COMPLEX_REAL &&
                            (d->packed == ZAR_DFTI_PACK || d->packed == ZAR_DFTI_PERM);
  for (int dir = 0; dir < 2; ++dir) {
    // Contiguous strides of the real side and of the complex side.
    long creal = 1, ccplx = 1;
    for (int k = 0; k < rank; ++k) {
      const long n = dims[k].n;
      const long real_stride = creal, cplx_stride = ccplx;
      if (k == 0 && real) {
        creal *= inplace ? 2 * (n / 2 + 1) : n;
        ccplx *= packed_reals ? (inplace ? 2 * (n / 2 + 1) : n) : n / 2 + 1;
      } else {
        creal *= n;
        ccplx *= n;
      }
      long def_in = real ? (dir == 0 ? real_stride : cplx_stride) : real_stride;
      long def_out = real ? (dir == 0 ? cplx_stride : real_stride) : real_stride;
      zar_dfti_dim& e = d->eff[dir][k];
      e.n = dims[k].n;
      e.is = (d->strides_set & 1) || !real ? dims[k].is : static_cast<int32_t>(def_in);
      e.os = (d->strides_set & 2) || !real ? (inplace && !real && !(d->strides_set & 2) ? dims[k].is : dims[k].os)
                                           : static_cast<int32_t>(def_out);
    }
    const long span_in = real ? (dir == 0 ? creal : ccplx) : creal;
    const long span_out = real ? (dir == 0 ? ccplx : creal) : creal;
    d->eff_dist[dir][0] = b.is != 0 ? b.is : static_cast<int32_t>(span_in);
    d->eff_dist[dir][1] = b.os != 0 ? b.os : (inplace && !real ? d->eff_dist[dir][0] : static_cast<int32_t>(span_out));
  }
}

template <class T> int plan_complex_node(zar_dfti_desc* d, zar_dfti_desc* node) {
  using K = kit<T>;
  const long n = node->length;
  if (node->cstorage == ZAR_DFTI_REAL_REAL) {
    node->kfwd = K::sfwd;
    node->kbwd = K::sinv;
    return K::ri2ri(node);
  }
  if (d->node_count == 1 && node->in_unit == 1 && node->out_unit == 1 && node->work >= ZAR_DFTI_WORK_LONG_MIN) {
    const bool pow2 = is_pow2(n);
    if (n > (pow2 ? K::long_pow2 : K::long_other) || node->work >= ZAR_DFTI_WORK_LONG_FORCE ||
        node->workspace == ZAR_DFTI_AVOID) {
      if (K::via_2d(node) == 0) {
        node->kfwd = K::via_2d_f;
        node->kbwd = K::via_2d_b;
        if (d->thr_slots <= 1) node->flags |= ZAR_DFTI_FLAG_LONG_ONE_THREAD;
        return 0;
      }
    }
  }
  if (K::small_table && !is_pow2(n) && n >= 2 && n <= 64) {
    node->kfwd = zar_dft_avx_zsmallradix_forward[n];
    node->kbwd = zar_dft_avx_zsmallradix_inverse[n];
  } else {
    node->kfwd = K::cfwd;
    node->kbwd = K::cinv;
  }
  return K::c2c(node);
}

template <class T> int plan_real_node(zar_dfti_desc* d, zar_dfti_desc* node) {
  using K = kit<T>;
  if (node->index > 0) return K::complex_for_real(node);
  if (node->cestorage == ZAR_DFTI_COMPLEX_COMPLEX || node->packed == ZAR_DFTI_CCS) {
    node->kfwd = K::r_ccs;
    node->kbwd = K::ccs_r;
  } else if (node->packed == ZAR_DFTI_PACK) {
    node->kfwd = K::r_pack;
    node->kbwd = K::pack_r;
  } else if (node->packed == ZAR_DFTI_PERM) {
    node->kfwd = K::r_perm;
    node->kbwd = K::perm_r;
  } else {
    return ZAR_DFTI_EINCONSISTENT;
  }
  return K::real(node);
}

// Node k of the chain: the head for k = 0, otherwise a new record (in a
// size query a measured stand-in that the caller reuses).
zar_dfti_desc* make_node(zar_dfti_desc* d, int k, zar_dfti_desc* stand_in) {
  if (k == 0) return d;
  zar_dfti_desc* node;
  if (size_query(d)) {
    measure(d->mem, 0, sizeof(zar_dfti_desc));
    node = stand_in;
    std::memset(static_cast<void*>(node), 0, sizeof *node);
  } else {
    node = static_cast<zar_dfti_desc*>(dfti_calloc(1, sizeof(zar_dfti_desc), 64, d->mem));
    if (!node) return nullptr;
  }
  copy_node_settings(node, d);
  node->status = ZAR_DFTI_UNCOMMITTED;
  return node;
}

template <class T, bool Real, bool Md> int threaded_mode_definition(zar_dfti_desc* d) {
  if (!d->blessed) return ZAR_DFTI_EINCONSISTENT;
  const int most = Md ? d->in_c.rank : 1;
  if (d->node_count < 1 || d->node_count > most) return ZAR_DFTI_EINCONSISTENT;
  if (d->node_count > 1 && d->node_count != d->in_c.rank) return ZAR_DFTI_EINCONSISTENT;
  for (int k = 0; k < d->node_count; ++k)
    if (d->node_len[k] < 1) return ZAR_DFTI_EINCONSISTENT;
  d->nodes = d->node_count;
  return 0;
}

template <class T, bool Real, bool Md>
int commit(zar_dfti_desc* d, int (*tmd)(zar_dfti_desc*), zar_dfti_compute_fn fi, zar_dfti_compute_fn bi,
           zar_dfti_compute_fn fo, zar_dfti_compute_fn bo, zar_dfti_compute_fn f1i, zar_dfti_compute_fn b1i,
           zar_dfti_compute_fn f1o, zar_dfti_compute_fn b1o) {
  using K = kit<T>;
  const bool query = size_query(d);
  const int32_t saved_limit = d->thr_limit, saved_slots = d->thr_slots;
  if (!query) d->uncommit(d);
  int st = tmd(d);
  if (st != 0) return st;
  const bool inplace = d->placement == ZAR_DFTI_INPLACE;
  const bool split = !Real && d->cstorage == ZAR_DFTI_REAL_REAL;
  if (d->nodes > 1) {
    if (split) return ZAR_DFTI_EUNIMPLEMENTED;
    if (Real) {
      const bool cce = d->cestorage == ZAR_DFTI_COMPLEX_COMPLEX;
      d->twod_fwd = cce ? K::r2d_fwd_cce : K::r2d_fwd;
      d->twod_bwd = cce ? K::r2d_bwd_cce : K::r2d_bwd;
    } else {
      d->twod_fwd = d->twod_bwd = inplace ? K::c2d_in : K::c2d_out;
    }
  }
  effective_layouts(d);
  d->in_unit = d->eff[0][0].is == 1 && d->eff[1][0].is == 1;
  d->out_unit = d->eff[0][0].os == 1 && d->eff[1][0].os == 1;
  size_t most = 0;
  alignas(64) zar_dfti_desc stand_in;
  zar_dfti_desc* last = d;
  auto fail = [&](int code) {
    d->thr_limit = saved_limit;
    d->thr_slots = saved_slots;
    if (!query) d->uncommit(d);
    return code;
  };
  for (int k = 0; k < d->nodes; ++k) {
    zar_dfti_desc* node = make_node(d, k, &stand_in);
    if (!node) return fail(ZAR_DFTI_EMEMORY);
    if (k > 0 && !query) last->next = node;
    node->index = k;
    node->length = d->node_len[k];
    node->work = d->node_work[k];
    node->in_unit = d->in_unit;
    node->out_unit = d->out_unit;
    st = Real ? plan_real_node<T>(d, node) : plan_complex_node<T>(d, node);
    if (st != 0) return fail(st);
    node->status = ZAR_DFTI_COMMITTED;
    if (node->scratch_bytes > most) most = node->scratch_bytes;
    if (!query) last = node;
  }
  if (d->nodes > 1) {
    zar::fft::dim dims[ZAR_DFTI_MAX_RANK];
    for (int k = 0; k < d->rank; ++k) dims[k] = {d->eff[0][k].n, d->eff[0][k].is, d->eff[0][k].os};
    const size_t md = Real ? zar::fft::real_md_scratch_bytes<T>(d->rank, dims)
                           : zar::fft::md_scratch_bytes<T>(d->rank, dims);
    if (md > most) most = md;
  }
  d->max_work = most;
  const int slots = d->thr_slots > 0 ? d->thr_slots : 1;
  d->scratch_stride = up64(most);
  const size_t total = d->scratch_stride * static_cast<size_t>(slots);
  if (query) {
    measure(d->mem, 1, total);
  } else {
    d->scratch = dfti_allocate(total ? total : 64, 64, d->mem);
    if (!d->scratch) return fail(ZAR_DFTI_EMEMORY);
    const bool single = d->nodes == 1;
    d->compute_fwd = inplace ? (single ? f1i : fi) : (single ? f1o : fo);
    d->compute_bwd = inplace ? (single ? b1i : bi) : (single ? b1o : bo);
  }
  d->nptr = Real ? (inplace ? 1 : 2) : (inplace ? 1 : 2) * (split ? 2 : 1);
  d->status = ZAR_DFTI_COMMITTED;
  return 0;
}

}  // namespace

#define ZAR_DFTI_COMMIT(v, p, k, r, T, dom)                                                                    \
  ZAR_EXPORT int zar_dft_avx_threaded_mode_definition_##p##_##k##_##r(zar_dfti_desc* d) {                      \
    return threaded_mode_definition<T, dom == 33, #r[0] == 'm'>(d);                                            \
  }                                                                                                            \
  ZAR_EXPORT int zar_dft_avx_commit_descriptor_core_##p##_##k##_##r(zar_dfti_desc* d) {                        \
    return commit<T, dom == 33, #r[0] == 'm'>(                                                                 \
        d, zar_dft_avx_threaded_mode_definition_##p##_##k##_##r, zar_dft_avx_compute_fwd_##p##_##k##_##r##_i,   \
        zar_dft_avx_compute_bwd_##p##_##k##_##r##_i, zar_dft_avx_compute_fwd_##p##_##k##_##r##_o,               \
        zar_dft_avx_compute_bwd_##p##_##k##_##r##_o, zar_dft_avx_compute_fwd_##p##_##k##_1d_i,                  \
        zar_dft_avx_compute_bwd_##p##_##k##_1d_i, zar_dft_avx_compute_fwd_##p##_##k##_1d_o,                     \
        zar_dft_avx_compute_bwd_##p##_##k##_1d_o);                                                             \
  }
ZAR_DFTI_VARIANTS(ZAR_DFTI_COMMIT)
