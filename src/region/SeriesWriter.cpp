#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "fault/DynamicParam.h"
#include "grid/GridFile.h"
#include "region/Region.h"
#include "region/RegionWriting.h"
#include "support/ReplacingFile.h"

namespace tidora {
namespace {

/// Whole seconds for the name of a file, truncated toward zero: -0.5 gives 0. What no int holds, a NaN included,
/// becomes the smallest one, which is what x86-64 makes of it; in C++ it is undefined. Intervals within one second
/// share a name. Test: "intervals that start within the same whole second share a file and the list names it twice".
int WholeSeconds(double seconds) noexcept {
    constexpr double kFirstTooLarge = 2147483648.0;  // 2^31
    // Down to -2^31 - 1, that excluded: the fraction goes before the limit counts.
    const bool fits = seconds > -kFirstTooLarge - 1.0 && seconds < kFirstTooLarge;
    return fits ? static_cast<int>(seconds) : std::numeric_limits<int>::min();
}

/// The values of every kind of region, unlike in WriteBIN(). False unless the file stands under its name, complete.
bool WriteSnapshot(const std::string& path, const Region& region, const InstantVal2d& snapshot) {
    ReplacingFile file(path);
    return file.IsOpen() && WriteGridHeader(file.Stream(), ShapeOf(region)) &&
           WriteGridValues(file.Stream(), ShapeOf(region), snapshot.val) && file.Commit();
}

/// One line per snapshot: start and length of its interval in seconds, each in a field of 16 that a longer number
/// bursts, and its path as it was opened. No heading: a script reads it line by line.
bool WriteList(const std::string& path, const std::vector<std::string>& snapshots, const DynamicParam& dp) {
    ReplacingFile file(path);
    if (!file.IsOpen()) {
        return false;
    }
    for (std::size_t k = 0; k < snapshots.size(); ++k) {
        const std::string line =
            Formatted("%-16f%-16f%s\n", dp.params[k].validTime, dp.params[k].riseTime, snapshots[k].c_str());
        if (line.empty() || std::fwrite(line.data(), 1, line.size(), file.Stream()) != line.size()) {
            return false;
        }
    }
    return file.Commit();
}

/// Further snapshots do no harm. Tests: "fewer snapshots than intervals are refused with the block of code 2",
/// "snapshots beyond the number of intervals are not written".
bool HasSnapshotPerInterval(const Region& region, const DynamicParam& dp) noexcept {
    const std::uint64_t size = ValueCount(region);
    const std::vector<InstantVal2d>& instants = region.instants;
    return instants.size() >= dp.params.size() &&
           std::all_of(instants.begin(), instants.begin() + static_cast<std::ptrdiff_t>(dp.params.size()),
                       [size](const InstantVal2d& snapshot) { return snapshot.num == size; });
}

/// The list comes last: where it stands, all grids that it names stand. `outFileName` is set before each attempt, so
/// that after a failure it names the file that failed.
WriteError WriteSeries(Region& region, const std::string& dir, const DynamicParam& dp) {
    if (!HasSnapshotPerInterval(region, dp)) {
        return WriteError::NoValues;
    }
    std::vector<std::string> written;
    for (std::size_t k = 0; k < dp.params.size(); ++k) {
        const std::string path = Formatted("%s/%s_%s_%04ds.bin", dir.c_str(), region.tag.c_str(), region.name.c_str(),
                                           WholeSeconds(dp.params[k].validTime));
        if (path.empty()) {
            return WriteError::CannotWrite;
        }
        std::cout << ">>>>>>>>>>>>>>>>>> Write File : " << path << std::endl;
        region.outFileName = path;
        written.push_back(path);
        if (!WriteSnapshot(path, region, region.instants[k])) {
            return WriteError::CannotWrite;
        }
    }
    const std::string listPath = Formatted("%s/%s_%s.txt", dir.c_str(), region.tag.c_str(), region.name.c_str());
    if (listPath.empty()) {
        return WriteError::CannotWrite;
    }
    region.outFileName = listPath;
    return WriteList(listPath, written, dp) ? WriteError::None : WriteError::CannotWrite;
}

}  // namespace

int Region::WriteBINDynamic(const std::string& dir, const DynamicParam& dp) {
    std::cout << std::endl;
    const WriteError error = WriteSeries(*this, dir, dp);
    if (error != WriteError::None) {
        ReportWriteError(error, *this, "BIN");
        return 0;
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed. (" << tag << ")" << std::endl;
    return 1;
}

}  // namespace tidora
