#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "lanes/LaneFunctions.h"
#include "parity/EveryInstructionSet.h"
#include "simd/Dispatch.h"

namespace {

/// As many as the widest lane type has; `count` of them are in use.
using Values = std::array<float, 16>;
using Numbers = std::array<int, 16>;

/// Runs `body` with the functions of every lane type.
template <typename Body>
void ForEachFloatLanes(Body body) {
    ForEachInstructionSet([&] {
        const FloatLaneFunctions& f = tidora::DispatchedKernels<FloatLaneFunctionsOf>();
        REQUIRE(f.floats > 0);
        REQUIRE(f.floats <= Values().size());
        body(f);
    });
}

template <typename Body>
void ForEachEightFloats(Body body) {
    ForEachInstructionSet([&] { body(tidora::DispatchedKernels<EightFloatFunctionsOf>()); });
}

Values Counted(float first) {
    Values values;
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = first + static_cast<float>(i);
    }
    return values;
}

/// The number of the first `count` values that differ from plain(i).
template <typename Array, typename Plain>
int Differences(const Array& values, std::size_t count, Plain plain) {
    int differences = 0;
    for (std::size_t i = 0; i < count; ++i) {
        differences += values[i] == plain(i) ? 0 : 1;
    }
    return differences;
}

}  // namespace

TEST_CASE("floats are loaded, stored, spread, reversed and rooted lane by lane") {
    const Values x = Counted(2.0F);
    Values y = {};
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        f.copy(x.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return x[i]; }) == 0);
        f.sqrt(x.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return std::sqrt(x[i]); }) == 0);
        f.all(x.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t) { return x[0]; }) == 0);
        f.reversed(x.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return x[f.floats - 1 - i]; }) == 0);
    });
}

TEST_CASE("pairs and halves of two vectors of floats are interleaved within each four lanes") {
    const Values a = Counted(0.0F), b = Counted(100.0F);
    Values y = {};
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        const auto group = [](std::size_t i) { return i / 4 * 4; };
        f.firstPairs(a.data(), b.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) {
                  const std::size_t from = group(i) + i % 4 / 2;
                  return i % 2 == 0 ? a[from] : b[from];
              }) == 0);
        f.lastPairs(a.data(), b.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) {
                  const std::size_t from = group(i) + 2 + i % 4 / 2;
                  return i % 2 == 0 ? a[from] : b[from];
              }) == 0);
        f.firstHalves(a.data(), b.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) {
                  const std::size_t from = group(i) + i % 2;
                  return i % 4 < 2 ? a[from] : b[from];
              }) == 0);
        f.lastHalves(a.data(), b.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) {
                  const std::size_t from = group(i) + 2 + i % 2;
                  return i % 4 < 2 ? a[from] : b[from];
              }) == 0);
    });
}

TEST_CASE("quarters of a vector of floats lie a stride apart, backwards too") {
    std::vector<float> from(200);
    for (std::size_t i = 0; i < from.size(); ++i) {
        from[i] = static_cast<float>(i);
    }
    Values y = {};
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        for (const std::ptrdiff_t stride : {4, 5, 37, -11}) {
            CAPTURE(stride);
            f.loadQuarters(from.data() + 77, stride, y.data());
            CHECK(Differences(y, f.floats, [&](std::size_t i) {
                      return static_cast<float>(77 + static_cast<std::ptrdiff_t>(i / 4) * stride +
                                                static_cast<std::ptrdiff_t>(i % 4));
                  }) == 0);
        }
    });
}

TEST_CASE("integers are loaded, widened, reduced and compared lane by lane") {
    const Numbers a = {3, -1, 2147483647, -2147483647 - 1, 0, 17, -5, 40000, 9, -32768, 12, 5, 77, -9, 1, 1000000};
    const std::array<std::int16_t, 16> narrow = {3, -1, 32767, -32768, 0, 17, -5, 4000, 9, -7, 12, 5, 77, -9, 1, 1000};
    Numbers y = {};
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        f.copyIntegers(a.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return a[i]; }) == 0);
        f.widenIntegers(narrow.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return static_cast<int>(narrow[i]); }) == 0);
        f.minus(a.data(), -2147483647, y.data());  // wraps, as the processor's integers do
        CHECK(Differences(y, f.floats, [&](std::size_t i) {
                  return static_cast<int>(static_cast<unsigned>(a[i]) - static_cast<unsigned>(-2147483647));
              }) == 0);
        f.notNegative(a.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return std::max(a[i], 0); }) == 0);
        Numbers b = a;
        std::reverse(b.begin(), b.end());
        f.bitwiseOr(a.data(), b.data(), y.data());
        CHECK(Differences(y, f.floats, [&](std::size_t i) { return a[i] | b[i]; }) == 0);
    });
}

