#pragma once

#include <vector>

#include "kajiura/UpliftTable.h"

namespace tidora::reference {

/// An uplift on its grid, index iy * nx + ix.
struct UpliftField {
    RegularGrid grid;
    std::vector<float> values;
};

/// The converged filter cell by cell and pixel by pixel: for each cell of the lattice the exact overlap with every
/// pixel, of the parent the part outside of the own grid. No tables of sums. topography: of the own grid. parent: null,
/// or of the same units. On degrees everything is repeated every 360 of them.
std::vector<double> ConvergedReference(const UpliftField& own, const UpliftField* parent, bool isGeographic,
                                       const std::vector<float>& topography);

}  // namespace tidora::reference
