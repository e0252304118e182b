#include "robustness/Outcome.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "unit/ExpectedText.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

Lines LinesOf(const std::string& text) {
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool IsPart(const fs::path& path) {
    return path.extension() == ".part";
}

std::vector<fs::path> FilesIn(const std::string& folder) {
    std::vector<fs::path> files;
    std::error_code isNoFolder;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, isNoFolder)) {
        files.push_back(entry.path());
    }
    return files;
}

/// A grid has all the values that its own header promises.
void CheckGridIsWhole(const std::string& bytes) {
    constexpr std::size_t kHeader = 28;
    REQUIRE(bytes.size() > kHeader);
    std::int32_t size[2] = {};
    std::memcpy(size, bytes.data() + 16, sizeof size);
    CHECK(bytes.size() == kHeader + 4 * static_cast<std::size_t>(std::int64_t{size[0]} * size[1]));
}

/// A list ends with a whole line, and every file that it names is there: it is written last.
void CheckListIsWhole(const fs::path& runFolder, const std::string& bytes) {
    CHECK((bytes.empty() || bytes.back() == '\n'));
    for (const std::string& line : LinesOf(bytes)) {
        // The times before the name are padded to a width, and a time that is wider runs into it.
        const std::size_t name = line.find("out/");
        REQUIRE(name != std::string::npos);
        CHECK(fs::is_regular_file(runFolder / line.substr(name)));
    }
}

/// Standard error holds whole blocks and nothing else; the last one is the driver's, of one line.
std::string DriverMessage(const std::string& err) {
    const Lines lines = LinesOf(err);
    std::size_t frames = 0;
    std::size_t lastLength = 0;
    for (const std::string& line : lines) {
        const bool isFrame = line == kFrameLine;
        const bool isInside = frames % 2 == 1;
        const bool isText = StartsWith(line, "ERROR:") || StartsWith(line, "  ERROR-DETAIL:");
        CHECK_MESSAGE((isFrame || (isInside && isText)), line);
        lastLength = isFrame && !isInside ? 0 : lastLength + 1;
        frames += isFrame ? 1U : 0U;
    }
    CHECK(frames >= 2);
    CHECK(frames % 2 == 0);
    CHECK(lastLength == 2);  // the message and the closing frame
    return lines.size() < 3 ? "" : lines[lines.size() - 2];
}

}  // namespace

std::vector<std::string> SeriesFilesInOrder(const std::vector<int>& starts) {
    std::vector<std::string> files;
    for (const std::string tag : {"Tdr", "VRT", "HRZ"}) {
        for (const int start : starts) {
            const std::string digits = std::to_string(start);
            files.push_back("out/" + tag + "_bay_" + std::string(4 - digits.size(), '0') + digits + "s.bin");
        }
        files.push_back("out/" + tag + "_bay.txt");
    }
    return files;
}

void CheckResultsAreWhole(const std::string& outFolder) {
    for (const fs::path& path : FilesIn(outFolder)) {
        CAPTURE(path.string());
        if (IsPart(path) || !fs::is_regular_file(fs::symlink_status(path))) {
            continue;
        }
        const std::string bytes = FileBytes(path.string());
        if (path.extension() == ".bin") {
            CheckGridIsWhole(bytes);
        } else {
            CheckListIsWhole(fs::path(outFolder).parent_path(), bytes);
        }
    }
}

void CheckNoPartIsLeft(const std::string& outFolder) {
    const std::vector<fs::path> files = FilesIn(outFolder);
    CHECK(std::none_of(files.begin(), files.end(), IsPart));
}

void CheckCleanEnd(const Ending& ending, const RunFolder& folder) {
    CAPTURE(ending.err);
    CheckResultsAreWhole(folder.At("out"));
    CheckNoPartIsLeft(folder.At("out"));
    const bool saysDone = EndsWith(ending.out, "\nSuccessful Completion. ( Tidora Done. )\n");
    if (ending.status == "0") {
        CHECK(saysDone);
        CHECK(ending.err.empty());
        CHECK(FileExists(folder.At("out/Tdr_bay.txt")));
        CHECK(FileExists(folder.At("out/VRT_bay.txt")));
        return;
    }
    CHECK(ending.status == "1");
    CHECK_FALSE(saysDone);
    const std::string message = DriverMessage(ending.err);
    const std::string raised[] = {kParseError, kFaultError, kTopographyError, kDeformError, kMapFileError};
    CHECK_MESSAGE(std::find(std::begin(raised), std::end(raised), message) != std::end(raised), message);
}

void CheckSuccess(const Ending& ending, const RunFolder& folder) {
    CHECK(ending.status == "0");
    CheckCleanEnd(ending, folder);
}

void CheckFailure(const Ending& ending, const RunFolder& folder, const std::string& message,
                  const std::string& detail) {
    CHECK(ending.status == "1");
    CheckCleanEnd(ending, folder);
    const std::string driverBlock = std::string(kFrameLine) + "\n" + message + "\n" + std::string(kFrameLine) + "\n";
    CHECK(EndsWith(ending.err, driverBlock));
    CHECK(Contains(ending.err, detail));
}
