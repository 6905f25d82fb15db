// Real-to-real transforms of FFTW's eleven kinds, each computed through one
// zar descriptor (a real transform, or a complex one for the type-IV
// transforms) with O(n) work before and after it:
//
//   R2HC     real DFT of n; halfcomplex out r0 r1 .. r(n/2) i((n+1)/2-1) .. i1
//   HC2R     the inverse layout into a complex-to-real DFT of n
//   DHT      real DFT of n; H_k = Re X_k - Im X_k
//   REDFT00  real DFT of 2(n-1) of the even extension; Y_k = Re X_k
//   RODFT00  real DFT of 2(n+1) of the odd extension; Y_k = -Im X_(k+1)
//   REDFT10  real DFT of n of v = (x0 x2 x4 .. x5 x3 x1); Y_k = 2 Re(e^(-i pi k/2n) V_k)
//   REDFT01  V_k = e^(i pi k/2n) (x_k - i x_(n-k)) into a complex-to-real DFT
//            of n, then the order above undone
//   REDFT11  even n: complex DFT of n/2 of (x_2m + i x_(n-1-2m)) e^(-i pi m/n),
//            twiddled by e^(-i pi (4p+1)/4n) into Y_2p and Y_(n-1-2p);
//            odd n: complex DFT of 2n of x_j e^(-i pi j/2n), zero-padded
//   RODFT10  = REDFT10 of (-1)^j x_j, output reversed
//   RODFT01  = (-1)^k REDFT01 of the reversed input
//   RODFT11  = REDFT11 of (-1)^j x_j, output reversed
//
// Multi-dimensional r2r transforms are separable: one pass of lines per
// dimension, the first from the input to the output, the others in place in
// the output.
#pragma once
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include "fftw/abi.h"
#include "fftw/descriptor.h"
#include "fftw/plan.h"

