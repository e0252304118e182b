#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "NestedRun.h"
#include "SampledUplift.h"
#include "okada/DC3D.h"

namespace {

const std::vector<std::string> kRegions = {"parent", "child"};

// A series takes up to 110 additions, each rounded by up to half a unit in the last place: 2^-20 m below 32 m.
constexpr double kSumRounding = 110.0 / (1 << 20);

/// Horizontal displacement of a surface point, m.
struct Shift {
    double east = 0.0, north = 0.0;
};

/// Motion of the floor at a node by one subfault, whose upper edge lies `depth` below it.
Shift ShiftAt(const Subfault& s, double depth, double x, double y) {
    const double rad = std::atan(1.0) / 45.0;
    const double sinStrike = std::sin(s.strike * rad), cosStrike = std::cos(s.strike * rad);
    const double sinRake = std::sin(s.rake * rad), cosRake = std::cos(s.rake * rad);
    const auto along = static_cast<float>((x - s.x) * sinStrike + (y - s.y) * cosStrike);
    const auto across = static_cast<float>(-(x - s.x) * cosStrike + (y - s.y) * sinStrike);
    const auto top = static_cast<float>(depth), dip = static_cast<float>(s.dip);
    const auto length = static_cast<float>(s.length), lowerEdge = static_cast<float>(-s.width);
    const auto strikeSlip = static_cast<float>(s.slip * cosRake), dipSlip = static_cast<float>(s.slip * sinRake);
    const float poissonSolid = 2.0F / 3.0F, zero = 0.0F;
    float ux = 0.0F, uy = 0.0F, uz = 0.0F, d[9] = {};
    int code = 0;
    dc3d_(&poissonSolid, &along, &across, &zero, &top, &dip, &zero, &length, &lowerEdge, &zero, &strikeSlip, &dipSlip,
          &zero, &ux, &uy, &uz, &d[0], &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8], &code);
    const auto a = static_cast<double>(ux), l = static_cast<double>(uy);
    return {a * sinStrike - l * cosStrike, a * cosStrike + l * sinStrike};
}

/// Uplift of a point at rest by the slope that moves below it. Requires: a node inside the grid.
double UpliftBySlope(const InputGrid& topography, const std::vector<Subfault>& subfaults, const SampleNode& node) {
    const int ix = node.ix, iy = node.iy;
    const double gx = (topography.At(ix - 1, iy) - topography.At(ix + 1, iy)) / (2.0 * topography.dx);
    const double gy = (topography.At(ix, iy - 1) - topography.At(ix, iy + 1)) / (2.0 * topography.dx);
    double uplift = 0.0;
    for (const Subfault& s : subfaults) {
        const Shift shift = ShiftAt(s, std::max(0.0, node.topo + s.baseOffset), node.x, node.y);
        uplift += shift.east * gx + shift.north * gy;
    }
    return uplift;
}

}  // namespace

TEST_SUITE_BEGIN("nested");

TEST_CASE("the nested example runs both regions and tells its progress") {
    const ProgramResult& result = NestedRun().result;
    CHECK(result.exitStatus == 0);
    CHECK(result.err.empty());
    CHECK(CountLinesFrom(result.out, "Successful Completion. ( Tidora Done. )") == 1);
    CHECK(CountProgressLines(result.out, 110) == 2 * 110);
    CHECK(CountLinesFrom(result.out, ">>>>> Fault Deform : ../data/tohoku2011_satake_utm54.txt") == 2);
    CHECK(CountLinesFrom(result.out, ">>>>> Initial Wave Height Calc") == 2);
    CHECK(CountLinesFrom(result.out, "maxval = ") == 2);
    CHECK(CountLinesFrom(result.out, ">>>>> Kajiura Filter Calc") == 2);
    CHECK(CountLinesFrom(result.out, ">>>>>>>>>>>>>>>>>> Write File : out/") == 2 * 3 * 9);
    // The first region is read before the regions start, and again as the first step of its own turn.
    CHECK(CountLinesFrom(result.out, ">>>>>>>>>>>>>>>>>> Region Input:../data/tohoku_utm54_5400m.txt") == 2);
    CHECK(CountLinesFrom(result.out, ">>>>>>>>>>>>>>>>>> Region Input:../data/tohoku_utm54_1800m.txt") == 1);
}

TEST_CASE("the nested example leaves three series for each region") {
    const std::string out = NestedRun().copy.At("out");
    const std::vector<std::string> allSeries = {"HRZ_child",  "HRZ_parent", "Tdr_child",
                                                "Tdr_parent", "VRT_child",  "VRT_parent"};
    CHECK(FileNames(out) == SeriesFileNames(allSeries, NestedStarts()));
    for (const std::string& series : allSeries) {
        CAPTURE(series);
        CHECK(FileBytes(out + "/" + series + ".txt") == ListText("out", series, NestedStarts(), 30));
    }
}

