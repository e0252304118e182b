// Text grids that break a rule: the code, the exact block, and what the region keeps.

#include <limits>
#include <string>

#include <doctest/doctest.h>

#include "unit/ExpectedText.h"
#include "unit/GridReading.h"
#include "unit/PrintedText.h"
#include "unit/ScratchFolder.h"

TEST_CASE("a grid that cannot be opened gives the block of code 1 with its name") {
    const ScratchFolder folder;
    struct Row {
        std::string why;
        std::string path;
    };
    const Row rows[] = {
        {"no such file", folder.At("missing.txt")},
        {"no such folder", folder.At("missing/grid.txt")},
        {"a folder", folder.MakeFolder("folder")},
        {"an empty path", ""},
    };
    for (const Row& row : rows) {
        CAPTURE(row.why);
        const GridReading grid(row.path);
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(row.path));
        CHECK(grid.err == CannotOpenBlock(row.path));
        CHECK(grid.region.val == nullptr);
        CHECK(grid.region.nx == 0);
        CHECK(grid.region.dataNum == 0);
    }
}

struct BadText {
    std::string why;
    const char* text;
};
const BadText kBadHeaders[] = {
    {"a blank before the line end is a third token of line 1", "10 20 \n0 0 9 19\n1\n"},
    {"a tab before the line end as well", "10\t20\t\n0 0 9 19\n1\n"},
    {"a blank before carriage return and line feed as well", "2 2 \r\n0 0 1 1\r\n1 2 3 4\r\n"},
    {"line 1 with one token", "4\n0 0 1 1\n1 2 3 4\n"},
    {"line 1 with three numbers", "2 2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a blank line first", "\n2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a line of blanks first", "   \n2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a comment sign behind two blanks makes a header line: one token", "  #size\n2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a comment sign behind two blanks makes a header line: three tokens", "  # the size\n2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a comment sign behind two blanks makes a header line: a word and a blank", "  # size \n2 2\n0 0 1 1\n1 2 3 4\n"},
    {"a blank line second", "2 2\n\n0 0 1 1\n1 2 3 4\n"},
    {"line 2 with one token", "2 2\n0\n1 2 3 4\n"},
    {"line 2 with two tokens lacks the end", "2 2\n0 0\n1 2 3 4\n"},
    {"line 2 with three tokens lacks end_y", "2 2\n0 0 1\n1 2 3 4\n"},
    {"co-ordinates one a line", "2 2\n0\n0\n1\n1\n1 2 3 4\n"},
};

TEST_CASE("a text grid with a malformed header is refused with the block of code 2") {
    for (const BadText& row : kBadHeaders) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(row.text);
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(grid.region.inFileName));
        CHECK(grid.err == BadHeaderBlock(grid.region.inFileName));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("a text grid without values leaves a region that counts none, whatever it counted before") {
    for (const char* text : {"", "2 2\n", "2 2\n0 0 1 1\n", "2 2\n0 0 5 1\n# 1 2 3 4\n"}) {
        CAPTURE(text);
        const ScratchFolder folder;
        tidora::Region region;
        region.inFileName = folder.Write("grid.txt", text);
        region.dataNum = 99;
        const PrintedText printed;
        CHECK(region.ReadFile() == 0);
        CHECK(region.dataNum == 0);
    }
}

