#include "deform/RunningMaximum.h"

#include <algorithm>

namespace tidora {

RunningMaximum::RunningMaximum(const float* values, const GridShape& grid)
    : m_values(grid.Size() == 0 ? nullptr : values), m_grid(grid), m_passes(DispatchedKernels<ColumnPassesOf>()) {
    if (m_values != nullptr) {
        m_tilesPerColumn = (static_cast<std::size_t>(grid.ny) - 1) / kTile + 1;
        m_tiles.resize(static_cast<std::size_t>(grid.nx) * m_tilesPerColumn);
        m_columns.resize(static_cast<std::size_t>(grid.nx));
        Refresh({0, grid.nx, 0, grid.ny});
    }
}

void RunningMaximum::Refresh(const GridWindow& window) {
    if (m_values == nullptr || window.IsEmpty()) {
        return;
    }
    const int firstTile = window.firstRow / kTile;
    const int lastTile = (window.endRow - 1) / kTile;
    for (int ix = window.firstColumn; ix < window.endColumn; ++ix) {
        float* const tiles = m_tiles.data() + static_cast<std::size_t>(ix) * m_tilesPerColumn;
        for (int tile = firstTile; tile <= lastTile; ++tile) {
            const int firstRow = tile * kTile;
            const auto count = static_cast<std::size_t>(std::min(kTile, m_grid.ny - firstRow));
            tiles[tile] = m_passes.largest(m_values + m_grid.Index(ix, firstRow), count, 0.0F);
        }
        m_columns[static_cast<std::size_t>(ix)] = m_passes.largest(tiles, m_tilesPerColumn, 0.0F);
    }
    m_largest = m_passes.largest(m_columns.data(), m_columns.size(), 0.0F);
}

}  // namespace tidora
