// dc3d_ at the limits of its arguments: codes, thresholds, what is formed in single precision.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"

namespace tidora::golden {
namespace {

/// A buried source and a point beside it.
FiniteCall OrdinaryCall() {
    FiniteCall call;
    call.x = 2.0F;
    call.y = 3.0F;
    call.depth = 4.0F;
    call.dip = 70.0F;
    call.al2 = 3.0F;
    call.aw2 = 2.0F;
    return call;
}

/// A plane of 30 degrees whose upper edge, y = 10 cos(30 deg), lies on the surface. x from -5 to 5.
FiniteCall BreakingCall() {
    FiniteCall call;
    call.y = 8.660254F;
    call.depth = 5.0F;
    call.dip = 30.0F;
    call.al1 = -5.0F;
    call.al2 = 5.0F;
    call.aw2 = 10.0F;
    return call;
}

double Wide(float value) {
    return static_cast<double>(value);
}

/// The corner sum of ub_ with the differences that dc3d_ forms in single precision, rounded once.
std::array<float, 3> SumOfParts(const FiniteCall& call) {
    Rectangle source;
    source.medium = Medium{Wide(call.alpha)};
    source.depth = Wide(call.depth - call.z);
    source.dip = Wide(call.dip);
    source.along = {-Wide(call.x - call.al1), -Wide(call.x - call.al2)};
    source.up = {Wide(call.aw1), Wide(call.aw2)};
    source.slip = {Wide(call.slip[0]), Wide(call.slip[1]), Wide(call.slip[2])};
    const Vec3 u = SurfaceDisplacement(source, {0.0, Wide(call.y), 0.0});
    return {static_cast<float>(u[0]), static_cast<float>(u[1]), static_cast<float>(u[2])};
}

TEST_CASE("a positive Z, however small, gives zeros and the code 2") {
    for (const float z : {0.0001F, std::numeric_limits<float>::denorm_min(), 1e30F}) {
        CAPTURE(z);
        FiniteCall call = OrdinaryCall();
        call.z = z;
        CHECK(Call(call) == ZerosWith(2));
    }
}

TEST_CASE("a positive Z counts before a point on an edge") {
    FiniteCall call = BreakingCall();
    call.z = 0.0001F;
    CHECK(Call(call) == ZerosWith(2));
}

TEST_CASE("Z = 0 and Z = -0.0 are accepted and give the same bits") {
    FiniteCall call = OrdinaryCall();
    const EntryResult plus = Call(call);
    call.z = -0.0F;
    CHECK(plus.iret == 0);
    CHECK(plus.u[0] != 0.0F);
    CHECK(Call(call) == plus);
}

TEST_CASE("a point on the upper edge of a source that reaches the surface gives zeros and the code 1") {
    for (const float x : {-5.0F, -4.999F, 0.0F, 5.0F}) {
        CAPTURE(x);
        FiniteCall call = BreakingCall();
        call.x = x;
        CHECK(Call(call) == ZerosWith(1));
    }
}

TEST_CASE("a point on the extension of the upper edge or a little off it is an ordinary point") {
    struct Row {
        std::string why;
        float x, y;
    };
    for (const Row& row : {Row{"beyond the left end", -5.1F, 8.660254F}, Row{"beyond the right end", 5.1F, 8.660254F},
                           Row{"up the surface", 0.0F, 8.66026F}, Row{"down the surface", 0.0F, 8.66025F}}) {
        CAPTURE(row.why);
        FiniteCall call = BreakingCall();
        call.x = row.x;
        call.y = row.y;
        const EntryResult result = Call(call);
        CHECK(result.iret == 0);
        for (const float component : result.u) {
            CHECK(std::isfinite(component));
            CHECK(std::abs(component) < 3.0F);  // below the sum of the three dislocations
        }
    }
}

// Beyond 1e-6 of the left end the point is off the source.
TEST_CASE("X within 1e-6 of AL1 lies on the line of the edge") {
    FiniteCall call = BreakingCall();
    call.al1 = 0.0F;
    call.x = -0.9e-6F;
    CHECK(Call(call) == ZerosWith(1));
    call.x = -1.1e-6F;
    CHECK(Call(call).iret == 0);

    FiniteCall buried = OrdinaryCall();
    buried.slip = {1e6F, 0.0F, 0.0F};  // large, so that a millionth of a length shows in single precision
    const EntryResult onLine = [&] {
        buried.x = 0.0F;
        return Call(buried);
    }();
    for (const float x : {0.9e-6F, -0.9e-6F}) {
        buried.x = x;
        buried.al2 = 3.0F + x;  // 3 again: the other end keeps its place
        CHECK(Call(buried) == onLine);
    }
}

TEST_CASE("a distance from the plane or from the line of an edge below 1e-6 counts as none") {
    FiniteCall call;
    call.depth = 10.0F;
    call.dip = 90.0F;
    call.al2 = 20.0F;
    call.aw2 = 10.0F;
    call.x = 7.0F;
    call.y = 0.9e-6F;
    CHECK(Call(call) == ZerosWith(1));
    call.y = 1.1e-6F;
    CHECK(Call(call).iret == 0);
}

TEST_CASE("the nine derivatives are set to zero at an ordinary point too") {
    const EntryResult result = Call(OrdinaryCall());
    CHECK(result.iret == 0);
    CHECK(result.derivatives == ZerosWith(0).derivatives);
}

TEST_CASE("without slip there is no displacement") {
    FiniteCall call = OrdinaryCall();
    call.slip = {};
    CHECK(Call(call) == ZerosWith(0));
}

TEST_CASE("dc3d_ gives the bits of the corner sum of ub_, rounded once") {
    for (const float dip : {0.0F, 3.0F, 45.0F, 89.9F, 90.0F, -90.0F, -30.0F, 120.0F}) {
        for (const float x : {-40.0F, -1.0F, 0.0F, 1.5F, 3.0F, 200.0F}) {
            for (const float y : {-7.0F, 0.0F, 0.1F, 60.0F}) {
                FiniteCall call = OrdinaryCall();
                call.dip = dip;
                call.x = x;
                call.y = y;
                call.slip = {0.3F, -1.7F, 0.2F};
                CAPTURE(dip);
                CAPTURE(x);
                CAPTURE(y);
                CHECK(Call(call).u == SumOfParts(call));
            }
        }
    }
}

// The image of the source lies at DEPTH - Z: below the surface the routine keeps to part B.
TEST_CASE("at depth dc3d_ gives the surface displacement of a source that is deeper by as much") {
    FiniteCall deep = OrdinaryCall();
    deep.z = -1.5F;
    FiniteCall shallow = OrdinaryCall();
    shallow.depth = 5.5F;
    CHECK(Call(deep) == Call(shallow));
}

TEST_CASE("X - AL1, X - AL2 and DEPTH - Z are formed in single precision") {
    FiniteCall call = OrdinaryCall();
    call.x = 1000.1F;
    call.al1 = 0.3F;
    call.al2 = 990.7F;
    call.depth = 100.1F;
    call.z = -0.0003F;
    CHECK(Call(call).u == SumOfParts(call));

    // The same in double precision gives other bits: the test would see the difference.
    Rectangle source{{Wide(call.alpha)},
                     Wide(call.depth),
                     Wide(call.dip),
                     {Wide(call.al1), Wide(call.al2)},
                     {Wide(call.aw1), Wide(call.aw2)},
                     {1.0, 1.0, 1.0}};
    const Vec3 u = SurfaceDisplacement(source, {Wide(call.x), Wide(call.y), Wide(call.z)});
    CHECK(Call(call).u !=
          std::array<float, 3>{static_cast<float>(u[0]), static_cast<float>(u[1]), static_cast<float>(u[2])});
}

// Dip-slip and opening are symmetric about the middle of the source, strike-slip is antisymmetric.
TEST_CASE("the displacement is symmetric about the middle of the source") {
    LargestError error;
    for (const double dip : {3.0, 50.0, 90.0, -20.0}) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            Rectangle source{{}, 5.0, dip, {-4.0, 4.0}, {-1.0, 2.0}, {}};
            source.slip[slipType] = 1.0;
            const double sign = slipType == 0 ? -1.0 : 1.0;
            const Vec3 right = SurfaceDisplacement(source, {2.5, 1.5, 0.0});
            const Vec3 left = SurfaceDisplacement(source, {-2.5, 1.5, 0.0});
            error.Add(right[0] + sign * left[0], "x");
            error.Add(right[1] - sign * left[1], "y");
            error.Add(right[2] - sign * left[2], "z");
        }
    }
    // Absolute, slip 1: corner terms of order 1 with a few dozen roundings of 1e-16.
    error.Report("left against right", 1e-13);
}

TEST_CASE("a co-ordinate that is not a number makes the displacement not a number, never a code") {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const int which : {0, 1, 2}) {
        CAPTURE(which);
        FiniteCall call = OrdinaryCall();
        (which == 0 ? call.x : which == 1 ? call.y : call.z) = nan;
        const EntryResult result = Call(call);
        CHECK(result.iret == 0);
        CHECK(std::all_of(result.u.begin(), result.u.end(), [](float u) { return std::isnan(u); }));
    }
}

}  // namespace
}  // namespace tidora::golden
