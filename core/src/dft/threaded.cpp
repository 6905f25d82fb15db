// The FFT threaded layer: decides the nodes of a descriptor and the threads
// of its computes at commit, and runs computes with the batch divided among
// the core's threads.
//
// Nodes: a one-dimensional descriptor is one node; a multi-dimensional one
// is one node per dimension (node d transforms dimension d). Each node's
// work measure is ceil(log2(bytes of one line / 16)) (see zar/dfti.h).
// Threads: a compute runs on min(thread setting, descriptor's thread limit,
// number of transforms) threads, each on its own part of the batch with its
// own scratch area, which commit allocates (one per thread), so a compute
// allocates nothing.
#include <algorithm>

#include "core.h"
#include "dft_core.h"
#include "zar/dfti.h"

namespace zar::core::dft {

int threads_for(const zar_dfti_desc* d) {
  int limit = max_threads();
  if (d->thr_limit > 0 && d->thr_limit < limit) limit = d->thr_limit;
  const long howmany = d->batch_c.dims[0].n;
  if (howmany < limit) limit = static_cast<int>(howmany);
  return limit < 1 ? 1 : limit;
}

int work_measure(long n, int element_bytes) {
  const unsigned long long units = (static_cast<unsigned long long>(n) * element_bytes + 15) / 16;
  int w = 0;
  while (w < 63 && (1ULL << w) < units) ++w;
  return w;
}

long run(const zar_dfti_desc* d, bool forward, void* const* arrays) {
  const zar_dfti_compute_fn f = forward ? d->compute_fwd : d->compute_bwd;
  const long howmany = d->batch_c.dims[0].n;
  const int nt = std::min<long>(d->thr_slots, howmany);
  if (nt <= 1) return f(d, arrays, 0, howmany, 0);
  int status[64] = {};
  const int shares = nt < 64 ? nt : 64;
  parallel(shares, [&](int t, int n) {
    const long lo = howmany * t / n, hi = howmany * (t + 1) / n;
    if (hi > lo) status[t] = f(d, arrays, lo, hi - lo, t);
  });
  for (int t = 0; t < shares; ++t)
    if (status[t] != 0) return status[t];
  return 0;
}

}  // namespace zar::core::dft

using namespace zar::core::dft;

namespace {

template <class T, bool Real, bool Md> int commit_node(zar_dfti_desc* d, int (*kernel_commit)(zar_dfti_desc*)) {
  ZAR_KERNEL(zar_dft_avx_Iotensor_copy)(&d->in_c, &d->in);
  ZAR_KERNEL(zar_dft_avx_Iotensor_copy)(&d->batch_c, &d->batch);
  d->thr_slots = threads_for(d);
  const int element = static_cast<int>(Real ? sizeof(T) : 2 * sizeof(T));
  const int rank = d->in_c.rank;
  d->node_count = Md ? rank : 1;
  for (int k = 0; k < d->node_count; ++k) {
    d->node_len[k] = d->in_c.dims[k].n;
    d->node_work[k] = work_measure(d->in_c.dims[k].n, element);
  }
  return kernel_commit(d);
}

}  // namespace

#define ZAR_DFT_COMMIT_NODE(v, p, k, r, T, dom)                                              \
  ZAR_API int zar_dft_commit_node_##p##_##k##_##r##_omp(zar_dfti_desc* d) {                  \
    return commit_node<T, dom == 33, #r[0] == 'm'>(                                          \
        d, ZAR_KERNEL(zar_dft_avx_commit_descriptor_core_##p##_##k##_##r));                  \
  }
ZAR_DFTI_VARIANTS(ZAR_DFT_COMMIT_NODE)

ZAR_API int zar_dft_bless_node_thr(zar_dfti_desc* d) {
  d->blessed = 1;
  if (d->thr_slots < 1) d->thr_slots = 1;
  return 0;
}

ZAR_API int zar_serv_get_version_string_c(char* buffer, int length) {
  static const char text[] = "zar 2.0 FFT descriptors, kernel library libzar_avx.so.2 (32-bit x86, AVX)";
  if (!buffer || length < 1) return 0;
  int k = 0;
  for (; k < length - 1 && text[k]; ++k) buffer[k] = text[k];
  buffer[k] = '\0';
  return k;
}
