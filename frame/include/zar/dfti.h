// The FFT descriptor: the contract between the kernel library's descriptor
// layer (dft/) and the core's front end and threaded layer (core/src/dft/).
//
// The public handle zar_dft_descriptor (core/include/zar/dft.h) is this
// record. The kernel library builds it (create, or init inside caller
// memory), plans it at commit and runs it; the core checks every argument,
// changes settings, decides the nodes and the threads, and drives compute.
//
// Nodes. The threaded layer describes how a descriptor is cut into nodes by
// filling node_count, node_len[] and node_work[] of the head record before
// the kernel commit runs:
//   - a one-dimensional descriptor is one node (the head record itself);
//     a very long transform done as a two-dimensional one (the long route)
//     is planned inside that one node;
//   - a multi-dimensional descriptor is one node per dimension, node d
//     transforming dimension d (dimension 0 contiguous); the head is node 0,
//     the others are records of the same kind chained through `next`.
// Work measure (node_work, copied into each node's `work`): the base-2
// logarithm, rounded up, of the node's data in 16-byte units,
//   work = ceil(log2(length * element bytes / 16)),
// that is log2(n) for double complex data. The kernel commit considers the
// long route only from 16 (1 MiB of data: beyond the second-level cache of
// these processors) and always takes it from 32 (64 GiB: never reached by a
// real problem; the value exists so that the route can be forced).
//
// Memory. Every allocation of the FFT code goes through the five hooks,
// fixed once per process by the first descriptor (arena or core memory).
// A size query (memory record mode 1) allocates nothing: it only advances
// the arena cursors. Arena 0 holds the records, arena 1 the plans and the
// per-thread scratch; an init arena (mode 2) holds all three one after the
// other (arena 2 is reserved and measured as 0).
#pragma once
#include <cstddef>
#include <cstdint>

#include "zar/services.h"

// ------------------------------------------------------------------ values
enum : int32_t {
  ZAR_DFTI_COMMITTED = 30,
  ZAR_DFTI_UNCOMMITTED = 31,
  ZAR_DFTI_COMPLEX = 32,
  ZAR_DFTI_REAL = 33,
  ZAR_DFTI_SINGLE = 35,
  ZAR_DFTI_DOUBLE = 36,
  ZAR_DFTI_COMPLEX_COMPLEX = 39,
  ZAR_DFTI_COMPLEX_REAL = 40,
  ZAR_DFTI_REAL_REAL = 42,
  ZAR_DFTI_INPLACE = 43,
  ZAR_DFTI_NOT_INPLACE = 44,
  ZAR_DFTI_ORDERED = 48,
  ZAR_DFTI_ALLOW = 51,
  ZAR_DFTI_AVOID = 52,
  ZAR_DFTI_NONE = 53,
  ZAR_DFTI_CCS = 54,
  ZAR_DFTI_PACK = 55,
  ZAR_DFTI_PERM = 56,
  ZAR_DFTI_CCE = 57,
};
// Status codes (the same numbers as the public ZAR_DFT_E* codes).
enum : int32_t {
  ZAR_DFTI_OK = 0,
  ZAR_DFTI_EMEMORY = 1,
  ZAR_DFTI_EINVALID = 2,
  ZAR_DFTI_EBAD_VALUE = 4,
  ZAR_DFTI_EINCONSISTENT = 5,
  ZAR_DFTI_EUNIMPLEMENTED = 7,
};
#define ZAR_DFTI_MAGIC 0x00544644u  // "DFT\0" in memory order
#define ZAR_DFTI_MAX_RANK 7
#define ZAR_DFTI_FLAG_LONG_ONE_THREAD 4  // the long route runs on one scratch slot
#define ZAR_DFTI_FLAG_DESTRUCT 16        // shown as destruct=allow
// Work-measure bounds of the long route (see the header comment).
#define ZAR_DFTI_WORK_LONG_MIN 16
#define ZAR_DFTI_WORK_LONG_FORCE 32

// ----------------------------------------------------------------- records
// One dimension: length, input stride, output stride (elements), two
// reserved words. In the batch tensor: count, input and output distance.
struct zar_dfti_dim {
  int32_t n, is, os, r0, r1;
};
struct zar_dfti_tensor {
  int32_t rank;
  zar_dfti_dim* dims;
};
// One arena: cursor, end, enable flag. Size queries start at 0, disabled.
struct zar_dfti_arena {
  uintptr_t cursor;
  uintptr_t end;
  int32_t enable;
  int32_t reserved;
};
#define ZAR_DFTI_MODE_BUILD 0
#define ZAR_DFTI_MODE_QUERY 1   // commit measures only
#define ZAR_DFTI_MODE_SHARED 2  // init: every draw from arena 0
struct zar_dfti_mem {
  zar_dfti_arena arena[3];
  int32_t mode;
};

