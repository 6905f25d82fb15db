// The public descriptor calls: argument checks with their statuses (the
// descriptor stays usable), settings round trips, copy, version, and the
// verbose line.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <regex>

#include "dft_test.h"

using namespace dft_test;

namespace {

// A committed double complex descriptor of n points computes a known
// result: the transform of a unit impulse is all ones.
void expect_usable(zar_dft_descriptor* d, long n) {
  ASSERT_EQ(zar_dft_commit(d), ZAR_DFT_OK);
  std::vector<double> x(2 * n, 0.0);
  x[0] = 1;
  ASSERT_EQ(zar_dft_compute_forward(d, x.data()), ZAR_DFT_OK);
  for (long k = 0; k < n; ++k) EXPECT_EQ(x[2 * k], 1.0) << k;
}

TEST(Front, CreateChecks) {
  zar_dft_descriptor* d = reinterpret_cast<zar_dft_descriptor*>(0x1);
  EXPECT_EQ(zar_dft_create(nullptr, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 8L), ZAR_DFT_EINVALID);
  struct {
    int precision, domain;
    long rank, n;
    long status;
  } cases[] = {
      {34, ZAR_DFT_COMPLEX, 1, 8, ZAR_DFT_EBAD_VALUE},   {ZAR_DFT_DOUBLE, 31, 1, 8, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 0, 8, ZAR_DFT_EBAD_VALUE}, {ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 8, 8, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1, 0, ZAR_DFT_EBAD_VALUE}, {ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1, -4, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 1, 1L << 30, ZAR_DFT_EBAD_VALUE},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zar_dft_create(&d, c.precision, c.domain, c.rank, c.n), c.status) << c.precision << " " << c.rank;
    EXPECT_EQ(d, nullptr);
  }
  const long bad_lens[3] = {4, 0, 4};
  EXPECT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 3L, bad_lens), ZAR_DFT_EBAD_VALUE);
  EXPECT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 3L, static_cast<const long*>(nullptr)),
            ZAR_DFT_EINVALID);
  const long huge[2] = {65536, 65536};
  EXPECT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 2L, huge), ZAR_DFT_EBAD_VALUE);
}

