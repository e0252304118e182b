#include <algorithm>
#include <cmath>

#include "deform/GridPlane.h"

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
        for (int iy = 0; iy < grid.ny; ++iy) {
            m_y.push_back(grid.Y(iy));
            m_hasPlace.push_back(std::isfinite(m_y.back()) ? 1 : 0);
        }
        m_x.resize(m_y.size());
        m_none.resize(m_y.size());
        m_haveAllPlaces = std::find(m_hasPlace.begin(), m_hasPlace.end(), 0) == m_hasPlace.end();
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

    ColumnPlaces Column(int ix, const GridWindow& window) override {
        const auto first = static_cast<std::size_t>(window.firstRow);
        const double x = m_grid.X(ix);
        std::fill_n(m_x.begin(), window.Rows(), x);
        const std::uint8_t* isNear = m_haveAllPlaces ? nullptr : m_hasPlace.data() + first;
        if (!std::isfinite(x)) {
            isNear = m_none.data();
        }
        return {m_x.data(), m_y.data() + first, isNear};
    }

private:
    const DeformedGrid& m_grid;
    std::vector<double> m_x, m_y;
    std::vector<std::uint8_t> m_hasPlace;  ///< of the rows
    std::vector<std::uint8_t> m_none;      ///< the same for a column that has no place itself
    bool m_haveAllPlaces = true;
};

}  // namespace

std::unique_ptr<GridPlane> MakeMetricPlane(const DeformedGrid& grid) {
    return std::make_unique<MetricPlane>(grid);
}

}  // namespace tidora
