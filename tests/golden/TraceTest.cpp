// Sources that break the surface, and points on, beside and beyond their trace.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"
#include "golden/Volterra.h"

namespace tidora::golden {
namespace {

constexpr double kLength = 20.0;
constexpr double kWidth = 10.0;

/// x from 0 to 20, from the surface 10 down the plane; the trace lies at y = TraceY.
Rectangle BreakingRectangle(double dip) {
    const double sine = std::abs(dip) == 90.0 ? 1.0 : std::sin(dip * kPi / 180.0);
    return {{}, dip > 0.0 ? kWidth * sine : 0.0, dip, {0.0, kLength}, {0.0, kWidth}, {}};
}

double TraceY(double dip) {
    return std::abs(dip) == 90.0 ? 0.0 : kWidth * std::cos(dip * kPi / 180.0);
}

FiniteCall BreakingCall(float dip) {
    FiniteCall call;
    call.depth = dip > 0.0F ? 10.0F : 0.0F;
    call.dip = dip;
    call.al2 = 20.0F;
    call.aw2 = 10.0F;
    return call;
}

/// Calls add(error, where) with the deviation from the quadrature for a unit slip of each type.
template <typename Add>
void CompareWithQuadrature(Rectangle source, const Vec3& at, const Add& add) {
    const auto quadrature = VolterraDisplacements(source, at);
    for (std::size_t slipType = 0; slipType < 3; ++slipType) {
        source.slip = {};
        source.slip[slipType] = 1.0;
        const Vec3 u = SurfaceDisplacement(source, at);
        for (std::size_t i = 0; i < kDirections; ++i) {
            add(u[i] - quadrature[slipType][i], "dip " + std::to_string(source.dip) + ", slip type " +
                                                    std::to_string(slipType) + ", x " + std::to_string(at[0]) + ", y " +
                                                    std::to_string(at[1]));
        }
    }
}

TEST_CASE("on the trace of a vertical source that breaks the surface there is no displacement, the code is 1") {
    for (const float dip : {90.0F, 89.99999F, -90.0F}) {
        for (const float x : {0.0F, 1e-3F, 10.0F, 19.9F, 20.0F, 20.0F + 5e-7F}) {
            CAPTURE(dip);
            CAPTURE(x);
            FiniteCall call = BreakingCall(dip);
            call.x = x;
            CHECK(Call(call) == ZerosWith(1));
        }
    }
}

TEST_CASE("inside the medium an edge of the source itself gives the code 1, its middle does not") {
    struct Row {
        std::string why;
        float x, z;
        int iret;
    };
    for (const Row& row : {Row{"on the left edge", 0.0F, -5.0F, 1}, Row{"on the right edge", 20.0F, -5.0F, 1},
                           Row{"on the lower edge", 7.0F, -10.0F, 1}, Row{"on a lower corner", 20.0F, -10.0F, 1},
                           Row{"within the rectangle", 7.0F, -5.0F, 0}, Row{"below it", 7.0F, -11.0F, 0},
                           Row{"beyond its end", 21.0F, -5.0F, 0}}) {
        CAPTURE(row.why);
        FiniteCall call = BreakingCall(90.0F);
        call.x = row.x;
        call.z = row.z;
        CHECK(Call(call).iret == row.iret);
    }
}

TEST_CASE("on the extension of the trace the displacement is that of the quadrature, at both ends") {
    LargestError error;
    const auto add = [&error](double value, const std::string& where) { error.Add(value, where); };
    for (const double dip : {90.0, -90.0, 60.0, 30.0}) {
        for (const double x : {-30.0, -3.0, -0.1, -0.01, 20.01, 20.1, 23.0, 50.0}) {
            CompareWithQuadrature(BreakingRectangle(dip), {x, TraceY(dip), 0.0}, add);
        }
    }
    // Absolute, slip 1. R + eta of the lower corners of -90 degrees, 0.01 beyond the end, is (0.01 / 10)^2 / 2 of R.
    error.Report("closed form minus quadrature on the extension", 1e-9);
}

// R + xi of the corner that lies ahead is distance^2 / (2 |xi|): it keeps (distance / xi)^2 of the figures of R.
TEST_CASE("beside the trace the displacement keeps the figures that the squared distance leaves") {
    for (const double distance : {1.0, 0.1, 1e-2, 1e-3}) {
        LargestError error;
        const auto add = [&error](double value, const std::string& where) { error.Add(value, where); };
        for (const double dip : {90.0, 60.0, 30.0}) {
            for (const double side : {-1.0, 1.0}) {
                CompareWithQuadrature(BreakingRectangle(dip), {0.5, TraceY(dip) + side * distance, 0.0}, add);
            }
        }
        const double ratio = kLength / distance;
        error.Report(std::to_string(distance) + " beside the trace",
                     std::numeric_limits<double>::epsilon() * ratio * ratio + 1e-12);
    }
}

TEST_CASE("across the trace the displacement jumps by the slip") {
    LargestError error;
    for (const double dip : {90.0, 60.0, 30.0}) {
        const SourceFrame frame = FrameOf(dip);
        const std::array<Vec3, 3> directions = {{{1.0, 0.0, 0.0}, frame.upDip, frame.normal}};
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            Rectangle source = BreakingRectangle(dip);
            source.slip[slipType] = 1.0;
            const auto jump = [&](double distance) {
                const Vec3 hanging = SurfaceDisplacement(source, {8.0, TraceY(dip) - distance, 0.0});
                const Vec3 foot = SurfaceDisplacement(source, {8.0, TraceY(dip) + distance, 0.0});
                return Vec3{hanging[0] - foot[0], hanging[1] - foot[1], hanging[2] - foot[2]};
            };
            // The limit from two distances: what is left falls with the square.
            const Vec3 near = jump(1e-3);
            const Vec3 far = jump(2e-3);
            for (std::size_t i = 0; i < kDirections; ++i) {
                error.Add(2.0 * near[i] - far[i] - directions[slipType][i],
                          "dip " + std::to_string(dip) + ", slip type " + std::to_string(slipType));
            }
        }
    }
    // (1e-3)^2 times slopes of order 0.1, and the rounding of the test above: 2e-16 * (20 / 1e-3)^2 = 1e-7.
    error.Report("jump minus slip", 2e-7);
}

// A band about the extension counts as the extension: R + xi of the far corner is below 1e-6 there. The terms with
// R + xi in the denominator, dropped at both corners, differ by (1 - a / R) / (2 pi) of the slip, a being the distance
// from the end along the trace. It matters next to the end only: a = 1 and 0.004 beside the trace, a millionth.
TEST_CASE("beside the extension the rule for the negative extension costs at most (1 - a / R) / (2 pi) of the slip") {
    LargestError inAllowances;
    for (const double dip : {90.0, 30.0}) {
        for (const double a : {1e-3, 1e-2, 0.1, 1.0, 10.0}) {
            for (const double beside : {-4e-3, 1e-4, 1e-3, 4e-3, 1e-2}) {
                // Outside the band R + xi is above 1e-6 and keeps nine figures: 1e-7 to spare.
                const double allowance = (1.0 - a / std::hypot(a, beside)) / (2.0 * kPi) + 1e-7;
                CompareWithQuadrature(
                    BreakingRectangle(dip), {-a, TraceY(dip) + beside, 0.0},
                    [&](double value, const std::string& where) { inAllowances.Add(value / allowance, where); });
            }
        }
    }
    inAllowances.Report("error beside the extension, in parts of the allowance", 1.0);
}

TEST_CASE("over a buried vertical source, its edges and its corners there is no spike") {
    LargestError error;
    const auto add = [&error](double value, const std::string& where) { error.Add(value, where); };
    for (const double dip : {90.0, 89.99999, -90.0}) {
        const Rectangle source{{}, dip > 0.0 ? 2.0 : 1.0, dip, {-1.0, 1.0}, {0.0, 1.0}, {}};
        // Along the plane and across it over a corner; 1e-7 counts as on the plane, 1e-5 does not.
        for (const double along : {-1.5, -1.0, -0.5, -1e-3, 0.0, 0.25, 1.0, 1.125}) {
            for (const double beside : {0.0, 1e-7, -1e-5, 1e-3}) {
                CompareWithQuadrature(source, {along, beside, 0.0}, add);
                CompareWithQuadrature(source, {1.0 + beside, along, 0.0}, add);
            }
        }
    }
    // Absolute, slip 1: moving a point by up to 1e-6 onto an edge, times slopes of order 1.
    error.Report("closed form minus quadrature over a buried source", 1e-6);
}

TEST_CASE(
    "beside the trace of a vertical source of 100 km, however close, the displacement is finite and not far above the "
    "slip") {
    // At 0.3 mm and less R + xi rounds to 0 on the side of the far end: it once gave what is not a number.
    for (const float y : {3e-6F, 1e-5F, -1e-5F, 3e-4F, 1e-3F, 0.01F, 0.1F, 1.0F, -1.0F, 1000.0F}) {
        for (const float x : {-50.0F, 0.0F, 50.0F, 50000.0F, 99999.0F, 100000.0F, 100050.0F}) {
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                CAPTURE(x);
                CAPTURE(y);
                CAPTURE(slipType);
                FiniteCall call;
                call.x = x;
                call.y = y;
                call.depth = 40000.0F;
                call.dip = 90.0F;
                call.al2 = 100000.0F;
                call.aw2 = 40000.0F;
                call.slip = {};
                call.slip[slipType] = 1.0F;
                const EntryResult result = Call(call);
                CHECK(result.iret == 0);
                for (const float component : result.u) {
                    CHECK(std::isfinite(component));
                    // Beside an end it grows with the logarithm of the distance: 1.02 at 10 micrometres.
                    CHECK(std::abs(component) < 1.1F);
                }
            }
        }
    }
}

}  // namespace
}  // namespace tidora::golden
