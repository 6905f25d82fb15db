// Complex data layouts: batches with strides, offsets and distances
// (interleaved batches too), split storage, two- and three-dimensional
// shapes with odd sizes and padded strides, and threaded batches.
#include "fft_run.h"

namespace {

using namespace fftt;

std::vector<case_param<complex_case>> layout_params() {
  std::vector<complex_case> cases;
  auto add = [&](const complex_case& c) { add_both_directions(cases, c); };
  for (long n : {1L, 7L, 12L, 64L, 100L}) {
    complex_case c;
    c.shape = {n};
    c.howmany = 5;
    for (bool ip : {false, true}) {  // contiguous batch
      c.inplace = ip;
      add(c);
    }
    // Interleaved: element j of transform t at j*howmany + t.
    c.in = {0, {5}, 1};
    c.out = {0, {5}, 1};
    for (bool ip : {false, true}) {
      c.inplace = ip;
      add(c);
    }
    // Offsets, strides and distances that differ between input and output.
    c.inplace = false;
    c.in = {3, {2}, 2 * n + 5};
    c.out = {1, {3}, 3 * n + 2};
    add(c);
    c.inplace = true;
    c.in = {2, {3}, 3 * n + 1};
    add(c);
    // Split storage, alone and with the strided batch.
    complex_case s;
    s.shape = {n};
    s.split = true;
    for (bool ip : {false, true}) {
      s.inplace = ip;
      add(s);
    }
    s.howmany = 3;
    s.in = {1, {2}, 2 * n + 3};
    s.out = {0, {1}, n + 4};
    s.inplace = false;
    add(s);
  }
  // Several dimensions, default strides, both placements.
  for (std::vector<long> shape : std::vector<std::vector<long>>{
           {3, 5}, {7, 9}, {15, 8}, {16, 16}, {1, 7}, {5, 1}, {5, 6, 7}, {9, 1, 3}, {4, 4, 4}, {3, 5, 7}}) {
    complex_case c;
    c.shape = shape;
    for (bool ip : {false, true}) {
      c.inplace = ip;
      add(c);
    }
  }
  // Padded rows and planes, a batch of two, offsets.
  {
    complex_case c;
    c.shape = {7, 9};
    c.howmany = 2;
    c.in = {1, {11, 1}, 7 * 11 + 4};
    c.out = {0, {10, 1}, 7 * 10};
    add(c);
    c.inplace = true;
    c.out = {};
    add(c);
    c.inplace = false;
    c.shape = {3, 5, 7};
    c.howmany = 1;
    c.in = {0, {5 * 9, 9, 1}, 0};
    c.out = {2, {1, 3, 15}, 0};  // output transposed: first dimension fastest
    add(c);
  }
  return in_both_precisions(cases);
}

class ComplexLayout : public ::testing::TestWithParam<case_param<complex_case>> {};
TEST_P(ComplexLayout, MatchesReference) { run_case(GetParam(), 5); }
INSTANTIATE_TEST_SUITE_P(Layouts, ComplexLayout, ::testing::ValuesIn(layout_params()), param_name<complex_case>);

// A batch computed on one thread and on two gives the same bits: each
// transform of the batch is computed by the same plan either way.
TEST(ComplexThreads, BatchSameOnOneAndTwoThreads) {
  const long n = 1024, howmany = 64;
  const int saved = zar_get_max_threads();
  std::vector<std::vector<double>> y;
  for (int threads : {1, 2}) {
    zar_set_num_threads(threads);
    desc d;
    ZOK(d.create(ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, {n}));
    ZOK(zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, howmany));
    ZOK(zar_dft_set(d, ZAR_DFT_INPUT_DISTANCE, n));
    ZOK(zar_dft_set(d, ZAR_DFT_OUTPUT_DISTANCE, n));
    ZOK(zar_dft_commit(d));
    auto x = random_reals<double>(2 * n * howmany, 9);
    ZOK(zar_dft_compute_forward(d, x.data()));
    y.push_back(x);
  }
  zar_set_num_threads(saved);
  EXPECT_TRUE(y[0] == y[1]);
}

}  // namespace
