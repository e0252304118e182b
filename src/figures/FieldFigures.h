#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "simd/Dispatch.h"

namespace tidora {

/// Figures of a field of heights, gathered piece by piece. A plain value: copy it. Without nodes the extremes are
/// infinite.
struct FieldFigures {
    float highest = -std::numeric_limits<float>::infinity(), lowest = std::numeric_limits<float>::infinity();  ///< m
    std::int64_t highestAt = -1, lowestAt = -1;  ///< numbers of the nodes; of equal values the lowest number
    double raised = 0.0, lowered = 0.0;          ///< sums of height times area above 0, and below it, positive; m3
    double squares = 0.0;                        ///< sum of the squared height times the area, m4
};

/// Part of the nodes of several fields. Does not own them.
struct FieldPiece {
    std::size_t fields = 0, nodes = 0;
    const float* heights = nullptr;  ///< m; field k begins at k * stride
    std::size_t stride = 0;
    const double* areas = nullptr;  ///< m2, of each node
    std::int64_t first = 0;         ///< number of the first node; the others count on
};

/// Adds a piece of the nodes to the figures of each field. Sums are kept in double precision, sixteen of them side by
/// side and then together, so that every instruction set makes the same bits. A height that is not a number leaves
/// `squares` not a number, and the extremes as they come.
void AddFigures(const FieldPiece& piece, FieldFigures* figures) noexcept;

/// Extremes and sums of one row of heights, without places.
struct RowFigures {
    double highest, lowest, raised, lowered, squares;
};

/// The kernels of one instruction set. Card. Lanes: PlainLanes, Avx2Lanes, Avx512Lanes, to the same bits. Products and
/// sums in double precision, each rounded once.
struct FigureKernels {
    /// count > 0.
    RowFigures (*row)(const float* heights, const double* areas, std::size_t count) noexcept;
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct FigureKernelsOf {
    static const FigureKernels kTable;
};
template <>
const FigureKernels FigureKernelsOf<PlainLanes>::kTable;
template <>
const FigureKernels FigureKernelsOf<Avx2Lanes>::kTable;
template <>
const FigureKernels FigureKernelsOf<Avx512Lanes>::kTable;

}  // namespace tidora
