// Counts that no file fills: they must be refused before memory is asked for. A run has 512 MiB of address space here.

#include <doctest/doctest.h>

#include <climits>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "robustness/Outcome.h"

namespace {

struct GridSize {
    int nx, ny;
    const char* why;
};

const GridSize kUnfilledSizes[] = {
    {0, 0, "nothing"},
    {0, 4, "no column"},
    {4, 0, "no row"},
    {-1, -4, "two negative counts with a product that the file could hold"},
    {-2, 2, "a negative count"},
    {INT_MAX, 1, "the largest count"},
    {1, INT_MAX, "the largest count of rows"},
    {INT_MAX, INT_MAX, "a product beyond 32 bits"},
    {INT_MIN, INT_MIN, "a product of the smallest counts"},
    {INT_MIN, -1, "a quotient that has no 32-bit value"},
    {65536, 65536, "a product that wraps to 0"},
    {65537, 65532, "a product that wraps to a small number"},
    {46341, 46341, "the first square beyond 32 bits"},
    {46340, 46340, "the last square within 32 bits: 8 GiB of values"},
    {3, 2, "more than the file holds"},
};

/// The writing end of a pipe, once somebody has opened it for reading; -1 when nobody does.
int OpenOnceRead(const std::string& pipe) {
    constexpr int kPatience = 600000;  // milliseconds, for the busiest machine
    int descriptor = -1;
    for (int waited = 0; descriptor < 0 && waited < kPatience; ++waited) {
        descriptor = open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        usleep(descriptor < 0 ? 1000 : 0);
    }
    return descriptor;
}

}  // namespace

TEST_CASE("a binary grid that promises more than it holds is refused whatever its counts") {
    for (const GridSize& size : kUnfilledSizes) {
        CAPTURE(size.why);
        const RunFolder folder;
        folder.Put(Configuration().Set(kTopography, "topo.bin"));
        folder.Put("topo.bin", BinaryGrid(0, 0, size.nx, size.ny, 1000).substr(0, 28) + std::string(16, '\0'));
        CheckFailure(RunIn(folder.Path()), folder, kTopographyError, "          NX > " + std::to_string(size.nx));
    }
}

TEST_CASE("a text grid that promises more than it holds is refused whatever its counts") {
    for (const GridSize& size : kUnfilledSizes) {
        CAPTURE(size.why);
        const RunFolder folder;
        folder.Put("topo.txt", std::to_string(size.nx) + " " + std::to_string(size.ny) + "\n0 0 " +
                                   std::to_string(size.nx - 1.0) + " " + std::to_string(size.ny - 1.0) +
                                   "\n1 2\n3 4\n");
        CheckFailure(RunIn(folder.Path()), folder, kTopographyError, "You should check the Format of Region File.");
    }
}

TEST_CASE("a pipe that promises more than it delivers is refused") {
    for (const int side : {3, 46340}) {
        CAPTURE(side);
        const RunFolder folder;
        folder.Put(Configuration().Set(kTopography, "topo.bin"));
        REQUIRE(mkfifo(folder.At("topo.bin").c_str(), 0644) == 0);
        const std::string sent = BinaryGrid(0, 0, side, side, 1000).substr(0, 28) + std::string(16, '\0');
        RunningProgram run(folder.Path());
        REQUIRE(run.WaitForOutput(">>>> Read Binary File\n"));
        const int pipe = OpenOnceRead(folder.At("topo.bin"));
        REQUIRE(pipe >= 0);
        CHECK(write(pipe, sent.data(), sent.size()) == static_cast<ssize_t>(sent.size()));
        close(pipe);  // the run reads what was sent, and then meets the end
        CheckFailure(run.End(), folder, kTopographyError, "ALL DATA NUM > 0");
    }
}

TEST_CASE("a region count of any size neither hangs nor crashes") {
    const struct {
        const char* count;
        const char* message;  ///< null: success
        const char* why;
    } kCounts[] = {
        {"0", kTopographyError, "no region at all"},
        {"-1", kTopographyError, "no region at all"},
        {"-2147483648", kTopographyError, "no region at all"},
        {"2", kParseError, "the second region is not there"},
        {"2147483647", kParseError, "nor are these"},
        {"2147483648", kTopographyError, "the next number is the smallest of 32 bits"},
        {"4294967297", nullptr, "wraps to 1"},
        {"99999999999999999999999", kTopographyError, "the largest number of 64 bits wraps to -1"},
        {"1e9", nullptr, "a whole number ends at a letter: 1"},
        {"nan", kTopographyError, "no number: 0"},
    };
    for (const auto& row : kCounts) {
        CAPTURE(row.why);
        const RunFolder folder;
        folder.Put(Configuration().Set(kRegionCount, row.count));
        const Ending ending = RunIn(folder.Path());
        if (row.message == nullptr) {
            CheckSuccess(ending, folder);
        } else {
            CheckFailure(ending, folder, row.message);
        }
    }
}
