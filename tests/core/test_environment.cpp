// Settings read from the environment when the core is loaded. Run by CTest
// with the variables set (test "core_environment"); skipped otherwise.
#include <gtest/gtest.h>

#include <cstdlib>

#include "zar/control.h"
#include "zar/services.h"

namespace {

TEST(Environment, SettingsFromVariables) {
  if (!std::getenv("ZAR_TEST_ENVIRONMENT")) GTEST_SKIP() << "run by the core_environment test";
  EXPECT_EQ(zar_serv_cbwr_get(1), ZAR_CBWR_COMPATIBLE);
  EXPECT_EQ(*zar_serv_verbose_mode(), 1);
  EXPECT_EQ(zar_get_max_threads(), 3);
  long long r[ZAR_CACHE_RECORD_ENTRIES];
  zar_serv_cache_info(r);
  EXPECT_EQ(r[3], 4LL << 20);
  // ZAR_FAIL_ALLOC=2: the second allocation fails.
  void* a = zar_serv_malloc(8);
  void* b = zar_serv_malloc(8);
  EXPECT_NE(a, nullptr);
  EXPECT_EQ(b, nullptr);
  zar_serv_free(a);
}

}  // namespace
