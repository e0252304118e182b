#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "fault/Fault.h"
#include "parity/EveryInstructionSet.h"
#include "reference/DeformReference.h"
#include "unit/PrintedText.h"

namespace {

using tidora::DynamicParam;
using tidora::Fault;
using tidora::FAULT_PARAM;
using tidora::InstantVal2d;
using tidora::reference::DeformArguments;

/// A random fault over a random sea floor, plane or geographic.
struct Scene {
    DeformArguments arguments;
    std::vector<float> topo;
    Fault fault;
    DynamicParam intervals;
    std::vector<InstantVal2d> vertical, horizontal;  ///< as they stand before the call: not all zero

    Scene(unsigned seed, bool isGeographic, double tolerance) {
        std::mt19937 random(seed);
        const auto between = [&random](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(random);
        };
        arguments.nx = static_cast<int>(between(1.0, 24.0));
        arguments.ny = static_cast<int>(between(1.0, 24.0));
        arguments.tolerance = tolerance;
        arguments.horizontalEffect = seed % 3 == 0 ? 0 : 1;
        arguments.regionCoordType = isGeographic ? 1 : 0;
        arguments.orgX = isGeographic ? between(130.0, 179.0) : between(-6e4, 0.0);
        arguments.orgY = isGeographic ? between(-60.0, 60.0) : between(-6e4, 0.0);
        arguments.dx = static_cast<float>(isGeographic ? between(0.02, 0.3) : between(500.0, 9000.0));
        for (int at = 0; at < arguments.nx * arguments.ny; ++at) {
            topo.push_back(static_cast<float>(between(-6000.0, 500.0)));
        }
        arguments.topo = topo.data();
        fault.coordType = arguments.regionCoordType;
        const auto elementCount = static_cast<std::size_t>(between(1.0, 5.0));
        const double extent = static_cast<double>(arguments.dx) * 12.0;
        for (std::size_t i = 0; i < elementCount; ++i) {
            FAULT_PARAM e;
            e.org_x = arguments.orgX + between(-0.2, 1.0) * extent;
            e.org_y = arguments.orgY + between(-0.2, 1.0) * extent;
            e.baseOffset = between(0.0, 9000.0);
            e.depth = between(0.0, 2e4);
            e.strike = between(-180.0, 360.0);
            e.dip = i % 4 == 3 ? 90.0 : between(3.0, 89.0);
            e.rake = between(-180.0, 180.0);
            e.length = between(3e3, 5e4);
            e.width = between(3e3, 3e4);
            e.slip = i == 1 ? 0.0 : between(-2.0, 5.0);
            e.lagtime = i % 2 == 0 ? 0.0 : between(0.0, 60.0);
            e.duration = i % 2 == 0 ? 0.0 : between(0.0, 60.0);
            fault.elements.push_back(e);
        }
        fault.SetDynamicParam(intervals.params);
        vertical.resize(intervals.params.size());
        horizontal.resize(intervals.params.size());
        for (std::size_t k = 0; k < vertical.size(); ++k) {
            vertical[k].Reset(topo.size());
            horizontal[k].Reset(topo.size());
            vertical[k].val[0] = 0.25F;
        }
    }
};

/// Largest difference of two series of snapshots, in float units in the last place of the literal series' largest
/// value: the scale at which the elements of a fault are summed.
double LargestDifference(const std::vector<InstantVal2d>& fast, const std::vector<InstantVal2d>& literal) {
    REQUIRE(fast.size() == literal.size());
    double difference = 0.0, scale = 0.0;
    for (std::size_t k = 0; k < fast.size(); ++k) {
        REQUIRE(fast[k].num == literal[k].num);
        for (std::uint64_t at = 0; at < fast[k].num; ++at) {
            const auto a = static_cast<double>(fast[k].val[at]);
            const auto b = static_cast<double>(literal[k].val[at]);
            REQUIRE(std::isnan(a) == std::isnan(b));
            difference = std::isnan(a) ? difference : std::max(difference, std::abs(a - b));
            scale = std::isnan(b) ? scale : std::max(scale, std::abs(b));
        }
    }
    return difference / (scale * 0x1p-23);
}

}  // namespace

