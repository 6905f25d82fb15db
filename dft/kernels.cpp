// Node kernels, planners and compute entries of the FFT descriptor: thin
// wrappers over the engine (dft/engine/fft.h), instantiated per precision,
// domain and rank from the lists of zar/dfti.h.
#include "dft/dfti_impl.h"

using namespace zar::dfti;
namespace fft = zar::fft;

namespace {

enum { kFwd = 0, kBwd = 1 };

template <class T> T scale_of(const zar_dfti_desc* d, int dir) {
  return static_cast<T>(dir == kFwd ? d->fscale : d->bscale);
}
template <class T> T* arr(void* const* a, int i) { return static_cast<T*>(a[i]); }

// ------------------------------------------------------------- planners
// Plans a node from the engine's footprint: in a size query the plan is only
// measured, otherwise allocated through the hooks and built.
template <class Build> int plan_node(zar_dfti_desc* node, const fft::footprint& f, Build build) {
  node->scratch_bytes = f.scratch_bytes;
  node->plan_bytes = f.plan_bytes;
  if (size_query(node)) {
    measure(node->mem, 1, f.plan_bytes);
    return 0;
  }
  node->plan = dfti_allocate(f.plan_bytes, 64, node->mem);
  if (!node->plan) return ZAR_DFTI_EMEMORY;
  build(node->plan);
  return 0;
}

template <class T> int plan_complex(zar_dfti_desc* node) {
  const long n = node->length;
  return plan_node(node, fft::complex_footprint<T>(n), [n](void* m) { fft::complex_build<T>(n, m); });
}

template <class T> int plan_real(zar_dfti_desc* node) {
  const long n = node->length;
  return plan_node(node, fft::real_footprint<T>(n), [n](void* m) { fft::real_build<T>(n, m); });
}

// The long route: n = n1 * n2 through the engine's six-step plan; a length
// without a useful split is refused (the commit then plans it directly).
template <class T> int plan_long(zar_dfti_desc* node) {
  long n1 = 0, n2 = 0;
  if (!fft::long_split(node->length, &n1, &n2)) return ZAR_DFTI_EUNIMPLEMENTED;
  return plan_node(node, fft::long_footprint<T>(n1, n2), [n1, n2](void* m) { fft::long_build<T>(n1, n2, m); });
}

// ----------------------------------------------------------- node kernels
template <class T, int Dir> void complex_1d(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const zar_dfti_dim& e = d->eff[Dir][0];
  fft::complex_run<T>(static_cast<const fft::complex_plan<T>*>(d->plan), Dir == kFwd ? -1 : 1, scale_of<T>(d, Dir),
                      arr<T>(a, 0), e.is, d->eff_dist[Dir][0], arr<T>(a, 1), e.os, d->eff_dist[Dir][1], count,
                      scratch);
}

template <class T, int Dir> void split_1d(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const zar_dfti_dim& e = d->eff[Dir][0];
  fft::complex_run_split<T>(static_cast<const fft::complex_plan<T>*>(d->plan), Dir == kFwd ? -1 : 1,
                            scale_of<T>(d, Dir), arr<T>(a, 0), arr<T>(a, 1), e.is, d->eff_dist[Dir][0], arr<T>(a, 2),
                            arr<T>(a, 3), e.os, d->eff_dist[Dir][1], count, scratch);
}

template <int N, int Sign> void small_1d(const zar_dfti_desc* d, void* const* a, long count, void*) {
  const int dir = Sign < 0 ? kFwd : kBwd;
  const zar_dfti_dim& e = d->eff[dir][0];
  fft::small_run<N, Sign>(scale_of<double>(d, dir), arr<double>(a, 0), e.is, d->eff_dist[dir][0],
                          arr<double>(a, 1), e.os, d->eff_dist[dir][1], count);
}

template <class T, int Dir> void long_1d(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const auto* p = static_cast<const fft::long_plan<T>*>(d->plan);
  for (long t = 0; t < count; ++t)
    fft::long_run<T>(p, Dir == kFwd ? -1 : 1, scale_of<T>(d, Dir), zar::offset(arr<T>(a, 0), 2LL * t * d->eff_dist[Dir][0]),
                     zar::offset(arr<T>(a, 1), 2LL * t * d->eff_dist[Dir][1]), scratch);
}

template <class T, fft::real_layout L>
void real_fwd(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const zar_dfti_dim& e = d->eff[kFwd][0];
  fft::real_forward<T>(static_cast<const fft::real_plan<T>*>(d->plan), L, scale_of<T>(d, kFwd), arr<T>(a, 0), e.is,
                       d->eff_dist[kFwd][0], arr<T>(a, 1), e.os, d->eff_dist[kFwd][1], count, scratch);
}
template <class T, fft::real_layout L>
void real_bwd(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const zar_dfti_dim& e = d->eff[kBwd][0];
  fft::real_backward<T>(static_cast<const fft::real_plan<T>*>(d->plan), L, scale_of<T>(d, kBwd), arr<T>(a, 0), e.is,
                        d->eff_dist[kBwd][0], arr<T>(a, 1), e.os, d->eff_dist[kBwd][1], count, scratch);
}

// The PACK inverse by way of the PERM one: each transform is rewritten in
// the PERM layout into the output (for even n the last value, the real
// part at n/2, moves to place 1 and the values 1..n-2 move up one place;
// odd lengths have equal layouts), then the PERM inverse runs in place there.
template <class T> void pack_bwd(const zar_dfti_desc* d, void* const* a, long count, void* scratch) {
  const zar_dfti_dim& e = d->eff[kBwd][0];
  const long n = d->length, is = e.is, os = e.os;
  for (long t = 0; t < count; ++t) {
    const T* x = zar::offset(arr<const T>(a, 0), static_cast<long long>(t) * d->eff_dist[kBwd][0]);
    T* y = zar::offset(arr<T>(a, 1), static_cast<long long>(t) * d->eff_dist[kBwd][1]);
    if (n % 2 == 0 && n > 1) {
      const T last = x[(n - 1) * is];
      for (long j = n - 2; j >= 1; --j) y[(j + 1) * os] = x[j * is];
      y[os] = last;
      y[0] = x[0];
    } else if (x != y || is != os) {
      for (long j = 0; j < n; ++j) y[j * os] = x[j * is];
    }
    fft::real_backward<T>(static_cast<const fft::real_plan<T>*>(d->plan), fft::real_layout::perm,
                          scale_of<T>(d, kBwd), y, os, 0, y, os, 0, 1, scratch);
  }
}

// ------------------------------------------------------ several dimensions
template <class T, int Dir> void md_dims(const zar_dfti_desc* d, fft::dim* dims, const void** plans) {
  const zar_dfti_desc* node = d;
  for (int k = 0; k < d->rank; ++k) {
    dims[k] = {d->eff[Dir][k].n, d->eff[Dir][k].is, d->eff[Dir][k].os};
    plans[k] = node ? node->plan : nullptr;
    node = node ? node->next : nullptr;
  }
}

template <class T> void complex_md(const zar_dfti_desc* d, void* const* a, long count, void* scratch, int sign) {
  fft::dim dims[ZAR_DFTI_MAX_RANK];
  const void* plans[ZAR_DFTI_MAX_RANK];
  const int dir = sign < 0 ? kFwd : kBwd;
  if (dir == kFwd) md_dims<T, kFwd>(d, dims, plans);
  else md_dims<T, kBwd>(d, dims, plans);
  fft::complex_md_run<T>(reinterpret_cast<const fft::complex_plan<T>* const*>(plans), d->rank, dims, sign,
                         scale_of<T>(d, dir), arr<T>(a, 0), d->eff_dist[dir][0], arr<T>(a, 1), d->eff_dist[dir][1],
                         count, scratch);
}

template <class T> void real_md_fwd(const zar_dfti_desc* d, void* const* a, long count, void* scratch, int) {
  fft::dim dims[ZAR_DFTI_MAX_RANK];
  const void* plans[ZAR_DFTI_MAX_RANK];
  md_dims<T, kFwd>(d, dims, plans);
  fft::real_md_forward<T>(static_cast<const fft::real_plan<T>*>(plans[0]),
                          reinterpret_cast<const fft::complex_plan<T>* const*>(plans), d->rank, dims,
                          scale_of<T>(d, kFwd), arr<T>(a, 0), d->eff_dist[kFwd][0], arr<T>(a, 1),
                          d->eff_dist[kFwd][1], count, scratch);
}
template <class T> void real_md_bwd(const zar_dfti_desc* d, void* const* a, long count, void* scratch, int) {
  fft::dim dims[ZAR_DFTI_MAX_RANK];
  const void* plans[ZAR_DFTI_MAX_RANK];
  md_dims<T, kBwd>(d, dims, plans);
  fft::real_md_backward<T>(static_cast<const fft::real_plan<T>*>(plans[0]),
                           reinterpret_cast<const fft::complex_plan<T>* const*>(plans), d->rank, dims,
                           scale_of<T>(d, kBwd), arr<T>(a, 0), d->eff_dist[kBwd][0], arr<T>(a, 1),
                           d->eff_dist[kBwd][1], count, scratch);
}

// --------------------------------------------------------- compute entries
// Bytes of one element of the input (side 0) or output (side 1) of a
// direction: complex pairs, split parts, reals, or the complex side of a
// real transform (pairs in CCS and in several dimensions, reals in PACK and
// PERM).
template <class T> size_t elem_bytes(const zar_dfti_desc* d, int dir, int side) {
  if (d->domain == ZAR_DFTI_COMPLEX) return d->cstorage == ZAR_DFTI_REAL_REAL ? sizeof(T) : 2 * sizeof(T);
  const bool complex_side = (dir == kFwd) == (side == 1);
  if (!complex_side) return sizeof(T);
  const bool packed = d->rank == 1 && d->cestorage == ZAR_DFTI_COMPLEX_REAL &&
                      (d->packed == ZAR_DFTI_PACK || d->packed == ZAR_DFTI_PERM);
  return packed ? sizeof(T) : 2 * sizeof(T);
}

template <class T, int Dir, bool InPlace>
int compute(const zar_dfti_desc* d, void* const* a, long first, long count, int slot) {
  void* scratch = static_cast<char*>(d->scratch) + static_cast<size_t>(slot) * d->scratch_stride;
  const bool split = d->domain == ZAR_DFTI_COMPLEX && d->cstorage == ZAR_DFTI_REAL_REAL;
  const int parts = split ? 2 : 1;
  void* p[4];
  for (int side = 0; side < 2; ++side) {
    const long long elems = static_cast<long long>(first) * d->eff_dist[Dir][side] + (side ? d->out_offset : d->in_offset);
    const long long bytes = elems * static_cast<long long>(elem_bytes<T>(d, Dir, side));
    for (int q = 0; q < parts; ++q) {
      char* base = static_cast<char*>(a[InPlace ? q : side * parts + q]);
      p[side * parts + q] = zar::offset(base, bytes);
    }
  }
  if (d->nodes > 1) {
    (Dir == kFwd ? d->twod_fwd : d->twod_bwd)(d, p, count, scratch, Dir == kFwd ? -1 : 1);
  } else {
    (Dir == kFwd ? d->kfwd : d->kbwd)(d, p, count, scratch);
  }
  return 0;
}

}  // namespace

