#pragma once

#include <cstddef>
#include <cstdint>

namespace tidora {

inline constexpr int kLatticeHalfWidth = 20;       ///< lattice steps from the centre of the disc to its rim
inline constexpr int kLatticeRadiusSquared = 400;  ///< squared radius of the disc, in lattice steps
inline constexpr int kLatticeWidth = 2 * kLatticeHalfWidth + 1;
inline constexpr int kLatticeSamples = 1257;  ///< lattice points within the disc
inline constexpr int kKernelTerms = 11;       ///< of the series
inline constexpr int kLatticeBlock = 8;       ///< points that are summed side by side

/// What the lattices of all points have in common.
struct Lattice {
    /// Distinct values of i^2 + j^2 within the disc, ascending; the kernel depends on the offsets through them alone.
    float squaredRadii[kLatticeRadiusSquared + 1] = {};
    int radiusCount = 0;
    /// Index of i^2 + j^2 among them, for i and j of 0 and more; 0 outside the disc.
    std::int16_t radiusIndex[kLatticeHalfWidth + 1][kLatticeHalfWidth + 1] = {};
    /// Largest |j| within the disc, by |i|.
    int reach[kLatticeHalfWidth + 1] = {};
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
    return lattice;
}

inline constexpr Lattice kLattice = MakeLattice();

/// The same index by |i| and j + 20; a few positions more, with any index, for whole vectors.
struct ColumnRadii {
    std::int16_t index[kLatticeHalfWidth + 1][48] = {};
};

[[nodiscard]] constexpr ColumnRadii MakeColumnRadii() noexcept {
    ColumnRadii radii;
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int at = 0; at < kLatticeWidth; ++at) {
            const int j = at < kLatticeHalfWidth ? kLatticeHalfWidth - at : at - kLatticeHalfWidth;
            radii.index[i][at] = kLattice.radiusIndex[i][j];
        }
    }
    return radii;
}

inline constexpr ColumnRadii kColumnRadii = MakeColumnRadii();

/// The grids that are sampled, as plain numbers: what the kernels of all instruction sets share.
struct LatticeGrid {
    int nx, ny;
    double orgX, orgY;
    float dx;
    const float* values;  ///< null: no such grid
};

/// A point to be filtered: its place, m, and the water depth there, m.
struct LatticePoint {
    float x, y, depth;
};

/// Filtered values of `count` (at most kLatticeBlock) points.
using LatticeKernel = void (*)(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                               float* filtered);

void FilterPointsBaseline(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                          float* filtered);
#ifdef TIDORA_X86_KERNELS
void FilterPointsAvx2(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                      float* filtered);
void FilterPointsAvx512(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                        float* filtered);
#endif

}  // namespace tidora
