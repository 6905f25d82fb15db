// The thread pool under programs that fork, exit while other threads
// compute, and call from many application threads at once. Each scenario
// runs in a child process watched with a limit, so a hang fails the test.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "child.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace {

using zar_test::in_child;

std::vector<double> random_vector(std::size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> v(n);
  for (double& x : v) x = u(g);
  return v;
}

bool same_bits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// Problems large enough for the core to split them among threads.
struct problems {
  static constexpr int gn = 200;               // dgemm n x n x n
  static constexpr int vm = 1200, vn = 1000;   // dgemv
  static constexpr int an = 1 << 20;           // daxpy
  std::vector<double> a = random_vector(gn * gn, 1), b = random_vector(gn * gn, 2);
  std::vector<double> ga = random_vector(vm * vn, 3), gx = random_vector(vn, 4), gy = random_vector(vm, 5);
  std::vector<double> ax = random_vector(an, 6), ay = random_vector(an, 7);

  struct results {
    std::vector<double> gemm, gemv, axpy;
  };
  results run() const {
    results r{std::vector<double>(gn * gn, 0.0), gy, ay};
    const int n = gn, m2 = vm, n2 = vn, n3 = an, one = 1;
    const double alpha = 0.75, beta = 0.5;
    dgemm_("N", "T", &n, &n, &n, &alpha, a.data(), &n, b.data(), &n, &beta, r.gemm.data(), &n);
    dgemv_("N", &m2, &n2, &alpha, ga.data(), &m2, gx.data(), &one, &beta, r.gemv.data(), &one);
    daxpy_(&n3, &alpha, ax.data(), &one, r.axpy.data(), &one);
    return r;
  }
  bool matches(const results& want) const {
    const results got = run();
    return same_bits(got.gemm, want.gemm) && same_bits(got.gemv, want.gemv) && same_bits(got.axpy, want.axpy);
  }
};

problems::results one_thread_results(const problems& p) {
  zar_set_num_threads(1);
  problems::results r = p.run();
  zar_set_num_threads(2);
  return r;
}

TEST(Fork, ChildOfAThreadedParentComputesThreaded) {
  problems p;
  const auto want = one_thread_results(p);
  for (int round = 0; round < 100; ++round) {
    ASSERT_TRUE(p.matches(want)) << "parent, round " << round;
    const auto r = in_child([&] { return p.matches(want) ? 0 : 1; }, 20);
    ASSERT_TRUE(r.exited && r.status == 0) << "round " << round << ": child " << r.describe();
  }
  // The parent's pool is unaffected by its children.
  EXPECT_TRUE(p.matches(want));
  zar_set_num_threads(0);
}

TEST(Fork, WhileAnotherThreadIsInsideAThreadedCall) {
  problems p;
  const auto want = one_thread_results(p);
  std::atomic<bool> stop{false};
  std::atomic<int> calls{0}, wrong{0};
  std::thread busy([&] {
    while (!stop) {
      if (!p.matches(want)) ++wrong;
      ++calls;
    }
  });
  while (calls == 0) std::this_thread::yield();
  for (int round = 0; round < 30; ++round) {
    const auto r = in_child([&] { return p.matches(want) ? 0 : 1; }, 20);
    EXPECT_TRUE(r.exited && r.status == 0) << "round " << round << ": child " << r.describe();
  }
  stop = true;
  busy.join();
  EXPECT_EQ(wrong, 0);
  zar_set_num_threads(0);
}

TEST(Fork, GrandchildOfAForkedChild) {
  problems p;
  const auto want = one_thread_results(p);
  const auto r = in_child(
      [&] {
        if (!p.matches(want)) return 1;
        const auto inner = in_child([&] { return p.matches(want) ? 0 : 1; }, 20);
        return inner.exited && inner.status == 0 && p.matches(want) ? 0 : 2;
      },
      40);
  EXPECT_TRUE(r.exited && r.status == 0) << r.describe();
  zar_set_num_threads(0);
}

// exit() from the main thread while 4 to 8 application threads are inside
// threaded dgemm and dgemv calls.
TEST(Exit, WhileApplicationThreadsCompute) {
  problems p;
  for (int round = 0; round < 50; ++round) {
    const int callers = 4 + round % 5;
    const auto r = in_child(
        [&] {
          zar_set_num_threads(2);
          static std::atomic<int> started{0};
          for (int t = 0; t < callers; ++t)
            std::thread([&p, t] {
              const int n = problems::gn, m2 = problems::vm, n2 = problems::vn, one = 1;
              const double alpha = 1, beta = 0;
              std::vector<double> c(n * n), y(m2);
              started.fetch_add(1);
              for (;;) {
                if (t % 2) dgemv_("N", &m2, &n2, &alpha, p.ga.data(), &m2, p.gx.data(), &one, &beta, y.data(), &one);
                else dgemm_("N", "N", &n, &n, &n, &alpha, p.a.data(), &n, p.b.data(), &n, &beta, c.data(), &n);
              }
            }).detach();
          while (started < callers) std::this_thread::yield();
          std::this_thread::sleep_for(std::chrono::milliseconds(round % 4));
          std::exit(7);
          return 0;
        },
        10);
    ASSERT_TRUE(r.exited && r.status == 7) << "round " << round << ": " << r.describe();
  }
}

// Eight application threads, each with its own threaded dgemm: every result
// has the bits of the same product computed on one thread.
TEST(Concurrency, EightCallersGetOneThreadBits) {
  constexpr int n = 500, callers = 8;
  std::vector<std::vector<double>> a, b, want, got;
  for (int t = 0; t < callers; ++t) {
    a.push_back(random_vector(n * n, 100 + t));
    b.push_back(random_vector(n * n, 200 + t));
  }
  const double alpha = 1.5, beta = 0;
  auto product = [&](int t, std::vector<double>& c) {
    c.assign(n * n, 0.0);
    dgemm_("N", "N", &n, &n, &n, &alpha, a[t].data(), &n, b[t].data(), &n, &beta, c.data(), &n);
  };
  zar_set_num_threads(1);
  want.resize(callers);
  for (int t = 0; t < callers; ++t) product(t, want[t]);
  zar_set_num_threads(2);
  got.resize(callers);
  std::vector<std::thread> threads;
  for (int t = 0; t < callers; ++t) threads.emplace_back([&, t] { product(t, got[t]); });
  for (auto& th : threads) th.join();
  for (int t = 0; t < callers; ++t) EXPECT_TRUE(same_bits(got[t], want[t])) << "caller " << t;
  zar_set_num_threads(0);
}

// Every share of a region runs exactly once with the requested share count,
// however many application threads compete for the workers.
TEST(Concurrency, RegionsShareTheWorkersWithoutLosingShares) {
  zar_set_num_threads(3);
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 6; ++t)
    threads.emplace_back([&] {
      for (int round = 0; round < 200; ++round) {
        std::atomic<int> seen[5] = {};
        struct ctx {
          std::atomic<int>* seen;
          std::atomic<int>* wrong;
        } c{seen, &wrong};
        zar_parallel(
            5,
            [](int tid, int nt, void* p) {
              auto* c = static_cast<ctx*>(p);
              if (nt != 5 || tid < 0 || tid >= 5) ++*c->wrong;
              else ++c->seen[tid];
            },
            &c);
        for (auto& s : seen)
          if (s != 1) ++wrong;
      }
    });
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong, 0);
  zar_set_num_threads(0);
}

}  // namespace
