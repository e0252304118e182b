#pragma once

#include <vector>

#include "grid/InstantVal2d.h"

namespace tidora::reference {

/// Geometry of a grid, index ix * ny + iy.
struct ReferenceGrid {
    int nx = 0, ny = 0;
    double orgX = 0.0, orgY = 0.0;  ///< m
    float dx = 0.0F;                ///< m
};

/// The Kajiura filter sample by sample: no tables, one kernel sum of eleven terms per sample. Filters every snapshot of
/// `instants` (nx * ny values each) in place. depth: topography of the same grid, m. parentNo: 1 or more when `parentA`
/// and `parentB`, grids of the geometry `parent`, stand in outside; what lies outside them counts as 0.
/// Kajiura (1963), Bull. Earthq. Res. Inst. 41, 535-571, series cut after 11 terms.
void KajiuraReference(const ReferenceGrid& grid, const float* depth, int parentNo, const ReferenceGrid& parent,
                      const std::vector<InstantVal2d>& parentA, const std::vector<InstantVal2d>& parentB,
                      std::vector<InstantVal2d>& instants);

}  // namespace tidora::reference
