#pragma once

// What FigureKernels are on any lanes; included by one source per instruction set.

#include <algorithm>
#include <array>
#include <cstddef>

#include "figures/FieldFigures.h"

namespace tidora {

template <typename Lanes>
struct FigureKernel {
    using Doubles = typename Lanes::Doubles;
    /// Sums side by side: enough for the latency of additions, and the same number whatever the lanes.
    static constexpr std::size_t kSums = 16;
    static constexpr std::size_t kVectors = kSums / Lanes::kDoubles;

    struct Vector {
        Doubles doubles;
    };
    using Vectors = std::array<Vector, kVectors>;
    struct Sums {
        Vectors highest, lowest, raised, lowered, squares;
    };

    static void Add(Sums& sums, const float* heights, const double* areas) noexcept {
        const Doubles zero = Lanes::All(0.0);
        for (std::size_t i = 0; i < kVectors; ++i) {
            const Doubles height = Lanes::LoadWidened(heights + i * Lanes::kDoubles);
            const Doubles volume = height * Lanes::Load(areas + i * Lanes::kDoubles);
            sums.highest[i].doubles = Lanes::Max(sums.highest[i].doubles, height);
            sums.lowest[i].doubles = Lanes::Min(sums.lowest[i].doubles, height);
            sums.raised[i].doubles = sums.raised[i].doubles + Lanes::Max(volume, zero);
            sums.lowered[i].doubles = sums.lowered[i].doubles - Lanes::Min(volume, zero);
            sums.squares[i].doubles = sums.squares[i].doubles + volume * height;
        }
    }

    /// One number of kSums, halves folded onto each other.
    template <typename Join>
    static double Joined(const Vectors& values, Join join) noexcept {
        std::array<double, kSums> each = {};
        for (std::size_t i = 0; i < kVectors; ++i) {
            Lanes::Store(each.data() + i * Lanes::kDoubles, values[i].doubles);
        }
        for (std::size_t half = kSums / 2; half > 0; half /= 2) {
            for (std::size_t i = 0; i < half; ++i) {
                each[i] = join(each[i], each[i + half]);
            }
        }
        return each[0];
    }

    static RowFigures Row(const float* heights, const double* areas, std::size_t count) noexcept {
        Sums sums = {};
        sums.highest.fill({Lanes::All(static_cast<double>(heights[0]))});
        sums.lowest = sums.highest;
        sums.raised.fill({Lanes::All(0.0)});
        sums.lowered = sums.squares = sums.raised;
        const std::size_t whole = count - count % kSums;
        for (std::size_t start = 0; start < whole; start += kSums) {
            Add(sums, heights + start, areas + start);
        }
        if (whole < count) {
            // The rest is filled up with a height of its own on no area.
            std::array<float, kSums> restHeights = {};
            std::array<double, kSums> restAreas = {};
            restHeights.fill(heights[whole]);
            std::copy(heights + whole, heights + count, restHeights.begin());
            std::copy(areas + whole, areas + count, restAreas.begin());
            Add(sums, restHeights.data(), restAreas.data());
        }
        const auto plus = [](double a, double b) { return a + b; };
        return {Joined(sums.highest, [](double a, double b) { return std::max(a, b); }),
                Joined(sums.lowest, [](double a, double b) { return std::min(a, b); }), Joined(sums.raised, plus),
                Joined(sums.lowered, plus), Joined(sums.squares, plus)};
    }
};

template <typename Lanes>
constexpr FigureKernels MakeFigureKernels() noexcept {
    return {FigureKernel<Lanes>::Row};
}

}  // namespace tidora
