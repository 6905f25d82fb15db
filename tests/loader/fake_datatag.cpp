// A shared object whose dll_cpu_version is a data object, not a function.
extern "C" __attribute__((visibility("default"))) const int dll_cpu_version = 6;
