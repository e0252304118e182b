#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "region/Region.h"

/// What reading a grid file leaves behind. Releases the grid of `region` at the end of its scope.
struct GridReading {
    explicit GridReading(const std::string& path);
    ~GridReading();
    GridReading(const GridReading&) = delete;
    GridReading& operator=(const GridReading&) = delete;

    /// The value at column ix, row iy, by the layout's definition. Requires: the read succeeded.
    [[nodiscard]] float At(int ix, int iy) const { return region.val[ix * region.ny + iy]; }

    tidora::Region region;  ///< a topography region
    int result = -1;
    std::string out;  ///< standard output
    std::string err;  ///< standard error
};

/// Writes `bytes` to a file of that name and reads it as a grid.
[[nodiscard]] GridReading ReadGrid(std::string_view bytes, const std::string& name = "grid.txt");

/// The bytes of a binary grid file: the header fields, then the values as they are given.
[[nodiscard]] std::string BinaryGrid(double orgX, double orgY, std::int32_t nx, std::int32_t ny, float dx,
                                     const std::vector<float>& values);

/// The error blocks of the reader, by its codes.
[[nodiscard]] std::string CannotOpenBlock(const std::string& path);
[[nodiscard]] std::string BadHeaderBlock(const std::string& path);
[[nodiscard]] std::string BadCountBlock(const std::string& path, const std::string& nx, const std::string& ny);
[[nodiscard]] std::string UnequalSpacingBlock(const std::string& path, const std::string& dx, const std::string& dy);

/// First line of every read on standard output, with the empty line before it.
[[nodiscard]] std::string GridHeading(const std::string& path);
