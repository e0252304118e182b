// Part B of a rectangular source: Okada (1992), Bull. Seism. Soc. Am. 82, Tables 6 to 9.
//
//   paper                code          meaning
//   xi, eta, q           xi, eta, q    corner co-ordinates in the plane of the source and distance from it
//   y~, d~               c.Y, c.D      eta cos + q sin, eta sin - q cos
//   delta                m.SD, m.CD    dip; the vertical limit is taken where cos(delta) is exactly 0
//   (1 - alpha)/alpha    m.ALP3
//   I1..I4               I1..I4        surface terms of the displacement
//   J1..J6, K1..K4, D11  the same      surface terms of the derivatives
//
// No departures from the paper; the terms that it leaves singular at xi = 0 are taken at their limit, 0.

#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {
namespace {

/// I1 to I4 of Table 6.
struct DisplacementTerms {
    double I1, I2, I3, I4;
};

/// What Tables 7 to 9 add to them.
struct DerivativeTerms {
    double D11;  ///< 1 / (R (R + d~))
    double J1, J2, J3, J4, J5, J6;
    double K1, K2, K3, K4;
};

/// Part B at one corner. The members carry the names of the paper, so that the tables read as they do there.
struct SurfacePart {
    const TidoraBlockC0& m;
    const TidoraBlockC2& c;
    double xi, eta, q;

    [[nodiscard]] DisplacementTerms SurfaceTerms() const noexcept {
        const double rd = c.R + c.D;  // positive below the surface, where d~ >= 0
        DisplacementTerms t{};
        if (m.CD != 0.0) {
            // At xi = 0 the argument is infinite or 0 / 0; the angle is taken as 0, the mean of both
            // sides.
            double angle = 0.0;
            if (xi != 0.0) {
                const double x = std::sqrt(c.XI2 + c.Q2);
                angle = std::atan((eta * (x + q * m.CD) + x * (c.R + x) * m.SD) / (xi * (c.R + x) * m.CD));
            }
            t.I4 = (xi / rd * m.SDCD + 2.0 * angle) / m.CDCD;
            t.I3 = (c.Y * m.CD / rd - c.ALE + m.SD * std::log(rd)) / m.CDCD;
        } else {
            // The limits of the same for cos(delta) = 0, where the forms above divide by it twice.
            t.I4 = xi * c.Y / (rd * rd) / 2.0;
            t.I3 = (eta / rd + c.Y * q / (rd * rd) - c.ALE) / 2.0;
        }
        t.I1 = -xi / rd * m.CD - t.I4 * m.SD;
        t.I2 = std::log(rd) + t.I3 * m.SD;
        return t;
    }

    // Table 6, part B, one function per slip type.

    [[nodiscard]] Row StrikeDisplacement(const DisplacementTerms& t) const noexcept {
        return {-xi * q * c.Y11 - c.TT - m.ALP3 * t.I1 * m.SD, -q / c.R + m.ALP3 * c.Y / (c.R + c.D) * m.SD,
                c.Q2 * c.Y11 - m.ALP3 * t.I2 * m.SD};
    }

    [[nodiscard]] Row DipDisplacement(const DisplacementTerms& t) const noexcept {
        return {-q / c.R + m.ALP3 * t.I3 * m.SDCD, -eta * q * c.X11 - c.TT - m.ALP3 * xi / (c.R + c.D) * m.SDCD,
                c.Q2 * c.X11 + m.ALP3 * t.I4 * m.SDCD};
    }

    [[nodiscard]] Row TensileDisplacement(const DisplacementTerms& t) const noexcept {
        return {c.Q2 * c.Y11 - m.ALP3 * t.I3 * m.SDSD, c.Q2 * c.X11 + m.ALP3 * xi / (c.R + c.D) * m.SDSD,
                q * (eta * c.X11 + xi * c.Y11) - c.TT - m.ALP3 * t.I4 * m.SDSD};
    }

    [[nodiscard]] DerivativeTerms SurfaceDerivatives() const noexcept {
        const double rd = c.R + c.D;
        DerivativeTerms t{};
        t.D11 = 1.0 / (c.R * rd);
        t.J2 = xi * c.Y / rd * t.D11;
        t.J5 = -(c.D + c.Y * c.Y / rd) * t.D11;
        if (m.CD != 0.0) {
            // J3 and J6 divide by the cosine a second time: next to the clamp they lose up to twelve digits.
            t.K1 = xi * (t.D11 - c.Y11 * m.SD) / m.CD;
            t.K3 = (q * c.Y11 - c.Y * t.D11) / m.CD;
            t.J3 = (t.K1 - t.J2 * m.SD) / m.CD;
            t.J6 = (t.K3 - t.J5 * m.SD) / m.CD;
        } else {
            t.K1 = xi * q / rd * t.D11;
            t.K3 = m.SD / rd * (c.XI2 * t.D11 - 1.0);
            t.J3 = -xi / (rd * rd) * (c.Q2 * t.D11 - 0.5);
            t.J6 = -c.Y / (rd * rd) * (c.XI2 * t.D11 - 0.5);
        }
        t.J1 = t.J5 * m.CD - t.J6 * m.SD;
        t.J4 = -xi * c.Y11 - t.J2 * m.CD + t.J3 * m.SD;
        t.K2 = 1.0 / c.R + t.K3 * m.SD;
        t.K4 = xi * c.Y11 * m.CD - t.K1 * m.SD;
        return t;
    }

