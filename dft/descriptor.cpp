// The FFT descriptor record: memory hooks, creation, the size query and
// creation inside caller memory, the back-end lists, the verbose line and the
// version string.
#include <sys/types.h>

#include <atomic>
#include <cstdint>

#include "dft/dfti_impl.h"

using namespace zar::dfti;

// ------------------------------------------------------------ memory hooks
namespace {

// Arena draws: the cursor advances by the size rounded up to 64 bytes; a
// disabled arena (size query) hands out nothing, and a draw past the end of
// the caller's memory fails.
void* draw(zar_dfti_mem* m, int arena, size_t bytes) {
  if (!m) return nullptr;
  if (m->mode == ZAR_DFTI_MODE_SHARED) arena = 0;
  zar_dfti_arena& a = m->arena[arena];
  const size_t size = up64(bytes);
  if (size < bytes) return nullptr;
  if (!a.enable) {
    a.cursor += size;
    return nullptr;
  }
  if (a.cursor > a.end || size > a.end - a.cursor) return nullptr;
  void* p = reinterpret_cast<void*>(a.cursor);
  a.cursor += size;
  return p;
}
void* dfti_malloc_ext(size_t bytes, int, zar_dfti_mem* m) { return draw(m, 0, bytes); }
void* dfti_calloc_ext(size_t count, size_t size, int, zar_dfti_mem* m) {
  if (size && count > SIZE_MAX / size) return nullptr;
  void* p = draw(m, 0, count * size);
  if (p) std::memset(p, 0, count * size);
  return p;
}
void* dfti_allocate_ext(size_t bytes, int, zar_dfti_mem* m) { return draw(m, 1, bytes); }
void dfti_free_ext(void*, zar_dfti_mem*) {}

// Core memory. Records need 64-byte alignment, so every hook goes through
// the aligned allocator.
void* dfti_malloc_int(size_t bytes, int alignment, zar_dfti_mem*) {
  return zar_serv_allocate(bytes, alignment > 0 ? alignment : 64);
}
void* dfti_calloc_int(size_t count, size_t size, int alignment, zar_dfti_mem*) {
  if (size && count > SIZE_MAX / size) return nullptr;
  void* p = zar_serv_allocate(count * size, alignment > 0 ? alignment : 64);
  if (p) std::memset(p, 0, count * size);
  return p;
}
void dfti_free_int(void* p, zar_dfti_mem*) { zar_serv_deallocate(p); }

zar_lock_t hooks_lock = 0;
std::atomic<int> hooks_done{0};
zar_lock_t bless_lock = 0;

}  // namespace

// The hooks are exported data objects (declared extern "C" in zar/dfti.h).
#define ZAR_DFTI_HOOK __attribute__((visibility("default")))
ZAR_DFTI_HOOK zar_dfti_malloc_fn dfti_malloc = dfti_malloc_int;
ZAR_DFTI_HOOK zar_dfti_calloc_fn dfti_calloc = dfti_calloc_int;
ZAR_DFTI_HOOK zar_dfti_malloc_fn dfti_allocate = dfti_malloc_int;
ZAR_DFTI_HOOK zar_dfti_free_fn dfti_free = dfti_free_int;
ZAR_DFTI_HOOK zar_dfti_free_fn dfti_deallocate = dfti_free_int;

// The first call of the process decides, for good, between the caller's
// arenas and the core's memory.
ZAR_EXPORT void zar_dft_avx_dfti_mem_methods_init(zar_dfti_mem* mem) {
  if (hooks_done.load(std::memory_order_acquire)) return;
  zar_serv_lock(&hooks_lock);
  if (!hooks_done.load(std::memory_order_relaxed)) {
    if (mem) {
      dfti_malloc = dfti_malloc_ext;
      dfti_calloc = dfti_calloc_ext;
      dfti_allocate = dfti_allocate_ext;
      dfti_free = dfti_free_ext;
      dfti_deallocate = dfti_free_ext;
    } else {
      dfti_malloc = dfti_malloc_int;
      dfti_calloc = dfti_calloc_int;
      dfti_allocate = dfti_malloc_int;
      dfti_free = dfti_free_int;
      dfti_deallocate = dfti_free_int;
    }
    hooks_done.store(1, std::memory_order_release);
  }
  zar_serv_unlock(&hooks_lock);
}

