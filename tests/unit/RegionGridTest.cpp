// The grid arrays of a region: geometry, fill and release.

#include <limits>
#include <new>
#include <string>

#include <doctest/doctest.h>

#include "config/ConfReader.h"
#include "region/Region.h"

using tidora::InstantVal2d;
using tidora::PARAM_REGION;
using tidora::Region;

namespace {

Region WithGeometry(int nx, int ny, double orgX, double orgY, double spacing) {
    Region region;
    region.Set2dStruct(nx, ny, orgX, orgY, spacing);
    return region;
}

}  // namespace

TEST_CASE("a grid's geometry is taken over and its spacing rounded to single precision") {
    const Region region = WithGeometry(7, 5, 1.0 / 3.0, -2.0e6, 0.1);
    CHECK(region.nx == 7);
    CHECK(region.ny == 5);
    CHECK(region.org_x == 1.0 / 3.0);
    CHECK(region.org_y == -2.0e6);
    CHECK(region.dx == 0.1F);
    CHECK(region.dy == 0.0F);
    CHECK(region.dataNum == 35);
}

TEST_CASE("the number of grid values is the 32-bit product and wraps beyond it") {
    CHECK(WithGeometry(50000, 50000, 0.0, 0.0, 1.0).dataNum == -1794967296);  // 2.5e9 - 2^32
    CHECK(WithGeometry(65536, 65536, 0.0, 0.0, 1.0).dataNum == 0);
    CHECK(WithGeometry(46341, 46341, 0.0, 0.0, 1.0).dataNum == 2147488281 - 4294967296);
    CHECK(WithGeometry(46340, 46340, 0.0, 0.0, 1.0).dataNum == 2147395600);
    CHECK(WithGeometry(-3, 4, 0.0, 0.0, 1.0).dataNum == -12);
    CHECK(WithGeometry(0, 4, 0.0, 0.0, 1.0).dataNum == 0);
}

TEST_CASE("a topography region without a file fills its grid with the constant in single precision") {
    PARAM_REGION param;
    param.topoConst = -1234.5678901;
    Region region(tidora::RTYPE_TOPOGRAPHY, param);
    region.Set2dStruct(3, 2, 0.0, 0.0, 1.0);
    const float* const val = region.Make2dStruct();
    CHECK(val == region.val);
    for (int k = 0; k < 6; ++k) {
        CHECK(val[k] == -1234.5678901F);
    }
    region.FreeVecMem();
}

TEST_CASE("a grid is filled with a given value in single precision whatever its constant") {
    PARAM_REGION param;
    param.topoConst = 7.0;
    Region region(tidora::RTYPE_TOPOGRAPHY, param);
    region.Set2dStruct(2, 3, 0.0, 0.0, 1.0);
    const float* const val = region.Make2dStruct(0.1);
    CHECK(val == region.val);
    for (int k = 0; k < 6; ++k) {
        CHECK(val[k] == 0.1F);
    }
    region.FreeVecMem();
}

TEST_CASE("a grid with no columns or no rows is allocated and not filled") {
    struct Row {
        int nx;
        int ny;
    };
    for (const Row& row : {Row{0, 5}, Row{5, 0}, Row{0, 0}, Row{-1, -1}}) {
        CAPTURE(row.nx);
        CAPTURE(row.ny);
        Region region = WithGeometry(row.nx, row.ny, 0.0, 0.0, 1.0);
        const float* const val = region.Make2dStruct(1.0);
        CHECK(val != nullptr);
        CHECK(val == region.val);
        region.FreeVecMem();
    }
}

TEST_CASE("a grid of more values than an array can have raises the standard length error and allocates nothing") {
    struct Row {
        std::string why;
        int nx;
        int ny;
    };
    const Row rows[] = {
        {"a negative product", -2, 3},
        {"beyond 32 bits, wrapped to a negative number", 50000, 50000},
        {"beyond 32 bits, wrapped to 0", 65536, 65536},
        {"beyond 32 bits, wrapped to a small number", 65537, 65537},
        {"one row beyond 32 bits", 46341, 46341},
        {"the largest of both", std::numeric_limits<int>::max(), std::numeric_limits<int>::max()},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        Region region = WithGeometry(row.nx, row.ny, 0.0, 0.0, 1.0);
        CHECK_THROWS_AS(region.Make2dStruct(), std::bad_array_new_length);
        CHECK_THROWS_AS(region.Make2dStruct(1.0), std::bad_array_new_length);
        CHECK(region.val == nullptr);
    }
}

TEST_CASE("releasing a region frees its arrays and empties its snapshots and keeps their number") {
    Region region = WithGeometry(2, 2, 0.0, 0.0, 1.0);
    region.Make2dStruct(1.0);
    region.valWork = new float[4]();
    float parent[2] = {1.0F, 2.0F};
    region.parentValWork = parent;
    region.instants.resize(3);
    region.instants[0].Reset(4);
    region.instants[2].Reset(1);

    region.FreeVecMem();
    CHECK(region.val == nullptr);
    CHECK(region.valWork == nullptr);
    CHECK(region.parentValWork == parent);
    CHECK(parent[1] == 2.0F);
    REQUIRE(region.instants.size() == 3);
    for (const InstantVal2d& snapshot : region.instants) {
        CHECK(snapshot.num == 0);
    }
    CHECK(region.instants[0].val != nullptr);
    CHECK(region.instants[2].val != nullptr);
    CHECK(region.instants[1].val == nullptr);  // it held nothing: it is left alone

    region.FreeVecMem();
    CHECK(region.instants.size() == 3);
}
