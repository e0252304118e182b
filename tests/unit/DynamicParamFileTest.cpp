// The dynamic parameter file.

#include <cmath>
#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "fault/DynamicParam.h"
#include "unit/ExpectedText.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

using tidora::DynamicParam;

namespace {

const std::string kHeading = "\n>>>>>>>>>>>>> Fault Dynamic Parameter Input:\n";
const std::string kCompleted = "<<<<<<<<<<<<<<<<<< Completed.\n";

struct IntervalReading {
    int result = -1;
    DynamicParam dyn;
    std::string out;
    std::string err;
};

void Read(IntervalReading& reading, double timeLimit) {
    const PrintedText printed;
    reading.result = reading.dyn.ReadFile(timeLimit);
    reading.out = printed.Out();
    reading.err = printed.Err();
}

IntervalReading ReadIntervals(const std::string& text, double timeLimit = 1e9) {
    const ScratchFolder folder;
    IntervalReading reading;
    reading.dyn.fileName = folder.Write("dynamic.txt", text);
    Read(reading, timeLimit);
    return reading;
}

std::string FormatBlock() {
    return ErrorBlock("DYNAMICPARAM OBJECT METHOD", {"Abnormal action at Reading File Method.",
                                                     "You should check the Format of Dynamic Parameter File."});
}

// `text`, with zeros before its last character so that it has `length` characters.
std::string Padded(std::string text, std::size_t length) {
    text.insert(text.size() - 1, length - text.size(), '0');
    return text;
}

}  // namespace

TEST_CASE("a new list of intervals is empty") {
    const DynamicParam dyn;
    CHECK(dyn.fileName.empty());
    CHECK(dyn.params.empty());
    CHECK(dyn.count == 0);
    CHECK(std::int32_t{DynamicParam::FILE_MAX_PATH} == 1023);
}

TEST_CASE("a dynamic parameter file becomes intervals in file order and is echoed") {
    const IntervalReading reading =
        ReadIntervals("# order start length\n3 0 30\n1 30.5 12.25 rest is ignored\n-7 -2 0.1234567\n");
    CHECK(reading.result == 1);
    CHECK(reading.err.empty());
    REQUIRE(reading.dyn.params.size() == 3);
    CHECK(reading.dyn.params[0].order == 3);
    CHECK(reading.dyn.params[0].validTime == 0.0);
    CHECK(reading.dyn.params[0].riseTime == 30.0);
    CHECK(reading.dyn.params[1].order == 1);
    CHECK(reading.dyn.params[1].validTime == 30.5);
    CHECK(reading.dyn.params[1].riseTime == 12.25);
    CHECK(reading.dyn.params[2].order == -7);
    CHECK(reading.dyn.count == 0);
    // The name of the file is not printed.
    CHECK(reading.out == kHeading +
                             "order       :3\n valid time :0\n rise  time :30\n"
                             "order       :1\n valid time :30.5\n rise  time :12.25\n"
                             "order       :-7\n valid time :-2\n rise  time :0.123457\n" +
                             kCompleted);
}

TEST_CASE("an interval that starts at the time limit is kept and not valid and not echoed") {
    const IntervalReading reading = ReadIntervals("1 59.9 1\n2 60 1\n3 60.1 1\n4 0 1\n", 60.0);
    CHECK(reading.result == 1);
    REQUIRE(reading.dyn.params.size() == 4);
    CHECK(reading.dyn.params[0].isValid);
    CHECK_FALSE(reading.dyn.params[1].isValid);
    CHECK_FALSE(reading.dyn.params[2].isValid);
    CHECK(reading.dyn.params[3].isValid);
    CHECK(reading.out == kHeading +
                             "order       :1\n valid time :59.9\n rise  time :1\n"
                             "order       :4\n valid time :0\n rise  time :1\n" +
                             kCompleted);
}

struct Validity {
    std::string why;
    const char* start;
    double limit;
    bool isValid;
};
const Validity kValidities[] = {
    {"a start of 0 is valid whatever the limit", "0", -100.0, true},
    {"a start before 0 is valid whatever the limit", "-5", -100.0, true},
    {"a start of negative zero is valid", "-0", 0.0, true},
    {"a start beyond a limit of 0", "1e-300", 0.0, false},
    {"a start that is not a number is valid", "nan", 0.0, true},
    {"an infinite start lies beyond every limit", "inf", std::numeric_limits<double>::infinity(), false},
    {"no start is below a limit that is not a number", "5", std::numeric_limits<double>::quiet_NaN(), false},
};

TEST_CASE("an interval is valid when it starts at 0 or before or below the limit") {
    for (const Validity& row : kValidities) {
        CAPTURE(row.why);
        const IntervalReading reading = ReadIntervals(std::string("1 ") + row.start + " 2\n", row.limit);
        REQUIRE(reading.dyn.params.size() == 1);
        CHECK(reading.dyn.params[0].isValid == row.isValid);
        CHECK(Contains(reading.out, "order       :1\n") == row.isValid);
    }
}

