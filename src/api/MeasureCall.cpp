// tidora_measure: arguments are checked here, and only here.

#include <cstdint>
#include <vector>

#include "api/Calls.h"
#include "figures/FieldFigures.h"
#include "tidora/tidora.h"

namespace tidora::api {
namespace {

FieldFigures Inner(const tidora_figures& from) noexcept {
    return {from.highest, from.lowest, from.highest_at, from.lowest_at, from.raised, from.lowered, from.squares};
}

tidora_figures Outer(const FieldFigures& from) noexcept {
    return {from.highest, from.lowest, from.highestAt, from.lowestAt, from.raised, from.lowered, from.squares};
}

int Measure(std::size_t fields, std::size_t nodes, const float* heights, std::size_t stride, const double* areas,
            std::int64_t first, tidora_figures* figures) {
    Require(figures != nullptr || fields == 0, "figures", "is null");
    Require(heights != nullptr || fields == 0 || nodes == 0, "heights", "is null");
    Require(areas != nullptr || fields == 0 || nodes == 0, "areas", "is null");
    Require(stride >= nodes, "stride", "is below the number of nodes");
    static_cast<void>(CountOf(fields, stride, "stride"));
    Require(first >= 0 && static_cast<std::uint64_t>(first) <= INT64_MAX - nodes, "first", "is no number of a node");
    std::vector<FieldFigures> own(fields);
    for (std::size_t field = 0; field < fields; ++field) {
        // Figures of no node at all are those of a field that begins.
        own[field] = figures[field].highest_at < 0 ? FieldFigures{} : Inner(figures[field]);
    }
    AddFigures({fields, nodes, heights, stride, areas, first}, own.data());
    for (std::size_t field = 0; field < fields; ++field) {
        figures[field] = Outer(own[field]);
    }
    return TIDORA_OK;
}

}  // namespace
}  // namespace tidora::api

int tidora_measure(size_t fields, size_t nodes, const float* heights, size_t stride, const double* areas, int64_t first,
                   tidora_figures* figures, tidora_error* error) {
    return tidora::api::Guarded(
        error, [&] { return tidora::api::Measure(fields, nodes, heights, stride, areas, first, figures); });
}
