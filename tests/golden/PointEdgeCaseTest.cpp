// dc3d0_ at the limits of its arguments: codes, thresholds, what is formed in single precision.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"

namespace tidora::golden {
namespace {

PointCall OrdinaryCall() {
    PointCall call;
    call.x = 2.0F;
    call.y = 3.0F;
    call.depth = 4.0F;
    call.dip = 70.0F;
    return call;
}

double Wide(float value) {
    return static_cast<double>(value);
}

TEST_CASE("a point source: a positive Z gives zeros and the code 2") {
    for (const float z : {0.0001F, std::numeric_limits<float>::denorm_min(), 1e30F}) {
        CAPTURE(z);
        PointCall call = OrdinaryCall();
        call.z = z;
        CHECK(Call(call) == ZerosWith(2));
    }
}

TEST_CASE("a point source: Z = 0 and Z = -0.0 give the same bits") {
    PointCall call = OrdinaryCall();
    const EntryResult plus = Call(call);
    call.z = -0.0F;
    CHECK(plus.iret == 0);
    CHECK(plus.u[0] != 0.0F);
    CHECK(Call(call) == plus);
}

TEST_CASE("a point source: the point on the source gives zeros and the code 1") {
    struct Row {
        std::string why;
        float x, y, z, depth;
        int iret;
    };
    for (const Row& row :
         {Row{"on the source", 0.0F, 0.0F, -4.0F, 4.0F, 1},
          Row{"on a source at the surface", 0.0F, 0.0F, 0.0F, 0.0F, 1},
          Row{"within 1e-6 of it", 0.9e-6F, -0.9e-6F, -4.0F, 4.0F, 1},
          Row{"1.1e-6 beside it", 1.1e-6F, 0.0F, -4.0F, 4.0F, 0}, Row{"straight above it", 0.0F, 0.0F, 0.0F, 4.0F, 0},
          Row{"straight below it", 0.0F, 0.0F, -5.0F, 4.0F, 0}}) {
        CAPTURE(row.why);
        PointCall call = OrdinaryCall();
        call.x = row.x;
        call.y = row.y;
        call.z = row.z;
        call.depth = row.depth;
        const EntryResult result = Call(call);
        CHECK(result.iret == row.iret);
        if (row.iret == 1) {
            CHECK(result == ZerosWith(1));
        } else {
            CHECK(std::all_of(result.u.begin(), result.u.end(), [](float u) { return std::isfinite(u); }));
        }
    }
}

// Strike-slip: the displacement along y is proportional to x, so that a millionth shows.
TEST_CASE("a point source: X below 1e-6 counts as 0 in all terms") {
    PointCall call = OrdinaryCall();
    call.potency = {1.0F, 0.0F, 0.0F, 0.0F};
    call.x = 0.0F;
    const EntryResult onAxis = Call(call);
    CHECK(onAxis.u[1] == 0.0F);
    for (const float x : {0.9e-6F, -0.9e-6F}) {
        call.x = x;
        CHECK(Call(call) == onAxis);
    }
    call.x = 1.1e-6F;
    CHECK(Call(call).u[1] != 0.0F);
}

TEST_CASE("a point source: a dip within 5e-5 degrees of the vertical gives the bits of the vertical") {
    for (const float side : {90.0F, -90.0F}) {
        PointCall call = OrdinaryCall();
        call.dip = side;
        const EntryResult upright = Call(call);
        for (const float off : {5e-5F, -5e-5F}) {
            call.dip = side + off;
            CHECK(call.dip != side);
            CHECK(Call(call) == upright);
        }
        for (const float off : {7e-5F, -7e-5F}) {
            call.dip = side + off;
            CHECK_FALSE(Call(call) == upright);
        }
    }
}

TEST_CASE("a point source: the nine derivatives are set to zero at an ordinary point too") {
    const EntryResult result = Call(OrdinaryCall());
    CHECK(result.iret == 0);
    CHECK(result.derivatives == ZerosWith(0).derivatives);
}

TEST_CASE("a point source: without potency there is no displacement") {
    PointCall call = OrdinaryCall();
    call.potency = {};
    CHECK(Call(call) == ZerosWith(0));
}

TEST_CASE("dc3d0_ gives the bits of ub0_, rounded once, on the surface and below it") {
    for (const float dip : {0.0F, 45.0F, 90.0F, -30.0F}) {
        for (const float x : {-40.0F, 0.0F, 1.5F}) {
            for (const float z : {0.0F, -1.5F, -6.0F}) {
                PointCall call = OrdinaryCall();
                call.dip = dip;
                call.x = x;
                call.z = z;
                call.potency = {0.3F, -1.7F, 0.2F, 0.4F};
                const PointSource source{
                    {Wide(call.alpha)},
                    4.0,
                    Wide(dip),
                    {Wide(call.potency[0]), Wide(call.potency[1]), Wide(call.potency[2]), Wide(call.potency[3])}};
                const Vec3 u = SurfaceDisplacement(source, {Wide(x), 3.0, Wide(z)});
                CAPTURE(dip);
                CAPTURE(x);
                CAPTURE(z);
                CHECK(Call(call).u == std::array<float, 3>{static_cast<float>(u[0]), static_cast<float>(u[1]),
                                                           static_cast<float>(u[2])});
            }
        }
    }
}

TEST_CASE("a point source: DEPTH + Z and DEPTH - Z are formed in single precision") {
    PointCall call = OrdinaryCall();
    call.depth = 1000.1F;
    call.x = 0.0F;
    call.y = 0.0F;
    // DEPTH + Z in double precision would be -1e-5.
    call.z = std::nextafter(-1000.1F, -2000.0F) + 0.0F;
    CHECK(call.depth + call.z != 0.0F);
    CHECK(Call(call).iret == 0);

    PointCall shallow = OrdinaryCall();
    shallow.depth = 100.1F;
    shallow.z = -0.0003F;
    const auto at = [&shallow](double depth, double z) {
        const PointSource source{{Wide(shallow.alpha)}, depth, 70.0, {1.0, 1.0, 1.0, 1.0}};
        const Vec3 u = SurfaceDisplacement(source, {2.0, 3.0, z});
        return std::array<float, 3>{static_cast<float>(u[0]), static_cast<float>(u[1]), static_cast<float>(u[2])};
    };
    // `at` forms depth - z in double: this depth makes it the single-precision difference.
    const double z = Wide(shallow.z);
    CHECK(Call(shallow).u == at(Wide(shallow.depth - shallow.z) + z, z));
    CHECK(Call(shallow).u != at(Wide(shallow.depth), z));
}

TEST_CASE("a point source: a co-ordinate that is not a number makes the displacement not a number, never a code") {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const int which : {0, 1, 2}) {
        CAPTURE(which);
        PointCall call = OrdinaryCall();
        (which == 0 ? call.x : which == 1 ? call.y : call.z) = nan;
        const EntryResult result = Call(call);
        CHECK(result.iret == 0);
        CHECK(std::all_of(result.u.begin(), result.u.end(), [](float u) { return std::isnan(u); }));
    }
}

}  // namespace
}  // namespace tidora::golden
