// The default cblas_xerbla against Debian's reference CBLAS: for a bad
// argument of every Level-2 and Level-3 CBLAS routine, in both layouts, the
// message on standard error and the exit status of the program are the
// reference's, except where the reference reports a position that is not
// the bad argument's (listed in the README, "Differences from the reference
// BLAS"): there the caller's true position is reported.
//
// Each call runs in a child process: the reference in a child that loaded
// it by path, ours in a child of this program, whose default cblas_xerbla
// stops the program. A routine the core does not export yet is checked
// through cblas_xerbla itself, called as the core's front ends call it.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "child.h"
#include "cblas.h"

extern "C" int RowMajorStrg;

namespace {

constexpr int kRow = CblasRowMajor, kCol = CblasColMajor;
constexpr int N_ = CblasNoTrans, U_ = CblasUpper, D_ = CblasNonUnit, L_ = CblasLeft;

double buf[4][512];
double cone[2] = {1, 0};

// Argument values by position (1 = the layout).
using args = std::vector<int>;
using caller = void (*)(void* fn, const args& v);

struct routine {
  const char* name;
  args legal;  // index 0 unused
  caller call;
  // positions tested, with the illegal value put there
  std::vector<std::pair<int, int>> bad;
};

#define FN(...) reinterpret_cast<void (*)(__VA_ARGS__)>(f)
const double* A = buf[0];
double* X = buf[1];
double* Y = buf[2];
double* C = buf[3];

// clang-format off
const std::vector<routine> routines = {
  // ---- Level 2, real
  {"cblas_dgemv", {0, 0, N_, 2, 3, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], 1.0, A, v[7], X, v[9], 1.0, Y, v[12]); },
   {{2, 0}, {3, -1}, {4, -1}, {7, 1}, {9, 0}, {12, 0}}},
  {"cblas_dgbmv", {0, 0, N_, 2, 3, 1, 1, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], 1.0, A, v[9], X, v[11], 1.0, Y, v[14]); },
   {{3, -1}, {4, -1}, {5, -1}, {6, -1}, {9, 2}, {11, 0}, {14, 0}}},
  {"cblas_dtrmv", {0, 0, U_, N_, D_, 2, 0, 4, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], A, v[7], X, v[9]); },
   {{2, 0}, {3, 0}, {4, 0}, {5, -1}, {7, 1}, {9, 0}}},
  {"cblas_dtrsv", {0, 0, U_, N_, D_, 2, 0, 4, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], A, v[7], X, v[9]); },
   {{5, -1}, {7, 1}, {9, 0}}},
  {"cblas_dtbmv", {0, 0, U_, N_, D_, 2, 1, 0, 4, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], A, v[8], X, v[10]); },
   {{5, -1}, {6, -1}, {8, 1}, {10, 0}}},
  {"cblas_dtbsv", {0, 0, U_, N_, D_, 2, 1, 0, 4, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], A, v[8], X, v[10]); },
   {{5, -1}, {6, -1}, {8, 1}, {10, 0}}},
  {"cblas_dtpmv", {0, 0, U_, N_, D_, 2, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, const double*, double*, int)(v[1], v[2], v[3], v[4], v[5], A, X, v[8]); },
   {{5, -1}, {8, 0}}},
  {"cblas_dtpsv", {0, 0, U_, N_, D_, 2, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, int, const double*, double*, int)(v[1], v[2], v[3], v[4], v[5], A, X, v[8]); },
   {{5, -1}, {8, 0}}},
  {"cblas_dsymv", {0, 0, U_, 2, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], 1.0, A, v[6], X, v[8], 1.0, Y, v[11]); },
   {{2, 0}, {3, -1}, {6, 1}, {8, 0}, {11, 0}}},
  {"cblas_dsbmv", {0, 0, U_, 2, 1, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], 1.0, A, v[7], X, v[9], 1.0, Y, v[12]); },
   {{3, -1}, {4, -1}, {7, 1}, {9, 0}, {12, 0}}},
  {"cblas_dspmv", {0, 0, U_, 2, 0, 0, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, const double*, int, double, double*, int)(v[1], v[2], v[3], 1.0, A, X, v[7], 1.0, Y, v[10]); },
   {{3, -1}, {7, 0}, {10, 0}}},
  {"cblas_dger", {0, 0, 2, 3, 0, 0, 1, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, const double*, int, double*, int)(v[1], v[2], v[3], 1.0, X, v[6], Y, v[8], C, v[10]); },
   {{2, -1}, {3, -1}, {6, 0}, {8, 0}, {10, 1}}},
  {"cblas_dsyr", {0, 0, U_, 2, 0, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, double*, int)(v[1], v[2], v[3], 1.0, X, v[6], C, v[8]); },
   {{3, -1}, {6, 0}, {8, 1}}},
  {"cblas_dspr", {0, 0, U_, 2, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, double*)(v[1], v[2], v[3], 1.0, X, v[6], C); },
   {{3, -1}, {6, 0}}},
  {"cblas_dsyr2", {0, 0, U_, 2, 0, 0, 1, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, const double*, int, double*, int)(v[1], v[2], v[3], 1.0, X, v[6], Y, v[8], C, v[10]); },
   {{3, -1}, {6, 0}, {8, 0}, {10, 1}}},
  {"cblas_dspr2", {0, 0, U_, 2, 0, 0, 1, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, double, const double*, int, const double*, int, double*)(v[1], v[2], v[3], 1.0, X, v[6], Y, v[8], C); },
   {{3, -1}, {6, 0}, {8, 0}}},
  // ---- Level 2, complex (complex scalars by address)
  {"cblas_zgemv", {0, 0, N_, 2, 3, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, const void*, const void*, int, const void*, int, const void*, void*, int)(v[1], v[2], v[3], v[4], cone, A, v[7], X, v[9], cone, Y, v[12]); },
   {{3, -1}, {4, -1}, {7, 1}, {9, 0}, {12, 0}}},
  {"cblas_zhemv", {0, 0, U_, 2, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, int, const void*, int, const void*, void*, int)(v[1], v[2], v[3], cone, A, v[6], X, v[8], cone, Y, v[11]); },
   {{2, 0}, {3, -1}, {6, 1}, {8, 0}, {11, 0}}},
  {"cblas_zhbmv", {0, 0, U_, 2, 1, 0, 0, 4, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, int, const void*, const void*, int, const void*, int, const void*, void*, int)(v[1], v[2], v[3], v[4], cone, A, v[7], X, v[9], cone, Y, v[12]); },
   {{3, -1}, {4, -1}, {7, 1}, {9, 0}, {12, 0}}},
  {"cblas_zhpmv", {0, 0, U_, 2, 0, 0, 0, 1, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, const void*, int, const void*, void*, int)(v[1], v[2], v[3], cone, A, X, v[7], cone, Y, v[10]); },
   {{3, -1}, {7, 0}, {10, 0}}},
  {"cblas_zgeru", {0, 0, 2, 3, 0, 0, 1, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, int, const void*, int, void*, int)(v[1], v[2], v[3], cone, X, v[6], Y, v[8], C, v[10]); },
   {{2, -1}, {3, -1}, {6, 0}, {8, 0}, {10, 1}}},
  {"cblas_zgerc", {0, 0, 2, 3, 0, 0, 1, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, int, const void*, int, void*, int)(v[1], v[2], v[3], cone, X, v[6], Y, v[8], C, v[10]); },
   {{2, -1}, {3, -1}, {6, 0}, {8, 0}, {10, 1}}},
  {"cblas_zher", {0, 0, U_, 2, 0, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, double, const void*, int, void*, int)(v[1], v[2], v[3], 1.0, X, v[6], C, v[8]); },
   {{3, -1}, {6, 0}, {8, 1}}},
  {"cblas_zhpr", {0, 0, U_, 2, 0, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, double, const void*, int, void*)(v[1], v[2], v[3], 1.0, X, v[6], C); },
   {{3, -1}, {6, 0}}},
  {"cblas_zher2", {0, 0, U_, 2, 0, 0, 1, 0, 1, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, int, const void*, int, void*, int)(v[1], v[2], v[3], cone, X, v[6], Y, v[8], C, v[10]); },
   {{3, -1}, {6, 0}, {8, 0}, {10, 1}}},
  {"cblas_zhpr2", {0, 0, U_, 2, 0, 0, 1, 0, 1},
   [](void* f, const args& v) { FN(int, int, int, const void*, const void*, int, const void*, int, void*)(v[1], v[2], v[3], cone, X, v[6], Y, v[8], C); },
   {{3, -1}, {6, 0}, {8, 0}}},
  // ---- Level 3
  {"cblas_dgemm", {0, 0, N_, N_, 2, 3, 2, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], 1.0, A, v[9], X, v[11], 1.0, C, v[14]); },
   {{2, 0}, {3, 0}, {4, -1}, {5, -1}, {6, -1}, {9, 1}, {11, 1}, {14, 1}}},
  {"cblas_zgemm", {0, 0, N_, N_, 2, 3, 2, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, const void*, const void*, int, const void*, int, const void*, void*, int)(v[1], v[2], v[3], v[4], v[5], v[6], cone, A, v[9], X, v[11], cone, C, v[14]); },
   {{4, -1}, {5, -1}, {9, 1}, {11, 1}}},
  {"cblas_dsymm", {0, 0, L_, U_, 2, 3, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], v[5], 1.0, A, v[8], X, v[10], 1.0, C, v[13]); },
   {{4, -1}, {5, -1}, {8, 1}, {10, 1}, {13, 1}}},
  {"cblas_zhemm", {0, 0, L_, U_, 2, 3, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, const void*, const void*, int, const void*, int, const void*, void*, int)(v[1], v[2], v[3], v[4], v[5], cone, A, v[8], X, v[10], cone, C, v[13]); },
   {{4, -1}, {5, -1}, {8, 1}, {10, 1}, {13, 1}}},
  {"cblas_dsyrk", {0, 0, U_, N_, 2, 3, 0, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, double, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], v[5], 1.0, A, v[8], 1.0, C, v[11]); },
   {{2, 0}, {3, 0}, {4, -1}, {5, -1}, {8, 1}, {11, 1}}},
  {"cblas_zherk", {0, 0, U_, N_, 2, 3, 0, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, double, const void*, int, double, void*, int)(v[1], v[2], v[3], v[4], v[5], 1.0, A, v[8], 1.0, C, v[11]); },
   {{2, 0}, {3, 0}, {4, -1}, {5, -1}, {8, 1}, {11, 1}}},
  {"cblas_dsyr2k", {0, 0, U_, N_, 2, 3, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, double, const double*, int, const double*, int, double, double*, int)(v[1], v[2], v[3], v[4], v[5], 1.0, A, v[8], X, v[10], 1.0, C, v[13]); },
   {{2, 0}, {3, 0}, {4, -1}, {5, -1}, {8, 1}, {10, 1}, {13, 1}}},
  {"cblas_zher2k", {0, 0, U_, N_, 2, 3, 0, 0, 4, 0, 4, 0, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, const void*, const void*, int, const void*, int, double, void*, int)(v[1], v[2], v[3], v[4], v[5], cone, A, v[8], X, v[10], 1.0, C, v[13]); },
   {{2, 0}, {3, 0}, {4, -1}, {5, -1}, {8, 1}, {10, 1}, {13, 1}}},
  {"cblas_dtrmm", {0, 0, L_, U_, N_, D_, 2, 3, 0, 0, 4, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, int, double, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], v[7], 1.0, A, v[10], C, v[12]); },
   {{6, -1}, {7, -1}, {10, 1}, {12, 1}}},
  {"cblas_dtrsm", {0, 0, L_, U_, N_, D_, 2, 3, 0, 0, 4, 0, 4},
   [](void* f, const args& v) { FN(int, int, int, int, int, int, int, double, const double*, int, double*, int)(v[1], v[2], v[3], v[4], v[5], v[6], v[7], 1.0, A, v[10], C, v[12]); },
   {{6, -1}, {7, -1}, {10, 1}, {12, 1}}},
};
// clang-format on

