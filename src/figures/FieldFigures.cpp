#include "figures/FieldFigures.h"

#include <algorithm>

namespace tidora {
namespace {

/// Number of the first node of a row that has a value which one of them has.
std::int64_t FirstWith(float value, const float* heights, const FieldPiece& piece) noexcept {
    return piece.first + (std::find(heights, heights + piece.nodes, value) - heights);
}

}  // namespace

void AddFigures(const FieldPiece& piece, FieldFigures* figures) noexcept {
    if (piece.nodes == 0) {
        return;
    }
    const FigureKernels& kernels = DispatchedKernels<FigureKernelsOf>();
    for (std::size_t field = 0; field < piece.fields; ++field) {
        const float* const heights = piece.heights + field * piece.stride;
        const RowFigures row = kernels.row(heights, piece.areas, piece.nodes);
        FieldFigures& all = figures[field];
        // Both were of single precision. The place is looked for only where there is something new, which is rare.
        const auto highest = static_cast<float>(row.highest), lowest = static_cast<float>(row.lowest);
        if (highest > all.highest || (highest == all.highest && piece.first < all.highestAt)) {
            all.highest = highest;
            all.highestAt = FirstWith(highest, heights, piece);
        }
        if (lowest < all.lowest || (lowest == all.lowest && piece.first < all.lowestAt)) {
            all.lowest = lowest;
            all.lowestAt = FirstWith(lowest, heights, piece);
        }
        if (all.highestAt < 0) {  // heights that are not numbers: they have been seen
            all.highestAt = all.lowestAt = piece.first;
        }
        all.raised += row.raised;
        all.lowered += row.lowered;
        all.squares += row.squares;
    }
}

}  // namespace tidora
