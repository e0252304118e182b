#pragma once

#include <cstdint>

namespace tidora {

inline constexpr int kLatticeHalfWidth = 20;       ///< lattice steps from the centre of the disc to its rim
inline constexpr int kLatticeRadiusSquared = 400;  ///< squared radius of the disc, in lattice steps
inline constexpr int kLatticeWidth = 2 * kLatticeHalfWidth + 1;
inline constexpr int kLatticeSamples = 1257;  ///< lattice points within the disc
inline constexpr int kKernelTerms = 11;       ///< of the series

/// What the lattices of all points have in common.
struct Lattice {
    /// Distinct values of i^2 + j^2 within the disc, ascending; the kernel depends on the offsets through them alone.
    float squaredRadii[kLatticeRadiusSquared + 1] = {};
    int radiusCount = 0;
    /// Index of i^2 + j^2 among them, for i and j of 0 and more; 0 outside the disc.
    std::int16_t radiusIndex[kLatticeHalfWidth + 1][kLatticeHalfWidth + 1] = {};
    /// Largest |j| within the disc, by |i|.
    int reach[kLatticeHalfWidth + 1] = {};
    struct Column {
        int begin;     ///< first position within the disc
        int start;     ///< where a position stands in the order of the sum, less the position
        int distance;  ///< |i|
    };
    Column columns[kLatticeWidth] = {};  ///< positions and columns count from 0 at j = -20 and i = -20
};

[[nodiscard]] constexpr Lattice MakeLattice() noexcept {
    Lattice lattice;
    int indexOf[kLatticeRadiusSquared + 1] = {};
    for (int q = 0; q <= kLatticeRadiusSquared; ++q) {
        bool occurs = false;
        for (int i = 0; i * i <= q; ++i) {
            for (int j = 0; i * i + j * j <= q; ++j) {
                occurs = occurs || i * i + j * j == q;
            }
        }
        if (occurs) {
            indexOf[q] = lattice.radiusCount;
            lattice.squaredRadii[lattice.radiusCount++] = static_cast<float>(q);
        }
    }
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int j = 0; j <= kLatticeHalfWidth; ++j) {
            const int q = i * i + j * j;
            if (q <= kLatticeRadiusSquared) {
                lattice.radiusIndex[i][j] = static_cast<std::int16_t>(indexOf[q]);
                lattice.reach[i] = j;
            }
        }
    }
    int samples = 0;
    for (int i = 0; i < kLatticeWidth; ++i) {
        const int distance = i < kLatticeHalfWidth ? kLatticeHalfWidth - i : i - kLatticeHalfWidth;
        const int reach = lattice.reach[distance];
        lattice.columns[i] = {kLatticeHalfWidth - reach, samples - (kLatticeHalfWidth - reach), distance};
        samples += 2 * reach + 1;
    }
    return lattice;
}

inline constexpr Lattice kLattice = MakeLattice();

/// The same indices with a few more for whole vectors: any radius will do there.
struct PaddedRadii {
    std::int16_t index[kLatticeHalfWidth + 1][32] = {};
};

[[nodiscard]] constexpr PaddedRadii MakePaddedRadii() noexcept {
    PaddedRadii radii;
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int j = 0; j <= kLatticeHalfWidth; ++j) {
            radii.index[i][j] = kLattice.radiusIndex[i][j];
        }
    }
    return radii;
}

inline constexpr PaddedRadii kPaddedRadii = MakePaddedRadii();

}  // namespace tidora
