// The batched surface kernels for AVX-512.

#include "okada/SurfaceKernel.h"

namespace tidora {

const SurfaceKernels kAvx512SurfaceKernels = MakeSurfaceKernels<xsimd::avx512dq>();

}  // namespace tidora
