// Map planes against published co-ordinates and against two computations of our own: the Gauss-Krueger projection by
// its definition, integrated in the complex plane, and the series of Krueger in the third flattening. Every check
// prints its largest error.

#include <array>
#include <cmath>
#include <complex>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "golden/LargestError.h"
#include "projection/ZonePlane.h"
#include "projection/mapproject.h"

using tidora::golden::LargestError;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDegree = kPi / 180.0;

struct Position {
    double east = 0.0;
    double north = 0.0;
};

struct Ellipsoid {
    double a = 6378137.0;
    double inverseFlattening = 298.257222101;  // GRS80

    [[nodiscard]] double ESquared() const { return (2.0 - 1.0 / inverseFlattening) / inverseFlattening; }
    [[nodiscard]] double ThirdFlattening() const { return 1.0 / (2.0 * inverseFlattening - 1.0); }
};
constexpr Ellipsoid kGrs80 = {};
constexpr Ellipsoid kWgs84 = {6378137.0, 298.257223563};

// ---- By definition -----------------------------------------------------------------------------------------------
// north + i east is the analytic continuation of the meridian distance M, as a function of the isometric latitude psi,
// to psi + i lambda; on the central meridian that is the true distance, and an analytic function is conformal.

using Complex = std::complex<double>;

// psi(phi) = atanh(sin phi) - e atanh(e sin phi)
Complex IsometricLatitude(Complex phi, double e) {
    return std::atanh(std::sin(phi)) - e * std::atanh(e * std::sin(phi));
}

// M(phi), the integral of a (1 - e2) / (1 - e2 sin^2 phi)^(3/2) from 0 along the straight line to phi. Gauss-Legendre
// with five points on each of 64 pieces.
Complex MeridianDistance(Complex phi, const Ellipsoid& ellipsoid) {
    constexpr std::array<double, 5> kNodes = {0.0, 0.5384693101056831, -0.5384693101056831, 0.9061798459386640,
                                              -0.9061798459386640};
    constexpr std::array<double, 5> kWeights = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665,
                                                0.2369268850561891, 0.2369268850561891};
    constexpr int kPieces = 64;
    const double e2 = ellipsoid.ESquared();
    Complex sum = 0.0;
    for (int piece = 0; piece < kPieces; ++piece) {
        for (std::size_t k = 0; k < kNodes.size(); ++k) {
            const Complex at = phi * ((piece + 0.5 + 0.5 * kNodes[k]) / kPieces);
            const Complex sine = std::sin(at);
            sum += kWeights[k] * std::pow(1.0 - e2 * sine * sine, -1.5);
        }
    }
    return ellipsoid.a * (1.0 - e2) * sum * phi / (2.0 * kPieces);
}

// Distance east and north on the plane without scale and offsets. lambda: longitude from the central meridian.
Position ByDefinition(double latDeg, double lambdaDeg, const Ellipsoid& ellipsoid) {
    const double e2 = ellipsoid.ESquared();
    const double e = std::sqrt(e2);
    const Complex target = IsometricLatitude(latDeg * kDegree, e) + Complex(0.0, lambdaDeg * kDegree);
    // Newton's method; d psi / d phi = (1 - e2) / ((1 - e2 sin^2 phi) cos phi). The sphere's solution is within e2 of
    // it.
    Complex phi = std::asin(std::tanh(target));
    for (int step = 0; step < 8; ++step) {
        const Complex sine = std::sin(phi);
        phi -= (IsometricLatitude(phi, e) - target) * (1.0 - e2 * sine * sine) * std::cos(phi) / (1.0 - e2);
    }
    const Complex distance = MeridianDistance(phi, ellipsoid);
    return {distance.imag(), distance.real()};
}

