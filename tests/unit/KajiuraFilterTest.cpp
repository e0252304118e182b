// The filter over nested grids: which points change, and where each sample of a disc comes from.

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/KajiuraFilter.h"
#include "unit/FilterCase.h"

using tidora::InstantVal2d;
using tidora::Region;

namespace {

// Sums of 1257 terms in single precision: rounding errors add up like a random walk of 1257 steps of at most 6e-8,
// 2e-6; five times that is allowed. A sample from the wrong grid changes a sum of unit uplifts by the smallest weight
// at least, 2.4e-5.
constexpr double kSumTolerance = 1e-5;

// Weight of the sample (i, j) in units of the uplift, in double and without the depth, which cancels:
// s^2 d G / (pi d^3) with s = d / 4.
double Weight(int i, int j) {
    const double rho2 = (i * i + j * j) / 16.0;
    double series = 0.0;
    for (int n = 0; n <= 10; ++n) {
        const double c = 2.0 * n + 1.0;
        series += (n % 2 == 0 ? c : -c) / std::pow(c * c + rho2, 1.5);
    }
    return series / (16.0 * 3.141592653589793);
}

// Sum over the disc of the weights times the uplift that `upliftOf` gives for the offset.
double WeightedSum(const std::function<double(int, int)>& upliftOf) {
    double sum = 0.0;
    for (int i = -20; i <= 20; ++i) {
        for (int j = -20; j <= 20; ++j) {
            if (i * i + j * j <= 400) {
                sum += Weight(i, j) * upliftOf(i, j);
            }
        }
    }
    return sum;
}

const double kWholeDisc = WeightedSum([](int, int) { return 1.0; });

// Over a depth of 40 m the lattice step is 10 m: on this grid every sample lies on a node.
constexpr float kDepthOfStep10 = -40.0F;
constexpr FilterGrid kThreeByThree = {3, 3, 0.0, 0.0, 10.0F};
// Encloses every disc around the points of kThreeByThree: 200 m and a cell more to each side.
constexpr FilterGrid kEnclosing = {50, 50, -240.0, -240.0, 10.0F};

}  // namespace

TEST_CASE("a point with a topography of exactly -10 is not filtered and one just below is") {
    const FilterGrid grid = {1, 4, 0.0, 0.0, 10.0F};
    const float below = std::nextafter(-10.0F, -11.0F);
    const std::vector<float> topography = {-10.0F, below, -10.01F, std::nextafter(-10.0F, 0.0F)};
    const auto filtered = Filtered(grid, topography, Snapshots({{1.0F, 2.0F, 3.0F, 4.0F}}));
    CHECK(filtered[0].val[0] == 1.0F);
    CHECK(filtered[0].val[3] == 4.0F);
    // One column has no whole cell: every sample of a filtered point is 0.
    CHECK(BitsOf(filtered[0].val[1]) == BitsOf(0.0F));
    CHECK(BitsOf(filtered[0].val[2]) == BitsOf(0.0F));
}

TEST_CASE("land and shallow points and points without a number for a depth keep their value bit for bit") {
    const FilterGrid grid = {2, 3, 0.0, 0.0, 100.0F};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const std::vector<float> topography = {0.0F, 25.0F, -9.99F, nan, inf, -0.0F};
    const std::vector<float> uplift = {1.1F, -2.2F, -0.0F, nan, inf, 1e-40F};
    const auto filtered = Filtered(grid, topography, Snapshots({uplift}));
    for (std::size_t at = 0; at < uplift.size(); ++at) {
        CAPTURE(at);
        CHECK(BitsOf(filtered[0].val[at]) == BitsOf(uplift[at]));
    }
}

TEST_CASE("a uniform uplift of 1 m far from the edges comes out at 1.0229 m at any depth") {
    CHECK(kWholeDisc == doctest::Approx(1.0229).epsilon(5e-5));  // half a unit of the last printed digit
    for (const float depth : {10.01F, 37.0F, 400.0F, 1000.0F / 3.0F}) {
        CAPTURE(depth);
        // The disc reaches 5 d; two cells more on each side. Only the middle is sea.
        const float dx = 2.5F * depth;
        const FilterGrid grid = {9, 9, -7.5, 1e4, dx};
        std::vector<float> topography = Uniform(grid, 1.0F);
        topography[4 * 9 + 4] = -depth;
        const auto filtered = Filtered(grid, topography, Snapshots({Uniform(grid, 1.0F)}));
        CHECK(static_cast<double>(filtered[0].val[4 * 9 + 4]) == doctest::Approx(kWholeDisc).epsilon(kSumTolerance));
    }
}