TEST_CASE("the grids of the nested example have the geometry of their topographies") {
    for (const std::string kind : {"HRZ", "Tdr", "VRT"}) {
        for (const int start : NestedStarts()) {
            CAPTURE(kind);
            CAPTURE(start);
            const SeriesGrid parent = NestedGrid(kind + "_parent", start);
            CHECK(parent.orgX == 300000.0);
            CHECK(parent.orgY == 3780000.0);
            CHECK(parent.nx == 156);
            CHECK(parent.ny == 174);
            CHECK(parent.dx == 5400.0F);
            const SeriesGrid child = NestedGrid(kind + "_child", start);
            CHECK(child.orgX == 516000.0);
            CHECK(child.orgY == 4050000.0);
            CHECK(child.nx == 196);
            CHECK(child.ny == 196);
            CHECK(child.dx == 1800.0F);
        }
    }
}

TEST_CASE("the vertical deformation of parent and child is the uplift by reciprocity") {
    for (const std::string& region : kRegions) {
        CAPTURE(region);
        const SummedGrid run = NestedSum("VRT_" + region);
        const InputGrid topography = NestedTopography(region);
        const GridFigures figures = FiguresOf(run);
        std::vector<SampleNode> nodes = SampleNodes(topography, 10);
        nodes.push_back(NodeOf(topography, figures.largestX, figures.largestY));
        nodes.push_back(NodeOf(topography, figures.smallestX, figures.smallestY));
        std::vector<double> uplift(nodes.size(), 0.0);
        AddUplift(NestedSubfaults(), nodes, uplift);
        const UpliftComparison comparison = CompareUplift(run, nodes, uplift);
        // The nodes are exact in single precision; what is left is the rounding of the sums and the quadrature.
        CHECK(comparison.largestDifference < 2.0 * kSumRounding);
        CHECK(comparison.raisedByRun > 40.0);
        CHECK(comparison.raisedByRun == doctest::Approx(comparison.raisedByWork).epsilon(1e-4));
    }
}

TEST_CASE("parent and child have the same vertical deformation where their nodes coincide") {
    const SummedGrid parent = NestedSum("VRT_parent");
    const SummedGrid child = NestedSum("VRT_child");
    double largest = 0.0;
    for (int ix = 0; ix < child.nx; ix += 3) {
        for (int iy = 0; iy < child.ny; iy += 3) {
            // The child starts 40 columns and 50 rows into the parent, whose nodes are three times as far apart.
            largest = std::max(largest, std::abs(child.At(ix, iy) - parent.At(40 + ix / 3, 50 + iy / 3)));
        }
    }
    // Nothing but the place of a node among the points of one call differs. It may decide how the last bit of an
    // element's value is rounded: 2^-20 m at 8 m and more, for a few elements.
    CHECK(largest < 1e-5);
}

TEST_CASE("the slope term is the horizontal motion times the slope, in water deeper than 50 m") {
    for (const std::string& region : kRegions) {
        CAPTURE(region);
        const SummedGrid run = NestedSum("HRZ_" + region);
        const InputGrid topography = NestedTopography(region);
        const std::vector<Subfault> subfaults = NestedSubfaults();
        double largest = 0.0, largestDifference = 0.0;
        int shallow = 0;
        for (const SampleNode& node : SampleNodes(topography, 7)) {
            const bool isDeep = node.topo < -50.0;
            const double expected = isDeep ? UpliftBySlope(topography, subfaults, node) : 0.0;
            const double value = run.At(node.ix, node.iy);
            largest = std::max(largest, std::abs(expected));
            largestDifference = std::max(largestDifference, std::abs(value - expected));
            shallow += isDeep ? 0 : 1;
        }
        // Slopes of up to 0.1 carry the rounding of the horizontal motion, which is as large as the vertical one.
        CHECK(largestDifference < 0.1 * 2.0 * kSumRounding);
        CHECK(largest > 1.0);
        CHECK(shallow > 20);
    }
}

TEST_CASE("the README of the nested example shows the figures of its run") {
    const std::string readme = FileBytes(NestedRun().copy.At("README.md"));
    for (const std::string kind : {"VRT", "HRZ", "Tdr"}) {
        for (const std::string& region : kRegions) {
            const SummedGrid run = NestedSum(kind + "_" + region);
            const std::string row = FigureRow(kind + "_" + region, run, FiguresOf(run), 0);
            CAPTURE(row);
            CHECK(readme.find(row) != std::string::npos);
        }
    }
}

TEST_SUITE_END();
