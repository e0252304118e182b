#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tidora {

/// Why a grid file was refused; the values are the reader's codes.
enum class GridError {
    None = 0,
    CannotOpen = 1,     ///< the file cannot be opened
    BadHeader = 2,      ///< text: line 1 without exactly two tokens, or line 2 with fewer than four
    BadCount = 3,       ///< the number of values is not nx * ny, or there is no such grid
    UnequalSpacing = 4  ///< text: the spacings differ in single precision, or one is not a number
};

/// A grid file as read: geometry, and the values in file order, index iy * nx + ix.
struct GridFile {
    std::int32_t nx = 0;
    std::int32_t ny = 0;
    double orgX = 0.0;  ///< first column: metres or degrees
    double orgY = 0.0;  ///< first row
    float dx = 0.0F;    ///< single on purpose: matches the file format
    // Text grids only; a binary header does not carry them.
    double endX = 0.0;  ///< last column
    double endY = 0.0;  ///< last row
    float dy = 0.0F;
    std::vector<float> values;
};

/// Size of the buffer through which the lines of a text grid are read; a longer line is several.
inline constexpr std::size_t kGridLineBuffer = 8191;

/// True when `path` names a binary grid: ".bin" anywhere in it but at its very start, directories included.
[[nodiscard]] bool IsBinaryGridName(const std::string& path);

/// Reads a text grid: nx and ny; org_x, org_y, end_x, end_y; then the values, row by row from the south, x fastest.
/// What was read before an error is in `grid`.
[[nodiscard]] GridError ReadTextGrid(const std::string& path, GridFile& grid);

/// Reads a binary grid (little-endian, packed): double org_x, org_y; int32 nx, ny; float dx; nx * ny floats in the same
/// order. A file shorter than its header, or than what that promises, is refused before its values are allocated.
[[nodiscard]] GridError ReadBinaryGrid(const std::string& path, GridFile& grid);

}  // namespace tidora