// ------------------------------------------------------------------ exports
#define ZAR_DFTI_KERNELS(p, T, value, z, bits)                                                                  \
  ZAR_EXPORT int zar_dft_avx_rud_initalloc_##p##_c2c(zar_dfti_desc* n) { return plan_complex<T>(n); }           \
  ZAR_EXPORT int zar_dft_avx_rud_get_size_##p##_c2c(zar_dfti_desc* n) { return plan_complex<T>(n); }            \
  ZAR_EXPORT int zar_dft_avx_rud_initalloc_##p##_ri2ri(zar_dfti_desc* n) { return plan_complex<T>(n); }         \
  ZAR_EXPORT int zar_dft_avx_rud_get_size_##p##_ri2ri(zar_dfti_desc* n) { return plan_complex<T>(n); }          \
  ZAR_EXPORT int zar_dft_avx_##z##_rud_real_initalloc(zar_dfti_desc* n) { return plan_real<T>(n); }             \
  ZAR_EXPORT int zar_dft_avx_##z##_rud_real_get_size(zar_dfti_desc* n) { return plan_real<T>(n); }              \
  ZAR_EXPORT int zar_dft_avx_complex_for_real_dft_##p(zar_dfti_desc* n) { return plan_complex<T>(n); }          \
  ZAR_EXPORT int zar_dft_avx_x##z##_init_data_1d_via_2d(zar_dfti_desc* n) { return plan_long<T>(n); }           \
  ZAR_EXPORT void zar_dft_avx_x##z##_1d_via_2d_f(const zar_dfti_desc* d, void* const* a, long c, void* s) {     \
    long_1d<T, kFwd>(d, a, c, s);                                                                               \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##z##_1d_via_2d_b(const zar_dfti_desc* d, void* const* a, long c, void* s) {     \
    long_1d<T, kBwd>(d, a, c, s);                                                                               \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_xruds_fwd_##bits##c(const zar_dfti_desc* d, void* const* a, long c, void* s) {    \
    complex_1d<T, kFwd>(d, a, c, s);                                                                            \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_xruds_inv_##bits##c(const zar_dfti_desc* d, void* const* a, long c, void* s) {    \
    complex_1d<T, kBwd>(d, a, c, s);                                                                            \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_xruds_fwd_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) {       \
    split_1d<T, kFwd>(d, a, c, s);                                                                              \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_xruds_inv_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) {       \
    split_1d<T, kBwd>(d, a, c, s);                                                                              \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_rudsDFTFwd_RToCCS_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    real_fwd<T, fft::real_layout::ccs>(d, a, c, s);                                                             \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_rudsDFTFwd_RToPack_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    real_fwd<T, fft::real_layout::pack>(d, a, c, s);                                                            \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_rudsDFTFwd_RToPerm_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    real_fwd<T, fft::real_layout::perm>(d, a, c, s);                                                            \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_rudsDFTInv_CCSToR_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    real_bwd<T, fft::real_layout::ccs>(d, a, c, s);                                                             \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_rudsDFTInv_PermToR_##bits(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    real_bwd<T, fft::real_layout::perm>(d, a, c, s);                                                            \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_workaround_for_DFTInv_RPack_##bits(const zar_dfti_desc* d, void* const* a, long c, \
                                                                 void* s) {                                     \
    pack_bwd<T>(d, a, c, s);                                                                                    \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##z##dft2d(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) {    \
    complex_md<T>(d, a, c, s, sg);                                                                              \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##z##dft2d_out(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) { \
    complex_md<T>(d, a, c, s, sg);                                                                              \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##p##z##dft2d(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) { \
    real_md_fwd<T>(d, a, c, s, sg);                                                                             \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##z##p##dft2d(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) { \
    real_md_bwd<T>(d, a, c, s, sg);                                                                             \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##p##z##z##dft2d(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) { \
    real_md_fwd<T>(d, a, c, s, sg);                                                                             \
  }                                                                                                             \
  ZAR_EXPORT void zar_dft_avx_x##z##z##p##dft2d(const zar_dfti_desc* d, void* const* a, long c, void* s, int sg) { \
    real_md_bwd<T>(d, a, c, s, sg);                                                                             \
  }
