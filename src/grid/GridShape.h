#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace tidora {

/// nx * ny in 32-bit two's complement arithmetic, wrapped: the product that Region::Set2dStruct() keeps. 50 000 times
/// 50 000 gives -1 794 967 296. By way of unsigned numbers, because a signed overflow is undefined.
[[nodiscard]] constexpr std::int32_t WrappedGridSize(int nx, int ny) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nx) * static_cast<std::uint32_t>(ny));
}

/// True when a grid of nx columns and ny rows exists: both at least 1, and nx * ny within 32 bits, because callers
/// count the points of a grid in an int. 2^31 - 1 values are 8 GiB.
[[nodiscard]] constexpr bool IsGridSize(int nx, int ny) noexcept {
    return nx >= 1 && ny >= 1 && std::int64_t{nx} * ny <= std::numeric_limits<std::int32_t>::max();
}

/// Where a grid lies and how its values are stored. A plain value: copy it. It may hold any numbers, as a file may;
/// IsGridSize() says whether there is such a grid.
///
/// Columns run eastward, rows northward. The value of column ix, row iy stands at index ix * ny + iy, so that a column
/// is one stretch of memory; binary and text files hold the rows instead, index iy * nx + ix.
struct GridShape {
    int nx = 0;         ///< columns
    int ny = 0;         ///< rows
    double orgX = 0.0;  ///< first column: metres or degrees
    double orgY = 0.0;  ///< first row
    float dx = 0.0F;    ///< spacing of both axes; single on purpose: matches the file format

    /// Number of values; 0 for a grid without columns or rows.
    [[nodiscard]] constexpr std::size_t Size() const noexcept {
        return nx > 0 && ny > 0 ? static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) : 0;
    }
    /// Widened before the product. Requires: 0 <= ix < nx and 0 <= iy < ny.
    [[nodiscard]] constexpr std::size_t Index(int ix, int iy) const noexcept {
        return static_cast<std::size_t>(ix) * static_cast<std::size_t>(ny) + static_cast<std::size_t>(iy);
    }
    /// Index times spacing is formed in single precision on purpose, and widened before the sum: so the positions of a
    /// grid are defined, and 0.1 times 3 is not 0.3 in either precision.
    [[nodiscard]] double X(int ix) const noexcept { return orgX + static_cast<double>(static_cast<float>(ix) * dx); }
    /// As X(), for a row.
    [[nodiscard]] double Y(int iy) const noexcept { return orgY + static_cast<double>(static_cast<float>(iy) * dx); }
};

}  // namespace tidora
