// Environment variables with bad values: each gives one warning that names
// the variable, the value and the fallback, and the setting keeps its
// default. The settings are read when the core is loaded, so each case
// runs this program again with the variable set and reads back what the
// core took (test EnvProbe.Print, which does nothing otherwise).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "child.h"
#include "zar/control.h"
#include "zar/services.h"

namespace {

TEST(EnvProbe, Print) {
  if (!std::getenv("ZAR_TEST_ENV_PROBE")) GTEST_SKIP() << "run by EnvironmentValues";
  long long r[ZAR_CACHE_RECORD_ENTRIES];
  zar_serv_cache_info(r);
  std::printf("probe cbwr=%d verbose=%d threads=%d cache=%lld fail=%d warnings=%d\n", zar_cbwr_get(),
              *zar_serv_verbose_mode(), zar_get_max_threads(), r[3], zar_fail_allocation(0),
              zar_warning_count());
}

struct probe_output {
  std::string settings, err;
};

std::string read_all(int fd) {
  std::string s;
  char b[1024];
  lseek(fd, 0, SEEK_SET);
  for (ssize_t got; (got = read(fd, b, sizeof b)) > 0;) s.append(b, got);
  close(fd);
  return s;
}

// Runs the probe with ZAR_<var> set to value (var null: nothing set).
probe_output probe(const char* var, const char* value) {
  char out_path[] = "/tmp/zar_env_out_XXXXXX", err_path[] = "/tmp/zar_env_err_XXXXXX";
  const int out = mkstemp(out_path), err = mkstemp(err_path);
  unlink(out_path);
  unlink(err_path);
  const auto r = zar_test::in_child(
      [&] {
        for (const char* v : {"ZAR_CBWR", "ZAR_VERBOSE", "ZAR_NUM_THREADS", "ZAR_CACHE_SIZE", "ZAR_FAIL_ALLOC",
                              "ZAR_ENABLE_INSTRUCTIONS"})
          unsetenv(v);
        setenv("ZAR_TEST_ENV_PROBE", "1", 1);
        if (var) setenv(var, value, 1);
        dup2(out, 1);
        dup2(err, 2);
        execl("/proc/self/exe", "probe", "--gtest_filter=EnvProbe.Print", "--gtest_brief=1", nullptr);
        return 99;
      },
      30);
  EXPECT_TRUE(r.exited && r.status == 0) << (var ? var : "") << "=" << value << ": " << r.describe();
  probe_output o;
  const std::string all = read_all(out);
  const auto at = all.find("probe ");
  if (at != std::string::npos) o.settings = all.substr(at, all.find('\n', at) - at);
  o.err = read_all(err);
  return o;
}

int count(const std::string& s, const std::string& what) {
  int n = 0;
  for (auto at = s.find(what); at != std::string::npos; at = s.find(what, at + 1)) ++n;
  return n;
}

TEST(EnvironmentValues, BadValuesWarnOnceAndKeepTheDefault) {
  if (std::getenv("ZAR_TEST_ENV_PROBE")) GTEST_SKIP();
  const probe_output defaults = probe(nullptr, "");
  ASSERT_NE(defaults.settings, "");
  ASSERT_EQ(count(defaults.err, "zar: warning"), 0) << defaults.err;
  const struct {
    const char* var;
    std::vector<const char*> values;
  } cases[] = {
      {"ZAR_NUM_THREADS", {"", "-2", "0", "abc", "99999999999999999999", "4x", " 4", "+4", "1025"}},
      {"ZAR_CBWR", {"", "-1", "0", "99999999999999999999", "fast", "2 "}},
      {"ZAR_CACHE_SIZE", {"", "-1", "99999999999999999999", "4Q", "17179869184G", "M", "4MM"}},
      {"ZAR_VERBOSE", {"", "2", "yes"}},
      {"ZAR_FAIL_ALLOC", {"", "-1", "x", "99999999999"}},
      {"ZAR_ENABLE_INSTRUCTIONS", {"", "AVX3"}},
  };
  for (const auto& c : cases) {
    for (const char* v : c.values) {
      const probe_output o = probe(c.var, v);
      const std::string what = std::string(c.var) + "=\"" + v + "\"";
      // The probe's own count includes the warning.
      std::string want = defaults.settings;
      want.replace(want.find("warnings=0"), 10, "warnings=1");
      EXPECT_EQ(o.settings, want) << what;
      EXPECT_EQ(count(o.err, "zar: warning"), 1) << what << ": " << o.err;
      EXPECT_NE(o.err.find("ignoring " + what), std::string::npos) << o.err;
      EXPECT_NE(o.err.find("using the default"), std::string::npos) << o.err;
    }
  }
}

TEST(EnvironmentValues, GoodValuesAreTakenSilently) {
  if (std::getenv("ZAR_TEST_ENV_PROBE")) GTEST_SKIP();
  const struct {
    const char* var;
    const char* value;
    const char* shows;
  } cases[] = {
      {"ZAR_NUM_THREADS", "1024", "threads=1024"}, {"ZAR_NUM_THREADS", "3", "threads=3"},
      {"ZAR_CBWR", "auto", "cbwr=2"},              {"ZAR_CBWR", "7", "cbwr=7"},
      {"ZAR_CACHE_SIZE", "4M", "cache=4194304"},   {"ZAR_CACHE_SIZE", "1Gb", "cache=1073741824"},
      {"ZAR_VERBOSE", "1", "verbose=1"},           {"ZAR_FAIL_ALLOC", "0", "fail=0"},
  };
  for (const auto& c : cases) {
    const probe_output o = probe(c.var, c.value);
    EXPECT_NE(o.settings.find(c.shows), std::string::npos) << c.var << "=" << c.value << ": " << o.settings;
    EXPECT_EQ(count(o.err, "zar: warning"), 0) << o.err;
  }
}

}  // namespace
