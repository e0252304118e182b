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

/// Line 1 of a text grid, columns before rows: exactly two tokens. Kept on purpose: a line end after a trailing blank
/// is a third. Test: "a text grid with a malformed header is refused with the block of code 2".
bool ReadSizeLine(const char* line, GridFile& grid) {
    const std::vector<std::string> tokens = Tokens(line, kDataDelimiters);
    if (tokens.size() != 2) {
        return false;
    }
    grid.shape.nx = LenientInt(tokens[0].c_str());
    grid.shape.ny = LenientInt(tokens[1].c_str());
    return true;
}

/// Line 2, x before y, unlike in a fault file: the first and the last column and row. Two co-ordinates alone would
/// leave the end undefined: at least four tokens. A fifth is ignored, as it may be the line end. Test: "a fifth token
/// of the second line is ignored and so is the line end behind a blank".
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

/// kDataDelimiters, compared in place: a grid has millions of tokens.
bool IsDelimiter(char character) noexcept {
    return character == ' ' || character == '\t';
}

/// Every token is a value. Kept on purpose: a token that is only the line end is the value 0, so that a blank line or a
/// trailing blank is one value more. Test: "a blank line that completes the count is a value of 0".
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
/// two characters, the last one perhaps a single one. A pipe has no size: there the room grows with the values.
void ReserveValues(std::FILE* file, GridFile& grid) {
    const std::optional<std::uint64_t> size = RegularFileSize(file);
    if (size && IsGridSize(grid.shape.nx, grid.shape.ny)) {
        const auto promised = static_cast<std::uint64_t>(std::int64_t{grid.shape.nx} * grid.shape.ny);
        grid.values.reserve(static_cast<std::size_t>(std::min(promised, *size / 2 + 1)));
    }
}

/// Spacing along one axis, in double precision and then rounded. One column (or row) divides by zero, on purpose: the
/// result is not a number or infinite, which the comparison of the axes refuses as a rule.
/// Tests: "the spacing is formed in double and rounded to single precision before it is compared",
/// "a grid of a single value with an end beyond its origin has an infinite spacing".
float Spacing(double first, double last, std::int32_t count) noexcept {
    return static_cast<float>((last - first) / (static_cast<double>(count) - 1.0));
}

/// Reads the counted lines of the file into `grid`: size, extent, values. False at a malformed size or extent.
/// hasExtent says whether both were there.
bool ReadLines(std::FILE* file, GridFile& grid, bool& hasExtent) {
    enum class Expected { Size, Extent, Values } expected = Expected::Size;
    BoundedLineReader lines(file, kGridLineBuffer);
    while (lines.Next()) {
        if (lines.IsComment()) {
            continue;
        }
        switch (expected) {
            case Expected::Size:
                if (!ReadSizeLine(lines.Line(), grid)) {
                    return false;
                }
                expected = Expected::Extent;
                break;
            case Expected::Extent:
                if (!ReadExtentLine(lines.Line(), grid)) {
                    return false;
                }
                ReserveValues(file, grid);
                expected = Expected::Values;
                break;
            case Expected::Values:
                AppendValues(lines.Line(), grid.values);
                break;
        }
    }
    hasExtent = expected == Expected::Values;
    return true;
}

/// The checks of a file that was read, in the order that decides which of two errors is reported.
GridError CheckedGrid(GridFile& grid) {
    if (grid.shape.nx < 1 || grid.shape.ny < 1 || grid.values.empty()) {
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

}  // namespace

GridError ReadTextGrid(const std::string& path, GridFile& grid) {
    const FileHandle file = OpenForReading(path, "r");
    if (!file) {
        return GridError::CannotOpen;
    }
    constexpr std::size_t kReadAtOnce = std::size_t{1} << 16U;  // 64 KiB: a sixteenth of the calls of the usual 4 KiB
    std::setvbuf(file.get(), nullptr, _IOFBF, kReadAtOnce);
    bool hasExtent = false;
    if (!ReadLines(file.get(), grid, hasExtent)) {
        return GridError::BadHeader;
    }
    // A file that ends within its header has no values: a wrong count, not a malformed header.
    return hasExtent ? CheckedGrid(grid) : GridError::BadCount;
}

}  // namespace tidora
