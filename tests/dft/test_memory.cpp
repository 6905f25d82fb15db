// Descriptor memory: the size query and init in caller memory, the
// process-wide choice of arena or core memory (each case in a fresh child
// process), and allocation failure at every allocation of create, commit
// and copy.
#include <gtest/gtest.h>

#include <fcntl.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "dft_test.h"
#include "tests/hardening/child.h"

using namespace dft_test;

namespace {

// Exit codes of the children: 0 passed, otherwise the failing step.
#define CHILD_CHECK(cond, code) \
  do {                          \
    if (!(cond)) return code;   \
  } while (0)

// get_size, then init in an arena of exactly the reported sizes, commit,
// compute: every byte of the descriptor lies in the arena.
int arena_round_trip(long n, bool split) {
  size_t s0 = 0, s1 = 0, s2 = 0;
  const int st = split ? zar_dft_avx_dfti_get_size_dcsp1d(n, 1.0, 1.0, 1, &s0, &s1, &s2)
                       : zar_dft_avx_dfti_get_size_dc1d(n, 1.0, 1.0, 1, &s0, &s1, &s2);
  CHILD_CHECK(st == 0, 10);
  CHILD_CHECK(s0 >= sizeof(zar_dfti_desc) && s1 > 0, 11);
  const size_t total = s0 + s1 + s2;
  char* arena = static_cast<char*>(std::aligned_alloc(64, (total + 63) / 64 * 64));
  zar_dfti_desc* d = nullptr;
  CHILD_CHECK(zar_dft_avx_dfti_init_dc1d(&d, n, 1, arena, total) == 0, 12);
  CHILD_CHECK(reinterpret_cast<char*>(d) == arena, 13);
  CHILD_CHECK(d->count == 2 && d->status == 31, 14);
  if (split) CHILD_CHECK(zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, (long)ZAR_DFT_REAL_REAL) == 0, 15);
  CHILD_CHECK(zar_dft_commit(d) == 0, 16);
  CHILD_CHECK(d->mem->arena[0].cursor == reinterpret_cast<uintptr_t>(arena) + total, 17);  // used exactly
  std::vector<double> x(2 * n), y(2 * n);
  for (long j = 0; j < 2 * n; ++j) x[j] = value(j);
  std::vector<cld> in(n);
  for (long j = 0; j < n; ++j) in[j] = split ? cld(x[j], x[n + j]) : cld(x[2 * j], x[2 * j + 1]);
  const long cst = split ? zar_dft_compute_forward(d, x.data(), x.data() + n) : zar_dft_compute_forward(d, x.data());
  CHILD_CHECK(cst == 0, 18);
  const auto ref = direct(in, -1);
  for (long k = 0; k < n; ++k) {
    const double re = split ? x[k] : x[2 * k], im = split ? x[n + k] : x[2 * k + 1];
    CHILD_CHECK(std::abs(re - (double)ref[k].real()) < 1e-9 && std::abs(im - (double)ref[k].imag()) < 1e-9, 19);
  }
  // One byte less does not fit: init or commit reports memory, no overrun.
  zar_dfti_desc* e = nullptr;
  char* small = static_cast<char*>(std::aligned_alloc(64, total));
  const int ist = zar_dft_avx_dfti_init_dc1d(&e, n, 1, small, total - 64);
  if (ist == 0) {
    if (split) zar_dft_set(e, ZAR_DFT_COMPLEX_STORAGE, (long)ZAR_DFT_REAL_REAL);
    CHILD_CHECK(zar_dft_commit(e) == ZAR_DFT_EMEMORY, 20);
  } else {
    CHILD_CHECK(ist == ZAR_DFT_EMEMORY, 21);
  }
  // The arena fixed the hooks: a descriptor without an arena cannot be made.
  zar_dft_descriptor* c = nullptr;
  CHILD_CHECK(zar_dft_create(&c, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 8L) == ZAR_DFT_EMEMORY, 22);
  CHILD_CHECK(zar_dft_free(&d) == 0, 23);
  std::free(arena);
  std::free(small);
  return 0;
}

// The first descriptor of a process fixes its memory, so each of these
// runs in a fresh process: this program started again with only the
// scenario selected (a fork alone would inherit the parent's choice).
int run_scenario(const std::string& s);

zar_test::child_result fresh(const std::string& scenario) {
  return zar_test::in_child(
      [&] {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        setenv("ZAR_DFT_SCENARIO", scenario.c_str(), 1);
        execl("/proc/self/exe", "test_dft", "--gtest_filter=FreshProcess.Scenario", static_cast<char*>(nullptr));
        return 127;
      },
      60);
}

TEST(FreshProcess, Scenario) {
  const char* s = std::getenv("ZAR_DFT_SCENARIO");
  if (!s) GTEST_SKIP() << "runs only in a process started by the memory tests";
  std::fflush(nullptr);
  _exit(run_scenario(s));
}

