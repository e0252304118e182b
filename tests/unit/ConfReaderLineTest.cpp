// How lines become values: comments, long lines, line ends and odd bytes of a configuration file.

#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "unit/ConfReading.h"
#include "unit/ExpectedText.h"

namespace {

// A token of `length` characters.
std::string Token(std::size_t length) {
    return std::string(length, 'x');
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// The global block with `firstPair` in place of the pair of slot 1, and no region.
ConfReading ReadWithFirstPair(const std::string& firstPair) {
    std::vector<std::string> rest = GlobalValues();
    rest.erase(rest.begin());
    return ReadConf(firstPair + Pairs(rest) + Pairs({"0"}));
}

}  // namespace

TEST_CASE("a value line that starts with # shifts every later global value one slot up and leaves the block short") {
    std::vector<std::string> values = GlobalValues();
    values[0] = "#spare";
    const ConfReading reading = ReadConf(Pairs(values) + Pairs({"0"}));
    // The output directory is taken from pair 3; the tenth value is missing, which is the format error.
    CHECK(reading.conf.spareText == "out/dir");
    CHECK(reading.conf.outDir == "0.25");
    CHECK(reading.conf.calcDistance == 7.0);
    CHECK_FALSE(reading.success);
    CHECK(reading.out == EchoOf(reading.conf, {values.begin() + 1, values.end()}) + kFormatError);
    CHECK(reading.err == ConfErrorBlock());
}

TEST_CASE("a global block with any one value line commented out is the format error") {
    for (std::size_t slot = 0; slot < 10; ++slot) {
        CAPTURE(slot);
        std::vector<std::string> values = GlobalValues();
        values[slot] = "# " + values[slot];
        const ConfReading reading = ReadConf(Pairs(values) + GlobalPairs("0"));
        CHECK_FALSE(reading.success);
        CHECK(EndsWith(reading.out, kFormatError));
        CHECK(reading.err == ConfErrorBlock());
    }
}

TEST_CASE("a region block with any one value line commented out is the format error") {
    for (std::size_t slot = 0; slot < 5; ++slot) {
        CAPTURE(slot);
        std::vector<std::string> values{"1", "name", "0", "1", "topo.txt"};
        values[slot] = "#" + values[slot];
        const ConfReading reading = ReadConf(GlobalPairs("1") + Pairs(values));
        CHECK_FALSE(reading.success);
        CHECK(EndsWith(reading.out, kFormatError));
        CHECK(reading.err == ConfErrorBlock());
    }
}

TEST_CASE("a file of comment lines only is the format error and echoes nothing") {
    std::string text;
    for (int line = 0; line < 40; ++line) {
        text += "# comment\n";
    }
    const ConfReading reading = ReadConf(text);
    CHECK_FALSE(reading.success);
    CHECK(reading.out == EchoOf(reading.conf, {}) + kFormatError);
    CHECK(reading.err == ConfErrorBlock());
}

TEST_CASE("a value line without a token is the format error and stops the echo") {
    for (const std::string blank : {"", " ", "\t", " \t "}) {
        for (std::size_t slot = 0; slot < 10; ++slot) {
            CAPTURE(blank);
            CAPTURE(slot);
            std::vector<std::string> values = GlobalValues();
            values[slot] = blank;
            const ConfReading reading = ReadConf(Pairs(values) + Pairs({"0"}));
            CHECK_FALSE(reading.success);
            const std::vector<std::string> before(values.begin(), values.begin() + static_cast<long>(slot));
            CHECK(reading.out == EchoOf(reading.conf, before) + kFormatError);
            CHECK(reading.err == ConfErrorBlock());
        }
    }
}

TEST_CASE("a value line without a token in a region block is the format error") {
    for (std::size_t slot = 0; slot < 5; ++slot) {
        CAPTURE(slot);
        std::vector<std::string> values{"1", "name", "0", "1", "topo.txt"};
        values[slot] = "";
        const ConfReading reading = ReadConf(GlobalPairs("1") + Pairs(values));
        CHECK_FALSE(reading.success);
        CHECK(EndsWith(reading.out, kFormatError));
        CHECK(reading.err == ConfErrorBlock());
    }
}

TEST_CASE("a line of 1021 characters and its line end are one read") {
    // As a caption, then as a value: 1021 characters and the line end fill a read of 1022.
    const ConfReading asCaption = ReadWithFirstPair(Token(1021) + "\nspare\n");
    CHECK(asCaption.success);
    CHECK(asCaption.conf.spareText == "spare");

    const ConfReading asValue = ReadWithFirstPair("caption\n" + Token(1021) + "\n");
    CHECK(asValue.success);
    CHECK(asValue.conf.spareText == Token(1021));
    CHECK(asValue.conf.outDir == "out/dir");
}

TEST_CASE("a line of exactly 1022 characters leaves its line end as the next line") {
    // The line end stands where the caption's value is expected: a value line without a token.
    const ConfReading asCaption = ReadWithFirstPair(Token(1022) + "\nspare\n");
    CHECK_FALSE(asCaption.success);
    CHECK(EndsWith(asCaption.out, kFormatError));

    // Behind a value the line end is taken for the next caption, and the next caption for its value.
    const ConfReading asValue = ReadWithFirstPair("caption\n" + Token(1022) + "\n");
    CHECK(asValue.conf.spareText == Token(1022));
    CHECK(asValue.conf.outDir == "caption");
}

TEST_CASE("a line longer than 1022 characters is read in two pieces and shifts the pairing by one line") {
    const ConfReading asCaption = ReadWithFirstPair(Token(1022) + "rest of it\nspare\n");
    CHECK(asCaption.conf.spareText == "rest");
    CHECK(asCaption.conf.outDir == "caption");

    const ConfReading asValue = ReadWithFirstPair("caption\n" + Token(1022) + "y\n");
    CHECK(asValue.conf.spareText == Token(1022));
    CHECK(asValue.conf.outDir == "caption");

    // A caption and a value that are both too long make one pair more, and the pairing behind them is right again.
    const ConfReading twice = ReadWithFirstPair(Token(1022) + "rest\n" + Token(1022) + "end\n");
    CHECK(twice.conf.spareText == "rest");
    CHECK(twice.conf.outDir == "end");
    CHECK(twice.conf.kajiuraFilter == 7);
    REQUIRE(twice.conf.faults.size() == 1);
    CHECK(twice.conf.faults[0].faultFile == "1");
    CHECK(twice.conf.linear.diameter == 1.5);
}

TEST_CASE("with carriage returns every string keeps one and numbers convert") {
    const std::string text = Replaced(GlobalPairs("1") + RegionPairs("3"), "\n", "\r\n");
    const ConfReading reading = ReadConf(text);
    CHECK(reading.success);
    CHECK(reading.conf.spareText == "spare\r");
    CHECK(reading.conf.outDir == "out/dir\r");
    CHECK(reading.conf.calcDistance == 0.25);
    CHECK(reading.conf.horizontalEffect == 7);
    CHECK(reading.conf.faults.at(0).faultFile == "data/fault.txt\r");
    CHECK(reading.conf.linear.diameter == 2500.5);
    REQUIRE(reading.conf.regions.count(3) == 1);
    CHECK(reading.conf.regions.at(3).name == "name3\r");
    CHECK(reading.conf.regions.at(3).parentNo == 4);
    CHECK(reading.conf.regions.at(3).topoFile == "topo3.txt\r");
    CHECK(Contains(reading.out, "\nout/dir\r\n"));
}

TEST_CASE("a carriage return alone on a value line is a token") {
    std::vector<std::string> values = GlobalValues();
    values[1] = "\r";
    const ConfReading reading = ReadConf(Pairs(values) + Pairs({"0"}));
    CHECK(reading.success);
    CHECK(reading.conf.outDir == "\r");
}

TEST_CASE("the last line of a configuration needs no line end") {
    std::string withCount = GlobalPairs("0");
    withCount.pop_back();
    CHECK(ReadConf(withCount).success);

    std::string withRegion = GlobalPairs("1") + RegionPairs("1");
    withRegion.pop_back();
    const ConfReading reading = ReadConf(withRegion);
    CHECK(reading.success);
    CHECK(reading.conf.regions.at(1).topoFile == "topo1.txt");
}

TEST_CASE("a NUL character ends a value line") {
    const std::string nul(1, '\0');
    const ConfReading behind = ReadWithFirstPair("caption\nspa" + nul + "re\n");
    CHECK(behind.success);
    CHECK(behind.conf.spareText == "spa");
    CHECK(behind.conf.outDir == "out/dir");

    const ConfReading first = ReadWithFirstPair("caption\n" + nul + "spare\n");
    CHECK_FALSE(first.success);
    CHECK(EndsWith(first.out, kFormatError));

    const ConfReading caption = ReadWithFirstPair("cap" + nul + "tion\nspare\n");
    CHECK(caption.success);
    CHECK(caption.conf.spareText == "spare");
}
