#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "grid/GridFile.h"
#include "grid/GridHeader.h"
#include "grid/Transpose.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

/// Values per read, 4 MiB: the buffer grows with what the file delivers, not with what its header promises. A header
/// that lies costs no more than that. Test: "a pipe that promises more than it delivers is refused".
constexpr std::size_t kChunk = std::size_t{1} << 20U;

/// False when a regular file is too short for `count` values after the header. Other files show it only when read.
/// A longer one is no error: what follows the values is ignored.
bool CanHold(std::FILE* file, std::size_t count) {
    const std::optional<std::uint64_t> size = RegularFileSize(file);
    return !size || *size >= kGridHeaderSize + count * sizeof(float);
}

/// All of the header or nothing of it: `grid` keeps what it had when the file is shorter.
bool ReadHeader(std::FILE* file, GridFile& grid) {
    GridHeaderBytes bytes{};
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        return false;
    }
    grid.shape = UnpackGridHeader(bytes);
    return true;
}

/// Requires: a regular file has passed CanHold(), else a lie of the header would be believed here.
bool ReadValues(std::FILE* file, std::size_t count, std::vector<float>& values) {
    if (RegularFileSize(file)) {
        values.reserve(count);  // once, instead of doubling
    }
    while (values.size() < count) {
        const std::size_t before = values.size();
        const std::size_t wanted = std::min(kChunk, count - before);
        values.resize(before + wanted);
        if (std::fread(&values[before], sizeof(float), wanted, file) != wanted) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool IsBinaryGridName(const std::string& path) {
    const std::size_t at = path.find(".bin");
    return at != std::string::npos && at != 0;
}

GridError ReadBinaryGrid(const std::string& path, GridFile& grid) {
    const FileHandle file = OpenForReading(path, "rb");
    if (!file) {
        return GridError::CannotOpen;
    }
    if (!ReadHeader(file.get(), grid) || !IsGridSize(grid.shape.nx, grid.shape.ny)) {
        return GridError::BadCount;
    }
    const std::size_t count = grid.shape.Size();
    if (!CanHold(file.get(), count) || !ReadValues(file.get(), count, grid.values)) {
        return GridError::BadCount;
    }
    return GridError::None;
}

bool WriteGridHeader(std::FILE* file, const GridShape& shape) {
    const GridHeaderBytes header = PackGridHeader(shape);
    return std::fwrite(header.data(), 1, header.size(), file) == header.size();
}

bool WriteGridValues(std::FILE* file, const GridShape& shape, const float* values) {
    // A band of rows at a time: the file has rows, the memory columns. 64 rows are 256 bytes of each column, four lines
    // of the cache that are read whole, and make few large writes; the band is a small part of a large grid.
    constexpr std::size_t kBandRows = 64;
    const auto nx = static_cast<std::size_t>(shape.nx);
    const auto ny = static_cast<std::size_t>(shape.ny);
    std::vector<float> band(nx * std::min(kBandRows, ny));
    for (std::size_t firstRow = 0; firstRow < ny; firstRow += kBandRows) {
        const std::size_t rows = std::min(kBandRows, ny - firstRow);
        Transpose(values + firstRow, nx, rows, ny, band.data());
        if (std::fwrite(band.data(), sizeof(float), nx * rows, file) != nx * rows) {
            return false;
        }
    }
    return true;
}

}  // namespace tidora