// ------------------------------------------------------------------ tensors
ZAR_EXPORT int zar_dft_avx_Iotensor_create(zar_dfti_tensor* t, long rank, zar_dfti_dim* storage) {
  if (rank < 1 || rank > ZAR_DFTI_MAX_RANK) return ZAR_DFTI_EBAD_VALUE;
  t->rank = static_cast<int32_t>(rank);
  t->dims = storage;
  std::memset(storage, 0, sizeof(zar_dfti_dim) * rank);
  return 0;
}

ZAR_EXPORT int zar_dft_avx_Iotensor_copy(zar_dfti_tensor* dst, const zar_dfti_tensor* src) {
  if (!dst->dims || src->rank < 1 || src->rank > ZAR_DFTI_MAX_RANK) return ZAR_DFTI_EINVALID;
  dst->rank = src->rank;
  std::memcpy(dst->dims, src->dims, sizeof(zar_dfti_dim) * src->rank);
  return 0;
}

// ---------------------------------------------------------------- methods
namespace zar::dfti {

void release_plans(zar_dfti_desc* d) {
  if (size_query(d)) return;
  zar_dfti_desc* node = d->next;
  while (node) {
    zar_dfti_desc* after = node->next;
    dfti_deallocate(node->plan, d->mem);
    dfti_free(node, d->mem);
    node = after;
  }
  d->next = nullptr;
  dfti_deallocate(d->plan, d->mem);
  dfti_deallocate(d->scratch, d->mem);
  d->plan = d->scratch = nullptr;
  d->plan_bytes = d->scratch_bytes = d->scratch_stride = d->max_work = 0;
}

}  // namespace zar::dfti

namespace {

void static_uncommit(zar_dfti_desc* d) {
  release_plans(d);
  d->compute_fwd = d->compute_bwd = nullptr;
  d->kfwd = d->kbwd = nullptr;
  d->twod_fwd = d->twod_bwd = nullptr;
  d->nodes = 1;
  d->status = ZAR_DFTI_UNCOMMITTED;
}

void static_destroy(zar_dfti_desc* d) {
  static_uncommit(d);
  d->magic = 0;
  if (!size_query(d)) dfti_free(d, d->mem);
}

// Commit through the back-end list: the first entry that succeeds.
int static_commit(zar_dfti_desc* d) {
  int st = ZAR_DFTI_EUNIMPLEMENTED;
  for (int i = 0; d->bkdlist && i < d->bkdlist->count; ++i) {
    st = d->bkdlist->entry[i](d);
    if (st == 0) break;
  }
  return st;
}

zar_dfti_methods static_methods = {static_commit, nullptr};

// The interface entries a caller of the record may need besides the
// methods: the version string.
struct zarapi_entries {
  int (*version)(char*, int);
};
const zarapi_entries static_zarapi_entries = {zar_dft_avx_dfti_get_version_string};

// Installs the cache-size query in the method table once.
void bless_node_core(zar_dfti_desc* d) {
  if (static_methods.cache_size) return;
  zar_serv_lock(&bless_lock);
  if (!static_methods.cache_size) static_methods.cache_size = zar_serv_get_cache_size;
  zar_serv_unlock(&bless_lock);
}

}  // namespace

