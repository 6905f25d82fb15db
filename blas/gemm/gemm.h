// The GEMM engine's contract: kept here for the kernel sources; the declarations live with
// the frame's public contract headers, which the core includes too.
#pragma once
#include "zar/gemm.h"
