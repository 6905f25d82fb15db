// The binary interface that programs written for FFTW 3 call: the types,
// constants and flag bits they pass, declared here on their own (the
// programs' header is not used to build the library). A program's
// fftw_complex is an array of two reals, its plan an opaque pointer, its
// r2r kinds int-sized enumerators.
#pragma once
#include <cstddef>

namespace zar::fftw {

// One dimension of a guru problem: length, input and output stride.
struct iodim {
  int n, is, os;
};
struct iodim64 {
  std::ptrdiff_t n, is, os;
};

// Real-to-real kinds, with their published values.
enum r2r_kind : int {
  R2HC = 0,
  HC2R = 1,
  DHT = 2,
  REDFT00 = 3,
  REDFT01 = 4,
  REDFT10 = 5,
  REDFT11 = 6,
  RODFT00 = 7,
  RODFT01 = 8,
  RODFT10 = 9,
  RODFT11 = 10
};
inline constexpr int r2r_kinds = 11;

inline constexpr int sign_forward = -1;

// Planner flags. All are accepted; the ones with an effect here are noted
// where they are read.
inline constexpr unsigned flag_destroy_input = 1u << 0;
inline constexpr unsigned flag_preserve_input = 1u << 4;

// The callbacks of the character-stream wisdom calls.
using write_char_func = void (*)(char c, void* data);
using read_char_func = int (*)(void* data);

struct plan_base;  // what a program's plan pointer points to (plan.h)

}  // namespace zar::fftw
