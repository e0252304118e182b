#pragma once

#include <cstddef>

#include "deform/FaultElement.h"
#include "okada/batch/SurfaceBatch.h"

namespace tidora {

/// Degrees to radians with the rounded pi that the deformation of a grid uses throughout, on purpose: its last digits
/// are part of the results.
[[nodiscard]] constexpr double DeformationRadians(double degrees) noexcept {
    return degrees / 180.0 * 3.14159265359;
}

/// A fault element as a dislocation: where its frame points, how large it is, and the two sources it is evaluated as.
struct ElementSource {
    // Rotation from east and north into the frame of the element, x along strike and y to its left, by theta = strike -
    // 90 degrees. Single on purpose: so are the co-ordinates in that frame.
    float sinTheta = 0.0F, cosTheta = 0.0F;
    double sinDip = 0.0, cosDip = 0.0;  ///< the cosine is 0 where it is below 1e-5 in size
    double sinRake = 0.0, cosRake = 0.0;
    double length = 0.0, width = 0.0;  ///< m
    RectangleSource finite;            ///< near the element: slip rounded to single precision, m
    PointShearSource point;            ///< far from it: slip times area, m^3, at the centroid

    // From the reference point to the centroid, in the frame of the element, m.
    [[nodiscard]] double CentroidAlongStrike() const noexcept { return length / 2.0; }
    [[nodiscard]] double CentroidToRight() const noexcept { return cosDip * width / 2.0; }
    [[nodiscard]] double CentroidBelowEdge() const noexcept { return sinDip * width / 2.0; }
};

/// alpha: medium constant, (lambda + mu) / (lambda + 2 mu).
[[nodiscard]] ElementSource MakeElementSource(const FAULT_PARAM& element, float alpha) noexcept;

/// Distances from the centroid of an element, m. Single precision, as the distances that are compared with them.
struct SourceReach {
    float finite = 0.0F;      ///< up to here the finite source is used, when `isSwitched`
    float point = 0.0F;       ///< up to here the point source is used; beyond, nothing
    bool isSwitched = false;  ///< false: the finite source is used everywhere within `point`
};

/// The distances beyond which the difference of finite and point source, and the point source itself, stay below the
/// tolerance (m). A tolerance of at most 1e-5 m gives the finite source everywhere within 30 degrees of arc.
/// elementCount: elements of the fault, among which the tolerance is shared out.
[[nodiscard]] SourceReach MakeSourceReach(const FAULT_PARAM& element, const ElementSource& source, double tolerance,
                                          std::size_t elementCount) noexcept;

}  // namespace tidora
