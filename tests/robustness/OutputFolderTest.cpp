// Output directories that cannot be made or written to, and results whose place is taken.

#include <doctest/doctest.h>

#include <filesystem>

#include "robustness/Outcome.h"
#include "robustness/SmallDisk.h"
#include "unit/ExpectedText.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kCannotWrite =
    "  ERROR-DETAIL:Abnormal action at Writing BIN File Method.\n"
    "  ERROR-DETAIL:Can not open file.\n";

/// The driver reports a failed series of the initial wave as topography, the others as map files.
const char* MessageOfSeries(const std::string& file) {
    return StartsWith(file, "out/Tdr") ? kTopographyError : kMapFileError;
}

/// A result that stood there before.
const std::string kEarlier = "an earlier result";

/// The files before `blocked` are complete results, those behind it are not there.
void CheckWrittenUpTo(const RunFolder& folder, const std::string& blocked) {
    bool isBefore = true;
    for (const std::string& file : SeriesFilesInOrder()) {
        CAPTURE(file);
        isBefore = isBefore && file != blocked;
        if (file != blocked) {
            CHECK(FileExists(folder.At(file)) == isBefore);
        }
    }
}

}  // namespace

TEST_CASE("an output directory that cannot be made ends the run when the first result is written") {
    const struct {
        std::string outDir;
        const char* why;
    } kDirectories[] = {
        {"fault.txt", "a file"},
        {"fault.txt/out", "below a file"},
        {"loop/out", "below a link to itself"},
        {"loop", "a link to itself"},
        {"nowhere", "a link to what is not there"},
        {"/proc/out", "in a file system that takes no files"},
        {std::string(300, 'd'), "a name longer than a file system takes"},
        {std::string(250, 'd') + "/" + std::string(250, 'd') + "/" + std::string(400, 'd'), "the same at its end"},
    };
    for (const auto& row : kDirectories) {
        CAPTURE(row.why);
        const RunFolder folder;
        folder.Link("loop", "loop");
        folder.Link("nowhere", "missing");
        folder.Put(Configuration().Set(kOutDir, row.outDir));
        const Ending ending = RunIn(folder.Path());
        CheckFailure(ending, folder, kTopographyError, kCannotWrite);
        CHECK(FileBytes(folder.At("fault.txt")) == FaultLine());
        CHECK_FALSE(FileExists(folder.At("missing")));
    }
}

TEST_CASE("an output directory that takes no files ends the run and stays empty") {
    if (!CanRunAsOrdinaryUser()) {
        return;
    }
    Surroundings ordinaryUser;
    ordinaryUser.isOrdinaryUser = true;
    const RunFolder folder;
    folder.MakeFolder("out");
    folder.SetMode("out", 0555);
    CheckFailure(RunIn(folder.Path(), ordinaryUser), folder, kTopographyError, kCannotWrite);
    CHECK(fs::is_empty(folder.At("out")));

    folder.Put(Configuration().Set(kOutDir, "out/below"));
    CheckFailure(RunIn(folder.Path(), ordinaryUser), folder, kTopographyError, kCannotWrite);
    CHECK(fs::is_empty(folder.At("out")));
}

TEST_CASE("a read-only file system ends the run") {
    const RunFolder folder;
    folder.MakeFolder("out");
    const SmallDisk disk(folder.At("out"), 1U << 20U, true);
    if (disk.IsThere()) {
        CheckFailure(RunIn(folder.Path()), folder, kTopographyError, kCannotWrite);
    }
}

TEST_CASE("a result that may not be overwritten stays, though its folder would let it be replaced") {
    if (!CanRunAsOrdinaryUser()) {
        return;
    }
    Surroundings ordinaryUser;
    ordinaryUser.isOrdinaryUser = true;
    for (const std::string& blocked : SeriesFilesInOrder()) {
        CAPTURE(blocked);
        const RunFolder folder;
        folder.MakeFolder("out");
        folder.Put(blocked, kEarlier);
        folder.SetMode(blocked, 0444);
        const Ending ending = RunIn(folder.Path(), ordinaryUser);
        CHECK(FileBytes(folder.At(blocked)) == kEarlier);
        CheckWrittenUpTo(folder, blocked);
        folder.Remove(blocked);
        CheckFailure(ending, folder, MessageOfSeries(blocked), kCannotWrite);
    }
}

