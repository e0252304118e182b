#pragma once

#include <cstddef>

#include "kajiura/LatticeAxis.h"
#include "kajiura/SampledGrid.h"

namespace tidora {

/// So many loads of whole vectors bring what a lattice column needs of a grid column.
template <typename Lanes>
inline constexpr int kFetches = (kParts * kPartWidth + Lanes::kFloats - 1) / Lanes::kFloats;
template <typename Lanes>
inline constexpr int kFetched = kFetches<Lanes>* Lanes::kFloats;

/// All bits set after the last part: as cells, none.
template <typename Lanes>
struct NoPosition {
    int lanes[kFetched<Lanes>] = {};
    constexpr NoPosition() noexcept {
        for (int at = kParts * kPartWidth; at < kFetched<Lanes>; ++at) {
            lanes[at] = -1;
        }
    }
};
template <typename Lanes>
inline constexpr NoPosition<Lanes> kNoPosition = {};

/// Where the values at the lattice's rows lie in a grid column. The cells of neighbouring positions lie close to each
/// other: two loads and a permutation bring the values of a vector, unless the lattice is about twice as wide as the
/// grid. Integers; any alignment.
template <typename Lanes>
struct RowPlaces {  // NOLINT(cppcoreguidelines-pro-type-member-init): Fill() fills it
    static constexpr int kFloats = Lanes::kFloats;

    alignas(64) int near[kFetched<Lanes>];  ///< cell, from `first` of its kFloats positions; 0 without a cell
    alignas(64) int far[kFetched<Lanes>];   ///< its far corner
    int first[kFetches<Lanes>];             ///< the least cell of kFloats positions
    int lastPlain;  ///< the last grid column that has 2 kFloats values from each `first`, with all corners among them
    bool hasCells;  ///< any row has

    void Fill(const LatticeAxis<Lanes>& rows, const GridShape& shape) noexcept {
        int furthest = 0;
        int widest = 0;
        hasCells = false;
#pragma GCC unroll 10
        for (int fetch = 0; fetch < kFetches<Lanes>; ++fetch) {
            const int begin = fetch * kFloats;
            const auto cells = Lanes::Or(Lanes::LoadIntegers(rows.cell + begin),
                                         Lanes::LoadIntegers(kNoPosition<Lanes>.lanes + begin));
            const int least = Lanes::LeastOf(cells);  // -1 only where all are
            hasCells = hasCells || least >= 0;
            first[fetch] = least >= 0 ? least : 0;
            const auto offsets = Lanes::NotNegative(Lanes::Minus(cells, first[fetch]));
            Lanes::StoreIntegers(near + begin, offsets);
            Lanes::StoreIntegers(far + begin, Lanes::Minus(offsets, -1));
            const int most = Lanes::GreatestOf(offsets);
            widest = most > widest ? most : widest;
            furthest = first[fetch] > furthest ? first[fetch] : furthest;
        }
        // Values after a column's end are not picked, but they are read: not after the end of the grid.
        constexpr int kLoaded = 2 * kFloats;
        const std::ptrdiff_t spare = static_cast<std::ptrdiff_t>(shape.nx) * shape.ny - furthest - kLoaded;
        lastPlain = widest + 1 < kLoaded && spare >= 0 ? static_cast<int>(spare / shape.ny) : -1;
    }
};

/// The corner values of one grid column at the lattice's rows: of the cell's near and of its far row. Copies: any bits
/// stay. The size is a power of two with the lattice of 41 rows, so that the address of either of two takes one
/// instruction.
template <typename Lanes>
struct alignas(512) ColumnValues {
    alignas(64) float nearRow[kFetched<Lanes>];
    alignas(64) float farRow[kFetched<Lanes>];

    /// from: the grid column; isPlain: it is not after RowPlaces::lastPlain.
    void Fill(const float* from, const RowPlaces<Lanes>& places, bool isPlain) noexcept {
#pragma GCC unroll 10
        for (int fetch = 0; fetch < kFetches<Lanes>; ++fetch) {
            const int begin = fetch * Lanes::kFloats;
            const float* const first = from + places.first[fetch];
            const auto near = Lanes::LoadIntegers(places.near + begin);
            const auto far = Lanes::LoadIntegers(places.far + begin);
            if constexpr (Lanes::kPicksFast) {
                if (isPlain) {
                    const auto low = Lanes::LoadFloats(first);
                    const auto high = Lanes::LoadFloats(first + Lanes::kFloats);
                    Lanes::StoreFloats(nearRow + begin, Lanes::Picked(low, near, high));
                    Lanes::StoreFloats(farRow + begin, Lanes::Picked(low, far, high));
                    continue;
                }
            }
            Lanes::StoreFloats(nearRow + begin, Lanes::Gathered(first, near));
            Lanes::StoreFloats(farRow + begin, Lanes::Gathered(first, far));
        }
    }
};

/// The grid columns on both sides of the current cell. Their values lie apart, so that the rest stays in registers.
template <typename Lanes>
class CellColumns {
public:
    explicit CellColumns(ColumnValues<Lanes> (&values)[2]) noexcept : m_values(values) {}

    /// Consecutive lattice columns mostly share grid columns, or follow one another's.
    [[gnu::always_inline]] inline void MoveTo(int cell, const SampledGrid& grid,
                                              const RowPlaces<Lanes>& places) noexcept {
        if (cell == m_column) {
            return;
        }
        const float* const from = grid.values + static_cast<std::ptrdiff_t>(cell) * grid.shape.ny;
        if (cell == m_column + 1) {
            m_near ^= 1U;  // what was far is near
        } else {
            m_values[m_near].Fill(from, places, cell <= places.lastPlain);
        }
        m_values[m_near ^ 1U].Fill(from + grid.shape.ny, places, cell < places.lastPlain);
        m_column = cell;
    }
    [[nodiscard]] const ColumnValues<Lanes>& Near() const noexcept { return m_values[m_near]; }
    [[nodiscard]] const ColumnValues<Lanes>& Far() const noexcept { return m_values[m_near ^ 1U]; }

private:
    ColumnValues<Lanes>* m_values;
    std::size_t m_near = 0;
    int m_column = -2;  ///< the near one; none yet, nor the one before the first
};

}  // namespace tidora
