// What the tables of a rectangular source share at one corner: Okada (1992), Bull. Seism. Soc. Am. 82, Tables 6 to 9.
// Names as in the paper; sums of three squares run from xi to q, and the batched kernel repeats them bit for bit.

#include <cmath>

#include "okada/DC3D.h"
#include "okada/SurfaceSource.h"

namespace tidora {
namespace {

/// Terms that blow up where R + s vanishes, s being xi or eta.
struct EdgeTerms {
    double log;  ///< ln(R + s)
    double f11;  ///< 1 / (R (R + s)):             X11, Y11
    double f32;  ///< (2R + s) / (R^3 (R + s)^2):  X32, Y32
};

/// On the negative extension of an edge the logarithm takes the form -ln(R - s), whose difference between the two ends
/// of the edge is the same, and the fractions count as 0: Okada (1992), rule (ii) for singular points.
/// rest2: sum of the squares of the other two co-ordinates.
EdgeTerms EdgeTermsOf(double R, double s, double rest2, bool onNegativeExtension) noexcept {
    if (onNegativeExtension) {
        return {-std::log(R - s), 0.0, 0.0};
    }
    double sum = R + s;
    if (sum == 0.0) {
        // Lost to rounding: a point closer to the trace of a long source than a hundred millionth of its length. The
        // same sum, rest2 / (R - s), keeps its digits there. Only there: elsewhere it would change the last bits.
        sum = rest2 / (R - s);
    }
    const double f11 = 1.0 / (R * sum);
    return {std::log(sum), f11, (R + sum) * f11 * f11 / R};
}

}  // namespace

void SetCorner(double sd, double cd, double& xi, double& eta, double& q, bool onXiExtension, bool onEtaExtension,
               TidoraBlockC2& c) noexcept {
    xi = ZeroIfTiny(xi);
    eta = ZeroIfTiny(eta);
    q = ZeroIfTiny(q);

    // Three squares, then two sums, none of them fused: near an extension R + xi and R + eta hold little else than the
    // rounding of R.
    c.XI2 = xi * xi;
    c.ET2 = eta * eta;
    c.Q2 = q * q;
    c.R2 = c.XI2 + c.ET2 + c.Q2;
    c.R = std::sqrt(c.R2);
    if (c.R == 0.0) {
        return;  // a corner is on an edge, which the callers have ruled out; the fields below would be infinite
    }
    c.R3 = c.R * c.R2;
    c.R5 = c.R3 * c.R2;
    c.Y = eta * cd + q * sd;
    c.D = eta * sd - q * cd;
    // The angle jumps by pi from one side of the plane to the other; on it, 0 is the mean of both.
    c.TT = q == 0.0 ? 0.0 : std::atan(xi * eta / (q * c.R));

    const EdgeTerms x = EdgeTermsOf(c.R, xi, c.ET2 + c.Q2, onXiExtension);
    c.ALX = x.log;
    c.X11 = x.f11;
    c.X32 = x.f32;
    const EdgeTerms y = EdgeTermsOf(c.R, eta, c.XI2 + c.Q2, onEtaExtension);
    c.ALE = y.log;
    c.Y11 = y.f11;
    c.Y32 = y.f32;

    // E to H of Table 8 and, as EZ to HZ, the primed ones of Table 9.
    c.EY = sd / c.R - c.Y * q / c.R3;
    c.EZ = cd / c.R + c.D * q / c.R3;
    c.FY = c.D / c.R3 + c.XI2 * c.Y32 * sd;
    c.FZ = c.Y / c.R3 + c.XI2 * c.Y32 * cd;
    c.GY = 2.0 * c.X11 * sd - c.Y * q * c.X32;
    c.GZ = 2.0 * c.X11 * cd + c.D * q * c.X32;
    c.HY = c.D * q * c.X32 + xi * q * c.Y32 * sd;
    c.HZ = c.Y * q * c.X32 + xi * q * c.Y32 * cd;
}

}  // namespace tidora

extern "C" {

TidoraBlockC2 c2_ = {};  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

void dccon2_(double* XI, double* ET, double* Q, const double* SD, const double* CD, const int* KXI, const int* KET) {
    tidora::SetCorner(*SD, *CD, *XI, *ET, *Q, *KXI == 1, *KET == 1, c2_);
}
}
