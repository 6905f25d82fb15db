/* A program written for FFTW, built against Debian's header and linked
 * with Debian's libfftw3 and libfftw3f. Run as it is it uses FFTW; run
 * with LD_LIBRARY_PATH pointing at zar's lib directory it uses zar, unchanged.
 * It prints the file that answered fftw_execute and checks a complex, a
 * real-to-complex and a cosine transform against direct sums. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fftw3.h>
#include <math.h>
#include <stdio.h>

#define N 60

static int check(const char* what, double got, double want, double tol) {
  if (fabs(got - want) <= tol) return 0;
  printf("FAIL %s: %.17g, expected %.17g\n", what, got, want);
  return 1;
}

int main(void) {
  const double pi = 3.14159265358979323846;
  int bad = 0;
  Dl_info info;
  if (dladdr((void*)fftw_execute, &info) && info.dli_fname) printf("fftw_execute from %s\n", info.dli_fname);
  if (dladdr((void*)fftwf_execute, &info) && info.dli_fname) printf("fftwf_execute from %s\n", info.dli_fname);

  fftw_complex* x = fftw_alloc_complex(N);
  fftw_complex* y = fftw_alloc_complex(N);
  double* r = fftw_alloc_real(N);
  double* c = fftw_alloc_real(N);
  fftw_plan p = fftw_plan_dft_1d(N, x, y, FFTW_FORWARD, FFTW_MEASURE);
  fftw_plan q = fftw_plan_dft_r2c_1d(N, r, y, FFTW_ESTIMATE);
  fftw_plan d = fftw_plan_r2r_1d(N, r, c, FFTW_REDFT10, FFTW_ESTIMATE);
  for (int j = 0; j < N; ++j) {
    x[j][0] = sin(j + 1.0);
    x[j][1] = cos(3.0 * j);
    r[j] = 1.0 / (j + 1);
  }
  fftw_execute(p);
  for (int k = 0; k < N; ++k) {
    double re = 0, im = 0;
    for (int j = 0; j < N; ++j) {
      const double a = -2 * pi * ((j * k) % N) / N;
      re += x[j][0] * cos(a) - x[j][1] * sin(a);
      im += x[j][0] * sin(a) + x[j][1] * cos(a);
    }
    bad += check("c2c re", y[k][0], re, 1e-11) + check("c2c im", y[k][1], im, 1e-11);
  }
  fftw_execute(q);
  for (int k = 0; k <= N / 2; ++k) {
    double re = 0, im = 0;
    for (int j = 0; j < N; ++j) {
      re += r[j] * cos(2 * pi * ((j * k) % N) / N);
      im -= r[j] * sin(2 * pi * ((j * k) % N) / N);
    }
    bad += check("r2c re", y[k][0], re, 1e-12) + check("r2c im", y[k][1], im, 1e-12);
  }
  fftw_execute(d);
  for (int k = 0; k < N; ++k) {
    double s = 0;
    for (int j = 0; j < N; ++j) s += 2 * r[j] * cos(pi * (j + 0.5) * k / N);
    bad += check("redft10", c[k], s, 1e-12);
  }
  fftw_destroy_plan(p);
  fftw_destroy_plan(q);
  fftw_destroy_plan(d);
  fftw_free(x);
  fftw_free(y);
  fftw_free(r);
  fftw_free(c);

  /* Single precision: a forward and backward round trip scales by n. */
  fftwf_complex* u = fftwf_alloc_complex(N);
  fftwf_plan f = fftwf_plan_dft_1d(N, u, u, FFTW_FORWARD, FFTW_ESTIMATE);
  fftwf_plan b = fftwf_plan_dft_1d(N, u, u, FFTW_BACKWARD, FFTW_ESTIMATE);
  for (int j = 0; j < N; ++j) {
    u[j][0] = (float)j;
    u[j][1] = (float)(N - j);
  }
  fftwf_execute(f);
  fftwf_execute(b);
  for (int j = 0; j < N; ++j)
    bad += check("float round trip", u[j][0] / N, j, 1e-4) + check("float round trip", u[j][1] / N, N - j, 1e-4);
  fftwf_destroy_plan(f);
  fftwf_destroy_plan(b);
  fftwf_free(u);
  fftw_cleanup();
  printf("%s\n", bad ? "FAILED" : "all results correct");
  return bad != 0;
}
