// Parts A and C of a point source: Okada (1992), Bull. Seism. Soc. Am. 82, Tables 2 to 5.
//
//   paper                code            meaning
//   x, y, d, z           the same        observation point relative to the source's image; d = c - z
//   c                    c               depth of the source, d + z
//   p, q, s, t           v.P .. v.T
//   A3, A5, B3, C3       v.A3 .. v.C3    1 - 3x^2/R^2, 1 - 5x^2/R^2, 1 - 3y^2/R^2, 1 - 3d^2/R^2
//   A7, B5, B7, C5, C7   w.A7 .. w.C7    the same with 5 and 7 times x^2, y^2, d^2
//   U, V, W, U', V', W'  v.UY .. v.WZ
//   alpha                m.ALP5          (1 - alpha)/2, alpha/2, 1 - alpha: m.ALP1, m.ALP2, m.ALP4
//
// No departures from the paper; 3/R^5 and 15/R^7 are named f5 and f7.

#include "okada/DC3D.h"
#include "okada/PartTable.h"

namespace tidora {
namespace {

// Each function is one type of source of a part, line by line: the displacement of Table 2, then the derivatives with
// respect to x, y and z of Tables 3 to 5. The order of the terms is that of the tables, so that a line can be held
// against them.

// ---- part A: the source, or its image, in an unbounded medium ----

PartColumn StrikeA(double x, double y, double d) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double f5 = 3.0 / v.R5;
    return {{m.ALP1 * v.Q / v.R3 + m.ALP2 * v.X2 * v.QR, m.ALP1 * x / v.R3 * m.SD + m.ALP2 * v.XY * v.QR,
             -m.ALP1 * x / v.R3 * m.CD + m.ALP2 * x * d * v.QR},
            {x * v.QR * (-m.ALP1 + m.ALP2 * (1.0 + v.A5)), m.ALP1 * v.A3 / v.R3 * m.SD + m.ALP2 * y * v.QR * v.A5,
             -m.ALP1 * v.A3 / v.R3 * m.CD + m.ALP2 * d * v.QR * v.A5},
            {m.ALP1 * (m.SD / v.R3 - y * v.QR) + m.ALP2 * f5 * v.X2 * v.UY,
             -m.ALP1 * f5 * v.XY * m.SD + m.ALP2 * (x * v.QR + f5 * v.XY * v.UY),
             m.ALP1 * f5 * v.XY * m.CD + m.ALP2 * f5 * x * d * v.UY},
            {m.ALP1 * (m.CD / v.R3 + d * v.QR) + m.ALP2 * f5 * v.X2 * v.UZ,
             m.ALP1 * f5 * x * d * m.SD + m.ALP2 * f5 * v.XY * v.UZ,
             -m.ALP1 * f5 * x * d * m.CD + m.ALP2 * (-x * v.QR + f5 * x * d * v.UZ)}};
}

PartColumn DipA(double x, double y, double d) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double f5 = 3.0 / v.R5;
    return {{m.ALP2 * x * v.P * v.QR, m.ALP1 * v.S / v.R3 + m.ALP2 * y * v.P * v.QR,
             -m.ALP1 * v.T / v.R3 + m.ALP2 * d * v.P * v.QR},
            {m.ALP2 * v.P * v.QR * v.A5, -m.ALP1 * f5 * x * v.S - m.ALP2 * y * v.P * v.QRX,
             m.ALP1 * f5 * x * v.T - m.ALP2 * d * v.P * v.QRX},
            {m.ALP2 * f5 * x * v.VY, m.ALP1 * (m.S2D / v.R3 - f5 * y * v.S) + m.ALP2 * (v.P * v.QR + f5 * y * v.VY),
             -m.ALP1 * (m.C2D / v.R3 - f5 * y * v.T) + m.ALP2 * f5 * d * v.VY},
            {m.ALP2 * f5 * x * v.VZ, m.ALP1 * (m.C2D / v.R3 + f5 * d * v.S) + m.ALP2 * f5 * y * v.VZ,
             m.ALP1 * (m.S2D / v.R3 - f5 * d * v.T) + m.ALP2 * (-v.P * v.QR + f5 * d * v.VZ)}};
}

