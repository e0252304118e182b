// The filter against its sample-by-sample reference: the same bits, whatever grid, depth and nesting.

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <doctest/doctest.h>

#include "kajiura/KajiuraFilter.h"
#include "parity/EveryInstructionSet.h"
#include "reference/KajiuraReference.h"
#include "unit/FilterCase.h"

using tidora::InstantVal2d;
using tidora::reference::KajiuraReference;
using tidora::reference::ReferenceGrid;

namespace {

struct Nesting {
    FilterGrid own;
    std::vector<float> topography;
    std::vector<InstantVal2d> uplift;
    int parentNo = 0;
    FilterGrid parent;
    std::vector<InstantVal2d> parentA;
    std::vector<InstantVal2d> parentB;
};

ReferenceGrid AsReference(const FilterGrid& grid) {
    return {grid.nx, grid.ny, grid.orgX, grid.orgY, grid.dx};
}

// Number of values whose bits differ between the filter, with every instruction set, and its reference.
int DifferentBits(const Nesting& nesting) {
    std::vector<InstantVal2d> expected = nesting.uplift;
    KajiuraReference(AsReference(nesting.own), nesting.topography.data(), nesting.parentNo, AsReference(nesting.parent),
                     nesting.parentA, nesting.parentB, expected);
    int different = 0;
    ForEachInstructionSet([&] {
        const std::vector<InstantVal2d> filtered =
            Filtered(nesting.own, nesting.topography, nesting.uplift, nesting.parentNo, nesting.parent, nesting.parentA,
                     nesting.parentB);
        REQUIRE(filtered.size() == expected.size());
        for (std::size_t k = 0; k < expected.size(); ++k) {
            REQUIRE(filtered[k].num == expected[k].num);
            for (std::size_t at = 0; at < expected[k].num; ++at) {
                different += BitsOf(filtered[k].val[at]) == BitsOf(expected[k].val[at]) ? 0 : 1;
            }
        }
    });
    return different;
}

using Random = std::mt19937;

double Between(Random& random, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
}

int Between(Random& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

FilterGrid RandomGrid(Random& random, int largest) {
    FilterGrid grid;
    grid.nx = Between(random, 1, largest);
    grid.ny = Between(random, 1, largest);
    const double reach =
        Between(random, 0, 1) == 0 ? 10.0 : 4e6;  // near the origin, and where single precision is coarse
    grid.orgX = Between(random, -reach, reach);
    grid.orgY = Between(random, -reach, reach);
    grid.dx = static_cast<float>(Between(random, 3.0, 400.0));
    return grid;
}

// Sea of all depths around `spacing`, with shallow points and land.
std::vector<float> RandomTopography(Random& random, const FilterGrid& grid) {
    std::vector<float> topography = Uniform(grid, 0.0F);
    for (float& value : topography) {
        const int kind = Between(random, 0, 9);
        value = kind == 0   ? static_cast<float>(Between(random, -12.0, 5.0))
                : kind == 1 ? -10.0F
                            : static_cast<float>(-Between(random, 0.1, 8.0) * static_cast<double>(grid.dx));
    }
    return topography;
}

// Mostly smooth numbers, with patches of zeros of both signs in between.
std::vector<float> RandomUplift(Random& random, const FilterGrid& grid) {
    std::vector<float> uplift = Uniform(grid, 0.0F);
    const int kind = Between(random, 0, 4);
    for (float& value : uplift) {
        if (kind == 0 || Between(random, 0, 3) == 0) {
            value = Between(random, 0, 1) == 0 ? 0.0F : -0.0F;
        } else {
            value = static_cast<float>(Between(random, -5.0, 5.0));
        }
    }
    return uplift;
}

std::vector<InstantVal2d> RandomSnapshots(Random& random, const FilterGrid& grid, int count) {
    std::vector<std::vector<float>> values;
    for (int k = 0; k < count; ++k) {
        values.push_back(RandomUplift(random, grid));
    }
    return Snapshots(values);
}

Nesting RandomNesting(Random& random, int largest) {
    Nesting nesting;
    nesting.own = RandomGrid(random, largest);
    nesting.topography = RandomTopography(random, nesting.own);
    const int snapshots = Between(random, 1, 3);
    nesting.uplift = RandomSnapshots(random, nesting.own, snapshots);
    nesting.parentNo = Between(random, 0, 2);
    if (nesting.parentNo > 0) {
        // Three times coarser; some enclose the own grid with a margin, some leave a part of it uncovered.
        nesting.parent.nx = Between(random, 1, 12);
        nesting.parent.ny = Between(random, 1, 12);
        nesting.parent.dx = 3.0F * nesting.own.dx;
        const auto spacing = static_cast<double>(nesting.parent.dx);
        nesting.parent.orgX = nesting.own.orgX - spacing * Between(random, -1, 5);
        nesting.parent.orgY = nesting.own.orgY - spacing * Between(random, -1.0, 5.0);
        nesting.parentA = RandomSnapshots(random, nesting.parent, snapshots);
        nesting.parentB = RandomSnapshots(random, nesting.parent, snapshots);
    }
    return nesting;
}

// A small nest whose sea has one depth.
Nesting NestOfDepth(float depth) {
    Nesting nesting;
    nesting.own = {4, 3, 10.0, -20.0, 50.0F};
    nesting.topography = Uniform(nesting.own, -depth);
    nesting.uplift = Snapshots({Uniform(nesting.own, 1.5F), Uniform(nesting.own, 0.0F)});
    nesting.parentNo = 1;
    nesting.parent = {7, 7, -290.0, -320.0, 100.0F};
    nesting.parentA = Snapshots({Uniform(nesting.parent, -0.5F), Uniform(nesting.parent, 0.0F)});
    nesting.parentB = Snapshots({Uniform(nesting.parent, 0.25F), Uniform(nesting.parent, -0.0F)});
    return nesting;
}

// The same with the parent and without.
int DifferentBitsWithParentOrWithout(Nesting nesting) {
    const int different = DifferentBits(nesting);
    nesting.parentNo = 0;
    return different + DifferentBits(nesting);
}

}  // namespace

TEST_CASE("the filter repeats the bits of its reference over random grids and depths and nestings") {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        CAPTURE(seed);
        Random random(seed);
        CHECK(DifferentBits(RandomNesting(random, 14)) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference over long thin grids") {
    for (unsigned seed = 101; seed <= 104; ++seed) {
        CAPTURE(seed);
        Random random(seed);
        Nesting nesting = RandomNesting(random, 2);
        nesting.own.nx = seed % 2 == 0 ? 2 : 150;
        nesting.own.ny = seed % 2 == 0 ? 150 : 2;
        nesting.topography = RandomTopography(random, nesting.own);
        nesting.uplift = RandomSnapshots(random, nesting.own, static_cast<int>(nesting.uplift.size()));
        CHECK(DifferentBits(nesting) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference where nodes lie exactly on the borders of cells") {
    // Steps that are whole fractions and multiples of the spacing put samples on nodes. 49 times the reciprocal of 49
    // is less than 1: only a true division leaves a sample on the last column outside.
    for (const float dx : {10.0F, 0.1F, 1.0F / 3.0F, 49.0F}) {
        for (const float stepOverSpacing : {0.25F, 0.5F, 1.0F, 2.0F}) {
            CAPTURE(dx);
            CAPTURE(stepOverSpacing);
            Random random(7);
            Nesting nesting = RandomNesting(random, 1);
            // With an origin of 0 the nodes of the last column are exact multiples of the spacing.
            const double org = dx == 49.0F ? 0.0 : 0.3;
            nesting.own = {9, 9, org, org - 7.0 * static_cast<double>(dx), dx};
            nesting.parentNo = 1;
            const double outer = 8.0 * static_cast<double>(dx);
            nesting.parent = {9, 9, nesting.own.orgX - outer, nesting.own.orgY - outer, 2.0F * dx};
            nesting.topography = Uniform(nesting.own, -4.0F * stepOverSpacing * dx);
            nesting.topography[10] = -4.0F * 17.0F * dx;
            nesting.uplift = RandomSnapshots(random, nesting.own, 1);
            nesting.parentA = RandomSnapshots(random, nesting.parent, 1);
            nesting.parentB = RandomSnapshots(random, nesting.parent, 1);
            CHECK(DifferentBits(nesting) == 0);
        }
    }
}

TEST_CASE("the filter repeats the bits of its reference where the rim of a disc just meets or misses an uplift") {
    // One raised node, in the own grid or in its parent, and a few points of a depth that puts the rim within two cells
    // of it: what a filter leaves out as flat must be flat to the last sample.
    for (unsigned seed = 201; seed <= 240; ++seed) {
        CAPTURE(seed);
        Random random(seed);
        Nesting nesting;
        const double org = seed % 2 == 0 ? 0.0 : 4.1e6;
        nesting.own = {70, 75, org, -org, 25.0F};
        nesting.topography = Uniform(nesting.own, 0.0F);
        nesting.parentNo = seed % 4 < 2 ? 0 : 1;
        nesting.parent = {60, 60, org - 1500.0, -org - 1500.0, 75.0F};
        std::vector<float> own = Uniform(nesting.own, 0.0F);
        std::vector<float> outer = Uniform(nesting.parent, 0.0F);
        const int nodeX = Between(random, 0, 69);
        const int nodeY = Between(random, 0, 74);
        own[static_cast<std::size_t>(nodeX * 75 + nodeY)] = nesting.parentNo == 0 ? 1.5F : 0.0F;
        outer[static_cast<std::size_t>((nodeX + 60) / 3 * 60 + (nodeY + 60) / 3)] = 1.5F;
        for (int point = 0; point < 12; ++point) {
            const int ix = Between(random, 0, 69);
            const int iy = point % 3 == 0 ? nodeY : Between(random, 0, 74);  // also straight east or west of it
            const double distance = 25.0 * std::hypot(ix - nodeX, iy - nodeY) + 25.0 * Between(random, -3.5, 3.5);
            nesting.topography[static_cast<std::size_t>(ix * 75 + iy)] = static_cast<float>(-distance / 5.0);
        }
        nesting.uplift = Snapshots({own});
        nesting.parentA = Snapshots({Uniform(nesting.parent, 0.0F)});
        nesting.parentB = Snapshots({outer});
        CHECK(DifferentBits(nesting) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference where single precision is coarser than the grid") {
    // At 9 900 000 m single precision knows whole metres: samples lie up to four cells of an eighth beside their place.
    for (int block = 30; block <= 45; ++block) {
        CAPTURE(block);
        Nesting nesting;
        nesting.own = {1200, 2, 9.9e6, 9.9e6, 0.125F};
        nesting.topography = Uniform(nesting.own, 0.0F);
        std::vector<float> own = Uniform(nesting.own, 0.0F);
        const int node = 16 * block + (block % 2 == 0 ? 0 : 15);  // at either end of sixteen columns
        own[static_cast<std::size_t>(2 * node)] = 1.0F;
        own[static_cast<std::size_t>(2 * node + 1)] = 1.0F;
        for (int cells = 396; cells <= 416; ++cells) {
            // The disc of 10.1 m reaches 404 cells.
            nesting.topography[static_cast<std::size_t>(2 * (node - cells))] = -10.1F;
            nesting.topography[static_cast<std::size_t>(2 * (node + cells))] = -10.1F;
        }
        nesting.uplift = Snapshots({own});
        CHECK(DifferentBits(nesting) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference where its lattice is about twice as wide as the grid") {
    // Where a vector of samples just fits, or does not, into two vectors of grid values.
    Random random(11);
    Nesting nesting;
    nesting.own = {100, 100, 0.0, -500.0, 10.0F};
    nesting.topography = Uniform(nesting.own, 0.0F);
    for (int point = 0; point < 80; ++point) {
        const double stepOverSpacing = 1.7 + 0.01 * point;
        nesting.topography[static_cast<std::size_t>((45 + point % 8) * 100 + 45 + point / 8)] =
            static_cast<float>(-4.0 * 10.0 * stepOverSpacing);
    }
    nesting.uplift = RandomSnapshots(random, nesting.own, 2);
    CHECK(DifferentBits(nesting) == 0);
}

TEST_CASE("the filter repeats the bits of its reference at depths beyond any sea") {
    // The squares overflow from 1e19 on: kernels of 0, then products of infinity and 0.
    for (const float depth : {10.00001F, 11000.0F, 1e6F, 1e12F, 1e18F, 1e19F, 1e20F, 1e38F,
                              std::numeric_limits<float>::max(), std::numeric_limits<float>::infinity()}) {
        CAPTURE(depth);
        CHECK(DifferentBitsWithParentOrWithout(NestOfDepth(depth)) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference for an uplift that is not a number or infinite or tiny") {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float odd : {inf, -inf, nan, 1e-45F, 3e38F, -0.0F}) {
        CAPTURE(odd);
        Nesting nesting = NestOfDepth(30.0F);
        nesting.uplift[0].val[5] = odd;
        nesting.parentA[1].val[24] = odd;
        nesting.parentB[1].val[8] = odd;
        CHECK(DifferentBitsWithParentOrWithout(nesting) == 0);
    }
}

TEST_CASE("the filter repeats the bits of its reference for spacings of 0 and below and without a number") {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float dx : {0.0F, -50.0F, nan, std::numeric_limits<float>::infinity()}) {
        CAPTURE(dx);
        Nesting nesting = NestOfDepth(30.0F);
        nesting.own.dx = dx;
        CHECK(DifferentBitsWithParentOrWithout(nesting) == 0);
        nesting.own.dx = 50.0F;
        nesting.parent.dx = dx;
        CHECK(DifferentBitsWithParentOrWithout(nesting) == 0);
    }
}

TEST_CASE("the filter in parts of some columns has the bits of the filter of all columns") {
    Random random(21);
    Nesting nesting;
    nesting.own = {37, 41, 100.0, -500.0, 50.0F};
    nesting.topography = RandomTopography(random, nesting.own);
    nesting.uplift = RandomSnapshots(random, nesting.own, 1);
    nesting.parent = {30, 30, -700.0, -1200.0, 100.0F};
    nesting.parentA = RandomSnapshots(random, nesting.parent, 1);
    const tidora::SampledGrid own = {{37, 41, 100.0, -500.0, 50.0F}, nesting.uplift[0].val};
    const tidora::SampledGrid parent = {{30, 30, -700.0, -1200.0, 100.0F}, nesting.parentA[0].val};
    for (const tidora::SampledGrid* outer : {static_cast<const tidora::SampledGrid*>(nullptr), &parent}) {
        ForEachInstructionSet([&] {
            std::vector<float> whole(own.values, own.values + 37 * 41);
            std::vector<float> parts = whole;
            tidora::FilterUplift(own, outer, nesting.topography.data(), whole.data());
            const tidora::ProgramFilter filter(own, outer);
            const int cuts[] = {0, 1, 1, 5, 22, 36, 37};
            for (int part = 5; part >= 0; --part) {
                filter.FilterColumns(cuts[part], cuts[part + 1], nesting.topography.data(), parts.data());
            }
            int different = 0;
            for (std::size_t at = 0; at < whole.size(); ++at) {
                different += BitsOf(whole[at]) == BitsOf(parts[at]) ? 0 : 1;
            }
            CHECK(different == 0);
        });
    }
}
