#include <algorithm>
#include <cmath>
#include <cstddef>

#include "deform/ColumnKernels.h"
#include "deform/ElementSource.h"
#include "deform/GridPlane.h"
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

/// The latitudes of a grid's rows.
struct Latitudes {
    std::vector<double> sine, cosine;
};

/// Decides which points lie within a distance of one point. The cosine of the angle decides; only within its rounding
/// of the limit the angle itself is formed, so that every point is decided as the angle would decide it.
class DistanceLimit {
public:
    DistanceLimit(const Latitude& from, double limit) noexcept
        : m_from(from),
          m_limit(limit),
          m_cosine(std::cos(limit / kEarthRadius)),
          m_isMonotonous(limit >= 0.0 && limit / kEarthRadius < 3.0),
          m_kernels(ColumnKernelsOf(CurrentInstructionSet())) {}

    /// Marks the rows from `first` of a column that are near; true when all of `count` are, and nothing is marked.
    bool Mark(const Latitudes& latitudes, std::size_t first, std::size_t count, const Longitude& difference,
              std::uint8_t* isNear) const {
        if (m_isMonotonous) {
            const GreatCircleTest test = {latitudes.sine.data() + first, latitudes.cosine.data() + first,
                                          m_from.cosine * difference.cosine, m_from.sine, m_cosine + kUndecided};
            if (m_kernels.countNear(test, count) == count) {
                return true;
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            isNear[i] = IsBeyond({latitudes.sine[first + i], latitudes.cosine[first + i]}, difference) ? 0 : 1;
        }
        return false;
    }

private:
    static constexpr double kUndecided = 1.0e-12;  ///< the dot product and the angle are good to some 1e-15

    [[nodiscard]] bool IsBeyond(const Latitude& to, const Longitude& difference) const noexcept {
        const double dot = to.cosine * m_from.cosine * difference.cosine + to.sine * m_from.sine;
        if (m_isMonotonous && std::abs(dot - m_cosine) > kUndecided) {
            return dot < m_cosine;
        }
        return Angle(m_from, to, difference) * kEarthRadius > m_limit;
    }

    Latitude m_from;
    double m_limit;  ///< m
    double m_cosine;
    bool m_isMonotonous;  ///< false beyond half the circle and for what is not a number: the cosine does not tell
    const ColumnKernels& m_kernels;
};

/// Plane co-ordinates of the points of a grid in one zone; filled where they were asked for.
struct Zone {
    enum class State : std::uint8_t { Unknown, Known, Nowhere };  ///< Nowhere: without a place in the plane

    std::vector<double> x, y;
    std::vector<State> state;
    std::vector<int> known;  ///< points of each column that have a place

