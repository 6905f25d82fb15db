// Work-area services: aligned and plain allocation, the pointer checks that
// warn, and the allocation fault injection used by tests.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

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

// An aligned block keeps the address malloc returned, and the size asked of
// malloc, just before the aligned start, so any positive alignment (not only
// powers of two) works.
struct block_info {
  void* raw;
  std::size_t size;
};
constexpr std::size_t header = sizeof(block_info);

// Large work areas (GEMM's packed panels) come from fresh mappings on 32-bit
// glibc, whose mmap threshold stops at 512 KiB, and touching their new pages
// costs as much as a mid-sized product. Each thread keeps the largest large
// block it has freed and hands it out again for any large request that fits
// it: the Level-3 routines make many engine calls of varying sizes in a row,
// and each would otherwise map and fault in its area afresh. What a thread
// holds is bounded by the largest work area it has used.
constexpr std::size_t spare_min = 512 * 1024;
struct spare_block {
  block_info b{nullptr, 0};
  ~spare_block() { std::free(b.raw); }
};
thread_local spare_block spare;

// Blocks handed out by the allocation services and not yet given back.
std::atomic<long> outstanding{0};
inline void* counted(void* p) {
  if (p) outstanding.fetch_add(1, std::memory_order_relaxed);
  return p;
}

}  // namespace
}  // namespace zar::core

using namespace zar::core;

ZAR_API void* zar_serv_allocate(size_t bytes, int alignment) {
  if (injected_failure()) return nullptr;
  const std::size_t align = alignment > 0 ? static_cast<std::size_t>(alignment) : 64;
  if (bytes > SIZE_MAX - align - header) return nullptr;
  block_info b{nullptr, bytes + align + header};
  if (spare.b.raw && spare.b.size >= b.size && b.size >= spare_min) {
    b = spare.b;
    spare.b = {nullptr, 0};
  } else {
    b.raw = std::malloc(b.size);
  }
  if (!b.raw) return nullptr;
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(b.raw) + header;
  const std::uintptr_t aligned = (first + align - 1) / align * align;
  // Small or odd alignments leave the slot unaligned: copy bytes.
  std::memcpy(reinterpret_cast<void*>(aligned - header), &b, header);
  return counted(reinterpret_cast<void*>(aligned));
}

ZAR_API void zar_serv_deallocate(void* p) {
  if (!p) return;
  outstanding.fetch_sub(1, std::memory_order_relaxed);
  block_info b;
  std::memcpy(&b, static_cast<char*>(p) - header, header);
  if (b.size >= spare_min && b.size > spare.b.size) std::swap(spare.b, b);
  std::free(b.raw);
}

ZAR_API void* zar_serv_malloc(size_t bytes) {
  if (injected_failure()) return nullptr;
  return counted(std::malloc(bytes ? bytes : 1));
}

ZAR_API void* zar_serv_calloc(size_t count, size_t size) {
  if (injected_failure()) return nullptr;
  return counted(std::calloc(count ? count : 1, size ? size : 1));
}

ZAR_API void zar_serv_free(void* p) {
  if (p) outstanding.fetch_sub(1, std::memory_order_relaxed);
  std::free(p);
}

ZAR_API long zar_outstanding_allocations(void) { return outstanding.load(); }

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
