// Helpers of the Level-3 front-end suite: the reports the program's own
// xerbla_ and cblas_xerbla captured, typed access to the Fortran entries of
// any type by name, and the CBLAS entries of one type with every scalar
// passed by address.
#pragma once
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "cblas.h"
#include "zar/control.h"
#include "zar/level3.h"
#include "zar/types.h"

namespace l3f {

using zar::c32;
using zar::c64;
using types = ::testing::Types<float, double, c32, c64>;
template <class T> using real_t = zar::real_t<T>;

// The last report: xerbla_ (name, info) or cblas_xerbla (routine, position,
// form) with the globals RowMajorStrg and CBLAS_CallFromC as they were.
struct report {
  std::string name, form;
  int info = 0, calls = 0, row = -1, from_c = -1;
};
extern report seen;

template <class T> T val(double re, double im = 0) {
  if constexpr (zar::is_complex_v<T>) return T{static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
  else return static_cast<T>(re);
}
template <class T> char letter() { return zar::elem<T>::letter; }

// The published name of a routine as xerbla_ receives it: upper case,
// blank-padded to six characters.
inline std::string fortran_name(char t, const std::string& op) {
  std::string s = std::string(1, t) + op;
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  while (s.size() < 6) s += ' ';
  return s;
}

// The core's entry `name`, typed.
template <class F> F entry(const std::string& name) {
  void* p = dlsym(RTLD_DEFAULT, name.c_str());
  EXPECT_NE(p, nullptr) << name;
  return reinterpret_cast<F>(p);
}
template <class T> using trsm_f = void (*)(ZAR_L3_TRSM_ARGS(T));
template <class T> using symm_f = void (*)(ZAR_L3_SYMM_ARGS(T));
template <class T, class S> using syrk_f = void (*)(ZAR_L3_SYRK_ARGS(T, S));
template <class T, class S> using syr2k_f = void (*)(ZAR_L3_SYR2K_ARGS(T, S));
template <class T> using gemmt_f = void (*)(ZAR_L3_GEMMT_ARGS(T));
template <class T> using gemm_f = void (*)(ZAR_L3_GEMM_ARGS(T));
template <class T> using batch_f = void (*)(ZAR_L3_GEMM_BATCH_ARGS(T));
template <class T> using strided_f = void (*)(ZAR_L3_GEMM_STRIDED_ARGS(T));
// the Fortran routine <letter><op>_ of type T
template <class F, class T> F fortran(const std::string& op) { return entry<F>(letter<T>() + op + "_"); }

// Bitwise equality of two arrays.
template <class T> bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}
template <class T> std::vector<T> random_values(size_t count, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> d(-1, 1);
  std::vector<T> v(count);
  for (T& x : v) x = val<T>(d(g), d(g));
  return v;
}

// The CBLAS prototypes of one type.
template <class T> struct cfn;
#define L3F_CFN_ALL(t)                            \
  using trsm = decltype(&cblas_##t##trsm);        \
  using symm = decltype(&cblas_##t##symm);        \
  using syrk = decltype(&cblas_##t##syrk);        \
  using syr2k = decltype(&cblas_##t##syr2k);      \
  using gemmt = decltype(&cblas_##t##gemmt);      \
  using gemm = decltype(&cblas_##t##gemm);        \
  using batch = decltype(&cblas_##t##gemm_batch); \
  using strided = decltype(&cblas_##t##gemm_batch_strided);
#define L3F_CFN_REAL(t, T, R) \
  template <> struct cfn<T> { L3F_CFN_ALL(t) };
#define L3F_CFN_CPLX(t, T, R)                  \
  template <> struct cfn<T> {                  \
    L3F_CFN_ALL(t)                             \
    using herk = decltype(&cblas_##t##herk);   \
    using her2k = decltype(&cblas_##t##her2k); \
  };
ZAR_L3_REAL(L3F_CFN_REAL)
ZAR_L3_CPLX(L3F_CFN_CPLX)
#undef L3F_CFN_ALL
#undef L3F_CFN_REAL
#undef L3F_CFN_CPLX

// Our CBLAS routine cblas_<letter><op>, typed F.
template <class F, class T> F cblas(const std::string& op) { return entry<F>("cblas_" + (letter<T>() + op)); }

// A scalar as CBLAS takes it: real ones by value, complex ones by address.
template <class S> auto sc(const S& s) {
  if constexpr (zar::is_complex_v<S>) return static_cast<const void*>(&s);
  else return s;
}

// Calls a CBLAS routine with each argument converted to its parameter type:
// option values given as ints (illegal ones included), data as T*.
template <class... P, class... A> void cblas_call(void (*f)(P...), A... a) { f(static_cast<P>(a)...); }

// The kernel library's entry `name`, or null (the library as the core finds
// it: in ZAR_KERNEL_PATH, else by the loader's search).
inline void* kernel_entry(const std::string& name) {
  static void* lib = [] {
    const char* dir = std::getenv("ZAR_KERNEL_PATH");
    const std::string path = dir ? std::string(dir) + "/libzar_avx.so.2" : "libzar_avx.so.2";
    return dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  }();
  return lib ? dlsym(lib, name.c_str()) : nullptr;
}

}  // namespace l3f
