// The co-ordinate systems by code and by longitude.

#include <cmath>
#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "projection/mapproject.h"
#include "unit/MapSystems.h"

namespace {

// Length of the meridian of an ellipsoid between two latitudes, m: Simpson's rule on a (1 - e2) / (1 - e2 sin^2)^(3/2),
// which over a degree or some is exact far below a micrometre.
double MeridianArc(double inverseFlattening, double fromDeg, double toDeg) {
    const double a = 6378137.0;
    const double f = 1.0 / inverseFlattening;
    const double e2 = f * (2.0 - f);
    const double toRad = 3.141592653589793 / 180.0;
    const int steps = 2000;
    const double h = (toDeg - fromDeg) * toRad / steps;
    double sum = 0.0;
    for (int k = 0; k <= steps; ++k) {
        const double sine = std::sin(fromDeg * toRad + h * k);
        const double weight = k == 0 || k == steps ? 1.0 : (k % 2 == 1 ? 4.0 : 2.0);
        sum += weight * a * (1.0 - e2) / std::pow(1.0 - e2 * sine * sine, 1.5);
    }
    return sum * h / 3.0;
}

constexpr double kGrs80 = 298.257222101;
constexpr double kWgs84 = 298.257223563;
constexpr double kMicrometre = 1e-6;

struct PlaneSystem {
    int code;
    double centralDeg;
    double centralMin;
    double latitude;
    double scale;
    double falseEasting;
    double inverseFlattening;
};

// Origins of the Japanese plane rectangular zones I to XIX in degrees and minutes; central meridians of UTM zones.
const PlaneSystem kPlaneSystems[] = {
    {2443, 129, 30, 33, 0.9999, 0, kGrs80},     {2444, 131, 0, 33, 0.9999, 0, kGrs80},
    {2445, 132, 10, 36, 0.9999, 0, kGrs80},     {2446, 133, 30, 33, 0.9999, 0, kGrs80},
    {2447, 134, 20, 36, 0.9999, 0, kGrs80},     {2448, 136, 0, 36, 0.9999, 0, kGrs80},
    {2449, 137, 10, 36, 0.9999, 0, kGrs80},     {2450, 138, 30, 36, 0.9999, 0, kGrs80},
    {2451, 139, 50, 36, 0.9999, 0, kGrs80},     {2452, 140, 50, 40, 0.9999, 0, kGrs80},
    {2453, 140, 15, 44, 0.9999, 0, kGrs80},     {2454, 142, 15, 44, 0.9999, 0, kGrs80},
    {2455, 144, 15, 44, 0.9999, 0, kGrs80},     {2456, 142, 0, 26, 0.9999, 0, kGrs80},
    {2457, 127, 30, 26, 0.9999, 0, kGrs80},     {2458, 124, 0, 26, 0.9999, 0, kGrs80},
    {2459, 131, 0, 26, 0.9999, 0, kGrs80},      {2460, 136, 0, 20, 0.9999, 0, kGrs80},
    {2461, 154, 0, 26, 0.9999, 0, kGrs80},      {3097, 123, 0, 0, 0.9996, 500000, kGrs80},
    {3098, 129, 0, 0, 0.9996, 500000, kGrs80},  {3099, 135, 0, 0, 0.9996, 500000, kGrs80},
    {3100, 141, 0, 0, 0.9996, 500000, kGrs80},  {3101, 147, 0, 0, 0.9996, 500000, kGrs80},
    {32653, 135, 0, 0, 0.9996, 500000, kWgs84},
};

struct ZoneOfLongitude {
    double lonDeg;
    int zone;
};
const ZoneOfLongitude kZones[] = {
    {140.0, 54}, {135.0, 53}, {143.9, 54},   {144.0, 55}, {-179.0, 1},   {-180.0, 1},  {-174.0, 2},
    {0.0, 31},   {-0.1, 30},  {5.999, 31},   {6.0, 32},   {179.999, 60}, {180.0, 61},  {180.0001, 1},
    {190.0, 2},  {185.9, 1},  {359.999, 30}, {360.0, 31}, {540.0, 61},   {-200.0, -2}, {-183.0, 0},
};

}  // namespace

TEST_CASE("a plane system has its origin and scale and false easting") {
    for (const PlaneSystem& plane : kPlaneSystems) {
        CAPTURE(plane.code);
        const MapSystems systems(plane.code == 32653 ? 4326 : 4612, plane.code);
        CHECK(systems.printed.empty());
        const double central = plane.centralDeg + plane.centralMin / 60.0;
        const MapPoint origin = ToPlane(central, plane.latitude);
        CHECK(std::abs(origin.x - plane.falseEasting) < kMicrometre);
        CHECK(std::abs(origin.y) < kMicrometre);
        // One and a half degrees north on the central meridian: the scale times the arc. Zones of the same origin but
        // another scale, or another ellipsoid, differ there by millimetres and more.
        const MapPoint north = ToPlane(central, plane.latitude + 1.5);
        const double arc = MeridianArc(plane.inverseFlattening, plane.latitude, plane.latitude + 1.5);
        CHECK(std::abs(north.x - plane.falseEasting) < kMicrometre);
        CHECK(std::abs(north.y - plane.scale * arc) < kMicrometre);
        // East of the central meridian eastings grow.
        CHECK(ToPlane(central + 1.0, plane.latitude).x > plane.falseEasting + 80000.0);
    }
}

