#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "deform/GreatCircle.h"
#include "deform/GridPlane.h"
#include "deform/ZoneColumns.h"
#include "projection/UtmZone.h"

namespace tidora {
namespace {

constexpr double kPi = 3.141592653589793;

class ProjectedPlane : public GridPlane {
public:
    explicit ProjectedPlane(const GridShape& grid) : m_grid(grid), m_lat(LatitudesOf(grid)), m_rows(m_lat) {
        for (int ix = 0; ix < grid.nx; ++ix) {
            m_lon.push_back(grid.X(ix));
        }
        for (const double lat : m_lat) {
            const Latitude latitude = LatitudeOf(lat);
            m_latitudes.sine.push_back(latitude.sine);
            m_latitudes.cosine.push_back(latitude.cosine);
        }
        m_isNear.resize(m_lat.size());
    }

    GridWindow TurnTo(const ElementPlace& place) override {
        m_reach.emplace(place.orgX, place.orgY, place.reach);
        const int zone = UtmZone(place.orgX);
        m_zone = &m_zones.try_emplace(zone, m_grid, m_rows, zone).first->second;
        return WindowAround(place);
    }

    ColumnPlaces Column(int ix, const GridWindow& window) override {
        const auto first = static_cast<std::size_t>(window.firstRow);
        const bool isAllNear =
            m_reach->Mark(m_lon[static_cast<std::size_t>(ix)], m_latitudes, first, window.Rows(), m_isNear.data());
        const ZoneColumns::Column& column = m_zone->Of(ix, window.firstRow, window.endRow);
        for (std::size_t i = 0; column.hasGaps && i < window.Rows(); ++i) {
            const bool hasPlace = std::isfinite(column.x[first + i]) && std::isfinite(column.y[first + i]);
            m_isNear[i] = hasPlace ? m_isNear[i] : 0;
        }
        return {column.x.data() + first, column.y.data() + first,
                isAllNear && !column.hasGaps ? nullptr : m_isNear.data()};
    }

private:
    static std::vector<double> LatitudesOf(const GridShape& grid) {
        std::vector<double> lat;
        lat.reserve(static_cast<std::size_t>(grid.ny));
        for (int iy = 0; iy < grid.ny; ++iy) {
            lat.push_back(grid.Y(iy));
        }
        return lat;
    }

    /// Rows within the reach in latitude, and columns within the widest longitude difference of a circle of that
    /// radius. A thousandth of a degree more covers every rounding, the rounded pi's too; a column or row more decides
    /// nothing.
    [[nodiscard]] GridWindow WindowAround(const ElementPlace& place) const {
        constexpr double kMargin = 1.0e-3;
        const double radius = place.reach / kEarthRadius;
        const double radiusDegrees = radius / kPi * 180.0 + kMargin;
        GridWindow window = {0, m_grid.nx, 0, m_grid.ny};
        if (!(radiusDegrees < 180.0)) {
            return window;
        }
        const auto isNearRow = [&](double lat) { return std::abs(lat - place.orgY) <= radiusDegrees; };
        KeepNear(m_lat, isNearRow, window.firstRow, window.endRow);
        // A circle that comes near a pole, or holds it, has points at every longitude.
        if (std::abs(place.orgY) + radiusDegrees < 89.0) {
            const double widest =
                std::asin(std::min(1.0, std::sin(radius) / LatitudeOf(place.orgY).cosine)) / kPi * 180.0 + kMargin;
            const auto isNearColumn = [&](double lon) {
                return std::abs(std::remainder(lon - place.orgX, 360.0)) <= widest;
            };
            KeepNear(m_lon, isNearColumn, window.firstColumn, window.endColumn);
        }
        return window;
    }

    template <typename IsNear>
    static void KeepNear(const std::vector<double>& positions, IsNear isNear, int& first, int& end) {
        while (first < end && !isNear(positions[static_cast<std::size_t>(first)])) {
            ++first;
        }
        while (first < end && !isNear(positions[static_cast<std::size_t>(end - 1)])) {
            --end;
        }
    }

    GridShape m_grid;
    std::vector<double> m_lon, m_lat;
    Latitudes m_latitudes;  ///< on the sphere of the reach
    ConformalRows m_rows;   ///< on the ellipsoid of the zones
    std::map<int, ZoneColumns> m_zones;
    ZoneColumns* m_zone = nullptr;            ///< of the current element
    std::optional<GreatCircleReach> m_reach;  ///< of the current element
    std::vector<std::uint8_t> m_isNear;       ///< of the current column of its window
};

}  // namespace

std::unique_ptr<GridPlane> MakeProjectedPlane(const GridShape& grid) {
    return std::make_unique<ProjectedPlane>(grid);
}

}  // namespace tidora
