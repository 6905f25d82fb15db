// Trigonometric transforms of a real sequence: sine, cosine, staggered
// cosine and sine, staggered-2 cosine and sine. Each is an O(n) pre- and
// post-processing around one real FFT of length n, reached through the
// core's descriptor front end; commit prepares the tables in dpar and the
// descriptor (real, in place, spectrum in the PACK layout R0 R1 I1 R2 I2 ...).
//
// What each kind computes (unscaled U for forward, V for backward; forward
// multiplies by 1/n, backward by 1/2, so that backward(forward(f)) = f):
//   sine (f[0..n], f[0] = f[n] = 0):     U = V: F_k = 2 sum_{j=1}^{n-1} f_j sin(pi jk/n)
//   cosine (f[0..n]):                    U = V: F_k = f_0 + (-1)^k f_n + 2 sum_{j=1}^{n-1} f_j cos(pi jk/n)
//   staggered cosine (f[0..n-1]):        U: F_k = 2 sum_j f_j cos(pi k(2j+1)/(2n))          (DCT-II)
//                                        V: f_j = F_0 + 2 sum_{k>=1} F_k cos(pi k(2j+1)/(2n)) (DCT-III)
//   staggered sine (f[0..n-1]):          U: F_k = 2 sum_j f_j sin(pi (k+1)(2j+1)/(2n))      (DST-II)
//                                        V: f_j = (-1)^j F_{n-1} + 2 sum_{k<n-1} F_k sin(pi (k+1)(2j+1)/(2n)) (DST-III)
//   staggered-2 cosine (f[0..n-1]):      U = V: F_k = 2 sum_j f_j cos(pi (2j+1)(2k+1)/(4n))  (DCT-IV)
//   staggered-2 sine (f[0..n-1]):        U = V: F_k = 2 sum_j f_j sin(pi (2j+1)(2k+1)/(4n))  (DST-IV)
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "zar/avx.h"
#include "zar/services.h"
#include "zar/pdett.h"

