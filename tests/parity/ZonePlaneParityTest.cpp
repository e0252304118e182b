// The plane of a UTM zone for whole grids against PROJ point by point, with every instruction set.

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <doctest/doctest.h>

#include "parity/EveryInstructionSet.h"
#include "projection/ZonePlane.h"
#include "unit/MapSystems.h"
#include "unit/ZoneColumn.h"

namespace {

using tidora::ZonePlane;

/// What ll2xy_ says, of the systems that are chosen.
ZonePlaces ProjOf(double lon, const std::vector<double>& lat) {
    ZonePlaces places;
    for (const double one : lat) {
        const MapPoint point = ToPlane(lon, one);
        places.x.push_back(point.x);
        places.y.push_back(point.y);
    }
    return places;
}

double CentralMeridian(int zone) {
    return 6.0 * zone - 183.0;
}

/// In either co-ordinate, m. NaN counts as larger than any number.
double LargestDistance(const ZonePlaces& a, const ZonePlaces& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < a.x.size(); ++i) {
        for (const double difference : {std::abs(a.x[i] - b.x[i]), std::abs(a.y[i] - b.y[i])}) {
            largest = difference > largest || std::isnan(difference) ? difference : largest;
        }
    }
    return largest;
}

bool IsSame(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : a == b;
}

/// Every half degree, the poles and the equator with their neighbourhoods, and as many more at random.
std::vector<double> ManyLatitudes() {
    std::vector<double> lat;
    for (int half = -180; half <= 180; ++half) {
        lat.push_back(0.5 * half);
    }
    for (const double near : {1e-2, 1e-4, 1e-6, 1e-9, 1e-12, 1e-300}) {
        lat.insert(lat.end(), {90.0 - near, -90.0 + near, near, -near});
    }
    std::mt19937 random(20110311);
    for (int i = 0; i < 300; ++i) {
        lat.push_back(std::uniform_real_distribution<double>(-90.0, 90.0)(random));
    }
    return lat;
}

/// Longitudes from the central meridian: all around, the limit of the series, and some at random.
std::vector<double> ManyLongitudes() {
    std::vector<double> away = {1e-3, -1e-6, 1e-9, tidora::kZonePlaneReach, -tidora::kZonePlaneReach, 69.999, 70.001};
    for (int step = -80; step <= 80; ++step) {
        away.push_back(2.25 * step);
    }
    std::mt19937 random(869);
    for (int i = 0; i < 60; ++i) {
        away.push_back(std::uniform_real_distribution<double>(-180.0, 180.0)(random));
    }
    return away;
}

/// Largest differences in x and y, apart for what a grid near its zone sees.
struct Differences {
    double within30 = 0.0, beyond30 = 0.0;
    long count = 0;

    void Add(double away, double a, double b) {
        double& largest = std::abs(away) <= 30.0 ? within30 : beyond30;
        const double difference = std::abs(a - b);
        largest = difference > largest || std::isnan(difference) ? difference : largest;
        ++count;
    }
};

struct ComparedColumn {
    int zone;
    double away;
    ZonePlaces proj;
};

constexpr int kZones[] = {1, 2, 17, 30, 31, 54, 60};

bool IsServed(double away, double lat) {
    return std::abs(away) < tidora::kZonePlaneReach || std::abs(lat) >= tidora::kZonePlaneAnyLongitude;
}

}  // namespace

TEST_CASE("the plane of a zone is PROJ's within its stated error wherever the series serves") {
    const std::vector<double> lat = ManyLatitudes();
    std::vector<ComparedColumn> columns;
    for (const int zone : kZones) {
        const MapSystems systems(CentralMeridian(zone));
        for (const double away : ManyLongitudes()) {
            columns.push_back({zone, away, ProjOf(CentralMeridian(zone) + away, lat)});
        }
    }
    ForEachInstructionSet([&] {
        Differences x, y;
        for (const ComparedColumn& column : columns) {
            const ZonePlaces places = ColumnOf(ZonePlane(column.zone), CentralMeridian(column.zone) + column.away, lat);
            for (std::size_t i = 0; i < lat.size(); ++i) {
                if (IsServed(column.away, lat[i])) {
                    x.Add(column.away, places.x[i], column.proj.x[i]);
                    y.Add(column.away, places.y[i], column.proj.y[i]);
                }
            }
        }
        MESSAGE(tidora::NameOf(tidora::CurrentInstructionSet()), ", ", x.count, " points: within 30 degrees x ",
                x.within30, " m, y ", y.within30, " m; beyond x ", x.beyond30, " m, y ", y.beyond30, " m");
        REQUIRE(x.count > 500000);
        for (const double largest : {x.within30, y.within30, x.beyond30, y.beyond30}) {
            CHECK(largest <= tidora::kZonePlaneMaxError);
        }
    });
}

