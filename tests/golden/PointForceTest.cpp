// The point force is the yardstick of the closed forms: here it proves itself by the equations that define it.

#include <doctest/doctest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "golden/Difference.h"
#include "golden/LargestError.h"
#include "golden/PointForce.h"
#include "golden/Quadrature.h"

namespace tidora::golden {
namespace {

const std::vector<double> kAlphas = {0.6, 2.0 / 3.0, 0.75};
const std::vector<Vec3> kForces = {{0.0, 0.0, 0.0}, {0.3, -0.2, -1.5}};  // on the surface and below it

std::string Place(double alpha, std::size_t direction, const Vec3& force) {
    return "alpha " + std::to_string(alpha) + ", direction " + std::to_string(direction) + ", depth " +
           std::to_string(-force[2]);
}

/// Calls check(medium, direction, force) for every combination.
template <typename Check>
void ForEveryForce(const Check& check) {
    for (const double alpha : kAlphas) {
        for (const Vec3& force : kForces) {
            for (std::size_t direction = 0; direction < kDirections; ++direction) {
                check(Medium{alpha}, direction, force);
            }
        }
    }
}

TEST_CASE("the stress of a point force is in equilibrium away from the force") {
    const std::vector<Vec3> places = {{1.1, 0.7, -0.9}, {-0.4, 2.0, -3.0}, {0.5, 0.1, -0.4}};
    LargestError error;
    ForEveryForce([&](const Medium& medium, std::size_t direction, const Vec3& force) {
        for (const Vec3& at : places) {
            Vec3 divergence{};
            double size = 0.0;
            for (std::size_t j = 0; j < kDirections; ++j) {
                const auto column = [&](const Vec3& place) {
                    return StressOf(medium, PointForceMotions(medium, force, place)[direction].gradient)[j];
                };
                const Vec3 derivative = DerivativeAlong(column, at, j, 0.02);
                for (std::size_t i = 0; i < kDirections; ++i) {
                    divergence[i] += derivative[i];
                    size = std::max(size, std::abs(derivative[i]));
                }
            }
            for (const double component : divergence) {
                error.Add(component / size, Place(medium.alpha, direction, force));
            }
        }
    });
    // Of the largest term. Truncation of the differences: (0.02 / 0.4)^6, a small multiple of 1e-8, over 64.
    error.Report("divergence of the stress", 1e-8);
}

TEST_CASE("a point force leaves no traction on the free surface") {
    const std::vector<Vec3> places = {{1.1, 0.7, 0.0}, {-0.4, 2.0, 0.0}, {0.5, 0.1, 0.0}};
    LargestError error;
    ForEveryForce([&](const Medium& medium, std::size_t direction, const Vec3& force) {
        for (const Vec3& at : places) {
            const Matrix3 stress = StressOf(medium, PointForceMotions(medium, force, at)[direction].gradient);
            double size = 0.0;
            for (const Vec3& row : stress) {
                size = std::max({size, std::abs(row[0]), std::abs(row[1]), std::abs(row[2])});
            }
            for (const double component : TractionOf(stress, {0.0, 0.0, 1.0})) {
                error.Add(component / size, Place(medium.alpha, direction, force));
            }
        }
    });
    // Of the largest stress: a few dozen roundings of 1e-16, some of them of terms that cancel.
    error.Report("traction on the surface", 1e-14);
}

// What is above a plane under the force holds the force up by its traction.
TEST_CASE("the traction on a plane below a point force balances the force") {
    using Nine = std::array<double, 9>;
    LargestError error;
    for (const double alpha : kAlphas) {
        for (const Vec3& force : kForces) {
            const Medium medium{alpha};
            // x and y run over the whole plane: x = tan(a), y = tan(b).
            const auto traction = [&](double a, double b) {
                const auto motions = PointForceMotions(medium, force, {std::tan(a), std::tan(b), -3.0});
                const double area = 1.0 / (std::cos(a) * std::cos(a) * std::cos(b) * std::cos(b));
                Nine value{};
                for (std::size_t direction = 0; direction < kDirections; ++direction) {
                    const Matrix3 stress = StressOf(medium, motions[direction].gradient);
                    for (std::size_t i = 0; i < kDirections; ++i) {
                        value[3 * direction + i] = -area * stress[i][2];
                    }
                }
                return value;
            };
            const double limit = kPi / 2.0;
            const auto total = Integrate<Nine>(traction, {{-limit, limit}, {-limit, limit}}, 1e-7);
            for (std::size_t direction = 0; direction < kDirections; ++direction) {
                for (std::size_t i = 0; i < kDirections; ++i) {
                    error.Add(total[3 * direction + i] + (i == direction ? 1.0 : 0.0), Place(alpha, direction, force));
                }
            }
        }
    }
    // The quadrature's tolerance, with room for the corners of the plane at infinity, where the integrand is not
    // smooth.
    error.Report("force plus traction", 1e-5);
}

// K. L. Johnson, Contact Mechanics (1985), chapter 3; G = 1, z down.
TEST_CASE("a force on the surface gives the displacements of Boussinesq and Cerruti") {
    const Vec3 at = {0.7, -1.2, -0.9};
    const double x = at[0], y = at[1], z = -at[2];
    const double rho = std::sqrt(x * x + y * y + z * z);
    const double rho3 = rho * rho * rho;
    LargestError error;
    for (const double alpha : kAlphas) {
        const Medium medium{alpha};
        const double nu = medium.Poisson();
        const double k = 1.0 - 2.0 * nu;
        const double scale = 1.0 / (4.0 * kPi);
        const Vec3 boussinesq = {scale * (x * z / rho3 - k * x / (rho * (rho + z))),
                                 scale * (y * z / rho3 - k * y / (rho * (rho + z))),
                                 scale * (z * z / rho3 + 2.0 * (1.0 - nu) / rho)};  // force and last component: down
        const double sum2 = rho * (rho + z) * (rho + z);
        const Vec3 cerruti = {scale * (1.0 / rho + x * x / rho3 + k * (1.0 / (rho + z) - x * x / sum2)),
                              scale * (x * y / rho3 - k * x * y / sum2),
                              scale * (x * z / rho3 + k * x / (rho * (rho + z)))};  // force along x
        const auto forces = PointForceMotions(medium, {}, at);
        const Motion& up = forces[2];
        const Motion& along = forces[0];
        const Vec3 signs = {-1.0, -1.0, 1.0};
        for (std::size_t i = 0; i < kDirections; ++i) {
            error.Add(up.u[i] - signs[i] * boussinesq[i], "Boussinesq");
            error.Add(along.u[i] - (i == 2 ? -1.0 : 1.0) * cerruti[i], "Cerruti");
        }
    }
    // The displacements are of the order 0.1: some roundings of 1e-17.
    error.Report("point force on the surface", 1e-16);
}

// Betti: the displacement along b at B by a force along a at A equals that along a at A by a force along b at B.
TEST_CASE("point forces are reciprocal") {
    const Vec3 a = {0.3, -0.2, -1.5}, b = {1.1, 0.7, -0.9};
    LargestError error;
    for (const double alpha : kAlphas) {
        for (std::size_t i = 0; i < kDirections; ++i) {
            for (std::size_t j = 0; j < kDirections; ++j) {
                const double there = PointForceMotions(Medium{alpha}, a, b)[i].u[j];
                const double back = PointForceMotions(Medium{alpha}, b, a)[j].u[i];
                error.Add(there - back, Place(alpha, i, a));
            }
        }
    }
    // The displacements are of the order 0.1: some roundings of 1e-17.
    error.Report("there minus back", 1e-16);
}

}  // namespace
}  // namespace tidora::golden
