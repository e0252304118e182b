#define TIDORA_COLUMN_KERNELS kBaselineColumnKernels
#include "fault/ColumnLoops.h"
