// Results that break off for want of space: within a grid, within a list, and at every file of a run.

#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>

#include <unistd.h>

#include "robustness/Outcome.h"
#include "robustness/SmallDisk.h"
#include "unit/ExpectedText.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kCannotWrite =
    "  ERROR-DETAIL:Abnormal action at Writing BIN File Method.\n"
    "  ERROR-DETAIL:Can not open file.\n";
const std::string kEarlier = "an earlier result";

std::size_t FilesIn(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// A run on 100 x 100 points: results of 40 028 bytes, more than a stream buffers.
void PutLargeGrid(const RunFolder& folder) {
    folder.Put(Configuration().Set(kTopography, "topo.bin").Set(kFilter, "0"));
    folder.Put("topo.bin", BinaryGrid(0, 0, 100, 100, 100));
}

constexpr std::uint64_t kLargeResult = 28 + 4 * 100 * 100;

/// What a file takes at least on a small disk.
std::size_t PageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// What a file of `bytes` takes there.
std::size_t InPages(std::uint64_t bytes) {
    return (bytes + PageSize() - 1) / PageSize() * PageSize();
}

Surroundings WithLargestFile(std::uint64_t bytes) {
    Surroundings surroundings;
    surroundings.largestFile = bytes;
    return surroundings;
}

}  // namespace

TEST_CASE("a grid that breaks off at any byte leaves what stood under its name and nothing else") {
    for (const std::uint64_t limit : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{27}, std::uint64_t{28},
                                      std::uint64_t{4096}, std::uint64_t{25628}, kLargeResult - 1}) {
        for (const bool hasEarlier : {false, true}) {
            CAPTURE(limit);
            CAPTURE(hasEarlier);
            const RunFolder folder;
            PutLargeGrid(folder);
            folder.MakeFolder("out");
            if (hasEarlier) {
                folder.Put("out/Tdr_bay_0000s.bin", kEarlier);
            }
            const Ending ending = RunIn(folder.Path(), WithLargestFile(limit));
            CHECK(FilesIn(folder.At("out")) == (hasEarlier ? 1 : 0));
            if (hasEarlier) {
                CHECK(FileBytes(folder.At("out/Tdr_bay_0000s.bin")) == kEarlier);
                folder.Remove("out/Tdr_bay_0000s.bin");
            }
            CheckFailure(ending, folder, kTopographyError, kCannotWrite);
        }
    }
}

TEST_CASE("a limit that the largest result just keeps harms nothing") {
    const RunFolder folder;
    PutLargeGrid(folder);
    CheckSuccess(RunIn(folder.Path(), WithLargestFile(kLargeResult)), folder);
}

TEST_CASE("a list that breaks off is not there, and the grids before it are") {
    constexpr int kIntervals = 120;  // lists of more bytes than a stream buffers, grids of 64
    std::string faults;
    for (int lag = 0; lag < kIntervals; ++lag) {
        faults += FaultLine(lag);
    }
    for (const std::uint64_t limit : {kSmallSeriesFile, std::uintmax_t{1000}, std::uintmax_t{5000}}) {
        CAPTURE(limit);
        const RunFolder folder;
        folder.Put("fault.txt", faults);
        const Ending ending = RunIn(folder.Path(), WithLargestFile(limit));
        CheckFailure(ending, folder, kTopographyError, kCannotWrite);
        CHECK_FALSE(FileExists(folder.At("out/Tdr_bay.txt")));
        CHECK(FilesIn(folder.At("out")) == kIntervals);
    }
}

TEST_CASE("on a disk of any size the results that have room are whole, in order, and the failing series is named") {
    // A page a file and more: the number of pages decides which file fails.
    const std::vector<std::string> files = SeriesFilesInOrder({0, 30});
    const RunFolder folder;
    folder.Put("fault.txt", FaultLine(0) + FaultLine(30));
    folder.Put(Configuration().Set(kTopography, "topo.bin").Set(kFilter, "0"));
    folder.Put("topo.bin", BinaryGrid(0, 0, 50, 50, 100));
    folder.MakeFolder("out");
    std::size_t writtenBefore = 0;
    bool hasFailed = false;
    for (std::size_t pages = 1; writtenBefore < files.size() && pages < 40; pages += 2) {
        CAPTURE(pages);
        const SmallDisk disk(folder.At("out"), pages * PageSize());
        if (!disk.IsThere()) {
            return;
        }
        const Ending ending = RunIn(folder.Path());
        const auto firstMissing = std::find_if(
            files.begin(), files.end(), [&folder](const std::string& file) { return !FileExists(folder.At(file)); });
        const auto written = static_cast<std::size_t>(firstMissing - files.begin());
        CHECK(FilesIn(folder.At("out")) == written);
        CHECK(written >= writtenBefore);
        writtenBefore = written;
        if (firstMissing == files.end()) {
            CheckSuccess(ending, folder);
        } else {
            hasFailed = true;
            const bool isInitialWave = StartsWith(*firstMissing, "out/Tdr");
            CheckFailure(ending, folder, isInitialWave ? kTopographyError : kMapFileError, kCannotWrite);
        }
    }
    CHECK(hasFailed);
    CHECK(writtenBefore == files.size());
}

TEST_CASE("earlier results survive a run that finds the disk full") {
    const RunFolder folder;
    PutLargeGrid(folder);
    folder.MakeFolder("out");
    // Room for one set of results of a single interval, but not for one more grid beside it.
    const std::size_t room = 3 * InPages(kLargeResult) + 3 * PageSize() + InPages(kLargeResult) - PageSize();
    const SmallDisk disk(folder.At("out"), room);
    if (!disk.IsThere()) {
        return;
    }
    CheckSuccess(RunIn(folder.Path()), folder);
    std::vector<std::string> earlier;
    for (const std::string& file : SeriesFilesInOrder()) {
        earlier.push_back(FileBytes(folder.At(file)));
    }
    folder.Put("fault.txt", FaultLine() + FaultLine());
    CheckFailure(RunIn(folder.Path()), folder, kTopographyError, kCannotWrite);
    for (std::size_t i = 0; i < earlier.size(); ++i) {
        CHECK(FileBytes(folder.At(SeriesFilesInOrder()[i])) == earlier[i]);
    }
}
