#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"
#include "golden/Quadrature.h"

namespace tidora::golden {
namespace {

const std::vector<double> kDips = {3.0, 30.0, 70.0, 90.0, -90.0, -40.0};

/// A rectangle of 8 by 6 about its reference point, 7 deep.
Rectangle CentredRectangle(double dip, std::size_t slipType, double scale = 1.0) {
    Rectangle source;
    source.depth = 7.0;
    source.dip = dip;
    source.along = {-4.0 * scale, 4.0 * scale};
    source.up = {-3.0 * scale, 3.0 * scale};
    source.slip[slipType] = 1.0;
    return source;
}

double Largest(const Vec3& u) {
    return std::max({std::abs(u[0]), std::abs(u[1]), std::abs(u[2])});
}

double LargestDifference(const Vec3& a, const Vec3& b) {
    return Largest({a[0] - b[0], a[1] - b[1], a[2] - b[2]});
}

std::string Place(double dip, std::size_t slipType) {
    return "dip " + std::to_string(dip) + ", slip type " + std::to_string(slipType);
}

TEST_CASE("many small rectangles add up to the large one") {
    constexpr std::size_t kColumns = 5, kRows = 4;
    LargestError error;
    for (const double dip : kDips) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            const Rectangle whole = CentredRectangle(dip, slipType);
            for (const Vec3& at : {Vec3{1.0, 2.0, 0.0}, Vec3{9.0, -4.0, 0.0}, Vec3{-1.6, 0.4, 0.0}}) {
                Vec3 sum{};
                for (std::size_t i = 0; i < kColumns * kRows; ++i) {
                    Rectangle piece = whole;
                    const double width = 8.0 / static_cast<double>(kColumns);
                    const double height = 6.0 / static_cast<double>(kRows);
                    const auto column = static_cast<double>(i % kColumns);
                    const std::size_t rowNumber = i / kColumns;
                    const auto row = static_cast<double>(rowNumber);
                    piece.along = {-4.0 + column * width, -4.0 + (column + 1.0) * width};
                    piece.up = {-3.0 + row * height, -3.0 + (row + 1.0) * height};
                    const Vec3 u = SurfaceDisplacement(piece, at);
                    for (std::size_t k = 0; k < kDirections; ++k) {
                        sum[k] += u[k];
                    }
                }
                const Vec3 expected = SurfaceDisplacement(whole, at);
                error.Add(LargestDifference(sum, expected) / Largest(expected), Place(dip, slipType));
            }
        }
    }
    // Of the largest component: 80 corners of order 1, each with a few roundings, over displacements from 0.01 on.
    error.Report("pieces minus whole", 1e-12);
}

TEST_CASE("the point source integrates over the rectangle to the rectangle's own solution") {
    LargestError error;
    for (const double dip : kDips) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            const Rectangle whole = CentredRectangle(dip, slipType, 0.5);
            const SourceFrame frame = FrameOf(dip);
            for (const Vec3& at : {Vec3{1.0, 2.0, 0.0}, Vec3{9.0, -4.0, 0.0}, Vec3{2.0, 0.5, 0.0}}) {
                const auto element = [&](double along, double up) {
                    PointSource point{whole.medium, whole.depth - up * frame.upDip[2], dip, {}};
                    point.potency[slipType] = 1.0;
                    return SurfaceDisplacement(point, {at[0] - along, at[1] - up * frame.upDip[1], at[2]});
                };
                const Vec3 integral = Integrate<Vec3>(element, {whole.along, whole.up}, 1e-13);
                const Vec3 expected = SurfaceDisplacement(whole, at);
                error.Add(LargestDifference(integral, expected) / Largest(expected), Place(dip, slipType));
            }
        }
    }
    // Of the largest component: 1e-13 of the quadrature over displacements from 0.001 on.
    error.Report("integral of point sources minus rectangle", 1e-10);
}