// Every bad value or parameter gives its status, changes nothing and
// leaves a committed descriptor committed.
TEST(Front, BadSettingsLeaveDescriptorUsable) {
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 16L), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  struct {
    int param;
    long value;
    long status;
  } cases[] = {
      {ZAR_DFT_NUMBER_OF_TRANSFORMS, 0, ZAR_DFT_EBAD_VALUE}, {ZAR_DFT_NUMBER_OF_TRANSFORMS, -3, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_COMPLEX_STORAGE, 40, ZAR_DFT_EBAD_VALUE},     {ZAR_DFT_REAL_STORAGE, 39, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_CONJUGATE_EVEN_STORAGE, 42, ZAR_DFT_EBAD_VALUE}, {ZAR_DFT_PLACEMENT, 45, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_INPUT_DISTANCE, -1, ZAR_DFT_EBAD_VALUE},      {ZAR_DFT_WORKSPACE, 53, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_ORDERING, 49, ZAR_DFT_EBAD_VALUE},            {ZAR_DFT_TRANSPOSE, 54, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_THREAD_LIMIT, -2, ZAR_DFT_EBAD_VALUE},        {ZAR_DFT_PACKED_FORMAT, 58, ZAR_DFT_EBAD_VALUE},
      {ZAR_DFT_FORWARD_DOMAIN, ZAR_DFT_REAL, ZAR_DFT_EBAD_PARAM}, {ZAR_DFT_DIMENSION, 2, ZAR_DFT_EBAD_PARAM},
      {ZAR_DFT_PRECISION, ZAR_DFT_SINGLE, ZAR_DFT_EBAD_PARAM}, {ZAR_DFT_COMMIT_STATUS, 31, ZAR_DFT_EBAD_PARAM},
      {99, 1, ZAR_DFT_EBAD_PARAM},                           {-1, 1, ZAR_DFT_EBAD_PARAM},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zar_dft_set(d, c.param, c.value), c.status) << "param " << c.param << " value " << c.value;
    EXPECT_EQ(d->status, ZAR_DFT_COMMITTED) << "param " << c.param;
  }
  for (double s : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    EXPECT_EQ(zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, s), ZAR_DFT_EBAD_VALUE);
    EXPECT_EQ(d->fscale, 1.0);
  }
  const long zero_stride[2] = {0, 0}, negative_offset[2] = {-1, 1};
  EXPECT_EQ(zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, zero_stride), ZAR_DFT_EBAD_VALUE);
  EXPECT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, negative_offset), ZAR_DFT_EBAD_VALUE);
  EXPECT_EQ(zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, static_cast<const long*>(nullptr)), ZAR_DFT_EINVALID);
  EXPECT_EQ(zar_dft_get(d, ZAR_DFT_PLACEMENT, static_cast<long*>(nullptr)), ZAR_DFT_EINVALID);
  EXPECT_EQ(zar_dft_get(d, 99, &zero_stride), ZAR_DFT_EBAD_PARAM);
  // Null and foreign handles.
  EXPECT_EQ(zar_dft_set(nullptr, ZAR_DFT_PLACEMENT, 44L), ZAR_DFT_EINVALID);
  EXPECT_EQ(zar_dft_commit(nullptr), ZAR_DFT_EINVALID);
  EXPECT_EQ(zar_dft_compute_forward(nullptr, nullptr), ZAR_DFT_EINVALID);
  alignas(64) static char junk[sizeof(zar_dfti_desc)] = {};
  auto* fake = reinterpret_cast<zar_dft_descriptor*>(junk);
  EXPECT_EQ(zar_dft_set(fake, ZAR_DFT_PLACEMENT, 44L), ZAR_DFT_EBAD_DESCRIPTOR);
  EXPECT_EQ(zar_dft_commit(fake), ZAR_DFT_EBAD_DESCRIPTOR);
  EXPECT_EQ(zar_dft_free(&fake), ZAR_DFT_EBAD_DESCRIPTOR);
  EXPECT_EQ(zar_dft_free(nullptr), ZAR_DFT_EINVALID);
  zar_dft_descriptor* none = nullptr;
  EXPECT_EQ(zar_dft_free(&none), ZAR_DFT_OK);
  // Null arrays of a compute.
  EXPECT_EQ(zar_dft_compute_forward(d, nullptr), ZAR_DFT_EINVALID);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, 44L), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  std::vector<double> x(32);
  EXPECT_EQ(zar_dft_compute_backward(d, x.data(), nullptr), ZAR_DFT_EINVALID);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PLACEMENT, 43L), 0);
  expect_usable(d, 16);
  zar_dft_free(&d);
}