TEST(Memory, SizeQueryThenInitInExactArena) {
  for (const char* c : {"arena 12 0", "arena 12 1", "arena 64 0", "arena 64 1", "arena 100 0", "arena 100 1"}) {
    const auto r = fresh(c);
    EXPECT_TRUE(r.exited && r.status == 0) << c << ": " << r.describe();
  }
}

// Multi-dimensional and real variants measure and build the same way.
int other_variants() {
        const long lens[2] = {6, 5};  // record order: 6 contiguous
        size_t s[3];
        CHILD_CHECK(zar_dft_avx_dfti_get_size_drmd(2, lens, 1.0, 1.0, 1, &s[0], &s[1], &s[2]) == 0, 30);
        size_t total = s[0] + s[1] + s[2];
        char* arena = static_cast<char*>(std::aligned_alloc(64, total));
        zar_dfti_desc* d = nullptr;
        CHILD_CHECK(zar_dft_avx_dfti_init_drmd(&d, 2, lens, 1, arena, total) == 0, 31);
        CHILD_CHECK(zar_dft_commit(d) == 0, 32);
        CHILD_CHECK(d->nodes == 2 && d->next && reinterpret_cast<char*>(d->next) > arena, 33);
        std::vector<double> x(2 * (6 / 2 + 1) * 5, 0.0);
        x[0] = 1;
        CHILD_CHECK(zar_dft_compute_forward(d, x.data()) == 0, 34);
        for (long i = 0; i < 5; ++i)
          for (long k = 0; k <= 3; ++k)
            CHILD_CHECK(std::abs(x[i * 8 + 2 * k] - 1) < 1e-12 && std::abs(x[i * 8 + 2 * k + 1]) < 1e-12, 35);
        std::free(arena);
        CHILD_CHECK(zar_dft_avx_dfti_get_size_sc1d(30, 1.0, 1.0, 2, &s[0], &s[1], &s[2]) == 0, 36);
        total = s[0] + s[1] + s[2];
        arena = static_cast<char*>(std::aligned_alloc(64, total));
        CHILD_CHECK(zar_dft_avx_dfti_init_sc1d(&d, 30, 2, arena, total) == 0, 37);
        CHILD_CHECK(zar_dft_commit(d) == 0, 38);
        std::vector<float> y(60, 0.0f);
        y[2] = 1;  // a unit impulse at 1
        CHILD_CHECK(zar_dft_compute_backward(d, y.data()) == 0 && std::abs(y[0] - 1) < 1e-5 && std::abs(y[30] + 1) < 1e-5, 39);
        // The arena holds what the measured settings need: a batch of two
        // with two threads needs a second scratch area and does not fit.
        zar_set_num_threads(2);
        CHILD_CHECK(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, 2L) == 0, 40);
        CHILD_CHECK(zar_dft_commit(d) == ZAR_DFT_EMEMORY, 41);
        std::free(arena);
        return 0;
}

TEST(Memory, SizeQueryThenInitOtherVariants) {
  const auto r = fresh("others");
  EXPECT_TRUE(r.exited && r.status == 0) << r.describe();
}

// A process whose first descriptor used core memory keeps core memory: a
// later init leaves the caller's arena untouched and still works.
int core_first() {
        zar_dft_descriptor* c = nullptr;
        CHILD_CHECK(zar_dft_create(&c, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 8L) == 0, 40);
        std::vector<char> arena(1 << 16, '\x5a');
        zar_dfti_desc* d = nullptr;
        CHILD_CHECK(zar_dft_avx_dfti_init_dc1d(&d, 8, 1, arena.data(), arena.size()) == 0, 41);
        CHILD_CHECK(zar_dft_commit(d) == 0, 42);
        const char* p = reinterpret_cast<const char*>(d);
        CHILD_CHECK(p < arena.data() || p >= arena.data() + arena.size(), 43);
        for (char ch : arena) CHILD_CHECK(ch == '\x5a', 44);
        std::vector<double> x(16, 1.0);
        CHILD_CHECK(zar_dft_compute_forward(d, x.data()) == 0 && x[0] == 8.0, 45);
        CHILD_CHECK(zar_dft_free(&d) == 0 && zar_dft_free(&c) == 0, 46);
        return 0;
}

TEST(Memory, FirstDescriptorFixesCoreMemory) {
  const auto r = fresh("core-first");
  EXPECT_TRUE(r.exited && r.status == 0) << r.describe();
}

int run_scenario(const std::string& s) {
  long n = 0;
  int split = 0;
  if (std::sscanf(s.c_str(), "arena %ld %d", &n, &split) == 2) return arena_round_trip(n, split != 0);
  if (s == "others") return other_variants();
  if (s == "core-first") return core_first();
  return 99;
}

// Allocation failure at every allocation of create, settings, commit and
// copy: a status, nothing leaked, the descriptor freeable and usable.
struct scenario {
  const char* name;
  std::function<long(zar_dft_descriptor**)> build;  // create + settings + commit
};

