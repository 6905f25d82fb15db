// The GEMM engine's interface: the kernel record published in the tables
// zar_avx_?_all_gemm_ker, the per-call descriptor, and the prototypes of every
// exported GEMM kernel for s, d, c and z.
//
// This header holds declarations only (no vector code): it is part of the
// contract between the kernel library and the core, whose front ends call
// the drivers through ZAR_KERNEL, type-checked against these prototypes.
//
// Calling convention: every argument by address, except the block sizes of
// set_blks_size and the final mode of the block kernel, which are values.
#pragma once
#include <cstdint>

#include "zar/types.h"

namespace zar::gemm {

template <class T> struct desc;

// Function types shared by the record and the descriptor.
template <class T> struct fn {
  using get_blks_size = void (*)(const int* m, const int* n, const int* k, desc<T>* d);
  using get_bufs_size = int (*)(const int* set, const int* mode, const int* m, const int* n, const int* k,
                                desc<T>* d);
  using get_bufs = int (*)(const int* set, void** raw, desc<T>* d);
  // Packs a block into panels; alpha scales while copying (null: plain copy).
  using copy = void (*)(const int* rows, const int* cols, const T* src, const int* ld, T* dst,
                        const int* panel_stride, const T* alpha);
  // The block kernel: C(m x n) := beta C + op(A) op(B) over depth k, beta 0 or 1.
  using ker = void (*)(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                       const T* alpha, const T* a, const int* a_stride, const T* b, const int* b_stride,
                       const T* beta, T* c, const int* ldc, T* work, int mode);
};

// A kernel record: twenty 32-bit fields.
template <class T> struct ker_info {
  std::int32_t mr, nr, kr, nbuf_mult, m_small, n_small, k_small, buf_set;
  typename fn<T>::get_blks_size get_blks_size;
  typename fn<T>::get_bufs_size get_bufs_size;
  typename fn<T>::get_bufs get_bufs;
  typename fn<T>::copy copy_a_n, copy_a_t, copy_a_c, copy_b_n, copy_b_t, copy_b_c;
  typename fn<T>::ker ker;
  std::int32_t reserved18, reserved19;
};

// The GEMM descriptor: a record in the caller's frame, all fields 32-bit.
template <class T> struct desc {
  std::int32_t reserved0, kernel_index, buf_set, reserved3;
  std::int32_t mb, nb, kb;
  std::int32_t mr, nr, kr;
  std::int32_t m_small, n_small, k_small;
  T* a_buf;
  std::int32_t a_stride, a_bytes, a_align_log2;
  T* b_buf;
  std::int32_t b_stride, b_bytes, b_align_log2;
  typename fn<T>::get_blks_size get_blks_size;
  typename fn<T>::get_bufs_size get_bufs_size;
  typename fn<T>::get_bufs get_bufs;
  typename fn<T>::copy copy_a_n, copy_a_t, copy_a_c, copy_b_n, copy_b_t, copy_b_c;
  std::int32_t reserved18, reserved19;
  std::int32_t nbuf_mult;
  typename fn<T>::ker ker;
  T* c_buf;
  std::int32_t c_bytes, c_align_log2;
};

static_assert(sizeof(ker_info<double>) == 20 * 4, "a kernel record is twenty 32-bit fields");
static_assert(sizeof(desc<double>) == 37 * 4, "every descriptor field is 32-bit");

// Buffer-set codes ('d' .. 'j') and size modes ('k': clipped to the problem,
// 'l': the full block sizes).
enum : int {
  set_a_b_third = 100, set_a = 101, set_b = 102, set_a_b = 103, set_b_third = 104, set_a_third = 105,
  set_third = 106,
  size_clipped = 107, size_full = 108,
};

// Schedules (version codes) of x?gemm_par; 2 is the default.
enum : int { sched_default = 2 };

// The scalars the quick returns and the beta pass test, shared by the
// engine and the core's front ends.
template <class T> constexpr T one() {
  if constexpr (is_complex_v<T>) return T{1, 0};
  else return T(1);
}

// beta is "one" only when exactly 1 (complex: real part 1, imaginary 0; a
// NaN part is not one); alpha is "zero" only when every part is 0.
template <class R> inline bool is_one(R a) { return a == R(1); }
template <class R> inline bool is_one(cx<R> a) { return a.re == R(1) && a.im == R(0); }
template <class R> inline bool is_zero(R a) { return a == R(0); }
template <class R> inline bool is_zero(cx<R> a) { return a.re == R(0) && a.im == R(0); }

// Final mode argument of the block kernel: which operands are packed.
enum : int {
  ker_a_place_b_packed = 0,  // A read in place (alpha applied), B packed
  ker_none_packed = 1,       // both read in place
  ker_both_packed = 2,       // A packed with alpha folded in, B packed
  ker_b_in_place = 3,        // A packed, B read in place (copied panel by panel into the work area)
};

}  // namespace zar::gemm

// One line per element type: the letter and the element type.
#define ZAR_GEMM_TYPES(X) X(s, float) X(d, double) X(c, ::zar::c32) X(z, ::zar::c64)

