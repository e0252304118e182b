#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "okada/DC3D.h"
#include "okada/batch/SurfaceBatch.h"
#include "parity/EveryInstructionSet.h"

namespace {

using tidora::PointShearSource;
using tidora::RectangleSource;

/// Points and three components of displacement. `offset` values in front keep the arrays off every alignment.
struct Points {
    std::size_t offset = 0, count = 0;
    std::vector<float> x, y, depth, ux, uy, uz;

    Points(std::size_t off, std::size_t n) : offset(off), count(n) {
        for (std::vector<float>* values : {&x, &y, &depth, &ux, &uy, &uz}) {
            values->assign(off + n + 1, kUntouched);
        }
    }
    [[nodiscard]] tidora::SurfacePoints In() const {
        return {count, x.data() + offset, y.data() + offset, depth.data() + offset};
    }
    [[nodiscard]] tidora::SurfaceDisplacements Out(bool withHorizontal) {
        return {withHorizontal ? ux.data() + offset : nullptr, withHorizontal ? uy.data() + offset : nullptr,
                uz.data() + offset};
    }
    static constexpr float kUntouched = 12345.0F;
};

/// dc3d_ and dc3d0_ point by point.
void RunScalar(const RectangleSource& s, Points& p) {
    const float zero = 0.0F;
    float g[9];
    int status = 0;
    for (std::size_t i = p.offset; i < p.offset + p.count; ++i) {
        dc3d_(&s.alpha, &p.x[i], &p.y[i], &zero, &p.depth[i], &s.dip, &s.al1, &s.al2, &s.aw1, &s.aw2, &s.strikeSlip,
              &s.dipSlip, &zero, &p.ux[i], &p.uy[i], &p.uz[i], g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7,
              g + 8, &status);
    }
}
void RunScalar(const PointShearSource& s, Points& p) {
    const float zero = 0.0F;
    float g[9];
    int status = 0;
    for (std::size_t i = p.offset; i < p.offset + p.count; ++i) {
        dc3d0_(&s.alpha, &p.x[i], &p.y[i], &zero, &p.depth[i], &s.dip, &s.strikePotency, &s.dipPotency, &zero, &zero,
               &p.ux[i], &p.uy[i], &p.uz[i], g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &status);
    }
}

std::int64_t Ordered(float value) {
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits < 0 ? -std::int64_t{bits & 0x7fffffff} : std::int64_t{bits};
}

/// Largest difference in units in the last place among the values that count; what is not a number in one must not be
/// one in the other.
std::int64_t LargestUlp(const std::vector<float>& batch, const std::vector<float>& scalar, float smallest) {
    std::int64_t largest = 0;
    for (std::size_t i = 0; i < scalar.size(); ++i) {
        REQUIRE(std::isnan(batch[i]) == std::isnan(scalar[i]));
        if (std::abs(scalar[i]) >= smallest) {
            largest = std::max(largest, std::abs(Ordered(batch[i]) - Ordered(scalar[i])));
        }
    }
    return largest;
}

float LargestSize(const Points& p) {
    float largest = 0.0F;
    for (const std::vector<float>* values : {&p.ux, &p.uy, &p.uz}) {
        for (std::size_t i = p.offset; i < p.offset + p.count; ++i) {
            largest = std::max(largest, std::abs((*values)[i]));
        }
    }
    return largest;
}

/// Compares a batch with the scalar routine, with and without the horizontal components.
template <typename Source, typename Batch>
std::int64_t Compare(const Source& source, const Points& points, Batch batch) {
    Points scalar = points;
    RunScalar(source, scalar);
    Points all = points, verticalOnly = points;
    batch(source, all.In(), all.Out(true));
    batch(source, verticalOnly.In(), verticalOnly.Out(false));
    CHECK(verticalOnly.ux == points.ux);
    CHECK(all.uz.back() == Points::kUntouched);
    const float smallest = 1e-6F * LargestSize(scalar);
    return std::max({LargestUlp(verticalOnly.uz, scalar.uz, smallest), LargestUlp(all.ux, scalar.ux, smallest),
                     LargestUlp(all.uy, scalar.uy, smallest), LargestUlp(all.uz, scalar.uz, smallest)});
}

const float kDips[] = {90.0F, -90.0F, 89.99999F, 89.9999F, 89.9F, 85.0F, 45.0F, 8.0F, 0.0F, 135.0F, -30.0F, 180.0F};

/// Points around a source 1e3 to 1e6.5 m wide, many of them over its edges, corners and extensions, some at the
/// surface.
Points RandomPoints(std::mt19937& random, float al2) {
    const auto between = [&random](double low, double high) {
        return static_cast<float>(std::uniform_real_distribution<double>(low, high)(random));
    };
    Points points(random() % 8, 400);
    const double extent = std::pow(10.0, static_cast<double>(between(3.0, 6.5)));
    for (std::size_t i = points.offset; i < points.offset + points.count; ++i) {
        points.x[i] = i % 13 == 0 ? (i % 2 == 0 ? 0.0F : al2) : between(-extent, extent);
        points.y[i] = i % 17 == 0 ? 0.0F : between(-extent, extent);
        points.depth[i] = i % 10 == 0 ? 0.0F : between(0.0, 3e4);
        if (i % 19 == 0) {
            points.y[i] = 0.0F;
            points.depth[i] = 0.0F;
        }
    }
    return points;
}

}  // namespace