// Combinations found at commit, and compute before commit.
TEST(Front, CommitAndComputeStatus) {
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 8L), 0);
  std::vector<double> x(16, 0.0);
  EXPECT_EQ(zar_dft_compute_forward(d, x.data()), ZAR_DFT_EUNCOMMITTED);
  EXPECT_EQ(zar_dft_compute_backward(d, x.data()), ZAR_DFT_EUNCOMMITTED);
  ASSERT_EQ(zar_dft_commit(d), 0);
  // Any setting change uncommits, even to the same value.
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, 1.0), 0);
  long status = 0;
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_COMMIT_STATUS, &status), 0);
  EXPECT_EQ(status, ZAR_DFT_UNCOMMITTED);
  EXPECT_EQ(zar_dft_compute_forward(d, x.data()), ZAR_DFT_EUNCOMMITTED);
  // In place with output strides unlike the input ones.
  const long os[2] = {0, 2};
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, os), 0);
  EXPECT_EQ(zar_dft_commit(d), ZAR_DFT_EINCONSISTENT);
  const long same[2] = {0, 1};
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, same), 0);
  expect_usable(d, 8);
  zar_dft_free(&d);
  // Real: complex-real storage needs a packed format other than CCE; not
  // for several dimensions. Split complex storage only in one dimension.
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1L, 8L), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40L), 0);
  EXPECT_EQ(zar_dft_commit(d), ZAR_DFT_EINCONSISTENT);
  EXPECT_EQ(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, 42L), ZAR_DFT_EBAD_VALUE);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, 56L), 0);
  EXPECT_EQ(zar_dft_commit(d), 0);
  zar_dft_free(&d);
  const long lens[2] = {4, 4};
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_SINGLE, ZAR_DFT_REAL, 2L, lens), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40L), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, 54L), 0);
  EXPECT_EQ(zar_dft_commit(d), ZAR_DFT_EUNIMPLEMENTED);
  zar_dft_free(&d);
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 2L, lens), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, 42L), 0);
  EXPECT_EQ(zar_dft_commit(d), ZAR_DFT_EUNIMPLEMENTED);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, 39L), 0);
  EXPECT_EQ(zar_dft_commit(d), 0);
  zar_dft_free(&d);
  for (long s = 0; s <= 10; ++s) EXPECT_GT(std::strlen(zar_dft_message(s)), 5u) << s;
}

// Settings read back as set, strides in public order.
TEST(Front, SettingsRoundTrip) {
  const long lens[3] = {2, 3, 4};
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 3L, lens), 0);
  long strides[4] = {};
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_INPUT_STRIDES, strides), 0);
  EXPECT_EQ(strides[0], 0);
  EXPECT_EQ(strides[1], 12);
  EXPECT_EQ(strides[2], 4);
  EXPECT_EQ(strides[3], 1);
  const long set[4] = {3, 40, 10, 2};
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, set), 0);
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_OUTPUT_STRIDES, strides), 0);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(strides[k], set[k]);
  EXPECT_EQ(d->in.dims[0].os, 2);  // the contiguous dimension first in the record
  EXPECT_EQ(d->in.dims[2].os, 40);
  const struct {
    int param;
    long value;
  } longs[] = {{ZAR_DFT_NUMBER_OF_TRANSFORMS, 5}, {ZAR_DFT_INPUT_DISTANCE, 100}, {ZAR_DFT_OUTPUT_DISTANCE, 90},
               {ZAR_DFT_PLACEMENT, 44},           {ZAR_DFT_WORKSPACE, 52},       {ZAR_DFT_THREAD_LIMIT, 3},
               {ZAR_DFT_COMPLEX_STORAGE, 42},     {ZAR_DFT_PACKED_FORMAT, 55},   {ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40}};
  for (const auto& s : longs) {
    ASSERT_EQ(zar_dft_set(d, s.param, s.value), 0) << s.param;
    long got = -1;
    ASSERT_EQ(zar_dft_get(d, s.param, &got), 0);
    EXPECT_EQ(got, s.value) << s.param;
  }
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_BACKWARD_SCALE, 0.125), 0);
  double scale = 0;
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_BACKWARD_SCALE, &scale), 0);
  EXPECT_EQ(scale, 0.125);
  long v = 0;
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_PRECISION, &v), 0);
  EXPECT_EQ(v, ZAR_DFT_SINGLE);
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_DIMENSION, &v), 0);
  EXPECT_EQ(v, 3);
  char version[ZAR_DFT_VERSION_LENGTH];
  ASSERT_EQ(zar_dft_get(d, ZAR_DFT_VERSION, version), 0);
  EXPECT_NE(std::strstr(version, "zar"), nullptr) << version;
  // The kernel copies at most the buffer length and does not terminate.
  char five[8];
  std::memset(five, '#', sizeof five);
  EXPECT_EQ(zar_dft_avx_dfti_get_version_string(five, 5), 5);
  EXPECT_EQ(std::string(five, 5), std::string(version, 5));
  EXPECT_EQ(five[5], '#');
  zar_dft_free(&d);
}