struct zar_dft_descriptor;
typedef zar_dft_descriptor zar_dfti_desc;

// Compute entry: transforms [first, first + count) of the batch, arrays as
// the public compute call gave them (data-pointer count of them), scratch
// of slot `slot` (0 .. thr_slots-1). Returns a status.
typedef int (*zar_dfti_compute_fn)(const zar_dfti_desc* d, void* const* arrays, long first, long count, int slot);
// Node kernel: `count` transforms of the node's layout for the direction it
// stands for; arrays already point at the first transform ({x, y}, or
// {xr, xi, yr, yi} for split storage).
typedef void (*zar_dfti_kernel_fn)(const zar_dfti_desc* node, void* const* arrays, long count, void* scratch);
typedef int (*zar_dfti_commit_fn)(zar_dfti_desc* d);
// Entry of a descriptor of several nodes: runs all dimensions; sign -1
// forward, +1 backward (the real entries have one direction each and
// ignore it).
typedef void (*zar_dfti_twod_fn)(const zar_dfti_desc* head, void* const* arrays, long count, void* scratch, int sign);

struct zar_dfti_bkdlist {
  int32_t count;
  zar_dfti_commit_fn entry[1];
};
// Method table: commit (walks the back-end list until an entry succeeds)
// and the cache-size query installed by the first create.
struct zar_dfti_methods {
  zar_dfti_commit_fn commit;
  long long (*cache_size)(int level);
};

struct zar_dft_descriptor {
  // ---- the listed fields, in order
  zar_dfti_compute_fn compute_fwd, compute_bwd;
  zar_dfti_mem* mem;
  const zar_dfti_bkdlist* bkdlist;
  int32_t nptr;  // data-pointer count of a compute call
  uint32_t magic;
  int32_t status;
  zar_dfti_tensor in;     // dims[d]: length, input stride, output stride
  zar_dfti_tensor batch;  // dims[0]: number of transforms, input and output distance
  int32_t rank, nodes;
  zar_dfti_tensor in_c, batch_c;  // committed copies
  void (*uncommit)(zar_dfti_desc*);
  void (*destroy)(zar_dfti_desc*);
  const zar_dfti_methods* methods;
  const void* api;  // interface entry table
  int32_t domain, precision;
  int32_t cstorage, rstorage, cestorage;
  int32_t placement, packed;
  int32_t in_unit, out_unit;
  int32_t workspace, ordering, transpose;
  int32_t length;  // the node's transform length
  double fscale, bscale;
  int32_t work;  // the node's work measure
  zar_dfti_desc* next;
  size_t max_work;  // largest per-thread scratch of all nodes
  int32_t count;    // memory areas drawn from: 1 core memory, 2 an init arena
  int32_t thr_limit;  // threads a compute may use, 0: the library's setting
  int32_t thr_slots;  // scratch slots committed (threads a compute runs on)
  int32_t flags;
  // ---- additions
  int32_t index;    // node index (0 for the head)
  int32_t blessed;  // set by zar_dft_bless_node_thr
  int32_t user;     // the user parameter of get_size/init (the thread limit)
  int32_t in_offset, out_offset;  // first element of input and output
  int32_t strides_set;            // 1: input strides set, 2: output strides set
  int32_t node_count;             // the threaded layer's plan ...
  int32_t node_len[ZAR_DFTI_MAX_RANK];
  int32_t node_work[ZAR_DFTI_MAX_RANK];
  zar_dfti_kernel_fn kfwd, kbwd;      // node kernels
  zar_dfti_twod_fn twod_fwd, twod_bwd;  // entries when the threaded layer made several nodes
  void* plan;
  size_t plan_bytes;
  size_t scratch_bytes;
  void* scratch;  // head: thr_slots areas of scratch_stride bytes
  size_t scratch_stride;
  // The layouts compute uses, per direction (0 forward, 1 backward):
  // dims (length, input stride, output stride) and the two distances.
  zar_dfti_dim eff[2][ZAR_DFTI_MAX_RANK];
  int32_t eff_dist[2][2];
  double seconds;  // elapsed time of the last compute, for the verbose line
  zar_dfti_mem memrec;  // an init descriptor's memory record
  zar_dfti_dim dim_store[4][ZAR_DFTI_MAX_RANK];  // storage of the four tensors
};

