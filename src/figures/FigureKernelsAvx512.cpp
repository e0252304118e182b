#include "figures/FigureKernel.h"
#include "simd/Avx512Lanes.h"

namespace tidora {

template <>
const FigureKernels FigureKernelsOf<Avx512Lanes>::kTable = MakeFigureKernels<Avx512Lanes>();

}  // namespace tidora