ZAR_DFTI_PRECISIONS(ZAR_DFTI_KERNELS)

#define ZAR_DFTI_COMPUTE(v, p, k, r, T, dom)                                                                   \
  ZAR_EXPORT int zar_dft_avx_compute_fwd_##p##_##k##_##r##_i(const zar_dfti_desc* d, void* const* a, long f,   \
                                                             long c, int s) {                                  \
    return compute<T, kFwd, true>(d, a, f, c, s);                                                              \
  }                                                                                                            \
  ZAR_EXPORT int zar_dft_avx_compute_fwd_##p##_##k##_##r##_o(const zar_dfti_desc* d, void* const* a, long f,   \
                                                             long c, int s) {                                  \
    return compute<T, kFwd, false>(d, a, f, c, s);                                                             \
  }                                                                                                            \
  ZAR_EXPORT int zar_dft_avx_compute_bwd_##p##_##k##_##r##_i(const zar_dfti_desc* d, void* const* a, long f,   \
                                                             long c, int s) {                                  \
    return compute<T, kBwd, true>(d, a, f, c, s);                                                              \
  }                                                                                                            \
  ZAR_EXPORT int zar_dft_avx_compute_bwd_##p##_##k##_##r##_o(const zar_dfti_desc* d, void* const* a, long f,   \
                                                             long c, int s) {                                  \
    return compute<T, kBwd, false>(d, a, f, c, s);                                                             \
  }
