// Trigonometric transforms through the public calls: every kind against its
// definition in extended precision, round trips, the status protocol and
// where the diagnostics go.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "zar/control.h"
#include "zar/trig.h"

namespace {

const long double pi = 3.141592653589793238462643383279502884L;

// Values each kind holds: n + 1 for sine and cosine, n for the others.
long values(int kind, long n) { return kind <= ZAR_TT_COSINE ? n + 1 : n; }

// The unscaled transforms by their definitions (forward U, backward V).
// Every angle is a multiple m of pi/(4n): cos and sin come from one table of
// cos(pi m/(4n)), m < 8n, computed in long double.
template <class R> std::vector<long double> definition(int kind, bool forward, const std::vector<R>& f, long n) {
  std::vector<long double> table(8 * n);
  for (long m = 0; m < 8 * n; ++m) table[m] = cosl(pi * m / (4.0L * n));
  auto C = [&](long long m) { return table[((m % (8 * n)) + 8 * n) % (8 * n)]; };
  auto S = [&](long long m) { return C(m - 2 * n); };
  std::vector<long double> out(values(kind, n), 0.0L);
  auto sgn = [](long k) { return k % 2 ? -1.0L : 1.0L; };
  for (long long k = 0; k < static_cast<long long>(out.size()); ++k) {
    long double s = 0;
    switch (kind) {
      case ZAR_TT_SINE:
        if (k == 0 || k == n) break;
        for (long long j = 1; j < n; ++j) s += 2 * f[j] * S(4 * j * k);
        break;
      case ZAR_TT_COSINE:
        s = f[0] + sgn(k) * f[n];
        for (long long j = 1; j < n; ++j) s += 2 * f[j] * C(4 * j * k);
        break;
      case ZAR_TT_STAGGERED_COSINE:
        if (forward) {
          for (long long j = 0; j < n; ++j) s += 2 * f[j] * C(2 * k * (2 * j + 1));
        } else {
          s = f[0];
          for (long long m = 1; m < n; ++m) s += 2 * f[m] * C(2 * m * (2 * k + 1));
        }
        break;
      case ZAR_TT_STAGGERED_SINE:
        if (forward) {
          for (long long j = 0; j < n; ++j) s += 2 * f[j] * S(2 * (k + 1) * (2 * j + 1));
        } else {
          s = sgn(k) * f[n - 1];
          for (long long m = 0; m < n - 1; ++m) s += 2 * f[m] * S(2 * (m + 1) * (2 * k + 1));
        }
        break;
      case ZAR_TT_STAGGERED2_COSINE:
        for (long long j = 0; j < n; ++j) s += 2 * f[j] * C((2 * j + 1) * (2 * k + 1));
        break;
      case ZAR_TT_STAGGERED2_SINE:
        for (long long j = 0; j < n; ++j) s += 2 * f[j] * S((2 * j + 1) * (2 * k + 1));
        break;
    }
    out[k] = s;
  }
  return out;
}

template <class R> struct api;
template <> struct api<double> {
  static int init(int n, int kind, int* ipar, double* dpar, int* stat) {
    return zar_d_init_trig_transform(&n, &kind, ipar, dpar, stat);
  }
  static int commit(double* f, zar_dft_descriptor** h, int* ipar, double* dpar, int* stat) {
    return zar_d_commit_trig_transform(f, h, ipar, dpar, stat);
  }
  static int run(bool fwd, double* f, zar_dft_descriptor** h, int* ipar, double* dpar, int* stat) {
    return fwd ? zar_d_forward_trig_transform(f, h, ipar, dpar, stat)
               : zar_d_backward_trig_transform(f, h, ipar, dpar, stat);
  }
};
template <> struct api<float> {
  static int init(int n, int kind, int* ipar, float* dpar, int* stat) {
    return zar_s_init_trig_transform(&n, &kind, ipar, dpar, stat);
  }
  static int commit(float* f, zar_dft_descriptor** h, int* ipar, float* dpar, int* stat) {
    return zar_s_commit_trig_transform(f, h, ipar, dpar, stat);
  }
  static int run(bool fwd, float* f, zar_dft_descriptor** h, int* ipar, float* dpar, int* stat) {
    return fwd ? zar_s_forward_trig_transform(f, h, ipar, dpar, stat)
               : zar_s_backward_trig_transform(f, h, ipar, dpar, stat);
  }
};

// One prepared transform: init and commit done.
template <class R> struct transform {
  long n;
  int kind;
  int ipar[128] = {};
  std::vector<R> dpar;
  zar_dft_descriptor* h = nullptr;
  int stat = 1;
  transform(long n_, int kind_, bool scaled = true) : n(n_), kind(kind_), dpar(5 * n_ / 2 + 2 + 4) {
    api<R>::init(static_cast<int>(n), kind, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0);
    ipar[10] = scaled ? 0 : 1;
    std::vector<R> f(values(kind, n) + 1);
    api<R>::commit(f.data(), &h, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0) << "commit n=" << n << " kind=" << kind;
  }
  ~transform() { zar_free_trig_transform(&h, ipar, &stat); }
  int run(bool forward, std::vector<R>& f) { return api<R>::run(forward, f.data(), &h, ipar, dpar.data(), &stat); }
};

template <class R> std::vector<R> signal(int kind, long n) {
  std::vector<R> f(values(kind, n));
  for (size_t j = 0; j < f.size(); ++j) f[j] = static_cast<R>(std::sin(1.7 * j + 0.3) + 0.25 * std::cos(0.37 * j * j));
  if (kind == ZAR_TT_SINE) f[0] = f[n] = 0;
  return f;
}

double rel_rms(const std::vector<long double>& ref, const std::vector<long double>& got) {
  long double num = 0, den = 0;
  for (size_t i = 0; i < ref.size(); ++i) {
    num += (got[i] - ref[i]) * (got[i] - ref[i]);
    den += ref[i] * ref[i];
  }
  return static_cast<double>(den > 0 ? sqrtl(num / den) : sqrtl(num));
}

// Error bound: the FFT's log-sized error; the kinds whose output comes from
// a running sum (sine, cosine) accumulate it along n.
template <class R> double bound(int kind, long n) {
  const double eps = std::numeric_limits<R>::epsilon();
  const double lg = std::log2(static_cast<double>(n) + 1) + 1;
  const bool running = kind == ZAR_TT_SINE || kind == ZAR_TT_COSINE;
  return eps * (running ? 8 * lg + 0.5 * n : 8 * lg);
}

template <class R> void check_kind(int kind) {
  for (long n : {1L, 2L, 3L, 4L, 5L, 6L, 7L, 8L, 9L, 12L, 15L, 16L, 17L, 31L, 32L, 33L, 63L, 64L, 100L, 127L, 256L, 1000L,
                 1024L, 1025L}) {
    for (bool forward : {true, false}) {
      for (bool scaled : {true, false}) {
        transform<R> t(n, kind, scaled);
        std::vector<R> f = signal<R>(kind, n);
        std::vector<long double> ref = definition<R>(kind, forward, f, n);
        const long double factor = !scaled ? 1.0L : forward ? 1.0L / n : 0.5L;
        for (size_t i = 0; i < ref.size(); ++i) {
          // the sine kind's backward leaves f_0 and f_n alone (both zero)
          ref[i] *= factor;
        }
        ASSERT_EQ(t.run(forward, f), 0);
        EXPECT_EQ(t.stat, 0);
        EXPECT_EQ(t.ipar[6], 0);
        std::vector<long double> got(f.begin(), f.end());
        EXPECT_LE(rel_rms(ref, got), bound<R>(kind, n))
            << "kind " << kind << " n " << n << (forward ? " forward" : " backward") << (scaled ? "" : " unscaled");
      }
    }
    // backward(forward(f)) = f
    transform<R> t(n, kind);
    std::vector<R> f = signal<R>(kind, n), g = f;
    ASSERT_EQ(t.run(true, g), 0);
    ASSERT_EQ(t.run(false, g), 0);
    std::vector<long double> a(f.begin(), f.end()), b(g.begin(), g.end());
    EXPECT_LE(rel_rms(a, b), 2 * bound<R>(kind, n)) << "round trip kind " << kind << " n " << n;
  }
}

TEST(TrigDouble, EveryKindMatchesItsDefinition) {
  for (int kind = 0; kind < 6; ++kind) check_kind<double>(kind);
}
TEST(TrigSingle, EveryKindMatchesItsDefinition) {
  for (int kind = 0; kind < 6; ++kind) check_kind<float>(kind);
}

// ------------------------------------------------------------- protocol
std::string capture(const std::function<void()>& f) {
  testing::internal::CaptureStdout();
  f();
  return testing::internal::GetCapturedStdout();
}

TEST(TrigProtocol, SizeZeroReportsCodeSixAfterInit) {
  int ipar[128] = {}, stat = 1;
  double dpar[8] = {}, f[4] = {1, 2, 3, 4};
  zar_dft_descriptor* h = nullptr;
  int n0 = 0, kind = ZAR_TT_COSINE;
  zar_d_init_trig_transform(&n0, &kind, ipar, dpar, &stat);
  std::string out = capture([&] { EXPECT_EQ(zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat), -10000); });
  EXPECT_EQ(stat, -10000);
  EXPECT_EQ(ipar[6], -10000);
  EXPECT_NE(out.find("size is zero"), std::string::npos) << out;
  // a failure now blocks later calls (code 5), leaving f alone, until reset
  out = capture([&] { EXPECT_EQ(zar_d_backward_trig_transform(f, &h, ipar, dpar, &stat), -10000); });
  EXPECT_NE(out.find("earlier call failed"), std::string::npos) << out;
  EXPECT_EQ(f[0], 1);
  // warnings off: silent
  ipar[6] = 0;
  ipar[1] = 0;
  out = capture([&] { zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat); });
  EXPECT_EQ(out, "");
}

