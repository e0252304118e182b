// The band of raised water.

#include <cmath>
#include <limits>
#include <vector>

#include <doctest/doctest.h>

#include "config/ConfReader.h"
#include "grid/InstantVal2d.h"
#include "linear/Linear.h"
#include "unit/PrintedText.h"

using tidora::InstantVal2d;
using tidora::Linear;
using tidora::PARAM_LINEAR;

namespace {

struct Grid {
    int nx = 0;
    int ny = 0;
    double orgX = 0.0;
    double orgY = 0.0;
    float dx = 1.0F;
};

Linear Band(int mode, double height, double diameter) {
    PARAM_LINEAR param;
    param.mode = mode;
    param.height = height;
    param.diameter = diameter;
    return Linear(param);
}

InstantVal2d Zeros(std::size_t count) {
    InstantVal2d snapshot;
    snapshot.Reset(count);
    return snapshot;
}

// The first snapshot after the band was added to zeros.
std::vector<float> Raised(Linear linear, const Grid& grid) {
    std::vector<InstantVal2d> instants = {Zeros(static_cast<std::size_t>(grid.nx * grid.ny))};
    const PrintedText printed;
    const bool success = linear.LinearTdr2D(grid.nx, grid.ny, grid.orgX, grid.orgY, grid.dx, nullptr, instants);
    CHECK(success);
    CHECK(printed.Out().empty());
    CHECK(printed.Err().empty());
    return {instants[0].val, instants[0].val + instants[0].num};
}

// The band by its definition, column by column: the line lies one band width inside the east edge and runs north over
// the whole grid, so that the distance of a node is its distance in x.
float Expected(const Grid& grid, int mode, double height, double diameter, int ix) {
    const double line = static_cast<double>(static_cast<float>(grid.nx - 1) * grid.dx) + grid.orgX - diameter;
    const double distance = std::abs(static_cast<double>(static_cast<float>(ix) * grid.dx) + grid.orgX - line);
    if (distance > 0.5 * diameter) {
        return 0.0F;
    }
    return mode == 0
               ? static_cast<float>(height)
               : static_cast<float>(0.5 * height *
                                    (std::sin(6.283185307179586 / diameter * distance + 1.5707963267948966) + 1.0));
}

}  // namespace

TEST_CASE("a linear calculation without a record is off and has no width") {
    const Linear linear;
    CHECK(linear.mode == -1);
    CHECK(linear.height == 0.0);
    CHECK(linear.diameter == 0.0);
    CHECK(std::int32_t{Linear::FILE_MAX_PATH} == 1023);
}

TEST_CASE("a linear calculation copies its record") {
    const Linear linear = Band(1, 2.5, 300.0);
    CHECK(linear.mode == 1);
    CHECK(linear.height == 2.5);
    CHECK(linear.diameter == 300.0);
    CHECK(Linear(PARAM_LINEAR{}).diameter == 1.0);  // a record's own default, other than that of Linear()
}

TEST_CASE("the flat band raises every node within half its width of the line and none beyond") {
    // Line at x = 100 + 100 - 40 = 160, band from 140 to 180: columns 4 to 8, both edges included.
    const Grid grid = {11, 3, 100.0, -50.0, 10.0F};
    const std::vector<float> raised = Raised(Band(0, 2.5, 40.0), grid);
    for (int ix = 0; ix < 11; ++ix) {
        for (int iy = 0; iy < 3; ++iy) {
            CAPTURE(ix);
            CAPTURE(iy);
            CHECK(raised[static_cast<std::size_t>(ix * 3 + iy)] == (ix >= 4 && ix <= 8 ? 2.5F : 0.0F));
        }
    }
}

TEST_CASE("a node exactly half a width from the line is included and one just beyond is not") {
    // Spacing 1, width 4: line at column 16, edges at 14 and 18.
    const Grid grid = {21, 2, 0.0, 0.0, 1.0F};
    const std::vector<float> exact = Raised(Band(0, 1.0, 4.0), grid);
    CHECK(exact[14 * 2] == 1.0F);
    CHECK(exact[18 * 2] == 1.0F);
    CHECK(exact[13 * 2] == 0.0F);
    CHECK(exact[19 * 2] == 0.0F);
    const double d = 0.01;
    // Narrower by d the line lies d further east: edges at 14 + 1.5 d and 18 + 0.5 d.
    const std::vector<float> narrower = Raised(Band(0, 1.0, 4.0 - d), grid);
    CHECK(narrower[14 * 2] == 0.0F);
    CHECK(narrower[15 * 2] == 1.0F);
    CHECK(narrower[18 * 2] == 1.0F);
    CHECK(narrower[19 * 2] == 0.0F);
}

