// The public FFT descriptor interface (zar/dft.h): checks every argument,
// keeps the descriptor usable after any failing call, and hands the record
// to the kernel library for creation, commit and compute.
#include <cmath>
#include <cstdarg>
#include <cstdint>

#include "core.h"
#include "dft_core.h"
#include "zar/dft.h"
#include "zar/dfti.h"
#include "zar/services.h"

using namespace zar::core::dft;

namespace {

bool is_descriptor(const zar_dfti_desc* d) { return d->magic == ZAR_DFTI_MAGIC; }

// Status of a handle before any use: null, or not made by zar_dft_create.
long check_handle(const zar_dfti_desc* d) {
  if (!d) return ZAR_DFT_EINVALID;
  if (!is_descriptor(d)) return ZAR_DFT_EBAD_DESCRIPTOR;
  return ZAR_DFT_OK;
}

using create_1d_fn = int (*)(zar_dfti_desc**, long, zar_dfti_mem*);
using create_md_fn = int (*)(zar_dfti_desc**, long, const long*, zar_dfti_mem*);
int call_create(create_1d_fn f, zar_dfti_desc** h, long rank, const long* lengths) {
  return f(h, lengths[0], nullptr);
}
int call_create(create_md_fn f, zar_dfti_desc** h, long rank, const long* lengths) {
  return f(h, rank, lengths, nullptr);
}

// Creates the variant of (precision, domain, rank) with lengths in record
// order (dimension 0 the contiguous one).
long create_record(zar_dfti_desc** h, int precision, int domain, long rank, const long* lengths) {
  const bool md = rank > 1;
#define ZAR_DFT_CREATE_CASE(v, p, k, r, T, dom)                                                           \
  if (precision == (#p[0] == 's' ? ZAR_DFT_SINGLE : ZAR_DFT_DOUBLE) && domain == dom && md == (#r[0] == 'm')) \
    return call_create(ZAR_KERNEL(zar_dft_avx_dfti_create_##v), h, rank, lengths);
  ZAR_DFTI_VARIANTS(ZAR_DFT_CREATE_CASE)
#undef ZAR_DFT_CREATE_CASE
  return ZAR_DFT_EBAD_VALUE;
}

// Settings a descriptor's copy takes over (everything but the record's own
// pointers and plans).
void copy_settings(zar_dfti_desc* to, const zar_dfti_desc* from) {
  to->cstorage = from->cstorage;
  to->rstorage = from->rstorage;
  to->cestorage = from->cestorage;
  to->placement = from->placement;
  to->packed = from->packed;
  to->workspace = from->workspace;
  to->ordering = from->ordering;
  to->transpose = from->transpose;
  to->fscale = from->fscale;
  to->bscale = from->bscale;
  to->flags = from->flags;
  to->thr_limit = from->thr_limit;
  to->in_offset = from->in_offset;
  to->out_offset = from->out_offset;
  to->strides_set = from->strides_set;
  for (int k = 0; k < from->in.rank; ++k) to->in.dims[k] = from->in.dims[k];
  to->batch.dims[0] = from->batch.dims[0];
}

bool fits_int32(long long v) { return v >= INT32_MIN && v <= INT32_MAX; }

// Settings that take one of a few values, and the record field they set
// (none for the settings with a single allowed value).
struct choice {
  int param;
  int32_t zar_dfti_desc::*field;
  long allowed[4];
};
const choice choices[] = {
    {ZAR_DFT_COMPLEX_STORAGE, &zar_dfti_desc::cstorage, {ZAR_DFT_COMPLEX_COMPLEX, ZAR_DFT_REAL_REAL}},
    {ZAR_DFT_REAL_STORAGE, &zar_dfti_desc::rstorage, {ZAR_DFT_REAL_REAL}},
    {ZAR_DFT_CONJUGATE_EVEN_STORAGE, &zar_dfti_desc::cestorage, {ZAR_DFT_COMPLEX_COMPLEX, ZAR_DFT_COMPLEX_REAL}},
    {ZAR_DFT_PLACEMENT, &zar_dfti_desc::placement, {ZAR_DFT_INPLACE, ZAR_DFT_NOT_INPLACE}},
    {ZAR_DFT_WORKSPACE, &zar_dfti_desc::workspace, {ZAR_DFT_ALLOW, ZAR_DFT_AVOID}},
    {ZAR_DFT_ORDERING, nullptr, {ZAR_DFT_ORDERED}},
    {ZAR_DFT_TRANSPOSE, nullptr, {ZAR_DFT_NONE}},
    {ZAR_DFT_PACKED_FORMAT, &zar_dfti_desc::packed,
     {ZAR_DFT_CCS_FORMAT, ZAR_DFT_PACK_FORMAT, ZAR_DFT_PERM_FORMAT, ZAR_DFT_CCE_FORMAT}},
};

// Sets one setting from the argument list; ZAR_DFT_OK when it changed.
long set_value(zar_dfti_desc* d, int param, va_list ap) {
  const bool complex = d->domain == ZAR_DFTI_COMPLEX;
  switch (param) {
    case ZAR_DFT_FORWARD_SCALE:
    case ZAR_DFT_BACKWARD_SCALE: {
      const double s = va_arg(ap, double);
      if (!std::isfinite(s)) return ZAR_DFT_EBAD_VALUE;
      (param == ZAR_DFT_FORWARD_SCALE ? d->fscale : d->bscale) = s;
      return ZAR_DFT_OK;
    }
    case ZAR_DFT_INPUT_STRIDES:
    case ZAR_DFT_OUTPUT_STRIDES: {
      const long* s = va_arg(ap, const long*);
      if (!s) return ZAR_DFT_EINVALID;
      const int rank = d->in.rank;
      if (s[0] < 0) return ZAR_DFT_EBAD_VALUE;
      for (int k = 1; k <= rank; ++k)
        if (s[k] == 0) return ZAR_DFT_EBAD_VALUE;
      const bool in = param == ZAR_DFT_INPUT_STRIDES;
      (in ? d->in_offset : d->out_offset) = static_cast<int32_t>(s[0]);
      // Public order: the first length's stride first; the record keeps the
      // contiguous dimension first.
      for (int k = 1; k <= rank; ++k) (in ? d->in.dims[rank - k].is : d->in.dims[rank - k].os) = static_cast<int32_t>(s[k]);
      d->strides_set |= in ? 1 : 2;
      return ZAR_DFT_OK;
    }
    default:
      break;
  }
  const long v = va_arg(ap, long);
  switch (param) {
    case ZAR_DFT_NUMBER_OF_TRANSFORMS:
      if (v < 1) return ZAR_DFT_EBAD_VALUE;
      d->batch.dims[0].n = static_cast<int32_t>(v);
      return ZAR_DFT_OK;
    case ZAR_DFT_INPUT_DISTANCE:
    case ZAR_DFT_OUTPUT_DISTANCE:
      if (v < 0) return ZAR_DFT_EBAD_VALUE;
      (param == ZAR_DFT_INPUT_DISTANCE ? d->batch.dims[0].is : d->batch.dims[0].os) = static_cast<int32_t>(v);
      return ZAR_DFT_OK;
    case ZAR_DFT_COMPLEX_STORAGE:
      // split storage is a complex-domain layout only
      if (!complex && v != ZAR_DFT_COMPLEX_COMPLEX) return ZAR_DFT_EBAD_VALUE;
      break;
    case ZAR_DFT_THREAD_LIMIT:
      if (v < 0) return ZAR_DFT_EBAD_VALUE;
      d->thr_limit = static_cast<int32_t>(v);
      return ZAR_DFT_OK;
    default:
      break;
  }
  for (const choice& c : choices) {
    if (c.param != param) continue;
    for (long a : c.allowed)
      if (a != 0 && a == v) {
        if (c.field) d->*c.field = static_cast<int32_t>(v);
        return ZAR_DFT_OK;
      }
    return ZAR_DFT_EBAD_VALUE;
  }
  return ZAR_DFT_EBAD_PARAM;  // read-only or unknown
}

// Combinations the commit refuses before any planning.
long check_consistency(const zar_dfti_desc* d) {
  const bool real = d->domain == ZAR_DFTI_REAL;
  const bool inplace = d->placement == ZAR_DFTI_INPLACE;
  const int rank = d->in.rank;
  if (real) {
    if (d->cestorage == ZAR_DFTI_COMPLEX_REAL && rank > 1) return ZAR_DFT_EUNIMPLEMENTED;
    if (d->cestorage == ZAR_DFTI_COMPLEX_REAL && d->packed == ZAR_DFTI_CCE) return ZAR_DFT_EINCONSISTENT;
  } else {
    if (d->cstorage == ZAR_DFTI_REAL_REAL && rank > 1) return ZAR_DFT_EUNIMPLEMENTED;
    if (inplace) {
      if (d->strides_set & 2) {
        if (d->in_offset != d->out_offset) return ZAR_DFT_EINCONSISTENT;
        for (int k = 0; k < rank; ++k)
          if (d->in.dims[k].is != d->in.dims[k].os) return ZAR_DFT_EINCONSISTENT;
      }
      const zar_dfti_dim& b = d->batch.dims[0];
      if (b.is != 0 && b.os != 0 && b.is != b.os) return ZAR_DFT_EINCONSISTENT;
    }
  }
  return ZAR_DFT_OK;
}

long compute(const zar_dft_descriptor* d, bool forward, void* a, va_list ap) {
  const long h = check_handle(d);
  if (h != ZAR_DFT_OK) return h;
  if (d->status != ZAR_DFTI_COMMITTED || !(forward ? d->compute_fwd : d->compute_bwd)) return ZAR_DFT_EUNCOMMITTED;
  void* arrays[4] = {a, nullptr, nullptr, nullptr};
  const int count = d->nptr < 1 ? 1 : (d->nptr > 4 ? 4 : d->nptr);
  for (int k = 1; k < count; ++k) arrays[k] = va_arg(ap, void*);
  for (int k = 0; k < count; ++k)
    if (!arrays[k]) return ZAR_DFT_EINVALID;
  const bool verbose = *zar_serv_verbose_mode() == 1;
  const double start = verbose ? zar_serv_dsecnd() : 0.0;
  const long st = run(d, forward, arrays);
  if (verbose) {
    auto* rec = const_cast<zar_dft_descriptor*>(d);
    rec->seconds = zar_serv_dsecnd() - start;
    ZAR_KERNEL(zar_dft_avx_dfti_verbose)(rec);
  }
  return st;
}

}  // namespace

ZAR_API long zar_dft_create(zar_dft_descriptor** d, int precision, int domain, long rank, ...) {
  if (!d) return ZAR_DFT_EINVALID;
  *d = nullptr;
  if (precision != ZAR_DFT_SINGLE && precision != ZAR_DFT_DOUBLE) return ZAR_DFT_EBAD_VALUE;
  if (domain != ZAR_DFT_COMPLEX && domain != ZAR_DFT_REAL) return ZAR_DFT_EBAD_VALUE;
  if (rank < 1 || rank > ZAR_DFTI_MAX_RANK) return ZAR_DFT_EBAD_VALUE;
  long lengths[ZAR_DFTI_MAX_RANK];
  va_list ap;
  va_start(ap, rank);
  if (rank == 1) {
    lengths[0] = va_arg(ap, long);
  } else {
    const long* given = va_arg(ap, const long*);
    if (!given) {
      va_end(ap);
      return ZAR_DFT_EINVALID;
    }
    for (long k = 0; k < rank; ++k) lengths[rank - 1 - k] = given[k];
  }
  va_end(ap);
  long long total = 2;  // room for a padded real first dimension
  for (long k = 0; k < rank; ++k) {
    if (lengths[k] < 1) return ZAR_DFT_EBAD_VALUE;
    total *= lengths[k];
    if (!fits_int32(total)) return ZAR_DFT_EBAD_VALUE;
  }
  const long st = create_record(d, precision, domain, rank, lengths);
  if (st != 0) {
    *d = nullptr;
    return st;
  }
  zar_dft_bless_node_thr(*d);
  return ZAR_DFT_OK;
}

ZAR_API long zar_dft_set(zar_dft_descriptor* d, int param, ...) {
  const long h = check_handle(d);
  if (h != ZAR_DFT_OK) return h;
  va_list ap;
  va_start(ap, param);
  const long st = set_value(d, param, ap);
  va_end(ap);
  if (st == ZAR_DFT_OK) d->uncommit(d);
  return st;
}

ZAR_API long zar_dft_get(const zar_dft_descriptor* d, int param, ...) {
  const long h = check_handle(d);
  if (h != ZAR_DFT_OK) return h;
  va_list ap;
  va_start(ap, param);
  void* out = va_arg(ap, void*);
  va_end(ap);
  if (!out) return ZAR_DFT_EINVALID;
  long* v = static_cast<long*>(out);
  const int rank = d->in.rank;
  switch (param) {
    case ZAR_DFT_FORWARD_SCALE: *static_cast<double*>(out) = d->fscale; return ZAR_DFT_OK;
    case ZAR_DFT_BACKWARD_SCALE: *static_cast<double*>(out) = d->bscale; return ZAR_DFT_OK;
    case ZAR_DFT_VERSION: {
      char* text = static_cast<char*>(out);
      const int n = ZAR_KERNEL(zar_dft_avx_dfti_get_version_string)(text, ZAR_DFT_VERSION_LENGTH - 1);
      text[n] = '\0';
      return ZAR_DFT_OK;
    }
    case ZAR_DFT_LENGTHS:
      for (int k = 0; k < rank; ++k) v[k] = d->in.dims[rank - 1 - k].n;
      return ZAR_DFT_OK;
    case ZAR_DFT_INPUT_STRIDES:
    case ZAR_DFT_OUTPUT_STRIDES: {
      const bool in = param == ZAR_DFT_INPUT_STRIDES;
      v[0] = in ? d->in_offset : d->out_offset;
      for (int k = 1; k <= rank; ++k) v[k] = in ? d->in.dims[rank - k].is : d->in.dims[rank - k].os;
      return ZAR_DFT_OK;
    }
    case ZAR_DFT_FORWARD_DOMAIN: *v = d->domain; return ZAR_DFT_OK;
    case ZAR_DFT_DIMENSION: *v = rank; return ZAR_DFT_OK;
    case ZAR_DFT_PRECISION: *v = d->precision; return ZAR_DFT_OK;
    case ZAR_DFT_NUMBER_OF_TRANSFORMS: *v = d->batch.dims[0].n; return ZAR_DFT_OK;
    case ZAR_DFT_INPUT_DISTANCE: *v = d->batch.dims[0].is; return ZAR_DFT_OK;
    case ZAR_DFT_OUTPUT_DISTANCE: *v = d->batch.dims[0].os; return ZAR_DFT_OK;
    case ZAR_DFT_COMPLEX_STORAGE: *v = d->cstorage; return ZAR_DFT_OK;
    case ZAR_DFT_REAL_STORAGE: *v = d->rstorage; return ZAR_DFT_OK;
    case ZAR_DFT_CONJUGATE_EVEN_STORAGE: *v = d->cestorage; return ZAR_DFT_OK;
    case ZAR_DFT_PLACEMENT: *v = d->placement; return ZAR_DFT_OK;
    case ZAR_DFT_WORKSPACE: *v = d->workspace; return ZAR_DFT_OK;
    case ZAR_DFT_ORDERING: *v = d->ordering; return ZAR_DFT_OK;
    case ZAR_DFT_TRANSPOSE: *v = d->transpose; return ZAR_DFT_OK;
    case ZAR_DFT_COMMIT_STATUS: *v = d->status; return ZAR_DFT_OK;
    case ZAR_DFT_THREAD_LIMIT: *v = d->thr_limit; return ZAR_DFT_OK;
    case ZAR_DFT_PACKED_FORMAT: *v = d->packed; return ZAR_DFT_OK;
    default: return ZAR_DFT_EBAD_PARAM;
  }
}

ZAR_API long zar_dft_commit(zar_dft_descriptor* d) {
  const long h = check_handle(d);
  if (h != ZAR_DFT_OK) return h;
  const long bad = check_consistency(d);
  if (bad != ZAR_DFT_OK) return bad;
  return d->methods->commit(d);
}

ZAR_API long zar_dft_compute_forward(const zar_dft_descriptor* d, void* a, ...) {
  va_list ap;
  va_start(ap, a);
  const long st = compute(d, true, a, ap);
  va_end(ap);
  return st;
}

ZAR_API long zar_dft_compute_backward(const zar_dft_descriptor* d, void* a, ...) {
  va_list ap;
  va_start(ap, a);
  const long st = compute(d, false, a, ap);
  va_end(ap);
  return st;
}

ZAR_API long zar_dft_copy(const zar_dft_descriptor* d, zar_dft_descriptor** copy) {
  const long h = check_handle(d);
  if (h != ZAR_DFT_OK) return h;
  if (!copy) return ZAR_DFT_EINVALID;
  *copy = nullptr;
  long lengths[ZAR_DFTI_MAX_RANK];
  for (int k = 0; k < d->in.rank; ++k) lengths[k] = d->in.dims[k].n;
  zar_dfti_desc* c = nullptr;
  long st = create_record(&c, d->precision, d->domain, d->in.rank, lengths);
  if (st != 0) return st;
  zar_dft_bless_node_thr(c);
  copy_settings(c, d);
  if (d->status == ZAR_DFTI_COMMITTED) {
    st = c->methods->commit(c);
    if (st != 0) {
      c->destroy(c);
      return st;
    }
  }
  *copy = c;
  return ZAR_DFT_OK;
}

ZAR_API long zar_dft_free(zar_dft_descriptor** d) {
  if (!d) return ZAR_DFT_EINVALID;
  if (!*d) return ZAR_DFT_OK;
  if (!is_descriptor(*d)) return ZAR_DFT_EBAD_DESCRIPTOR;
  (*d)->destroy(*d);
  *d = nullptr;
  return ZAR_DFT_OK;
}

ZAR_API const char* zar_dft_message(long status) {
  switch (status) {
    case ZAR_DFT_OK: return "no error";
    case ZAR_DFT_EMEMORY: return "memory could not be allocated";
    case ZAR_DFT_EINVALID: return "a null descriptor or pointer, or an invalid argument";
    case ZAR_DFT_EBAD_PARAM: return "unknown setting, or a setting that cannot be changed";
    case ZAR_DFT_EBAD_VALUE: return "a value that this setting does not allow";
    case ZAR_DFT_EINCONSISTENT: return "settings that do not fit together";
    case ZAR_DFT_EUNCOMMITTED: return "the descriptor is not committed";
    case ZAR_DFT_EUNIMPLEMENTED: return "a combination of settings this library does not compute";
    case ZAR_DFT_EBAD_DESCRIPTOR: return "not a descriptor made by zar_dft_create";
    case ZAR_DFT_ENOARGS: return "too few arrays for the descriptor's layout";
    default: return "unknown status";
  }
}
