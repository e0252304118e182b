#pragma once

#include <cstdint>
#include <vector>

#include "config/ConfReader.h"
#include "grid/InstantVal2d.h"

namespace tidora {

/// A straight band of raised water, one band width inside the east edge of a grid, from its south to its north edge.
class Linear {
public:
    static constexpr std::int32_t FILE_MAX_PATH = 1023;

    std::int32_t mode = -1;  ///< profile: 0 flat, 1 cosine; anything else adds nothing
    double height = 0.0;     ///< crest height, m
    double diameter = 0.0;   ///< full width across the band, in grid co-ordinate units

    Linear() = default;
    explicit Linear(const PARAM_LINEAR& param);

    /// Adds the band to the first snapshot of `instants`. nx, ny, org_x, org_y, dx: the grid; index ix * ny + iy.
    /// `val` is not used. Returns true. Requires: the first snapshot, when there is one, holds nx * ny values.
    bool LinearTdr2D(int nx, int ny, double org_x, double org_y, float dx, const float* val,
                     std::vector<InstantVal2d>& instants) const;
};

}  // namespace tidora
