// The batched surface kernels for AVX-512.

#include "okada/batch/SurfaceKernel.h"
#include "simd/Avx512Lanes.h"

namespace tidora {

template <>
const SurfaceKernels SurfaceKernelsOf<Avx512Lanes>::kTable = MakeSurfaceKernels<Avx512Lanes>();

}  // namespace tidora
