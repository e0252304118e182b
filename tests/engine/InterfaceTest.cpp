// The C interface: what it refuses, and how it says so. What it computes is the engine's, which has tests of its own.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "tidora/tidora.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A call of tidora_deform that can be spoilt. Copies point to the arrays of the original: Bind() mends that.
struct DeformCall {
    std::vector<tidora_element> elements = {{142.0, 38.0, 9000.0, 7000.0, 200.0, 20.0, 90.0, 6.0e4, 3.0e4, 2.0},
                                            {142.5, 38.5, 8000.0, 6000.0, 200.0, 20.0, 90.0, 6.0e4, 3.0e4, 1.0}};
    std::vector<double> x = {141.0, 141.5, 142.0, 142.5}, y = {37.0, 37.5, 38.0};
    std::vector<float> topography = std::vector<float>(12, -3000.0F);
    std::vector<float> shares = {1.0F, 0.0F, 0.0F, 1.0F};
    std::vector<float> uz = std::vector<float>(24), ue = uz, un = uz, slope = uz;
    tidora_nodes nodes = {sizeof nodes, TIDORA_GRID, 0, 4, 3, nullptr, nullptr, nullptr};
    tidora_layers layers = {sizeof layers, 2, nullptr};
    tidora_deform_options options = {
        sizeof options, TIDORA_FRAME_GLOBE, TIDORA_DEPTH_FLOOR, 0.0, 0, 50.0, 0.0, 1, 0, nullptr, nullptr};
    tidora_displacement out = {sizeof out, nullptr, nullptr, nullptr, nullptr};
    const tidora_element* elementsGiven = nullptr;
    const tidora_nodes* nodesGiven = nullptr;
    const tidora_layers* layersGiven = nullptr;
    const tidora_deform_options* optionsGiven = nullptr;
    const tidora_displacement* outGiven = nullptr;
    tidora_error error = {sizeof error, "", ""};

    DeformCall() { Bind(); }
    void Bind() {
        nodes.x = x.data();
        nodes.y = y.data();
        nodes.topography = topography.data();
        layers.shares = shares.data();
        out = {sizeof out, uz.data(), ue.data(), un.data(), slope.data()};
        elementsGiven = elements.data();
        nodesGiven = &nodes;
        layersGiven = &layers;
        optionsGiven = &options;
        outGiven = &out;
    }
    int Run() {
        return tidora_deform(elementsGiven, elements.size(), nodesGiven, layersGiven, optionsGiven, outGiven, &error);
    }
};

struct FilterCall {
    std::vector<float> topography = std::vector<float>(12, -3000.0F), uplift = std::vector<float>(24, 1.0F),
                       surface = std::vector<float>(24), parentUplift = std::vector<float>(32, 1.0F);
    tidora_field_grid grid = {sizeof grid, 4, 3, 141.0, 37.0, 0.5}, parent = {sizeof parent, 4, 4, 140.0, 36.0, 1.0};
    tidora_filter_options options = {
        sizeof options, TIDORA_GEOGRAPHIC, TIDORA_KERNEL_CONVERGED, 1, 0, nullptr, nullptr, nullptr, nullptr};
    const tidora_field_grid* gridGiven = &grid;
    const tidora_filter_options* optionsGiven = &options;
    const float *topographyGiven = topography.data(), *upliftGiven = uplift.data();
    float* surfaceGiven = surface.data();
    std::size_t layers = 2;
    tidora_error error = {sizeof error, "", ""};

    FilterCall() {
        options.parent = &parent;
        options.parent_uplift = parentUplift.data();
    }
    ~FilterCall() = default;
    FilterCall(const FilterCall&) = delete;
    FilterCall& operator=(const FilterCall&) = delete;
    int Run() {
        return tidora_filter(gridGiven, topographyGiven, layers, upliftGiven, optionsGiven, surfaceGiven, &error);
    }
};

template <typename Call>
struct Spoilt {
    const char* argument;
    std::function<void(Call&)> spoil;
};