// ---- By series ---------------------------------------------------------------------------------------------------
// Karney (2011), Transverse Mercator with an accuracy of a few nanometers, J. Geodesy 85, 475-485: eqs. (7) to (11),
// (14) and the coefficients of eq. (35), to the sixth power of the third flattening n.
Position BySeries(double latDeg, double lambdaDeg, const Ellipsoid& ellipsoid) {
    const double n = ellipsoid.ThirdFlattening();
    const double n2 = n * n;
    const double n3 = n2 * n;
    const double n4 = n3 * n;
    const double n5 = n4 * n;
    const double n6 = n5 * n;
    const std::array<double, 6> alpha = {
        n / 2.0 - n2 * 2.0 / 3.0 + n3 * 5.0 / 16.0 + n4 * 41.0 / 180.0 - n5 * 127.0 / 288.0 + n6 * 7891.0 / 37800.0,
        n2 * 13.0 / 48.0 - n3 * 3.0 / 5.0 + n4 * 557.0 / 1440.0 + n5 * 281.0 / 630.0 - n6 * 1983433.0 / 1935360.0,
        n3 * 61.0 / 240.0 - n4 * 103.0 / 140.0 + n5 * 15061.0 / 26880.0 + n6 * 167603.0 / 181440.0,
        n4 * 49561.0 / 161280.0 - n5 * 179.0 / 168.0 + n6 * 6601661.0 / 7257600.0,
        n5 * 34729.0 / 80640.0 - n6 * 3418889.0 / 1995840.0,
        n6 * 212378941.0 / 319334400.0,
    };
    const double radius = ellipsoid.a / (1.0 + n) * (1.0 + n2 / 4.0 + n4 / 64.0 + n6 / 256.0);
    const double e = std::sqrt(ellipsoid.ESquared());
    const double psi = std::asinh(std::tan(latDeg * kDegree)) - e * std::atanh(e * std::sin(latDeg * kDegree));
    const double tauPrime = std::sinh(psi);
    const double cosine = std::cos(lambdaDeg * kDegree);
    const double xiPrime = std::atan2(tauPrime, cosine);
    const double etaPrime = std::asinh(std::sin(lambdaDeg * kDegree) / std::hypot(tauPrime, cosine));
    double xi = xiPrime;
    double eta = etaPrime;
    for (std::size_t j = 1; j <= alpha.size(); ++j) {
        const double twoJ = 2.0 * static_cast<double>(j);
        xi += alpha[j - 1] * std::sin(twoJ * xiPrime) * std::cosh(twoJ * etaPrime);
        eta += alpha[j - 1] * std::cos(twoJ * xiPrime) * std::sinh(twoJ * etaPrime);
    }
    return {radius * eta, radius * xi};
}

Position Utm(const Position& distance) {
    return {500000.0 + 0.9996 * distance.east, 0.9996 * distance.north};
}

// ---- The module under test ---------------------------------------------------------------------------------------

// One pair of systems until the end of the scope; keeps what choosing it prints off the test's output.
class Systems {
public:
    explicit Systems(double lonDeg) {
        mapproject_initialize_using_longi_(lonDeg);
        Restore();
    }
    Systems(int geoCode, int planeCode) {
        mapproject_initialize_using_epsg_(geoCode, planeCode);
        Restore();
    }
    ~Systems() { mapproject_finalize_(); }
    Systems(const Systems&) = delete;
    Systems& operator=(const Systems&) = delete;

    [[nodiscard]] std::string Printed() const { return m_printed.str(); }

private:
    void Restore() { std::cout.rdbuf(m_previous); }

    std::ostringstream m_printed;
    std::streambuf* m_previous = std::cout.rdbuf(m_printed.rdbuf());
};

Position ToPlane(double lonDeg, double latDeg) {
    const int one = 1;
    Position plane;
    ll2xy_(&one, &lonDeg, &latDeg, &plane.east, &plane.north);
    return plane;
}

Position ToDegrees(const Position& plane) {
    const int one = 1;
    Position degrees;
    xy2ll_(&one, &degrees.east, &degrees.north, &plane.east, &plane.north);
    return degrees;
}

double Distance(const Position& a, const Position& b) {
    return std::hypot(a.east - b.east, a.north - b.north);
}

