#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tidora::golden {

/// The rectangle first[0]..first[1] by second[0]..second[1].
struct Panel {
    std::array<double, 2> first{}, second{};
};

/// A Gauss-Legendre rule on -1..1.
inline constexpr std::size_t kRulePoints = 10;
struct Rule {
    std::array<double, kRulePoints> node{}, weight{};
};
[[nodiscard]] const Rule& GaussLegendre();

/// The four quarters of a panel.
[[nodiscard]] std::array<Panel, 4> QuartersOf(const Panel& panel);

template <typename Vector, typename Integrand>
[[nodiscard]] Vector ApplyRule(const Integrand& integrand, const Panel& panel) {
    const Rule& rule = GaussLegendre();
    const double half1 = 0.5 * (panel.first[1] - panel.first[0]);
    const double half2 = 0.5 * (panel.second[1] - panel.second[0]);
    const double middle1 = 0.5 * (panel.first[1] + panel.first[0]);
    const double middle2 = 0.5 * (panel.second[1] + panel.second[0]);
    Vector sum{};
    for (std::size_t i = 0; i < kRulePoints; ++i) {
        for (std::size_t j = 0; j < kRulePoints; ++j) {
            const Vector value = integrand(middle1 + half1 * rule.node[i], middle2 + half2 * rule.node[j]);
            const double weight = rule.weight[i] * rule.weight[j] * half1 * half2;
            for (std::size_t k = 0; k < sum.size(); ++k) {
                sum[k] += weight * value[k];
            }
        }
    }
    return sum;
}

/// Integral over `panel`, whose value by one rule is `coarse`. See Integrate.
template <typename Vector, typename Integrand>
[[nodiscard]] Vector Refine(const Integrand& integrand, const Panel& panel, const Vector& coarse, double tolerance,
                            int levelsLeft) {
    Vector sum{};
    if (levelsLeft == 0) {
        sum.fill(std::numeric_limits<double>::quiet_NaN());
        return sum;
    }
    const std::array<Panel, 4> quarters = QuartersOf(panel);
    std::array<Vector, 4> fine{};
    double change = 0.0;
    for (std::size_t i = 0; i < fine.size(); ++i) {
        fine[i] = ApplyRule<Vector>(integrand, quarters[i]);
    }
    for (std::size_t k = 0; k < sum.size(); ++k) {
        sum[k] = fine[0][k] + fine[1][k] + fine[2][k] + fine[3][k];
        change = std::max(change, std::abs(sum[k] - coarse[k]));
    }
    if (change <= tolerance) {
        return sum;
    }
    sum = {};
    for (std::size_t i = 0; i < fine.size(); ++i) {
        const Vector refined = Refine<Vector>(integrand, quarters[i], fine[i], tolerance, levelsLeft - 1);
        for (std::size_t k = 0; k < sum.size(); ++k) {
            sum[k] += refined[k];
        }
    }
    return sum;
}

/// Integral of a vector (an array of doubles) over a rectangle. Gauss-Legendre rule of 10 by 10 points; a panel whose
/// value changes by more than `tolerance` (absolute, any component) when it is cut into four is cut. What remains is
/// far smaller than the tolerance, since a cut gains six figures where the rule converges. NaN if 40 levels do not
/// suffice.
template <typename Vector, typename Integrand>
[[nodiscard]] Vector Integrate(const Integrand& integrand, const Panel& panel, double tolerance) {
    return Refine<Vector>(integrand, panel, ApplyRule<Vector>(integrand, panel), tolerance, 40);
}

}  // namespace tidora::golden
