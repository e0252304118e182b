#include "figures/FigureKernel.h"
#include "simd/Avx2Lanes.h"

namespace tidora {

template <>
const FigureKernels FigureKernelsOf<Avx2Lanes>::kTable = MakeFigureKernels<Avx2Lanes>();

}  // namespace tidora
