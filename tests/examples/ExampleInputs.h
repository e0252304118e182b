#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// A text grid: rows of nx values, the south one first.
struct InputGrid {
    int nx = 0, ny = 0;
    double orgX = 0.0, orgY = 0.0;
    double dx = 0.0;
    std::vector<double> values;  ///< index iy * nx + ix

    [[nodiscard]] double X(int ix) const noexcept { return orgX + ix * dx; }
    [[nodiscard]] double Y(int iy) const noexcept { return orgY + iy * dx; }
    [[nodiscard]] double At(int ix, int iy) const {
        return values.at(static_cast<std::size_t>(iy) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(ix));
    }
};

/// Reads a text grid token by token. Throws when values are missing or left over.
[[nodiscard]] InputGrid ReadInputGrid(const std::string& path);

/// One line of a fault file.
struct Subfault {
    double y = 0.0, x = 0.0;                     ///< degrees or m
    double baseOffset = 0.0, depth = 0.0;        ///< m
    double strike = 0.0, dip = 0.0, rake = 0.0;  ///< degrees
    double length = 0.0, width = 0.0;            ///< m
    double slip = 0.0;                           ///< m
    double lagtime = 0.0, duration = 0.0;        ///< s
};

/// Reads a fault file; lines of 10 columns have no times.
[[nodiscard]] std::vector<Subfault> ReadSubfaults(const std::string& path);

/// The subfaults that differ in place, each with the slip of all its time windows.
[[nodiscard]] std::vector<Subfault> MergedByPlace(const std::vector<Subfault>& windows);