TEST_CASE("the cosine band is exactly its height on the line and half of it at a quarter of the width") {
    const Grid grid = {41, 2, 1000.0, 500.0, 5.0F};
    const double height = 3.3;
    const std::vector<float> raised = Raised(Band(1, height, 80.0), grid);
    const auto column = [&raised](int ix) { return raised[static_cast<std::size_t>(ix * 2)]; };
    CHECK(column(24) == static_cast<float>(height));
    CHECK(column(20) == static_cast<float>(0.5 * height));
    CHECK(column(28) == static_cast<float>(0.5 * height));
    // At the edges the sine of 3/2 pi in double: off by some 1e-16.
    CHECK(std::abs(column(16)) < 1e-15F);
    CHECK(std::abs(column(32)) < 1e-15F);
    CHECK(column(15) == 0.0F);
    CHECK(column(33) == 0.0F);
}

TEST_CASE("the band has the same profile in every row and follows its definition") {
    for (const Grid& grid :
         {Grid{60, 7, 0.0, 0.0, 10.0F}, Grid{33, 4, -1234.5, 77.7, 12.5F}, Grid{25, 5, 140.25, 35.5, 0.125F}}) {
        for (const int mode : {0, 1}) {
            CAPTURE(grid.nx);
            CAPTURE(mode);
            // A width with which no node lies near the edges, where rounding decides.
            const double diameter = 7.3 * static_cast<double>(grid.dx);
            const std::vector<float> raised = Raised(Band(mode, 1.7, diameter), grid);
            for (int ix = 0; ix < grid.nx; ++ix) {
                for (int iy = 0; iy < grid.ny; ++iy) {
                    // The distance is the root of a difference of squares as large as those of the row's position: off
                    // by at most 1e-16 of them, which is 1e-8 of the width.
                    const float difference =
                        raised[static_cast<std::size_t>(ix * grid.ny + iy)] - Expected(grid, mode, 1.7, diameter, ix);
                    CHECK(std::abs(difference) < 1e-6F);
                }
            }
        }
    }
}

TEST_CASE("a node whose squared distance rounds below zero gets nothing") {
    // On the line itself the distance is sqrt(py^2 - (Ly py)^2 / Ly^2), which is 0 in exact arithmetic and of either
    // sign when rounded. The written order of operations decides, node by node.
    const Grid grid = {21, 40, 0.0, 35.7, 12.3F};
    const double diameter = 5.0 * static_cast<double>(grid.dx);
    const std::vector<float> raised = Raised(Band(0, 1.0, diameter), grid);
    const double north = (static_cast<double>(static_cast<float>(grid.ny - 1) * grid.dx) + grid.orgY) - grid.orgY;
    const double line = static_cast<double>(static_cast<float>(grid.nx - 1) * grid.dx) + grid.orgX - diameter;
    const double squaredLength = 0.0 * 0.0 + north * north;
    int left = 0;
    for (int ix = 0; ix < grid.nx; ++ix) {
        for (int iy = 0; iy < grid.ny; ++iy) {
            const double px = (static_cast<double>(static_cast<float>(ix) * grid.dx) + grid.orgX) - line;
            const double py = (static_cast<double>(static_cast<float>(iy) * grid.dx) + grid.orgY) - grid.orgY;
            const double t = north * py + 0.0 * px;
            const double distance = std::sqrt(py * py + px * px - t * t / squaredLength);
            const bool within = t >= 0.0 && t <= squaredLength && distance <= 0.5 * diameter;
            CAPTURE(ix);
            CAPTURE(iy);
            CHECK(raised[static_cast<std::size_t>(ix * grid.ny + iy)] == (within ? 1.0F : 0.0F));
            left += std::isnan(distance) ? 1 : 0;
        }
    }
    CHECK(left > 0);  // the grid has such nodes
}

