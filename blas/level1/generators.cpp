// Rotation generators (rotg, rotmg) and the |Re| + |Im| auxiliary (cabs1).
#include <cmath>

#include "zar/level1.h"

namespace zar::l1 {
namespace {

// Givens rotation [c s; -s c] taking (a, b) to (r, 0). On return a holds r
// and b holds z, from which c and s can be recovered (z = s when |a| > |b|,
// z = 1/c otherwise unless c = 0, z = 1 then).
template <class R>
void rotg(R* a, R* b, R* c, R* s) {
  const R av = *a, bv = *b;
  const R roe = std::fabs(av) > std::fabs(bv) ? av : bv;
  const R scale = std::fabs(av) + std::fabs(bv);
  if (scale == 0) {
    *c = 1, *s = 0, *a = 0, *b = 0;
    return;
  }
  const R as = av / scale, bs = bv / scale;
  R r = scale * std::sqrt(as * as + bs * bs);
  if (roe < 0) r = -r;
  *c = av / r;
  *s = bv / r;
  R z = std::fabs(av) > std::fabs(bv) ? *s : R(1);
  if (std::fabs(bv) >= std::fabs(av) && *c != 0) z = R(1) / *c;
  *a = r;
  *b = z;
}

// Complex Givens rotation with real c and complex s taking (a, b) to (r, 0):
// a := r, b unchanged. With a = 0: c = 0, s = 1, r = b.
template <class R>
void rotg(cx<R>* a, cx<R>* b, R* c, cx<R>* s) {
  const cx<R> av = *a, bv = *b;
  const R aabs = std::hypot(av.re, av.im);
  if (aabs == 0) {
    *c = 0, *s = cx<R>{1, 0}, *a = bv;
    return;
  }
  const R scale = aabs + std::hypot(bv.re, bv.im);
  const R ta = std::hypot(av.re / scale, av.im / scale), tb = std::hypot(bv.re / scale, bv.im / scale);
  const R norm = scale * std::sqrt(ta * ta + tb * tb);
  const cx<R> alpha{av.re / aabs, av.im / aabs};
  *c = aabs / norm;
  // alpha * conj(b) / norm
  const cx<R> t{alpha.re * bv.re + alpha.im * bv.im, alpha.im * bv.re - alpha.re * bv.im};
  *s = cx<R>{t.re / norm, t.im / norm};
  *a = cx<R>{alpha.re * norm, alpha.im * norm};
}

// Modified Givens generator. param = (flag, h11, h21, h12, h22); the flag
// -2 means H = I, -1 a full H, 0 unit diagonal, 1 unit anti-diagonal
// (h12 = 1, h21 = -1). d1 and d2 are rescaled by gam^2 = 2^24 into
// [2^-24, 2^24] (d2 in magnitude), x1 and H following by gam = 4096.
template <class R>
void rotmg(R* d1p, R* d2p, R* x1p, const R* y1p, R* param) {
  constexpr R gam = 4096, gamsq = 16777216, rgamsq = R(1) / gamsq;
  R d1 = *d1p, d2 = *d2p, x1 = *x1p;
  const R y1 = *y1p;
  R flag, h11 = 0, h12 = 0, h21 = 0, h22 = 0;
  auto zero_all = [&] {
    flag = -1, h11 = h12 = h21 = h22 = 0;
    d1 = d2 = x1 = 0;
  };
  if (d1 < 0) {
    zero_all();
  } else {
    const R p2 = d2 * y1;
    if (p2 == 0) {
      param[0] = -2;
      return;
    }
    const R p1 = d1 * x1, q2 = p2 * y1, q1 = p1 * x1;
    if (std::fabs(q1) > std::fabs(q2)) {
      h21 = -y1 / x1;
      h12 = p2 / p1;
      const R u = 1 - h12 * h21;
      if (u > 0) {
        flag = 0, d1 /= u, d2 /= u, x1 *= u;
      } else {
        zero_all();  // only reachable through rounding
      }
    } else if (q2 < 0) {
      zero_all();
    } else {
      flag = 1;
      h11 = p1 / p2;
      h22 = x1 / y1;
      const R u = 1 + h11 * h22;
      const R t = d2 / u;
      d2 = d1 / u;
      d1 = t;
      x1 = y1 * u;
    }
    // Entering a rescaling turns flag 0 or 1 into the full form.
    auto make_full = [&] {
      if (flag == 0)
        h11 = h22 = 1;
      else if (flag == 1)
        h21 = -1, h12 = 1;
      flag = -1;
    };
    if (d1 != 0) {
      while (d1 <= rgamsq || d1 >= gamsq) {
        make_full();
        if (d1 <= rgamsq)
          d1 *= gamsq, x1 /= gam, h11 /= gam, h12 /= gam;
        else
          d1 *= rgamsq, x1 *= gam, h11 *= gam, h12 *= gam;
      }
    }
    if (d2 != 0) {
      while (std::fabs(d2) <= rgamsq || std::fabs(d2) >= gamsq) {
        make_full();
        if (std::fabs(d2) <= rgamsq)
          d2 *= gamsq, h21 /= gam, h22 /= gam;
        else
          d2 *= rgamsq, h21 *= gam, h22 *= gam;
      }
    }
  }
  if (flag < 0)
    param[1] = h11, param[2] = h21, param[3] = h12, param[4] = h22;
  else if (flag == 0)
    param[2] = h21, param[3] = h12;
  else
    param[1] = h11, param[4] = h22;
  param[0] = flag;
  *d1p = d1, *d2p = d2, *x1p = x1;
}

template <class R>
R cabs1(const cx<R>* z) {
  return std::fabs(z->re) + std::fabs(z->im);
}

}  // namespace
}  // namespace zar::l1

using namespace zar::l1;

#define ZAR_L1_DEF_ROTG(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(ROTG, name, T) { rotg(a, b, c, s); }
#define ZAR_L1_DEF_ROTMG(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(ROTMG, name, T) { rotmg(d1, d2, x1, y1, param); }
#define ZAR_L1_DEF_CABS1(F, name, routine, T, v) \
  ZAR_EXPORT ZAR_L1_KERNEL_SIG(CABS1, name, T) { return cabs1(z); }
ZAR_L1_LIST_ROTG(ZAR_L1_DEF_ROTG)
ZAR_L1_LIST_CROTG(ZAR_L1_DEF_ROTG)
ZAR_L1_LIST_ROTMG(ZAR_L1_DEF_ROTMG)
ZAR_L1_LIST_CABS1(ZAR_L1_DEF_CABS1)