struct BadCount {
    std::string why;
    const char* text;
    const char* nx;
    const char* ny;
};
const BadCount kBadCounts[] = {
    {"an empty file", "", "0", "0"},
    {"a file of comments only", "# one\n# two\n", "0", "0"},
    {"a size line alone", "2 2\n", "2", "2"},
    {"no columns, and spacings that differ: the size comes first", "0 2\n0 0 5 1\n1 2\n", "0", "2"},
    {"no rows, and spacings that differ: the size comes first", "2 0\n0 0 5 1\n1 2\n", "2", "0"},
    {"no values, and spacings that differ: the values come first", "2 2\n0 0 5 1\n", "2", "2"},
    {"the size line of a single column alone", "1 2\n", "1", "2"},
    {"a header without any value", "2 2\n0 0 1 1\n", "2", "2"},
    {"a header and a comment", "2 2\n0 0 1 1\n# no value\n", "2", "2"},
    {"one value too few", "2 2\n0 0 1 1\n1 2 3\n", "2", "2"},
    {"one value too many", "2 2\n0 0 1 1\n1 2 3 4 5\n", "2", "2"},
    {"a blank ends each data line: one more value a line", "2 2\n0 0 1 1\n1 2 \n3 4 \n", "2", "2"},
    {"a tab ends one data line", "2 2\n0 0 1 1\n1 2\n3 4\t\n", "2", "2"},
    {"a blank before carriage return and line feed", "2 2\n0 0 1 1\n1 2 \r\n3 4\r\n", "2", "2"},
    {"a blank line among the values", "2 2\n0 0 1 1\n1 2\n\n3 4\n", "2", "2"},
    {"a blank line behind the values", "2 2\n0 0 1 1\n1 2\n3 4\n\n", "2", "2"},
    {"a line of blanks behind the values", "2 2\n0 0 1 1\n1 2\n3 4\n  \n", "2", "2"},
    {"a comment behind blanks is a data line", "2 2\n0 0 1 1\n1 2\n3 4\n # end\n", "2", "2"},
    {"nx is not a number", "two 2\n0 0 -1 1\n1 2\n", "0", "2"},
    {"no column", "0 3\n0 0 -1 2\n1\n", "0", "3"},
    {"no row", "3 0\n0 0 2 -1\n1\n", "3", "0"},
    {"no column and no row and no value", "0 0\n0 0 -1 -1\n", "0", "0"},
    {"a negative number of columns", "-2 2\n0 0 -3 1\n1 2 3 4\n", "-2", "2"},
    {"a negative number of both: their product is the count", "-2 -2\n0 0 -3 -3\n1 2 3 4\n", "-2", "-2"},
    {"the largest numbers: the wrapped product is the count", "2147483647 2147483647\n0 0 2147483646 2147483646\n1\n",
     "2147483647", "2147483647"},
    {"the smallest number of columns", "-2147483648 2\n0 0 -2147483649 1\n1 2 3 4\n", "-2147483648", "2"},
    {"a product of 2^32: wrapped it is 0", "65536 65536\n0 0 65535 65535\n1 2 3 4\n", "65536", "65536"},
    {"a product of 2^32 without a value", "65536 65536\n0 0 65535 65535\n", "65536", "65536"},
    {"a product just above 2^32: wrapped it is the count", "65537 65537\n0 0 65536 65536\n1\n", "65537", "65537"},
    {"one row beyond 32 bits", "46341 46341\n0 0 46340 46340\n1\n", "46341", "46341"},
    {"50 000 by 50 000", "50000 50000\n0 0 49999 49999\n1 2 3 4\n", "50000", "50000"},
    {"2^31 - 1 columns and a single value", "2147483647 2\n0 0 2147483646 1\n1\n", "2147483647", "2"},
};

TEST_CASE("a text grid with the wrong number of values is refused with the block of code 3 and its constant 0") {
    for (const BadCount& row : kBadCounts) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(row.text);
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(grid.region.inFileName));
        CHECK(grid.err == BadCountBlock(grid.region.inFileName, row.nx, row.ny));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("the count that the block of a wrong grid shows is 0 whatever was read") {
    for (const std::string values : {"1\n", "1 2 3\n", "1 2 3 4 5\n", "1 2 3 4 5 6 7 8 9\n"}) {
        CAPTURE(values);
        const GridReading grid = ReadGrid("2 2\n0 0 1 1\n" + values);
        CHECK(Contains(grid.err, "  ERROR-DETAIL:ALL DATA NUM > 0\n"));
    }
}

