// Packed binary grids: layout, header, and files that are too short for what they promise.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <doctest/doctest.h>

#include <sys/stat.h>

#include "unit/ExpectedText.h"
#include "unit/GridReading.h"
#include "unit/ScratchFolder.h"

namespace {

// Reads a grid through a pipe, whose size nobody knows before its end.
GridReading ReadThroughPipe(const std::string& bytes) {
    const ScratchFolder folder;
    const std::string path = folder.At("pipe.bin");
    REQUIRE(mkfifo(path.c_str(), 0600) == 0);
    std::thread writer([&path, &bytes] { std::ofstream(path, std::ios::binary) << bytes; });
    // NOLINTNEXTLINE(cppcoreguidelines-special-member-functions): one scope, never copied
    struct Join {
        std::thread& thread;
        ~Join() { thread.join(); }
    } const join{writer};
    return GridReading(path);
}

}  // namespace

TEST_CASE("a binary grid gives geometry and layout and summary") {
    const GridReading grid =
        ReadGrid(BinaryGrid(100.5, -20.0, 3, 2, 0.1F, {1.0F, 2.0F, 3.0F, -4.5F, 5.0F, 6.25F}), "grid.bin");
    CHECK(grid.result == 1);
    CHECK(grid.err.empty());
    CHECK(grid.region.nx == 3);
    CHECK(grid.region.ny == 2);
    CHECK(grid.region.org_x == 100.5);
    CHECK(grid.region.org_y == -20.0);
    CHECK(grid.region.dx == 0.1F);
    CHECK(grid.region.dataNum == 6);
    CHECK(grid.region.valMax == 6.25F);
    CHECK(grid.region.valMin == -4.5F);
    CHECK_FALSE(grid.region.noBinaryInput);
    const std::vector<float> values(grid.region.val, grid.region.val + 6);
    CHECK(values == std::vector<float>{1.0F, -4.5F, 2.0F, 5.0F, 3.0F, 6.25F});
    CHECK(grid.out == GridHeading(grid.region.inFileName) +
                          ">>>> Read Binary File\n"
                          "nx     :3\n"
                          "ny     :2\n"
                          "org_x  :100.500000\n"
                          "org_y  :-20.000000\n"
                          "dx     :0.100000\n"
                          "dataNum:6\n"
                          "valMax :6.250000\n"
                          "valMin :-4.500000\n"
                          "<<<<<<<<<<<<<<<<<< Completed.\n");
}

TEST_CASE("the fields of a binary header lie at their published places in little-endian order") {
    std::string bytes;
    const auto append = [&bytes](std::initializer_list<int> values) {
        for (const int value : values) {
            bytes += static_cast<char>(value);
        }
    };
    append({0, 0, 0, 0, 0, 0, 0xF8, 0x3F});  // org_x = 1.5
    append({0, 0, 0, 0, 0, 0, 0, 0xC0});     // org_y = -2.0
    append({1, 0, 0, 0});                    // nx = 1
    append({2, 0, 0, 0});                    // ny = 2
    append({0, 0, 0, 0x3F});                 // dx = 0.5
    append({0, 0, 0x80, 0x3F});              // 1.0
    append({0, 0, 0x20, 0xC1});              // -10.0
    const GridReading grid = ReadGrid(bytes, "grid.bin");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.org_x == 1.5);
    CHECK(grid.region.org_y == -2.0);
    CHECK(grid.region.nx == 1);
    CHECK(grid.region.ny == 2);
    CHECK(grid.region.dx == 0.5F);
    CHECK(grid.At(0, 0) == 1.0F);
    CHECK(grid.At(0, 1) == -10.0F);
}

TEST_CASE("a binary grid takes its spacing from the header only and leaves dy and the end at 0") {
    const GridReading grid = ReadGrid(BinaryGrid(1.0, 2.0, 2, 2, 7.0F, {1.0F, 2.0F, 3.0F, 4.0F}), "grid.bin");
    REQUIRE(grid.result == 1);
    CHECK(grid.region.dx == 7.0F);
    CHECK(grid.region.dy == 0.0F);
    CHECK(grid.region.end_x == 0.0);
    CHECK(grid.region.end_y == 0.0);
}