// Where the reference CBLAS does not report the bad argument at its
// position (see the README): routine, layout, position, and what the
// reference prints (empty: nothing, and the program goes on).
struct known_defect {
  const char* name;
  int layout, pos;
  const char* reference_err;
};
const std::vector<known_defect> defects = {
    // row-major: a bad TransB is reported at TransA's position
    {"cblas_dgemm", kRow, 3, "Parameter 2 to routine cblas_dgemm was incorrect\nIllegal TransB setting, 0\n"},
    // row-major: the vector copied conjugated is read with its increment
    // unchecked, and the copy's unit increment is what gets checked
    {"cblas_zhemv", kRow, 8, ""}, {"cblas_zhbmv", kRow, 9, ""}, {"cblas_zhpmv", kRow, 7, ""},
    {"cblas_zher", kRow, 6, ""}, {"cblas_zhpr", kRow, 6, ""},
    {"cblas_zher2", kRow, 6, ""}, {"cblas_zher2", kRow, 8, ""},
    {"cblas_zhpr2", kRow, 6, ""}, {"cblas_zhpr2", kRow, 8, ""}, {"cblas_zgerc", kRow, 8, ""},
    // row-major gerc runs geru and reports under that name
    {"cblas_zgerc", kRow, 2, "Parameter 2 to routine cblas_zgeru  was incorrect\n"},
    {"cblas_zgerc", kRow, 3, "Parameter 3 to routine cblas_zgeru  was incorrect\n"},
    {"cblas_zgerc", kRow, 6, "Parameter 6 to routine cblas_zgeru  was incorrect\n"},
    {"cblas_zgerc", kRow, 10, "Parameter 10 to routine cblas_zgeru  was incorrect\n"},
    // row-major syrk, syr2k, herk (not her2k): a bad Uplo is reported at
    // Trans's position
    {"cblas_dsyrk", kRow, 2, "Parameter 3 to routine cblas_dsyrk was incorrect\nIllegal Uplo setting, 0\n"},
    {"cblas_zherk", kRow, 2, "Parameter 3 to routine cblas_zherk was incorrect\nIllegal Uplo setting, 0\n"},
    {"cblas_dsyr2k", kRow, 2, "Parameter 3 to routine cblas_dsyr2k was incorrect\nIllegal Uplo setting, 0\n"},
};

