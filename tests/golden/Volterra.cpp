#include "golden/Volterra.h"

#include "golden/PointForce.h"
#include "golden/Quadrature.h"

namespace tidora::golden {
namespace {

using Nine = std::array<double, 9>;  ///< three components for each slip type

/// Unit slip times traction of the three unit forces at `at`, on an element of the source.
Nine SlipTimesTraction(const Medium& medium, const SourceFrame& frame, const Vec3& element, const Vec3& at) {
    const auto forces = PointForceMotions(medium, at, element);
    Nine u{};
    for (std::size_t k = 0; k < kDirections; ++k) {
        const Vec3 traction = TractionOf(StressOf(medium, forces[k].gradient), frame.normal);
        u[k] = traction[0];
        u[3 + k] = Dot(frame.upDip, traction);
        u[6 + k] = Dot(frame.normal, traction);
    }
    return u;
}

Vec3 SumOfTypes(const Nine& u, double strikeSlip, double dipSlip, double tensile) {
    Vec3 sum{};
    for (std::size_t k = 0; k < kDirections; ++k) {
        sum[k] = strikeSlip * u[k] + dipSlip * u[3 + k] + tensile * u[6 + k];
    }
    return sum;
}

}  // namespace

std::array<Vec3, 3> VolterraDisplacements(const Rectangle& source, const Vec3& at) {
    const SourceFrame frame = FrameOf(source.dip);
    const auto element = [&](double along, double up) {
        const Vec3 place = {along, up * frame.upDip[1], -source.depth + up * frame.upDip[2]};
        return SlipTimesTraction(source.medium, frame, place, at);
    };
    const Nine u = Integrate<Nine>(element, {source.along, source.up}, 1e-13);
    return {{{u[0], u[1], u[2]}, {u[3], u[4], u[5]}, {u[6], u[7], u[8]}}};
}

Vec3 VolterraDisplacement(const Rectangle& source, const Vec3& at) {
    const auto u = VolterraDisplacements(source, at);
    Vec3 sum{};
    for (std::size_t k = 0; k < kDirections; ++k) {
        sum[k] = source.slip[0] * u[0][k] + source.slip[1] * u[1][k] + source.slip[2] * u[2][k];
    }
    return sum;
}

Vec3 VolterraDisplacement(const PointSource& source, const Vec3& at) {
    const Vec3 place = {0.0, 0.0, -source.depth};
    const auto& potency = source.potency;
    Vec3 u = SumOfTypes(SlipTimesTraction(source.medium, FrameOf(source.dip), place, at), potency[0], potency[1],
                        potency[2]);
    const auto forces = PointForceMotions(source.medium, at, place);
    for (std::size_t k = 0; k < kDirections; ++k) {
        const Matrix3& gradient = forces[k].gradient;
        u[k] += potency[3] * (gradient[0][0] + gradient[1][1] + gradient[2][2]);
    }
    return u;
}

}  // namespace tidora::golden
