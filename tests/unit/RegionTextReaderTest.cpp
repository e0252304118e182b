// Text grids that follow the rules: geometry, layout, conversions, summary, choice of the format.

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "unit/ExpectedText.h"
#include "unit/GridReading.h"
#include "unit/ScratchFolder.h"

namespace {

// A grid of two columns and two rows with the line `values`.
std::string SquareWith(const std::string& values) {
    return "2 2\n0 0 1 1\n" + values + "\n";
}

}  // namespace

TEST_CASE("a text grid gives geometry and layout and summary") {
    const GridReading grid = ReadGrid("3 2\n100.5 -20 104.5 -18\n1 2 3\n-4.5 5 6.25\n");
    CHECK(grid.result == 1);
    CHECK(grid.err.empty());
    CHECK(grid.region.nx == 3);
    CHECK(grid.region.ny == 2);
    CHECK(grid.region.org_x == 100.5);
    CHECK(grid.region.org_y == -20.0);
    CHECK(grid.region.end_x == 104.5);
    CHECK(grid.region.end_y == -18.0);
    CHECK(grid.region.dx == 2.0F);
    CHECK(grid.region.dy == 2.0F);
    CHECK(grid.region.dataNum == 6);
    CHECK(grid.region.valMax == 6.25F);
    CHECK(grid.region.valMin == -4.5F);
    CHECK(grid.region.noBinaryInput);

    // The first row of the file is row 0; a column's rows lie side by side in memory.
    const std::vector<float> values(grid.region.val, grid.region.val + 6);
    CHECK(values == std::vector<float>{1.0F, -4.5F, 2.0F, 5.0F, 3.0F, 6.25F});

    CHECK(grid.out == GridHeading(grid.region.inFileName) +
                          "nx     :3\n"
                          "ny     :2\n"
                          "org_x  :100.500000\n"
                          "org_y  :-20.000000\n"
                          "dx     :2.000000\n"
                          "dataNum:6\n"
                          "valMax :6.250000\n"
                          "valMin :-4.500000\n"
                          "<<<<<<<<<<<<<<<<<< Completed.\n");
}

TEST_CASE("a large text grid keeps every value at its place") {
    const int nx = 157;
    const int ny = 61;
    std::string text = "157 61\n0 0 156 60\n";
    for (int k = 0; k < nx * ny; ++k) {
        text += std::to_string(-0.37 * k) + (k % nx == nx - 1 ? "\n" : " ");
    }
    const GridReading grid = ReadGrid(text);
    REQUIRE(grid.result == 1);
    int wrong = 0;
    for (int iy = 0; iy < ny; ++iy) {
        for (int ix = 0; ix < nx; ++ix) {
            const double expected = std::strtod(std::to_string(-0.37 * (iy * nx + ix)).c_str(), nullptr);
            wrong += grid.At(ix, iy) == static_cast<float>(expected) ? 0 : 1;
        }
    }
    CHECK(wrong == 0);
}

TEST_CASE("the rows of a text grid may be wrapped anywhere") {
    const std::string header = "3 2\n0 0 2 1\n";
    for (const std::string values : {"1 2 3 4 5 6\n", "1\n2\n3\n4\n5\n6\n", "1 2\n3 4 5\n6\n", "1 2 3 4 5\n6"}) {
        CAPTURE(values);
        const GridReading grid = ReadGrid(header + values);
        REQUIRE(grid.result == 1);
        CHECK(grid.At(0, 0) == 1.0F);
        CHECK(grid.At(2, 0) == 3.0F);
        CHECK(grid.At(0, 1) == 4.0F);
        CHECK(grid.At(2, 1) == 6.0F);
    }
}

TEST_CASE("blanks and tabs separate and may lead a line of a text grid") {
    for (const std::string text : {"2\t2\n0\t0\t1\t1\n1\t2\t3\t4\n", "2 \t 2\n  0 0   1 \t1\n 1 2\n\t3  4\n"}) {
        CAPTURE(text);
        const GridReading grid = ReadGrid(text);
        REQUIRE(grid.result == 1);
        CHECK(grid.At(0, 0) == 1.0F);
        CHECK(grid.At(1, 1) == 4.0F);
    }
}

