#pragma once

#include <cstddef>
#include <vector>

#include "deform/ColumnPasses.h"
#include "deform/GridWindow.h"
#include "grid/GridShape.h"

namespace tidora {

/// Largest value of a grid, at least 0, kept per tile of a column, so that a change costs only the tiles that it
/// touches: a progress line per element wants it, and a pass over a large grid would cost more than a small element.
class RunningMaximum {
public:
    /// values: of the whole grid, or null: then the largest is 0. Does not own them.
    RunningMaximum(const float* values, const GridShape& grid);

    /// Looks at the values of a window again.
    void Refresh(const GridWindow& window);

    [[nodiscard]] float Largest() const noexcept { return m_largest; }

private:
    static constexpr int kTile = 128;  ///< rows: eight lines of the cache, and a hundredth of the work of a large grid

    const float* m_values;
    GridShape m_grid;
    const ColumnPasses& m_passes;
    std::size_t m_tilesPerColumn = 0;
    std::vector<float> m_tiles, m_columns;
    float m_largest = 0.0F;
};

}  // namespace tidora
