// The fault parameter file: columns, echo, and what is refused.

#include <cmath>
#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "fault/Fault.h"
#include "unit/ExpectedText.h"
#include "unit/FaultReading.h"
#include "unit/ScratchFolder.h"

using tidora::FAULT_PARAM;

TEST_CASE("a fault file becomes elements and is echoed without its third column") {
    const FaultReading reading =
        ReadFault("# lat lon offset depth\n" + kTenNumbers + "\n1 2 3 4.5 5 6 -7 8.25 9 10 11 12 13.5\n");
    CHECK(reading.result == 1);
    CHECK(reading.err.empty());
    REQUIRE(reading.fault.elements.size() == 2);
    const FAULT_PARAM& first = reading.fault.elements[0];
    CHECK(first.org_y == 38.5);
    CHECK(first.org_x == 143.25);
    CHECK(first.baseOffset == 100.0);
    CHECK(first.depth == 5000.0);
    CHECK(first.strike == 200.0);
    CHECK(first.dip == 10.0);
    CHECK(first.rake == 90.0);
    CHECK(first.length == 300000.0);
    CHECK(first.width == 150000.0);
    CHECK(first.slip == 12.5);
    CHECK(first.lagtime == 0.0);
    CHECK(first.duration == 0.0);
    // Latitude (or y) stands first in the file, longitude (or x) first in the echo.
    CHECK(reading.out == FaultHeading(reading) +
                             "----- Fault No.:1\n"
                             "org_x   :143.250000\n"
                             "org_y   :38.500000\n"
                             "depth   :5000\n"
                             "strike  :200\n"
                             "dip     :10\n"
                             "rake    :90\n"
                             "length  :300000.000000\n"
                             "width   :150000.000000\n"
                             "slip    :12.5\n"
                             "lagtime :0\n"
                             "duration:0\n"
                             "----- Fault No.:2\n"
                             "org_x   :2.000000\n"
                             "org_y   :1.000000\n"
                             "depth   :4.5\n"
                             "strike  :5\n"
                             "dip     :6\n"
                             "rake    :-7\n"
                             "length  :8.250000\n"
                             "width   :9.000000\n"
                             "slip    :10\n"
                             "lagtime :12\n"
                             "duration:13.5\n" +
                             kFaultCompleted);
}

TEST_CASE("values in default notation are echoed with six significant digits and the others with six decimals") {
    const FaultReading reading = ReadFault("1.23456789 123456789.125 0 1234567 1e-7 0.1234567 0 1e9 2e-7 3.00000049\n");
    REQUIRE(reading.result == 1);
    CHECK(Contains(reading.out, "\norg_x   :123456789.125000\norg_y   :1.234568\n"));
    CHECK(Contains(reading.out, "\ndepth   :1.23457e+06\nstrike  :1e-07\ndip     :0.123457\nrake    :0\n"));
    CHECK(Contains(reading.out, "\nlength  :1000000000.000000\nwidth   :0.000000\nslip    :3\n"));
}

struct Columns {
    std::string why;
    const char* behindTen;
    double lagtime;
    double duration;
};
const Columns kColumns[] = {
    {"exactly ten numbers", "", 0.0, 0.0},
    {"eleven: the last one is ignored", " 77", 0.0, 0.0},
    {"twelve: both are ignored", " 77 88", 0.0, 0.0},
    {"thirteen: the eleventh is ignored", " 77 88 99", 88.0, 99.0},
    {"beyond thirteen is ignored", " 77 88 99 111 222", 88.0, 99.0},
    {"a negative start", " 77 -88 99", -88.0, 99.0},
    {"not numbers in the timing columns", " 77 soon long", 0.0, 0.0},
    {"a line end behind a blank is a token: here the thirteenth, and no number", " 77 88 ", 88.0, 0.0},
};

TEST_CASE("lag time and duration count only on a line of thirteen tokens or more") {
    for (const Columns& row : kColumns) {
        CAPTURE(row.why);
        const FaultReading reading = ReadFault(kTenNumbers + row.behindTen + "\n");
        REQUIRE(reading.result == 1);
        REQUIRE(reading.fault.elements.size() == 1);
        CHECK(reading.fault.elements[0].slip == 12.5);
        CHECK(reading.fault.elements[0].lagtime == row.lagtime);
        CHECK(reading.fault.elements[0].duration == row.duration);
    }
}

TEST_CASE("a fault file of comments only yields no elements and both banner lines") {
    for (const std::string text : {"# one\n#two\n#\n", "# without a line end", ""}) {
        CAPTURE(text);
        const FaultReading reading = ReadFault(text);
        CHECK(reading.result == 1);
        CHECK(reading.fault.elements.empty());
        CHECK(reading.out == FaultHeading(reading) + kFaultCompleted);
        CHECK(reading.err.empty());
    }
}

