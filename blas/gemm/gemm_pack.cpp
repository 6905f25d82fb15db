// GEMM packers: copy a block of op(A) or op(B) into panels for the block kernel.
//
// Both operands use the panel layout described with `pack` in gemm_impl.h,
// so the kernel always works on full, zero-padded panels.
// A is multiplied by alpha while it is copied (each value rounded once); B is
// copied as it is (alpha null).
#include "blas/gemm/gemm_impl.h"
#include "zar/export.h"

namespace zar::gemm {

// The six packers of the record, as (line count, depth) from (rows, cols).
template <class T> void copy_an(const int* rows, const int* cols, const T* s, const int* ld, T* d, const int* st,
                                const T* al) {
  pack_entry<T, cfg<T>::mr, true, false>(*rows, *cols, s, *ld, d, *st, al);
}
template <class T, bool Conj> void copy_at(const int* rows, const int* cols, const T* s, const int* ld, T* d,
                                           const int* st, const T* al) {
  pack_entry<T, cfg<T>::mr, false, Conj>(*rows, *cols, s, *ld, d, *st, al);
}
template <class T> void copy_bn(const int* rows, const int* cols, const T* s, const int* ld, T* d, const int* st,
                                const T* al) {
  pack_entry<T, cfg<T>::nr, false, false>(*cols, *rows, s, *ld, d, *st, al);
}
template <class T, bool Conj> void copy_bt(const int* rows, const int* cols, const T* s, const int* ld, T* d,
                                           const int* st, const T* al) {
  pack_entry<T, cfg<T>::nr, true, Conj>(*cols, *rows, s, *ld, d, *st, al);
}

}  // namespace zar::gemm

#define ZAR_GEMM_PACKER(t, T, name, ...)                                                                     \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_##name)(const int* r, const int* c, const T* s, const int* ld, T* d,     \
                                           const int* st, const T* al) {                                  \
    zar::gemm::__VA_ARGS__(r, c, s, ld, d, st, al);                                                         \
  }
#define ZAR_GEMM_PACKERS(t, T)                                  \
  ZAR_GEMM_PACKER(t, T, copyan, copy_an<T>)                     \
  ZAR_GEMM_PACKER(t, T, copyat, copy_at<T, false>)              \
  ZAR_GEMM_PACKER(t, T, copybn, copy_bn<T>)                     \
  ZAR_GEMM_PACKER(t, T, copybt, copy_bt<T, false>)
#define ZAR_GEMM_CONJ_PACKERS(t, T)                             \
  ZAR_GEMM_PACKER(t, T, copyac, copy_at<T, true>)               \
  ZAR_GEMM_PACKER(t, T, copybc, copy_bt<T, true>)

ZAR_GEMM_TYPES(ZAR_GEMM_PACKERS)
ZAR_GEMM_COMPLEX_TYPES(ZAR_GEMM_CONJ_PACKERS)
