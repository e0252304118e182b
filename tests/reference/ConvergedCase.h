#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "kajiura/ConvergedFilter.h"
#include "reference/ConvergedReference.h"

/// A field of one value.
inline tidora::reference::UpliftField UniformField(const tidora::RegularGrid& grid, float value) {
    return {grid, std::vector<float>(grid.nx * grid.ny, value)};
}

/// The surface over `own` by the converged filter.
inline std::vector<float> Converged(const tidora::reference::UpliftField& own,
                                    const tidora::reference::UpliftField* parent, bool isGeographic,
                                    const std::vector<float>& topography) {
    const tidora::UpliftTable table(own.grid, own.values.data());
    std::optional<tidora::UpliftTable> outer;
    if (parent != nullptr) {
        outer.emplace(parent->grid, parent->values.data());
    }
    std::vector<float> surface(own.values.size(), -999.0F);
    tidora::ConvergedFilter(table, outer ? &*outer : nullptr, isGeographic)
        .FilterRows(0, own.grid.ny, own.values.data(), topography.data(), surface.data());
    return surface;
}

/// The surface at one node of sea in the middle of land.
inline double ConvergedAt(const tidora::reference::UpliftField& own, std::size_t ix, std::size_t iy, double depth,
                          bool isGeographic = false) {
    const tidora::UpliftTable table(own.grid, own.values.data());
    std::vector<float> topography(own.values.size(), 0.0F);
    std::vector<float> surface(own.values.size());
    const std::size_t at = iy * own.grid.nx + ix;
    topography[at] = static_cast<float>(-depth);
    tidora::ConvergedFilter(table, nullptr, isGeographic)
        .FilterRows(iy, iy + 1, own.values.data(), topography.data(), surface.data());
    return static_cast<double>(surface[at]);
}
