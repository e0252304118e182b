#include "deform/SourceRuns.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace tidora {

float LargestSquareWithin(float distance) noexcept {
    constexpr float kLargest = std::numeric_limits<float>::max();
    if (!(distance >= 0.0F && distance <= kLargest)) {
        return distance;
    }
    float square = std::min(distance * distance, kLargest);
    while (std::sqrt(square) > distance) {
        square = std::nextafter(square, 0.0F);
    }
    while (square < kLargest && std::sqrt(std::nextafter(square, kLargest)) <= distance) {
        square = std::nextafter(square, kLargest);
    }
    return square;
}

SourceRun RunFrom(std::size_t begin, const SourceKind* kinds, std::size_t count) noexcept {
    constexpr std::size_t kStep = 8;
    const SourceKind kind = kinds[begin];
    SourceKind same[kStep];
    std::fill_n(same, kStep, kind);
    std::size_t end = begin + 1;
    while (end + kStep <= count && std::memcmp(kinds + end, same, kStep) == 0) {
        end += kStep;
    }
    while (end < count && kinds[end] == kind) {
        ++end;
    }
    return {kind, begin, end};
}

SourceLimits LimitsOf(const SourceReach& reach) noexcept {
    return {LargestSquareWithin(reach.finite), LargestSquareWithin(reach.point), !reach.isSwitched};
}

float FiniteLimitOf(const SourceLimits& limits) noexcept {
    return limits.isFiniteOnly ? limits.point : std::min(limits.finite, limits.point);
}

}  // namespace tidora
