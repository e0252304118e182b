#include "projection/ZonePlane.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

#include "globe/Ellipsoid.h"
#include "projection/ProjSystems.h"
#include "projection/UtmZone.h"
#include "projection/ZonePlaneKernels.h"
#include "simd/Dispatch.h"

namespace tidora {
namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kN = kFlattening / (2.0 - kFlattening);  ///< third flattening

// UTM: the scale on the central meridian, and what keeps eastings positive.
constexpr double kScale = 0.9996;
constexpr double kFalseEasting = 500000.0;  ///< m

/// k0 A, m; Karney (2011), eq. (14).
constexpr double kScaledRadius =
    kScale * kEquatorRadius / (1.0 + kN) * (1.0 + kN * kN * (1.0 / 4.0 + kN * kN * (1.0 / 64.0 + kN * kN / 256.0)));

/// alpha_1 to alpha_6 by powers of the third flattening from that of its index on; Karney (2011), eq. (35).
constexpr std::array<double, kKrugerTerms> KrugerCoefficients() noexcept {
    constexpr double n = kN, n2 = n * n, n3 = n2 * n, n4 = n3 * n, n5 = n4 * n, n6 = n5 * n;
    return {n / 2.0 - n2 * 2.0 / 3.0 + n3 * 5.0 / 16.0 + n4 * 41.0 / 180.0 - n5 * 127.0 / 288.0 + n6 * 7891.0 / 37800.0,
            n2 * 13.0 / 48.0 - n3 * 3.0 / 5.0 + n4 * 557.0 / 1440.0 + n5 * 281.0 / 630.0 - n6 * 1983433.0 / 1935360.0,
            n3 * 61.0 / 240.0 - n4 * 103.0 / 140.0 + n5 * 15061.0 / 26880.0 + n6 * 167603.0 / 181440.0,
            n4 * 49561.0 / 161280.0 - n5 * 179.0 / 168.0 + n6 * 6601661.0 / 7257600.0,
            n5 * 34729.0 / 80640.0 - n6 * 3418889.0 / 1995840.0,
            n6 * 212378941.0 / 319334400.0};
}

/// sum alpha_j sin(j zeta) / sin(zeta) by powers of k = 2 cos(zeta). The quotients are Chebyshev's polynomials of the
/// second kind: 1, k, k^2 - 1, k^3 - 2 k, k^4 - 3 k^2 + 1, k^5 - 4 k^3 + 3 k.
constexpr std::array<double, kKrugerTerms> KrugerSeries() noexcept {
    constexpr std::array<double, kKrugerTerms> a = KrugerCoefficients();
    return {a[0] - a[2] + a[4], a[1] - 2.0 * a[3] + 3.0 * a[5], a[2] - 3.0 * a[4], a[3] - 4.0 * a[5], a[4], a[5]};
}
constexpr std::array<double, kKrugerTerms> kSeries = KrugerSeries();

struct ConformalLatitude {
    double sine, cosine;
    double angle;  ///< radians
};

/// Karney (2011), eqs. (7) to (9): tau = tan(phi), sigma = sinh(e artanh(e sin(phi))) and
/// tau' = tau sqrt(1 + sigma^2) - sigma sqrt(1 + tau^2) = tan(chi). At the poles tau is 1.6e16, the tangent of the
/// nearest number to a right angle, and nothing overflows.
ConformalLatitude ConformalOf(double latRad) noexcept {
    const double e = std::sqrt(kESquared);
    const double tau = std::tan(latRad);
    const double sigma = std::sinh(e * std::atanh(e * std::sin(latRad)));
    const double tangent = tau * std::hypot(1.0, sigma) - sigma * std::hypot(1.0, tau);
    const double secant = std::hypot(1.0, tangent);
    return {tangent / secant, 1.0 / secant, std::atan(tangent)};
}

/// False for what is not a number.
bool IsOnGlobe(double latDeg) noexcept {
    return std::abs(latDeg) <= 90.0;
}

bool IsPlace(double x, double y) noexcept {
    return std::isfinite(x) && std::isfinite(y);
}

/// PROJ takes an angle of up to half a turn as it is, a little more included so that the date line keeps its sign, and
/// others modulo a whole turn in this order of operations: repeated here for the last digits.
double WithinHalfTurn(double rad) noexcept {
    constexpr double kOvershoot = 1.0e-12;
    if (std::abs(rad) < kPi + kOvershoot) {
        return rad;
    }
    const double shifted = rad + kPi;
    return shifted - kTwoPi * std::floor(shifted / kTwoPi) - kPi;
}

/// Requires: an angle from the central meridian within half a turn.
ZoneColumnSource ColumnSourceOf(double deltaRad) noexcept {
    const double sineOfHalf = std::sin(deltaRad / 2.0);
    ZoneColumnSource source = {std::sin(deltaRad), std::cos(deltaRad), 2.0 * sineOfHalf * sineOfHalf,
                               kScaledRadius,      kFalseEasting,      {}};
    std::copy(kSeries.begin(), kSeries.end(), source.series);
    return source;
}

/// Has the points of a column whose latitude isWanted placed by PROJ, all in one call: the lock and the search for the
/// operation come once for all of them. True when each of them has a place.
template <typename IsWanted>
bool PlaceRows(const ZonePlane& plane, double lonDeg, const double* latDeg, std::size_t count, double* x, double* y,
               IsWanted isWanted) {
    std::vector<std::size_t> rows;
    std::vector<double> lat;
    for (std::size_t i = 0; i < count; ++i) {
        if (isWanted(latDeg[i])) {
            rows.push_back(i);
            lat.push_back(latDeg[i]);
        }
    }
    if (rows.empty()) {
        return true;  // and PROJ need not build a system
    }
    const std::vector<double> lon(rows.size(), lonDeg);
    std::vector<double> placedX(rows.size()), placedY(rows.size());
    const bool isEveryPlace = plane.Points(rows.size(), lon.data(), lat.data(), placedX.data(), placedY.data());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        x[rows[i]] = placedX[i];
        y[rows[i]] = placedY[i];
    }
    return isEveryPlace;
}

}  // namespace