TEST(TrigProtocol, NegativeSizePassesUnscaledAndUntouched) {
  int ipar[128] = {}, stat = 1, n = -4, kind = ZAR_TT_STAGGERED_COSINE;
  float dpar[8] = {}, f[4] = {1, 2, 3, 4};
  zar_dft_descriptor* h = nullptr;
  zar_s_init_trig_transform(&n, &kind, ipar, dpar, &stat);
  EXPECT_EQ(zar_s_forward_trig_transform(f, &h, ipar, dpar, &stat), 0);
  EXPECT_EQ(f[3], 4);
}

TEST(TrigProtocol, UnknownKindGivesMinus100AndCodeThree) {
  int ipar[128] = {}, stat = 1, n = 8, kind = 6;
  double dpar[32] = {}, f[9] = {};
  zar_dft_descriptor* h = nullptr;
  zar_d_init_trig_transform(&n, &kind, ipar, dpar, &stat);
  std::string out = capture([&] { EXPECT_EQ(zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat), -100); });
  EXPECT_EQ(ipar[6], -100);
  EXPECT_NE(out.find("ipar[5] = 6"), std::string::npos) << out;
  // commit refuses the kind the same way
  ipar[6] = 0;
  capture([&] { zar_d_commit_trig_transform(f, &h, ipar, dpar, &stat); });
  EXPECT_EQ(stat, -100);
  EXPECT_EQ(h, nullptr);
}

