// What every table takes from the medium and the dip: the constants that Okada (1992) writes with alpha and delta.

#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {

TidoraBlockC0 MediumOf(double alpha, double dip) noexcept {
    TidoraBlockC0 m{};
    m.ALP1 = (1.0 - alpha) / 2.0;
    m.ALP2 = alpha / 2.0;
    m.ALP3 = (1.0 - alpha) / alpha;
    m.ALP4 = 1.0 - alpha;
    m.ALP5 = alpha;

    // cos(90 degrees) comes out as 6e-17: the general formulas would divide by its square. Below the bound the plane is
    // vertical, and the sine, then 1 to within 5e-13, becomes so exactly.
    const double dipRad = dip * kRadiansPerDegree;
    m.SD = std::sin(dipRad);
    m.CD = std::cos(dipRad);
    if (std::abs(m.CD) < kOkadaEpsilon) {
        m.CD = 0.0;
        if (m.SD > 0.0) {
            m.SD = 1.0;
        } else if (m.SD < 0.0) {
            m.SD = -1.0;
        }
    }
    m.SDSD = m.SD * m.SD;
    m.CDCD = m.CD * m.CD;
    m.SDCD = m.SD * m.CD;
    // By the products, not by functions of twice the dip: they follow the clamp.
    m.S2D = 2.0 * m.SDCD;
    m.C2D = m.CDCD - m.SDSD;
    return m;
}

}  // namespace tidora

extern "C" {

TidoraBlockC0 c0_ = {};  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

void dccon0_(const double* ALPHA, const double* DIP) {
    c0_ = tidora::MediumOf(*ALPHA, *DIP);
}
}
