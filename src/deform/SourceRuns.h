#pragma once

#include <cstddef>

#include "deform/ColumnPasses.h"
#include "deform/ElementSource.h"

namespace tidora {

/// The largest square whose root, in single precision, is at most `distance`: roots are rounded correctly and grow with
/// their arguments, so that squares compared with this decide as the distances would, and no root is taken. Not a
/// number stays one: nothing is within it or beyond it.
[[nodiscard]] float LargestSquareWithin(float distance) noexcept;

/// A stretch of points of a column that take the same source.
struct SourceRun {
    SourceKind kind;
    std::size_t begin, end;
};

/// The stretch that begins at `begin`, of `count` points. Along a column the distance from the centroid falls and rises
/// again: a column has few and long stretches, so the kinds are compared eight at a time. Requires: begin < count.
[[nodiscard]] SourceRun RunFrom(std::size_t begin, const SourceKind* kinds, std::size_t count) noexcept;

/// Calls take(run) for every stretch of `count` points that takes a source, in order.
template <typename Take>
void ForEachRun(const SourceKind* kinds, std::size_t count, Take take) {
    for (std::size_t begin = 0; begin < count;) {
        const SourceRun run = RunFrom(begin, kinds, count);
        if (run.kind != SourceKind::None) {
            take(run);
        }
        begin = run.end;
    }
}

/// The reach of an element as squares.
[[nodiscard]] SourceLimits LimitsOf(const SourceReach& reach) noexcept;

/// Points within this square of a distance take the finite source whatever else is compared.
[[nodiscard]] float FiniteLimitOf(const SourceLimits& limits) noexcept;

}  // namespace tidora