// Prototypes of the exported kernels of one type.
#define ZAR_GEMM_DECLARE(t, T)                                                                              \
  extern "C" {                                                                                             \
  extern const ::zar::gemm::ker_info<T> zar_avx_##t##_all_gemm_ker[1];                                       \
  extern const std::int32_t zar_avx_##t##_opt_gemm_ker;                                                      \
  void zar_blas_avx_x##t##gemm(const char* transa, const char* transb, const int* m, const int* n,          \
                               const int* k, const T* alpha, const T* a, const int* lda, const T* b,         \
                               const int* ldb, const T* beta, T* c, const int* ldc);                         \
  int zar_blas_avx_x##t##gemm_par(const char* transa, const char* transb, const int* m, const int* n,       \
                                  const int* k, const T* alpha, const T* a, const int* lda, const T* b,      \
                                  const int* ldb, const T* beta, T* c, const int* ldc, const int* version,   \
                                  ::zar::gemm::desc<T>* d);                                                 \
  int zar_blas_avx_##t##gemm_get_kernel_version(void);                                                     \
  void zar_blas_avx_##t##gemm_num_kernels(int* count);                                                     \
  int zar_blas_avx_##t##gemm_api_support(void);                                                            \
  int zar_blas_avx_##t##gemm_get_kernel(const int* index, ::zar::gemm::desc<T>* d);                        \
  void zar_blas_avx_##t##gemm_get_optimal_kernel(::zar::gemm::desc<T>* d);                                 \
  void zar_blas_avx_##t##gemm_zero_desc(::zar::gemm::desc<T>* d);                                          \
  void zar_blas_avx_##t##gemm_set_blks_size(int mb, int nb, int kb, ::zar::gemm::desc<T>* d);              \
  void zar_blas_avx_##t##gemm_get_blks_size(const int* m, const int* n, const int* k,                      \
                                            ::zar::gemm::desc<T>* d);                                       \
  int zar_blas_avx_##t##gemm_get_bufs_size(const int* set, const int* mode, const int* m, const int* n,     \
                                           const int* k, ::zar::gemm::desc<T>* d);                          \
  int zar_blas_avx_##t##gemm_get_bufs(const int* set, void** raw, ::zar::gemm::desc<T>* d);                \
  void zar_blas_avx_##t##gemm_free_bufs(void* raw);                                                        \
  void zar_blas_avx_##t##gemm_mscale(const int* m, const int* n, const T* beta, T* c, const int* ldc);     \
  void zar_blas_avx_##t##gemm_pst(const char* transa, const char* transb, const int* m, const int* n,       \
                                  const int* k, const T* alpha, const T* a, const int* lda, const T* b,      \
                                  const int* ldb, const T* beta, T* c, const int* ldc);                      \
  void zar_blas_avx_##t##gemm_copyan(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  void zar_blas_avx_##t##gemm_copyat(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  void zar_blas_avx_##t##gemm_copybn(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  void zar_blas_avx_##t##gemm_copybt(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  void zar_blas_avx_##t##gemm_ker0(const char*, const char*, const int*, const int*, const int*, const T*,  \
                                   const T*, const int*, const T*, const int*, const T*, T*, const int*, T*, \
                                   int);                                                                     \
  void zar_blas_avx_##t##gemm_kernel_0(const char*, const char*, const int*, const int*, const int*,       \
                                       const T*, const T*, const int*, const T*, const int*, const T*, T*,   \
                                       const int*, T*, int);                                                 \
  void zar_blas_avx_##t##gemm_kernel_0_b0(const char*, const char*, const int*, const int*, const int*,    \
                                          const T*, const T*, const int*, const T*, const int*, const T*,    \
                                          T*, const int*, T*, int);                                          \
  void zar_blas_avx_##t##gemm_ker0_pst(const char*, const char*, const int*, const int*, const int*,       \
                                       const T*, const T*, const int*, const T*, const int*, const T*, T*,   \
                                       const int*, T*, int);                                                 \
  void zar_blas_avx_x##t##gemm_internal_team(void);                                                        \
  void zar_blas_avx_##t##gemm_map_thread_to_kernel(void);                                                  \
  void zar_blas_avx_##t##gemm_initialize_kernel_info(void);                                                \
  void zar_blas_avx_##t##gemm_blk_info_bdz(void);                                                          \
  void zar_blas_avx_##t##gemm_blk_info_hi_thr_bdz(void);                                                   \
  void zar_blas_avx_##t##gemm_getbufs_bdz(void);                                                           \
  void zar_blas_avx_##t##gemm_initialize_buffers(void);                                                    \
  /* the core's dispatching front end, which kernels call back into */                                     \
  void zar_blas_##t##gemm(const char* transa, const char* transb, const int* m, const int* n, const int* k,  \
                          const T* alpha, const T* a, const int* lda, const T* b, const int* ldb,            \
                          const T* beta, T* c, const int* ldc);                                              \
  }

#pragma GCC visibility push(default)
ZAR_GEMM_TYPES(ZAR_GEMM_DECLARE)

// The conjugating packers exist for the complex types only.
#define ZAR_GEMM_DECLARE_CONJ(t, T)                                                                         \
  extern "C" {                                                                                             \
  void zar_blas_avx_##t##gemm_copyac(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  void zar_blas_avx_##t##gemm_copybc(const int*, const int*, const T*, const int*, T*, const int*, const T*); \
  }
#define ZAR_GEMM_COMPLEX_TYPES(X) X(c, ::zar::c32) X(z, ::zar::c64)
ZAR_GEMM_COMPLEX_TYPES(ZAR_GEMM_DECLARE_CONJ)
#pragma GCC visibility pop
