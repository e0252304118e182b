#include <algorithm>
#include <cassert>
#include <cstddef>
#include <functional>
#include <vector>

#include "grid/GridShape.h"
#include "kajiura/KajiuraFilter.h"
#include "region/Region.h"

namespace tidora {
namespace {

/// Sum of the parent's vertical and horizontal snapshot k. What is not there counts as 0.
void AddParentSnapshots(const std::vector<InstantVal2d>& a, const std::vector<InstantVal2d>& b, std::size_t k,
                        std::size_t count, float* sum) {
    std::fill_n(sum, count, 0.0F);
    for (const std::vector<InstantVal2d>* part : {&b, &a}) {
        if (k < part->size() && (*part)[k].num >= count) {
            std::transform(sum, sum + count, (*part)[k].val, sum, std::plus<>());
        }
    }
}

}  // namespace

int Region::KajiuraFilterNesting(const float* depth, int parentNumber, int pnx, int pny, double porg_x, double porg_y,
                                 float pdx, const std::vector<InstantVal2d>& parentA,
                                 const std::vector<InstantVal2d>& parentB) {
    const SampledGrid uplift = {ShapeOf(*this), valWork};
    const SampledGrid parent = {{pnx, pny, porg_x, porg_y, pdx}, parentValWork};
    const std::size_t parentSize = parent.shape.Size();
    const bool hasParent = parentNumber > 0 && parentSize > 0;
    for (std::size_t k = 0; k < instants.size(); ++k) {
        assert(valWork != nullptr && (parentSize == 0 || parentValWork != nullptr));
        std::copy_n(instants[k].val, instants[k].num, valWork);
        if (hasParent) {
            AddParentSnapshots(parentA, parentB, k, parentSize, parentValWork);
        } else {
            // Of no use here, but part of what the method does with the caller's array.
            std::fill_n(parentValWork, parentSize, 0.0F);
        }
        FilterUplift(uplift, hasParent ? &parent : nullptr, depth, instants[k].val);
    }
    return 1;
}

}  // namespace tidora
