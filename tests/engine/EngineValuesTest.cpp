// What the engine computes: against the dislocation routines, against geodesics, and against a run.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <doctest/doctest.h>
#include <geodesic.h>

#include "engine/EngineCase.h"
#include "fault/Fault.h"
#include "globe/Ellipsoid.h"
#include "okada/DC3D.h"
#include "parity/EveryInstructionSet.h"
#include "unit/PrintedText.h"

namespace {

using tidora::FAULT_PARAM;

struct Motion {
    float ux = 0.0F, uy = 0.0F, uz = 0.0F;
};

/// The scalar routine at a point of the frame of an element, x along strike.
Motion Direct(const FAULT_PARAM& e, float x, float y, double depth) {
    const float alpha = 2.0F / 3.0F, zero = 0.0F;
    const auto down = static_cast<float>(depth), dip = static_cast<float>(e.dip), length = static_cast<float>(e.length),
               width = static_cast<float>(-e.width);
    const double rake = e.rake / 180.0 * 3.14159265359;  // the rounded pi of the deformation
    const auto strikeSlip = static_cast<float>(e.slip * std::cos(rake)),
               dipSlip = static_cast<float>(e.slip * std::sin(rake));
    Motion m;
    float g[9];
    int status = 0;
    dc3d_(&alpha, &x, &y, &zero, &down, &dip, &zero, &length, &width, &zero, &strikeSlip, &dipSlip, &zero, &m.ux, &m.uy,
          &m.uz, g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return m;
}

struct Rotation {
    float sine, cosine;
};
Rotation RotationOf(const FAULT_PARAM& e) {
    const double theta = (e.strike - 90.0) / 180.0 * 3.14159265359;
    return {static_cast<float>(std::sin(theta)), static_cast<float>(std::cos(theta))};
}

float LargestOf(const std::vector<float>& values) {
    float largest = 0.0F;
    for (const float value : values) {
        largest = std::max(largest, std::abs(value));
    }
    return largest;
}

/// A run's deformation of the same grid, row by row as the engine has it.
struct RunResult {
    std::vector<std::vector<float>> vertical, horizontal;
};

RunResult RunOf(const EngineCase& c, int kind, double orgX, double orgY, float dx, bool withSlopes) {
    tidora::Fault fault;
    fault.coordType = kind;
    fault.elements = c.elements;
    tidora::DynamicParam intervals;
    fault.SetDynamicParam(intervals.params);
    const int nx = static_cast<int>(c.x.size()), ny = static_cast<int>(c.y.size());
    std::vector<float> topo(c.topography.size());
    for (int ix = 0; ix < nx; ++ix) {
        for (int iy = 0; iy < ny; ++iy) {
            topo[static_cast<std::size_t>(ix * ny + iy)] = c.topography[static_cast<std::size_t>(iy * nx + ix)];
        }
    }
    std::vector<tidora::InstantVal2d> vertical(intervals.params.size()), horizontal(intervals.params.size());
    for (std::size_t k = 0; k < vertical.size(); ++k) {
        vertical[k].Reset(topo.size());
        horizontal[k].Reset(topo.size());
    }
    const PrintedText quiet;
    CHECK(fault.Deform2D(1.0F, 1.0F, c.task.minDepth, c.task.tolerance, withSlopes ? 1 : 0, kind, nx, ny, orgX, orgY,
                         dx, topo.data(), vertical, horizontal, intervals) == 1);
    const auto byRows = [nx, ny](const tidora::InstantVal2d& field) {
        std::vector<float> rows(field.num);
        for (int ix = 0; ix < nx; ++ix) {
            for (int iy = 0; iy < ny; ++iy) {
                rows[static_cast<std::size_t>(iy * nx + ix)] = field.val[ix * ny + iy];
            }
        }
        return rows;
    };
    RunResult result;
    for (std::size_t k = 0; k < vertical.size(); ++k) {
        result.vertical.push_back(byRows(vertical[k]));
        result.horizontal.push_back(byRows(horizontal[k]));
    }
    return result;
}

/// A grid as a run has it: positions are the origin and a multiple of a spacing in single precision.
EngineCase GridOfRun(double orgX, double orgY, float dx, std::size_t nx, std::size_t ny) {
    EngineCase c;
    const tidora::GridShape shape = {static_cast<int>(nx), static_cast<int>(ny), orgX, orgY, dx};
    for (int ix = 0; ix < shape.nx; ++ix) {
        c.x.push_back(shape.X(ix));
    }
    for (int iy = 0; iy < shape.ny; ++iy) {
        c.y.push_back(shape.Y(iy));
    }
    c.topography = WavyFloor(nx, ny);
    c.task.depth = tidora::DepthRule::Program;
    c.task.spacing = dx;
    c.task.minDepth = 50.0F;
    c.wanted = {true, false, false, true};
    return c;
}

bool SameBytes(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

void CheckAgainstRun(EngineCase& c, int kind, double orgX, double orgY, float dx) {
    const RunResult run = RunOf(c, kind, orgX, orgY, dx, true);
    for (const int threads : {1, 2, 3}) {
        CAPTURE(threads);
        c.task.threads = threads;
        CHECK(c.Run());
        CHECK(SameBytes(c.out[tidora::kUplift], run.vertical[0]));
        CHECK(SameBytes(c.out[tidora::kSlopeUplift], run.horizontal[0]));
    }
}

}  // namespace

TEST_CASE("on the plane every node has what the scalar routine gives, within a unit in the last place") {
    ForEachInstructionSet([] {
        EngineCase c;
        const FAULT_PARAM e = ElementAt(1000.0, -2000.0);
        c.elements = {e};
        c.x = Axis(-200.0e3, 7777.0, 53);
        c.y = Axis(-150.0e3, 6543.0, 47);
        CHECK(c.Run());
        const Rotation r = RotationOf(e);
        const float largest = LargestOf(c.out[tidora::kUplift]);
        for (std::size_t iy = 0; iy < c.y.size(); ++iy) {
            for (std::size_t ix = 0; ix < c.x.size(); ++ix) {
                const auto east = static_cast<float>(c.x[ix] - e.org_x), north = static_cast<float>(c.y[iy] - e.org_y);
                const Motion m =
                    Direct(e, r.cosine * east - r.sine * north, r.sine * east + r.cosine * north, e.baseOffset);
                const float uz = c.out[tidora::kUplift][iy * c.x.size() + ix];
                if (std::abs(m.uz) > 1.0e-6F * largest) {
                    CHECK(std::abs(uz - m.uz) <= std::abs(std::nextafter(m.uz, 2.0F * m.uz) - m.uz));
                }
            }
        }
    });
}

TEST_CASE("on the globe every node has what geodesic distance and azimuth give the scalar routine") {
    geod_geodesic g = {};
    geod_init(&g, tidora::kEquatorRadius, tidora::kFlattening);
    ForEachInstructionSet([&] {
        for (const double lat : {0.0, 38.0, -38.0, 60.0, -60.0, 80.0, -80.0, 89.5, -89.5}) {
            for (const double lon : {142.0, 179.9, -179.9}) {
                const FAULT_PARAM e = ElementAt(lon, lat, 200.0);
                EngineCase c;
                c.elements = {e};
                c.isGrid = false;
                c.task.frame = tidora::NodeFrame::Globe;
                std::vector<std::array<double, 3>> expected;
                const Rotation r = RotationOf(e);
                for (double azimuth = 3.0; azimuth < 360.0; azimuth += 13.0) {
                    for (double distance = 2.0e3; distance <= 500.0e3; distance *= 1.4) {
                        double lat2 = 0.0, lon2 = 0.0, azimuth2 = 0.0;
                        geod_direct(&g, lat, lon, azimuth, distance, &lat2, &lon2, &azimuth2);
                        c.x.push_back(lon2 + (lon2 < 0.0 ? 360.0 : 0.0));  // the other way of counting
                        c.y.push_back(lat2);
                        const double a = azimuth * tidora::kRadian;
                        const auto east = static_cast<float>(distance * std::sin(a)),
                                   north = static_cast<float>(distance * std::cos(a));
                        const Motion m =
                            Direct(e, r.cosine * east - r.sine * north, r.sine * east + r.cosine * north, e.baseOffset);
                        const double ue = static_cast<double>(r.cosine * m.ux + r.sine * m.uy),
                                     un = static_cast<double>(-r.sine * m.ux + r.cosine * m.uy),
                                     turn = (azimuth2 - azimuth) * tidora::kRadian;
                        expected.push_back({static_cast<double>(m.uz), ue * std::cos(turn) + un * std::sin(turn),
                                            un * std::cos(turn) - ue * std::sin(turn)});
                    }
                }
                CHECK(c.Run());
                std::array<double, 3> worst = {}, largest = {};
                for (std::size_t n = 0; n < expected.size(); ++n) {
                    for (std::size_t k = 0; k < 3; ++k) {
                        worst[k] = std::max(worst[k], std::abs(static_cast<double>(c.out[k][n]) - expected[n][k]));
                        largest[k] = std::max(largest[k], std::abs(expected[n][k]));
                    }
                }
                std::printf("    globe, element at %6.1f, %5.1f: uz within %.1e of the maximum, ue %.1e, un %.1e\n",
                            lon, lat, worst[0] / largest[0], worst[1] / largest[1], worst[2] / largest[2]);
                for (std::size_t k = 0; k < 3; ++k) {
                    CHECK(worst[k] <= 2.0e-5 * largest[k]);
                }
            }
        }
    });
}

TEST_CASE("with the program's depths a plane grid has the bytes of a run, with and without a tolerance") {
    ForEachInstructionSet([] {
        for (const double tolerance : {0.0, 0.0005, 0.01, 0.3}) {
            CAPTURE(tolerance);
            for (const std::size_t count : {1U, 5U}) {
                CAPTURE(count);
                EngineCase c = GridOfRun(-300.5e3, 4.1e6, 1800.0F, 350, 333);
                for (std::size_t n = 0; n < count; ++n) {
                    const auto shift = static_cast<double>(n);
                    c.elements.push_back(ElementAt(-50.0e3 + 4.0e4 * shift, 4.3e6 + 3.0e4 * shift, 20.0 * shift));
                }
                c.task.tolerance = tolerance;
                CheckAgainstRun(c, 0, -300.5e3, 4.1e6, 1800.0F);
            }
        }
    });
}

TEST_CASE("in the zones of the program a grid in degrees has the bytes of a run, with and without a tolerance") {
    ForEachInstructionSet([] {
        for (const double tolerance : {0.0, 0.002, 0.2}) {
            CAPTURE(tolerance);
            EngineCase c = GridOfRun(137.25, 33.5, 1.0F / 30.0F, 190, 610);
            for (int n = 0; n < 5; ++n) {
                c.elements.push_back(ElementAt(143.6 + 0.2 * n, 36.0 + 0.7 * n, 190.0 + n));
            }
            c.task.frame = tidora::NodeFrame::Utm;
            c.task.tolerance = tolerance;
            CheckAgainstRun(c, 1, 137.25, 33.5, 1.0F / 30.0F);
        }
    });
}

TEST_CASE("intervals of the program take the shares of a run") {
    EngineCase c = GridOfRun(0.0, 0.0, 2000.0F, 60, 50);
    for (int n = 0; n < 4; ++n) {
        c.elements.push_back(ElementAt(2.0e4 * n, 3.0e4, 15.0 * n));
        c.elements.back().lagtime = 10.0 * n;
        c.elements.back().duration = 15.0;
    }
    tidora::Fault fault;
    fault.elements = c.elements;
    tidora::DynamicParam intervals;
    fault.SetDynamicParam(intervals.params);
    c.layers = intervals.params.size();
    CHECK(c.layers == 4);
    for (const tidora::DYNAMIC_PARAM& interval : intervals.params) {
        for (const FAULT_PARAM& e : c.elements) {
            c.shares.push_back(tidora::SlipShare(interval, e.lagtime, e.duration));
        }
    }
    const RunResult run = RunOf(c, 0, 0.0, 0.0, 2000.0F, true);
    CHECK(c.Run());
    for (std::size_t k = 0; k < c.layers; ++k) {
        const auto layer = c.out[tidora::kUplift].begin() + static_cast<std::ptrdiff_t>(k * c.Size());
        CHECK(SameBytes({layer, layer + static_cast<std::ptrdiff_t>(c.Size())}, run.vertical[k]));
    }
}

TEST_CASE("the slope term is the displacement times the slope in true metres") {
    EngineCase c = GlobeCase(142.0, 38.0);
    c.task.minDepth = 500.0F;
    CHECK(c.Run());
    const std::size_t nx = c.x.size(), ny = c.y.size();
    geod_geodesic g = {};
    geod_init(&g, tidora::kEquatorRadius, tidora::kFlattening);
    const auto slope = [&](std::size_t a, std::size_t b) {
        double way = 0.0;
        geod_inverse(&g, c.y[a / nx], c.x[a % nx], c.y[b / nx], c.x[b % nx], &way, nullptr, nullptr);
        return static_cast<double>(c.topography[b] - c.topography[a]) / way;
    };
    const auto largest = static_cast<double>(LargestOf(c.out[tidora::kSlopeUplift]));
    CHECK(largest > 0.01);
    for (std::size_t iy = 0; iy < ny; ++iy) {
        for (std::size_t ix = 0; ix < nx; ++ix) {
            const std::size_t at = iy * nx + ix;
            const double east = slope(ix > 0 ? at - 1 : at, ix + 1 < nx ? at + 1 : at),
                         north = slope(iy > 0 ? at - nx : at, iy + 1 < ny ? at + nx : at);
            const double expected = c.topography[at] < -500.0F
                                        ? -(static_cast<double>(c.out[tidora::kEast][at]) * east +
                                            static_cast<double>(c.out[tidora::kNorth][at]) * north)
                                        : 0.0;
            CHECK(std::abs(static_cast<double>(c.out[tidora::kSlopeUplift][at]) - expected) <= 2.0e-5 * largest);
        }
    }
}

TEST_CASE("depths count from sea level or from the floor of each node") {
    EngineCase c = GlobeCase(10.0, 0.0);
    c.elements.resize(1);
    CHECK(c.Run());
    const std::vector<float> floor = c.out[tidora::kUplift];
    c.task.depth = tidora::DepthRule::Datum;
    CHECK(c.Run());
    CHECK_FALSE(SameBytes(floor, c.out[tidora::kUplift]));
    const std::vector<float> datum = c.out[tidora::kUplift];
    // Over a floor at sea level both are one.
    std::fill(c.topography.begin(), c.topography.end(), 0.0F);
    c.task.depth = tidora::DepthRule::Floor;
    CHECK(c.Run());
    CHECK(SameBytes(datum, c.out[tidora::kUplift]));
    // Where the floor is deeper than the edge, the edge lies in it.
    std::fill(c.topography.begin(), c.topography.end(), -20000.0F);
    CHECK(c.Run());
    const std::vector<float> atFloor = c.out[tidora::kUplift];
    c.elements[0].baseOffset = 0.0;
    c.task.depth = tidora::DepthRule::Datum;
    CHECK(c.Run());
    CHECK(SameBytes(atFloor, c.out[tidora::kUplift]));
}

TEST_CASE("a tolerance changes no node by more than itself, and skips no tile that has something") {
    for (const tidora::NodeFrame frame : {tidora::NodeFrame::Globe, tidora::NodeFrame::Plane}) {
        EngineCase c = GlobeCase(142.0, 38.0);
        c.task.frame = frame;
        if (frame == tidora::NodeFrame::Plane) {
            for (double& x : c.x) {
                x *= 1.0e5;
            }
            for (double& y : c.y) {
                y *= 1.0e5;
            }
            for (FAULT_PARAM& e : c.elements) {
                e.org_x *= 1.0e5;
                e.org_y *= 1.0e5;
            }
        }
        c.wanted = {true, false, false, false};
        CHECK(c.Run());
        const std::vector<float> exact = c.out[0];
        for (const double tolerance : {0.0001, 0.001, 0.01, 0.1}) {
            c.task.tolerance = tolerance;
            CHECK(c.Run());
            double worst = 0.0;
            for (std::size_t n = 0; n < exact.size(); ++n) {
                worst = std::max(worst, static_cast<double>(std::abs(exact[n] - c.out[0][n])));
            }
            std::printf("    tolerance %g m: off by %.2g m\n", tolerance, worst);
            CHECK(worst <= tolerance);
        }
    }
}