struct outcome {
  std::string err;
  zar_test::child_result r;
};

// Runs call() in a child with standard error captured in a file.
outcome capture(const std::function<void()>& call) {
  char path[] = "/tmp/zar_cblas_err_XXXXXX";
  const int fd = mkstemp(path);
  outcome o;
  o.r = zar_test::in_child(
      [&] {
        dup2(fd, 2);
        call();
        return 0;  // returned instead of stopping
      },
      20);
  std::string s;
  char b[512];
  ssize_t got;
  lseek(fd, 0, SEEK_SET);
  while ((got = read(fd, b, sizeof b)) > 0) s.append(b, got);
  close(fd);
  unlink(path);
  o.err = s;
  return o;
}

// The position our front ends pass: the argument's position in the
// column-major call the row-major one becomes, plus one.
int front_end_position(const std::string& name, int layout, int pos) {
  if (layout == kCol) return pos;
  const std::string base = name.substr(7);
  auto swap = [&](int a, int b) { return pos == a ? b : pos == b ? a : pos; };
  if (base == "gemm") return pos == 9 || pos == 11 ? swap(9, 11) : swap(4, 5);
  if (base == "symm" || base == "hemm") return swap(4, 5);
  if (base == "trmm" || base == "trsm") return swap(6, 7);
  return pos;
}

