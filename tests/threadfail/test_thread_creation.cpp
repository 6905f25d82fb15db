// A pool that cannot start its workers: this program interposes
// pthread_create with one that refuses (EAGAIN, as under a process limit)
// after a chosen number of successes. Each case runs in a fresh child, whose
// pool starts empty, with more threads asked for than it can get.
#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <random>
#include <vector>

#include "../hardening/child.h"
#include "zar/blas.h"
#include "zar/control.h"

namespace {
std::atomic<int> creations_left{-1};  // -1: never refuse
}

extern "C" int pthread_create(pthread_t* t, const pthread_attr_t* attr, void* (*start)(void*), void* arg) {
  using create_fn = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const create_fn real = reinterpret_cast<create_fn>(dlsym(RTLD_NEXT, "pthread_create"));
  int left = creations_left.load();
  while (left >= 0) {
    if (left == 0) return EAGAIN;
    if (creations_left.compare_exchange_weak(left, left - 1)) break;
  }
  return real(t, attr, start, arg);
}

namespace {

std::vector<double> random_vector(std::size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> v(n);
  for (double& x : v) x = u(g);
  return v;
}

TEST(ThreadCreation, RefusedThreadsMeanFewerThreadsExactResultsOneWarning) {
  constexpr int n = 240;
  const auto a = random_vector(n * n, 1), b = random_vector(n * n, 2);
  const double alpha = 1.25, beta = 0;
  auto product = [&] {
    std::vector<double> c(n * n);
    dgemm_("N", "N", &n, &n, &n, &alpha, a.data(), &n, b.data(), &n, &beta, c.data(), &n);
    return c;
  };
  zar_set_num_threads(1);
  const auto want = product();
  for (int k : {0, 1, 2, 3, 5, 8}) {
    const auto r = zar_test::in_child(
        [&] {
          zar_set_num_threads(6);
          zar_reset_warning_count();
          creations_left = k;
          for (int call = 0; call < 4; ++call) {
            const auto got = product();
            if (std::memcmp(got.data(), want.data(), want.size() * sizeof(double)) != 0) return 1;
          }
          // The refusal is reported once, however many calls meet it; with
          // k >= 5 every worker starts and nothing is reported.
          return zar_warning_count() == (k < 5 ? 1 : 0) ? 0 : 2;
        },
        30);
    EXPECT_TRUE(r.exited && r.status == 0) << "k = " << k << ": " << r.describe();
  }
  zar_set_num_threads(0);
}

}  // namespace
