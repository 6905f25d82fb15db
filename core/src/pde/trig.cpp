// Trigonometric transforms: the public calls (argument checks, then the
// kernels) and the descriptor front ends the kernels call back.
#include <cmath>

#include "core.h"
#include "zar/dft.h"
#include "zar/pdett.h"
#include "zar/trig.h"

namespace {
using namespace zar::trig;

// A status for calls that cannot even report: no ipar or stat to write.
constexpr int unusable = st_bad_size;

int fail(int* ipar, int* stat, int status) {
  ipar[ip_status] = status;
  *stat = status;
  return status;
}

template <class R> struct tt;
template <> struct tt<double> {
  static constexpr int precision = ZAR_DFT_DOUBLE;
  static auto diagnostics() { return ZAR_KERNEL(zar_pdett_avx_d_print_diagnostics_c); }
};
template <> struct tt<float> {
  static constexpr int precision = ZAR_DFT_SINGLE;
  static auto diagnostics() { return ZAR_KERNEL(zar_pdett_avx_s_print_diagnostics_c); }
};

// Reports code through the kernel's diagnostics when the switch allows.
template <class R> void report(int code, const int* ipar, const R* dpar, const char* name) {
  const bool warning = code <= 6 || code == 1001;
  if (ipar[warning ? ip_warnings : ip_errors] != 0) tt<R>::diagnostics()(code, ipar, dpar, name);
}

// A transform call may run only on the arrays its commit prepared: n still
// matches dpar[0] and the descriptor's length. Returns 0 or the status set.
template <class R>
int check_run(R* f, zar_dft_descriptor** handle, int* ipar, R* dpar, int* stat, const char* name) {
  if (ipar[ip_status] != 0) return 0;  // the kernel reports the pending failure itself
  if (!dpar) {
    report<R>(303, ipar, dpar, name);
    return fail(ipar, stat, st_bad_size);
  }
  if (!f) {
    report<R>(307, ipar, dpar, name);
    return fail(ipar, stat, st_bad_size);
  }
  const long n = ipar[ip_n];
  if (n <= 0 || ipar[ip_kind] < 0 || ipar[ip_kind] > 5) return 0;  // the kernel's own protocol
  if (!handle || !*handle) {
    report<R>(309, ipar, dpar, name);
    return fail(ipar, stat, st_bad_size);
  }
  long length = 0;
  if (dpar[0] != static_cast<R>(static_cast<double>(n) * 1.0e-12) ||
      zar_dft_get(*handle, ZAR_DFT_LENGTHS, &length) != 0 || length != n) {
    report<R>(300, ipar, dpar, name);
    return fail(ipar, stat, st_bad_size);
  }
  return 0;
}
}  // namespace

// ---- descriptor front ends for the kernels
ZAR_API long zar_dft_dfti_create_real_pack(void** handle, int precision, long n) {
  zar_dft_descriptor* d = nullptr;
  long st = zar_dft_create(&d, precision, ZAR_DFT_REAL, 1, n);
  if (st == 0) st = zar_dft_set(d, ZAR_DFT_PLACEMENT, static_cast<long>(ZAR_DFT_INPLACE));
  if (st == 0) st = zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, static_cast<long>(ZAR_DFT_COMPLEX_REAL));
  if (st == 0) st = zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, static_cast<long>(ZAR_DFT_PACK_FORMAT));
  if (st == 0) st = zar_dft_commit(d);
  if (st != 0) {
    zar_dft_free(&d);
    d = nullptr;
  }
  *handle = d;
  return st;
}
ZAR_API long zar_dft_dfti_compute_forward_d(void* h, double* f) {
  return zar_dft_compute_forward(static_cast<zar_dft_descriptor*>(h), f);
}
ZAR_API long zar_dft_dfti_compute_backward_d(void* h, double* f) {
  return zar_dft_compute_backward(static_cast<zar_dft_descriptor*>(h), f);
}
ZAR_API long zar_dft_dfti_compute_forward_s(void* h, float* f) {
  return zar_dft_compute_forward(static_cast<zar_dft_descriptor*>(h), f);
}
ZAR_API long zar_dft_dfti_compute_backward_s(void* h, float* f) {
  return zar_dft_compute_backward(static_cast<zar_dft_descriptor*>(h), f);
}
ZAR_API long zar_dft_dfti_free_descriptor(void** h) {
  auto* d = static_cast<zar_dft_descriptor*>(*h);
  const long st = zar_dft_free(&d);
  *h = d;
  return st;
}
ZAR_API const char* zar_dft_dfti_error_message(long status) { return zar_dft_message(status); }

// ---- public calls
#define ZAR_TT_PUBLIC(p, R)                                                                                        \
  ZAR_API int zar_##p##_init_trig_transform(const int* n, const int* kind, int* ipar, R* dpar, int* stat) {        \
    if (!ipar || !stat) return unusable;                                                                           \
    if (!n || !kind || !dpar) return fail(ipar, stat, st_bad_size);                                                \
    ZAR_KERNEL(zar_pdett_avx_##p##_init_trig_transform)(n, kind, ipar, dpar, stat);                                 \
    return *stat;                                                                                                  \
  }                                                                                                                \
  ZAR_API int zar_##p##_commit_trig_transform(R* f, zar_dft_descriptor** handle, int* ipar, R* dpar, int* stat) {  \
    if (!ipar || !stat) return unusable;                                                                           \
    ZAR_KERNEL(zar_pdett_avx_##p##_commit_trig_transform)(f, reinterpret_cast<void**>(handle), ipar, dpar, stat);  \
    return *stat;                                                                                                  \
  }                                                                                                                \
  ZAR_API int zar_##p##_forward_trig_transform(R* f, zar_dft_descriptor** handle, int* ipar, R* dpar, int* stat) { \
    if (!ipar || !stat) return unusable;                                                                           \
    if (const int s = check_run<R>(f, handle, ipar, dpar, stat, #p "_forward_trig_transform")) return s;           \
    return ZAR_KERNEL(zar_pdett_avx_##p##_forward_trig_transform)(f, reinterpret_cast<void**>(handle), ipar, dpar, \
                                                                  stat);                                           \
  }                                                                                                                \
  ZAR_API int zar_##p##_backward_trig_transform(R* f, zar_dft_descriptor** handle, int* ipar, R* dpar, int* stat) { \
    if (!ipar || !stat) return unusable;                                                                           \
    if (const int s = check_run<R>(f, handle, ipar, dpar, stat, #p "_backward_trig_transform")) return s;          \
    return ZAR_KERNEL(zar_pdett_avx_##p##_backward_trig_transform)(f, reinterpret_cast<void**>(handle), ipar,      \
                                                                   dpar, stat);                                    \
  }
ZAR_TT_PUBLIC(d, double)
ZAR_TT_PUBLIC(s, float)

ZAR_API int zar_free_trig_transform(zar_dft_descriptor** handle, int* ipar, int* stat) {
  if (!ipar || !stat) return unusable;
  return ZAR_KERNEL(zar_pdett_avx_free_trig_transform)(reinterpret_cast<void**>(handle), ipar, stat);
}
