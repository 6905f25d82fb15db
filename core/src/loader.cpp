// The loader: finds the kernel library, checks that the processor can run it
// and that it is the generation this core expects, and resolves entry points
// by name. Every refusal says what is wrong and where; the check for AVX runs
// before the file is mapped, so no AVX code can run on a processor without it.
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <mutex>
#include <string>

#include "core.h"
#include "zar/control.h"

namespace zar::core {
namespace {

constexpr int kExpectedTag = 6;
constexpr const char* kKernelFile = "libzar_avx.so.2";

struct loader_state {
  std::mutex m;
  void* handle = nullptr;
  int tag = 0;
  std::string path;
  std::string error;
};
// Never destroyed: application threads may still resolve kernels while
// the process exits.
loader_state& state() {
  static loader_state& s = *new loader_state;
  return s;
}

std::string core_directory() {
  const std::string p = zar_core_path();
  const auto slash = p.rfind('/');
  return slash == std::string::npos ? std::string(".") : p.substr(0, slash);
}

std::string default_path() {
  const char* env = std::getenv("ZAR_KERNEL_PATH");
  if (env && !*env) {
    static std::once_flag warned;
    std::call_once(warned, [] {
      env_warning("ZAR_KERNEL_PATH", "", "the kernel library file or its directory",
                  "the default, the core library's directory");
    });
  }
  if (env && *env) {
    struct stat st{};
    if (stat(env, &st) == 0 && S_ISDIR(st.st_mode)) return std::string(env) + "/" + kKernelFile;
    return env;
  }
  return core_directory() + "/" + kKernelFile;
}

// Why the file cannot be a kernel library, or empty when it may be one: a
// shared object is a regular, non-empty file that starts with the ELF
// magic. Opened without blocking, so a FIFO or a device never stalls the
// load.
std::string not_a_library(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return std::string("cannot open it: ") + std::strerror(errno);
  struct stat st{};
  std::string why;
  unsigned char magic[SELFMAG] = {};
  if (fstat(fd, &st) != 0) why = std::string("cannot examine it: ") + std::strerror(errno);
  else if (S_ISDIR(st.st_mode)) why = "it is a directory";
  else if (S_ISFIFO(st.st_mode)) why = "it is a FIFO, not a regular file";
  else if (S_ISCHR(st.st_mode) || S_ISBLK(st.st_mode)) why = "it is a device, not a regular file";
  else if (S_ISSOCK(st.st_mode)) why = "it is a socket, not a regular file";
  else if (!S_ISREG(st.st_mode)) why = "it is not a regular file";
  else if (st.st_size == 0) why = "it is empty";
  else if (read(fd, magic, SELFMAG) != SELFMAG || std::memcmp(magic, ELFMAG, SELFMAG) != 0)
    why = "it is not a shared object (no ELF header)";
  close(fd);
  return why;
}

// True when the symbol at addr is a function (the tag must be one: calling
// a data object would jump into data).
bool is_function_symbol(void* addr) {
  Dl_info info{};
  void* entry = nullptr;
  if (!dladdr1(addr, &info, &entry, RTLD_DL_SYMENT) || !entry) return false;
  const auto* sym = static_cast<const ElfW(Sym)*>(entry);
  const int type = ELF32_ST_TYPE(sym->st_info);
  return type == STT_FUNC || type == STT_GNU_IFUNC;
}

// Called with the lock held.
int load_locked(loader_state& s, const std::string& path) {
  s.path = path;
  if (!(cpu_enabled_features() & ZAR_FEATURE_AVX)) {
    s.error = "zar: the kernel library " + path + " needs a processor with AVX, and " +
              ((cpu_features() & ZAR_FEATURE_AVX) ? "AVX is disabled by ZAR_ENABLE_INSTRUCTIONS"
                                                  : "this processor (or its operating system) has none");
    return ZAR_LOAD_NO_AVX;
  }
  struct stat st{};
  if (stat(path.c_str(), &st) != 0) {
    s.error = "zar: cannot find the kernel library " + path +
              " (set ZAR_KERNEL_PATH to the file or to its directory)";
    return ZAR_LOAD_NOT_FOUND;
  }
  if (const std::string why = not_a_library(path); !why.empty()) {
    s.error = "zar: cannot load the kernel library " + path + ": " + why;
    return ZAR_LOAD_NOT_FOUND;
  }
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!h) {
    const char* why = dlerror();
    s.error = "zar: cannot load the kernel library " + path + ": " + (why ? why : "unknown error");
    return ZAR_LOAD_NOT_FOUND;
  }
  void* tag_symbol = dlsym(h, "dll_cpu_version");
  if (!tag_symbol) {
    dlclose(h);
    s.error = "zar: " + path + " is not a zar kernel library: it has no dll_cpu_version";
    return ZAR_LOAD_NO_TAG;
  }
  if (!is_function_symbol(tag_symbol)) {
    dlclose(h);
    s.error = "zar: " + path + " is not a zar kernel library: its dll_cpu_version is not a function";
    return ZAR_LOAD_NO_TAG;
  }
  auto version = reinterpret_cast<int (*)()>(tag_symbol);
  const int tag = version();
  if (tag != kExpectedTag) {
    dlclose(h);
    s.error = "zar: the kernel library " + path + " has processor tag " + std::to_string(tag) +
              ", this core expects " + std::to_string(kExpectedTag);
    return ZAR_LOAD_WRONG_TAG;
  }
  s.handle = h;
  s.tag = tag;
  s.error.clear();
  return ZAR_LOAD_OK;
}

}  // namespace

