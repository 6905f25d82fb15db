// Trigonometric transforms: prototypes of the exported kernels and the
// descriptor front ends of the core that they call.
//
// The state of a transform lives in the caller's arrays: ipar (128 ints),
// dpar (a real array of at least 5n/2 + 2 values, double for d, float for
// s) and an FFT descriptor handle made by commit. Array f holds n + 1 values
// for the sine and cosine kinds and n values for the staggered kinds.
#pragma once
#include "zar/export.h"

// Positions in ipar.
namespace zar::trig {
enum : int {
  ip_n = 0,        // transform size
  ip_warnings = 1, // warnings: 0 none; >= 1 on standard output; < 0 to the log file
  ip_errors = 2,   // errors, likewise
  ip_kind = 5,     // transform kind 0..5
  ip_status = 6,   // status of the last call
  ip_init = 7,     // 1 after init
  ip_caller = 8,   // not 0: reports through print_diagnostics_c, 0: the _f twin
  ip_check = 9,    // 1 after init
  ip_noscale = 10  // not 0: forward and backward do not scale
};
// Kinds.
enum : int { sine = 0, cosine = 1, staggered_cosine = 2, staggered_sine = 3, staggered2_cosine = 4, staggered2_sine = 5 };
// Statuses.
enum : int {
  st_ok = 0,
  st_bad_kind = -100,
  st_fft_failed = -1000,
  st_bad_size = -10000,
  st_in_free = -99999
};
}  // namespace zar::trig

// Entry points, per precision: p the letter, R the real type.
#define ZAR_TT_SIG_INIT(fn, R) void fn(const int* n, const int* tt_type, int* ipar, R* dpar, int* stat)
#define ZAR_TT_SIG_RUN(fn, R) int fn(R* f, void** handle, int* ipar, R* dpar, int* stat)
#define ZAR_TT_SIG_COMMIT(fn, R) void fn(R* f, void** handle, int* ipar, R* dpar, int* stat)
#define ZAR_TT_SIG_DIAG_C(fn, R) void fn(int code, const int* ipar, const R* dpar, const char* name)
#define ZAR_TT_SIG_DIAG_F(fn, R) void fn(const int* code, const int* ipar, const R* dpar, const char* name, int name_len)
// A kernel: transforms f in place using the tables starting at dpar[2].
#define ZAR_TT_SIG_KERNEL(fn, R) int fn(R* f, void** handle, int* ipar, R* tables, int* stat)

#define ZAR_TT_FREE_SIG(fn) int fn(void** handle, int* ipar, int* stat)

// Every kernel of a precision: the forward and backward kernels of the six
// kinds, named <p>ptk_dft_<tail>.
#define ZAR_TT_KERNELS(X, p, R)                                                                          \
  X(p, R, sin) X(p, R, cos) X(p, R, scos_f) X(p, R, scos_b) X(p, R, ssin_f) X(p, R, ssin_b)               \
  X(p, R, scos2_f) X(p, R, scos2_b) X(p, R, ssin2_f) X(p, R, ssin2_b)

#define ZAR_TT_PRECISIONS(X) X(s, float) X(d, double)

#define ZAR_TT_DECL_KERNEL(p, R, tail) ZAR_EXPORT ZAR_TT_SIG_KERNEL(ZAR_KNAME(pdett, p##ptk_dft_##tail), R);
#define ZAR_TT_DECL(p, R)                                                                   \
  ZAR_EXPORT ZAR_TT_SIG_INIT(ZAR_KNAME(pdett, p##_init_trig_transform), R);                 \
  ZAR_EXPORT ZAR_TT_SIG_COMMIT(ZAR_KNAME(pdett, p##_commit_trig_transform), R);             \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, p##_forward_trig_transform), R);               \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, p##_backward_trig_transform), R);              \
  ZAR_EXPORT ZAR_TT_SIG_DIAG_C(ZAR_KNAME(pdett, p##_print_diagnostics_c), R);               \
  ZAR_EXPORT ZAR_TT_SIG_DIAG_F(ZAR_KNAME(pdett, p##_print_diagnostics_f), R);               \
  ZAR_EXPORT ZAR_TT_SIG_INIT(ZAR_KNAME(pdett, _##p##_init_trig_transform), R);              \
  ZAR_EXPORT ZAR_TT_SIG_COMMIT(ZAR_KNAME(pdett, _##p##_commit_trig_transform), R);          \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, _##p##_forward_trig_transform), R);            \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, _##p##_backward_trig_transform), R);           \
  ZAR_TT_KERNELS(ZAR_TT_DECL_KERNEL, p, R)
ZAR_TT_PRECISIONS(ZAR_TT_DECL)
ZAR_EXPORT ZAR_TT_FREE_SIG(zar_pdett_avx_free_trig_transform);
ZAR_EXPORT ZAR_TT_FREE_SIG(zar_pdett_avx__free_trig_transform);

// The core's descriptor front ends that the kernels call (defined in the
// core). A one-dimensional real descriptor of length n in the precision
// given (35 single, 36 double), in place, with its spectrum in the PACK
// layout (R0 R1 I1 R2 I2 ...), committed; its unnormalised forward transform
// uses e^{-2 pi i jk/n}. Each returns 0 or a descriptor status.
extern "C" {
long zar_dft_dfti_create_real_pack(void** handle, int precision, long n);
long zar_dft_dfti_compute_forward_d(void* handle, double* f);
long zar_dft_dfti_compute_backward_d(void* handle, double* f);
long zar_dft_dfti_compute_forward_s(void* handle, float* f);
long zar_dft_dfti_compute_backward_s(void* handle, float* f);
long zar_dft_dfti_free_descriptor(void** handle);
const char* zar_dft_dfti_error_message(long status);
}