TEST_CASE("near the edge of an un-nested grid the result drops because samples outside count as 0") {
    const FilterGrid grid = {41, 41, 0.0, 0.0, 10.0F};
    const auto filtered = Filtered(grid, Uniform(grid, kDepthOfStep10), Snapshots({Uniform(grid, 1.0F)}));
    const auto at = [&filtered](int ix, int iy) { return static_cast<double>(filtered[0].val[ix * 41 + iy]); };
    // Samples on the first row and column lie in the first cells, samples on the last ones in no whole cell.
    const double middle = WeightedSum([](int i, int j) { return i < 20 && j < 20 ? 1.0 : 0.0; });
    const double westEdge = WeightedSum([](int i, int j) { return i >= 0 && j < 20 ? 1.0 : 0.0; });
    const double eastEdge = WeightedSum([](int i, int j) { return i < 0 && j < 20 ? 1.0 : 0.0; });
    const double corner = WeightedSum([](int i, int j) { return i >= 0 && j >= 0 ? 1.0 : 0.0; });
    CHECK(std::abs(at(20, 20) - middle) < kSumTolerance);
    CHECK(std::abs(at(0, 20) - westEdge) < kSumTolerance);
    CHECK(std::abs(at(40, 20) - eastEdge) < kSumTolerance);
    CHECK(std::abs(at(0, 0) - corner) < kSumTolerance);
    CHECK(at(0, 0) < at(0, 20));
    CHECK(at(0, 20) < at(20, 20));
}

TEST_CASE("samples outside the own grid come from the parent") {
    const auto filtered =
        Filtered(kThreeByThree, Uniform(kThreeByThree, kDepthOfStep10), Snapshots({Uniform(kThreeByThree, 0.0F)}), 1,
                 kEnclosing, Snapshots({Uniform(kEnclosing, 1.0F)}), Snapshots({Uniform(kEnclosing, 0.0F)}));
    for (int ix = 0; ix < 3; ++ix) {
        for (int iy = 0; iy < 3; ++iy) {
            CAPTURE(ix);
            CAPTURE(iy);
            // Own samples are those whose cell has both its corners in the grid: columns and rows 0 and 1.
            const double expected = WeightedSum([ix, iy](int i, int j) {
                const bool own = ix + i >= 0 && ix + i < 2 && iy + j >= 0 && iy + j < 2;
                return own ? 0.0 : 1.0;
            });
            CHECK(std::abs(static_cast<double>(filtered[0].val[ix * 3 + iy]) - expected) < kSumTolerance);
        }
    }
}

TEST_CASE("a sample on the last row or column of the own grid is taken from the parent") {
    // Only the last column and row of the own grid are raised, and the parent is flat: nothing is left of them.
    std::vector<float> uplift = Uniform(kThreeByThree, 0.0F);
    for (int k = 0; k < 3; ++k) {
        uplift[static_cast<std::size_t>(2 * 3 + k)] = 1000.0F;
        uplift[static_cast<std::size_t>(k * 3 + 2)] = 1000.0F;
    }
    const auto filtered =
        Filtered(kThreeByThree, Uniform(kThreeByThree, kDepthOfStep10), Snapshots({uplift}), 1, kEnclosing,
                 Snapshots({Uniform(kEnclosing, 0.0F)}), Snapshots({Uniform(kEnclosing, 0.0F)}));
    for (int at = 0; at < 9; ++at) {
        CAPTURE(at);
        CHECK(filtered[0].val[at] == 0.0F);
    }
}

TEST_CASE("samples that lie outside the parent as well count as 0") {
    // The parent ends three cells beyond the own grid to the east and north, and starts with it.
    const FilterGrid parent = {6, 6, 0.0, 0.0, 10.0F};
    const auto filtered =
        Filtered(kThreeByThree, Uniform(kThreeByThree, kDepthOfStep10), Snapshots({Uniform(kThreeByThree, 0.0F)}), 1,
                 parent, Snapshots({Uniform(parent, 1.0F)}), Snapshots({Uniform(parent, 0.0F)}));
    const double expected = WeightedSum([](int i, int j) {
        const int column = 1 + i;
        const int row = 1 + j;
        const bool own = column >= 0 && column < 2 && row >= 0 && row < 2;
        const bool inParent = column >= 0 && column < 5 && row >= 0 && row < 5;
        return !own && inParent ? 1.0 : 0.0;
    });
    CHECK(std::abs(static_cast<double>(filtered[0].val[1 * 3 + 1]) - expected) < kSumTolerance);
}

