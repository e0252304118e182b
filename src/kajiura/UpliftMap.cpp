#include "kajiura/UpliftMap.h"

#include <algorithm>
#include <cmath>

namespace tidora {
namespace {

int BlockOf(int index) noexcept {
    return index / 16;
}

}  // namespace

UpliftMap::UpliftMap(const SampledGrid& grid)
    : m_shape(grid.shape), m_columns(BlockOf(grid.shape.nx - 1) + 1), m_rows(BlockOf(grid.shape.ny - 1) + 1) {
    m_counts.assign(At(m_columns + 1, 0), 0);
    for (int ix = 0; ix < m_shape.nx; ++ix) {
        for (int iy = 0; iy < m_shape.ny; ++iy) {
            const float value = grid.values[m_shape.Index(ix, iy)];
            if (!(value == 0.0F)) {
                m_counts[At(BlockOf(ix) + 1, BlockOf(iy) + 1)] = 1;
                m_isFinite = m_isFinite && std::isfinite(value);
            }
        }
    }
    for (int column = 1; column <= m_columns; ++column) {
        for (int row = 1; row <= m_rows; ++row) {
            m_counts[At(column, row)] +=
                m_counts[At(column - 1, row)] + m_counts[At(column, row - 1)] - m_counts[At(column - 1, row - 1)];
        }
    }
}

bool UpliftMap::MayHaveUplift(float x, float y, float radius) const noexcept {
    // Weights from a spacing without measure are no numbers, and make terms that are none whatever the uplift.
    if (!std::isfinite(m_shape.dx)) {
        return true;
    }
    const Blocks columns = BlocksWithin(x, radius, m_shape.orgX, m_shape.nx);
    const Blocks rows = BlocksWithin(y, radius, m_shape.orgY, m_shape.ny);
    if (columns.last < columns.first || rows.last < rows.first) {
        return false;
    }
    return m_counts[At(columns.last + 1, rows.last + 1)] - m_counts[At(columns.first, rows.last + 1)] -
               m_counts[At(columns.last + 1, rows.first)] + m_counts[At(columns.first, rows.first)] >
           0;
}

UpliftMap::Blocks UpliftMap::BlocksWithin(float centre, float radius, double org, int count) const noexcept {
    // One point more on either side than the disc covers, for the corners of its cells. Besides, the radius and the
    // place of a sample are rounded to single precision three times, by 2^-24 of their size at most, together less than
    // 2^-22 of it: twice that is allowed.
    const auto size = std::abs(static_cast<double>(centre)) + static_cast<double>(radius);
    const double spacing = std::abs(static_cast<double>(m_shape.dx));
    const double at = (static_cast<double>(centre) - org) / static_cast<double>(m_shape.dx);
    const double reach = (static_cast<double>(radius) + 0x1p-21 * size) / spacing + 1.0;
    // Indices must fit into an int: 2^31 is more than 2e9. What is no number takes the whole axis.
    if (!(std::abs(at) < 1.0e9) || !(reach < 1.0e9)) {
        return {0, BlockOf(count - 1)};
    }
    const int first = std::max(static_cast<int>(std::floor(at - reach)), 0);
    const int last = std::min(static_cast<int>(std::ceil(at + reach)), count - 1);
    return first > last ? Blocks{1, 0} : Blocks{BlockOf(first), BlockOf(last)};
}

std::size_t UpliftMap::At(int column, int row) const noexcept {
    return static_cast<std::size_t>(column) * (static_cast<std::size_t>(m_rows) + 1) + static_cast<std::size_t>(row);
}

}  // namespace tidora
