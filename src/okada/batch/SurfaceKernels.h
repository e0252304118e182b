#pragma once

#include <cstddef>
#include <cstdint>

#include "okada/batch/SurfaceBatch.h"
#include "simd/Dispatch.h"

namespace tidora {

/// Points of one call: the numbers of the singular ones, 16 bits each, take 2 KiB of the stack.
inline constexpr std::size_t kKernelPoints = 1024;

// The constants of the scalar routines once more: their header has inline functions, which no kernel may share with
// code for any machine.
inline constexpr double kKernelEpsilon = 1.0e-6;  ///< m: kOkadaEpsilon
inline constexpr double kKernelTwoPi = 6.283185307179586;
inline constexpr double kKernelOverTwoPi = 1.0 / kKernelTwoPi;
/// m. One inverse serves R (R + xi) (R + eta) (R + d~) of all four corners: sixteen lengths, each up to 2 R but for R
/// itself. Up to here their product stays below 1e244; from some 1e19 on it would leave the double range.
inline constexpr double kKernelLargest = 1.0e15;

/// A rectangle with what all its points share.
struct FiniteKernelSource {
    double sd, cd;   ///< sine and cosine of the dip, clamped
    double a3;       ///< (1 - alpha) / alpha
    float al1, al2;  ///< single on purpose: subtracted from x in single precision, as dc3d_ does
    double aw1, aw2;
    double strikeSlip, dipSlip;  ///< divided by 2 pi: the division of the scalar routine, once for all points
    double noise;                ///< displacements below this take the scalar routine, which alone repeats its noise
};

/// A point source with what all its points share.
struct PointKernelSource {
    double sd, cd, a3;
    double strikePotency, dipPotency;
};

/// The kernels of one instruction set, for at most kKernelPoints points. They write the numbers of the points that must
/// take the scalar routine to `singular`, and return how many there are.
struct SurfaceKernels {
    using Finite = std::size_t (*)(const FiniteKernelSource&, const SurfacePoints&, const SurfaceDisplacements&,
                                   std::uint16_t* singular);
    using Point = std::size_t (*)(const PointKernelSource&, const SurfacePoints&, const SurfaceDisplacements&,
                                  std::uint16_t* singular);
    Finite finite[2][2];  ///< [with horizontal][vertical dip]: what is not asked for is not computed
    Point point[2];       ///< [with horizontal]: its formulas hold for every dip
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct SurfaceKernelsOf {
    static const SurfaceKernels kTable;
};
template <>
const SurfaceKernels SurfaceKernelsOf<PlainLanes>::kTable;
template <>
const SurfaceKernels SurfaceKernelsOf<Avx2Lanes>::kTable;
template <>
const SurfaceKernels SurfaceKernelsOf<Avx512Lanes>::kTable;

}  // namespace tidora
