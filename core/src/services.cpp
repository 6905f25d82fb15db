// Services for the kernels: option characters, time, verbose lines, locks,
// messages and bounded string helpers.
#include <sched.h>
#include <time.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core.h"
#include "zar/services.h"

ZAR_API int zar_serv_lsame(const char* a, const char* b) {
  auto up = [](char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; };
  return up(*a) == up(*b);
}

ZAR_API double zar_serv_dsecnd(void) {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

ZAR_API void zar_serv_print_verbose_info(int, const char* text, double seconds) {
  char when[32];
  if (seconds < 1e-3) std::snprintf(when, sizeof when, "%.2fus", seconds * 1e6);
  else if (seconds < 1.0) std::snprintf(when, sizeof when, "%.2fms", seconds * 1e3);
  else std::snprintf(when, sizeof when, "%.2fs", seconds);
  const int branch = zar::core::config().cbwr;
  std::printf("ZAR_VERBOSE %s %s CNR:%s NThr:%d\n", text, when,
              branch == 1 ? "OFF" : (branch == 2 ? "AUTO" : (branch == 3 ? "COMPATIBLE" : "ON")),
              zar::core::max_threads());
  std::fflush(stdout);
}

ZAR_API void zar_serv_lock(zar_lock_t* lock) {
  while (__atomic_exchange_n(lock, 1, __ATOMIC_ACQUIRE) != 0) {
    while (__atomic_load_n(lock, __ATOMIC_RELAXED) != 0) sched_yield();
  }
}

ZAR_API void zar_serv_unlock(zar_lock_t* lock) { __atomic_store_n(lock, 0, __ATOMIC_RELEASE); }

ZAR_API int zar_serv_print(int to_stderr, const char* format, ...) {
  va_list ap;
  va_start(ap, format);
  const int n = std::vfprintf(to_stderr ? stderr : stdout, format, ap);
  va_end(ap);
  std::fflush(to_stderr ? stderr : stdout);
  return n;
}

ZAR_API int zar_serv_printf_s(const char* format, ...) {
  va_list ap;
  va_start(ap, format);
  const int n = std::vprintf(format, ap);
  va_end(ap);
  return n;
}

ZAR_API int zar_serv_fprintf_s(FILE* f, const char* format, ...) {
  if (!f) return -1;
  va_list ap;
  va_start(ap, format);
  const int n = std::vfprintf(f, format, ap);
  va_end(ap);
  return n;
}

ZAR_API FILE* zar_serv_fopen(const char* name, const char* mode) {
  if (!name || !mode) return nullptr;
  return std::fopen(name, mode);
}

ZAR_API int zar_serv_fclose(FILE* f) { return f ? std::fclose(f) : -1; }

// ------------------------------------------------------- bounded strings
// Codes: 0 done; 22 (EINVAL) null argument; 34 (ERANGE) destination too small.
namespace {
constexpr int kInvalid = 22, kRange = 34;
}

ZAR_API int zar_serv_memcpy_unbounded_s(void* dst, size_t dst_size, const void* src, size_t count) {
  if (!dst || !src) return kInvalid;
  if (count > dst_size) return kRange;
  std::memcpy(dst, src, count);
  return 0;
}

ZAR_API int zar_serv_memmove_s(void* dst, size_t dst_size, const void* src, size_t count) {
  if (!dst || !src) return kInvalid;
  if (count > dst_size) return kRange;
  std::memmove(dst, src, count);
  return 0;
}

ZAR_API int zar_serv_strncpy_s(char* dst, size_t dst_size, const char* src, size_t count) {
  if (!dst || dst_size == 0) return kInvalid;
  if (!src) {
    dst[0] = '\0';
    return kInvalid;
  }
  const size_t len = strnlen(src, count);
  if (len >= dst_size) {
    dst[0] = '\0';
    return kRange;
  }
  std::memcpy(dst, src, len);
  dst[len] = '\0';
  return 0;
}

ZAR_API int zar_serv_strncat_s(char* dst, size_t dst_size, const char* src, size_t count) {
  if (!dst || dst_size == 0) return kInvalid;
  const size_t have = strnlen(dst, dst_size);
  if (have == dst_size || !src) {
    dst[0] = '\0';
    return have == dst_size ? kRange : kInvalid;
  }
  const size_t len = strnlen(src, count);
  if (have + len >= dst_size) {
    dst[0] = '\0';
    return kRange;
  }
  std::memcpy(dst + have, src, len);
  dst[have + len] = '\0';
  return 0;
}

// snprintf_s: writes at most min(count, size - 1) characters and always
// terminates; returns the characters written, or -1 when the output was cut.
ZAR_API int zar_serv_snprintf_s(char* buf, size_t size, size_t count, const char* format, ...) {
  if (!buf || size == 0 || !format) return -1;
  const size_t limit = (count < size - 1 ? count : size - 1) + 1;
  va_list ap;
  va_start(ap, format);
  const int n = std::vsnprintf(buf, limit, format, ap);
  va_end(ap);
  if (n < 0) {
    buf[0] = '\0';
    return -1;
  }
  return static_cast<size_t>(n) < limit ? n : -1;
}

ZAR_API int zar_serv_sprintf_s(char* buf, size_t size, const char* format, ...) {
  if (!buf || size == 0 || !format) return -1;
  va_list ap;
  va_start(ap, format);
  const int n = std::vsnprintf(buf, size, format, ap);
  va_end(ap);
  if (n < 0 || static_cast<size_t>(n) >= size) {
    buf[0] = '\0';
    return -1;
  }
  return n;
}

ZAR_API int zar_serv_sprintf_char_s(char* buf, size_t size, const char* format, char c) {
  return zar_serv_sprintf_s(buf, size, format, c);
}
