#pragma once

#include <algorithm>
#include <cstddef>

namespace tidora {

/// Where displacements are wanted: a grid, or scattered points. Borrows its arrays. Index of column ix, row iy:
/// iy * columns + ix. Of points `columns` is their number, and there is one row.
struct Nodes {
    bool isGrid = false;
    std::size_t columns = 0, rows = 0;
    const double *x = nullptr, *y = nullptr;  ///< m or degrees: one value a column and a row of a grid, each of a point
    const float* topography = nullptr;        ///< m, negative below sea level; null where nothing needs it

    [[nodiscard]] double X(std::size_t column) const noexcept { return x[column]; }
    [[nodiscard]] double Y(std::size_t column, std::size_t row) const noexcept { return y[isGrid ? row : column]; }
    [[nodiscard]] std::size_t Index(std::size_t column, std::size_t row) const noexcept {
        return row * columns + column;
    }
    [[nodiscard]] std::size_t Size() const noexcept { return columns * rows; }
};

/// The most nodes of a tile: five arrays of doubles and ten of floats of them stay in the first-level cache, and what
/// an element costs once is little beside as many evaluations.
inline constexpr std::size_t kTileNodes = 512;

/// A block of nodes that is evaluated as one, row by row or column by column.
struct NodeTile {
    std::size_t firstColumn = 0, columns = 0, firstRow = 0, rows = 0;
    bool isByColumn = false;

    [[nodiscard]] std::size_t Count() const noexcept { return columns * rows; }

    /// take(number in the tile, column, row) for every node, in order.
    template <typename Take>
    void ForEach(Take take) const {
        const std::size_t outer = isByColumn ? columns : rows, inner = isByColumn ? rows : columns;
        for (std::size_t a = 0, n = 0; a < outer; ++a) {
            for (std::size_t b = 0; b < inner; ++b, ++n) {
                take(n, firstColumn + (isByColumn ? a : b), firstRow + (isByColumn ? b : a));
            }
        }
    }
};

/// The cutting of nodes into tiles. By column, the tiles and their nodes follow each other in the order of a run:
/// column by column, from the south. Else tiles are as compact as their rows allow, so that far ones can be skipped.
class NodeTiles {
public:
    NodeTiles(std::size_t columns, std::size_t rows, bool isByColumn) noexcept
        : m_columns(columns), m_rows(rows), m_isByColumn(isByColumn) {
        constexpr std::size_t kRowOfTile = 64;
        if (isByColumn) {
            m_tileRows = std::min(rows, kTileNodes);
            m_tileColumns =
                rows > kTileNodes ? 1 : std::min(columns, kTileNodes / std::max<std::size_t>(m_tileRows, 1));
        } else {
            m_tileColumns = std::min(columns, rows == 1 ? kTileNodes : kRowOfTile);
            m_tileRows = std::min(rows, kTileNodes / std::max<std::size_t>(m_tileColumns, 1));
        }
    }

    [[nodiscard]] std::size_t Count() const noexcept {
        return m_columns == 0 || m_rows == 0 ? 0 : Parts(m_columns, m_tileColumns) * Parts(m_rows, m_tileRows);
    }

    [[nodiscard]] NodeTile operator[](std::size_t number) const noexcept {
        const std::size_t across = m_isByColumn ? Parts(m_rows, m_tileRows) : Parts(m_columns, m_tileColumns);
        const std::size_t a = number / across, b = number % across;
        const std::size_t column = (m_isByColumn ? a : b) * m_tileColumns, row = (m_isByColumn ? b : a) * m_tileRows;
        return {column, std::min(m_tileColumns, m_columns - column), row, std::min(m_tileRows, m_rows - row),
                m_isByColumn};
    }

private:
    static std::size_t Parts(std::size_t whole, std::size_t part) noexcept { return (whole + part - 1) / part; }

    std::size_t m_columns, m_rows;
    bool m_isByColumn;
    std::size_t m_tileColumns = 0, m_tileRows = 0;
};

}  // namespace tidora
