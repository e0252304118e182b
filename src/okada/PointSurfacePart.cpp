// Part B of a point source: Okada (1992), Bull. Seism. Soc. Am. 82, Tables 2 to 5.
//
//   paper                code            meaning
//   x, y, d, z           the same        observation point relative to the source's image; d = c - z
//   c                    c               depth of the source, d + z
//   p, q, s, t           v.P .. v.T
//   A3, A5, B3, C3       v.A3 .. v.C3
//   U, V, W, U', V', W'  v.UY .. v.WZ
//   (1 - alpha)/alpha    m.ALP3
//   I1..I5               I1..I5          surface terms of the displacement
//   J1..J4, K1..K3       the same        surface terms of the derivatives
//
// No departures from the paper.

#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {
namespace {

/// Factors of the surface terms; each is the derivative of an earlier one.
struct SurfaceFactors {
    double g1;  ///< 1 / (R (R + d)^2)
    double g2;  ///< (3R + d) / (R^3 (R + d)^3)
    double g3;  ///< (5R^2 + 4Rd + d^2) / (R^5 (R + d)^4)
    double g4;  ///< (2R + d) / (R^3 (R + d)^2)
    double g5;  ///< (8R^2 + 9Rd + 3d^2) / (R^5 (R + d)^3)
};

/// I1 to I5 of Table 2.
struct PointDisplacementTerms {
    double I1, I2, I3, I4, I5;
};

/// J and K of Tables 3 to 5.
struct PointDerivativeTerms {
    double J1, J2, J3, J4;
    double K1, K2, K3;
};

/// Part B of a point source. The members carry the names of the paper, so that the tables read as they do there.
struct PointSurfacePart {
    const TidoraBlockC0& m;
    const TidoraBlockC1& v;
    double x, y, d, c;

    [[nodiscard]] SurfaceFactors Factors() const noexcept {
        const double rd = v.R + d;  // vanishes only above the source, d < 0, where the tables do not hold
        return {1.0 / (v.R * rd * rd), (3.0 * v.R + d) / (v.R3 * rd * rd * rd),
                (5.0 * v.R2 + 4.0 * v.R * d + v.D2) / (v.R5 * rd * rd * rd * rd), (2.0 * v.R + d) / (v.R3 * rd * rd),
                (8.0 * v.R2 + 9.0 * v.R * d + 3.0 * v.D2) / (v.R5 * rd * rd * rd)};
    }

    [[nodiscard]] PointDisplacementTerms SurfaceTerms(const SurfaceFactors& g) const noexcept {
        PointDisplacementTerms t{};
        t.I1 = y * (g.g1 - v.X2 * g.g2);
        t.I2 = x * (g.g1 - v.Y2 * g.g2);
        t.I3 = x / v.R3 - t.I2;
        t.I4 = -v.XY * g.g4;
        t.I5 = 1.0 / (v.R * (v.R + d)) - v.X2 * g.g4;
        return t;
    }

    [[nodiscard]] PointDerivativeTerms SurfaceDerivatives(const SurfaceFactors& g) const noexcept {
        PointDerivativeTerms t{};
        t.J1 = -3.0 * v.XY * (g.g2 - v.X2 * g.g3);
        t.J2 = 1.0 / v.R3 - 3.0 * g.g1 + 3.0 * v.X2 * v.Y2 * g.g3;
        t.J3 = v.A3 / v.R3 - t.J2;
        t.J4 = -3.0 * v.XY / v.R5 - t.J1;
        t.K1 = -y * (g.g4 - v.X2 * g.g5);
        t.K2 = -x * (g.g4 - v.Y2 * g.g5);
        t.K3 = -3.0 * x * d / v.R5 - t.K2;
        return t;
    }

    // Table 2, part B, one function per type of source.

    [[nodiscard]] Row StrikeDisplacement(const PointDisplacementTerms& i) const noexcept {
        return {-v.X2 * v.QR - m.ALP3 * i.I1 * m.SD, -x * y * v.QR - m.ALP3 * i.I2 * m.SD,
                -c * x * v.QR - m.ALP3 * i.I4 * m.SD};
    }

    [[nodiscard]] Row DipDisplacement(const PointDisplacementTerms& i) const noexcept {
        return {-x * v.P * v.QR + m.ALP3 * i.I3 * m.SDCD, -y * v.P * v.QR + m.ALP3 * i.I1 * m.SDCD,
                -c * v.P * v.QR + m.ALP3 * i.I5 * m.SDCD};
    }

    [[nodiscard]] Row TensileDisplacement(const PointDisplacementTerms& i) const noexcept {
        return {x * v.Q * v.QR - m.ALP3 * i.I3 * m.SDSD, y * v.Q * v.QR - m.ALP3 * i.I1 * m.SDSD,
                c * v.Q * v.QR - m.ALP3 * i.I5 * m.SDSD};
    }

    [[nodiscard]] Row InflationDisplacement() const noexcept {
        const double f = m.ALP3 / v.R3;
        return {f * x, f * y, f * d};
    }

