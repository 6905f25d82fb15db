// The reference BLAS of the distribution (Debian's libblas3 for i386, which
// carries the reference CBLAS too), loaded by path as an independent peer.
#pragma once
#include <dlfcn.h>

namespace zar_test {

class ReferenceBlas {
 public:
  // Deep binding keeps the peer's CBLAS calling the peer's own Fortran
  // routines; the address sanitizer cannot run with it, so that build skips
  // (available() is false there).
  ReferenceBlas() {
#if !defined(__SANITIZE_ADDRESS__)
    h_ = dlopen("/usr/lib/i386-linux-gnu/blas/libblas.so.3", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
#endif
  }
  ~ReferenceBlas() {
    if (h_) dlclose(h_);
  }
  ReferenceBlas(const ReferenceBlas&) = delete;
  ReferenceBlas& operator=(const ReferenceBlas&) = delete;
  bool available() const { return h_ != nullptr; }
  template <class F> F sym(const char* s) const { return h_ ? reinterpret_cast<F>(dlsym(h_, s)) : nullptr; }

 private:
  void* h_ = nullptr;
};

}  // namespace zar_test
