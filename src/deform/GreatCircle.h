#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "deform/ColumnPasses.h"

namespace tidora {

inline constexpr double kEarthRadius = 6371000.0;  ///< m, sphere

/// Sine and cosine of a latitude.
struct Latitude {
    double sine, cosine;
};

/// Taken as cosine and sine of the colatitude, with the rounded pi of the deformation: so the angle is defined.
[[nodiscard]] Latitude LatitudeOf(double degrees) noexcept;

/// The latitudes of a grid's rows.
struct Latitudes {
    std::vector<double> sine, cosine;
};

/// Decides which points lie within a distance of one point along a great circle. The cosine of the angle decides; only
/// within its rounding of the limit the angle itself is formed, so that every point is decided as the angle would.
class GreatCircleReach {
public:
    /// lon, lat: degrees; reach: m.
    GreatCircleReach(double lon, double lat, double reach) noexcept;

    /// Marks the rows from `first` of the column at longitude `lon`: 0 where they lie beyond the reach. True when none
    /// of the `count` rows does.
    bool Mark(double lon, const Latitudes& latitudes, std::size_t first, std::size_t count,
              std::uint8_t* isNear) const noexcept;

private:
    [[nodiscard]] bool IsBeyond(const Latitude& to, double sinLon, double cosLon) const noexcept;

    double m_lon;  ///< degrees
    Latitude m_from;
    double m_reach;       ///< m
    double m_cosine;      ///< of the reach as an angle
    bool m_isMonotonous;  ///< false beyond half the circle and for what is not a number: the cosine does not tell
    const ColumnPasses& m_passes;
};

}  // namespace tidora