TEST_CASE("a deformation follows the literal one to the last place, on every instruction set") {
    std::size_t finite = 0, point = 0, none = 0;
    double worst = 0.0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const bool isGeographic = seed % 2 == 0;
        const double tolerance = seed % 4 < 2 ? 0.02 : 0.0;
        CAPTURE(seed);
        Scene literal(seed, isGeographic, tolerance);
        std::string literalOut;
        {
            const PrintedText printed;
            const auto evaluated = tidora::reference::DeformReference(
                literal.fault, literal.arguments, literal.intervals, literal.vertical, literal.horizontal);
            literalOut = printed.Out();
            for (const auto& element : evaluated) {
                for (const auto how : element) {
                    finite += how == tidora::reference::Evaluation::FiniteSource ? 1 : 0;
                    point += how == tidora::reference::Evaluation::PointSource ? 1 : 0;
                    none += how == tidora::reference::Evaluation::None ? 1 : 0;
                }
            }
        }
        ForEachInstructionSet([&] {
            Scene fast(seed, isGeographic, tolerance);
            const DeformArguments& a = fast.arguments;
            std::string fastOut;
            {
                const PrintedText printed;
                REQUIRE(fast.fault.Deform2D(a.mu, a.lambda, a.horzMinDepth, a.tolerance, a.horizontalEffect,
                                            a.regionCoordType, a.nx, a.ny, a.orgX, a.orgY, a.dx, a.topo, fast.vertical,
                                            fast.horizontal, fast.intervals) == 1);
                fastOut = printed.Out();
            }
            CHECK(fastOut == literalOut);
            worst = std::max(worst, LargestDifference(fast.vertical, literal.vertical));
            worst = std::max(worst, LargestDifference(fast.horizontal, literal.horizontal));
        });
    }
    MESSAGE("largest difference: " << worst << " units in the last place of the largest sum");
    CHECK(worst <= 1.0);
    // The scenes reach every kind of evaluation, or the comparison would say little.
    CHECK(finite > 1000);
    CHECK(point > 1000);
    CHECK(none > 1000);
}

TEST_CASE("the points that a deformation evaluates are those of the literal one") {
    // Without slip along dip, and with a dip that gives every point of a finite source some uplift, a point is
    // evaluated just when it is not exactly 0; elements far apart keep their points apart.
    for (unsigned seed = 101; seed <= 140; ++seed) {
        CAPTURE(seed);
        Scene literal(seed, seed % 2 == 0, 0.05);
        literal.fault.elements.resize(1);
        literal.fault.elements[0].slip = 3.0;
        Scene fast = literal;
        fast.arguments.topo = fast.topo.data();
        literal.arguments.topo = literal.topo.data();
        std::vector<std::vector<tidora::reference::Evaluation>> evaluated;
        {
            const PrintedText printed;
            evaluated = tidora::reference::DeformReference(literal.fault, literal.arguments, literal.intervals,
                                                           literal.vertical, literal.horizontal);
            const DeformArguments& a = fast.arguments;
            REQUIRE(fast.fault.Deform2D(a.mu, a.lambda, a.horzMinDepth, a.tolerance, a.horizontalEffect,
                                        a.regionCoordType, a.nx, a.ny, a.orgX, a.orgY, a.dx, a.topo, fast.vertical,
                                        fast.horizontal, fast.intervals) == 1);
        }
        for (std::size_t at = 1; at < fast.topo.size(); ++at) {  // point 0 does not start at 0
            const bool isEvaluated = evaluated[0][at] != tidora::reference::Evaluation::None;
            CHECK((fast.vertical[0].val[at] != 0.0F) == (literal.vertical[0].val[at] != 0.0F));
            CHECK((isEvaluated || fast.vertical[0].val[at] == 0.0F));
        }
    }
}
