#include "globe/Ellipsoid.h"

#include <cmath>

namespace tidora {

Parallel ParallelOf(double latDeg) noexcept {
    const double phi = latDeg * kRadian;
    const double sine = std::sin(phi);
    const double cosine = std::cos(phi);
    const double w2 = 1.0 - kESquared * sine * sine;
    const double n = kEquatorRadius / std::sqrt(w2);
    return {sine, cosine, n * cosine, n * (1.0 - kESquared) * sine, n * (1.0 - kESquared) / w2, n};
}

Meridian MeridianOf(double lonDeg) noexcept {
    const double lambda = std::remainder(lonDeg, 360.0) * kRadian;
    return {std::sin(lambda), std::cos(lambda)};
}

DegreeSize DegreeSizeAt(double latDeg) noexcept {
    const Parallel parallel = ParallelOf(latDeg);
    return {parallel.axisDistance * kRadian, parallel.meridianRadius * kRadian};
}

double LongitudeDifference(double toDeg, double fromDeg) noexcept {
    return std::remainder(toDeg - fromDeg, 360.0);
}

}  // namespace tidora
