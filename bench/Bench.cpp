// Times the library against its literal versions, in turns within one run. Every result is verified first; a wrong one
// ends the program with status 1. Prints the ratio of processor times (median, least, most of the turns) beside the
// bar.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "EngineBench.h"
#include "PairedRun.h"
#include "Scenes.h"
#include "TextRun.h"
#include "kajiura/ConvergedFilter.h"
#include "kajiura/KajiuraFilter.h"
#include "okada/DC3D.h"
#include "okada/batch/SurfaceBatch.h"
#include "projection/ZonePlane.h"
#include "reference/KajiuraReference.h"
#include "simd/InstructionSet.h"

namespace {

using bench::DeformScene;
using bench::Ratio;

struct Bars {
    double avx512, avx2;
};

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "wrong result: %s\n", what);
    std::exit(1);
}

void PrintHeader() {
    std::printf("%-62s %8s %8s %8s %8s\n", "work", "ratio", "least", "most", "bar");
}

void PrintRatioOfAnySet(const char* work, const Ratio& ratio, double bar, bool isLeast) {
    std::printf("%-62s %8.2f %8.2f %8.2f %8.2f (at %s)\n", work, ratio.median, ratio.least, ratio.most, bar,
                isLeast ? "least" : "most");
    std::fflush(stdout);
}

void PrintRatio(const char* work, const Ratio& ratio, const Bars& bars) {
    const tidora::InstructionSet set = tidora::CurrentInstructionSet();
    std::printf("%-62s %8.1f %8.1f %8.1f", work, ratio.median, ratio.least, ratio.most);
    if (set == tidora::InstructionSet::Baseline) {
        std::printf(" %8s\n", "-");
    } else {
        std::printf(" %8.0f\n", set == tidora::InstructionSet::Avx512 ? bars.avx512 : bars.avx2);
    }
    std::fflush(stdout);
}

void BenchKernel() {
    constexpr std::size_t kPoints = 20000;
    tidora::RectangleSource s;
    s.dip = 13.0F;
    s.al2 = 5e4F;
    s.aw1 = -2.5e4F;
    s.strikeSlip = 0.5F;
    s.dipSlip = 3.0F;
    std::mt19937 random(1);
    std::vector<float> x(kPoints), y(kPoints), depth(kPoints), ux(kPoints), uy(kPoints), scalar(kPoints),
        batch(kPoints);
    for (std::size_t i = 0; i < kPoints; ++i) {
        x[i] = std::uniform_real_distribution<float>(-3e5F, 3e5F)(random);
        y[i] = std::uniform_real_distribution<float>(-3e5F, 3e5F)(random);
        depth[i] = std::uniform_real_distribution<float>(2e3F, 1e4F)(random);
    }
    const auto runScalar = [&] {
        const float zero = 0.0F;
        float g[9];
        int status = 0;
        for (std::size_t i = 0; i < kPoints; ++i) {
            dc3d_(&s.alpha, &x[i], &y[i], &zero, &depth[i], &s.dip, &s.al1, &s.al2, &s.aw1, &s.aw2, &s.strikeSlip,
                  &s.dipSlip, &zero, &ux[i], &uy[i], &scalar[i], g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7,
                  g + 8, &status);
        }
    };
    const auto runBatch = [&] {
        for (int repeat = 0; repeat < 10; ++repeat) {  // long enough for the clock
            tidora::FiniteSurfaceBatch(s, {kPoints, x.data(), y.data(), depth.data()},
                                       {nullptr, nullptr, batch.data()});
        }
    };
    runScalar();
    runBatch();
    for (std::size_t i = 0; i < kPoints; ++i) {
        if (std::abs(batch[i] - scalar[i]) > 1.2e-7F * std::abs(scalar[i])) {
            Fail("finite source");
        }
    }
    Ratio ratio = bench::Compare(runScalar, runBatch);
    ratio.median *= 10.0;
    ratio.least *= 10.0;
    ratio.most *= 10.0;
    PrintRatio("finite source, vertical only, kernel alone, per point", ratio, {18, 9});
    std::printf("    %.1f ns and %.1f ns per point\n", ratio.slowSeconds / kPoints * 1e9,
                ratio.fastSeconds / 10.0 / kPoints * 1e9);
}

void BenchDeformation(const char* work, DeformScene scene, const Bars& bars) {
    DeformScene literal = scene;
    scene.Reset();
    literal.Reset();
    scene.RunFast();
    literal.RunLiteral();
    if (bench::LargestDifference(scene, literal) > 1.2e-7) {
        Fail(work);
    }
    PrintRatio(work, bench::Compare([&] { literal.RunLiteral(); }, [&] { scene.RunFast(); }), bars);
}

