// The processor-generation tag: the core compares it with the generation it
// expects of this library (6: AVX) before resolving any kernel.
#include "zar/export.h"

ZAR_EXPORT int dll_cpu_version(void) { return 6; }
