// Settings of the core: read from the environment when the library is
// loaded, changed afterwards through the control interface.
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "core.h"
#include "zar/control.h"
#include "zar/services.h"

namespace zar::core {
namespace {

struct cache_answer {
  std::mutex m;
  bool overridden = false;
  long long record[ZAR_CACHE_RECORD_ENTRIES] = {};
};
cache_answer& cache() {
  static cache_answer c;
  return c;
}

bool ieq(const char* a, const char* b) {
  for (; *a && *b; ++a, ++b)
    if (std::toupper(static_cast<unsigned char>(*a)) != std::toupper(static_cast<unsigned char>(*b))) return false;
  return *a == *b;
}

// A whole number written with decimal digits only (no sign, no blanks),
// at most `max`; false when malformed or larger.
bool parse_count(const char* s, long long max, long long* out) {
  if (!*s) return false;
  long long v = 0;
  for (; *s; ++s) {
    if (*s < '0' || *s > '9') return false;
    v = v * 10 + (*s - '0');
    if (v > max) return false;
  }
  *out = v;
  return true;
}

// A size in bytes: digits with an optional K, M or G suffix (and an
// optional B), at most 1 TiB.
bool parse_size(const char* s, long long* out) {
  constexpr long long max = 1LL << 40;
  char digits[24];
  const char* end = s;
  while (*end >= '0' && *end <= '9') ++end;
  if (end - s >= static_cast<long>(sizeof digits)) return false;
  std::memcpy(digits, s, end - s);
  digits[end - s] = '\0';
  int shift = 0;
  switch (std::toupper(static_cast<unsigned char>(*end))) {
    case 'K': shift = 10; ++end; break;
    case 'M': shift = 20; ++end; break;
    case 'G': shift = 30; ++end; break;
    default: break;
  }
  if (*end == 'B' || *end == 'b') ++end;
  long long v = 0;
  if (*end != '\0' || !parse_count(digits, max >> shift, &v)) return false;
  *out = v << shift;
  return true;
}

}  // namespace

// One warning per bad value: the variable, the value, what was expected and
// what is used instead.
void env_warning(const char* var, const char* value, const char* expected, const char* fallback) {
  config().warnings.fetch_add(1);
  std::fprintf(stderr, "zar: warning: ignoring %s=\"%s\": expected %s; using %s\n", var, value, expected, fallback);
  std::fflush(stderr);
}

namespace {

void read_environment() {
  settings& s = config();
  if (const char* v = std::getenv("ZAR_CBWR")) {
    long long n = 0;
    if (ieq(v, "OFF")) s.cbwr = ZAR_CBWR_OFF;
    else if (ieq(v, "AUTO")) s.cbwr = ZAR_CBWR_AUTO;
    else if (ieq(v, "COMPATIBLE")) s.cbwr = ZAR_CBWR_COMPATIBLE;
    else if (parse_count(v, INT_MAX, &n) && n >= 1) s.cbwr = static_cast<int>(n);
    else env_warning("ZAR_CBWR", v, "OFF, AUTO, COMPATIBLE or a positive number", "the default, OFF");
  }
  if (const char* v = std::getenv("ZAR_VERBOSE")) {
    if (std::strcmp(v, "0") == 0 || std::strcmp(v, "1") == 0) s.verbose = v[0] - '0';
    else env_warning("ZAR_VERBOSE", v, "0 or 1", "the default, 0");
  }
  if (const char* v = std::getenv("ZAR_NUM_THREADS")) {
    long long n = 0;
    if (parse_count(v, 1024, &n) && n >= 1) s.threads = static_cast<int>(n);
    else env_warning("ZAR_NUM_THREADS", v, "a number of threads from 1 to 1024",
                     "the default, one thread per processor available");
  }
  if (const char* v = std::getenv("ZAR_CACHE_SIZE")) {
    long long bytes = 0;
    if (parse_size(v, &bytes)) zar_set_cache_size(bytes);
    else env_warning("ZAR_CACHE_SIZE", v, "a size in bytes up to 1T such as 4194304 or 4M",
                     "the default, the detected size");
  }
  if (const char* v = std::getenv("ZAR_ENABLE_INSTRUCTIONS")) {
    static const struct { const char* name; int mask; } caps[] = {
        {"SSE2", ZAR_FEATURE_SSE2},
        {"SSE4_2", ZAR_FEATURE_SSE2 | ZAR_FEATURE_SSE3 | ZAR_FEATURE_SSSE3 | ZAR_FEATURE_SSE41 | ZAR_FEATURE_SSE42},
        {"AVX", 0x03f}, {"AVX2", 0x1ff}, {"AVX512", 0x3ff}};
    bool found = false;
    for (const auto& c : caps)
      if (ieq(v, c.name)) { s.enabled_cap = c.mask; found = true; }
    if (!found)
      env_warning("ZAR_ENABLE_INSTRUCTIONS", v, "SSE2, SSE4_2, AVX, AVX2 or AVX512",
                  "the default, every instruction set detected");
  }
  if (const char* v = std::getenv("ZAR_FAIL_ALLOC")) {
    long long n = 0;
    if (parse_count(v, INT_MAX, &n)) s.fail_alloc_countdown = static_cast<int>(n);
    else env_warning("ZAR_FAIL_ALLOC", v, "a non-negative allocation number", "the default, 0 (no failure)");
  }
}

}  // namespace

settings& config() {
  static settings s;
  return s;
}

// Runs when the library is loaded, before any service is asked.
__attribute__((constructor)) static void load_settings() { read_environment(); }

}  // namespace zar::core

