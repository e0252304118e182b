#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "ExampleInputs.h"
#include "ProgramRun.h"
#include "SampledUplift.h"
#include "SeriesFiles.h"

namespace {

const StartTimes kStarts = {0};
const StartTimes kRuptureStarts = {90, 60, 30, 0, 120, 150, 180, 210, 240};
const std::string kStaticFault = "../data/tohoku2011_satake_static_utm54.txt";
const std::string kRuptureFault = "../data/tohoku2011_satake_utm54.txt";

/// The run that all cases look at.
const ExampleRun& Run() {
    static const ExampleRun run({"tohoku2011/static", "tohoku2011/data"}, "TdrConf.txt");
    return run;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    REQUIRE(at != std::string::npos);
    return text.replace(at, from.size(), to);
}

// A snapshot takes up to 110 additions, each rounded by up to half a unit in the last place: 2^-20 m below 32 m.
constexpr double kSumRounding = 110.0 / (1 << 20);

/// The sum of the vertical deformation of the example with another fault file and tolerance 0, written to `out`.
SummedGrid VerticalWithoutTolerance(const std::string& out, const std::string& faultFile, const StartTimes& starts) {
    std::string text = FileBytes(Run().copy.At("TdrConf.txt"));
    text = Replaced(text, "\nout\n", "\n" + out + "\n");
    text = Replaced(text, "\n0.01\n", "\n0\n");
    text = Replaced(text, kStaticFault, faultFile);
    Run().copy.Write(out + ".txt", text);
    const ProgramResult result = Run().copy.Run(out + ".txt");
    REQUIRE(result.exitStatus == 0);
    return SumOfSeries(Run().copy.At(out), "VRT_japan", starts);
}

/// The example with the finite source at every point.
const SummedGrid& FiniteRun() {
    static const SummedGrid run = VerticalWithoutTolerance("finite", kStaticFault, kStarts);
    return run;
}

double LargestDifference(const SummedGrid& a, const SummedGrid& b) {
    REQUIRE(a.values.size() == b.values.size());
    double largest = 0.0;
    for (std::size_t at = 0; at < a.values.size(); ++at) {
        largest = std::max(largest, std::abs(a.values[at] - b.values[at]));
    }
    return largest;
}

/// A fault file with ten columns.
std::string FaultText(const std::vector<Subfault>& subfaults) {
    std::ostringstream text;
    text.precision(10);
    for (const Subfault& s : subfaults) {
        text << s.y << ' ' << s.x << ' ' << s.baseOffset << ' ' << s.depth << ' ' << s.strike << ' ' << s.dip << ' '
             << s.rake << ' ' << s.length << ' ' << s.width << ' ' << s.slip << '\n';
    }
    return text.str();
}

}  // namespace

TEST_SUITE_BEGIN("static");

TEST_CASE("the static example succeeds and tells its progress") {
    const ProgramResult& result = Run().result;
    CHECK(result.exitStatus == 0);
    CHECK(result.err.empty());
    CHECK(CountLinesFrom(result.out, "Successful Completion. ( Tidora Done. )") == 1);
    CHECK(CountProgressLines(result.out, 55) == 55);
    const std::vector<Subfault> subfaults = ReadSubfaults(Run().copy.At(kStaticFault));
    const auto slipping =
        std::count_if(subfaults.begin(), subfaults.end(), [](const Subfault& s) { return s.slip > 0; });
    CHECK(slipping == 49);
    // An element without slip has no reach.
    CHECK(CountLinesFrom(result.out, " DC3D  distance[m] : ") == slipping);
    CHECK(CountLinesFrom(result.out, " DC3D0 distance[m] : ") == slipping);
    CHECK(CountLinesFrom(result.out, "order       :") == 1);
    CHECK(CountLinesFrom(result.out, ">>>>>>>>>>>>>>>>>> Write File : out/") == 2);
}

