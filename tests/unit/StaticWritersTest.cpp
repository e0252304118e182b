#include <doctest/doctest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "region/Region.h"
#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

namespace {

using tidora::PARAM_REGION;
using tidora::Region;
using tidora::RType;

PARAM_REGION Bay(int number = 7) {
    PARAM_REGION param;
    param.no = number;
    param.name = "bay";
    param.topoFile = "bay_topo.txt";
    return param;
}

/// A region of 3 columns and 2 rows whose value at (ix, iy) is -(10 ix + iy) - 0.5; freed at the end of its scope.
struct OwnedRegion {
    Region region;

    explicit OwnedRegion(RType type, int number = 7) : region(type, Bay(number)) {
        region.Set2dStruct(3, 2, 100.25, -200.5, 5.5);
        region.val = new float[6];
        for (int ix = 0; ix < 3; ++ix) {
            for (int iy = 0; iy < 2; ++iy) {
                region.val[ix * 2 + iy] = -static_cast<float>(10 * ix + iy) - 0.5F;
            }
        }
    }
    ~OwnedRegion() { region.FreeVecMem(); }
    OwnedRegion(const OwnedRegion&) = delete;
    OwnedRegion& operator=(const OwnedRegion&) = delete;

    /// Adds a snapshot of one value throughout.
    void AddSnapshot(float value) {
        region.instants.emplace_back();
        region.instants.back().Reset(6);
        std::fill_n(region.instants.back().val, 6, value);
    }
};

template <typename Value>
void Append(std::string& bytes, Value value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof value);
}

std::string Header() {
    std::string bytes;
    Append(bytes, 100.25);
    Append(bytes, -200.5);
    Append(bytes, 3);
    Append(bytes, 2);
    Append(bytes, 5.5F);
    return bytes;
}

struct Printed {
    int result;
    std::string out, err;
};

Printed WriteBin(Region& region, const std::string& dir) {
    const PrintedText printed;
    const int result = region.WriteBIN(dir);
    return {result, printed.Out(), printed.Err()};
}

Printed WriteText(Region& region, const std::string& dir, bool withSnapshots) {
    const PrintedText printed;
    const int result = region.WriteASCII(dir, withSnapshots);
    return {result, printed.Out(), printed.Err()};
}

std::string CalParam(const Region& region) {
    const ScratchFolder scratch;
    const std::string path = scratch.At("cal.txt");
    std::FILE* const stream = std::fopen(path.c_str(), "w");
    REQUIRE(stream != nullptr);
    CHECK(region.WriteCalParam(stream) == 1);
    REQUIRE(std::fclose(stream) == 0);
    return FileBytes(path);
}

}  // namespace

TEST_CASE("the binary grid of a topography region holds header and values, row by row") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
    const Printed printed = WriteBin(owned.region, scratch.Path());
    const std::string path = scratch.At("TPG007.bin");
    CHECK(printed.result == 1);
    CHECK(printed.out == ">>>>>>>>>>>>>>>>>> Write File:" + path +
                             "\n     FILE_NUM:1/1\n    BIN_X_NUM:3\n    BIN_Y_NUM:2\n<<<<<<<<<<<<<<<<<< Completed.\n");
    CHECK(printed.err.empty());
    CHECK(owned.region.outFileName == path);
    std::string expected = Header();
    for (const float value : {-0.5F, -10.5F, -20.5F, -1.5F, -11.5F, -21.5F}) {
        Append(expected, value);
    }
    CHECK(FileBytes(path) == expected);
}

TEST_CASE("a written topography grid reads back to the same grid") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
    REQUIRE(WriteBin(owned.region, scratch.Path()).result == 1);
    Region back;
    back.inFileName = owned.region.outFileName;
    const PrintedText printed;
    REQUIRE(back.ReadFile() == 1);
    CHECK(std::equal(back.val, back.val + 6, owned.region.val));
    CHECK(back.org_x == 100.25);
    CHECK(back.dx == 5.5F);
    CHECK(back.valMax == -0.5F);
    CHECK(back.valMin == -21.5F);
    CHECK(back.end_x == 0.0);
    CHECK(back.end_y == 0.0);
    back.FreeVecMem();
}