TEST_CASE("a comment is a line with # in the first column and stands anywhere") {
    const GridReading grid = ReadGrid("# one\n#\n2 2\n#2 2\n0 0 1 1\n# 7 8\n1 2\n#3 4\n3 4\n# end");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(1, 0) == 2.0F);
    CHECK(grid.At(0, 1) == 3.0F);
}

TEST_CASE("a number sign behind the first column makes no comment but a value of 0") {
    const GridReading grid = ReadGrid("2 2\n0 0 1 1\n1 #2\n #3 4\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(0, 0) == 1.0F);
    CHECK(grid.At(1, 0) == 0.0F);
    CHECK(grid.At(0, 1) == 0.0F);
    CHECK(grid.At(1, 1) == 4.0F);
}

TEST_CASE("a line end of carriage return and line feed is read like a line feed") {
    const GridReading grid = ReadGrid("# comment\r\n2 2\r\n0 0 1 1\r\n1 2\r\n3 4\r\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.nx == 2);
    CHECK(grid.region.ny == 2);
    CHECK(grid.region.end_y == 1.0);
    CHECK(grid.At(1, 0) == 2.0F);
    CHECK(grid.At(1, 1) == 4.0F);
}

TEST_CASE("the last line of a text grid needs no line end and may then end in blanks") {
    CHECK(ReadGrid("2 2\n0 0 1 1\n1 2\n3 4").result == 1);
    // Without a line end there is no further token.
    CHECK(ReadGrid("2 2\n0 0 1 1\n1 2\n3 4 \t").result == 1);
}

TEST_CASE("a blank line that completes the count is a value of 0") {
    const GridReading grid = ReadGrid("2 2\n0 0 1 1\n1 2 3\n\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.At(1, 1) == 0.0F);
    CHECK(grid.region.valMin == 0.0F);
}

TEST_CASE("a fifth token of the second line is ignored and so is the line end behind a blank") {
    CHECK(ReadGrid("2 2\n0 0 1 1 99\n1 2 3 4\n").result == 1);
    CHECK(ReadGrid("2 2\n0 0 1 1 \n1 2 3 4\n").result == 1);
}

struct ValueText {
    std::string why;
    const char* text;
    float value;
};
const ValueText kValueTexts[] = {
    {"not a number", "abc", 0.0F},
    {"the leading number", "1.5m", 1.5F},
    {"a comma ends the number", "1,5", 1.0F},
    {"a sign", "+2.5", 2.5F},
    {"two signs are no number", "--2", 0.0F},
    {"no digit before the point", "-.5", -0.5F},
    {"an exponent", "12e-2", 0.12F},
    {"an exponent without digits is none", "3e", 3.0F},
    {"hexadecimal", "0x1.8p1", 3.0F},
    {"negative zero", "-0", -0.0F},
    {"leading zeros", "00000000000000000000000000007", 7.0F},
    {"beyond single precision", "1e39", std::numeric_limits<float>::infinity()},
    {"beyond double precision", "-1e999", -std::numeric_limits<float>::infinity()},
    {"below single precision", "1e-60", 0.0F},
    {"the smallest single precision number", "1.4e-45", std::numeric_limits<float>::denorm_min()},
    {"infinity", "inf", std::numeric_limits<float>::infinity()},
    {"infinity in full", "-Infinity", -std::numeric_limits<float>::infinity()},
    // Just above the middle of 1 and the next single; as a double it is that middle, which rounds to even.
    {"rounded twice, by way of double precision", "1.000000059604644775390626", 1.0F},
    {"white space other than the delimiters leads a number", "\v\r5", 5.0F},
    {"a carriage return is a token and no number", "\r", 0.0F},
    {"more digits than a double holds", "0.1000000000000000055511151231257827021181583404541015625", 0.1F},
};

TEST_CASE("a value is what strtod makes of its token and rounded to single precision") {
    for (const ValueText& row : kValueTexts) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(SquareWith(std::string("7 8 9 ") + row.text));
        REQUIRE(grid.result == 1);
        CHECK(grid.At(1, 1) == row.value);
        CHECK(std::signbit(grid.At(1, 1)) == std::signbit(row.value));

        // The same token in the middle of a line must not run on into the next one.
        const GridReading middle = ReadGrid(SquareWith(std::string("7 ") + row.text + " 8 9"));
        REQUIRE(middle.result == 1);
        CHECK(middle.At(1, 0) == row.value);
        CHECK(middle.At(0, 1) == 8.0F);
    }
}

struct Extremes {
    std::string why;
    const char* values;
    float largest;
    float smallest;
};
const Extremes kExtremes[] = {
    {"plain", "3 -1 2 0", 3.0F, -1.0F},
    {"all negative", "-5 -4 -7 -6", -4.0F, -7.0F},
    {"all positive", "5 4 7 6", 7.0F, 4.0F},
    {"infinities", "inf 1 -inf 2", std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()},
    {"NaN replaces the running value, and what follows replaces NaN", "9 nan 3 4", 4.0F, 3.0F},
    {"NaN first", "nan 2 1 3", 3.0F, 1.0F},
};

TEST_CASE("largest and smallest value are scanned from the first value on and NaN is not skipped") {
    for (const Extremes& row : kExtremes) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(SquareWith(row.values));
        REQUIRE(grid.result == 1);
        CHECK(grid.region.valMax == row.largest);
        CHECK(grid.region.valMin == row.smallest);
    }
    const GridReading last = ReadGrid(SquareWith("1 2 3 nan"));
    REQUIRE(last.result == 1);
    CHECK(std::isnan(last.At(1, 1)));
    CHECK(std::isnan(last.region.valMax));
    CHECK(std::isnan(last.region.valMin));
    CHECK(Contains(last.out, "valMax :nan\nvalMin :nan\n"));
}

TEST_CASE("the spacing is formed in double and rounded to single precision before it is compared") {
    // 1/10 and 1.000000001/10 differ in double only.
    const GridReading grid =
        ReadGrid("11 2\n0 0 1.000000001 0.1\n" + std::string("1 1 1 1 1 1 1 1 1 1 1\n") + "1 1 1 1 1 1 1 1 1 1 1\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.dx == 0.1F);
    CHECK(grid.region.dy == 0.1F);
    CHECK(Contains(grid.out, "dx     :0.100000\n"));
}

TEST_CASE("a grid whose end lies before its origin has a negative spacing") {
    const GridReading grid = ReadGrid("2 2\n1 1 0 0\n1 2\n3 4\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.dx == -1.0F);
}

TEST_CASE("a grid of a single value with an end beyond its origin has an infinite spacing") {
    const GridReading grid = ReadGrid("1 1\n0 0 1 1\n5\n");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.dx == std::numeric_limits<float>::infinity());
    CHECK(Contains(grid.out, "dx     :inf\n"));
}

TEST_CASE("nx and ny are the leading integers of their tokens") {
    const GridReading grid = ReadGrid("2.9 2x\n0 0 1 1\n1 2\n3 4\n");
    CHECK(grid.result == 1);
    CHECK(grid.region.nx == 2);
    CHECK(grid.region.ny == 2);
}

TEST_CASE("a name holds a binary grid when .bin stands in it behind the first character") {
    const ScratchFolder folder;
    const CurrentFolder current(folder.Path());
    (void)folder.MakeFolder("runs.bin");
    (void)folder.MakeFolder(".bin2");
    struct Row {
        std::string name;
        bool binary;
    };
    // The first ".bin" of the whole path decides, folders included.
    const Row rows[] = {
        {"grid.bin", true}, {"grid.bin.txt", true},    {"grid.binary", true}, {"runs.bin/grid.txt", true},
        {"./.bin", true},   {"a.bin", true},           {"grid.BIN", false},   {"grid.txt", false},
        {".bin", false},    {".bin2/grid.bin", false}, {"gridbin", false},    {"grid.bi", false},
    };
    const std::string text = "2 2\n0 0 1 1\n1 2\n3 4\n";
    const std::string binary = BinaryGrid(0.0, 0.0, 2, 2, 1.0F, {1.0F, 2.0F, 3.0F, 4.0F});
    for (const Row& row : rows) {
        CAPTURE(row.name);
        (void)folder.Write(row.name, row.binary ? binary : text);
        const GridReading grid(row.name);
        CHECK(grid.result == 1);
        CHECK(Contains(grid.out, ">>>> Read Binary File\n") == row.binary);
        CHECK(grid.region.noBinaryInput == !row.binary);
    }
}
