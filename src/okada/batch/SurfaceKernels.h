#pragma once

#include <cstddef>
#include <cstdint>

#include "okada/batch/SurfaceBatch.h"
#include "simd/Dispatch.h"

namespace tidora {

inline constexpr std::size_t kKernelPoints = 1024;  ///< of one call: the numbers of the singular ones are on the stack

inline constexpr double kKernelEpsilon = 1.0e-6;  ///< as in the scalar routines
inline constexpr double kKernelTwoPi = 6.283185307179586;
inline constexpr double kKernelOverTwoPi = 1.0 / kKernelTwoPi;
/// Beyond this distance the products of four factors would come near the end of the double range.
inline constexpr double kKernelLargest = 1.0e15;

/// A rectangle with what all its points share.
struct FiniteKernelSource {
    double sd, cd;   ///< sine and cosine of the dip, clamped
    double a3;       ///< (1 - alpha) / alpha
    float al1, al2;  ///< single on purpose: subtracted from x in single precision
    double aw1, aw2;
    double strikeSlip, dipSlip;  ///< divided by 2 pi
    double noise;                ///< displacements below this take the scalar routine
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
    Finite finite[2][2];  ///< [with horizontal][vertical dip]
    Point point[2];       ///< [with horizontal]
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
