#pragma once

#include <cstddef>

#include "fault/Fault.h"
#include "okada/batch/SurfaceBatch.h"

namespace tidora {

/// Degrees to radians with the rounded pi that the deformation of a grid uses throughout.
[[nodiscard]] constexpr double DeformationRadians(double degrees) noexcept {
    return degrees / 180.0 * 3.14159265359;
}

/// One fault element as the deformation of a grid needs it: its angles, and the arguments of its dislocations.
struct ElementSource {
    // Rotation from east and north into the frame of the element, x along strike and y to its left. theta = strike - 90
    // degrees. Single on purpose: so are the co-ordinates in that frame.
    float sinTheta, cosTheta;
    double sinDip, cosDip;  ///< the cosine is 0 where it is below 1e-5 in size
    double sinRake, cosRake;
    double length, width;  ///< m
    // Arguments of the dislocation routines.
    float alpha;                      ///< medium constant
    float dip;                        ///< degrees, as given
    float strikeSlip, dipSlip;        ///< m
    float strikePotency, dipPotency;  ///< slip times area, m^3
};

[[nodiscard]] ElementSource MakeElementSource(const FAULT_PARAM& element, float alpha) noexcept;

/// Distances from the centroid of an element, m.
struct SourceReach {
    float finite = 0.0F;      ///< up to here the finite source is used, when `isSwitched`
    float point = 0.0F;       ///< up to here the point source is used; beyond, nothing
    bool isSwitched = false;  ///< false: the finite source is used everywhere
};

/// The distances beyond which the difference of finite and point source, and the point source itself, stay below the
/// tolerance (m). A tolerance of at most 1e-5 m gives the finite source everywhere within 30 degrees of arc.
/// elementCount: elements of the fault, among which the tolerance is shared out.
[[nodiscard]] SourceReach MakeSourceReach(const FAULT_PARAM& element, const ElementSource& source, double tolerance,
                                          std::size_t elementCount) noexcept;

/// The element as the finite and as the point source take it.
[[nodiscard]] RectangleSource FiniteSourceOf(const ElementSource& source) noexcept;
[[nodiscard]] PointShearSource PointSourceOf(const ElementSource& source) noexcept;

}  // namespace tidora
