#pragma once

#include <cstddef>

namespace tidora {

/// When an element slips: evenly from `lag` on for `duration`, s.
struct SlipTimes {
    double lag = 0.0, duration = 0.0;
};

/// The part of an element's slip that falls into the interval from `start` on for `length`, s, from 0 to 1: the rupture
/// time function of a run. Start and length 0 make the static interval, which takes everything.
[[nodiscard]] float ShareOfInterval(double start, double length, const SlipTimes& times) noexcept;

/// The part that falls into each of `count` windows, from limits[k] to before limits[k + 1], which increase: count + 1
/// limits. What lies before the first goes into the first window, what lies after the last into the last: the shares of
/// an element add up to 1. shares[k * stride] is written.
void ShareOutToWindows(const double* limits, std::size_t count, const SlipTimes& times, float* shares,
                       std::size_t stride) noexcept;

}  // namespace tidora
