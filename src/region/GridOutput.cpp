#include "region/GridOutput.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <vector>

#include "grid/GridHeader.h"
#include "support/ErrorBlock.h"

namespace tidora {

bool WriteGridHeader(std::FILE* file, const Region& region) {
    const GridHeaderBytes header = PackGridHeader({region.org_x, region.org_y, region.nx, region.ny, region.dx});
    return std::fwrite(header.data(), 1, header.size(), file) == header.size();
}

bool WriteGridValues(std::FILE* file, const Region& region, const float* values) {
    constexpr std::size_t kBandRows =
        64;  // few large writes, each of rows that were moved through the cache in squares
    constexpr std::size_t kSquare = 32;
    const auto nx = static_cast<std::size_t>(region.nx);
    const auto ny = static_cast<std::size_t>(region.ny);
    std::vector<float> band(nx * std::min(kBandRows, ny));
    for (std::size_t firstRow = 0; firstRow < ny; firstRow += kBandRows) {
        const std::size_t rows = std::min(kBandRows, ny - firstRow);
        for (std::size_t first = 0; first < nx; first += kSquare) {
            const std::size_t end = std::min(nx, first + kSquare);
            for (std::size_t row = 0; row < rows; ++row) {
                for (std::size_t ix = first; ix < end; ++ix) {
                    band[row * nx + ix] = values[ix * ny + firstRow + row];
                }
            }
        }
        if (std::fwrite(band.data(), sizeof(float), nx * rows, file) != nx * rows) {
            return false;
        }
    }
    return true;
}

void ReportBinError(WriteError error, const Region& region) {
    const std::string action = "Abnormal action at Writing BIN File Method.";
    const std::string attention = "Particular attention should be given to ";
    if (error == WriteError::CannotWrite) {
        // Kept on purpose: the name shown is the region's input grid, not the path that failed.
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {action, "Can not open file.", attention + "\"Region BIN File\".",
                     "Region BIN File > " + region.inFileName});
    } else {
        ReportError(std::cerr, "REGION OBJECT METHOD", {action, attention + "\" \"."});
    }
}

}  // namespace tidora
