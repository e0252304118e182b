#include <doctest/doctest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include "deform/SourceRuns.h"

using tidora::LargestSquareWithin;
using tidora::RunFrom;
using tidora::SourceKind;
using tidora::SourceRun;

TEST_CASE("a squared distance is within its limit just when the distance is") {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    std::vector<float> distances = {0.0F,
                                    1.0e-45F,
                                    1.0e-30F,
                                    1.0e-20F,
                                    1.0F,
                                    1545.25F,
                                    3335847.8F,
                                    1.8446743e19F,
                                    1.8446744e19F,
                                    1.0e30F,
                                    std::numeric_limits<float>::max(),
                                    kInfinity};
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i) {
        distances.push_back(std::ldexp(std::uniform_real_distribution<float>(1.0F, 2.0F)(random),
                                       std::uniform_int_distribution<int>(-60, 60)(random)));
    }
    for (const float distance : distances) {
        CAPTURE(distance);
        const float limit = LargestSquareWithin(distance);
        REQUIRE(std::sqrt(limit) <= distance);
        if (limit < kInfinity) {
            REQUIRE(std::sqrt(std::nextafter(limit, kInfinity)) > distance);
        }
    }
}

TEST_CASE("no squared distance is within a distance that is negative or not a number") {
    CHECK(LargestSquareWithin(-1.0F) < 0.0F);
    CHECK(LargestSquareWithin(-std::numeric_limits<float>::infinity()) < 0.0F);
    CHECK(std::isnan(LargestSquareWithin(std::numeric_limits<float>::quiet_NaN())));
}

TEST_CASE("a column is cut where the kind of its source changes, whatever the lengths") {
    std::mt19937 random(6);
    for (int scene = 0; scene < 300; ++scene) {
        std::vector<SourceKind> kinds;
        std::vector<std::size_t> ends;
        while (kinds.size() < 100) {
            const auto previous = kinds.empty() ? 0 : static_cast<int>(kinds.back()) + 1;
            const auto kind = static_cast<SourceKind>((previous + static_cast<int>(random() % 2)) % 3);
            kinds.insert(kinds.end(), 1 + random() % (scene % 2 == 0 ? 4 : 40), kind);
            ends.push_back(kinds.size());
        }
        std::size_t begin = 0;
        for (const std::size_t end : ends) {
            const SourceRun run = RunFrom(begin, kinds.data(), kinds.size());
            CHECK(run.kind == kinds[begin]);
            CHECK(run.begin == begin);
            REQUIRE(run.end == end);
            begin = end;
        }
    }
}