template <typename Call>
void CheckRefused(const std::vector<Spoilt<Call>>& table) {
    for (const Spoilt<Call>& entry : table) {
        CAPTURE(entry.argument);
        Call call;
        REQUIRE(call.Run() == TIDORA_OK);
        entry.spoil(call);
        CHECK(call.Run() == TIDORA_INVALID);
        CHECK(std::string(call.error.argument) == entry.argument);
        CHECK(std::string(call.error.message).size() > 5);
    }
}

}  // namespace

TEST_CASE("a deformation with any one argument wrong is refused by the name of that argument") {
    CheckRefused<DeformCall>({
        {"elements", [](auto& c) { c.elementsGiven = nullptr; }},
        {"elements.x", [](auto& c) { c.elements[1].x = kNan; }},
        {"elements.y", [](auto& c) { c.elements[0].y = kInfinity; }},
        {"elements.y", [](auto& c) { c.elements[0].y = 90.5; }},
        {"elements.base_offset", [](auto& c) { c.elements[0].base_offset = -kInfinity; }},
        {"elements.base_offset",
         [](auto& c) {
             c.options.depth = TIDORA_DEPTH_DATUM;
             c.elements[1].base_offset = -1.0;
         }},
        {"elements.depth", [](auto& c) { c.elements[0].depth = kNan; }},
        {"elements.strike", [](auto& c) { c.elements[0].strike = kNan; }},
        {"elements.dip", [](auto& c) { c.elements[0].dip = kNan; }},
        {"elements.rake", [](auto& c) { c.elements[0].rake = kInfinity; }},
        {"elements.length", [](auto& c) { c.elements[0].length = -1.0; }},
        {"elements.width", [](auto& c) { c.elements[0].width = -0.5; }},
        {"elements.slip", [](auto& c) { c.elements[1].slip = kNan; }},
        {"elements.x",
         [](auto& c) {
             c.options.frame = TIDORA_FRAME_UTM;
             c.elements[1].x = 180.0;  // zone 61, which there is not
         }},
        {"nodes", [](auto& c) { c.nodesGiven = nullptr; }},
        {"nodes", [](auto& c) { c.nodes.size = 0; }},
        {"nodes", [](auto& c) { c.nodes.nx = std::numeric_limits<std::size_t>::max() / 2; }},
        {"nodes.layout", [](auto& c) { c.nodes.layout = 3; }},
        {"nodes.ny", [](auto& c) { c.nodes.layout = TIDORA_POINTS; }},
        {"nodes.x", [](auto& c) { c.nodes.x = nullptr; }},
        {"nodes.x", [](auto& c) { c.x[2] = kNan; }},
        {"nodes.x", [](auto& c) { c.x[2] = c.x[1]; }},
        {"nodes.x", [](auto& c) { c.x[2] = 142.01; }},
        {"nodes.y", [](auto& c) { c.nodes.y = nullptr; }},
        {"nodes.y", [](auto& c) { c.y[2] = 91.0; }},
        {"nodes.y", [](auto& c) { c.y[0] = 40.0; }},
        {"nodes.topography", [](auto& c) { c.nodes.topography = nullptr; }},
        {"nodes.topography", [](auto& c) { c.topography[11] = std::numeric_limits<float>::quiet_NaN(); }},
        {"layers", [](auto& c) { c.layers.size = 4; }},
        {"layers.count", [](auto& c) { c.layers.count = 0; }},
        {"layers.count", [](auto& c) { c.layers.count = std::numeric_limits<std::size_t>::max(); }},
        {"layers.shares", [](auto& c) { c.layers.shares = nullptr; }},
        {"layers.shares", [](auto& c) { c.shares[3] = std::numeric_limits<float>::infinity(); }},
        {"options", [](auto& c) { c.optionsGiven = nullptr; }},
        {"options", [](auto& c) { c.options.size = 5000; }},
        {"options", [](auto& c) { c.options.size -= 3; }},
        {"options.frame", [](auto& c) { c.options.frame = 0; }},
        {"options.depth", [](auto& c) { c.options.depth = -1; }},
        {"options.tolerance", [](auto& c) { c.options.tolerance = -0.1; }},
        {"options.tolerance", [](auto& c) { c.options.tolerance = kNan; }},
        {"options.min_depth", [](auto& c) { c.options.min_depth = kNan; }},
        {"options.spacing", [](auto& c) { c.options.spacing = -1.0; }},
        {"options.spacing",
         [](auto& c) {
             c.options.frame = TIDORA_FRAME_UTM;
             c.options.spacing = 0.6;
         }},
        {"options.threads", [](auto& c) { c.options.threads = -1; }},
        {"options.reserved", [](auto& c) { c.options.reserved = 1; }},
        {"out", [](auto& c) { c.outGiven = nullptr; }},
        {"out",
         [](auto& c) {
             c.out = {sizeof c.out, nullptr, nullptr, nullptr, nullptr};
         }},
        {"out.slope",
         [](auto& c) {
             c.nodes.layout = TIDORA_POINTS;
             c.nodes.ny = 1;
             c.nodes.nx = 3;
         }},
    });
}

