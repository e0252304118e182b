// How the lines of a fault parameter file are cut into columns.

#include <string>

#include <doctest/doctest.h>

#include "unit/FaultReading.h"

namespace {

// `text`, with zeros before its last character so that it has `length` characters.
std::string Padded(std::string text, std::size_t length) {
    text.insert(text.size() - 1, length - text.size(), '0');
    return text;
}

}  // namespace

TEST_CASE("blanks and tabs separate the columns of a fault file and may lead a line") {
    const FaultReading reading = ReadFault(" \t1\t2  3 \t 4 5 6 7 8 9 10");
    REQUIRE(reading.result == 1);
    CHECK(reading.fault.elements.at(0).org_y == 1.0);
    CHECK(reading.fault.elements.at(0).slip == 10.0);
}

TEST_CASE("a fault file with carriage returns is read like one without") {
    const FaultReading reading = ReadFault("# comment\r\n" + kTenNumbers + " 0 5 6\r\n" + kTenNumbers + "\r\n");
    REQUIRE(reading.result == 1);
    REQUIRE(reading.fault.elements.size() == 2);
    CHECK(reading.fault.elements[0].duration == 6.0);
    CHECK(reading.fault.elements[1].slip == 12.5);
}

TEST_CASE("a fault line of up to 1021 characters and its line end are one read") {
    const FaultReading reading = ReadFault(Padded("1 2 3 4 5 6 7 8 9 05", 1021) + "\n");
    REQUIRE(reading.result == 1);
    CHECK(reading.fault.elements.size() == 1);
    CHECK(reading.fault.elements[0].slip == 5.0);
}

TEST_CASE("a fault line of exactly 1022 characters leaves its line end as a blank line") {
    const FaultReading reading = ReadFault(Padded("1 2 3 4 5 6 7 8 9 05", 1022) + "\n");
    CHECK(reading.result == 0);
    CHECK(reading.err == FaultFormatBlock());
    CHECK(reading.fault.elements.size() == 1);
    // At the end of the file there is no line end to leave.
    CHECK(ReadFault(Padded("1 2 3 4 5 6 7 8 9 05", 1022)).result == 1);
}

TEST_CASE("what a fault line has beyond 1022 characters is a line of its own") {
    const std::string first = Padded("1 2 3 4 5 6 7 8 9 05", 1022);
    const FaultReading tooShort = ReadFault(first + "1\n");
    CHECK(tooShort.result == 0);
    CHECK(tooShort.fault.elements.size() == 1);

    const FaultReading element = ReadFault(first + " 11 12 13 14 15 16 17 18 19 20\n");
    REQUIRE(element.result == 1);
    REQUIRE(element.fault.elements.size() == 2);
    CHECK(element.fault.elements[0].lagtime == 0.0);
    CHECK(element.fault.elements[1].org_y == 11.0);

    // So is the rest of a long comment.
    CHECK(ReadFault("#" + std::string(1020, 'c') + "\n" + kTenNumbers + "\n").result == 1);
    CHECK(ReadFault("#" + std::string(1021, 'c') + "\n" + kTenNumbers + "\n").result == 0);
    CHECK(ReadFault("#" + std::string(1021, 'c') + "# more\n" + kTenNumbers + "\n").result == 1);
}
