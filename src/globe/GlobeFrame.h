#pragma once

#include "globe/Ellipsoid.h"

namespace tidora {

/// The frame of an element on the globe: places as metres east and north of its reference point, azimuthal equidistant
/// on GRS80. With c the chord from the reference point, e and n its components along the local east and north,
/// h = hypot(e, n), and R the radius of curvature at the reference point in the azimuth of the place (Euler's formula),
///     s = 2 R arcsin(min(1, c / 2R)),    east = s e / h,    north = s n / h,    0 and 0 where h = 0.
///
/// Error against geodesics, anywhere on earth (kGlobeFrameError, with the test that holds it): the arc of the chord is
/// that of a circle of radius R, while the curvature changes along the way; direction is that of the normal section.
/// Longitudes count modulo 360; the poles and the date line are places like others.
struct GlobeFrame {
    Geocentric origin;
    double eastX, eastY;                       ///< the local east; its z is 0
    double northX, northY, northZ;             ///< the local north
    double meridianCurvature, primeCurvature;  ///< 1/M and 1/N, 1/m
};

[[nodiscard]] GlobeFrame MakeGlobeFrame(double lonDeg, double latDeg) noexcept;

/// Largest distance of a place of the frame from that of the geodesic's length and azimuth, m.
/// Test: "the globe frame keeps its stated distance from geodesics".
struct GlobeFrameError {
    double distance;  ///< from the reference point, m
    double error;     ///< m
};
inline constexpr GlobeFrameError kGlobeFrameErrors[] = {{200.0e3, 0.2}, {500.0e3, 2.0}, {1000.0e3, 14.0}};

}  // namespace tidora
