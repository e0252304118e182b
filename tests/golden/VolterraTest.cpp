// The closed forms against Volterra's integral of a point force: two ways to one number that share no formula.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "golden/LargestError.h"
#include "golden/Volterra.h"

namespace tidora::golden {
namespace {

struct Geometry {
    std::string why;
    double alpha, depth, dip;
    std::array<double, 2> along, up;
    std::vector<Vec3> places;
};

constexpr double kEqual = 2.0 / 3.0;  ///< lambda = mu

const std::vector<Geometry> kGeometries = {
    {"a plane dipping 3 degrees",
     kEqual,
     10.0,
     3.0,
     {-20.0, 20.0},
     {-15.0, 15.0},
     {{2.0, 3.0, 0.0}, {19.0, 17.0, 0.0}}},
    {"a subduction plane of 12 degrees",
     kEqual,
     15.0,
     12.0,
     {0.0, 50.0},
     {0.0, 40.0},
     {{25.0, 38.0, 0.0}, {-4.0, -7.0, 0.0}}},
    {"a plane dipping 30 degrees",
     kEqual,
     5.0,
     30.0,
     {-3.0, 3.0},
     {-2.0, 2.0},
     {{0.0, 0.0, 0.0}, {3.0, 1.0, 0.0}, {0.7, -4.0, 0.0}}},
    {"a plane dipping 45 degrees", kEqual, 4.0, 45.0, {0.0, 3.0}, {0.0, 2.0}, {{2.0, 3.0, 0.0}, {1.5, 1.4, 0.0}}},
    {"a steep plane of 80 degrees", kEqual, 4.0, 80.0, {-1.0, 3.0}, {-2.0, 2.0}, {{2.0, 3.0, 0.0}, {0.0, 0.1, 0.0}}},
    {"a vertical plane",
     kEqual,
     4.0,
     90.0,
     {-1.0, 3.0},
     {-2.0, 2.0},
     {{2.0, 3.0, 0.0}, {1.0, 0.0, 0.0}, {-2.0, 0.0, 0.0}}},
    {"a vertical plane seen from its other side",
     kEqual,
     4.0,
     -90.0,
     {-1.0, 3.0},
     {0.0, 2.0},
     {{2.0, 3.0, 0.0}, {2.0, -3.0, 0.0}}},
    {"a plane that dips to the other side",
     kEqual,
     6.0,
     -35.0,
     {-1.0, 3.0},
     {-2.0, 2.0},
     {{2.0, 3.0, 0.0}, {0.0, -1.0, 0.0}}},
    {"a plane that dips more than 90 degrees",
     kEqual,
     6.0,
     120.0,
     {-1.0, 3.0},
     {-2.0, 2.0},
     {{2.0, 3.0, 0.0}, {0.0, -1.0, 0.0}}},
    {"over a shallow edge: top 0.05 deep",
     kEqual,
     1.05,
     30.0,
     {-5.0, 5.0},
     {0.0, 2.0},
     {{0.0, 1.75, 0.0}, {0.0, 1.70, 0.0}, {4.99, 1.74, 0.0}}},
    {"over a shallow vertical edge: top 0.05 deep",
     kEqual,
     2.05,
     90.0,
     {-5.0, 5.0},
     {0.0, 2.0},
     {{0.0, 0.02, 0.0}, {5.0, 0.0, 0.0}, {5.02, -0.03, 0.0}}},
    {"a plane that breaks the surface",
     kEqual,
     2.0,
     30.0,
     {-5.0, 5.0},
     {0.0, 4.0},
     {{0.0, 3.6, 0.0}, {1.0, 3.3, 0.0}, {5.3, 3.46, 0.0}}},
    {"ten fault lengths away",
     kEqual,
     5.0,
     25.0,
     {-5.0, 5.0},
     {-2.0, 2.0},
     {{100.0, 3.0, 0.0}, {-20.0, 100.0, 0.0}, {70.0, -70.0, 0.0}}},
    {"ten fault lengths from a vertical plane",
     kEqual,
     5.0,
     90.0,
     {-5.0, 5.0},
     {-2.0, 2.0},
     {{100.0, 0.0, 0.0}, {60.0, 80.0, 0.0}}},
    {"a stiffer medium, alpha = 0.75", 0.75, 5.0, 20.0, {-3.0, 3.0}, {-2.0, 2.0}, {{1.0, 2.0, 0.0}, {-6.0, 1.0, 0.0}}},
    {"a softer medium, alpha = 0.6", 0.6, 5.0, 70.0, {-3.0, 3.0}, {-2.0, 2.0}, {{1.0, 2.0, 0.0}, {-6.0, 1.0, 0.0}}},
    {"a vertical plane, alpha = 0.75", 0.75, 5.0, 90.0, {-3.0, 3.0}, {-2.0, 2.0}, {{1.0, 2.0, 0.0}}},
    {"a vertical plane, alpha = 0.6", 0.6, 5.0, 90.0, {-3.0, 3.0}, {-2.0, 2.0}, {{1.0, 2.0, 0.0}}},
};

const std::array<std::string, 4> kSlipNames = {"strike-slip", "dip-slip", "tensile", "inflation"};

Rectangle RectangleOf(const Geometry& geometry, std::size_t slipType) {
    Rectangle source{{geometry.alpha}, geometry.depth, geometry.dip, geometry.along, geometry.up, {}};
    source.slip[slipType] = 1.0;
    return source;
}

double Largest(const Vec3& u) {
    return std::max({std::abs(u[0]), std::abs(u[1]), std::abs(u[2])});
}

/// The difference in every component, in parts of the largest component.
void AddDifference(LargestError& error, const Vec3& actual, const Vec3& expected, const std::string& where) {
    for (std::size_t i = 0; i < kDirections; ++i) {
        error.Add((actual[i] - expected[i]) / Largest(expected), where);
    }
}

TEST_CASE("the surface displacement of a rectangle equals the integral of a point force over it") {
    LargestError error;
    for (const Geometry& geometry : kGeometries) {
        for (const Vec3& at : geometry.places) {
            const auto quadrature = VolterraDisplacements(RectangleOf(geometry, 0), at);
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                const Rectangle source = RectangleOf(geometry, slipType);
                const Vec3& expected = quadrature[slipType];
                // At a symmetric place the whole vector can vanish: nothing to divide by.
                if (Largest(expected) > 1e-9) {
                    AddDifference(error, SurfaceDisplacement(source, at), expected,
                                  geometry.why + ", " + kSlipNames[slipType]);
                } else {
                    CHECK(Largest(SurfaceDisplacement(source, at)) < 1e-15);
                }
            }
        }
    }
    // Of the largest component. Ten lengths away the corner sum leaves a ten-thousandth of its terms.
    error.Report("rectangle minus quadrature, surface", 1e-10);
}

TEST_CASE("the whole solution of a rectangle inside the medium equals the integral of a point force over it") {
    LargestError error;
    for (const Geometry& geometry : kGeometries) {
        for (Vec3 at : geometry.places) {
            // Above most sources, below some, at least half a unit away from all.
            at[0] += 0.3;
            at[1] += 0.9;
            at[2] = -0.4 * geometry.depth;
            const auto quadrature = VolterraDisplacements(RectangleOf(geometry, 0), at);
            for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                AddDifference(error, FullMotion(RectangleOf(geometry, slipType), at).u, quadrature[slipType],
                              geometry.why + ", " + kSlipNames[slipType]);
            }
        }
    }
    // Of the largest component. Ten lengths away the corner sum leaves a ten-thousandth of its terms.
    error.Report("rectangle minus quadrature, inside", 1e-10);
}

