#pragma once

#include <cstddef>

#include "kajiura/ColumnUplift.h"
#include "kajiura/FilterKernels.h"
#include "kajiura/GridColumns.h"
#include "kajiura/KernelSeries.h"

namespace tidora {

inline constexpr int kSideBySide = 16;  ///< points whose sums are taken together

/// Calls uplift(part) for the parts from kFirst to before kEnd, and stores the products with the kernel from position
/// `begin` on, which lies in the first part. What lies behind the disc is overwritten by the next column.
/// kernelColumn, products: of position 0.
template <typename Lanes, int kFirst, int kEnd, typename Uplift>
[[gnu::always_inline]] inline void StoreParts(const float* kernelColumn, int begin, float* products,
                                              const Uplift& uplift) {
#pragma GCC unroll 5
    for (int part = kFirst; part < kEnd; ++part) {
        const std::ptrdiff_t at = std::ptrdiff_t{part} * kPartWidth;
        const auto product = uplift(part) * Lanes::LoadFloats8(kernelColumn + at);
        if (part == kFirst) {
            Lanes::StoreFloats8From(begin - kFirst * kPartWidth, products + at, product);
        } else {
            Lanes::StoreFloats8(products + at, product);
        }
    }
}

/// The same for the parts of column i that the disc touches, but for its last position in the middle column.
/// products: of the point.
template <typename Lanes, typename Uplift>
[[gnu::always_inline]] inline void StoreColumn(const float* kernelColumn, int i, float* products,
                                               const Uplift& uplift) {
    const int begin = kLattice.columns[i].begin;
    float* const column = products + kLattice.columns[i].start;
    if (begin < kPartWidth) {
        StoreParts<Lanes, 0, kParts>(kernelColumn, begin, column, uplift);
    } else if (begin == kPartWidth) {
        StoreParts<Lanes, 1, kParts>(kernelColumn, begin, column, uplift);
    } else {
        StoreParts<Lanes, 1, kParts - 1>(kernelColumn, begin, column, uplift);
    }
}

/// What a point needs before its samples are taken.
template <typename Lanes>
struct PreparedPoint {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeView<Lanes> own, parent;
    KernelByRadius<Lanes> kernel;
    bool isOwnEnough;  ///< samples outside the own grid have no uplift, or there are none

    void Open(const LatticeGrid& ownGrid, const LatticeGrid& parentGrid, const LatticePoint& point) {
        const float step = 0.25F * point.depth;
        kernel.Start(point.depth, step);
        own.Open(ownGrid, point, step);
        isOwnEnough = own.IsInside();
        if (parentGrid.values != nullptr) {
            parent.Open(parentGrid, point, step);
        } else if (own.places.hasCells && ownGrid.isFinite && point.depth < kDeepest) {
            isOwnEnough = true;
        }
    }

private:
    static constexpr float kDeepest = 1.0e18F;  ///< up to here, m, every value of the kernel is finite
};

/// The products eta G of one point, in the order of the sum. Makes the kernel of the next one meanwhile.
template <typename Lanes>
class PointProducts {
public:
    PointProducts(const LatticeGrid& own, const LatticeGrid& parent, const PreparedPoint<Lanes>& point,
                  KernelByRadius<Lanes>& nextKernel, KernelColumns<Lanes>& kernelColumns, float* products)
        : m_own(own),
          m_parent(parent),
          m_point(point),
          m_kernel(point.kernel.Values()),
          m_nextKernel(nextKernel),
          m_kernelColumns(kernelColumns),
          m_products(products) {}

    [[gnu::always_inline]] inline void Fill() {
        if (m_point.isOwnEnough) {
            FillFromOwn();
        } else {
            FillFromBoth();
        }
        FillTip(0, kLatticeHalfWidth);
        FillTip(kLatticeHalfWidth, kLast);
        FillTip(kLast, kLatticeHalfWidth);
        m_nextKernel.Finish();
    }

private:
    static constexpr int kLast = kLatticeWidth - 1;