    // Tables 2 to 5, part B: the displacement, then its derivatives with respect to x, y and z.

    [[nodiscard]] PartColumn StrikeColumn(const PointDisplacementTerms& i,
                                          const PointDerivativeTerms& t) const noexcept {
        const double f = 3.0 / v.R5;
        const double a = m.ALP3 * m.SD;
        return {StrikeDisplacement(i),
                {-x * v.QR * (1.0 + v.A5) - a * t.J1, -y * v.QR * v.A5 - a * t.J2, -c * v.QR * v.A5 - a * t.K1},
                {-f * v.X2 * v.UY - a * t.J2, -x * v.QR - f * v.XY * v.UY - a * t.J4, -f * c * x * v.UY - a * t.K2},
                {-f * v.X2 * v.UZ + a * t.K1, -f * v.XY * v.UZ + a * t.K2, -f * c * x * v.UZ + a * f * v.XY}};
    }

    [[nodiscard]] PartColumn DipColumn(const PointDisplacementTerms& i, const PointDerivativeTerms& t) const noexcept {
        const double f = 3.0 / v.R5;
        const double a = m.ALP3 * m.SDCD;
        return {DipDisplacement(i),
                {-v.P * v.QR * v.A5 + a * t.J3, y * v.P * v.QRX + a * t.J1, c * v.P * v.QRX + a * t.K3},
                {-f * x * v.VY + a * t.J1, -v.P * v.QR - f * y * v.VY + a * t.J2, -f * c * v.VY + a * t.K1},
                {-f * x * v.VZ - a * t.K3, -f * y * v.VZ - a * t.K1, -f * c * v.VZ + a * v.A3 / v.R3}};
    }

    [[nodiscard]] PartColumn TensileColumn(const PointDisplacementTerms& i,
                                           const PointDerivativeTerms& t) const noexcept {
        const double a = m.ALP3 * m.SDSD;
        return {TensileDisplacement(i),
                {v.Q * v.QR * v.A5 - a * t.J3, -y * v.Q * v.QRX - a * t.J1, -c * v.Q * v.QRX - a * t.K3},
                {x * v.QR * v.WY - a * t.J1, v.Q * v.QR + y * v.QR * v.WY - a * t.J2, c * v.QR * v.WY - a * t.K1},
                {x * v.QR * v.WZ + a * t.K3, y * v.QR * v.WZ + a * t.K1, c * v.QR * v.WZ - a * v.A3 / v.R3}};
    }

    [[nodiscard]] PartColumn InflationColumn() const noexcept {
        const double a = m.ALP3;
        const double f = 3.0 / v.R5;
        return {InflationDisplacement(),
                {a * v.A3 / v.R3, -a * f * v.XY, -a * f * x * d},
                {-a * f * v.XY, a * v.B3 / v.R3, -a * f * y * d},
                {a * f * x * d, a * f * y * d, -a * v.C3 / v.R3}};
    }
};

}  // namespace

Row PointDisplacement(const TidoraBlockC0& m, const TidoraBlockC1& v, double x, double y, double d, double z,
                      const Dislocation& potency) noexcept {
    const PointSurfacePart part = {m, v, x, y, d, d + z};
    const PointDisplacementTerms i = part.SurfaceTerms(part.Factors());
    // A potency of 0 adds nothing, not even 0 times an infinite term.
    double u[3] = {};
    if (potency.strikeSlip != 0.0) {
        AddRow(potency.strikeSlip, part.StrikeDisplacement(i), u);
    }
    if (potency.dipSlip != 0.0) {
        AddRow(potency.dipSlip, part.DipDisplacement(i), u);
    }
    if (potency.tensile != 0.0) {
        AddRow(potency.tensile, part.TensileDisplacement(i), u);
    }
    if (potency.inflation != 0.0) {
        AddRow(potency.inflation, part.InflationDisplacement(), u);
    }
    return {u[0] / kTwoPi, u[1] / kTwoPi, u[2] / kTwoPi};
}

}  // namespace tidora

extern "C" void ub0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1,
                     const double* POT2, const double* POT3, const double* POT4, double* U) {
    const tidora::PointSurfacePart part = {c0_, c1_, *X, *Y, *D, *D + *Z};
    const tidora::SurfaceFactors g = part.Factors();
    const tidora::PointDisplacementTerms i = part.SurfaceTerms(g);
    const tidora::PointDerivativeTerms t = part.SurfaceDerivatives(g);
    tidora::ClearPart(U);
    if (*POT1 != 0.0) {
        tidora::AddColumn(*POT1, part.StrikeColumn(i, t), U);
    }
    if (*POT2 != 0.0) {
        tidora::AddColumn(*POT2, part.DipColumn(i, t), U);
    }
    if (*POT3 != 0.0) {
        tidora::AddColumn(*POT3, part.TensileColumn(i, t), U);
    }
    if (*POT4 != 0.0) {
        tidora::AddColumn(*POT4, part.InflationColumn(), U);
    }
    tidora::FinishPart(U);
}