PartColumn TensileA(double x, double y, double d) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double f5 = 3.0 / v.R5;
    return {{m.ALP1 * x / v.R3 - m.ALP2 * x * v.Q * v.QR, m.ALP1 * v.T / v.R3 - m.ALP2 * y * v.Q * v.QR,
             m.ALP1 * v.S / v.R3 - m.ALP2 * d * v.Q * v.QR},
            {m.ALP1 * v.A3 / v.R3 - m.ALP2 * v.Q * v.QR * v.A5, -m.ALP1 * f5 * x * v.T + m.ALP2 * y * v.Q * v.QRX,
             -m.ALP1 * f5 * x * v.S + m.ALP2 * d * v.Q * v.QRX},
            {-m.ALP1 * f5 * v.XY - m.ALP2 * x * v.QR * v.WY,
             m.ALP1 * (m.C2D / v.R3 - f5 * y * v.T) - m.ALP2 * (v.Q * v.QR + y * v.QR * v.WY),
             m.ALP1 * (m.S2D / v.R3 - f5 * y * v.S) - m.ALP2 * d * v.QR * v.WY},
            {m.ALP1 * f5 * x * d - m.ALP2 * x * v.QR * v.WZ,
             m.ALP1 * (-m.S2D / v.R3 + f5 * d * v.T) - m.ALP2 * y * v.QR * v.WZ,
             m.ALP1 * (m.C2D / v.R3 + f5 * d * v.S) + m.ALP2 * (v.Q * v.QR - d * v.QR * v.WZ)}};
}

PartColumn InflationA(double x, double y, double d) noexcept {
    const auto& v = c1_;
    const double a = c0_.ALP1;
    const double f5 = 3.0 / v.R5;
    return {{-a * x / v.R3, -a * y / v.R3, -a * d / v.R3},
            {-a * v.A3 / v.R3, a * f5 * v.XY, a * f5 * x * d},
            {a * f5 * v.XY, -a * v.B3 / v.R3, a * f5 * y * d},
            {-a * f5 * x * d, -a * f5 * y * d, a * v.C3 / v.R3}};
}

// ---- part C: what the depth of the observation point multiplies ----

/// Quantities that part C adds to the station geometry.
struct PointBodyTerms {
    double A7, B5, B7, C5, C7;
    double f5;  ///< 3 / R^5
    double f7;  ///< 15 / R^7
};

PointBodyTerms PointBodyTermsOf() noexcept {
    const auto& v = c1_;
    return {1.0 - 7.0 * v.X2 / v.R2, 1.0 - 5.0 * v.Y2 / v.R2, 1.0 - 7.0 * v.Y2 / v.R2,
            1.0 - 5.0 * v.D2 / v.R2, 1.0 - 7.0 * v.D2 / v.R2, 3.0 / v.R5,
            15.0 / (v.R5 * v.R2)};
}

PartColumn StrikeC(double x, double y, double d, double c, const PointBodyTerms& w) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double b = m.ALP4;
    const double a5 = m.ALP5 * w.f5 * c;
    const double a7 = m.ALP5 * w.f7 * c * x;
    // Terms with alpha that stand in the tables twice.
    const double xUpY = a5 * (v.A5 * m.SD - 5.0 * y * v.Q / v.R2 * w.A7);
    const double xUpZ = a5 * (v.A5 * m.CD + 5.0 * d * v.Q / v.R2 * w.A7);
    const double yUpZ = a7 * (d * m.SD - y * m.CD - 7.0 * y * d * v.Q / v.R2);
    return {{-b * v.A3 / v.R3 * m.CD + a5 * v.Q * v.A5, b * w.f5 * v.XY * m.CD + a5 * x * v.UY,
             -b * w.f5 * v.XY * m.SD + a5 * x * v.UZ},
            {b * w.f5 * x * (2.0 + v.A5) * m.CD - a7 * v.Q * (2.0 + w.A7), b * w.f5 * y * v.A5 * m.CD + xUpY,
             -b * w.f5 * y * v.A5 * m.SD + xUpZ},
            {b * w.f5 * y * v.A5 * m.CD + xUpY, b * w.f5 * x * w.B5 * m.CD - a7 * (2.0 * y * m.SD + v.Q * w.B7),
             -b * w.f5 * x * w.B5 * m.SD + yUpZ},
            {-b * w.f5 * d * v.A5 * m.CD + xUpZ, b * w.f7 * v.XY * d * m.CD + yUpZ,
             -b * w.f7 * v.XY * d * m.SD + a7 * (2.0 * d * m.CD - v.Q * w.C7)}};
}

