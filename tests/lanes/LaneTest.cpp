#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "lanes/LaneFunctions.h"
#include "parity/EveryInstructionSet.h"
#include "simd/Dispatch.h"

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

const LaneFunctions& Functions() {
    return tidora::DispatchedKernels<LaneFunctionsOf>();
}

/// Same bits, or both not a number: which of two such values an operation hands on is the processor's affair.
bool IsSame(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

/// Five arrays in which every value meets every other one: zeros of both signs, the ends of the range, numbers that are
/// none, and numbers whose products and sums must be rounded. A multiple of 16.
struct Operands {
    std::vector<double> a, b, c, d, e;

    Operands() {
        std::mt19937_64 random(1992);
        const double special[] = {0.0,         -0.0,   1.0,    -1.0,    0x1p-1074, 0x1.fffffffffffffp+1023,
                                  0x1p-1022,   0.1,    -1.0e9, 1.0 / 3, kInfinite, -kInfinite,
                                  kNotANumber, 2.5e-5, -7.0,   1e300};
        for (const double x : special) {
            for (const double y : special) {
                a.push_back(x);
                b.push_back(y);
                c.push_back(special[random() % 16]);
                d.push_back(special[random() % 16]);
                e.push_back(std::uniform_real_distribution<double>(-2.0, 2.0)(random));
            }
        }
        for (std::vector<double>* values : {&a, &b, &c, &d, &e}) {
            for (int i = 0; i < 4096; ++i) {
                values->push_back(std::uniform_real_distribution<double>(-2.0, 2.0)(random));
            }
        }
    }
    [[nodiscard]] std::size_t Count() const { return a.size(); }
};

/// The number of values in which a function of arrays differs from the plain loop.
template <typename Plain>
std::size_t Differences(const std::vector<double>& values, Plain plain) {
    std::size_t differences = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        differences += IsSame(values[i], plain(i)) ? 0 : 1;
    }
    return differences;
}

/// The same for masks: one word per step of `lanes` lanes, the first lane lowest.
template <typename Plain>
std::size_t Differences(const std::vector<unsigned>& bits, std::size_t lanes, Plain plain) {
    std::size_t differences = 0;
    for (std::size_t step = 0; step < bits.size(); ++step) {
        unsigned expected = 0;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            expected |= plain(step * lanes + lane) ? 1U << lane : 0U;
        }
        differences += bits[step] == expected ? 0 : 1;
    }
    return differences;
}

}  // namespace

TEST_CASE("sums, products, quotients and roots of lanes are rounded like those of single numbers") {
    const Operands in;
    const std::vector<double>&a = in.a, &b = in.b, &c = in.c;
    std::vector<double> y(in.Count());
    ForEachInstructionSet([&] {
        const LaneFunctions& f = Functions();
        const auto binary = [&](LaneFunctions::Binary function) -> const std::vector<double>& {
            function(a.data(), b.data(), in.Count(), y.data());
            return y;
        };
        CHECK(Differences(binary(f.add), [&](std::size_t i) { return a[i] + b[i]; }) == 0);
        CHECK(Differences(binary(f.subtract), [&](std::size_t i) { return a[i] - b[i]; }) == 0);
        CHECK(Differences(binary(f.multiply), [&](std::size_t i) { return a[i] * b[i]; }) == 0);
        CHECK(Differences(binary(f.divide), [&](std::size_t i) { return a[i] / b[i]; }) == 0);
        f.sqrt(a.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return std::sqrt(a[i]); }) == 0);
        f.negative(a.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return -a[i]; }) == 0);

        // A product on its own, as the lane types without fused operations have it: no compiler may fuse it.
        const bool isFused = tidora::CurrentInstructionSet() != tidora::InstructionSet::Baseline;
        const auto product = [&](std::size_t i) {
            const volatile double rounded = a[i] * b[i];
            return rounded;
        };
        f.fma(a.data(), b.data(), c.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return isFused ? std::fma(a[i], b[i], c[i]) : product(i) + c[i]; }) ==
              0);
        f.fnma(a.data(), b.data(), c.data(), in.Count(), y.data());
        CHECK(Differences(
                  y, [&](std::size_t i) { return isFused ? std::fma(-a[i], b[i], c[i]) : c[i] - product(i); }) == 0);
    });
}

TEST_CASE("the smaller and the larger of two lanes are the second where either is not a number") {
    const Operands in;
    const std::vector<double>&a = in.a, &b = in.b;
    std::vector<double> y(in.Count());
    ForEachInstructionSet([&] {
        Functions().min(a.data(), b.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return a[i] < b[i] ? a[i] : b[i]; }) == 0);
        Functions().max(a.data(), b.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return a[i] > b[i] ? a[i] : b[i]; }) == 0);
    });
}