// A copy has the settings and the commit state of its source, and its own
// memory.
TEST(Front, Copy) {
  zar_dft_descriptor *d = nullptr, *c = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 10L), 0);
  ASSERT_EQ(zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, 0.25), 0);
  ASSERT_EQ(zar_dft_copy(d, &c), 0);
  EXPECT_EQ(c->status, ZAR_DFT_UNCOMMITTED);
  EXPECT_EQ(c->fscale, 0.25);
  zar_dft_free(&c);
  ASSERT_EQ(zar_dft_commit(d), 0);
  ASSERT_EQ(zar_dft_copy(d, &c), 0);
  EXPECT_NE(c, d);
  EXPECT_EQ(c->status, ZAR_DFT_COMMITTED);
  EXPECT_NE(c->plan, d->plan);
  std::vector<double> a(20), b(20);
  for (int i = 0; i < 20; ++i) a[i] = b[i] = value(i);
  zar_dft_free(&d);  // the copy does not depend on its source
  ASSERT_EQ(zar_dft_compute_forward(c, a.data()), 0);
  EXPECT_NEAR(a[0], 0.25 * (b[0] + b[2] + b[4] + b[6] + b[8] + b[10] + b[12] + b[14] + b[16] + b[18]), 1e-12);
  EXPECT_EQ(zar_dft_copy(c, nullptr), ZAR_DFT_EINVALID);
  zar_dft_free(&c);
}

// The verbose line of a compute, as the core prints it.
// The arrays: four areas of `a` (a compute reads as many as it needs).
std::string verbose_text(zar_dft_descriptor* d, double* a) {
  const int saved = zar_verbose(1);
  const std::string out = capture_stdout([&] { zar_dft_compute_forward(d, a, a + 1024, a + 2048, a + 3072); });
  zar_verbose(saved);
  const auto start = out.find("FFT(");
  const auto end = out.find(')', start);
  return start == std::string::npos || end == std::string::npos ? out : out.substr(start, end - start + 1);
}

