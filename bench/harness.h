// Benchmark harness: the libraries compared side by side in one run, timing
// by the best of several repetitions (warm caches), and table printing.
#pragma once
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// A BLAS library: zar (through its core) or a peer loaded by path.
struct library {
  std::string name;
  void* handle = nullptr;
  template <class F> F sym(const char* s) const { return handle ? reinterpret_cast<F>(dlsym(handle, s)) : nullptr; }
};

// zar first, then the peers that are installed: OpenBLAS (serial) and the
// reference BLAS, both for i386.
const std::vector<library>& libraries();

// Best time of a call in seconds: repeats until min_total seconds have
// passed (and at least min_reps times) and returns the fastest repetition.
// `before`, when given, runs untimed ahead of every repetition (to restore
// operands the call overwrites).
double best_seconds(const std::function<void()>& f, double min_total = 0.25, int min_reps = 3,
                    const std::function<void()>& before = nullptr);

// Whether the run is the short one of `make demo`.
bool quick();

// Fixed-width table: a header line, then rows of cells.
class table {
 public:
  table(std::string title, std::vector<std::string> columns);
  void row(const std::vector<std::string>& cells);
  ~table();

 private:
  std::vector<size_t> widths_;
};
std::string fmt(const char* format, double v);

// Families register their benchmarks at start-up.
struct registrar {
  registrar(const char* family, int order, std::function<void()> run);
};

}  // namespace bench