TEST_CASE("a large binary grid keeps every value at its place") {
    const int nx = 131;
    const int ny = 97;
    std::vector<float> values;
    for (int k = 0; k < nx * ny; ++k) {
        values.push_back(static_cast<float>(k));
    }
    const GridReading grid = ReadGrid(BinaryGrid(0.0, 0.0, nx, ny, 1.0F, values), "grid.bin");
    REQUIRE(grid.result == 1);
    int wrong = 0;
    for (int ix = 0; ix < nx; ++ix) {
        for (int iy = 0; iy < ny; ++iy) {
            wrong += grid.At(ix, iy) == static_cast<float>(iy * nx + ix) ? 0 : 1;
        }
    }
    CHECK(wrong == 0);
}

TEST_CASE("binary values keep their bits whatever they are") {
    const std::uint32_t patterns[4] = {0x7FC12345U, 0xFF800000U, 0x80000000U, 0x00000001U};
    std::vector<float> values(4);
    std::memcpy(values.data(), patterns, sizeof patterns);
    const GridReading grid = ReadGrid(BinaryGrid(0.0, 0.0, 4, 1, 1.0F, values), "grid.bin");
    REQUIRE(grid.result == 1);
    CHECK(std::memcmp(grid.region.val, patterns, sizeof patterns) == 0);
    // NaN first: what follows replaces it; then -infinity, -0 and the smallest number.
    CHECK(grid.region.valMax == std::numeric_limits<float>::denorm_min());
    CHECK(grid.region.valMin == -std::numeric_limits<float>::infinity());
}

TEST_CASE("a binary header may hold any origin and spacing") {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const GridReading grid = ReadGrid(BinaryGrid(nan, -1e300, 1, 1, inf, {2.0F}), "grid.bin");
    REQUIRE(grid.result == 1);
    CHECK(std::isnan(grid.region.org_x));
    CHECK(grid.region.org_y == -1e300);
    CHECK(grid.region.dx == inf);
    CHECK(Contains(grid.out, "org_x  :nan\n"));
    CHECK(Contains(grid.out, "dx     :inf\n"));
    CHECK(ReadGrid(BinaryGrid(0.0, 0.0, 1, 1, 0.0F, {2.0F}), "grid.bin").result == 1);
}

TEST_CASE("what a binary file holds behind its values is ignored") {
    const std::string bytes = BinaryGrid(0.0, 0.0, 1, 2, 1.0F, {1.0F, 2.0F});
    for (const std::size_t more : {std::size_t{1}, std::size_t{4}, std::size_t{1000}}) {
        CAPTURE(more);
        const GridReading grid = ReadGrid(bytes + std::string(more, 'x'), "grid.bin");
        REQUIRE(grid.result == 1);
        CHECK(grid.region.dataNum == 2);
        CHECK(grid.At(0, 1) == 2.0F);
    }
}

