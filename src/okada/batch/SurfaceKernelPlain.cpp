// The batched surface kernels for any machine.

#include "okada/batch/SurfaceKernel.h"
#include "simd/PlainLanes.h"

namespace tidora {

template <>
const SurfaceKernels SurfaceKernelsOf<PlainLanes>::kTable = MakeSurfaceKernels<PlainLanes>();

}  // namespace tidora
