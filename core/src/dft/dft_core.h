// Internal interfaces of the core's FFT front end and threaded layer.
#pragma once
#include "zar/dfti.h"

namespace zar::core::dft {

// Threads (and scratch slots) of a descriptor's computes.
int threads_for(const zar_dfti_desc* d);
// The work measure of a node of n elements of element_bytes bytes.
int work_measure(long n, int element_bytes);
// Runs a committed descriptor's compute over its batch on the core's
// threads; returns a status.
long run(const zar_dfti_desc* d, bool forward, void* const* arrays);

}  // namespace zar::core::dft
