#pragma once

#include <cstddef>

#include "kajiura/FilterKernels.h"
#include "kajiura/GridColumns.h"
#include "kajiura/LatticeAxis.h"

namespace tidora {

/// One grid under the lattice of one point.
template <typename Lanes>
struct LatticeView {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeAxis<Lanes> columns, rows;
    RowPlaces<Lanes> places;

    void Open(const LatticeGrid& grid, const LatticePoint& point, float step) {
        columns.Fill(point.x, step, grid.orgX, grid.dx, grid.nx);
        rows.Fill(point.y, step, grid.orgY, grid.dx, grid.ny);
        places.Fill(rows, grid.nx, grid.ny);
    }

    /// True when every position has a cell.
    [[nodiscard]] bool IsInside() const {
        constexpr int kLast = kLatticeWidth - 1;
        return HasCell(0, 0) && HasCell(kLast, kLast);
    }
    [[nodiscard]] bool HasCell(int i, int j) const { return columns.cell[i] >= 0 && rows.cell[j] >= 0; }

    /// Bilinear uplift at one position with a cell.
    [[nodiscard]] float Uplift(const LatticeGrid& grid, int i, int j) const {
        const float* const near = grid.values + static_cast<std::ptrdiff_t>(columns.cell[i]) * grid.ny + rows.cell[j];
        const float* const far = near + grid.ny;
        const double products = columns.nearWeight[i] * rows.nearWeight[j] * static_cast<double>(near[0]) +
                                columns.wideWeight[i] * rows.nearWeight[j] * static_cast<double>(far[0]) +
                                columns.nearWeight[i] * rows.wideWeight[j] * static_cast<double>(near[1]);
        return static_cast<float>(products + static_cast<double>(columns.weight[i] * rows.weight[j] * far[1]));
    }
};

/// Interpolation in one lattice column of one grid.
template <typename Lanes>
class ColumnUplift {
public:
    ColumnUplift(const LatticeView<Lanes>& from, const CellColumns<Lanes>& cells, int i)
        : m_nearT(Lanes::All8(from.columns.nearWeight[i])),
          m_wideT(Lanes::All8(from.columns.wideWeight[i])),
          m_view(from),
          m_near(cells.Near()),
          m_far(cells.Far()) {
        const auto t = Lanes::AllFloats(from.columns.weight[i]);
#pragma GCC unroll 5
        for (int at = 0; at < kFetched<Lanes>; at += Lanes::kFloats) {
            Lanes::StoreFloats(m_farFar + at,
                               t * Lanes::LoadFloats(m_view.rows.weight + at) * Lanes::LoadFloats(m_far.farRow + at));
        }
    }

    /// Bilinear uplift. Three products in double and one in single precision on purpose: the roundings are fixed.
    [[nodiscard, gnu::always_inline]] inline typename Lanes::Floats8 Of(int part) const {
        const std::ptrdiff_t at = std::ptrdiff_t{part} * kPartWidth;
        const Doubles8 nearU = Lanes::Load8(m_view.rows.nearWeight + at);
        const Doubles8 wideU = Lanes::Load8(m_view.rows.wideWeight + at);
        const Doubles8 nearNear = m_nearT * nearU * Lanes::LoadWidened8(m_near.nearRow + at);
        const Doubles8 farNear = m_wideT * nearU * Lanes::LoadWidened8(m_far.nearRow + at);
        const Doubles8 nearFar = m_nearT * wideU * Lanes::LoadWidened8(m_near.farRow + at);
        return Lanes::Rounded8(nearNear + farNear + nearFar + Lanes::LoadWidened8(m_farFar + at));
    }
    /// The same where the grid has cells, `elsewhere` where not.
    [[nodiscard]] typename Lanes::Floats8 Of(int part, typename Lanes::Floats8 elsewhere) const {
        return Lanes::SelectNotNegative8(m_view.rows.cell + std::ptrdiff_t{part} * kPartWidth, Of(part), elsewhere);
    }

private:
    using Doubles8 = typename Lanes::Doubles8;

    Doubles8 m_nearT, m_wideT;
    alignas(64) float m_farFar[kFetched<Lanes>];
    const LatticeView<Lanes>& m_view;
    const ColumnValues<Lanes>&m_near, &m_far;
};

}  // namespace tidora
