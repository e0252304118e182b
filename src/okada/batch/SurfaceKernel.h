#pragma once

#include "okada/batch/FiniteKernel.h"
#include "okada/batch/PointKernel.h"
#include "okada/batch/SurfaceKernels.h"

namespace tidora {

/// The table of one lane type; called by its source.
template <typename Lanes>
constexpr SurfaceKernels MakeSurfaceKernels() noexcept {
    using Finite = FiniteKernel<Lanes>;
    using Point = PointKernel<Lanes>;
    return {{{&Finite::template Run<false, false>, &Finite::template Run<false, true>},
             {&Finite::template Run<true, false>, &Finite::template Run<true, true>}},
            {&Point::template Run<false>, &Point::template Run<true>}};
}

}  // namespace tidora