TEST(Front, VerboseLine) {
  std::vector<double> x(4096, 0.0);
  struct line_case {
    const char* what;
    int precision, domain;
    long rank, lens[3];
    std::vector<std::pair<int, long>> settings;
    std::vector<long> strides;  // input strides, and output strides too when both is set
    bool both;
    double fscale, bscale;
    int flags;
    const char* pattern;
  };
  const int D = ZAR_DFT_DOUBLE, S = ZAR_DFT_SINGLE, C = ZAR_DFT_COMPLEX, R = ZAR_DFT_REAL;
  const line_case cases[] = {
      {"default", D, C, 1, {1024}, {}, {}, false, 1, 1, 0, R"(FFT\(dci1024,tLim=1,desc:0x[0-9a-f]+\))"},
      {"scale exactly 1", S, C, 1, {8}, {}, {}, false, 1.0, 1, 0, R"(FFT\(sci8,tLim=1,desc:0x[0-9a-f]+\))"},
      {"scale 1.0000001", D, C, 1, {8}, {}, {}, false, 1.0000001, 0.5, 0,
       R"(FFT\(dci8,fScale=1,bScale=0\.5,tLim=1,desc:0x[0-9a-f]+\))"},
      {"split, out of place", D, C, 1, {8}, {{ZAR_DFT_COMPLEX_STORAGE, 42}, {ZAR_DFT_PLACEMENT, 44}}, {}, false, 1, 1, 0,
       R"(FFT\(dco/8,tLim=1,desc:0x[0-9a-f]+\))"},
      {"interleaved batch", D, C, 1, {16},
       {{ZAR_DFT_NUMBER_OF_TRANSFORMS, 4}, {ZAR_DFT_INPUT_DISTANCE, 1}, {ZAR_DFT_OUTPUT_DISTANCE, 1},
        {ZAR_DFT_THREAD_LIMIT, 1}},
       {0, 4}, true, 1, 1, 0, R"(FFT\(dci16:4:4v4,tLim=1,desc:0x[0-9a-f]+\))"},
      {"batch at distances", D, C, 1, {10},
       {{ZAR_DFT_NUMBER_OF_TRANSFORMS, 3}, {ZAR_DFT_INPUT_DISTANCE, 12}, {ZAR_DFT_OUTPUT_DISTANCE, 12},
        {ZAR_DFT_THREAD_LIMIT, 1}},
       {}, false, 1, 1, 0, R"(FFT\(dci10\*3:12:12,tLim=1,desc:0x[0-9a-f]+\))"},
      {"batch contiguous", D, C, 1, {10},
       {{ZAR_DFT_NUMBER_OF_TRANSFORMS, 3}, {ZAR_DFT_INPUT_DISTANCE, 10}, {ZAR_DFT_THREAD_LIMIT, 1}}, {}, false, 1, 1, 0,
       R"(FFT\(dci10\*3,tLim=1,desc:0x[0-9a-f]+\))"},
      {"real perm, avoid workspace, destruct", D, R, 1, {16},
       {{ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40}, {ZAR_DFT_PACKED_FORMAT, 56}, {ZAR_DFT_WORKSPACE, 52}}, {}, false, 1, 1,
       ZAR_DFTI_FLAG_DESTRUCT, R"(FFT\(dri16,pack=perm,wSpace=avoid,destruct=allow,tLim=1,desc:0x[0-9a-f]+\))"},
      {"md out of place with strides", S, C, 2, {4, 3}, {{ZAR_DFT_PLACEMENT, 44}}, {0, 4, 1}, false, 1, 1, 0,
       R"(FFT\(sco4:4:3x3:1:1,tLim=1,desc:0x[0-9a-f]+\))"},
      {"md contiguous", D, C, 3, {2, 4, 3}, {}, {}, false, 1, 1, 0, R"(FFT\(dci2x4x3,tLim=1,desc:0x[0-9a-f]+\))"},
  };
  for (const line_case& c : cases) {
    zar_dft_descriptor* d = nullptr;
    ASSERT_EQ(c.rank == 1 ? zar_dft_create(&d, c.precision, c.domain, 1L, c.lens[0])
                          : zar_dft_create(&d, c.precision, c.domain, c.rank, c.lens),
              0)
        << c.what;
    for (const auto& [param, value] : c.settings) ASSERT_EQ(zar_dft_set(d, param, value), 0) << c.what;
    if (!c.strides.empty()) {
      ASSERT_EQ(zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, c.strides.data()), 0);
      if (c.both) ASSERT_EQ(zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, c.strides.data()), 0);
    }
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, c.fscale), 0);
    ASSERT_EQ(zar_dft_set(d, ZAR_DFT_BACKWARD_SCALE, c.bscale), 0);
    d->flags |= c.flags;
    ASSERT_EQ(zar_dft_commit(d), 0) << c.what;
    const std::string line = verbose_text(d, x.data());
    EXPECT_TRUE(std::regex_match(line, std::regex(c.pattern))) << c.what << ": " << line;
    char addr[32];
    std::snprintf(addr, sizeof addr, "desc:%p)", static_cast<void*>(d));
    EXPECT_NE(line.find(addr), std::string::npos) << line;
    zar_dft_free(&d);
  }
  // Nothing is printed with verbose mode off.
  zar_dft_descriptor* d = nullptr;
  ASSERT_EQ(zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 8L), 0);
  ASSERT_EQ(zar_dft_commit(d), 0);
  const int saved = zar_verbose(0);
  EXPECT_EQ(capture_stdout([&] { zar_dft_compute_forward(d, x.data()); }), "");
  zar_verbose(saved);
  zar_dft_free(&d);
}

}  // namespace
