// Problems of the advanced interface (sizes, embedding, strides, batch) as
// the tests describe them, and a runner that plans and executes one on a
// given FFTW (zar's or Debian's) and returns the output buffer.
#pragma once
#include <algorithm>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "peer.h"

namespace fftw_test {

enum class kind { c2c, r2c, c2r, r2r };

struct shape {
  std::vector<int> n;                 // logical sizes
  int howmany = 1;
  int istride = 1, ostride = 1;
  std::vector<int> inembed, onembed;  // physical sizes; empty: FFTW's default (null)
  int idist = 0, odist = 0;           // 0: right after the previous transform's extent
  bool inplace = false;
  int sign = FFTW_FORWARD;
  std::vector<int> kinds;             // r2r
  std::string name() const {
    std::string s;
    for (int x : n) s += (s.empty() ? "" : "x") + std::to_string(x);
    s += " howmany " + std::to_string(howmany) + " strides " + std::to_string(istride) + "/" +
         std::to_string(ostride) + (inplace ? " in place" : " out of place") + (sign < 0 ? " fwd" : " bwd");
    return s;
  }
};

// Complex elements on the input / output side?
inline bool complex_in(kind k) { return k == kind::c2c || k == kind::c2r; }
inline bool complex_out(kind k) { return k == kind::c2c || k == kind::r2c; }

// The layout of one side of a problem, resolved as FFTW resolves it.
struct side {
  std::vector<int> logical;  // sizes walked (the complex side of real data: last n/2+1)
  std::vector<int> phys;     // embedding
  int stride = 1, dist = 0;
  bool complex = false;
  // Element offsets in logical order: batch outermost, then row-major.
  std::vector<long> offsets(int howmany) const {
    std::vector<long> out;
    const size_t r = logical.size();
    std::vector<long> step(r);
    long s = stride;
    for (size_t d = r; d-- > 0;) {
      step[d] = s;
      s *= phys[d];
    }
    long count = 1;
    for (int x : logical) count *= x;
    for (int h = 0; h < howmany; ++h)
      for (long f = 0; f < count; ++f) {
        long rem = f, off = static_cast<long>(h) * dist;
        for (size_t d = r; d-- > 0;) {
          off += (rem % logical[d]) * step[d];
          rem /= logical[d];
        }
        out.push_back(off);
      }
    return out;
  }
  // Positions of the reals, in logical order.
  std::vector<size_t> reals(int howmany) const {
    std::vector<size_t> out;
    for (long off : offsets(howmany)) {
      if (complex) {
        out.push_back(static_cast<size_t>(2 * off));
        out.push_back(static_cast<size_t>(2 * off + 1));
      } else {
        out.push_back(static_cast<size_t>(off));
      }
    }
    return out;
  }
  size_t extent_reals(int howmany) const {
    size_t m = 0;
    for (size_t p : reals(howmany)) m = std::max(m, p + 1);
    return m;
  }
};

inline side input_side(kind k, const shape& s) {
  side x;
  x.logical = s.n;
  x.complex = complex_in(k);
  const int half = s.n.empty() ? 1 : s.n.back() / 2 + 1;
  if (k == kind::c2r && !s.n.empty()) x.logical.back() = half;
  x.phys = x.logical;
  if (!s.inembed.empty()) x.phys = s.inembed;
  else if (k == kind::r2c && s.inplace && !s.n.empty()) x.phys.back() = 2 * half;
  x.stride = s.istride;
  long per = x.stride;
  for (int p : x.phys) per *= p;
  x.dist = s.idist ? s.idist : static_cast<int>(per);
  return x;
}

inline side output_side(kind k, const shape& s) {
  side x;
  x.logical = s.n;
  x.complex = complex_out(k);
  const int half = s.n.empty() ? 1 : s.n.back() / 2 + 1;
  if (k == kind::r2c && !s.n.empty()) x.logical.back() = half;
  x.phys = x.logical;
  if (!s.onembed.empty()) x.phys = s.onembed;
  else if (k == kind::c2r && s.inplace && !s.n.empty()) x.phys.back() = 2 * half;
  x.stride = s.ostride;
  long per = x.stride;
  for (int p : x.phys) per *= p;
  x.dist = s.odist ? s.odist : static_cast<int>(per);
  return x;
}

// Buffers of one problem: input image and output image in reals (the same
// buffer for an in-place problem).
template <class R> struct buffers {
  std::vector<R> in, out;
};

// Plans with the advanced interface of `a`, executes once, and returns the
// buffers after execution; ok is false when the plan is null.
template <class R>
buffers<R> run_many(const api<R>& a, kind k, const shape& s, const std::vector<R>& input, unsigned flags, bool& ok) {
  const side si = input_side(k, s), so = output_side(k, s);
  const size_t ext = std::max(si.extent_reals(s.howmany), so.extent_reals(s.howmany));
  buffers<R> b;
  b.in.assign(s.inplace ? ext : si.extent_reals(s.howmany), R(0));
  std::copy(input.begin(), input.begin() + std::min(input.size(), b.in.size()), b.in.begin());
  b.out.assign(s.inplace ? 0 : so.extent_reals(s.howmany), R(7));
  R* in = b.in.data();
  R* out = s.inplace ? in : b.out.data();
  using C = R[2];
  const int rank = static_cast<int>(s.n.size());
  const int* ie = s.inembed.empty() ? nullptr : s.inembed.data();
  const int* oe = s.onembed.empty() ? nullptr : s.onembed.data();
  const int idist = si.dist, odist = so.dist;
  typename api<R>::plan p = nullptr;
  std::vector<typename api<R>::r2r_kind> kinds;
  for (int x : s.kinds) kinds.push_back(static_cast<typename api<R>::r2r_kind>(x));
  switch (k) {
    case kind::c2c:
      p = a.plan_many_dft(rank, s.n.data(), s.howmany, reinterpret_cast<C*>(in), ie, s.istride, idist,
                          reinterpret_cast<C*>(out), oe, s.ostride, odist, s.sign, flags);
      break;
    case kind::r2c:
      p = a.plan_many_dft_r2c(rank, s.n.data(), s.howmany, in, ie, s.istride, idist, reinterpret_cast<C*>(out), oe,
                              s.ostride, odist, flags);
      break;
    case kind::c2r:
      p = a.plan_many_dft_c2r(rank, s.n.data(), s.howmany, reinterpret_cast<C*>(in), ie, s.istride, idist, out, oe,
                              s.ostride, odist, flags);
      break;
    case kind::r2r:
      p = a.plan_many_r2r(rank, s.n.data(), s.howmany, in, ie, s.istride, idist, out, oe, s.ostride, odist,
                          kinds.data(), flags);
      break;
  }
  ok = p != nullptr;
  if (!p) return b;
  // Planning may have used the arrays (Debian's MEASURE does): the input is
  // written after planning.
  std::fill(b.in.begin(), b.in.end(), R(0));
  std::copy(input.begin(), input.begin() + std::min(input.size(), b.in.size()), b.in.begin());
  a.execute(p);
  a.destroy_plan(p);
  if (s.inplace) b.out = b.in;
  return b;
}

// Input image of a problem: random reals at every input position; for
// complex-to-real problems a conjugate-even spectrum (the forward transform
// of random reals), which is the input whose result does not depend on how
// an implementation treats the redundant half.
template <class R> std::vector<R> make_input(const api<R>& a, kind k, const shape& s, unsigned seed) {
  const side si = input_side(k, s);
  std::vector<R> img(si.extent_reals(s.howmany), R(0));
  const std::vector<size_t> pos = si.reals(s.howmany);
  std::vector<R> values = random_reals<R>(pos.size(), seed);
  if (k == kind::c2r && !s.n.empty()) {
    shape f;
    f.n = s.n;
    f.howmany = s.howmany;
    bool ok = false;
    const side sr = input_side(kind::r2c, f);
    const buffers<R> spec = run_many(a, kind::r2c, f, random_reals<R>(sr.extent_reals(f.howmany), seed), FFTW_ESTIMATE, ok);
    values = spec.out;  // contiguous: logical order
  }
  for (size_t i = 0; i < pos.size(); ++i) img[pos[i]] = values[i];
  return img;
}

}  // namespace fftw_test
