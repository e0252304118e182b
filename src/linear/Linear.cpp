#include "linear/Linear.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

#include "grid/GridShape.h"

namespace tidora {
namespace {

// The doubles nearest to 2 pi and pi / 2; their sine in the profile is part of the results.
constexpr double kTwoPi = 6.283185307179586;
constexpr double kHalfPi = 1.5707963267948966;

/// The band's line from (x, y), straight north over the height of the grid, in its units. A grid of one row has a line
/// without length, and no point lies beside it. Test: "a grid of one row has no line and is left unchanged".
struct BandLine {
    double x, y;    ///< south end
    double lx, ly;  ///< extent
};

BandLine LineOf(const GridShape& grid, double diameter) noexcept {
    const double x = grid.X(grid.nx - 1) - diameter;
    // Differences of equal terms: 0 for a finite co-ordinate, not a number otherwise, and then nothing is raised.
    return {x, grid.orgY, x - x, grid.Y(grid.ny - 1) - grid.orgY};
}

/// Distance of the point (px, py) from the line, both relative to its south end. Not a number for a point beside no
/// part of the line, and where the line has no length or the radicand is negative from rounding. The radicand is
/// evaluated in this order, which decides where that is.
/// Test: "a node whose squared distance rounds below zero gets nothing".
double DistanceFrom(const BandLine& line, double px, double py) noexcept {
    const double length2 = line.lx * line.lx + line.ly * line.ly;
    const double t = line.ly * py + line.lx * px;
    if (!(t >= 0.0 && t <= length2)) {  // written so that what is not a number ends here too
        return std::nan("");
    }
    return std::sqrt(py * py + px * px - t * t / length2);
}

/// Height of the band at a distance from its line, m; 0 outside the band and for an unknown profile. The edge belongs
/// to the band. Computed in double precision and rounded once. Tests: "a node exactly half a width from the line is
/// included and one just beyond is not", "a profile other than 0 and 1 adds nothing and succeeds".
float BandHeight(const Linear& band, double distance) noexcept {
    if (!(distance <= 0.5 * band.diameter)) {  // also where the distance is not a number
        return 0.0F;
    }
    switch (band.mode) {
        case 0:
            return static_cast<float>(band.height);
        case 1:
            return static_cast<float>(0.5 * band.height *
                                      (std::sin(kTwoPi / band.diameter * distance + kHalfPi) + 1.0));
        default:
            return 0.0F;
    }
}

}  // namespace

Linear::Linear(const PARAM_LINEAR& param) : mode(param.mode), height(param.height), diameter(param.diameter) {}

bool Linear::LinearTdr2D(int nx, int ny, double org_x, double org_y, float dx, const float* /*val*/,
                         std::vector<InstantVal2d>& instants) const {
    if (instants.empty() || !IsGridSize(nx, ny)) {
        return true;
    }
    InstantVal2d& first = instants.front();
    assert(first.num == static_cast<std::uint64_t>(std::int64_t{nx} * ny));
    const GridShape grid = {nx, ny, org_x, org_y, dx};
    const BandLine line = LineOf(grid, diameter);
    std::uint64_t at = 0;  // ix * ny + iy, counted along, since the loops run in the order of the values
    for (int ix = 0; ix < nx; ++ix) {
        const double px = grid.X(ix) - line.x;
        for (int iy = 0; iy < ny && at < first.num; ++iy, ++at) {
            const double py = grid.Y(iy) - line.y;
            first.val[at] += BandHeight(*this, DistanceFrom(line, px, py));
        }
    }
    return true;
}

}  // namespace tidora
