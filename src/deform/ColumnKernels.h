#pragma once

#include <cstddef>

#include "deform/DeformedGrid.h"
#include "simd/InstructionSet.h"

namespace tidora {

/// The frame of an element: its reference point in the plane, the rotation, and the way to its centroid, m.
struct ElementFrame {
    double originX, originY;
    float sine, cosine;            ///< single on purpose: so are the co-ordinates in the frame
    double halfLength, halfWidth;  ///< along strike; horizontal, to the right of it
};

/// Co-ordinates in the frame of an element, and relative to its centroid, m.
struct PlacedPoints {
    float *x, *y;
    float *centroidX, *centroidY, *distance;
};

/// Sines and cosines of the latitudes of a column, and what they are compared with: a point is near where
/// cosine cosineFactor + sine sineFactor > limit.
struct GreatCircleTest {
    const double *sine, *cosine;
    double cosineFactor, sineFactor, limit;
};

/// The topography of a column and what its slopes need.
struct SlopedColumn {
    const float* here;            ///< one value per row of the window
    const float *before, *after;  ///< the columns beside it, or itself at an edge of the grid
    bool isSingle;                ///< there is no column beside it
    float acrossSpacing;          ///< between those two
    int firstRow, rowCount;       ///< of the grid: the index of here[0], and how many there are
    float dx;
    float shallowest;    ///< topography from which on there is no uplift by slopes, m
    float sine, cosine;  ///< from the frame of the element to east and north
};

/// The passes over `count` points of a column, for one instruction set. All give the bits of one point after the other.
struct ColumnKernels {
    /// Differences are formed in double and rounded; the rotation and the distance are single on purpose, as the
    /// arguments of the dislocations are. Returns how many distances are at most `limit`.
    std::size_t (*place)(const ElementFrame& frame, const double* x, const double* y, std::size_t count, float limit,
                         const PlacedPoints& placed);
    /// Depth of an upper edge `offset` below the topography, at least 0.
    void (*edgeDepths)(const float* topography, double offset, std::size_t count, float* depth);
    /// Points that pass the test by more than its rounding.
    std::size_t (*countNear)(const GreatCircleTest& test, std::size_t count);
    /// Uplift at points at rest by the sloping floor that moves below them; 0 in shallow water and on land.
    /// ux, uy: displacement in the frame of the element.
    void (*upliftBySlope)(const SlopedColumn& column, const float* ux, const float* uy, std::size_t count,
                          float* uplift);
    /// The largest of the values and of `atLeast`. What is not a number does not count.
    float (*largest)(const float* values, std::size_t count, float atLeast);
    /// sum += share * values
    void (*add)(float share, const float* values, std::size_t count, float* sum);
};

[[nodiscard]] const ColumnKernels& ColumnKernelsOf(InstructionSet set) noexcept;

}  // namespace tidora
