#pragma once

#include <cmath>

namespace tidora {

/// UTM zone of a longitude in degrees. Truncated, not clamped to 1..60: 180 gives 61.
[[nodiscard]] inline int UtmZone(double lonDeg) noexcept {
    const double shifted = lonDeg > 180.0 ? lonDeg - 180.0 : lonDeg + 180.0;
    const double zone = shifted / 6.0 + 1.0;
    return std::abs(zone) < 1.0e9 ? static_cast<int>(zone) : 0;
}

/// The longitude in degrees that is projected: from 180 on, 360 lower.
[[nodiscard]] inline double LowerLongitude(double lonDeg) noexcept {
    return lonDeg >= 180.0 ? lonDeg - 360.0 : lonDeg;
}

}  // namespace tidora
