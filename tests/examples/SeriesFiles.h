#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// One grid of a series as its file holds it: rows of nx values, the south one first.
struct SeriesGrid {
    double orgX = 0.0, orgY = 0.0;
    int nx = 0, ny = 0;
    float dx = 0.0F;
    std::vector<float> values;  ///< index iy * nx + ix

    [[nodiscard]] std::size_t Index(int ix, int iy) const noexcept {
        return static_cast<std::size_t>(iy) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(ix);
    }
};

/// Decodes a file byte by byte: doubles at 0 and 8, integers at 16 and 20, single at 24, singles from 28 on. Throws
/// when the file has another size than its header promises.
[[nodiscard]] SeriesGrid ReadSeriesGrid(const std::string& path);

/// Sum of a series, in double precision.
struct SummedGrid {
    double orgX = 0.0, orgY = 0.0;
    int nx = 0, ny = 0;
    double dx = 0.0;
    std::vector<double> values;  ///< index iy * nx + ix

    [[nodiscard]] double At(int ix, int iy) const {
        return values.at(static_cast<std::size_t>(iy) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(ix));
    }
};

/// Whole seconds at which the intervals of a series start, in the order of its list.
using StartTimes = std::vector<int>;

/// Path of the grid of `series`, "VRT_japan" for example, that starts at `seconds`, as a list names it: "out/...".
[[nodiscard]] std::string SeriesName(const std::string& outDir, const std::string& series, int seconds);

/// Sum of all grids of a series below `folder`.
[[nodiscard]] SummedGrid SumOfSeries(const std::string& folder, const std::string& series, const StartTimes& starts);

/// Text of the list of a series of intervals of equal length: time and length in fields of 16, then the path.
[[nodiscard]] std::string ListText(const std::string& outDir, const std::string& series, const StartTimes& starts,
                                   int length);

/// Names of the files that a run leaves for these series, sorted.
[[nodiscard]] std::vector<std::string> SeriesFileNames(const std::vector<std::string>& allSeries,
                                                       const StartTimes& starts);