namespace zar::fftw {

template <class R> constexpr bool is_single = sizeof(R) == sizeof(float);

// 64-byte aligned array of reals.
template <class R> class reals {
 public:
  explicit reals(size_t n = 0) : p_(n ? static_cast<R*>(std::aligned_alloc(64, (n * sizeof(R) + 63) / 64 * 64)) : nullptr) {
    if (n && !p_) throw std::bad_alloc();
  }
  R* get() const { return p_.get(); }
  R& operator[](size_t i) const { return p_.get()[i]; }

 private:
  struct release {
    void operator()(R* p) const { std::free(p); }
  };
  std::unique_ptr<R, release> p_;
};

// One line of one kind and length: gathers the line, transforms it and
// scatters the result. Holds its descriptor and scratch, so one line object
// serves one call at a time.
template <class R> class r2r_line {
 public:
  // False when the kind does not exist, the length is not allowed for it
  // (REDFT00 needs n >= 2) or the library refuses the descriptor.
  bool init(int kind, long n, long threads) {
    if (kind < 0 || kind >= r2r_kinds || n < 1 || (kind == REDFT00 && n < 2)) return false;
    kind_ = kind;
    n_ = n;
    switch (kind) {
      case REDFT10: case RODFT10: core_ = REDFT10; break;
      case REDFT01: case RODFT01: core_ = REDFT01; break;
      case REDFT11: case RODFT11: core_ = REDFT11; break;
      default: core_ = kind;
    }
    gather_alternate_ = kind == RODFT10 || kind == RODFT11;
    gather_reverse_ = kind == RODFT01;
    scatter_reverse_ = kind == RODFT10 || kind == RODFT11;
    scatter_alternate_ = kind == RODFT01;

    recipe r;
    switch (core_) {
      case REDFT00: len_ = 2 * (n - 1); break;
      case RODFT00: len_ = 2 * (n + 1); break;
      case REDFT11: len_ = n % 2 == 0 ? n / 2 : 2 * n; break;
      default: len_ = n;
    }
    complex_ = core_ == REDFT11;
    backward_ = core_ == HC2R || core_ == REDFT01;
    // A transform of length 1 is the identity; it needs no descriptor.
    if (len_ > 1) {
      d_ = make_descriptor(line_recipe(is_single<R>, !complex_, len_, threads));
      if (!d_) return false;
    }
    x_ = reals<R>(n);
    y_ = reals<R>(n);
    v_ = reals<R>(complex_ ? 2 * len_ : len_);
    c_ = reals<R>(complex_ ? 2 * len_ : 2 * (len_ / 2 + 1));
    twiddles();
    return true;
  }

  long length() const { return len_; }

  // y[k*ys] = transform of x[j*xs]; x and y may be the same line.
  void run(const R* x, long long xs, R* y, long long ys) {
    const long n = n_;
    R* a = x_.get();
    for (long j = 0; j < n; ++j) a[j] = x[(gather_reverse_ ? n - 1 - j : j) * xs];
    if (gather_alternate_)
      for (long j = 1; j < n; j += 2) a[j] = -a[j];
    transform(a, y_.get());
    const R* b = y_.get();
    for (long k = 0; k < n; ++k) {
      const R v = b[scatter_reverse_ ? n - 1 - k : k];
      y[k * ys] = scatter_alternate_ && k % 2 ? -v : v;
    }
  }

 private:
  // The descriptor's transform from v_ to c_ (forward) or c_ to v_ (backward).
  void dft() {
    R* v = v_.get();
    R* c = c_.get();
    if (len_ == 1) {
      if (complex_) {
        c[0] = v[0];
        c[1] = v[1];
      } else if (backward_) {
        v[0] = c[0];
      } else {
        c[0] = v[0];
        c[1] = 0;
      }
      return;
    }
    if (backward_) zar_dft_compute_backward(d_.get(), c, v);
    else zar_dft_compute_forward(d_.get(), v, c);
  }

  void transform(const R* x, R* y) {
    const long n = n_;
    R* v = v_.get();
    R* c = c_.get();
    const R* t = tw_.get();
    switch (core_) {
      case R2HC:
        for (long j = 0; j < n; ++j) v[j] = x[j];
        dft();
        for (long k = 0; k <= n / 2; ++k) y[k] = c[2 * k];
        for (long k = 1; k < (n + 1) / 2; ++k) y[n - k] = c[2 * k + 1];
        break;
      case HC2R:
        c[0] = x[0];
        c[1] = 0;
        for (long k = 1; k < (n + 1) / 2; ++k) {
          c[2 * k] = x[k];
          c[2 * k + 1] = x[n - k];
        }
        if (n % 2 == 0) {
          c[n] = x[n / 2];
          c[n + 1] = 0;
        }
        dft();
        for (long j = 0; j < n; ++j) y[j] = v[j];
        break;
      case DHT:
        for (long j = 0; j < n; ++j) v[j] = x[j];
        dft();
        y[0] = c[0];
        for (long k = 1; k < (n + 1) / 2; ++k) {
          y[k] = c[2 * k] - c[2 * k + 1];
          y[n - k] = c[2 * k] + c[2 * k + 1];
        }
        if (n % 2 == 0) y[n / 2] = c[n];
        break;
      case REDFT00:
        for (long j = 0; j < n; ++j) v[j] = x[j];
        for (long j = 1; j < n - 1; ++j) v[len_ - j] = x[j];
        dft();
        for (long k = 0; k < n; ++k) y[k] = c[2 * k];
        break;
      case RODFT00:
        v[0] = 0;
        v[n + 1] = 0;
        for (long j = 0; j < n; ++j) {
          v[j + 1] = x[j];
          v[len_ - 1 - j] = -x[j];
        }
        dft();
        for (long k = 0; k < n; ++k) y[k] = -c[2 * (k + 1) + 1];
        break;
      case REDFT10:
        // t: cos and sin of pi k / 2n, k = 0 .. n-1.
        for (long j = 0; 2 * j < n; ++j) v[j] = x[2 * j];
        for (long j = 0; 2 * j + 1 < n; ++j) v[n - 1 - j] = x[2 * j + 1];
        dft();
        for (long k = 0; k < n; ++k) {
          const bool low = 2 * k <= n;
          const R re = low ? c[2 * k] : c[2 * (n - k)];
          const R im = low ? c[2 * k + 1] : -c[2 * (n - k) + 1];
          y[k] = 2 * (t[2 * k] * re + t[2 * k + 1] * im);
        }
        break;
      case REDFT01:
        for (long k = 0; 2 * k <= n; ++k) {
          const R a = x[k], b = k == 0 ? R(0) : x[n - k];
          c[2 * k] = t[2 * k] * a + t[2 * k + 1] * b;
          c[2 * k + 1] = t[2 * k + 1] * a - t[2 * k] * b;
        }
        c[1] = 0;
        if (n % 2 == 0) c[n + 1] = 0;
        dft();
        for (long j = 0; 2 * j < n; ++j) y[2 * j] = v[j];
        for (long j = 0; 2 * j + 1 < n; ++j) y[2 * j + 1] = v[n - 1 - j];
        break;
      case REDFT11:
        if (n % 2 == 0) {
          // t: pre-twiddles e^(-i pi m/n), then post-twiddles e^(-i pi (4p+1)/4n), m, p < n/2.
          const long m = n / 2;
          for (long j = 0; j < m; ++j) {
            const R a = x[2 * j], b = x[n - 1 - 2 * j], co = t[2 * j], si = t[2 * j + 1];
            v[2 * j] = a * co + b * si;
            v[2 * j + 1] = b * co - a * si;
          }
          dft();
          const R* u = t + 2 * m;
          for (long p = 0; p < m; ++p) {
            const R re = c[2 * p], im = c[2 * p + 1], co = u[2 * p], si = u[2 * p + 1];
            y[2 * p] = 2 * (re * co + im * si);
            y[n - 1 - 2 * p] = -2 * (im * co - re * si);
          }
        } else {
          // t: pre-twiddles e^(-i pi j/2n), then post-twiddles e^(-i pi (2k+1)/4n);
          // the complex DFT is of length 2n, the upper half zero.
          for (long j = 0; j < n; ++j) {
            v[2 * j] = x[j] * t[2 * j];
            v[2 * j + 1] = -x[j] * t[2 * j + 1];
          }
          for (long j = 2 * n; j < 4 * n; ++j) v[j] = 0;
          dft();
          const R* u = t + 2 * n;
          for (long k = 0; k < n; ++k) y[k] = 2 * (c[2 * k] * u[2 * k] + c[2 * k + 1] * u[2 * k + 1]);
        }
        break;
    }
  }

  // Cosine and sine pairs, computed in extended precision.
  void twiddles() {
    const long n = n_;
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<long double> angles;
    if (core_ == REDFT10 || core_ == REDFT01) {
      for (long k = 0; k < n; ++k) angles.push_back(pi * k / (2.0L * n));
    } else if (core_ == REDFT11 && n % 2 == 0) {
      for (long j = 0; j < n / 2; ++j) angles.push_back(pi * j / n);
      for (long p = 0; p < n / 2; ++p) angles.push_back(pi * (4 * p + 1) / (4.0L * n));
    } else if (core_ == REDFT11) {
      for (long j = 0; j < n; ++j) angles.push_back(pi * j / (2.0L * n));
      for (long k = 0; k < n; ++k) angles.push_back(pi * (2 * k + 1) / (4.0L * n));
    }
    tw_ = reals<R>(2 * angles.size());
    for (size_t i = 0; i < angles.size(); ++i) {
      tw_[2 * i] = static_cast<R>(std::cos(angles[i]));
      tw_[2 * i + 1] = static_cast<R>(std::sin(angles[i]));
    }
  }

  int kind_ = 0, core_ = 0;
  long n_ = 0, len_ = 0;
  bool complex_ = false, backward_ = false;
  bool gather_alternate_ = false, gather_reverse_ = false, scatter_reverse_ = false, scatter_alternate_ = false;
  descriptor d_;
  reals<R> x_, y_, v_, c_, tw_;
};

// A real-to-real plan of any rank: one pass of lines per dimension.
template <class R> class r2r_plan final : public plan_base {
 public:
  r2r_plan(std::vector<dim> dims, std::vector<int> kinds, std::vector<dim> howmany, long threads)
      : dims_(std::move(dims)), kinds_(std::move(kinds)), threads_(threads) {
    // Pass d walks every other dimension and the batch; it reads the input
    // (first pass) or the output (later passes) and writes the output.
    for (size_t d = 0; d < dims_.size(); ++d) {
      std::vector<dim> loops;
      for (size_t e = 0; e < dims_.size(); ++e)
        if (e != d) loops.push_back({dims_[e].n, d == 0 ? dims_[e].is : dims_[e].os, dims_[e].os});
      for (const dim& h : howmany) loops.push_back({h.n, d == 0 ? h.is : h.os, h.os});
      passes_.push_back(std::move(loops));
    }
  }

  bool ready() {
    auto e = make();
    if (!e) return false;
    for (const auto& l : *e) {
      const double len = static_cast<double>(l.length()), lg = len > 1 ? std::log2(len) : 0;
      double lines = 1;
      for (const dim& h : passes_[&l - e->data()]) lines *= static_cast<double>(h.n);
      adds += lines * 1.5 * len * lg + lines * 2 * len;
      muls += lines * len * lg + lines * 2 * len;
    }
    pool_.put(std::move(e));
    return true;
  }

  void execute(void* const* a) override {
    auto e = pool_.take([this] { return make(); });
    const R* in = static_cast<const R*>(a[0]);
    R* out = static_cast<R*>(a[1]);
    for (size_t d = 0; d < dims_.size(); ++d) {
      const R* src = d == 0 ? in : out;
      const long long ss = d == 0 ? dims_[d].is : dims_[d].os, ds = dims_[d].os;
      r2r_line<R>& line = (*e)[d];
      walk(passes_[d], [&](long long io, long long oo) { line.run(src + io, ss, out + oo, ds); });
    }
    pool_.put(std::move(e));
  }

 private:
  using lines = std::unique_ptr<std::vector<r2r_line<R>>>;
  lines make() const {
    lines e(new std::vector<r2r_line<R>>(dims_.size()));
    for (size_t d = 0; d < dims_.size(); ++d)
      if (!(*e)[d].init(kinds_[d], static_cast<long>(dims_[d].n), threads_)) return nullptr;
    return e;
  }

  std::vector<dim> dims_;
  std::vector<int> kinds_;
  long threads_;
  std::vector<std::vector<dim>> passes_;
  pool<lines> pool_;
};

}  // namespace zar::fftw
