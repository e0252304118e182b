#pragma once

#include <cstdint>

#include "kajiura/Disc.h"

namespace tidora {

// The lattice of a disc in units of its step: offsets (i, j) from the centre with i^2 + j^2 <= 20^2, the same for all
// points. Column i and position j of a column count from 0 at the offset -20. The sum takes the columns in their order,
// and within each the positions in theirs.

inline constexpr int kLatticeHalfWidth = kDepthsToRim * kStepsPerDepth;  ///< steps from the centre to the rim: 20
inline constexpr int kLatticeRadiusSquared = kLatticeHalfWidth * kLatticeHalfWidth;  ///< 400
inline constexpr int kLatticeWidth = 2 * kLatticeHalfWidth + 1;                      ///< columns, positions: 41

/// Arrays along the lattice are longer than it by less than the widest vector (16 floats), so that loops of whole
/// vectors need no remainder: what they write after the end is never used.
inline constexpr int kWidestVector = 16;
[[nodiscard]] constexpr int InWholeVectors(int count) noexcept {
    return (count + kWidestVector - 1) / kWidestVector * kWidestVector;
}
inline constexpr int kPaddedWidth = InWholeVectors(kLatticeWidth);         ///< a whole axis: 48
inline constexpr int kPaddedHalf = InWholeVectors(kLatticeHalfWidth + 1);  ///< from the centre to the rim: 32

/// What the lattices of all points have in common.
struct Lattice {
    /// Distinct values of i^2 + j^2, ascending; the kernel depends on the offsets through them alone.
    float squaredRadii[kLatticeRadiusSquared + 1] = {};
    int radiusCount = 0;
    /// Index of i^2 + j^2 among them, by |i| and |j|; 0 outside the disc, where any will do.
    std::int16_t radiusIndex[kLatticeHalfWidth + 1][kPaddedHalf] = {};
    /// Largest |j| within the disc, by |i|.
    int reach[kLatticeHalfWidth + 1] = {};
    struct Column {
        int distance;  ///< |i|
        int begin;     ///< first position within the disc
        int start;     ///< number of a position in the order of the sum, less the position
    };
    Column columns[kLatticeWidth] = {};
    int sampleCount = 0;
};

[[nodiscard]] constexpr Lattice MakeLattice() noexcept {
    Lattice lattice;
    bool occurs[kLatticeRadiusSquared + 1] = {};
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int j = 0; i * i + j * j <= kLatticeRadiusSquared; ++j) {
            occurs[i * i + j * j] = true;
            lattice.reach[i] = j;
        }
    }
    std::int16_t indexOf[kLatticeRadiusSquared + 1] = {};
    for (int q = 0; q <= kLatticeRadiusSquared; ++q) {
        if (occurs[q]) {
            indexOf[q] = static_cast<std::int16_t>(lattice.radiusCount);
            lattice.squaredRadii[lattice.radiusCount++] = static_cast<float>(q);
        }
    }
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int j = 0; j <= lattice.reach[i]; ++j) {
            lattice.radiusIndex[i][j] = indexOf[i * i + j * j];
        }
    }
    for (int column = 0; column < kLatticeWidth; ++column) {
        const int i = column - kLatticeHalfWidth;
        const int distance = i < 0 ? -i : i;
        const int begin = kLatticeHalfWidth - lattice.reach[distance];
        lattice.columns[column] = {distance, begin, lattice.sampleCount - begin};
        lattice.sampleCount += 2 * lattice.reach[distance] + 1;
    }
    return lattice;
}

inline constexpr Lattice kLattice = MakeLattice();
inline constexpr int kLatticeSamples = kLattice.sampleCount;  ///< 1257

}  // namespace tidora
