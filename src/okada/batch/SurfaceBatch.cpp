// The batches: which kernel runs, in what chunks, and the points that take the scalar routine.

#include "okada/batch/SurfaceBatch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "okada/SurfaceSource.h"
#include "okada/batch/SurfaceKernels.h"
#include "simd/Dispatch.h"

namespace tidora {
namespace {

/// Size of displacement below which the rounding of the scalar routine can show in single precision. Its terms, up to
/// about 12 / cos^2 per unit of dislocation over 2 pi (logarithms of some 1e5 m, divided by the square of the cosine of
/// the dip), cancel in the corner sum and leave a few 1e-16 of themselves; a float resolves 6e-8 of a displacement. Far
/// from a source, and the sooner the steeper it is, only the scalar result agrees with the scalar result.
double NoiseOf(const TidoraBlockC0& m, const Dislocation& slip) noexcept {
    const double amplification = m.CD == 0.0 ? 1.0 : 1.0 / m.CDCD;
    return 1.0e-7 * amplification * (std::abs(slip.strikeSlip) + std::abs(slip.dipSlip)) / kTwoPi;
}

/// Up to kKernelPoints points from number `at` on, and where their displacements go.
SurfacePoints Part(const SurfacePoints& points, std::size_t at) noexcept {
    return {std::min(kKernelPoints, points.count - at), points.x + at, points.y + at, points.depth + at};
}

SurfaceDisplacements Part(const SurfaceDisplacements& out, std::size_t at) noexcept {
    const bool withHorizontal = out.ux != nullptr;
    return {withHorizontal ? out.ux + at : nullptr, withHorizontal ? out.uy + at : nullptr, out.uz + at};
}

/// Rounds once, as the entry points of the scalar routines do.
void Store(const Row& u, const SurfaceDisplacements& out, std::size_t at) noexcept {
    out.uz[at] = static_cast<float>(u.f3);
    if (out.ux != nullptr) {
        out.ux[at] = static_cast<float>(u.f1);
        out.uy[at] = static_cast<float>(u.f2);
    }
}

/// Where a number of the source is not finite, which of its terms are infinite and which are not numbers depends on how
/// they are written: every point then takes the scalar routine.
bool IsFinite(const TidoraBlockC0& m, const Dislocation& slip) noexcept {
    return std::isfinite(m.ALP3) && std::isfinite(m.SD) && std::isfinite(slip.strikeSlip) &&
           std::isfinite(slip.dipSlip);
}

/// scalar(x, y, depth) at every point.
template <typename Scalar>
void RunScalar(const SurfacePoints& points, const SurfaceDisplacements& out, Scalar scalar) noexcept {
    for (std::size_t i = 0; i < points.count; ++i) {
        Store(scalar(points.x[i], points.y[i], points.depth[i]), out, i);
    }
}

/// Runs kernel(points, out, singular) chunk by chunk and scalar(x, y, depth) at the points that it leaves.
template <typename Kernel, typename Scalar>
void RunWithScalarPoints(const SurfacePoints& points, const SurfaceDisplacements& out, Kernel kernel,
                         Scalar scalar) noexcept {
    std::array<std::uint16_t, kKernelPoints> singular;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled first
    for (std::size_t at = 0; at < points.count; at += kKernelPoints) {
        const SurfacePoints some = Part(points, at);
        const SurfaceDisplacements u = Part(out, at);
        const std::size_t count = kernel(some, u, singular.data());
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t i = singular[n];
            Store(scalar(some.x[i], some.y[i], some.depth[i]), u, i);
        }
    }
}

}  // namespace

void FiniteSurfaceBatch(const RectangleSource& source, const SurfacePoints& points,
                        const SurfaceDisplacements& out) noexcept {
    const TidoraBlockC0 m = MediumOf(Widen(source.alpha), Widen(source.dip));
    const Dislocation slip = {Widen(source.strikeSlip), Widen(source.dipSlip), 0.0, 0.0};
    const FiniteKernelSource kernelSource = {m.SD,
                                             m.CD,
                                             m.ALP3,
                                             source.al1,
                                             source.al2,
                                             Widen(source.aw1),
                                             Widen(source.aw2),
                                             slip.strikeSlip / kTwoPi,
                                             slip.dipSlip / kTwoPi,
                                             NoiseOf(m, slip)};
    const auto scalar = [&](float x, float y, float depth) {
        TidoraBlockC2 c{};
        Row u;  // zeros stay at a singular point, as in dc3d_
        static_cast<void>(
            FiniteSurfaceSource(m, {x, y, 0.0F, depth, source.al1, source.al2, source.aw1, source.aw2}, slip, c, u));
        return u;
    };
    if (!IsFinite(m, slip)) {
        RunScalar(points, out, scalar);
        return;
    }
    const SurfaceKernels::Finite kernel =
        DispatchedKernels<SurfaceKernelsOf>().finite[out.ux != nullptr ? 1 : 0][m.CD == 0.0 ? 1 : 0];
    RunWithScalarPoints(
        points, out,
        [&](const SurfacePoints& some, const SurfaceDisplacements& u, std::uint16_t* singular) {
            return kernel(kernelSource, some, u, singular);
        },
        scalar);
}

void PointSurfaceBatch(const PointShearSource& source, const SurfacePoints& points,
                       const SurfaceDisplacements& out) noexcept {
    const TidoraBlockC0 m = MediumOf(Widen(source.alpha), Widen(source.dip));
    const Dislocation potency = {Widen(source.strikePotency), Widen(source.dipPotency), 0.0, 0.0};
    const PointKernelSource kernelSource = {m.SD, m.CD, m.ALP3, potency.strikeSlip, potency.dipSlip};
    const auto scalar = [&](float x, float y, float depth) {
        TidoraBlockC1 v{};
        Row u;  // zeros stay at the source itself, as in dc3d0_
        static_cast<void>(PointSurfaceSource(m, x, y, 0.0F, depth, potency, v, u));
        return u;
    };
    if (!IsFinite(m, potency)) {
        RunScalar(points, out, scalar);
        return;
    }
    const SurfaceKernels::Point kernel = DispatchedKernels<SurfaceKernelsOf>().point[out.ux != nullptr ? 1 : 0];
    RunWithScalarPoints(
        points, out,
        [&](const SurfacePoints& some, const SurfaceDisplacements& u, std::uint16_t* singular) {
            return kernel(kernelSource, some, u, singular);
        },
        scalar);
}

}  // namespace tidora
