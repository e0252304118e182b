#include "kajiura/ConvergedFilter.h"

#include <algorithm>

#include "globe/Ellipsoid.h"
#include "kajiura/Disc.h"
#include "kajiura/LatticeMean.h"

namespace tidora {
namespace {

/// More pixels in a depth than this make no difference: any grid that fits into a memory lies in the innermost cell.
/// Less than 2^53 by far, so that lines stay apart.
constexpr double kMostPixels = 1e12;
/// Fewer than these are taken for so many: lines that lie closer together are hardly told apart in double. Only a
/// spacing of 100 degrees or more can have so few along one axis and not along the other, where the value stays.
constexpr double kFewestPixels = 1e-6;
constexpr double kHalfTurn = 180.0;  ///< degrees

/// Metres in a pixel, and the largest number of columns in a depth.
struct RowScale {
    double east, north, mostColumns;
};

RowScale ScaleOf(const RegularGrid& grid, std::size_t iy, bool isGeographic) noexcept {
    if (!isGeographic) {
        return {grid.spacing, grid.spacing, kMostPixels};
    }
    const DegreeSize degree = DegreeSizeAt(grid.south + static_cast<double>(iy) * grid.spacing);
    const double halfTurn = kHalfTurn / (grid.spacing * kLatticeReach);
    return {degree.east * grid.spacing, degree.north * grid.spacing, std::min(halfTurn, kMostPixels)};
}

}  // namespace

ConvergedFilter::ConvergedFilter(const UpliftTable& uplift, const UpliftTable* parent, bool isGeographic) noexcept
    : m_uplift(&uplift), m_parent(parent), m_isGeographic(isGeographic) {}

void ConvergedFilter::FilterRows(std::size_t firstRow, std::size_t endRow, const float* uplift, const float* topography,
                                 float* surface) const noexcept {
    const RegularGrid& grid = m_uplift->Grid();
    const LatticeMean mean(*m_uplift, m_parent, m_isGeographic);
    for (std::size_t iy = firstRow; iy < endRow; ++iy) {
        const RowScale scale = ScaleOf(grid, iy, m_isGeographic);
        for (std::size_t ix = 0; ix < grid.nx; ++ix) {
            const std::size_t at = iy * grid.nx + ix;
            if (!IsFiltered(topography[at])) {
                surface[at] = uplift[at];
                continue;
            }
            const double depth = -static_cast<double>(topography[at]);
            const double columns = std::max(kFewestPixels, std::min(scale.mostColumns, depth / scale.east));
            const double rows = std::max(kFewestPixels, std::min(kMostPixels, depth / scale.north));
            const bool isWithinPixel = std::max(columns, rows) * kLatticeReach <= 0.5;
            surface[at] = isWithinPixel ? uplift[at]
                                        : static_cast<float>(mean.At(static_cast<double>(ix) + 0.5,
                                                                     static_cast<double>(iy) + 0.5, columns, rows));
        }
    }
}

}  // namespace tidora
