#include "SeriesFiles.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "unit/ScratchFolder.h"

namespace {

template <typename T>
T Decode(const std::string& bytes, std::size_t offset) {
    if (offset + sizeof(T) > bytes.size()) {
        throw std::runtime_error("a series file ends early");
    }
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

/// "90" as "90.000000", filled with blanks to 16 characters.
std::string TimeField(int seconds) {
    std::string field = std::to_string(seconds) + ".000000";
    field.resize(16, ' ');
    return field;
}

}  // namespace

SeriesGrid ReadSeriesGrid(const std::string& path) {
    const std::string bytes = FileBytes(path);
    SeriesGrid grid;
    grid.orgX = Decode<double>(bytes, 0);
    grid.orgY = Decode<double>(bytes, 8);
    grid.nx = Decode<std::int32_t>(bytes, 16);
    grid.ny = Decode<std::int32_t>(bytes, 20);
    grid.dx = Decode<float>(bytes, 24);
    const std::int64_t count = std::int64_t{grid.nx} * grid.ny;
    if (grid.nx < 1 || grid.ny < 1 || static_cast<std::int64_t>(bytes.size()) != 28 + 4 * count) {
        throw std::runtime_error(path + " has not the size that its header promises");
    }
    grid.values.resize(static_cast<std::size_t>(count));
    std::memcpy(grid.values.data(), bytes.data() + 28, grid.values.size() * sizeof(float));
    return grid;
}

std::string SeriesName(const std::string& outDir, const std::string& series, int seconds) {
    const std::string digits = std::to_string(seconds);
    return outDir + "/" + series + "_" + std::string(4 - std::min<std::size_t>(4, digits.size()), '0') + digits +
           "s.bin";
}

SummedGrid SumOfSeries(const std::string& folder, const std::string& series, const StartTimes& starts) {
    SummedGrid sum;
    for (const int start : starts) {
        const SeriesGrid grid = ReadSeriesGrid(SeriesName(folder, series, start));
        if (sum.values.empty()) {
            sum = {grid.orgX, grid.orgY, grid.nx, grid.ny, static_cast<double>(grid.dx), {}};
            sum.values.assign(grid.values.size(), 0.0);
        }
        if (grid.values.size() != sum.values.size()) {
            throw std::runtime_error("the grids of " + series + " differ in size");
        }
        for (std::size_t at = 0; at < sum.values.size(); ++at) {
            sum.values[at] += static_cast<double>(grid.values[at]);
        }
    }
    return sum;
}

std::string ListText(const std::string& outDir, const std::string& series, const StartTimes& starts, int length) {
    std::string text;
    for (const int start : starts) {
        text += TimeField(start) + TimeField(length) + SeriesName(outDir, series, start) + "\n";
    }
    return text;
}

std::vector<std::string> SeriesFileNames(const std::vector<std::string>& allSeries, const StartTimes& starts) {
    std::vector<std::string> names;
    for (const std::string& series : allSeries) {
        names.push_back(series + ".txt");
        for (const int start : starts) {
            names.push_back(SeriesName("", series, start).substr(1));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}
