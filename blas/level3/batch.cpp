// ?gemm_batch and ?gemm_batch_strided: many independent products, each one
// the engine's ordinary gemm (the same bits as a separate x?gemm call).
#include "blas/level3/l3.h"

namespace zar::l3 {
namespace {

// Group g: group_size[g] products with options, sizes and scalars entry g;
// their matrices follow those of the groups before it in a, b and c.
template <class T> void gemm_batch(ZAR_L3_GEMM_BATCH_ARGS(T)) {
  long long at_ = 0;
  for (int g = 0; g < *group_count; ++g)
    for (int i = 0; i < group_size[g]; ++i, ++at_)
      gemm(transa + g, transb + g, m[g], n[g], k[g], alpha[g], a[at_], lda[g], b[at_], ldb[g], beta[g], c[at_],
           ldc[g]);
}

template <class T> void gemm_batch_strided(ZAR_L3_GEMM_STRIDED_ARGS(T)) {
  for (int i = 0; i < *batch_size; ++i)
    gemm(transa, transb, *m, *n, *k, *alpha, offset(a, static_cast<long long>(i) * *stridea), *lda,
         offset(b, static_cast<long long>(i) * *strideb), *ldb, *beta,
         offset(c, static_cast<long long>(i) * *stridec), *ldc);
}

}  // namespace
}  // namespace zar::l3

#define ZAR_L3_BATCH_DEF(t, T, R)                                                                           \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemm_batch)(ZAR_L3_GEMM_BATCH_ARGS(T)) {                                   \
    zar::l3::gemm_batch<T>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, group_count,       \
                           group_size);                                                                     \
  }                                                                                                         \
  ZAR_EXPORT void ZAR_BLAS(x##t##gemm_batch_strided)(ZAR_L3_GEMM_STRIDED_ARGS(T)) {                         \
    zar::l3::gemm_batch_strided<T>(transa, transb, m, n, k, alpha, a, lda, stridea, b, ldb, strideb, beta,  \
                                   c, ldc, stridec, batch_size);                                            \
  }
ZAR_L3_ALL(ZAR_L3_BATCH_DEF)