PartColumn DipC(double x, double y, double d, double c, const PointBodyTerms& w) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double b = m.ALP4;
    const double a5 = m.ALP5 * w.f5 * c;
    const double a7 = m.ALP5 * w.f7 * c * x;
    const double pq = v.P * v.Q;
    const double xyTerm = b * w.f5 * x * (m.C2D - 5.0 * y * v.T / v.R2) - a7 * (v.S - 7.0 * y * pq / v.R2);
    const double xzTerm = a7 * (v.T + 7.0 * d * pq / v.R2);
    const double yzTerm = a5 * (m.C2D + 5.0 * (d * v.S - y * v.T) / v.R2 - 35.0 * y * d * pq / (v.R2 * v.R2));
    return {
        {b * w.f5 * x * v.T - a7 * pq, -b / v.R3 * (m.C2D - 3.0 * y * v.T / v.R2) + a5 * v.VY,
         -b * v.A3 / v.R3 * m.SDCD + a5 * v.VZ},
        {b * w.f5 * v.T * v.A5 - m.ALP5 * w.f7 * c * pq * w.A7, xyTerm, b * w.f5 * x * (2.0 + v.A5) * m.SDCD - xzTerm},
        {xyTerm,
         b * w.f5 * (2.0 * y * m.C2D + v.T * w.B5) + a5 * (m.S2D - 10.0 * y * v.S / v.R2 - 5.0 * pq / v.R2 * w.B7),
         b * w.f5 * y * v.A5 * m.SDCD + yzTerm},
        {b * w.f5 * x * (-m.S2D + 5.0 * d * v.T / v.R2) - xzTerm,
         -b * w.f5 * (d * m.C2D + y * m.S2D - 5.0 * y * d * v.T / v.R2) + yzTerm,
         -b * w.f5 * d * v.A5 * m.SDCD + a5 * (-m.S2D + 10.0 * d * v.T / v.R2 - 5.0 * pq / v.R2 * w.C7)}};
}

PartColumn TensileC(double x, double y, double d, double c, double z, const PointBodyTerms& w) noexcept {
    const auto& m = c0_;
    const auto& v = c1_;
    const double b = m.ALP4;
    const double a = m.ALP5;
    const double a5 = a * w.f5 * c;
    const double a7 = a * w.f7 * c * x;
    const double qq = v.Q * v.Q / v.R2;
    const double alongX = 1.0 + 5.0 * d * z / v.R2;
    return {{-b * w.f5 * x * v.S + a7 * v.Q * v.Q - a * w.f5 * x * z,
             b / v.R3 * (m.S2D - 3.0 * y * v.S / v.R2) + a5 * (v.T - y + 5.0 * y * qq) - a * w.f5 * y * z,
             -b / v.R3 * (1.0 - v.A3 * m.SDSD) - a5 * (v.S - d + 5.0 * d * qq) + a * w.f5 * d * z},
            {-b * w.f5 * v.S * v.A5 + a * w.f7 * c * v.Q * v.Q * w.A7 - a * w.f5 * z * v.A5,
             -b * w.f5 * x * (m.S2D - 5.0 * y * v.S / v.R2) - a7 * (v.T - y + 7.0 * y * qq) + a * w.f7 * v.XY * z,
             b * w.f5 * x * (1.0 - (2.0 + v.A5) * m.SDSD) + a7 * (v.S - d + 7.0 * d * qq) - a * w.f7 * x * d * z},
            {-b * w.f5 * x * (m.S2D - 5.0 * y * v.S / v.R2) + a7 * v.Q * (2.0 * m.SD - 7.0 * y * v.Q / v.R2) +
                 a * w.f7 * v.XY * z,
             -b * w.f5 * (2.0 * y * m.S2D + v.S * w.B5) +
                 a5 * (-2.0 * m.SDSD - 5.0 * y * (v.T - y) / v.R2 + 5.0 * qq * w.B7 + 10.0 * y * v.Q * m.SD / v.R2) -
                 a * w.f5 * z * w.B5,
             b * w.f5 * y * (1.0 - v.A5 * m.SDSD) -
                 a5 * (m.S2D - 5.0 * y * (v.S - d) / v.R2 + 10.0 * d * v.Q * m.SD / v.R2 - 35.0 * y * d * qq / v.R2) -
                 a * w.f7 * y * d * z},
            {-b * w.f5 * x * (m.C2D + 5.0 * d * v.S / v.R2) + a7 * v.Q * (2.0 * m.CD + 7.0 * d * v.Q / v.R2) -
                 a * w.f5 * x * alongX,
             b * w.f5 * (d * m.S2D - y * m.C2D - 5.0 * y * d * v.S / v.R2) +
                 a5 * (-m.S2D + 5.0 * d * (v.T - y) / v.R2 + 10.0 * y * v.Q * m.CD / v.R2 + 35.0 * y * d * qq / v.R2) -
                 a * w.f5 * y * alongX,
             -b * w.f5 * d * (1.0 - v.A5 * m.SDSD) -
                 a5 * (m.C2D + 1.0 + 5.0 * d * (v.S - d) / v.R2 - 5.0 * qq * w.C7 + 10.0 * d * v.Q * m.CD / v.R2) +
                 a * w.f5 * (d - z * w.C5)}};
}

