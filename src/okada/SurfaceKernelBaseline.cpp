// The batched surface kernels for what the compiler assumes.

#include "okada/SurfaceKernel.h"

namespace tidora {

const SurfaceKernels kBaselineSurfaceKernels = MakeSurfaceKernels<xsimd::default_arch>();

}  // namespace tidora