ZAR_DFTI_VARIANTS(ZAR_DFTI_COMPUTE)

// Dedicated kernels of the lengths 2..64, one list over the engine's
// fixed-length transforms.
namespace {
#define ZAR_DFTI_SMALL(N)                                                                        \
  void smallradixDFTFwd_CToC_##N##_64fc(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    small_1d<N, -1>(d, a, c, s);                                                                 \
  }                                                                                              \
  void smallradixDFTInv_CToC_##N##_64fc(const zar_dfti_desc* d, void* const* a, long c, void* s) { \
    small_1d<N, 1>(d, a, c, s);                                                                  \
  }
#define ZAR_DFTI_SMALL_LENGTHS(X)                                                                        \
  X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14) X(15) X(16) X(17) X(18) X(19)     \
  X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27) X(28) X(29) X(30) X(31) X(32) X(33) X(34) X(35) X(36) \
  X(37) X(38) X(39) X(40) X(41) X(42) X(43) X(44) X(45) X(46) X(47) X(48) X(49) X(50) X(51) X(52) X(53) \
  X(54) X(55) X(56) X(57) X(58) X(59) X(60) X(61) X(62) X(63) X(64)
ZAR_DFTI_SMALL_LENGTHS(ZAR_DFTI_SMALL)
#define ZAR_DFTI_SMALL_FWD(N) smallradixDFTFwd_CToC_##N##_64fc,
#define ZAR_DFTI_SMALL_INV(N) smallradixDFTInv_CToC_##N##_64fc,
}  // namespace

extern "C" {
ZAR_EXPORT const zar_dfti_kernel_fn zar_dft_avx_zsmallradix_forward[65] = {
    nullptr, nullptr, ZAR_DFTI_SMALL_LENGTHS(ZAR_DFTI_SMALL_FWD)};
ZAR_EXPORT const zar_dfti_kernel_fn zar_dft_avx_zsmallradix_inverse[65] = {
    nullptr, nullptr, ZAR_DFTI_SMALL_LENGTHS(ZAR_DFTI_SMALL_INV)};
}
