// Helpers shared by the kernel side of the FFT descriptor (dft/*.cpp).
#pragma once
#include <cstring>

#include "dft/engine/fft.h"
#include "zar/dfti.h"
#include "zar/export.h"
#include "zar/types.h"

namespace zar::dfti {

inline size_t up64(size_t b) { return (b + 63) & ~size_t(63); }

inline bool size_query(const zar_dfti_desc* d) { return d->mem && d->mem->mode == ZAR_DFTI_MODE_QUERY; }

// A size query only advances the cursor of the arena the draw would use.
inline void measure(zar_dfti_mem* m, int arena, size_t bytes) {
  if (m->mode == ZAR_DFTI_MODE_SHARED) arena = 0;
  m->arena[arena].cursor += up64(bytes);
}

inline bool is_pow2(long n) { return n > 0 && (n & (n - 1)) == 0; }

// The settings a node takes over from its head record at commit.
inline void copy_node_settings(zar_dfti_desc* node, const zar_dfti_desc* head) {
  node->precision = head->precision;
  node->domain = head->domain;
  node->rank = head->rank;
  node->cstorage = head->cstorage;
  node->rstorage = head->rstorage;
  node->cestorage = head->cestorage;
  node->placement = head->placement;
  node->packed = head->packed;
  node->workspace = head->workspace;
  node->in_unit = head->in_unit;
  node->out_unit = head->out_unit;
  node->flags = head->flags;
  node->fscale = head->fscale;
  node->bscale = head->bscale;
  node->count = head->count;
  node->mem = head->mem;
  node->magic = head->magic;
  node->thr_slots = head->thr_slots;
}

// Frees what a commit built: node records after the head, plans, scratch.
void release_plans(zar_dfti_desc* d);

}  // namespace zar::dfti