ZAR_EXPORT int zar_dft_avx_dfti_create_node(zar_dfti_desc** handle, int precision, int domain, long rank,
                                            const long* lengths, zar_dfti_mem* mem) {
  zar_dft_avx_dfti_mem_methods_init(mem);
  zar_dfti_desc* d;
  if (mem && mem->mode == ZAR_DFTI_MODE_QUERY) {
    // A size query allocates nothing: it measures and fills the record the
    // handle already holds.
    measure(mem, 0, sizeof(zar_dfti_desc));
    d = *handle;
    if (!d) return ZAR_DFTI_EMEMORY;
    std::memset(static_cast<void*>(d), 0, sizeof *d);
  } else {
    d = static_cast<zar_dfti_desc*>(dfti_calloc(1, sizeof(zar_dfti_desc), 64, mem));
    if (!d) return ZAR_DFTI_EMEMORY;
  }
  d->mem = mem;
  d->uncommit = static_uncommit;
  d->destroy = static_destroy;
  d->methods = &static_methods;
  d->api = &static_zarapi_entries;
  int st = zar_dft_avx_Iotensor_create(&d->in, rank, d->dim_store[0]);
  if (st == 0) st = zar_dft_avx_Iotensor_create(&d->batch, 1, d->dim_store[1]);
  if (st != 0) {
    d->destroy(d);
    return st;
  }
  int32_t stride = 1;
  for (long k = 0; k < rank; ++k) {
    d->in.dims[k].n = static_cast<int32_t>(lengths[k]);
    d->in.dims[k].is = d->in.dims[k].os = stride;
    stride *= static_cast<int32_t>(lengths[k]);
  }
  d->batch.dims[0] = {1, 0, 0, 0, 0};
  d->rank = static_cast<int32_t>(rank);
  d->nodes = 1;
  d->magic = ZAR_DFTI_MAGIC;
  d->status = ZAR_DFTI_UNCOMMITTED;
  d->cstorage = ZAR_DFTI_COMPLEX_COMPLEX;
  d->rstorage = ZAR_DFTI_REAL_REAL;
  d->cestorage = ZAR_DFTI_COMPLEX_COMPLEX;
  d->placement = ZAR_DFTI_INPLACE;
  d->packed = ZAR_DFTI_CCE;
  d->ordering = ZAR_DFTI_ORDERED;
  d->transpose = ZAR_DFTI_NONE;
  d->workspace = ZAR_DFTI_ALLOW;
  d->count = 1;
  d->flags = 0;
  d->fscale = d->bscale = 1.0;
  d->precision = precision;
  d->domain = domain;
  d->in_c.dims = d->dim_store[2];
  d->batch_c.dims = d->dim_store[3];
  st = zar_dft_avx_Iotensor_copy(&d->in_c, &d->in);
  if (st == 0) st = zar_dft_avx_Iotensor_copy(&d->batch_c, &d->batch);
  if (st != 0) {
    d->destroy(d);
    return st;
  }
  *handle = d;
  bless_node_core(d);
  return 0;
}

// ------------------------------------------------------------- the variants
namespace {

// Each variant's back-end list: the core's threaded commit of that variant.
#define ZAR_DFTI_BKD(v, p, k, r, T, dom) \
  const zar_dfti_bkdlist bkd_##v = {1, {zar_dft_commit_node_##p##_##k##_##r##_omp}};
ZAR_DFTI_VARIANTS(ZAR_DFTI_BKD)
#undef ZAR_DFTI_BKD

int precision_of(char p) { return p == 's' ? ZAR_DFTI_SINGLE : ZAR_DFTI_DOUBLE; }

// The blocks of a real init that hold the three arena cursors: one of 16
// bytes and two of 8, each a 64-byte step of the descriptor arena (the
// arena ignores the 4096 alignment asked of the core's allocator). The size
// query measures them the same way. False when the arena is too small.
bool draw_cursor_blocks(zar_dfti_mem* m) {
  const bool query = !m->arena[0].enable;
  void* a = draw(m, 0, 16);
  void* b = draw(m, 0, 8);
  void* c = draw(m, 0, 8);
  return query || (a && b && c);
}

// The size query: a throw-away record on the stack, measured arenas.
template <class Create>
int get_size(Create create, bool split, double fscale, double bscale, long user, size_t* s0, size_t* s1,
             size_t* s2) {
  zar_dfti_mem q{};
  q.mode = ZAR_DFTI_MODE_QUERY;
  for (auto& a : q.arena) a = {0, UINTPTR_MAX, 0, 0};
  alignas(64) zar_dfti_desc rec;
  zar_dfti_desc* h = &rec;
  int st = create(&h, &q);
  if (st != 0) return st;
  if (split) rec.cstorage = ZAR_DFTI_REAL_REAL;
  rec.fscale = fscale;
  rec.bscale = bscale;
  draw_cursor_blocks(&q);
  zar_dft_bless_node_thr(&rec);
  rec.user = static_cast<int32_t>(user);
  rec.thr_limit = static_cast<int32_t>(user);
  st = rec.methods->commit(&rec);
  if (st != 0) return st;
  *s0 = q.arena[0].cursor;
  *s1 = q.arena[1].cursor;
  *s2 = q.arena[2].cursor;
  return 0;
}

// Creation inside the caller's memory: one arena holds the records, the
// plans and the scratch, one after the other.
template <class Create> int init(Create create, zar_dfti_desc** handle, long user, void* base, size_t size) {
  zar_dfti_mem m{};
  m.mode = ZAR_DFTI_MODE_SHARED;
  const uintptr_t b = reinterpret_cast<uintptr_t>(base);
  const uintptr_t start = (b + 63) & ~uintptr_t(63);
  const uintptr_t end = b + size < b ? UINTPTR_MAX : b + size;
  for (auto& a : m.arena) a = {start, end, 1, 0};
  int st = create(handle, &m);
  if (st != 0) return st;
  zar_dfti_desc* d = *handle;
  if (!draw_cursor_blocks(&m)) {
    d->destroy(d);
    *handle = nullptr;
    return ZAR_DFTI_EMEMORY;
  }
  d->memrec = m;
  d->mem = &d->memrec;
  d->count = 2;
  zar_dft_bless_node_thr(d);
  d->user = static_cast<int32_t>(user);
  d->thr_limit = static_cast<int32_t>(user);
  return 0;
}

}  // namespace