/// The plane of a zone for a grid of 15 by 15 degrees around a fault.
void BenchZonePlane() {
    constexpr std::size_t n = 900;
    constexpr double kSpacing = 1.0 / 60.0;
    std::vector<double> lat(n), lon(n), projX(n * n), projY(n * n), x(n * n), y(n * n);
    for (std::size_t i = 0; i < n; ++i) {
        lat[i] = 30.0 + kSpacing * static_cast<double>(i);
    }
    const tidora::ZonePlane plane(54);
    const auto longitude = [](std::size_t ix) { return 137.0 + kSpacing * static_cast<double>(ix); };
    const auto runProj = [&] {
        for (std::size_t ix = 0; ix < n; ++ix) {
            std::fill(lon.begin(), lon.end(), longitude(ix));
            plane.Points(n, lon.data(), lat.data(), &projX[ix * n], &projY[ix * n]);
        }
    };
    constexpr int kRepeats = 10;  // long enough for the clock
    const auto runPlane = [&] {
        for (int repeat = 0; repeat < kRepeats; ++repeat) {
            const tidora::ConformalRows rows(lat);
            for (std::size_t ix = 0; ix < n; ++ix) {
                plane.Column(longitude(ix), rows, 0, n, &x[ix * n], &y[ix * n]);
            }
        }
    };
    runProj();
    runPlane();
    for (std::size_t i = 0; i < n * n; ++i) {
        if (!(std::abs(x[i] - projX[i]) <= tidora::kZonePlaneMaxError) ||
            !(std::abs(y[i] - projY[i]) <= tidora::kZonePlaneMaxError)) {
            Fail("plane of a zone");
        }
    }
    Ratio ratio = bench::Compare(runProj, runPlane);
    ratio.median *= kRepeats;
    ratio.least *= kRepeats;
    ratio.most *= kRepeats;
    PrintRatio("plane of a zone, whole grid, over PROJ point by point", ratio, {25, 15});
    std::printf("    %.1f ns and %.2f ns per point\n", ratio.slowSeconds / (n * n) * 1e9,
                ratio.fastSeconds / kRepeats / (n * n) * 1e9);
}

/// Depths of 100 to 7000 m and an uplift of waves, index ix * n + iy and, alike, iy * n + ix.
struct FilterScene {
    static constexpr int n = 260;
    std::vector<float> topo, uplift;

    FilterScene() {
        for (int ix = 0; ix < n; ++ix) {
            for (int iy = 0; iy < n; ++iy) {
                const double along = static_cast<double>(ix) / n;
                const double across = static_cast<double>(iy) / n;
                topo.push_back(
                    static_cast<float>(-100.0 - 6900.0 * (0.5 + 0.5 * std::sin(9.0 * along + 4.0 * across))));
                uplift.push_back(static_cast<float>(3.0 * std::sin(20.0 * along) * std::cos(17.0 * across)));
            }
        }
    }
};

void BenchFilter() {
    constexpr int n = FilterScene::n;
    const FilterScene scene;
    const std::vector<float>& topo = scene.topo;
    const std::vector<float>& uplift = scene.uplift;
    const tidora::SampledGrid grid = {{n, n, 1000.0, 2000.0, 1000.0F}, uplift.data()};
    std::vector<float> fast = uplift;
    std::vector<tidora::InstantVal2d> literal(1);
    literal[0].Reset(uplift.size());
    const auto runLiteral = [&] {
        std::copy(uplift.begin(), uplift.end(), literal[0].val);
        tidora::reference::KajiuraReference({n, n, 1000.0, 2000.0, 1000.0F}, topo.data(), 0, {}, {}, {}, literal);
    };
    const auto runFast = [&] { tidora::FilterUplift(grid, nullptr, topo.data(), fast.data()); };
    runLiteral();
    runFast();
    if (std::memcmp(literal[0].val, fast.data(), fast.size() * sizeof(float)) != 0) {
        Fail("filter");
    }
    const Ratio ratio = bench::Compare(runLiteral, runFast);
    PrintRatio("Kajiura filter, 260 x 260, depth 100-7000 m, 1 km", ratio, {25, 12});
    std::printf("    %.1f us and %.2f us per point\n", ratio.slowSeconds / (n * n) * 1e6,
                ratio.fastSeconds / (n * n) * 1e6);
}

