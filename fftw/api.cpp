// The FFTW interface on zar's DFT descriptors. One template per function
// of the interface; the exported names come from api.def, expanded for one
// precision per build of this file (ZAR_FFTW_SINGLE: float and fftwf_,
// otherwise double and fftw_), so libfftw3.so.3 and libfftw3f.so.3 are the
// same source.
//
// Plans are reusable and may be executed from several threads at once, on
// different arrays: each plan keeps a pool of descriptors (plan.h), one per
// call in progress. Planning never touches the arrays it is given (FFTW's
// MEASURE would be allowed to; ESTIMATE and the others behave alike here),
// and wisdom is accepted and exported in FFTW's syntax but carries nothing:
// planning here is cheap and deterministic.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fftw/abi.h"
#include "fftw/planner.h"

namespace zar::fftw::api {

template <class R> using cplx = R[2];
using P = plan_base*;

namespace {

// Transform dimensions of guru iodims; false for a negative rank or a null
// array with a positive rank.
template <class I> bool convert(int rank, const I* d, std::vector<dim>& out) {
  if (rank < 0 || (rank > 0 && !d)) return false;
  for (int i = 0; i < rank; ++i) out.push_back({d[i].n, d[i].is, d[i].os});
  return true;
}

template <class R, class I>
P guru(problem p, int rank, const I* dims, int howmany_rank, const I* howmany_dims, void* in, void* out, void* in2,
       void* out2, int sign, const int* kinds) {
  std::vector<dim> d, h;
  if (!convert(rank, dims, d) || !convert(howmany_rank, howmany_dims, h)) return nullptr;
  return plan_guru<R>(p, std::move(d), std::move(h), in, out, in2, out2, sign, kinds);
}

// The advanced interface: rank dimensions of a row-major array embedded in
// arrays of the physical sizes nembed (n when null), elements `stride`
// apart, `howmany` of them `dist` apart. Real data follow FFTW's padding
// rule: without nembed the complex side's last dimension holds n/2+1
// values, and an in-place real side 2(n/2+1).
template <class R>
P many(problem p, int rank, const int* n, int howmany, void* in, const int* inembed, int istride, int idist,
       void* out, const int* onembed, int ostride, int odist, int sign, const int* kinds) {
  if (rank < 0 || howmany < 0 || (rank > 0 && !n)) return nullptr;
  for (int i = 0; i < rank; ++i)
    if (n[i] < 1) return nullptr;
  const bool inplace = in == out;
  std::vector<int> ni(n, n + rank), no(n, n + rank);
  if (rank > 0) {
    const int half = n[rank - 1] / 2 + 1;
    if (inembed) ni.assign(inembed, inembed + rank);
    else if (p == problem::r2c && inplace) ni.back() = 2 * half;
    else if (p == problem::c2r) ni.back() = half;
    if (onembed) no.assign(onembed, onembed + rank);
    else if (p == problem::r2c) no.back() = half;
    else if (p == problem::c2r && inplace) no.back() = 2 * half;
  }
  std::vector<dim> dims(rank);
  long long is = istride, os = ostride;
  for (int d = rank - 1; d >= 0; --d) {
    dims[d] = {n[d], is, os};
    is *= ni[d];
    os *= no[d];
  }
  return plan_guru<R>(p, std::move(dims), {{howmany, idist, odist}}, in, out,
                      nullptr, nullptr, sign, kinds);
}

// The basic interface: contiguous row-major arrays, one transform.
template <class R> P basic(problem p, std::vector<int> n, void* in, void* out, int sign, const int* kinds) {
  return many<R>(p, static_cast<int>(n.size()), n.data(), 1, in, nullptr, 1, 0, out, nullptr, 1, 0, sign, kinds);
}

template <class K> std::vector<int> kind_list(int rank, const K* kind) {
  std::vector<int> k;
  for (int i = 0; kind && i < rank; ++i) k.push_back(static_cast<int>(kind[i]));
  return k;
}

void run(P p, void* a0, void* a1, void* a2 = nullptr, void* a3 = nullptr) {
  if (!p) return;
  void* const arrays[4] = {a0, a1, a2, a3};
  p->execute(arrays);
}

// ------------------------------------------------------------------ wisdom
template <class R> const char* wisdom_text() {
  return is_single<R> ? "(fftw-3.3.10 fftwf_wisdom)\n" : "(fftw-3.3.10 fftw_wisdom)\n";
}

// Reads one parenthesised wisdom expression from next() (EOF ends it):
// leading white space, then balanced parentheses. 1 when well formed.
template <class Next> int read_wisdom(Next next) {
  int c = next();
  while (c == ' ' || c == '\n' || c == '\t' || c == '\r') c = next();
  if (c != '(') return 0;
  for (int depth = 1; depth > 0;) {
    c = next();
    if (c == EOF) return 0;
    if (c == '(') ++depth;
    else if (c == ')') --depth;
  }
  return 1;
}

}  // namespace

// ------------------------------------------------------------------ complex
template <class R> P plan_dft(int rank, const int* n, cplx<R>* in, cplx<R>* out, int sign, unsigned) {
  return rank < 0 || (rank > 0 && !n) ? nullptr : basic<R>(problem::dft, {n, n + rank}, in, out, sign, nullptr);
}
template <class R> P plan_dft_1d(int n, cplx<R>* in, cplx<R>* out, int sign, unsigned) {
  return basic<R>(problem::dft, {n}, in, out, sign, nullptr);
}
template <class R> P plan_dft_2d(int n0, int n1, cplx<R>* in, cplx<R>* out, int sign, unsigned) {
  return basic<R>(problem::dft, {n0, n1}, in, out, sign, nullptr);
}
template <class R> P plan_dft_3d(int n0, int n1, int n2, cplx<R>* in, cplx<R>* out, int sign, unsigned) {
  return basic<R>(problem::dft, {n0, n1, n2}, in, out, sign, nullptr);
}
template <class R>
P plan_many_dft(int rank, const int* n, int howmany, cplx<R>* in, const int* inembed, int istride, int idist,
                cplx<R>* out, const int* onembed, int ostride, int odist, int sign, unsigned) {
  return many<R>(problem::dft, rank, n, howmany, in, inembed, istride, idist, out, onembed, ostride, odist, sign,
                 nullptr);
}
template <class R, class I>
P plan_guru_dft(int rank, const I* dims, int hrank, const I* hdims, cplx<R>* in, cplx<R>* out, int sign, unsigned) {
  return guru<R>(problem::dft, rank, dims, hrank, hdims, in, out, nullptr, nullptr, sign, nullptr);
}
template <class R, class I>
P plan_guru_split_dft(int rank, const I* dims, int hrank, const I* hdims, R* ri, R* ii, R* ro, R* io, unsigned) {
  return guru<R>(problem::split, rank, dims, hrank, hdims, ri, ro, ii, io, sign_forward, nullptr);
}

// ------------------------------------------------------------------ real to complex, complex to real
template <class R> P plan_dft_r2c(int rank, const int* n, R* in, cplx<R>* out, unsigned) {
  return rank < 0 || (rank > 0 && !n) ? nullptr : basic<R>(problem::r2c, {n, n + rank}, in, out, 0, nullptr);
}
template <class R> P plan_dft_r2c_1d(int n, R* in, cplx<R>* out, unsigned) {
  return basic<R>(problem::r2c, {n}, in, out, 0, nullptr);
}
template <class R> P plan_dft_r2c_2d(int n0, int n1, R* in, cplx<R>* out, unsigned) {
  return basic<R>(problem::r2c, {n0, n1}, in, out, 0, nullptr);
}
template <class R> P plan_dft_r2c_3d(int n0, int n1, int n2, R* in, cplx<R>* out, unsigned) {
  return basic<R>(problem::r2c, {n0, n1, n2}, in, out, 0, nullptr);
}
template <class R>
P plan_many_dft_r2c(int rank, const int* n, int howmany, R* in, const int* inembed, int istride, int idist,
                    cplx<R>* out, const int* onembed, int ostride, int odist, unsigned) {
  return many<R>(problem::r2c, rank, n, howmany, in, inembed, istride, idist, out, onembed, ostride, odist, 0,
                 nullptr);
}
template <class R, class I>
P plan_guru_dft_r2c(int rank, const I* dims, int hrank, const I* hdims, R* in, cplx<R>* out, unsigned) {
  return guru<R>(problem::r2c, rank, dims, hrank, hdims, in, out, nullptr, nullptr, 0, nullptr);
}
template <class R> P plan_dft_c2r(int rank, const int* n, cplx<R>* in, R* out, unsigned) {
  return rank < 0 || (rank > 0 && !n) ? nullptr : basic<R>(problem::c2r, {n, n + rank}, in, out, 0, nullptr);
}
template <class R> P plan_dft_c2r_1d(int n, cplx<R>* in, R* out, unsigned) {
  return basic<R>(problem::c2r, {n}, in, out, 0, nullptr);
}
template <class R> P plan_dft_c2r_2d(int n0, int n1, cplx<R>* in, R* out, unsigned) {
  return basic<R>(problem::c2r, {n0, n1}, in, out, 0, nullptr);
}
template <class R> P plan_dft_c2r_3d(int n0, int n1, int n2, cplx<R>* in, R* out, unsigned) {
  return basic<R>(problem::c2r, {n0, n1, n2}, in, out, 0, nullptr);
}
template <class R>
P plan_many_dft_c2r(int rank, const int* n, int howmany, cplx<R>* in, const int* inembed, int istride, int idist,
                    R* out, const int* onembed, int ostride, int odist, unsigned) {
  return many<R>(problem::c2r, rank, n, howmany, in, inembed, istride, idist, out, onembed, ostride, odist, 0,
                 nullptr);
}
template <class R, class I>
P plan_guru_dft_c2r(int rank, const I* dims, int hrank, const I* hdims, cplx<R>* in, R* out, unsigned) {
  return guru<R>(problem::c2r, rank, dims, hrank, hdims, in, out, nullptr, nullptr, 0, nullptr);
}

// ------------------------------------------------------------------ real to real
template <class R, class K> P plan_r2r(int rank, const int* n, R* in, R* out, const K* kind, unsigned) {
  if (rank < 0 || (rank > 0 && (!n || !kind))) return nullptr;
  return basic<R>(problem::r2r, {n, n + rank}, in, out, 0, kind_list(rank, kind).data());
}
template <class R, class K> P plan_r2r_1d(int n, R* in, R* out, K kind, unsigned) {
  const int k[] = {kind};
  return basic<R>(problem::r2r, {n}, in, out, 0, k);
}
template <class R, class K> P plan_r2r_2d(int n0, int n1, R* in, R* out, K kind0, K kind1, unsigned) {
  const int k[] = {kind0, kind1};
  return basic<R>(problem::r2r, {n0, n1}, in, out, 0, k);
}
template <class R, class K>
P plan_r2r_3d(int n0, int n1, int n2, R* in, R* out, K kind0, K kind1, K kind2, unsigned) {
  const int k[] = {kind0, kind1, kind2};
  return basic<R>(problem::r2r, {n0, n1, n2}, in, out, 0, k);
}
template <class R, class K>
P plan_many_r2r(int rank, const int* n, int howmany, R* in, const int* inembed, int istride, int idist, R* out,
                const int* onembed, int ostride, int odist, const K* kind, unsigned) {
  if (rank > 0 && !kind) return nullptr;
  return many<R>(problem::r2r, rank, n, howmany, in, inembed, istride, idist, out, onembed, ostride, odist, 0,
                 kind_list(rank, kind).data());
}
template <class R, class I, class K>
P plan_guru_r2r(int rank, const I* dims, int hrank, const I* hdims, R* in, R* out, const K* kind, unsigned) {
  if (rank > 0 && !kind) return nullptr;
  return guru<R>(problem::r2r, rank, dims, hrank, hdims, in, out, nullptr, nullptr, 0,
                 kind_list(rank, kind).data());
}

// The guru64 forms are the guru ones over 64-bit dimensions.
template <class R, class... A> P plan_guru64_dft(A... a) { return plan_guru_dft<R>(a...); }
template <class R, class... A> P plan_guru64_split_dft(A... a) { return plan_guru_split_dft<R>(a...); }
template <class R, class... A> P plan_guru64_dft_r2c(A... a) { return plan_guru_dft_r2c<R>(a...); }
template <class R, class... A> P plan_guru64_dft_c2r(A... a) { return plan_guru_dft_c2r<R>(a...); }
template <class R, class... A> P plan_guru64_r2r(A... a) { return plan_guru_r2r<R>(a...); }

// ------------------------------------------------------------------ execution
template <class R> void execute(const P p) {
  if (p) run(p, p->arrays[0], p->arrays[1], p->arrays[2], p->arrays[3]);
}
template <class R> void execute_dft(const P p, cplx<R>* in, cplx<R>* out) { run(p, in, out); }
template <class R> void execute_split_dft(const P p, R* ri, R* ii, R* ro, R* io) { run(p, ri, ii, ro, io); }
template <class R> void execute_dft_r2c(const P p, R* in, cplx<R>* out) { run(p, in, out); }
template <class R> void execute_dft_c2r(const P p, cplx<R>* in, R* out) { run(p, in, out); }
template <class R> void execute_r2r(const P p, R* in, R* out) { run(p, in, out); }
template <class R> void destroy_plan(P p) { delete p; }

// ------------------------------------------------------------------ plans described
template <class R> void fprint_plan(const P p, FILE* f) {
  if (p && f) std::fputs(p->text.c_str(), f);
}
template <class R> void print_plan(const P p) { fprint_plan<R>(p, stdout); }
template <class R> char* sprint_plan(const P p) {
  if (!p) return nullptr;
  char* s = static_cast<char*>(std::malloc(p->text.size() + 1));
  if (s) std::memcpy(s, p->text.c_str(), p->text.size() + 1);
  return s;
}
template <class R> void flops(const P p, double* add, double* mul, double* fmas) {
  if (add) *add = p ? p->adds : 0;
  if (mul) *mul = p ? p->muls : 0;
  if (fmas) *fmas = 0;
}
template <class R> double estimate_cost(const P p) { return p ? p->adds + p->muls : 0; }
template <class R> double cost(const P p) { return estimate_cost<R>(p); }

// ------------------------------------------------------------------ memory
// 64-byte aligned (a cache line, and enough for any vector load); never null
// for a size of 0, as FFTW's.
template <class R> void* malloc(size_t n) {
  const size_t bytes = n == 0 ? 64 : n;
  if (bytes > SIZE_MAX - 63) return nullptr;
  return std::aligned_alloc(64, (bytes + 63) / 64 * 64);
}
template <class R> R* alloc_real(size_t n) {
  return n > SIZE_MAX / sizeof(R) ? nullptr : static_cast<R*>(malloc<R>(n * sizeof(R)));
}
template <class R> cplx<R>* alloc_complex(size_t n) {
  return n > SIZE_MAX / sizeof(cplx<R>) ? nullptr : static_cast<cplx<R>*>(malloc<R>(n * sizeof(cplx<R>)));
}
template <class R> void free(void* p) { std::free(p); }
template <class R> int alignment_of(R* p) { return static_cast<int>(reinterpret_cast<std::uintptr_t>(p) % 16); }

// ------------------------------------------------------------------ planner state, threads
template <class R> void cleanup() {}
template <class R> void set_timelimit(double) {}
template <class R> int init_threads() { return 1; }
// Later plans let their descriptors use this many threads (at least one).
template <class R> void plan_with_nthreads(int n) { planner_threads() = n < 1 ? 1 : n; }
template <class R> int planner_nthreads() { return planner_threads(); }
template <class R> void cleanup_threads() { planner_threads() = 1; }
// Planning is thread-safe here already.
template <class R> void make_planner_thread_safe() {}

// ------------------------------------------------------------------ wisdom
template <class R> void forget_wisdom() {}
template <class R> char* export_wisdom_to_string() {
  const char* w = wisdom_text<R>();
  char* s = static_cast<char*>(std::malloc(std::strlen(w) + 1));
  if (s) std::strcpy(s, w);
  return s;
}
template <class R> void export_wisdom_to_file(FILE* f) {
  if (f) std::fputs(wisdom_text<R>(), f);
}
template <class R> int export_wisdom_to_filename(const char* name) {
  FILE* f = name ? std::fopen(name, "w") : nullptr;
  if (!f) return 0;
  export_wisdom_to_file<R>(f);
  return std::fclose(f) == 0;
}
template <class R> void export_wisdom(write_char_func write_char, void* data) {
  for (const char* s = wisdom_text<R>(); write_char && *s; ++s) write_char(*s, data);
}
template <class R> int import_wisdom_from_string(const char* s) {
  return s ? read_wisdom([&s] { return *s ? static_cast<unsigned char>(*s++) : EOF; }) : 0;
}
template <class R> int import_wisdom_from_file(FILE* f) {
  return f ? read_wisdom([f] { return std::fgetc(f); }) : 0;
}
template <class R> int import_wisdom_from_filename(const char* name) {
  FILE* f = name ? std::fopen(name, "r") : nullptr;
  if (!f) return 0;
  const int ok = import_wisdom_from_file<R>(f);
  std::fclose(f);
  return ok;
}
template <class R> int import_wisdom(read_char_func read_char, void* data) {
  return read_char ? read_wisdom([&] { return read_char(data); }) : 0;
}
// The system wisdom file FFTW reads; 0 when there is none.
template <class R> int import_system_wisdom() {
  return import_wisdom_from_filename<R>(is_single<R> ? "/etc/fftw/wisdomf" : "/etc/fftw/wisdom");
}

}  // namespace zar::fftw::api

