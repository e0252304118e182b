// Extremes and sums of many fields, piece by piece.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "../parity/EveryInstructionSet.h"
#include "tidora/tidora.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// Fields of noise above and below 0, and areas that differ from node to node.
struct Fields {
    std::size_t fields, nodes;
    std::vector<float> heights;
    std::vector<double> areas;

    Fields(std::size_t fieldCount, std::size_t nodeCount) : fields(fieldCount), nodes(nodeCount) {
        std::mt19937 random(7);
        std::normal_distribution<double> noise;
        for (std::size_t i = 0; i < fields * nodes; ++i) {
            heights.push_back(static_cast<float>(noise(random)));
        }
        for (std::size_t i = 0; i < nodes; ++i) {
            areas.push_back(1.0e6 * std::exp(noise(random)));
        }
    }

    /// Figures from pieces of so many nodes.
    [[nodiscard]] std::vector<tidora_figures> Measured(std::size_t piece) const {
        std::vector<tidora_figures> figures(fields);
        for (tidora_figures& own : figures) {
            own.highest_at = -1;
        }
        for (std::size_t first = 0; first < nodes; first += piece) {
            const std::size_t count = std::min(piece, nodes - first);
            REQUIRE(tidora_measure(fields, count, heights.data() + first, nodes, areas.data() + first,
                                   static_cast<std::int64_t>(first), figures.data(), nullptr) == TIDORA_OK);
        }
        return figures;
    }
};

}  // namespace

TEST_CASE("figures of fields are those of one node after the other, for every count of nodes around the lanes") {
    for (std::size_t nodes = 1; nodes < 70; ++nodes) {
        CAPTURE(nodes);
        const Fields fields(3, nodes);
        const std::vector<tidora_figures> found = fields.Measured(nodes);
        for (std::size_t field = 0; field < fields.fields; ++field) {
            const float* const heights = fields.heights.data() + field * nodes;
            std::size_t highest = 0, lowest = 0;
            long double raised = 0, lowered = 0, squares = 0;
            for (std::size_t node = 0; node < nodes; ++node) {
                highest = heights[node] > heights[highest] ? node : highest;
                lowest = heights[node] < heights[lowest] ? node : lowest;
                const auto height = static_cast<long double>(heights[node]);
                const auto area = static_cast<long double>(fields.areas[node]);
                (height > 0 ? raised : lowered) += std::abs(height) * area;
                squares += height * height * area;
            }
            CHECK(found[field].highest == heights[highest]);
            CHECK(found[field].highest_at == static_cast<std::int64_t>(highest));
            CHECK(found[field].lowest == heights[lowest]);
            CHECK(found[field].lowest_at == static_cast<std::int64_t>(lowest));
            // Some seventy sums of numbers of one sign, each rounded once.
            CHECK(found[field].raised == doctest::Approx(static_cast<double>(raised)).epsilon(1e-14));
            CHECK(found[field].lowered == doctest::Approx(static_cast<double>(lowered)).epsilon(1e-14));
            CHECK(found[field].squares == doctest::Approx(static_cast<double>(squares)).epsilon(1e-14));
        }
    }
}

TEST_CASE("figures of fields have the same bits on every instruction set") {
    const Fields fields(5, 1003);
    std::vector<std::vector<tidora_figures>> found;
    ForEachInstructionSet([&] { found.push_back(fields.Measured(128)); });
    REQUIRE(!found.empty());
    for (const std::vector<tidora_figures>& other : found) {
        CHECK(std::memcmp(other.data(), found[0].data(), other.size() * sizeof(tidora_figures)) == 0);
    }
}

TEST_CASE("pieces of the nodes lead to the extremes of all of them, in every field") {
    const Fields fields(5, 100);
    const std::vector<tidora_figures> whole = fields.Measured(100), pieces = fields.Measured(7);
    for (std::size_t field = 0; field < fields.fields; ++field) {
        CAPTURE(field);
        CHECK(pieces[field].highest == whole[field].highest);
        CHECK(pieces[field].highest_at == whole[field].highest_at);
        CHECK(pieces[field].lowest == whole[field].lowest);
        CHECK(pieces[field].lowest_at == whole[field].lowest_at);
        CHECK(pieces[field].squares == doctest::Approx(whole[field].squares).epsilon(1e-14));
    }
}

