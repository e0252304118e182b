#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kajiura/SampledGrid.h"

namespace tidora {

/// Where a grid has uplift at all, in blocks of 16 by 16 points, so that a disc without any need not be sampled: its
/// terms are zeros, and sum to exactly +0. What is not a number counts as uplift. Blocks of 16: the map of a grid of
/// 1500 x 1500 points takes 35 kB, and a disc that is taken for raised is at most as far from uplift.
class UpliftMap {
public:
    /// The grid is read here alone.
    explicit UpliftMap(const SampledGrid& grid);

    /// True when every value is a finite number.
    [[nodiscard]] bool IsFinite() const noexcept { return m_isFinite; }

    /// False only if every sample of a disc, whose samples lie within `radius` of (x, y) along both axes, has an uplift
    /// of 0 in this grid. x, y, radius: m.
    [[nodiscard]] bool MayHaveUplift(float x, float y, float radius) const noexcept;

private:
    struct Blocks {
        int first, last;  ///< none: last < first
    };

    [[nodiscard]] Blocks BlocksWithin(float centre, float radius, double org, int count) const noexcept;
    [[nodiscard]] std::size_t At(int column, int row) const noexcept;

    GridShape m_shape;
    int m_columns, m_rows;  ///< of blocks
    bool m_isFinite = true;
    /// At(column, row): number of blocks with uplift in the columns and rows before these.
    std::vector<std::int32_t> m_counts;
};

}  // namespace tidora
