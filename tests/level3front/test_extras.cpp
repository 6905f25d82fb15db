// The names the reference BLAS exports besides its routines: xerbla_array_
// (the routine name padded or cut to 32 characters) and the Level-1
// functions as subroutines, each against the reference library's own.
#include <cmath>

#include "l3front.h"
#include "reference_blas.h"
#include "zar/blas.h"

namespace l3f {
namespace {

TEST(XerblaArray, PadsOrCutsTheNameToThirtyTwoCharacters) {
  struct {
    std::string name;
    int len;
    std::string want;
  } cases[] = {
      {"ZTRSM", 5, "ZTRSM" + std::string(27, ' ')},
      {"DGEMM_BATCH_STRIDED", 11, "DGEMM_BATCH" + std::string(21, ' ')},  // only len characters are read
      {std::string(40, 'Q'), 40, std::string(32, 'Q')},
      {"", 0, std::string(32, ' ')},
  };
  for (const auto& x : cases) {
    seen = report{};
    const int info = 7;
    xerbla_array_(x.name.data(), &x.len, &info, 1);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.name, x.want) << x.name;
    EXPECT_EQ(seen.info, 7);
  }
}

// Result kinds of the subroutines: one or two reals of either precision, or
// an index.
enum class res { f32, f64, c32, c64, index };
enum class sig { dot, vec, sdsdot, cabs1 };
struct sub {
  const char* name;
  sig s;
  bool single;  // the data are single precision
  res r;
};

TEST(SubroutineForms, AgreeWithTheReferenceSubroutines) {
  static const zar_test::ReferenceBlas ref;
  if (!ref.available()) GTEST_SKIP() << "the reference BLAS for i386 is not available (or a sanitizer build)";
  const sub subs[] = {
      {"sdotsub_", sig::dot, true, res::f32},     {"ddotsub_", sig::dot, false, res::f64},
      {"dsdotsub_", sig::dot, true, res::f64},    {"sdsdotsub_", sig::sdsdot, true, res::f32},
      {"cdotusub_", sig::dot, true, res::c32},    {"cdotcsub_", sig::dot, true, res::c32},
      {"zdotusub_", sig::dot, false, res::c64},   {"zdotcsub_", sig::dot, false, res::c64},
      {"snrm2sub_", sig::vec, true, res::f32},    {"dnrm2sub_", sig::vec, false, res::f64},
      {"scnrm2sub_", sig::vec, true, res::f32},   {"dznrm2sub_", sig::vec, false, res::f64},
      {"sasumsub_", sig::vec, true, res::f32},    {"dasumsub_", sig::vec, false, res::f64},
      {"scasumsub_", sig::vec, true, res::f32},   {"dzasumsub_", sig::vec, false, res::f64},
      {"isamaxsub_", sig::vec, true, res::index}, {"idamaxsub_", sig::vec, false, res::index},
      {"icamaxsub_", sig::vec, true, res::index}, {"izamaxsub_", sig::vec, false, res::index},
      {"scabs1sub_", sig::cabs1, true, res::f32}, {"dcabs1sub_", sig::cabs1, false, res::f64},
  };
  using dot_f = void (*)(const int*, const void*, const int*, const void*, const int*, void*);
  using vec_f = void (*)(const int*, const void*, const int*, void*);
  using sdsdot_f = void (*)(const int*, const float*, const void*, const int*, const void*, const int*, void*);
  using cabs1_f = void (*)(const void*, void*);
  const auto xd = random_values<double>(400, 11), yd = random_values<double>(400, 12);
  const std::vector<float> xf(xd.begin(), xd.end()), yf(yd.begin(), yd.end());
  const float sb = 0.375f;
  for (const sub& s : subs)
    for (int n : {0, 1, 37})
      for (int incx : {1, -2}) {
        const int incy = 3;
        const void* x = s.single ? static_cast<const void*>(xf.data()) : xd.data();
        const void* y = s.single ? static_cast<const void*>(yf.data()) : yd.data();
        auto run = [&](void* f, void* out) {
          switch (s.s) {
            case sig::dot:
              return reinterpret_cast<dot_f>(f)(&n, x, &incx, y, &incy, out);
            case sig::vec:
              return reinterpret_cast<vec_f>(f)(&n, x, &incx, out);
            case sig::sdsdot:
              return reinterpret_cast<sdsdot_f>(f)(&n, &sb, x, &incx, y, &incy, out);
            case sig::cabs1:
              return reinterpret_cast<cabs1_f>(f)(static_cast<const char*>(x) + 24, out);
          }
        };
        void* mine = dlsym(RTLD_DEFAULT, s.name);
        void* theirs = ref.sym<void*>(s.name);
        ASSERT_TRUE(mine && theirs) << s.name;
        alignas(16) unsigned char got[16], want[16];
        std::memset(got, 0xA5, sizeof got);
        std::memset(want, 0x5A, sizeof want);
        run(mine, got);
        run(theirs, want);
        // the p-th value of type V in a result
        auto part = [](const unsigned char* r, auto v, int p) {
          std::memcpy(&v, r + p * sizeof v, sizeof v);
          return v;
        };
        SCOPED_TRACE(testing::Message() << s.name << " n=" << n << " incx=" << incx);
        if (s.r == res::index) {
          EXPECT_EQ(part(got, 0, 0), part(want, 0, 0));
          continue;
        }
        const bool f32 = s.r == res::f32 || s.r == res::c32;
        const int parts = s.r == res::c32 || s.r == res::c64 ? 2 : 1;
        for (int p = 0; p < parts; ++p) {
          const double g = f32 ? part(got, 0.f, p) : part(got, 0.0, p);
          const double w = f32 ? part(want, 0.f, p) : part(want, 0.0, p);
          EXPECT_NEAR(g, w, (f32 ? 2e-5 : 1e-13) * (std::abs(w) + 4)) << "part " << p;
        }
      }
}

}  // namespace
}  // namespace l3f
