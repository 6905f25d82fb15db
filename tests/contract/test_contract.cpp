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

  dlclose(h);
}

}  // namespace
