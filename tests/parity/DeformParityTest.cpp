#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
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

    /// Snapshots of zeros, for the intervals of elements that were put in place of the random ones.
    void StartFromZeros() {
        arguments.topo = topo.data();
        intervals.params.clear();
        fault.SetDynamicParam(intervals.params);
        for (std::vector<InstantVal2d>* series : {&vertical, &horizontal}) {
            series->resize(intervals.params.size());
            for (InstantVal2d& snapshot : *series) {
                snapshot.Reset(topo.size());
            }
        }
    }

    /// rows: 0 for some. Their number leaves the extent of the grid as it is.
    Scene(unsigned seed, bool isGeographic, double tolerance, int rows = 0) {
        std::mt19937 random(seed);
        const auto between = [&random](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(random);
        };
        arguments.nx = static_cast<int>(between(1.0, 24.0));
        arguments.ny = static_cast<int>(between(1.0, 24.0));
        const double refinement = rows > 0 ? rows / 24.0 : 1.0;
        arguments.ny = rows > 0 ? rows : arguments.ny;
        arguments.tolerance = tolerance;
        arguments.horizontalEffect = seed % 3 == 0 ? 0 : 1;
        arguments.regionCoordType = isGeographic ? 1 : 0;
        arguments.orgX = isGeographic ? between(130.0, 179.0) : between(-6e4, 0.0);
        arguments.orgY = isGeographic ? between(-60.0, 60.0) : between(-6e4, 0.0);
        arguments.dx = static_cast<float>((isGeographic ? between(0.02, 0.3) : between(500.0, 9000.0)) / refinement);
        for (int at = 0; at < arguments.nx * arguments.ny; ++at) {
            topo.push_back(static_cast<float>(between(-6000.0, 500.0)));
        }
        arguments.topo = topo.data();
        fault.coordType = arguments.regionCoordType;
        const auto elementCount = static_cast<std::size_t>(between(1.0, 5.0));
        const double extent = static_cast<double>(arguments.dx) * 12.0 * refinement;
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
            vertical[k].val[topo.size() - 1] = 0.75F;
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

/// How many points were evaluated in which way.
struct Evaluations {
    std::size_t finite = 0, point = 0, none = 0;
    std::size_t notNumbers = 0;  ///< of the literal vertical snapshots
};

/// Deforms the grid of a scene literally and, on every instruction set, fast; the printed lines must be the same.
/// Returns the largest difference of the snapshots.
template <typename MakeScene>
double CompareWithLiteral(MakeScene makeScene, Evaluations& evaluations) {
    using tidora::reference::Evaluation;
    Scene literal = makeScene();
    literal.arguments.topo = literal.topo.data();
    std::string literalOut;
    {
        const PrintedText printed;
        const auto evaluated = tidora::reference::DeformReference(literal.fault, literal.arguments, literal.intervals,
                                                                  literal.vertical, literal.horizontal);
        literalOut = printed.Out();
        for (const auto& element : evaluated) {
            for (const Evaluation how : element) {
                evaluations.finite += how == Evaluation::FiniteSource ? 1 : 0;
                evaluations.point += how == Evaluation::PointSource ? 1 : 0;
                evaluations.none += how == Evaluation::None ? 1 : 0;
            }
        }
    }
    for (const InstantVal2d& snapshot : literal.vertical) {
        evaluations.notNumbers += static_cast<std::size_t>(
            std::count_if(snapshot.val, snapshot.val + snapshot.num, [](float value) { return std::isnan(value); }));
    }
    double worst = 0.0;
    ForEachInstructionSet([&] {
        Scene fast = makeScene();
        const DeformArguments& a = fast.arguments;
        std::string fastOut;
        {
            const PrintedText printed;
            REQUIRE(fast.fault.Deform2D(a.mu, a.lambda, a.horzMinDepth, a.tolerance, a.horizontalEffect,
                                        a.regionCoordType, a.nx, a.ny, a.orgX, a.orgY, a.dx, fast.topo.data(),
                                        fast.vertical, fast.horizontal, fast.intervals) == 1);
            fastOut = printed.Out();
        }
        CHECK(fastOut == literalOut);
        worst = std::max(worst, LargestDifference(fast.vertical, literal.vertical));
        worst = std::max(worst, LargestDifference(fast.horizontal, literal.horizontal));
    });
    return worst;
}

}  // namespace

TEST_CASE("a deformation follows the literal one to the last place, on every instruction set") {
    Evaluations evaluations;
    double worst = 0.0;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        CAPTURE(seed);
        const auto makeScene = [seed] { return Scene(seed, seed % 2 == 0, seed % 4 < 2 ? 0.02 : 0.0); };
        worst = std::max(worst, CompareWithLiteral(makeScene, evaluations));
    }
    MESSAGE("largest difference: " << worst << " units in the last place of the largest sum");
    CHECK(worst <= 1.0);
    // The scenes reach every kind of evaluation, or the comparison would say little.
    CHECK(evaluations.finite > 1000);
    CHECK(evaluations.point > 1000);
    CHECK(evaluations.none > 1000);
}

TEST_CASE("a deformation of long columns follows the literal one to the last place, on every instruction set") {
    Evaluations evaluations;
    double worst = 0.0;
    for (unsigned seed = 201; seed <= 212; ++seed) {
        CAPTURE(seed);
        const int rows[] = {128, 129, 1024, 1025, 2500};
        const auto makeScene = [&] {
            return Scene(seed, seed % 3 == 0, seed % 4 < 2 ? 0.02 : 0.0, rows[seed % std::size(rows)]);
        };
        worst = std::max(worst, CompareWithLiteral(makeScene, evaluations));
    }
    CHECK(worst <= 1.0);
    CHECK(evaluations.finite > 10000);
    CHECK(evaluations.point > 10000);
}

