// The batched surface kernels for AVX2 and FMA.

#include "okada/batch/SurfaceKernel.h"

namespace tidora {

const SurfaceKernels kAvx2SurfaceKernels = MakeSurfaceKernels<xsimd::fma3<xsimd::avx2>>();

}  // namespace tidora
