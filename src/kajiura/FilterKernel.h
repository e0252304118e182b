#pragma once

// The filter of a block of points, once for all lane types. Included by one short source per instruction set.
//
// Every operation, its precision and its order are those of one sample after the other:
//     sum = sum + ((eta G) s) s,  i from -20 to 20 and within it j from -20 to 20, i^2 + j^2 <= 20^2
//     filtered = sum d / pi
// with eta the uplift, G the kernel, s the step and d the depth. What does not depend on i, on j, or on more than
// i^2 + j^2, is done once a point: cells and weights (LatticeAxis.h), the kernel (KernelSeries.h). Vectors run along j,
// where the products are independent (PointProducts.h); the sums, whose order is fixed, run side by side for several
// points.
//
// Everything here is a template over the lane type, and nothing of the standard library is called: a function that
// several instruction sets' sources share by name would be linked once, with the instructions of any of them.

#include <cstddef>

#include "kajiura/FilterKernels.h"
#include "kajiura/KernelSeries.h"
#include "kajiura/PointProducts.h"

namespace tidora {

/// The products of one point after the other. While those of one are filled, the next one is prepared.
template <typename Lanes>
class ProductsInTurn {
public:
    /// Requires: count is at least 1.
    ProductsInTurn(const UpliftGrids& grids, const FilterPoint* points, int count) noexcept
        : m_grids(grids), m_points(points), m_count(count) {
        m_prepared[0].Open(grids, points[0]);
        m_prepared[0].kernel.Finish();
    }

    // Inlined, here and below, as a compiler would do by itself with what is called in one place and known in one
    // source: 2 percent on AVX-512.
    [[gnu::always_inline]] inline void FillRow(FilterWork& work, int row) noexcept {
        PreparedPoint<Lanes>& current = m_prepared[m_at % 2];
        ++m_at;
        PreparedPoint<Lanes>& next = m_prepared[m_at % 2];
        if (m_at < m_count) {
            next.Open(m_grids, m_points[m_at]);
        }
        PointProducts<Lanes>(m_grids, current, next.kernel, m_kernelColumns, work.products[row]).Fill();
    }

private:
    const UpliftGrids& m_grids;
    const FilterPoint* m_points;
    int m_count, m_at = 0;
    PreparedPoint<Lanes> m_prepared[2];
    KernelColumns<Lanes> m_kernelColumns;
};

/// sum = sum + (product s) s over the samples in their order, for kSideBySide points. Single precision, the same bits
/// with every lane type; any alignment. steps, sums: kSideBySide values.
template <typename Lanes>
[[gnu::always_inline]] inline void SumInOrder(const FilterWork& work, const float* steps, float* sums) noexcept {
    using Floats = typename Lanes::Floats;
    constexpr int kFloats = Lanes::kFloats;
    constexpr int kGroups = kSideBySide / kFloats;
    constexpr std::ptrdiff_t kStride = sizeof work.products[0] / sizeof work.products[0][0];
    Floats sum[kGroups], step[kGroups];
    for (int group = 0; group < kGroups; ++group) {
        sum[group] = Lanes::AllFloats(0.0F);
        step[group] = Lanes::LoadFloats(steps + std::ptrdiff_t{group} * kFloats);
    }
    for (int sample = 0; sample < kLatticeSamples; sample += 4) {
        const int count = kLatticeSamples - sample < 4 ? kLatticeSamples - sample : 4;
#pragma GCC unroll 4
        for (int group = 0; group < kGroups; ++group) {
            // Four samples of each point become four points of each sample.
            const float* const from = work.products[std::ptrdiff_t{group} * kFloats] + sample;
            const Floats a = Lanes::LoadQuarters(from, 4 * kStride);
            const Floats b = Lanes::LoadQuarters(from + kStride, 4 * kStride);
            const Floats c = Lanes::LoadQuarters(from + 2 * kStride, 4 * kStride);
            const Floats d = Lanes::LoadQuarters(from + 3 * kStride, 4 * kStride);
            const Floats ab = Lanes::FirstPairs(a, b), ab2 = Lanes::LastPairs(a, b);
            const Floats cd = Lanes::FirstPairs(c, d), cd2 = Lanes::LastPairs(c, d);
            const Floats samples[4] = {Lanes::FirstHalves(ab, cd), Lanes::LastHalves(ab, cd),
                                       Lanes::FirstHalves(ab2, cd2), Lanes::LastHalves(ab2, cd2)};
#pragma GCC unroll 4
            for (int of = 0; of < 4; ++of) {
                if (of < count) {
                    sum[group] = sum[group] + samples[of] * step[group] * step[group];
                }
            }
        }
    }
    for (int group = 0; group < kGroups; ++group) {
        Lanes::StoreFloats(sums + std::ptrdiff_t{group} * kFloats, sum[group]);
    }
}

/// FilterKernels::filterPoints.
template <typename Lanes>
void FilterPoints(const UpliftGrids& grids, const FilterPoint* points, int count, FilterWork& work,
                  float* filtered) noexcept {
    constexpr double kPi = 3.141592653589793;
    ProductsInTurn<Lanes> turns(grids, points, count);
    for (int first = 0; first < count; first += kSideBySide) {
        const int number = count - first < kSideBySide ? count - first : kSideBySide;
        float steps[kSideBySide] = {};
        for (int p = 0; p < number; ++p) {
            turns.FillRow(work, p);
            steps[p] = points[first + p].disc.step;
        }
        float sums[kSideBySide] = {};
        SumInOrder<Lanes>(work, steps, sums);
        for (int p = 0; p < number; ++p) {
            const float depth = points[first + p].disc.depth;
            filtered[first + p] = static_cast<float>(static_cast<double>(sums[p] * depth) / kPi);
        }
    }
}

template <typename Lanes>
constexpr FilterKernels MakeFilterKernels() noexcept {
    return {&FilterPoints<Lanes>};
}

}  // namespace tidora