TEST_CASE("a parent of one column or one row has no cell and counts as 0") {
    for (const FilterGrid& parent : {FilterGrid{1, 60, -300.0, -300.0, 10.0F}, FilterGrid{60, 1, -300.0, 0.0, 10.0F}}) {
        const auto filtered =
            Filtered(kThreeByThree, Uniform(kThreeByThree, kDepthOfStep10), Snapshots({Uniform(kThreeByThree, 0.0F)}),
                     1, parent, Snapshots({Uniform(parent, 1.0F)}), Snapshots({Uniform(parent, 0.0F)}));
        CHECK(filtered[0].val[4] == 0.0F);
    }
}

TEST_CASE("the parent's snapshot is the sum of its vertical and horizontal deformation") {
    const std::vector<float> topography = Uniform(kThreeByThree, kDepthOfStep10);
    const std::vector<InstantVal2d> flat = Snapshots({Uniform(kThreeByThree, 0.0F)});
    const auto together = Filtered(kThreeByThree, topography, flat, 7, kEnclosing,
                                   Snapshots({Uniform(kEnclosing, 1.0F)}), Snapshots({Uniform(kEnclosing, 0.0F)}));
    const auto apart = Filtered(kThreeByThree, topography, flat, 7, kEnclosing, Snapshots({Uniform(kEnclosing, 0.25F)}),
                                Snapshots({Uniform(kEnclosing, 0.75F)}));
    for (int at = 0; at < 9; ++at) {
        CHECK(BitsOf(apart[0].val[at]) == BitsOf(together[0].val[at]));
    }
}

TEST_CASE("without a parent number neither the parent's snapshots nor its geometry play a part") {
    const std::vector<float> topography = Uniform(kThreeByThree, kDepthOfStep10);
    const std::vector<InstantVal2d> uplift = Snapshots({Uniform(kThreeByThree, 1.0F)});
    const auto alone = Filtered(kThreeByThree, topography, uplift);
    const std::vector<InstantVal2d> high = Snapshots({Uniform(kEnclosing, 1e6F)});
    // 0 and negative numbers: no parent. Missing snapshots are then not missed.
    for (const int parentNo : {0, -1, std::numeric_limits<int>::min()}) {
        CAPTURE(parentNo);
        const auto present = Filtered(kThreeByThree, topography, uplift, parentNo, kEnclosing, high, high);
        const auto missing = Filtered(kThreeByThree, topography, uplift, parentNo, kEnclosing, {}, {});
        for (int at = 0; at < 9; ++at) {
            CHECK(BitsOf(present[0].val[at]) == BitsOf(alone[0].val[at]));
            CHECK(BitsOf(missing[0].val[at]) == BitsOf(alone[0].val[at]));
        }
    }
}

TEST_CASE("each snapshot is filtered by itself with the parent's snapshot of the same number") {
    const std::vector<float> topography = Uniform(kThreeByThree, kDepthOfStep10);
    const std::vector<std::vector<float>> own = {Uniform(kThreeByThree, 1.0F), Uniform(kThreeByThree, -0.5F),
                                                 Uniform(kThreeByThree, 0.0F)};
    const std::vector<std::vector<float>> outer = {Uniform(kEnclosing, 0.0F), Uniform(kEnclosing, 2.0F),
                                                   Uniform(kEnclosing, 0.1F)};
    const std::vector<InstantVal2d> still = Snapshots({outer[0], outer[0], outer[0]});
    const auto together = Filtered(kThreeByThree, topography, Snapshots(own), 1, kEnclosing, Snapshots(outer), still);
    REQUIRE(together.size() == 3);
    for (std::size_t k = 0; k < 3; ++k) {
        const auto alone = Filtered(kThreeByThree, topography, Snapshots({own[k]}), 1, kEnclosing,
                                    Snapshots({outer[k]}), Snapshots({outer[0]}));
        for (int at = 0; at < 9; ++at) {
            CAPTURE(k);
            CAPTURE(at);
            CHECK(BitsOf(together[k].val[at]) == BitsOf(alone[0].val[at]));
        }
    }
}

TEST_CASE("a grid without columns or rows is left alone") {
    const float values[] = {1.0F, 2.0F};
    const float topography[] = {-100.0F, -100.0F};
    for (const auto& size : {std::pair(0, 2), std::pair(2, 0), std::pair(-1, -2)}) {
        CAPTURE(size.first);
        CAPTURE(size.second);
        float result[] = {3.0F, 4.0F};
        tidora::FilterUplift({{size.first, size.second, 0.0, 0.0, 10.0F}, values}, nullptr, topography, result);
        CHECK(result[0] == 3.0F);
        CHECK(result[1] == 4.0F);
    }
}

