// GEMM packers: copy a block of op(A) or op(B) into panels for the block kernel.
//
// Both operands use the panel layout described with `pack` in gemm_simd.h,
// so the kernel always works on full, zero-padded panels.
// A is multiplied by alpha while it is copied (each value rounded once); B is
// copied as it is (alpha null).
#include "blas/gemm/gemm_simd.h"
#include "zar/export.h"

namespace zar::gemm {

// A packer of the record: A blocks arrive as (rows = lines, cols = depth),
// B blocks as (rows = depth, cols = lines).
template <class T, bool IsA, bool LineContig, bool Conj>
void copy(const int* rows, const int* cols, const T* s, const int* ld, T* d, const int* st, const T* al) {
  if constexpr (IsA) pack_entry<T, cfg<T>::mr, LineContig, Conj>(*rows, *cols, s, *ld, d, *st, al);
  else pack_entry<T, cfg<T>::nr, LineContig, Conj>(*cols, *rows, s, *ld, d, *st, al);
}

}  // namespace zar::gemm

#define ZAR_GEMM_PACKER(t, T, name, ...)                                                                     \
  ZAR_EXPORT void ZAR_BLAS(t##gemm_##name)(const int* r, const int* c, const T* s, const int* ld, T* d,     \
                                           const int* st, const T* al) {                                  \
    zar::gemm::__VA_ARGS__(r, c, s, ld, d, st, al);                                                         \
  }
// op(A) not transposed: the rows of a panel are adjacent; transposed: each
// row runs along the depth. op(B) the other way round.
#define ZAR_GEMM_PACKERS(t, T)                                  \
  ZAR_GEMM_PACKER(t, T, copyan, copy<T, true, true, false>)     \
  ZAR_GEMM_PACKER(t, T, copyat, copy<T, true, false, false>)    \
  ZAR_GEMM_PACKER(t, T, copybn, copy<T, false, false, false>)   \
  ZAR_GEMM_PACKER(t, T, copybt, copy<T, false, true, false>)
#define ZAR_GEMM_CONJ_PACKERS(t, T)                             \
  ZAR_GEMM_PACKER(t, T, copyac, copy<T, true, false, true>)     \
  ZAR_GEMM_PACKER(t, T, copybc, copy<T, false, true, true>)

ZAR_GEMM_TYPES(ZAR_GEMM_PACKERS)
ZAR_GEMM_COMPLEX_TYPES(ZAR_GEMM_CONJ_PACKERS)
