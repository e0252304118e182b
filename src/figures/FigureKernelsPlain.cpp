#include "figures/FigureKernel.h"
#include "simd/PlainLanes.h"

namespace tidora {

template <>
const FigureKernels FigureKernelsOf<PlainLanes>::kTable = MakeFigureKernels<PlainLanes>();

}  // namespace tidora
