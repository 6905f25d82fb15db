/* A client of an installed zar: C := alpha A B + beta C through CBLAS and
 * through the Fortran name, each checked against a plain triple loop. The
 * values are small integers and halves, so every result is exact. */
#include <cblas.h>
#include <zar/blas.h>
#include <stdio.h>
#include <string.h>

enum { M = 7, N = 5, K = 4 };

static int compare(const char* how, const double* got, const double* want) {
  int bad = 0;
  for (int i = 0; i < M * N; ++i) {
    if (got[i] != want[i]) {
      if (bad++ < 5) printf("%s: element %d is %g, expected %g\n", how, i, got[i], want[i]);
    }
  }
  return bad;
}

int main(void) {
  double a[M * K], b[K * N], c0[M * N], want[M * N], c[M * N];
  const double alpha = 2.0, beta = 0.5;
  for (int i = 0; i < M * K; ++i) a[i] = (i % 5) - 2;
  for (int i = 0; i < K * N; ++i) b[i] = (i % 3) + 1;
  for (int i = 0; i < M * N; ++i) c0[i] = i;
  for (int j = 0; j < N; ++j) {
    for (int i = 0; i < M; ++i) {
      double s = 0;
      for (int p = 0; p < K; ++p) s += a[i + p * M] * b[p + j * K];
      want[i + j * M] = alpha * s + beta * c0[i + j * M];
    }
  }
  int bad = 0;
  memcpy(c, c0, sizeof c);
  cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, M, N, K, alpha, a, M, b, K, beta, c, M);
  bad += compare("cblas_dgemm", c, want);

  memcpy(c, c0, sizeof c);
  const int m = M, n = N, k = K;
  dgemm_("N", "N", &m, &n, &k, &alpha, a, &m, b, &k, &beta, c, &m);
  bad += compare("dgemm_", c, want);

  printf(bad ? "client: %d wrong elements\n" : "client: dgemm through CBLAS and Fortran agrees with the loop\n", bad);
  return bad != 0;
}
