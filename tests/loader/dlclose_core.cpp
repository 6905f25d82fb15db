// A program that loads the core at run time, makes threaded calls (the
// pool's workers start), unloads it while idle and exits: it must finish,
// with exact results, and never hang on the workers.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <vector>

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  using gemm_fn = void (*)(const char*, const char*, const int*, const int*, const int*, const double*,
                           const double*, const int*, const double*, const int*, const double*, double*, const int*);
  using threads_fn = void (*)(int);
  for (int round = 0; round < 3; ++round) {
    void* core = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!core) {
      std::fprintf(stderr, "%s\n", dlerror());
      return 3;
    }
    const auto gemm = reinterpret_cast<gemm_fn>(dlsym(core, "dgemm_"));
    const auto set_threads = reinterpret_cast<threads_fn>(dlsym(core, "zar_set_num_threads"));
    if (!gemm || !set_threads) return 4;
    const int n = 240;
    std::vector<double> a(n * n), b(n * n), c1(n * n), c2(n * n);
    for (int i = 0; i < n * n; ++i) a[i] = (i % 7) - 3, b[i] = (i % 5) - 2;
    const double one = 1, zero = 0;
    set_threads(1);
    gemm("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c1.data(), &n);
    set_threads(2);
    gemm("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c2.data(), &n);
    if (std::memcmp(c1.data(), c2.data(), c1.size() * sizeof(double)) != 0) return 5;
    if (dlclose(core) != 0) return 6;
  }
  std::puts("unloaded and done");
  return 0;
}