#define ZAR_DFTI_CREATE_1d(p, dom) \
  zar_dft_avx_dfti_create_node(handle, precision_of(#p[0]), dom, 1, &n, mem)
#define ZAR_DFTI_CREATE_md(p, dom) \
  zar_dft_avx_dfti_create_node(handle, precision_of(#p[0]), dom, rank, lengths, mem)
#define ZAR_DFTI_LAMBDA_1d(v) [&](zar_dfti_desc** h, zar_dfti_mem* m) { return zar_dft_avx_dfti_create_##v(h, n, m); }
#define ZAR_DFTI_LAMBDA_md(v) \
  [&](zar_dfti_desc** h, zar_dfti_mem* m) { return zar_dft_avx_dfti_create_##v(h, rank, lengths, m); }

#define ZAR_DFTI_DEFINE_VARIANT(v, p, k, r, T, dom)                                                           \
  ZAR_EXPORT int zar_dft_avx_dfti_set_bkdlist_##v(zar_dfti_desc* d) {                                        \
    d->bkdlist = &bkd_##v;                                                                                   \
    return 0;                                                                                                \
  }                                                                                                          \
  ZAR_EXPORT int zar_dft_avx_dfti_create_##v(zar_dfti_desc** handle, ZAR_DFTI_LEN_##r, zar_dfti_mem* mem) { \
    const int st = ZAR_DFTI_CREATE_##r(p, dom);                                                              \
    if (st == 0) zar_dft_avx_dfti_set_bkdlist_##v(*handle);                                                  \
    return st;                                                                                               \
  }                                                                                                          \
  ZAR_EXPORT int zar_dft_avx_dfti_get_size_##v(ZAR_DFTI_LEN_##r, double fscale, double bscale, long user,  \
                                               size_t* s0, size_t* s1, size_t* s2) {                         \
    return get_size(ZAR_DFTI_LAMBDA_##r(v), false, fscale, bscale, user, s0, s1, s2);                        \
  }                                                                                                          \
  ZAR_EXPORT int zar_dft_avx_dfti_init_##v(zar_dfti_desc** handle, ZAR_DFTI_LEN_##r, long user, void* base, \
                                           size_t size) {                                                    \
    return init(ZAR_DFTI_LAMBDA_##r(v), handle, user, base, size);                                           \
  }
ZAR_DFTI_VARIANTS(ZAR_DFTI_DEFINE_VARIANT)

// Split storage: the measured plan is the split one; init is the base one.
#define ZAR_DFTI_DEFINE_SPLIT(v, base, p, T)                                                                  \
  ZAR_EXPORT int zar_dft_avx_dfti_get_size_##v(long n, double fscale, double bscale, long user, size_t* s0,  \
                                               size_t* s1, size_t* s2) {                                     \
    return get_size(ZAR_DFTI_LAMBDA_1d(base), true, fscale, bscale, user, s0, s1, s2);                       \
  }                                                                                                          \
  ZAR_EXPORT int zar_dft_avx_dfti_init_##v(zar_dfti_desc** handle, long n, long user, void* base_, size_t size) { \
    return zar_dft_avx_dfti_init_##base(handle, n, user, base_, size);                                       \
  }
ZAR_DFTI_SPLIT_VARIANTS(ZAR_DFTI_DEFINE_SPLIT)

// ------------------------------------------------------------ verbose line
namespace {

struct line {
  char text[512];
  size_t len = 0;
  line() { text[0] = '\0'; }
  template <class... A> void add(const char* format, A... args) {
    if (len >= sizeof text - 1) return;
    const int n = zar_serv_snprintf_s(text + len, sizeof text - len, 511 - len, format, args...);
    if (n > 0) len += static_cast<size_t>(n);
  }
};

}  // namespace

ZAR_EXPORT void zar_dft_avx_dfti_verbose(const zar_dfti_desc* d) {
  if (*zar_serv_verbose_mode() != 1) return;
  line l;
  const bool real = d->domain == ZAR_DFTI_REAL;
  const bool inplace = d->placement == ZAR_DFTI_INPLACE;
  l.add("%s", "FFT(");
  l.add("%s", d->precision == ZAR_DFTI_SINGLE ? "s" : "d");
  l.add("%s", real ? "r" : "c");
  l.add("%s", inplace ? "i" : "o");
  if (!real && d->cstorage == ZAR_DFTI_REAL_REAL) l.add("%s", "/");
  // Contiguous strides: dimension 0 has stride 1, each next one the stride
  // of the previous times its length (for real data the complex side and an
  // in-place real side count the first dimension as its half spectrum).
  const zar_dfti_dim* dims = d->in.dims;
  const int rank = d->in.rank;
  bool contiguous = true;
  long cin = 1, cout = 1;
  for (int k = 0; k < rank; ++k) {
    if (dims[k].is != cin || (!inplace && dims[k].os != cout)) contiguous = false;
    long n = dims[k].n;
    if (k == 0 && real) {
      cin *= inplace ? (n | 1) + 1 : n;
      cout *= n / 2 + 1;
    } else {
      cin *= n;
      cout *= n;
    }
  }
  for (int k = rank - 1; k >= 0; --k) {
    const char* first = contiguous ? "%zi" : "%zi:%ti:%ti";
    const char* later = contiguous ? "x%zi" : "x%zi:%ti:%ti";
    l.add(k == rank - 1 ? first : later, static_cast<ssize_t>(dims[k].n), static_cast<ptrdiff_t>(dims[k].is),
          static_cast<ptrdiff_t>(dims[k].os));
  }
  const zar_dfti_dim& b = d->batch.dims[0];
  if (b.n > 1) {
    if (dims[0].is == b.n && b.is == 1 && b.os == 1) {
      l.add("v%zi", static_cast<ssize_t>(b.n));
    } else {
      l.add("*%zi", static_cast<ssize_t>(b.n));
      const bool default_dist = (b.is == 0 || b.is == cin) && (b.os == 0 || b.os == cout);
      if (!default_dist) l.add(":%ti:%ti", static_cast<ptrdiff_t>(b.is), static_cast<ptrdiff_t>(b.os));
    }
  }
  l.add("%s", ",");
  if (d->fscale != 1.0) l.add("%s%lg,", "fScale=", d->fscale);
  if (d->bscale != 1.0) l.add("%s%lg,", "bScale=", d->bscale);
  if (real && d->cestorage == ZAR_DFTI_COMPLEX_REAL)
    l.add("%s%s,", "pack=", d->packed == ZAR_DFTI_CCS ? "ccs" : d->packed == ZAR_DFTI_PACK ? "pack" : "perm");
  if (d->workspace != ZAR_DFTI_ALLOW) l.add("%s%s,", "wSpace=", d->workspace == ZAR_DFTI_AVOID ? "avoid" : "none");
  if (d->flags & ZAR_DFTI_FLAG_DESTRUCT) l.add("%s,", "destruct=allow");
  const long limit = d->status == ZAR_DFTI_COMMITTED ? d->thr_slots : d->thr_limit;
  l.add("%s%ti,", "tLim=", static_cast<ptrdiff_t>(limit));
  l.add("%s%p%s", "desc:", static_cast<const void*>(d), ")");
  zar_serv_print_verbose_info(0, l.text, d->seconds);
}

// ------------------------------------------------------------ version
ZAR_EXPORT int zar_dft_avx_dfti_get_version_string(char* buffer, int length) {
  char text[199] = {};
  zar_serv_get_version_string_c(text, 198);
  const int limit = length < 198 ? length : 198;
  int k = 0;
  for (; k < limit && text[k] != '\0'; ++k) buffer[k] = text[k];
  return k;
}
