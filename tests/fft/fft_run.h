// The two drivers every FFT test goes through: one complex and one real
// transform problem, set up through the public descriptor calls exactly as
// the case describes (settings left at their defaults are not set), run
// once, and compared with the long-double reference. Both drivers also
// check that nothing outside the output layout was written and that an
// out-of-place input is left as it was.
#pragma once
#include "fft_test.h"

namespace fftt {

constexpr long tail = 8;  // guarded elements after every array

// The largest error seen as a fraction of its bound, per precision, printed
// when the program ends (how close the library comes to the bound).
template <class T>
double& worst_fraction() {
  static double w = 0;
  return w;
}
template <class T>
double record_error(double err, long n) {
  worst_fraction<T>() = std::max(worst_fraction<T>(), err / bound<T>(n));
  return err;
}
struct report_worst : ::testing::Environment {
  void TearDown() override {
    std::printf("zar's largest error as a fraction of the bound: single %.3f, double %.3f\n",
                worst_fraction<float>(), worst_fraction<double>());
  }
};
inline const auto* const report_worst_env = ::testing::AddGlobalTestEnvironment(new report_worst);

// ---------------------------------------------------------------- complex

struct complex_case {
  std::vector<long> shape;
  long howmany = 1;
  layout in, out;  // empty strides: the defaults (contiguous), not set
  bool inplace = false;
  bool split = false;  // complex storage 42: real and imaginary arrays
  int sign = -1;
  double scale = 1;
};

inline std::string describe(const complex_case& c) {
  std::string s = "shape";
  for (long v : c.shape) s += " " + std::to_string(v);
  s += " x" + std::to_string(c.howmany) + (c.inplace ? " in place" : " out of place") + (c.split ? " split" : "") +
       (c.sign < 0 ? " forward" : " backward");
  if (c.scale != 1) s += " scale " + std::to_string(c.scale);
  return s;
}

// Completes a layout: default strides, and the distance of a contiguous batch.
inline layout complete(layout l, const std::vector<long>& shape, long howmany, long contiguous_dist) {
  if (l.strides.empty()) l.strides = contiguous(shape);
  if (howmany > 1 && l.dist == 0) l.dist = contiguous_dist;
  return l;
}

// Settings shared by both drivers: placement, batch, strides, scale.
inline long apply_common(zar_dft_descriptor* d, bool inplace, long howmany, const layout& in, const layout& out,
                         bool set_in, bool set_out, int sign, double scale) {
  long st = 0;
  if (!inplace && (st = zar_dft_set(d, ZAR_DFT_PLACEMENT, static_cast<long>(ZAR_DFT_NOT_INPLACE)))) return st;
  if (howmany > 1) {
    if ((st = zar_dft_set(d, ZAR_DFT_NUMBER_OF_TRANSFORMS, howmany))) return st;
    if ((st = zar_dft_set(d, ZAR_DFT_INPUT_DISTANCE, in.dist))) return st;
    if ((st = zar_dft_set(d, ZAR_DFT_OUTPUT_DISTANCE, out.dist))) return st;
  }
  if (set_in) {
    const auto s = in.stride_setting();
    if ((st = zar_dft_set(d, ZAR_DFT_INPUT_STRIDES, s.data()))) return st;
  }
  if (set_out) {
    const auto s = out.stride_setting();
    if ((st = zar_dft_set(d, ZAR_DFT_OUTPUT_STRIDES, s.data()))) return st;
  }
  if (scale != 1 && (st = zar_dft_set(d, sign < 0 ? ZAR_DFT_FORWARD_SCALE : ZAR_DFT_BACKWARD_SCALE, scale)))
    return st;
  return zar_dft_commit(d);
}

template <class... A>
long compute(zar_dft_descriptor* d, int sign, void* a, A... rest) {
  return sign < 0 ? zar_dft_compute_forward(d, a, rest...) : zar_dft_compute_backward(d, a, rest...);
}

// Runs the case and returns the relative RMS error against the reference
// (negative after a failed expectation).
template <class T>
double run_complex(const complex_case& c, unsigned seed = 1) {
  const long n = product(c.shape);
  const layout in = complete(c.in, c.shape, c.howmany, n);
  const layout out = c.inplace ? in : complete(c.out, c.shape, c.howmany, n);
  const long in_ext = extent(in, c.shape, c.howmany), out_ext = extent(out, c.shape, c.howmany);

  // Interleaved: one array of pairs; split: planes [0] real, [1] imaginary.
  const int planes = c.split ? 2 : 1;
  // Part 0 (real) or 1 (imaginary) of element pos: its plane and its index there.
  auto plane = [&](int part) { return c.split ? part : 0; };
  auto slot = [&](long pos, int part) { return static_cast<size_t>(c.split ? pos : 2 * pos + part); };
  // A few guarded elements past the end catch writes beyond the last one.
  const size_t in_len = static_cast<size_t>(c.split ? in_ext : 2 * in_ext) + tail;
  const size_t out_len = static_cast<size_t>(c.split ? out_ext : 2 * out_ext) + tail;
  std::vector<std::vector<T>> ibuf(planes, std::vector<T>(in_len, guard<T>));
  std::vector<std::vector<T>> obuf(planes, std::vector<T>(out_len, guard<T>));
  std::vector<char> used_in(in_len, 0), used_out(out_len, 0);

  const std::vector<T> data = random_reals<T>(static_cast<size_t>(2 * n * c.howmany), seed);
  std::vector<std::vector<cld>> x(c.howmany, std::vector<cld>(n));
  for (long t = 0; t < c.howmany; ++t)
    for_each_index(c.shape, [&](long k, const std::vector<long>& idx) {
      const long pos = in.at(t, idx);
      const T re = data[2 * (t * n + k)], im = data[2 * (t * n + k) + 1];
      x[t][k] = {re, im};
      ibuf[plane(0)][slot(pos, 0)] = re;
      ibuf[plane(1)][slot(pos, 1)] = im;
      used_in[slot(pos, 0)] = used_in[slot(pos, 1)] = 1;
    });
  for (long t = 0; t < c.howmany; ++t)
    for_each_index(c.shape, [&](long, const std::vector<long>& idx) {
      const long pos = out.at(t, idx);
      used_out[slot(pos, 0)] = used_out[slot(pos, 1)] = 1;
    });
  const auto in_copy = ibuf;

  desc d;
  long st = d.create(precision_of<T>, ZAR_DFT_COMPLEX, c.shape);
  EXPECT_EQ(st, 0) << "create: " << zar_dft_message(st);
  if (st) return -1;
  if (c.split && (st = zar_dft_set(d, ZAR_DFT_COMPLEX_STORAGE, static_cast<long>(ZAR_DFT_REAL_REAL)))) {
    ADD_FAILURE() << "split storage: " << zar_dft_message(st);
    return -1;
  }
  // In place the output strides are set to the input ones as well: the
  // layout is then unambiguous whether or not the output setting is read.
  const bool set_in = !c.in.strides.empty();
  st = apply_common(d, c.inplace, c.howmany, in, out, set_in, c.inplace ? set_in : !c.out.strides.empty(), c.sign,
                    c.scale);
  EXPECT_EQ(st, 0) << "settings/commit: " << zar_dft_message(st);
  if (st) return -1;
  auto& res = c.inplace ? ibuf : obuf;
  if (c.split)
    st = c.inplace ? compute(d, c.sign, ibuf[0].data(), ibuf[1].data())
                   : compute(d, c.sign, ibuf[0].data(), ibuf[1].data(), obuf[0].data(), obuf[1].data());
  else
    st = c.inplace ? compute(d, c.sign, ibuf[0].data()) : compute(d, c.sign, ibuf[0].data(), obuf[0].data());
  EXPECT_EQ(st, 0) << "compute: " << zar_dft_message(st);
  if (st) return -1;

  std::vector<cld> got, ref;
  for (long t = 0; t < c.howmany; ++t) {
    for_each_index(c.shape, [&](long, const std::vector<long>& idx) {
      const long pos = out.at(t, idx);
      got.push_back({res[plane(0)][slot(pos, 0)], res[plane(1)][slot(pos, 1)]});
    });
    auto r = reference(x[t], c.shape, c.sign);
    scale_all(r, c.scale);
    ref.insert(ref.end(), r.begin(), r.end());
  }
  for (int p = 0; p < planes; ++p) {
    EXPECT_TRUE(guards_intact(res[p], c.inplace ? used_in : used_out)) << describe(c);
    if (!c.inplace) {
      EXPECT_TRUE(ibuf[p] == in_copy[p]) << "input changed: " << describe(c);
    }
  }
  const double err = record_error<T>(rel_rms(got, ref), n);
  EXPECT_LE(err, bound<T>(n)) << describe(c);
  return err;
}

// ---------------------------------------------------------------- real

// Storage of the conjugate-even half: the complex n/2+1 values (storage 39,
// CCE or CCS format), or n (+2 for CCS) reals (storage 40).
enum class ce { cce, ccs, ccs_real, pack, perm };

inline const char* ce_name(ce f) {
  switch (f) {
    case ce::cce: return "CCE";
    case ce::ccs: return "CCS(complex)";
    case ce::ccs_real: return "CCS(real)";
    case ce::pack: return "PACK";
    case ce::perm: return "PERM";
  }
  return "?";
}

// Where bin k of a length-n line keeps its real and imaginary part, in
// elements of the stored line (complex elements for storage 39, with part
// 0/1 inside; reals for storage 40). -1: not stored (known to be zero).
struct slot2 {
  long re, im;
};
inline slot2 ce_slot(ce f, long n, long k) {
  const bool even = n % 2 == 0;
  switch (f) {
    case ce::cce:
    case ce::ccs:
    case ce::ccs_real: return {2 * k, 2 * k + 1};  // pairs (storage 39 maps element k to these reals)
    case ce::pack:
      if (k == 0) return {0, -1};
      if (even && k == n / 2) return {n - 1, -1};
      return {2 * k - 1, 2 * k};
    case ce::perm:
      if (!even) return ce_slot(ce::pack, n, k);
      if (k == 0) return {0, -1};
      if (k == n / 2) return {1, -1};
      return {2 * k, 2 * k + 1};
  }
  return {-1, -1};
}
inline bool ce_complex(ce f) { return f == ce::cce || f == ce::ccs; }

struct real_case {
  std::vector<long> shape;  // real lengths; the last one is halved on the complex side
  long howmany = 1;
  ce fmt = ce::cce;
  layout real_side, ce_side;  // empty strides: defaults (not set)
  bool inplace = false;
  int sign = -1;  // -1: real -> conjugate-even, +1: back
  double scale = 1;
};

inline std::string describe(const real_case& c) {
  std::string s = "real shape";
  for (long v : c.shape) s += " " + std::to_string(v);
  s += " x" + std::to_string(c.howmany) + " " + ce_name(c.fmt) + (c.inplace ? " in place" : " out of place") +
       (c.sign < 0 ? " forward" : " backward");
  if (c.scale != 1) s += " scale " + std::to_string(c.scale);
  return s;
}

// Mirror of a multi-index (-idx mod shape) in the dimensions before the last.
inline long mirror_flat(const std::vector<long>& idx, const std::vector<long>& shape, const std::vector<long>& str,
                        bool last_too) {
  long p = 0;
  for (size_t d = 0; d < shape.size(); ++d) {
    const bool flip = d + 1 < shape.size() || last_too;
    p += (flip ? (shape[d] - idx[d]) % shape[d] : idx[d]) * str[d];
  }
  return p;
}

template <class T>
double run_real(const real_case& c, unsigned seed = 1) {
  const long nl = c.shape.back(), h = nl / 2 + 1;
  std::vector<long> hshape = c.shape;
  hshape.back() = h;
  const long n = product(c.shape), nh = product(hshape);
  const bool one_d = c.shape.size() == 1;
  const bool cplx = ce_complex(c.fmt);
  // The stored length of a conjugate-even line in its own elements.
  const long ce_line = cplx ? h : (c.fmt == ce::ccs_real ? 2 * h : nl);
  const std::vector<long> ce_shape = one_d ? std::vector<long>{ce_line} : hshape;

  // Default layouts: contiguous; in place the real lines are padded to the
  // complex ones (2h reals) for storage 39.
  const long real_pad = c.inplace && cplx ? 2 * h : nl;
  std::vector<long> padded = c.shape;
  padded.back() = real_pad;
  layout rl = c.real_side, cl = c.ce_side;
  if (rl.strides.empty()) rl.strides = contiguous(padded);
  if (cl.strides.empty()) cl.strides = contiguous(ce_shape);
  if (c.howmany > 1 && rl.dist == 0) rl.dist = product(padded);
  if (c.howmany > 1 && cl.dist == 0) cl.dist = product(ce_shape);

  // T index of a real element and of the parts of a conjugate-even bin.
  auto real_at = [&](long t, const std::vector<long>& idx) { return rl.at(t, idx); };
  auto ce_at = [&](long t, std::vector<long> idx, int part) -> long {  // idx over hshape
    const slot2 s = ce_slot(c.fmt, nl, idx.back());
    const long q = part ? s.im : s.re;
    if (q < 0) return -1;
    if (cplx) {
      idx.back() = q / 2;
      return 2 * cl.at(t, idx) + q % 2;
    }
    return cl.at(t, {q});
  };
  const long real_len = extent(rl, padded, c.howmany);
  const long ce_len = (cplx ? 2 : 1) * extent(cl, ce_shape, c.howmany);
  const bool fwd = c.sign < 0;
  const long in_len = (fwd ? real_len : ce_len) + tail, out_len = (fwd ? ce_len : real_len) + tail;
  std::vector<T> ibuf(static_cast<size_t>(c.inplace ? std::max(in_len, out_len) : in_len), guard<T>);
  std::vector<T> obuf(static_cast<size_t>(c.inplace ? 0 : out_len), guard<T>);
  std::vector<T>& res = c.inplace ? ibuf : obuf;
  std::vector<char> used_out(res.size(), 0);

  const auto data = random_reals<T>(static_cast<size_t>(n * c.howmany), seed);
  const auto hstr = contiguous(hshape), fstr = contiguous(c.shape);
  std::vector<cld> got, ref;
  for (long t = 0; t < c.howmany; ++t) {
    std::vector<cld> sig(n);
    for (long k = 0; k < n; ++k) sig[k] = {data[t * n + k], 0};
    if (fwd) {
      for_each_index(c.shape, [&](long k, const std::vector<long>& idx) { ibuf[real_at(t, idx)] = data[t * n + k]; });
      const auto full = reference(sig, c.shape, -1);
      for_each_index(hshape, [&](long, const std::vector<long>& idx) {
        long p = 0;
        for (size_t e = 0; e < idx.size(); ++e) p += idx[e] * fstr[e];
        ref.push_back({full[p].re * c.scale, full[p].im * c.scale});
        for (int part = 0; part < 2; ++part) {
          const long q = ce_at(t, idx, part);
          if (q >= 0) used_out[q] = 1;
        }
      });
    } else {
      // A conjugate-even half spectrum, rounded to T, made exactly
      // Hermitian where it meets itself (last index 0 and, for even
      // lengths, n/2), then extended to the full spectrum for the reference.
      const auto spec = reference(sig, c.shape, -1);
      std::vector<cld> half(nh);
      for_each_index(hshape, [&](long k, const std::vector<long>& idx) {
        long p = 0;
        for (size_t e = 0; e < idx.size(); ++e) p += idx[e] * fstr[e];
        half[k] = {static_cast<T>(spec[p].re), static_cast<T>(spec[p].im)};
      });
      for_each_index(hshape, [&](long k, const std::vector<long>& idx) {
        if (idx.back() != 0 && !(nl % 2 == 0 && idx.back() == nl / 2)) return;
        const long m = mirror_flat(idx, hshape, hstr, false);
        if (m == k) half[k].im = 0;
        else if (m < k) half[k] = {half[m].re, -half[m].im};
      });
      std::vector<cld> full(n);
      for_each_index(c.shape, [&](long k, const std::vector<long>& idx) {
        if (idx.back() < h) {
          long p = 0;
          for (size_t e = 0; e < idx.size(); ++e) p += idx[e] * hstr[e];
          full[k] = half[p];
        } else {
          const cld& v = half[mirror_flat(idx, c.shape, hstr, true)];
          full[k] = {v.re, -v.im};
        }
      });
      for_each_index(hshape, [&](long k, const std::vector<long>& idx) {
        for (int part = 0; part < 2; ++part) {
          const long q = ce_at(t, idx, part);
          if (q >= 0) ibuf[q] = static_cast<T>(part ? half[k].im : half[k].re);
        }
      });
      auto r = reference(full, c.shape, +1);
      for_each_index(c.shape, [&](long k, const std::vector<long>& idx) {
        ref.push_back({r[k].re * c.scale, 0});
        used_out[real_at(t, idx)] = 1;
      });
    }
  }
  const auto in_copy = ibuf;

  desc d;
  long st = d.create(precision_of<T>, ZAR_DFT_REAL, c.shape);
  EXPECT_EQ(st, 0) << "create: " << zar_dft_message(st);
  if (st) return -1;
  if (c.fmt != ce::cce) {
    const long storage = cplx ? ZAR_DFT_COMPLEX_COMPLEX : ZAR_DFT_COMPLEX_REAL;
    const long format = c.fmt == ce::pack ? ZAR_DFT_PACK_FORMAT : c.fmt == ce::perm ? ZAR_DFT_PERM_FORMAT : ZAR_DFT_CCS_FORMAT;
    if ((st = zar_dft_set(d, ZAR_DFT_CONJUGATE_EVEN_STORAGE, storage)) ||
        (st = zar_dft_set(d, ZAR_DFT_PACKED_FORMAT, format))) {
      ADD_FAILURE() << "layout settings: " << zar_dft_message(st) << " " << describe(c);
      return -1;
    }
  }
  const layout& lin = fwd ? rl : cl;
  const layout& lout = fwd ? cl : rl;
  const bool set_r = !c.real_side.strides.empty() || (!one_d && c.inplace);
  const bool set_c = !c.ce_side.strides.empty() || (!one_d && c.inplace);
  st = apply_common(d, c.inplace, c.howmany, lin, lout, fwd ? set_r : set_c, fwd ? set_c : set_r, c.sign, c.scale);
  EXPECT_EQ(st, 0) << "settings/commit: " << zar_dft_message(st) << " " << describe(c);
  if (st) return -1;
  st = c.inplace ? compute(d, c.sign, ibuf.data()) : compute(d, c.sign, ibuf.data(), obuf.data());
  EXPECT_EQ(st, 0) << "compute: " << zar_dft_message(st) << " " << describe(c);
  if (st) return -1;

  for (long t = 0; t < c.howmany; ++t) {
    if (fwd)
      for_each_index(hshape, [&](long, const std::vector<long>& idx) {
        const long qr = ce_at(t, idx, 0), qi = ce_at(t, idx, 1);
        got.push_back({res[qr], qi >= 0 ? static_cast<ld>(res[qi]) : 0});
      });
    else
      for_each_index(c.shape, [&](long, const std::vector<long>& idx) { got.push_back({res[real_at(t, idx)], 0}); });
  }
  if (c.inplace) {
    // in place the input positions are consumed; only places outside both layouts stay
    std::vector<char> used(res.size(), 0);
    for (size_t i = 0; i < res.size(); ++i) used[i] = used_out[i] || !(in_copy[i] == guard<T>);
    EXPECT_TRUE(guards_intact(res, used)) << describe(c);
  } else {
    EXPECT_TRUE(guards_intact(res, used_out)) << describe(c);
    EXPECT_TRUE(ibuf == in_copy) << "input changed: " << describe(c);
  }
  const double err = record_error<T>(rel_rms(got, ref), n);
  EXPECT_LE(err, bound<T>(n)) << describe(c);
  return err;
}

// ---------------------------------------------------------------- test parameters

// One case in one precision, as a test parameter.
template <class Case>
struct case_param {
  int precision;
  Case c;
  std::string name;
  friend void PrintTo(const case_param& p, std::ostream* os) { *os << precision_name(p.precision) << " " << describe(p.c); }
};

template <class Case>
std::string param_name(const ::testing::TestParamInfo<case_param<Case>>& i) {
  return i.param.name;
}

// The case forward and backward.
template <class Case>
void add_both_directions(std::vector<Case>& cases, Case c) {
  for (int sign : {-1, +1}) {
    c.sign = sign;
    cases.push_back(c);
  }
}

// Every case in single and in double precision, numbered.
template <class Case>
std::vector<case_param<Case>> in_both_precisions(const std::vector<Case>& cases) {
  std::vector<case_param<Case>> v;
  for (int p : {ZAR_DFT_SINGLE, ZAR_DFT_DOUBLE})
    for (size_t i = 0; i < cases.size(); ++i) v.push_back({p, cases[i], precision_name(p) + "_" + std::to_string(i)});
  return v;
}

template <class Case>
void run_case(const case_param<Case>& p, unsigned seed) {
  FFTT_GATE(product(p.c.shape));
  SCOPED_TRACE(describe(p.c));
  const bool single = p.precision == ZAR_DFT_SINGLE;
  if constexpr (std::is_same_v<Case, complex_case>)
    single ? run_complex<float>(p.c, seed) : run_complex<double>(p.c, seed);
  else
    single ? run_real<float>(p.c, seed) : run_real<double>(p.c, seed);
}

}  // namespace fftt
