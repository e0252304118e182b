// A rectangular source: its four corners, their sum, and the entry point dc3d_.

#include <array>
#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {
namespace {

/// The two ends of the source along strike and up dip, seen from the observation point, and its distance from the
/// plane.
struct CornerCoordinates {
    std::array<double, 2> xi;
    std::array<double, 2> eta;
    double q;
};

/// d: depth of the source (or of its image) below the observation point. x less the ends along strike is formed in
/// single precision, as the header promises: all four are arguments of that precision, and the bits of the difference
/// are the result's. Everything after it is double.
CornerCoordinates CornersOf(const TidoraBlockC0& m, const FinitePoint& at, double d) noexcept {
    const double y = Widen(at.y);
    const double p = y * m.CD + d * m.SD;
    const double q = y * m.SD - d * m.CD;
    return {{ZeroIfTiny(Widen(at.x - at.al1)), ZeroIfTiny(Widen(at.x - at.al2))},
            {ZeroIfTiny(p - Widen(at.aw1)), ZeroIfTiny(p - Widen(at.aw2))},
            ZeroIfTiny(q)};
}

/// A product of two ends of at most 0 has the point between them; of exactly 0, at one of them. The displacement is
/// infinite on an edge, so that the entry point answers with a status.
bool IsOnEdge(const CornerCoordinates& c) noexcept {
    const double alongStrike = c.xi[0] * c.xi[1];
    const double alongDip = c.eta[0] * c.eta[1];
    return c.q == 0.0 && ((alongStrike <= 0.0 && alongDip == 0.0) || (alongDip <= 0.0 && alongStrike == 0.0));
}

/// Flags for the negative extensions of the edges, where R + xi or R + eta of a corner is lost to rounding.
struct ExtensionFlags {
    std::array<bool, 2> kxi{};  ///< by index of eta
    std::array<bool, 2> ket{};  ///< by index of xi
};

/// The second end is the smaller co-ordinate: a point lies beyond the source just when the first is negative too. Each
/// sum is taken at the end where it is the least, in metres like kOkadaEpsilon.
ExtensionFlags ExtensionFlagsOf(const CornerCoordinates& c) noexcept {
    const auto distance = [&c](double xi, double eta) { return std::sqrt(xi * xi + eta * eta + c.q * c.q); };
    const double r12 = distance(c.xi[0], c.eta[1]);
    const double r21 = distance(c.xi[1], c.eta[0]);
    const double r22 = distance(c.xi[1], c.eta[1]);
    ExtensionFlags flags;
    if (c.xi[0] < 0.0) {
        flags.kxi = {r21 + c.xi[1] < kOkadaEpsilon, r22 + c.xi[1] < kOkadaEpsilon};
    }
    if (c.eta[0] < 0.0) {
        flags.ket = {r12 + c.eta[1] < kOkadaEpsilon, r22 + c.eta[1] < kOkadaEpsilon};
    }
    return flags;
}

/// Sum of part B over the four corners (Chinnery's notation), rotated from the frame of the source into x, y, z. Corner
/// by corner, each rotated before it is added: the order of this sum is part of the result.
Row CornerSum(const TidoraBlockC0& m, CornerCoordinates at, const Dislocation& slip, TidoraBlockC2& c) noexcept {
    const ExtensionFlags flags = ExtensionFlagsOf(at);
    double u[3] = {};
    for (std::size_t k = 0; k < 2; ++k) {
        for (std::size_t j = 0; j < 2; ++j) {
            SetCorner(m.SD, m.CD, at.xi[j], at.eta[k], at.q, flags.kxi[k], flags.ket[j], c);
            const Row b = CornerDisplacement(m, c, at.xi[j], at.eta[k], at.q, slip);
            const Row rotated = {b.f1, b.f2 * m.CD - b.f3 * m.SD, b.f2 * m.SD + b.f3 * m.CD};
            AddRow(j == k ? 1.0 : -1.0, rotated, u);  // f(1,1) - f(2,1) - f(1,2) + f(2,2), xi first
        }
    }
    return {u[0], u[1], u[2]};
}

}  // namespace

bool FiniteSurfaceSource(const TidoraBlockC0& m, const FinitePoint& at, const Dislocation& slip, TidoraBlockC2& c,
                         Row& u) noexcept {
    // Part B belongs to the image, whose depth below the point is depth - z; an edge of the source itself is singular
    // too.
    const CornerCoordinates source = CornersOf(m, at, Widen(at.depth + at.z));
    const CornerCoordinates image = CornersOf(m, at, Widen(at.depth - at.z));
    if (IsOnEdge(source) || IsOnEdge(image)) {
        return true;
    }
    u = CornerSum(m, image, slip, c);
    return false;
}

}  // namespace tidora

extern "C" void dc3d_(const float* ALPHA, const float* X, const float* Y, const float* Z, const float* DEPTH,
                      const float* DIP, const float* AL1, const float* AL2, const float* AW1, const float* AW2,
                      const float* DISL1, const float* DISL2, const float* DISL3, float* UX, float* UY, float* UZ,
                      float* UXX, float* UYX, float* UZX, float* UXY, float* UYY, float* UZY, float* UXZ, float* UYZ,
                      float* UZZ, int* IRET) {
    using tidora::Widen;
    tidora::ZeroOutputs(UX, UY, UZ, UXX, UYX, UZX, UXY, UYY, UZY, UXZ, UYZ, UZZ);
    *IRET = 0;
    if (*Z > 0.0F) {
        *IRET = 2;
        return;
    }
    c0_ = tidora::MediumOf(Widen(*ALPHA), Widen(*DIP));
    tidora::Row u;
    if (tidora::FiniteSurfaceSource(c0_, {*X, *Y, *Z, *DEPTH, *AL1, *AL2, *AW1, *AW2},
                                    {Widen(*DISL1), Widen(*DISL2), Widen(*DISL3)}, c2_, u)) {
        *IRET = 1;
        return;
    }
    *UX = static_cast<float>(u.f1);
    *UY = static_cast<float>(u.f2);
    *UZ = static_cast<float>(u.f3);
}
