#pragma once

#include "kajiura/Lattice.h"

namespace tidora {

/// Eight positions of a lattice column are one part: so many are interpolated at a time, whatever the lanes. The last
/// position belongs to the disc in the middle column alone; like the other two tips, which stand alone in their
/// columns, it is taken by itself (the fourth tip is the first position of the middle column and needs no care).
inline constexpr int kPartWidth = 8;
inline constexpr int kParts = (kLatticeWidth - 1) / kPartWidth;
static_assert(kParts * kPartWidth == kLatticeWidth - 1, "the disc's radius must be a multiple of 4 steps; see Disc.h");

/// Bilinear weights and cells of the lattice positions along one axis of one point, in one grid. Where the grid has no
/// cell the weights are 0.
template <typename Lanes>
struct LatticeAxis {                              // NOLINT(cppcoreguidelines-pro-type-member-init): Fill() fills it
    alignas(64) int cell[kPaddedWidth];           ///< -1 where the grid has no cell with both its corners
    alignas(64) float weight[kPaddedWidth];       ///< of the far corner, where a product is formed in single precision
    alignas(64) double wideWeight[kPaddedWidth];  ///< the same, where it is formed in double
    alignas(64) double nearWeight[kPaddedWidth];  ///< 1 - weight, formed in double

    /// centre, step: of the lattice, m. org, dx, count: of the grid's axis. A plain loop that compilers make vectors
    /// of: hence the conditions that are not short-circuited. The same bits with every lane type:
    /// - the place of a sample is formed in single precision;
    /// - the division is a true one, since a reciprocal would move samples on a node across the border of their cell;
    /// - the place of the corner is GridShape's, rounded to single precision before it is subtracted. It is written out
    ///   here because a kernel must not call an inline function of a header that other machines' sources share.
    void Fill(float centre, float step, double org, float dx, int count) noexcept {
        const double wideDx = static_cast<double>(dx);
        const double limit = static_cast<double>(count);
        for (int at = 0; at < kPaddedWidth; ++at) {
            const float p = static_cast<float>(at - kLatticeHalfWidth) * step + centre;
            const double place = __builtin_floor((static_cast<double>(p) - org) / wideDx);
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