ConformalRows::ConformalRows(std::vector<double> latDeg) : m_latDeg(std::move(latDeg)) {
    // Rows without a place, and the values that no row has, are a point of the equator, which every formula can
    // take.
    const std::size_t size = m_latDeg.size() + kZoneStepPoints;
    m_sine.assign(size, 0.0);
    m_cosine.assign(size, 1.0);
    m_northing.assign(size, 0.0);
    for (std::size_t i = 0; i < m_latDeg.size(); ++i) {
        if (!IsOnGlobe(m_latDeg[i])) {
            m_isEveryRowOnGlobe = false;
            continue;
        }
        const ConformalLatitude chi = ConformalOf(m_latDeg[i] * kRadian);
        m_sine[i] = chi.sine;
        m_cosine[i] = chi.cosine;
        m_northing[i] = kScaledRadius * chi.angle;
    }
}

// The central meridian in PROJ's order of operations: 6 N - 183 degrees, taken to radians, may differ in the last
// place, 2.8e-9 m.
ZonePlane::ZonePlane(int zone) noexcept : m_zone(zone), m_centralRad((zone - 0.5) * kPi / 30.0 - kPi) {}

bool ZonePlane::Column(double lonDeg, const ConformalRows& rows, std::size_t first, std::size_t count, double* x,
                       double* y) const {
    assert(first <= rows.Count() && count <= rows.Count() - first);
    const double* const latDeg = rows.m_latDeg.data() + first;
    const double delta = FromCentralMeridian(lonDeg);
    if (m_zone < 1 || m_zone > 60 || std::isnan(delta)) {
        return PlaceRows(*this, lonDeg, latDeg, count, x, y, [](double) { return true; });
    }
    // The kernel knows no gaps: what it writes to rows that are not the series' is overwritten.
    const ZoneRowTables tables = {rows.m_sine.data(), rows.m_cosine.data(), rows.m_northing.data()};
    DispatchedKernels<ZonePlaneKernelsOf>().column(ColumnSourceOf(delta), tables, first, first + count, x, y);
    const bool isFar = std::abs(delta) > kZonePlaneReach * kRadian;
    if (!isFar && rows.m_isEveryRowOnGlobe) {
        return true;
    }
    return PlaceRows(*this, lonDeg, latDeg, count, x, y, [isFar](double lat) {
        return !IsOnGlobe(lat) || (isFar && std::abs(lat) < kZonePlaneAnyLongitude);
    });
}

bool ZonePlane::Points(std::size_t count, const double* lonDeg, const double* latDeg, double* x, double* y) const {
    ProjectPoints(SystemOf(kGrs80Geographic), SystemOf(UtmDefinition(m_zone)), count, lonDeg, latDeg, x, y);
    bool isEveryPlace = true;
    for (std::size_t i = 0; i < count; ++i) {
        isEveryPlace = isEveryPlace && IsPlace(x[i], y[i]);
    }
    return isEveryPlace;
}

/// Radians; not a number for longitudes of more than a turn, which PROJ takes up to 10 radians and refuses beyond. The
/// degrees are rounded to radians before the difference, as in PROJ: a last place of pi is 2.8e-9 m.
double ZonePlane::FromCentralMeridian(double lonDeg) const noexcept {
    const double lon = LowerLongitude(lonDeg);
    if (!(std::abs(lon) <= 360.0)) {
        return std::nan("");
    }
    return WithinHalfTurn(WithinHalfTurn(lon * kRadian) - m_centralRad);
}

}  // namespace tidora
