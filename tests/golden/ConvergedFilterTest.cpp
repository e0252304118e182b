// The converged Kajiura filter against what theory says of the sea surface: waves, a step of the floor, a uniform
// uplift, volume, and directions on the ellipsoid. Every check prints its largest error.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "golden/LargestError.h"
#include "kajiura/ConvergedLattice.h"
#include "reference/ConvergedCase.h"

using tidora::RegularGrid;
using tidora::golden::LargestError;
using tidora::reference::UpliftField;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDepth = 2700.0;
constexpr double kFine = kDepth / 27.0;

std::string At(const std::string& name, double value) {
    return name + " " + std::to_string(value);
}

/// A square of spacing d / 27 that the lattice of its middle node lies within.
struct Square {
    static constexpr std::size_t kHalf = 122;
    static constexpr std::size_t kNodes = 2 * kHalf + 1;
    static_assert(static_cast<double>(kHalf) > 27.0 * tidora::kLatticeReach, "the lattice lies inside");
    RegularGrid grid = {kNodes, kNodes, -static_cast<double>(kHalf) * kFine, -static_cast<double>(kHalf) * kFine,
                        kFine};

    template <typename Function>
    [[nodiscard]] UpliftField Field(Function uplift) const {
        UpliftField field = {grid, std::vector<float>(kNodes * kNodes)};
        for (std::size_t iy = 0; iy < kNodes; ++iy) {
            for (std::size_t ix = 0; ix < kNodes; ++ix) {
                field.values[iy * kNodes + ix] = static_cast<float>(
                    uplift(grid.west + static_cast<double>(ix) * kFine, grid.south + static_cast<double>(iy) * kFine));
            }
        }
        return field;
    }
    [[nodiscard]] static double MiddleOf(const UpliftField& field) { return ConvergedAt(field, kHalf, kHalf, kDepth); }
};

/// What the filter makes of a wave at its crest: the response; and of the same wave where it is 0 and climbs: nothing,
/// since the lattice is symmetric.
void AddWave(double kd, double angle, LargestError& crest, LargestError& ascent) {
    const Square square;
    const double k = kd / kDepth * std::cos(angle);
    const double l = kd / kDepth * std::sin(angle);
    const std::string where = At("kd", kd) + At(", angle", angle);
    const double top = Square::MiddleOf(square.Field([&](double x, double y) { return std::cos(k * x + l * y); }));
    const double node = Square::MiddleOf(square.Field([&](double x, double y) { return std::sin(k * x + l * y); }));
    crest.Add(top - 1.0 / std::cosh(kd), where);
    ascent.Add(node, where);
}

}  // namespace

TEST_CASE("converged filter: a wave of up to kd 6 keeps 1 over cosh kd of its height in every direction") {
    LargestError crest, ascent;
    for (const double degrees : {0.0, 11.25, 22.5, 30.0, 45.0, 70.0, 90.0, 135.0}) {
        for (int step = 0; step <= 40; ++step) {
            AddWave(0.15 * step, degrees * kPi / 180.0, crest, ascent);
        }
    }
    crest.Report("converged filter, wave of 1 m against 1 / cosh kd, kd up to 6, m", 2e-3);
    ascent.Report("converged filter, wave of 1 m between crest and trough, m", 1e-6);
}

TEST_CASE("converged filter: shorter waves are damped as far as the grid resolves them") {
    LargestError crest, ascent;
    for (const double degrees : {0.0, 22.5, 45.0}) {
        // Up to half a wave a spacing along the axis that sees most of it: 27 pi.
        const double direction = degrees * kPi / 180.0;
        const double shortest = 27.0 * kPi / std::max(std::cos(direction), std::sin(direction));
        for (double kd = 6.0; kd < shortest; kd += 0.5) {
            AddWave(kd, direction, crest, ascent);
        }
    }
    crest.Report("converged filter, wave of 1 m shorter than kd 6, m", 5e-2);
    ascent.Report("converged filter, the same between crest and trough, m", 1e-6);
}

TEST_CASE("converged filter: a step of the floor leaves the arctangent of theory") {
    const Square square;
    LargestError east, north, diagonal;
    for (int nodes = -120; nodes <= 120; nodes += 4) {
        const double x = (nodes + 0.5) * kFine;  // of the middle from the step, which lies between two pixels
        const double theory = 2.0 / kPi * std::atan(std::exp(kPi * x / (2.0 * kDepth)));
        const std::string where = At("x / d", x / kDepth);
        const auto step = [x](double along) { return along > -x ? 1.0 : 0.0; };
        east.Add(Square::MiddleOf(square.Field([&](double px, double) { return step(px); })) - theory, where);
        north.Add(Square::MiddleOf(square.Field([&](double, double py) { return step(py); })) - theory, where);
        diagonal.Add(
            Square::MiddleOf(square.Field([&](double px, double py) { return step((px + py) / std::sqrt(2.0)); })) -
                theory,
            where);
    }
    east.Report("converged filter, step of 1 m across x, m", 1e-2);
    north.Report("converged filter, step of 1 m across y, m", 1e-2);
    diagonal.Report("converged filter, step of 1 m across the diagonal, m", 1e-2);
}

