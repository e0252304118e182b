#include "globe/GlobeKernel.h"
#include "simd/Avx512Lanes.h"

namespace tidora {

template <>
const GlobeKernels GlobeKernelsOf<Avx512Lanes>::kTable = MakeGlobeKernels<Avx512Lanes>();

}  // namespace tidora
