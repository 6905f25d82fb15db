// Shared helpers of the FFT descriptor tests: a direct DFT in long double,
// deterministic data, and capture of the verbose output.
#pragma once
#include <unistd.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <string>
#include <vector>

#include "zar/control.h"
#include "zar/dft.h"
#include "zar/dfti.h"

namespace dft_test {

using cld = std::complex<long double>;

// y[k] = scale * sum_j x[j] exp(sign 2 pi i jk/n)
inline std::vector<cld> direct(const std::vector<cld>& x, int sign, long double scale = 1) {
  const size_t n = x.size();
  std::vector<cld> y(n);
  const long double pi = 3.14159265358979323846264338327950288L;
  for (size_t k = 0; k < n; ++k) {
    cld s = 0;
    for (size_t j = 0; j < n; ++j) {
      const long double a = sign * 2 * pi * static_cast<long double>((j * k) % n) / n;
      s += x[j] * cld(std::cos(a), std::sin(a));
    }
    y[k] = scale * s;
  }
  return y;
}

inline double value(long i, int salt = 0) { return std::sin(0.7 * i + 0.3 * salt) + 0.25 * std::cos(1.3 * i * i + salt); }

// Captures what is written on standard output while fn runs.
template <class F> std::string capture_stdout(F fn) {
  std::fflush(stdout);
  char name[] = "/tmp/zar_dft_verbose_XXXXXX";
  const int fd = mkstemp(name);
  const int saved = dup(1);
  dup2(fd, 1);
  fn();
  std::fflush(stdout);
  dup2(saved, 1);
  close(saved);
  std::string text;
  lseek(fd, 0, SEEK_SET);
  char buf[4096];
  for (ssize_t got; (got = read(fd, buf, sizeof buf)) > 0;) text.append(buf, static_cast<size_t>(got));
  close(fd);
  unlink(name);
  return text;
}

}  // namespace dft_test
