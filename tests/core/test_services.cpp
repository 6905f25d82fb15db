// The core's answers to the kernels' service calls.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <atomic>
#include "zar/control.h"
#include "zar/services.h"

namespace {

TEST(Allocate, HonoursEverySizeAndAlignment) {
  const size_t sizes[] = {0, 1, 7, 64, 1000, 4097, 1u << 20};
  const int aligns[] = {1, 2, 3, 8, 16, 24, 48, 64, 100, 128, 4096, 65536};
  for (size_t bytes : sizes)
    for (int align : aligns) {
      void* p = zar_serv_allocate(bytes, align);
      ASSERT_NE(p, nullptr) << bytes << " bytes, alignment " << align;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % align, 0u) << bytes << " bytes, alignment " << align;
      std::memset(p, 0xab, bytes);  // the whole area is ours (ASan checks the bounds)
      zar_serv_deallocate(p);
    }
  zar_serv_deallocate(nullptr);
}

TEST(Allocate, FaultInjectionFailsExactlyTheNth) {
  zar_fail_allocation(3);
  void* a = zar_serv_allocate(64, 128);
  void* b = zar_serv_malloc(64);
  void* c = zar_serv_calloc(4, 16);  // the third
  void* d = zar_serv_allocate(64, 128);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(b, nullptr);
  EXPECT_EQ(c, nullptr);
  EXPECT_NE(d, nullptr);
  zar_serv_deallocate(a);
  zar_serv_free(b);
  zar_serv_deallocate(d);
  EXPECT_EQ(zar_fail_allocation(0), 0) << "the injection disarms itself after firing";
}

