#include "deform/GreatCircle.h"

#include <algorithm>
#include <cmath>

#include "deform/ElementSource.h"

namespace tidora {
namespace {

constexpr double kHalfPi = 1.5707963267948966;
/// Cosines closer than this leave it to the angle: dot product and angle are good to some 1e-15.
constexpr double kUndecided = 1.0e-12;
/// Radians up to which the cosine falls steeply enough for that: the angle of 3 is 8 degrees short of the antipode.
constexpr double kLargestAngle = 3.0;

/// Great-circle angle between two directions, radians: atan2(|cross product|, dot product), accurate at all distances.
/// sinLon, cosLon: of the difference of their longitudes.
double Angle(const Latitude& from, const Latitude& to, double sinLon, double cosLon) noexcept {
    const double along = from.sine * to.cosine * cosLon - from.cosine * to.sine;
    const double across = sinLon * to.cosine;
    const double numerator = std::sqrt(along * along + across * across);
    const double denominator = to.cosine * from.cosine * cosLon + to.sine * from.sine;
    return std::atan2(numerator, denominator);
}

}  // namespace

Latitude LatitudeOf(double degrees) noexcept {
    const double colatitude = kHalfPi - DeformationRadians(degrees);
    return {std::cos(colatitude), std::sin(colatitude)};
}

GreatCircleReach::GreatCircleReach(double lon, double lat, double reach) noexcept
    : m_lon(lon),
      m_from(LatitudeOf(lat)),
      m_reach(reach),
      m_cosine(std::cos(reach / kEarthRadius)),
      m_isMonotonous(reach >= 0.0 && reach / kEarthRadius < kLargestAngle),
      m_passes(DispatchedKernels<ColumnPassesOf>()) {}

bool GreatCircleReach::Mark(double lon, const Latitudes& latitudes, std::size_t first, std::size_t count,
                            std::uint8_t* isNear) const noexcept {
    const double delta = DeformationRadians(lon - m_lon);
    const double sinLon = std::sin(delta);
    const double cosLon = std::cos(delta);
    const GreatCircleTest test = {latitudes.sine.data() + first,
                                  latitudes.cosine.data() + first,
                                  m_from.cosine * cosLon,
                                  m_from.sine,
                                  m_cosine,
                                  kUndecided};
    if (!m_isMonotonous || m_passes.markNear(test, count, isNear) > 0) {
        for (std::size_t i = 0; i < count; ++i) {
            const Latitude to = {latitudes.sine[first + i], latitudes.cosine[first + i]};
            isNear[i] = IsBeyond(to, sinLon, cosLon) ? 0 : 1;
        }
    }
    return std::find(isNear, isNear + count, std::uint8_t{0}) == isNear + count;
}

bool GreatCircleReach::IsBeyond(const Latitude& to, double sinLon, double cosLon) const noexcept {
    const double dot = to.cosine * m_from.cosine * cosLon + to.sine * m_from.sine;
    if (m_isMonotonous && std::abs(dot - m_cosine) > kUndecided) {
        return dot < m_cosine;
    }
    return Angle(m_from, to, sinLon, cosLon) * kEarthRadius > m_reach;
}

}  // namespace tidora