// ------------------------------------------------------- memory hooks (data)
typedef void* (*zar_dfti_malloc_fn)(size_t bytes, int alignment, zar_dfti_mem* mem);
typedef void* (*zar_dfti_calloc_fn)(size_t count, size_t size, int alignment, zar_dfti_mem* mem);
typedef void (*zar_dfti_free_fn)(void* p, zar_dfti_mem* mem);
extern "C" {
extern zar_dfti_malloc_fn dfti_malloc;
extern zar_dfti_calloc_fn dfti_calloc;
extern zar_dfti_malloc_fn dfti_allocate;
extern zar_dfti_free_fn dfti_free;
extern zar_dfti_free_fn dfti_deallocate;
}

// --------------------------------------------------------- variant lists
// X(v, p, k, r, T, domain): descriptor variant v, precision letter p,
// kind k, rank form r (1d or md), element type T, domain value.
#define ZAR_DFTI_VARIANTS(X)                                                                     \
  X(sc1d, s, c2c, 1d, float, 32) X(scmd, s, c2c, md, float, 32) X(sr1d, s, r2c, 1d, float, 33) \
  X(srmd, s, r2c, md, float, 33) X(dc1d, d, c2c, 1d, double, 32) X(dcmd, d, c2c, md, double, 32) \
  X(dr1d, d, r2c, 1d, double, 33) X(drmd, d, r2c, md, double, 33)
// The split-storage variants of get_size and init: X(v, base variant, p, T)
#define ZAR_DFTI_SPLIT_VARIANTS(X) X(scsp1d, sc1d, s, float) X(dcsp1d, dc1d, d, double)
// Precisions: X(p, T, value, z, 64f or 32f)
#define ZAR_DFTI_PRECISIONS(X) X(s, float, 35, c, 32f) X(d, double, 36, z, 64f)

// Length arguments of create, get_size and init: lengths in record order
// (dimension 0 first, the contiguous one).
#define ZAR_DFTI_LEN_1d long n
#define ZAR_DFTI_LEN_md long rank, const long* lengths

#define ZAR_DFTI_DECLARE_VARIANT(v, p, k, r, T, dom)                                                        \
  int zar_dft_avx_dfti_create_##v(zar_dfti_desc** handle, ZAR_DFTI_LEN_##r, zar_dfti_mem* mem);            \
  int zar_dft_avx_dfti_set_bkdlist_##v(zar_dfti_desc* d);                                                  \
  int zar_dft_avx_dfti_get_size_##v(ZAR_DFTI_LEN_##r, double fscale, double bscale, long user,           \
                                    size_t* desc_bytes, size_t* work1_bytes, size_t* work2_bytes);        \
  int zar_dft_avx_dfti_init_##v(zar_dfti_desc** handle, ZAR_DFTI_LEN_##r, long user, void* base,          \
                                size_t size);                                                              \
  int zar_dft_avx_commit_descriptor_core_##p##_##k##_##r(zar_dfti_desc* d);                                \
  int zar_dft_avx_threaded_mode_definition_##p##_##k##_##r(zar_dfti_desc* d);                              \
  int zar_dft_avx_compute_fwd_##p##_##k##_##r##_i(const zar_dfti_desc*, void* const*, long, long, int);    \
  int zar_dft_avx_compute_fwd_##p##_##k##_##r##_o(const zar_dfti_desc*, void* const*, long, long, int);    \
  int zar_dft_avx_compute_bwd_##p##_##k##_##r##_i(const zar_dfti_desc*, void* const*, long, long, int);    \
  int zar_dft_avx_compute_bwd_##p##_##k##_##r##_o(const zar_dfti_desc*, void* const*, long, long, int);    \
  int zar_dft_commit_node_##p##_##k##_##r##_omp(zar_dfti_desc* d);
#define ZAR_DFTI_DECLARE_SPLIT(v, base, p, T)                                                               \
  int zar_dft_avx_dfti_get_size_##v(ZAR_DFTI_LEN_1d, double fscale, double bscale, long user,            \
                                    size_t* desc_bytes, size_t* work1_bytes, size_t* work2_bytes);        \
  int zar_dft_avx_dfti_init_##v(zar_dfti_desc** handle, ZAR_DFTI_LEN_1d, long user, void* base, size_t size);

