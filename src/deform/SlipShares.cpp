#include "deform/SlipShares.h"

#include <algorithm>

namespace tidora {
namespace {

/// What has slipped before a time, from 0 to 1. Slip in no time comes at once, within the window that begins with it.
double SlippedBefore(double time, const SlipTimes& times) noexcept {
    if (times.duration <= 0.0) {
        return times.lag < time ? 1.0 : 0.0;
    }
    return std::clamp((time - times.lag) / times.duration, 0.0, 1.0);
}

}  // namespace

float ShareOfInterval(double start, double length, const SlipTimes& times) noexcept {
    // Exact comparisons throughout: the times come from one file, as the same texts.
    const double end = start + length;
    if (start == 0.0 && end == 0.0) {
        return 1.0F;  // the static interval takes everything, whatever the element's timing
    }
    // The second case is that of an element that has ended when the interval starts.
    // An element that starts exactly at the end of the interval is outside, on purpose: so an interval without length
    // takes nothing from an element without duration that starts with it.
    // Test: "an element that starts at the end of an interval of no length gives it nothing".
    if (times.lag >= end || (start > times.lag && start >= times.lag + times.duration)) {
        return 0.0F;
    }
    const double lo = std::max(times.lag, start);
    const double hi = std::min(times.lag + times.duration, end);
    if (lo == hi) {
        return 1.0F;  // slip in no time within the interval, or an interval of no length within the slip
    }
    // Times that are not numbers, or run backward, share nothing.
    return hi > lo ? static_cast<float>(static_cast<double>(static_cast<float>(hi - lo)) / times.duration) : 0.0F;
}

void ShareOutToWindows(const double* limits, std::size_t count, const SlipTimes& times, float* shares,
                       std::size_t stride) noexcept {
    double before = 0.0;
    for (std::size_t k = 0; k < count; ++k) {
        const double until = k + 1 == count ? 1.0 : SlippedBefore(limits[k + 1], times);
        shares[k * stride] = static_cast<float>(until - before);
        before = until;
    }
}

}  // namespace tidora
