#define TIDORA_COLUMN_KERNELS kAvx512ColumnKernels
#include "fault/ColumnLoops.h"
