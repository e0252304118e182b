#pragma once

#include <string>
#include <vector>

#include "fault/DynamicParam.h"
#include "region/Region.h"

/// Start and length of a rupture interval, s.
struct Interval {
    double start = 0.0;
    double length = 0.0;
};

/// The intervals as the writer takes them.
[[nodiscard]] tidora::DynamicParam Series(const std::vector<Interval>& intervals);

/// A region "bay" of `nx` columns and `ny` rows at (100.5, -20), spacing 0.1, whose snapshot k holds
/// 1000 * k + 10 * ix + iy + 0.25 at column ix, row iy. No other grid array. Its input file is "input.txt".
[[nodiscard]] tidora::Region SeriesRegion(tidora::RType type, int nx, int ny, int snapshots);

/// The bytes that the file of snapshot k of such a region must hold.
[[nodiscard]] std::string SnapshotBytes(int nx, int ny, int k);

/// What writing leaves behind.
struct SeriesWriting {
    int result = -1;
    std::string out;  ///< standard output
    std::string err;  ///< standard error
};
[[nodiscard]] SeriesWriting WriteSeries(tidora::Region& region, const std::string& dir, const tidora::DynamicParam& dp);
