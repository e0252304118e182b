#pragma once

#include "PairedRun.h"

namespace bench {

/// Cost of the globe's frame over the plane's, 1000 x 1000 nodes, 10 elements, uplift only, one thread; less is better.
[[nodiscard]] Ratio GlobeOverPlane();

/// Cost of the globe's frame over that of the bare kernel on as many points.
[[nodiscard]] Ratio GlobeOverKernel();

/// Wall time of one thread over that of two, 1000 x 1000 nodes, 50 elements.
[[nodiscard]] Ratio OneThreadOverTwo();

/// The same of the bare kernel: twice the work one after the other, over two copies side by side. What the machine
/// gives two threads at all.
[[nodiscard]] Ratio TwoKernelsInTurnOverSideBySide();

/// Processor time of the bare kernel per point, uplift only, ns.
[[nodiscard]] double KernelNanoseconds();

}  // namespace bench
