// Real transforms through the public interface: every layout of the
// conjugate-even half (CCE and CCS as complex numbers; CCS, PACK and PERM
// as reals), both precisions, both directions, in and out of place; strided
// batches; two- and three-dimensional shapes with odd sizes.
#include "fft_run.h"

namespace {

using namespace fftt;

using real_param = case_param<real_case>;

std::vector<real_param> real_1d_params() {
  std::vector<long> lengths;
  for (long n = 1; n <= 33; ++n) lengths.push_back(n);
  for (long n : {48L, 63L, 64L, 97L, 100L, 128L, 1000L, 1009L, 1024L, 1536L, 2520L, 4096L, 65536L}) lengths.push_back(n);
  std::vector<real_param> v;
  for (int p : {ZAR_DFT_SINGLE, ZAR_DFT_DOUBLE})
    for (long n : lengths)
      for (ce f : {ce::cce, ce::ccs, ce::ccs_real, ce::pack, ce::perm})
        for (int sign : {-1, +1})
          for (bool ip : {false, true}) {
            if (n > direct_limit && ip == (sign < 0)) continue;  // one placement per direction there
            real_case c;
            c.shape = {n};
            c.fmt = f;
            c.sign = sign;
            c.inplace = ip;
            std::string name = precision_name(p) + "_" + std::to_string(n) + "_" + std::to_string(static_cast<int>(f)) +
                               (sign < 0 ? "_fwd" : "_bwd") + (ip ? "_in" : "_out");
            v.push_back({p, c, name});
          }
  return v;
}

std::vector<real_param> real_layout_params() {
  std::vector<real_case> cases;
  auto add = [&](const real_case& c) { add_both_directions(cases, c); };
  for (long n : {1L, 6L, 7L, 64L}) {
    const long h = n / 2 + 1;
    real_case c;
    c.shape = {n};
    c.howmany = 4;
    for (bool ip : {false, true}) {  // contiguous batch (in place: padded real lines)
      c.inplace = ip;
      add(c);
    }
    c.inplace = false;  // strides, offsets and distances on both sides
    c.real_side = {2, {2}, 2 * n + 3};
    c.ce_side = {1, {3}, 3 * h + 1};
    add(c);
    c.real_side = {0, {4}, 1};  // interleaved: four transforms side by side
    c.ce_side = {0, {4}, 1};
    add(c);
    c.fmt = ce::pack;  // a packed layout in a batch with distances
    c.real_side = {0, {1}, n + 2};
    c.ce_side = {1, {1}, n + 1};
    add(c);
  }
  // Several dimensions (the last one halved), both placements, with scales.
  for (std::vector<long> shape :
       std::vector<std::vector<long>>{{5, 7}, {6, 9}, {8, 8}, {7, 6}, {1, 5}, {4, 5, 6}, {7, 3, 5}, {3, 4, 1}}) {
    real_case c;
    c.shape = shape;
    for (bool ip : {false, true}) {
      c.inplace = ip;
      add(c);
    }
    c.inplace = false;
    c.scale = 0.5;
    add(c);
  }
  {
    real_case c;  // a batch of 2-D transforms with padded rows
    c.shape = {5, 6};
    c.howmany = 3;
    c.real_side = {1, {9, 1}, 5 * 9 + 2};
    c.ce_side = {0, {5, 1}, 5 * 5};
    add(c);
  }
  return in_both_precisions(cases);
}

class RealTransform : public ::testing::TestWithParam<real_param> {};
TEST_P(RealTransform, MatchesReference) { run_case(GetParam(), 3); }
INSTANTIATE_TEST_SUITE_P(Lengths, RealTransform, ::testing::ValuesIn(real_1d_params()), param_name<real_case>);
INSTANTIATE_TEST_SUITE_P(Layouts, RealTransform, ::testing::ValuesIn(real_layout_params()), param_name<real_case>);

// A PACK inverse of even length equals the PERM inverse of the same values
// with R(n/2) moved to place 1; for odd lengths the two layouts coincide.
TEST(RealPacked, PackAndPermInversesAgree) {
  for (long n : {8L, 9L, 30L, 31L}) {
    std::vector<double> pack = random_reals<double>(n, 17), perm(n);
    perm[0] = pack[0];
    if (n % 2 == 0) {
      perm[1] = pack[n - 1];
      for (long i = 1; i < n - 1; ++i) perm[i + 1] = pack[i];
    } else {
      for (long i = 1; i < n; ++i) perm[i] = pack[i];
    }
    std::vector<std::vector<double>> out;
    for (long fmt : {static_cast<long>(ZAR_DFT_PACK_FORMAT), static_cast<long>(ZAR_DFT_PERM_FORMAT)}) {
      desc d;
      ZOK(d.create(ZAR_DFT_DOUBLE, ZAR_DFT_REAL, {n}));
      ZOK(zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, static_cast<long>(ZAR_DFT_COMPLEX_REAL)));
      ZOK(zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, fmt));
      ZOK(zar_dft_commit(d));
      std::vector<double> x = fmt == ZAR_DFT_PACK_FORMAT ? pack : perm;
      ZOK(zar_dft_compute_backward(d, x.data()));
      out.push_back(x);
    }
    for (long i = 0; i < n; ++i) EXPECT_NEAR(out[0][i], out[1][i], 1e-13) << "n " << n << " element " << i;
  }
}

}  // namespace
