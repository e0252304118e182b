// The plane of a UTM zone for whole grids: which points have a place, and what a column does not depend on. Its values
// are held to PROJ's by ZonePlaneParityTest.cpp.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include <doctest/doctest.h>

#include "parity/EveryInstructionSet.h"
#include "unit/MapSystems.h"
#include "unit/PrintedText.h"
#include "unit/ZoneColumn.h"

using tidora::ConformalRows;
using tidora::ZonePlane;

TEST_CASE("a column says whether every point has a place") {
    const ZonePlane plane(54);
    CHECK(ColumnOf(plane, 140.0, {-90.0, 0.0, 90.0}).isEveryPlace);
    CHECK(ColumnOf(plane, 231.0, {60.0, 90.0}).isEveryPlace);
    CHECK(ColumnOf(plane, 215.0, {0.0, 35.0}).isEveryPlace);  // beyond the reach, and PROJ has them
    CHECK_FALSE(ColumnOf(plane, 231.0, {60.0, 0.0}).isEveryPlace);
    CHECK_FALSE(ColumnOf(plane, 140.0, {35.0, 90.1}).isEveryPlace);
}

TEST_CASE("a zone that does not exist has no place for any point of a column") {
    ForEachInstructionSet([] {
        for (const int zone : {61, 0, -2, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
            CAPTURE(zone);
            const ZonePlaces places = ColumnOf(ZonePlane(zone), 180.0, {-90.0, 0.0, 10.0, 75.0});
            CHECK_FALSE(places.isEveryPlace);
            for (std::size_t i = 0; i < places.x.size(); ++i) {
                CHECK(IsUnconverted({places.x[i], places.y[i]}));
            }
        }
    });
}

TEST_CASE("southern northings are the northern ones below zero, to the last bit") {
    const std::vector<double> north = {0.25, 7.0, 38.1, 61.3, 89.9, 90.0},
                              south = {-0.25, -7.0, -38.1, -61.3, -89.9, -90.0};
    ForEachInstructionSet([&] {
        const ZonePlane plane(54);
        for (const double lon : {141.0, 143.3, 120.0, 200.0}) {
            const ZonePlaces above = ColumnOf(plane, lon, north), below = ColumnOf(plane, lon, south);
            for (std::size_t i = 0; i < north.size(); ++i) {
                CHECK(above.x[i] == below.x[i]);
                CHECK(above.y[i] == -below.y[i]);
            }
        }
    });
}

TEST_CASE("a point of a column has the same bits in every part of it, and nothing is written beside the part") {
    constexpr double kUntouched = -7.0;
    std::vector<double> lat;
    for (int i = 0; i < 1040; ++i) {
        lat.push_back(-60.0 + 0.1 * i);
    }
    const ConformalRows rows(lat);
    ForEachInstructionSet([&] {
        const ZonePlane plane(54);
        const ZonePlaces whole = ColumnOf(plane, 137.25, lat);
        for (const std::size_t count : {0U, 1U, 2U, 3U, 4U, 7U, 8U, 9U, 15U, 16U, 17U, 31U, 33U, 1000U}) {
            for (std::size_t first = 0; first < 20; ++first) {
                // Stores may begin at any value.
                std::vector<double> x(count + 2, kUntouched), y(count + 2, kUntouched);
                CHECK(plane.Column(137.25, rows, first, count, x.data() + 1, y.data() + 1));
                CHECK(std::equal(x.begin() + 1, x.end() - 1, whole.x.begin() + static_cast<std::ptrdiff_t>(first)));
                CHECK(std::equal(y.begin() + 1, y.end() - 1, whole.y.begin() + static_cast<std::ptrdiff_t>(first)));
                for (const std::vector<double>& values : {x, y}) {
                    CHECK(values.front() == kUntouched);
                    CHECK(values.back() == kUntouched);
                }
            }
        }
    });
}

TEST_CASE("single points are ll2xy_'s") {
    const MapSystems systems(140.0);
    const std::vector<double> lon = {140.0, 181.0, 141.0, 140.0}, lat = {35.0, -20.0, 89.0, 95.0};
    std::vector<double> x(4), y(4);
    CHECK(ZonePlane(54).Points(3, lon.data(), lat.data(), x.data(), y.data()));
    CHECK_FALSE(ZonePlane(54).Points(4, lon.data(), lat.data(), x.data(), y.data()));
    for (std::size_t i = 0; i < 4; ++i) {
        const MapPoint point = ToPlane(lon[i], lat[i]);
        CHECK(x[i] == point.x);
        CHECK(y[i] == point.y);
    }
}

TEST_CASE("the plane of a zone prints nothing and leaves the chosen systems alone") {
    const MapSystems systems(140.0);
    const MapPoint before = ToPlane(142.0, 38.0);
    const PrintedText printed;
    const ZonePlaces far = ColumnOf(ZonePlane(17), 140.0, {-30.0, 38.0, 75.0, 95.0});
    CHECK_FALSE(far.isEveryPlace);
    CHECK(printed.Out().empty());
    const MapPoint after = ToPlane(142.0, 38.0);
    CHECK(before.x == after.x);
    CHECK(before.y == after.y);
}

TEST_CASE("columns of one plane may be asked for from several threads") {
    const std::vector<double> lat = {-80.0, -30.0, 0.0, 35.0, 70.0};
    const ZonePlane plane(33);
    const std::vector<double> lons = {12.0, 16.0, 88.0, -61.0, 140.0, 195.0};
    const auto placesOfAll = [&] {
        std::vector<double> all;
        for (int round = 0; round < 50; ++round) {
            for (const double lon : lons) {
                const ZonePlaces places = ColumnOf(plane, lon, lat);
                all.insert(all.end(), places.x.begin(), places.x.end());
                all.insert(all.end(), places.y.begin(), places.y.end());
            }
        }
        return all;
    };
    const std::vector<double> expected = placesOfAll();
    std::vector<std::vector<double>> found(3);
    std::vector<std::thread> threads;
    threads.reserve(found.size());
    for (std::vector<double>& one : found) {
        threads.emplace_back([&one, &placesOfAll] { one = placesOfAll(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::vector<double>& one : found) {
        CHECK(std::memcmp(one.data(), expected.data(), expected.size() * sizeof(double)) == 0);
    }
}
