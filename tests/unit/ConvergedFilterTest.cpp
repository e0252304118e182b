// The converged filter on grids of every kind: parents, degrees, land, nothing to filter, absurd numbers.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/ConvergedLattice.h"
#include "reference/ConvergedCase.h"
#include "reference/ConvergedReference.h"

using tidora::RegularGrid;
using tidora::reference::ConvergedReference;
using tidora::reference::UpliftField;

namespace {

using Random = std::mt19937;

double Between(Random& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}
std::size_t Count(Random& random, std::size_t low, std::size_t high) {
    return std::uniform_int_distribution<std::size_t>(low, high)(random);
}

UpliftField RandomField(Random& random, const RegularGrid& grid) {
    UpliftField field = UniformField(grid, 0.0F);
    for (float& value : field.values) {
        value = static_cast<float>(Between(random, -1.0, 1.0));
    }
    return field;
}

/// Depths around the spacing, in metres, with land and shallow water.
std::vector<float> RandomTopography(Random& random, const RegularGrid& grid, double spacing) {
    std::vector<float> topography(grid.nx * grid.ny);
    for (float& value : topography) {
        const double kind = Between(random, 0.0, 1.0);
        value = static_cast<float>(kind < 0.1   ? Between(random, -10.0, 100.0)
                                   : kind < 0.9 ? -spacing * std::exp(Between(random, -3.0, 1.5))
                                                : -spacing * std::exp(Between(random, 1.5, 6.0)));
    }
    return topography;
}

/// Largest difference from the literal version, of an uplift of up to 1 m.
double DifferenceFromReference(const UpliftField& own, const UpliftField* parent, bool isGeographic,
                               const std::vector<float>& topography) {
    const std::vector<float> surface = Converged(own, parent, isGeographic, topography);
    const std::vector<double> expected = ConvergedReference(own, parent, isGeographic, topography);
    double largest = 0.0;
    for (std::size_t at = 0; at < surface.size(); ++at) {
        const double difference = std::abs(static_cast<double>(surface[at]) - expected[at]);
        largest = std::isnan(difference) ? HUGE_VAL : std::max(largest, difference);
    }
    return largest;
}

/// Largest difference between two surfaces.
double Difference(const std::vector<float>& a, const std::vector<float>& b) {
    REQUIRE(a.size() == b.size());
    double largest = 0.0;
    for (std::size_t at = 0; at < a.size(); ++at) {
        const double difference = std::abs(static_cast<double>(a[at]) - static_cast<double>(b[at]));
        largest = std::isnan(difference) ? HUGE_VAL : std::max(largest, difference);
    }
    return largest;
}

/// Nodes [ix, ix + nx) and [iy, iy + ny) of a field.
UpliftField Part(const UpliftField& whole, std::size_t ix, std::size_t iy, std::size_t nx, std::size_t ny) {
    const RegularGrid& grid = whole.grid;
    UpliftField part = UniformField({nx, ny, grid.west + static_cast<double>(ix) * grid.spacing,
                                     grid.south + static_cast<double>(iy) * grid.spacing, grid.spacing},
                                    0.0F);
    for (std::size_t row = 0; row < ny; ++row) {
        std::copy_n(&whole.values[(iy + row) * grid.nx + ix], nx, &part.values[row * nx]);
    }
    return part;
}

bool HasOnlyPlusZeros(const std::vector<float>& values) {
    return std::all_of(values.begin(), values.end(), [](float value) { return value == 0.0F && !std::signbit(value); });
}

}  // namespace

TEST_CASE("the converged filter agrees with its literal version on the plane, with a parent of any grid and without") {
    double largest = 0.0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        Random random(seed);
        const double spacing = std::exp(Between(random, 4.0, 8.0));
        const RegularGrid grid = {Count(random, 1, 9), Count(random, 1, 9), Between(random, -1e6, 1e6),
                                  Between(random, -1e6, 1e6), spacing};
        const double outerSpacing = spacing * std::exp(Between(random, -1.0, 1.5));
        const RegularGrid outer = {Count(random, 1, 12), Count(random, 1, 12),
                                   grid.west + spacing * Between(random, -12.0, 12.0),
                                   grid.south + spacing * Between(random, -12.0, 12.0), outerSpacing};
        const UpliftField own = RandomField(random, grid);
        const UpliftField parent = RandomField(random, outer);
        const std::vector<float> topography = RandomTopography(random, grid, spacing);
        CAPTURE(seed);
        const double alone = DifferenceFromReference(own, nullptr, false, topography);
        const double nested = DifferenceFromReference(own, &parent, false, topography);
        CHECK(alone < 1e-6);
        CHECK(nested < 1e-6);
        largest = std::max({largest, alone, nested});
    }
    MESSAGE("converged filter against its literal version on the plane: ", largest, " of the largest uplift");
}

