// The disc of a point and the lattice that samples it.

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/Disc.h"
#include "kajiura/Lattice.h"

using tidora::Disc;
using tidora::DiscOf;
using tidora::IsFiltered;
using tidora::kLattice;

TEST_CASE("a topography is filtered strictly below -10 m and where it is a number") {
    CHECK_FALSE(IsFiltered(-10.0F));
    CHECK(IsFiltered(std::nextafter(-10.0F, -11.0F)));
    CHECK_FALSE(IsFiltered(0.0F));
    CHECK_FALSE(IsFiltered(12.0F));
    CHECK_FALSE(IsFiltered(std::numeric_limits<float>::quiet_NaN()));
    CHECK(IsFiltered(-std::numeric_limits<float>::infinity()));
}

TEST_CASE("a disc reaches five depths in steps of a quarter of the depth, each rounded once") {
    for (const float depth : {10.1F, 123.456F, 7000.7F, 1e30F}) {
        CAPTURE(depth);
        const Disc disc = DiscOf(depth);
        CHECK(disc.depth == depth);
        CHECK(disc.step == 0.25F * depth);
        CHECK(disc.radius == 5.0F * depth);
    }
}

TEST_CASE("a disc is marked before its kernel has a value that is not finite") {
    // The largest value of the kernel's arithmetic that may not overflow is the square of the step, times a radius of
    // 0.
    const auto isFinite = [](float depth) {
        const float step = DiscOf(depth).step;
        return std::isfinite(step * step * 0.0F);
    };
    CHECK(DiscOf(11000.0F).hasFiniteKernel);
    CHECK(DiscOf(9e17F).hasFiniteKernel);
    CHECK(isFinite(9e17F));
    CHECK(isFinite(7e19F));
    CHECK_FALSE(isFinite(8e19F));
    for (const float depth : {8e19F, 1e38F, std::numeric_limits<float>::infinity()}) {
        CAPTURE(depth);
        CHECK_FALSE(DiscOf(depth).hasFiniteKernel);
    }
}

TEST_CASE("the lattice has 1257 samples at 146 distances") {
    CHECK(tidora::kLatticeHalfWidth == 20);
    CHECK(tidora::kLatticeRadiusSquared == 400);
    CHECK(tidora::kLatticeSamples == 1257);
    CHECK(kLattice.radiusCount == 146);
}

TEST_CASE("every offset within the disc has its place in the sum and its distance") {
    int sample = 0;
    for (int i = -20; i <= 20; ++i) {
        const tidora::Lattice::Column& column = kLattice.columns[i + 20];
        CHECK(column.distance == std::abs(i));
        bool isFirst = true;
        for (int j = -20; j <= 20; ++j) {
            const int q = i * i + j * j;
            if (q > 400) {
                continue;
            }
            CAPTURE(i);
            CAPTURE(j);
            if (isFirst) {
                CHECK(column.begin == j + 20);
                isFirst = false;
            }
            CHECK(column.start + j + 20 == sample++);
            CHECK(std::abs(j) <= kLattice.reach[std::abs(i)]);
            const std::int16_t radius = kLattice.radiusIndex[std::abs(i)][std::abs(j)];
            CHECK(kLattice.squaredRadii[radius] == static_cast<float>(q));
        }
    }
    CHECK(sample == 1257);
}
