// The GEMM kernel tables through which the core and the engine agree on the
// blocking: one record per type in zar_avx_?_all_gemm_ker, and the index of
// the record to use by default in zar_avx_?_opt_gemm_ker. The function fields
// are filled by relocation when the library is loaded.
//
// Also the threading hooks that a core's threading layer resolves for every
// kernel library; this library needs none of them, so each returns at once.
#include "blas/gemm/gemm_impl.h"
#include "zar/export.h"

// Record fields 13 and 16 (conjugating packers): the complex types have their
// own, the real types reuse the transposing ones.
#define ZAR_GEMM_RECORD(t, T, ac, bc)                                                                       \
  ZAR_EXPORT const zar::gemm::ker_info<T> zar_avx_##t##_all_gemm_ker[1] = {{                                \
      zar::gemm::cfg<T>::mr, zar::gemm::cfg<T>::nr, zar::gemm::cfg<T>::kr, 1, zar::gemm::cfg<T>::mr,         \
      zar::gemm::cfg<T>::nr, zar::gemm::cfg<T>::kr, zar::gemm::set_third, ZAR_BLAS(t##gemm_get_blks_size),   \
      ZAR_BLAS(t##gemm_get_bufs_size), ZAR_BLAS(t##gemm_get_bufs), ZAR_BLAS(t##gemm_copyan),                 \
      ZAR_BLAS(t##gemm_copyat), ZAR_BLAS(t##gemm_##ac), ZAR_BLAS(t##gemm_copybn), ZAR_BLAS(t##gemm_copybt),   \
      ZAR_BLAS(t##gemm_##bc), ZAR_BLAS(t##gemm_ker0), 0, 0}};                                                \
  ZAR_EXPORT const std::int32_t zar_avx_##t##_opt_gemm_ker = 0;

#define ZAR_GEMM_HOOKS(t, T)                                                  \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemm_internal_team)(void) {}                 \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_map_thread_to_kernel)(void) {}             \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_initialize_kernel_info)(void) {}           \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_blk_info_bdz)(void) {}                     \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_blk_info_hi_thr_bdz)(void) {}              \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_getbufs_bdz)(void) {}                      \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_initialize_buffers)(void) {}

ZAR_GEMM_RECORD(s, float, copyat, copybt)
ZAR_GEMM_RECORD(d, double, copyat, copybt)
ZAR_GEMM_RECORD(c, zar::c32, copyac, copybc)
ZAR_GEMM_RECORD(z, zar::c64, copyac, copybc)
ZAR_GEMM_TYPES(ZAR_GEMM_HOOKS)
