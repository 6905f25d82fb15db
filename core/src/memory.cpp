// Work-area services: aligned and plain allocation, the pointer checks that
// warn, and the allocation fault injection used by tests.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core.h"
#include "zar/services.h"

namespace zar::core {
namespace {

// True when this allocation is the one the fault injection asked to fail.
bool injected_failure() {
  std::atomic<int>& countdown = config().fail_alloc_countdown;
  int n = countdown.load(std::memory_order_relaxed);
  while (n > 0) {
    if (countdown.compare_exchange_weak(n, n - 1)) return n == 1;
  }
  return false;
}

// An aligned block keeps the address malloc returned just before the
// aligned start, so any positive alignment (not only powers of two) works.
constexpr std::size_t header = sizeof(void*);

}  // namespace
}  // namespace zar::core

using namespace zar::core;

ZAR_API void* zar_serv_allocate(size_t bytes, int alignment) {
  if (injected_failure()) return nullptr;
  const std::size_t align = alignment > 0 ? static_cast<std::size_t>(alignment) : 64;
  if (bytes > SIZE_MAX - align - header) return nullptr;
  void* raw = std::malloc(bytes + align + header);
  if (!raw) return nullptr;
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(raw) + header;
  const std::uintptr_t aligned = (first + align - 1) / align * align;
  // Small or odd alignments leave the slot unaligned: copy bytes.
  std::memcpy(reinterpret_cast<void*>(aligned - header), &raw, header);
  return reinterpret_cast<void*>(aligned);
}

ZAR_API void zar_serv_deallocate(void* p) {
  if (!p) return;
  void* raw;
  std::memcpy(&raw, static_cast<char*>(p) - header, header);
  std::free(raw);
}

ZAR_API void* zar_serv_malloc(size_t bytes) {
  if (injected_failure()) return nullptr;
  return std::malloc(bytes ? bytes : 1);
}

ZAR_API void* zar_serv_calloc(size_t count, size_t size) {
  if (injected_failure()) return nullptr;
  return std::calloc(count ? count : 1, size ? size : 1);
}

ZAR_API void zar_serv_free(void* p) { std::free(p); }

ZAR_API int zar_serv_check_ptr(const void* p, const char*) { return p == nullptr; }

ZAR_API int zar_serv_check_ptr_and_warn(const void* p, const char* name) {
  if (p) return 0;
  config().warnings.fetch_add(1);
  std::fprintf(stderr,
               "zar: warning: %s could not allocate its work area; "
               "the result is computed on a path that needs none\n",
               name ? name : "(unnamed routine)");
  std::fflush(stderr);
  return 1;
}