TEST_CASE("points that the series does not serve are PROJ's own, and their neighbours stay the series'") {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    struct OddColumn {
        const char* why;
        double lon;
        bool isAllOdd;  ///< for latitudes on the globe too
    };
    const OddColumn kOddColumns[] = {
        {"within reach: only the latitudes are odd", 140.0, false},
        {"beyond the reach of zone 54", 141.0 + 71.0, false},
        {"beyond it westward", 141.0 - 75.0, false},
        {"PROJ has no place for the equator", 141.0 + 90.0, false},
        {"behind the poles", -39.0, false},
        {"a turn more", 140.0 + 360.0, false},
        {"two turns more: PROJ refuses longitudes of more than 10 radians", 140.0 + 720.0 + 360.0, true},
        {"more than a turn, and still PROJ's", 750.0, true},
        {"a turn less", 140.0 - 360.0, false},
        {"more than a turn less", -361.0, true},
        {"infinite", inf, true},
        {"infinite", -inf, true},
        {"not a number", nan, true},
    };
    const std::vector<double> lat = {91.0, 35.0, nan, -35.0, inf, 0.0, -inf, 75.0, -90.000001, -75.0, 1e300, 10.0};
    const MapSystems systems(140.0);
    ForEachInstructionSet([&] {
        const ZonePlane plane(54);
        for (const OddColumn& column : kOddColumns) {
            CAPTURE(column.why);
            const ZonePlaces proj = ProjOf(column.lon, lat);
            const ZonePlaces places = ColumnOf(plane, column.lon, lat);
            CHECK_FALSE(places.isEveryPlace);
            const double away = std::remainder(column.lon - 141.0, 360.0);
            for (std::size_t i = 0; i < lat.size(); ++i) {
                CAPTURE(lat[i]);
                if (column.isAllOdd || !(std::abs(lat[i]) <= 90.0) || !IsServed(away, lat[i])) {
                    CHECK(IsSame(places.x[i], proj.x[i]));
                    CHECK(IsSame(places.y[i], proj.y[i]));
                } else {
                    CHECK(std::abs(places.x[i] - proj.x[i]) <= tidora::kZonePlaneMaxError);
                    CHECK(std::abs(places.y[i] - proj.y[i]) <= tidora::kZonePlaneMaxError);
                }
            }
        }
    });
}

TEST_CASE("a column beyond the date line lies where it lies, whichever way its longitude is counted") {
    const std::vector<double> lat = {-90.0, -45.0, -1e-9, 0.0, 12.5, 70.0, 90.0};
    ForEachInstructionSet([&] {
        for (const int zone : {1, 60}) {
            const MapSystems systems(CentralMeridian(zone));
            for (const double lon : {176.5, 179.0, 179.999999, 180.0, 180.000001, 181.0, 183.5, 200.0}) {
                CAPTURE(lon);
                ZonePlaces other;
                for (const double counted : {lon, lon - 360.0}) {
                    const ZonePlaces proj = ProjOf(counted, lat);
                    const ZonePlaces places = ColumnOf(ZonePlane(zone), counted, lat);
                    CHECK(places.isEveryPlace);
                    CHECK(LargestDistance(places, proj) <= tidora::kZonePlaneMaxError);
                    // The two longitudes round to angles some last places of pi apart, 2.8e-9 m each.
                    CHECK((other.x.empty() || LargestDistance(places, other) <= 2.0e-8));
                    other = places;
                }
            }
        }
    });
}