// ------------------------------------------------------------------ the exported names
namespace {

#if defined(ZAR_FFTW_SINGLE)
using R = float;
#define ZAR_FFTW_NAME(name) fftwf_##name
#else
using R = double;
#define ZAR_FFTW_NAME(name) fftw_##name
#endif

using C = R[2];
using P = zar::fftw::plan_base*;
using D = zar::fftw::iodim;
using D64 = zar::fftw::iodim64;
using K = zar::fftw::r2r_kind;
using W = zar::fftw::write_char_func;
using V = zar::fftw::read_char_func;

// No C++ exception leaves the library: a failure is a null plan, a 0, or
// nothing done.
template <class Ret, class F> Ret guarded(const F& f) noexcept {
  try {
    return f();
  } catch (...) {
    return Ret();
  }
}

}  // namespace

#define ZAR_FFTW_EXPORT extern "C" __attribute__((visibility("default")))
#define ZAR_FFTW_FN(ret, name, params, args) \
  ZAR_FFTW_EXPORT ret ZAR_FFTW_NAME(name) params { return guarded<ret>([&] { return zar::fftw::api::name<R> args; }); }
#include "fftw/api.def"

// Version strings programs print.
ZAR_FFTW_EXPORT const char ZAR_FFTW_NAME(version)[] = "fftw-3.3.10 interface of zar 2.0.0";
ZAR_FFTW_EXPORT const char ZAR_FFTW_NAME(cc)[] = "g++ (zar)";
ZAR_FFTW_EXPORT const char ZAR_FFTW_NAME(codelet_optim)[] = "";
