// Reproducible random test data.
#pragma once
#include <random>
#include <vector>

namespace zar_test {

inline std::vector<double> random_vector(std::size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> v(n);
  for (double& x : v) x = u(g);
  return v;
}

}  // namespace zar_test
