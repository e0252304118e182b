#pragma once

#include <vector>

#include "ExampleInputs.h"
#include "SeriesFiles.h"

/// Uplift of the floor in one interval: the sum of a vertical and a horizontal grid.
[[nodiscard]] SeriesGrid FloorUplift(const SeriesGrid& vertical, const SeriesGrid& horizontal);

/// Height of the water surface (m) at node (ix, iy) of a grid over an uplift of the floor, in double precision: the
/// Kajiura response over a disc of five depths, sampled every quarter of the depth, with the depth of the node.
/// Kajiura (1963), Bull. Earthq. Res. Inst. 41, 535-571, series cut after 11 terms. Floors of all intervals at once.
/// parents: the uplift of an enclosing grid, which stands in outside; empty when there is none, and outside counts as
/// 0.
[[nodiscard]] std::vector<double> WaterSurfaceAt(const InputGrid& topography, const std::vector<SeriesGrid>& floors,
                                                 const std::vector<SeriesGrid>& parents, int ix, int iy);

/// Sum of all weights of the disc: the height over a floor that rises by 1 m everywhere. The same for every depth.
[[nodiscard]] double WaterFilterGain();
