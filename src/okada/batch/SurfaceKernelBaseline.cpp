// The batched surface kernels for what the compiler assumes.

#include "okada/batch/SurfaceKernel.h"

namespace tidora {

const SurfaceKernels kBaselineSurfaceKernels = MakeSurfaceKernels<xsimd::default_arch>();

}  // namespace tidora