TEST_CASE("a batch of finite sources differs from dc3d_ by at most one unit in the last place") {
    ForEachInstructionSet([] {
        std::mt19937 random(20240611);
        const auto between = [&random](double low, double high) {
            return static_cast<float>(std::uniform_real_distribution<double>(low, high)(random));
        };
        std::int64_t worst = 0;
        for (std::size_t trial = 0; trial < 240; ++trial) {
            CAPTURE(trial);
            RectangleSource s;
            s.alpha = trial % 3 == 0 ? 0.6F : 2.0F / 3.0F;
            s.dip = trial % 2 == 0 ? kDips[trial / 2 % std::size(kDips)] : between(0.5, 89.5);
            s.al1 = trial % 5 == 0 ? -1000.0F : 0.0F;
            s.al2 = between(1e3, 5e4);
            s.aw1 = -between(1e3, 5e4);
            s.aw2 = trial % 4 == 0 ? 500.0F : 0.0F;
            s.strikeSlip = trial % 7 == 0 ? 0.0F : between(-3.0, 3.0);
            s.dipSlip = trial % 11 == 0 ? 0.0F : between(-3.0, 3.0);
            worst = std::max(worst, Compare(s, RandomPoints(random, s.al2), tidora::FiniteSurfaceBatch));
        }
        MESSAGE("finite source: " << worst << " ulp");
        CHECK(worst <= tidora::kSurfaceBatchMaxUlp);
    });
}

TEST_CASE("a batch of point sources differs from dc3d0_ by at most one unit in the last place") {
    ForEachInstructionSet([] {
        std::mt19937 random(19601963);
        const auto between = [&random](double low, double high) {
            return static_cast<float>(std::uniform_real_distribution<double>(low, high)(random));
        };
        std::int64_t worst = 0;
        for (std::size_t trial = 0; trial < 120; ++trial) {
            CAPTURE(trial);
            PointShearSource s;
            s.dip = trial % 2 == 0 ? kDips[trial / 2 % std::size(kDips)] : between(0.5, 89.5);
            s.strikePotency = trial % 7 == 0 ? 0.0F : between(-3e9, 3e9);
            s.dipPotency = trial % 11 == 0 ? 0.0F : between(-3e9, 3e9);
            worst = std::max(worst, Compare(s, RandomPoints(random, 0.0F), tidora::PointSurfaceBatch));
        }
        MESSAGE("point source: " << worst << " ulp");
        CHECK(worst <= tidora::kSurfaceBatchMaxUlp);
    });
}

TEST_CASE("a batch of any length, aligned or not, gives each point its own value and touches nothing else") {
    ForEachInstructionSet([] {
        std::mt19937 random(7);
        RectangleSource s;
        s.dip = 20.0F;
        s.al2 = 3e4F;
        s.aw1 = -2e4F;
        s.strikeSlip = 1.0F;
        s.dipSlip = 2.0F;
        for (const std::size_t length :
             {0U, 1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 15U, 16U, 17U, 1023U, 1024U, 1025U, 3000U}) {
            for (const std::size_t offset : {0U, 1U, 3U}) {
                CAPTURE(length);
                Points points(offset, length);
                for (std::size_t i = 0; i < offset + length; ++i) {
                    points.x[i] = std::uniform_real_distribution<float>(-1e5F, 1e5F)(random);
                    points.y[i] = std::uniform_real_distribution<float>(-1e5F, 1e5F)(random);
                    points.depth[i] = 5000.0F;
                }
                CHECK(Compare(s, points, tidora::FiniteSurfaceBatch) <= tidora::kSurfaceBatchMaxUlp);
            }
        }
    });
}

TEST_CASE("singular and absurd points give what dc3d_ gives") {
    const float infinite = std::numeric_limits<float>::infinity();
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    struct Place {
        std::string why;
        float x, y, depth;
    };
    const Place places[] = {
        {"on the trace of a surface-breaking source: an edge", 5e3F, 0.0F, 0.0F},
        {"over its corner", 0.0F, 0.0F, 0.0F},
        {"on the extension of the trace", -4e3F, 0.0F, 0.0F},
        {"on the extension of the trace, far side", 3e4F, 0.0F, 0.0F},
        {"a micrometre beside the trace", 5e3F, 1e-6F, 0.0F},
        {"a millimetre beside the trace", 5e3F, 1e-3F, 0.0F},
        {"within 1e-6 of the end", 1e-7F, 4e3F, 1e3F},
        {"so far away that products overflow", 1e30F, -1e30F, 1e3F},
        {"at infinity", infinite, 0.0F, 1e3F},
        {"not a number", notANumber, 1.0F, 1e3F},
        {"a depth that is not a number", 1.0F, 1.0F, notANumber},
        {"above the surface", 2e3F, 3e3F, -1e3F},
    };
    ForEachInstructionSet([&places] {
        for (const float dip : {10.0F, 45.0F, 90.0F, -90.0F}) {
            RectangleSource s;
            s.dip = dip;
            s.al2 = 1e4F;
            s.aw1 = -5e3F;
            s.strikeSlip = 1.0F;
            s.dipSlip = 1.0F;
            for (const Place& place : places) {
                CAPTURE(place.why);
                CAPTURE(dip);
                Points points(0, 9);
                std::fill(points.x.begin(), points.x.end(), 1234.5F);
                std::fill(points.y.begin(), points.y.end(), -777.0F);
                std::fill(points.depth.begin(), points.depth.end(), 2e3F);
                points.x[4] = place.x;
                points.y[4] = place.y;
                points.depth[4] = place.depth;
                CHECK(Compare(s, points, tidora::FiniteSurfaceBatch) <= tidora::kSurfaceBatchMaxUlp);
            }
        }
    });
}
