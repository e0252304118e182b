#include <algorithm>
#include <cmath>

#include "fault/GridPlane.h"

namespace tidora {
namespace {

/// Indices of an axis whose positions may lie within `reach` of `centre`, widened by what single precision can move a
/// distance and by a point on either side.
void Range(double centre, double reach, double org, double spacing, int count, int& first, int& end) {
    const double margin = 1.0e-5 * (std::abs(reach) + std::abs(centre - org)) + 2.0 * std::abs(spacing);
    const double low = std::floor((centre - reach - margin - org) / spacing);
    const double high = std::ceil((centre + reach + margin - org) / spacing);
    if (!(spacing > 0.0) || !std::isfinite(low) || !std::isfinite(high)) {
        first = 0;
        end = count;
        return;
    }
    const auto last = static_cast<double>(count);
    first = static_cast<int>(std::clamp(low, 0.0, last));
    end = static_cast<int>(std::clamp(high + 1.0, 0.0, last));
}

class MetricPlane : public GridPlane {
public:
    explicit MetricPlane(const DeformedGrid& grid) : m_grid(grid) {
        m_y.reserve(static_cast<std::size_t>(std::max(grid.ny, 0)));
        for (int iy = 0; iy < grid.ny; ++iy) {
            m_y.push_back(grid.Y(iy));
        }
    }

    bool TurnTo(const ElementPlace& place, PlanePoint& origin, GridWindow& window) override {
        origin = {place.element.org_x, place.element.org_y};
        const auto spacing = static_cast<double>(m_grid.dx);
        Range(origin.x + place.toCentroid.x, place.reach, m_grid.orgX, spacing, m_grid.nx, window.firstColumn,
              window.endColumn);
        Range(origin.y + place.toCentroid.y, place.reach, m_grid.orgY, spacing, m_grid.ny, window.firstRow,
              window.endRow);
        return true;
    }

    void FillColumn(int ix, const GridWindow& window, ColumnPlaces& places) override {
        places.Resize(window.Rows());
        std::fill(places.x.begin(), places.x.end(), m_grid.X(ix));
        std::copy(m_y.begin() + window.firstRow, m_y.begin() + window.endRow, places.y.begin());
        std::fill(places.isNear.begin(), places.isNear.end(), std::uint8_t{1});
    }

private:
    const DeformedGrid& m_grid;
    std::vector<double> m_y;
};

}  // namespace

std::unique_ptr<GridPlane> MakeMetricPlane(const DeformedGrid& grid) {
    return std::make_unique<MetricPlane>(grid);
}

}  // namespace tidora