/// Cost of the converged filter, table included, over that of the program's; less is better.
void BenchConvergedFilter() {
    constexpr int n = FilterScene::n;
    const FilterScene scene;
    const tidora::SampledGrid grid = {{n, n, 1000.0, 2000.0, 1000.0F}, scene.uplift.data()};
    std::vector<float> program = scene.uplift;
    std::vector<float> converged = scene.uplift;
    const auto runProgram = [&] { tidora::FilterUplift(grid, nullptr, scene.topo.data(), program.data()); };
    const auto runConverged = [&] {
        const tidora::UpliftTable table({n, n, 1000.0, 2000.0, 1000.0}, scene.uplift.data());
        tidora::ConvergedFilter(table, nullptr, false)
            .FilterRows(0, n, scene.uplift.data(), scene.topo.data(), converged.data());
    };
    runProgram();
    runConverged();
    // The program's kernel is cut: 2.3 percent of 3 m for long waves. At the rim its samples end half a spacing
    // earlier.
    constexpr int kRim = 35;
    for (int i = kRim; i < n - kRim; ++i) {
        for (int j = kRim; j < n - kRim; ++j) {
            const std::size_t at = static_cast<std::size_t>(i) * n + static_cast<std::size_t>(j);
            if (!(std::abs(program[at] - converged[at]) < 0.1F)) {
                Fail("converged filter");
            }
        }
    }
    const Ratio ratio = bench::Compare(runConverged, runProgram);
    PrintRatioOfAnySet("converged filter over the program's, same grid and depths", ratio, 0.6, false);
    std::printf("    %.3f us and %.2f us per point\n", ratio.slowSeconds / (n * n) * 1e6,
                ratio.fastSeconds / (n * n) * 1e6);
}

/// Cost where the grid grows and the elements stay; the ratio is large over small, so less is better.
void BenchGrowth() {
    DeformScene small = bench::SmallElementsScene(350);
    DeformScene large = bench::SmallElementsScene(1400);
    small.Reset();
    large.Reset();
    const Ratio ratio = bench::Compare([&] { large.RunFast(); }, [&] { small.RunFast(); });
    PrintRatioOfAnySet("16 times the area around the same 200 small elements", ratio, 1.5, false);
}

/// Cost of a tolerance over that of none; less is better. The points beyond the finite source take a point source,
/// which costs a few nanoseconds.
void BenchFarPoints(const char* work, bool withSlopes) {
    constexpr double kTolerance = 0.001;
    DeformScene literal = bench::FarPointsScene(120, false, withSlopes, kTolerance);
    DeformScene fast = literal;
    literal.Reset();
    fast.Reset();
    literal.RunLiteral();
    fast.RunFast();
    if (bench::LargestDifference(fast, literal) > 1.2e-7) {
        Fail(work);
    }
    DeformScene with = bench::FarPointsScene(1000, false, withSlopes, kTolerance);
    DeformScene without = bench::FarPointsScene(1000, false, withSlopes, 0.0);
    with.Reset();
    without.Reset();
    PrintRatioOfAnySet(work, bench::Compare([&] { with.RunFast(); }, [&] { without.RunFast(); }), 0.5, false);
}

/// The engine beside the program.
void BenchEngine() {
    PrintRatioOfAnySet("engine, globe over plane, 1000 x 1000 x 10, uplift", bench::GlobeOverPlane(), 1.35, false);
    PrintRatioOfAnySet("engine, globe over the bare kernel", bench::GlobeOverKernel(), 1.6, false);
    const Ratio machine = bench::TwoKernelsInTurnOverSideBySide();
    PrintRatioOfAnySet("engine, two threads over one, 1000 x 1000 x 50", bench::OneThreadOverTwo(),
                       std::min(1.85, 0.95 * machine.median), true);
    std::printf("    two bare kernels side by side over one after the other: %.2f\n", machine.median);
}

/// Cost of other tolerances, on the plane and on degrees: a tolerance may never cost more than none.
void BenchToleranceSweep() {
    std::printf(
        "\ntolerance, 1000 x 1000 points, 100 elements of 10 km in the middle: time over that of tolerance 0\n");
    std::printf("%24s", "");
    constexpr double kTolerances[] = {1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1.0};
    for (const double tolerance : kTolerances) {
        std::printf(" %8g", tolerance);
    }
    std::printf("\n");
    for (const bool isGeographic : {false, true}) {
        for (const bool withSlopes : {false, true}) {
            std::printf("%24s",
                        (std::string(isGeographic ? "geographic" : "plane") + (withSlopes ? ", slopes" : "")).c_str());
            DeformScene without = bench::FarPointsScene(1000, isGeographic, withSlopes, 0.0);
            without.Reset();
            for (const double tolerance : kTolerances) {
                DeformScene with = bench::FarPointsScene(1000, isGeographic, withSlopes, tolerance);
                with.Reset();
                std::printf(" %8.2f", bench::Compare([&] { with.RunFast(); }, [&] { without.RunFast(); }).median);
                std::fflush(stdout);
            }
            std::printf("\n");
        }
    }
}