TEST_CASE("converged filter: a uniform uplift stays") {
    LargestError error;
    for (const std::size_t nodes : {std::size_t{1001}, std::size_t{3000}}) {
        for (const float uplift : {1.0F, -0.7F, 2.5e4F}) {
            const UpliftField field = UniformField({nodes, nodes, 5e5, -3e6, 1000.0}, uplift);
            const tidora::UpliftTable table(field.grid, field.values.data());
            std::vector<float> surface(field.values.size());
            std::vector<float> topography(field.values.size(), 0.0F);
            for (const double depthInSpacings : {0.02, 0.113, 0.12, 0.2, 0.5, 1.0, 3.3, 12.0, 100.0}) {
                // In the middle, and where most of the table lies to the south-west: what its rounding would show at.
                const auto reach = static_cast<std::size_t>(tidora::kLatticeReach * depthInSpacings) + 1;
                for (const std::size_t node : {nodes / 2, nodes - 1 - reach}) {
                    topography[node * nodes + node] = static_cast<float>(-1000.0 * depthInSpacings);
                    tidora::ConvergedFilter(table, nullptr, false)
                        .FilterRows(node, node + 1, field.values.data(), topography.data(), surface.data());
                    const auto height = static_cast<double>(surface[node * nodes + node]);
                    error.Add(height / static_cast<double>(uplift) - 1.0, At("spacings", depthInSpacings));
                }
            }
        }
    }
    error.Report("converged filter, uniform uplift, relative", 1e-6);
}

TEST_CASE("converged filter: the volume of an uplift away from the borders stays") {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> height(-1.0F, 3.0F);
    LargestError error;
    for (const double depthInSpacings : {0.05, 0.12, 0.3, 1.0, 3.1, 10.0, 30.0}) {
        const auto rim = static_cast<std::size_t>(tidora::kLatticeReach * depthInSpacings) + 2;
        const std::size_t nodes = 40 + 2 * rim;
        UpliftField field = UniformField({nodes, nodes, 0.0, 0.0, 500.0}, 0.0F);
        double before = 0.0;
        for (std::size_t iy = rim; iy < rim + 40; ++iy) {
            for (std::size_t ix = rim; ix < rim + 40; ++ix) {
                field.values[iy * nodes + ix] = height(random);
                before += static_cast<double>(field.values[iy * nodes + ix]);
            }
        }
        const auto topography = std::vector<float>(nodes * nodes, static_cast<float>(-500.0 * depthInSpacings));
        double after = 0.0;
        for (const float value : Converged(field, nullptr, false, topography)) {
            after += static_cast<double>(value);
        }
        error.Add(after / before - 1.0, At("spacings", depthInSpacings));
    }
    error.Report("converged filter, volume, relative", 1e-5);
}

TEST_CASE("converged filter: on degrees the response is that of metres in every direction") {
    // Waves along the components east and north at the node, of the chord in Earth-centred co-ordinates.
    LargestError error;
    constexpr double kRadian = kPi / 180.0;
    constexpr double kA = 6378137.0, kF = 1.0 / 298.257222101, kE2 = kF * (2.0 - kF);
    constexpr double kWaterDepth = 4000.0;
    for (const double latitude : {0.0, 60.0, -60.0, 80.0}) {
        const double spacing = kWaterDepth / 27.0 / 111320.0;
        const double widening = 1.0 / std::cos(latitude * kRadian);
        const std::size_t halfX = static_cast<std::size_t>(123.0 * widening), halfY = 124;
        const RegularGrid grid = {2 * halfX + 1, 2 * halfY + 1, 142.0 - static_cast<double>(halfX) * spacing,
                                  latitude - static_cast<double>(halfY) * spacing, spacing};
        const auto radius = [](double phi) { return kA / std::sqrt(1.0 - kE2 * std::sin(phi) * std::sin(phi)); };
        const double phi0 = latitude * kRadian;
        for (const double degrees : {0.0, 45.0, 90.0}) {
            for (const double kd : {0.5, 1.0, 2.0, 4.0}) {
                UpliftField field = {grid, std::vector<float>(grid.nx * grid.ny)};
                for (std::size_t iy = 0; iy < grid.ny; ++iy) {
                    const double phi = (grid.south + static_cast<double>(iy) * spacing) * kRadian;
                    for (std::size_t ix = 0; ix < grid.nx; ++ix) {
                        const double lambda =
                            (static_cast<double>(ix) - static_cast<double>(halfX)) * spacing * kRadian;
                        const double east = radius(phi) * std::cos(phi) * std::sin(lambda);
                        const double outward =
                            radius(phi) * std::cos(phi) * std::cos(lambda) - radius(phi0) * std::cos(phi0);
                        const double up = (1.0 - kE2) * (radius(phi) * std::sin(phi) - radius(phi0) * std::sin(phi0));
                        const double north = up * std::cos(phi0) - outward * std::sin(phi0);
                        const double along = east * std::cos(degrees * kRadian) + north * std::sin(degrees * kRadian);
                        field.values[iy * grid.nx + ix] = static_cast<float>(std::cos(kd * along / kWaterDepth));
                    }
                }
                error.Add(ConvergedAt(field, halfX, halfY, kWaterDepth, true) - 1.0 / std::cosh(kd),
                          At("latitude", latitude) + At(", kd", kd) + At(", direction", degrees));
            }
        }
    }
    error.Report("converged filter on degrees, wave of 1 m, m", 2e-3);
}
