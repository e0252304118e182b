#pragma once

#include <cstddef>
#include <vector>

namespace tidora {

/// The rows of a grid on the conformal sphere: what the planes of all zones have in common at a latitude. Made once for
/// a grid. A value; reading it is safe from several threads.
///
/// The conformal latitude chi by its closed form, Karney (2011), J. Geodesy 85, 475-485, eqs. (7) to (9), on GRS80.
class ConformalRows {
public:
    /// latDeg: the latitude of each row, degrees; any values.
    explicit ConformalRows(std::vector<double> latDeg);

    [[nodiscard]] std::size_t Count() const noexcept { return m_latDeg.size(); }

private:
    friend class ZonePlane;

    std::vector<double> m_latDeg;
    std::vector<double> m_sine, m_cosine;  ///< of chi, with padding
    std::vector<double> m_northing;        ///< on the central meridian of the sphere, m, with padding
    bool m_isEveryRowOnGlobe = true;
};

/// The plane of a UTM zone on GRS80, "+proj=utm +zone=N +ellps=GRS80 +units=m", for whole grids: the same plane, and
/// the same points without a place in it, as mapproject_initialize_using_longi_ and ll2xy_ have, but nothing is printed
/// and the state of that module is neither read nor changed. Southern northings are negative.
///
/// A grid column has one longitude and its rows one latitude each, so that a point costs one logarithm and one
/// arctangent and no sine: Krueger's series to the sixth order (ZonePlaneKernel.h), many points per step. Points that
/// the series does not serve are PROJ's, all of a column in one call:
///   - farther than kZonePlaneReach from the central meridian, at latitudes below kZonePlaneAnyLongitude;
///   - latitudes above 90 degrees, longitudes of more than a turn, what is not a number, and zones that do not exist.
///
/// Where the series serves, values differ from PROJ's by at most kZonePlaneMaxError. They are not the same bits on all
/// instruction sets, but on one of them a point of a grid always has the same. Safe to use from several threads.
class ZonePlane {
public:
    /// Any number: a zone that does not exist has no place for any point.
    explicit ZonePlane(int zone) noexcept;

    /// Plane co-ordinates of `count` rows of a column, from row `first` on: x east and y north, m, of row `first` at
    /// x[0] and y[0]; any alignment, no overlap. Points without a place become what ll2xy_ makes of them: HUGE_VAL, or
    /// what is not a number where they were given as that. True when every point has a place.
    /// Requires: first + count <= rows.Count().
    bool Column(double lonDeg, const ConformalRows& rows, std::size_t first, std::size_t count, double* x,
                double* y) const;

    /// Points one by one, by PROJ: for reference points, of which there are few. True when every point has a place.
    bool Points(std::size_t count, const double* lonDeg, const double* latDeg, double* x, double* y) const;

private:
    [[nodiscard]] double FromCentralMeridian(double lonDeg) const noexcept;

    int m_zone;
    double m_centralRad;
};

/// Largest difference from PROJ in either co-ordinate, m, where the series serves: the rounding errors of both, which
/// are alike. The last place of 10 000 km is 1.9e-9.
/// Test: "the plane of a zone is PROJ's within its stated error wherever the series serves".
inline constexpr double kZonePlaneMaxError = 1.0e-8;

/// The series serves all latitudes within this longitude from the central meridian, degrees. Farther out, near the
/// equator, the plane stretches without bound and with it the rounding of both: 8e-9 m at 80 degrees, and from 82 on
/// PROJ has no place for the equator.
inline constexpr double kZonePlaneReach = 70.0;

/// From this latitude towards the poles, degrees, it serves all longitudes. Nearer to the equator the plane behind the
/// pole is farther away, beyond 14 000 km: 9e-9 m at 53 degrees.
inline constexpr double kZonePlaneAnyLongitude = 60.0;

}  // namespace tidora