/// Reads a text grid as the program does, and as the functions of C do token by token.
void BenchTextGrid() {
    const bench::TextRun run;
    std::vector<float> expected = run.ValuesByStrtod();
    std::vector<float> values = run.ValuesByReader();
    if (values.size() != expected.size() ||
        std::memcmp(values.data(), expected.data(), values.size() * sizeof(float)) != 0) {
        Fail("text grid");
    }
    PrintRatioOfAnySet("text grid 1500 x 1500, against strtok and strtod",
                       bench::Compare([&] { expected = run.ValuesByStrtod(); }, [&] { values = run.ValuesByReader(); }),
                       4.0, true);
    PrintRatioOfAnySet("whole run on a text grid 1500 x 1500, over wc -w",
                       bench::Compare(run.ProgramTime(), run.WordCountTime()), 4.0, false);
}

/// How the cost of the deformation grows: with the elements, with the grid around them, with the intervals.
void BenchScaling() {
    const auto seconds = [](DeformScene scene) {
        scene.Reset();
        scene.RunFast();
        double least = 1e9;
        for (int turn = 0; turn < 3; ++turn) {
            least = std::min(least, bench::Seconds([&] { scene.RunFast(); }));
        }
        return least;
    };
    std::printf("\nelements, plane 350 x 350, slope term on\n%12s %12s %22s\n", "elements", "ms",
                "ns per point, element");
    for (const std::size_t count : {1U, 4U, 16U, 64U, 256U}) {
        const double time = seconds(bench::PlaneScene(350, count));
        std::printf("%12zu %12.2f %22.2f\n", count, time * 1e3,
                    time * 1e9 / (350.0 * 350.0 * static_cast<double>(count)));
    }
    std::printf("\ngrid around the same 200 small elements\n%12s %12s\n", "grid", "ms");
    for (const int n : {350, 700, 1400, 2800}) {
        std::printf("%5d x %4d %12.2f\n", n, n, seconds(bench::SmallElementsScene(n)) * 1e3);
    }
    std::printf("\nintervals, plane 350 x 350, 16 elements of one onset time each or of shared ones\n%12s %12s\n",
                "intervals", "ms");
    for (const std::size_t intervals : {1U, 4U, 16U}) {
        std::printf("%12zu %12.2f\n", intervals, seconds(bench::IntervalScene(350, 16, intervals)) * 1e3);
    }
}

}  // namespace

int main(int argc, char** argv) {
    // One word: only the benchmarks whose name has it.
    const std::string wanted = argc > 1 ? argv[1] : "";
    if (wanted == "bare kernel") {  // for benchmarks in other languages: nothing but a number
        std::printf("%.3f\n", bench::KernelNanoseconds());
        return 0;
    }
    const auto isWanted = [&wanted](const char* name) { return std::string(name).find(wanted) != std::string::npos; };
    for (auto set = tidora::AvailableInstructionSets().rbegin(); set != tidora::AvailableInstructionSets().rend();
         ++set) {
        tidora::ForceInstructionSet(*set);
        std::printf("\ninstruction set: %s\n", tidora::NameOf(*set));
        PrintHeader();
        if (isWanted("kernel")) {
            BenchKernel();
        }
        if (isWanted("plane")) {
            BenchDeformation("deformation, plane 700 x 700, 12 elements, slope term", bench::PlaneScene(700, 12),
                             {15, 8});
        }
        if (isWanted("geographic")) {
            BenchDeformation("deformation, geographic 480 x 400, 40 elements", bench::GeographicScene(480, 400, 40),
                             {30, 15});
        }
        if (isWanted("zone")) {
            BenchZonePlane();
        }
        if (isWanted("filter")) {
            BenchFilter();
            BenchConvergedFilter();
        }
        if (isWanted("growth")) {
            BenchGrowth();
        }
        if (isWanted("far points")) {
            BenchFarPoints("far points, tolerance 0.001 m over none", false);
            BenchFarPoints("far points with slope term, tolerance 0.001 m over none", true);
        }
        if (isWanted("engine")) {
            BenchEngine();
        }
    }
    tidora::ForceInstructionSet(tidora::AvailableInstructionSets().back());
    std::printf("\nwith every instruction set\n");
    PrintHeader();
    if (isWanted("text")) {
        BenchTextGrid();
    }
    if (isWanted("scaling")) {
        BenchScaling();
    }
    if (isWanted("tolerances")) {
        BenchToleranceSweep();
    }
    return 0;
}
