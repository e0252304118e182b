// Parts A and C of a rectangular source: Okada (1992), Bull. Seism. Soc. Am. 82, Tables 6 to 9.
//
//   paper            code          meaning
//   xi, eta, q, z    the same      corner co-ordinates; z of the observation point
//   y~, d~, c~       c.Y, c.D, C   c~ = d~ + z
//   alpha            m.ALP5        (1 - alpha)/2, alpha/2, 1 - alpha: m.ALP1, m.ALP2, m.ALP4
//   E..H, E'..H'     c.EY..c.HZ    of the corner geometry
//   h, X53, Y53, Y0, Z32, Z53, Z0, P, Q, P', Q'   the same; the primes are written z
//
// No departures from the paper.

#include "okada/DC3D.h"
#include "okada/PartTable.h"

namespace tidora {
namespace {

// Each function is one slip type of a part, line by line: the displacement of Table 6, then the derivatives with
// respect to x, y and z of Tables 7 to 9. The order of the terms is that of the tables, so that a line can be held
// against them.

// ---- part A: the source, or its image, in an unbounded medium ----

PartColumn StrikeA(double xi, double q) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    return {{c.TT / 2.0 + m.ALP2 * xi * q * c.Y11, m.ALP2 * q / c.R, m.ALP1 * c.ALE - m.ALP2 * c.Q2 * c.Y11},
            {-m.ALP1 * q * c.Y11 - m.ALP2 * c.XI2 * q * c.Y32, -m.ALP2 * xi * q / c.R3,
             m.ALP1 * xi * c.Y11 + m.ALP2 * xi * c.Q2 * c.Y32},
            {m.ALP1 * xi * c.Y11 * m.SD + c.D / 2.0 * c.X11 + m.ALP2 * xi * c.FY, m.ALP2 * c.EY,
             m.ALP1 * (m.CD / c.R + q * c.Y11 * m.SD) - m.ALP2 * q * c.FY},
            {m.ALP1 * xi * c.Y11 * m.CD + c.Y / 2.0 * c.X11 + m.ALP2 * xi * c.FZ, m.ALP2 * c.EZ,
             -m.ALP1 * (m.SD / c.R - q * c.Y11 * m.CD) - m.ALP2 * q * c.FZ}};
}

PartColumn DipA(double xi, double eta, double q) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    return {{m.ALP2 * q / c.R, c.TT / 2.0 + m.ALP2 * eta * q * c.X11, m.ALP1 * c.ALX - m.ALP2 * c.Q2 * c.X11},
            {-m.ALP2 * xi * q / c.R3, -q / 2.0 * c.Y11 - m.ALP2 * eta * q / c.R3, m.ALP1 / c.R + m.ALP2 * c.Q2 / c.R3},
            {m.ALP2 * c.EY, m.ALP1 * c.D * c.X11 + xi / 2.0 * c.Y11 * m.SD + m.ALP2 * eta * c.GY,
             m.ALP1 * c.Y * c.X11 - m.ALP2 * q * c.GY},
            {m.ALP2 * c.EZ, m.ALP1 * c.Y * c.X11 + xi / 2.0 * c.Y11 * m.CD + m.ALP2 * eta * c.GZ,
             -m.ALP1 * c.D * c.X11 - m.ALP2 * q * c.GZ}};
}

PartColumn TensileA(double xi, double eta, double q) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    return {{-m.ALP1 * c.ALE - m.ALP2 * c.Q2 * c.Y11, -m.ALP1 * c.ALX - m.ALP2 * c.Q2 * c.X11,
             c.TT / 2.0 - m.ALP2 * q * (eta * c.X11 + xi * c.Y11)},
            {-m.ALP1 * xi * c.Y11 + m.ALP2 * xi * c.Q2 * c.Y32, -m.ALP1 / c.R + m.ALP2 * c.Q2 / c.R3,
             -m.ALP1 * q * c.Y11 - m.ALP2 * q * c.Q2 * c.Y32},
            {-m.ALP1 * (m.CD / c.R + q * c.Y11 * m.SD) - m.ALP2 * q * c.FY, -m.ALP1 * c.Y * c.X11 - m.ALP2 * q * c.GY,
             m.ALP1 * (c.D * c.X11 + xi * c.Y11 * m.SD) + m.ALP2 * q * c.HY},
            {m.ALP1 * (m.SD / c.R - q * c.Y11 * m.CD) - m.ALP2 * q * c.FZ, m.ALP1 * c.D * c.X11 - m.ALP2 * q * c.GZ,
             m.ALP1 * (c.Y * c.X11 + xi * c.Y11 * m.CD) + m.ALP2 * q * c.HZ}};
}

// ---- part C: what the depth of the observation point multiplies ----

/// Quantities that part C adds to the corner geometry.
struct BodyTerms {
    double C;                 ///< c~
    double X53, Y0, Z32, Z0;  ///< X53 = (8R^2 + 9R xi + 3xi^2) / (R^5 (R + xi)^3)
    double P, Q, Pz, Qz;      ///< for the y and, as Pz and Qz, the z derivatives
    double C3;                ///< (1 - 3 q^2 / R^2) / R^3
};

