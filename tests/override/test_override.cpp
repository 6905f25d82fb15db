// An application's own xerbla_ and cblas_xerbla win over the core's.
#include <gtest/gtest.h>

#include <string>

#include "cblas.h"
#include "zar/services.h"

namespace {
std::string seen_name;
int seen_info = 0, seen_len = 0, cblas_seen = 0;
}  // namespace

extern "C" void xerbla_(const char* name, const int* info, int len) {
  seen_name.assign(name, len);
  seen_info = *info;
  seen_len = len;
}
extern "C" void cblas_xerbla(int p, const char*, const char*, ...) { cblas_seen = p; }

namespace {

TEST(Override, ApplicationXerblaWins) {
  const int info = 4;
  testing::internal::CaptureStderr();
  zar_serv_xerbla("DLASD3", &info, 6);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the core's default must not run";
  EXPECT_EQ(seen_name, "DLASD3");
  EXPECT_EQ(seen_info, 4);
  EXPECT_EQ(seen_len, 6);
}

}  // namespace
