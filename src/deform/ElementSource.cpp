#include "deform/ElementSource.h"

#include <cmath>

namespace tidora {
namespace {

constexpr double kTwoPi = 6.283185307179586;
/// Below this the cosine of the dip counts as 0. Ten times the dislocation routines' own bound, on purpose.
constexpr double kVerticalCosine = 1.0e-5;
/// Up to this tolerance, m, the finite source is used everywhere.
constexpr double kSmallestTolerance = 1.0e-5;
/// 30 degrees of arc on a sphere of radius 6371000 m.
constexpr float kLongestReach = 3335847.8F;
/// 7.5 sqrt(2): bound of the quadrupole terms by which a finite source differs from a point source.
constexpr double kQuadrupoleFactor = 10.606601717798211;

double Square(double value) noexcept {
    return value * value;
}

}  // namespace

ElementSource MakeElementSource(const FAULT_PARAM& element, float alpha) noexcept {
    const double theta = DeformationRadians(element.strike - 90.0);
    const double dip = DeformationRadians(element.dip);
    const double rake = DeformationRadians(element.rake);
    ElementSource source{};
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
    source.alpha = alpha;
    source.dip = static_cast<float>(element.dip);
    source.strikeSlip = static_cast<float>(element.slip * source.cosRake);
    source.dipSlip = static_cast<float>(element.slip * source.sinRake);
    source.strikePotency = static_cast<float>(element.slip * source.cosRake * element.length * element.width);
    source.dipPotency = static_cast<float>(element.slip * source.sinRake * element.length * element.width);
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
    // Single on purpose, as are the distances; everything between is double and rounded once.
    const auto q = static_cast<float>(std::abs(element.slip) / kTwoPi * static_cast<double>(elementCount) / tolerance);
    const float kSingle = (1.0F - source.alpha) / source.alpha;
    const auto k = static_cast<double>(kSingle);

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

RectangleSource FiniteSourceOf(const ElementSource& source) noexcept {
    RectangleSource rectangle;
    rectangle.alpha = source.alpha;
    rectangle.dip = source.dip;
    rectangle.al2 = static_cast<float>(source.length);
    rectangle.aw1 = static_cast<float>(-source.width);
    rectangle.strikeSlip = source.strikeSlip;
    rectangle.dipSlip = source.dipSlip;
    return rectangle;
}

PointShearSource PointSourceOf(const ElementSource& source) noexcept {
    return {source.alpha, source.dip, source.strikePotency, source.dipPotency};
}

}  // namespace tidora
