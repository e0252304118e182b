#pragma once

// How the batched kernels walk through their points.
// A template over the lane type, for sources that are compiled for one instruction set each. Every function is a member
// of it: none may be shared with code that runs on any machine, and none of the standard library is used.

#include <cstddef>
#include <cstdint>

#include "okada/batch/SurfaceBatch.h"

namespace tidora {

template <typename Lanes>
class KernelSteps {
public:
    using Mask = typename Lanes::Mask;
    static constexpr std::size_t kLanes = Lanes::kDoubles;

    /// Steps whose first halves are done before their second halves. A step is a long chain of operations; two shorter
    /// chains, each of many steps, leave the processor fewer gaps. What lies between them, 21 vectors a step, stays in
    /// the first-level cache: 11 KiB for the widest lanes.
    static constexpr std::size_t kGroup = 8;

    /// A step does `kLanes` points: first(points, between) and then second(between, displacements), which returns the
    /// mask of the lanes that it could not do. Their numbers go to `singular`; returns how many. The last step works on
    /// a copy, filled up with zeros: nothing beyond `points.count` is read or written.
    template <bool kHorizontal, typename Between, typename First, typename Second>
    static std::size_t ForEach(const SurfacePoints& points, const SurfaceDisplacements& out, std::uint16_t* singular,
                               First first, Second second) noexcept {
        std::size_t singularCount = 0;
        Between between[kGroup];
        const std::size_t whole = points.count / kLanes * kLanes;
        for (std::size_t begin = 0; begin < whole; begin += kGroup * kLanes) {
            const std::size_t left = (whole - begin) / kLanes;
            const std::size_t steps = left < kGroup ? left : kGroup;
            for (std::size_t k = 0; k < steps; ++k) {
                const std::size_t at = begin + k * kLanes;
                first({kLanes, points.x + at, points.y + at, points.depth + at}, between[k]);
            }
            for (std::size_t k = 0; k < steps; ++k) {
                const std::size_t at = begin + k * kLanes;
                const SurfaceDisplacements u = {kHorizontal ? out.ux + at : nullptr,
                                                kHorizontal ? out.uy + at : nullptr, out.uz + at};
                singularCount += Note(second(between[k], u), at, kLanes, singular + singularCount);
            }
        }
        const std::size_t at = whole;
        if (at < points.count) {
            const std::size_t count = points.count - at;
            float in[3][kLanes] = {}, u[3][kLanes];
            for (std::size_t lane = 0; lane < count; ++lane) {
                in[0][lane] = points.x[at + lane];
                in[1][lane] = points.y[at + lane];
                in[2][lane] = points.depth[at + lane];
            }
            first({kLanes, in[0], in[1], in[2]}, between[0]);
            singularCount += Note(second(between[0], {u[0], u[1], u[2]}), at, count, singular + singularCount);
            for (std::size_t lane = 0; lane < count; ++lane) {
                out.uz[at + lane] = u[2][lane];
                if constexpr (kHorizontal) {
                    out.ux[at + lane] = u[0][lane];
                    out.uy[at + lane] = u[1][lane];
                }
            }
        }
        return singularCount;
    }

private:
    /// Writes the numbers of the lanes of `mask` among the first `lanes`, the first of which has the number `at`;
    /// returns how many.
    static std::size_t Note(const Mask& mask, std::size_t at, std::size_t lanes, std::uint16_t* numbers) noexcept {
        std::size_t count = 0;
        for (unsigned left = Lanes::BitsOf(mask), lane = 0; left != 0 && lane < lanes; left >>= 1U, ++lane) {
            if ((left & 1U) != 0) {
                numbers[count++] = static_cast<std::uint16_t>(at + lane);
            }
        }
        return count;
    }
};

}  // namespace tidora
