// The time-series writer when a file cannot be opened or written, or snapshots are missing.

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <sys/resource.h>

#include "unit/ExpectedText.h"
#include "unit/ScratchFolder.h"
#include "unit/SeriesWriting.h"

using tidora::Region;

namespace {

// Kept on purpose: the block names the grid that the region was read from, not the file that failed.
std::string CannotWriteBlock(const std::string& inFileName) {
    return ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at Writing BIN File Method.", "Can not open file.",
                                               "Particular attention should be given to \"Region BIN File\".",
                                               "Region BIN File > " + inFileName});
}

std::string MissingSnapshotBlock() {
    return ErrorBlock("REGION OBJECT METHOD", {"Abnormal action at Writing BIN File Method.",
                                               "Particular attention should be given to \" \"."});
}

std::string Announcement(const std::string& path) {
    return ">>>>>>>>>>>>>>>>>> Write File : " + path + "\n";
}

// Until the end of its scope no file can grow beyond `bytes`: writing then fails half-way.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_previousHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        REQUIRE(getrlimit(RLIMIT_FSIZE, &m_previous) == 0);
        rlimit limit = m_previous;
        limit.rlim_cur = bytes;
        REQUIRE(setrlimit(RLIMIT_FSIZE, &limit) == 0);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_previous{};
    void (*m_previousHandler)(int);
};

}  // namespace

TEST_CASE("a series for a folder that does not exist is refused with the name of the input grid") {
    const ScratchFolder folder;
    const std::string dir = folder.At("missing");
    Region region = SeriesRegion(tidora::RTYPE_INITIAL_WAVE, 2, 2, 1);
    const SeriesWriting writing = WriteSeries(region, dir, Series({{3.0, 0.0}}));
    CHECK(writing.result == 0);
    CHECK(writing.out == "\n" + Announcement(dir + "/Tdr_bay_0003s.bin"));
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(region.outFileName == dir + "/Tdr_bay_0003s.bin");
    CHECK_FALSE(FileExists(dir));
}

TEST_CASE("the block of a computed region's series ends with an empty name") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, 1);
    region.inFileName.clear();
    const SeriesWriting writing = WriteSeries(region, folder.At("missing"), Series({{3.0, 0.0}}));
    CHECK(writing.result == 0);
    CHECK(writing.err == CannotWriteBlock(""));
}

TEST_CASE("files that were written before a snapshot file fails to open stay") {
    const ScratchFolder folder;
    const std::string blocked = folder.MakeFolder("VRT_bay_0010s.bin");
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, 3);
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 1.0}, {10.0, 1.0}, {20.0, 1.0}}));
    CHECK(writing.result == 0);
    CHECK(writing.out == "\n" + Announcement(folder.At("VRT_bay_0000s.bin")) + Announcement(blocked));
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(region.outFileName == blocked);
    CHECK(FileBytes(folder.At("VRT_bay_0000s.bin")) == SnapshotBytes(2, 2, 0));
    CHECK_FALSE(FileExists(folder.At("VRT_bay_0020s.bin")));
    CHECK_FALSE(FileExists(folder.At("VRT_bay.txt")));
}

TEST_CASE("a list file that cannot be opened is a failure with the same block and the snapshots stay") {
    const ScratchFolder folder;
    const std::string blocked = folder.MakeFolder("VRT_bay.txt");
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, 1);
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 1.0}}));
    CHECK(writing.result == 0);
    CHECK(writing.out == "\n" + Announcement(folder.At("VRT_bay_0000s.bin")));
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(region.outFileName == blocked);
    CHECK(FileBytes(folder.At("VRT_bay_0000s.bin")) == SnapshotBytes(2, 2, 0));
}

TEST_CASE("a snapshot file that cannot be written in full is a failure") {
    if (!HasFullDevice()) {
        return;
    }
    // Small: what is written stays in the stream's buffer until it is closed. Large: the first write fails.
    for (const int side : {2, 300}) {
        CAPTURE(side);
        const ScratchFolder folder;
        std::filesystem::create_symlink("/dev/full", folder.At("VRT_bay_0000s.bin"));
        Region region = SeriesRegion(tidora::RTYPE_VERTICAL, side, side, 1);
        const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 1.0}}));
        CHECK(writing.result == 0);
        CHECK(writing.err == CannotWriteBlock("input.txt"));
        CHECK_FALSE(Contains(writing.out, "Completed."));
        CHECK_FALSE(FileExists(folder.At("VRT_bay.txt")));
    }
}

