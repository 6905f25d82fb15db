// zar-lapack-timer <liblapack.so> <dgesv|dpotrf> <n> [<repetitions>]
// Times one LAPACK driver in a LAPACK library loaded by path, in a process
// of its own: which BLAS that LAPACK runs on is decided by the environment
// (LD_LIBRARY_PATH for a LAPACK that needs libblas.so.3), with no other BLAS
// in the process to bind to. Prints
//   seconds=<best> residual=<max |x - 1| or 0> blas=<file that defines dgemm_>
// and exits 2 with a message when the library cannot be loaded (a BLAS
// routine it needs is missing, say).
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using dgesv_fn = void (*)(const int*, const int*, double*, const int*, int*, double*, const int*, int*);
using dpotrf_fn = void (*)(const char*, const int*, double*, const int*, int*, size_t);

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: %s <liblapack.so> <dgesv|dpotrf> <n> [<repetitions>]\n", argv[0]);
    return 1;
  }
  const std::string driver = argv[2];
  const int n = std::atoi(argv[3]);
  const int reps = argc > 4 ? std::atoi(argv[4]) : 3;
  void* h = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!h) {
    std::printf("unavailable: %s\n", dlerror());
    return 2;
  }
  void* fn = dlsym(h, driver == "dgesv" ? "dgesv_" : "dpotrf_");
  // The dgemm_ the LAPACK's calls bind to: the process's global scope (a
  // preloaded library, say) comes before the library's own dependencies.
  Dl_info where{};
  void* gemm = dlsym(RTLD_DEFAULT, "dgemm_");
  if (!gemm) gemm = dlsym(h, "dgemm_");
  if (!fn || !gemm || !dladdr(gemm, &where)) {
    std::printf("unavailable: %s lacks %s or dgemm_\n", argv[1], driver.c_str());
    return 2;
  }

  // A symmetric, diagonally dominant matrix with a positive diagonal: both
  // well conditioned for the solve and positive definite for the Cholesky.
  const size_t count = static_cast<size_t>(n) * n;
  std::vector<double> a0(count), a(count), b(n);
  auto at = [&](int i, int j) -> double& { return a0[i + static_cast<size_t>(n) * j]; };
  std::vector<int> ipiv(n);
  std::mt19937 g(3);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i <= j; ++i) at(i, j) = at(j, i) = i == j ? n : u(g);
  // Right-hand side A * ones, so the solution is all ones.
  std::vector<double> rhs(n, 0);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) rhs[i] += at(i, j);

  double best = 1e30, residual = 0;
  for (int r = 0; r < reps; ++r) {
    a = a0;
    b = rhs;
    int info = 0;
    const int one = 1;
    const auto t0 = std::chrono::steady_clock::now();
    if (driver == "dgesv") reinterpret_cast<dgesv_fn>(fn)(&n, &one, a.data(), &n, ipiv.data(), b.data(), &n, &info);
    else reinterpret_cast<dpotrf_fn>(fn)("L", &n, a.data(), &n, &info, 1);
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    if (info != 0) {
      std::printf("failed: %s returned info %d\n", driver.c_str(), info);
      return 3;
    }
    if (driver == "dgesv")
      for (double x : b) residual = std::max(residual, std::fabs(x - 1));
  }
  std::printf("seconds=%.6f residual=%.3g blas=%s\n", best, residual, where.dli_fname);
  return 0;
}