    Zone(std::size_t size, std::size_t columns) : x(size), y(size), state(size), known(columns) {}
};

class ProjectedPlane : public GridPlane {
public:
    explicit ProjectedPlane(const DeformedGrid& grid) : m_grid(grid) {
        for (int ix = 0; ix < grid.nx; ++ix) {
            m_lon.push_back(grid.X(ix));
        }
        for (int iy = 0; iy < grid.ny; ++iy) {
            m_lat.push_back(grid.Y(iy));
            const Latitude latitude = LatitudeOf(m_lat.back());
            m_latitudes.sine.push_back(latitude.sine);
            m_latitudes.cosine.push_back(latitude.cosine);
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

    ColumnPlaces Column(int ix, const GridWindow& window) override {
        const std::size_t first = m_grid.Index(ix, window.firstRow);
        return {m_zone->x.data() + first, m_zone->y.data() + first,
                m_isAllNear[static_cast<std::size_t>(ix - window.firstColumn)] != 0
                    ? nullptr
                    : m_isNear.data() + NearIndex(ix, window)};
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
        m_isAllNear.assign(window.Columns(), 0);
        const DistanceLimit limit(LatitudeOf(element.org_y), reach);
        for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
            const double delta = DeformationRadians(m_lon[static_cast<std::size_t>(ix)] - element.org_x);
            const bool isAllNear =
                limit.Mark(m_latitudes, static_cast<std::size_t>(window.firstRow), window.Rows(),
                           {std::sin(delta), std::cos(delta)}, m_isNear.data() + NearIndex(ix, window));
            m_isAllNear[static_cast<std::size_t>(ix - window.firstColumn)] = isAllNear ? 1 : 0;
        }
    }

    Zone& ZoneOf(int number) {
        const auto columns = static_cast<std::size_t>(std::max(m_grid.nx, 0));
        m_zone = &m_zones.try_emplace(number, m_grid.Size(), columns).first->second;
        return *m_zone;
    }

    /// Projects the near points that this zone does not know yet, all in one call; those that have no place in it are
    /// near no longer.
    void ProjectNearPoints(Zone& zone, const GridWindow& window) {
        m_wanted.clear();
        m_wantedLon.clear();
        m_wantedLat.clear();
        ForEachOpenColumn(zone, window, [&](int ix, const std::uint8_t* isNear) {
            for (int iy = window.firstRow; iy < window.endRow; ++iy) {
                const std::size_t at = m_grid.Index(ix, iy);
                if (isNear[iy - window.firstRow] != 0 && zone.state[at] == Zone::State::Unknown) {
                    m_wanted.push_back(at);
                    m_wantedLon.push_back(m_lon[static_cast<std::size_t>(ix)]);
                    m_wantedLat.push_back(m_lat[static_cast<std::size_t>(iy)]);
                }
            }
        });
        m_wantedX.resize(m_wanted.size());
        m_wantedY.resize(m_wanted.size());
        const auto count = static_cast<int>(m_wanted.size());
        ll2xy_(&count, m_wantedLon.data(), m_wantedLat.data(), m_wantedX.data(), m_wantedY.data());
        for (std::size_t i = 0; i < m_wanted.size(); ++i) {
            const std::size_t at = m_wanted[i];
            zone.x[at] = m_wantedX[i];
            zone.y[at] = m_wantedY[i];
            const bool hasPlace = std::isfinite(m_wantedX[i]) && std::isfinite(m_wantedY[i]);
            zone.state[at] = hasPlace ? Zone::State::Known : Zone::State::Nowhere;
            zone.known[at / static_cast<std::size_t>(m_grid.ny)] += hasPlace ? 1 : 0;
        }
        ForEachOpenColumn(zone, window, [&](int ix, std::uint8_t* isNear) {
            bool isAllNear = true;
            for (int iy = window.firstRow; iy < window.endRow; ++iy) {
                if (zone.state[m_grid.Index(ix, iy)] != Zone::State::Known) {
                    isNear[iy - window.firstRow] = 0;
                }
                isAllNear = isAllNear && isNear[iy - window.firstRow] != 0;
            }
            m_isAllNear[static_cast<std::size_t>(ix - window.firstColumn)] = isAllNear ? 1 : 0;
        });
    }

    /// Calls visit(ix, isNear) for every column of the window that has points without a known place, with its marks
    /// written out.
    template <typename Visit>
    void ForEachOpenColumn(const Zone& zone, const GridWindow& window, Visit visit) {
        for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
            if (zone.known[static_cast<std::size_t>(ix)] == m_grid.ny) {
                continue;
            }
            std::uint8_t* const isNear = m_isNear.data() + NearIndex(ix, window);
            std::uint8_t& isAllNear = m_isAllNear[static_cast<std::size_t>(ix - window.firstColumn)];
            if (isAllNear != 0) {
                std::fill_n(isNear, window.Rows(), std::uint8_t{1});
                isAllNear = 0;
            }
            visit(ix, isNear);
        }
    }

    const DeformedGrid& m_grid;
    std::vector<double> m_lon, m_lat;
    Latitudes m_latitudes;
    std::map<int, Zone> m_zones;
    Zone* m_zone = nullptr;                 ///< of the current element
    std::vector<std::uint8_t> m_isNear;     ///< of the current element's window, column by column
    std::vector<std::uint8_t> m_isAllNear;  ///< of its columns: 1 where the marks in m_isNear do not count
    std::vector<std::size_t> m_wanted;
    std::vector<double> m_wantedLon, m_wantedLat, m_wantedX, m_wantedY;
};

}  // namespace

std::unique_ptr<GridPlane> MakeProjectedPlane(const DeformedGrid& grid) {
    return std::make_unique<ProjectedPlane>(grid);
}

}  // namespace tidora
