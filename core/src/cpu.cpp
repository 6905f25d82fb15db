// Processor detection: CPUID and the operating system's register-state
// support (XGETBV), capped by ZAR_ENABLE_INSTRUCTIONS.
#include <cpuid.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "core.h"
#include "zar/control.h"
#include "zar/services.h"

namespace zar::core {
namespace {

struct cpu_facts {
  int features = 0;
  char vendor[13] = {};
  char brand[49] = {};
  int family = 0, model = 0, stepping = 0;
};

unsigned long long xgetbv0() {
  unsigned eax, edx;
  // xgetbv, encoded by hand: this file is built without AVX and XSAVE.
  __asm__ volatile(".byte 0x0f, 0x01, 0xd0" : "=a"(eax), "=d"(edx) : "c"(0));
  return (static_cast<unsigned long long>(edx) << 32) | eax;
}

cpu_facts detect() {
  cpu_facts f;
  unsigned a, b, c, d;
  if (!__get_cpuid(0, &a, &b, &c, &d)) return f;
  const unsigned max_leaf = a;
  std::memcpy(f.vendor + 0, &b, 4);
  std::memcpy(f.vendor + 4, &d, 4);
  std::memcpy(f.vendor + 8, &c, 4);
  __get_cpuid(1, &a, &b, &c, &d);
  f.stepping = a & 0xf;
  f.family = (a >> 8) & 0xf;
  f.model = (a >> 4) & 0xf;
  if (f.family == 0xf) f.family += (a >> 20) & 0xff;
  if (f.family >= 6) f.model += ((a >> 16) & 0xf) << 4;
  if (d & (1u << 26)) f.features |= ZAR_FEATURE_SSE2;
  if (c & (1u << 0)) f.features |= ZAR_FEATURE_SSE3;
  if (c & (1u << 9)) f.features |= ZAR_FEATURE_SSSE3;
  if (c & (1u << 19)) f.features |= ZAR_FEATURE_SSE41;
  if (c & (1u << 20)) f.features |= ZAR_FEATURE_SSE42;
  const bool osxsave = c & (1u << 27);
  const unsigned long long xcr0 = osxsave ? xgetbv0() : 0;
  const bool ymm_state = (xcr0 & 0x6) == 0x6;
  const bool zmm_state = (xcr0 & 0xe6) == 0xe6;
  if (ymm_state && (c & (1u << 28))) {
    f.features |= ZAR_FEATURE_AVX;
    if (c & (1u << 29)) f.features |= ZAR_FEATURE_F16C;
    if (c & (1u << 12)) f.features |= ZAR_FEATURE_FMA;
    if (max_leaf >= 7) {
      __get_cpuid_count(7, 0, &a, &b, &c, &d);
      if (b & (1u << 5)) f.features |= ZAR_FEATURE_AVX2;
      if (zmm_state && (b & (1u << 16))) f.features |= ZAR_FEATURE_AVX512F;
    }
  }
  if (__get_cpuid(0x80000000, &a, &b, &c, &d) && a >= 0x80000004) {
    unsigned* out = reinterpret_cast<unsigned*>(f.brand);
    for (unsigned leaf = 0; leaf < 3; ++leaf) __get_cpuid(0x80000002 + leaf, out + 4 * leaf, out + 4 * leaf + 1,
                                                          out + 4 * leaf + 2, out + 4 * leaf + 3);
    f.brand[48] = '\0';
  }
  return f;
}

const cpu_facts& facts() {
  static const cpu_facts f = detect();
  return f;
}

// 0 when the kernel does not describe the cache (or the description
// cannot be read for want of memory).
long long sysfs_cache(int level, bool data) try {
  for (int index = 0; index < 8; ++index) {
    const std::string base = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) + "/";
    std::ifstream lv(base + "level"), ty(base + "type"), sz(base + "size");
    int l = 0;
    std::string type, size;
    if (!(lv >> l) || !(ty >> type) || !(sz >> size)) continue;
    if (l != level || (data && type == "Instruction")) continue;
    long long v = std::atoll(size.c_str());
    if (!size.empty() && (size.back() == 'K')) v <<= 10;
    if (!size.empty() && (size.back() == 'M')) v <<= 20;
    return v;
  }
  return 0;
} catch (...) {
  return 0;
}

// The kernel's description comes first: the C library's CPUID decoding has
// been seen to misreport the shared cache of virtual processors.
long long cache_bytes(int level) {
  if (const long long v = sysfs_cache(level, true); v > 0) return v;
  const int names[] = {0, _SC_LEVEL1_DCACHE_SIZE, _SC_LEVEL2_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE};
  const long v = (level >= 1 && level <= 3) ? sysconf(names[level]) : 0;
  return v > 0 ? v : 0;
}

}  // namespace

