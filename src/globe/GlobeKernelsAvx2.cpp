#include "globe/GlobeKernel.h"
#include "simd/Avx2Lanes.h"

namespace tidora {

template <>
const GlobeKernels GlobeKernelsOf<Avx2Lanes>::kTable = MakeGlobeKernels<Avx2Lanes>();

}  // namespace tidora
