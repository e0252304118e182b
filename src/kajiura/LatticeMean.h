#pragma once

#include "kajiura/ConvergedLattice.h"
#include "kajiura/UpliftTable.h"

namespace tidora {

/// The lines of a lattice in table co-ordinates, ascending.
struct LatticeLines {
    double x[kCorners];
    double y[kCorners];
};

/// What counts of a table, in its co-ordinates. Columns on degrees have images, a whole turn apart.
struct TableDomain {
    double west = 0.0, east = 0.0, north = 0.0;
    double period = 0.0;  ///< columns in a turn; 0: there are no images

    TableDomain() = default;
    TableDomain(const RegularGrid& grid, bool isGeographic) noexcept;

    /// The shifts of the images that the lines touch, columns.
    struct Shifts {
        double first = 0.0;
        int count = 0;
    };
    [[nodiscard]] Shifts ShiftsUnder(const LatticeLines& lines) const noexcept;
    /// The lines relative to an image, those beyond its edges on the edge. What is no number goes to an edge, too.
    [[nodiscard]] LatticeLines Within(const LatticeLines& lines, double shift) const noexcept;
};

/// The weighted mean of an uplift over a lattice, with that of a parent outside of it. See ConvergedFilter.
class LatticeMean {
public:
    LatticeMean(const UpliftTable& own, const UpliftTable* parent, bool isGeographic) noexcept;

    /// Around a place in co-ordinates of the own table; columns, rows: pixels in a depth, > 0 and finite.
    [[nodiscard]] double At(double x, double y, double columns, double rows) const noexcept;

private:
    [[nodiscard]] bool IsInside(const LatticeLines& lines) const noexcept;
    [[nodiscard]] LatticeLines InParent(LatticeLines lines) const noexcept;
    [[nodiscard]] double ParentOutside(const LatticeLines& lines) const noexcept;

    const UpliftTable& m_own;
    const UpliftTable* m_parent;
    TableDomain m_ownDomain, m_parentDomain;
    double m_parentPixel = 1.0;  ///< own spacing over the parent's
};

}  // namespace tidora