TEST(TrigProtocol, SineBackwardOfSizeOneIsUnscaled) {
  transform<double> t(1, ZAR_TT_SINE);
  std::vector<double> f = {0, 0};
  EXPECT_EQ(t.run(false, f), 0);
  EXPECT_EQ(f[0], 0);
}

TEST(TrigProtocol, CommitChecksWhatInitLeft) {
  int n = 16, kind = ZAR_TT_SINE, stat = 0;
  std::vector<double> f(n + 1), dpar(5 * n / 2 + 2);
  zar_dft_descriptor* h = nullptr;
  for (int code : {300, 308, 304}) {
    int ipar[128] = {};
    zar_d_init_trig_transform(&n, &kind, ipar, dpar.data(), &stat);
    if (code == 300) dpar[0] *= 2;
    if (code == 308) ipar[9] = 3;
    if (code == 304) ipar[7] = 0;
    std::string out = capture([&] { zar_d_commit_trig_transform(f.data(), &h, ipar, dpar.data(), &stat); });
    EXPECT_EQ(stat, -10000) << code;
    EXPECT_NE(out.find("ERROR"), std::string::npos) << code << out;
    if (code == 308) EXPECT_NE(out.find("ipar[9] = 3"), std::string::npos) << out;
    // a transform with n changed after commit is refused, not run out of bounds
    if (code == 300) {
      ipar[6] = 0;
      dpar[0] /= 2;
      zar_d_commit_trig_transform(f.data(), &h, ipar, dpar.data(), &stat);
      ASSERT_EQ(stat, 0);
      ipar[0] = 64;
      capture([&] { EXPECT_EQ(zar_d_forward_trig_transform(f.data(), &h, ipar, dpar.data(), &stat), -10000); });
      zar_free_trig_transform(&h, ipar, &stat);
      EXPECT_EQ(stat, 0);
      EXPECT_EQ(h, nullptr);
    }
  }
}

