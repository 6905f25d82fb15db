// From a guru problem (transform dimensions, batch dimensions, arrays) to a
// plan. Every other planning call of the interface is turned into a guru
// problem first.
#pragma once
#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "fftw/plan.h"
#include "fftw/r2r.h"

namespace zar::fftw {

enum class problem { dft, split, r2c, c2r, r2r };

// Threads a plan made now may use (fftw_plan_with_nthreads); FFTW's default
// is one.
inline std::atomic<int>& planner_threads() {
  static std::atomic<int> n{1};
  return n;
}

namespace detail {

inline std::string sizes(const std::vector<dim>& dims) {
  std::string s;
  for (const dim& d : dims) s += (s.empty() ? "" : "x") + std::to_string(d.n);
  return s.empty() ? "1" : s;
}

inline const char* kind_name(int k) {
  static const char* const names[r2r_kinds] = {"r2hc", "hc2r", "dht", "redft00", "redft01", "redft10",
                                               "redft11", "rodft00", "rodft01", "rodft10", "rodft11"};
  return k >= 0 && k < r2r_kinds ? names[k] : "?";
}

// The descriptor plan of a complex, split, real-to-complex or
// complex-to-real problem; null when the library refuses it. The batch
// dimension the descriptor takes is the longest one with positive
// distances (a distance of 0 means the default one to the descriptor); the other batch dimensions become loops around the call.
template <class R>
std::unique_ptr<descriptor_plan> descriptor_problem(problem p, const std::vector<dim>& dims, std::vector<dim> howmany,
                                                    bool inplace, bool forward, bool batch) {
  recipe r;
  r.single = is_single<R>;
  r.real = p == problem::r2c || p == problem::c2r;
  r.split = p == problem::split;
  r.inplace = inplace;
  r.threads = planner_threads().load();
  long long ioff = 0, ooff = 0;
  r.is.push_back(0);
  r.os.push_back(0);
  for (const dim& d : dims) {
    r.n.push_back(static_cast<long>(d.n));
    r.is.push_back(static_cast<long>(d.is));
    r.os.push_back(static_cast<long>(d.os));
    if (d.is < 0) ioff -= (d.n - 1) * d.is;
    if (d.os < 0) ooff -= (d.n - 1) * d.os;
  }
  r.is[0] = static_cast<long>(ioff);
  r.os[0] = static_cast<long>(ooff);
  if (batch) {
    auto best = howmany.end();
    for (auto h = howmany.begin(); h != howmany.end(); ++h)
      if (h->is > 0 && h->os > 0 && (best == howmany.end() || h->n > best->n)) best = h;
    if (best != howmany.end()) {
      r.howmany = static_cast<long>(best->n);
      r.idist = static_cast<long>(best->is);
      r.odist = static_cast<long>(best->os);
      howmany.erase(best);
    }
  }
  const size_t real = sizeof(R), cplx = 2 * sizeof(R);
  const size_t in_bytes = p == problem::dft || p == problem::c2r ? cplx : real;
  const size_t out_bytes = p == problem::dft || p == problem::r2c ? cplx : real;
  auto plan = std::make_unique<descriptor_plan>(std::move(r), forward, std::move(howmany), in_bytes, out_bytes);
  if (!plan->ready()) return nullptr;
  return plan;
}

}  // namespace detail

// A plan for the problem, or null (FFTW's answer to a problem it cannot
// plan). in2/out2 are the imaginary arrays of split problems; kinds the r2r
// kind of each dimension.
template <class R>
plan_base* plan_guru(problem p, std::vector<dim> dims, std::vector<dim> howmany, void* in, void* out, void* in2,
                     void* out2, int sign, const int* kinds) {
  // A transform of length 0 is refused, as FFTW does; a batch of 0 is a
  // plan that does nothing.
  for (const dim& d : dims)
    if (d.n < 1) return nullptr;
  for (const dim& d : howmany)
    if (d.n < 0) return nullptr;
  std::vector<int> k;
  if (p == problem::r2r) {
    if (!dims.empty() && !kinds) return nullptr;
    k.assign(kinds, kinds + dims.size());
    for (int x : k)
      if (x < 0 || x >= r2r_kinds) return nullptr;
  }
  const bool empty = std::any_of(howmany.begin(), howmany.end(), [](const dim& d) { return d.n == 0; });
  // Batch dimensions of length 1 change nothing; neither do transform
  // dimensions of length 1 of complex data, or of the non-halved dimensions
  // of real data (a length-1 real-to-real transform may scale: it stays).
  howmany.erase(std::remove_if(howmany.begin(), howmany.end(), [](const dim& d) { return d.n == 1; }), howmany.end());
  if (p == problem::dft || p == problem::split) {
    dims.erase(std::remove_if(dims.begin(), dims.end(), [](const dim& d) { return d.n == 1; }), dims.end());
  } else if (p == problem::r2c || p == problem::c2r) {
    for (size_t i = dims.size(); i-- > 1;)
      if (dims[i - 1].n == 1) dims.erase(dims.begin() + static_cast<long>(i - 1));
  }
  const bool forward = p == problem::split || p == problem::r2c || (p == problem::dft && sign == sign_forward);
  const bool inplace = p == problem::split ? in == out && in2 == out2 : in == out;

  std::unique_ptr<plan_base> plan;
  std::string text;
  if (empty || dims.empty()) {
    static const copy_kind copies[] = {copy_kind::complex, copy_kind::split, copy_kind::real_to_complex,
                                       copy_kind::complex_to_real, copy_kind::real};
    if (empty) howmany = {{0, 0, 0}};
    plan = std::make_unique<copy_plan<R>>(copies[static_cast<int>(p)], howmany);
    text = empty ? "(zar-nop)" : "(zar-copy " + detail::sizes(howmany) + ")";
  } else if (p == problem::r2r) {
    auto r = std::make_unique<r2r_plan<R>>(dims, k, howmany, planner_threads().load());
    if (!r->ready()) return nullptr;
    text = "(zar-r2r " + detail::sizes(dims);
    for (int x : k) text += std::string(" ") + detail::kind_name(x);
    plan = std::move(r);
  } else {
    if (dims.size() > 7) return nullptr;
    auto d = detail::descriptor_problem<R>(p, dims, howmany, inplace, forward, true);
    // A batch the descriptor does not take is looped over instead.
    if (!d && !howmany.empty()) d = detail::descriptor_problem<R>(p, dims, howmany, inplace, forward, false);
    if (!d) return nullptr;
    static const char* const names[] = {"dft", "split-dft", "r2c", "c2r"};
    text = std::string("(zar-") + names[static_cast<int>(p)] + " " + detail::sizes(dims);
    text += p == problem::dft ? (forward ? " forward" : " backward") : "";
    text += inplace ? " in-place" : " out-of-place";
    // Operation counts of a split-radix transform: 3 n lg n additions and
    // 2 n lg n multiplications per complex transform, half for real data.
    double n = 1, lines = 1;
    for (const dim& x : dims) n *= static_cast<double>(x.n);
    for (const dim& x : howmany) lines *= static_cast<double>(x.n);
    const double half = p == problem::r2c || p == problem::c2r ? 0.5 : 1.0, lg = n > 1 ? std::log2(n) : 0;
    d->adds = half * 3 * n * lg * lines;
    d->muls = half * 2 * n * lg * lines;
    plan = std::move(d);
  }
  if (!howmany.empty() && !empty) text += " howmany " + detail::sizes(howmany);
  if (text.back() != ')') text += ")";
  plan->text = text;
  plan->arrays[0] = in;
  plan->arrays[1] = p == problem::split ? in2 : out;
  plan->arrays[2] = p == problem::split ? out : nullptr;
  plan->arrays[3] = out2;
  return plan.release();
}

}  // namespace zar::fftw
