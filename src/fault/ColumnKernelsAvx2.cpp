#define TIDORA_COLUMN_KERNELS kAvx2ColumnKernels
#include "fault/ColumnLoops.h"
