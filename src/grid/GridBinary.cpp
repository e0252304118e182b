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

/// Values per read: the buffer grows with what the file delivers, not with what its header promises.
constexpr std::size_t kChunk = std::size_t{1} << 20U;

/// False when a regular file is too short for `count` values behind the header. Other files show it only when read.
bool CanHold(std::FILE* file, std::size_t count) {
    const std::optional<std::uint64_t> size = RegularFileSize(file);
    return !size || *size >= kGridHeaderSize + count * sizeof(float);
}

bool ReadHeader(std::FILE* file, GridFile& grid) {
    GridHeaderBytes bytes{};
    if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        return false;
    }
    grid.shape = UnpackGridHeader(bytes);
    return true;
}

bool ReadValues(std::FILE* file, std::size_t count, std::vector<float>& values) {
    if (RegularFileSize(file)) {
        values.reserve(count);  // the file is long enough
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
    constexpr std::size_t kBandRows = 64;  // few large writes: 64 rows of a column are four lines of the cache
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
