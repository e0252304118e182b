#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "grid/GridFile.h"
#include "grid/GridShape.h"
#include "region/Region.h"
#include "region/RegionWriting.h"
#include "support/ErrorBlock.h"
#include "support/ReplacingFile.h"

namespace tidora {
namespace {

void PrintBinShape(const Region& region) {
    std::cout << ">>>>>>>>>>>>>>>>>> Write File:" << region.outFileName << std::endl;
    std::cout << "     FILE_NUM:1/1" << std::endl;
    std::cout << "    BIN_X_NUM:" << region.nx << std::endl;
    std::cout << "    BIN_Y_NUM:" << region.ny << std::endl;
}

/// Only a topography region writes its values; the file of any other ends with its header, on purpose.
WriteError WriteBinGrid(const Region& region) {
    const bool withValues = region.type == RTYPE_TOPOGRAPHY && IsGridSize(region.nx, region.ny);
    if (withValues && region.val == nullptr) {
        return WriteError::NoValues;
    }
    ReplacingFile file(region.outFileName);
    if (!file.IsOpen()) {
        return WriteError::CannotWrite;
    }
    PrintBinShape(region);
    const bool isWritten = WriteGridHeader(file.Stream(), ShapeOf(region)) &&
                           (!withValues || WriteGridValues(file.Stream(), ShapeOf(region), region.val)) &&
                           file.Commit();
    return isWritten ? WriteError::None : WriteError::CannotWrite;
}

/// Value of a text grid at one position; `snapshot` is null where none is asked for.
double TextValue(const Region& region, const InstantVal2d* snapshot, std::size_t at) {
    const float value = region.val != nullptr ? region.val[at] : 0.0F;
    if (region.type == RTYPE_TOPOGRAPHY) {
        return static_cast<double>(-value);
    }
    return static_cast<double>(snapshot != nullptr ? value + snapshot->val[at] : value);
}

bool WriteTextValues(std::FILE* file, const Region& region, const InstantVal2d* snapshot) {
    for (int iy = 0; iy < region.ny; ++iy) {
        for (int ix = 0; ix < region.nx; ++ix) {
            const auto at = static_cast<std::size_t>(std::ptrdiff_t{ix} * region.ny + iy);
            if (std::fprintf(file, "%d %d %lf\n", ix, iy, TextValue(region, snapshot, at)) < 0) {
                return false;
            }
        }
    }
    return true;
}

WriteError WriteTextGrid(const Region& region, const std::string& path, const InstantVal2d* snapshot) {
    const bool isTopography = region.type == RTYPE_TOPOGRAPHY;
    const bool withValues = isTopography || region.type == RTYPE_INITIAL_WAVE;
    const auto size = static_cast<std::uint64_t>(std::int64_t{region.nx} * region.ny);
    const bool hasSnapshot = snapshot != nullptr && snapshot->num == size;
    // The heights of a run are in its snapshots alone: their region has no values of its own.
    const bool isComplete = isTopography ? region.val != nullptr : region.val != nullptr || hasSnapshot;
    if (withValues && IsGridSize(region.nx, region.ny) && (!isComplete || (snapshot != nullptr && !hasSnapshot))) {
        return WriteError::NoValues;
    }
    ReplacingFile file(path);
    if (!file.IsOpen()) {
        return WriteError::CannotWrite;
    }
    std::cout << "    ASCII_X_NUM:" << region.nx << std::endl;
    std::cout << "    ASCII_Y_NUM:" << region.ny << std::endl;
    const bool isWritten = (!withValues || WriteTextValues(file.Stream(), region, snapshot)) && file.Commit();
    return isWritten ? WriteError::None : WriteError::CannotWrite;
}

WriteError WriteTextGrids(const Region& region, const std::string& dir, bool withSnapshots) {
    const bool adds = withSnapshots && region.type != RTYPE_TOPOGRAPHY && !region.instants.empty();
    const std::size_t count = withSnapshots && region.instants.size() > 1 ? region.instants.size() : 1;
    for (std::size_t k = 0; k < count; ++k) {
        const std::string path =
            Formatted("%s/%s%03d_%04d.txt", dir.c_str(), region.tag.c_str(), region.no, static_cast<int>(k));
        const WriteError error = WriteTextGrid(region, path, adds ? &region.instants[k] : nullptr);
        if (error != WriteError::None) {
            return error;
        }
    }
    return WriteError::None;
}

void ReportTextError(WriteError error, const Region& region) {
    const std::string action = "Abnormal action at Writing ASCII File Method.";
    const std::string attention = "Particular attention should be given to ";
    if (error == WriteError::CannotWrite) {
        // Kept on purpose: the name shown is the region's input grid, not the path that failed.
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {action, "Can not open file.", attention + "\"Region ASCII File\".",
                     "Region ASCII File > " + region.inFileName});
    } else {
        ReportError(std::cerr, "REGION OBJECT METHOD", {action, attention + "\" \"."});
    }
}

/// The entry of a region in the calculation-parameter text.
std::string CalParamEntry(const Region& region) {
    switch (region.type) {
        case RTYPE_TOPOGRAPHY:
            return "# Region No.\n" + std::to_string(region.no) + "\n# Region Name\n" + region.name +
                   "\n# Topography File Name\n" + region.outFileName + "\n";
        case RTYPE_INITIAL_WAVE:
            return "# Initial Wave Height File List\n" + region.outFileName + "\n";
        case RTYPE_VERTICAL:
            return "# Vertical Deformation File List\n" + region.outFileName + "\n";
        case RTYPE_HORIZONTAL:
            break;
    }
    return {};
}

}  // namespace

int Region::WriteBIN(const std::string& dir) {
    outFileName = Formatted("%s/%s%03d.bin", dir.c_str(), tag.c_str(), no);
    const WriteError error = WriteBinGrid(*this);
    if (error != WriteError::None) {
        ReportBinError(error, *this);
        return 0;
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed." << std::endl;
    return 1;
}

// NOLINTNEXTLINE(readability-make-member-function-const): a writer like the others, whose results may be ignored.
int Region::WriteASCII(const std::string& dir, bool withSnapshots) {
    const WriteError error = WriteTextGrids(*this, dir, withSnapshots);
    if (error != WriteError::None) {
        ReportTextError(error, *this);
        return 0;
    }
    return 1;
}

int Region::WriteCalParam(std::FILE* stream) const {
    const std::string entry = CalParamEntry(*this);
    if (std::fwrite(entry.data(), 1, entry.size(), stream) != entry.size()) {
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {"Abnormal action at ******** Method.", "Particular attention should be given to \" \"."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
