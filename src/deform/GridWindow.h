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

}  // namespace tidora
