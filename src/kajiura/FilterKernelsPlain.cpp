#include "kajiura/FilterKernel.h"
#include "simd/PlainLanes.h"

namespace tidora {

template <>
const FilterKernels FilterKernelsOf<PlainLanes>::kTable = MakeFilterKernels<PlainLanes>();

}  // namespace tidora