BodyTerms BodyTermsOf(double xi, double eta, double q, double z) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    BodyTerms t{};
    t.C = c.D + z;
    // 1 / (R^5 (R + xi)^3) is the cube of X11 = 1 / (R (R + xi)) over R^2; the same with eta and Y11.
    t.X53 = (8.0 * c.R2 + 9.0 * c.R * xi + 3.0 * c.XI2) * c.X11 * c.X11 * c.X11 / c.R2;
    const double Y53 = (8.0 * c.R2 + 9.0 * c.R * eta + 3.0 * c.ET2) * c.Y11 * c.Y11 * c.Y11 / c.R2;
    const double h = q * m.CD - z;
    t.Z32 = m.SD / c.R3 - h * c.Y32;
    const double Z53 = 3.0 * m.SD / c.R5 - h * Y53;
    t.Y0 = c.Y11 - c.XI2 * c.Y32;
    t.Z0 = t.Z32 - c.XI2 * Z53;
    t.P = m.CD / c.R3 + q * c.Y32 * m.SD;
    t.Pz = m.SD / c.R3 - q * c.Y32 * m.CD;
    // In both Q and Q'.
    const double sum = z * c.Y32 + t.Z32 + t.Z0;
    t.Q = 3.0 * t.C * c.D / c.R5 - sum * m.SD;
    t.Qz = 3.0 * t.C * c.Y / c.R5 + q * c.Y32 - sum * m.CD;
    t.C3 = (1.0 - 3.0 * c.Q2 / c.R2) / c.R3;
    return t;
}

PartColumn StrikeC(double xi, double eta, double q, double z, const BodyTerms& t) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    const double a = m.ALP5;
    return {{m.ALP4 * xi * c.Y11 * m.CD - a * xi * q * t.Z32,
             m.ALP4 * (m.CD / c.R + 2.0 * q * c.Y11 * m.SD) - a * t.C * q / c.R3,
             m.ALP4 * q * c.Y11 * m.CD - a * (t.C * eta / c.R3 - z * c.Y11 + c.XI2 * t.Z32)},
            {m.ALP4 * t.Y0 * m.CD - a * q * t.Z0,
             -m.ALP4 * xi * (m.CD / c.R3 + 2.0 * q * c.Y32 * m.SD) + a * 3.0 * t.C * xi * q / c.R5,
             -m.ALP4 * xi * q * c.Y32 * m.CD + a * xi * (3.0 * t.C * eta / c.R5 - z * c.Y32 - t.Z32 - t.Z0)},
            {-m.ALP4 * xi * t.P * m.CD - a * xi * t.Q,
             2.0 * m.ALP4 * (c.D / c.R3 - t.Y0 * m.SD) * m.SD - c.Y / c.R3 * m.CD -
                 a * ((t.C + c.D) / c.R3 * m.SD - eta / c.R3 - 3.0 * t.C * c.Y * q / c.R5),
             -m.ALP4 * q / c.R3 + (c.Y / c.R3 - t.Y0 * m.CD) * m.SD +
                 a * ((t.C + c.D) / c.R3 * m.CD + 3.0 * t.C * c.D * q / c.R5 - (t.Y0 * m.CD + q * t.Z0) * m.SD)},
            {m.ALP4 * xi * t.Pz * m.CD - a * xi * t.Qz,
             2.0 * m.ALP4 * (c.Y / c.R3 - t.Y0 * m.CD) * m.SD + c.D / c.R3 * m.CD -
                 a * ((t.C + c.D) / c.R3 * m.CD + 3.0 * t.C * c.D * q / c.R5),
             (c.Y / c.R3 - t.Y0 * m.CD) * m.CD -
                 a * ((t.C + c.D) / c.R3 * m.SD - 3.0 * t.C * c.Y * q / c.R5 - t.Y0 * m.SDSD + q * t.Z0 * m.CD)}};
}

PartColumn DipC(double xi, double eta, double q, const BodyTerms& t) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    const double a = m.ALP5;
    return {
        {m.ALP4 * m.CD / c.R - q * c.Y11 * m.SD - a * t.C * q / c.R3, m.ALP4 * c.Y * c.X11 - a * t.C * eta * q * c.X32,
         -c.D * c.X11 - xi * c.Y11 * m.SD - a * t.C * (c.X11 - c.Q2 * c.X32)},
        {-m.ALP4 * xi / c.R3 * m.CD + xi * q * c.Y32 * m.SD + a * 3.0 * t.C * xi * q / c.R5,
         -m.ALP4 * c.Y / c.R3 + a * 3.0 * t.C * eta * q / c.R5, c.D / c.R3 - t.Y0 * m.SD + a * t.C * t.C3},
        {-m.ALP4 * eta / c.R3 + t.Y0 * m.SDSD - a * ((t.C + c.D) / c.R3 * m.SD - 3.0 * t.C * c.Y * q / c.R5),
         m.ALP4 * (c.X11 - c.Y * c.Y * c.X32) - a * t.C * ((c.D + 2.0 * q * m.CD) * c.X32 - c.Y * eta * q * t.X53),
         xi * t.P * m.SD + c.Y * c.D * c.X32 + a * t.C * ((c.Y + 2.0 * q * m.SD) * c.X32 - c.Y * c.Q2 * t.X53)},
        {-q / c.R3 + t.Y0 * m.SDCD - a * ((t.C + c.D) / c.R3 * m.CD + 3.0 * t.C * c.D * q / c.R5),
         m.ALP4 * c.Y * c.D * c.X32 - a * t.C * ((c.Y - 2.0 * q * m.SD) * c.X32 + c.D * eta * q * t.X53),
         -xi * t.Pz * m.SD + c.X11 - c.D * c.D * c.X32 -
             a * t.C * ((c.D - 2.0 * q * m.CD) * c.X32 - c.D * c.Q2 * t.X53)}};
}

