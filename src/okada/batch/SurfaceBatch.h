#pragma once

#include <cstddef>

namespace tidora {

/// A rectangular shear source as dc3d_ takes it; its reference point lies at the origin, below the surface.
struct RectangleSource {
    float alpha = 2.0F / 3.0F;     ///< (lambda + mu) / (lambda + 2 mu)
    float dip = 0.0F;              ///< degrees
    float al1 = 0.0F, al2 = 0.0F;  ///< extent along strike
    float aw1 = 0.0F, aw2 = 0.0F;  ///< extent up dip
    float strikeSlip = 0.0F;       ///< dislocations
    float dipSlip = 0.0F;
};

/// A shear point source as dc3d0_ takes it.
struct PointShearSource {
    float alpha = 2.0F / 3.0F;
    float dip = 0.0F;            ///< degrees
    float strikePotency = 0.0F;  ///< dislocation times area
    float dipPotency = 0.0F;
};

/// Points of the surface in the frame of a source, each with the depth of the source below it. `count` values each; any
/// alignment; any count, also 0. Does not own them.
struct SurfacePoints {
    std::size_t count = 0;
    const float* x = nullptr;      ///< along strike
    const float* y = nullptr;      ///< to its left
    const float* depth = nullptr;  ///< of the reference point, positive downward
};

/// Where the displacements go, `count` values each, in the unit of the dislocations; no overlap with the points. ux and
/// uy may both be null: the vertical displacement alone is cheaper.
struct SurfaceDisplacements {
    float* ux = nullptr;
    float* uy = nullptr;
    float* uz = nullptr;
};

/// dc3d_ at many surface points of one source, several points per step.
///
/// Card. Lanes: PlainLanes, Avx2Lanes, Avx512Lanes, not to the same bits. Largest error: kSurfaceBatchMaxUlp. Range:
/// all floats; a source with a number that is not finite takes the scalar routine at every point.
///
/// The corner sum is regrouped: the factors of the logarithms and arctangents are the same at all corners, so that
/// eight logarithms become two of ratios of products, and eight arctangents two arguments of products of complex
/// numbers. Arithmetic in double precision, rounded once. Points at which the regrouped form is not defined or the
/// scalar one is an agreement rather than a formula (q = 0, edges and their extensions), and points so far away that
/// the scalar routine's own rounding shows, take the scalar routine itself. Singular points give zeros, as in dc3d_. No
/// module-wide state: safe to call from several threads.
void FiniteSurfaceBatch(const RectangleSource& source, const SurfacePoints& points,
                        const SurfaceDisplacements& out) noexcept;

/// dc3d0_ at many surface points of one source, under the same terms.
void PointSurfaceBatch(const PointShearSource& source, const SurfacePoints& points,
                       const SurfaceDisplacements& out) noexcept;

/// Largest difference from the scalar routines, in float units in the last place, where a component is at least 1e-6 of
/// the largest of the batch, either kind of slip taken alone. Both are double before they are rounded: a unit is what
/// two roundings of nearly the same number can make. Smaller components are differences of larger ones, in the scalar
/// routine too.
inline constexpr int kSurfaceBatchMaxUlp = 1;

}  // namespace tidora