using namespace zar::core;

ZAR_API int zar_cbwr_set(int branch) {
  if (branch < 1) return -1;
  config().cbwr = branch;
  return 0;
}
ZAR_API int zar_cbwr_get(void) { return config().cbwr; }
ZAR_API int zar_serv_cbwr_get(int) { return config().cbwr; }

ZAR_API int zar_verbose(int mode) {
  const int previous = config().verbose;
  if (mode >= 0) __atomic_store_n(&config().verbose, mode ? 1 : 0, __ATOMIC_RELAXED);
  return previous;
}
ZAR_API int* zar_serv_verbose_mode(void) { return &config().verbose; }

ZAR_API void zar_set_num_threads(int n) { config().threads = n < 1 ? 0 : n; }
ZAR_API int zar_get_max_threads(void) { return max_threads(); }

ZAR_API void zar_set_cache_info(const long long* record) {
  cache_answer& c = cache();
  std::lock_guard<std::mutex> lock(c.m);
  c.overridden = record != nullptr;
  if (record) std::memcpy(c.record, record, sizeof c.record);
}
ZAR_API void zar_set_cache_size(long long bytes) {
  if (bytes < 0) return zar_set_cache_info(nullptr);
  long long r[ZAR_CACHE_RECORD_ENTRIES];
  cache_record_detected(r);
  if (bytes == 0) {
    for (long long& e : r) e = 0;
  } else {
    if (r[0] < 3) r[0] = 3;
    r[3] = bytes;
  }
  zar_set_cache_info(r);
}
ZAR_API void zar_serv_cache_info(long long* record) {
  cache_answer& c = cache();
  {
    std::lock_guard<std::mutex> lock(c.m);
    if (c.overridden) {
      std::memcpy(record, c.record, sizeof c.record);
      return;
    }
  }
  static const struct detected {
    long long r[ZAR_CACHE_RECORD_ENTRIES];
    detected() { cache_record_detected(r); }
  } d;
  std::memcpy(record, d.r, sizeof d.r);
}
ZAR_API void zar_get_cache_info(long long* record) { zar_serv_cache_info(record); }
ZAR_API long long zar_serv_get_cache_size(int level) {
  long long r[ZAR_CACHE_RECORD_ENTRIES];
  zar_serv_cache_info(r);
  if (level >= 1 && level <= 3) return r[level];
  return r[3];
}

ZAR_API int zar_fail_allocation(int nth) { return config().fail_alloc_countdown.exchange(nth < 0 ? 0 : nth); }
ZAR_API int zar_warning_count(void) { return config().warnings; }
ZAR_API void zar_reset_warning_count(void) { config().warnings = 0; }
