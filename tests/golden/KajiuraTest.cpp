// The Kajiura filter against what its integral is known to give: waves of one length, a uniform uplift, and nested
// grids against one grid that covers both. Every check prints its largest error.

#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "golden/LargestError.h"
#include "grid/InstantVal2d.h"
#include "region/Region.h"

using tidora::InstantVal2d;
using tidora::Region;
using tidora::golden::LargestError;

namespace {

struct Grid {
    int nx = 0;
    int ny = 0;
    double orgX = 0.0;
    double orgY = 0.0;
    float dx = 1.0F;

    [[nodiscard]] std::size_t Size() const { return static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny); }
    [[nodiscard]] double X(int ix) const { return orgX + ix * static_cast<double>(dx); }
    [[nodiscard]] double Y(int iy) const { return orgY + iy * static_cast<double>(dx); }
};

using Field = std::function<double(double x, double y)>;

InstantVal2d Sampled(const Grid& grid, const Field& field) {
    InstantVal2d snapshot;
    snapshot.Reset(grid.Size());
    for (int ix = 0; ix < grid.nx; ++ix) {
        for (int iy = 0; iy < grid.ny; ++iy) {
            snapshot.val[ix * grid.ny + iy] = static_cast<float>(field(grid.X(ix), grid.Y(iy)));
        }
    }
    return snapshot;
}

double Nothing(double /*x*/, double /*y*/) {
    return 0.0;
}

// Filters `uplift` over a sea of topography `depthOf` (negative), within `parent` whose deformation is `around`.
std::vector<float> Filtered(const Grid& grid, const Field& uplift, const Field& depthOf, const Grid* parent = nullptr,
                            const Field& around = Nothing) {
    Region region;
    region.Set2dStruct(grid.nx, grid.ny, grid.orgX, grid.orgY, static_cast<double>(grid.dx));
    region.instants = {Sampled(grid, uplift)};
    region.valWork = new float[grid.Size()];
    const InstantVal2d depth = Sampled(grid, depthOf);
    if (parent == nullptr) {
        region.KajiuraFilterNesting(depth.val, 0, 0, 0, 0.0, 0.0, 1.0F, {}, {});
    } else {
        std::vector<float> parentWork(parent->Size());
        region.parentValWork = parentWork.data();
        region.KajiuraFilterNesting(depth.val, 1, parent->nx, parent->ny, parent->orgX, parent->orgY, parent->dx,
                                    {Sampled(*parent, around)}, {Sampled(*parent, Nothing)});
    }
    std::vector<float> filtered(region.instants[0].val, region.instants[0].val + grid.Size());
    region.FreeVecMem();
    return filtered;
}

// Weight of the sample (i, j) in the filter's sum, in double: s^2 / (pi d^2) times the series, with s = d / 4. It does
// not depend on the depth d. Kajiura (1963), Bull. Earthq. Res. Inst. 41, 535-571, series cut after 11 terms.
double Weight(int i, int j) {
    const double rho2 = (i * i + j * j) / 16.0;
    double series = 0.0;
    for (int n = 0; n <= 10; ++n) {
        const double c = 2.0 * n + 1.0;
        series += (n % 2 == 0 ? c : -c) / std::pow(c * c + rho2, 1.5);
    }
    return series / (16.0 * 3.141592653589793);
}

// What the discrete kernel within its disc makes of a wave cos(k x + phase) at x = 0, phase = 0; kd = k d along x, ld =
// l d along y.
double DiscreteResponse(double kd, double ld) {
    double sum = 0.0;
    for (int i = -20; i <= 20; ++i) {
        for (int j = -20; j <= 20; ++j) {
            if (i * i + j * j <= 400) {
                sum += Weight(i, j) * std::cos(0.25 * (kd * i + ld * j));
            }
        }
    }
    return sum;
}

// The filter adds 1257 terms in single precision. Rounded to nearest the errors add up like a random walk of 1257 steps
// of at most 6e-8, half a unit in the last place of a sum near 1: 2e-6; five times that is allowed, for uplifts up to 1
// m. A sample that is left out or counted twice shows as 2.4e-5 m at least, the smallest weight of the disc.
constexpr double kSumTolerance = 1e-5;

std::string At(const std::string& name, double value) {
    return name + " " + std::to_string(value);
}

}  // namespace

