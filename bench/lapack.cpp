// LAPACK end to end: dgesv (one right-hand side) and dpotrf at n = 2000
// through Debian's reference liblapack.so.3 running on zar, against
// OpenBLAS for i386 with its own LAPACK. Each configuration runs in a child
// process (zar-lapack-timer) so that exactly one BLAS is in it: the
// reference LAPACK finds zar's libblas.so.3 through LD_LIBRARY_PATH; the
// OpenBLAS LAPACK brings its own. The ratio is OpenBLAS's time over zar's.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "harness.h"
#include "zar/control.h"

namespace {

const char* const reference_lapack = "/usr/lib/i386-linux-gnu/lapack/liblapack.so.3";
const char* const openblas_lapack = "/usr/lib/i386-linux-gnu/openblas-serial/liblapack.so.3";

std::string directory_of(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string own_directory() {
  char buf[PATH_MAX];
  const ssize_t len = readlink("/proc/self/exe", buf, sizeof buf - 1);
  return len > 0 ? directory_of(std::string(buf, static_cast<size_t>(len))) : ".";
}

struct timing {
  double seconds = -1;
  std::string note;  // the BLAS that answered, or why there is no time
};

// Runs the timer with the given environment prefix; parses its one line.
timing run_timer(const std::string& env, const std::string& lapack, const char* driver, int n) {
  const std::string cmd = "env " + env + " '" + own_directory() + "/zar-lapack-timer' '" + lapack + "' " + driver +
                          " " + std::to_string(n) + " 3 2>&1";
  timing t;
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return t;
  char line[4096] = {0};
  if (!std::fgets(line, sizeof line, p)) line[0] = 0;
  pclose(p);
  std::string s(line);
  while (!s.empty() && s.back() == '\n') s.pop_back();
  double secs = 0, residual = 0;
  char blas[1024] = {0};
  if (std::sscanf(s.c_str(), "seconds=%lf residual=%lf blas=%1023s", &secs, &residual, blas) == 3) {
    t.seconds = secs;
    t.note = blas;
    if (residual > 1e-6) t.note += " (residual " + bench::fmt("%.2g", residual) + "!)";
  } else {
    t.note = s.empty() ? "no output" : s;
  }
  return t;
}

void run() {
  const int n = bench::quick() ? 500 : 2000;
  const std::string zar_lib = directory_of(zar_core_path());
  const std::string ref_dir = directory_of(reference_lapack);
  bench::table tab("LAPACK end to end, n = " + std::to_string(n) +
                       ": seconds; ratio = OpenBLAS time / zar time (above 1: zar faster)",
                   {"driver", "zar 1T", "zar 2T", "OpenBLAS", "ratio 1T", "ratio 2T"});
  std::vector<std::string> notes;
  for (const char* driver : {"dgesv", "dpotrf"}) {
    timing zar[3];
    for (int t = 1; t <= 2; ++t) {
      zar[t] = run_timer("LD_LIBRARY_PATH='" + zar_lib + ":" + ref_dir + "' ZAR_NUM_THREADS=" + std::to_string(t),
                         reference_lapack, driver, n);
    }
    const timing peer = run_timer("", openblas_lapack, driver, n);
    auto secs = [](const timing& t) { return t.seconds > 0 ? bench::fmt("%.3f", t.seconds) : std::string("-"); };
    auto ratio = [&](const timing& z) {
      return z.seconds > 0 && peer.seconds > 0 ? bench::fmt("%.2fx", peer.seconds / z.seconds) : std::string("-");
    };
    tab.row({driver, secs(zar[1]), secs(zar[2]), secs(peer), ratio(zar[1]), ratio(zar[2])});
    notes.push_back(std::string(driver) + " zar: " + zar[1].note);
    notes.push_back(std::string(driver) + " OpenBLAS: " + peer.note);
  }
  for (const auto& s : notes) std::printf("  %s\n", s.c_str());
}

const bench::registrar reg("lapack", 50, run);

}  // namespace