// Loads with every failure as a status: a failed allocation while the
// messages are formed is a failed load, not an exception.
int load_guarded(loader_state& s, const char* path) {
  try {
    return load_locked(s, path ? std::string(path) : default_path());
  } catch (...) {
    s.handle = nullptr;
    try {
      s.error = "zar: cannot load the kernel library: out of memory";
    } catch (...) {
    }
    return ZAR_LOAD_NOT_FOUND;
  }
}

void* require_kernel(const char* name) {
  loader_state& s = state();
  std::lock_guard<std::mutex> lock(s.m);
  if (!s.handle && load_guarded(s, nullptr) != ZAR_LOAD_OK) {
    std::fprintf(stderr, "%s\nzar: cannot run %s without its kernel library; stopping\n", s.error.c_str(), name);
    std::fflush(stderr);
    std::exit(EXIT_FAILURE);
  }
  void* f = dlsym(s.handle, name);
  if (!f) {
    std::fprintf(stderr, "zar: the kernel library %s has no entry point %s; stopping\n", s.path.c_str(), name);
    std::fflush(stderr);
    std::exit(EXIT_FAILURE);
  }
  return f;
}

void loader_before_fork() { state().m.lock(); }
void loader_after_fork() { state().m.unlock(); }

}  // namespace zar::core

using namespace zar::core;

ZAR_API int zar_kernel_load(const char* path) {
  loader_state& s = state();
  std::lock_guard<std::mutex> lock(s.m);
  if (s.handle) return ZAR_LOAD_OK;
  return load_guarded(s, path);
}

ZAR_API const char* zar_kernel_error(void) { return state().error.c_str(); }

ZAR_API const char* zar_kernel_path(void) {
  loader_state& s = state();
  std::lock_guard<std::mutex> lock(s.m);
  try {
    if (s.path.empty()) s.path = default_path();
  } catch (...) {
  }
  return s.path.c_str();
}

ZAR_API int zar_kernel_tag(void) { return state().tag; }

ZAR_API void* zar_kernel_symbol(const char* name) {
  loader_state& s = state();
  std::lock_guard<std::mutex> lock(s.m);
  return s.handle ? dlsym(s.handle, name) : nullptr;
}

// The file the core was loaded from, with links and ".." resolved, so that
// the kernel library is looked for in the core's real directory.
ZAR_API const char* zar_core_path(void) {
  static char p[PATH_MAX];
  static std::once_flag once;
  std::call_once(once, [] {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&zar_core_path), &info) || !info.dli_fname) return;
    if (!realpath(info.dli_fname, p)) std::snprintf(p, sizeof p, "%s", info.dli_fname);
  });
  return p;
}