TEST_CASE("a result that may be overwritten is, also where its folder takes no new files") {
    if (!CanRunAsOrdinaryUser()) {
        return;
    }
    Surroundings ordinaryUser;
    ordinaryUser.isOrdinaryUser = true;
    const RunFolder folder;
    CheckSuccess(RunIn(folder.Path()), folder);
    std::vector<std::string> expected;
    for (const std::string& file : SeriesFilesInOrder()) {
        expected.push_back(FileBytes(folder.At(file)));
        folder.Put(file, kEarlier + std::string(1000, '.'));
        folder.SetMode(file, 0666);
    }
    folder.SetMode("out", 0555);
    CheckSuccess(RunIn(folder.Path(), ordinaryUser), folder);
    folder.SetMode("out", 0755);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        CAPTURE(SeriesFilesInOrder()[i]);
        CHECK(FileBytes(folder.At(SeriesFilesInOrder()[i])) == expected[i]);
    }
}

TEST_CASE("a directory in the place of a result ends the run there, and the results before it stay") {
    for (const std::string& blocked : SeriesFilesInOrder()) {
        CAPTURE(blocked);
        const RunFolder folder;
        folder.MakeFolder(blocked);
        const Ending ending = RunIn(folder.Path());
        CheckWrittenUpTo(folder, blocked);
        CHECK(fs::is_empty(folder.At(blocked)));
        CheckFailure(ending, folder, MessageOfSeries(blocked), kCannotWrite);
    }
}

TEST_CASE("a full device in the place of a result ends the run there, and the results before it stay") {
    if (!HasFullDevice()) {
        return;
    }
    for (const std::string& blocked : SeriesFilesInOrder()) {
        CAPTURE(blocked);
        const RunFolder folder;
        folder.MakeFolder("out");
        folder.Link(blocked, "/dev/full");
        const Ending ending = RunIn(folder.Path());
        CheckWrittenUpTo(folder, blocked);
        CHECK(fs::is_symlink(folder.At(blocked)));
        CheckFailure(ending, folder, MessageOfSeries(blocked), kCannotWrite);
    }
}

TEST_CASE("a link in the place of a result leads to where the result is written, be it there or not") {
    const RunFolder folder;
    CheckSuccess(RunIn(folder.Path()), folder);
    for (const bool hasEarlier : {false, true}) {
        for (const std::string& linked : SeriesFilesInOrder()) {
            CAPTURE(linked);
            CAPTURE(hasEarlier);
            const std::string expected = FileBytes(folder.At(linked));
            folder.MakeFolder("elsewhere");
            if (hasEarlier) {
                folder.Put("elsewhere/result", kEarlier);
            }
            folder.Link(linked, "../elsewhere/result");
            CheckSuccess(RunIn(folder.Path()), folder);
            CHECK(fs::is_symlink(folder.At(linked)));
            CHECK(FileBytes(folder.At("elsewhere/result")) == expected);
            folder.Remove(linked);
            folder.Remove("elsewhere");
            folder.Put(linked, expected);
        }
    }
}

TEST_CASE("closed standard streams change no result") {
    const RunFolder folder;
    CheckSuccess(RunIn(folder.Path()), folder);
    std::vector<std::string> expected;
    for (const std::string& file : SeriesFilesInOrder()) {
        expected.push_back(FileBytes(folder.At(file)));
    }
    folder.Remove("out");
    Surroundings closed;
    closed.hasStreams = false;
    CHECK(RunIn(folder.Path(), closed).status == "0");
    for (std::size_t i = 0; i < expected.size(); ++i) {
        CAPTURE(SeriesFilesInOrder()[i]);
        CHECK(FileBytes(folder.At(SeriesFilesInOrder()[i])) == expected[i]);
    }
}
