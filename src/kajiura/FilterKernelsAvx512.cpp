#include "kajiura/FilterKernel.h"
#include "simd/Avx512Lanes.h"

namespace tidora {

template <>
const FilterKernels FilterKernelsOf<Avx512Lanes>::kTable = MakeFilterKernels<Avx512Lanes>();

}  // namespace tidora
