#pragma once

#include "golden/Field.h"

namespace tidora::golden {

/// Derivative of a vector along one axis: central differences at h, h/2 and h/4, extrapolated twice (Richardson). The
/// error is of order h^6 by truncation and of order 1e-15 / h, relative to the vector, by rounding.
template <typename Function>
[[nodiscard]] Vec3 DerivativeAlong(const Function& function, const Vec3& at, std::size_t axis, double h) {
    std::array<Vec3, 3> estimate{};
    for (Vec3& derivative : estimate) {
        Vec3 ahead = at;
        Vec3 behind = at;
        ahead[axis] += h;
        behind[axis] -= h;
        const Vec3 high = function(ahead);
        const Vec3 low = function(behind);
        for (std::size_t i = 0; i < kDirections; ++i) {
            derivative[i] = (high[i] - low[i]) / (ahead[axis] - behind[axis]);
        }
        h /= 2.0;
    }
    Vec3 result{};
    for (std::size_t i = 0; i < kDirections; ++i) {
        const double first = (4.0 * estimate[1][i] - estimate[0][i]) / 3.0;
        const double second = (4.0 * estimate[2][i] - estimate[1][i]) / 3.0;
        result[i] = (16.0 * second - first) / 15.0;
    }
    return result;
}

}  // namespace tidora::golden
