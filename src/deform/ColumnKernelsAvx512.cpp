#define TIDORA_COLUMN_KERNELS kAvx512ColumnKernels
#include "deform/ColumnLoops.h"