TEST_CASE("a grid of one row has no line and is left unchanged") {
    for (const int mode : {0, 1}) {
        for (const float value : Raised(Band(mode, 5.0, 3.0), {12, 1, 0.0, 0.0, 1.0F})) {
            CHECK(value == 0.0F);
        }
    }
}

TEST_CASE("a profile other than 0 and 1 adds nothing and succeeds") {
    for (const int mode : {2, -1, -7, 100}) {
        CAPTURE(mode);
        for (const float value : Raised(Band(mode, 5.0, 3.0), {12, 4, 0.0, 0.0, 1.0F})) {
            CHECK(value == 0.0F);
        }
    }
}

TEST_CASE("the band is added to the first snapshot only and to what it holds") {
    std::vector<InstantVal2d> instants = {Zeros(22), Zeros(22)};
    for (int k = 0; k < 22; ++k) {
        instants[0].val[k] = static_cast<float>(k);
        instants[1].val[k] = -1.0F;
    }
    CHECK(Band(0, 0.5, 4.0).LinearTdr2D(11, 2, 0.0, 0.0, 1.0F, nullptr, instants));
    for (int k = 0; k < 22; ++k) {
        CAPTURE(k);
        const int ix = k / 2;
        CHECK(instants[0].val[k] == static_cast<float>(k) + (ix >= 4 && ix <= 8 ? 0.5F : 0.0F));
        CHECK(instants[1].val[k] == -1.0F);
    }
}

TEST_CASE("repeated calls add repeatedly") {
    std::vector<InstantVal2d> instants = {Zeros(22)};
    Linear linear = Band(0, 0.25, 4.0);
    for (int call = 1; call <= 3; ++call) {
        CHECK(linear.LinearTdr2D(11, 2, 0.0, 0.0, 1.0F, nullptr, instants));
        CHECK(instants[0].val[6 * 2] == 0.25F * static_cast<float>(call));
        CHECK(instants[0].val[0] == 0.0F);
    }
}

TEST_CASE("the region's value array plays no part") {
    std::vector<float> values(22, 100.0F);
    std::vector<InstantVal2d> instants = {Zeros(22)};
    CHECK(Band(0, 0.5, 4.0).LinearTdr2D(11, 2, 0.0, 0.0, 1.0F, values.data(), instants));
    CHECK(instants[0].val[12] == 0.5F);
    CHECK(values[12] == 100.0F);
}

TEST_CASE("a grid without columns or rows has an empty snapshot and succeeds") {
    CHECK(Raised(Band(0, 1.0, 1.0), {0, 5, 0.0, 0.0, 1.0F}).empty());
    CHECK(Raised(Band(1, 1.0, 1.0), {5, 0, 0.0, 0.0, 1.0F}).empty());
    CHECK(Raised(Band(1, 1.0, 1.0), {0, 0, 0.0, 0.0, 1.0F}).empty());
}

TEST_CASE("a band without width or with one that is not a number raises nothing but the line") {
    const Grid grid = {11, 3, 0.0, 0.0, 1.0F};
    // Width 0: the line is the east edge, and only nodes at distance 0 are within.
    const std::vector<float> none = Raised(Band(0, 1.0, 0.0), grid);
    for (int ix = 0; ix < 10; ++ix) {
        CHECK(none[static_cast<std::size_t>(ix * 3)] == 0.0F);
    }
    CHECK(none[10 * 3] == 1.0F);
    for (const float value : Raised(Band(0, 1.0, -4.0), grid)) {
        CHECK(value == 0.0F);
    }
    for (const float value : Raised(Band(0, 1.0, std::numeric_limits<double>::quiet_NaN()), grid)) {
        CHECK(value == 0.0F);
    }
    for (const float value : Raised(Band(0, 1.0, std::numeric_limits<double>::infinity()), grid)) {
        CHECK(value == 0.0F);
    }
}

TEST_CASE("a band wider than the grid raises what of the grid lies within it") {
    // Line at 10 - 16 = -6, band from -14 to 2: columns 0 to 2.
    const std::vector<float> raised = Raised(Band(0, 1.0, 16.0), {11, 2, 0.0, 0.0, 1.0F});
    for (int ix = 0; ix < 11; ++ix) {
        CHECK(raised[static_cast<std::size_t>(ix * 2)] == (ix <= 2 ? 1.0F : 0.0F));
    }
}