TEST(CblasErrors, MessagesAndStatusMatchTheReference) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the reference is loaded with deep binding, which the address sanitizer refuses";
#endif
  void* self = dlopen(nullptr, RTLD_NOW);
  int compared = 0, through_xerbla = 0, differences = 0;
  for (const routine& r : routines) {
    for (const auto& [pos, value] : r.bad) {
      for (int layout : {kRow, kCol}) {
        args v = r.legal;
        v[1] = layout;
        v[pos] = value;
        const std::string what = std::string(r.name) + (layout == kRow ? " row-major" : " column-major") +
                                 ", argument " + std::to_string(pos);
        const outcome ref = capture([&] {
          void* h = dlopen("/usr/lib/i386-linux-gnu/blas/libblas.so.3", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
          if (!h) _exit(90);
          void* f = dlsym(h, r.name);
          if (!f) _exit(91);
          r.call(f, v);
        });
        if (ref.r.exited && (ref.r.status == 90 || ref.r.status == 91)) {
          ADD_FAILURE() << "reference BLAS or " << r.name << " missing";
          return;
        }
        void* ours_fn = dlsym(self, r.name);
        const outcome ours = capture([&] {
          if (ours_fn) return r.call(ours_fn, v);
          RowMajorStrg = layout == kRow;
          cblas_xerbla(front_end_position(r.name, layout, pos), r.name, "");
        });
        if (!ours_fn) ++through_xerbla;
        ++compared;
        EXPECT_TRUE(ours.r.exited && ours.r.status == 255) << what << ": " << ours.r.describe();
        const known_defect* d = nullptr;
        for (const auto& k : defects)
          if (r.name == std::string(k.name) && k.layout == layout && k.pos == pos) d = &k;
        if (!d) {
          EXPECT_TRUE(ref.r.exited && ref.r.status == 255) << what << ": reference " << ref.r.describe();
          EXPECT_EQ(ours.err, ref.err) << what;
          continue;
        }
        // A listed difference: the reference does what is recorded; we
        // name the bad argument at its position.
        ++differences;
        EXPECT_EQ(ref.err, d->reference_err) << what;
        EXPECT_TRUE(ref.r.exited && ref.r.status == (*d->reference_err ? 255 : 0)) << what << ": reference "
                                                                                   << ref.r.describe();
        EXPECT_EQ(ours.err.rfind("Parameter " + std::to_string(pos) + " to routine " + r.name, 0), 0u)
            << what << ": " << ours.err;
      }
    }
  }
  EXPECT_GT(compared, 200);
  RecordProperty("compared", compared);
  RecordProperty("through_cblas_xerbla", through_xerbla);
  RecordProperty("listed_differences", differences);
}

}  // namespace
