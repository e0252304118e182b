#pragma once

#include <cstddef>

#include "globe/GlobeFrame.h"
#include "simd/Dispatch.h"

namespace tidora {

/// Nodes on the globe; `count` values each, any alignment. Does not own them.
struct GlobeNodes {
    std::size_t count = 0;
    const double *x = nullptr, *y = nullptr, *z = nullptr;  ///< Earth-centred, m
};

/// Sines and cosines of the nodes' latitudes and longitudes.
struct GlobeNodeAxes {
    const double *sinLat, *cosLat, *sinLon, *cosLon;
};

/// The kernels of one instruction set. Card. Lanes: PlainLanes, Avx2Lanes, Avx512Lanes, not to the same bits; on one of
/// them a node has the same bits wherever it stands. Error of the arithmetic: some 1e-8 m up to 10 000 km, beside which
/// the frame's own error counts (GlobeFrame.h). Range: all finite places.
struct GlobeKernels {
    /// Metres east and north of the frame's origin.
    void (*places)(const GlobeFrame& frame, const GlobeNodes& nodes, double* east, double* north);
    /// The turn from the frame's east and north to those at each node, as the cosine and sine of the angle by which the
    /// azimuth of the way from the origin grows:
    ///     east there = cosine east + sine north,    north there = cosine north - sine east.
    /// Carries a vector along the way without changing its angle with it; at the origin itself, which may be a pole
    /// seen from another longitude, from one pair of axes to the other.
    void (*turns)(const GlobeFrame& frame, const GlobeNodes& nodes, const GlobeNodeAxes& axes, float* cosine,
                  float* sine);
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct GlobeKernelsOf {
    static const GlobeKernels kTable;
};
template <>
const GlobeKernels GlobeKernelsOf<PlainLanes>::kTable;
template <>
const GlobeKernels GlobeKernelsOf<Avx2Lanes>::kTable;
template <>
const GlobeKernels GlobeKernelsOf<Avx512Lanes>::kTable;

}  // namespace tidora
