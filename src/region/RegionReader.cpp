#include <cstddef>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "grid/GridFile.h"
#include "grid/GridSize.h"
#include "grid/Transpose.h"
#include "region/Region.h"
#include "support/ErrorBlock.h"

namespace tidora {
namespace {

static_assert(Region::FILE_MAX_PATH == kGridLineBuffer);

std::string InDefaultNotation(float value) {
    std::ostringstream text;
    text << static_cast<double>(value);
    return text.str();
}

/// Largest and smallest value, each scanned from the first value on. A value takes over unless it compares at most (at
/// least) equal, so a NaN takes over and is taken over by what follows it.
void SetExtremes(const std::vector<float>& values, Region& region) noexcept {
    region.valMax = region.valMin = values.front();
    for (const float value : values) {
        if (!(value <= region.valMax)) {
            region.valMax = value;
        }
        if (!(value >= region.valMin)) {
            region.valMin = value;
        }
    }
}

/// From file order, iy * nx + ix, to grid order, ix * ny + iy.
float* TransposedCopy(const GridFile& grid) {
    float* const val = new float[grid.values.size()];
    Transpose(grid.values.data(), static_cast<std::size_t>(grid.ny), static_cast<std::size_t>(grid.nx), val);
    return val;
}

void PrintSummary(const Region& region) {
    std::cout << "nx     :" << region.nx << '\n'
              << "ny     :" << region.ny << '\n'
              << "org_x  :" << std::to_string(region.org_x) << '\n'
              << "org_y  :" << std::to_string(region.org_y) << '\n'
              << "dx     :" << std::to_string(static_cast<double>(region.dx)) << '\n'
              << "dataNum:" << region.dataNum << '\n'
              << "valMax :" << std::to_string(static_cast<double>(region.valMax)) << '\n'
              << "valMin :" << std::to_string(static_cast<double>(region.valMin)) << '\n'
              << "<<<<<<<<<<<<<<<<<< Completed." << std::endl;
}

std::vector<std::string> DetailsOf(GridError error, const Region& region) {
    const std::string format = "You should check the Format of Region File.";
    switch (error) {
        case GridError::CannotOpen:
            return {"Can not open file.", "Particular attention should be given to \"Region File\".",
                    "Region File > " + region.inFileName};
        case GridError::BadHeader:
            return {format, "Region File > " + region.inFileName};
        case GridError::BadCount:
            // Kept on purpose: the count printed here is 0 whatever was read.
            return {format, "Region File  > " + region.inFileName, "ALL DATA NUM > 0",
                    "          NX > " + std::to_string(region.nx), "          NY > " + std::to_string(region.ny)};
        case GridError::UnequalSpacing:
            return {format, "Region File  > " + region.inFileName, "          DX > " + InDefaultNotation(region.dx),
                    "          DY > " + InDefaultNotation(region.dy)};
        case GridError::None:
            break;
    }
    return {};
}

void ReportReadError(GridError error, const Region& region) {
    std::vector<std::string> details = DetailsOf(error, region);
    details.insert(details.begin(), "Abnormal action at Reading File Method.");
    ReportError(std::cerr, "REGION OBJECT METHOD", details);
}

GridError ReadGrid(Region& region, GridFile& grid) {
    if (IsBinaryGridName(region.inFileName)) {
        std::cout << ">>>> Read Binary File" << std::endl;
        return ReadBinaryGrid(region.inFileName, grid);
    }
    region.noBinaryInput = true;
    return ReadTextGrid(region.inFileName, grid);
}

}  // namespace

int Region::ReadFile() {
    std::cout << "\n>>>>>>>>>>>>>>>>>> Region Input:" << inFileName << std::endl;

    GridFile grid;  // starts from the fields that a file may not carry
    grid.nx = nx;
    grid.ny = ny;
    grid.orgX = org_x;
    grid.orgY = org_y;
    grid.endX = end_x;
    grid.endY = end_y;
    grid.dx = dx;
    grid.dy = dy;
    GridError error = ReadGrid(*this, grid);
    nx = grid.nx;
    ny = grid.ny;
    org_x = grid.orgX;
    org_y = grid.orgY;
    end_x = grid.endX;
    end_y = grid.endY;
    dx = grid.dx;
    dy = grid.dy;

    if (error == GridError::None) {
        dataNum = static_cast<std::int64_t>(grid.values.size());
        if (!grid.values.empty()) {
            SetExtremes(grid.values, *this);
        }
        if (!IsGridSize(nx, ny) || dataNum != std::int64_t{nx} * ny) {
            error = GridError::BadCount;
        }
    }
    if (error != GridError::None) {
        ReportReadError(error, *this);
        return 0;
    }
    float* const fresh = TransposedCopy(grid);
    delete[] std::exchange(val, fresh);
    PrintSummary(*this);
    return 1;
}

}  // namespace tidora
