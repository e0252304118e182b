#pragma once

#include "grid/GridShape.h"

namespace tidora {

/// A grid of values as the filter samples it; index ix * ny + iy, places in metres. Does not own the values.
struct SampledGrid {
    GridShape shape;
    const float* values = nullptr;
};

}  // namespace tidora
