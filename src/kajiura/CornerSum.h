#pragma once

#include <cstddef>

#include "kajiura/ConvergedLattice.h"
#include "kajiura/UpliftTable.h"

namespace tidora {

/// Where the lines of a lattice across one axis meet a table.
class CornerLines {
public:
    /// line: table co-ordinates, ascending. count: pixels along the axis, at least 1. Requires: 0 <= line <= count,
    /// which the caller makes sure of in double: no line is converted to an index before.
    CornerLines(const double (&line)[kCorners], std::size_t count) noexcept;

    std::ptrdiff_t entry[kCorners];         ///< of the table, the last one at or before the line that has a next one
    alignas(16) double share[kCorners][2];  ///< of that entry and the next one, whose interpolation meets the line
};

/// The sum over the lattice's cells of density times integral, m times d^2 where densities are d^-2 and the integral is
/// one of pixels: the mean over the lattice once it is divided by the pixels in d^2. Requires: the table is not flat.
///
/// In a lattice of few pixels each row is taken less its value at the first line: the coefficients of a row sum to 0,
/// so that this changes nothing but the rounding, which would grow with all that lies to the south-west where a cell is
/// much smaller than a pixel. Plain vectors of two doubles on every machine, since the entries come in pairs: the same
/// bits with any instruction set.
[[nodiscard]] double CornerSum(const UpliftTable& table, const CornerLines& columns, const CornerLines& rows) noexcept;

}  // namespace tidora
