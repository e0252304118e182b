#include <doctest/doctest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <sched.h>
#include <sys/mount.h>
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

TEST_CASE("a link to what is not there yet is followed, whatever chain of links leads there") {
    const struct {
        const char* target;  // of the link "first/link"
        const char* made;
        const char* why;
    } kLinks[] = {
        {"new", "first/new", "beside the link"},
        {"../second/new", "second/new", "in another folder"},
        {"../second/chain", "first/end", "by a second link, from whose folder the path goes on"},
        {"../through/new", "second/new", "by a folder that is a link"},
    };
    for (const auto& row : kLinks) {
        CAPTURE(row.why);
        const ScratchFolder scratch;
        const std::string first = scratch.MakeFolder("first");
        const std::string second = scratch.MakeFolder("second");
        const std::string link = first + "/link";
        REQUIRE(symlink(row.target, link.c_str()) == 0);
        REQUIRE(symlink((first + "/end").c_str(), (second + "/chain").c_str()) == 0);
        REQUIRE(symlink("second", scratch.At("through").c_str()) == 0);
        {
            ReplacingFile file(link);
            REQUIRE(file.IsOpen());
            std::fputs("new", file.Stream());
            CHECK_FALSE(FileExists(scratch.At(row.made)));
            CHECK(file.Commit());
        }
        CHECK(FileBytes(scratch.At(row.made)) == "new");
        CHECK(std::filesystem::is_symlink(link));
        CHECK(FilesIn(first) + FilesIn(second) == 3);  // two links and the file
    }
}

TEST_CASE("a link that is relative to the current folder is followed from there") {
    const ScratchFolder scratch;
    const CurrentFolder current(scratch.Path());
    REQUIRE(symlink("new", "link") == 0);
    ReplacingFile file("link");
    REQUIRE(file.IsOpen());
    CHECK(file.Commit());
    CHECK(FileBytes(scratch.At("new")).empty());
    CHECK(std::filesystem::is_symlink("link"));
}

TEST_CASE("links that lead nowhere are not open, as for any program, and stay") {
    const struct {
        const char* target;
        const char* why;
    } kLinks[] = {
        {"link", "itself"},
        {"other", "around"},
        {"missing/new", "into a folder that is not there"},
        {"file/new", "below a file"},
        {"new/", "to a folder that is not there"},
    };
    for (const auto& row : kLinks) {
        CAPTURE(row.why);
        const ScratchFolder scratch;
        static_cast<void>(scratch.Write("file", "x"));
        const std::string link = scratch.At("link");
        REQUIRE(symlink(row.target, link.c_str()) == 0);
        REQUIRE(symlink("link", scratch.At("other").c_str()) == 0);
        CHECK(tidora::FileHandle(std::fopen(link.c_str(), "wb")) == nullptr);
        CHECK_FALSE(ReplacingFile(link).IsOpen());
        CHECK(std::filesystem::is_symlink(link));
        CHECK(FilesIn(scratch.Path()) == 3);
    }
}

TEST_CASE("links are followed as far as the system follows them") {
    const ScratchFolder scratch;
    REQUIRE(symlink("new", scratch.At("1").c_str()) == 0);
    for (int link = 2; link <= 41; ++link) {
        REQUIRE(symlink(std::to_string(link - 1).c_str(), scratch.At(std::to_string(link)).c_str()) == 0);
    }
    CHECK_FALSE(ReplacingFile(scratch.At("41")).IsOpen());
    ReplacingFile file(scratch.At("40"));
    REQUIRE(file.IsOpen());
    CHECK(file.Commit());
    CHECK(FileExists(scratch.At("new")));
    CHECK(FilesIn(scratch.Path()) == 42);
}

TEST_CASE("a path that has no room for a longer name beside it is written in place") {
    const ScratchFolder scratch;
    // "/" again and again is the same folder; 4095 characters are the longest path.
    const std::string path = scratch.Path() + std::string(4095 - 1 - scratch.Path().size(), '/') + "g";
    ReplacingFile file(path);
    REQUIRE(file.IsOpen());
    std::fputs("new", file.Stream());
    CHECK(file.Commit());
    CHECK(FileBytes(scratch.At("g")) == "new");
}

