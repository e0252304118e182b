// The time-series writer: names, bytes, list and messages of a series that can be written.

#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "unit/ExpectedText.h"
#include "unit/GridReading.h"
#include "unit/ScratchFolder.h"
#include "unit/SeriesWriting.h"

using tidora::Region;
using tidora::RType;

namespace {

std::string Announcement(const std::string& path) {
    return ">>>>>>>>>>>>>>>>>> Write File : " + path + "\n";
}

}  // namespace

TEST_CASE("a series is one binary grid an interval and a list of them") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 3, 2, 2);
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 30.0}, {30.0, 12.5}}));
    CHECK(writing.result == 1);
    CHECK(writing.err.empty());

    const std::string first = folder.At("VRT_bay_0000s.bin");
    const std::string second = folder.At("VRT_bay_0030s.bin");
    const std::string list = folder.At("VRT_bay.txt");
    CHECK(FileBytes(first) == SnapshotBytes(3, 2, 0));
    CHECK(FileBytes(second) == SnapshotBytes(3, 2, 1));
    CHECK(FileBytes(list) ==
          "0.000000        30.000000       " + first + "\n" + "30.000000       12.500000       " + second + "\n");
    CHECK(writing.out == "\n" + Announcement(first) + Announcement(second) + "<<<<<<<<<<<<<<<<<< Completed. (VRT)\n");
    CHECK(region.outFileName == list);
}

TEST_CASE("the bytes of a snapshot file are header fields and rows in file order") {
    // Spelt out once, independently of the other cases: 1 column, 2 rows, values 0.25 and 1.25.
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 2, 1);
    region.org_x = 1.5;
    region.org_y = -2.0;
    region.dx = 0.5F;
    REQUIRE(WriteSeries(region, folder.Path(), Series({{0.0, 0.0}})).result == 1);
    const unsigned char expected[] = {0, 0, 0, 0, 0, 0, 0xF8, 0x3F, 0, 0,    0, 0, 0,    0,    0, 0xC0, 1,    0,
                                      0, 0, 2, 0, 0, 0, 0,    0,    0, 0x3F, 0, 0, 0x80, 0x3E, 0, 0,    0xA0, 0x3F};
    const std::string bytes(std::begin(expected), std::end(expected));
    CHECK(FileBytes(folder.At("VRT_bay_0000s.bin")) == bytes);
}

TEST_CASE("a series of any kind of region carries its values and its tag") {
    struct Row {
        RType type;
        std::string tag;
    };
    for (const Row& row : {Row{tidora::RTYPE_TOPOGRAPHY, "TPG"}, Row{tidora::RTYPE_INITIAL_WAVE, "Tdr"},
                           Row{tidora::RTYPE_VERTICAL, "VRT"}, Row{tidora::RTYPE_HORIZONTAL, "HRZ"}}) {
        CAPTURE(row.tag);
        const std::string tag = row.tag;
        const ScratchFolder folder;
        Region region = SeriesRegion(row.type, 2, 2, 1);
        const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{5.0, 0.0}}));
        CHECK(writing.result == 1);
        CHECK(FileBytes(folder.At(tag + "_bay_0005s.bin")) == SnapshotBytes(2, 2, 0));
        CHECK(FileBytes(folder.At(tag + "_bay.txt")) ==
              "5.000000        0.000000        " + folder.At(tag + "_bay_0005s.bin") + "\n");
        CHECK(EndsWith(writing.out, "<<<<<<<<<<<<<<<<<< Completed. (" + tag + ")\n"));
    }
}

struct StartName {
    std::string why;
    double start;
    const char* stem;
    const char* column;  ///< first column of the list line
};
const StartName kStartNames[] = {
    {"zero", 0.0, "0000", "0.000000        "},
    {"four digits with leading zeros", 7.0, "0007", "7.000000        "},
    {"truncated, not rounded", 30.7, "0030", "30.700000       "},
    {"just below the next second", 59.9999999, "0059", "60.000000       "},
    {"a negative start is truncated toward zero", -0.5, "0000", "-0.500000       "},
    {"the sign counts in the width", -1.5, "-001", "-1.500000       "},
    {"the width is a minimum", 20000.0, "20000", "20000.000000    "},
    {"the largest whole second there is", 2147483647.0, "2147483647", "2147483647.000000"},
    {"a start wider than its column", 123456789.5, "123456789", "123456789.500000"},
};

TEST_CASE("a snapshot file is named after the whole second in which its interval starts") {
    for (const StartName& row : kStartNames) {
        CAPTURE(row.why);
        const ScratchFolder folder;
        Region region = SeriesRegion(tidora::RTYPE_INITIAL_WAVE, 1, 1, 1);
        REQUIRE(WriteSeries(region, folder.Path(), Series({{row.start, 1.0}})).result == 1);
        const std::string path = folder.At(std::string("Tdr_bay_") + row.stem + "s.bin");
        REQUIRE(FileExists(path));
        CHECK(FileBytes(folder.At("Tdr_bay.txt")) == std::string(row.column) + "1.000000        " + path + "\n");
    }
}

