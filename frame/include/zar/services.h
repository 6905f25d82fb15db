// The services of the core library that kernels may call.
//
// This is the whole contract between the kernel library and a core library:
// the kernels import these names and nothing else of the core (besides the
// dispatching front ends declared by each family). The core includes this
// header too, so that both sides agree on every signature.
#pragma once
#include <cstddef>
#include <cstdio>

#define ZAR_SERVICE extern "C" __attribute__((visibility("default")))

// Number of 64-bit entries of the cache record filled by zar_serv_cache_info:
//   [0] number of cache levels described (0: nothing is known)
//   [1] level-1 data cache bytes   [2] level-2 bytes (per core)
//   [3] last-level cache bytes (read by the GEMM blocking)
//   [4] cache line bytes           [5..7] zero
#define ZAR_CACHE_RECORD_ENTRIES 8

// Processor generations answered by zar_serv_cpu_detect.
#define ZAR_CPU_GENERIC 0
#define ZAR_CPU_SSE2 1
#define ZAR_CPU_SSE42 4
#define ZAR_CPU_AVX 6
#define ZAR_CPU_AVX2 7
#define ZAR_CPU_AVX512 9

// A lock word in the caller's memory, zero when free.
typedef int zar_lock_t;

// Memory. zar_serv_allocate honours any positive alignment (not only powers of
// two) and returns null on failure; memory from it goes back through
// zar_serv_deallocate.
ZAR_SERVICE void* zar_serv_allocate(size_t bytes, int alignment);
ZAR_SERVICE void zar_serv_deallocate(void* p);
ZAR_SERVICE void* zar_serv_malloc(size_t bytes);
ZAR_SERVICE void* zar_serv_calloc(size_t count, size_t size);
ZAR_SERVICE void zar_serv_free(void* p);
// 0 when p is usable; non-zero when p is null, after one warning naming the
// routine (upper case, "DGEMM") on standard error.
ZAR_SERVICE int zar_serv_check_ptr_and_warn(const void* p, const char* name);
ZAR_SERVICE int zar_serv_check_ptr(const void* p, const char* name);

// Options and settings.
ZAR_SERVICE int zar_serv_lsame(const char* a, const char* b);
ZAR_SERVICE int zar_serv_cbwr_get(int what);
ZAR_SERVICE void zar_serv_cache_info(long long* record);
ZAR_SERVICE long long zar_serv_get_cache_size(int level);
ZAR_SERVICE int zar_serv_cpu_detect(void);
ZAR_SERVICE int zar_serv_cpuisbulldozer(void);
ZAR_SERVICE int zar_serv_cpuisclx(void);
ZAR_SERVICE int zar_serv_cpuisicx(void);
ZAR_SERVICE int zar_serv_cpuhasf16c(void);

// Verbose reporting and time.
ZAR_SERVICE int* zar_serv_verbose_mode(void);
ZAR_SERVICE double zar_serv_dsecnd(void);
ZAR_SERVICE int zar_serv_snprintf_s(char* buf, size_t size, size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
ZAR_SERVICE void zar_serv_print_verbose_info(int kind, const char* text, double seconds);

// Errors: reports through the application's (or the core's) xerbla_.
ZAR_SERVICE void zar_serv_xerbla(const char* name, const int* info, int name_length);

// Global mutual exclusion on a caller-owned lock word.
ZAR_SERVICE void zar_serv_lock(zar_lock_t* lock);
ZAR_SERVICE void zar_serv_unlock(zar_lock_t* lock);

// Messages and diagnostics. Message texts are looked up by number; the
// printing helpers follow printf. The *_s string helpers return 0 on success
// and a non-zero code (leaving an empty string where one is written) when the
// destination is null or too small.
// zar_serv_get_msg(id, argc, ...) gives catalogue message id with its argc
// string arguments put in (integers are formatted by the caller), in a
// buffer of the calling thread that the next call reuses; "" for an unknown id.
ZAR_SERVICE const char* zar_serv_get_msg(int id, int argc, ...);
ZAR_SERVICE int zar_serv_print(int to_stderr, const char* format, ...) __attribute__((format(printf, 2, 3)));
ZAR_SERVICE int zar_serv_printf_s(const char* format, ...) __attribute__((format(printf, 1, 2)));
ZAR_SERVICE int zar_serv_fprintf_s(FILE* f, const char* format, ...) __attribute__((format(printf, 2, 3)));
ZAR_SERVICE FILE* zar_serv_fopen(const char* name, const char* mode);
ZAR_SERVICE int zar_serv_fclose(FILE* f);
ZAR_SERVICE int zar_serv_memcpy_unbounded_s(void* dst, size_t dst_size, const void* src, size_t count);
ZAR_SERVICE int zar_serv_memmove_s(void* dst, size_t dst_size, const void* src, size_t count);
ZAR_SERVICE int zar_serv_strncpy_s(char* dst, size_t dst_size, const char* src, size_t count);
ZAR_SERVICE int zar_serv_strncat_s(char* dst, size_t dst_size, const char* src, size_t count);
ZAR_SERVICE int zar_serv_sprintf_s(char* buf, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
ZAR_SERVICE int zar_serv_sprintf_char_s(char* buf, size_t size, const char* format, char c);