PartColumn TensileC(double xi, double eta, double q, double z, const BodyTerms& t) noexcept {
    const auto& m = c0_;
    const auto& c = c2_;
    const double a = m.ALP5;
    return {{-m.ALP4 * (m.SD / c.R + q * c.Y11 * m.CD) - a * (z * c.Y11 - c.Q2 * t.Z32),
             m.ALP4 * 2.0 * xi * c.Y11 * m.SD + c.D * c.X11 - a * t.C * (c.X11 - c.Q2 * c.X32),
             m.ALP4 * (c.Y * c.X11 + xi * c.Y11 * m.CD) + a * q * (t.C * eta * c.X32 + xi * t.Z32)},
            {m.ALP4 * xi / c.R3 * m.SD + xi * q * c.Y32 * m.CD + a * xi * (3.0 * t.C * eta / c.R5 - 2.0 * t.Z32 - t.Z0),
             m.ALP4 * 2.0 * t.Y0 * m.SD - c.D / c.R3 + a * t.C * t.C3,
             -m.ALP4 * (c.Y / c.R3 - t.Y0 * m.CD) - a * (3.0 * t.C * eta * q / c.R5 - q * t.Z0)},
            {m.ALP4 * (q / c.R3 + t.Y0 * m.SDCD) + a * (z / c.R3 * m.CD + 3.0 * t.C * c.D * q / c.R5 - q * t.Z0 * m.SD),
             -m.ALP4 * 2.0 * xi * t.P * m.SD - c.Y * c.D * c.X32 +
                 a * t.C * ((c.Y + 2.0 * q * m.SD) * c.X32 - c.Y * c.Q2 * t.X53),
             -m.ALP4 * (xi * t.P * m.CD - c.X11 + c.Y * c.Y * c.X32) +
                 a * t.C * ((c.D + 2.0 * q * m.CD) * c.X32 - c.Y * eta * q * t.X53) + a * xi * t.Q},
            {-eta / c.R3 + t.Y0 * m.CDCD -
                 a * (z / c.R3 * m.SD - 3.0 * t.C * c.Y * q / c.R5 - t.Y0 * m.SDSD + q * t.Z0 * m.CD),
             m.ALP4 * 2.0 * xi * t.Pz * m.SD - c.X11 + c.D * c.D * c.X32 -
                 a * t.C * ((c.D - 2.0 * q * m.CD) * c.X32 - c.D * c.Q2 * t.X53),
             m.ALP4 * (xi * t.Pz * m.CD + c.Y * c.D * c.X32) +
                 a * t.C * ((c.Y - 2.0 * q * m.SD) * c.X32 + c.D * eta * q * t.X53) + a * xi * t.Qz}};
}

}  // namespace
}  // namespace tidora

extern "C" {

void ua_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U) {
    tidora::ClearPart(U);
    // A slip of 0 adds nothing, not even 0 times an infinite term; in uc_ likewise.
    if (*DISL1 != 0.0) {
        tidora::AddColumn(*DISL1, tidora::StrikeA(*XI, *Q), U);
    }
    if (*DISL2 != 0.0) {
        tidora::AddColumn(*DISL2, tidora::DipA(*XI, *ET, *Q), U);
    }
    if (*DISL3 != 0.0) {
        tidora::AddColumn(*DISL3, tidora::TensileA(*XI, *ET, *Q), U);
    }
    tidora::FinishPart(U);
}

void uc_(const double* XI, const double* ET, const double* Q, const double* Z, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U) {
    const tidora::BodyTerms t = tidora::BodyTermsOf(*XI, *ET, *Q, *Z);
    tidora::ClearPart(U);
    if (*DISL1 != 0.0) {
        tidora::AddColumn(*DISL1, tidora::StrikeC(*XI, *ET, *Q, *Z, t), U);
    }
    if (*DISL2 != 0.0) {
        tidora::AddColumn(*DISL2, tidora::DipC(*XI, *ET, *Q, t), U);
    }
    if (*DISL3 != 0.0) {
        tidora::AddColumn(*DISL3, tidora::TensileC(*XI, *ET, *Q, *Z, t), U);
    }
    tidora::FinishPart(U);
}
}
