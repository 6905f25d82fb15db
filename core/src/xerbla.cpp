// Error reporting. xerbla_ and cblas_xerbla have default visibility and are
// called through the dynamic linker, so an application (or a reference test
// program) that defines its own wins over these defaults.
#include <cstdarg>
#include <cstdio>
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

// Reference CBLAS behaviour: the routine name and the argument's position.
ZAR_API void cblas_xerbla(int p, const char* rout, const char* form, ...) {
  if (p) std::fprintf(stderr, "Parameter %d to routine %s was incorrect\n", p, rout);
  va_list ap;
  va_start(ap, form);
  std::vfprintf(stderr, form, ap);
  va_end(ap);
  std::fflush(stderr);
}

namespace zar::core {
void report_illegal(const char* name, int position) {
  xerbla_(name, &position, static_cast<int>(std::strlen(name)));
}
}  // namespace zar::core
