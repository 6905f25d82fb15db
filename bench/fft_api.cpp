// FFT through the public descriptor interface (zar_dft_*) against FFTW for
// i386 (libfftw3 / libfftw3f, plans made with FFTW_MEASURE, serial): the
// time of one forward transform, out of place, warm caches, best of
// repeated runs, and the ratio FFTW/zar (above 1: zar is faster). zar runs
// on one thread except in the batch rows, which show 64 transforms of 4096
// points on one and on two threads and the 2T/1T speed-up (FFTW serial in
// both). GFLOP/s use the usual 5 n log2(n) flops for a complex transform
// (2.5 n log2(n) for a real one), for every length.
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "harness.h"
#include "tests/common/fftw_dl.h"
#include "zar/control.h"
#include "zar/dft.h"

namespace {

template <class T>
struct aligned {
  T* p;
  explicit aligned(size_t n) : p(static_cast<T*>(std::aligned_alloc(64, (n * sizeof(T) + 63) / 64 * 64))) {}
  ~aligned() { std::free(p); }
  aligned(const aligned&) = delete;
};

// One problem: lengths (row-major), complex or real, a contiguous batch.
struct problem {
  std::string name;
  bool single;
  bool real;
  std::vector<long> shape;
  long howmany = 1;
  int threads = 1;
};

template <class T>
void fill(T* p, size_t n) {
  std::mt19937 g(5);
  std::uniform_real_distribution<double> u(-1, 1);
  for (size_t i = 0; i < n; ++i) p[i] = static_cast<T>(u(g));
}

struct timing {
  double zar = 0, fftw = 0;  // seconds per call; 0: not run
  std::string note;
};

template <class T>
timing run(const problem& pb) {
  timing r;
  long n = 1;
  for (long v : pb.shape) n *= v;
  std::vector<long> hshape = pb.shape;
  hshape.back() = hshape.back() / 2 + 1;
  long nh = 1;
  for (long v : hshape) nh *= v;
  const long in_elems = (pb.real ? n : 2 * n) * pb.howmany;
  const long out_elems = 2 * (pb.real ? nh : n) * pb.howmany;
  aligned<T> x(static_cast<size_t>(in_elems)), y(static_cast<size_t>(out_elems));

  // FFTW: plan first (FFTW_MEASURE writes into the arrays), then fill.
  if (const auto* f = fftw_dl::api<T>::get()) {
    std::vector<int> dims(pb.shape.begin(), pb.shape.end());
    const int rank = static_cast<int>(dims.size()), hm = static_cast<int>(pb.howmany);
    auto plan = pb.real ? f->many_r2c(rank, dims.data(), hm, x.p, nullptr, 1, static_cast<int>(n), y.p, nullptr, 1,
                                      static_cast<int>(nh), fftw_dl::measure)
                        : f->many_dft(rank, dims.data(), hm, x.p, nullptr, 1, static_cast<int>(n), y.p, nullptr, 1,
                                      static_cast<int>(n), fftw_dl::forward, fftw_dl::measure);
    if (plan) {
      fill(x.p, static_cast<size_t>(in_elems));
      r.fftw = bench::best_seconds([&] { f->execute(plan); });
      f->destroy(plan);
    }
  }

  zar_dft_descriptor* d = nullptr;
  const long rank = static_cast<long>(pb.shape.size());
  const int prec = pb.single ? ZAR_DFT_SINGLE : ZAR_DFT_DOUBLE;
  const int dom = pb.real ? ZAR_DFT_REAL : ZAR_DFT_COMPLEX;
  long st = rank == 1 ? zar_dft_create(&d, prec, dom, 1, pb.shape[0]) : zar_dft_create(&d, prec, dom, rank, pb.shape.data());
  if (!st) st = zar_dft_set(d, ZAR_DFT_PLACEMENT, static_cast<long>(ZAR_DFT_NOT_INPLACE));
  if (!st && rank > 1 && pb.real) {  // real input rows of n reals, complex output rows of n/2+1
    std::vector<long> is(rank + 1, 0), os(rank + 1, 0);
    long mi = 1, mo = 1;
    for (long k = rank; k >= 1; --k) {
      is[k] = mi;
      os[k] = mo;
      mi *= pb.shape[k - 1];
      mo *= hshape[k - 1];
    }
    st = zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, is.data());
    if (!st) st = zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, os.data());
  }
  if (!st && pb.howmany > 1) {
    st = zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, pb.howmany);
    if (!st) st = zar_dft_set(d, ZAR_DFT_INPUT_DISTANCE, n);
    if (!st) st = zar_dft_set(d, ZAR_DFT_OUTPUT_DISTANCE, pb.real ? nh : n);
  }
  zar_set_num_threads(pb.threads);
  if (!st) st = zar_dft_commit(d);
  if (!st) {
    fill(x.p, static_cast<size_t>(in_elems));
    st = zar_dft_compute_forward(d, x.p, y.p);  // first call outside the timing
    if (!st) r.zar = bench::best_seconds([&] { zar_dft_compute_forward(d, x.p, y.p); });
  }
  zar_set_num_threads(0);
  if (st) r.note = "zar status " + std::to_string(st);
  if (d) zar_dft_free(&d);
  return r;
}