    /// Rows without a cell weigh 0, and columns without one are left out: zeros of either sign leave the sum as it is.
    /// Columns with cells are neighbours, since positions only ascend.
    [[gnu::always_inline]] inline void FillFromOwn() {
        const int* const columnCells = m_point.own.columns.cell;
        int i = 1;
        m_kernelColumns.Spread(m_kernel, kLattice.columns[i].distance);
        while (i < kLast && columnCells[i] < 0) {
            ++i;
            m_kernelColumns.Spread(m_kernel, kLattice.columns[i].distance);
        }
        int end = kLast;
        while (end > i && columnCells[end - 1] < 0) {
            --end;
        }
        FillZeros(1, i);
        ColumnValues<Lanes> values[2];
        CellColumns<Lanes> cells(values);
        for (; i < kLatticeHalfWidth && i < end; ++i) {
            m_kernelColumns.Spread(m_kernel, kLatticeHalfWidth - i - 1);  // a column ahead
            FillColumnFromOwn(i, cells);
        }
        for (; i < end; ++i) {
            FillColumnFromOwn(i, cells);
        }
        FillZeros(end, kLast);  // NOLINT(readability-suspicious-call-argument): `end` is where zeros begin
    }
    [[gnu::always_inline]] inline void FillColumnFromOwn(int i, CellColumns<Lanes>& cells) {
        const LatticeView<Lanes>& view = m_point.own;
        m_nextKernel.Advance();
        cells.MoveTo(view.columns.cell[i], m_own, view.places);
        const ColumnUplift<Lanes> uplift(view, cells, i);
        const auto partOf = [&](int part) __attribute__((always_inline)) {
            return uplift.Of(part);
        };
        StoreColumn<Lanes>(m_kernelColumns.Of(kLattice.columns[i].distance), i, m_products, partOf);
    }
    /// Columns from `first` to before `end`.
    void FillZeros(int first, int end) {
        const Lattice::Column& from = kLattice.columns[first];
        const Lattice::Column& to = kLattice.columns[end];
        for (int at = from.start + from.begin; at < to.start + to.begin; ++at) {
            m_products[at] = 0.0F;
        }
    }

    /// Where the grid has cells, the parent where it has, 0 elsewhere.
    [[gnu::noinline]] void FillFromBoth() {
        const bool hasParent = m_parent.values != nullptr;
        ColumnValues<Lanes> ownValues[2], parentValues[2];
        CellColumns<Lanes> ownCells(ownValues), parentCells(parentValues);
        for (int distance = 0; distance < kLatticeHalfWidth; ++distance) {
            m_kernelColumns.Spread(m_kernel, distance);
        }
        for (int i = 1; i < kLast; ++i) {
            m_nextKernel.Advance();
            const int distance = kLattice.columns[i].distance;
            const auto store = [&](const auto& uplift) {
                StoreColumn<Lanes>(m_kernelColumns.Of(distance), i, m_products, uplift);
            };
            const auto none = Lanes::ZeroFloats8();
            const bool hasOwn = m_point.own.columns.cell[i] >= 0 && m_point.own.places.hasCells;
            if (hasOwn) {
                ownCells.MoveTo(m_point.own.columns.cell[i], m_own, m_point.own.places);
            }
            const bool hasBelow = hasParent && m_point.parent.columns.cell[i] >= 0 && m_point.parent.places.hasCells;
            if (hasBelow) {
                parentCells.MoveTo(m_point.parent.columns.cell[i], m_parent, m_point.parent.places);
            }
            if (hasOwn && hasBelow) {
                const ColumnUplift<Lanes> uplift(m_point.own, ownCells, i), below(m_point.parent, parentCells, i);
                store([&](int part) { return uplift.Of(part, below.Of(part, none)); });
            } else if (hasOwn) {
                const ColumnUplift<Lanes> uplift(m_point.own, ownCells, i);
                store([&](int part) { return uplift.Of(part, none); });
            } else if (hasBelow) {
                const ColumnUplift<Lanes> below(m_point.parent, parentCells, i);
                store([&](int part) { return below.Of(part, none); });
            } else {
                store([&](int /*part*/) { return none; });
            }
        }
    }

    /// One product at a tip of the disc.
    void FillTip(int i, int j) {
        float uplift = 0.0F;
        if (m_point.own.HasCell(i, j)) {
            uplift = m_point.own.Uplift(m_own, i, j);
        } else if (m_parent.values != nullptr && m_point.parent.HasCell(i, j)) {
            uplift = m_point.parent.Uplift(m_parent, i, j);
        }
        m_products[kLattice.columns[i].start + j] = uplift * m_kernel[kLattice.radiusIndex[kLatticeHalfWidth][0]];
    }

