#include <cstddef>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "grid/GridFile.h"
#include "grid/GridShape.h"
#include "grid/Transpose.h"
#include "region/Region.h"
#include "support/ErrorBlock.h"

namespace tidora {
namespace {

// The published size and that of the room that reads the lines.
static_assert(Region::FILE_MAX_PATH == kGridLineBuffer);

/// As a stream prints a double unless told otherwise: up to six significant digits. std::to_string gives six decimals.
std::string InDefaultNotation(float value) {
    std::ostringstream text;
    text << static_cast<double>(value);
    return text.str();
}

/// Largest and smallest value, each scanned from the first value on. A value takes over unless it compares at most (at
/// least) equal, so a NaN takes over and is taken over by what follows it.
/// Test: "largest and smallest value are scanned from the first value on and NaN is not skipped".
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

/// From file order, iy * nx + ix, to grid order, ix * ny + iy. Naked new: the result becomes the published array, which
/// is released with array delete.
float* TransposedCopy(const GridFile& grid) {
    const auto nx = static_cast<std::size_t>(grid.shape.nx);
    const auto ny = static_cast<std::size_t>(grid.shape.ny);
    float* const val = new float[grid.values.size()];
    Transpose(grid.values.data(), ny, nx, nx, val);
    return val;
}

/// Six decimals where std::to_string prints, on purpose: co-ordinates in degrees need them.
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

/// The texts are fixed to the blank: "Region File > " has one blank before the sign, or two.
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
            // Test: "the count that the block of a wrong grid shows is 0 whatever was read".
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

/// The line about the binary file comes before the file is opened, so that it is there when that fails.
/// Test: "a binary grid that cannot be opened gives the block of code 1 after its own line".
GridError ReadGrid(Region& region, GridFile& grid) {
    if (IsBinaryGridName(region.inFileName)) {
        std::cout << ">>>> Read Binary File" << std::endl;
        return ReadBinaryGrid(region.inFileName, grid);
    }
    region.noBinaryInput = true;
    return ReadTextGrid(region.inFileName, grid);
}

/// Also after an error, as far as the file was read: the block shows sizes and spacings by the region.
/// Test: "what was read before a text grid was refused stays in the region".
void TakeGeometry(const GridFile& grid, Region& region) noexcept {
    region.nx = grid.shape.nx;
    region.ny = grid.shape.ny;
    region.org_x = grid.shape.orgX;
    region.org_y = grid.shape.orgY;
    region.end_x = grid.endX;
    region.end_y = grid.endY;
    region.dx = grid.shape.dx;
    region.dy = grid.dy;
}

/// The number of values and their extremes are known before their number is compared with the size: a text grid of the
/// wrong count has them, one that was refused earlier or is binary keeps its old ones.
/// Test: "a text grid without values leaves a region that counts none, whatever it counted before".
void TakeMeasures(const GridFile& grid, Region& region) noexcept {
    region.dataNum = static_cast<std::int64_t>(grid.values.size());
    if (!grid.values.empty()) {
        SetExtremes(grid.values, region);
    }
}

}  // namespace

int Region::ReadFile() {
    std::cout << "\n>>>>>>>>>>>>>>>>>> Region Input:" << inFileName << std::endl;

    GridFile grid = {ShapeOf(*this), end_x, end_y, dy, {}};  // a file keeps the fields that it does not carry
    const GridError error = ReadGrid(*this, grid);
    TakeGeometry(grid, *this);
    const bool isTextOfWrongCount = error == GridError::BadCount && !IsBinaryGridName(inFileName);
    if (error == GridError::None || isTextOfWrongCount) {
        TakeMeasures(grid, *this);
    }
    if (error != GridError::None) {
        ReportReadError(error, *this);
        return 0;
    }
    // Last: a region whose file was refused keeps the grid that it had.
    // Test: "a grid that a region already holds survives a read that fails".
    delete[] std::exchange(val, TransposedCopy(grid));
    PrintSummary(*this);
    return 1;
}

}  // namespace tidora
