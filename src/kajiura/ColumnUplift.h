#pragma once

#include <cstddef>

#include "kajiura/FilterKernels.h"
#include "kajiura/GridColumns.h"
#include "kajiura/LatticeAxis.h"

namespace tidora {

// The uplift between four nodes, w(0, 0) the near one along both axes, t and u the weights of the far ones:
//     (1 - t)(1 - u) w(0, 0) + t (1 - u) w(1, 0) + (1 - t) u w(0, 1) + t u w(1, 1)
// The first three products are formed and summed in double, the fourth is formed in single precision and then added,
// and the sum is rounded once. The filter is defined so; every other way has other bits.

/// One grid under the lattice of one point.
template <typename Lanes>
struct LatticeView {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeAxis<Lanes> columns, rows;
    RowPlaces<Lanes> places;

    void Open(const GridShape& shape, const FilterPoint& point) noexcept {
        columns.Fill(point.x, point.disc.step, shape.orgX, shape.dx, shape.nx);
        rows.Fill(point.y, point.disc.step, shape.orgY, shape.dx, shape.ny);
        places.Fill(rows, shape);
    }

    /// True when every position has a cell: the first and the last are enough, since places ascend.
    [[nodiscard]] bool IsInside() const noexcept {
        constexpr int kLast = kLatticeWidth - 1;
        return HasCell(0, 0) && HasCell(kLast, kLast);
    }
    [[nodiscard]] bool HasCell(int i, int j) const noexcept { return columns.cell[i] >= 0 && rows.cell[j] >= 0; }

    /// Bilinear uplift at one position with a cell.
    [[nodiscard]] float Uplift(const SampledGrid& grid, int i, int j) const noexcept {
        const std::ptrdiff_t ny = grid.shape.ny;
        const float* const near = grid.values + columns.cell[i] * ny + rows.cell[j];
        const float* const far = near + ny;
        const double products = columns.nearWeight[i] * rows.nearWeight[j] * static_cast<double>(near[0]) +
                                columns.wideWeight[i] * rows.nearWeight[j] * static_cast<double>(far[0]) +
                                columns.nearWeight[i] * rows.wideWeight[j] * static_cast<double>(near[1]);
        return static_cast<float>(products + static_cast<double>(columns.weight[i] * rows.weight[j] * far[1]));
    }
};

/// Bilinear uplift in one lattice column of one grid, a part at a time. The same bits with every lane type, those of
/// LatticeView::Uplift. Any alignment.
template <typename Lanes>
class ColumnUplift {
    using Floats8 = typename Lanes::Floats8;
    using Doubles8 = typename Lanes::Doubles8;

public:
    /// cells: at the grid columns of lattice column i.
    ColumnUplift(const LatticeView<Lanes>& from, const CellColumns<Lanes>& cells, int i) noexcept
        : m_nearT(Lanes::All8(from.columns.nearWeight[i])),
          m_wideT(Lanes::All8(from.columns.wideWeight[i])),
          m_view(from),
          m_near(cells.Near()),
          m_far(cells.Far()) {
        const auto t = Lanes::AllFloats(from.columns.weight[i]);
#pragma GCC unroll 10
        for (int at = 0; at < kFetched<Lanes>; at += Lanes::kFloats) {
            Lanes::StoreFloats(m_farFar + at,
                               t * Lanes::LoadFloats(m_view.rows.weight + at) * Lanes::LoadFloats(m_far.farRow + at));
        }
    }

    /// Where a row has no cell the result means nothing: 0 if the uplift is finite.
    [[nodiscard, gnu::always_inline]] inline Floats8 Of(int part) const noexcept {
        const std::ptrdiff_t at = std::ptrdiff_t{part} * kPartWidth;
        const Doubles8 nearU = Lanes::Load8(m_view.rows.nearWeight + at);
        const Doubles8 wideU = Lanes::Load8(m_view.rows.wideWeight + at);
        const Doubles8 nearNear = m_nearT * nearU * Lanes::LoadWidened8(m_near.nearRow + at);
        const Doubles8 farNear = m_wideT * nearU * Lanes::LoadWidened8(m_far.nearRow + at);
        const Doubles8 nearFar = m_nearT * wideU * Lanes::LoadWidened8(m_near.farRow + at);
        return Lanes::Rounded8(nearNear + farNear + nearFar + Lanes::LoadWidened8(m_farFar + at));
    }
    /// The same where the grid has cells, `elsewhere` where not.
    [[nodiscard]] Floats8 Of(int part, Floats8 elsewhere) const noexcept {
        return Lanes::SelectNotNegative8(m_view.rows.cell + std::ptrdiff_t{part} * kPartWidth, Of(part), elsewhere);
    }

private:
    Doubles8 m_nearT, m_wideT;
    alignas(64) float m_farFar[kFetched<Lanes>];  ///< the fourth product, in single precision
    const LatticeView<Lanes>& m_view;
    const ColumnValues<Lanes>&m_near, &m_far;
};

}  // namespace tidora
