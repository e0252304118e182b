// The parts put together, u = uA(image) - uA(source) + uB + z uC, against the equations that define the solution.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "golden/Difference.h"
#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"

namespace tidora::golden {
namespace {

const std::vector<double> kDips = {0.0, 3.0, 35.0, 70.0, 90.0, -90.0, -50.0, 125.0};
const std::vector<double> kAlphas = {0.6, 2.0 / 3.0, 0.75};

Rectangle RectangleWith(double alpha, double dip, std::size_t slipType) {
    Rectangle source{{alpha}, 6.0, dip, {-0.5, 2.0}, {-1.0, 1.5}, {}};
    source.slip[slipType] = 1.0;
    return source;
}

PointSource PointWith(double alpha, double dip, std::size_t slipType) {
    PointSource source{{alpha}, 6.0, dip, {}};
    source.potency[slipType] = 1.0;
    return source;
}

std::string Place(const std::string& kind, double alpha, double dip, std::size_t slipType) {
    return kind + ", alpha " + std::to_string(alpha) + ", dip " + std::to_string(dip) + ", slip type " +
           std::to_string(slipType);
}

/// Calls check(source, where) for both kinds of source, every medium, dip and slip type.
template <typename Check>
void ForEverySource(const Check& check) {
    for (const double alpha : kAlphas) {
        for (const double dip : kDips) {
            for (std::size_t slipType = 0; slipType < 4; ++slipType) {
                if (slipType < 3) {
                    check(RectangleWith(alpha, dip, slipType), Place("rectangle", alpha, dip, slipType));
                }
                check(PointWith(alpha, dip, slipType), Place("point", alpha, dip, slipType));
            }
        }
    }
}

double LargestOf(const Matrix3& m) {
    double size = 0.0;
    for (const Vec3& row : m) {
        size = std::max({size, std::abs(row[0]), std::abs(row[1]), std::abs(row[2])});
    }
    return size;
}

double Largest(const Vec3& u) {
    return std::max({std::abs(u[0]), std::abs(u[1]), std::abs(u[2])});
}

TEST_CASE("the whole solution leaves no traction on the free surface") {
    LargestError error;
    ForEverySource([&](const auto& source, const std::string& where) {
        for (const Vec3& at : {Vec3{1.1, 2.3, 0.0}, Vec3{-3.2, -1.4, 0.0}, Vec3{9.0, 6.0, 0.0}}) {
            const Matrix3 stress = StressOf(source.medium, FullMotion(source, at).gradient);
            error.Add(Largest(TractionOf(stress, {0.0, 0.0, 1.0})) / LargestOf(stress), where);
        }
    });
    // Of the largest stress, 1e-4 at the farthest place: roundings of 1e-16 of corner terms of order 1.
    error.Report("traction on the surface", 1e-10);
}

TEST_CASE("the whole solution satisfies Navier's equation inside the medium") {
    LargestError error;
    ForEverySource([&](const auto& source, const std::string& where) {
        for (const Vec3& at : {Vec3{1.1, 2.3, -0.7}, Vec3{-3.2, -1.4, -4.0}, Vec3{0.4, 4.0, -9.0}}) {
            Vec3 force{};
            double size = 0.0;
            for (std::size_t j = 0; j < kDirections; ++j) {
                const auto column = [&](const Vec3& place) {
                    return StressOf(source.medium, FullMotion(source, place).gradient)[j];
                };
                const Vec3 derivative = DerivativeAlong(column, at, j, 0.04);
                size = std::max(size, Largest(derivative));
                for (std::size_t i = 0; i < kDirections; ++i) {
                    force[i] += derivative[i];
                }
            }
            error.Add(Largest(force) / size, where);
        }
    });
    // Of the largest term. Truncation: (0.04 / 2)^6 / 64 = 1e-12 with coefficients of a high derivative; rounding of
    // derivatives of order 0.01, 1e-17 / 0.01 over 1e-4.
    error.Report("divergence of the stress", 1e-8);
}

TEST_CASE("the whole solution's gradient is that of its displacement") {
    LargestError error;
    ForEverySource([&](const auto& source, const std::string& where) {
        for (const Vec3& at : {Vec3{1.1, 2.3, -0.7}, Vec3{-3.2, -1.4, -4.0}, Vec3{0.4, 4.0, -9.0}}) {
            const Motion motion = FullMotion(source, at);
            const double size = LargestOf(motion.gradient);
            for (std::size_t j = 0; j < kDirections; ++j) {
                const auto displacement = [&](const Vec3& place) { return FullMotion(source, place).u; };
                const Vec3 expected = DerivativeAlong(displacement, at, j, 0.04);
                for (std::size_t i = 0; i < kDirections; ++i) {
                    error.Add((motion.gradient[i][j] - expected[i]) / size, where);
                }
            }
        }
    });
    // Of the largest derivative; truncation and rounding as for Navier's equation.
    error.Report("gradient minus differences", 1e-8);
}

// Hanging wall minus foot wall. The limit is taken from two distances; both lie outside the routines' 1e-6.
TEST_CASE("across a rectangle the displacement jumps by the slip and the traction does not") {
    LargestError jump, traction;
    for (const double alpha : kAlphas) {
        for (const double dip : kDips) {
            const SourceFrame frame = FrameOf(dip);
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                const Rectangle source = RectangleWith(alpha, dip, slipType);
                const std::array<Vec3, 3> directions = {{{1.0, 0.0, 0.0}, frame.upDip, frame.normal}};
                const auto across = [&](double distance) {
                    std::array<Motion, 2> sides;
                    for (std::size_t side = 0; side < 2; ++side) {
                        Vec3 at = {0.9, 0.2 * frame.upDip[1], -source.depth + 0.2 * frame.upDip[2]};
                        for (std::size_t i = 0; i < kDirections; ++i) {
                            at[i] += (side == 0 ? 1.0 : -1.0) * distance * frame.normal[i];
                        }
                        sides[side] = FullMotion(source, at);
                    }
                    return sides;
                };
                const auto near = across(1e-4);
                const auto far = across(2e-4);
                const auto tractionOf = [&](const Motion& motion) {
                    return TractionOf(StressOf(source.medium, motion.gradient), frame.normal);
                };
                for (std::size_t i = 0; i < kDirections; ++i) {
                    const double nearJump = near[0].u[i] - near[1].u[i];
                    const double farJump = far[0].u[i] - far[1].u[i];
                    jump.Add(2.0 * nearJump - farJump - directions[slipType][i], Place("", alpha, dip, slipType));
                    const double nearStep = tractionOf(near[0])[i] - tractionOf(near[1])[i];
                    const double farStep = tractionOf(far[0])[i] - tractionOf(far[1])[i];
                    traction.Add(2.0 * nearStep - farStep, Place("", alpha, dip, slipType));
                }
            }
        }
    }
    // Absolute, slip 1, tractions of order 1: the term after the linear one, (1e-4)^2 to (1e-4)^3 at distance 1 from
    // the nearest edge.
    jump.Report("jump minus slip", 1e-8);
    traction.Report("jump of the traction", 1e-7);
}

TEST_CASE("far below the surface the whole solution tends to that of a full space") {
    LargestError error;
    // Without -90 degrees: there R + eta of a deep image cancels, and part C multiplies the rounding by depth^4.
    for (const double dip : {0.0, 3.0, 35.0, 70.0, 90.0, -50.0, 125.0}) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            const auto deviation = [&](double depth) {
                Rectangle rectangle = RectangleWith(2.0 / 3.0, dip, slipType);
                PointSource point = PointWith(2.0 / 3.0, dip, slipType);
                rectangle.depth = depth;
                point.depth = depth;
                const Vec3 at = {1.5, 2.0, 1.2 - depth};
                double size = 0.0;
                const auto add = [&size](const Motion& whole, const Motion& full) {
                    for (std::size_t i = 0; i < kDirections; ++i) {
                        size = std::max(size, std::abs(whole.u[i] - full.u[i]) / Largest(full.u));
                    }
                };
                add(FullMotion(rectangle, at), FullSpaceMotion(rectangle, at));
                add(FullMotion(point, at), FullSpaceMotion(point, at));
                return size;
            };
            // The image is twice as far away: a quarter of the deviation is left.
            CHECK(deviation(400.0) < deviation(200.0) / 3.0);
            error.Add(deviation(200.0), Place("", 2.0 / 3.0, dip, slipType));
        }
    }
    // The image is 400 away instead of 3: (3 / 400)^2 = 6e-5, times factors up to some dozen.
    error.Report("half-space minus full space", 2e-3);
}