TEST_CASE("a point source equals a point force's stress at its place, on the surface and inside the medium") {
    LargestError onSurface, inside;
    for (const double alpha : {0.6, kEqual, 0.75}) {
        for (const double dip : {0.0, 3.0, 30.0, 70.0, 90.0, -90.0, -50.0, 120.0}) {
            for (std::size_t slipType = 0; slipType < 4; ++slipType) {
                PointSource source{{alpha}, 4.0, dip, {}};
                source.potency[slipType] = 1.0;
                const std::string where = kSlipNames[slipType] + ", dip " + std::to_string(dip);
                for (const Vec3& at : {Vec3{1.0, 2.0, 0.0}, Vec3{-3.0, 0.7, 0.0}, Vec3{30.0, -20.0, 0.0}}) {
                    AddDifference(onSurface, SurfaceDisplacement(source, at), VolterraDisplacement(source, at), where);
                }
                for (const Vec3& at : {Vec3{1.0, 2.0, -1.5}, Vec3{-3.0, 0.7, -5.0}, Vec3{0.1, 0.2, -3.0}}) {
                    AddDifference(inside, FullMotion(source, at).u, VolterraDisplacement(source, at), where);
                }
            }
        }
    }
    // Of the largest component: some dozen roundings of 1e-16 of terms up to a hundred times larger.
    onSurface.Report("point source minus point force, surface", 1e-13);
    inside.Report("point source minus point force, inside", 1e-13);
}

}  // namespace
}  // namespace tidora::golden
