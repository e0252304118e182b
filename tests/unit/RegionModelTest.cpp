// The region record: construction, copies, geometry, fill, release, comparison.

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <new>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "config/ConfReader.h"
#include "region/Region.h"

using tidora::isSameRegion;
using tidora::PARAM_REGION;
using tidora::Region;
using tidora::RType;

namespace {

PARAM_REGION FilledRecord() {
    PARAM_REGION param;
    param.no = 12;
    param.name = "bay";
    param.parentNo = 3;
    param.coordType = 1;
    param.topoFile = "dir/topo.txt";
    param.topoConst = -1234.5678901;
    param.iniWaveFile = "dir/wave.txt";
    param.iniWaveConst = 0.1;
    return param;
}

Region WithGeometry(int nx, int ny, double orgX, double orgY, double spacing) {
    Region region;
    region.Set2dStruct(nx, ny, orgX, orgY, spacing);
    return region;
}

}  // namespace

TEST_CASE("the region kinds and class constants have their published values") {
    CHECK(static_cast<int>(tidora::RTYPE_TOPOGRAPHY) == 1);
    CHECK(static_cast<int>(tidora::RTYPE_INITIAL_WAVE) == 2);
    CHECK(static_cast<int>(tidora::RTYPE_VERTICAL) == 3);
    CHECK(static_cast<int>(tidora::RTYPE_HORIZONTAL) == 4);
    CHECK(sizeof(RType) == 4);
    CHECK(std::int64_t{Region::FILE_MAX_PATH} == 8191);
    CHECK(double{Region::G_ACC} == 9.8);
}

TEST_CASE("a default region is empty") {
    const Region region;
    CHECK(static_cast<int>(region.type) == 0);
    CHECK(region.tag.empty());
    CHECK(region.nx == 0);
    CHECK(region.ny == 0);
    CHECK(region.org_x == 0.0);
    CHECK(region.org_y == 0.0);
    CHECK(region.end_x == 0.0);
    CHECK(region.end_y == 0.0);
    CHECK(region.dataNum == 0);
    CHECK(region.coordType == 0);
    CHECK(region.auxVal == 0.0);
    CHECK(region.dx == 0.0F);
    CHECK(region.dy == 0.0F);
    CHECK(region.instants.empty());
    CHECK(region.val == nullptr);
    CHECK(region.valWork == nullptr);
    CHECK(region.parentValWork == nullptr);
    CHECK(region.valMax == 0.0F);
    CHECK(region.valMin == 0.0F);
    CHECK(region.outFileName.empty());
    CHECK(region.name.empty());
    CHECK(region.no == 0);
    CHECK(region.parentNo == 0);
    CHECK(region.inFileName.empty());
    CHECK_FALSE(region.noBinaryInput);
    CHECK(region.constVal == 0.0);
}

struct Kind {
    std::string why;
    int type;
    const char* tag;
    const char* inFileName;
    double constVal;
    bool noBinaryInput;
};
const Kind kKinds[] = {
    {"topography takes its own file and constant", 1, "TPG", "dir/topo.txt", -1234.5678901, false},
    {"initial wave height takes its own file and constant", 2, "Tdr", "dir/wave.txt", 0.1, false},
    {"vertical deformation is computed", 3, "VRT", "", 0.0, true},
    {"horizontal deformation is computed", 4, "HRZ", "", 0.0, true},
};

TEST_CASE("a region takes tag and file and constant by its kind and the rest from its record") {
    const PARAM_REGION param = FilledRecord();
    for (const Kind& kind : kKinds) {
        CAPTURE(kind.why);
        const Region region(static_cast<RType>(kind.type), param);
        CHECK(static_cast<int>(region.type) == kind.type);
        CHECK(region.tag == kind.tag);
        CHECK(region.inFileName == kind.inFileName);
        CHECK(region.constVal == kind.constVal);
        CHECK(region.noBinaryInput == kind.noBinaryInput);
        CHECK(region.no == 12);
        CHECK(region.name == "bay");
        CHECK(region.parentNo == 3);
        CHECK(region.coordType == 1);
        CHECK(region.outFileName.empty());
        CHECK(region.dataNum == 0);
        CHECK(region.val == nullptr);
        CHECK(region.valWork == nullptr);
        CHECK(region.parentValWork == nullptr);
        CHECK(region.instants.empty());
    }
}

TEST_CASE("a region of any other kind has neither tag nor file nor constant") {
    for (const int type : {0, 5, -1}) {
        CAPTURE(type);
        const Region region(static_cast<RType>(type), FilledRecord());
        CHECK(region.tag.empty());
        CHECK(region.inFileName.empty());
        CHECK(region.constVal == 0.0);
        CHECK(region.name == "bay");
    }
}

TEST_CASE("a topography or wave region without a file is no binary input") {
    PARAM_REGION param = FilledRecord();
    param.topoFile.clear();
    param.iniWaveFile.clear();
    CHECK(Region(tidora::RTYPE_TOPOGRAPHY, param).noBinaryInput);
    CHECK(Region(tidora::RTYPE_INITIAL_WAVE, param).noBinaryInput);
}

