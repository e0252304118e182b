#pragma once

#include <cstdint>
#include <vector>

#include "config/ConfReader.h"
#include "grid/InstantVal2d.h"

namespace tidora {

/// A straight band of raised water, from the south to the north edge of a grid, its line one band width inside the east
/// edge: an initial wave without a fault. In the cosine profile the height falls from the line to 0 at half the width.
/// A plain value; in degrees, too, distances are those of a plane.
class Linear {
public:
    /// The line buffer of the readers; this class reads no file. Not used by a run.
    static constexpr std::int32_t FILE_MAX_PATH = 1023;

    std::int32_t mode = -1;  ///< profile: 0 flat, 1 cosine; anything else adds nothing
    double height = 0.0;     ///< crest height, m
    double diameter = 0.0;   ///< full width across the band, in grid co-ordinate units

    /// No band. Not used by a run.
    Linear() = default;

    /// Takes over what the configuration says.
    explicit Linear(const PARAM_LINEAR& param);

    /// Adds the band to the first snapshot of `instants`. nx, ny, org_x, org_y, dx: the grid; index ix * ny + iy.
    /// `val` means nothing. Returns true, as nothing can fail; a run reports a false all the same. Requires: the first
    /// snapshot, when there is one, holds nx * ny values.
    bool LinearTdr2D(int nx, int ny, double org_x, double org_y, float dx, const float* val,
                     std::vector<InstantVal2d>& instants) const;
};

}  // namespace tidora
