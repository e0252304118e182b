#pragma once

#include <array>
#include <cstddef>

namespace tidora::golden {

using Vec3 = std::array<double, 3>;            ///< x, y, z; z up
using Matrix3 = std::array<Vec3, 3>;           ///< [i][j]: component i, direction j
using Twelve = std::array<double, 12>;         ///< three displacements, then their x, y and z derivatives
inline constexpr std::size_t kDirections = 3;  ///< x, y, z
inline constexpr double kPi = 3.14159265358979323846;

/// A displacement and its gradient, gradient[i][j] = d u[i] / d x[j].
struct Motion {
    Vec3 u{};
    Matrix3 gradient{};
};

/// An elastic medium of unit rigidity. lambda and Poisson's ratio follow from alpha = (lambda + mu) / (lambda + 2 mu).
struct Medium {
    double alpha = 2.0 / 3.0;  ///< lambda = mu
    [[nodiscard]] double Lambda() const noexcept { return (2.0 * alpha - 1.0) / (1.0 - alpha); }
    [[nodiscard]] double Poisson() const noexcept { return 1.0 - 0.5 / alpha; }
};

/// Hooke's law, unit rigidity.
[[nodiscard]] inline Matrix3 StressOf(const Medium& medium, const Matrix3& gradient) noexcept {
    const double dilatation = gradient[0][0] + gradient[1][1] + gradient[2][2];
    Matrix3 stress{};
    for (std::size_t i = 0; i < kDirections; ++i) {
        for (std::size_t j = 0; j < kDirections; ++j) {
            stress[i][j] = gradient[i][j] + gradient[j][i];
        }
        stress[i][i] += medium.Lambda() * dilatation;
    }
    return stress;
}

[[nodiscard]] inline double Dot(const Vec3& a, const Vec3& b) noexcept {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// The traction of a stress on a plane of the given normal.
[[nodiscard]] inline Vec3 TractionOf(const Matrix3& stress, const Vec3& normal) noexcept {
    return {Dot(stress[0], normal), Dot(stress[1], normal), Dot(stress[2], normal)};
}

}  // namespace tidora::golden