TEST_CASE("a region without snapshots needs nothing else to be filtered") {
    Region region;
    region.Set2dStruct(3, 3, 0.0, 0.0, 10.0);
    CHECK(region.KajiuraFilterNesting(nullptr, 1, 0, 0, 0.0, 0.0, 1.0F, {}, {}) == 1);
    CHECK(region.instants.empty());
}

TEST_CASE("a sample on the last column lies outside even where the division is inexact") {
    // 49 * (1 / 49) is less than 1 in double precision: a reciprocal would move the node into the first cell.
    const FilterGrid grid = {2, 2, 0.0, 0.0, 49.0F};
    const std::vector<float> topography = {0.0F, 0.0F, 0.0F, -196.0F};  // the far corner, step 49
    const auto filtered = Filtered(grid, topography, Snapshots({{0.0F, 0.0F, 0.0F, 1000.0F}}));
    CHECK(filtered[0].val[3] == 0.0F);
}

TEST_CASE("the work arrays hold the unfiltered snapshot and the sum of the parent's") {
    Region region;
    region.Set2dStruct(2, 1, 0.0, 0.0, 10.0);
    region.instants = Snapshots({{1.0F, 2.0F}, {3.0F, 4.0F}});
    region.valWork = new float[2]();
    std::vector<float> parentWork = {7.0F, 7.0F};
    region.parentValWork = parentWork.data();
    const std::vector<float> topography = {-50.0F, -50.0F};
    const std::vector<InstantVal2d> a = Snapshots({{0.5F, 0.25F}, {10.0F, 20.0F}});
    const std::vector<InstantVal2d> b = Snapshots({{0.0F, 0.0F}, {100.0F, 200.0F}});

    CHECK(region.KajiuraFilterNesting(topography.data(), 1, 1, 2, 0.0, 0.0, 10.0F, a, b) == 1);
    CHECK(region.valWork[0] == 3.0F);
    CHECK(region.valWork[1] == 4.0F);
    CHECK(parentWork == std::vector<float>{110.0F, 220.0F});

    // No parent's number: filled with zeros as long as the parent has columns, and left alone otherwise.
    CHECK(region.KajiuraFilterNesting(topography.data(), 0, 1, 2, 0.0, 0.0, 10.0F, a, b) == 1);
    CHECK(parentWork == std::vector<float>{0.0F, 0.0F});
    parentWork = {7.0F, 7.0F};
    CHECK(region.KajiuraFilterNesting(topography.data(), 0, 0, 2, 0.0, 0.0, 10.0F, a, b) == 1);
    CHECK(parentWork == std::vector<float>{7.0F, 7.0F});
    region.FreeVecMem();
}

TEST_CASE("a filtered point does not feed the next one") {
    // With one raised node every point sees 1 m times the weight of that node, filtered neighbours notwithstanding.
    const FilterGrid grid = {9, 9, 0.0, 0.0, 10.0F};
    std::vector<float> uplift = Uniform(grid, 0.0F);
    uplift[4 * 9 + 4] = 1.0F;
    const auto filtered = Filtered(grid, Uniform(grid, kDepthOfStep10), Snapshots({uplift}));
    for (int ix = 0; ix < 9; ++ix) {
        for (int iy = 0; iy < 9; ++iy) {
            CAPTURE(ix);
            CAPTURE(iy);
            CHECK(static_cast<double>(filtered[0].val[ix * 9 + iy]) ==
                  doctest::Approx(Weight(4 - ix, 4 - iy)).epsilon(1e-5));  // eleven terms in single precision
        }
    }
}

TEST_CASE("a sample between four nodes is interpolated between them") {
    // Step 5 m on a 10 m grid: half the samples lie between nodes. The uplift is bilinear, x y, so that the
    // interpolation is exact and the sum depends on where the cells and weights were put.
    const FilterGrid grid = {31, 31, 0.0, 0.0, 10.0F};
    std::vector<float> uplift = Uniform(grid, 0.0F);
    for (int ix = 0; ix < 31; ++ix) {
        for (int iy = 0; iy < 31; ++iy) {
            uplift[static_cast<std::size_t>(ix * 31 + iy)] = 1e-4F * static_cast<float>(100 * ix * iy);
        }
    }
    std::vector<float> topography = Uniform(grid, 0.0F);
    topography[14 * 31 + 16] = -20.0F;
    const auto filtered = Filtered(grid, topography, Snapshots({uplift}));
    const double expected = WeightedSum([](int i, int j) { return 1e-4 * (140.0 + 5.0 * i) * (160.0 + 5.0 * j); });
    CHECK(static_cast<double>(filtered[0].val[14 * 31 + 16]) == doctest::Approx(expected).epsilon(kSumTolerance));
}
