// Points through the current pair of co-ordinate systems.

#include <cmath>
#include <limits>
#include <vector>

#include <doctest/doctest.h>

#include "projection/mapproject.h"
#include "unit/MapSystems.h"
#include "unit/PrintedText.h"

namespace {

constexpr double kMicrometre = 1e-6;

}  // namespace

TEST_CASE("longitudes of 180 and more are converted 360 lower") {
    const MapSystems systems(-179.0);
    const auto sameAs = [](double lon, double lower) {
        const MapPoint a = ToPlane(lon, -20.5);
        const MapPoint b = ToPlane(lower, -20.5);
        return a.x == b.x && a.y == b.y;
    };
    CHECK(sameAs(180.0, -180.0));
    CHECK(sameAs(181.5, -178.5));
    CHECK(sameAs(190.0, -170.0));
    const MapSystems greenwich(0.0);
    CHECK(sameAs(360.0, 0.0));
    CHECK(sameAs(362.25, 2.25));
    CHECK(std::abs(ToPlane(363.0, 0.0).x - 500000.0) < kMicrometre);
}

TEST_CASE("a longitude just below 180 is converted unchanged") {
    const MapSystems systems(179.0);
    // 2.999 degrees east of the central meridian of zone 60, and as far west of it as its mirror image.
    const MapPoint east = ToPlane(179.999, -20.5);
    const MapPoint west = ToPlane(177.0 - 2.999, -20.5);
    CHECK(east.x > 800000.0);
    CHECK(std::abs((east.x - 500000.0) + (west.x - 500000.0)) < kMicrometre);
    CHECK(std::abs(east.y - west.y) < kMicrometre);
    // A thousandth of a degree on, over the date line: a tenth of a kilometre.
    CHECK(std::abs(ToPlane(180.0, -20.5).x - east.x) == doctest::Approx(104.3).epsilon(0.01));
}

TEST_CASE("latitudes south of the equator have negative northings") {
    const MapSystems systems(140.0);
    const MapPoint north = ToPlane(139.0, 30.0);
    const MapPoint south = ToPlane(139.0, -30.0);
    CHECK(south.x == doctest::Approx(north.x).epsilon(1e-14));
    CHECK(south.y == doctest::Approx(-north.y).epsilon(1e-14));
}

TEST_CASE("converting points leaves the points alone") {
    const MapSystems systems(140.0);
    const std::vector<double> lon = {140.0, 143.5, 500.0};
    const std::vector<double> lat = {35.0, -12.0, 10.0};
    const std::vector<double> lonBefore = lon;
    const std::vector<double> latBefore = lat;
    const int n = 3;
    std::vector<double> x(3);
    std::vector<double> y(3);
    ll2xy_(&n, lon.data(), lat.data(), x.data(), y.data());
    CHECK(lon == lonBefore);
    CHECK(lat == latBefore);
    CHECK(n == 3);
    const std::vector<double> xBefore = x;
    const std::vector<double> yBefore = y;
    std::vector<double> back(3);
    std::vector<double> up(3);
    xy2ll_(&n, back.data(), up.data(), x.data(), y.data());
    CHECK(x == xBefore);
    CHECK(y == yBefore);
}

TEST_CASE("many points at once are converted as one by one") {
    const MapSystems systems(140.0);
    std::vector<double> lon;
    std::vector<double> lat;
    for (int k = 0; k < 500; ++k) {
        lon.push_back(137.0 + 0.013 * k);
        lat.push_back(-60.0 + 0.27 * k);
    }
    const int n = 500;
    std::vector<double> x(500);
    std::vector<double> y(500);
    ll2xy_(&n, lon.data(), lat.data(), x.data(), y.data());
    for (std::size_t k = 0; k < 500; ++k) {
        const MapPoint single = ToPlane(lon[k], lat[k]);
        CHECK(x[k] == single.x);
        CHECK(y[k] == single.y);
    }
}

TEST_CASE("no points at all are converted to none") {
    const MapSystems systems(140.0);
    for (const int n : {0, -1}) {
        double x = 5.0;
        double y = 6.0;
        const double lon = 140.0;
        const double lat = 35.0;
        ll2xy_(&n, &lon, &lat, &x, &y);
        CHECK(x == 5.0);
        CHECK(y == 6.0);
        xy2ll_(&n, &x, &y, &lon, &lat);
        CHECK(x == 5.0);
        CHECK(y == 6.0);
    }
}

TEST_CASE("a round trip returns the starting co-ordinates and longitudes of 180 and more 360 lower") {
    for (const double zoneLon : {140.0, -179.0, 179.0, 3.0}) {
        const MapSystems systems(zoneLon);
        for (double lat = -80.0; lat <= 80.0; lat += 8.0) {
            for (double offset = -3.0; offset <= 3.0; offset += 0.75) {
                double lon = zoneLon + offset;
                const MapPoint plane = ToPlane(lon, lat);
                const MapPoint back = ToDegrees(plane.x, plane.y);
                lon = lon >= 180.0 ? lon - 360.0 : lon;
                lon = lon < -180.0 ? lon + 360.0 : lon;
                CAPTURE(lon);
                CAPTURE(lat);
                // 1e-11 degrees is a micrometre; -180 and 180 are the same meridian.
                const double difference = std::abs(back.x - lon);
                CHECK((difference < 1e-11 || std::abs(difference - 360.0) < 1e-11));
                CHECK(std::abs(back.y - lat) < 1e-11);
            }
        }
    }
    const MapSystems systems(-179.0);
    const MapPoint plane = ToPlane(182.0, 10.0);
    CHECK(std::abs(ToDegrees(plane.x, plane.y).x - -178.0) < 1e-11);
}

TEST_CASE("a point off the globe is unconverted and its neighbours are not") {
    const MapSystems systems(140.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (const MapPoint& bad :
         {MapPoint{140.0, 95.0}, MapPoint{140.0, -91.0}, MapPoint{140.0, inf}, MapPoint{inf, 35.0}}) {
        CAPTURE(bad.x);
        CAPTURE(bad.y);
        const double lon[] = {141.0, bad.x, 141.0};
        const double lat[] = {0.0, bad.y, 0.0};
        double x[3];
        double y[3];
        const int n = 3;
        ll2xy_(&n, lon, lat, x, y);
        CHECK(IsUnconverted({x[1], y[1]}));
        for (const int neighbour : {0, 2}) {
            CHECK(std::abs(x[neighbour] - 500000.0) < kMicrometre);
            CHECK(std::abs(y[neighbour]) < kMicrometre);
        }
    }
    // Not a number gives no position either.
    for (const MapPoint& bad : {MapPoint{nan, 35.0}, MapPoint{140.0, nan}}) {
        const MapPoint plane = ToPlane(bad.x, bad.y);
        CHECK_FALSE((std::isfinite(plane.x) && std::isfinite(plane.y)));
    }
    CHECK(IsUnconverted(ToDegrees(inf, inf)));
}

TEST_CASE("a second initialisation replaces the systems of the first") {
    const PrintedText printed;
    mapproject_initialize_using_longi_(140.0);
    mapproject_initialize_using_longi_(135.0);
    CHECK(std::abs(ToPlane(135.0, 0.0).x - 500000.0) < kMicrometre);
    mapproject_finalize_();
    mapproject_initialize_using_epsg_(4612, 2451);
    CHECK(std::abs(ToPlane(139.0 + 50.0 / 60.0, 36.0).x) < kMicrometre);
    mapproject_finalize_();
}
