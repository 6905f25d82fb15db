// Internals shared by the Level-3 drivers: every Level-3 routine is a
// description over the GEMM engine (its blocked driver, packers and block
// kernels), not an engine of its own. This header gives the drivers the
// engine's product and scaling by value, in the element type, with the
// engine's order of operations (gemm_impl.h): beta first, alpha folded into
// op(A), each depth block's sum added into C. Because the engine forms every
// element the same way whichever path or block split computes it, a Level-3
// result does not depend on how a driver or the core's threads cut it up.
#pragma once
#include <cstddef>
#include <cstdint>

#include "blas/gemm/gemm_impl.h"
#include "zar/export.h"
#include "zar/level3.h"
#include "zar/services.h"
#include "zar/types.h"

namespace zar::l3 {

using gemm::imax;
using gemm::imin;
using gemm::is_one;
using gemm::is_zero;
using gemm::one;
using gemm::zero;

// The engine's entries, overloaded on the element type.
#define ZAR_L3_ENGINE(t, T, R)                                                                                 \
  inline void engine_gemm(const char* ta, const char* tb, int m, int n, int k, const T& alpha, const T* a,    \
                          int lda, const T* b, int ldb, const T& beta, T* c, int ldc) {                       \
    zar_blas_avx_x##t##gemm(ta, tb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);                     \
  }                                                                                                           \
  inline void engine_scale(int m, int n, const T& beta, T* c, int ldc) {                                       \
    zar_blas_avx_##t##gemm_mscale(&m, &n, &beta, c, &ldc);                                                      \
  }
ZAR_L3_ALL(ZAR_L3_ENGINE)
#undef ZAR_L3_ENGINE

// C(m x n) := alpha op(A) op(B) + beta C on the engine (one thread). Empty
// products only scale C, as the engine does.
template <class T>
inline void gemm(const char* ta, const char* tb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
                 int ldb, T beta, T* c, int ldc) {
  if (m < 1 || n < 1) return;
  engine_gemm(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

// A work area from the core's allocator; get() is null when it failed.
template <class T> class work {
 public:
  explicit work(long long count) {
    if (count > 0 && count <= static_cast<long long>(SIZE_MAX / sizeof(T)))
      p_ = static_cast<T*>(zar_serv_allocate(static_cast<std::size_t>(count) * sizeof(T), 64));
  }
  ~work() {
    if (p_) zar_serv_deallocate(p_);
  }
  work(const work&) = delete;
  work& operator=(const work&) = delete;
  T* get() const { return p_; }

 private:
  T* p_ = nullptr;
};

// C(m x n) := beta C; beta exactly 0 stores zeros (NaN in C is cleared).
template <class T> inline void scale(int m, int n, T beta, T* c, int ldc) {
  if (m < 1 || n < 1) return;
  engine_scale(m, n, beta, c, ldc);
}

}  // namespace zar::l3
