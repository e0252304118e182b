#pragma once

#include <cstddef>

#include "kajiura/UpliftTable.h"

namespace tidora {

/// Smooths a sea-floor uplift into the sea-surface elevation that it leaves, with the whole of Kajiura's kernel instead
/// of its first eleven terms: a wave of wave number k over water of depth d keeps 1 / cosh(k d) of its height, within
/// 1.2e-3 up to k d = 6 (Kajiura 1963, Bull. Earthq. Res. Inst. 41, 535-571). The means of the uplift over the cells of
/// a lattice in units of the depth, with weights that sum to 1 (ConvergedLattice.h): a uniform uplift stays, the volume
/// of an uplift over a floor of constant depth stays, and waves shorter than the cells are damped, not aliased. d is
/// the depth at the node that is filtered, used throughout its lattice, which is square and reaches 4.44 d.
///
/// On degrees the cells are squares in metres at the node, on GRS80; the lattice is never wider than a whole turn.
/// Longitudes count modulo 360, and a grid of a whole turn or more, within a thousandth of a spacing, goes around: of a
/// last column that repeats the first one, half a pixel of each counts. Beyond a pole there is nothing: 0.
///
/// Precision: double throughout, rounded at the end; the same bits on every instruction set, and for any cut into rows.
/// Keeps no state beside the tables: safe to call from several threads.
class ConvergedFilter {
public:
    /// parent: an uplift of any other grid in the same units, taken outside of the pixels of the first one; null: there
    /// the uplift is 0, as outside of both. Both outlive this.
    ConvergedFilter(const UpliftTable& uplift, const UpliftTable* parent, bool isGeographic) noexcept;

    /// Rows [firstRow, endRow) of the result. Pointers to whole fields of the uplift's grid: uplift, the field of the
    /// table; topography, m, negative below sea level; surface, of which these rows alone are written; no overlap
    /// with `uplift`. Nodes at -10 m and above keep their value; so does one whose lattice lies within its own pixel.
    /// Where both uplifts have nothing in the lattice's square, by the box of what they have at all, the result is
    /// exactly 0. Requires: uplift and topography are finite.
    void FilterRows(std::size_t firstRow, std::size_t endRow, const float* uplift, const float* topography,
                    float* surface) const noexcept;

private:
    const UpliftTable* m_uplift;
    const UpliftTable* m_parent;
    bool m_isGeographic;
};

}  // namespace tidora