TEST_CASE("a uniform uplift comes out as the sum of the discrete kernel which is 1.0229") {
    const double kernelSum = DiscreteResponse(0.0, 0.0);
    MESSAGE("sum of the discrete kernel: ", kernelSum);
    CHECK(std::abs(kernelSum - 1.0229) < 0.5e-4);  // half a unit of the last digit printed
    LargestError error;
    for (const double depth : {10.5, 200.0, 1234.5, 4000.0, 9000.0}) {
        // Five cells a depth, one cell a depth, one cell in ten depths.
        for (const double depthsPerCell : {0.2, 1.0, 10.0}) {
            const int margin = static_cast<int>(std::ceil(5.0 / depthsPerCell)) + 1;
            const Grid grid = {2 * margin + 1, 2 * margin + 1, 137.5, -2e5, static_cast<float>(depth * depthsPerCell)};
            // Sea at the middle only: the other points keep their value.
            const double x = grid.X(margin);
            const double y = grid.Y(margin);
            const std::vector<float> filtered = Filtered(
                grid, [](double, double) { return 1.0; },
                [&](double px, double py) { return px == x && py == y ? -depth : 0.0; });
            const auto middle = static_cast<std::size_t>(margin * grid.ny + margin);
            error.Add(static_cast<double>(filtered[middle]) - kernelSum, At("depth", depth));
        }
    }
    error.Report("uniform uplift of 1 m against the kernel's sum, m", kSumTolerance);
}

struct WaveLength {
    double kh;           ///< wave number times depth
    double theoryBound;  ///< of the difference from 1 / cosh(kh)
};
// The kernel is cut after 11 terms of the series and at 5 depths, and summed on a lattice. That leaves it 2.3 percent
// too large for long waves, and ripples of a few 1e-4 for short ones; the bounds are the discrete kernel's own
// differences from theory, computed in double and rounded up.
const WaveLength kWaveLengths[] = {
    {0.1, 0.0224}, {0.25, 0.0193}, {0.5, 0.0104},  {0.75, 0.0015}, {1.0, 0.0034},
    {1.5, 0.0008}, {2.0, 0.0006},  {3.0, 0.00091}, {4.0, 0.0003},  {6.0, 0.0004},
};

TEST_CASE("a wave of one length is damped as the discrete kernel says and nearly by 1 over cosh kh") {
    // Nodes where the lattice has its samples, a quarter of the depth apart: nothing is interpolated. Sea in the
    // middle.
    const double depth = 400.0;
    const Grid grid = {47, 47, -2300.0, -2300.0, 100.0F};
    const auto sea = [depth](double x, double y) {
        return std::abs(x) <= 200.0 && std::abs(y) <= 200.0 ? -depth : 0.0;
    };
    LargestError againstKernel;
    LargestError againstTheory;
    for (const WaveLength& row : kWaveLengths) {
        for (const double angle : {0.0, 0.3, 0.7853981633974483}) {
            const double k = row.kh * std::cos(angle) / depth;
            const double l = row.kh * std::sin(angle) / depth;
            const auto wave = [k, l](double x, double y) { return std::cos(k * x + l * y + 0.4); };
            const std::vector<float> filtered = Filtered(grid, wave, sea);
            const double response = DiscreteResponse(k * depth, l * depth);
            LargestError ofThisWave;
            for (int ix = 21; ix <= 25; ++ix) {
                for (int iy = 21; iy <= 25; ++iy) {
                    const auto result = static_cast<double>(filtered[static_cast<std::size_t>(ix * grid.ny + iy)]);
                    const double shape = wave(grid.X(ix), grid.Y(iy));
                    againstKernel.Add(result - response * shape, At("kh", row.kh));
                    againstTheory.Add(result - shape / std::cosh(row.kh), At("kh", row.kh));
                    ofThisWave.Add(result - shape / std::cosh(row.kh), "");
                }
            }
            CAPTURE(row.kh);
            CAPTURE(angle);
            CHECK(ofThisWave.Value() < row.theoryBound);
        }
    }
    againstKernel.Report("wave of 1 m against the discrete kernel's response, m", kSumTolerance);
    againstTheory.Report("wave of 1 m against 1 / cosh(kh), m", 0.0224);
}

