// The nine derivatives of every part against differences of its own displacements. Of a rectangle the four corners are
// differenced together: the tables leave out terms of one corner that cancel in the sum.

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "golden/Difference.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"

namespace tidora::golden {
namespace {

const std::vector<std::pair<Part, std::string>> kParts = {{Part::A, "A"}, {Part::B, "B"}, {Part::C, "C"}};
const std::vector<double> kDips = {0.0, 3.0, 35.0, 70.0, 90.0, -90.0, -50.0, 125.0};
const std::vector<double> kAlphas = {0.6, 2.0 / 3.0, 0.75};
const std::vector<Vec3> kPlaces = {{1.1, 2.3, -0.7}, {-3.2, -1.4, -2.0}, {0.2, 0.9, -0.1}, {6.0, 5.0, -9.0}};

/// Adds the deviation of the nine derivatives at every place, in parts of the largest of the nine.
template <typename Source>
void AddDerivatives(LargestError& error, const Source& source, Part part, const std::string& where) {
    for (const Vec3& at : kPlaces) {
        const Twelve u = PartOf(source, part, at);
        double size = 0.0;
        for (std::size_t i = 3; i < u.size(); ++i) {
            size = std::max(size, std::abs(u[i]));
        }
        for (std::size_t axis = 0; axis < kDirections; ++axis) {
            const auto displacement = [&](const Vec3& place) {
                const Twelve there = PartOf(source, part, place);
                return Vec3{there[0], there[1], there[2]};
            };
            // 0.04: small against the distance from the image, 4 and more.
            const Vec3 expected = DerivativeAlong(displacement, at, axis, 0.04);
            for (std::size_t i = 0; i < kDirections; ++i) {
                error.Add((u[3 + 3 * axis + i] - expected[i]) / size,
                          where + ", component " + std::to_string(i) + ", axis " + std::to_string(axis));
            }
        }
    }
}

std::string Place(double alpha, double dip, std::size_t slipType) {
    return "alpha " + std::to_string(alpha) + ", dip " + std::to_string(dip) + ", slip type " +
           std::to_string(slipType);
}

TEST_CASE("the nine derivatives of ua_, ub_ and uc_ are those of their displacements") {
    for (const auto& [part, name] : kParts) {
        LargestError error;
        for (const double alpha : kAlphas) {
            for (const double dip : kDips) {
                for (std::size_t slipType = 0; slipType < 3; ++slipType) {
                    Rectangle source{{alpha}, 6.0, dip, {-0.5, 2.0}, {-1.0, 1.5}, {}};
                    source.slip[slipType] = 1.0;
                    AddDerivatives(error, source, part, Place(alpha, dip, slipType));
                }
            }
        }
        // Of the largest derivative, 1e-4 at the farthest place. Truncation (0.04 / 4)^6 = 1e-12; rounding of corner
        // terms of order 1, a few times 1e-16 / 0.01.
        error.Report("rectangle, part " + name, 1e-8);
    }
}

TEST_CASE("the nine derivatives of ua0_, ub0_ and uc0_ are those of their displacements") {
    for (const auto& [part, name] : kParts) {
        LargestError error;
        for (const double alpha : kAlphas) {
            for (const double dip : kDips) {
                for (std::size_t slipType = 0; slipType < 4; ++slipType) {
                    PointSource source{{alpha}, 6.0, dip, {}};
                    source.potency[slipType] = 1.0;
                    AddDerivatives(error, source, part, Place(alpha, dip, slipType));
                }
            }
        }
        // Of the largest derivative. Truncation (0.04 / 4)^6 = 1e-12 with coefficients of some hundred, rounding 1e-13.
        error.Report("point source, part " + name, 1e-9);
    }
}

// Between the clamp and 1 degree off the vertical the general forms divide by powers of the cosine: see the scan of
// dips.
TEST_CASE("near the vertical the derivatives keep the figures that the division by the cosine leaves") {
    for (const double dip : {89.0, 91.0, 89.9, -89.9}) {
        const double cosine = std::cos(dip * kPi / 180.0);
        LargestError error;
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            Rectangle source{{}, 6.0, dip, {-0.5, 2.0}, {-1.0, 1.5}, {}};
            source.slip[slipType] = 1.0;
            AddDerivatives(error, source, Part::B, Place(2.0 / 3.0, dip, slipType));
        }
        // The rounding of the test above, a tenth of its bound, divided by the squared cosine.
        error.Report("rectangle, part B, dip " + std::to_string(dip), 1e-9 / (cosine * cosine));
    }
}

}  // namespace
}  // namespace tidora::golden