void run_family() {
  std::vector<problem> rows;
  auto c1 = [&](bool single, long n) {
    rows.push_back({std::string(single ? "c32 " : "c64 ") + std::to_string(n), single, false, {n}});
  };
  const bool q = bench::quick();
  for (long n : q ? std::vector<long>{1024, 4096} : std::vector<long>{64, 1000, 1009, 1024, 2520, 4096, 65536, 1L << 20})
    c1(false, n);
  for (long n : {1024L, 4096L}) c1(true, n);
  rows.push_back({"r64 4096", false, true, {4096}});
  if (!q) rows.push_back({"c64 512x512", false, false, {512, 512}});
  const long batch = q ? 16 : 64;
  rows.push_back({"c64 " + std::to_string(batch) + "x4096 1T", false, false, {4096}, batch, 1});
  rows.push_back({"c64 " + std::to_string(batch) + "x4096 2T", false, false, {4096}, batch, 2});

  bench::table tab("FFT through zar_dft_* vs FFTW (FFTW_MEASURE, serial): forward, out of place, one thread unless noted",
                   {"problem", "zar us", "FFTW us", "FFTW/zar", "zar GFLOP/s", "note"});
  double batch_1t = 0;
  bool slow = false;  // an engine far behind FFTW (a direct stand-in) would take minutes on long lengths
  for (const auto& pb : rows) {
    long n = 1;
    for (long v : pb.shape) n *= v;
    if (slow && n > 4096) {
      tab.row({pb.name, "-", "-", "-", "-", "skipped: engine too slow"});
      continue;
    }
    const timing t = pb.single ? run<float>(pb) : run<double>(pb);
    const double flops = (pb.real ? 2.5 : 5.0) * static_cast<double>(n) * std::log2(static_cast<double>(n)) * pb.howmany;
    std::string note = t.note;
    if (pb.threads == 2 && batch_1t > 0 && t.zar > 0) note = bench::fmt("2T/1T %.2fx", batch_1t / t.zar);
    if (pb.threads == 1 && pb.howmany > 1) batch_1t = t.zar;
    auto us = [](double s) { return s <= 0 ? std::string("-") : bench::fmt(s < 1e-5 ? "%.2f" : "%.1f", s * 1e6); };
    tab.row({pb.name, us(t.zar), us(t.fftw),
             t.zar > 0 && t.fftw > 0 ? bench::fmt("%.2f", t.fftw / t.zar) : "-",
             t.zar > 0 ? bench::fmt("%.2f", flops / t.zar / 1e9) : "-", note});
    if (t.zar > 0 && t.fftw > 0 && t.fftw / t.zar < 0.02) slow = true;
  }
}

const bench::registrar reg("fftapi", 60, run_family);

}  // namespace