// A rectangle about its reference point has no moment of first order: the next term falls by the square of the
// distance.
TEST_CASE("with distance the rectangle tends to the point source, four times closer with every doubling") {
    LargestError order;
    for (const double dip : kDips) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            std::array<double, 2> deviation{};
            double scale = 1.0 / 16.0;
            for (double& value : deviation) {
                // The same place seen from a source half as large: the same as doubling all distances.
                const Rectangle rectangle = CentredRectangle(dip, slipType, scale);
                PointSource point{rectangle.medium, rectangle.depth, dip, {}};
                point.potency[slipType] = 48.0 * scale * scale;
                const Vec3 at = {11.0, 5.0, 0.0};
                const Vec3 limit = SurfaceDisplacement(point, at);
                value = LargestDifference(SurfaceDisplacement(rectangle, at), limit) / Largest(limit);
                scale /= 2.0;
            }
            order.Add(deviation[0] / deviation[1] - 4.0, Place(dip, slipType));
            CHECK(deviation[0] < 0.01);
        }
    }
    // The term after next is (size / distance)^2 = (0.5 / 13)^2 of the leading one, times coefficients up to some
    // dozen.
    order.Report("ratio of the deviations minus 4", 0.05);
}

TEST_CASE("dc3d_ tends to dc3d0_ with distance, to single precision") {
    LargestError error;
    for (const float dip : {10.0F, 60.0F, 90.0F}) {
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            FiniteCall finite;
            finite.x = 900.0F;
            finite.y = -1200.0F;
            finite.depth = 500.0F;
            finite.dip = dip;
            finite.al1 = -4.0F;
            finite.al2 = 4.0F;
            finite.aw1 = -3.0F;
            finite.aw2 = 3.0F;
            finite.slip = {};
            finite.slip[slipType] = 100.0F;
            PointCall point;
            point.x = finite.x;
            point.y = finite.y;
            point.depth = finite.depth;
            point.dip = dip;
            point.potency = {};
            point.potency[slipType] = 4800.0F;
            const EntryResult near = Call(finite);
            const EntryResult far = Call(point);
            CHECK(near.iret == 0);
            CHECK(far.iret == 0);
            const float size = std::max({std::abs(far.u[0]), std::abs(far.u[1]), std::abs(far.u[2])});
            for (std::size_t i = 0; i < 3; ++i) {
                error.Add(static_cast<double>((near.u[i] - far.u[i]) / size),
                          Place(static_cast<double>(dip), slipType));
            }
        }
    }
    // (size / distance)^2 = (5 / 1580)^2 = 1e-5, times coefficients up to a dozen.
    error.Report("dc3d_ minus dc3d0_, 300 source lengths away", 1e-4);
}

TEST_CASE("the displacement is linear in the slip and in the potency") {
    LargestError error;
    for (const double dip : kDips) {
        Rectangle rectangle = CentredRectangle(dip, 0);
        PointSource point{{}, 7.0, dip, {}};
        const Vec3 slip = {0.7, -1.3, 0.4};
        const Vec3 at = {1.0, 2.0, 0.0};
        Vec3 sum{}, pointSum{};
        for (std::size_t slipType = 0; slipType < 3; ++slipType) {
            rectangle.slip = {};
            rectangle.slip[slipType] = 1.0;
            point.potency = {};
            point.potency[slipType] = 1.0;
            const Vec3 u = SurfaceDisplacement(rectangle, at);
            const Vec3 v = SurfaceDisplacement(point, at);
            for (std::size_t k = 0; k < kDirections; ++k) {
                sum[k] += slip[slipType] * u[k];
                pointSum[k] += slip[slipType] * v[k];
            }
        }
        rectangle.slip = slip;
        point.potency = {slip[0], slip[1], slip[2], 0.0};
        error.Add(LargestDifference(SurfaceDisplacement(rectangle, at), sum), "rectangle");
        error.Add(LargestDifference(SurfaceDisplacement(point, at), pointSum), "point");
    }
    // Absolute: displacements below 1, a few roundings of corner terms of order 1.
    error.Report("slip vector minus its components", 1e-14);
}

}  // namespace
}  // namespace tidora::golden
