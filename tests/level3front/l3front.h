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

// CBLAS entries of one type, scalars by address (real ones dereferenced),
// option arguments as plain ints so that illegal values can be passed.
template <class T> struct cb;
#define L3F_CB_ALL(t, T, D)                                                                                            \
  static void trsm(int l, int s, int u, int ta, int d, int M, int N, const T* al, const T* A, int lda, T* B,           \
                   int ldb) {                                                                                          \
    cblas_##t##trsm(CBLAS_LAYOUT(l), CBLAS_SIDE(s), CBLAS_UPLO(u), CBLAS_TRANSPOSE(ta), CBLAS_DIAG(d), M, N, D al, A,  \
                    lda, B, ldb);                                                                                      \
  }                                                                                                                    \
  static void trmm(int l, int s, int u, int ta, int d, int M, int N, const T* al, const T* A, int lda, T* B,           \
                   int ldb) {                                                                                          \
    cblas_##t##trmm(CBLAS_LAYOUT(l), CBLAS_SIDE(s), CBLAS_UPLO(u), CBLAS_TRANSPOSE(ta), CBLAS_DIAG(d), M, N, D al, A,  \
                    lda, B, ldb);                                                                                      \
  }                                                                                                                    \
  static void symm(int l, int s, int u, int M, int N, const T* al, const T* A, int lda, const T* B, int ldb,           \
                   const T* be, T* C, int ldc) {                                                                       \
    cblas_##t##symm(CBLAS_LAYOUT(l), CBLAS_SIDE(s), CBLAS_UPLO(u), M, N, D al, A, lda, B, ldb, D be, C, ldc);          \
  }                                                                                                                    \
  static void syrk(int l, int u, int tr, int N, int K, const T* al, const T* A, int lda, const T* be, T* C, int ldc) { \
    cblas_##t##syrk(CBLAS_LAYOUT(l), CBLAS_UPLO(u), CBLAS_TRANSPOSE(tr), N, K, D al, A, lda, D be, C, ldc);            \
  }                                                                                                                    \
  static void syr2k(int l, int u, int tr, int N, int K, const T* al, const T* A, int lda, const T* B, int ldb,         \
                    const T* be, T* C, int ldc) {                                                                      \
    cblas_##t##syr2k(CBLAS_LAYOUT(l), CBLAS_UPLO(u), CBLAS_TRANSPOSE(tr), N, K, D al, A, lda, B, ldb, D be, C, ldc);   \
  }                                                                                                                    \
  static void gemmt(int l, int u, int ta, int tb, int N, int K, const T* al, const T* A, int lda, const T* B, int ldb, \
                    const T* be, T* C, int ldc) {                                                                      \
    cblas_##t##gemmt(CBLAS_LAYOUT(l), CBLAS_UPLO(u), CBLAS_TRANSPOSE(ta), CBLAS_TRANSPOSE(tb), N, K, D al, A, lda, B,  \
                     ldb, D be, C, ldc);                                                                               \
  }                                                                                                                    \
  static void strided(int l, int ta, int tb, int M, int N, int K, const T* al, const T* A, int lda, int sa,            \
                      const T* B, int ldb, int sb, const T* be, T* C, int ldc, int sc, int count) {                    \
    cblas_##t##gemm_batch_strided(CBLAS_LAYOUT(l), CBLAS_TRANSPOSE(ta), CBLAS_TRANSPOSE(tb), M, N, K, D al, A, lda,    \
                                  sa, B, ldb, sb, D be, C, ldc, sc, count);                                            \
  }                                                                                                                    \
  static void batch(int l, const int* ta, const int* tb, const int* M, const int* N, const int* K, const T* al,        \
                    const T** A, const int* lda, const T** B, const int* ldb, const T* be, T** C, const int* ldc,      \
                    int groups, const int* sizes) {                                                                    \
    cblas_##t##gemm_batch(CBLAS_LAYOUT(l), reinterpret_cast<const CBLAS_TRANSPOSE*>(ta),                               \
                          reinterpret_cast<const CBLAS_TRANSPOSE*>(tb), M, N, K, al, (const void_or<T>**)A, lda,       \
                          (const void_or<T>**)B, ldb, be, (void_or<T>**)C, ldc, groups, sizes);                        \
  }
// complex data are passed as void in the published prototypes
template <class T> using void_or = std::conditional_t<zar::is_complex_v<T>, void, T>;
#define L3F_CB_REAL(t, T, R) \
  template <> struct cb<T> { L3F_CB_ALL(t, T, *) };
#define L3F_CB_CPLX(t, T, R)                                                                                           \
  template <> struct cb<T> {                                                                                           \
    L3F_CB_ALL(t, T, )                                                                                                 \
    static void hemm(int l, int s, int u, int M, int N, const T* al, const T* A, int lda, const T* B, int ldb,         \
                     const T* be, T* C, int ldc) {                                                                     \
      cblas_##t##hemm(CBLAS_LAYOUT(l), CBLAS_SIDE(s), CBLAS_UPLO(u), M, N, al, A, lda, B, ldb, be, C, ldc);            \
    }                                                                                                                  \
    static void herk(int l, int u, int tr, int N, int K, const R* al, const T* A, int lda, const R* be, T* C,          \
                     int ldc) {                                                                                        \
      cblas_##t##herk(CBLAS_LAYOUT(l), CBLAS_UPLO(u), CBLAS_TRANSPOSE(tr), N, K, *al, A, lda, *be, C, ldc);            \
    }                                                                                                                  \
    static void her2k(int l, int u, int tr, int N, int K, const T* al, const T* A, int lda, const T* B, int ldb,       \
                      const R* be, T* C, int ldc) {                                                                    \
      cblas_##t##her2k(CBLAS_LAYOUT(l), CBLAS_UPLO(u), CBLAS_TRANSPOSE(tr), N, K, al, A, lda, B, ldb, *be, C, ldc);    \
    }                                                                                                                  \
    static void gemm3m(int l, int ta, int tb, int M, int N, int K, const T* al, const T* A, int lda, const T* B,       \
                       int ldb, const T* be, T* C, int ldc) {                                                          \
      cblas_##t##gemm3m(CBLAS_LAYOUT(l), CBLAS_TRANSPOSE(ta), CBLAS_TRANSPOSE(tb), M, N, K, al, A, lda, B, ldb, be, C, \
                        ldc);                                                                                          \
    }                                                                                                                  \
  };
ZAR_L3_REAL(L3F_CB_REAL)
ZAR_L3_CPLX(L3F_CB_CPLX)
#undef L3F_CB_ALL
#undef L3F_CB_REAL
#undef L3F_CB_CPLX

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
