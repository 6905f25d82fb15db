// The loader's answers: each refusal names the file and the reason, leaves
// nothing loaded, and a correct library still loads afterwards.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "zar/control.h"

namespace {

bool no_avx_expected() { return std::getenv("ZAR_TEST_EXPECT_NO_AVX") != nullptr; }

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
