// Sparse-vector kernels: a sparse vector is (nz, values x, indices indx),
// indx holding 1-based positions in a dense unit-stride vector y.
//
// Updates follow the order of indx strictly, one index at a time, so a
// repeated index accumulates (axpyi), sees the earlier store (sctr, roti) or,
// for gthrz, reads the zero written by its first occurrence.
#include "zar/level1.h"
#include "blas/level1/simd.h"

namespace zar::l1 {
namespace {

template <class T>
void axpyi(int nz, T alpha, const T* x, const int* indx, T* y) {
  if (nz < 1 || is_zero(alpha)) return;
  for (int k = 0; k < nz; ++k) {
    T& e = y[indx[k] - 1];
    e = add(e, mul(alpha, x[k]));
  }
}

// One running sum in the order of indx; x conjugated for dotci.
template <class T, class V>
T doti(int nz, const T* x, const int* indx, const T* y) {
  T s = zero_of<T>();
  for (int k = 0; k < nz; ++k) {
    const T& e = y[indx[k] - 1];
    if constexpr (std::is_same_v<V, conj>)
      s = add(s, cmulc(x[k], e));
    else
      s = add(s, mul(x[k], e));
  }
  return s;
}

template <class T>
void gthr(int nz, const T* y, T* x, const int* indx) {
  for (int k = 0; k < nz; ++k) x[k] = y[indx[k] - 1];
}

template <class T>
void gthrz(int nz, T* y, T* x, const int* indx) {
  for (int k = 0; k < nz; ++k) {
    T& e = y[indx[k] - 1];
    x[k] = e;
    e = zero_of<T>();
  }
}

template <class T>
void sctr(int nz, const T* x, const int* indx, T* y) {
  for (int k = 0; k < nz; ++k) y[indx[k] - 1] = x[k];
}

// x_k' = c x_k + s y_i, y_i' = c y_i - s x_k with i = indx_k.
template <class R>
void roti(int nz, R* x, const int* indx, R* y, R c, R s) {
  for (int k = 0; k < nz; ++k) {
    R& e = y[indx[k] - 1];
    const R xv = x[k], yv = e;
    x[k] = c * xv + s * yv;
    e = c * yv - s * xv;
  }
}

}  // namespace
}  // namespace zar::l1

using namespace zar::l1;

#define ZAR_L1_DEF_AXPYI(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(AXPYI, name, T) { axpyi<T>(*nz, *alpha, x, indx, y); }
#define ZAR_L1_DEF_DOTI(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(DOTI, name, T) { return doti<T, v>(*nz, x, indx, y); }
#define ZAR_L1_DEF_GTHR(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(GTHR, name, T) { gthr<T>(*nz, y, x, indx); }
#define ZAR_L1_DEF_GTHRZ(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(GTHRZ, name, T) { gthrz<T>(*nz, y, x, indx); }
#define ZAR_L1_DEF_SCTR(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(SCTR, name, T) { sctr<T>(*nz, x, indx, y); }
#define ZAR_L1_DEF_ROTI(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(ROTI, name, T) { roti<T>(*nz, x, indx, y, *c, *s); }
ZAR_L1_LIST_AXPYI(ZAR_L1_DEF_AXPYI)
ZAR_L1_LIST_DOTI(ZAR_L1_DEF_DOTI)
ZAR_L1_LIST_GTHR(ZAR_L1_DEF_GTHR)
ZAR_L1_LIST_GTHRZ(ZAR_L1_DEF_GTHRZ)
ZAR_L1_LIST_SCTR(ZAR_L1_DEF_SCTR)
ZAR_L1_LIST_ROTI(ZAR_L1_DEF_ROTI)