std::string Named(double lonDeg, double latDeg) {
    return std::to_string(lonDeg) + " " + std::to_string(latDeg);
}

constexpr double Dms(double degrees, double minutes, double seconds) {
    return degrees + minutes / 60.0 + seconds / 3600.0;
}

struct PublishedPoint {
    std::string name;
    int zone;
    double latDeg;
    double lonDeg;
    Position published;
    double tolerance;  ///< m
};

const PublishedPoint kPublishedPoints[] = {
    // Intergovernmental Committee on Surveying and Mapping, Geocentric Datum of Australia Technical Manual, worked
    // examples on GRS80; the false northing of the Australian grid, 10 000 000 m, is taken off. Printed to a
    // millimetre and 1e-5 seconds: half a unit on each axis of both is 0.9 mm.
    {"Flinders Peak", 55, -Dms(37, 57, 3.72030), Dms(144, 25, 29.52440), {273741.297, 5796489.777 - 1e7}, 0.9e-3},
    // The same manual; its editions differ by up to 3 units in the last digit of this position, another 0.8 mm.
    {"Buninyong", 55, -Dms(37, 39, 10.15610), Dms(143, 55, 35.38390), {228854.052, 5828259.038 - 1e7}, 1.7e-3},
    {"Buninyong", 54, -Dms(37, 39, 10.15610), Dms(143, 55, 35.38390), {758173.797, 5828674.340 - 1e7}, 1.7e-3},
    // The CN Tower as encyclopaedias give it, to a metre; a longitude to a tenth of a second is good to 1.1 m.
    {"CN Tower", 17, Dms(43, 38, 33.24), -Dms(79, 23, 13.7), {630084.0, 4833438.0}, 1.5},
    // Centre of the kilometre square 38SMB4488, an example of the GeographicLib documentation (GeoConvert), printed
    // to the fifth decimal of a degree: 0.6 m north and 0.5 m east.
    {"38SMB4488", 38, 33.33424, 44.40363, {444500.0, 3688500.0}, 0.8},
};

// Plane rectangular zone IX, the example that the Geospatial Information Authority of Japan sets for its conversion of
// latitude and longitude (GRS80). Printed to a tenth of a millimetre and 1e-5 seconds: half a unit of both is 0.3 mm.
const PublishedPoint kPublishedInZoneNine = {
    "Tsukuba", 0, Dms(36, 6, 13.58925), Dms(140, 5, 16.27815), {22916.2436, 11543.6883}, 0.3e-3};

}  // namespace

TEST_CASE("published points come out where their publishers have them") {
    for (const PublishedPoint& point : kPublishedPoints) {
        const Systems systems(6.0 * point.zone - 183.0);
        CHECK(systems.Printed() == "Deformation Calc. UTM Zone:" + std::to_string(point.zone) + "\n");
        LargestError error;
        error.Add(Distance(ToPlane(point.lonDeg, point.latDeg), point.published), point.name);
        error.Report("published point in UTM, m", point.tolerance);
    }
    const Systems systems(4612, 2451);
    const PublishedPoint& point = kPublishedInZoneNine;
    LargestError error;
    error.Add(Distance(ToPlane(point.lonDeg, point.latDeg), point.published), point.name);
    error.Report("published point in plane rectangular zone IX, m", point.tolerance);
}

TEST_CASE("the projection by its definition and by series agree with each other") {
    LargestError error;
    for (double lat = -84.0; lat <= 84.0; lat += 3.5) {
        for (double lambda = -6.0; lambda <= 6.0; lambda += 0.75) {
            error.Add(Distance(ByDefinition(lat, lambda, kGrs80), BySeries(lat, lambda, kGrs80)), Named(lambda, lat));
        }
    }
    // Rounding of double precision at 1e7 m, a few nanometres; the series' own error is as small.
    error.Report("definition against series, m", 2e-8);
}