TEST_CASE("a field that is raised, or lowered, everywhere has extremes of one sign") {
    for (const float sign : {1.0F, -1.0F}) {
        for (const std::size_t nodes : {1U, 5U, 16U, 33U}) {
            CAPTURE(nodes);
            Fields fields(1, nodes);
            for (float& height : fields.heights) {
                height = sign * (1.0F + std::abs(height));
            }
            const tidora_figures found = fields.Measured(nodes)[0];
            const auto [least, most] = std::minmax_element(fields.heights.begin(), fields.heights.end());
            CHECK(found.lowest == *least);
            CHECK(found.highest == *most);
            CHECK((sign > 0.0F ? found.lowered : found.raised) == 0.0);
        }
    }
}

TEST_CASE("a piece without nodes changes nothing") {
    tidora_figures figures = {};
    figures.highest_at = -1;
    REQUIRE(tidora_measure(1, 0, nullptr, 0, nullptr, 5, &figures, nullptr) == TIDORA_OK);
    CHECK(figures.highest_at == -1);
    CHECK(figures.squares == 0.0);
}

TEST_CASE("of equal extremes the node with the lowest number counts, in whatever order the pieces come") {
    const float heights[] = {0.0F, 2.0F, -1.0F, 2.0F, -1.0F, 0.0F};
    const double areas[] = {1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    for (const bool backward : {false, true}) {
        tidora_figures figures = {};
        figures.highest_at = -1;
        for (const std::size_t first : {backward ? 3U : 0U, backward ? 0U : 3U}) {
            REQUIRE(tidora_measure(1, 3, heights + first, 3, areas, static_cast<std::int64_t>(first), &figures,
                                   nullptr) == TIDORA_OK);
        }
        CHECK(figures.highest_at == 1);
        CHECK(figures.lowest_at == 2);
        CHECK(figures.raised == 4.0);
        CHECK(figures.lowered == 2.0);
        CHECK(figures.squares == 10.0);
    }
    tidora_figures together = {};
    together.highest_at = -1;
    REQUIRE(tidora_measure(1, 6, heights, 6, areas, 0, &together, nullptr) == TIDORA_OK);
    CHECK(together.highest_at == 1);
    CHECK(together.lowest_at == 2);
}

TEST_CASE("a height that is not a number leaves the squares not a number, wherever it stands") {
    for (std::size_t place = 0; place < 40; ++place) {
        CAPTURE(place);
        Fields fields(1, 40);
        fields.heights[place] = kNan;
        CHECK(std::isnan(fields.Measured(40)[0].squares));
        CHECK(std::isnan(fields.Measured(7)[0].squares));
        CHECK(std::isnan(fields.Measured(1)[0].squares));
    }
}

TEST_CASE("measuring with any one argument wrong is refused by the name of that argument") {
    const float heights[] = {1.0F, 2.0F};
    const double areas[] = {1.0, 1.0};
    tidora_figures figures = {};
    tidora_error error = {sizeof error, "", ""};
    const auto refused = [&](const char* argument, int status) {
        CHECK(status == TIDORA_INVALID);
        CHECK(std::string(error.argument) == argument);
    };
    constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max();
    CHECK(tidora_measure(1, 2, heights, 2, areas, 0, &figures, &error) == TIDORA_OK);
    CHECK(tidora_measure(0, 0, nullptr, 0, nullptr, 0, nullptr, &error) == TIDORA_OK);
    refused("figures", tidora_measure(1, 2, heights, 2, areas, 0, nullptr, &error));
    refused("heights", tidora_measure(1, 2, nullptr, 2, areas, 0, &figures, &error));
    refused("areas", tidora_measure(1, 2, heights, 2, nullptr, 0, &figures, &error));
    refused("stride", tidora_measure(1, 2, heights, 1, areas, 0, &figures, &error));
    refused("stride", tidora_measure(SIZE_MAX / 2, 2, heights, 8, areas, 0, &figures, &error));
    refused("first", tidora_measure(1, 2, heights, 2, areas, -1, &figures, &error));
    refused("first", tidora_measure(1, 2, heights, 2, areas, kLast - 1, &figures, &error));
}
