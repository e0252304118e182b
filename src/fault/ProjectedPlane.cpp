#include <algorithm>
#include <cmath>
#include <cstddef>

#include "fault/ElementSource.h"
#include "fault/GridPlane.h"
#include "projection/UtmZone.h"
#include "projection/mapproject.h"

namespace tidora {
namespace {

constexpr double kEarthRadius = 6371000.0;  ///< m, sphere
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPi = 3.141592653589793;

/// Sine and cosine of a latitude, taken as cosine and sine of its colatitude.
struct Latitude {
    double sine, cosine;
};

Latitude LatitudeOf(double degrees) noexcept {
    const double colatitude = kHalfPi - DeformationRadians(degrees);
    return {std::cos(colatitude), std::sin(colatitude)};
}

/// Sine and cosine of a longitude difference.
struct Longitude {
    double sine, cosine;
};

/// Great-circle angle between two directions, radians: atan2(|cross product|, dot product), accurate at all distances.
double Angle(const Latitude& from, const Latitude& to, const Longitude& difference) noexcept {
    const double along = from.sine * to.cosine * difference.cosine - from.cosine * to.sine;
    const double across = difference.sine * to.cosine;
    const double numerator = std::sqrt(along * along + across * across);
    const double denominator = to.cosine * from.cosine * difference.cosine + to.sine * from.sine;
    return std::atan2(numerator, denominator);
}

/// Decides whether points lie farther than a distance from one point. The cosine of the angle decides; only within its
/// rounding of the limit the angle itself is formed, so that every point is decided as the angle would decide it.
class DistanceLimit {
public:
    DistanceLimit(const Latitude& from, double limit) noexcept
        : m_from(from),
          m_limit(limit),
          m_cosine(std::cos(limit / kEarthRadius)),
          m_isMonotonous(limit >= 0.0 && limit / kEarthRadius < 3.0) {}

    [[nodiscard]] bool IsBeyond(const Latitude& to, const Longitude& difference) const noexcept {
        constexpr double kUndecided = 1.0e-12;  // the dot product and the angle are good to some 1e-15
        const double dot = to.cosine * m_from.cosine * difference.cosine + to.sine * m_from.sine;
        if (m_isMonotonous && std::abs(dot - m_cosine) > kUndecided) {
            return dot < m_cosine;
        }
        return Angle(m_from, to, difference) * kEarthRadius > m_limit;
    }

private:
    Latitude m_from;
    double m_limit;  ///< m
    double m_cosine;
    bool m_isMonotonous;  ///< false beyond half the circle and for what is not a number: the cosine does not tell
};

/// Plane co-ordinates of the points of a grid in one zone; filled where they were asked for.
struct Zone {
    std::vector<double> x, y;
    std::vector<std::uint8_t> isKnown;

    explicit Zone(std::size_t size) : x(size), y(size), isKnown(size) {}
};

class ProjectedPlane : public GridPlane {
public:
    explicit ProjectedPlane(const DeformedGrid& grid) : m_grid(grid) {
        for (int ix = 0; ix < grid.nx; ++ix) {
            m_lon.push_back(grid.X(ix));
        }
        for (int iy = 0; iy < grid.ny; ++iy) {
            m_lat.push_back(grid.Y(iy));
            m_latitudes.push_back(LatitudeOf(m_lat.back()));
        }
    }

    bool TurnTo(const ElementPlace& place, PlanePoint& origin, GridWindow& window) override {
        const FAULT_PARAM& element = place.element;
        window = WindowAround(element, place.reach);
        MarkNearPoints(element, place.reach, window);

        const int one = 1;
        const int zone = UtmZone(element.org_x);
        mapproject_initialize_using_longi_(element.org_x);
        ProjectNearPoints(ZoneOf(zone), window);
        ll2xy_(&one, &element.org_x, &element.org_y, &origin.x, &origin.y);
        mapproject_finalize_();
        return std::isfinite(origin.x) && std::isfinite(origin.y);
    }

    void FillColumn(int ix, const GridWindow& window, ColumnPlaces& places) override {
        places.Resize(window.Rows());
        const auto first = static_cast<std::ptrdiff_t>(m_grid.Index(ix, window.firstRow));
        const auto rows = static_cast<std::ptrdiff_t>(window.Rows());
        std::copy_n(m_zone->x.begin() + first, rows, places.x.begin());
        std::copy_n(m_zone->y.begin() + first, rows, places.y.begin());
        const auto near = static_cast<std::ptrdiff_t>(NearIndex(ix, window));
        std::copy_n(m_isNear.begin() + near, rows, places.isNear.begin());
    }

private:
    [[nodiscard]] static std::size_t NearIndex(int ix, const GridWindow& window) noexcept {
        return static_cast<std::size_t>(ix - window.firstColumn) * window.Rows();
    }

