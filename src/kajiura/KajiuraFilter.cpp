#include "kajiura/KajiuraFilter.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kajiura/FilterKernels.h"

namespace tidora {
namespace {

constexpr float kShallowest = -10.0F;  ///< topography below which a point is filtered, m

/// Where a grid has uplift at all, in blocks of 16 by 16 points: the terms of a disc without any sum to exactly +0.
class UpliftBlocks {
public:
    explicit UpliftBlocks(const SampledGrid& grid)
        : m_grid(grid), m_columns(BlockOf(grid.nx - 1) + 1), m_rows(BlockOf(grid.ny - 1) + 1) {
        const std::size_t stride = static_cast<std::size_t>(m_rows) + 1;
        m_counts.assign((static_cast<std::size_t>(m_columns) + 1) * stride, 0);
        for (int ix = 0; ix < grid.nx; ++ix) {
            for (int iy = 0; iy < grid.ny; ++iy) {
                // What is not a number is uplift too.
                const float value = grid.values[std::ptrdiff_t{ix} * grid.ny + iy];
                if (!(value == 0.0F)) {
                    At(BlockOf(ix) + 1, BlockOf(iy) + 1) = 1;
                    m_isFinite = m_isFinite && std::isfinite(value);
                }
            }
        }
        for (int column = 1; column <= m_columns; ++column) {
            for (int row = 1; row <= m_rows; ++row) {
                At(column, row) += At(column - 1, row) + At(column, row - 1) - At(column - 1, row - 1);
            }
        }
    }

    /// True when every value is a number.
    [[nodiscard]] bool IsFinite() const noexcept { return m_isFinite; }

    /// True when a point within `radius` of (x, y) along both axes, or next to one, has uplift.
    [[nodiscard]] bool HasUpliftNear(float x, float y, float radius) {
        const Range columns = RangeOf(x, radius, m_grid.orgX, m_grid.nx);
        const Range rows = RangeOf(y, radius, m_grid.orgY, m_grid.ny);
        if (columns.first > columns.last || rows.first > rows.last) {
            return false;
        }
        return At(columns.last + 1, rows.last + 1) - At(columns.first, rows.last + 1) -
                   At(columns.last + 1, rows.first) + At(columns.first, rows.first) >
               0;
    }

private:
    struct Range {
        int first, last;  ///< blocks
    };

    static int BlockOf(int index) noexcept { return index / 16; }

    std::int32_t& At(int column, int row) {
        return m_counts[static_cast<std::size_t>(column) * (static_cast<std::size_t>(m_rows) + 1) +
                        static_cast<std::size_t>(row)];
    }

    [[nodiscard]] Range RangeOf(float centre, float radius, double org, int count) const noexcept {
        // Two points more on either side than the disc can touch, for the corners of its cells, and what the rounding
        // of its positions to single precision (2^-23 of their size at most, twice) can move them.
        const double spacing = static_cast<double>(m_grid.dx);
        const double at = (static_cast<double>(centre) - org) / spacing;
        const double rounding = 0x1p-21 * (std::abs(static_cast<double>(centre)) + static_cast<double>(radius));
        const double reach = (static_cast<double>(radius) * 1.00001 + rounding) / std::abs(spacing) + 2.0;
        if (!(std::abs(at) < 1.0e9) || !(reach < 1.0e9)) {
            return {0, BlockOf(count - 1)};
        }
        const int first = std::max(static_cast<int>(std::floor(at - reach)), 0);
        const int last = std::min(static_cast<int>(std::ceil(at + reach)), count - 1);
        return first > last ? Range{1, 0} : Range{BlockOf(first), BlockOf(last)};
    }

    const SampledGrid& m_grid;
    int m_columns, m_rows;
    bool m_isFinite = true;
    std::vector<std::int32_t> m_counts;  ///< of blocks with uplift, summed from the first block on
};

LatticeGrid AsLatticeGrid(const SampledGrid& grid, bool isFinite) noexcept {
    return {grid.nx, grid.ny, grid.orgX, grid.orgY, grid.dx, grid.values, isFinite};
}

/// Gathers points into blocks, filters them and puts them where they belong.
class FilterQueue {
public:
    FilterQueue(const LatticeGrid& own, const LatticeGrid& parent, float* result)
        : m_own(own), m_parent(parent), m_result(result) {}

    void Add(const LatticePoint& point, std::ptrdiff_t at) {
        m_points[m_count] = point;
        m_at[m_count++] = at;
        if (m_count == kLatticeBlock) {
            Flush();
        }
    }

    void Flush() {
        if (m_count == 0) {
            return;
        }
        float filtered[kLatticeBlock];
        m_kernels.filterPoints(m_own, m_parent, m_points, m_count, filtered);
        for (int p = 0; p < m_count; ++p) {
            m_result[m_at[p]] = filtered[p];
        }
        m_count = 0;
    }

private:
    const FilterKernels& m_kernels = DispatchedKernels<FilterKernelsOf>();
    LatticeGrid m_own, m_parent;
    float* m_result;
    LatticePoint m_points[kLatticeBlock] = {};
    std::ptrdiff_t m_at[kLatticeBlock] = {};
    int m_count = 0;
};

}  // namespace

void FilterUplift(const SampledGrid& uplift, const SampledGrid* parent, const float* topography, float* result) {
    if (uplift.nx < 1 || uplift.ny < 1) {
        return;
    }
    const SampledGrid none;
    UpliftBlocks ownBlocks(uplift);
    UpliftBlocks parentBlocks(parent != nullptr ? *parent : none);
    // Weights and kernels that are no numbers, from spacings or depths without measure, make terms that are none
    // whatever the uplift.
    const bool canSkip = std::isfinite(uplift.dx) && (parent == nullptr || std::isfinite(parent->dx));
    FilterQueue queue(AsLatticeGrid(uplift, ownBlocks.IsFinite()),
                      parent != nullptr ? AsLatticeGrid(*parent, parentBlocks.IsFinite()) : LatticeGrid{}, result);
    for (int ix = 0; ix < uplift.nx; ++ix) {
        const auto x = static_cast<float>(uplift.orgX + static_cast<double>(static_cast<float>(ix) * uplift.dx));
        for (int iy = 0; iy < uplift.ny; ++iy) {
            const std::ptrdiff_t at = std::ptrdiff_t{ix} * uplift.ny + iy;
            if (!(topography[at] < kShallowest)) {
                continue;
            }
            const float depth = -topography[at];
            const auto y = static_cast<float>(uplift.orgY + static_cast<double>(static_cast<float>(iy) * uplift.dx));
            const float radius = 5.0F * depth;
            if (!canSkip || !std::isfinite(depth * depth) || ownBlocks.HasUpliftNear(x, y, radius) ||
                (parent != nullptr && parentBlocks.HasUpliftNear(x, y, radius))) {
                queue.Add({x, y, depth}, at);
            } else {
                result[at] = 0.0F;
            }
        }
    }
    queue.Flush();
}

}  // namespace tidora
