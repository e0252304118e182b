#include <doctest/doctest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ExampleInputs.h"
#include "ProgramRun.h"
#include "SampledUplift.h"
#include "SeriesFiles.h"
#include "projection/mapproject.h"

namespace {

// The intervals of the rupture in the order in which the fault file names them first.
const StartTimes kStarts = {90, 60, 30, 0, 120, 150, 180, 210, 240};

/// The run that all cases look at.
const ExampleRun& Run() {
    static const ExampleRun run({"tohoku2011/geo", "tohoku2011/data"}, "TdrConf.txt");
    return run;
}

InputGrid Topography() {
    return ReadInputGrid(Run().copy.At("../data/tohoku_geo_5min.txt"));
}

std::vector<Subfault> TimeWindows() {
    return ReadSubfaults(Run().copy.At("../data/tohoku2011_satake_geo.txt"));
}

int UtmZone(double lon) {
    return static_cast<int>((lon + 180.0) / 6.0) + 1;
}

/// Uplift at `nodes`, in degrees, by reciprocity: every subfault works in the plane of its own zone.
std::vector<double> UpliftAt(const std::vector<SampleNode>& nodes) {
    std::vector<double> uplift(nodes.size(), 0.0);
    for (const int zone : {54, 55}) {
        std::vector<Subfault> ofZone;
        for (const Subfault& s : MergedByPlace(TimeWindows())) {
            if (UtmZone(s.x) == zone) {
                ofZone.push_back(s);
            }
        }
        std::vector<SampleNode> inPlane = nodes;
        const int one = 1;
        mapproject_initialize_using_longi_(ofZone.at(0).x);
        for (Subfault& s : ofZone) {
            const Subfault degrees = s;
            ll2xy_(&one, &degrees.x, &degrees.y, &s.x, &s.y);
        }
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            ll2xy_(&one, &nodes[i].x, &nodes[i].y, &inPlane[i].x, &inPlane[i].y);
        }
        mapproject_finalize_();
        AddUplift(ofZone, inPlane, uplift);
    }
    return uplift;
}

}  // namespace

TEST_SUITE_BEGIN("geo");

TEST_CASE("the geographic example succeeds and tells its progress") {
    const ProgramResult& result = Run().result;
    CHECK(result.exitStatus == 0);
    CHECK(result.err.empty());
    CHECK(CountLinesFrom(result.out, "Successful Completion. ( Tidora Done. )") == 1);
    CHECK(CountProgressLines(result.out, 110) == 110);
    // Every element chooses its own zone: 144 degrees east parts 54 from 55.
    const std::vector<Subfault> elements = TimeWindows();
    const auto inZone54 =
        std::count_if(elements.begin(), elements.end(), [](const Subfault& s) { return s.x < 144.0; });
    CHECK(CountLinesFrom(result.out, "Deformation Calc. UTM Zone:54") == inZone54);
    CHECK(CountLinesFrom(result.out, "Deformation Calc. UTM Zone:55") == 110 - inZone54);
    CHECK(CountLinesFrom(result.out, " Fault base point Co-ordinates Translate ") == 110);
    // Without a tolerance there is no distance at which another source takes over.
    CHECK(CountLinesFrom(result.out, " DC3D") == 0);
    CHECK(CountLinesFrom(result.out, "order       :") == 9);
    CHECK(CountLinesFrom(result.out, ">>>>>>>>>>>>>>>>>> Write File : out/") == 18);
    CHECK(CountLinesFrom(result.out, ">>>>> Kajiura Filter Calc") == 0);
}

TEST_CASE("the geographic example leaves a grid per interval and lists them as the fault file names them first") {
    const std::string out = Run().copy.At("out");
    CHECK(FileNames(out) == SeriesFileNames({"Tdr_japan", "VRT_japan"}, kStarts));
    CHECK(FileBytes(out + "/Tdr_japan.txt") == ListText("out", "Tdr_japan", kStarts, 30));
    CHECK(FileBytes(out + "/VRT_japan.txt") == ListText("out", "VRT_japan", kStarts, 30));
}

TEST_CASE("the grids of the geographic example have the geometry of its topography") {
    for (const std::string series : {"Tdr_japan", "VRT_japan"}) {
        for (const int start : kStarts) {
            CAPTURE(series);
            CAPTURE(start);
            const SeriesGrid grid = ReadSeriesGrid(SeriesName(Run().copy.At("out"), series, start));
            CHECK(grid.orgX == 138.0);
            CHECK(grid.orgY == 33.0);
            CHECK(grid.nx == 121);
            CHECK(grid.ny == 121);
            CHECK(grid.dx == static_cast<float>(10.0 / 120.0));
        }
    }
}

TEST_CASE("without slope term and filter the sea surface is the vertical deformation") {
    for (const int start : kStarts) {
        CAPTURE(start);
        const std::string out = Run().copy.At("out");
        CHECK(FileBytes(SeriesName(out, "Tdr_japan", start)) == FileBytes(SeriesName(out, "VRT_japan", start)));
    }
}

TEST_CASE("the summed snapshots of the geographic example are the uplift by reciprocity") {
    const SummedGrid run = SumOfSeries(Run().copy.At("out"), "VRT_japan", kStarts);
    const InputGrid topography = Topography();
    const GridFigures figures = FiguresOnSphere(run);
    std::vector<SampleNode> nodes = SampleNodes(topography, 6);
    nodes.push_back(NodeOf(topography, figures.largestX, figures.largestY));
    nodes.push_back(NodeOf(topography, figures.smallestX, figures.smallestY));
    const UpliftComparison comparison = CompareUplift(run, nodes, UpliftAt(nodes));
    // Single precision places a point 500 km from an element to 0.03 m, where the field changes by up to 4 mm a metre:
    // 1.2e-4 m; the rest is for the sums and the quadrature.
    CHECK(comparison.largestDifference < 2e-4);
    // The raised volume, as far as these nodes tell it: the largest difference at each of 400 nodes is 0.08 m at most.
    CHECK(comparison.raisedByRun > 40.0);
    CHECK(comparison.raisedByRun == doctest::Approx(comparison.raisedByWork).epsilon(2e-3));
}

TEST_CASE("the README of the geographic example shows the figures of its run") {
    const std::string readme = FileBytes(Run().copy.At("README.md"));
    const SummedGrid run = SumOfSeries(Run().copy.At("out"), "VRT_japan", kStarts);
    const std::string row = FigureRow("VRT_japan", run, FiguresOnSphere(run), 3);
    CAPTURE(row);
    CHECK(readme.find(row) != std::string::npos);
}

TEST_SUITE_END();
