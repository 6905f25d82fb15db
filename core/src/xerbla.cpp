// Error reporting. xerbla_ and cblas_xerbla have default visibility and are
// called through the dynamic linker, so an application (or a reference test
// program) that defines its own wins over these defaults.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core.h"
#include "zar/services.h"

extern "C" void xerbla_(const char* name, const int* info, int name_length);

ZAR_API void xerbla_(const char* name, const int* info, int name_length) {
  int len = name_length;
  while (len > 0 && (name[len - 1] == ' ' || name[len - 1] == '\0')) --len;
  std::fprintf(stderr, " ** On entry to %.*s parameter number %2d had an illegal value\n", len, name, *info);
  std::fflush(stderr);
}

ZAR_API void zar_serv_xerbla(const char* name, const int* info, int name_length) {
  xerbla_(name, info, name_length);
}

ZAR_API int lsame_(const char* a, const char* b) { return zar_serv_lsame(a, b); }

// Set while a row-major CBLAS call runs, as the reference CBLAS does: the
// reference test programs read it in their own cblas_xerbla to translate
// argument positions.
ZAR_API int RowMajorStrg = 0;

namespace zar::core {

// A row-major CBLAS call runs as the column-major call of the transposed
// problem, and its checks report the position in that call plus one. For
// the routines whose transposed call exchanges arguments (dimensions,
// leading dimensions, band widths, the two vectors), this gives back the
// position in the caller's own row-major call.
int row_major_position(const char* rout, int p) {
  const char* base = std::strncmp(rout, "cblas_", 6) == 0 ? rout + 6 : rout;
  // the type letters (s, d, c, z, and the mixed forms such as sc or dz)
  if (*base) ++base;
  auto is = [&](const char* name) { return std::strcmp(base, name) == 0; };
  auto swap = [&](int a, int b) { return p == a ? b : p == b ? a : p; };
  if (is("gemm") || is("gemm3m")) return swap(9, 11) == p ? swap(4, 5) : swap(9, 11);
  if (is("gemmt")) return swap(9, 11);
  if (is("symm") || is("hemm")) return swap(4, 5);
  if (is("trmm") || is("trsm")) return swap(6, 7);
  if (is("gemv")) return swap(3, 4);
  if (is("gbmv")) return swap(3, 4) == p ? swap(5, 6) : swap(3, 4);
  if (is("ger") || is("geru") || is("gerc")) return swap(2, 3) == p ? swap(6, 8) : swap(2, 3);
  if (is("her2") || is("hpr2")) return swap(6, 8);
  return p;
}

}  // namespace zar::core

// The reference CBLAS's default: the caller's position (translated back
// for a row-major call), the routine's own message if any, and the program
// stops with status 255. An argument found illegal by the column-major
// checks (empty message) is named as the reference names it there: its
// Fortran name, six characters blank-padded, after "cblas_".
ZAR_API void cblas_xerbla(int p, const char* rout, const char* form, ...) {
  if (!rout) rout = "";
  if (!form) form = "";
  if (p) {
    if (RowMajorStrg) p = zar::core::row_major_position(rout, p);
    const bool padded = *form == '\0' && std::strncmp(rout, "cblas_", 6) == 0;
    const int len = padded ? static_cast<int>(std::strlen(rout + 6)) : 6;
    std::fprintf(stderr, "Parameter %d to routine %s%*s was incorrect\n", p, rout, len < 6 ? 6 - len : 0, "");
  }
  va_list ap;
  va_start(ap, form);
  std::vfprintf(stderr, form, ap);
  va_end(ap);
  std::fflush(stderr);
  std::exit(-1);
}

namespace zar::core {
void report_illegal(const char* name, int position) {
  xerbla_(name, &position, static_cast<int>(std::strlen(name)));
}

void report_routine(char letter, const char* op, bool cblas, int position) {
  char name[40];
  if (cblas) {
    std::snprintf(name, sizeof name, "cblas_%c%s", letter, op);
    cblas_xerbla(position + 1, name, "");
    return;
  }
  char low[32];
  std::snprintf(low, sizeof low, "%c%s", letter, op);
  std::snprintf(name, sizeof name, "%-6s", low);
  for (char* c = name; *c; ++c) *c = static_cast<char>(*c >= 'a' && *c <= 'z' ? *c - 32 : *c);
  report_illegal(name, position);
}
}  // namespace zar::core