namespace {

// A child of 17 by 13 points, 100 m apart, with sea of 300 to 900 m: discs reach up to 4500 m, far beyond the child.
constexpr Grid kChild = {17, 13, -800.0, 1000.0, 100.0F};
constexpr int kMargin = 47;  // cells of 100 m around the child that enclose every disc
constexpr Grid kWhole = {17 + 2 * kMargin, 13 + 2 * kMargin, -800.0 - 100.0 * kMargin, 1000.0 - 100.0 * kMargin,
                         100.0F};

bool InChild(double x, double y) {
    return x >= kChild.orgX && x <= kChild.X(kChild.nx - 1) && y >= kChild.orgY && y <= kChild.Y(kChild.ny - 1);
}

// Topography of the child's area; land elsewhere, so that only the child's points are filtered in the whole grid.
double ChildSea(double x, double y) {
    return InChild(x, y) ? -600.0 + 0.1 * x + 200.0 * std::sin(0.01 * y) * std::cos(0.004 * x) : 0.0;
}

std::vector<float> ChildPart(const std::vector<float>& whole) {
    std::vector<float> part;
    for (int ix = 0; ix < kChild.nx; ++ix) {
        for (int iy = 0; iy < kChild.ny; ++iy) {
            part.push_back(whole[static_cast<std::size_t>((ix + kMargin) * kWhole.ny + iy + kMargin)]);
        }
    }
    return part;
}

}  // namespace

TEST_CASE("a child within a parent of its own spacing gives the bits of one grid over both") {
    // Any uplift: both find the same four nodes, the child at other indices.
    std::mt19937 random(20110311);
    std::uniform_real_distribution<double> metres(-1.0, 1.0);
    std::vector<double> values;
    for (std::size_t at = 0; at < kWhole.Size(); ++at) {
        values.push_back(metres(random));
    }
    const auto uplift = [&values](double x, double y) {
        const auto ix = static_cast<std::size_t>(std::lround((x - kWhole.orgX) / 100.0));
        const auto iy = static_cast<std::size_t>(std::lround((y - kWhole.orgY) / 100.0));
        return values[ix * static_cast<std::size_t>(kWhole.ny) + iy];
    };
    const std::vector<float> whole = ChildPart(Filtered(kWhole, uplift, ChildSea));
    const std::vector<float> nested = Filtered(kChild, uplift, ChildSea, &kWhole, uplift);
    LargestError error;
    for (std::size_t at = 0; at < nested.size(); ++at) {
        error.Add(static_cast<double>(nested[at]) - static_cast<double>(whole[at]), std::to_string(at));
    }
    error.Report("child in a parent of its own spacing against one grid, m", 0.0);
}

TEST_CASE("a child within a coarser parent gives what one fine grid gives when nothing is lost between the nodes") {
    // Bilinear interpolation loses nothing of a bilinear uplift, whatever the spacing: what is left is rounding.
    const auto bilinear = [](double x, double y) { return 0.3 + 5e-5 * x - 3e-5 * y + 4e-9 * x * y; };
    const std::vector<float> whole = ChildPart(Filtered(kWhole, bilinear, ChildSea));
    LargestError error;
    for (const int coarser : {2, 3, 5}) {
        // Encloses the discs; its nodes need not meet the child's.
        const float dx = 100.0F * static_cast<float>(coarser);
        const int nodes = (kWhole.nx + coarser - 1) / coarser + 4;
        const Grid parent = {nodes, nodes, kWhole.orgX - 137.5, kWhole.orgY - 87.5, dx};
        const std::vector<float> nested = Filtered(kChild, bilinear, ChildSea, &parent, bilinear);
        for (std::size_t at = 0; at < nested.size(); ++at) {
            error.Add(static_cast<double>(nested[at]) - static_cast<double>(whole[at]), At("ratio", coarser));
        }
    }
    error.Report("child in a parent 2, 3 and 5 times coarser against one fine grid, m", kSumTolerance);
}

TEST_CASE("a child within a parent three times coarser comes near one fine grid for a smooth uplift") {
    // A wave of 6 km under a spacing of 300 m: linear interpolation loses at most (k dx)^2 / 8 of it along each axis.
    const double k = 2.0 * 3.141592653589793 / 6000.0;
    const auto wave = [k](double x, double y) { return std::cos(k * x + 0.3) * std::cos(k * y - 0.8); };
    const Grid parent = {40, 40, kWhole.orgX, kWhole.orgY, 300.0F};
    const std::vector<float> whole = ChildPart(Filtered(kWhole, wave, ChildSea));
    const std::vector<float> nested = Filtered(kChild, wave, ChildSea, &parent, wave);
    LargestError error;
    for (std::size_t at = 0; at < nested.size(); ++at) {
        error.Add(static_cast<double>(nested[at]) - static_cast<double>(whole[at]), std::to_string(at));
    }
    const double coarse = 2.0 * (k * 300.0) * (k * 300.0) / 8.0;
    error.Report("child in a parent 3 times coarser, wave of 6 km, against one fine grid, m", coarse);
}