TEST_CASE("a snapshot file that breaks off half-way leaves what stood under its name and nothing else") {
    const ScratchFolder folder;
    const std::string path = folder.Write("VRT_bay_0000s.bin", "an earlier result");
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 200, 100, 1);
    SeriesWriting writing;
    {
        const FileSizeLimit limit(10000);
        writing = WriteSeries(region, folder.Path(), Series({{0.0, 1.0}}));
    }
    CHECK(writing.result == 0);
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(FileBytes(path) == "an earlier result");
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        ++files;
    }
    CHECK(files == 1);
}

TEST_CASE("a list file that cannot be written in full is a failure") {
    if (!HasFullDevice()) {
        return;
    }
    // Short: what is written stays in the stream's buffer until it is closed. Long: a write before that fails.
    for (const int intervals : {1, 300}) {
        CAPTURE(intervals);
        const ScratchFolder folder;
        std::filesystem::create_symlink("/dev/full", folder.At("VRT_bay.txt"));
        Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, intervals);
        const std::vector<Interval> all(static_cast<std::size_t>(intervals), Interval{0.0, 1.0});
        const SeriesWriting writing = WriteSeries(region, folder.Path(), Series(all));
        CHECK(writing.result == 0);
        CHECK(writing.err == CannotWriteBlock("input.txt"));
        CHECK_FALSE(Contains(writing.out, "Completed."));
    }
}

TEST_CASE("fewer snapshots than intervals are refused with the block of code 2") {
    for (const int snapshots : {0, 1, 2}) {
        CAPTURE(snapshots);
        const ScratchFolder folder;
        Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 2, 2, snapshots);
        const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 1.0}, {1.0, 1.0}, {2.0, 1.0}}));
        CHECK(writing.result == 0);
        CHECK(writing.err == MissingSnapshotBlock());
        CHECK_FALSE(Contains(writing.out, "Completed."));
        CHECK_FALSE(FileExists(folder.At("VRT_bay.txt")));
        CHECK_FALSE(FileExists(folder.At("VRT_bay_0002s.bin")));
    }
}

TEST_CASE("a path beyond the buffer of 8191 bytes is a failure and never a shorter name") {
    const ScratchFolder folder;
    // "/." again and again is the same folder; the system's own limit lies below the buffer's, so both sides of the
    // buffer's size must fail, each with the block of a file that cannot be opened.
    const std::size_t tail = std::string("/VRT_bay_0000s.bin").size();
    for (const std::size_t pathLength :
         {std::size_t{8189}, std::size_t{8190}, std::size_t{8191}, std::size_t{8192}, std::size_t{20000}}) {
        CAPTURE(pathLength);
        std::string dir = folder.Path();
        while (dir.size() + tail + 2 <= pathLength) {
            dir += "/.";
        }
        dir.insert(folder.Path().size(), pathLength - tail - dir.size(), '/');
        REQUIRE(dir.size() + tail == pathLength);
        Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 1);
        const SeriesWriting writing = WriteSeries(region, dir, Series({{0.0, 0.0}}));
        CHECK(writing.result == 0);
        CHECK(writing.err == CannotWriteBlock("input.txt"));
        CHECK(std::filesystem::is_empty(folder.Path()));
    }
}

TEST_CASE("a list path beyond the buffer of 8191 bytes is a failure, also without any snapshot") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 0);
    const SeriesWriting writing = WriteSeries(region, folder.Path() + std::string(8192, '/'), Series({}));
    CHECK(writing.result == 0);
    CHECK(writing.out == "\n");
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(std::filesystem::is_empty(folder.Path()));
}

TEST_CASE("a region name with a folder that does not exist is a failure to open") {
    const ScratchFolder folder;
    Region region = SeriesRegion(tidora::RTYPE_VERTICAL, 1, 1, 1);
    region.name = "north/bay";
    const SeriesWriting writing = WriteSeries(region, folder.Path(), Series({{0.0, 0.0}}));
    CHECK(writing.result == 0);
    CHECK(writing.err == CannotWriteBlock("input.txt"));
    CHECK(region.outFileName == folder.At("VRT_north/bay_0000s.bin"));
}
