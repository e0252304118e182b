#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "grid/GridFile.h"
#include "grid/GridShape.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

/// Line 1 of a text grid: exactly two tokens. A line end after a trailing blank is a third.
bool ReadSizeLine(const char* line, GridFile& grid) {
    const std::vector<std::string> tokens = Tokens(line, kDataDelimiters);
    if (tokens.size() != 2) {
        return false;
    }
    grid.shape.nx = LenientInt(tokens[0].c_str());
    grid.shape.ny = LenientInt(tokens[1].c_str());
    return true;
}

/// Line 2: the first and the last column and row.
bool ReadExtentLine(const char* line, GridFile& grid) {
    const std::vector<std::string> tokens = Tokens(line, kDataDelimiters);
    if (tokens.size() < 4) {
        return false;
    }
    grid.shape.orgX = LenientDouble(tokens[0].c_str());
    grid.shape.orgY = LenientDouble(tokens[1].c_str());
    grid.endX = LenientDouble(tokens[2].c_str());
    grid.endY = LenientDouble(tokens[3].c_str());
    return true;
}

bool IsDelimiter(char character) noexcept {
    return character == ' ' || character == '\t';
}

/// Every token is a value; a token that is only the line end is the value 0.
void AppendValues(const char* line, std::vector<float>& values) {
    const char* at = line;
    while (true) {
        while (IsDelimiter(*at)) {
            ++at;
        }
        if (*at == '\0') {
            return;
        }
        values.push_back(static_cast<float>(TakeDouble(at)));
    }
}

/// Makes room for the values that the header promises, as far as the file can hold them: a value and what ends it take
/// two characters.
void ReserveValues(std::FILE* file, GridFile& grid) {
    const std::optional<std::uint64_t> size = RegularFileSize(file);
    if (size && IsGridSize(grid.shape.nx, grid.shape.ny)) {
        const auto promised = static_cast<std::uint64_t>(std::int64_t{grid.shape.nx} * grid.shape.ny);
        grid.values.reserve(static_cast<std::size_t>(std::min(promised, *size / 2 + 1)));
    }
}

/// Spacing along one axis. One column (or row) divides by zero, on purpose: the result then fails the comparison.
float Spacing(double first, double last, std::int32_t count) noexcept {
    return static_cast<float>((last - first) / (static_cast<double>(count) - 1.0));
}

}  // namespace

GridError ReadTextGrid(const std::string& path, GridFile& grid) {
    const FileHandle file = OpenForReading(path, "r");
    if (!file) {
        return GridError::CannotOpen;
    }
    constexpr std::size_t kReadAtOnce = std::size_t{1} << 16U;
    std::setvbuf(file.get(), nullptr, _IOFBF, kReadAtOnce);
    BoundedLineReader lines(file.get(), kGridLineBuffer);
    int lineCount = 0;
    while (lines.Next()) {
        if (lines.IsComment()) {
            continue;
        }
        ++lineCount;
        if ((lineCount == 1 && !ReadSizeLine(lines.Line(), grid)) ||
            (lineCount == 2 && !ReadExtentLine(lines.Line(), grid))) {
            return GridError::BadHeader;
        }
        if (lineCount == 2) {
            ReserveValues(file.get(), grid);
        } else if (lineCount > 2) {
            AppendValues(lines.Line(), grid.values);
            lineCount = 3;
        }
    }
    if (lineCount < 2 || grid.shape.nx < 1 || grid.shape.ny < 1 || grid.values.empty()) {
        return GridError::BadCount;
    }
    grid.shape.dx = Spacing(grid.shape.orgX, grid.endX, grid.shape.nx);
    grid.dy = Spacing(grid.shape.orgY, grid.endY, grid.shape.ny);
    if (!(grid.shape.dx == grid.dy)) {  // also where one is not a number
        return GridError::UnequalSpacing;
    }
    const bool hasAllValues = IsGridSize(grid.shape.nx, grid.shape.ny) && grid.values.size() == grid.shape.Size();
    return hasAllValues ? GridError::None : GridError::BadCount;
}

}  // namespace tidora
