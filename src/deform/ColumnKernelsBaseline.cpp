#define TIDORA_COLUMN_KERNELS kBaselineColumnKernels
#include "deform/ColumnLoops.h"