TEST(CheckPtr, WarnsOnceNamingTheRoutine) {
  zar_reset_warning_count();
  int x = 0;
  testing::internal::CaptureStderr();
  EXPECT_EQ(zar_serv_check_ptr_and_warn(&x, "DGEMM"), 0);
  EXPECT_NE(zar_serv_check_ptr_and_warn(nullptr, "ZGEMM"), 0);
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(zar_warning_count(), 1);
  EXPECT_NE(err.find("ZGEMM"), std::string::npos) << err;
  EXPECT_EQ(err.find('\n'), err.size() - 1) << "one line: " << err;

  testing::internal::CaptureStderr();
  EXPECT_NE(zar_serv_check_ptr(nullptr, "DGEMM"), 0);
  EXPECT_EQ(zar_serv_check_ptr(&x, "DGEMM"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(zar_warning_count(), 1);
}

TEST(Lsame, AllCharacterPairs) {
  for (int a = 1; a < 256; ++a)
    for (int b = 1; b < 256; ++b) {
      const char ca = static_cast<char>(a), cb = static_cast<char>(b);
      const bool letters_match = std::isalpha(a) && a < 128 && std::toupper(a) == std::toupper(b);
      ASSERT_EQ(zar_serv_lsame(&ca, &cb) != 0, a == b || letters_match) << a << " " << b;
    }
}

TEST(Settings, ReproducibilityBranch) {
  const int saved = zar_cbwr_get();
  EXPECT_EQ(zar_cbwr_set(ZAR_CBWR_COMPATIBLE), 0);
  EXPECT_EQ(zar_serv_cbwr_get(1), ZAR_CBWR_COMPATIBLE);
  EXPECT_EQ(zar_cbwr_set(0), -1);
  EXPECT_EQ(zar_serv_cbwr_get(1), ZAR_CBWR_COMPATIBLE);
  zar_cbwr_set(saved);
}

TEST(Settings, VerboseModeAndPrinter) {
  const int saved = zar_verbose(1);
  EXPECT_EQ(*zar_serv_verbose_mode(), 1);
  testing::internal::CaptureStdout();
  zar_serv_print_verbose_info(0, "DDTSVB(5,1,0x1,0x2)", 2.5e-6);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("ZAR_VERBOSE DDTSVB(5,1,0x1,0x2) 2.50us", 0), 0u) << out;
  zar_verbose(0);
  EXPECT_EQ(*zar_serv_verbose_mode(), 0);
  zar_verbose(saved);
}

TEST(Settings, CacheRecord) {
  long long r[ZAR_CACHE_RECORD_ENTRIES];
  zar_serv_cache_info(r);
  // The operating system's description of the last-level cache, when it has one.
  long long l3 = 0;
  if (std::ifstream f("/sys/devices/system/cpu/cpu0/cache/index3/size"); f >> l3) l3 <<= 10;
  if (l3 > 0) {
    EXPECT_EQ(r[0], 3);
    EXPECT_EQ(r[3], l3);
  }
  zar_set_cache_size(0);
  zar_serv_cache_info(r);
  EXPECT_EQ(r[0], 0);
  zar_set_cache_size(1 << 20);
  zar_serv_cache_info(r);
  EXPECT_GT(r[0], 0);
  EXPECT_EQ(r[3], 1 << 20);
  EXPECT_EQ(zar_serv_get_cache_size(3), 1 << 20);
  zar_set_cache_size(-1);
  zar_serv_cache_info(r);
  if (l3 > 0) {
    EXPECT_EQ(r[3], l3);
  }
}

TEST(Processor, FactsOfThisMachine) {
  const int f = zar_cpu_features();
  EXPECT_TRUE(f & ZAR_FEATURE_SSE2);
  if (f & ZAR_FEATURE_AVX) {
    EXPECT_GE(zar_serv_cpu_detect(), ZAR_CPU_AVX);
  }
  EXPECT_EQ(zar_serv_cpuhasf16c() != 0, (f & ZAR_FEATURE_F16C) != 0);
  EXPECT_GT(std::strlen(zar_cpu_vendor()), 0u);
}

TEST(Time, WallClockAdvances) {
  const double t0 = zar_serv_dsecnd();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const double dt = zar_serv_dsecnd() - t0;
  EXPECT_GE(dt, 0.019);
  EXPECT_LT(dt, 5.0);
}

TEST(Lock, MutualExclusion) {
  zar_lock_t lock = 0;
  long counter = 0;
  auto work = [&] {
    for (int i = 0; i < 100000; ++i) {
      zar_serv_lock(&lock);
      counter = counter + 1;
      zar_serv_unlock(&lock);
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(counter, 200000);
  EXPECT_EQ(lock, 0);
}

TEST(Strings, BoundedHelpers) {
  char buf[8];
  EXPECT_EQ(zar_serv_strncpy_s(buf, sizeof buf, "abcdef", 3), 0);
  EXPECT_STREQ(buf, "abc");
  EXPECT_EQ(zar_serv_strncat_s(buf, sizeof buf, "defg", 4), 0);
  EXPECT_STREQ(buf, "abcdefg");
  EXPECT_NE(zar_serv_strncat_s(buf, sizeof buf, "h", 1), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_NE(zar_serv_strncpy_s(buf, sizeof buf, "abcdefgh", 8), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(zar_serv_memcpy_unbounded_s(buf, sizeof buf, "xyz", 4), 0);
  EXPECT_STREQ(buf, "xyz");
  EXPECT_NE(zar_serv_memmove_s(buf, 2, "xyz", 4), 0);
  EXPECT_EQ(zar_serv_sprintf_s(buf, sizeof buf, "%d-%s", 12, "ab"), 5);
  EXPECT_STREQ(buf, "12-ab");
  EXPECT_EQ(zar_serv_sprintf_s(buf, sizeof buf, "%s", "too long"), -1);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(zar_serv_sprintf_char_s(buf, sizeof buf, "<%c>", 'q'), 3);
  EXPECT_STREQ(buf, "<q>");

  // snprintf_s writes at most `count` characters and always terminates.
  char line[300];
  std::string long_text(400, 'x');
  EXPECT_EQ(zar_serv_snprintf_s(line, 300, 299, "%s", long_text.c_str()), -1);
  EXPECT_EQ(std::strlen(line), 299u);
  EXPECT_EQ(zar_serv_snprintf_s(line, 300, 4, "%s", "abcdef"), -1);
  EXPECT_STREQ(line, "abcd");
  EXPECT_EQ(zar_serv_snprintf_s(line, 300, 299, "%s(%d)", "DGEMM", 7), 8);
  EXPECT_STREQ(line, "DGEMM(7)");
}

TEST(Messages, KnownAndUnknown) {
  EXPECT_GT(std::strlen(zar_serv_get_msg(1, 0)), 0u);
  EXPECT_STREQ(zar_serv_get_msg(-1, 0), "");
  EXPECT_STREQ(zar_serv_get_msg(100000, 0), "");
  // every trigonometric-transform text exists and is one line
  for (int id = 396; id <= 487; ++id) {
    const std::string m = zar_serv_get_msg(id, 1, "X");
    EXPECT_FALSE(m.empty()) << id;
    EXPECT_EQ(m.find('\n'), std::string::npos) << id;
  }
  // arguments are put in where the text asks for them
  EXPECT_NE(std::string(zar_serv_get_msg(453, 1, "17")).find("17"), std::string::npos);
  EXPECT_NE(std::string(zar_serv_get_msg(408, 1, "some.log")).find("some.log"), std::string::npos);
}

TEST(Xerbla, DefaultPrintsTheCustomaryLineAndReturns) {
  testing::internal::CaptureStderr();
  const int info = 8;
  zar_serv_xerbla("DGEMM ", &info, 6);
  const int info2 = 13;
  zar_serv_xerbla("ZHER2K", &info2, 6);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            " ** On entry to DGEMM parameter number  8 had an illegal value\n"
            " ** On entry to ZHER2K parameter number 13 had an illegal value\n");
}

struct share_log {
  int nt;
  std::atomic<int> seen[8];
  std::atomic<int> inner_total{0};
  std::atomic<int> wrong_nt{0};
};

TEST(Threads, EveryShareRunsOnce) {
  for (int nt : {1, 2, 3, 5}) {
    share_log log{nt, {}};
    zar_parallel(
        nt,
        [](int t, int n, void* p) {
          auto* log = static_cast<share_log*>(p);
          if (n != log->nt) ++log->wrong_nt;
          ++log->seen[t];
          // A nested region runs every share on this thread.
          zar_parallel(4, [](int, int, void* q) { ++static_cast<share_log*>(q)->inner_total; }, p);
        },
        &log);
    EXPECT_EQ(log.wrong_nt, 0);
    EXPECT_EQ(log.inner_total, 4 * nt);
    for (int t = 0; t < nt; ++t) EXPECT_EQ(log.seen[t], 1) << nt;
  }
  zar_set_num_threads(3);
  EXPECT_EQ(zar_get_max_threads(), 3);
  zar_set_num_threads(0);
  EXPECT_GE(zar_get_max_threads(), 1);
}

}  // namespace