TEST_CASE("the binary grid of every other kind is its header alone") {
    const ScratchFolder scratch;
    for (const RType type : {tidora::RTYPE_INITIAL_WAVE, tidora::RTYPE_VERTICAL, tidora::RTYPE_HORIZONTAL}) {
        OwnedRegion owned(type);
        CHECK(WriteBin(owned.region, scratch.Path()).result == 1);
        CHECK(FileBytes(owned.region.outFileName) == Header());
    }
}

TEST_CASE("the region number fills at least three places") {
    const ScratchFolder scratch;
    OwnedRegion small(tidora::RTYPE_VERTICAL, 7);
    OwnedRegion large(tidora::RTYPE_VERTICAL, 1234);
    REQUIRE(WriteBin(small.region, scratch.Path()).result == 1);
    REQUIRE(WriteBin(large.region, scratch.Path()).result == 1);
    CHECK(FileExists(scratch.At("VRT007.bin")));
    CHECK(FileExists(scratch.At("VRT1234.bin")));
}

TEST_CASE("a binary grid that cannot be opened names the input grid and keeps the failed path") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
    const std::string missing = scratch.At("missing");
    const Printed printed = WriteBin(owned.region, missing);
    CHECK(printed.result == 0);
    CHECK(printed.out.empty());
    CHECK(printed.err ==
          ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at Writing BIN File Method.", "Can not open file.",
                                              "Particular attention should be given to \"Region BIN File\".",
                                              "Region BIN File > bay_topo.txt"}));
    CHECK(owned.region.outFileName == missing + "/TPG007.bin");
}

TEST_CASE("a topography region without its grid is not written") {
    const ScratchFolder scratch;
    Region region(tidora::RTYPE_TOPOGRAPHY, Bay());
    region.Set2dStruct(3, 2, 0.0, 0.0, 1.0);
    const std::string bin = "Abnormal action at Writing BIN File Method.";
    const std::string ascii = "Abnormal action at Writing ASCII File Method.";
    const std::string nothing = "Particular attention should be given to \" \".";
    CHECK(WriteBin(region, scratch.Path()).err == ErrorBlock("REGION OBJECT METHOD", {bin, nothing}));
    CHECK(WriteText(region, scratch.Path(), false).err == ErrorBlock("REGION OBJECT METHOD", {ascii, nothing}));
}

TEST_CASE("the text grid of a topography region turns the sign") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
    owned.region.val[0] = -1234.5F;
    const Printed printed = WriteText(owned.region, scratch.Path(), false);
    CHECK(printed.result == 1);
    CHECK(printed.out == "    ASCII_X_NUM:3\n    ASCII_Y_NUM:2\n");
    CHECK(FileBytes(scratch.At("TPG007_0000.txt")) ==
          "0 0 1234.500000\n1 0 10.500000\n2 0 20.500000\n0 1 1.500000\n1 1 11.500000\n2 1 21.500000\n");
    CHECK(owned.region.outFileName.empty());
}

TEST_CASE("three snapshots give three text grids, each with the values added") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_INITIAL_WAVE);
    for (const float value : {1.0F, 2.0F, 4.0F}) {
        owned.AddSnapshot(value);
    }
    REQUIRE(WriteText(owned.region, scratch.Path(), true).result == 1);
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0000.txt")), "0 0 0.500000\n1 0 -9.500000\n"));
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0001.txt")), "0 0 1.500000\n"));
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0002.txt")), "0 0 3.500000\n"));
    CHECK_FALSE(FileExists(scratch.At("Tdr007_0003.txt")));
}

TEST_CASE("one snapshot gives one text grid, with the values added when asked for") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_INITIAL_WAVE);
    owned.AddSnapshot(2.0F);
    REQUIRE(WriteText(owned.region, scratch.Path(), true).result == 1);
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0000.txt")), "0 0 1.500000\n"));
    REQUIRE(WriteText(owned.region, scratch.Path(), false).result == 1);
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0000.txt")), "0 0 -0.500000\n"));
    CHECK_FALSE(FileExists(scratch.At("Tdr007_0001.txt")));
}

