// A kernel library of another processor generation.
extern "C" __attribute__((visibility("default"))) int dll_cpu_version(void) { return 5; }
