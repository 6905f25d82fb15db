// zar DFT descriptors as the FFTW interface uses them: a recipe (what to
// create and set) and an owning handle built from it.
#pragma once
#include <memory>
#include <type_traits>
#include <vector>

#include "zar/dft.h"

namespace zar::fftw {

// Everything a descriptor is made of. Strides and offsets count elements of
// the data on each side (complex numbers for complex data, reals for real
// and split data); in and out are the sides of the compute call the plan
// makes (for a complex-to-real plan the input is the complex side).
struct recipe {
  bool single = false;
  bool real = false;      // real domain (r2c / c2r), else complex
  bool split = false;     // complex data as separate real and imaginary arrays
  bool inplace = false;
  std::vector<long> n;    // lengths, row-major
  std::vector<long> is;   // input strides: offset, then one per dimension
  std::vector<long> os;   // output strides likewise
  long howmany = 1, idist = 0, odist = 0;
  long threads = 1;
};

struct descriptor_free {
  void operator()(zar_dft_descriptor* d) const { zar_dft_free(&d); }
};
using descriptor = std::unique_ptr<zar_dft_descriptor, descriptor_free>;

// Creates, sets and commits; null when the library refuses any step.
inline descriptor make_descriptor(const recipe& r) {
  zar_dft_descriptor* raw = nullptr;
  const long rank = static_cast<long>(r.n.size());
  const int precision = r.single ? ZAR_DFT_SINGLE : ZAR_DFT_DOUBLE;
  const int domain = r.real ? ZAR_DFT_REAL : ZAR_DFT_COMPLEX;
  const long status = rank == 1 ? zar_dft_create(&raw, precision, domain, 1L, r.n[0])
                                : zar_dft_create(&raw, precision, domain, rank, r.n.data());
  descriptor d(status == ZAR_DFT_OK ? raw : nullptr);
  if (!d) return d;
  bool ok = zar_dft_set(d.get(), ZAR_DFT_PLACEMENT, static_cast<long>(r.inplace ? ZAR_DFT_INPLACE : ZAR_DFT_NOT_INPLACE)) == ZAR_DFT_OK &&
            zar_dft_set(d.get(), ZAR_DFT_INPUT_STRIDES, r.is.data()) == ZAR_DFT_OK &&
            zar_dft_set(d.get(), ZAR_DFT_OUTPUT_STRIDES, r.os.data()) == ZAR_DFT_OK &&
            zar_dft_set(d.get(), ZAR_DFT_THREAD_LIMIT, r.threads) == ZAR_DFT_OK;
  if (ok && r.real)
    ok = zar_dft_set(d.get(), ZAR_DFT_CONJUGATE_EVEN_STORAGE, static_cast<long>(ZAR_DFT_COMPLEX_COMPLEX)) == ZAR_DFT_OK;
  if (ok && r.split)
    ok = zar_dft_set(d.get(), ZAR_DFT_COMPLEX_STORAGE, static_cast<long>(ZAR_DFT_REAL_REAL)) == ZAR_DFT_OK;
  if (ok && r.howmany > 1)
    ok = zar_dft_set(d.get(), ZAR_DFT_NUMBER_OF_TRANSFORMS, r.howmany) == ZAR_DFT_OK &&
         zar_dft_set(d.get(), ZAR_DFT_INPUT_DISTANCE, r.idist) == ZAR_DFT_OK &&
         zar_dft_set(d.get(), ZAR_DFT_OUTPUT_DISTANCE, r.odist) == ZAR_DFT_OK;
  if (ok) ok = zar_dft_commit(d.get()) == ZAR_DFT_OK;
  if (!ok) d.reset();
  return d;
}

// A contiguous one-dimensional transform of length n, out of place.
inline recipe line_recipe(bool single, bool real, long n, long threads) {
  recipe r;
  r.single = single;
  r.real = real;
  r.n = {n};
  r.is = {0, 1};
  r.os = {0, 1};
  r.threads = threads;
  return r;
}

}  // namespace zar::fftw
