#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/Dispatch.h"

namespace tidora {

/// The frame of an element: its reference point in the plane, the rotation, and the way to its centroid, m.
struct ElementFrame {
    double originX, originY;
    float sine, cosine;            ///< single on purpose: so are the co-ordinates in the frame
    double halfLength, halfWidth;  ///< along strike; horizontal, to the right of it
};

/// Co-ordinates in the frame of an element, and relative to its centroid, m; the square of the distance from there,
/// m^2.
struct PlacedPoints {
    float *x, *y;
    float *centroidX, *centroidY, *squaredDistance;
};

/// What a point of a column takes from an element.
enum class SourceKind : std::uint8_t { None = 0, Finite = 1, Point = 2 };

/// Squared distances from the centroid that decide about the source, m^2.
struct SourceLimits {
    float finite, point;
    bool isFiniteOnly;  ///< the point source is not used at all
};

/// Sines and cosines of the latitudes of a column, and what they are compared with: a point is near where
/// cosine cosineFactor + sine sineFactor > limit, and undecided where both differ by at most `margin`.
struct GreatCircleTest {
    const double *sine, *cosine;
    double cosineFactor, sineFactor, limit, margin;
};

/// The topography of a column and what its slopes need.
struct SlopedColumn {
    const float* here;            ///< one value per row of the stretch
    const float *before, *after;  ///< the columns beside it, or itself at an edge of the grid
    bool isSingle;                ///< there is no column beside it
    float acrossSpacing;          ///< between those two
    int firstRow, rowCount;       ///< of the grid: the index of here[0], and how many there are
    float dx;
    float shallowest;    ///< topography from which on there is no uplift by slopes, m
    float sine, cosine;  ///< from the frame of the element to east and north
};

/// The passes over `count` points of a column, one table per lane type. Card: any count, also 0; any alignment; arrays
/// do not overlap; all lane types give the bits of one point after the other.
struct ColumnPasses {
    /// Differences are formed in double and rounded; the rotation and the distance are single on purpose, as the
    /// arguments of the dislocations are. Returns how many squared distances are at most `limit`.
    std::size_t (*place)(const ElementFrame& frame, const double* x, const double* y, std::size_t count, float limit,
                         const PlacedPoints& placed);
    /// Which source each point takes by its squared distance. isNear: 0 where it takes none in any case; null: no 0.
    void (*sort)(const SourceLimits& limits, const float* squaredDistance, const std::uint8_t* isNear,
                 std::size_t count, SourceKind* kinds);
    /// Depths `below` an upper edge that lies `offset` below the topography, but not above the floor: m, rounded once.
    /// An edge depth that is not a number counts as 0.
    void (*depths)(double offset, double below, const float* topography, std::size_t count, float* depth);
    /// Marks the near points. Returns how many points are undecided; their marks mean nothing.
    std::size_t (*markNear)(const GreatCircleTest& test, std::size_t count, std::uint8_t* isNear);
    /// Uplift at points at rest by the sloping floor that moves below them; 0 in shallow water and on land.
    /// ux, uy: displacement in the frame of the element.
    void (*upliftBySlope)(const SlopedColumn& column, const float* ux, const float* uy, std::size_t count,
                          float* uplift);
    /// From the frame of an element to east and north; sine and cosine as of the frame.
    void (*turn)(float sine, float cosine, const float* ux, const float* uy, std::size_t count, float* east,
                 float* north);
    /// From east and north at the reference point to those at each point, in place; turns as of GlobeKernels.
    void (*turnEach)(const float* cosine, const float* sine, std::size_t count, float* east, float* north);
    /// east slopeX + north slopeY
    void (*upliftByFloor)(const float* east, const float* north, const float* slopeX, const float* slopeY,
                          std::size_t count, float* uplift);
    /// The largest of the values and of `atLeast`. What is not a number does not count.
    float (*largest)(const float* values, std::size_t count, float atLeast);
    /// sum += share * values
    void (*add)(float share, const float* values, std::size_t count, float* sum);
};

/// The table of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct ColumnPassesOf {
    static const ColumnPasses kTable;
};
template <>
const ColumnPasses ColumnPassesOf<PlainLanes>::kTable;
template <>
const ColumnPasses ColumnPassesOf<Avx2Lanes>::kTable;
template <>
const ColumnPasses ColumnPassesOf<Avx512Lanes>::kTable;

}  // namespace tidora
