#pragma once

namespace tidora {

// How wide the filter looks around a point, and how finely. To change the width change kDepthsToRim, to change the
// sampling kStepsPerDepth: the lattice, the kernels and the map of the uplift follow. The product must be a multiple of
// 4 (see ColumnProducts.h). The eleven terms of the series go with five depths: a uniform uplift of 1 m then gives
// 1.023 m, and 1.034 m at six depths, 1.089 m at ten, since the cut series falls off more slowly than the whole one.

inline constexpr int kDepthsToRim = 5;      ///< radius of the disc, in depths of its centre
inline constexpr int kStepsPerDepth = 4;    ///< of the lattice; a power of 2, so that steps and depths differ by no bit
inline constexpr float kLeastDepth = 10;    ///< m; the sea must be deeper to be filtered
inline constexpr float kDeepest = 1.0e18F;  ///< m; shallower than this every value of the kernel is finite: the square
                                            ///< of the step overflows beyond 7e19, and times a radius of 0 is no number

/// The disc of a point, and the step of the square lattice that samples it.
struct Disc {
    float depth;           ///< of the sea at the point, m
    float step;            ///< m
    float radius;          ///< m
    bool hasFiniteKernel;  ///< uplift of 0 is then filtered to 0
};

/// True where a topography (m, negative below sea level) is filtered: strictly below -10 m, and not where it is no
/// number.
[[nodiscard]] constexpr bool IsFiltered(float topography) noexcept {
    return topography < -kLeastDepth;
}

/// The disc of a point that is filtered. Single precision on purpose: the step decides the bits of every sample. Not
/// for the kernels, which take the disc as it is: this function belongs to no instruction set.
[[nodiscard]] constexpr Disc DiscOf(float depth) noexcept {
    const float step = depth / kStepsPerDepth;
    return {depth, step, static_cast<float>(kDepthsToRim) * depth, depth < kDeepest};
}

}  // namespace tidora