    // Tables 6 to 9, part B: the displacement, then its derivatives with respect to x, y and z.

    [[nodiscard]] PartColumn StrikeColumn(const DisplacementTerms& i, const DerivativeTerms& t) const noexcept {
        return {StrikeDisplacement(i),
                {c.XI2 * q * c.Y32 - m.ALP3 * t.J1 * m.SD, xi * q / c.R3 - m.ALP3 * t.J2 * m.SD,
                 -xi * c.Q2 * c.Y32 - m.ALP3 * t.J3 * m.SD},
                {-xi * c.FY - c.D * c.X11 + m.ALP3 * (xi * c.Y11 + t.J4) * m.SD,
                 -c.EY + m.ALP3 * (1.0 / c.R + t.J5) * m.SD, q * c.FY - m.ALP3 * (q * c.Y11 - t.J6) * m.SD},
                {-xi * c.FZ - c.Y * c.X11 + m.ALP3 * t.K1 * m.SD, -c.EZ + m.ALP3 * c.Y * t.D11 * m.SD,
                 q * c.FZ + m.ALP3 * t.K2 * m.SD}};
    }

    [[nodiscard]] PartColumn DipColumn(const DisplacementTerms& i, const DerivativeTerms& t) const noexcept {
        return {DipDisplacement(i),
                {xi * q / c.R3 + m.ALP3 * t.J4 * m.SDCD, eta * q / c.R3 + q * c.Y11 + m.ALP3 * t.J5 * m.SDCD,
                 -c.Q2 / c.R3 + m.ALP3 * t.J6 * m.SDCD},
                {-c.EY + m.ALP3 * t.J1 * m.SDCD, -eta * c.GY - xi * c.Y11 * m.SD + m.ALP3 * t.J2 * m.SDCD,
                 q * c.GY + m.ALP3 * t.J3 * m.SDCD},
                {-c.EZ - m.ALP3 * t.K3 * m.SDCD, -eta * c.GZ - xi * c.Y11 * m.CD - m.ALP3 * xi * t.D11 * m.SDCD,
                 q * c.GZ - m.ALP3 * t.K4 * m.SDCD}};
    }

    [[nodiscard]] PartColumn TensileColumn(const DisplacementTerms& i, const DerivativeTerms& t) const noexcept {
        return {
            TensileDisplacement(i),
            {-xi * c.Q2 * c.Y32 - m.ALP3 * t.J4 * m.SDSD, -c.Q2 / c.R3 - m.ALP3 * t.J5 * m.SDSD,
             q * c.Q2 * c.Y32 - m.ALP3 * t.J6 * m.SDSD},
            {q * c.FY - m.ALP3 * t.J1 * m.SDSD, q * c.GY - m.ALP3 * t.J2 * m.SDSD, -q * c.HY - m.ALP3 * t.J3 * m.SDSD},
            {q * c.FZ + m.ALP3 * t.K3 * m.SDSD, q * c.GZ + m.ALP3 * xi * t.D11 * m.SDSD,
             -q * c.HZ + m.ALP3 * t.K4 * m.SDSD}};
    }
};

}  // namespace

Row CornerDisplacement(const TidoraBlockC0& m, const TidoraBlockC2& c, double xi, double eta, double q,
                       const Dislocation& slip) noexcept {
    const SurfacePart part = {m, c, xi, eta, q};
    const DisplacementTerms terms = part.SurfaceTerms();
    // A slip of 0 adds nothing, not even 0 times an infinite term.
    double u[3] = {};
    if (slip.strikeSlip != 0.0) {
        AddRow(slip.strikeSlip, part.StrikeDisplacement(terms), u);
    }
    if (slip.dipSlip != 0.0) {
        AddRow(slip.dipSlip, part.DipDisplacement(terms), u);
    }
    if (slip.tensile != 0.0) {
        AddRow(slip.tensile, part.TensileDisplacement(terms), u);
    }
    return {u[0] / kTwoPi, u[1] / kTwoPi, u[2] / kTwoPi};
}

}  // namespace tidora

extern "C" void ub_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
                    const double* DISL3, double* U) {
    const tidora::SurfacePart part = {c0_, c2_, *XI, *ET, *Q};
    const tidora::DisplacementTerms i = part.SurfaceTerms();
    const tidora::DerivativeTerms t = part.SurfaceDerivatives();
    tidora::ClearPart(U);
    if (*DISL1 != 0.0) {
        tidora::AddColumn(*DISL1, part.StrikeColumn(i, t), U);
    }
    if (*DISL2 != 0.0) {
        tidora::AddColumn(*DISL2, part.DipColumn(i, t), U);
    }
    if (*DISL3 != 0.0) {
        tidora::AddColumn(*DISL3, part.TensileColumn(i, t), U);
    }
    tidora::FinishPart(U);
}
