#include "kajiura/FilterKernel.h"
#include "simd/Avx2Lanes.h"

namespace tidora {

template <>
const FilterKernels FilterKernelsOf<Avx2Lanes>::kTable = MakeFilterKernels<Avx2Lanes>();

}  // namespace tidora
