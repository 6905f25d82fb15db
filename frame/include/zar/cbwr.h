// The reproducibility switch shared by every kernel that has a `_cnr` twin.
//
// On entry the kernel asks the core for the reproducibility branch; with the
// answer 1 (no reproducibility requested) it runs its fast path, which may
// peel elements to reach a 32-byte boundary of the destination; with any
// other answer it runs the twin, whose operation order does not depend on
// the alignment of the caller's arrays.
#pragma once
#include <cstdint>

#include "zar/services.h"

namespace zar {

inline bool fast_path_allowed() { return zar_serv_cbwr_get(1) == 1; }

// Runs Fast(args...) or, when reproducibility is requested, Cnr(args...).
template <auto Fast, auto Cnr, class... A>
inline decltype(auto) cbwr_dispatch(A... args) {
  if (fast_path_allowed()) return Fast(args...);
  return Cnr(args...);
}

// Number of leading elements to step over before p reaches a 32-byte
// boundary, or -1 when p is not a multiple of the element size (the caller
// then runs a plain loop).
template <class T> inline int peel_to_32(const T* p) {
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  if (a % sizeof(T) != 0) return -1;
  return static_cast<int>(((32 - a % 32) % 32) / sizeof(T));
}

}  // namespace zar