TEST_CASE("intervals that start within the same whole second share a file and the list names it twice") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 1, 2);
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{10.2, 1.0}, {10.9, 2.0}}));
    CHECK(writing.result == 1);
    const std::string path = folder.At("VRT_bay_0010s.bin");
    CHECK(FileBytes(path) == SnapshotBytes(2, 1, 1));  // the second one overwrote the first
    CHECK(FileBytes(folder.At("VRT_bay.txt")) ==
          "10.200000       1.000000        " + path + "\n" + "10.900000       2.000000        " + path + "\n");
    CHECK(writing.out == "\n" + Announcement(path) + Announcement(path) + "<<<<<<<<<<<<<<<<<< Completed. (VRT)\n");
}

TEST_CASE("a series without intervals is an empty list file and the completion line") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_HORIZONTAL, 2, 2, 1);
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({}));
    CHECK(writing.result == 1);
    CHECK(writing.err.empty());
    CHECK(writing.out == "\n<<<<<<<<<<<<<<<<<< Completed. (HRZ)\n");
    CHECK(FileBytes(folder.At("HRZ_bay.txt")).empty());
    CHECK(region.outFileName == folder.At("HRZ_bay.txt"));
    CHECK_FALSE(FileExists(folder.At("HRZ_bay_0000s.bin")));
}

TEST_CASE("snapshots beyond the number of intervals are not written") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 3);
    CHECK(WriteSeries(region, folder.Path(), Series({{4.0, 0.0}})).result == 1);
    CHECK(FileBytes(folder.At("VRT_bay.txt")) ==
          "4.000000        0.000000        " + folder.At("VRT_bay_0004s.bin") + "\n");
}

TEST_CASE("files of an earlier series are overwritten and not appended to") {
    const ScratchFolder folder;
    Region large = SeriesRegion(tidora::RTYPE_VERTICAL, 5, 4, 2);
    REQUIRE(WriteSeries(large, folder.Path(), Series({{0.0, 1.0}, {1.0, 1.0}})).result == 1);
    Region small = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 1);
    REQUIRE(WriteSeries(small, folder.Path(), Series({{0.0, 1.0}})).result == 1);
    CHECK(FileBytes(folder.At("VRT_bay_0000s.bin")) == SnapshotBytes(1, 1, 0));
    CHECK(CountOf(FileBytes(folder.At("VRT_bay.txt")), "\n") == 1);
}

TEST_CASE("the folder is used as it is given") {
    const ScratchFolder folder;
    const CurrentFolder current(folder.Path());
    (void)folder.MakeFolder("out");
    for (const std::string dir : {"out", "out/", "./out", "out/../out", "."}) {
        CAPTURE(dir);
        Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 1);
        CHECK(WriteSeries(region, dir, Series({{0.0, 0.0}})).result == 1);
        CHECK(region.outFileName == dir + "/VRT_bay.txt");
        CHECK(FileBytes(dir + "/VRT_bay.txt") == "0.000000        0.000000        " + dir + "/VRT_bay_0000s.bin\n");
    }
}

TEST_CASE("a folder or region name that holds format characters is taken literally") {
    const ScratchFolder folder;
    const std::string dir = folder.MakeFolder("100%s %d%n");
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 1);
    region.name = "b%x y";
    CHECK(WriteSeries(region, dir, Series({{0.0, 0.0}})).result == 1);
    CHECK(FileBytes(dir + "/VRT_b%x y.txt") == "0.000000        0.000000        " + dir + "/VRT_b%x y_0000s.bin\n");
}

TEST_CASE("a snapshot file reads back to the same grid") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 4, 3, 1);
    region.instants[0].val[5] = -std::numeric_limits<float>::infinity();
    REQUIRE(WriteSeries(region, folder.Path(), Series({{0.0, 0.0}})).result == 1);
    const GridReading grid(folder.At("VRT_bay_0000s.bin"));
    REQUIRE(grid.result == 1);
    CHECK(grid.region.nx == 4);
    CHECK(grid.region.ny == 3);
    CHECK(grid.region.org_x == region.org_x);
    CHECK(grid.region.org_y == region.org_y);
    CHECK(grid.region.dx == region.dx);
    const std::vector<float> read(grid.region.val, grid.region.val + 12);
    CHECK(read == std::vector<float>(region.instants[0].val, region.instants[0].val + 12));
}

TEST_CASE("writing a series changes neither the snapshots nor the intervals") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, 1);
    const tidora::DynamicParam series = Series({{3.0, 4.0}});
    REQUIRE(WriteSeries(region, folder.Path(), series).result == 1);
    CHECK(region.instants.size() == 1);
    CHECK(region.instants[0].val[3] == 11.25F);
    CHECK(region.inFileName == "input.txt");
    REQUIRE(series.params.size() == 1);
    CHECK(series.params[0].validTime == 3.0);
}
