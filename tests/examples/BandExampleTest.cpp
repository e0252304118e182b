#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "ProgramRun.h"
#include "SampledUplift.h"
#include "SeriesFiles.h"

namespace {

const StartTimes kStarts = {0};

// The band: 2 m high, 6000 m wide, its line 6000 m inside the last column of 41 that are 500 m apart.
constexpr int kColumns = 41;
constexpr int kLineColumn = 28;
constexpr double kHeight = 2.0;
constexpr double kWidth = 6000.0;
constexpr double kSpacing = 500.0;

const ExampleRun& FlatRun() {
    static const ExampleRun run({"band"}, "TdrConf_flat.txt");
    return run;
}

const ExampleRun& CosineRun() {
    static const ExampleRun run({"band"}, "TdrConf_cosine.txt");
    return run;
}

double DistanceFromLine(int ix) {
    return std::abs(ix - kLineColumn) * kSpacing;
}

/// Values of a column of the sea surface, south to north.
std::vector<float> Column(const SeriesGrid& grid, int ix) {
    std::vector<float> values;
    for (int iy = 0; iy < grid.ny; ++iy) {
        values.push_back(grid.values[grid.Index(ix, iy)]);
    }
    return values;
}

}  // namespace

TEST_SUITE_BEGIN("band");

TEST_CASE("both configurations of the band succeed, with nothing deformed") {
    for (const std::string name : {"flat", "cosine"}) {
        CAPTURE(name);
        const ExampleRun& run = name == "flat" ? FlatRun() : CosineRun();
        CHECK(run.result.exitStatus == 0);
        CHECK(run.result.err.empty());
        CHECK(CountLinesFrom(run.result.out, "Successful Completion. ( Tidora Done. )") == 1);
        CHECK(CountLinesFrom(run.result.out, ">>>>> Linear Wave Height Calc") == 1);
        CHECK(CountLinesFrom(run.result.out, "1/1 Completed  Max Value Each ELEM. : 0 Max Value Sum.: 0") == 1);
        CHECK(CountProgressLines(run.result.out, 1) == 1);
        CHECK(CountLinesFrom(run.result.out, ">>>>>>>>>>>>>>>>>> Write File : out/" + name + "/") == 2);
        const std::string out = run.copy.At("out/" + name);
        CHECK(FileNames(out) == SeriesFileNames({"Tdr_basin", "VRT_basin"}, kStarts));
        CHECK(FileBytes(out + "/Tdr_basin.txt") == ListText("out/" + name, "Tdr_basin", kStarts, 0));
        CHECK(FileBytes(out + "/VRT_basin.txt") == ListText("out/" + name, "VRT_basin", kStarts, 0));
        const SeriesGrid floor = ReadSeriesGrid(out + "/VRT_basin_0000s.bin");
        CHECK(std::all_of(floor.values.begin(), floor.values.end(), [](float v) { return v == 0.0F; }));
        CHECK(floor.orgX == 100000.0);
        CHECK(floor.orgY == 500000.0);
        CHECK(floor.nx == kColumns);
        CHECK(floor.ny == 21);
        CHECK(floor.dx == 500.0F);
    }
}

TEST_CASE("the flat band has its full height up to half its width from its line, and none beyond") {
    const SeriesGrid grid = ReadSeriesGrid(FlatRun().copy.At("out/flat/Tdr_basin_0000s.bin"));
    REQUIRE(grid.nx == kColumns);
    for (int ix = 0; ix < grid.nx; ++ix) {
        CAPTURE(ix);
        // Every co-ordinate here is a whole number of metres: the distances are exact, the border is inside.
        const float expected = DistanceFromLine(ix) <= kWidth / 2.0 ? 2.0F : 0.0F;
        CHECK(Column(grid, ix) == std::vector<float>(21, expected));
    }
}

TEST_CASE("the cosine band is as high as half a cosine more than its mean") {
    const SeriesGrid grid = ReadSeriesGrid(CosineRun().copy.At("out/cosine/Tdr_basin_0000s.bin"));
    REQUIRE(grid.nx == kColumns);
    const double twoPi = 8.0 * std::atan(1.0);
    for (int ix = 0; ix < grid.nx; ++ix) {
        CAPTURE(ix);
        const double distance = DistanceFromLine(ix);
        const bool isInside = distance <= kWidth / 2.0;
        const double expected = isInside ? 0.5 * kHeight * (std::cos(twoPi * distance / kWidth) + 1.0) : 0.0;
        for (const float value : Column(grid, ix)) {
            // Rounding to single precision: half a unit in the last place below 2 m is 2^-24 m.
            CHECK(std::abs(static_cast<double>(value) - expected) <= 0.6e-7);
        }
    }
    CHECK(Column(grid, kLineColumn) == std::vector<float>(21, 2.0F));
    CHECK(Column(grid, kLineColumn - 7) == std::vector<float>(21, 0.0F));
    CHECK(Column(grid, kLineColumn + 7) == std::vector<float>(21, 0.0F));
}

TEST_CASE("the README of the band shows the figures of both runs") {
    const std::string readme = FileBytes(FlatRun().copy.At("README.md"));
    for (const std::string name : {"flat", "cosine"}) {
        const ExampleRun& run = name == "flat" ? FlatRun() : CosineRun();
        const SummedGrid surface = SumOfSeries(run.copy.At("out/" + name), "Tdr_basin", kStarts);
        // Thirteen columns of 21 nodes under the flat band; the cosine raises them by half of 2 m in the mean, and
        // twelve widths of a column by its whole period.
        const double columns = name == "flat" ? 13.0 * 2.0 : 12.0 * 1.0;
        CHECK(FiguresOf(surface).raisedVolume == doctest::Approx(columns * 21.0 * 500.0 * 500.0).epsilon(1e-7));
        const std::string row = FigureRow(name + "/Tdr_basin", surface, FiguresOf(surface), 0);
        CAPTURE(row);
        CHECK(readme.find(row) != std::string::npos);
    }
}

TEST_SUITE_END();
