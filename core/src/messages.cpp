// The message catalogue: texts by number, one line each. A text may hold
// "%s" places, filled in order with the string arguments of the request.
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core.h"
#include "zar/services.h"

namespace {
struct message {
  int id;
  const char* text;
};

const message catalogue[] = {
    {1, "zar: not enough memory for a work area"},
    {2, "zar: an input parameter has an illegal value"},
    {3, "zar: the kernel library could not be loaded"},
    {4, "zar: the function is not supported by this kernel library"},

    // Trigonometric transforms and the Poisson solvers that use them.
    {396, "zar trigonometric transforms and Poisson solvers: diagnostics"},
    {397, "WARNING:"},
    {398, "ERROR:"},
    {399, "The grid sizes nx, ny and nz must each be at least 1."},
    {400, "The boundary condition string must hold one letter (D, N or P) per side of the domain."},
    {401, "The boundary condition letter %s is not D (Dirichlet), N (Neumann) or P (periodic)."},
    {402, "Periodic boundary conditions must be set on both opposite sides."},
    {403, "The domain bounds must satisfy ax < bx, ay < by and az < bz."},
    {404, "The Helmholtz coefficient q must not be negative."},
    {405, "With Neumann or periodic conditions on every side and q = 0 the problem has no unique solution."},
    {406, "The right-hand side does not satisfy the compatibility condition; the solution is shifted."},
    {407, "An input parameter is out of range or was changed after init; call init again."},
    {408, "zar: the diagnostics log file %s could not be opened."},
    {409, "zar: set ipar[1] and ipar[2] to 1 to print the diagnostics on standard output instead."},
    {410, "The array ipar was not prepared by init, or it was changed since."},
    {411, "The array dpar is too short for this transform size."},
    {412, "The array spar is too short for this transform size."},
    {413, "The commit routine was not called, or it failed."},
    {414, "The routine %s was called with a null pointer argument."},
    {415, "The grid size in the x direction (nx = %s) is too small."},
    {416, "The grid size in the y direction (ny = %s) is too small."},
    {417, "The grid size in the z direction (nz = %s) is too small."},
    {418, "The boundary values on the left side are inconsistent with the conditions."},
    {419, "The boundary values on the right side are inconsistent with the conditions."},
    {420, "The boundary values on the bottom side are inconsistent with the conditions."},
    {421, "The boundary values on the top side are inconsistent with the conditions."},
    {422, "The boundary values on the front side are inconsistent with the conditions."},
    {423, "The boundary values on the back side are inconsistent with the conditions."},
    {424, "The spherical grid needs an even number of points in the azimuth (np = %s)."},
    {425, "The spherical domain must satisfy 0 <= ap < bp <= 2 pi and 0 <= at < bt <= pi."},
    {426, "The whole sphere needs bp - ap = 2 pi and periodic conditions in the azimuth."},
    {427, "The Helmholtz solver stopped: the transform of the right-hand side failed."},
    {428, "The Helmholtz solver stopped: the tridiagonal systems could not be solved."},
    {429, "The tridiagonal system in the direction %s is singular."},
    {430, "The tolerance dpar[0] is too small for the grid; results may be inaccurate."},
    {431, "The tolerance dpar[0] is too large; the consistency checks may miss errors."},
    {432, "The right-hand side holds a value that is not a finite number."},
    {433, "The boundary arrays hold a value that is not a finite number."},
    {434, "The solution holds values that are not finite numbers; check the input data."},
    {435, "The Poisson solver was called with a transform kind it does not use."},
    {436, "The descriptor handle of the x direction is not valid."},
    {437, "The descriptor handle of the y direction is not valid."},
    {438, "The descriptor handle of the z direction is not valid."},
    {439, "The free routine could not release the descriptors."},
    {440, "The solver was called again after a failure without a new init."},
    {441, "The number of threads requested (%s) is not positive; one thread is used."},
    {442, "The solver works in double precision; call the d routines with double arrays."},
    {443, "The solver works in single precision; call the s routines with float arrays."},
    {444, "The precision of the arrays does not match the precision of init."},
    {445, "The problem dimension (2 or 3) does not match the routine called."},
    {446, "The mesh step in some direction is zero."},
    {447, "The mesh steps differ by more than the solver can handle accurately."},
    {448, "The diagnostics text was cut to the length of the buffer."},
    {449, "The last call ended with status %s."},
    {450, "Check the arguments of that call; ipar[6] holds its status."},
    {451, "The transform size n = %s is too small."},
    {452, "The size must be at least 1; the transform leaves the data unchanged."},
    {453, "The transform kind ipar[5] = %s is unknown."},
    {454, "The kinds are 0 sine, 1 cosine, 2 staggered cosine, 3 staggered sine,"},
    {455, "4 staggered-2 cosine and 5 staggered-2 sine."},
    {456, "Call init again with a kind from 0 to 5; nothing was computed."},
    {457, "The transform was called before a successful commit."},
    {458, "The descriptor handle does not hold a committed transform."},
    {459, "Call commit after init and before the first forward or backward call."},
    {460, "The transform was not computed:"},
    {461, "an earlier call failed and left ipar[6] = %s."},
    {462, "Correct the cause of that failure and set ipar[6] to 0"},
    {463, "before calling the transform again; the data are unchanged."},
    {464, "The transform size is zero:"},
    {465, "ipar[0] = %s;"},
    {466, "there is nothing to transform."},
    {467, "dpar[0] = %s is not the value init stored for this transform size:"},
    {468, "ipar[0] or dpar[0] was changed after init,"},
    {469, "or dpar belongs to another transform."},
    {470, "Call init again; for the current size dpar[0] should hold"},
    {471, "%s"},
    {472, "%s: the tolerance in dpar[0] must be positive;"},
    {473, "it holds %s."},
    {474, "Call init again with a size of at least 1."},
    {475, "%s: the real parameter array dpar"},
    {476, "(address %s) is a null pointer;"},
    {477, "pass an array of at least 5n/2 + 2 values."},
    {478, "%s: the data array f is a null pointer;"},
    {479, "pass the data to transform:"},
    {480, "n + 1 values for the sine and cosine kinds, n values for the others."},
    {481, "ipar[9] = %s, but init sets it to 1:"},
    {482, "ipar was changed after init, or it was not prepared by init;"},
    {483, "call init again (it sets ipar[9] to %s)."},
    {484, "%s: the descriptor handle is a null pointer;"},
    {485, "pass the address of a handle variable"},
    {486, "that holds null before the first commit."},
    {487, "The FFT descriptor front end failed: %s"},
};

const char* lookup(int id) {
  for (const message& m : catalogue)
    if (m.id == id) return m.text;
  return nullptr;
}
}  // namespace

// Fills the text's %s places with the arguments in order; a place with no
// argument left stays empty.
ZAR_API const char* zar_serv_get_msg(int id, int argc, ...) {
  thread_local char out[1024];
  const char* text = lookup(id);
  out[0] = '\0';
  if (!text) return out;
  va_list ap;
  va_start(ap, argc);
  size_t used = 0;
  for (const char* p = text; *p && used + 1 < sizeof out;) {
    if (p[0] == '%' && p[1] == 's') {
      const char* arg = argc-- > 0 ? va_arg(ap, const char*) : "";
      if (!arg) arg = "(null)";
      for (; *arg && used + 1 < sizeof out; ++arg) out[used++] = *arg;
      p += 2;
    } else {
      out[used++] = *p++;
    }
  }
  out[used] = '\0';
  va_end(ap);
  return out;
}