TEST_CASE("the least of the integers is taken as unsigned, the greatest as signed, wherever they stand") {
    std::mt19937 random(5);
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        for (std::size_t at = 0; at < f.floats; ++at) {
            CAPTURE(at);
            Numbers a = {};
            for (int& value : a) {
                value = static_cast<int>(random() % 1000) + 10;
            }
            a[at] = 3;
            CHECK(f.leastOf(a.data()) == 3);
            a[at] = 5000;
            CHECK(f.greatestOf(a.data()) == 5000);
            a[at] = -1;  // no index: the greatest of the unsigned numbers
            CHECK(f.leastOf(a.data()) >= 10);
            CHECK(f.greatestOf(a.data()) < 5000);
            a.fill(-1);
            a[at] = 7;  // one index among none
            CHECK(f.leastOf(a.data()) == 7);
            CHECK(f.greatestOf(a.data()) == 7);
            a.fill(-7);
            a[at] = -8;
            CHECK(f.leastOf(a.data()) == -8);
            CHECK(f.greatestOf(a.data()) == (f.floats > 1 ? -7 : -8));
        }
    });
}

TEST_CASE("floats are gathered by any index, and picked from two vectors by the index within both") {
    std::mt19937 random(6);
    std::vector<float> from(1000);
    for (std::size_t i = 0; i < from.size(); ++i) {
        from[i] = static_cast<float>(i) * 0.5F;
    }
    const Values low = Counted(10.0F), high = Counted(200.0F);
    Values y = {};
    ForEachFloatLanes([&](const FloatLaneFunctions& f) {
        for (int trial = 0; trial < 50; ++trial) {
            Numbers index = {};
            for (int& value : index) {
                value = static_cast<int>(random() % 1000) - 500;
            }
            f.gathered(from.data() + 500, index.data(), y.data());
            CHECK(Differences(y, f.floats,
                              [&](std::size_t i) { return from[static_cast<std::size_t>(500 + index[i])]; }) == 0);
            for (int& value : index) {
                value = static_cast<int>(random() % (2 * f.floats));
            }
            f.picked(low.data(), index.data(), high.data(), y.data());
            CHECK(Differences(y, f.floats, [&](std::size_t i) {
                      const auto at = static_cast<std::size_t>(index[i]);
                      return at < f.floats ? low[at] : high[at - f.floats];
                  }) == 0);
        }
    });
}

TEST_CASE("eight floats are stored from any place on, and touch nothing in front of it") {
    const Values x = Counted(1.0F);
    ForEachEightFloats([&](const EightFloatFunctions& f) {
        for (int count = 0; count <= 8; ++count) {
            CAPTURE(count);
            Values y;
            y.fill(-3.0F);
            f.storeFrom(count, y.data(), x.data());
            CHECK(Differences(y, y.size(), [&](std::size_t i) {
                      return i < 8 && i >= static_cast<std::size_t>(count) ? x[i] : -3.0F;
                  }) == 0);
        }
        Values y;
        y.fill(-3.0F);
        f.copy(x.data(), y.data());
        CHECK(Differences(y, y.size(), [&](std::size_t i) { return i < 8 ? x[i] : -3.0F; }) == 0);
        f.zero(y.data());
        CHECK(Differences(y, y.size(), [&](std::size_t i) { return i < 8 ? 0.0F : -3.0F; }) == 0);
    });
}

TEST_CASE("eight floats are chosen by the sign of an integer, zero being positive") {
    const Values yes = Counted(1.0F), no = Counted(-20.0F);
    const Numbers integers = {0, -1, 1, 2147483647, -2147483647 - 1, 5, -5, 0};
    ForEachEightFloats([&](const EightFloatFunctions& f) {
        Values y = {};
        f.selectNotNegative(integers.data(), yes.data(), no.data(), y.data());
        CHECK(Differences(y, 8, [&](std::size_t i) { return integers[i] >= 0 ? yes[i] : no[i]; }) == 0);
    });
}

TEST_CASE("eight doubles are multiplied and added with a rounding each, and rounded once to single precision") {
    std::mt19937_64 random(7);
    ForEachEightFloats([&](const EightFloatFunctions& f) {
        int differences = 0, fusedDifferences = 0;
        for (int trial = 0; trial < 2000; ++trial) {
            std::array<double, 8> wide = {};
            Values narrow = {}, y = {};
            const double scale = std::uniform_real_distribution<double>(-1.0, 1.0)(random);
            for (std::size_t i = 0; i < 8; ++i) {
                wide[i] = std::uniform_real_distribution<double>(0.5, 1.0)(random);
                // Close to the other term, so that the last bits of the product count.
                narrow[i] = static_cast<float>(-scale * wide[i]);
            }
            f.scaledSum(scale, wide.data(), narrow.data(), y.data());
            for (std::size_t i = 0; i < 8; ++i) {
                const volatile double product = scale * wide[i];
                const auto expected = static_cast<float>(product + static_cast<double>(narrow[i]));
                const auto fused = static_cast<float>(std::fma(scale, wide[i], static_cast<double>(narrow[i])));
                differences += y[i] == expected ? 0 : 1;
                fusedDifferences += expected == fused ? 0 : 1;
            }
        }
        CHECK(differences == 0);
        CHECK(fusedDifferences > 10);  // or a fused operation would go unseen
    });
}
