#pragma once

#include <cstddef>
#include <cstring>

#include "deform/ColumnPasses.h"

namespace tidora {

/// A stretch of points of a column that take the same source.
struct SourceRun {
    SourceKind kind;
    std::size_t begin, end;
};

/// The stretch that begins at `begin`, of `count` points. Along a column the distance from the centroid falls and rises
/// again: a column has few and long stretches, so the kinds are compared eight at a time.
[[nodiscard]] inline SourceRun RunFrom(std::size_t begin, const SourceKind* kinds, std::size_t count) noexcept {
    constexpr std::size_t kStep = 8;
    const SourceKind kind = kinds[begin];
    SourceKind same[kStep];
    std::memset(static_cast<void*>(same), static_cast<int>(kind), kStep);
    std::size_t end = begin + 1;
    while (end + kStep <= count && std::memcmp(kinds + end, same, kStep) == 0) {
        end += kStep;
    }
    while (end < count && kinds[end] == kind) {
        ++end;
    }
    return {kind, begin, end};
}

}  // namespace tidora
