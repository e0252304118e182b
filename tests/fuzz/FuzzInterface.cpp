// The structures of the C interface with any content. Arrays are as long as their counts say, which is the caller's
// part; everything else may be anything, and must be refused or computed.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "FuzzInput.h"
#include "tidora/tidora.h"

namespace {

/// Takes values from the input, and zeros after its end.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    template <typename Value>
    Value Take() {
        Value value = {};
        const std::size_t count = std::min(sizeof value, m_left);
        std::memcpy(&value, m_data, count);
        m_data += count;
        m_left -= count;
        return value;
    }
    /// Small numbers often, any number sometimes.
    double Number() {
        const auto kind = Take<std::uint8_t>();
        return kind < 16 ? Take<double>() : static_cast<double>(Take<std::int16_t>()) / 64.0;
    }
    std::size_t Below(std::size_t end) { return Take<std::uint8_t>() % end; }
    bool Flag() { return (Take<std::uint8_t>() & 1U) != 0; }

    template <typename Value>
    std::vector<Value> Some(std::size_t count) {
        std::vector<Value> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(static_cast<Value>(Number()));
        }
        return values;
    }
    /// An axis that increases, unless the input wants something else.
    std::vector<double> Axis(std::size_t count) {
        const double first = Number(), step = Number();
        if (step <= 0.0) {
            return Some<double>(count);
        }
        std::vector<double> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(first + step * static_cast<double>(i));
        }
        return values;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

/// A choice that is mostly one of 1 to `known`.
std::int32_t Choice(Bytes& bytes, std::size_t known) {
    return bytes.Below(16) == 0 ? bytes.Take<std::int32_t>() : static_cast<std::int32_t>(1 + bytes.Below(known));
}

void CheckStatus(int status, const tidora_error& error) {
    Require(status >= TIDORA_OK && status <= TIDORA_FAILED && status != TIDORA_FAILED);
    Require(memchr(error.argument, 0, sizeof error.argument) != nullptr);
    Require(memchr(error.message, 0, sizeof error.message) != nullptr);
    Require((status == TIDORA_INVALID) == (error.argument[0] != '\0'));
}

int CountDown(double fraction, void* user) {
    Require(fraction >= 0.0 && fraction <= 1.0);
    return --*static_cast<int*>(user) < 0 ? 1 : 0;
}

void Deform(Bytes& bytes) {
    std::vector<tidora_element> elements(bytes.Below(5));
    for (tidora_element& e : elements) {
        e = {bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number(),
             bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number(), bytes.Number()};
    }
    const bool isGrid = bytes.Flag();
    const std::size_t nx = bytes.Below(9), ny = isGrid ? bytes.Below(9) : 1, layers = bytes.Below(4);
    const std::vector<double> x = isGrid ? bytes.Axis(nx) : bytes.Some<double>(nx),
                              y = isGrid ? bytes.Axis(ny) : bytes.Some<double>(nx);
    const std::vector<float> topography = bytes.Some<float>(nx * ny),
                             shares = bytes.Some<float>(layers * elements.size());
    const bool withTopography = bytes.Flag(), withShares = bytes.Flag();
    const tidora_nodes nodes = {sizeof nodes, isGrid ? TIDORA_GRID : TIDORA_POINTS,        0, nx, ny, x.data(),
                                y.data(),     withTopography ? topography.data() : nullptr};
    const tidora_layers given = {sizeof given, layers, withShares ? shares.data() : nullptr};
    int left = static_cast<int>(bytes.Below(100));
    tidora_deform_options options = {sizeof options,
                                     Choice(bytes, 3),
                                     Choice(bytes, 3),
                                     bytes.Number(),
                                     bytes.Below(3),
                                     bytes.Number(),
                                     bytes.Number(),
                                     static_cast<std::int32_t>(1 + bytes.Below(2)),
                                     0,
                                     bytes.Flag() ? CountDown : nullptr,
                                     &left};
    if (bytes.Below(16) == 0) {
        options.size = bytes.Below(sizeof options + 1);
    }
    std::array<std::vector<float>, 4> out;
    for (std::vector<float>& field : out) {
        field.resize(bytes.Flag() ? std::max<std::size_t>(layers, 1) * nx * ny : 0);
    }
    const auto data = [](std::vector<float>& field) { return field.empty() ? nullptr : field.data(); };
    const tidora_displacement results = {sizeof results, data(out[0]), data(out[1]), data(out[2]), data(out[3])};
    tidora_error error = {sizeof error, "", ""};
    CheckStatus(tidora_deform(elements.data(), elements.size(), &nodes, bytes.Flag() ? &given : nullptr, &options,
                              &results, &error),
                error);
}