struct UnequalSpacing {
    std::string why;
    const char* text;
    const char* dx;
    const char* dy;
};
const UnequalSpacing kUnequalSpacings[] = {
    {"the spacings differ", "2 2\n0 0 1 2\n1 2\n3 4\n", "1", "2"},
    {"they differ in sign", "2 2\n0 0 1 -1\n1 2\n3 4\n", "1", "-1"},
    {"they differ by one unit in the last place of single precision", "2 2\n0 0 1 1.00000012\n1 2\n3 4\n", "1", "1"},
    {"one is infinite", "1 2\n0 0 1 1\n1\n2\n", "inf", "1"},
    {"both are infinite with different signs", "1 1\n0 0 1 -1\n1\n", "inf", "-inf"},
    {"a size and end co-ordinates that do not belong together", "3 2\n0 0 1 1\n1 2 3\n4 5 6\n", "0.5", "1"},
};

TEST_CASE("a text grid whose spacings differ in single precision is refused with the block of code 4") {
    for (const UnequalSpacing& row : kUnequalSpacings) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(row.text);
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(grid.region.inFileName));
        CHECK(grid.err == UnequalSpacingBlock(grid.region.inFileName, row.dx, row.dy));
        CHECK(grid.region.val == nullptr);
    }
}

const BadText kSpacingsWithoutNumber[] = {
    {"one column and one row, end and origin equal: 0 / 0 twice", "1 1\n5 7 5 7\n1\n"},
    {"one column, end and origin equal", "1 2\n0 0 0 1\n1\n2\n"},
    {"one row, end and origin equal", "2 1\n0 0 1 0\n1 2\n"},
    {"NaN as both ends", "2 2\n0 0 nan nan\n1 2\n3 4\n"},
    {"NaN as both origins", "2 2\nnan nan 1 1\n1 2\n3 4\n"},
    {"infinity as origin and end", "2 2\ninf inf inf inf\n1 2\n3 4\n"},
};

TEST_CASE("a spacing that is not a number is refused with the block of code 4") {
    for (const BadText& row : kSpacingsWithoutNumber) {
        CAPTURE(row.why);
        const GridReading grid = ReadGrid(row.text);
        CHECK(grid.result == 0);
        CHECK(Contains(grid.err, "  ERROR-DETAIL:          DX > "));
        CHECK(Contains(grid.err, "  ERROR-DETAIL:          DY > "));
        // "nan" or "-nan": the sign of a fresh NaN is the machine's choice.
        CHECK(Contains(grid.err, "nan\n"));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("what was read before a text grid was refused stays in the region") {
    const GridReading size = ReadGrid("2 3\n0 0\n1\n");
    CHECK(size.region.nx == 2);
    CHECK(size.region.ny == 3);

    const GridReading spacing = ReadGrid("2 3\n1 2 3 10\n1 2 3 4 5 6\n");
    CHECK(spacing.region.org_x == 1.0);
    CHECK(spacing.region.org_y == 2.0);
    CHECK(spacing.region.end_x == 3.0);
    CHECK(spacing.region.end_y == 10.0);
    CHECK(spacing.region.dx == 2.0F);
    CHECK(spacing.region.dy == 4.0F);
    CHECK(spacing.region.noBinaryInput);

    const GridReading count = ReadGrid("2 2\n0 0 1 1\n5 -6 7\n");
    CHECK(count.region.dx == 1.0F);
    CHECK(count.region.dataNum == 3);
    CHECK(count.region.valMax == 7.0F);
    CHECK(count.region.valMin == -6.0F);
}

TEST_CASE("a grid that a region already holds survives a read that fails") {
    tidora::Region region;
    region.inFileName = "no/such/grid.txt";
    region.Set2dStruct(1, 2, 0.0, 0.0, 1.0);
    const float* const val = region.Make2dStruct(3.0);
    {
        const PrintedText printed;
        CHECK(region.ReadFile() == 0);
    }
    CHECK(region.val == val);
    CHECK(region.val[1] == 3.0F);
    region.FreeVecMem();
}