TEST_CASE("the converged filter agrees with its literal version on degrees, date line and poles and whole turns too") {
    double largest = 0.0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Random random(seed);
        const bool isTurn = seed % 3 == 0;
        const double spacing = isTurn ? 30.0 : std::exp(Between(random, -3.0, 3.0));
        // Of whole turns: as many columns as it takes, one more, or two more.
        const std::size_t nx = isTurn ? 12 + seed % 9 / 3 : Count(random, 1, 7);
        const RegularGrid grid = {nx, Count(random, 1, 4), Between(random, -200.0, 200.0),
                                  std::min(Between(random, -90.0, 89.0), 90.0 - 3.0 * spacing), spacing};
        const double outerSpacing = seed % 4 == 0 ? 40.0 : spacing * std::exp(Between(random, -1.0, 1.0));
        const RegularGrid outer = {
            seed % 4 == 0 ? 9 : Count(random, 1, 6), Count(random, 1, 6),
            grid.west + spacing * Between(random, -6.0, 6.0) + 360.0 * Between(random, -2.0, 2.0),
            grid.south + spacing * Between(random, -5.0, 1.0), outerSpacing};
        UpliftField own = RandomField(random, grid);
        for (std::size_t at = 0; isTurn && at < own.values.size(); ++at) {
            own.values[at] = own.values[at / nx * nx + at % nx % 12];  // what stands at both ends is the same
        }
        UpliftField parent = RandomField(random, outer);
        if (seed % 2 == 0) {
            parent.grid.west = grid.west + spacing * Between(random, -6.0, 6.0) + 360.0 * (seed % 5) - 720.0;
        }
        const std::vector<float> topography = RandomTopography(random, grid, 1.1e5 * spacing);
        CAPTURE(seed);
        const double alone = DifferenceFromReference(own, nullptr, true, topography);
        const double nested = DifferenceFromReference(own, &parent, true, topography);
        CHECK(alone < 1e-6);
        CHECK(nested < 1e-6);
        largest = std::max({largest, alone, nested});
    }
    MESSAGE("converged filter against its literal version on degrees: ", largest, " of the largest uplift");
}

TEST_CASE("a parent that the own grid is cut from makes the two one grid") {
    Random random(8);
    const UpliftField whole = RandomField(random, {90, 80, -3e4, 5e5, 700.0});
    const UpliftField own = Part(whole, 31, 22, 25, 30);
    double largest = 0.0;
    for (const float depth : {150.0F, 700.0F, 2000.0F, 9000.0F, 1e6F}) {
        const std::vector<float> ofWhole =
            Converged(whole, nullptr, false, std::vector<float>(whole.values.size(), -depth));
        const std::vector<float> ofOwn = Converged(own, &whole, false, std::vector<float>(own.values.size(), -depth));
        const double difference = Difference(ofOwn, Part({whole.grid, ofWhole}, 31, 22, 25, 30).values);
        CHECK(difference < 1e-6);
        largest = std::max(largest, difference);
    }
    MESSAGE("own grid and parent against the one larger grid: ", largest, " m of 1 m");
}

TEST_CASE("a fine grid in the far corner of a coarse and uniform parent of nine million pixels stays uniform") {
    // A depth is 1/1200 of the parent's pixels, four of which meet here: the rounding of a table of so many is not to
    // show.
    const UpliftField parent = UniformField({3000, 3000, 0.0, 0.0, 36000.0}, 0.7F);
    const UpliftField own = UniformField({12, 9, 36000.0 * 2997.5 - 180.0, 36000.0 * 2997.5 - 120.0, 30.0}, 0.7F);
    const std::vector<float> surface = Converged(own, &parent, false, std::vector<float>(own.values.size(), -30.0F));
    CHECK(Difference(surface, own.values) < 1e-6);
}

TEST_CASE("across the date line it does not matter how a parent counts its longitudes") {
    Random random(9);
    const UpliftField own = RandomField(random, {40, 30, 178.0, -20.0, 0.1});
    UpliftField parent = RandomField(random, {60, 50, 177.0, -21.0, 0.1});
    const std::vector<float> topography(own.values.size(), -6000.0F);
    const std::vector<float> surface = Converged(own, &parent, true, topography);
    CHECK(Difference(surface, Converged(own, nullptr, true, topography)) > 0.01);  // it does play a part
    for (const double turns : {-3.0, -1.0, 1.0, 5.0}) {
        parent.grid.west = 177.0 + 360.0 * turns;
        CHECK(Difference(surface, Converged(own, &parent, true, topography)) < 1e-6);
    }
    // The same on a globe that is cut where the own grid lies.
    UpliftField globe = UniformField({3600, 60, -180.0, -22.0, 0.1}, 0.0F);
    for (std::size_t iy = 0; iy < 50; ++iy) {
        for (std::size_t ix = 0; ix < 60; ++ix) {
            globe.values[(iy + 10) * 3600 + (ix + 3570) % 3600] = parent.values[iy * 60 + ix];
        }
    }
    CHECK(Difference(surface, Converged(own, &globe, true, topography)) < 1e-6);
}

