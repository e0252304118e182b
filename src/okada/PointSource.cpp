// A point source: its station geometry, Okada (1992), Bull. Seism. Soc. Am. 82, Tables 2 to 5, and the entry point
// dc3d0_. Names as in the paper.

#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {

void SetStation(const TidoraBlockC0& m, double& x, double& y, double& d, TidoraBlockC1& v) noexcept {
    x = ZeroIfTiny(x);
    y = ZeroIfTiny(y);
    d = ZeroIfTiny(d);
    const double sd = m.SD;
    const double cd = m.CD;

    v.P = y * cd + d * sd;
    v.Q = y * sd - d * cd;
    v.S = v.P * sd + v.Q * cd;
    v.T = v.P * cd - v.Q * sd;
    v.XY = x * y;
    v.X2 = x * x;
    v.Y2 = y * y;
    v.D2 = d * d;
    v.R2 = v.X2 + v.Y2 + v.D2;
    v.R = std::sqrt(v.R2);
    if (v.R == 0.0) {
        return;  // the source itself: everything below would be infinite, and the entry point answers with a status
    }
    v.R3 = v.R * v.R2;
    v.R5 = v.R3 * v.R2;
    v.QR = 3.0 * v.Q / v.R5;
    v.QRX = 5.0 * v.QR * x / v.R2;
    v.A3 = 1.0 - 3.0 * v.X2 / v.R2;
    v.A5 = 1.0 - 5.0 * v.X2 / v.R2;
    v.B3 = 1.0 - 3.0 * v.Y2 / v.R2;
    v.C3 = 1.0 - 3.0 * v.D2 / v.R2;
    // U, V, W of Table 4 (y) and the primed ones of Table 5 (z).
    v.UY = sd - 5.0 * y * v.Q / v.R2;
    v.VY = v.S - 5.0 * y * v.P * v.Q / v.R2;
    v.WY = v.UY + sd;
    v.UZ = cd + 5.0 * d * v.Q / v.R2;
    v.VZ = v.T + 5.0 * d * v.P * v.Q / v.R2;
    v.WZ = v.UZ + cd;
}

bool PointSurfaceSource(const TidoraBlockC0& m, float x, float y, float z, float depth, const Dislocation& potency,
                        TidoraBlockC1& v, Row& u) noexcept {
    double wideX = Widen(x);
    double wideY = Widen(y);
    double d = Widen(depth + z);  // summed in single precision, as the header promises
    SetStation(m, wideX, wideY, d, v);
    if (v.R == 0.0) {
        return true;
    }
    d = Widen(depth - z);  // of the image, to which part B belongs
    SetStation(m, wideX, wideY, d, v);
    u = PointDisplacement(m, v, wideX, wideY, d, Widen(z), potency);
    return false;
}

}  // namespace tidora

extern "C" {

TidoraBlockC1 c1_ = {};  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

void dccon1_(double* X, double* Y, double* D) {
    tidora::SetStation(c0_, *X, *Y, *D, c1_);
}

void dc3d0_(const float* ALPHA, const float* X, const float* Y, const float* Z, const float* DEPTH, const float* DIP,
            const float* POT1, const float* POT2, const float* POT3, const float* POT4, float* UX, float* UY, float* UZ,
            float* UXX, float* UYX, float* UZX, float* UXY, float* UYY, float* UZY, float* UXZ, float* UYZ, float* UZZ,
            int* IRET) {
    using tidora::Widen;
    tidora::ZeroOutputs(UX, UY, UZ, UXX, UYX, UZX, UXY, UYY, UZY, UXZ, UYZ, UZZ);
    *IRET = 0;
    if (*Z > 0.0F) {
        *IRET = 2;
        return;
    }
    c0_ = tidora::MediumOf(Widen(*ALPHA), Widen(*DIP));
    tidora::Row u;
    if (tidora::PointSurfaceSource(c0_, *X, *Y, *Z, *DEPTH, {Widen(*POT1), Widen(*POT2), Widen(*POT3), Widen(*POT4)},
                                   c1_, u)) {
        *IRET = 1;
        return;
    }
    *UX = static_cast<float>(u.f1);
    *UY = static_cast<float>(u.f2);
    *UZ = static_cast<float>(u.f3);
}
}