long complex_1d(zar_dft_descriptor** d) {
  long st = zar_dft_create(d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1L, 100L);
  if (st == 0) st = zar_dft_set(*d, ZAR_DFT_NUMBER_OF_TRANSFORMS, 3L);
  return st ? st : zar_dft_commit(*d);
}
long split_1d(zar_dft_descriptor** d) {
  long st = zar_dft_create(d, ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 1L, 12L);
  if (st == 0) st = zar_dft_set(*d, ZAR_DFT_COMPLEX_STORAGE, (long)ZAR_DFT_REAL_REAL);
  return st ? st : zar_dft_commit(*d);
}
long real_pack(zar_dft_descriptor** d) {
  long st = zar_dft_create(d, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1L, 10L);
  if (st == 0) st = zar_dft_set(*d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, 40L);
  if (st == 0) st = zar_dft_set(*d, ZAR_DFT_PACKED_FORMAT, 55L);
  return st ? st : zar_dft_commit(*d);
}
long complex_3d(zar_dft_descriptor** d) {
  const long lens[3] = {3, 4, 5};
  const long st = zar_dft_create(d, ZAR_DFT_SINGLE, ZAR_DFT_COMPLEX, 3L, lens);
  return st ? st : zar_dft_commit(*d);
}
long real_2d(zar_dft_descriptor** d) {
  const long lens[2] = {4, 6};
  const long st = zar_dft_create(d, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 2L, lens);
  return st ? st : zar_dft_commit(*d);
}
TEST(Memory, AllocationFailureAtEveryStep) {
  const scenario scenarios[] = {{"complex 1-D batch", complex_1d}, {"split 1-D", split_1d},
                                {"real PACK", real_pack},          {"complex 3-D", complex_3d},
                                {"real 2-D", real_2d}};
  for (const scenario& s : scenarios) {
    int failures = 0;
    for (int nth = 1; nth < 100; ++nth) {
      const long before = zar_outstanding_allocations();
      zar_dft_descriptor* d = nullptr;
      zar_fail_allocation(nth);
      const long st = s.build(&d);
      const bool fault_fired = zar_fail_allocation(0) == 0;
      if (!fault_fired) {
        ASSERT_EQ(st, 0) << s.name << ": no fault and still a status";
        ASSERT_EQ(zar_dft_free(&d), 0);
        EXPECT_EQ(zar_outstanding_allocations(), before) << s.name;
        break;
      }
      ++failures;
      ASSERT_EQ(st, ZAR_DFT_EMEMORY) << s.name << " allocation " << nth;
      if (d) {
        // The descriptor survived the failed step: it is uncommitted, still
        // commits and computes, and frees.
        long status = 0;
        ASSERT_EQ(zar_dft_get(d, ZAR_DFT_COMMIT_STATUS, &status), 0);
        EXPECT_EQ(status, ZAR_DFT_UNCOMMITTED) << s.name << " allocation " << nth;
        std::vector<double> buf(4096, 0.0), buf2(4096, 0.0);
        EXPECT_EQ(zar_dft_compute_forward(d, buf.data(), buf2.data(), buf.data() + 2048, buf2.data() + 2048),
                  ZAR_DFT_EUNCOMMITTED);
        EXPECT_EQ(zar_dft_commit(d), 0) << s.name << " allocation " << nth;
        EXPECT_EQ(zar_dft_compute_forward(d, buf.data(), buf2.data(), buf.data() + 2048, buf2.data() + 2048), 0);
        ASSERT_EQ(zar_dft_free(&d), 0);
      }
      EXPECT_EQ(zar_outstanding_allocations(), before) << s.name << " allocation " << nth;
    }
    EXPECT_GE(failures, 3) << s.name << ": create, commit plan and scratch allocate";
  }
  // Copy of a committed multi-dimensional descriptor.
  zar_dft_descriptor* src = nullptr;
  const long lens[2] = {3, 7};
  ASSERT_EQ(zar_dft_create(&src, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 2L, lens), 0);
  ASSERT_EQ(zar_dft_commit(src), 0);
  for (int nth = 1; nth < 50; ++nth) {
    const long before = zar_outstanding_allocations();
    zar_dft_descriptor* c = nullptr;
    zar_fail_allocation(nth);
    const long st = zar_dft_copy(src, &c);
    const bool fired = zar_fail_allocation(0) == 0;
    if (!fired) {
      ASSERT_EQ(st, 0);
      EXPECT_EQ(c->status, 30);
      zar_dft_free(&c);
      EXPECT_EQ(zar_outstanding_allocations(), before);
      break;
    }
    EXPECT_EQ(st, ZAR_DFT_EMEMORY) << nth;
    EXPECT_EQ(c, nullptr);
    EXPECT_EQ(zar_outstanding_allocations(), before) << "copy, allocation " << nth;
  }
  zar_dft_free(&src);
}

}  // namespace
