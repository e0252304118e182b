// The bounded line buffer of the text grid reader: one read delivers at most 8190 characters.

#include <string>

#include <doctest/doctest.h>

#include "unit/GridReading.h"

namespace {

const std::string kHeader = "2 2\n0 0 1 1\n";

// `text`, with zeros before its last character so that it has `length` characters.
std::string Padded(std::string text, std::size_t length) {
    text.insert(text.size() - 1, length - text.size(), '0');
    return text;
}

}  // namespace

TEST_CASE("a data line of 8189 characters and its line end are one read") {
    const GridReading grid = ReadGrid(kHeader + Padded("1 2 3 04", 8189) + "\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(1, 1) == 4.0F);
}

TEST_CASE("a data line of exactly 8190 characters leaves its line end as one more value") {
    const GridReading grid = ReadGrid(kHeader + Padded("1 2 3 04", 8190) + "\n");
    CHECK(grid.result == 0);
    CHECK(grid.err == BadCountBlock(grid.region.inFileName, "2", "2"));

    // The value is 0: with one value less in the file the grid is complete.
    const GridReading shorter = ReadGrid(kHeader + Padded("1 2 03", 8190) + "\n");
    REQUIRE(shorter.result == 1);
    CHECK(shorter.At(0, 1) == 3.0F);
    CHECK(shorter.At(1, 1) == 0.0F);
}

TEST_CASE("a data line of 8190 characters at the end of the file has no line end to leave") {
    CHECK(ReadGrid(kHeader + Padded("1 2 3 04", 8190)).result == 1);
}

TEST_CASE("a number across the 8190th character is read as two") {
    // 8191 characters: the piece before the break ends in zeros, the 4 stands alone behind it.
    const GridReading grid = ReadGrid(kHeader + Padded("1 2 04", 8191) + "\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(0, 1) == 0.0F);
    CHECK(grid.At(1, 1) == 4.0F);
}

TEST_CASE("a longer data line goes on in the next read") {
    // The break lies between two tokens: four values, as if the line had been wrapped there.
    const GridReading grid = ReadGrid(kHeader + Padded("1 2 03", 8190) + " 4\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(0, 1) == 3.0F);
    CHECK(grid.At(1, 1) == 4.0F);
}

TEST_CASE("one line of many reads holds all values of a grid") {
    // 20 000 values of two characters: the breaks fall behind a value, before a blank or behind it, never within one.
    std::string text = "200 100\n0 0 199 99\n";
    for (int k = 0; k < 20000; ++k) {
        text += k % 2 == 0 ? "5 " : "6 ";
    }
    const GridReading grid = ReadGrid(text);
    REQUIRE(grid.result == 1);
    CHECK(grid.At(0, 0) == 5.0F);
    CHECK(grid.At(199, 99) == 6.0F);
    CHECK(grid.region.valMin == 5.0F);
}

TEST_CASE("what a comment has beyond its 8190th character is a line of its own") {
    const std::string comment = "#" + std::string(8188, 'c');  // 8189 characters
    const std::string rest = "2 2\n0 0 1 1\n1 2 3 4\n";
    CHECK(ReadGrid(comment + "\n" + rest).result == 1);

    // 8190: the line end is a line of one token where nx and ny must stand.
    const GridReading lineEnd = ReadGrid(comment + "c\n" + rest);
    CHECK(lineEnd.result == 0);
    CHECK(lineEnd.err == BadHeaderBlock(lineEnd.region.inFileName));

    // 8192: the rest counts as data; here it is the last value of the grid.
    const GridReading data = ReadGrid(kHeader + "1 2 3\n" + comment + "c4\n");
    REQUIRE(data.result == 1);
    CHECK(data.At(1, 1) == 4.0F);

    // A rest that starts with # is a comment again.
    CHECK(ReadGrid(comment + "c# and so on\n" + rest).result == 1);
}

TEST_CASE("a header line longer than the buffer is two lines") {
    const GridReading grid = ReadGrid(Padded("2 02", 8190) + "\n0 0 1 1\n1 2 3 4\n");
    CHECK(grid.result == 0);
    CHECK(grid.err == BadHeaderBlock(grid.region.inFileName));  // line 2 is the line end alone
    CHECK(grid.region.nx == 2);
    CHECK(grid.region.ny == 2);
}

TEST_CASE("a NUL character ends a line of a text grid") {
    const std::string nul(1, '\0');
    const GridReading grid = ReadGrid(kHeader + "1 2" + nul + " 9 9 9\n3 4\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(1, 0) == 2.0F);
    CHECK(grid.At(0, 1) == 3.0F);

    // A line that starts with one has no token at all, not even its line end.
    CHECK(ReadGrid(kHeader + "1 2\n" + nul + "9 9\n3 4\n").result == 1);

    // In a header line it takes the line end away: no third token.
    CHECK(ReadGrid("2 2 " + nul + "\n0 0 1 1\n1 2 3 4\n").result == 1);
}
