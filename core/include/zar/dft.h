/* zar FFT: descriptors for discrete Fourier transforms.
 *
 * A descriptor holds one transform problem: precision, domain, lengths,
 * layout, batch and scales. Create it, change settings, commit it (the
 * transform is planned then: twiddles and orderings are computed once), then
 * compute forward and backward as often as needed, and free it.
 *
 *   zar_dft_descriptor* d;
 *   zar_dft_create(&d, ZAR_DFT_DOUBLE, ZAR_DFT_COMPLEX, 1, 1024);
 *   zar_dft_commit(d);
 *   zar_dft_compute_forward(d, x);            // in place, x holds 1024 pairs
 *   zar_dft_free(&d);
 *
 * Conventions. Forward is y[k] = fscale * sum_j x[j] exp(-2 pi i jk/n),
 * backward uses exp(+2 pi i jk/n) and bscale; both scales are 1 by default,
 * so backward(forward(x)) = n x. Lengths of a multi-dimensional transform are
 * given in row-major order (the last one varies fastest in memory by
 * default). Strides are given as rank+1 values: a first offset, then one
 * stride per dimension in the order of the lengths; they count elements of
 * the data (complex numbers for complex data, reals for real data).
 *
 * Every call returns a status: 0 (ZAR_DFT_OK) on success, otherwise one of
 * the ZAR_DFT_E* codes; zar_dft_message(status) gives a one-line text. A
 * failing call leaves the descriptor usable.
 *
 * Integer settings take `long` values (array settings a `const long*`),
 * scales a `double` (also for single precision), the rest `long`.
 */
#ifndef ZAR_DFT_H
#define ZAR_DFT_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct zar_dft_descriptor zar_dft_descriptor;

/* Settings (the `param` of zar_dft_set and zar_dft_get). */
enum zar_dft_param {
  ZAR_DFT_FORWARD_DOMAIN = 0,    /* get: ZAR_DFT_COMPLEX or ZAR_DFT_REAL */
  ZAR_DFT_DIMENSION = 1,         /* get: rank */
  ZAR_DFT_LENGTHS = 2,           /* get: long[rank] */
  ZAR_DFT_PRECISION = 3,         /* get: ZAR_DFT_SINGLE or ZAR_DFT_DOUBLE */
  ZAR_DFT_FORWARD_SCALE = 4,     /* double */
  ZAR_DFT_BACKWARD_SCALE = 5,    /* double */
  ZAR_DFT_NUMBER_OF_TRANSFORMS = 7,
  ZAR_DFT_COMPLEX_STORAGE = 8,   /* ZAR_DFT_COMPLEX_COMPLEX or ZAR_DFT_REAL_REAL (split) */
  ZAR_DFT_REAL_STORAGE = 9,      /* ZAR_DFT_REAL_REAL */
  ZAR_DFT_CONJUGATE_EVEN_STORAGE = 10, /* ZAR_DFT_COMPLEX_COMPLEX or ZAR_DFT_COMPLEX_REAL */
  ZAR_DFT_PLACEMENT = 11,        /* ZAR_DFT_INPLACE or ZAR_DFT_NOT_INPLACE */
  ZAR_DFT_INPUT_STRIDES = 12,    /* long[rank+1] */
  ZAR_DFT_OUTPUT_STRIDES = 13,   /* long[rank+1] */
  ZAR_DFT_INPUT_DISTANCE = 14,
  ZAR_DFT_OUTPUT_DISTANCE = 15,
  ZAR_DFT_WORKSPACE = 17,        /* ZAR_DFT_ALLOW or ZAR_DFT_AVOID */
  ZAR_DFT_ORDERING = 18,         /* ZAR_DFT_ORDERED */
  ZAR_DFT_TRANSPOSE = 19,        /* ZAR_DFT_NONE */
  ZAR_DFT_COMMIT_STATUS = 22,    /* get: ZAR_DFT_COMMITTED or ZAR_DFT_UNCOMMITTED */
  ZAR_DFT_VERSION = 23,          /* get: char[ZAR_DFT_VERSION_LENGTH] */
  ZAR_DFT_THREAD_LIMIT = 27,     /* threads a compute may use; 0: the library's setting */
  ZAR_DFT_PACKED_FORMAT = 21     /* ZAR_DFT_CCE_FORMAT, _CCS_, _PACK_, _PERM_ */
};

/* Values. */
enum zar_dft_value {
  ZAR_DFT_COMMITTED = 30,
  ZAR_DFT_UNCOMMITTED = 31,
  ZAR_DFT_COMPLEX = 32,
  ZAR_DFT_REAL = 33,
  ZAR_DFT_SINGLE = 35,
  ZAR_DFT_DOUBLE = 36,
  ZAR_DFT_COMPLEX_COMPLEX = 39,
  ZAR_DFT_COMPLEX_REAL = 40,
  ZAR_DFT_REAL_REAL = 42,
  ZAR_DFT_INPLACE = 43,
  ZAR_DFT_NOT_INPLACE = 44,
  ZAR_DFT_ORDERED = 48,
  ZAR_DFT_ALLOW = 51,
  ZAR_DFT_AVOID = 52,
  ZAR_DFT_NONE = 53,
  ZAR_DFT_CCS_FORMAT = 54,
  ZAR_DFT_PACK_FORMAT = 55,
  ZAR_DFT_PERM_FORMAT = 56,
  ZAR_DFT_CCE_FORMAT = 57
};

/* Status codes. */
enum zar_dft_status {
  ZAR_DFT_OK = 0,
  ZAR_DFT_EMEMORY = 1,         /* memory could not be allocated */
  ZAR_DFT_EINVALID = 2,        /* a null descriptor, pointer or a bad argument */
  ZAR_DFT_EBAD_PARAM = 3,      /* unknown setting, or a setting that cannot be changed */
  ZAR_DFT_EBAD_VALUE = 4,      /* a value not allowed for this setting */
  ZAR_DFT_EINCONSISTENT = 5,   /* settings that do not fit together (found at commit) */
  ZAR_DFT_EUNCOMMITTED = 6,    /* compute on a descriptor that is not committed */
  ZAR_DFT_EUNIMPLEMENTED = 7,  /* a combination this library does not compute */
  ZAR_DFT_EBAD_DESCRIPTOR = 8, /* not a descriptor made by zar_dft_create */
  ZAR_DFT_ENOARGS = 9          /* compute called with fewer arrays than the layout needs */
};

#define ZAR_DFT_VERSION_LENGTH 198

/* Creates a descriptor. rank 1: one `long` length follows; rank > 1 (up to
 * 7): a `const long*` to rank lengths follows. */
long zar_dft_create(zar_dft_descriptor** d, int precision, int domain, long rank, ...);
long zar_dft_set(zar_dft_descriptor* d, int param, ...);
long zar_dft_get(const zar_dft_descriptor* d, int param, ...); /* a pointer to the value's type follows */
long zar_dft_commit(zar_dft_descriptor* d);
/* Arrays: in place one array (two for split complex: re, im); not in place
 * input then output (four for split: in re, in im, out re, out im). */
long zar_dft_compute_forward(const zar_dft_descriptor* d, void* a, ...);
long zar_dft_compute_backward(const zar_dft_descriptor* d, void* a, ...);
long zar_dft_copy(const zar_dft_descriptor* d, zar_dft_descriptor** copy);
long zar_dft_free(zar_dft_descriptor** d);
const char* zar_dft_message(long status);

#ifdef __cplusplus
}
#endif
#endif
