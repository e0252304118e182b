#pragma once

#include <vector>

#include "grid/InstantVal2d.h"
#include "region/Region.h"

/// Geometry and values that go into one call of the filter. Index ix * ny + iy.
struct FilterGrid {
    int nx = 0;
    int ny = 0;
    double orgX = 0.0;
    double orgY = 0.0;
    float dx = 1.0F;
};

/// Snapshots from their values, one inner vector each.
[[nodiscard]] std::vector<tidora::InstantVal2d> Snapshots(const std::vector<std::vector<float>>& values);

/// `count` times the value.
[[nodiscard]] std::vector<float> Uniform(const FilterGrid& grid, float value);

/// Filters `snapshots` on `grid` over `topography`, with the work arrays that the method requires, and returns them.
/// parentNo 0: no parent.
[[nodiscard]] std::vector<tidora::InstantVal2d> Filtered(const FilterGrid& grid, const std::vector<float>& topography,
                                                         std::vector<tidora::InstantVal2d> snapshots, int parentNo = 0,
                                                         const FilterGrid& parent = {},
                                                         const std::vector<tidora::InstantVal2d>& parentA = {},
                                                         const std::vector<tidora::InstantVal2d>& parentB = {});

/// The bits of a value: tells +0 from -0. All NaNs count as the same.
[[nodiscard]] unsigned BitsOf(float value);
