#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "grid/GridShape.h"

namespace tidora {

/// Why a grid file was refused; the values are the reader's codes. The reader prints nothing: Region::ReadFile() knows
/// the texts.
enum class GridError {
    None = 0,
    CannotOpen = 1,     ///< the file cannot be opened
    BadHeader = 2,      ///< text: line 1 without exactly two tokens, or line 2 with fewer than four
    BadCount = 3,       ///< there is no grid of that size, or the number of values is not nx * ny
    UnequalSpacing = 4  ///< text: the spacings differ in single precision, or one is not a number
};

/// A grid file as read, and after a failure as far as it was read. Owns its values.
struct GridFile {
    GridShape shape;
    // Text grids only; a binary header does not carry them, and a reader of one leaves them as they are.
    double endX = 0.0;          ///< last column: metres or degrees
    double endY = 0.0;          ///< last row
    float dy = 0.0F;            ///< spacing of the rows, which has to equal shape.dx
    std::vector<float> values;  ///< in file order, index iy * nx + ix
};

/// Size of the buffer through which the lines of a text grid are read, fixed by the format: 8190 characters and a NUL.
/// A longer line is several, and a number that the cut goes through is two. Test: "a number across the 8190th character
/// is read as two".
inline constexpr std::size_t kGridLineBuffer = 8191;

/// True when `path` names a binary grid: ".bin" anywhere in it but at its very start, directories included.
///
/// Kept on purpose: "topo.bin.old" is binary and ".bin" is text.
/// Test: "a name holds a binary grid when .bin stands in it behind the first character".
[[nodiscard]] bool IsBinaryGridName(const std::string& path);

/// Reads a text grid: nx and ny; org_x, org_y, end_x, end_y; then the values, row by row from the south, x fastest,
/// rounded to single precision. What was read before an error is in `grid`. A size below 1 and a file without values
/// come before the spacings, which come before a number of values that does not fit. Memory is asked for as the file
/// can fill it, whatever its first line promises.
[[nodiscard]] GridError ReadTextGrid(const std::string& path, GridFile& grid);

/// Reads a binary grid (little-endian, packed): double org_x, org_y; int32 nx, ny; float dx; nx * ny floats in the same
/// order. A file shorter than its header, or than what that promises, is refused before its values are allocated.
[[nodiscard]] GridError ReadBinaryGrid(const std::string& path, GridFile& grid);

/// Writes the 28-byte header of a binary grid. False when the stream takes less.
[[nodiscard]] bool WriteGridHeader(std::FILE* file, const GridShape& shape);

/// Writes the values of a grid, given in grid order (ix * ny + iy), in file order: row by row from the south, x
/// fastest.
[[nodiscard]] bool WriteGridValues(std::FILE* file, const GridShape& shape, const float* values);

}  // namespace tidora