TEST_CASE("reading a dynamic parameter file twice appends its intervals a second time") {
    const ScratchFolder folder;
    IntervalReading reading;
    reading.dyn.fileName = folder.Write("dynamic.txt", "1 2 3\n");
    Read(reading, 100.0);
    Read(reading, 1.0);
    REQUIRE(reading.dyn.params.size() == 2);
    CHECK(reading.dyn.params[0].isValid);
    CHECK_FALSE(reading.dyn.params[1].isValid);
    CHECK(CountOf(reading.out, "order       :") == 1);
}

TEST_CASE("a dynamic parameter file of comments only yields no interval") {
    for (const std::string text : {"# one\n#\n", "#", ""}) {
        CAPTURE(text);
        const IntervalReading reading = ReadIntervals(text);
        CHECK(reading.result == 1);
        CHECK(reading.dyn.params.empty());
        CHECK(reading.out == kHeading + kCompleted);
        CHECK(reading.err.empty());
    }
}

struct BadIntervals {
    std::string why;
    std::string text;
    std::size_t kept;
};

TEST_CASE("a data line of fewer than three tokens makes the dynamic parameter file fail and keeps what came before") {
    const BadIntervals rows[] = {
        {"a blank line first", "\n1 2 3\n", 0},
        {"a blank line between", "1 2 3\n\n1 2 3\n", 1},
        {"an empty line at the very end", "1 2 3\n4 5 6\n\n", 2},
        {"a line of blanks", "1 2 3\n \t\n", 1},
        {"two numbers", "1 2\n", 0},
        {"# in the second column", "1 2 3\n #\n", 1},
        {"commas do not separate", "1,2,3\n", 0},
        {"a NUL character ends the line", "1 2" + std::string(1, '\0') + " 3\n", 0},
        {"a carriage return alone", "1 2 3\r\n\r\n", 1},
    };
    for (const BadIntervals& row : rows) {
        CAPTURE(row.why);
        const IntervalReading reading = ReadIntervals(row.text);
        CHECK(reading.result == 0);
        CHECK(reading.out == kHeading);
        CHECK(reading.err == FormatBlock());
        CHECK(reading.dyn.params.size() == row.kept);
    }
}

TEST_CASE("a dynamic parameter file that cannot be opened gives the block of code 1") {
    const ScratchFolder folder;
    for (const std::string& path : {folder.At("missing"), folder.MakeFolder("folder"), std::string()}) {
        CAPTURE(path);
        IntervalReading reading;
        reading.dyn.fileName = path;
        Read(reading, 60.0);
        CHECK(reading.result == 0);
        CHECK(reading.out == kHeading);
        CHECK(reading.err == ErrorBlock("DYNAMICPARAM OBJECT METHOD",
                                        {"Abnormal action at Reading File Method.", "Can not open file.",
                                         "Particular attention should be given to \"Dynamic Parameter File\"."}));
    }
}

TEST_CASE("numbers of a dynamic parameter file are converted leniently and the order in base 10") {
    const IntervalReading reading = ReadIntervals("0x10 1.5s abc\n7.9 inf 1e-3\nfirst 2 3\n4 5 6");
    REQUIRE(reading.result == 1);
    REQUIRE(reading.dyn.params.size() == 4);
    CHECK(reading.dyn.params[0].order == 0);
    CHECK(reading.dyn.params[0].validTime == 1.5);
    CHECK(reading.dyn.params[0].riseTime == 0.0);
    CHECK(reading.dyn.params[1].order == 7);
    CHECK(reading.dyn.params[1].validTime == std::numeric_limits<double>::infinity());
    CHECK(reading.dyn.params[1].riseTime == 1e-3);
    CHECK(reading.dyn.params[2].order == 0);
    CHECK(reading.dyn.params[3].riseTime == 6.0);
}

TEST_CASE("a line end behind a blank is a token and counts as a length of 0") {
    const IntervalReading reading = ReadIntervals("1 2 \n");
    REQUIRE(reading.result == 1);
    CHECK(reading.dyn.params.at(0).riseTime == 0.0);
}

TEST_CASE("a dynamic parameter line beyond 1022 characters goes on as a new line") {
    CHECK(ReadIntervals(Padded("1 2 03", 1021) + "\n").result == 1);
    CHECK(ReadIntervals(Padded("1 2 03", 1022)).result == 1);
    const IntervalReading lineEnd = ReadIntervals(Padded("1 2 03", 1022) + "\n");
    CHECK(lineEnd.result == 0);
    CHECK(lineEnd.err == FormatBlock());
    CHECK(lineEnd.dyn.params.size() == 1);
    const IntervalReading more = ReadIntervals(Padded("1 2 03", 1022) + "4 5 6\n");
    REQUIRE(more.result == 1);
    REQUIRE(more.dyn.params.size() == 2);
    CHECK(more.dyn.params[0].riseTime == 3.0);
    CHECK(more.dyn.params[1].order == 4);
}

TEST_CASE("releasing a list of intervals gives its storage back") {
    DynamicParam dyn;
    dyn.params.resize(100);
    dyn.FreeVecMem();
    CHECK(dyn.params.empty());
    CHECK(dyn.params.capacity() == 0);
}

TEST_CASE("a copied list of intervals shares nothing") {
    DynamicParam dyn;
    dyn.params.resize(1);
    DynamicParam copy = dyn;
    copy.params[0].validTime = 9.0;
    copy.fileName = "other";
    CHECK(dyn.params[0].validTime == 0.0);
    CHECK(dyn.fileName.empty());
}
