// The frame of an element on the globe against geodesics, by the geodesic routines of PROJ, which follow C. F. F.
// Karney (2013), Algorithms for geodesics, J. Geodesy 87, 43-55.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include <doctest/doctest.h>
#include <geodesic.h>

#include "globe/GlobeKernels.h"
#include "parity/EveryInstructionSet.h"

namespace {

constexpr double kDegree = 0.017453292519943295;

/// East and north of a place, m, and the turn of vectors there.
struct Seen {
    double east, north;
    float cosine, sine;
};

Seen See(const tidora::GlobeFrame& frame, double lon, double lat) {
    const tidora::Parallel p = tidora::ParallelOf(lat);
    const tidora::Meridian m = tidora::MeridianOf(lon);
    const tidora::Geocentric place = tidora::PlaceOn(p, m);
    const tidora::GlobeNodes nodes = {1, &place.x, &place.y, &place.z};
    const tidora::GlobeKernels& kernels = tidora::DispatchedKernels<tidora::GlobeKernelsOf>();
    Seen seen = {};
    kernels.places(frame, nodes, &seen.east, &seen.north);
    kernels.turns(frame, nodes, {&p.sine, &p.cosine, &m.sine, &m.cosine}, &seen.cosine, &seen.sine);
    return seen;
}

geod_geodesic Ellipsoid() {
    geod_geodesic g = {};
    geod_init(&g, tidora::kEquatorRadius, tidora::kFlattening);
    return g;
}

}  // namespace

TEST_CASE("the globe frame keeps its stated distance from geodesics") {
    const geod_geodesic g = Ellipsoid();
    ForEachInstructionSet([&] {
        for (const tidora::GlobeFrameError& stated : tidora::kGlobeFrameErrors) {
            double worst = 0.0;
            for (double lat = -90.0; lat <= 90.0; lat += 7.5) {
                const tidora::GlobeFrame frame = tidora::MakeGlobeFrame(179.0, lat);
                for (double azimuth = 0.0; azimuth < 360.0; azimuth += 15.0) {
                    double lat2 = 0.0, lon2 = 0.0, azimuth2 = 0.0;
                    geod_direct(&g, lat, 179.0, azimuth, stated.distance, &lat2, &lon2, &azimuth2);
                    const Seen seen = See(frame, lon2, lat2);
                    worst = std::max(worst, std::hypot(seen.east - stated.distance * std::sin(azimuth * kDegree),
                                                       seen.north - stated.distance * std::cos(azimuth * kDegree)));
                }
            }
            std::printf("    globe frame, %4.0f km: within %.3f m of geodesics\n", stated.distance / 1000.0, worst);
            CHECK(worst <= stated.error);
            CHECK(worst > 0.0);
        }
    });
}

TEST_CASE("a vector keeps its angle with the way along which it is carried") {
    const geod_geodesic g = Ellipsoid();
    ForEachInstructionSet([&] {
        double worst = 0.0;
        for (double lat = -87.0; lat <= 87.0; lat += 14.5) {
            const tidora::GlobeFrame frame = tidora::MakeGlobeFrame(-20.0, lat);
            for (double azimuth = 10.0; azimuth < 360.0; azimuth += 35.0) {
                double lat2 = 0.0, lon2 = 0.0, azimuth2 = 0.0;
                geod_direct(&g, lat, -20.0, azimuth, 400.0e3, &lat2, &lon2, &azimuth2);
                const Seen seen = See(frame, lon2, lat2);
                const double turn = std::atan2(static_cast<double>(seen.sine), static_cast<double>(seen.cosine));
                worst = std::max(worst, std::abs(std::remainder(azimuth2 - azimuth - turn / kDegree, 360.0)));
            }
        }
        std::printf("    turn of vectors at 400 km: within %.2g degrees of the geodesic's azimuth\n", worst);
        CHECK(worst < 1.0e-3);
    });
}

TEST_CASE("the reference point itself lies at the origin, at a pole seen from any longitude") {
    ForEachInstructionSet([] {
        const Seen here = See(tidora::MakeGlobeFrame(142.5, 38.1), 142.5, 38.1);
        CHECK(here.east == 0.0);
        CHECK(here.north == 0.0);
        CHECK(here.cosine == doctest::Approx(1.0));
        CHECK(here.sine == doctest::Approx(0.0));
        // East of the meridian of Greenwich is, seen along that of 90 degrees, towards the south.
        const Seen pole = See(tidora::MakeGlobeFrame(0.0, 90.0), 90.0, 90.0);
        CHECK(std::hypot(pole.east, pole.north) < 1.0e-5);
        CHECK(pole.cosine == doctest::Approx(0.0));
        CHECK(pole.sine == doctest::Approx(1.0));  // north there = -sine east
    });
}

TEST_CASE("longitudes count modulo 360 to the last bit") {
    ForEachInstructionSet([] {
        for (const double lon : {178.25, 190.0, 359.5}) {
            const Seen a = See(tidora::MakeGlobeFrame(179.5, -33.0), lon, -31.0);
            const Seen b = See(tidora::MakeGlobeFrame(179.5 - 360.0, -33.0), lon - 360.0, -31.0);
            CHECK(a.east == b.east);
            CHECK(a.north == b.north);
            CHECK(a.cosine == b.cosine);
        }
    });
}

TEST_CASE("places are finite all over the globe, the antipode included") {
    ForEachInstructionSet([] {
        const tidora::GlobeFrame frame = tidora::MakeGlobeFrame(30.0, 12.0);
        for (double lat = -90.0; lat <= 90.0; lat += 6.0) {
            for (double lon = -180.0; lon <= 180.0; lon += 6.0) {
                const Seen seen = See(frame, lon, lat);
                const double distance = std::hypot(seen.east, seen.north);
                CHECK(distance <= 20.1e6);
                CHECK(std::isfinite(seen.cosine + seen.sine));
            }
        }
        const Seen antipode = See(frame, 210.0, -12.0);
        CHECK(std::isfinite(antipode.east + antipode.north));
    });
}

TEST_CASE("the size of a degree is that of the ellipsoid") {
    const geod_geodesic g = Ellipsoid();
    for (const double lat : {-89.0, -60.0, 0.0, 38.0, 80.0}) {
        double east = 0.0, north = 0.0;
        geod_inverse(&g, lat, 10.0, lat, 10.001, &east, nullptr, nullptr);
        geod_inverse(&g, lat - 0.0005, 10.0, lat + 0.0005, 10.0, &north, nullptr, nullptr);
        const tidora::DegreeSize size = tidora::DegreeSizeAt(lat);
        CHECK(size.east == doctest::Approx(east * 1000.0).epsilon(1e-6));
        CHECK(size.north == doctest::Approx(north * 1000.0).epsilon(1e-6));
    }
    CHECK(std::abs(tidora::DegreeSizeAt(90.0).east) < 1.0e-9);
}
