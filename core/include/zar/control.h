/* zar control interface: settings, loader status and test hooks.
 *
 * Every setting here has an environment variable that is read once when the
 * core library is loaded; the functions change the setting from then on.
 *
 *   ZAR_CBWR                 reproducibility branch: OFF (1, default), AUTO (2),
 *                            COMPATIBLE (3), or a positive number. Any branch
 *                            but OFF selects the alignment-independent kernels.
 *   ZAR_VERBOSE              1: print one line per reporting call on stdout.
 *   ZAR_NUM_THREADS          threads for the threaded front ends (default: the
 *                            number of processors the process may run on).
 *   ZAR_CACHE_SIZE           last-level cache size in bytes (suffix K, M, G
 *                            allowed) answered to the kernels instead of the
 *                            detected one; 0 answers "nothing is known".
 *   ZAR_KERNEL_PATH          the kernel library file, or the directory that
 *                            holds libzar_avx.so.2 (default: the directory of
 *                            libzar_core.so.2).
 *   ZAR_ENABLE_INSTRUCTIONS  highest instruction set to use: SSE2, SSE4_2,
 *                            AVX, AVX2 or AVX512; below AVX no kernels load.
 *   ZAR_FAIL_ALLOC           make the n-th allocation of the kernels fail.
 */
#ifndef ZAR_CONTROL_H
#define ZAR_CONTROL_H

#ifdef __cplusplus
extern "C" {
#endif

/* Reproducibility branches. */
#define ZAR_CBWR_OFF 1
#define ZAR_CBWR_AUTO 2
#define ZAR_CBWR_COMPATIBLE 3

/* Results of zar_kernel_load. */
#define ZAR_LOAD_OK 0
#define ZAR_LOAD_NO_AVX 1      /* the processor (or ZAR_ENABLE_INSTRUCTIONS) lacks AVX */
#define ZAR_LOAD_NOT_FOUND 2   /* the file is missing or cannot be loaded */
#define ZAR_LOAD_NO_TAG 3      /* the file has no dll_cpu_version */
#define ZAR_LOAD_WRONG_TAG 4   /* dll_cpu_version did not answer 6 */

/* Processor features, as bits of zar_cpu_features(). */
#define ZAR_FEATURE_SSE2 0x001
#define ZAR_FEATURE_SSE3 0x002
#define ZAR_FEATURE_SSSE3 0x004
#define ZAR_FEATURE_SSE41 0x008
#define ZAR_FEATURE_SSE42 0x010
#define ZAR_FEATURE_AVX 0x020
#define ZAR_FEATURE_F16C 0x040
#define ZAR_FEATURE_FMA 0x080
#define ZAR_FEATURE_AVX2 0x100
#define ZAR_FEATURE_AVX512F 0x200

/* Runs fn(tid, nt, arg) for tid = 0 .. nt-1 on the core's threads (the
 * caller runs tid 0) and returns when all are done; nt < 1 means the current
 * thread count. A call made from inside such a region runs serially. */
void zar_parallel(int nt, void (*fn)(int tid, int nt, void* arg), void* arg);

/* Reproducibility: set returns 0, or -1 (and changes nothing) for branch < 1. */
int zar_cbwr_set(int branch);
int zar_cbwr_get(void);

/* Verbose mode: sets 0 or 1 and returns the previous mode; a negative
 * argument only queries. */
int zar_verbose(int mode);

/* Threads: n < 1 restores the default. */
void zar_set_num_threads(int n);
int zar_get_max_threads(void);

/* The cache record answered to the kernels (8 entries, see zar_serv_cache_info):
 * set replaces the answer, a null record restores the detected one;
 * get copies the answer in force. */
void zar_set_cache_info(const long long* record);
void zar_get_cache_info(long long* record);
/* Shorthand: answer this last-level size (0: nothing known); negative restores. */
void zar_set_cache_size(long long bytes);

/* Allocation fault injection: the n-th allocation from now (1 = the next)
 * made through zar_serv_allocate, zar_serv_malloc or zar_serv_calloc returns
 * null; 0 disarms. Returns the previous setting. */
int zar_fail_allocation(int nth);
/* Blocks allocated through zar_serv_allocate, zar_serv_malloc and
 * zar_serv_calloc and not yet freed, process-wide (for leak checks: compare
 * the count before and after a piece of work). */
long zar_outstanding_allocations(void);
/* Warnings issued by zar_serv_check_ptr_and_warn since the last reset. */
int zar_warning_count(void);
void zar_reset_warning_count(void);

/* Kernel library. zar_kernel_load loads the file (or, for a null path, the
 * default one) if no kernel library is loaded yet and answers ZAR_LOAD_*;
 * the front ends load the default on first use. */
int zar_kernel_load(const char* path);
const char* zar_kernel_error(void);  /* the last refusal, "" when none */
const char* zar_kernel_path(void);   /* the file loaded, or the one tried */
int zar_kernel_tag(void);            /* 0 until a library is loaded */
void* zar_kernel_symbol(const char* name);
const char* zar_core_path(void);

/* Processor. */
int zar_cpu_features(void);          /* detected, before any cap */
int zar_cpu_enabled_features(void);  /* after ZAR_ENABLE_INSTRUCTIONS */
const char* zar_cpu_vendor(void);
const char* zar_cpu_brand(void);

#ifdef __cplusplus
}
#endif
#endif