TEST_CASE("a part that an earlier run left behind is not touched") {
    const ScratchFolder scratch;
    const std::string left = ".tidora-" + std::to_string(getpid()) + "-0.part";
    const std::string path = scratch.Write(left, "left behind");
    {
        ReplacingFile file(scratch.At("grid.bin"));
        REQUIRE(file.IsOpen());
        CHECK(file.Commit());
    }
    CHECK(FileBytes(path) == "left behind");
    CHECK(FilesIn(scratch.Path()) == 2);
}

TEST_CASE("beside a hundred parts that were left behind a file is written in place") {
    const ScratchFolder scratch;
    for (int attempt = 0; attempt < 100; ++attempt) {
        static_cast<void>(
            scratch.Write(".tidora-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part", "left"));
    }
    ReplacingFile file(scratch.At("grid.bin"));
    REQUIRE(file.IsOpen());
    std::fputs("new", file.Stream());
    CHECK(file.Commit());
    CHECK(FileBytes(scratch.At("grid.bin")) == "new");
    CHECK(FilesIn(scratch.Path()) == 101);
}

TEST_CASE("a commit that cannot rename fails, and nothing is left beside what took the place") {
    const ScratchFolder scratch;
    {
        ReplacingFile file(scratch.At("grid.bin"));
        REQUIRE(file.IsOpen());
        static_cast<void>(scratch.MakeFolder("grid.bin"));
        CHECK_FALSE(file.Commit());
    }
    CHECK(FilesIn(scratch.Path()) == 1);
}

TEST_CASE("in a folder with the sticky bit, a file of somebody else that may be written is written in place") {
    if (geteuid() != 0) {
        MESSAGE("skipped: only root can act for two users");
        return;
    }
    constexpr uid_t kSomebody = 65534;
    // The build folder may lie where nobody else can get in, as the home of root.
    const ScratchFolder scratch(std::filesystem::temp_directory_path().string() + "/tidora_test_");
    REQUIRE(chmod(scratch.Path().c_str(), 01777) == 0);
    const std::string path = scratch.Write("grid.bin", "longer than what replaces it");
    REQUIRE(chmod(path.c_str(), 0666) == 0);
    struct stat before {};
    REQUIRE(stat(path.c_str(), &before) == 0);
    REQUIRE(seteuid(kSomebody) == 0);
    bool isCommitted = false;
    {
        ReplacingFile file(path);
        if (file.IsOpen()) {
            std::fputs("new", file.Stream());
            isCommitted = file.Commit();
        }
    }
    REQUIRE(seteuid(0) == 0);
    CHECK(isCommitted);
    CHECK(FileBytes(path) == "new");
    CHECK(FilesIn(scratch.Path()) == 1);
    struct stat after {};
    REQUIRE(stat(path.c_str(), &after) == 0);
    CHECK(after.st_ino == before.st_ino);
    CHECK(after.st_uid == before.st_uid);
}

TEST_CASE("a file that is a mount is written in place") {
    const ScratchFolder scratch;
    const std::string path = scratch.Write("grid.bin", "below");
    const std::string other = scratch.Write("other.bin", "longer than what replaces it");
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount(other.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) != 0) {
        MESSAGE("skipped: no file can be mounted here");
        return;
    }
    bool isCommitted = false;
    {
        ReplacingFile file(path);
        REQUIRE(file.IsOpen());
        std::fputs("new", file.Stream());
        isCommitted = file.Commit();
    }
    CHECK(umount2(path.c_str(), MNT_DETACH) == 0);
    CHECK(isCommitted);
    CHECK(FileBytes(other) == "new");
    CHECK(FileBytes(path) == "below");
    CHECK(FilesIn(scratch.Path()) == 2);
}

TEST_CASE("a device is written in place, and a full one fails the commit") {
    ReplacingFile null("/dev/null");
    REQUIRE(null.IsOpen());
    std::fputs("gone", null.Stream());
    CHECK(null.Commit());
    if (!HasFullDevice()) {
        return;
    }
    ReplacingFile full("/dev/full");
    REQUIRE(full.IsOpen());
    std::fputs("no room", full.Stream());
    CHECK_FALSE(full.Commit());
}
