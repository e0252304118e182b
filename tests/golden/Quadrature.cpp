#include "golden/Quadrature.h"

#include "golden/Field.h"

namespace tidora::golden {
namespace {

/// The zeros of the Legendre polynomial by Newton's iteration from Tricomi's estimate; nothing is copied from a table.
Rule ComputeRule() {
    Rule rule;
    const auto n = static_cast<double>(kRulePoints);
    for (std::size_t i = 0; i < kRulePoints; ++i) {
        double x = std::cos(kPi * (static_cast<double>(i) + 0.75) / (n + 0.5));
        double slope = 1.0;
        for (int step = 0; step < 20; ++step) {
            double previous = 1.0;
            double value = x;
            for (std::size_t k = 2; k <= kRulePoints; ++k) {
                const auto order = static_cast<double>(k);
                const double next = ((2.0 * order - 1.0) * x * value - (order - 1.0) * previous) / order;
                previous = value;
                value = next;
            }
            slope = n * (x * value - previous) / (x * x - 1.0);
            x -= value / slope;
        }
        rule.node[i] = x;
        rule.weight[i] = 2.0 / ((1.0 - x * x) * slope * slope);
    }
    return rule;
}

}  // namespace

const Rule& GaussLegendre() {
    static const Rule kRule = ComputeRule();
    return kRule;
}

std::array<Panel, 4> QuartersOf(const Panel& panel) {
    const double middle1 = 0.5 * (panel.first[0] + panel.first[1]);
    const double middle2 = 0.5 * (panel.second[0] + panel.second[1]);
    return {{{{panel.first[0], middle1}, {panel.second[0], middle2}},
             {{middle1, panel.first[1]}, {panel.second[0], middle2}},
             {{panel.first[0], middle1}, {middle2, panel.second[1]}},
             {{middle1, panel.first[1]}, {middle2, panel.second[1]}}}};
}

}  // namespace tidora::golden