namespace zar::trig {
namespace {

// ------------------------------------------------------------- FFT access
template <class R> struct fft;
template <> struct fft<double> {
  static constexpr int precision = 36;
  static long forward(void* h, double* f) { return zar_dft_dfti_compute_forward_d(h, f); }
  static long backward(void* h, double* f) { return zar_dft_dfti_compute_backward_d(h, f); }
  static constexpr const char* upper = "D";
};
template <> struct fft<float> {
  static constexpr int precision = 35;
  static long forward(void* h, float* f) { return zar_dft_dfti_compute_forward_s(h, f); }
  static long backward(void* h, float* f) { return zar_dft_dfti_compute_backward_s(h, f); }
  static constexpr const char* upper = "S";
};

template <class R> void diagnostics(int code, const int* ipar, const R* dpar, const char* name);

// Routes one report as ipar[8] says: the C form, or its by-address twin.
template <class R> void report(int code, const int* ipar, const R* dpar, const char* name);

// Status bookkeeping shared by every routine: stat and ipar[6] agree.
inline int set_status(int* ipar, int* stat, int s) {
  ipar[ip_status] = s;
  *stat = s;
  return s;
}

// Runs the descriptor; on failure reports the front end's text (code 1001)
// and sets status -1000.
template <class R> bool run_fft(bool forward, R* f, void** handle, int* ipar, const R* dpar, int* stat) {
  const long st = forward ? fft<R>::forward(*handle, f) : fft<R>::backward(*handle, f);
  if (st == 0) return true;
  char text[80];
  zar_serv_strncpy_s(text, sizeof text, zar_dft_dfti_error_message(st), sizeof text - 1);
  if (ipar[ip_warnings] != 0) report<R>(1001, ipar, dpar, text);
  set_status(ipar, stat, st_fft_failed);
  return false;
}

// ------------------------------------------------------------- tables
// sine:   t[j] = sin(pi (j+1)/n), j < n/2
// cosine: t[j] as for sine, then t[n/2 + j] = cos(pi (j+1)/n), j < n/2
// staggered kinds: t[m] = cos(pi m/(4n)), m = 0 .. 2n
inline long double pi_l() { return 3.141592653589793238462643383279502884L; }
template <class R> void fill_tables(int kind, long n, R* t) {
  const long double pi = pi_l();
  if (kind == sine || kind == cosine) {
    for (long j = 0; j < n / 2; ++j) t[j] = static_cast<R>(sinl(pi * (j + 1) / n));
    if (kind == cosine)
      for (long j = 0; j < n / 2; ++j) t[n / 2 + j] = static_cast<R>(cosl(pi * (j + 1) / n));
  } else {
    for (long m = 0; m <= 2 * n; ++m) t[m] = static_cast<R>(cosl(pi * m / (4.0L * n)));
  }
}
// Number of table entries a kind needs (dpar holds them from position 2).
inline long table_size(int kind, long n) { return kind == sine ? n / 2 : kind == cosine ? 2 * (n / 2) : 2 * n + 1; }

// ------------------------------------------------------------- sine (f[0..n])
template <class R> int dft_sin(R* f, void** handle, int* ipar, R* t, int* stat) {
  const long n = ipar[ip_n];
  if (n < 2) {  // nothing inside the two fixed zeros
    if (n >= 0) {
      f[0] = 0;
      if (n == 1) f[1] = 0;
    }
    return set_status(ipar, stat, st_ok);
  }
  f[0] = 0;
  for (long j = 0; j < n / 2; ++j) {
    const R s = 2 * t[j];
    const R a = f[j + 1] + f[n - 1 - j];
    const R b = f[j + 1] - f[n - 1 - j];
    f[j + 1] = s * a + b;
    f[n - 1 - j] = s * a - b;
  }
  if (!run_fft<R>(true, f, handle, ipar, t - 2, stat)) return ipar[ip_status];
  // PACK: R_k at 2k-1, I_k at 2k. F_{2k} = -I_k, F_{2k+1} = F_{2k-1} + R_k,
  // F_1 = R_0 / 2.
  R sum = R(0.5) * f[0];
  f[0] = 0;
  long k = 1;
  for (; 2 * k < n; ++k) {
    const R r = f[2 * k - 1], im = f[2 * k];
    f[2 * k - 1] = sum;
    f[2 * k] = -im;
    sum += r;
  }
  if (n % 2 == 0) f[n - 1] = sum;
  f[n] = 0;
  return set_status(ipar, stat, st_ok);
}

// ------------------------------------------------------------- cosine (f[0..n])
template <class R> int dft_cos(R* f, void** handle, int* ipar, R* t, int* stat) {
  const long n = ipar[ip_n];
  if (n < 1) return set_status(ipar, stat, st_ok);
  if (n == 1) {
    const R a = f[0], b = f[1];
    f[0] = a + b;
    f[1] = a - b;
    return set_status(ipar, stat, st_ok);
  }
  const R* sn = t;
  const R* cs = t + n / 2;
  // F_1 = f_0 - f_n + 2 sum_j cos(pi j/n) (f_j - f_{n-j}) over the first half;
  // g_0 = f_0 + f_n, g_j = (f_j + f_{n-j}) - 2 sin(pi j/n)(f_j - f_{n-j}).
  R first = f[0] - f[n];
  f[0] = f[0] + f[n];
  for (long j = 1; j < n - j; ++j) {
    const R h = f[j] + f[n - j], d = f[j] - f[n - j];
    first += 2 * cs[j - 1] * d;
    const R w = 2 * sn[j - 1] * d;
    f[j] = h - w;
    f[n - j] = h + w;
  }
  if (n % 2 == 0) f[n / 2] = 2 * f[n / 2];
  if (!run_fft<R>(true, f, handle, ipar, t - 2, stat)) return ipar[ip_status];
  // F_{2k} = R_k, F_{2k+1} = F_{2k-1} - Im G_k.
  R sum = first;
  long k = 1;
  for (; 2 * k < n; ++k) {
    const R r = f[2 * k - 1], im = f[2 * k];
    f[2 * k - 1] = sum;
    f[2 * k] = r;
    sum -= im;
  }
  if (n % 2 == 0) {
    const R nyquist = f[n - 1];
    f[n - 1] = sum;
    f[n] = nyquist;
  } else {
    f[n] = sum;
  }
  return set_status(ipar, stat, st_ok);
}

// ------------------------------------------------------------- staggered kinds
// A work area of n values for the reorderings; when it cannot be had, the
// reorderings run in place (cycle by cycle, O(n^2) time, no memory).
template <class R> struct work_area {
  R* p;
  explicit work_area(long n, const char* name) {
    p = static_cast<R*>(zar_serv_allocate(static_cast<size_t>(n) * sizeof(R), 64));
    zar_serv_check_ptr_and_warn(p, name);
  }
  ~work_area() {
    if (p) zar_serv_deallocate(p);
  }
};

// a[dest(i)] = old a[i] for every i < n, in place: each cycle is moved once,
// from its smallest index.
template <class R, class D> void permute_in_place(R* a, long n, D dest) {
  for (long i = 0; i < n; ++i) {
    long j = dest(i);
    while (j > i) j = dest(j);
    if (j < i) continue;  // cycle already moved
    R carry = a[i];
    for (long k = dest(i); k != i; k = dest(k)) {
      R next = a[k];
      a[k] = carry;
      carry = next;
    }
    a[i] = carry;
  }
}

// Moves f into v in the even-then-reversed-odd order (v[j] = f[2j],
// v[n-1-j] = f[2j+1]), optionally negating odd positions; v may be f.
template <class R> void to_makhoul(const R* f, R* v, long n, bool alternate, bool in_place) {
  auto dest = [n](long i) { return i % 2 == 0 ? i / 2 : n - 1 - i / 2; };
  if (!in_place) {
    for (long i = 0; i < n; ++i) v[dest(i)] = (alternate && i % 2) ? -f[i] : f[i];
    return;
  }
  if (alternate)
    for (long i = 1; i < n; i += 2) v[i] = -v[i];
  permute_in_place(v, n, dest);
}
template <class R> void from_makhoul(const R* v, R* f, long n, bool alternate, bool in_place) {
  auto src = [n](long i) { return i % 2 == 0 ? i / 2 : n - 1 - i / 2; };
  if (!in_place) {
    for (long i = 0; i < n; ++i) f[i] = (alternate && i % 2) ? -v[src(i)] : v[src(i)];
    return;
  }
  // f[i] = v[src(i)]: the inverse permutation moves position src(i) to i.
  auto inv = [n](long m) { return 2 * m < n ? 2 * m : 2 * (n - 1 - m) + 1; };
  permute_in_place(f, n, inv);
  if (alternate)
    for (long i = 1; i < n; i += 2) f[i] = -f[i];
}

// DCT-II of f (E_k = 2 sum f_j cos(pi k(2j+1)/(2n))) by one real FFT of the
// reordered data: E_k = 2 Re(e^{-i pi k/(2n)} V_k), E_{n-k} = -2 Im(...).
// alternate: transform (-1)^j f_j. reverse: store E_k at f[n-1-k].
template <class R>
int dct2(R* f, void** handle, int* ipar, R* t, int* stat, bool alternate, bool reverse, const char* name) {
  const long n = ipar[ip_n];
  work_area<R> w(n, name);
  R* v = w.p ? w.p : f;
  to_makhoul(f, v, n, alternate, !w.p);
  if (!run_fft<R>(true, v, handle, ipar, t - 2, stat)) {
    if (!w.p) from_makhoul(v, f, n, alternate, true);
    return ipar[ip_status];
  }
  // E values computed into v at their own index, then moved to f.
  const R e0 = 2 * v[0];
  for (long k = 1; 2 * k < n; ++k) {
    const R re = v[2 * k - 1], im = v[2 * k];
    const R c = t[2 * k], s = t[2 * (n - k)];
    v[2 * k - 1] = 2 * (c * re + s * im);  // E_k
    v[2 * k] = 2 * (s * re - c * im);      // E_{n-k}
  }
  if (n % 2 == 0) v[n - 1] = 2 * t[n] * v[n - 1];  // E_{n/2}
  v[0] = e0;
  // v now holds E in the PACK order: E_0, (E_k, E_{n-k}) pairs, E_{n/2}.
  auto pos = [n](long k) { return k == 0 ? 0 : 2 * k < n ? 2 * k - 1 : 2 * k == n ? n - 1 : 2 * (n - k); };
  if (w.p) {
    for (long k = 0; k < n; ++k) f[reverse ? n - 1 - k : k] = v[pos(k)];
  } else {
    // in place: position pos(k) goes to k (or n-1-k); pos is a bijection.
    auto dest = [n, reverse](long p) {
      long k = p == 0 ? 0 : p == n - 1 && n % 2 == 0 ? n / 2 : p % 2 ? (p + 1) / 2 : n - p / 2;
      return reverse ? n - 1 - k : k;
    };
    permute_in_place(f, n, dest);
  }
  return set_status(ipar, stat, st_ok);
}

// DCT-III of f (D_j = F_0 + 2 sum_{k>=1} F_k cos(pi k(2j+1)/(2n))): the
// half spectrum W_k = e^{i pi k/(2n)} (F_k - i F_{n-k}), one backward real
// FFT, then the reordering back. reverse: read F_k from f[n-1-k];
// alternate: negate the odd outputs.
template <class R>
int dct3(R* f, void** handle, int* ipar, R* t, int* stat, bool alternate, bool reverse, const char* name) {
  const long n = ipar[ip_n];
  work_area<R> w(n, name);
  R* v = w.p ? w.p : f;
  auto F = [&](long k) { return reverse ? n - 1 - k : k; };
  auto pos = [n](long k) { return k == 0 ? 0 : 2 * k < n ? 2 * k - 1 : 2 * k == n ? n - 1 : 2 * (n - k); };
  if (w.p) {
    for (long k = 0; k < n; ++k) v[pos(k)] = f[F(k)];
  } else {
    auto dest = [&](long i) { return pos(reverse ? n - 1 - i : i); };
    permute_in_place(f, n, dest);
  }
  // v: F_0, (F_k, F_{n-k}) pairs, F_{n/2} -> W in PACK.
  for (long k = 1; 2 * k < n; ++k) {
    const R a = v[2 * k - 1], b = v[2 * k];
    const R c = t[2 * k], s = t[2 * (n - k)];
    v[2 * k - 1] = c * a + s * b;  // Re W_k
    v[2 * k] = s * a - c * b;      // Im W_k
  }
  if (n % 2 == 0) v[n - 1] = 2 * t[n] * v[n - 1];
  if (!run_fft<R>(false, v, handle, ipar, t - 2, stat)) return ipar[ip_status];
  from_makhoul(v, f, n, alternate, !w.p);
  return set_status(ipar, stat, st_ok);
}

template <class R> int dft_scos_f(R* f, void** h, int* ipar, R* t, int* stat) {
  if (ipar[ip_n] < 1) return set_status(ipar, stat, st_ok);
  return dct2(f, h, ipar, t, stat, false, false, "SCOS_F");
}
template <class R> int dft_scos_b(R* f, void** h, int* ipar, R* t, int* stat) {
  if (ipar[ip_n] < 1) return set_status(ipar, stat, st_ok);
  return dct3(f, h, ipar, t, stat, false, false, "SCOS_B");
}
// DST-II(f)_k = DCT-II((-1)^j f_j)_{n-1-k}; DST-III(F)_j = (-1)^j DCT-III(F reversed)_j.
template <class R> int dft_ssin_f(R* f, void** h, int* ipar, R* t, int* stat) {
  if (ipar[ip_n] < 1) return set_status(ipar, stat, st_ok);
  return dct2(f, h, ipar, t, stat, true, true, "SSIN_F");
}
template <class R> int dft_ssin_b(R* f, void** h, int* ipar, R* t, int* stat) {
  if (ipar[ip_n] < 1) return set_status(ipar, stat, st_ok);
  return dct3(f, h, ipar, t, stat, true, true, "SSIN_B");
}

// DCT-IV from the angle sum (2k+1)t_j = 2k t_j + t_j, t_j = pi (2j+1)/(4n):
// Y_k = DCT-II(cos t_j f_j)_k - DST-II(sin t_j f_j)_{k-1}, two exact
// transforms. Without a work area for the second one: Y from the DCT-II of
// 2 cos t_j f_j alone by the recurrence Y_k = E_k - Y_{k-1}, Y_{-1} = Y_0
// (no memory, an error growing with n). mirror: DST-IV(f)_k =
// (-1)^k DCT-IV(f reversed)_k.
template <class R> int dct4(R* f, void** h, int* ipar, R* t, int* stat, bool mirror, const char* name) {
  const long n = ipar[ip_n];
  if (n < 1) return set_status(ipar, stat, st_ok);
  if (mirror)
    for (long j = 0; j < n - 1 - j; ++j) {
      const R a = f[j];
      f[j] = f[n - 1 - j];
      f[n - 1 - j] = a;
    }
  work_area<R> w(n, name);
  if (w.p) {
    for (long j = 0; j < n; ++j) {
      w.p[j] = t[2 * n - 2 * j - 1] * f[j];  // sin t_j f_j
      f[j] = t[2 * j + 1] * f[j];            // cos t_j f_j
    }
    int s = dct2(f, h, ipar, t, stat, false, false, name);
    if (s == 0) s = dct2(w.p, h, ipar, t, stat, true, true, name);
    if (s != 0) return s;
    for (long k = n - 1; k >= 1; --k) f[k] -= w.p[k - 1];
  } else {
    for (long j = 0; j < n; ++j) f[j] = 2 * t[2 * j + 1] * f[j];
    const int s = dct2(f, h, ipar, t, stat, false, false, name);
    if (s != 0) return s;
    R prev = R(0.5) * f[0];
    f[0] = prev;
    for (long k = 1; k < n; ++k) {
      prev = f[k] - prev;
      f[k] = prev;
    }
  }
  if (mirror)
    for (long k = 1; k < n; k += 2) f[k] = -f[k];
  return set_status(ipar, stat, st_ok);
}
template <class R> int dft_scos2_f(R* f, void** h, int* ipar, R* t, int* stat) {
  return dct4(f, h, ipar, t, stat, false, "SCOS2_F");
}
template <class R> int dft_scos2_b(R* f, void** h, int* ipar, R* t, int* stat) {
  return dct4(f, h, ipar, t, stat, false, "SCOS2_B");
}
template <class R> int dft_ssin2_f(R* f, void** h, int* ipar, R* t, int* stat) {
  return dct4(f, h, ipar, t, stat, true, "SSIN2_F");
}
template <class R> int dft_ssin2_b(R* f, void** h, int* ipar, R* t, int* stat) {
  return dct4(f, h, ipar, t, stat, true, "SSIN2_B");
}

// ------------------------------------------------------------- scaling
// x[0 .. count) *= a. The vector loop first reaches a 32-byte boundary when
// x is aligned to its element size; the products are the same either way.
template <class R> void scale(R* x, long count, R a) {
  using A = avx<R>;
  long i = 0;
  if (reinterpret_cast<uintptr_t>(x) % sizeof(R) == 0)
    for (; i < count && reinterpret_cast<uintptr_t>(x + i) % 32 != 0; ++i) x[i] *= a;
  const typename A::V va = A::set1(a);
  for (; i + 4 * A::L <= count; i += 4 * A::L) {
    A::store(x + i, A::mul(A::load(x + i), va));
    A::store(x + i + A::L, A::mul(A::load(x + i + A::L), va));
    A::store(x + i + 2 * A::L, A::mul(A::load(x + i + 2 * A::L), va));
    A::store(x + i + 3 * A::L, A::mul(A::load(x + i + 3 * A::L), va));
  }
  for (; i < count; ++i) x[i] *= a;
}

// ------------------------------------------------------------- the protocol
template <class R> using kernel_fn = int (*)(R*, void**, int*, R*, int*);
template <class R> struct kinds {
  static constexpr kernel_fn<R> forward[6] = {dft_sin<R>, dft_cos<R>, dft_scos_f<R>,
                                              dft_ssin_f<R>, dft_scos2_f<R>, dft_ssin2_f<R>};
  static constexpr kernel_fn<R> backward[6] = {dft_sin<R>, dft_cos<R>, dft_scos_b<R>,
                                               dft_ssin_b<R>, dft_scos2_b<R>, dft_ssin2_b<R>};
};

// Values each kind holds in f: n + 1 for sine and cosine, n for the others.
inline long values(int kind, long n) { return kind <= cosine ? n + 1 : n; }

template <class R> int transform(bool forward, R* f, void** handle, int* ipar, R* dpar, int* stat) {
  if (ipar[ip_status] != 0) {
    if (ipar[ip_warnings] != 0) report<R>(5, ipar, dpar, "");
    return set_status(ipar, stat, st_bad_size);
  }
  const int kind = ipar[ip_kind];
  if (kind < 0 || kind > 5) {
    if (ipar[ip_warnings] != 0) report<R>(3, ipar, dpar, "");
    return set_status(ipar, stat, st_bad_kind);
  }
  const int s = (forward ? kinds<R>::forward : kinds<R>::backward)[kind](f, handle, ipar, dpar + 2, stat);
  if (s != 0) {
    ipar[ip_status] = s;
    return s;
  }
  const long n = ipar[ip_n];
  if (n == 0) {
    if (ipar[ip_warnings] != 0) report<R>(6, ipar, dpar, "");
    return set_status(ipar, stat, st_bad_size);
  }
  if (ipar[ip_noscale] != 0 || n < 0) return set_status(ipar, stat, st_ok);
  if (forward) {
    scale(f, values(kind, n), static_cast<R>(1.0 / static_cast<double>(n)));
  } else if (kind == sine) {
    if (n >= 2) scale(f + 1, n - 1, R(0.5));
  } else {
    scale(f, values(kind, n), R(0.5));
  }
  return set_status(ipar, stat, st_ok);
}

template <class R> void init(const int* n, const int* tt_type, int* ipar, R* dpar, int* stat) {
  ipar[ip_n] = *n;
  ipar[ip_kind] = *tt_type;
  ipar[ip_warnings] = ipar[ip_errors] = ipar[ip_init] = ipar[ip_caller] = ipar[ip_check] = 1;
  ipar[ip_status] = 0;
  dpar[0] = static_cast<R>(static_cast<double>(*n) * 1.0e-12);
  *stat = 0;
}

// Commit: checks what init left and the caller may have changed, fills the
// tables and makes the descriptor (freeing one the handle held). Codes:
//   3   kind outside 0..5 (status -100)
//   300 dpar[0] is not the n * 1.0e-12 that init stored for this n
//   301 n < 1                     302 dpar[0] not positive
//   303 dpar is a null pointer    304 init was not called (ipar[7] != 1)
//   307 f is a null pointer       308 ipar[9] != 1
//   309 handle is a null pointer  306 n too large for the tables
//   1001 the descriptor could not be made (status -1000)
template <class R> void commit(R* f, void** handle, int* ipar, R* dpar, int* stat) {
  const char* name = fft<R>::precision == 36 ? "d_commit_trig_transform" : "s_commit_trig_transform";
  auto fail = [&](int code, int status) {
    if ((code == 3 ? ipar[ip_warnings] : ipar[ip_errors]) != 0) report<R>(code, ipar, dpar, name);
    set_status(ipar, stat, status);
  };
  if (ipar[ip_init] != 1) return fail(304, st_bad_size);
  if (ipar[ip_check] != 1) return fail(308, st_bad_size);
  if (!dpar) return fail(303, st_bad_size);
  if (!f) return fail(307, st_bad_size);
  if (!handle) return fail(309, st_bad_size);
  const long n = ipar[ip_n];
  const int kind = ipar[ip_kind];
  if (kind < 0 || kind > 5) return fail(3, st_bad_kind);
  if (n < 1) return fail(301, st_bad_size);
  if (n > (1L << 28)) return fail(306, st_bad_size);
  if (!(dpar[0] > 0)) return fail(302, st_bad_size);
  const R expected = static_cast<R>(static_cast<double>(n) * 1.0e-12);
  if (dpar[0] != expected) return fail(300, st_bad_size);
  fill_tables<R>(kind, n, dpar + 2);
  if (*handle) zar_dft_dfti_free_descriptor(handle);
  const long st = zar_dft_dfti_create_real_pack(handle, fft<R>::precision, n);
  if (st != 0) {
    char text[80];
    zar_serv_strncpy_s(text, sizeof text, zar_dft_dfti_error_message(st), sizeof text - 1);
    if (ipar[ip_warnings] != 0) report<R>(1001, ipar, dpar, text);
    *handle = nullptr;
    set_status(ipar, stat, st_fft_failed);
    return;
  }
  set_status(ipar, stat, st_ok);
}

int free_transform(void** handle, int* ipar, int* stat) {
  set_status(ipar, stat, st_in_free);
  const long st = handle && *handle ? zar_dft_dfti_free_descriptor(handle) : 0;
  if (st == 0) {
    if (handle) *handle = nullptr;
    return set_status(ipar, stat, st_ok);
  }
  char text[80];
  zar_serv_strncpy_s(text, sizeof text, zar_dft_dfti_error_message(st), sizeof text - 1);
  if (ipar[ip_warnings] != 0) report<double>(1001, ipar, nullptr, text);
  return set_status(ipar, stat, st_fft_failed);
}

// ------------------------------------------------------------- diagnostics
constexpr const char log_file[] = "ZAR_Trig_Transforms_Log.txt";

// Appends one catalogue message (with its arguments) and a newline.
void append(char* text, size_t size, const char* piece) {
  zar_serv_strncat_s(text, size, piece, 512);
  zar_serv_strncat_s(text, size, "\n", 1);
}
void append_msg(char* text, size_t size, int id) { append(text, size, zar_serv_get_msg(id, 0)); }
void append_msg(char* text, size_t size, int id, const char* arg) { append(text, size, zar_serv_get_msg(id, 1, arg)); }
void append_int(char* text, size_t size, int id, int value) {
  char buf[22];
  zar_serv_sprintf_s(buf, sizeof buf, "%i", value);
  append_msg(text, size, id, buf);
}
void append_real(char* text, size_t size, int id, double value) {
  char buf[32];
  zar_serv_sprintf_s(buf, sizeof buf, "%.6e", value);
  append_msg(text, size, id, buf);
}

template <class R> void diagnostics(int code, const int* ipar, const R* dpar, const char* name) {
  static constexpr size_t size = 4097;
  char text[size] = " \n";
  append_msg(text, size, 396);
  // Codes 0 to 6 and 1001 follow the warning switch; the header word is
  // WARNING for them except code 2, which reports an error.
  const bool warning = (code >= 0 && code <= 6) || code == 1001;
  append_msg(text, size, warning && code != 2 ? 397 : 398);
  const char* nm = name ? name : "";
  switch (code) {
    case 0: append_int(text, size, 449, ipar[ip_status]); append_msg(text, size, 450); break;
    case 1: append_int(text, size, 451, ipar[ip_n]); append_msg(text, size, 452); break;
    case 3:
      append_int(text, size, 453, ipar[ip_kind]);
      for (int id : {454, 455, 456}) append_msg(text, size, id);
      break;
    case 4: for (int id : {457, 458, 459}) append_msg(text, size, id); break;
    case 5:
      append_msg(text, size, 460);
      append_int(text, size, 461, ipar[ip_status]);
      for (int id : {462, 463}) append_msg(text, size, id);
      break;
    case 6:
      append_msg(text, size, 464);
      append_int(text, size, 465, ipar[ip_n]);
      append_msg(text, size, 466);
      break;
    case 300:
      append_real(text, size, 467, dpar ? static_cast<double>(dpar[0]) : 0.0);
      for (int id : {468, 469, 470}) append_msg(text, size, id);
      append_real(text, size, 471, static_cast<double>(ipar[ip_n]) * 1.0e-12);
      break;
    case 302:
      append_msg(text, size, 472, nm);
      append_real(text, size, 473, dpar ? static_cast<double>(dpar[0]) : 0.0);
      append_msg(text, size, 474);
      break;
    case 303: {
      char buf[22];
      zar_serv_sprintf_s(buf, sizeof buf, "%p", static_cast<const void*>(dpar));
      append_msg(text, size, 475, nm);
      append_msg(text, size, 476, buf);
      append_msg(text, size, 477);
      break;
    }
    case 307: append_msg(text, size, 478, nm); for (int id : {479, 480}) append_msg(text, size, id); break;
    case 308:
      append_int(text, size, 481, ipar[ip_check]);
      append_msg(text, size, 482);
      append_msg(text, size, 483, "1");
      break;
    case 309: append_msg(text, size, 484, nm); for (int id : {485, 486}) append_msg(text, size, id); break;
    case 1001: append_msg(text, size, 487, nm); break;
    default: append_msg(text, size, 407); break;  // 2, 301, 304, 305, 306 and others
  }
  zar_serv_strncat_s(text, size, "\n\n", 2);
  const int destination = ipar[warning ? ip_warnings : ip_errors];
  if (destination >= 1) {
    zar_serv_printf_s("%.3079s", text);
    return;
  }
  FILE* log = zar_serv_fopen(log_file, "a+");
  if (!log) {
    zar_serv_print(0, "%s\n", zar_serv_get_msg(0, 0));
    zar_serv_print(0, "%s\n", zar_serv_get_msg(408, 1, log_file));
    zar_serv_print(0, "%s\n", zar_serv_get_msg(409, 0));
    return;
  }
  zar_serv_fprintf_s(log, "%s", text);
  zar_serv_fclose(log);
}

template <class R> void diagnostics_f(const int* code, const int* ipar, const R* dpar, const char* name, int len) {
  char buf[256] = "";
  if (name && len > 0) zar_serv_strncpy_s(buf, sizeof buf, name, static_cast<size_t>(len) < 255 ? len : 255);
  diagnostics<R>(*code, ipar, dpar, buf);
}

template <class R> void report(int code, const int* ipar, const R* dpar, const char* name) {
  if (ipar[ip_caller] != 0) {
    diagnostics<R>(code, ipar, dpar, name);
  } else {
    diagnostics_f<R>(&code, ipar, dpar, name, static_cast<int>(std::strlen(name)));
  }
}

}  // namespace
}  // namespace zar::trig

