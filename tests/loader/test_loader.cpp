// The loader's answers: each refusal names the file and the reason, leaves
// nothing loaded, and a correct library still loads afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "../hardening/child.h"

#include "zar/blas.h"
#include "zar/control.h"

namespace {

void daxpy_wrapper(int n, double a, double* x, int inc) { daxpy_(&n, &a, x, &inc, x, &inc); }

bool no_avx_expected() { return std::getenv("ZAR_TEST_EXPECT_NO_AVX") != nullptr; }

// Files that cannot be a kernel library are refused with the reason, and
// nothing is loaded: no hang on a FIFO, no call into a data object.
TEST(Loader, RefusesWhatIsNoLibrary) {
  if (no_avx_expected()) GTEST_SKIP() << "run by NoAvx";
  char dir_template[] = "/tmp/zar_loader_XXXXXX";
  ASSERT_NE(mkdtemp(dir_template), nullptr);
  const std::string dir = dir_template;
  const std::string fifo = dir + "/fifo.so", empty = dir + "/empty.so", text = dir + "/text.so";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::ofstream(empty).close();
  std::ofstream(text) << "not a library\n";
  const struct {
    std::string path;
    int status;
    const char* reason;
  } cases[] = {
      {fifo, ZAR_LOAD_NOT_FOUND, "FIFO"},
      {dir, ZAR_LOAD_NOT_FOUND, "directory"},
      {"/dev/zero", ZAR_LOAD_NOT_FOUND, "device"},
      {empty, ZAR_LOAD_NOT_FOUND, "empty"},
      {text, ZAR_LOAD_NOT_FOUND, "ELF"},
      {std::string(FAKE_DIR) + "/datatag/libzar_avx.so.2", ZAR_LOAD_NO_TAG, "not a function"},
  };
  for (const auto& c : cases) {
    // In a child, so that a hang on the FIFO fails instead of stalling.
    const auto r = zar_test::in_child(
        [&] {
          if (zar_kernel_load(c.path.c_str()) != c.status) return 1;
          const std::string err = zar_kernel_error();
          if (err.find(c.path) == std::string::npos || err.find(c.reason) == std::string::npos) return 2;
          return zar_kernel_tag() == 0 && zar_kernel_symbol("dll_cpu_version") == nullptr ? 0 : 3;
        },
        20);
    EXPECT_TRUE(r.exited && r.status == 0) << c.path << ": " << r.describe();
  }
  // Named by ZAR_KERNEL_PATH, the FIFO stops a BLAS call with the message.
  const auto r = zar_test::in_child(
      [&] {
        setenv("ZAR_KERNEL_PATH", fifo.c_str(), 1);
        const int n = 1, one = 1;
        double x = 1, a = 2;
        daxpy_wrapper(n, a, &x, one);
        return 0;
      },
      20);
  EXPECT_TRUE(r.exited && r.status == EXIT_FAILURE) << r.describe();
  unlink(fifo.c_str());
  unlink(empty.c_str());
  unlink(text.c_str());
  rmdir(dir.c_str());
}

TEST(Loader, RefusesThenLoads) {
  if (no_avx_expected()) GTEST_SKIP() << "run by NoAvx";
  const std::string missing = std::string(FAKE_DIR) + "/absent/libzar_avx.so.2";
  EXPECT_EQ(zar_kernel_load(missing.c_str()), ZAR_LOAD_NOT_FOUND);
  EXPECT_NE(std::string(zar_kernel_error()).find(missing), std::string::npos) << zar_kernel_error();
  EXPECT_EQ(zar_kernel_tag(), 0);

  const std::string tag5 = std::string(FAKE_DIR) + "/tag5/libzar_avx.so.2";
  EXPECT_EQ(zar_kernel_load(tag5.c_str()), ZAR_LOAD_WRONG_TAG);
  EXPECT_NE(std::string(zar_kernel_error()).find("processor tag 5"), std::string::npos) << zar_kernel_error();
  EXPECT_NE(std::string(zar_kernel_error()).find(tag5), std::string::npos);
  EXPECT_EQ(zar_kernel_symbol("dll_cpu_version"), nullptr);

  const std::string notag = std::string(FAKE_DIR) + "/notag/libzar_avx.so.2";
  EXPECT_EQ(zar_kernel_load(notag.c_str()), ZAR_LOAD_NO_TAG);
  EXPECT_NE(std::string(zar_kernel_error()).find("dll_cpu_version"), std::string::npos);

  const std::string real = std::string(KERNEL_DIR) + "/libzar_avx.so.2";
  ASSERT_EQ(zar_kernel_load(real.c_str()), ZAR_LOAD_OK) << zar_kernel_error();
  EXPECT_EQ(zar_kernel_tag(), 6);
  EXPECT_STREQ(zar_kernel_error(), "");
  EXPECT_EQ(std::string(zar_kernel_path()), real);
  auto tag = reinterpret_cast<int (*)()>(zar_kernel_symbol("dll_cpu_version"));
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag(), 6);
  // Once loaded, later requests keep the library in use.
  EXPECT_EQ(zar_kernel_load(tag5.c_str()), ZAR_LOAD_OK);
  EXPECT_EQ(zar_kernel_tag(), 6);
}

TEST(NoAvx, RefusesBeforeMapping) {
  if (!no_avx_expected()) GTEST_SKIP() << "needs ZAR_ENABLE_INSTRUCTIONS below AVX";
  EXPECT_EQ(zar_cpu_enabled_features() & ZAR_FEATURE_AVX, 0);
  const std::string real = std::string(KERNEL_DIR) + "/libzar_avx.so.2";
  EXPECT_EQ(zar_kernel_load(real.c_str()), ZAR_LOAD_NO_AVX);
  EXPECT_NE(std::string(zar_kernel_error()).find("AVX"), std::string::npos) << zar_kernel_error();
  EXPECT_EQ(zar_kernel_tag(), 0);
  EXPECT_EQ(zar_kernel_symbol("dll_cpu_version"), nullptr);
}

}  // namespace
