// The summed-area table: exact sums, whatever the size of the numbers.

#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <random>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/UpliftTable.h"

using tidora::RegularGrid;
using tidora::UpliftTable;

namespace {

constexpr RegularGrid kGrid = {13, 7, 0.0, 0.0, 1.0};

double At(const UpliftTable& table, std::size_t ix, std::size_t iy) {
    return table.Sums()[iy * table.Stride() + ix];
}

}  // namespace

TEST_CASE("an entry is the sum of the columns before it in the rows before it") {
    std::mt19937 random(1);
    std::vector<float> values(13 * 7);
    for (float& value : values) {
        value = static_cast<float>(std::uniform_int_distribution<int>(-1000, 1000)(random)) / 64.0F;
    }
    const UpliftTable table(kGrid, values.data());
    for (std::size_t iy = 0; iy <= 7; ++iy) {
        for (std::size_t ix = 0; ix <= 13; ++ix) {
            double sum = 0.0;
            for (std::size_t row = 0; row < iy; ++row) {
                for (std::size_t column = 0; column < ix; ++column) {
                    sum += static_cast<double>(values[row * 13 + column]);
                }
            }
            CHECK(At(table, ix, iy) == sum);  // 64ths add up exactly
        }
    }
}

TEST_CASE("entries are exact: the same whichever way they are summed, for numbers of any size") {
    std::mt19937 random(2);
    for (const double size : {1e-44, 1e-30, 1e-3, 1.0, 1e6, 1e37}) {
        CAPTURE(size);
        std::vector<float> values(13 * 7);
        for (float& value : values) {
            value = static_cast<float>(size * std::uniform_real_distribution<double>(-1.0, 1.0)(random));
        }
        values[50] = static_cast<float>(size);
        const UpliftTable table(kGrid, values.data());
        for (std::size_t iy = 0; iy < 7; ++iy) {
            for (std::size_t ix = 0; ix < 13; ++ix) {
                const double byColumns =
                    (At(table, ix + 1, iy + 1) - At(table, ix, iy + 1)) - (At(table, ix + 1, iy) - At(table, ix, iy));
                const double byRows =
                    (At(table, ix + 1, iy + 1) - At(table, ix + 1, iy)) - (At(table, ix, iy + 1) - At(table, ix, iy));
                CHECK(byColumns == byRows);
                // A sum of 91 sizes is below 2^7 of the largest, half a quantum 2^(7 - 51) / 2 of it.
                CHECK(std::abs(byRows - static_cast<double>(values[iy * 13 + ix])) <= 0x1p-45 * size);
            }
        }
    }
}

TEST_CASE("the box of an uplift holds every node that is not 0 and no line more") {
    std::vector<float> values(13 * 7, 0.0F);
    values[2] = -0.0F;
    const UpliftTable none(kGrid, values.data());
    CHECK(none.IsFlat());
    CHECK(none.Raised().east == 0.0);
    values[2 * 13 + 9] = -1.0F;
    values[4 * 13 + 3] = 1e-45F;
    const UpliftTable table(kGrid, values.data());
    CHECK_FALSE(table.IsFlat());
    CHECK(table.Raised().west == 3.0);
    CHECK(table.Raised().east == 10.0);
    CHECK(table.Raised().south == 2.0);
    CHECK(table.Raised().north == 5.0);
}
