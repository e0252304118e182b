// The batched surface kernels for AVX2 and FMA.

#include "okada/batch/SurfaceKernel.h"
#include "simd/Avx2Lanes.h"

namespace tidora {

template <>
const SurfaceKernels SurfaceKernelsOf<Avx2Lanes>::kTable = MakeSurfaceKernels<Avx2Lanes>();

}  // namespace tidora
