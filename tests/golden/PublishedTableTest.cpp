#include <doctest/doctest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "golden/EntryCall.h"
#include "golden/HalfSpaceSource.h"
#include "golden/LargestError.h"
#include "golden/Volterra.h"

namespace tidora::golden {
namespace {

/// A printed number and half a unit of its last figure. A printed 0 is a zero by symmetry: no allowance.
struct Printed {
    double value = 0.0;
    double allowance = 0.0;
};

struct PublishedCase {
    std::string name;
    Vec3 at;
    float dip = 0.0F;
    std::size_t slipType = 0;
    std::array<Printed, 3> u;
};

// Okada (1985), Bull. Seism. Soc. Am. 75, 1135-1154, Table 2: depth = 4, length = 3, width = 2, unit slip, lambda = mu.
// The reference point is the corner at x = 0 from which the width counts up dip.
const Vec3 kCase2 = {2.0, 3.0, 0.0};
const Vec3 kAbove = {0.0, 0.0, 0.0};
const std::vector<PublishedCase> kTable2 = {
    {"case 2, strike", kCase2, 70.0F, 0, {{{-8.689e-3, 0.5e-6}, {-4.298e-3, 0.5e-6}, {-2.747e-3, 0.5e-6}}}},
    {"case 2, dip", kCase2, 70.0F, 1, {{{-4.682e-3, 0.5e-6}, {-3.527e-2, 0.5e-5}, {-3.564e-2, 0.5e-5}}}},
    {"case 2, tensile", kCase2, 70.0F, 2, {{{-2.660e-4, 0.5e-7}, {1.056e-2, 0.5e-5}, {3.214e-3, 0.5e-6}}}},
    {"case 3, strike", kAbove, 90.0F, 0, {{{}, {5.253e-3, 0.5e-6}, {}}}},
    {"case 3, dip", kAbove, 90.0F, 1, {}},
    {"case 3, tensile", kAbove, 90.0F, 2, {{{1.223e-2, 0.5e-5}, {}, {-1.606e-2, 0.5e-5}}}},
    {"case 4, strike", kAbove, -90.0F, 0, {{{}, {-1.303e-3, 0.5e-6}, {}}}},
    {"case 4, dip", kAbove, -90.0F, 1, {}},
    {"case 4, tensile", kAbove, -90.0F, 2, {{{3.507e-3, 0.5e-6}, {}, {-7.740e-3, 0.5e-6}}}},
};

Rectangle RectangleOf(const PublishedCase& row) {
    Rectangle source;
    source.depth = 4.0;
    source.dip = static_cast<double>(row.dip);
    source.along = {0.0, 3.0};
    source.up = {0.0, 2.0};
    source.slip[row.slipType] = 1.0;
    return source;
}

TEST_CASE("dc3d_ gives the displacements that Okada (1985) prints in Table 2, cases 2 to 4") {
    LargestError inUnits;
    for (const PublishedCase& row : kTable2) {
        CAPTURE(row.name);
        FiniteCall call;
        call.x = static_cast<float>(row.at[0]);
        call.y = static_cast<float>(row.at[1]);
        call.depth = 4.0F;
        call.dip = row.dip;
        call.al2 = 3.0F;
        call.aw2 = 2.0F;
        call.slip = {};
        call.slip[row.slipType] = 1.0F;
        const EntryResult result = Call(call);
        CHECK(result.iret == 0);
        for (std::size_t i = 0; i < 3; ++i) {
            CAPTURE(i);
            const double u = static_cast<double>(result.u[i]);
            CHECK(std::abs(u - row.u[i].value) <= row.u[i].allowance);
            if (row.u[i].allowance > 0.0) {
                inUnits.Add((u - row.u[i].value) / (2.0 * row.u[i].allowance), row.name);
            }
        }
    }
    // Half a unit of the last printed figure.
    inUnits.Report("Okada (1985), Table 2, in units of the last printed figure", 0.5);
}

TEST_CASE("quadrature of point forces confirms the cases of Okada (1985), Table 2, far beyond the printed figures") {
    LargestError error;
    for (const PublishedCase& row : kTable2) {
        const Rectangle source = RectangleOf(row);
        const Vec3 closed = SurfaceDisplacement(source, row.at);
        const Vec3 quadrature = VolterraDisplacement(source, row.at);
        for (std::size_t i = 0; i < 3; ++i) {
            error.Add(closed[i] - quadrature[i], row.name);
        }
    }
    // Absolute, for a unit slip: the quadrature's own tolerance.
    error.Report("closed form minus quadrature", 1e-13);
}

// Case 2, d u / d x and d u / d y as printed; the routines ub_ carry them although dc3d_ leaves them out.
TEST_CASE("part B carries the surface derivatives that Okada (1985) prints for case 2") {
    using Row = std::array<Printed, 6>;  // ux,x  ux,y  uy,x  uy,y  uz,x  uz,y
    const std::array<Row, 3> kDerivatives = {{
        {{{-1.220e-3, 0.5e-6},
          {2.470e-4, 0.5e-7},
          {-8.191e-3, 0.5e-6},
          {-5.814e-4, 0.5e-7},
          {-5.175e-3, 0.5e-6},
          {2.945e-4, 0.5e-7}}},
        {{{-8.867e-3, 0.5e-6},
          {-1.519e-4, 0.5e-7},
          {4.057e-3, 0.5e-6},
          {-1.035e-2, 0.5e-5},
          {4.088e-3, 0.5e-6},
          {2.626e-3, 0.5e-6}}},
        {{{-5.655e-4, 0.5e-7},
          {1.993e-3, 0.5e-6},
          {-1.066e-3, 0.5e-6},
          {1.230e-2, 0.5e-5},
          {-3.730e-4, 0.5e-7},
          {1.040e-2, 0.5e-5}}},
    }};
    LargestError inUnits;
    for (std::size_t slipType = 0; slipType < 3; ++slipType) {
        const auto motion = FullMotion(RectangleOf(kTable2[slipType]), kCase2);
        for (std::size_t i = 0; i < 6; ++i) {
            CAPTURE(slipType);
            CAPTURE(i);
            const Printed& printed = kDerivatives[slipType][i];
            const double derivative = motion.gradient[i / 2][i % 2];
            CHECK(std::abs(derivative - printed.value) <= printed.allowance);
            inUnits.Add((derivative - printed.value) / (2.0 * printed.allowance), kTable2[slipType].name);
        }
    }
    inUnits.Report("Okada (1985), Table 2, case 2, derivatives, in units of the last printed figure", 0.5);
}

}  // namespace
}  // namespace tidora::golden
