// Vertical sources and the way to them. The general forms of part B divide by the squared cosine of the dip, which
// multiplies rounding; the limit forms take over where the cosine is below 1e-6.

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

const std::vector<Vec3> kPlaces = {
    {2.0, 3.0, 0.0}, {1.0, 0.0, 0.0}, {-5.0, 2.0, 0.0}, {0.5, -1.5, 0.0}, {30.0, -20.0, 0.0}};

Rectangle SteepRectangle(double dip, std::size_t slipType) {
    Rectangle source{{}, 4.0, dip, {-1.0, 3.0}, {-2.0, 2.0}, {}};
    source.slip[slipType] = 1.0;
    return source;
}

double Largest(const Vec3& u) {
    return std::max({std::abs(u[0]), std::abs(u[1]), std::abs(u[2])});
}

double LargestDifference(const Vec3& a, const Vec3& b) {
    return Largest({a[0] - b[0], a[1] - b[1], a[2] - b[2]});
}

FiniteCall SteepCall(float dip) {
    FiniteCall call;
    call.x = 2.0F;
    call.y = 3.0F;
    call.depth = 4.0F;
    call.dip = dip;
    call.al1 = -1.0F;
    call.al2 = 3.0F;
    call.aw1 = -2.0F;
    call.aw2 = 2.0F;
    call.slip = {1.0F, 2.0F, 0.5F};
    return call;
}

TEST_CASE("from 89 degrees to the clamp the displacement keeps the figures that the squared cosine leaves") {
    // The last one lies just outside the clamp.
    const double lastDip = std::acos(1.001e-6) * 180.0 / kPi;
    for (const double dip : {89.0, 89.9, 89.99, 89.999, 89.9999, lastDip, -89.99, 90.001}) {
        CAPTURE(dip);
        const double cosine = std::cos(dip * kPi / 180.0);
        LargestError error;
        double fewestDigits = 16.0;
        for (const Vec3& at : kPlaces) {
            const auto quadrature = VolterraDisplacements(SteepRectangle(dip, 0), at);
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                const Rectangle source = SteepRectangle(dip, slipType);
                const Vec3& expected = quadrature[slipType];
                const double difference = LargestDifference(SurfaceDisplacement(source, at), expected);
                error.Add(difference, "slip type " + std::to_string(slipType) + ", x " + std::to_string(at[0]));
                if (Largest(expected) > 1e-3) {
                    fewestDigits = std::min(fewestDigits, -std::log10(difference / Largest(expected)));
                }
            }
        }
        MESSAGE("dip ", std::to_string(dip), ": ", fewestDigits, " figures survive");
        // Absolute, slip 1: corner terms of order 1 with a few roundings, divided by the squared cosine.
        const double rounding = std::numeric_limits<double>::epsilon();
        error.Report("closed form minus quadrature, dip " + std::to_string(dip),
                     4.0 * rounding / (cosine * cosine) + 1e-13);
    }
}

// Inside the clamp the dip is off by less than 1e-6: so is the displacement, in parts of the slip.
TEST_CASE("inside the clamp the displacement is that of a vertical source, to a millionth of the slip") {
    LargestError error;
    for (const double dip : {std::acos(0.999e-6) * 180.0 / kPi, 90.00005, -89.99995}) {
        for (const Vec3& at : kPlaces) {
            const auto quadrature = VolterraDisplacements(SteepRectangle(dip, 0), at);
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                const Rectangle source = SteepRectangle(dip, slipType);
                const Rectangle upright = SteepRectangle(dip > 0.0 ? 90.0 : -90.0, slipType);
                CHECK(SurfaceDisplacement(source, at) == SurfaceDisplacement(upright, at));
                error.Add(LargestDifference(SurfaceDisplacement(source, at), quadrature[slipType]),
                          "dip " + std::to_string(dip));
            }
        }
    }
    error.Report("vertical closed form minus quadrature of the true dip", 1e-6);
}

TEST_CASE("a dip of 89.99999 degrees gives the bits of 90 degrees") {
    CHECK(Call(SteepCall(89.99999F)) == Call(SteepCall(90.0F)));
    CHECK_FALSE(Call(SteepCall(89.9999F)) == Call(SteepCall(90.0F)));
}

// The plane is the same, but its normal points to the other side and up dip is down.
TEST_CASE("a dip of -90 degrees is the vertical plane of 90 degrees counted downward and seen from its other side") {
    LargestError error;
    for (std::size_t slipType = 0; slipType < 3; ++slipType) {
        for (const Vec3& at : kPlaces) {
            Rectangle down{{}, 4.0, -90.0, {-1.0, 3.0}, {0.0, 2.0}, {}};
            down.slip[slipType] = 1.0;
            Rectangle up{{}, 4.0, 90.0, {-1.0, 3.0}, {-2.0, 0.0}, {}};
            // Strike-slip changes sign with the normal; dip-slip with the normal and again with the up dip direction.
            up.slip[slipType] = slipType == 0 ? -1.0 : 1.0;
            error.Add(LargestDifference(SurfaceDisplacement(down, at), SurfaceDisplacement(up, at)),
                      "slip type " + std::to_string(slipType) + ", x " + std::to_string(at[0]));
        }
    }
    // Absolute, slip 1: corner terms of order 1 with a few dozen roundings of 1e-16.
    error.Report("dip -90 minus dip 90", 1e-14);
}

TEST_CASE("the point source keeps its figures up to the clamp and gives the bits of 90 degrees inside it") {
    PointCall call;
    call.x = 2.0F;
    call.y = 3.0F;
    call.depth = 4.0F;
    call.dip = 90.0F;
    const EntryResult upright = Call(call);
    call.dip = 89.99999F;
    CHECK(Call(call) == upright);
    call.dip = 89.9999F;
    CHECK_FALSE(Call(call) == upright);

    LargestError error;
    for (const double dip : {89.9, 89.999, 89.9999, std::acos(1.001e-6) * 180.0 / kPi}) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            PointSource source{{}, 4.0, dip, {}};
            source.potency[slipType] = 1.0;
            const Vec3 at = {2.0, 3.0, 0.0};
            const Vec3 expected = VolterraDisplacement(source, at);
            error.Add(LargestDifference(SurfaceDisplacement(source, at), expected) / Largest(expected),
                      "dip " + std::to_string(dip));
        }
    }
    // Of the largest component: its forms do not divide by the cosine, a dozen roundings remain.
    error.Report("point source minus point force, 89.9 degrees and more", 1e-14);
}

}  // namespace
}  // namespace tidora::golden
