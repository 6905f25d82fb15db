// Internal interfaces of the core library.
#pragma once
#include <atomic>
#include <cstddef>
#include <type_traits>

#define ZAR_API extern "C" __attribute__((visibility("default")))

namespace zar::core {

// ---- settings (settings.cpp), read from the environment at load time
struct settings {
  std::atomic<int> cbwr{1};
  int verbose = 0;  // the integer the kernels see through zar_serv_verbose_mode
  std::atomic<int> threads{0};  // 0: default
  std::atomic<int> fail_alloc_countdown{0};
  std::atomic<int> warnings{0};
  std::atomic<int> enabled_cap{-1};  // ZAR_FEATURE_* mask cap, -1: none
};
settings& config();
// Warns once about an environment variable's bad value: what was expected
// and the fallback used instead.
void env_warning(const char* var, const char* value, const char* expected, const char* fallback);

// ---- processor (cpu.cpp)
int cpu_features();          // detected
int cpu_enabled_features();  // after the cap
int cpu_generation();        // ZAR_CPU_* of the enabled features
bool cpu_family_is(int vendor_amd, int family, const int* models, int nmodels);
void cache_record_detected(long long* record);

// ---- kernel library (loader.cpp)
// Loads the default kernel library if needed and returns the named entry
// point; prints what is wrong and stops the program when it cannot.
void* require_kernel(const char* name);
// Held across fork (with the thread pool's lock), so that a child never
// inherits the loader's lock taken by a thread it does not have.
void loader_before_fork();
void loader_after_fork();

// ---- threads (threads.cpp)
int max_threads();
// A reference to the body of a parallel region, body(tid, nt): it neither
// copies nor allocates, so starting a region cannot fail for want of memory.
class region_body {
 public:
  template <class F, class = std::enable_if_t<!std::is_same_v<std::decay_t<F>, region_body>>>
  region_body(const F& f)  // NOLINT: taking any callable is the point
      : obj_(&f), call_([](const void* o, int t, int n) { (*static_cast<const F*>(o))(t, n); }) {}
  void operator()(int tid, int nt) const { call_(obj_, tid, nt); }

 private:
  const void* obj_;
  void (*call_)(const void*, int, int);
};
// Runs body(tid, nt) once for each tid = 0 .. nt-1 and returns when all are
// done. The caller and the pool's idle workers take the shares in turn: the
// workers another application thread is using are not waited for, so the
// shares may run on fewer threads (down to the caller alone). Nested calls
// run their shares serially.
void parallel(int nt, region_body body);
// As parallel, but with as many shares as threads were free (at most nt,
// at least 1, the caller alone): for work whose result does not depend on
// how it is divided, so that a caller finding the workers busy runs its
// work whole instead of in pieces.
void parallel_fit(int nt, region_body body);

// ---- errors (xerbla.cpp)
// Reports an illegal argument of a Fortran-style routine through xerbla_.
void report_illegal(const char* name, int position);
// Reports the illegal argument at `position` of the BLAS routine named by
// its type letter and the rest of its name ('d', "trsm"): through xerbla_
// with the upper-case name blank-padded to six characters ("DTRSM "), or,
// for CBLAS, through cblas_xerbla with "cblas_dtrsm" and the position plus
// one (the layout argument comes first), as the reference CBLAS reports.
void report_routine(char letter, const char* op, bool cblas, int position);

}  // namespace zar::core

// The kernel named `sym`, resolved by name once per call site. The kernel's
// prototype comes from its family header, so the call is type-checked.
#define ZAR_KERNEL(sym)                                                                      \
  ([]() -> decltype(&sym) {                                                                  \
    static decltype(&sym) const f = reinterpret_cast<decltype(&sym)>(::zar::core::require_kernel(#sym)); \
    return f;                                                                                \
  }())