TEST_CASE("a geographic code and a plane code outside the tables are announced and replaced in this order") {
    const MapSystems systems(1, 2);
    CHECK(systems.printed == "default EPSG:4612\ndefault EPSG:3100\n");
    const MapPoint origin = ToPlane(141.0, 0.0);
    CHECK(std::abs(origin.x - 500000.0) < kMicrometre);
    CHECK(std::abs(origin.y) < kMicrometre);
}

TEST_CASE("only the code outside its table is announced") {
    for (const int geoCode : {0, 4301, 4325, 4613, -4612}) {
        CAPTURE(geoCode);
        CHECK(MapSystems(geoCode, 3099).printed == "default EPSG:4612\n");
    }
    for (const int planeCode : {0, 2442, 2462, 3096, 3102, 32652, 32654}) {
        CAPTURE(planeCode);
        const MapSystems systems(4612, planeCode);
        CHECK(systems.printed == "default EPSG:3100\n");
        CHECK(std::abs(ToPlane(141.0, 0.0).x - 500000.0) < kMicrometre);
    }
    CHECK(MapSystems(4326, 3100).printed.empty());
    CHECK(MapSystems(4612, 32653).printed.empty());
}

TEST_CASE("the UTM zone of a longitude is printed and neither clamped nor rounded") {
    for (const ZoneOfLongitude& row : kZones) {
        CAPTURE(row.lonDeg);
        const MapSystems systems(row.lonDeg);
        CHECK(systems.printed == "Deformation Calc. UTM Zone:" + std::to_string(row.zone) + "\n");
    }
}

TEST_CASE("a longitude chooses the plane of its UTM zone") {
    for (const ZoneOfLongitude& row : kZones) {
        if (row.zone < 1 || row.zone > 60) {
            continue;
        }
        CAPTURE(row.lonDeg);
        const MapSystems systems(row.lonDeg);
        const MapPoint origin = ToPlane(6.0 * row.zone - 183.0, 0.0);
        CHECK(std::abs(origin.x - 500000.0) < kMicrometre);
        CHECK(std::abs(origin.y) < kMicrometre);
    }
}

TEST_CASE("the plane of a longitude in the zone of a code is the plane of that code") {
    MapPoint byLongitude;
    {
        const MapSystems systems(140.0);
        byLongitude = ToPlane(142.5, 38.25);
    }
    const MapSystems systems(4612, 3100);
    const MapPoint byCode = ToPlane(142.5, 38.25);
    CHECK(byCode.x == byLongitude.x);
    CHECK(byCode.y == byLongitude.y);
}

TEST_CASE("a zone that does not exist leaves every co-ordinate unconverted") {
    for (const double lonDeg : {180.0, 540.0, -183.0, -200.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        CAPTURE(lonDeg);
        const MapSystems systems(lonDeg);
        CHECK(IsUnconverted(ToPlane(140.0, 35.0)));
        CHECK(IsUnconverted(ToDegrees(500000.0, 4000000.0)));
    }
    // The next pair of systems is not affected.
    const MapSystems systems(140.0);
    CHECK(std::abs(ToPlane(141.0, 0.0).x - 500000.0) < kMicrometre);
}

TEST_CASE("after the finalisation every point is unconverted, and the systems can be chosen again") {
    MapPoint before;
    {
        const MapSystems systems(140.0);
        before = ToPlane(142.5, 38.25);
    }
    CHECK(IsUnconverted(ToPlane(142.5, 38.25)));
    CHECK(IsUnconverted(ToDegrees(500000.0, 4000000.0)));
    mapproject_finalize_();
    CHECK(IsUnconverted(ToPlane(142.5, 38.25)));
    const MapSystems systems(140.0);
    const MapPoint again = ToPlane(142.5, 38.25);
    CHECK(again.x == before.x);
    CHECK(again.y == before.y);
}

TEST_CASE("one plane with another geographic system is another conversion, and each keeps its own") {
    const auto planeOf = [](int geoCode) {
        const MapSystems systems(geoCode, 32653);
        return ToPlane(136.0, 35.0);
    };
    const MapPoint byWgs84 = planeOf(4326), byGrs80 = planeOf(4612);
    CHECK(byWgs84.x == planeOf(4326).x);
    CHECK(byWgs84.y == planeOf(4326).y);
    CHECK(byGrs80.y == planeOf(4612).y);
    // The ellipsoids differ by a tenth of a millimetre at the poles: too little for another place, and not none.
    CHECK(std::abs(byWgs84.x - byGrs80.x) < 1e-3);
    CHECK(std::abs(byWgs84.y - byGrs80.y) < 1e-3);
}
