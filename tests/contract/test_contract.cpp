// Loads the kernel library beside a substitute core: the kernels must bind
// to the substitute's services and never pull in zar's own core.
#include <dlfcn.h>
#include <link.h>
#include <gtest/gtest.h>

#include <string>

namespace {

int count_loaded(const std::string& path) {
  struct ctx { const std::string* path; int n; } c{&path, 0};
  dl_iterate_phdr(
      [](dl_phdr_info* info, size_t, void* p) {
        auto* c = static_cast<ctx*>(p);
        if (info->dlpi_name && *c->path == info->dlpi_name) ++c->n;
        return 0;
      },
      &c);
  return c.n;
}

TEST(Contract, LoadsWithASubstituteCore) {
  const std::string kernel = std::string(SUBST_DIR) + "/libzar_avx.so.2";
  void* h = dlopen(kernel.c_str(), RTLD_LAZY | RTLD_LOCAL);
  ASSERT_NE(h, nullptr) << dlerror();
  auto tag = reinterpret_cast<int (*)()>(dlsym(h, "dll_cpu_version"));
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag(), 6);

  // The services seen from the kernel library's scope are the substitute's.
  void* service = dlsym(h, "zar_serv_cbwr_get");
  ASSERT_NE(service, nullptr);
  Dl_info where{};
  ASSERT_TRUE(dladdr(service, &where));
  EXPECT_EQ(std::string(where.dli_fname), std::string(SUBST_DIR) + "/libzar_core.so.2");
  EXPECT_EQ(count_loaded(REAL_CORE), 0) << "zar's own core was loaded";

  // A kernel with a reproducible twin asks the substitute for the branch.
  auto* calls = static_cast<int*>(dlsym(h, "subst_calls"));
  auto* branch = static_cast<int*>(dlsym(h, "subst_cbwr_answer"));
  auto dot = reinterpret_cast<double (*)(const int*, const double*, const int*, const double*, const int*)>(
      dlsym(h, "zar_blas_avx_xddot"));
  ASSERT_NE(calls, nullptr);
  ASSERT_NE(branch, nullptr);
  ASSERT_NE(dot, nullptr);
  const double x[5] = {1, 2, 3, 4, 5}, y[5] = {6, 7, 8, 9, 10};
  const int n = 5, one = 1;
  for (int answer : {1, 3}) {
    *branch = answer;
    const int before = *calls;
    EXPECT_EQ(dot(&n, x, &one, y, &one), 130.0) << answer;
    EXPECT_GT(*calls, before) << "the kernel did not reach the substitute's services";
  }
  dlclose(h);
}

}  // namespace