TEST_CASE("a filter with any one argument wrong is refused by the name of that argument") {
    CheckRefused<FilterCall>({
        {"grid", [](auto& c) { c.gridGiven = nullptr; }},
        {"grid", [](auto& c) { c.grid.size = 1; }},
        {"grid", [](auto& c) { c.grid.nx = 0; }},
        {"grid", [](auto& c) { c.grid.nx = std::numeric_limits<std::size_t>::max() / 3; }},
        {"grid", [](auto& c) { c.grid.west = kNan; }},
        {"grid", [](auto& c) { c.grid.spacing = 0.0; }},
        {"grid", [](auto& c) { c.grid.south = 89.5; }},
        {"grid",
         [](auto& c) {
             c.options.kernel = TIDORA_KERNEL_PROGRAM;
             c.grid.spacing = 1.0e-60;
         }},
        {"topography", [](auto& c) { c.topographyGiven = nullptr; }},
        {"topography", [](auto& c) { c.topography[3] = std::numeric_limits<float>::quiet_NaN(); }},
        {"layers", [](auto& c) { c.layers = std::numeric_limits<std::size_t>::max() / 2; }},
        {"uplift", [](auto& c) { c.upliftGiven = nullptr; }},
        {"uplift", [](auto& c) { c.uplift[20] = std::numeric_limits<float>::infinity(); }},
        {"options", [](auto& c) { c.optionsGiven = nullptr; }},
        {"options.coordinates", [](auto& c) { c.options.coordinates = 0; }},
        {"options.kernel", [](auto& c) { c.options.kernel = 9; }},
        {"options.threads", [](auto& c) { c.options.threads = -4; }},
        {"options.reserved", [](auto& c) { c.options.reserved = 2; }},
        {"options.parent", [](auto& c) { c.options.parent = nullptr; }},
        {"options.parent", [](auto& c) { c.parent.ny = 0; }},
        {"options.parent_uplift", [](auto& c) { c.parentUplift[31] = std::numeric_limits<float>::quiet_NaN(); }},
        {"surface", [](auto& c) { c.surfaceGiven = nullptr; }},
    });
}

TEST_CASE("shares with any one argument wrong are refused by the name of that argument") {
    const double times[] = {0.0, 10.0, 20.0}, falling[] = {0.0, 10.0, 5.0}, lag[] = {1.0, kNan}, zero[] = {0.0, -1.0};
    float shares[4];
    tidora_error error = {sizeof error, "", ""};
    const auto refused = [&](const char* argument, int status) {
        CHECK(status == TIDORA_INVALID);
        CHECK(std::string(error.argument) == argument);
    };
    CHECK(tidora_shares(TIDORA_SHARE_WINDOWS, times, 2, lag, zero, 1, shares, &error) == TIDORA_OK);
    refused("sharing", tidora_shares(0, times, 2, lag, zero, 1, shares, &error));
    refused("count", tidora_shares(TIDORA_SHARE_WINDOWS, times, 0, lag, zero, 1, shares, &error));
    refused("times", tidora_shares(TIDORA_SHARE_WINDOWS, nullptr, 2, lag, zero, 1, shares, &error));
    refused("times", tidora_shares(TIDORA_SHARE_WINDOWS, falling, 2, lag, zero, 1, shares, &error));
    refused("times", tidora_shares(TIDORA_SHARE_INTERVALS, zero, 1, lag, lag, 1, shares, &error));
    refused("lag", tidora_shares(TIDORA_SHARE_WINDOWS, times, 2, lag, zero, 2, shares, &error));
    refused("lag", tidora_shares(TIDORA_SHARE_WINDOWS, times, 2, nullptr, zero, 1, shares, &error));
    refused("duration", tidora_shares(TIDORA_SHARE_WINDOWS, times, 2, times, zero, 2, shares, &error));
}