TEST_CASE("a grid of a whole turn goes around, and a column that stands at both its ends counts once") {
    Random random(10);
    const UpliftField globe = RandomField(random, {720, 41, 0.0, 50.0, 0.5});
    const std::vector<float> topography(globe.values.size(), -60000.0F);
    const std::vector<float> surface = Converged(globe, nullptr, true, topography);
    // Turned by a third: the same values there.
    UpliftField turned = globe;
    turned.grid.west = 120.0;
    for (std::size_t iy = 0; iy < 41; ++iy) {
        std::rotate_copy(&globe.values[iy * 720], &globe.values[iy * 720] + 240, &globe.values[iy * 720] + 720,
                         &turned.values[iy * 720]);
    }
    std::vector<float> back = Converged(turned, nullptr, true, topography);
    for (std::size_t iy = 0; iy < 41; ++iy) {
        std::rotate(&back[iy * 720], &back[iy * 720] + 480, &back[iy * 720] + 720);
    }
    CHECK(Difference(surface, back) < 1e-6);
    // With its first column again at the end.
    UpliftField closed = UniformField({721, 41, 0.0, 50.0, 0.5}, 0.0F);
    std::vector<float> expected(closed.values.size());
    for (std::size_t iy = 0; iy < 41; ++iy) {
        for (std::size_t ix = 0; ix < 721; ++ix) {
            closed.values[iy * 721 + ix] = globe.values[iy * 720 + ix % 720];
            expected[iy * 721 + ix] = surface[iy * 720 + ix % 720];
        }
    }
    const std::vector<float> deep(closed.values.size(), -60000.0F);
    CHECK(Difference(expected, Converged(closed, nullptr, true, deep)) < 1e-6);
    // A column less, and there is a gap.
    const UpliftField open = Part(UniformField(globe.grid, 1.0F), 0, 0, 719, 41);
    const std::vector<float> gap = Converged(open, nullptr, true, std::vector<float>(open.values.size(), -60000.0F));
    CHECK(gap[20 * 719] < 0.9F);
    CHECK(gap[20 * 719 + 300] == 1.0F);
}

TEST_CASE("at a pole the lattice is a whole turn wide and no wider") {
    const UpliftField globe = UniformField({360, 21, 0.0, 70.0, 1.0}, 1.0F);
    UpliftField striped = globe;
    for (std::size_t at = 0; at < striped.values.size(); ++at) {
        striped.values[at] = at % 2 == 0 ? 1.0F : -1.0F;
    }
    const std::vector<float> topography(globe.values.size(), -4000.0F);
    const std::vector<float> surface = Converged(globe, nullptr, true, topography);
    const std::vector<float> flat = Converged(striped, nullptr, true, topography);
    for (std::size_t ix = 0; ix < 360; ++ix) {
        // 17.8 km of the lattice are less than half a row: it lies in the last one.
        CHECK(std::abs(surface[20 * 360 + ix] - 1.0F) < 1e-6F);
        CHECK(std::abs(flat[20 * 360 + ix]) < 2e-2F);
        CHECK(surface[10 * 360 + ix] == 1.0F);
    }
}

TEST_CASE("land and shallow water keep their uplift, which is sampled like any other") {
    const RegularGrid grid = {21, 21, 0.0, 0.0, 1000.0};
    UpliftField field = UniformField(grid, 0.0F);
    std::vector<float> topography(field.values.size(), -1000.0F);
    for (std::size_t row = 0; row < 21; ++row) {
        for (std::size_t ix = 0; ix < 10; ++ix) {
            field.values[row * 21 + ix] = 1.0F;
            topography[row * 21 + ix] = row % 3 == 0 ? 300.0F : row % 3 == 1 ? 0.0F : -10.0F;
        }
    }
    const std::vector<float> surface = Converged(field, nullptr, false, topography);
    for (std::size_t row = 0; row < 21; ++row) {
        CHECK(surface[row * 21 + 9] == 1.0F);
    }
    CHECK(surface[10 * 21 + 10] > 0.2F);
    CHECK(surface[10 * 21 + 10] < 0.5F);
}