TEST_CASE("the static example leaves one grid of each kind, at 0 s") {
    const std::string out = Run().copy.At("out");
    CHECK(FileNames(out) == SeriesFileNames({"Tdr_japan", "VRT_japan"}, kStarts));
    CHECK(FileBytes(out + "/Tdr_japan.txt") == ListText("out", "Tdr_japan", kStarts, 0));
    CHECK(FileBytes(out + "/VRT_japan.txt") == ListText("out", "VRT_japan", kStarts, 0));
    CHECK(FileBytes(out + "/Tdr_japan_0000s.bin") == FileBytes(out + "/VRT_japan_0000s.bin"));
    const SeriesGrid grid = ReadSeriesGrid(out + "/VRT_japan_0000s.bin");
    CHECK(grid.orgX == 300000.0);
    CHECK(grid.orgY == 3780000.0);
    CHECK(grid.nx == 156);
    CHECK(grid.ny == 174);
    CHECK(grid.dx == 5400.0F);
}

TEST_CASE("the tolerance of the static example bounds what point sources and the cut-off change") {
    const SummedGrid run = SumOfSeries(Run().copy.At("out"), "VRT_japan", kStarts);
    const double difference = LargestDifference(run, FiniteRun());
    CHECK(difference <= 0.01);
    // The bound is for the worst case; the README says how close this run comes.
    CHECK(difference < 0.001);
    // The point source does stand in somewhere: more than rounding changes.
    CHECK(difference > kSumRounding);
}

TEST_CASE("the snapshots of the rupture add up to the static deformation") {
    const SummedGrid rupture = VerticalWithoutTolerance("rupture", kRuptureFault, kRuptureStarts);
    const std::vector<Subfault> merged = MergedByPlace(ReadSubfaults(Run().copy.At(kRuptureFault)));
    CHECK(merged.size() == 49);
    Run().copy.Write("merged_fault.txt", FaultText(merged));
    const SummedGrid total = VerticalWithoutTolerance("merged", "merged_fault.txt", kStarts);
    // At tolerance 0 the field of an element is linear in its slip.
    CHECK(LargestDifference(rupture, total) < 2.0 * kSumRounding);
    CHECK(FiguresOf(total).largest > 10.0);
}

TEST_CASE("the static fault file holds the total slip of the rupture") {
    const std::vector<Subfault> total = ReadSubfaults(Run().copy.At(kStaticFault));
    for (const Subfault& merged : MergedByPlace(ReadSubfaults(Run().copy.At(kRuptureFault)))) {
        CAPTURE(merged.x);
        CAPTURE(merged.y);
        const auto same = std::find_if(total.begin(), total.end(),
                                       [&](const Subfault& s) { return !(s.x != merged.x || s.y != merged.y); });
        REQUIRE(same != total.end());
        // Five windows and their total, each rounded to 0.01 m.
        CHECK(std::abs(same->slip - merged.slip) <= 6 * 0.005);
        CHECK(same->baseOffset == merged.baseOffset);
        CHECK(same->strike == merged.strike);
        CHECK(same->dip == merged.dip);
        CHECK(same->rake == merged.rake);
    }
}

TEST_CASE("with finite sources the static example is the uplift by reciprocity") {
    const SummedGrid& run = FiniteRun();
    const InputGrid topography = ReadInputGrid(Run().copy.At("../data/tohoku_utm54_5400m.txt"));
    const GridFigures figures = FiguresOf(run);
    std::vector<SampleNode> nodes = SampleNodes(topography, 8);
    nodes.push_back(NodeOf(topography, figures.largestX, figures.largestY));
    nodes.push_back(NodeOf(topography, figures.smallestX, figures.smallestY));
    std::vector<double> uplift(nodes.size(), 0.0);
    AddUplift(ReadSubfaults(Run().copy.At(kStaticFault)), nodes, uplift);
    const UpliftComparison comparison = CompareUplift(run, nodes, uplift);
    // The nodes are exact in single precision; what is left is the rounding of the sums and the quadrature.
    CHECK(comparison.largestDifference < 2.0 * kSumRounding);
    CHECK(comparison.raisedByRun > 40.0);
    CHECK(comparison.raisedByRun == doctest::Approx(comparison.raisedByWork).epsilon(1e-4));
}

TEST_CASE("the README of the static example shows the figures of its run") {
    const std::string readme = FileBytes(Run().copy.At("README.md"));
    const SummedGrid run = SumOfSeries(Run().copy.At("out"), "VRT_japan", kStarts);
    const std::string row = FigureRow("VRT_japan", run, FiguresOf(run), 0);
    CAPTURE(row);
    CHECK(readme.find(row) != std::string::npos);
}

TEST_SUITE_END();
