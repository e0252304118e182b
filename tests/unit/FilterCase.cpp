#include "unit/FilterCase.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include <doctest/doctest.h>

namespace {

std::size_t SizeOf(const FilterGrid& grid) {
    return static_cast<std::size_t>(grid.nx) * static_cast<std::size_t>(grid.ny);
}

}  // namespace

std::vector<tidora::InstantVal2d> Snapshots(const std::vector<std::vector<float>>& values) {
    std::vector<tidora::InstantVal2d> snapshots(values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
        snapshots[k].Reset(values[k].size());
        for (std::size_t at = 0; at < values[k].size(); ++at) {
            snapshots[k].val[at] = values[k][at];
        }
    }
    return snapshots;
}

std::vector<float> Uniform(const FilterGrid& grid, float value) {
    return std::vector<float>(SizeOf(grid), value);
}

std::vector<tidora::InstantVal2d> Filtered(const FilterGrid& grid, const std::vector<float>& topography,
                                           std::vector<tidora::InstantVal2d> snapshots, int parentNo,
                                           const FilterGrid& parent, const std::vector<tidora::InstantVal2d>& parentA,
                                           const std::vector<tidora::InstantVal2d>& parentB) {
    tidora::Region region;
    region.Set2dStruct(grid.nx, grid.ny, grid.orgX, grid.orgY, static_cast<double>(grid.dx));
    region.instants = std::move(snapshots);
    region.valWork = new float[SizeOf(grid)];
    std::vector<float> parentWork(SizeOf(parent));
    region.parentValWork = parentWork.data();
    const int result = region.KajiuraFilterNesting(topography.data(), parentNo, parent.nx, parent.ny, parent.orgX,
                                                   parent.orgY, parent.dx, parentA, parentB);
    CHECK(result == 1);
    std::vector<tidora::InstantVal2d> filtered = std::move(region.instants);
    region.instants.clear();
    region.FreeVecMem();
    return filtered;
}

unsigned BitsOf(float value) {
    if (std::isnan(value)) {
        return 0x7FC00000U;
    }
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}