TEST_CASE("signs and bits of lanes are those of single numbers, also of zeros and of what is not a number") {
    const Operands in;
    std::vector<double> y(in.Count());
    const auto bitsOf = [](double value) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    };
    ForEachInstructionSet([&] {
        const LaneFunctions& f = Functions();
        std::size_t differences = 0;
        f.abs(in.a.data(), in.Count(), y.data());
        for (std::size_t i = 0; i < in.Count(); ++i) {
            differences += bitsOf(y[i]) == bitsOf(std::abs(in.a[i])) ? 0 : 1;
        }
        f.copySign(in.a.data(), in.b.data(), in.Count(), y.data());
        for (std::size_t i = 0; i < in.Count(); ++i) {
            differences += bitsOf(y[i]) == bitsOf(std::copysign(in.a[i], in.b[i])) ? 0 : 1;
        }
        const std::uint64_t flipped = 0x8000000000ff0001;
        f.bits(in.a.data(), flipped, in.Count(), y.data());
        for (std::size_t i = 0; i < in.Count(); ++i) {
            differences += bitsOf(y[i]) == (bitsOf(in.a[i]) ^ flipped) ? 0 : 1;
        }
        CHECK(differences == 0);
        f.all(in.a.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return in.a[i / f.doubles * f.doubles]; }) == 0);
    });
}

TEST_CASE("masks hold one bit per lane, the first one lowest, and none where a number is compared with none") {
    const Operands in;
    const std::vector<double>&a = in.a, &b = in.b, &c = in.c, &d = in.d;
    ForEachInstructionSet([&] {
        const LaneFunctions& f = Functions();
        std::vector<unsigned> bits(in.Count() / f.doubles);
        f.less(a.data(), b.data(), in.Count(), bits.data());
        CHECK(Differences(bits, f.doubles, [&](std::size_t i) { return a[i] < b[i]; }) == 0);
        f.atLeast(a.data(), b.data(), in.Count(), bits.data());
        CHECK(Differences(bits, f.doubles, [&](std::size_t i) { return a[i] >= b[i]; }) == 0);
        const auto combined = [&](LaneFunctions::MaskOperation operation) -> const std::vector<unsigned>& {
            operation(a.data(), b.data(), c.data(), d.data(), in.Count(), bits.data());
            return bits;
        };
        CHECK(Differences(combined(f.both), f.doubles, [&](std::size_t i) { return a[i] < b[i] && c[i] < d[i]; }) == 0);
        CHECK(Differences(combined(f.either), f.doubles, [&](std::size_t i) { return a[i] < b[i] || c[i] < d[i]; }) ==
              0);
        CHECK(Differences(combined(f.firstOnly), f.doubles,
                          [&](std::size_t i) { return a[i] < b[i] && !(c[i] < d[i]); }) == 0);

        std::vector<double> y(in.Count());
        f.select(a.data(), b.data(), c.data(), in.e.data(), in.Count(), y.data());
        CHECK(Differences(y, [&](std::size_t i) { return a[i] < b[i] ? c[i] : in.e[i]; }) == 0);
    });
}

TEST_CASE("lanes of single precision are widened, subtracted and rounded as single numbers are") {
    std::mt19937_64 random(20110311);
    std::vector<float> from = {0.0F, -0.0F, 1e-45F, 3.4e38F, -3.4e38F, 0.1F, 1e9F, -7.5F};
    std::vector<double> wide = {0x1.fffffffp+127, -0x1p-151, 0x1.000001p0, 0x1.000003p0, kInfinite, -0.0, 1e-40, 0.1};
    while (from.size() < 4096) {
        from.push_back(std::uniform_real_distribution<float>(-3e5F, 3e5F)(random));
        wide.push_back(std::uniform_real_distribution<double>(-3e5, 3e5)(random));
    }
    std::vector<double> y(from.size());
    std::vector<float> rounded(from.size());
    // From the second value on too: no function asks for aligned addresses.
    for (const std::size_t offset : {std::size_t{0}, std::size_t{1}}) {
        const std::size_t count = from.size() - 16 * offset;
        ForEachInstructionSet([&] {
            const LaneFunctions& f = Functions();
            f.loadWidened(from.data() + offset, count, y.data());
            CHECK(std::equal(y.begin(), y.begin() + static_cast<std::ptrdiff_t>(count),
                             from.begin() + static_cast<std::ptrdiff_t>(offset),
                             [](double a, float b) { return IsSame(a, static_cast<double>(b)); }));
            const float minus = 12345.678F;
            f.loadDifference(from.data() + offset, minus, count, y.data());
            std::size_t differences = 0, inexact = 0;
            for (std::size_t i = 0; i < count; ++i) {
                const volatile float difference = from[i + offset] - minus;
                differences += IsSame(y[i], static_cast<double>(difference)) ? 0 : 1;
                inexact += y[i] != static_cast<double>(from[i + offset]) - static_cast<double>(minus) ? 1 : 0;
            }
            CHECK(differences == 0);
            CHECK(inexact > 100);  // or the rounding of the difference would go unseen
            f.storeRounded(wide.data() + offset, count, rounded.data() + offset);
            differences = 0;
            for (std::size_t i = offset; i < offset + count; ++i) {
                differences +=
                    IsSame(static_cast<double>(rounded[i]), static_cast<double>(static_cast<float>(wide[i]))) ? 0 : 1;
            }
            CHECK(differences == 0);
        });
    }
}
