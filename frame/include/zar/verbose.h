// The verbose line: a routine that reports reads the verbose mode on entry,
// times itself and hands one formatted line (at most 299 characters in a
// 300-byte buffer) and its elapsed seconds to the core's printer.
//
//   zar::verbose_timer vt;            // reads the mode, starts the clock
//   ... the work ...
//   vt.report("%s(%d,%p)", "DDTSVB", n, a);
#pragma once
#include "zar/services.h"

namespace zar {

class verbose_timer {
 public:
  verbose_timer() : on_(*zar_serv_verbose_mode() == 1), start_(on_ ? zar_serv_dsecnd() : 0.0) {}
  bool active() const { return on_; }

  template <class... A> void report(const char* format, A... args) const {
    if (!on_) return;
    char line[300];
    line[0] = '\0';
    zar_serv_snprintf_s(line, sizeof line, sizeof line - 1, format, args...);
    const double seconds = zar_serv_dsecnd() - start_;
    zar_serv_print_verbose_info(0, line, seconds);
  }

 private:
  bool on_;
  double start_;
};

}  // namespace zar
