/* zar trigonometric transforms: sine and cosine transforms of a real
 * sequence, in six kinds, by the four-call protocol
 *
 *   int ipar[128]; double dpar[5 * n / 2 + 2]; zar_dft_descriptor* h = 0; int stat;
 *   zar_d_init_trig_transform(&n, &kind, ipar, dpar, &stat);
 *   zar_d_commit_trig_transform(f, &h, ipar, dpar, &stat);
 *   zar_d_forward_trig_transform(f, &h, ipar, dpar, &stat);   // any number of times,
 *   zar_d_backward_trig_transform(f, &h, ipar, dpar, &stat);  // in place on f
 *   zar_free_trig_transform(&h, ipar, &stat);
 *
 * The single-precision calls (zar_s_...) take float arrays. Between init and
 * commit the caller may change the switches in ipar (positions below). Each
 * call stores its status in stat and ipar[6] and returns it.
 *
 * Kinds and what they compute (f holds n + 1 values for kinds 0 and 1, n
 * values for the others; U is computed by forward, V by backward):
 *   0 ZAR_TT_SINE        U = V: F_k = 2 sum_{j=1}^{n-1} f_j sin(pi jk/n); f_0 = f_n = 0   (DST-I)
 *   1 ZAR_TT_COSINE      U = V: F_k = f_0 + (-1)^k f_n + 2 sum_{j=1}^{n-1} f_j cos(pi jk/n) (DCT-I)
 *   2 ZAR_TT_STAGGERED_COSINE  U: F_k = 2 sum_j f_j cos(pi k(2j+1)/(2n))              (DCT-II)
 *                              V: f_j = F_0 + 2 sum_{k>=1} F_k cos(pi k(2j+1)/(2n))   (DCT-III)
 *   3 ZAR_TT_STAGGERED_SINE    U: F_k = 2 sum_j f_j sin(pi (k+1)(2j+1)/(2n))          (DST-II)
 *                              V: f_j = (-1)^j F_{n-1} + 2 sum_{k<n-1} F_k sin(...)   (DST-III)
 *   4 ZAR_TT_STAGGERED2_COSINE U = V: F_k = 2 sum_j f_j cos(pi (2j+1)(2k+1)/(4n))     (DCT-IV)
 *   5 ZAR_TT_STAGGERED2_SINE   U = V: F_k = 2 sum_j f_j sin(pi (2j+1)(2k+1)/(4n))     (DST-IV)
 * Scaling: forward multiplies U by 1/n, backward multiplies V by 1/2, so
 * that backward(forward(f)) = f (the sine kind's backward scales f_1..f_{n-1});
 * ipar[10] != 0 skips both scalings (U and V as written above).
 *
 * ipar positions: 0 n; 1 warnings and 2 errors: 0 silent, >= 1 printed on
 * standard output, < 0 appended to "ZAR_Trig_Transforms_Log.txt"; 5 kind;
 * 6 status of the last call (a failure blocks later transforms until the
 * caller sets it to 0); 10 skip scaling. dpar[0] holds n * 1.0e-12 (set by
 * init and checked by commit); commit keeps its tables from dpar[2] on.
 *
 * Statuses: 0 done; -100 unknown kind; -1000 the FFT failed (its message is
 * reported); -10000 n is 0, an argument is invalid, or an earlier failure
 * is pending in ipar[6]; -99999 free did not finish.
 */
#ifndef ZAR_TRIG_H
#define ZAR_TRIG_H

#include "zar/dft.h"

#ifdef __cplusplus
extern "C" {
#endif

enum zar_tt_kind {
  ZAR_TT_SINE = 0,
  ZAR_TT_COSINE = 1,
  ZAR_TT_STAGGERED_COSINE = 2,
  ZAR_TT_STAGGERED_SINE = 3,
  ZAR_TT_STAGGERED2_COSINE = 4,
  ZAR_TT_STAGGERED2_SINE = 5
};

int zar_d_init_trig_transform(const int* n, const int* kind, int* ipar, double* dpar, int* stat);
int zar_d_commit_trig_transform(double* f, zar_dft_descriptor** handle, int* ipar, double* dpar, int* stat);
int zar_d_forward_trig_transform(double* f, zar_dft_descriptor** handle, int* ipar, double* dpar, int* stat);
int zar_d_backward_trig_transform(double* f, zar_dft_descriptor** handle, int* ipar, double* dpar, int* stat);
int zar_s_init_trig_transform(const int* n, const int* kind, int* ipar, float* spar, int* stat);
int zar_s_commit_trig_transform(float* f, zar_dft_descriptor** handle, int* ipar, float* spar, int* stat);
int zar_s_forward_trig_transform(float* f, zar_dft_descriptor** handle, int* ipar, float* spar, int* stat);
int zar_s_backward_trig_transform(float* f, zar_dft_descriptor** handle, int* ipar, float* spar, int* stat);
int zar_free_trig_transform(zar_dft_descriptor** handle, int* ipar, int* stat);

#ifdef __cplusplus
}
#endif
#endif