TEST_CASE("what is refused is not begun: results keep what they held") {
    DeformCall call;
    std::fill(call.uz.begin(), call.uz.end(), -5.0F);
    call.topography[11] = std::numeric_limits<float>::quiet_NaN();
    CHECK(call.Run() == TIDORA_INVALID);
    for (const float value : call.uz) {
        CHECK(value == -5.0F);
    }
}

TEST_CASE("a structure of a later version is taken when what is new in it is 0, and refused when not") {
    struct Later {
        tidora_deform_options known;
        double unknown;
    };
    DeformCall call;
    Later later = {call.options, 0.0};
    later.known.size = sizeof later;
    call.optionsGiven = &later.known;
    CHECK(call.Run() == TIDORA_OK);
    later.unknown = 1.0;
    CHECK(call.Run() == TIDORA_INVALID);
    CHECK(std::string(call.error.argument) == "options");
}

TEST_CASE("a structure of an earlier version has zeros for what it does not know") {
    DeformCall call;
    call.options.size = offsetof(tidora_deform_options, threads);
    call.options.threads = -1;  // beyond the size: not looked at
    CHECK(call.Run() == TIDORA_OK);
}

TEST_CASE("an error that is null, or too small to be filled, is left alone") {
    DeformCall call;
    call.options.frame = 77;
    CHECK(tidora_deform(call.elementsGiven, 2, &call.nodes, &call.layers, &call.options, &call.out, nullptr) ==
          TIDORA_INVALID);
    tidora_error small = {8, "x", "y"};
    CHECK(tidora_deform(call.elementsGiven, 2, &call.nodes, &call.layers, &call.options, &call.out, &small) ==
          TIDORA_INVALID);
    CHECK(std::string(small.argument) == "x");
}

TEST_CASE("a callback that asks for an end gets a cancelled call") {
    DeformCall call;
    call.options.progress = [](double, void* user) {
        ++*static_cast<int*>(user);
        return 1;
    };
    int calls = 0;
    call.options.user = &calls;
    CHECK(call.Run() == TIDORA_CANCELLED);
    CHECK(calls == 1);
}

TEST_CASE("layers, none and no layers: all slip in one layer without shares") {
    DeformCall call;
    call.layersGiven = nullptr;
    CHECK(call.Run() == TIDORA_OK);
    const std::vector<float> all = call.uz;
    call.layersGiven = &call.layers;
    call.layers.count = 0;
    call.layers.shares = nullptr;
    CHECK(call.Run() == TIDORA_OK);
    CHECK(std::memcmp(all.data(), call.uz.data(), 12 * sizeof(float)) == 0);
    call.Bind();
    call.layers.count = 2;
    CHECK(call.Run() == TIDORA_OK);
    for (std::size_t n = 0; n < 12; ++n) {
        CHECK(call.uz[n] + call.uz[12 + n] == doctest::Approx(static_cast<double>(all[n])).epsilon(1e-6));
    }
}

TEST_CASE("every status has words") {
    CHECK(std::string(tidora_status_text(TIDORA_OK)) == "all is well");
    for (int status = -1; status < 7; ++status) {
        CHECK(std::strlen(tidora_status_text(status)) > 5);
    }
    CHECK(std::string(tidora_version()) == TIDORA_VERSION);
}
