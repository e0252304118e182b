#include "projection/ZonePlaneKernel.h"
#include "simd/Avx2Lanes.h"

namespace tidora {

template <>
const ZonePlaneKernels ZonePlaneKernelsOf<Avx2Lanes>::kTable = MakeZonePlaneKernels<Avx2Lanes>();

}  // namespace tidora
