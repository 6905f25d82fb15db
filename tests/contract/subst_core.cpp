// A minimal core of another maker: every service of the contract with the
// answers the kernels expect, and counters the probe reads.
#include <time.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "zar/services.h"

extern "C" {
__attribute__((visibility("default"))) int subst_calls = 0;
__attribute__((visibility("default"))) int subst_cbwr_answer = 1;
}
#define COUNT (++subst_calls)

void* zar_serv_allocate(size_t bytes, int alignment) {
  COUNT;
  void* p = nullptr;
  size_t a = 64;
  while (a < static_cast<size_t>(alignment)) a <<= 1;
  return posix_memalign(&p, a, bytes ? bytes : 1) == 0 ? p : nullptr;
}
void zar_serv_deallocate(void* p) { COUNT; std::free(p); }
void* zar_serv_malloc(size_t b) { COUNT; return std::malloc(b ? b : 1); }
void* zar_serv_calloc(size_t n, size_t s) { COUNT; return std::calloc(n ? n : 1, s ? s : 1); }
void zar_serv_free(void* p) { COUNT; std::free(p); }
int zar_serv_check_ptr_and_warn(const void* p, const char* name) {
  COUNT;
  if (!p) std::fprintf(stderr, "substitute core: %s failed to allocate\n", name);
  return p == nullptr;
}
int zar_serv_check_ptr(const void* p, const char*) { COUNT; return p == nullptr; }
int zar_serv_lsame(const char* a, const char* b) { COUNT; return (*a & ~0x20) == (*b & ~0x20); }
int zar_serv_cbwr_get(int) { COUNT; return subst_cbwr_answer; }
void zar_serv_cache_info(long long* r) { COUNT; std::memset(r, 0, ZAR_CACHE_RECORD_ENTRIES * sizeof *r); }
long long zar_serv_get_cache_size(int) { COUNT; return 0; }
int zar_serv_cpu_detect(void) { COUNT; return ZAR_CPU_AVX; }
int zar_serv_cpuisbulldozer(void) { COUNT; return 0; }
int zar_serv_cpuisclx(void) { COUNT; return 0; }
int zar_serv_cpuisicx(void) { COUNT; return 0; }
int zar_serv_cpuhasf16c(void) { COUNT; return 0; }
static int verbose = 0;
int* zar_serv_verbose_mode(void) { COUNT; return &verbose; }
double zar_serv_dsecnd(void) { COUNT; timespec t; clock_gettime(CLOCK_MONOTONIC, &t); return t.tv_sec + 1e-9 * t.tv_nsec; }
int zar_serv_snprintf_s(char* b, size_t size, size_t count, const char* f, ...) {
  COUNT;
  va_list ap;
  va_start(ap, f);
  const int n = std::vsnprintf(b, (count < size ? count : size - 1) + 1, f, ap);
  va_end(ap);
  return n;
}
void zar_serv_print_verbose_info(int, const char* text, double s) { COUNT; std::printf("SUBST %s %g\n", text, s); }
void zar_serv_xerbla(const char* name, const int* info, int len) { COUNT; std::fprintf(stderr, "%.*s %d\n", len, name, *info); }
void zar_serv_lock(zar_lock_t* l) { COUNT; while (__atomic_exchange_n(l, 1, __ATOMIC_ACQUIRE)) {} }
void zar_serv_unlock(zar_lock_t* l) { COUNT; __atomic_store_n(l, 0, __ATOMIC_RELEASE); }
const char* zar_serv_get_msg(int, int, ...) { COUNT; return ""; }
int zar_serv_print(int e, const char* f, ...) {
  COUNT; va_list ap; va_start(ap, f); int n = std::vfprintf(e ? stderr : stdout, f, ap); va_end(ap); return n;
}
int zar_serv_printf_s(const char* f, ...) { COUNT; va_list ap; va_start(ap, f); int n = std::vprintf(f, ap); va_end(ap); return n; }
int zar_serv_fprintf_s(FILE* o, const char* f, ...) { COUNT; va_list ap; va_start(ap, f); int n = std::vfprintf(o, f, ap); va_end(ap); return n; }
FILE* zar_serv_fopen(const char* n, const char* m) { COUNT; return std::fopen(n, m); }
int zar_serv_fclose(FILE* f) { COUNT; return std::fclose(f); }
int zar_serv_memcpy_unbounded_s(void* d, size_t ds, const void* s, size_t n) { COUNT; if (n > ds) return 34; std::memcpy(d, s, n); return 0; }
int zar_serv_memmove_s(void* d, size_t ds, const void* s, size_t n) { COUNT; if (n > ds) return 34; std::memmove(d, s, n); return 0; }
int zar_serv_strncpy_s(char* d, size_t ds, const char* s, size_t n) { COUNT; std::snprintf(d, ds, "%.*s", static_cast<int>(n), s); return 0; }
int zar_serv_strncat_s(char* d, size_t ds, const char* s, size_t n) { COUNT; size_t l = std::strlen(d); std::snprintf(d + l, ds - l, "%.*s", static_cast<int>(n), s); return 0; }
int zar_serv_sprintf_s(char* b, size_t size, const char* f, ...) { COUNT; va_list ap; va_start(ap, f); int n = std::vsnprintf(b, size, f, ap); va_end(ap); return n; }
int zar_serv_sprintf_char_s(char* b, size_t size, const char* f, char c) { COUNT; return std::snprintf(b, size, f, c); }

// The FFT callbacks: this core has no threaded FFT layer, so its commits
// report the combination as not computed; the version text is its own.
#include "zar/dfti.h"
#define SUBST_DFT_COMMIT(v, p, k, r, T, dom) \
  int zar_dft_commit_node_##p##_##k##_##r##_omp(zar_dfti_desc*) { COUNT; return ZAR_DFTI_EUNIMPLEMENTED; }
ZAR_DFTI_VARIANTS(SUBST_DFT_COMMIT)
int zar_dft_bless_node_thr(zar_dfti_desc* d) { COUNT; d->blessed = 1; return 0; }
int zar_serv_get_version_string_c(char* b, int n) { COUNT; return std::snprintf(b, n, "substitute core"); }