// Per precision: planners (0 or a status; in size-query mode they only
// measure), node kernels and the two-dimensional entries.
#define ZAR_DFTI_DECLARE_PRECISION(p, T, value, z, bits)                                                   \
  int zar_dft_avx_rud_initalloc_##p##_c2c(zar_dfti_desc* node);                                             \
  int zar_dft_avx_rud_get_size_##p##_c2c(zar_dfti_desc* node);                                              \
  int zar_dft_avx_rud_initalloc_##p##_ri2ri(zar_dfti_desc* node);                                           \
  int zar_dft_avx_rud_get_size_##p##_ri2ri(zar_dfti_desc* node);                                            \
  int zar_dft_avx_##z##_rud_real_initalloc(zar_dfti_desc* node);                                            \
  int zar_dft_avx_##z##_rud_real_get_size(zar_dfti_desc* node);                                             \
  int zar_dft_avx_complex_for_real_dft_##p(zar_dfti_desc* node);                                            \
  int zar_dft_avx_x##z##_init_data_1d_via_2d(zar_dfti_desc* node);                                          \
  void zar_dft_avx_x##z##_1d_via_2d_f(const zar_dfti_desc*, void* const*, long, void*);                     \
  void zar_dft_avx_x##z##_1d_via_2d_b(const zar_dfti_desc*, void* const*, long, void*);                     \
  void zar_dft_avx_xruds_fwd_##bits##c(const zar_dfti_desc*, void* const*, long, void*);                    \
  void zar_dft_avx_xruds_inv_##bits##c(const zar_dfti_desc*, void* const*, long, void*);                    \
  void zar_dft_avx_xruds_fwd_##bits(const zar_dfti_desc*, void* const*, long, void*);                       \
  void zar_dft_avx_xruds_inv_##bits(const zar_dfti_desc*, void* const*, long, void*);                       \
  void zar_dft_avx_rudsDFTFwd_RToCCS_##bits(const zar_dfti_desc*, void* const*, long, void*);               \
  void zar_dft_avx_rudsDFTFwd_RToPack_##bits(const zar_dfti_desc*, void* const*, long, void*);              \
  void zar_dft_avx_rudsDFTFwd_RToPerm_##bits(const zar_dfti_desc*, void* const*, long, void*);              \
  void zar_dft_avx_rudsDFTInv_CCSToR_##bits(const zar_dfti_desc*, void* const*, long, void*);               \
  void zar_dft_avx_rudsDFTInv_PermToR_##bits(const zar_dfti_desc*, void* const*, long, void*);              \
  void zar_dft_avx_workaround_for_DFTInv_RPack_##bits(const zar_dfti_desc*, void* const*, long, void*);     \
  void zar_dft_avx_x##z##dft2d(const zar_dfti_desc*, void* const*, long, void*, int);                       \
  void zar_dft_avx_x##z##dft2d_out(const zar_dfti_desc*, void* const*, long, void*, int);                   \
  void zar_dft_avx_x##p##z##dft2d(const zar_dfti_desc*, void* const*, long, void*, int);                    \
  void zar_dft_avx_x##z##p##dft2d(const zar_dfti_desc*, void* const*, long, void*, int);                    \
  void zar_dft_avx_x##p##z##z##dft2d(const zar_dfti_desc*, void* const*, long, void*, int);                 \
  void zar_dft_avx_x##z##z##p##dft2d(const zar_dfti_desc*, void* const*, long, void*, int);

extern "C" {
ZAR_DFTI_VARIANTS(ZAR_DFTI_DECLARE_VARIANT)
ZAR_DFTI_SPLIT_VARIANTS(ZAR_DFTI_DECLARE_SPLIT)
ZAR_DFTI_PRECISIONS(ZAR_DFTI_DECLARE_PRECISION)

// Dedicated double complex kernels of the lengths 2..64, indexed by length
// (entries 0 and 1 are null).
extern const zar_dfti_kernel_fn zar_dft_avx_zsmallradix_forward[65];
extern const zar_dfti_kernel_fn zar_dft_avx_zsmallradix_inverse[65];

// Record, tensors, memory, verbose line, version.
int zar_dft_avx_dfti_create_node(zar_dfti_desc** handle, int precision, int domain, long rank, const long* lengths,
                                 zar_dfti_mem* mem);
int zar_dft_avx_Iotensor_create(zar_dfti_tensor* t, long rank, zar_dfti_dim* storage);
int zar_dft_avx_Iotensor_copy(zar_dfti_tensor* dst, const zar_dfti_tensor* src);
void zar_dft_avx_dfti_mem_methods_init(zar_dfti_mem* mem);
void zar_dft_avx_dfti_verbose(const zar_dfti_desc* d);
int zar_dft_avx_dfti_get_version_string(char* buffer, int length);

// Core callbacks: the threaded layer marks a record as its node (sets the
// threading defaults); the version text of the library.
int zar_dft_bless_node_thr(zar_dfti_desc* d);
ZAR_SERVICE int zar_serv_get_version_string_c(char* buffer, int length);
}
