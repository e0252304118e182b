#include "projection/ZonePlaneKernel.h"
#include "simd/PlainLanes.h"

namespace tidora {

template <>
const ZonePlaneKernels ZonePlaneKernelsOf<PlainLanes>::kTable = MakeZonePlaneKernels<PlainLanes>();

}  // namespace tidora