TEST_CASE("UTM co-ordinates agree with the projection's definition and series") {
    LargestError definition;
    LargestError series;
    for (const int zone : {1, 2, 17, 31, 53, 54, 60}) {
        const double central = 6.0 * zone - 183.0;
        const Systems systems(central);
        for (double lat = -80.0; lat <= 84.0; lat += 4.1) {
            for (double lambda = -4.5; lambda <= 4.5; lambda += 0.9) {
                const double lon = central + lambda;
                const Position plane = ToPlane(lon, lat);
                definition.Add(Distance(plane, Utm(ByDefinition(lat, lambda, kGrs80))), Named(lon, lat));
                series.Add(Distance(plane, Utm(BySeries(lat, lambda, kGrs80))), Named(lon, lat));
            }
        }
    }
    definition.Report("UTM against the definition, m", 1e-6);
    series.Report("UTM against the series, m", 1e-6);
}

TEST_CASE("a fault's far grid points agree with the projection's definition tens of degrees from the zone") {
    // A grid may reach far beyond the zone of its fault element; there the projection is still the same function.
    const Systems systems(143.0);
    LargestError error;
    for (double lat = -60.0; lat <= 60.0; lat += 7.5) {
        for (double lambda = -30.0; lambda <= 30.0; lambda += 5.0) {
            const double lon = 141.0 + lambda;
            error.Add(Distance(ToPlane(lon, lat), Utm(ByDefinition(lat, lambda, kGrs80))), Named(lon, lat));
        }
    }
    error.Report("UTM up to 30 degrees from the central meridian against the definition, m", 1e-6);
}

TEST_CASE("the plane of whole grids agrees with the projection's definition tens of degrees from the zone") {
    std::vector<double> lat;
    for (double row = -82.5; row <= 82.5; row += 5.5) {
        lat.push_back(row);
    }
    const tidora::ZonePlane plane(54);
    const tidora::ConformalRows rows(lat);
    std::vector<double> x(lat.size()), y(lat.size());
    LargestError error;
    for (double lambda = -30.0; lambda <= 30.0; lambda += 2.5) {
        CHECK(plane.Column(141.0 + lambda, rows, 0, lat.size(), x.data(), y.data()));
        for (std::size_t row = 0; row < lat.size(); ++row) {
            error.Add(Distance({x[row], y[row]}, Utm(ByDefinition(lat[row], lambda, kGrs80))),
                      Named(141.0 + lambda, lat[row]));
        }
    }
    // Rounding on both sides, as of the definition against the series.
    error.Report("plane of whole grids up to 30 degrees from the central meridian against the definition, m", 2e-8);
}

struct RectangularZone {
    int code;
    double latitude;
    double centralLon;
};
const RectangularZone kRectangularZones[] = {
    {2443, 33, Dms(129, 30, 0)}, {2444, 33, Dms(131, 0, 0)},  {2445, 36, Dms(132, 10, 0)}, {2446, 33, Dms(133, 30, 0)},
    {2447, 36, Dms(134, 20, 0)}, {2448, 36, Dms(136, 0, 0)},  {2449, 36, Dms(137, 10, 0)}, {2450, 36, Dms(138, 30, 0)},
    {2451, 36, Dms(139, 50, 0)}, {2452, 40, Dms(140, 50, 0)}, {2453, 44, Dms(140, 15, 0)}, {2454, 44, Dms(142, 15, 0)},
    {2455, 44, Dms(144, 15, 0)}, {2456, 26, Dms(142, 0, 0)},  {2457, 26, Dms(127, 30, 0)}, {2458, 26, Dms(124, 0, 0)},
    {2459, 26, Dms(131, 0, 0)},  {2460, 20, Dms(136, 0, 0)},  {2461, 26, Dms(154, 0, 0)},
};

