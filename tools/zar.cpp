// The zar command: `zar info` reports the libraries in use, the processor,
// the exported kernels per domain and the settings in force.
#include <elf.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "zar/control.h"
#include "zar/services.h"

namespace {

// Defined global symbols of an ELF32 shared object's dynamic symbol table.
bool exported_symbols(const std::string& path, std::vector<std::string>* out, std::string* why) {
  std::ifstream f(path, std::ios::binary);
  std::vector<char> img((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
  if (img.size() < sizeof(Elf32_Ehdr) || std::memcmp(img.data(), ELFMAG, SELFMAG) != 0 ||
      img[EI_CLASS] != ELFCLASS32) {
    *why = "not a 32-bit ELF file";
    return false;
  }
  auto eh = reinterpret_cast<const Elf32_Ehdr*>(img.data());
  if (eh->e_shoff == 0 || eh->e_shoff + eh->e_shnum * sizeof(Elf32_Shdr) > img.size()) {
    *why = "no section table";
    return false;
  }
  auto sh = reinterpret_cast<const Elf32_Shdr*>(img.data() + eh->e_shoff);
  for (int i = 0; i < eh->e_shnum; ++i) {
    if (sh[i].sh_type != SHT_DYNSYM) continue;
    const Elf32_Shdr& strtab = sh[sh[i].sh_link];
    auto syms = reinterpret_cast<const Elf32_Sym*>(img.data() + sh[i].sh_offset);
    const size_t count = sh[i].sh_size / sizeof(Elf32_Sym);
    for (size_t k = 1; k < count; ++k) {
      if (syms[k].st_shndx == SHN_UNDEF) continue;
      const int bind = ELF32_ST_BIND(syms[k].st_info);
      if (bind != STB_GLOBAL && bind != STB_WEAK) continue;
      out->push_back(img.data() + strtab.sh_offset + syms[k].st_name);
    }
    return true;
  }
  *why = "no dynamic symbol table";
  return false;
}

std::string domain_of(const std::string& s) {
  if (s.rfind("zar_avx_", 0) == 0 || s == "dll_cpu_version" || s.rfind("dfti_", 0) == 0) return "frame";
  if (s.rfind("zar_", 0) != 0) return "other";
  const auto mid = s.find("_avx_");
  if (mid != std::string::npos) return s.substr(4, mid - 4);
  if (s.size() > 4 && s.compare(s.size() - 4, 4, "_avx") == 0) return s.substr(4, s.find('_', 4) - 4);
  return "other";
}

// The FFT exports by family: descriptor services, commits, compute
// entries, node kernels (with the dedicated small lengths in the two
// tables), planners and the memory hooks.
std::string fft_family(const std::string& s) {
  if (s.rfind("dfti_", 0) == 0) return "memory hooks";
  const std::string r = s.substr(std::strlen("zar_dft_avx_"));
  if (r.rfind("dfti_", 0) == 0 || r.rfind("iotensor_", 0) == 0) return "descriptor";
  if (r.rfind("commit_", 0) == 0 || r.rfind("threaded_", 0) == 0) return "commit";
  if (r.rfind("compute_", 0) == 0) return "compute entries";
  if (r.find("initalloc") != std::string::npos || r.find("get_size") != std::string::npos ||
      r.find("init_data") != std::string::npos || r.rfind("complex_for_real", 0) == 0)
    return "planners";
  if (r.find("smallradix") != std::string::npos) return "small-length tables (2..64)";
  return "node kernels";
}

void feature_line(int f) {
  static const struct { int bit; const char* name; } names[] = {
      {ZAR_FEATURE_SSE2, "SSE2"}, {ZAR_FEATURE_SSE3, "SSE3"}, {ZAR_FEATURE_SSSE3, "SSSE3"},
      {ZAR_FEATURE_SSE41, "SSE4.1"}, {ZAR_FEATURE_SSE42, "SSE4.2"}, {ZAR_FEATURE_AVX, "AVX"},
      {ZAR_FEATURE_F16C, "F16C"}, {ZAR_FEATURE_FMA, "FMA"}, {ZAR_FEATURE_AVX2, "AVX2"},
      {ZAR_FEATURE_AVX512F, "AVX-512F"}};
  for (const auto& n : names)
    if (f & n.bit) std::printf(" %s", n.name);
  std::printf("\n");
}

int info() {
  const int load = zar_kernel_load(nullptr);
  std::printf("zar 2.0 for 32-bit x86 Linux\n\n");
  std::printf("core library     %s\n", zar_core_path());
  std::printf("kernel library   %s\n", zar_kernel_path());
  if (load == ZAR_LOAD_OK) std::printf("processor tag    %d (AVX)\n", zar_kernel_tag());
  else std::printf("status           not loaded: %s\n", zar_kernel_error());

  std::printf("\nprocessor        %s (%s)\n", zar_cpu_brand(), zar_cpu_vendor());
  std::printf("features         ");
  feature_line(zar_cpu_features());
  if (zar_cpu_enabled_features() != zar_cpu_features()) {
    std::printf("enabled          ");
    feature_line(zar_cpu_enabled_features());
  }
  std::printf("generation       %d\n", zar_serv_cpu_detect());
  long long cache[ZAR_CACHE_RECORD_ENTRIES];
  zar_get_cache_info(cache);
  if (cache[0] == 0) std::printf("caches           nothing known\n");
  else
    std::printf("caches           L1d %lld KiB, L2 %lld KiB, last level %lld KiB, line %lld bytes\n",
                cache[1] >> 10, cache[2] >> 10, cache[3] >> 10, cache[4]);

  std::vector<std::string> syms;
  std::string why;
  if (exported_symbols(zar_kernel_path(), &syms, &why)) {
    std::map<std::string, int> per_domain;
    for (const auto& s : syms) ++per_domain[domain_of(s)];
    std::printf("\nexported kernels %zu\n", syms.size());
    for (const auto& [d, n] : per_domain) std::printf("  %-14s %d\n", d.c_str(), n);
    std::map<std::string, int> fft;
    for (const auto& s : syms)
      if (s.rfind("zar_dft_avx_", 0) == 0 || s.rfind("dfti_", 0) == 0) ++fft[fft_family(s)];
    if (!fft.empty()) {
      std::printf("\nFFT kernels\n");
      for (const auto& [f, n] : fft) std::printf("  %-28s %d\n", f.c_str(), n);
    }
  } else {
    std::printf("\nexported kernels unknown: %s\n", why.c_str());
  }

  const int branch = zar_cbwr_get();
  std::printf("\nsettings\n");
  std::printf("  ZAR_CBWR         %d (%s)\n", branch,
              branch == ZAR_CBWR_OFF ? "OFF: fastest kernels"
                                     : "alignment-independent kernels");
  std::printf("  ZAR_VERBOSE      %d\n", zar_verbose(-1));
  std::printf("  ZAR_NUM_THREADS  %d\n", zar_get_max_threads());
  std::printf("  ZAR_CACHE_SIZE   %lld\n", cache[3]);
  return load == ZAR_LOAD_OK ? 0 : 1;
}

int usage() {
  std::fprintf(stderr, "usage: zar info\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return usage();
  if (std::strcmp(argv[1], "info") == 0) return info();
  return usage();
}