TEST_CASE("a binary grid that cannot be opened gives the block of code 1 after its own line") {
    const ScratchFolder folder;
    for (const std::string& path : {folder.At("missing.bin"), folder.At("no/folder.bin"), folder.MakeFolder("d.bin")}) {
        CAPTURE(path);
        const GridReading grid(path);
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(path) + ">>>> Read Binary File\n");
        CHECK(grid.err == CannotOpenBlock(path));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("a binary file shorter than its header is refused with the block of code 3") {
    const std::string bytes = BinaryGrid(1.0, 2.0, 1, 1, 1.0F, {3.0F});
    for (std::size_t length = 0; length < 28; ++length) {
        CAPTURE(length);
        const GridReading grid = ReadGrid(bytes.substr(0, length), "grid.bin");
        CHECK(grid.result == 0);
        CHECK(grid.out == GridHeading(grid.region.inFileName) + ">>>> Read Binary File\n");
        CHECK(StartsWith(grid.err, std::string(kFrameLine) + "\nERROR:REGION OBJECT METHOD\n"));
        CHECK(Contains(grid.err, "Region File  > " + grid.region.inFileName + "\n  ERROR-DETAIL:ALL DATA NUM > 0\n"));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("a binary file shorter than its values is refused with the block of code 3") {
    const std::string bytes = BinaryGrid(1.0, 2.0, 2, 2, 1.0F, {1.0F, 2.0F, 3.0F, 4.0F});
    for (std::size_t length = 28; length < bytes.size(); ++length) {
        CAPTURE(length);
        const GridReading grid = ReadGrid(bytes.substr(0, length), "grid.bin");
        CHECK(grid.result == 0);
        CHECK(grid.err == BadCountBlock(grid.region.inFileName, "2", "2"));
        CHECK(grid.region.val == nullptr);
    }
    CHECK(ReadGrid(bytes, "grid.bin").result == 1);
}

struct BadSize {
    std::string why;
    std::int32_t nx;
    std::int32_t ny;
};
const std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
const std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
const BadSize kBadSizes[] = {
    {"no column", 0, 2},
    {"no row", 2, 0},
    {"neither", 0, 0},
    {"a negative number of columns", -1, 4},
    {"a negative number of rows", 4, -1},
    {"a negative number of both: their product is the count", -2, -2},
    {"the largest number of columns", kLargest, 1},
    {"the largest number of rows", 1, kLargest},
    {"the largest of both: the wrapped product is 1", kLargest, kLargest},
    {"the smallest number of both: the wrapped product is 0", kSmallest, kSmallest},
    {"the smallest number of columns", kSmallest, 1},
    {"a product of 2^32", 65536, 65536},
    {"a product just above 2^32: the wrapped product is 131073", 65537, 65537},
    {"a product of 2^32 + 4: the wrapped product is the count", 1073741825, 4},
    {"one row beyond 32 bits", 46341, 46341},
    {"50 000 by 50 000", 50000, 50000},
};

TEST_CASE("a binary grid of a size that cannot be is refused before anything is allocated") {
    for (const BadSize& row : kBadSizes) {
        CAPTURE(row.why);
        const GridReading grid =
            ReadGrid(BinaryGrid(0.0, 0.0, row.nx, row.ny, 1.0F, {1.0F, 2.0F, 3.0F, 4.0F}), "grid.bin");
        CHECK(grid.result == 0);
        CHECK(grid.err == BadCountBlock(grid.region.inFileName, std::to_string(row.nx), std::to_string(row.ny)));
        CHECK(grid.region.val == nullptr);
    }
}

TEST_CASE("a text grid under the name of a binary one is too short for its header") {
    const GridReading grid = ReadGrid("1 1\n0 0 1 1\n5\n", "grid.bin");
    CHECK(grid.result == 0);
    CHECK(Contains(grid.err, "ALL DATA NUM > 0\n"));
}

TEST_CASE("a binary grid is read from a pipe as from a file") {
    const GridReading grid = ReadThroughPipe(BinaryGrid(1.0, 2.0, 2, 1, 5.0F, {3.0F, 4.0F}));
    REQUIRE(grid.result == 1);
    CHECK(grid.region.dx == 5.0F);
    CHECK(grid.At(1, 0) == 4.0F);
}

TEST_CASE("a pipe that promises a large grid and ends early is refused") {
    // 2^31 - 1 values would take 8 gigabytes: what is read decides, not what the header says.
    const GridReading grid = ReadThroughPipe(BinaryGrid(1.0, 2.0, kLargest, 1, 5.0F, {3.0F, 4.0F}));
    CHECK(grid.result == 0);
    CHECK(grid.err == BadCountBlock(grid.region.inFileName, "2147483647", "1"));
    CHECK(ReadThroughPipe(std::string(27, 'x')).result == 0);
}
