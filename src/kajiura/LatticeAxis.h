#pragma once

#include "kajiura/Lattice.h"

namespace tidora {

/// Arrays over the lattice positions of one axis are a little longer than the axis, so that loops of whole vectors need
/// no remainder: what they write after the end is never used.
inline constexpr int kChunk = 16;
inline constexpr int kPadded = (kLatticeWidth / kChunk + 1) * kChunk;

/// Bilinear weights and cells of the 41 lattice positions along one axis, in one grid; weights of 0 where it has no
/// cell.
template <typename Lanes>
struct LatticeAxis {                         // NOLINT(cppcoreguidelines-pro-type-member-init): Fill() fills it
    alignas(64) int cell[kPadded];           ///< -1 where the grid has no cell with both its corners
    alignas(64) float weight[kPadded];       ///< of the far corner
    alignas(64) double wideWeight[kPadded];  ///< the same
    alignas(64) double nearWeight[kPadded];  ///< 1 - weight, in double

    /// True division on purpose: a reciprocal would move nodes across cell borders.
    void Fill(float centre, float step, double org, float dx, int count) {
        const double wideDx = static_cast<double>(dx);
        const double limit = static_cast<double>(count);
        for (int at = 0; at < kPadded; ++at) {
            const float p = static_cast<float>(at - kLatticeHalfWidth) * step + centre;
            const double place = __builtin_floor((static_cast<double>(p) - org) / wideDx);
            // Not short-circuited: the loop makes vectors.
            const int isInside = static_cast<int>(place >= 0.0) & static_cast<int>(place + 1.0 < limit);
            const double index = isInside != 0 ? place : -1.0;
            const float corner = static_cast<float>(org + static_cast<double>(static_cast<float>(index) * dx));
            cell[at] = static_cast<int>(index);
            weight[at] = isInside != 0 ? (p - corner) / dx : 0.0F;
            wideWeight[at] = static_cast<double>(weight[at]);
            nearWeight[at] = isInside != 0 ? 1.0 - wideWeight[at] : 0.0;
        }
    }
};

}  // namespace tidora