TEST_CASE("a copied region shares its grid arrays and duplicates its snapshots") {
    Region source(tidora::RTYPE_VERTICAL, FilledRecord());
    source.Set2dStruct(1, 2, 0.0, 0.0, 1.0);
    source.Make2dStruct(1.5);
    source.valWork = new float[2]();
    source.parentValWork = new float[3]();
    source.instants.resize(1);
    source.instants[0].Reset(2);
    source.instants[0].val[1] = 4.0F;
    {
        const Region copy(source);
        CHECK(copy.val == source.val);
        CHECK(copy.valWork == source.valWork);
        CHECK(copy.parentValWork == source.parentValWork);
        CHECK(copy.tag == "VRT");
        CHECK(copy.name == "bay");
        CHECK(copy.dataNum == 2);
        REQUIRE(copy.instants.size() == 1);
        CHECK(copy.instants[0].val != source.instants[0].val);
        CHECK(copy.instants[0].val[1] == 4.0F);
    }
    // The copy is gone, the shared arrays are not.
    CHECK(source.val[1] == 1.5F);
    source.valWork[1] = 1.0F;
    source.parentValWork[2] = 1.0F;
    delete[] source.parentValWork;
    source.FreeVecMem();
}

TEST_CASE("a region that is copied out of a map and released leaves the map's element dangling") {
    std::map<int, Region> regions;
    regions[1].Set2dStruct(2, 2, 0.0, 0.0, 1.0);
    regions[1].Make2dStruct(0.0);
    regions[1].instants.resize(1);
    regions[1].instants[0].Reset(4);

    Region copy = regions[1];
    copy.FreeVecMem();
    CHECK(copy.val == nullptr);
    // The element was not told: its pointer still has a value, which nobody may use; its snapshots are its own.
    CHECK(regions[1].val != nullptr);
    CHECK(regions[1].instants[0].num == 4);
    regions[1].val = nullptr;
}

TEST_CASE("the placeholder method of a region returns 1 and changes nothing") {
    Region region = WithGeometry(2, 2, 1.0, 2.0, 3.0);
    CHECK(region.TempMethod() == 1);
    CHECK(region.nx == 2);
    CHECK(region.val == nullptr);
}

struct Comparison {
    std::string why;
    Region a;
    Region b;
    int same;
};

TEST_CASE("two regions are the same when their size and origin are equal to the last bit") {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double up = std::numeric_limits<double>::infinity();
    const Comparison rows[] = {
        {"all equal", WithGeometry(3, 4, 1.5, -2.5, 10.0), WithGeometry(3, 4, 1.5, -2.5, 10.0), 1},
        {"the spacing is not compared", WithGeometry(3, 4, 1.5, -2.5, 10.0), WithGeometry(3, 4, 1.5, -2.5, 20.0), 1},
        {"org_x one unit in the last place up", WithGeometry(3, 4, 1.5, -2.5, 1.0),
         WithGeometry(3, 4, std::nextafter(1.5, up), -2.5, 1.0), 0},
        {"org_y one unit in the last place down", WithGeometry(3, 4, 1.5, -2.5, 1.0),
         WithGeometry(3, 4, 1.5, std::nextafter(-2.5, -up), 1.0), 0},
        {"another nx", WithGeometry(3, 4, 1.5, -2.5, 1.0), WithGeometry(2, 4, 1.5, -2.5, 1.0), 0},
        {"another ny", WithGeometry(3, 4, 1.5, -2.5, 1.0), WithGeometry(3, 5, 1.5, -2.5, 1.0), 0},
        {"nx and ny exchanged", WithGeometry(3, 4, 0.0, 0.0, 1.0), WithGeometry(4, 3, 0.0, 0.0, 1.0), 0},
        {"+0 and -0 are equal", WithGeometry(3, 4, 0.0, -0.0, 1.0), WithGeometry(3, 4, -0.0, 0.0, 1.0), 1},
        {"NaN in org_x is never equal", WithGeometry(3, 4, nan, 0.0, 1.0), WithGeometry(3, 4, nan, 0.0, 1.0), 0},
        {"NaN in org_y is never equal", WithGeometry(3, 4, 0.0, nan, 1.0), WithGeometry(3, 4, 0.0, nan, 1.0), 0},
    };
    for (const Comparison& row : rows) {
        CAPTURE(row.why);
        CHECK(isSameRegion(&row.a, &row.b) == row.same);
        CHECK(isSameRegion(&row.b, &row.a) == row.same);
    }
    const Region notANumber = WithGeometry(3, 4, nan, 0.0, 1.0);
    CHECK(isSameRegion(&notANumber, &notANumber) == 0);
}

TEST_CASE("kind and name and values play no part in whether two regions are the same") {
    Region topography(tidora::RTYPE_TOPOGRAPHY, FilledRecord());
    Region wave(tidora::RTYPE_VERTICAL, PARAM_REGION{});
    topography.Set2dStruct(2, 2, 1.0, 1.0, 1.0);
    wave.Set2dStruct(2, 2, 1.0, 1.0, 1.0);
    topography.Make2dStruct(5.0);
    CHECK(isSameRegion(&topography, &wave) == 1);
    topography.FreeVecMem();
}
