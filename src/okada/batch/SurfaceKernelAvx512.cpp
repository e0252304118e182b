// The batched surface kernels for AVX-512.

#include "okada/batch/SurfaceKernel.h"

namespace tidora {

const SurfaceKernels kAvx512SurfaceKernels = MakeSurfaceKernels<xsimd::avx512dq>();

}  // namespace tidora
