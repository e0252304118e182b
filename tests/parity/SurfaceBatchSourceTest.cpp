#include <doctest/doctest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "okada/DC3D.h"
#include "okada/batch/SurfaceBatch.h"
#include "parity/EveryInstructionSet.h"

namespace {

using tidora::PointShearSource;
using tidora::RectangleSource;

constexpr float kInfinite = std::numeric_limits<float>::infinity();
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

/// Points on both sides of a source, over it, on its trace and far away; more than one step of every lane type.
struct Points {
    std::vector<float> x, y, depth;

    Points() {
        for (const float along : {-3e5F, -2e3F, 0.0F, 1e3F, 5e3F, 1e4F, 2.5e5F}) {
            for (const float across : {-1e5F, -4e3F, 0.0F, 3e3F, 7e4F}) {
                for (const float below : {0.0F, 5e3F}) {
                    x.push_back(along);
                    y.push_back(across);
                    depth.push_back(below);
                }
            }
        }
    }
};

using Displacement = std::array<float, 3>;

Displacement Scalar(const RectangleSource& s, float x, float y, float depth) {
    const float zero = 0.0F;
    Displacement u = {};
    float g[9];
    int status = 0;
    dc3d_(&s.alpha, &x, &y, &zero, &depth, &s.dip, &s.al1, &s.al2, &s.aw1, &s.aw2, &s.strikeSlip, &s.dipSlip, &zero,
          &u[0], &u[1], &u[2], g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return u;
}
Displacement Scalar(const PointShearSource& s, float x, float y, float depth) {
    const float zero = 0.0F;
    Displacement u = {};
    float g[9];
    int status = 0;
    dc3d0_(&s.alpha, &x, &y, &zero, &depth, &s.dip, &s.strikePotency, &s.dipPotency, &zero, &zero, &u[0], &u[1], &u[2],
           g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    return u;
}
void Batch(const RectangleSource& s, const tidora::SurfacePoints& in, const tidora::SurfaceDisplacements& out) {
    tidora::FiniteSurfaceBatch(s, in, out);
}
void Batch(const PointShearSource& s, const tidora::SurfacePoints& in, const tidora::SurfaceDisplacements& out) {
    tidora::PointSurfaceBatch(s, in, out);
}

/// Neither a number, or the same bits.
bool IsSame(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

/// The number of values of a batch, with and without its horizontal components, that are not the scalar routine's.
template <typename Source>
int Differences(const Source& source) {
    const Points points;
    const std::size_t count = points.x.size();
    const tidora::SurfacePoints in = {count, points.x.data(), points.y.data(), points.depth.data()};
    std::vector<float> ux(count), uy(count), uz(count), uzAlone(count);
    Batch(source, in, {ux.data(), uy.data(), uz.data()});
    Batch(source, in, {nullptr, nullptr, uzAlone.data()});
    int differences = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Displacement u = Scalar(source, points.x[i], points.y[i], points.depth[i]);
        differences +=
            IsSame(ux[i], u[0]) && IsSame(uy[i], u[1]) && IsSame(uz[i], u[2]) && IsSame(uzAlone[i], u[2]) ? 0 : 1;
    }
    return differences;
}

/// Numbers that no source should have, each in the place of another.
struct Absurdity {
    std::string why;
    float alpha, dip, first, second;
};
const Absurdity kAbsurdities[] = {
    {"an infinite strike-slip", 2.0F / 3.0F, 30.0F, kInfinite, 0.0F},
    {"an infinite dip-slip", 2.0F / 3.0F, 30.0F, 0.0F, kInfinite},
    {"both, of either sign", 2.0F / 3.0F, 30.0F, -kInfinite, kInfinite},
    {"one infinite, one ordinary", 2.0F / 3.0F, 30.0F, 1.0F, -kInfinite},
    {"infinite on a vertical plane", 2.0F / 3.0F, 90.0F, kInfinite, 2.0F},
    {"infinite on a level plane", 2.0F / 3.0F, 0.0F, kInfinite, 2.0F},
    {"a strike-slip that is not a number", 2.0F / 3.0F, 30.0F, kNotANumber, 1.0F},
    {"a dip-slip that is not a number", 2.0F / 3.0F, 30.0F, 0.0F, kNotANumber},
    {"a medium without resistance to compression: the surface terms are infinite", 0.0F, 30.0F, 1.0F, 1.0F},
    {"a medium that is not a number", kNotANumber, 30.0F, 1.0F, 1.0F},
    {"an infinite dip", 2.0F / 3.0F, kInfinite, 1.0F, 1.0F},
    {"a dip that is not a number", 2.0F / 3.0F, kNotANumber, 1.0F, 1.0F},
};

RectangleSource Rectangle(const Absurdity& a) {
    RectangleSource s;
    s.alpha = a.alpha;
    s.dip = a.dip;
    s.al2 = 1e4F;
    s.aw1 = -5e3F;
    s.strikeSlip = a.first;
    s.dipSlip = a.second;
    return s;
}

}  // namespace

TEST_CASE("a rectangle whose slip, dip or medium is not finite gives what dc3d_ gives") {
    ForEachInstructionSet([] {
        for (const Absurdity& absurdity : kAbsurdities) {
            CAPTURE(absurdity.why);
            CHECK(Differences(Rectangle(absurdity)) == 0);
        }
    });
}

TEST_CASE("a rectangle whose extent is not finite gives what dc3d_ gives") {
    const Absurdity ordinary = {"", 2.0F / 3.0F, 30.0F, 1.0F, -2.0F};
    ForEachInstructionSet([&] {
        for (const float value : {kInfinite, -kInfinite, kNotANumber}) {
            for (float RectangleSource::*const extent :
                 {&RectangleSource::al1, &RectangleSource::al2, &RectangleSource::aw1, &RectangleSource::aw2}) {
                CAPTURE(value);
                RectangleSource s = Rectangle(ordinary);
                s.*extent = value;
                CHECK(Differences(s) == 0);
            }
        }
    });
}

TEST_CASE("a point source whose potency, dip or medium is not finite gives what dc3d0_ gives") {
    ForEachInstructionSet([] {
        for (const Absurdity& absurdity : kAbsurdities) {
            CAPTURE(absurdity.why);
            PointShearSource s;
            s.alpha = absurdity.alpha;
            s.dip = absurdity.dip;
            s.strikePotency = absurdity.first;
            s.dipPotency = absurdity.second;
            CHECK(Differences(s) == 0);
        }
    });
}