TEST_CASE("the plane rectangular zones agree with the projection's definition") {
    LargestError error;
    for (const RectangularZone& zone : kRectangularZones) {
        const Systems systems(4612, zone.code);
        const double originNorth = ByDefinition(zone.latitude, 0.0, kGrs80).north;
        for (double dLat = -2.0; dLat <= 2.0; dLat += 0.8) {
            for (double lambda = -2.0; lambda <= 2.0; lambda += 0.8) {
                const Position distance = ByDefinition(zone.latitude + dLat, lambda, kGrs80);
                const Position expected = {0.9999 * distance.east, 0.9999 * (distance.north - originNorth)};
                error.Add(Distance(ToPlane(zone.centralLon + lambda, zone.latitude + dLat), expected),
                          std::to_string(zone.code));
            }
        }
    }
    error.Report("plane rectangular zones I to XIX against the definition, m", 1e-6);
}

TEST_CASE("the WGS84 plane of zone 53 agrees with the projection's definition on WGS84") {
    const Systems systems(4326, 32653);
    LargestError error;
    LargestError otherEllipsoid;
    for (double lat = -60.0; lat <= 60.0; lat += 7.5) {
        for (double lambda = -3.0; lambda <= 3.0; lambda += 0.75) {
            const Position plane = ToPlane(135.0 + lambda, lat);
            error.Add(Distance(plane, Utm(ByDefinition(lat, lambda, kWgs84))), Named(lambda, lat));
            otherEllipsoid.Add(Distance(plane, Utm(ByDefinition(lat, lambda, kGrs80))), Named(lambda, lat));
        }
    }
    error.Report("UTM zone 53 on WGS84 against the definition, m", 1e-6);
    // The two ellipsoids differ by a tenth of a millimetre at most: the check above can tell them apart.
    CHECK(otherEllipsoid.Value() > 1e-5);
    CHECK(otherEllipsoid.Value() < 2e-4);
}

TEST_CASE("round trips return to where they started") {
    LargestError error;
    for (const double zoneLon : {141.0, 135.0, -171.0, -177.0, 177.0}) {
        const Systems systems(zoneLon);
        for (double lat = -80.0; lat <= 84.0; lat += 4.1) {
            for (double lambda = -2.95; lambda <= 2.95; lambda += 0.59) {
                const double lon = zoneLon + lambda;
                const Position back = ToDegrees(ToPlane(lon, lat));
                // Degrees to metres along the meridian; along the parallel that is an upper bound.
                error.Add(Distance(back, {lon, lat}) * 111200.0, Named(lon, lat));
            }
        }
    }
    error.Report("round trips, m", 1e-6);
}

TEST_CASE("longitudes of 180 and more lie where their negative counterparts lie and come back as those") {
    LargestError plane;
    LargestError back;
    const Systems systems(190.0);  // zone 2, central meridian 171 W
    CHECK(systems.Printed() == "Deformation Calc. UTM Zone:2\n");
    for (const double lon : {180.0, 183.25, 188.9, 189.0, 190.0, 193.0}) {
        for (const double lat : {-45.0, 0.0, 51.5}) {
            const Position position = ToPlane(lon, lat);
            plane.Add(Distance(position, Utm(ByDefinition(lat, lon - 189.0, kGrs80))), Named(lon, lat));
            const double returned = ToDegrees(position).east;
            // -180 and 180 are the same meridian.
            const double difference = std::abs(returned - (lon - 360.0));
            back.Add((lon == 180.0 && difference > 359.0 ? difference - 360.0 : difference) * 111200.0,
                     Named(lon, lat));
        }
    }
    plane.Report("longitudes of 180 and more against the definition, m", 1e-6);
    back.Report("longitudes of 180 and more, back again, m", 1e-6);

    const Systems greenwich(360.0);
    CHECK(greenwich.Printed() == "Deformation Calc. UTM Zone:31\n");
    CHECK(Distance(ToPlane(360.0, 50.0), Utm(ByDefinition(50.0, -3.0, kGrs80))) < 1e-6);
}

TEST_CASE("the meridian of 180 exactly asks for zone 61 which has no plane") {
    const Systems systems(180.0);
    CHECK(systems.Printed() == "Deformation Calc. UTM Zone:61\n");
    const Position plane = ToPlane(180.0, 10.0);
    CHECK(plane.east == HUGE_VAL);
    CHECK(plane.north == HUGE_VAL);
}
