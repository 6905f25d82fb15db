// Export and naming helpers of the kernel library.
//
// Every exported kernel is `zar_<domain>_avx_<routine>` (sparse and graph:
// `zar_<domain>_<routine>_avx`). Families generate these names from one list
// per family with the macros below, so that a new type or mode is one line.
#pragma once

#define ZAR_EXPORT extern "C" __attribute__((visibility("default")))

#define ZAR_CAT2_(a, b) a##b
#define ZAR_CAT2(a, b) ZAR_CAT2_(a, b)
#define ZAR_CAT3(a, b, c) ZAR_CAT2(ZAR_CAT2(a, b), c)

// zar_blas_avx_<routine>
#define ZAR_BLAS(routine) zar_blas_avx_##routine
// zar_<domain>_avx_<routine>, for the other dense domains
#define ZAR_KNAME(domain, routine) zar_##domain##_avx_##routine
// zar_<domain>_<routine>_avx, for the sparse and graph families
#define ZAR_KNAME_SUFFIX(domain, routine) zar_##domain##_##routine##_avx

// A family's list expands one macro per entry, for example
//   #define ZAR_AXPY(t, T) ZAR_EXPORT void ZAR_BLAS(x##t##axpy)(...) { axpy<T>(...); }
//   ZAR_AXPY(s, float) ZAR_AXPY(d, double) ZAR_AXPY(c, c32) ZAR_AXPY(z, c64)
// so the exported wrapper is written once and every instantiation is a line.
