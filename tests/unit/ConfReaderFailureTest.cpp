// Configuration files that cannot be opened or that end too early.

#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "unit/ConfReading.h"
#include "unit/ExpectedText.h"
#include "unit/ScratchFolder.h"

namespace {

// The first `count` lines of `text`.
std::string FirstLines(const std::string& text, int count) {
    std::size_t end = 0;
    for (int line = 0; line < count; ++line) {
        end = text.find('\n', end) + 1;
    }
    return text.substr(0, end);
}

std::vector<std::string> FirstValues(std::size_t count) {
    const std::vector<std::string> values = GlobalValues();
    return {values.begin(), values.begin() + static_cast<long>(count)};
}

}  // namespace

TEST_CASE("a configuration that cannot be opened gives the framed block and no heading") {
    const ScratchFolder folder;
    struct Row {
        std::string why;
        std::string path;
    };
    const Row rows[] = {
        {"no such file", folder.At("missing.txt")},
        {"no such folder", folder.At("missing/conf.txt")},
        {"a folder", folder.MakeFolder("folder")},
        {"an empty path", ""},
        {"a file where a folder must be", folder.Write("file", "") + "/conf.txt"},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const ConfReading reading = ReadConfFile(row.path);
        CHECK_FALSE(reading.success);
        CHECK(reading.out.empty());
        CHECK(reading.err == ConfErrorBlock());
        CHECK(reading.conf.faults.empty());
        CHECK(reading.conf.regions.empty());
    }
}

TEST_CASE("an empty configuration is the format error") {
    const ConfReading reading = ReadConf("");
    CHECK_FALSE(reading.success);
    CHECK(reading.out == EchoOf(reading.conf, {}) + kFormatError);
    CHECK(reading.err == ConfErrorBlock());
    CHECK(reading.conf.faults.empty());
    CHECK(reading.conf.regions.empty());
}

TEST_CASE("a configuration that ends within the global block converts nothing") {
    const std::string text = GlobalPairs("0");
    for (int lines = 0; lines < 20; ++lines) {
        CAPTURE(lines);
        const ConfReading reading = ReadConf(FirstLines(text, lines));
        CHECK_FALSE(reading.success);
        // Two lines a value; nothing further is echoed at the end of the file.
        CHECK(reading.out == EchoOf(reading.conf, FirstValues(static_cast<std::size_t>(lines / 2))) + kFormatError);
        CHECK(reading.err == ConfErrorBlock());
        CHECK(reading.conf.spareText.empty());
        CHECK(reading.conf.outDir.empty());
        CHECK(reading.conf.calcDistance == 0.0);
        CHECK(reading.conf.faults.empty());
        CHECK(reading.conf.linear.mode == -1);
        CHECK(reading.conf.regions.empty());
    }
}

TEST_CASE("a configuration that ends before the region count keeps its global values and fails") {
    const std::string text = GlobalPairs("0");
    for (int lines = 20; lines < 22; ++lines) {
        CAPTURE(lines);
        const ConfReading reading = ReadConf(FirstLines(text, lines));
        CHECK_FALSE(reading.success);
        CHECK(reading.out == EchoOf(reading.conf, GlobalValues()) + kFormatError);
        CHECK(reading.err == ConfErrorBlock());
        CHECK(reading.conf.outDir == "out/dir");
        CHECK(reading.conf.faults.size() == 1);
        CHECK(reading.conf.regions.empty());
    }
    CHECK(ReadConf(FirstLines(text, 22)).success);
}

TEST_CASE("a file that ends in the middle of the third of four region blocks keeps the regions read so far") {
    const std::string four =
        GlobalPairs("4") + RegionPairs("11") + RegionPairs("12") + RegionPairs("13") + RegionPairs("14");
    for (int lines = 42; lines < 52; ++lines) {  // 22 lines, two whole blocks of 10, then 0 to 9 lines of the third
        CAPTURE(lines);
        const ConfReading reading = ReadConf(FirstLines(four, lines));
        CHECK_FALSE(reading.success);
        CHECK(EndsWith(reading.out, kFormatError));
        CHECK(reading.err == ConfErrorBlock());
        // The block that is cut short goes in as it started, under number 0.
        REQUIRE(reading.conf.regions.size() == 3);
        CHECK(reading.conf.regions.at(11).name == "name11");
        CHECK(reading.conf.regions.at(12).name == "name12");
        CHECK(reading.conf.regions.at(0).name.empty());
        CHECK(reading.conf.regions.at(0).topoFile.empty());
    }
}

TEST_CASE("the echo of a region block that is cut short ends with its last whole pair") {
    const ConfReading reading = ReadConf(GlobalPairs("1") + Pairs({"1", "bay"}) + "caption\n");
    std::vector<std::string> echoed = GlobalValues();
    echoed.insert(echoed.end(), {"1", "bay"});
    CHECK(reading.out == EchoOf(reading.conf, echoed) + kFormatError);
}

TEST_CASE("a count of two thousand million regions that are not there fails at once") {
    const ConfReading reading = ReadConf(GlobalPairs("2147483647") + RegionPairs("1"));
    CHECK_FALSE(reading.success);
    CHECK(EndsWith(reading.out, kFormatError));
    CHECK(reading.err == ConfErrorBlock());
    CHECK(reading.conf.regions.count(1) == 1);
    CHECK(reading.conf.regions.size() == 2);
}