int cpu_features() { return facts().features; }

int cpu_enabled_features() {
  const int cap = config().enabled_cap.load();
  return cap < 0 ? facts().features : (facts().features & cap);
}

int cpu_generation() {
  const int f = cpu_enabled_features();
  if (f & ZAR_FEATURE_AVX512F) return ZAR_CPU_AVX512;
  if ((f & ZAR_FEATURE_AVX2) && (f & ZAR_FEATURE_FMA)) return ZAR_CPU_AVX2;
  if (f & ZAR_FEATURE_AVX) return ZAR_CPU_AVX;
  if (f & ZAR_FEATURE_SSE42) return ZAR_CPU_SSE42;
  if (f & ZAR_FEATURE_SSE2) return ZAR_CPU_SSE2;
  return ZAR_CPU_GENERIC;
}

bool cpu_family_is(int vendor_amd, int family, const int* models, int nmodels) {
  const cpu_facts& f = facts();
  const bool amd = std::strcmp(f.vendor, "AuthenticAMD") == 0;
  const bool intel = std::strcmp(f.vendor, "GenuineIntel") == 0;
  if (vendor_amd ? !amd : !intel) return false;
  if (f.family != family) return false;
  if (nmodels == 0) return true;
  for (int i = 0; i < nmodels; ++i)
    if (f.model == models[i]) return true;
  return false;
}

void cache_record_detected(long long* r) {
  for (int i = 0; i < ZAR_CACHE_RECORD_ENTRIES; ++i) r[i] = 0;
  const long long l1 = cache_bytes(1), l2 = cache_bytes(2), l3 = cache_bytes(3);
  r[1] = l1;
  r[2] = l2;
  r[3] = l3 > 0 ? l3 : l2;
  long line = sysconf(_SC_LEVEL1_DCACHE_LINESIZE);
  r[4] = line > 0 ? line : 64;
  r[0] = l3 > 0 ? 3 : (l2 > 0 ? 2 : (l1 > 0 ? 1 : 0));
  if (r[0] == 0) r[3] = r[4] = 0;
}

}  // namespace zar::core

using namespace zar::core;

ZAR_API int zar_cpu_features(void) { return cpu_features(); }
ZAR_API int zar_cpu_enabled_features(void) { return cpu_enabled_features(); }
ZAR_API const char* zar_cpu_vendor(void) { return facts().vendor; }
ZAR_API const char* zar_cpu_brand(void) {
  const char* b = facts().brand;
  while (*b == ' ') ++b;
  return b;
}

ZAR_API int zar_serv_cpu_detect(void) { return cpu_generation(); }
ZAR_API int zar_serv_cpuisbulldozer(void) { return cpu_family_is(1, 0x15, nullptr, 0); }
ZAR_API int zar_serv_cpuisclx(void) {
  // Cascade Lake shares model 0x55 with Skylake-SP; it has stepping 5 or later.
  static const int models[] = {0x55};
  return cpu_family_is(0, 6, models, 1) && facts().stepping >= 5;
}
ZAR_API int zar_serv_cpuisicx(void) {
  static const int models[] = {0x6a, 0x6c};
  return cpu_family_is(0, 6, models, 2);
}
ZAR_API int zar_serv_cpuhasf16c(void) { return (cpu_enabled_features() & ZAR_FEATURE_F16C) != 0; }