TEST(TrigProtocol, NullArgumentsAreReportedNotFollowed) {
  int n = 8, kind = ZAR_TT_COSINE, stat = 0, ipar[128] = {};
  double dpar[32] = {}, f[9] = {};
  zar_dft_descriptor* h = nullptr;
  EXPECT_NE(zar_d_init_trig_transform(nullptr, &kind, ipar, dpar, &stat), 0);
  EXPECT_NE(zar_d_init_trig_transform(&n, &kind, nullptr, dpar, &stat), 0);
  zar_d_init_trig_transform(&n, &kind, ipar, dpar, &stat);
  ipar[2] = 0;  // errors silent
  ipar[1] = 0;
  zar_d_commit_trig_transform(nullptr, &h, ipar, dpar, &stat);
  EXPECT_EQ(stat, -10000);
  ipar[6] = 0;
  zar_d_commit_trig_transform(f, nullptr, ipar, dpar, &stat);
  EXPECT_EQ(stat, -10000);
  ipar[6] = 0;
  EXPECT_EQ(zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat), -10000);  // not committed
  ipar[6] = 0;
  EXPECT_EQ(zar_d_forward_trig_transform(nullptr, &h, ipar, dpar, &stat), -10000);
  ipar[6] = 0;
  EXPECT_EQ(zar_d_forward_trig_transform(f, &h, ipar, nullptr, &stat), -10000);
  EXPECT_EQ(zar_free_trig_transform(&h, ipar, &stat), 0);
}

TEST(TrigDiagnostics, NegativeSwitchAppendsToTheLogFile) {
  char dir[] = "/tmp/zar_trig_XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  ASSERT_EQ(chdir(dir), 0);
  int n = 0, kind = ZAR_TT_SINE, stat = 0, ipar[128] = {};
  double dpar[4] = {}, f[2] = {};
  zar_dft_descriptor* h = nullptr;
  zar_d_init_trig_transform(&n, &kind, ipar, dpar, &stat);
  ipar[1] = -1;
  std::string out = capture([&] { zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat); });
  ipar[6] = 0;
  capture([&] { zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat); });
  std::ifstream log("ZAR_Trig_Transforms_Log.txt");
  std::stringstream text;
  text << log.rdbuf();
  EXPECT_EQ(out, "");
  const std::string s = text.str();
  const size_t first = s.find("size is zero");
  ASSERT_NE(first, std::string::npos) << s;
  EXPECT_NE(s.find("size is zero", first + 1), std::string::npos) << "appended, not replaced";
  unlink("ZAR_Trig_Transforms_Log.txt");
  ASSERT_EQ(chdir(old), 0);
  rmdir(dir);
}

}  // namespace

// Without a work area the staggered kinds reorder in place and the
// staggered-2 kinds take the recurrence: the same results, one warning.
TEST(TrigMemory, RefusedWorkAreaGivesTheSameTransform) {
  for (int kind = ZAR_TT_STAGGERED_COSINE; kind <= ZAR_TT_STAGGERED2_SINE; ++kind) {
    for (long n : {1L, 2L, 7L, 16L, 33L, 100L}) {
      for (bool forward : {true, false}) {
        transform<double> t(n, kind);
        std::vector<double> a = signal<double>(kind, n), b = a;
        ASSERT_EQ(t.run(forward, a), 0);
        zar_reset_warning_count();
        zar_fail_allocation(1);
        ASSERT_EQ(t.run(forward, b), 0);
        zar_fail_allocation(0);
        EXPECT_EQ(zar_warning_count(), 1) << kind << " " << n;
        std::vector<long double> x(a.begin(), a.end()), y(b.begin(), b.end());
        EXPECT_LE(rel_rms(x, y), 4 * n * std::numeric_limits<double>::epsilon()) << kind << " " << n;
      }
    }
  }
}
