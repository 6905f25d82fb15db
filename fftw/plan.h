// Plans of the FFTW interface: what a program's plan pointer points to, the
// pool that lets several threads execute one plan at once, and the plans
// that are one zar descriptor (complex, split complex, real to complex,
// complex to real) or plain copies (rank 0).
#pragma once
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "fftw/abi.h"
#include "fftw/descriptor.h"
#include "zar/types.h"

namespace zar::fftw {

// One dimension after conversion from the program's iodims: length and the
// strides on each side, in elements of that side's data (complex numbers for
// complex data, reals for real and split data).
struct dim {
  long long n, is, os;
};

// What the program's plan pointer points to.
struct plan_base {
  virtual ~plan_base() = default;
  // The arrays given at planning: in, out; for split complex data ri, ii,
  // ro, io. fftw_execute runs on them, the new-array calls on others.
  void* arrays[4] = {};
  std::string text;  // the line print_plan writes
  double adds = 0, muls = 0;
  virtual void execute(void* const* arrays) = 0;
};

// Calls f(in_offset, out_offset) for every index of the loops.
template <class F> void walk(const dim* loops, size_t count, long long io, long long oo, F& f) {
  if (count == 0) {
    f(io, oo);
    return;
  }
  for (long long i = 0; i < loops->n; ++i) walk(loops + 1, count - 1, io + i * loops->is, oo + i * loops->os, f);
}
template <class F> void walk(const std::vector<dim>& loops, F&& f) { walk(loops.data(), loops.size(), 0, 0, f); }

// Element `off` of an array whose elements are `bytes` long; 64-bit offset.
inline void* element(void* base, long long off, size_t bytes) {
  return zar::offset(static_cast<char*>(base), off * static_cast<long long>(bytes));
}

// Executors of one plan (descriptors and scratch). A zar descriptor computes
// with scratch of its own, so one executor serves one call at a time: a
// call takes a free executor, builds another when none is free (a second
// thread executing the same plan), and returns it afterwards; the pool
// keeps as many as there were simultaneous calls. When another cannot be
// built (no memory), the call waits for one to be returned.
template <class E> class pool {
 public:
  void put(E e) {
    {
      std::lock_guard<std::mutex> lock(m_);
      free_.push_back(std::move(e));
    }
    cv_.notify_one();
  }
  template <class Make> E take(const Make& make) {
    {
      std::lock_guard<std::mutex> lock(m_);
      if (!free_.empty()) return pop();
    }
    E e;
    try {
      e = make();
    } catch (...) {
      e = E();
    }
    if (e) return e;
    std::unique_lock<std::mutex> lock(m_);
    cv_.wait(lock, [this] { return !free_.empty(); });
    return pop();
  }

 private:
  E pop() {
    E e = std::move(free_.back());
    free_.pop_back();
    return e;
  }
  std::mutex m_;
  std::condition_variable cv_;
  std::vector<E> free_;
};

// A plan that is one committed descriptor, called once per index of the
// loops (the dimensions of the batch the descriptor does not take).
class descriptor_plan final : public plan_base {
 public:
  descriptor_plan(recipe r, bool forward, std::vector<dim> loops, size_t in_bytes, size_t out_bytes)
      : r_(std::move(r)), forward_(forward), loops_(std::move(loops)), in_bytes_(in_bytes), out_bytes_(out_bytes) {}

  // Builds the first descriptor; false when the library refuses the problem.
  bool ready() {
    descriptor d = make_descriptor(r_);
    if (!d) return false;
    pool_.put(std::move(d));
    return true;
  }
  const recipe& problem() const { return r_; }

  void execute(void* const* a) override {
    descriptor d = pool_.take([this] { return make_descriptor(r_); });
    auto compute = forward_ ? zar_dft_compute_forward : zar_dft_compute_backward;
    zar_dft_descriptor* h = d.get();
    // The descriptor's first offsets place element 0 (negative strides);
    // the arrays it is given start that many elements earlier.
    const long long ioff = r_.is[0], ooff = r_.os[0];
    if (r_.split) {
      walk(loops_, [&](long long io, long long oo) {
        void* ri = element(a[0], io - ioff, in_bytes_);
        void* ii = element(a[1], io - ioff, in_bytes_);
        if (r_.inplace) compute(h, ri, ii);
        else compute(h, ri, ii, element(a[2], oo - ooff, out_bytes_), element(a[3], oo - ooff, out_bytes_));
      });
    } else {
      walk(loops_, [&](long long io, long long oo) {
        void* in = element(a[0], io - ioff, in_bytes_);
        if (r_.inplace) compute(h, in);
        else compute(h, in, element(a[1], oo - ooff, out_bytes_));
      });
    }
    pool_.put(std::move(d));
  }

 private:
  recipe r_;
  bool forward_;
  std::vector<dim> loops_;
  size_t in_bytes_, out_bytes_;
  pool<descriptor> pool_;
};

// Rank 0: every element of the batch copied (real to complex gets a zero
// imaginary part, complex to real keeps the real part). Also the plan of a
// problem with a zero length, whose loops are empty.
enum class copy_kind { complex, split, real, real_to_complex, complex_to_real };

template <class R> class copy_plan final : public plan_base {
 public:
  copy_plan(copy_kind k, std::vector<dim> loops) : k_(k), loops_(std::move(loops)) {}
  void execute(void* const* a) override {
    R* in = static_cast<R*>(a[0]);
    R* out = static_cast<R*>(k_ == copy_kind::split ? a[2] : a[1]);
    switch (k_) {
      case copy_kind::complex:
        walk(loops_, [&](long long io, long long oo) {
          const R re = in[2 * io], im = in[2 * io + 1];
          out[2 * oo] = re;
          out[2 * oo + 1] = im;
        });
        break;
      case copy_kind::split: {
        R* ii = static_cast<R*>(a[1]);
        R* io_ = static_cast<R*>(a[3]);
        walk(loops_, [&](long long io, long long oo) {
          const R re = in[io], im = ii[io];
          out[oo] = re;
          io_[oo] = im;
        });
        break;
      }
      case copy_kind::real:
        walk(loops_, [&](long long io, long long oo) { out[oo] = in[io]; });
        break;
      case copy_kind::real_to_complex:
        walk(loops_, [&](long long io, long long oo) {
          const R re = in[io];
          out[2 * oo] = re;
          out[2 * oo + 1] = 0;
        });
        break;
      case copy_kind::complex_to_real:
        walk(loops_, [&](long long io, long long oo) { out[oo] = in[2 * io]; });
        break;
    }
  }

 private:
  copy_kind k_;
  std::vector<dim> loops_;
};

}  // namespace zar::fftw
