// What a configuration file that follows the rules becomes.

#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "config/ConfReader.h"
#include "unit/ConfReading.h"

using tidora::ConfReader;
using tidora::PARAM_REGION;

namespace {

std::vector<std::string> Joined(std::vector<std::string> head, const std::vector<std::string>& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

// GlobalValues() with the value of one slot (counted from 1) replaced, and no region.
ConfReading ReadWithSlot(std::size_t slot, const std::string& value) {
    std::vector<std::string> values = GlobalValues();
    values[slot - 1] = value;
    return ReadConf(Pairs(values) + Pairs({"0"}));
}

}  // namespace

TEST_CASE("a configuration reader starts with the defaults and opens nothing") {
    const ConfReader conf("no/such/file");
    CHECK(conf.confFile == "no/such/file");
    CHECK(conf.spareText.empty());
    CHECK(conf.outDir.empty());
    CHECK(conf.regions.empty());
    CHECK(conf.topoDeform);
    CHECK(conf.calcDistance == 0.0);
    CHECK(conf.horizontalEffect == 0);
    CHECK(conf.kajiuraFilter == 0);
    CHECK(conf.faults.empty());
    CHECK(conf.linear.mode == -1);
    CHECK(conf.linear.height == 0.0);
    CHECK(conf.linear.diameter == 1.0);
    CHECK_FALSE(conf.iniWaveSet);
    CHECK_FALSE(conf.faultSet);
}

TEST_CASE("a region record starts with number 0 and no parent and defined constants") {
    const PARAM_REGION region;
    CHECK(region.no == 0);
    CHECK(region.name.empty());
    CHECK(region.parentNo == 0);
    CHECK(region.coordType == 0);
    CHECK(region.topoFile.empty());
    CHECK(region.topoConst == 0.0);
    CHECK(region.iniWaveFile.empty());
    CHECK(region.iniWaveConst == 0.0);
}

TEST_CASE("the ten global values and two regions reach their members and are echoed in file order") {
    const ConfReading reading = ReadConf(GlobalPairs("2") + RegionPairs("1") + RegionPairs("2"));
    CHECK(reading.success);
    CHECK(reading.err.empty());
    // The region count is not echoed.
    CHECK(reading.out == EchoOf(reading.conf, Joined(GlobalValues(), {"1", "name1", "4", "1", "topo1.txt", "2", "name2",
                                                                      "4", "1", "topo2.txt"})));

    const ConfReader& conf = reading.conf;
    CHECK(conf.spareText == "spare");
    CHECK(conf.outDir == "out/dir");
    CHECK(conf.calcDistance == 0.25);
    CHECK(conf.horizontalEffect == 7);
    CHECK(conf.kajiuraFilter == 3);
    REQUIRE(conf.faults.size() == 1);
    CHECK(conf.faults[0].coordType == 1);
    CHECK(conf.faults[0].faultFile == "data/fault.txt");
    CHECK(conf.linear.mode == 2);
    CHECK(conf.linear.height == 1.5);
    CHECK(conf.linear.diameter == 2500.5);

    REQUIRE(conf.regions.size() == 2);
    for (const auto& entry : conf.regions) {
        const int key = entry.first;
        const PARAM_REGION& region = entry.second;
        CAPTURE(key);
        CHECK(region.no == key);
        CHECK(region.name == "name" + std::to_string(key));
        CHECK(region.parentNo == 4);
        CHECK(region.coordType == 1);
        CHECK(region.topoFile == "topo" + std::to_string(key) + ".txt");
        CHECK(region.topoConst == 0.0);
        CHECK(region.iniWaveFile.empty());
        CHECK(region.iniWaveConst == 0.0);
    }
}

TEST_CASE("the switches that no value of the file stands for keep their defaults") {
    const ConfReading reading = ReadConf(GlobalPairs("1") + RegionPairs("1"));
    REQUIRE(reading.success);
    CHECK(reading.conf.topoDeform);
    CHECK_FALSE(reading.conf.iniWaveSet);
    CHECK_FALSE(reading.conf.faultSet);
}

TEST_CASE("a file with exactly the ten global pairs and a count of 0 yields an empty region table") {
    const ConfReading reading = ReadConf(GlobalPairs("0"));
    CHECK(reading.success);
    CHECK(reading.err.empty());
    CHECK(reading.out == EchoOf(reading.conf, GlobalValues()));
    CHECK(reading.conf.regions.empty());
    CHECK(reading.conf.faults.size() == 1);
}

struct CountLine {
    std::string why;
    const char* line;
    std::size_t regions;  ///< how many of the two region blocks in the file are read
};
const CountLine kCountLines[] = {
    {"a negative count reads no region block", "-3", 0},
    {"the smallest count there is reads no region block", "-2147483648", 0},
    {"not a number counts as 0", "many", 0},
    {"an empty count line counts as 0", "", 0},
    {"a blank count line counts as 0", " \t ", 0},
    {"# has no meaning on the count line: not a number", "#2", 0},
    {"leading blanks are part of the number's syntax", " \t 2", 2},
    {"the leading numeric part counts", "1regions", 1},
    {"further tokens are ignored", "1 region", 1},
    {"base 10 only: 0 and then a letter", "0x2", 0},
    {"an integer ends at the decimal point", "1.9", 1},
    {"a sign is part of the number", "+2", 2},
};

TEST_CASE("the count line is converted as a whole and leniently and what it does not announce is not read") {
    for (const CountLine& row : kCountLines) {
        CAPTURE(row.why);
        const ConfReading reading = ReadConf(GlobalPairs(row.line) + RegionPairs("5") + RegionPairs("6"));
        CHECK(reading.success);
        CHECK(reading.err.empty());
        CHECK(reading.conf.regions.size() == row.regions);
    }
}

TEST_CASE("a region count of -3 is a success when the 22 lines before it are there and the file ends with it") {
    const ConfReading reading = ReadConf(GlobalPairs("-3"));
    CHECK(reading.success);
    CHECK(reading.conf.regions.empty());
}

TEST_CASE("what follows the last announced region block is not read") {
    const ConfReading reading = ReadConf(GlobalPairs("1") + RegionPairs("1") + "\n\n#\nrubbish");
    CHECK(reading.success);
    CHECK(reading.conf.regions.size() == 1);
}

TEST_CASE("of two region blocks with the same number the first is kept") {
    const ConfReading reading = ReadConf(GlobalPairs("3") + Pairs({"7", "first", "1", "0", "a.txt"}) +
                                         Pairs({"7", "second", "2", "1", "b.txt"}) + RegionPairs("8"));
    CHECK(reading.success);
    REQUIRE(reading.conf.regions.size() == 2);
    CHECK(reading.conf.regions.at(7).name == "first");
    CHECK(reading.conf.regions.at(7).parentNo == 1);
    CHECK(reading.conf.regions.at(7).coordType == 0);
    CHECK(reading.conf.regions.at(7).topoFile == "a.txt");
}

TEST_CASE("regions are stored in ascending number whatever their order in the file") {
    const ConfReading reading =
        ReadConf(GlobalPairs("4") + RegionPairs("30") + RegionPairs("-2") + RegionPairs("9") + RegionPairs("10"));
    REQUIRE(reading.success);
    std::vector<int> numbers;
    for (const auto& entry : reading.conf.regions) {
        numbers.push_back(entry.first);
    }
    CHECK(numbers == std::vector<int>{-2, 9, 10, 30});
}

TEST_CASE("of a value line only the first token counts and only it is echoed") {
    const ConfReading reading = ReadWithSlot(9, "5 m");
    CHECK(reading.success);
    CHECK(reading.conf.linear.height == 5.0);
    std::vector<std::string> echoed = GlobalValues();
    echoed[8] = "5";
    CHECK(reading.out == EchoOf(reading.conf, echoed));
}

TEST_CASE("blanks and tabs before and behind the first token are no part of it") {
    CHECK(ReadWithSlot(2, " \t  out\there it goes ").conf.outDir == "out");
    CHECK(ReadWithSlot(2, "out\t").conf.outDir == "out");
    CHECK(ReadWithSlot(7, "\tfault").conf.faults.at(0).faultFile == "fault");
}

TEST_CASE("a number sign behind the first column does not skip a value line") {
    const ConfReading reading = ReadWithSlot(2, " #out");
    CHECK(reading.success);
    CHECK(reading.conf.outDir == "#out");
    CHECK(ReadWithSlot(2, "out#1").conf.outDir == "out#1");
}

TEST_CASE("a caption is ignored whatever it contains") {
    for (const std::string caption : {"", "#", "# caption", " ", "3.5", "out/other"}) {
        CAPTURE(caption);
        std::string text;
        for (const std::string& value : GlobalValues()) {
            text += caption + "\n" + value + "\n";
        }
        const ConfReading reading = ReadConf(text + caption + "\n0\n");
        CHECK(reading.success);
        CHECK(reading.out == EchoOf(reading.conf, GlobalValues()));
    }
}

struct IntegerText {
    std::string why;
    const char* text;
    int value;
};
const IntegerText kIntegerTexts[] = {
    {"plain", "1", 1},
    {"negative", "-1", -1},
    {"a sign", "+4", 4},
    {"leading zeros are not octal", "010", 10},
    {"not hexadecimal", "0x10", 0},
    {"no exponent", "1e3", 1},
    {"ends at the decimal point", "2.9", 2},
    {"not a number", "yes", 0},
    {"the leading numeric part", "12abc", 12},
    {"a sign alone", "-", 0},
    {"the largest", "2147483647", std::numeric_limits<int>::max()},
    {"the smallest", "-2147483648", std::numeric_limits<int>::min()},
};

TEST_CASE("integer values are converted base 10 and leniently") {
    for (const IntegerText& row : kIntegerTexts) {
        CAPTURE(row.why);
        CHECK(ReadWithSlot(4, row.text).conf.horizontalEffect == row.value);
        CHECK(ReadWithSlot(5, row.text).conf.kajiuraFilter == row.value);
        CHECK(ReadWithSlot(6, row.text).conf.faults.at(0).coordType == row.value);
        CHECK(ReadWithSlot(8, row.text).conf.linear.mode == row.value);
    }
}

struct RealText {
    std::string why;
    const char* text;
    double value;
};
const RealText kRealTexts[] = {
    {"plain", "0.25", 0.25},
    {"no digit before the point", ".5", 0.5},
    {"an exponent", "1e-5", 1e-5},
    {"a negative number", "-3.5", -3.5},
    {"not a number", "far", 0.0},
    {"the leading numeric part", "1.5m", 1.5},
    {"a comma is no decimal point", "1,5", 1.0},
    {"hexadecimal", "0x1p4", 16.0},
    {"infinity", "inf", std::numeric_limits<double>::infinity()},
    {"beyond the largest number", "1e999", std::numeric_limits<double>::infinity()},
    {"below the smallest number", "1e-999", 0.0},
};

TEST_CASE("real values are converted as strtod does") {
    for (const RealText& row : kRealTexts) {
        CAPTURE(row.why);
        CHECK(ReadWithSlot(3, row.text).conf.calcDistance == row.value);
        CHECK(ReadWithSlot(9, row.text).conf.linear.height == row.value);
        CHECK(ReadWithSlot(10, row.text).conf.linear.diameter == row.value);
    }
    const double notANumber = ReadWithSlot(3, "nan").conf.calcDistance;
    CHECK(notANumber != notANumber);
}