TEST_CASE("snapshots that are asked for and not there change nothing") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_INITIAL_WAVE);
    REQUIRE(WriteText(owned.region, scratch.Path(), true).result == 1);
    CHECK(StartsWith(FileBytes(scratch.At("Tdr007_0000.txt")), "0 0 -0.500000\n"));
}

TEST_CASE("the text grids of the deformation kinds are empty") {
    const ScratchFolder scratch;
    OwnedRegion vertical(tidora::RTYPE_VERTICAL);
    OwnedRegion horizontal(tidora::RTYPE_HORIZONTAL);
    REQUIRE(WriteText(vertical.region, scratch.Path(), false).result == 1);
    REQUIRE(WriteText(horizontal.region, scratch.Path(), false).result == 1);
    CHECK(FileBytes(scratch.At("VRT007_0000.txt")).empty());
    CHECK(FileBytes(scratch.At("HRZ007_0000.txt")).empty());
}

TEST_CASE("a text grid that cannot be opened names the input grid, and earlier ones stay") {
    const ScratchFolder scratch;
    OwnedRegion owned(tidora::RTYPE_INITIAL_WAVE);
    owned.region.inFileName = "wave.txt";
    owned.AddSnapshot(1.0F);
    owned.AddSnapshot(2.0F);
    static_cast<void>(scratch.MakeFolder("Tdr007_0001.txt"));
    const Printed printed = WriteText(owned.region, scratch.Path(), true);
    CHECK(printed.result == 0);
    CHECK(printed.err ==
          ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at Writing ASCII File Method.", "Can not open file.",
                                              "Particular attention should be given to \"Region ASCII File\".",
                                              "Region ASCII File > wave.txt"}));
    CHECK(FileExists(scratch.At("Tdr007_0000.txt")));
}

TEST_CASE("a text grid that cannot be written in full is a failure, whether the stream notices early or at its end") {
    if (!HasFullDevice()) {
        return;
    }
    for (const int side : {3, 200}) {
        CAPTURE(side);
        const ScratchFolder scratch;
        std::filesystem::create_symlink("/dev/full", scratch.At("TPG007_0000.txt"));
        OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
        owned.region.FreeVecMem();
        owned.region.Set2dStruct(side, side, 0.0, 0.0, 1.0);
        owned.region.val = new float[static_cast<std::size_t>(side * side)]();
        const Printed printed = WriteText(owned.region, scratch.Path(), false);
        CHECK(printed.result == 0);
        CHECK(Contains(printed.err, "  ERROR-DETAIL:Abnormal action at Writing ASCII File Method.\n"));
        CHECK(std::filesystem::is_symlink(scratch.At("TPG007_0000.txt")));
    }
}

TEST_CASE("each kind has its own entry in the calculation parameters") {
    OwnedRegion topography(tidora::RTYPE_TOPOGRAPHY);
    topography.region.outFileName = "out/TPG007.bin";
    CHECK(CalParam(topography.region) ==
          "# Region No.\n7\n# Region Name\nbay\n# Topography File Name\nout/TPG007.bin\n");
    OwnedRegion wave(tidora::RTYPE_INITIAL_WAVE);
    wave.region.outFileName = "out/Tdr_bay.txt";
    CHECK(CalParam(wave.region) == "# Initial Wave Height File List\nout/Tdr_bay.txt\n");
    OwnedRegion vertical(tidora::RTYPE_VERTICAL);
    CHECK(CalParam(vertical.region) == "# Vertical Deformation File List\n\n");  // never written: an empty line
    OwnedRegion horizontal(tidora::RTYPE_HORIZONTAL);
    CHECK(CalParam(horizontal.region).empty());
}

TEST_CASE("calculation parameters that cannot be written are a failure") {
    OwnedRegion owned(tidora::RTYPE_TOPOGRAPHY);
    const ScratchFolder scratch;
    std::FILE* const readOnly = std::fopen(scratch.Write("cal.txt", "").c_str(), "r");
    REQUIRE(readOnly != nullptr);
    const PrintedText printed;
    CHECK(owned.region.WriteCalParam(readOnly) == 0);
    CHECK(printed.Err() == ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at ******** Method.",
                                                               "Particular attention should be given to \" \"."}));
    std::fclose(readOnly);
}