PartColumn InflationC(double x, double y, double d, const PointBodyTerms& w) noexcept {
    const auto& v = c1_;
    const double b = c0_.ALP4;
    return {{b * w.f5 * x * d, b * w.f5 * y * d, b * v.C3 / v.R3},
            {b * w.f5 * d * v.A5, -b * w.f7 * v.XY * d, -b * w.f5 * x * w.C5},
            {-b * w.f7 * v.XY * d, b * w.f5 * d * w.B5, -b * w.f5 * y * w.C5},
            {-b * w.f5 * x * w.C5, -b * w.f5 * y * w.C5, b * w.f5 * d * (2.0 + w.C5)}};
}

}  // namespace
}  // namespace tidora

extern "C" {

void ua0_(const double* X, const double* Y, const double* D, const double* POT1, const double* POT2, const double* POT3,
          const double* POT4, double* U) {
    tidora::ClearPart(U);
    // A potency of 0 adds nothing, not even 0 times an infinite term; in uc0_ likewise.
    if (*POT1 != 0.0) {
        tidora::AddColumn(*POT1, tidora::StrikeA(*X, *Y, *D), U);
    }
    if (*POT2 != 0.0) {
        tidora::AddColumn(*POT2, tidora::DipA(*X, *Y, *D), U);
    }
    if (*POT3 != 0.0) {
        tidora::AddColumn(*POT3, tidora::TensileA(*X, *Y, *D), U);
    }
    if (*POT4 != 0.0) {
        tidora::AddColumn(*POT4, tidora::InflationA(*X, *Y, *D), U);
    }
    tidora::FinishPart(U);
}

void uc0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1, const double* POT2,
          const double* POT3, const double* POT4, double* U) {
    const tidora::PointBodyTerms w = tidora::PointBodyTermsOf();
    const double c = *D + *Z;
    tidora::ClearPart(U);
    if (*POT1 != 0.0) {
        tidora::AddColumn(*POT1, tidora::StrikeC(*X, *Y, *D, c, w), U);
    }
    if (*POT2 != 0.0) {
        tidora::AddColumn(*POT2, tidora::DipC(*X, *Y, *D, c, w), U);
    }
    if (*POT3 != 0.0) {
        tidora::AddColumn(*POT3, tidora::TensileC(*X, *Y, *D, c, *Z, w), U);
    }
    if (*POT4 != 0.0) {
        tidora::AddColumn(*POT4, tidora::InflationC(*X, *Y, *D, w), U);
    }
    tidora::FinishPart(U);
}
}
