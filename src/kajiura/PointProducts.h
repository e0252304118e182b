#pragma once

#include <cstddef>

#include "kajiura/ColumnUplift.h"
#include "kajiura/FilterKernels.h"
#include "kajiura/GridColumns.h"
#include "kajiura/KernelSeries.h"

namespace tidora {

/// Stores the products of uplift and kernel of one lattice column, in whole parts. Single precision, one rounding; any
/// alignment. The column's first part starts with the disc; what is written after its end is overwritten by the next
/// column, or is room that FilterWork has.
template <typename Lanes>
struct ColumnProducts {
    /// Parts kFirst to before kEnd, the positions from `begin` on, which lies in the first part. kernelColumn,
    /// products: of position 0. uplift(part): of eight positions.
    template <int kFirst, int kEnd, typename Uplift>
    [[gnu::always_inline]] static inline void StoreParts(const float* kernelColumn, int begin, float* products,
                                                         const Uplift& uplift) noexcept {
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

    /// The parts of column i that the disc touches, but for its last position in the middle column. products: of the
    /// point. Which parts these are is known to the compiler in every branch, so that no loop is left; a column whose
    /// disc starts with a part also ends with the first position of one.
    template <int kFirst = 0, typename Uplift>
    [[gnu::always_inline]] static inline void Store(const float* kernelColumn, int i, float* products,
                                                    const Uplift& uplift) noexcept {
        constexpr int kNext = (kFirst + 1) * kPartWidth;
        const int begin = kLattice.columns[i].begin;
        float* const column = products + kLattice.columns[i].start;
        if (begin < kNext) {
            StoreParts<kFirst, kParts - kFirst>(kernelColumn, begin, column, uplift);
        } else if (begin == kNext) {
            StoreParts<kFirst + 1, kParts - kFirst>(kernelColumn, begin, column, uplift);
        } else if constexpr (kNext <= kLattice.columns[1].begin) {
            Store<kFirst + 1>(kernelColumn, i, products, uplift);
        }
    }
};

/// What a point needs before its samples are taken.
template <typename Lanes>
struct PreparedPoint {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeView<Lanes> own, parent;
    KernelByRadius<Lanes> kernel;
    bool isOwnEnough;  ///< no sample needs another grid, nor more than a weight of 0 where this one has no cell

    void Open(const UpliftGrids& grids, const FilterPoint& point) noexcept {
        kernel.Start(point.disc);
        own.Open(grids.own.shape, point);
        isOwnEnough = own.IsInside();
        if (grids.parent != nullptr) {
            parent.Open(grids.parent->shape, point);
        } else if (own.places.hasCells && grids.isOwnFinite && point.disc.hasFiniteKernel) {
            isOwnEnough = true;
        }
    }
};

/// The products eta G of one point, in the order of the sum. Makes the kernel of the next one meanwhile. The same bits
/// with every lane type; only the sign of a zero may differ from the literal product, which no sum shows.
template <typename Lanes>
class PointProducts {
public:
    PointProducts(const UpliftGrids& grids, const PreparedPoint<Lanes>& point, KernelByRadius<Lanes>& nextKernel,
                  KernelColumns<Lanes>& kernelColumns, float* products) noexcept
        : m_grids(grids),
          m_point(point),
          m_kernel(point.kernel.Values()),
          m_nextKernel(nextKernel),
          m_kernelColumns(kernelColumns),
          m_products(products) {}

    // The inlining is asked for: without it compilers keep the lattice's addresses in memory between the columns.
    [[gnu::always_inline]] inline void Fill() noexcept {
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
    /// Columns with cells are neighbours, since places only ascend (or descend, where the spacing is negative).
    [[gnu::always_inline]] inline void FillFromOwn() noexcept {
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
        // Columns east of the middle have the kernel of their mirror image.
        for (; i < kLatticeHalfWidth && i < end; ++i) {
            m_kernelColumns.Spread(m_kernel, kLatticeHalfWidth - i - 1);  // a column before its use
            FillColumnFromOwn(i, cells);
        }
        for (; i < end; ++i) {
            FillColumnFromOwn(i, cells);
        }
        FillZeros(end, kLast);  // NOLINT(readability-suspicious-call-argument): `end` is where zeros begin
    }
    [[gnu::always_inline]] inline void FillColumnFromOwn(int i, CellColumns<Lanes>& cells) noexcept {
        const LatticeView<Lanes>& view = m_point.own;
        m_nextKernel.Advance();
        cells.MoveTo(view.columns.cell[i], m_grids.own, view.places);
        const ColumnUplift<Lanes> uplift(view, cells, i);
        const auto partOf = [&](int part) __attribute__((always_inline)) {
            return uplift.Of(part);
        };
        ColumnProducts<Lanes>::Store(m_kernelColumns.Of(kLattice.columns[i].distance), i, m_products, partOf);
    }
    /// Columns from `first` to before `end`.
    void FillZeros(int first, int end) noexcept {
        const Lattice::Column& from = kLattice.columns[first];
        const Lattice::Column& to = kLattice.columns[end];
        for (int at = from.start + from.begin; at < to.start + to.begin; ++at) {
            m_products[at] = 0.0F;
        }
    }

    /// Where the grid has cells, the parent where it has, 0 elsewhere. Apart from FillFromOwn, which it would slow
    /// down.
    [[gnu::noinline]] void FillFromBoth() noexcept {
        ColumnValues<Lanes> ownValues[2], parentValues[2];
        CellColumns<Lanes> ownCells(ownValues), parentCells(parentValues);
        for (int distance = 0; distance < kLatticeHalfWidth; ++distance) {
            m_kernelColumns.Spread(m_kernel, distance);
        }
        for (int i = 1; i < kLast; ++i) {
            m_nextKernel.Advance();
            const bool hasOwn = MoveTo(i, &m_grids.own, m_point.own, ownCells);
            const bool hasBelow = MoveTo(i, m_grids.parent, m_point.parent, parentCells);
            const auto store = [&](const auto& uplift) {
                const float* const kernelColumn = m_kernelColumns.Of(kLattice.columns[i].distance);
                ColumnProducts<Lanes>::Store(kernelColumn, i, m_products, uplift);
            };
            const auto none = Lanes::ZeroFloats8();
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
    /// Moves to the grid columns of lattice column i; false where the grid, null for none, has no cell for any of it.
    [[gnu::always_inline]] static inline bool MoveTo(int i, const SampledGrid* grid, const LatticeView<Lanes>& view,
                                                     CellColumns<Lanes>& cells) noexcept {
        if (grid == nullptr || view.columns.cell[i] < 0 || !view.places.hasCells) {
            return false;
        }
        cells.MoveTo(view.columns.cell[i], *grid, view.places);
        return true;
    }

    /// One product at a tip of the disc.
    void FillTip(int i, int j) noexcept {
        float uplift = 0.0F;
        if (m_point.own.HasCell(i, j)) {
            uplift = m_point.own.Uplift(m_grids.own, i, j);
        } else if (m_grids.parent != nullptr && m_point.parent.HasCell(i, j)) {
            uplift = m_point.parent.Uplift(*m_grids.parent, i, j);
        }
        m_products[kLattice.columns[i].start + j] = uplift * m_kernel[kLattice.radiusIndex[kLatticeHalfWidth][0]];
    }

    const UpliftGrids& m_grids;
    const PreparedPoint<Lanes>& m_point;
    const float* m_kernel;
    KernelByRadius<Lanes>& m_nextKernel;
    KernelColumns<Lanes>& m_kernelColumns;
    float* m_products;
};

}  // namespace tidora
