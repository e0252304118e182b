// The map that tells which discs are flat: it may take a flat disc for a raised one, never the other way round.

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/UpliftMap.h"
#include "unit/FilterCase.h"

using tidora::GridShape;
using tidora::UpliftMap;

namespace {

constexpr GridShape kShape = {100, 70, 500.0, -300.0, 10.0F};

std::vector<float> Flat(const GridShape& shape) {
    return std::vector<float>(shape.Size(), 0.0F);
}

/// A map of zeros and one raised node.
UpliftMap MapOfNode(const GridShape& shape, int ix, int iy, float value) {
    std::vector<float> values = Flat(shape);
    values[shape.Index(ix, iy)] = value;
    return UpliftMap({shape, values.data()});
}

}  // namespace

TEST_CASE("a grid of zeros of either sign is flat everywhere and finite") {
    std::vector<float> values = Flat(kShape);
    values[17] = -0.0F;
    const UpliftMap map({kShape, values.data()});
    CHECK(map.IsFinite());
    CHECK_FALSE(map.MayHaveUplift(1000.0F, 0.0F, 1e6F));
}

TEST_CASE("a node within the radius or next to it is never missed, and a far one is") {
    std::mt19937 random(3);
    const auto between = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    int missed = 0;
    int needless = 0;
    int flat = 0;
    for (int turn = 0; turn < 4000; ++turn) {
        // Near the origin, and where single precision knows whole halves of a metre.
        const double org = turn % 2 == 0 ? 0.0 : 6e6;
        const GridShape shape = {100, 70, org, -org, turn % 3 == 0 ? 1.0F : 10.0F};
        const int ix = std::uniform_int_distribution<int>(0, 99)(random);
        const int iy = std::uniform_int_distribution<int>(0, 69)(random);
        const UpliftMap map = MapOfNode(shape, ix, iy, 1.0F);
        const auto spacing = static_cast<double>(shape.dx);
        const auto x = static_cast<float>(org + spacing * between(-60.0, 160.0));
        const auto y = static_cast<float>(-org + spacing * between(-60.0, 130.0));
        const auto radius = static_cast<float>(spacing * between(0.0, 80.0));
        const double away =
            std::max(std::abs(shape.X(ix) - static_cast<double>(x)), std::abs(shape.Y(iy) - static_cast<double>(y)));
        const double beyond = (away - static_cast<double>(radius)) / spacing;  // in points
        const bool isRaised = map.MayHaveUplift(x, y, radius);
        flat += isRaised ? 0 : 1;
        missed += !isRaised && beyond <= 1.0 ? 1 : 0;
        // Allowed: the rest of a block, 15 points; 1 for the corners of a cell and 1 for whole points; 3 for 2^-21 of
        // 6 000 000 m where points are 1 m apart.
        needless += isRaised && beyond > 20.0 ? 1 : 0;
    }
    CHECK(missed == 0);
    CHECK(needless == 0);
    CHECK(flat > 500);  // else nothing was shown
}

TEST_CASE("what is not a number or infinite counts as uplift and is not finite") {
    for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity()}) {
        const UpliftMap map = MapOfNode(kShape, 99, 69, odd);
        CHECK_FALSE(map.IsFinite());
        CHECK(map.MayHaveUplift(1490.0F, 390.0F, 1.0F));
    }
    CHECK(MapOfNode(kShape, 99, 69, 1e-45F).IsFinite());
    CHECK(MapOfNode(kShape, 99, 69, 1e-45F).MayHaveUplift(1490.0F, 390.0F, 1.0F));
}

TEST_CASE("places without measure take the whole axis") {
    const UpliftMap map = MapOfNode(kShape, 3, 4, 1.0F);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    CHECK(map.MayHaveUplift(nan, nan, 1.0F));
    CHECK(map.MayHaveUplift(1e30F, 1e30F, 1.0F));
    CHECK(map.MayHaveUplift(0.0F, 0.0F, std::numeric_limits<float>::infinity()));
    for (const float dx : {nan, std::numeric_limits<float>::infinity()}) {
        GridShape shape = kShape;
        shape.dx = dx;
        const std::vector<float> values = Flat(shape);
        CHECK(UpliftMap({shape, values.data()}).MayHaveUplift(1000.0F, 0.0F, 1.0F));  // even without uplift
    }
}
