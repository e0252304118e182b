#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "deform/ColumnPasses.h"
#include "okada/DC3D.h"
#include "okada/batch/SurfaceBatch.h"
#include "parity/EveryInstructionSet.h"
#include "simd/Dispatch.h"

// Every product and every sum of the kernels is rounded, unless they say otherwise. A compiler that fuses or regroups
// them changes what is computed here: each test makes sure that it would. What is expected comes from arithmetic that
// no compiler may touch, for every step goes through a volatile variable.

namespace {

template <typename Number>
Number Rounded(Number value) {
    const volatile Number rounded = value;
    return rounded;
}

/// a b + c, rounded twice or once.
struct Unfused {
    template <typename Number>
    static Number Sum(Number a, Number b, Number c) {
        return Rounded(Rounded(a * b) + c);
    }
};
struct Fused {
    template <typename Number>
    static Number Sum(Number a, Number b, Number c) {
        return std::fma(a, b, c);
    }
};

double Between(std::mt19937& random, double low, double high) {
    return low + (high - low) * static_cast<double>(random()) / 4294967295.0;
}
float SingleBetween(std::mt19937& random, double low, double high) {
    return static_cast<float>(Between(random, low, high));
}

// ---- dislocations ----

constexpr double kTwoPi = 6.283185307179586;

using Displacement = std::array<double, 3>;

struct Points {
    std::vector<float> x, y, depth;
};

struct Dip {
    double sine, cosine;
    explicit Dip(float degrees) {
        const double radians = static_cast<double>(degrees) * 0.017453292519943295;
        sine = std::sin(radians);
        cosine = std::cos(radians);
    }
};

/// dc3d_ in a medium with alpha = 1, where Okada (1992), Table 6, part B, has no surface terms left: for unit slip and
/// times 2 pi
///     strike  -xi q Y11 - Theta,  -q / R,              q^2 Y11
///     dip     -q / R,             -eta q X11 - Theta,  q^2 X11
template <typename Arithmetic>
Displacement WithoutSurfaceTerms(const tidora::RectangleSource& s, float atX, float atY, float depth) {
    const Dip dip(s.dip);
    const auto y = static_cast<double>(atY), d = static_cast<double>(depth);
    const auto strike = static_cast<double>(s.strikeSlip), slip = static_cast<double>(s.dipSlip);
    const double p = Arithmetic::Sum(y, dip.cosine, Rounded(d * dip.sine));
    const double q = Arithmetic::Sum(y, dip.sine, -Rounded(d * dip.cosine));
    const double xi[] = {static_cast<double>(Rounded(atX - s.al1)), static_cast<double>(Rounded(atX - s.al2))};
    const double eta[] = {Rounded(p - static_cast<double>(s.aw1)), Rounded(p - static_cast<double>(s.aw2))};
    Displacement u = {};
    for (std::size_t k = 0; k < 2; ++k) {
        for (std::size_t j = 0; j < 2; ++j) {
            const double R = std::sqrt(Arithmetic::Sum(q, q, Arithmetic::Sum(eta[k], eta[k], Rounded(xi[j] * xi[j]))));
            const double theta = std::atan(xi[j] * eta[k] / (q * R));
            const double x11 = 1.0 / (R * Rounded(R + xi[j])), y11 = 1.0 / (R * Rounded(R + eta[k]));
            const double sign = (j == k ? 1.0 : -1.0) / kTwoPi;
            const double f1 = strike * (-xi[j] * q * y11 - theta) + slip * (-q / R);
            const double f2 = strike * (-q / R) + slip * (-eta[k] * q * x11 - theta);
            const double f3 = strike * q * q * y11 + slip * q * q * x11;
            u[0] += sign * f1;
            u[1] += sign * (f2 * dip.cosine - f3 * dip.sine);
            u[2] += sign * (f2 * dip.sine + f3 * dip.cosine);
        }
    }
    return u;
}

/// Points some metres off the upper edge's extension down dip, a thousand kilometres from its end: R + eta is a few
/// 1e-6 m, of which the rounding of R is a part in ten thousand. (Along strike it is no use: xi is single, and its
/// square exact.)
Points BesideExtension(const tidora::RectangleSource& s, std::mt19937& random) {
    const Dip dip(s.dip);
    Points points;
    for (int n = 0; n < 2000; ++n) {
        const double p = -Between(random, 5e5, 1e6), q = Between(random, 1.0, 2.0);
        points.x.push_back(SingleBetween(random, 2.0, 4.0));
        points.y.push_back(static_cast<float>(p * dip.cosine + q * dip.sine));
        points.depth.push_back(static_cast<float>(p * dip.sine - q * dip.cosine));
    }
    return points;
}

/// Displacements of unit slip there are of the size 0.1, and a float of that size is exact to 4e-9.
constexpr double kFewRoundings = 2e-8;

double Difference(const Displacement& a, const Displacement& b) {
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

Displacement Widened(float ux, float uy, float uz) {
    return {static_cast<double>(ux), static_cast<double>(uy), static_cast<double>(uz)};
}

/// A rectangle that dips so that such points lie below the surface.
tidora::RectangleSource RectangleOf(float dip) {
    tidora::RectangleSource s;
    s.alpha = 1.0F;
    s.dip = dip;
    s.al2 = 1e4F;
    s.aw1 = -5000.0F;
    s.strikeSlip = 1.0F;
    s.dipSlip = -0.5F;
    return s;
}

}  // namespace

TEST_CASE("near the extension of an edge, a finite source has the digits of arithmetic that is not fused") {
    for (const float dip : {-70.0F, -20.0F}) {
        CAPTURE(dip);
        const tidora::RectangleSource s = RectangleOf(dip);
        std::mt19937 random(1992);
        const Points points = BesideExtension(s, random);
        const std::size_t count = points.x.size();
        std::vector<Displacement> expected;
        int fusedShows = 0;
        for (std::size_t i = 0; i < count; ++i) {
            REQUIRE(points.depth[i] > 0.0F);
            expected.push_back(WithoutSurfaceTerms<Unfused>(s, points.x[i], points.y[i], points.depth[i]));
            const Displacement fused = WithoutSurfaceTerms<Fused>(s, points.x[i], points.y[i], points.depth[i]);
            fusedShows += Difference(expected[i], fused) > 10.0 * kFewRoundings ? 1 : 0;
        }
        CHECK(fusedShows > 50);

        double worst = 0.0;
        const float zero = 0.0F;
        for (std::size_t i = 0; i < count; ++i) {
            float u[3], g[9];
            int status = 0;
            dc3d_(&s.alpha, &points.x[i], &points.y[i], &zero, &points.depth[i], &s.dip, &s.al1, &s.al2, &s.aw1, &s.aw2,
                  &s.strikeSlip, &s.dipSlip, &zero, u, u + 1, u + 2, g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7,
                  g + 8, &status);
            worst = std::max(worst, Difference(Widened(u[0], u[1], u[2]), expected[i]));
        }
        CHECK(worst <= kFewRoundings);

        ForEachInstructionSet([&] {
            std::vector<float> ux(count), uy(count), uz(count), uzAlone(count);
            const tidora::SurfacePoints in = {count, points.x.data(), points.y.data(), points.depth.data()};
            tidora::FiniteSurfaceBatch(s, in, {ux.data(), uy.data(), uz.data()});
            tidora::FiniteSurfaceBatch(s, in, {nullptr, nullptr, uzAlone.data()});
            double largest = 0.0;
            for (std::size_t i = 0; i < count; ++i) {
                largest = std::max(largest, Difference(Widened(ux[i], uy[i], uz[i]), expected[i]));
                largest = std::max(largest, Difference(Widened(ux[i], uy[i], uzAlone[i]), expected[i]));
            }
            CHECK(largest <= kFewRoundings);
        });
    }
}

TEST_CASE("on its own plane, a point source has the rounding of arithmetic that is not fused") {
    // With alpha = 1 and strike-slip only, Table 2 leaves uz = -3 d x q / (2 pi R^5). At y = d and a dip of 45 degrees
    // q = y sin - d cos is the rounding of two products and nothing else.
    tidora::PointShearSource s;
    s.alpha = 1.0F;
    s.dip = 45.0F;
    s.strikePotency = 1e20F;
    const Dip dip(s.dip);
    std::mt19937 random(45);
    Points points;
    std::vector<double> expected;
    int fusedShows = 0;
    for (int n = 0; n < 500; ++n) {
        const float d = SingleBetween(random, 300.0, 900.0);
        points.x.push_back(500.0F);
        points.y.push_back(d);
        points.depth.push_back(d);
        const auto wide = static_cast<double>(d);
        const double R = std::sqrt(500.0 * 500.0 + wide * wide + wide * wide);
        const double factor = -3.0 * wide * 500.0 * 1e20 / (kTwoPi * std::pow(R, 5.0));
        const double q = Unfused::Sum(wide, dip.sine, -Rounded(wide * dip.cosine));
        expected.push_back(factor * q);
        fusedShows += std::abs(q - Fused::Sum(wide, dip.sine, -Rounded(wide * dip.cosine))) > 1e-15 ? 1 : 0;
    }
    CHECK(fusedShows > 100);
    const auto matches = [&](std::size_t i, float uz) {
        return std::abs(static_cast<double>(uz) - expected[i]) <= 1e-6 * std::abs(expected[i]);
    };
    const std::size_t count = points.x.size();
    const float zero = 0.0F;
    int scalarDifferences = 0;
    for (std::size_t i = 0; i < count; ++i) {
        float u[3], g[9];
        int status = 0;
        dc3d0_(&s.alpha, &points.x[i], &points.y[i], &zero, &points.depth[i], &s.dip, &s.strikePotency, &zero, &zero,
               &zero, u, u + 1, u + 2, g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
        scalarDifferences += matches(i, u[2]) ? 0 : 1;
    }
    CHECK(scalarDifferences == 0);
    ForEachInstructionSet([&] {
        std::vector<float> ux(count), uy(count), uz(count), uzAlone(count);
        const tidora::SurfacePoints in = {count, points.x.data(), points.y.data(), points.depth.data()};
        tidora::PointSurfaceBatch(s, in, {ux.data(), uy.data(), uz.data()});
        tidora::PointSurfaceBatch(s, in, {nullptr, nullptr, uzAlone.data()});
        int differences = 0;
        for (std::size_t i = 0; i < count; ++i) {
            differences += matches(i, uz[i]) && matches(i, uzAlone[i]) ? 0 : 1;
        }
        CHECK(differences == 0);
    });
}

// ---- the passes over a column ----

TEST_CASE("points are placed in the frame of an element with the bits of arithmetic that is not fused") {
    constexpr std::size_t kCount = 1000;
    std::mt19937 random(7);
    std::vector<double> x, y;
    for (std::size_t i = 0; i < kCount; ++i) {
        x.push_back(Between(random, -1e5, 1e5));
        y.push_back(Between(random, -1e5, 1e5));
    }
    const tidora::ElementFrame frame = {123.456, -789.01, 0.6F, 0.8F, 1.5e4, 7e3};
    ForEachInstructionSet([&] {
        std::vector<float> values[5];
        for (std::vector<float>& column : values) {
            column.resize(kCount);
        }
        tidora::DispatchedKernels<tidora::ColumnPassesOf>().place(
            frame, x.data(), y.data(), kCount, 1e9F,
            {values[0].data(), values[1].data(), values[2].data(), values[3].data(), values[4].data()});
        int differences = 0, fusedShows = 0;
        for (std::size_t i = 0; i < kCount; ++i) {
            const float east = Rounded(static_cast<float>(x[i] - frame.originX));
            const float north = Rounded(static_cast<float>(y[i] - frame.originY));
            const float px = Unfused::Sum(frame.cosine, east, -Rounded(frame.sine * north));
            const float py = Unfused::Sum(frame.sine, east, Rounded(frame.cosine * north));
            const auto centroidX = Rounded(static_cast<float>(static_cast<double>(px) - frame.halfLength));
            const auto centroidY = Rounded(static_cast<float>(static_cast<double>(py) + frame.halfWidth));
            const float square = Unfused::Sum(centroidX, centroidX, Rounded(centroidY * centroidY));
            differences += values[0][i] == px && values[1][i] == py && values[2][i] == centroidX &&
                                   values[3][i] == centroidY && values[4][i] == square
                               ? 0
                               : 1;
            fusedShows += px != Fused::Sum(frame.cosine, east, -Rounded(frame.sine * north)) ? 1 : 0;
        }
        CHECK(differences == 0);
        CHECK(fusedShows > 100);
    });
}

TEST_CASE("slopes lift and shares add with the bits of arithmetic that is not fused") {
    constexpr std::size_t kCount = 1000;
    std::mt19937 random(8);
    std::vector<float> here, before, after, ux, uy;
    for (std::size_t i = 0; i < kCount; ++i) {
        for (std::vector<float>* const topography : {&here, &before, &after}) {
            topography->push_back(SingleBetween(random, -6000.0, -100.0));
        }
        ux.push_back(SingleBetween(random, -3.0, 3.0));
        uy.push_back(SingleBetween(random, -3.0, 3.0));
    }
    tidora::SlopedColumn column = {};
    column.here = here.data();
    column.before = before.data();
    column.after = after.data();
    column.acrossSpacing = 900.0F;
    column.rowCount = static_cast<int>(kCount);
    column.dx = 450.0F;
    column.shallowest = -10.0F;
    column.sine = 0.6F;
    column.cosine = 0.8F;
    const float share = 0.3F;
    ForEachInstructionSet([&] {
        const tidora::ColumnPasses& passes = tidora::DispatchedKernels<tidora::ColumnPassesOf>();
        std::vector<float> uplift(kCount), sum = ux;
        passes.upliftBySlope(column, ux.data(), uy.data(), kCount, uplift.data());
        passes.add(share, uplift.data(), kCount, sum.data());
        int differences = 0, fusedShows = 0;
        for (std::size_t i = 1; i + 1 < kCount; ++i) {
            const float slopeX = Rounded(-Rounded(after[i] - before[i]) / 900.0F);
            const float slopeY = Rounded(-Rounded(here[i + 1] - here[i - 1]) / 900.0F);
            const float east = Unfused::Sum(0.8F, ux[i], Rounded(0.6F * uy[i]));
            const float north = Unfused::Sum(-0.6F, ux[i], Rounded(0.8F * uy[i]));
            const float expected = Unfused::Sum(east, slopeX, Rounded(north * slopeY));
            differences += uplift[i] == expected && sum[i] == Unfused::Sum(share, expected, ux[i]) ? 0 : 1;
            fusedShows += expected != Fused::Sum(east, slopeX, Rounded(north * slopeY)) ? 1 : 0;
        }
        CHECK(differences == 0);
        CHECK(fusedShows > 100);
    });
}