// ------------------------------------------------------------- exports
using namespace zar::trig;
#define ZAR_TT_DEF_KERNEL(p, R, tail)                                     \
  ZAR_EXPORT ZAR_TT_SIG_KERNEL(ZAR_KNAME(pdett, p##ptk_dft_##tail), R) { \
    return dft_##tail<R>(f, handle, ipar, tables, stat);                 \
  }
#define ZAR_TT_DEF(p, R)                                                                                         \
  ZAR_EXPORT ZAR_TT_SIG_INIT(ZAR_KNAME(pdett, p##_init_trig_transform), R) { init<R>(n, tt_type, ipar, dpar, stat); } \
  ZAR_EXPORT ZAR_TT_SIG_COMMIT(ZAR_KNAME(pdett, p##_commit_trig_transform), R) { commit<R>(f, handle, ipar, dpar, stat); } \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, p##_forward_trig_transform), R) {                                   \
    return transform<R>(true, f, handle, ipar, dpar, stat);                                                      \
  }                                                                                                              \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, p##_backward_trig_transform), R) {                                  \
    return transform<R>(false, f, handle, ipar, dpar, stat);                                                     \
  }                                                                                                              \
  ZAR_EXPORT ZAR_TT_SIG_DIAG_C(ZAR_KNAME(pdett, p##_print_diagnostics_c), R) { diagnostics<R>(code, ipar, dpar, name); } \
  ZAR_EXPORT ZAR_TT_SIG_DIAG_F(ZAR_KNAME(pdett, p##_print_diagnostics_f), R) {                                   \
    diagnostics_f<R>(code, ipar, dpar, name, name_len);                                                          \
  }                                                                                                              \
  /* the by-address twins only forward */                                                                        \
  ZAR_EXPORT ZAR_TT_SIG_INIT(ZAR_KNAME(pdett, _##p##_init_trig_transform), R) {                                  \
    ZAR_KNAME(pdett, p##_init_trig_transform)(n, tt_type, ipar, dpar, stat);                                     \
  }                                                                                                              \
  ZAR_EXPORT ZAR_TT_SIG_COMMIT(ZAR_KNAME(pdett, _##p##_commit_trig_transform), R) {                              \
    ZAR_KNAME(pdett, p##_commit_trig_transform)(f, handle, ipar, dpar, stat);                                    \
  }                                                                                                              \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, _##p##_forward_trig_transform), R) {                                \
    return ZAR_KNAME(pdett, p##_forward_trig_transform)(f, handle, ipar, dpar, stat);                            \
  }                                                                                                              \
  ZAR_EXPORT ZAR_TT_SIG_RUN(ZAR_KNAME(pdett, _##p##_backward_trig_transform), R) {                               \
    return ZAR_KNAME(pdett, p##_backward_trig_transform)(f, handle, ipar, dpar, stat);                           \
  }                                                                                                              \
  ZAR_TT_KERNELS(ZAR_TT_DEF_KERNEL, p, R)
ZAR_TT_PRECISIONS(ZAR_TT_DEF)

ZAR_EXPORT ZAR_TT_FREE_SIG(zar_pdett_avx_free_trig_transform) { return free_transform(handle, ipar, stat); }
ZAR_EXPORT ZAR_TT_FREE_SIG(zar_pdett_avx__free_trig_transform) {
  return zar_pdett_avx_free_trig_transform(handle, ipar, stat);
}