    /// Rows within the reach in latitude, and columns within the widest longitude difference of a circle of that
    /// radius. A thousandth of a degree more costs nothing; a column or row more decides nothing.
    [[nodiscard]] GridWindow WindowAround(const FAULT_PARAM& element, double reach) const {
        constexpr double kMargin = 1.0e-3;
        const double radius = reach / kEarthRadius;
        const double radiusDegrees = radius / kPi * 180.0 + kMargin;
        GridWindow window = {0, m_grid.nx, 0, m_grid.ny};
        if (!(radiusDegrees < 180.0)) {
            return window;
        }
        const auto isNearRow = [&](double lat) { return std::abs(lat - element.org_y) <= radiusDegrees; };
        KeepNear(m_lat, isNearRow, window.firstRow, window.endRow);
        if (std::abs(element.org_y) + radiusDegrees < 89.0) {
            const double widest =
                std::asin(std::min(1.0, std::sin(radius) / LatitudeOf(element.org_y).cosine)) / kPi * 180.0 + kMargin;
            const auto isNearColumn = [&](double lon) {
                return std::abs(std::remainder(lon - element.org_x, 360.0)) <= widest;
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

    void MarkNearPoints(const FAULT_PARAM& element, double reach, const GridWindow& window) {
        m_isNear.resize(window.Columns() * window.Rows());
        const DistanceLimit limit(LatitudeOf(element.org_y), reach);
        std::size_t at = 0;
        for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
            const double delta = DeformationRadians(m_lon[static_cast<std::size_t>(ix)] - element.org_x);
            const Longitude difference = {std::sin(delta), std::cos(delta)};
            for (int iy = window.firstRow; iy < window.endRow; ++iy, ++at) {
                m_isNear[at] = limit.IsBeyond(m_latitudes[static_cast<std::size_t>(iy)], difference) ? 0 : 1;
            }
        }
    }

    Zone& ZoneOf(int number) {
        m_zone = &m_zones.try_emplace(number, m_grid.Size()).first->second;
        return *m_zone;
    }

    /// Projects the near points that this zone does not know yet, all in one call.
    void ProjectNearPoints(Zone& zone, const GridWindow& window) {
        m_wanted.clear();
        m_wantedLon.clear();
        m_wantedLat.clear();
        for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
            for (int iy = window.firstRow; iy < window.endRow; ++iy) {
                const std::size_t at = m_grid.Index(ix, iy);
                const std::size_t near = NearIndex(ix, window) + static_cast<std::size_t>(iy - window.firstRow);
                if (m_isNear[near] != 0 && zone.isKnown[at] == 0) {
                    zone.isKnown[at] = 1;
                    m_wanted.push_back(at);
                    m_wantedLon.push_back(m_lon[static_cast<std::size_t>(ix)]);
                    m_wantedLat.push_back(m_lat[static_cast<std::size_t>(iy)]);
                }
            }
        }
        m_wantedX.resize(m_wanted.size());
        m_wantedY.resize(m_wanted.size());
        const auto count = static_cast<int>(m_wanted.size());
        ll2xy_(&count, m_wantedLon.data(), m_wantedLat.data(), m_wantedX.data(), m_wantedY.data());
        for (std::size_t i = 0; i < m_wanted.size(); ++i) {
            zone.x[m_wanted[i]] = m_wantedX[i];
            zone.y[m_wanted[i]] = m_wantedY[i];
        }
    }

    const DeformedGrid& m_grid;
    std::vector<double> m_lon, m_lat;
    std::vector<Latitude> m_latitudes;
    std::map<int, Zone> m_zones;
    Zone* m_zone = nullptr;              ///< of the current element
    std::vector<std::uint8_t> m_isNear;  ///< of the current element's window, column by column
    std::vector<std::size_t> m_wanted;
    std::vector<double> m_wantedLon, m_wantedLat, m_wantedX, m_wantedY;
};

}  // namespace

std::unique_ptr<GridPlane> MakeProjectedPlane(const DeformedGrid& grid) {
    return std::make_unique<ProjectedPlane>(grid);
}

}  // namespace tidora
