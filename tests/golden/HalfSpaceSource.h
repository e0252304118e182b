#pragma once

#include "golden/Field.h"

namespace tidora::golden {

/// A rectangular source below the origin, as dc3d_ takes it, in double precision.
struct Rectangle {
    Medium medium;
    double depth = 0.0;             ///< of the reference point, positive down
    double dip = 0.0;               ///< degrees
    std::array<double, 2> along{};  ///< AL1, AL2
    std::array<double, 2> up{};     ///< AW1, AW2
    Vec3 slip{};                    ///< strike-slip, dip-slip, tensile
};

/// A point source below the origin, as dc3d0_ takes it, in double precision.
struct PointSource {
    Medium medium;
    double depth = 0.0;
    double dip = 0.0;                 ///< degrees
    std::array<double, 4> potency{};  ///< strike-slip, dip-slip, tensile, inflation
};

/// The parts of the solution, each from its own routine.
enum class Part { A, B, C };

/// One part in double precision at an observation point `at`, seen from the image (d = depth - z). Of a rectangle: the
/// sum over its four corners, displacements along strike, up dip and normal to the source. Of a point source: along x,
/// y, z. Derivatives are with respect to x, y, z.
[[nodiscard]] Twelve PartOf(const Rectangle& source, Part part, const Vec3& at);
[[nodiscard]] Twelve PartOf(const PointSource& source, Part part, const Vec3& at);

/// Part B alone, turned into x, y, z: the whole solution where z = 0.
[[nodiscard]] Vec3 SurfaceDisplacement(const Rectangle& source, const Vec3& at);
[[nodiscard]] Vec3 SurfaceDisplacement(const PointSource& source, const Vec3& at);

/// The whole solution u = uA(image) - uA(source) + uB + z uC and its gradient: Okada (1992), Tables 2 to 9. In a
/// rectangle's frame the components 2 and 3 of part C enter u_z with the opposite sign (Table 6).
[[nodiscard]] Motion FullMotion(const Rectangle& source, const Vec3& at);
[[nodiscard]] Motion FullMotion(const PointSource& source, const Vec3& at);

/// The solution of a full space, without a surface: part A of the source itself.
[[nodiscard]] Motion FullSpaceMotion(const Rectangle& source, const Vec3& at);
[[nodiscard]] Motion FullSpaceMotion(const PointSource& source, const Vec3& at);

/// Unit vectors of the plane of a source of the given dip.
struct SourceFrame {
    Vec3 upDip, normal;  ///< the normal points into the hanging wall
};
[[nodiscard]] SourceFrame FrameOf(double dip);

}  // namespace tidora::golden