void Filter(Bytes& bytes) {
    const auto grid = [&bytes](std::size_t nx, std::size_t ny) {
        return tidora_field_grid{sizeof(tidora_field_grid), nx, ny, bytes.Number(), bytes.Number(), bytes.Number()};
    };
    const std::size_t nx = bytes.Below(9), ny = bytes.Below(9), layers = bytes.Below(3);
    const std::size_t parentNx = bytes.Below(9), parentNy = bytes.Below(9);
    const tidora_field_grid own = grid(nx, ny), parent = grid(parentNx, parentNy);
    const std::vector<float> topography = bytes.Some<float>(std::max<std::size_t>(nx * ny, 1)),
                             uplift = bytes.Some<float>(std::max<std::size_t>(layers * nx * ny, 1)),
                             around = bytes.Some<float>(std::max<std::size_t>(layers * parentNx * parentNy, 1));
    std::vector<float> surface(uplift.size());
    const bool hasParent = bytes.Flag();
    int left = static_cast<int>(bytes.Below(100));
    const tidora_filter_options options = {sizeof options,
                                           Choice(bytes, 2),
                                           Choice(bytes, 2),
                                           static_cast<std::int32_t>(1 + bytes.Below(2)),
                                           0,
                                           hasParent ? &parent : nullptr,
                                           hasParent ? around.data() : nullptr,
                                           bytes.Flag() ? CountDown : nullptr,
                                           &left};
    tidora_error error = {sizeof error, "", ""};
    CheckStatus(tidora_filter(&own, topography.data(), layers, uplift.data(), &options, surface.data(), &error), error);
}

void Shares(Bytes& bytes) {
    const std::size_t count = bytes.Below(5), elements = bytes.Below(5);
    const std::vector<double> times = bytes.Axis(2 * count + 1), lag = bytes.Some<double>(elements + 1),
                              duration = bytes.Some<double>(elements + 1);
    std::vector<float> shares(count * elements + 1);
    tidora_error error = {sizeof error, "", ""};
    const std::int32_t sharing = Choice(bytes, 2);
    const int status =
        tidora_shares(sharing, times.data(), count, lag.data(), duration.data(), elements, shares.data(), &error);
    CheckStatus(status, error);
    // The program's rule may lose the digits of enormous times; windows may not.
    const bool isBounded = status == TIDORA_OK && sharing == TIDORA_SHARE_WINDOWS;
    for (std::size_t i = 0; isBounded && i < count * elements; ++i) {
        Require(shares[i] >= 0.0F && shares[i] <= 1.0F);
    }
}

void Measure(Bytes& bytes) {
    const std::size_t fields = bytes.Below(4), nodes = bytes.Below(40);
    const std::vector<float> heights = bytes.Some<float>(fields * nodes + 1);
    const std::vector<double> areas = bytes.Some<double>(nodes + 1);
    std::vector<tidora_figures> figures(fields + 1);
    figures[0].highest_at = bytes.Flag() ? -1 : 0;
    tidora_error error = {sizeof error, "", ""};
    const std::size_t stride = nodes - (bytes.Below(8) == 0 ? 1 : 0);
    CheckStatus(
        tidora_measure(fields, nodes, heights.data(), stride, areas.data(), Choice(bytes, 3), figures.data(), &error),
        error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    switch (bytes.Below(3)) {
        case 0:
            Deform(bytes);
            break;
        case 1:
            Filter(bytes);
            break;
        default:
            Shares(bytes);
            Measure(bytes);
            break;
    }
    return 0;
}
