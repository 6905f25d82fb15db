/* fft-demo: the spectrum of a signal made of three tones, through zar's FFT.
 *
 * One second of a signal sampled at 1000 Hz (1000 samples, so bin k is k Hz)
 * goes through one real forward transform, in place; the forward scale 2/n
 * turns the magnitudes of the half spectrum into the tones' amplitudes. The
 * program prints every bin that stands out, then checks the round trip.
 *
 *   cc -m32 fft_demo.c $(pkg-config --cflags --libs zar) -lm
 */
#include <math.h>
#include <stdio.h>

#include "zar/dft.h"

#define N 1000    /* samples */
#define RATE 1000 /* per second: bin k is k * RATE / N Hz */

static int fail(long status, const char* what) {
  fprintf(stderr, "fft-demo: %s: %s\n", what, zar_dft_message(status));
  return 1;
}

int main(void) {
  static const struct { double hz, amplitude; } tones[] = {{50, 1.0}, {120, 0.5}, {333, 0.25}};
  const double pi = 3.14159265358979323846;
  /* In place, the half spectrum (N/2+1 complex values) needs N+2 reals. */
  double x[N + 2], signal[N];
  for (int j = 0; j < N; ++j) {
    double s = 0;
    for (unsigned t = 0; t < sizeof tones / sizeof tones[0]; ++t)
      s += tones[t].amplitude * sin(2 * pi * tones[t].hz * j / RATE);
    x[j] = signal[j] = s;
  }

  zar_dft_descriptor* d = NULL;
  long st = zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_REAL, 1, (long)N);
  if (st) return fail(st, "create");
  if ((st = zar_dft_set(d, ZAR_DFT_FORWARD_SCALE, 2.0 / N)) || (st = zar_dft_set(d, ZAR_DFT_BACKWARD_SCALE, 0.5)) ||
      (st = zar_dft_commit(d)))
    return fail(st, "settings");
  if ((st = zar_dft_compute_forward(d, x))) return fail(st, "forward");

  /* x holds X[k] as (re, im) pairs, k = 0 .. N/2. */
  int peaks = 0;
  printf("spectrum of %d samples at %d Hz:\n", N, RATE);
  for (int k = 0; k <= N / 2; ++k) {
    const double a = hypot(x[2 * k], x[2 * k + 1]);
    if (a > 0.01) {
      printf("  %5.1f Hz  amplitude %.3f\n", (double)k * RATE / N, a);
      ++peaks;
    }
  }
  printf("%d peaks above 0.01\n", peaks);

  /* Backward with scale 1/2 undoes the forward scale 2/N times N. */
  if ((st = zar_dft_compute_backward(d, x))) return fail(st, "backward");
  double err = 0;
  for (int j = 0; j < N; ++j) err = fmax(err, fabs(x[j] - signal[j]));
  printf("round trip: largest difference %.1e\n", err);
  zar_dft_free(&d);
  return err < 1e-12 ? 0 : 1;
}
