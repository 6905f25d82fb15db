// The frame's shared pieces: the tag, the reproducibility switch and the
// verbose line.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "zar/cbwr.h"
#include "zar/control.h"
#include "zar/verbose.h"

extern "C" int dll_cpu_version(void);

namespace {

TEST(Frame, Tag) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(dll_cpu_version(), 6);
}

int fast_path(int x) { return x + 1; }
int cnr_path(int x) { return x - 1; }

TEST(Frame, ReproducibilitySwitchFollowsTheBranch) {
  const int saved = zar_cbwr_get();
  zar_cbwr_set(ZAR_CBWR_OFF);
  EXPECT_EQ((zar::cbwr_dispatch<fast_path, cnr_path>(10)), 11);
  for (int branch : {ZAR_CBWR_AUTO, ZAR_CBWR_COMPATIBLE, 17}) {
    zar_cbwr_set(branch);
    EXPECT_EQ((zar::cbwr_dispatch<fast_path, cnr_path>(10)), 9) << branch;
  }
  zar_cbwr_set(saved);
}

TEST(Frame, PeelToA32ByteBoundary) {
  alignas(32) double d[8];
  EXPECT_EQ(zar::peel_to_32(d), 0);
  EXPECT_EQ(zar::peel_to_32(d + 1), 3);
  EXPECT_EQ(zar::peel_to_32(d + 3), 1);
  EXPECT_EQ(zar::peel_to_32(d + 4), 0);
  alignas(32) float f[16];
  EXPECT_EQ(zar::peel_to_32(f + 1), 7);
  auto odd = reinterpret_cast<const double*>(reinterpret_cast<uintptr_t>(d) + 4);
  EXPECT_EQ(zar::peel_to_32(odd), -1);
}

TEST(Frame, VerboseLineFormatsTimesAndCuts) {
  const int saved = zar_verbose(0);
  testing::internal::CaptureStdout();
  {
    zar::verbose_timer quiet;
    EXPECT_FALSE(quiet.active());
    quiet.report("%s(%d)", "DDTSVB", 5);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

  zar_verbose(1);
  testing::internal::CaptureStdout();
  {
    zar::verbose_timer vt;
    EXPECT_TRUE(vt.active());
    vt.report("%s(%d,%d,%p)", "DDTSVB", 5, 1, static_cast<void*>(nullptr));
    vt.report("%s", std::string(500, 'y').c_str());
  }
  const std::string out = testing::internal::GetCapturedStdout();
  zar_verbose(saved);
  EXPECT_NE(out.find("ZAR_VERBOSE DDTSVB(5,1,"), std::string::npos) << out;
  const auto second = out.find("ZAR_VERBOSE y");
  ASSERT_NE(second, std::string::npos);
  const std::string ys = out.substr(second + 12, out.find(' ', second + 12) - second - 12);
  EXPECT_EQ(ys, std::string(299, 'y')) << "the line is cut at 299 characters";
}

}  // namespace
