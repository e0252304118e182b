#include "deform/ElementSource.h"

#include <cmath>

namespace tidora {
namespace {

constexpr double kTwoPi = 6.283185307179586;
/// Below this the cosine of the dip counts as 0: within 2 seconds of arc of a vertical plane. Ten times the bound of
/// the dislocation routines, on purpose: it decides about the centroid alone, they decide about their own formulas.
constexpr double kVerticalCosine = 1.0e-5;
/// Up to this tolerance, m, the finite source is used everywhere: the distances grow without bound as it goes to 0.
constexpr double kSmallestTolerance = 1.0e-5;
/// 30 degrees of arc on a sphere of radius 6371000 m: a plane is no picture of the earth beyond.
constexpr float kLongestReach = 3335847.8F;
/// 7.5 sqrt(2): bound of the quadrupole terms by which a finite source differs from a point source at its centroid.
constexpr double kQuadrupoleFactor = 10.606601717798211;

double Square(double value) noexcept {
    return value * value;
}

}  // namespace

ElementSource MakeElementSource(const FAULT_PARAM& element, float alpha) noexcept {
    const double theta = DeformationRadians(element.strike - 90.0);
    const double dip = DeformationRadians(element.dip);
    const double rake = DeformationRadians(element.rake);
    ElementSource source;
    source.sinTheta = static_cast<float>(std::sin(theta));
    source.cosTheta = static_cast<float>(std::cos(theta));
    source.sinDip = std::sin(dip);
    source.cosDip = std::cos(dip);
    if (std::abs(source.cosDip) < kVerticalCosine) {
        source.cosDip = 0.0;
        source.sinDip = source.sinDip > 0.0 ? 1.0 : -1.0;
    }
    source.sinRake = std::sin(rake);
    source.cosRake = std::cos(rake);
    source.length = element.length;
    source.width = element.width;

    // The dislocation routines take single precision. The rectangle starts at its reference point and extends by the
    // length along strike and by the width down dip; they round the dip themselves, with the exact pi.
    source.finite.alpha = alpha;
    source.finite.dip = static_cast<float>(element.dip);
    source.finite.al2 = static_cast<float>(element.length);
    source.finite.aw1 = static_cast<float>(-element.width);
    source.finite.strikeSlip = static_cast<float>(element.slip * source.cosRake);
    source.finite.dipSlip = static_cast<float>(element.slip * source.sinRake);
    source.point.alpha = alpha;
    source.point.dip = source.finite.dip;
    source.point.strikePotency = static_cast<float>(element.slip * source.cosRake * element.length * element.width);
    source.point.dipPotency = static_cast<float>(element.slip * source.sinRake * element.length * element.width);
    return source;
}

SourceReach MakeSourceReach(const FAULT_PARAM& element, const ElementSource& source, double tolerance,
                            std::size_t elementCount) noexcept {
    if (!(tolerance > kSmallestTolerance)) {
        return {kLongestReach, kLongestReach, false};
    }
    const double length = element.length;
    const double width = element.width;
    const double sinRake = std::abs(source.sinRake);
    const double cosRake = std::abs(source.cosRake);
    // Both rounded to single precision on purpose; everything else is double and rounded once, at the end.
    const auto q = static_cast<float>(std::abs(element.slip) / kTwoPi * static_cast<double>(elementCount) / tolerance);
    const float alpha = source.finite.alpha;
    const auto k = static_cast<double>((1.0F - alpha) / alpha);

    const double g1 =
        ((std::abs(source.sinDip * source.sinRake * source.cosDip) + std::abs(source.sinDip * source.cosRake)) * k +
         cosRake + sinRake) *
        kQuadrupoleFactor;
    const double g0 = ((source.cosDip * k * source.sinDip + 1.0) * sinRake + cosRake * (k * source.sinDip + 1.0)) * 1.5;
    const double halfDiagonal = 0.5 * std::sqrt(Square(length) + Square(width));
    const double beyond = std::pow(g1 * static_cast<double>(q) * Square(length) * Square(width) * 0.0625, 0.25);
    return {static_cast<float>(halfDiagonal + beyond),
            static_cast<float>(std::sqrt(g0 * static_cast<double>(q) * length * width)), true};
}

}  // namespace tidora
