#include <doctest/doctest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "support/ReplacingFile.h"
#include "unit/ScratchFolder.h"

namespace {

using tidora::ReplacingFile;

std::size_t FilesIn(const std::string& folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
        ++count;
    }
    return count;
}

}  // namespace

TEST_CASE("a file stands under its name only after the commit") {
    const ScratchFolder scratch;
    const std::string path = scratch.At("grid.bin");
    {
        ReplacingFile file(path);
        REQUIRE(file.IsOpen());
        std::fputs("whole", file.Stream());
        std::fflush(file.Stream());
        CHECK_FALSE(FileExists(path));
        CHECK(file.Commit());
    }
    CHECK(FileBytes(path) == "whole");
    CHECK(FilesIn(scratch.Path()) == 1);
}

TEST_CASE("without a commit what stood under the name stays, and nothing is left beside it") {
    const ScratchFolder scratch;
    const std::string path = scratch.Write("grid.bin", "before");
    {
        ReplacingFile file(path);
        REQUIRE(file.IsOpen());
        std::fputs("half", file.Stream());
    }
    CHECK(FileBytes(path) == "before");
    CHECK(FilesIn(scratch.Path()) == 1);
}

TEST_CASE("a commit replaces what stood under the name and keeps its mode") {
    const ScratchFolder scratch;
    const std::string path = scratch.Write("grid.bin", "longer than what replaces it");
    REQUIRE(chmod(path.c_str(), 0640) == 0);
    ReplacingFile file(path);
    REQUIRE(file.IsOpen());
    std::fputs("new", file.Stream());
    CHECK(file.Commit());
    CHECK(FileBytes(path) == "new");
    struct stat status {};
    REQUIRE(stat(path.c_str(), &status) == 0);
    CHECK((status.st_mode & 0777U) == 0640U);
}

TEST_CASE("a new file has the mode that the umask leaves") {
    const ScratchFolder scratch;
    const mode_t before = umask(027);
    {
        ReplacingFile file(scratch.At("grid.bin"));
        REQUIRE(file.IsOpen());
        CHECK(file.Commit());
    }
    umask(before);
    struct stat status {};
    REQUIRE(stat(scratch.At("grid.bin").c_str(), &status) == 0);
    CHECK((status.st_mode & 0777U) == 0640U);
}

TEST_CASE("a path that cannot be opened for writing is not open") {
    const ScratchFolder scratch;
    CHECK_FALSE(ReplacingFile("").IsOpen());
    CHECK_FALSE(ReplacingFile(scratch.MakeFolder("folder")).IsOpen());
    CHECK_FALSE(ReplacingFile(scratch.At("missing/grid.bin")).IsOpen());
    CHECK_FALSE(ReplacingFile(scratch.Write("file", "x") + "/grid.bin").IsOpen());
    if (geteuid() != 0) {  // the superuser may write to anything
        const std::string readOnly = scratch.Write("read-only", "x");
        REQUIRE(chmod(readOnly.c_str(), 0444) == 0);
        CHECK_FALSE(ReplacingFile(readOnly).IsOpen());
    }
}

TEST_CASE("a symbolic link is followed") {
    const ScratchFolder scratch;
    const std::string target = scratch.Write("target", "before");
    const std::string link = scratch.At("link");
    REQUIRE(symlink(target.c_str(), link.c_str()) == 0);
    ReplacingFile file(link);
    REQUIRE(file.IsOpen());
    std::fputs("after", file.Stream());
    CHECK(file.Commit());
    CHECK(std::filesystem::is_symlink(link));
    CHECK(FileBytes(target) == "after");
}

TEST_CASE("a device is written in place, and a full one fails the commit") {
    ReplacingFile null("/dev/null");
    REQUIRE(null.IsOpen());
    std::fputs("gone", null.Stream());
    CHECK(null.Commit());
    struct stat device {};
    // Where the device is missing the superuser would make a file of that name.
    REQUIRE(stat("/dev/full", &device) == 0);
    REQUIRE(S_ISCHR(device.st_mode));
    ReplacingFile full("/dev/full");
    REQUIRE(full.IsOpen());
    std::fputs("no room", full.Stream());
    CHECK_FALSE(full.Commit());
}
