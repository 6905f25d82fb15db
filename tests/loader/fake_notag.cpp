// A shared object that is not a kernel library.
extern "C" __attribute__((visibility("default"))) int some_other_function(void) { return 6; }
