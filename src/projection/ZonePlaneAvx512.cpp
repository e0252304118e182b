#include "projection/ZonePlaneKernel.h"
#include "simd/Avx512Lanes.h"

namespace tidora {

template <>
const ZonePlaneKernels ZonePlaneKernelsOf<Avx512Lanes>::kTable = MakeZonePlaneKernels<Avx512Lanes>();

}  // namespace tidora
