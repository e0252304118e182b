#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace tidora::golden {

/// A number with its three partial derivatives: what is computed from it carries them along, exact to rounding.
struct Dual {
    double value = 0.0;
    std::array<double, 3> slope{};

    Dual() = default;
    explicit Dual(double v, const std::array<double, 3>& s = {}) : value(v), slope(s) {}
};

/// The result of an operation from its value and its derivatives with respect to both operands.
[[nodiscard]] inline Dual Chain(double value, const Dual& a, double byA, const Dual& b, double byB) {
    Dual result(value);
    for (std::size_t i = 0; i < 3; ++i) {
        result.slope[i] = byA * a.slope[i] + byB * b.slope[i];
    }
    return result;
}
[[nodiscard]] inline Dual Chain(double value, const Dual& a, double byA) {
    return Dual(value, {byA * a.slope[0], byA * a.slope[1], byA * a.slope[2]});
}

[[nodiscard]] inline Dual operator+(const Dual& a, const Dual& b) {
    return Chain(a.value + b.value, a, 1.0, b, 1.0);
}
[[nodiscard]] inline Dual operator+(const Dual& a, double constant) {
    return Dual(a.value + constant, a.slope);
}
[[nodiscard]] inline Dual operator-(const Dual& a, const Dual& b) {
    return Chain(a.value - b.value, a, 1.0, b, -1.0);
}
[[nodiscard]] inline Dual operator-(const Dual& a, double constant) {
    return Dual(a.value - constant, a.slope);
}
[[nodiscard]] inline Dual operator-(double constant, const Dual& a) {
    return Chain(constant - a.value, a, -1.0);
}
[[nodiscard]] inline Dual operator*(const Dual& a, const Dual& b) {
    return Chain(a.value * b.value, a, b.value, b, a.value);
}
[[nodiscard]] inline Dual operator*(double constant, const Dual& a) {
    return Chain(constant * a.value, a, constant);
}
[[nodiscard]] inline Dual operator/(double constant, const Dual& a) {
    const double ratio = constant / a.value;
    return Chain(ratio, a, -ratio / a.value);
}
[[nodiscard]] inline Dual Sqrt(const Dual& a) {
    const double root = std::sqrt(a.value);
    return Chain(root, a, 0.5 / root);
}

}  // namespace tidora::golden
