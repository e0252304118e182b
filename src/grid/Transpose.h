#pragma once

#include <algorithm>
#include <cstddef>

namespace tidora {

/// to[column * rows + row] = from[row * stride + column], in squares that fit the first-level cache: a plain double
/// loop misses it at every value of a large grid. stride: from one row of `from` to the next, at least `columns`; no
/// overlap. Files have rows, the memory columns: every grid that is read or written passes here.
inline void Transpose(const float* from, std::size_t rows, std::size_t columns, std::size_t stride,
                      float* to) noexcept {
    constexpr std::size_t kSquare = 32;  // 32 lines of 64 bytes on either side: 4 KB of the usual 32
    for (std::size_t firstRow = 0; firstRow < rows; firstRow += kSquare) {
        const std::size_t endRow = std::min(rows, firstRow + kSquare);
        for (std::size_t firstColumn = 0; firstColumn < columns; firstColumn += kSquare) {
            const std::size_t endColumn = std::min(columns, firstColumn + kSquare);
            for (std::size_t column = firstColumn; column < endColumn; ++column) {
                for (std::size_t row = firstRow; row < endRow; ++row) {
                    to[column * rows + row] = from[row * stride + column];
                }
            }
        }
    }
}

}  // namespace tidora
