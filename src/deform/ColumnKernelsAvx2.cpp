#define TIDORA_COLUMN_KERNELS kAvx2ColumnKernels
#include "deform/ColumnLoops.h"
