// Arrays that span more than 2 GiB of the address space: a large increment
// or leading dimension with few elements. The span is reserved without
// memory and only the pages holding elements are made accessible. Under
// the sanitizer build (pointer-overflow checks on), an address formed with
// a wrapped 32-bit offset is reported; everywhere, the results must equal
// those of the same data stored compactly. The data are small integers, so
// every result is exact whatever the order of operations.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#include "zar/blas.h"

namespace {

// A reserved span; element addresses become usable on demand.
class big_span {
 public:
  explicit big_span(std::uint64_t bytes) : bytes_(bytes) {
    void* p = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    base_ = p == MAP_FAILED ? nullptr : static_cast<char*>(p);
  }
  ~big_span() {
    if (base_) munmap(base_, bytes_);
  }
  bool ok() const { return base_ != nullptr; }
  // The double at byte offset off, its page made readable and writable.
  double* at(std::uint64_t off) {
    const std::uint64_t page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    char* p = base_ + off;
    char* first = base_ + off / page * page;
    mprotect(first, static_cast<size_t>(p + sizeof(double) - first + page - 1) / page * page, PROT_READ | PROT_WRITE);
    return reinterpret_cast<double*>(p);
  }
  char* base() const { return base_; }

 private:
  std::uint64_t bytes_;
  char* base_ = nullptr;
};

// Increment and leading dimension (in doubles) for 3 elements or columns
// spanning a little more than 2 GiB.
constexpr int kBig = (1 << 27) + 8;
constexpr std::uint64_t kSpan = 2ull * kBig * sizeof(double) + (1 << 20);

double value(int i) { return static_cast<double>((i * 7) % 11 - 5); }

struct strided_pair {
  double *x, *y;  // the vectors' first stored element
  int inc;
  std::vector<double> cx, cy;  // compact copies, in element order
};

// Vectors x and y of n elements with increment inc (negative: element 0
// stored last), interleaved in one span: y's elements follow x's.
strided_pair place(big_span& span, int n, int inc) {
  double* base = reinterpret_cast<double*>(span.base());
  strided_pair p{base, base + 1, inc, {}, {}};
  for (int i = 0; i < n; ++i) {
    const std::uint64_t slot = static_cast<std::uint64_t>(inc > 0 ? i : n - 1 - i) * (inc > 0 ? inc : -inc);
    *span.at(slot * sizeof(double)) = value(i);
    *span.at((slot + 1) * sizeof(double)) = value(i + 3);
    p.cx.push_back(value(i));
    p.cy.push_back(value(i + 3));
  }
  return p;
}
double& elem(double* v, int n, int inc, int i) {
  const std::uint64_t slot = static_cast<std::uint64_t>(inc > 0 ? i : n - 1 - i) * (inc > 0 ? inc : -inc);
  return *reinterpret_cast<double*>(reinterpret_cast<char*>(v) + slot * sizeof(double));
}

TEST(BigStrides, LevelOneVectors) {
  big_span span(kSpan);
  if (!span.ok()) GTEST_SKIP() << "no 2 GiB of address space to reserve";
  const int n = 3, one = 1;
  for (int inc : {kBig, -kBig}) {
    strided_pair p = place(span, n, inc);
    const double alpha = 2, c = 0, s = 1, param[5] = {-1, 2, 1, -1, 3};
    // reductions
    EXPECT_EQ(ddot_(&n, p.x, &inc, p.y, &inc), ddot_(&n, p.cx.data(), &one, p.cy.data(), &one)) << inc;
    if (inc > 0) {  // a negative increment gives 0 for these, as in the reference
      EXPECT_EQ(dasum_(&n, p.x, &inc), dasum_(&n, p.cx.data(), &one));
      EXPECT_EQ(dnrm2_(&n, p.x, &inc), dnrm2_(&n, p.cx.data(), &one));
      EXPECT_EQ(idamax_(&n, p.x, &inc), idamax_(&n, p.cx.data(), &one));
    }
    // updates, each applied to both forms
    daxpy_(&n, &alpha, p.x, &inc, p.y, &inc);
    daxpy_(&n, &alpha, p.cx.data(), &one, p.cy.data(), &one);
    if (inc > 0) {  // scal ignores a negative increment, as the reference does
      dscal_(&n, &alpha, p.x, &inc);
      dscal_(&n, &alpha, p.cx.data(), &one);
    }
    drot_(&n, p.x, &inc, p.y, &inc, &c, &s);
    drot_(&n, p.cx.data(), &one, p.cy.data(), &one, &c, &s);
    drotm_(&n, p.x, &inc, p.y, &inc, param);
    drotm_(&n, p.cx.data(), &one, p.cy.data(), &one, param);
    dswap_(&n, p.x, &inc, p.y, &inc);
    dswap_(&n, p.cx.data(), &one, p.cy.data(), &one);
    for (int i = 0; i < n; ++i) {
      EXPECT_EQ(elem(p.x, n, inc, i), p.cx[i]) << "inc " << inc << " x " << i;
      EXPECT_EQ(elem(p.y, n, inc, i), p.cy[i]) << "inc " << inc << " y " << i;
    }
    dcopy_(&n, p.y, &inc, p.x, &inc);
    for (int i = 0; i < n; ++i) EXPECT_EQ(elem(p.x, n, inc, i), p.cy[i]) << "copy, inc " << inc;
  }
}

// Matrices with a leading dimension that makes three columns span 2 GiB.
TEST(BigStrides, LeadingDimensions) {
  big_span span(kSpan);
  if (!span.ok()) GTEST_SKIP() << "no 2 GiB of address space to reserve";
  // A and C share the span: C's columns start 16 elements after A's.
  const int m = 3, n = 3, ld = kBig, one = 1;
  double* a = reinterpret_cast<double*>(span.base());
  double* c = a + 16;
  std::vector<double> ca(m * n), cc(m * n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i) {
      const std::uint64_t off = (static_cast<std::uint64_t>(j) * ld + i) * sizeof(double);
      *span.at(off) = ca[i + j * m] = value(i + 3 * j) + (i == j ? 9 : 0);
      *span.at(off + 16 * sizeof(double)) = cc[i + j * m] = value(2 * i + j);
    }
  auto c_at = [&](int i, int j) {
    return *reinterpret_cast<double*>(span.base() + (static_cast<std::uint64_t>(j) * ld + 16 + i) * sizeof(double));
  };
  auto same_c = [&](const char* what) {
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < m; ++i) EXPECT_EQ(c_at(i, j), cc[i + j * m]) << what << " (" << i << ", " << j << ")";
  };
  const double alpha = 1, beta = 1;
  double x[3] = {1, -2, 3}, y[3] = {0, 0, 0}, y2[3] = {0, 0, 0};
  for (const char* t : {"N", "T"}) {
    dgemv_(t, &m, &n, &alpha, a, &ld, x, &one, &beta, y, &one);
    dgemv_(t, &m, &n, &alpha, ca.data(), &m, x, &one, &beta, y2, &one);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(y[i], y2[i]) << "gemv " << t;
    double xs[3] = {1, -2, 3}, xs2[3] = {1, -2, 3};
    dtrsv_("U", t, "N", &n, a, &ld, xs, &one);
    dtrsv_("U", t, "N", &n, ca.data(), &m, xs2, &one);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(xs[i], xs2[i]) << "trsv " << t;
  }
  dger_(&m, &n, &alpha, x, &one, y, &one, c, &ld);
  dger_(&m, &n, &alpha, x, &one, y, &one, cc.data(), &m);
  same_c("ger");
  for (const char* ta : {"N", "T"}) {
    dgemm_(ta, "N", &m, &n, &n, &alpha, a, &ld, a, &ld, &beta, c, &ld);
    dgemm_(ta, "N", &m, &n, &n, &alpha, ca.data(), &m, ca.data(), &m, &beta, cc.data(), &m);
    same_c(ta);
  }
}

}  // namespace
