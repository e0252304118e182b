#include <cstddef>
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

/// A static grid is one file of one; the number of files is part of the text.
void PrintBinShape(const Region& region) {
    std::cout << ">>>>>>>>>>>>>>>>>> Write File:" << region.outFileName << std::endl;
    std::cout << "     FILE_NUM:1/1" << std::endl;
    std::cout << "    BIN_X_NUM:" << region.nx << std::endl;
    std::cout << "    BIN_Y_NUM:" << region.ny << std::endl;
}

/// Only a topography region writes its values; the file of any other ends with its header, on purpose.
/// Test: "the binary grid of every other kind is its header alone".
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

/// Value of a text grid at one position, m; `snapshot` is null where none is asked for. A topography comes out as
/// depth, positive below sea level. The sum is in single precision, as the grids are. Test: "the text grid of a
/// topography region turns the sign".
double TextValue(const Region& region, const InstantVal2d* snapshot, std::size_t at) {
    const float value = region.val != nullptr ? region.val[at] : 0.0F;
    if (region.type == RTYPE_TOPOGRAPHY) {
        return static_cast<double>(-value);
    }
    return static_cast<double>(snapshot != nullptr ? value + snapshot->val[at] : value);
}

/// Row by row from the south, as in the binary grids: against the order of the memory.
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

/// One file. A computed kind other than the wave gives an empty one, on purpose: its results are written as a series.
/// Test: "the text grids of the deformation kinds are empty".
WriteError WriteTextGrid(const Region& region, const std::string& path, const InstantVal2d* snapshot) {
    const bool isTopography = region.type == RTYPE_TOPOGRAPHY;
    const bool withValues = isTopography || region.type == RTYPE_INITIAL_WAVE;
    const bool hasSnapshot = snapshot != nullptr && snapshot->num == ValueCount(region);
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

/// A topography has no snapshots to add, but as many files as it has. Snapshots that are asked for and not there give
/// the one file without. Tests: "three snapshots give three text grids, each with the values added", "snapshots that
/// are asked for and not there change nothing".
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

/// The entry of a region in the calculation-parameter text: headings and values in turns. Slope terms have none.
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
    // Before the file is opened: after a failure it names the path that failed.
    outFileName = Formatted("%s/%s%03d.bin", dir.c_str(), tag.c_str(), no);
    const WriteError error = WriteBinGrid(*this);
    if (error != WriteError::None) {
        ReportWriteError(error, *this, "BIN");
        return 0;
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed." << std::endl;
    return 1;
}

// NOLINTNEXTLINE(readability-make-member-function-const): a writer like the others, whose results may be ignored.
int Region::WriteASCII(const std::string& dir, bool withSnapshots) {
    const WriteError error = WriteTextGrids(*this, dir, withSnapshots);
    if (error != WriteError::None) {
        ReportWriteError(error, *this, "ASCII");
        return 0;
    }
    return 1;
}

int Region::WriteCalParam(std::FILE* stream) const {
    const std::string entry = CalParamEntry(*this);
    if (std::fwrite(entry.data(), 1, entry.size(), stream) != entry.size()) {
        // The asterisks are the text, and stand for nothing.
        ReportError(std::cerr, "REGION OBJECT METHOD",
                    {"Abnormal action at ******** Method.", "Particular attention should be given to \" \"."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
