#include "globe/GlobeKernel.h"
#include "simd/PlainLanes.h"

namespace tidora {

template <>
const GlobeKernels GlobeKernelsOf<PlainLanes>::kTable = MakeGlobeKernels<PlainLanes>();

}  // namespace tidora
