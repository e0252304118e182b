#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>
#include <type_traits>

namespace bench {

/// Processor time of one call, s. Not wall time: another process must not slow one of two ways only. Work that takes
/// the time itself, of another process, returns it.
template <typename Work>
double Seconds(Work work) {
    if constexpr (std::is_same_v<decltype(work()), double>) {
        return work();
    } else {
        const std::clock_t start = std::clock();
        work();
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    }
}

/// How many times faster one way is than another.
struct Ratio {
    double median = 0.0, least = 0.0, most = 0.0;
    double slowSeconds = 0.0, fastSeconds = 0.0;  ///< of the fastest turns
};

inline constexpr std::size_t kTurns = 5;

/// Runs both ways in turns, so that what the machine does meanwhile meets both.
template <typename Slow, typename Fast>
Ratio Compare(Slow slow, Fast fast) {
    std::array<double, kTurns> ratios{}, slowSeconds{}, fastSeconds{};
    for (std::size_t turn = 0; turn < kTurns; ++turn) {
        slowSeconds[turn] = Seconds(slow);
        fastSeconds[turn] = Seconds(fast);
        ratios[turn] = slowSeconds[turn] / fastSeconds[turn];
    }
    std::sort(ratios.begin(), ratios.end());
    return {ratios[kTurns / 2], ratios.front(), ratios.back(),
            *std::min_element(slowSeconds.begin(), slowSeconds.end()),
            *std::min_element(fastSeconds.begin(), fastSeconds.end())};
}

}  // namespace bench