TEST_CASE("on the surface dc3d_ and dc3d0_ give the whole solution, rounded to single precision") {
    LargestError error;
    for (const float dip : {0.0F, 3.0F, 35.0F, 70.0F, 90.0F, -90.0F, -50.0F, 125.0F}) {
        for (std::size_t slipType = 0; slipType < 4; ++slipType) {
            const Vec3 at = {1.125, 2.25, 0.0};  // exact in single precision, as all lengths here
            PointCall point;
            point.alpha = 0.625F;
            point.x = 1.125F;
            point.y = 2.25F;
            point.depth = 6.0F;
            point.dip = dip;
            point.potency = {};
            point.potency[slipType] = 1.0F;
            const auto add = [&](const EntryResult& result, const Vec3& u) {
                CHECK(result.iret == 0);
                for (std::size_t i = 0; i < kDirections; ++i) {
                    // Half a unit of the last place of a single, and the whole solution's own rounding.
                    const double allowance = std::abs(u[i]) * std::ldexp(1.0, -24) + 1e-15;
                    error.Add((static_cast<double>(result.u[i]) - u[i]) / allowance,
                              Place("", 0.625, static_cast<double>(dip), slipType));
                }
            };
            add(Call(point), FullMotion(PointWith(0.625, static_cast<double>(dip), slipType), at).u);
            if (slipType < 3) {
                FiniteCall finite;
                finite.alpha = 0.625F;
                finite.x = point.x;
                finite.y = point.y;
                finite.depth = 6.0F;
                finite.dip = dip;
                finite.al1 = -0.5F;
                finite.al2 = 2.0F;
                finite.aw1 = -1.0F;
                finite.aw2 = 1.5F;
                finite.slip = {};
                finite.slip[slipType] = 1.0F;
                add(Call(finite), FullMotion(RectangleWith(0.625, static_cast<double>(dip), slipType), at).u);
            }
        }
    }
    error.Report("entry minus whole solution, in units of the allowance", 1.0);
}

}  // namespace
}  // namespace tidora::golden
