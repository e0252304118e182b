#pragma once

#include "kajiura/Disc.h"
#include "kajiura/Lattice.h"
#include "kajiura/SampledGrid.h"
#include "simd/Dispatch.h"

namespace tidora {

/// Points that are handed over together. While one is filtered the next one is prepared, so only the first of a block
/// waits for its own preparation.
inline constexpr int kFilterBlock = 128;

/// Points whose ordered sums run side by side, since none of them can be split: a vector of the widest set, two or four
/// of the others, whose additions follow one another sooner than each of them is done.
inline constexpr int kSideBySide = 16;

/// The uplift that a call samples.
struct UpliftGrids {
    SampledGrid own;
    const SampledGrid* parent = nullptr;  ///< of the samples outside of `own`; null: they are 0
    bool isOwnFinite = false;             ///< every value of `own` is a finite number
};

/// A point to be filtered.
struct FilterPoint {
    float x, y;  ///< m; single on purpose: samples are offsets from here in single precision
    Disc disc;
};

/// Room for the terms of kSideBySide sums. A caller's, so that the kernels have no state.
struct FilterWork {
    float products[kSideBySide][kLatticeSamples + kWidestVector];
};

/// The kernel of one instruction set.
struct FilterKernels {
    /// Filtered values of 1 to kFilterBlock points. The same bits with every lane type, those of the sum in its literal
    /// order; any uplift and any place, also without a number. Any alignment. Reads no value outside of the grids;
    /// `work` needs no content. Safe to call from several threads, each with its own `work`.
    void (*filterPoints)(const UpliftGrids& grids, const FilterPoint* points, int count, FilterWork& work,
                         float* filtered) noexcept;
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct FilterKernelsOf {
    static const FilterKernels kTable;
};
template <>
const FilterKernels FilterKernelsOf<PlainLanes>::kTable;
template <>
const FilterKernels FilterKernelsOf<Avx2Lanes>::kTable;
template <>
const FilterKernels FilterKernelsOf<Avx512Lanes>::kTable;

}  // namespace tidora
