#include <algorithm>
#include <cmath>
#include <vector>

#include "deform/GridPlane.h"

namespace tidora {
namespace {

/// Positions along one axis of a grid.
struct Axis {
    double org, spacing;
    int count;
};

struct Indices {
    int first, end;
};

/// Beyond this, m, single precision cannot hold the squares of distances: every point is asked for itself.
constexpr double kLargest = 1.0e18;

/// Indices of an axis whose positions may lie within the reach of an element: those within it of the centroid, widened
/// by what the rounding of places and distances to single precision can move a point, and by a point on either side. A
/// column or row more decides nothing. Places that are not finite, or too large, ask for every point: what is not a
/// number is beyond no reach.
Indices IndicesWithin(const ElementPlace& place, double centre, const Axis& axis) {
    // Single precision errs by 6e-8 of what it holds: differences as large as reach and distance (and as the way to the
    // element from the first point), some operations of it, squares and a root: 1e-5 of those is far more than that.
    // Distances are formed in the frame of the reference point, which the extent separates from the centroid.
    const double margin = 1.0e-5 * (std::abs(place.reach) + std::abs(centre - axis.org)) + 1.0e-6 * place.extent +
                          2.0 * std::abs(axis.spacing);
    const double low = std::floor((centre - place.reach - margin - axis.org) / axis.spacing);
    const double high = std::ceil((centre + place.reach + margin - axis.org) / axis.spacing);
    const double farthest = std::abs(centre) + std::abs(place.reach) + std::abs(axis.org) + place.extent +
                            std::abs(axis.spacing) * static_cast<double>(axis.count);
    if (!(axis.spacing > 0.0) || !std::isfinite(low) || !std::isfinite(high) || !(farthest < kLargest)) {
        return {0, axis.count};
    }
    const auto last = static_cast<double>(axis.count);
    return {static_cast<int>(std::clamp(low, 0.0, last)), static_cast<int>(std::clamp(high + 1.0, 0.0, last))};
}

class MetricPlane : public GridPlane {
public:
    explicit MetricPlane(const GridShape& grid) : m_grid(grid) {
        for (int iy = 0; iy < grid.ny; ++iy) {
            m_y.push_back(grid.Y(iy));
        }
        m_x.resize(m_y.size());
    }

    GridWindow TurnTo(const ElementPlace& place) override {
        const auto spacing = static_cast<double>(m_grid.dx);
        const Indices columns =
            IndicesWithin(place, place.origin.x + place.toCentroid.x, {m_grid.orgX, spacing, m_grid.nx});
        const Indices rows =
            IndicesWithin(place, place.origin.y + place.toCentroid.y, {m_grid.orgY, spacing, m_grid.ny});
        return {columns.first, columns.end, rows.first, rows.end};
    }

    ColumnPlaces Column(int ix, const GridWindow& window) override {
        std::fill_n(m_x.begin(), window.Rows(), m_grid.X(ix));
        return {m_x.data(), m_y.data() + window.firstRow, nullptr};
    }

private:
    GridShape m_grid;
    std::vector<double> m_x, m_y;
};

}  // namespace

std::unique_ptr<GridPlane> MakeMetricPlane(const GridShape& grid) {
    return std::make_unique<MetricPlane>(grid);
}

}  // namespace tidora
