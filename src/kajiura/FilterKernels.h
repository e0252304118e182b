#pragma once

#include "kajiura/Lattice.h"
#include "simd/Dispatch.h"

namespace tidora {

inline constexpr int kLatticeBlock = 128;  ///< points that are handed over together

/// The grids that are sampled, as plain numbers: what the kernels of all instruction sets share.
struct LatticeGrid {
    int nx, ny;
    double orgX, orgY;
    float dx;
    const float* values;  ///< null: no such grid
    bool isFinite;        ///< every value is a number
};

/// A point to be filtered: its place, m, and the water depth there, m.
struct LatticePoint {
    float x, y, depth;
};

/// The kernel of one instruction set.
struct FilterKernels {
    /// Filtered values of `count` (at most kLatticeBlock) points.
    void (*filterPoints)(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                         float* filtered);
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