TEST_CASE("where there is no uplift within reach the surface is exactly 0") {
    const RegularGrid grid = {60, 60, 0.0, 0.0, 1000.0};
    UpliftField own = UniformField(grid, 0.0F);
    const std::vector<float> topography(own.values.size(), -2000.0F);
    CHECK(HasOnlyPlusZeros(Converged(own, nullptr, false, topography)));
    UpliftField parent = UniformField({80, 80, -10000.0, -10000.0, 1000.0}, 0.0F);
    CHECK(HasOnlyPlusZeros(Converged(own, &parent, false, topography)));
    // The lattice of 2000 m ends 8880 m away: it reaches the pixels of the ninth node and no more.
    own.values[30 * 60 + 30] = 1.0F;
    const std::vector<float> surface = Converged(own, &parent, false, topography);
    for (std::size_t iy = 0; iy < 60; ++iy) {
        for (std::size_t ix = 0; ix < 60; ++ix) {
            const bool isNear = ix >= 21 && ix <= 39 && iy >= 21 && iy <= 39;
            CHECK((surface[iy * 60 + ix] == 0.0F) >= !isNear);
        }
    }
    CHECK(surface[30 * 60 + 31] > 0.0F);
    // The parent's own uplift inside the own grid does not count.
    own.values[30 * 60 + 30] = 0.0F;
    parent.values[40 * 80 + 40] = 1.0F;
    CHECK(HasOnlyPlusZeros(Converged(own, &parent, false, topography)));
}

TEST_CASE("a lattice within the node's own pixel leaves the value as it is") {
    Random random(12);
    const UpliftField field = RandomField(random, {9, 9, 0.0, 0.0, 1e5});
    const std::vector<float> topography(field.values.size(), -11000.0F);
    CHECK(Difference(field.values, Converged(field, nullptr, false, topography)) == 0.0);
}

TEST_CASE("absurd depths and spacings neither hang nor read outside of a grid") {
    Random random(13);
    for (const bool isGeographic : {false, true}) {
        for (const double spacing : {1e-9, 1e-300, 0.1, 1e30}) {
            for (const float depth :
                 {10.5F, 7000.0F, 1e30F, std::numeric_limits<float>::max(), std::numeric_limits<float>::infinity()}) {
                CAPTURE(isGeographic);
                CAPTURE(spacing);
                CAPTURE(depth);
                const UpliftField own = RandomField(random, {7, 5, 10.0, 40.0, spacing});
                const UpliftField parent = RandomField(random, {3, 4, 370.0, 39.0, 3.0 * spacing});
                const UpliftField far = RandomField(random, {3, 4, 1e17, -1e17, 1.0});
                const std::vector<float> topography(own.values.size(), -depth);
                for (const UpliftField* outer : {static_cast<const UpliftField*>(nullptr), &parent, &far}) {
                    for (const float value : Converged(own, outer, isGeographic, topography)) {
                        CHECK(std::abs(value) <= 1.0F);  // also not NaN
                    }
                }
            }
        }
    }
}

TEST_CASE("rows are filtered alike in one call and in many, and only those that were asked for") {
    Random random(14);
    const UpliftField own = RandomField(random, {33, 29, 100.0, 20.0, 0.02});
    const UpliftField parent = RandomField(random, {20, 20, 99.5, 19.5, 0.1});
    const std::vector<float> topography = RandomTopography(random, own.grid, 2000.0);
    const std::vector<float> whole = Converged(own, &parent, true, topography);
    const tidora::UpliftTable table(own.grid, own.values.data());
    const tidora::UpliftTable outer(parent.grid, parent.values.data());
    const tidora::ConvergedFilter filter(table, &outer, true);
    std::vector<float> parts(own.values.size(), -999.0F);
    for (const auto& [first, end] : {std::pair(7, 20), std::pair(0, 1), std::pair(20, 28), std::pair(1, 7)}) {
        filter.FilterRows(static_cast<std::size_t>(first), static_cast<std::size_t>(end), own.values.data(),
                          topography.data(), parts.data());
    }
    const std::size_t done = std::size_t{28} * 33;
    CHECK(std::memcmp(whole.data(), parts.data(), done * sizeof(float)) == 0);
    CHECK(std::count(parts.begin() + static_cast<std::ptrdiff_t>(done), parts.end(), -999.0F) == 33);
}

TEST_CASE("what is filtered stays between the least and the greatest uplift, since no weight is negative") {
    for (const auto& row : tidora::kCellDensity) {
        for (const double density : row) {
            CHECK(density >= 0.0);
        }
    }
}

TEST_CASE("a grid without columns or rows has nothing to filter, and as a parent counts as 0") {
    const UpliftField none = UniformField({0, 5, 0.0, 0.0, 10.0}, 0.0F);
    CHECK(Converged(none, nullptr, false, {}).empty());
    const UpliftField own = UniformField({3, 3, 0.0, 0.0, 10.0}, 1.0F);
    const std::vector<float> topography(9, -30.0F);
    CHECK(Difference(Converged(own, &none, true, topography), Converged(own, nullptr, true, topography)) == 0.0);
}