    const LatticeGrid& m_own;
    const LatticeGrid& m_parent;
    const PreparedPoint<Lanes>& m_point;
    const float* m_kernel;
    KernelByRadius<Lanes>& m_nextKernel;
    KernelColumns<Lanes>& m_kernelColumns;
    float* m_products;
};

/// The products of one point after the other. While those of one are filled, the next one is prepared.
template <typename Lanes>
class ProductsInTurn {
public:
    ProductsInTurn(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count)
        : m_own(own), m_parent(parent), m_points(points), m_count(count) {
        m_prepared[0].Open(own, parent, points[0]);
        m_prepared[0].kernel.Finish();
    }

    void Fill(float* products) {
        PreparedPoint<Lanes>& current = m_prepared[m_at % 2];
        ++m_at;
        PreparedPoint<Lanes>& next = m_prepared[m_at % 2];
        if (m_at < m_count) {
            next.Open(m_own, m_parent, m_points[m_at]);
        }
        PointProducts<Lanes>(m_own, m_parent, current, next.kernel, m_kernelColumns, products).Fill();
    }

private:
    const LatticeGrid &m_own, &m_parent;
    const LatticePoint* m_points;
    int m_count, m_at = 0;
    PreparedPoint<Lanes> m_prepared[2];
    KernelColumns<Lanes> m_kernelColumns;
};

/// sum = sum + (product s) s over the samples in their order, for kSideBySide points.
template <typename Lanes>
void Sum(const float (&products)[kSideBySide][kLatticeSamples + kChunk], const float* steps, float* sums) {
    using Floats = typename Lanes::Floats;
    constexpr int kFloats = Lanes::kFloats;
    constexpr int kGroups = kSideBySide / kFloats;
    constexpr std::ptrdiff_t kStride = kLatticeSamples + kChunk;
    Floats sum[kGroups], step[kGroups];
    for (int group = 0; group < kGroups; ++group) {
        sum[group] = Lanes::AllFloats(0.0F);
        step[group] = Lanes::LoadFloats(steps + std::ptrdiff_t{group} * kFloats);
    }
    for (int sample = 0; sample < kLatticeSamples; sample += 4) {
        const int count = kLatticeSamples - sample < 4 ? kLatticeSamples - sample : 4;
#pragma GCC unroll 2
        for (int group = 0; group < kGroups; ++group) {
            // Four samples of each point become four points of each sample.
            const float* const from = products[std::ptrdiff_t{group} * kFloats] + sample;
            const Floats a = Lanes::LoadQuarters(from, 4 * kStride);
            const Floats b = Lanes::LoadQuarters(from + kStride, 4 * kStride);
            const Floats c = Lanes::LoadQuarters(from + 2 * kStride, 4 * kStride);
            const Floats d = Lanes::LoadQuarters(from + 3 * kStride, 4 * kStride);
            const Floats ab = Lanes::FirstPairs(a, b), cd = Lanes::FirstPairs(c, d), ab2 = Lanes::LastPairs(a, b),
                         cd2 = Lanes::LastPairs(c, d);
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

template <typename Lanes>
void FilterPoints(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                  float* filtered) {
    constexpr double kPi = 3.141592653589793;
    static thread_local float products[kSideBySide][kLatticeSamples + kChunk];
    ProductsInTurn<Lanes> turns(own, parent, points, count);
    for (int first = 0; first < count; first += kSideBySide) {
        const int number = count - first < kSideBySide ? count - first : kSideBySide;
        float steps[kSideBySide] = {};
        for (int p = 0; p < number; ++p) {
            turns.Fill(products[p]);
            steps[p] = 0.25F * points[first + p].depth;
        }
        float sums[kSideBySide] = {};
        Sum<Lanes>(products, steps, sums);
        for (int p = 0; p < number; ++p) {
            filtered[first + p] = static_cast<float>(static_cast<double>(sums[p] * points[first + p].depth) / kPi);
        }
    }
}

template <typename Lanes>
constexpr FilterKernels MakeFilterKernels() {
    return {&FilterPoints<Lanes>};
}

}  // namespace tidora
