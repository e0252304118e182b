#pragma once

#include <cstddef>

namespace tidora {

/// A range of columns and rows of a grid; empty when an end is not beyond its begin.
struct GridWindow {
    int firstColumn = 0, endColumn = 0;
    int firstRow = 0, endRow = 0;

    [[nodiscard]] bool IsEmpty() const noexcept { return firstColumn >= endColumn || firstRow >= endRow; }
    [[nodiscard]] std::size_t Columns() const noexcept {
        return IsEmpty() ? 0 : static_cast<std::size_t>(endColumn - firstColumn);
    }
    [[nodiscard]] std::size_t Rows() const noexcept {
        return IsEmpty() ? 0 : static_cast<std::size_t>(endRow - firstRow);
    }
};

/// The grid that is deformed. Does not own the topography.
struct DeformedGrid {
    int nx = 0;
    int ny = 0;
    double orgX = 0.0;            ///< first column: metres or degrees
    double orgY = 0.0;            ///< first row
    float dx = 0.0F;              ///< spacing of both axes
    const float* topo = nullptr;  ///< nx * ny values, m, index ix * ny + iy

    [[nodiscard]] std::size_t Size() const noexcept {
        return nx > 0 && ny > 0 ? static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) : 0;
    }
    [[nodiscard]] std::size_t Index(int ix, int iy) const noexcept {
        return static_cast<std::size_t>(ix) * static_cast<std::size_t>(ny) + static_cast<std::size_t>(iy);
    }
    /// Index times spacing is formed in single precision on purpose, and widened before the sum.
    [[nodiscard]] double X(int ix) const noexcept { return orgX + static_cast<double>(static_cast<float>(ix) * dx); }
    [[nodiscard]] double Y(int iy) const noexcept { return orgY + static_cast<double>(static_cast<float>(iy) * dx); }
};

}  // namespace tidora