TEST_CASE("the centre of a point source behind a column of finite ones takes the depth of that column's last point") {
    const auto makeScene = [] {
        Scene scene(301, false, 0.02, 80);
        DeformArguments& a = scene.arguments;
        a.nx = 300;
        a.dx = 150.0F;
        a.orgX = 0.0;
        a.orgY = 0.0;
        scene.topo.clear();
        for (int at = 0; at < a.nx * a.ny; ++at) {
            scene.topo.push_back(static_cast<float>(-1000 - at * 7919 % 5000));
        }
        FAULT_PARAM element;
        element.org_x = 2000.0;
        element.org_y = 5000.0;  // nearer to the last row: the first one leaves the finite source first
        element.baseOffset = 9000.0;
        element.strike = 10.0;
        element.dip = 20.0;
        element.rake = 90.0;
        element.length = 6000.0;
        element.width = 5000.0;
        element.slip = 1.0;
        scene.fault.elements = {element, element};
        scene.StartFromZeros();
        return scene;
    };
    Evaluations evaluations;
    CHECK(CompareWithLiteral(makeScene, evaluations) <= 1.0);
    CHECK(evaluations.finite > 8000);  // whole columns
    CHECK(evaluations.point > 1000);
}

TEST_CASE("co-ordinates of a plane grid or element that are not finite, or huge, give what the literal rule gives") {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        const char* why;
        void (*change)(Scene&, double);
    };
    const Row rows[] = {
        {"first column", [](Scene& s, double value) { s.arguments.orgX = value; }},
        {"first row", [](Scene& s, double value) { s.arguments.orgY = value; }},
        {"spacing", [](Scene& s, double value) { s.arguments.dx = static_cast<float>(value); }},
        {"element, east", [](Scene& s, double value) { s.fault.elements[0].org_x = value; }},
        {"element, north", [](Scene& s, double value) { s.fault.elements[0].org_y = value; }},
        {"length", [](Scene& s, double value) { s.fault.elements[0].length = value; }},
        {"width", [](Scene& s, double value) { s.fault.elements[0].width = value; }},
        {"strike", [](Scene& s, double value) { s.fault.elements[0].strike = value; }},
        {"dip", [](Scene& s, double value) { s.fault.elements[0].dip = value; }},
        {"rake", [](Scene& s, double value) { s.fault.elements[0].rake = value; }},
        {"slip", [](Scene& s, double value) { s.fault.elements[0].slip = value; }},
        {"topography", [](Scene& s, double value) { s.topo[s.topo.size() / 2] = static_cast<float>(value); }},
    };
    std::size_t notNumbers = 0;
    for (const Row& row : rows) {
        for (const double value : {kNan, kInfinity, -kInfinity, 1.0e30, -1.0e30, 1.0e300, 3.0e38}) {
            for (const unsigned seed : {401U, 403U, 405U, 407U}) {
                CAPTURE(row.why);
                CAPTURE(value);
                CAPTURE(seed);
                const auto makeScene = [&] {
                    Scene scene(seed, false, seed % 4 == 1 ? 0.02 : 0.0);
                    row.change(scene, value);
                    scene.arguments.topo = scene.topo.data();
                    return scene;
                };
                Evaluations evaluations;
                CHECK(CompareWithLiteral(makeScene, evaluations) <= 1.0);
                notNumbers += evaluations.notNumbers;
            }
        }
    }
    CHECK(notNumbers > 1000);  // or nothing came of all that
}

TEST_CASE("the window of a long element holds every point that its distance test admits") {
    // 400 000 km long: single precision places points of its middle to within 16 m, and its sources reach 4143 m.
    // The grid lies across the limit of that reach, 1 m apart.
    for (const double strike : {0.0, 30.0, 90.0, 200.0}) {
        for (const double edge : {-1.0, 1.0}) {
            CAPTURE(strike);
            CAPTURE(edge);
            const auto makeScene = [&] {
                Scene scene(501, false, 10.0);
                FAULT_PARAM element;
                element.strike = strike;
                element.dip = 90.0;
                element.rake = 30.0;
                element.baseOffset = 9000.0;
                element.length = 4.0e8;
                element.width = 1.0;
                element.slip = 1.0;
                scene.fault.elements = {element};
                const double centreX = std::sin(strike / 180.0 * 3.14159265359) * element.length / 2.0;
                const double centreY = std::cos(strike / 180.0 * 3.14159265359) * element.length / 2.0;
                DeformArguments& a = scene.arguments;
                a.nx = 200;
                a.ny = 60;
                a.dx = 1.0F;
                a.orgX = centreX + edge * 4143.0 - 100.0;
                a.orgY = centreY - 30.0;
                scene.topo.assign(static_cast<std::size_t>(a.nx) * static_cast<std::size_t>(a.ny), -3000.0F);
                scene.StartFromZeros();
                return scene;
            };
            Evaluations evaluations;
            CHECK(CompareWithLiteral(makeScene, evaluations) <= 1.0);
            CHECK(evaluations.finite > 2000);  // on this side of the limit
            CHECK(evaluations.none > 2000);    // and beyond it
        }
    }
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
        for (std::size_t at = 1; at + 1 < fast.topo.size(); ++at) {  // the first and the last do not start at 0
            const bool isEvaluated = evaluated[0][at] != tidora::reference::Evaluation::None;
            CHECK((fast.vertical[0].val[at] != 0.0F) == (literal.vertical[0].val[at] != 0.0F));
            CHECK((isEvaluated || fast.vertical[0].val[at] == 0.0F));
        }
    }
}
