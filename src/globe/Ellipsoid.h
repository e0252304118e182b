#pragma once

namespace tidora {

// GRS80, [Moritz2000] in docs/references.md.
inline constexpr double kEquatorRadius = 6378137.0;  ///< m
inline constexpr double kFlattening = 1.0 / 298.257222101;
inline constexpr double kESquared = kFlattening * (2.0 - kFlattening);  ///< square of the first eccentricity

inline constexpr double kRadian = 0.017453292519943295;  ///< of a degree

/// What all places of a latitude have in common.
struct Parallel {
    double sine, cosine;    ///< of the latitude
    double axisDistance;    ///< from the axis of the earth, m: N cos(phi)
    double height;          ///< above the plane of the equator, m: N (1 - e^2) sin(phi)
    double meridianRadius;  ///< of curvature northward, m: M
    double primeRadius;     ///< of curvature eastward, m: N
};

/// What all places of a longitude have in common.
struct Meridian {
    double sine, cosine;  ///< of the longitude
};

/// A place by Earth-centred co-ordinates, m: x towards longitude 0, y towards 90 degrees east, z towards the north
/// pole.
struct Geocentric {
    double x, y, z;
};

/// Any latitude from -90 to 90 degrees.
[[nodiscard]] Parallel ParallelOf(double latDeg) noexcept;

/// Longitudes count modulo 360, exactly: 190 and -170 give the same bits.
[[nodiscard]] Meridian MeridianOf(double lonDeg) noexcept;

/// Products of a row's and a column's term: so that a node has the same bits alone and in a grid.
[[nodiscard]] constexpr Geocentric PlaceOn(const Parallel& parallel, const Meridian& meridian) noexcept {
    return {parallel.axisDistance * meridian.cosine, parallel.axisDistance * meridian.sine, parallel.height};
}

/// Size of a degree at a latitude.
struct DegreeSize {
    double east, north;  ///< m; eastward 0 at the poles but for the rounding of a right angle, 1e-11 m
};
[[nodiscard]] DegreeSize DegreeSizeAt(double latDeg) noexcept;

/// Difference of two longitudes modulo 360, within [-180, 180] degrees.
[[nodiscard]] double LongitudeDifference(double toDeg, double fromDeg) noexcept;

}  // namespace tidora
