// Level-2 kernel prototypes: kept here for the kernel sources; the declarations live with
// the frame's public contract headers, which the core includes too.
#pragma once
#include "zar/level2.h"
