#pragma once

#include <cstddef>

#include "simd/Dispatch.h"

namespace tidora {

inline constexpr std::size_t kKrugerTerms = 6;  ///< as many as PROJ has: fewer differ from it, more would too

/// What the points of a column share; angles from the central meridian.
struct ZoneColumnSource {
    double sine, cosine;  ///< of the longitude
    double versine;       ///< 1 - cosine, without its cancellation
    double scaledRadius;  ///< metres of the plane per radian of xi and eta
    double falseEasting;  ///< m
    /// Krueger's six terms as a polynomial of 2 cos(zeta), see ZonePlaneKernel.h: dimensionless, lowest power first.
    double series[kKrugerTerms];
};

/// The most points of a step. A kernel reads whole steps: the row tables end with as many values that no row has.
inline constexpr std::size_t kZoneStepPoints = 8;

/// What the points of a row share; all rows of a grid.
struct ZoneRowTables {
    const double *sine, *cosine;  ///< of the conformal latitude
    const double* northing;       ///< scaledRadius times the conformal latitude, m
};

/// The kernel of one instruction set: writes plane co-ordinates, m, of the rows from `first` to before `end` to x[0],
/// y[0] and on. A row has the same bits wherever `first` and `end` are. What is written means nothing where the series
/// does not serve (ZonePlane.h): quotients may leave their range there.
struct ZonePlaneKernels {
    void (*column)(const ZoneColumnSource&, const ZoneRowTables&, std::size_t first, std::size_t end, double* x,
                   double* y);
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct ZonePlaneKernelsOf {
    static const ZonePlaneKernels kTable;
};
template <>
const ZonePlaneKernels ZonePlaneKernelsOf<PlainLanes>::kTable;
template <>
const ZonePlaneKernels ZonePlaneKernelsOf<Avx2Lanes>::kTable;
template <>
const ZonePlaneKernels ZonePlaneKernelsOf<Avx512Lanes>::kTable;

}  // namespace tidora
