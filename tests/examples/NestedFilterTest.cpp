#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "NestedRun.h"
#include "SampledUplift.h"
#include "WaterFilter.h"

namespace {

// A surface value is the sum of 1257 samples, each addition rounded by up to half a unit: 2^-21 m below 16 m.
constexpr double kFilterRounding = 1257.0 / (1 << 21);

/// The grids of one kind, one per interval. kind and region: "Tdr", "child" and the like.
std::vector<SeriesGrid> AllIntervals(const std::string& kind, const std::string& region) {
    std::vector<SeriesGrid> grids;
    for (const int start : NestedStarts()) {
        grids.push_back(NestedGrid(kind + "_" + region, start));
    }
    return grids;
}

/// What the filter of a region starts from.
std::vector<SeriesGrid> Floors(const std::string& region) {
    const std::vector<SeriesGrid> horizontal = AllIntervals("HRZ", region);
    std::vector<SeriesGrid> floors = AllIntervals("VRT", region);
    std::transform(floors.begin(), floors.end(), horizontal.begin(), floors.begin(), FloorUplift);
    return floors;
}

/// Nodes that are filtered: some all over the grid, and some on each of its edges.
std::vector<SampleNode> DeepNodes(const InputGrid& topography) {
    std::vector<SampleNode> nodes = SampleNodes(topography, 13);
    for (int ix = 0; ix < topography.nx; ix += 24) {
        nodes.push_back(NodeOf(topography, ix, 0));
        nodes.push_back(NodeOf(topography, ix, topography.ny - 1));
    }
    for (int iy = 0; iy < topography.ny; iy += 24) {
        nodes.push_back(NodeOf(topography, 0, iy));
        nodes.push_back(NodeOf(topography, topography.nx - 1, iy));
    }
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [](const SampleNode& n) { return !(n.topo < -10.0); }),
                nodes.end());
    return nodes;
}

/// Largest difference between a filtered series and the filter in double precision, over nodes and intervals, m.
double LargestDifference(const std::string& region, const std::vector<SeriesGrid>& parents) {
    const InputGrid topography = NestedTopography(region);
    const std::vector<SeriesGrid> surfaces = AllIntervals("Tdr", region);
    const std::vector<SeriesGrid> floors = Floors(region);
    double largest = 0.0;
    for (const SampleNode& node : DeepNodes(topography)) {
        const std::vector<double> expected = WaterSurfaceAt(topography, floors, parents, node.ix, node.iy);
        for (std::size_t k = 0; k < surfaces.size(); ++k) {
            const auto value = static_cast<double>(surfaces[k].values[surfaces[k].Index(node.ix, node.iy)]);
            largest = std::max(largest, std::abs(value - expected[k]));
        }
    }
    return largest;
}

/// Sum of the squared second differences along the columns, over nodes deeper than 1000 m, m^2.
double Roughness(const SummedGrid& grid, const InputGrid& topography) {
    double sum = 0.0;
    for (int iy = 0; iy < grid.ny; ++iy) {
        for (int ix = 1; ix + 1 < grid.nx; ++ix) {
            if (topography.At(ix, iy) < -1000.0) {
                const double second = grid.At(ix - 1, iy) - 2.0 * grid.At(ix, iy) + grid.At(ix + 1, iy);
                sum += second * second;
            }
        }
    }
    return sum;
}

SummedGrid Sum(const SummedGrid& a, const SummedGrid& b) {
    SummedGrid sum = a;
    for (std::size_t at = 0; at < sum.values.size(); ++at) {
        sum.values[at] += b.values.at(at);
    }
    return sum;
}

double Total(const SummedGrid& grid) {
    double total = 0.0;
    for (const double value : grid.values) {
        total += value;
    }
    return total;
}

}  // namespace

TEST_SUITE_BEGIN("nested");

TEST_CASE("the surface of the parent is its floor under the filter, with nothing outside the grid") {
    CHECK(LargestDifference("parent", {}) < kFilterRounding);
}

TEST_CASE("the surface of the child is its floor under the filter, with the parent's floor outside the grid") {
    CHECK(LargestDifference("child", Floors("parent")) < kFilterRounding);
    // The parent matters: with nothing outside, nodes at the edges would come out some decimetres lower.
    CHECK(LargestDifference("child", {}) > 0.1);
}

TEST_CASE("land and water of at most 10 m keep the uplift of the floor") {
    for (const std::string region : {"parent", "child"}) {
        const InputGrid topography = NestedTopography(region);
        const std::vector<SeriesGrid> floors = Floors(region);
        const std::vector<SeriesGrid> surfaces = AllIntervals("Tdr", region);
        int kept = 0, changed = 0;
        for (std::size_t k = 0; k < floors.size(); ++k) {
            for (std::size_t at = 0; at < floors[k].values.size(); ++at) {
                if (!(topography.values[at] < -10.0)) {
                    ++kept;
                    changed += surfaces[k].values[at] == floors[k].values[at] ? 0 : 1;
                }
            }
        }
        CAPTURE(region);
        CHECK(kept > 9 * 1000);
        CHECK(changed == 0);
    }
}

TEST_CASE("the filter smooths the sea surface and raises its volume by its gain") {
    for (const std::string region : {"parent", "child"}) {
        CAPTURE(region);
        const InputGrid topography = NestedTopography(region);
        const SummedGrid floor = Sum(NestedSum("VRT_" + region), NestedSum("HRZ_" + region));
        const SummedGrid surface = NestedSum("Tdr_" + region);
        // Water of depth d damps a wave of number k by 1 / cosh(k d). The shortest wave of the parent, two spacings or
        // 10.8 km, keeps 0.34 of its height in 3000 m of water, 0.12 of its square.
        CHECK(Roughness(surface, topography) < 0.25 * Roughness(floor, topography));
        // The gain is exact where the depth is even. Over a slope the weights that leave a node are not those that
        // arrive at one: 1 percent is allowed for that.
        CHECK(WaterFilterGain() == doctest::Approx(1.0229).epsilon(1e-4));
        CHECK(Total(surface) / Total(floor) == doctest::Approx(WaterFilterGain()).epsilon(0.01));
    }
}

TEST_SUITE_END();