struct BadFault {
    std::string why;
    std::string text;
    std::size_t kept;  ///< elements before the malformed line
};

TEST_CASE("a data line of fewer than ten tokens makes the fault file fail and keeps the elements before it") {
    const std::string good = kTenNumbers + "\n";
    const BadFault rows[] = {
        {"a blank line first", "\n" + good, 0},
        {"a blank line between", good + "\n" + good, 1},
        {"an extra empty line at the very end", good + good + "\n", 2},
        {"a line of blanks", good + " \t \n", 1},
        {"a carriage return alone", good + "\r\n", 1},
        {"nine numbers", "1 2 3 4 5 6 7 8 9\n", 0},
        {"one number", good + "5\n", 1},
        {"# in the second column is no comment", good + " # comment\n", 1},
        {"a NUL character ends the line", good + "1 2 3" + std::string(1, '\0') + " 4 5 6 7 8 9 10\n", 1},
        {"a line that starts with a NUL character has no token", good + std::string(1, '\0') + kTenNumbers + "\n", 1},
        {"commas do not separate", "1,2,3,4,5,6,7,8,9,10,11,12,13\n", 0},
    };
    for (const BadFault& row : rows) {
        CAPTURE(row.why);
        const FaultReading reading = ReadFault(row.text);
        CHECK(reading.result == 0);
        CHECK(reading.out == FaultHeading(reading));  // nothing is echoed
        CHECK(reading.err == FaultFormatBlock());
        CHECK(reading.fault.elements.size() == row.kept);
    }
}

TEST_CASE("a line end behind a blank is a token and counts as a column of 0") {
    const FaultReading reading = ReadFault("1 2 3 4 5 6 7 8 9 \n");
    REQUIRE(reading.result == 1);
    CHECK(reading.fault.elements.at(0).width == 9.0);
    CHECK(reading.fault.elements.at(0).slip == 0.0);
}

TEST_CASE("a fault file that cannot be opened gives the block of code 1") {
    const ScratchFolder folder;
    for (const std::string& path :
         {folder.At("missing"), folder.At("no/fault.txt"), folder.MakeFolder("folder"), std::string()}) {
        CAPTURE(path);
        const FaultReading reading = ReadFaultFile(path);
        CHECK(reading.result == 0);
        CHECK(reading.out == FaultHeading(reading));
        CHECK(reading.err ==
              ErrorBlock("FAULT OBJECT METHOD", {"Abnormal action at Reading File Method.", "Can not open file.",
                                                 "Particular attention should be given to \"Fault File\"."}));
        CHECK(reading.fault.elements.empty());
    }
}

TEST_CASE("reading a fault file twice appends its elements a second time and echoes all of them") {
    const ScratchFolder folder;
    FaultReading reading;
    reading.fault.fileName = folder.Write("fault.txt", kTenNumbers + "\n");
    reading.Read();
    reading.Read();
    CHECK(reading.result == 1);
    CHECK(reading.fault.elements.size() == 2);
    CHECK(Contains(reading.out, "----- Fault No.:1\n"));
    CHECK(Contains(reading.out, "----- Fault No.:2\n"));
    CHECK(CountOf(reading.out, "----- Fault No.:") == 2);
}

TEST_CASE("numbers of a fault file are converted leniently") {
    const FaultReading reading = ReadFault("abc 1.5x 1,5 inf -1e3 0x10 +2 .5 1e999 -0\n");
    REQUIRE(reading.result == 1);
    const FAULT_PARAM& element = reading.fault.elements.at(0);
    CHECK(element.org_y == 0.0);
    CHECK(element.org_x == 1.5);
    CHECK(element.baseOffset == 1.0);
    CHECK(element.depth == std::numeric_limits<double>::infinity());
    CHECK(element.strike == -1000.0);
    CHECK(element.dip == 16.0);
    CHECK(element.rake == 2.0);
    CHECK(element.length == 0.5);
    CHECK(element.width == std::numeric_limits<double>::infinity());
    CHECK(element.slip == 0.0);

    const FaultReading notNumbers = ReadFault("nan 2 3 4 5 6 7 8 9 nan\n");
    REQUIRE(notNumbers.result == 1);
    CHECK(std::isnan(notNumbers.fault.elements.at(0).org_y));
    CHECK(Contains(notNumbers.out, "org_y   :nan\n"));
    CHECK(Contains(notNumbers.out, "slip    :nan\n"));
}
