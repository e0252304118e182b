// tidora_deform and tidora_shares: arguments are checked here, and only here.

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "api/Calls.h"
#include "deform/NodeDeformation.h"
#include "deform/SlipShares.h"
#include "tidora/tidora.h"

namespace tidora::api {
namespace {

/// Axes are equally spaced when no step differs more than this from the first, in parts of it.
constexpr double kSpacingMisfit = 1.0e-3;

NodeFrame FrameOf(std::int32_t frame) {
    switch (frame) {
        case TIDORA_FRAME_PLANE:
            return NodeFrame::Plane;
        case TIDORA_FRAME_GLOBE:
            return NodeFrame::Globe;
        case TIDORA_FRAME_UTM:
            return NodeFrame::Utm;
        default:
            throw BadArgument("options.frame", "is none of the frames");
    }
}

DepthRule DepthOf(std::int32_t depth) {
    switch (depth) {
        case TIDORA_DEPTH_DATUM:
            return DepthRule::Datum;
        case TIDORA_DEPTH_FLOOR:
            return DepthRule::Floor;
        case TIDORA_DEPTH_PROGRAM:
            return DepthRule::Program;
        default:
            throw BadArgument("options.depth", "is none of the rules");
    }
}

/// A rule for a number of an element.
struct ElementRule {
    const char* name;
    double tidora_element::*number;
    double least, most;
    const char* breach;
};

constexpr double kAny = std::numeric_limits<double>::infinity();
constexpr ElementRule kElementRules[] = {
    {"elements.x", &tidora_element::x, -kAny, kAny, ""},
    {"elements.y", &tidora_element::y, -kAny, kAny, ""},
    {"elements.base_offset", &tidora_element::base_offset, -kAny, kAny, ""},
    {"elements.depth", &tidora_element::depth, -kAny, kAny, ""},
    {"elements.strike", &tidora_element::strike, -kAny, kAny, ""},
    {"elements.dip", &tidora_element::dip, -kAny, kAny, ""},
    {"elements.rake", &tidora_element::rake, -kAny, kAny, ""},
    {"elements.length", &tidora_element::length, 0.0, kAny, "is below 0"},
    {"elements.width", &tidora_element::width, 0.0, kAny, "is below 0"},
    {"elements.slip", &tidora_element::slip, -kAny, kAny, ""},
};

void RequireOfElement(bool holds, const char* name, const char* breach, std::size_t number) {
    if (!holds) {
        throw BadArgument(name, std::string(breach) + " in element " + std::to_string(number));
    }
}

void CheckElement(const tidora_element& e, std::size_t number, NodeFrame frame, DepthRule depth) {
    for (const ElementRule& rule : kElementRules) {
        const double value = e.*rule.number;
        RequireOfElement(std::isfinite(value), rule.name, "is not a finite number", number);
        RequireOfElement(value >= rule.least && value <= rule.most, rule.name, rule.breach, number);
    }
    RequireOfElement(frame == NodeFrame::Plane || std::abs(e.y) <= 90.0, "elements.y", "is no latitude", number);
    RequireOfElement(depth != DepthRule::Datum || e.base_offset >= 0.0, "elements.base_offset", "is above the surface",
                     number);
}

std::vector<FAULT_PARAM> ElementsOf(const tidora_element* elements, std::size_t count, NodeFrame frame,
                                    DepthRule depth) {
    Require(elements != nullptr || count == 0, "elements", "is null");
    std::vector<FAULT_PARAM> taken;
    taken.reserve(count);
    for (std::size_t n = 0; n < count; ++n) {
        const tidora_element& e = elements[n];
        CheckElement(e, n, frame, depth);
        taken.push_back(
            {e.x, e.y, e.base_offset, e.depth, e.strike, e.dip, e.rake, e.length, e.width, e.slip, 0.0, 0.0});
    }
    return taken;
}

void CheckAxis(const double* values, std::size_t count, const char* name, bool isAxis, bool isLatitude) {
    Require(values != nullptr || count == 0, name, "is null");
    RequireFinite(values, count, name);
    for (std::size_t i = 0; i < count; ++i) {
        Require(!isLatitude || std::abs(values[i]) <= 90.0, name, "is no latitude somewhere");
        Require(!isAxis || i == 0 || values[i] > values[i - 1], name, "does not increase");
    }
}

tidora::Nodes NodesOf(const tidora_nodes& nodes, NodeFrame frame) {
    const bool isGrid = nodes.layout == TIDORA_GRID;
    Require(isGrid || nodes.layout == TIDORA_POINTS, "nodes.layout", "is none of the layouts");
    Require(isGrid || nodes.ny == 1, "nodes.ny", "is 1 for points");
    static_cast<void>(CountOf(nodes.nx, nodes.ny, "nodes"));
    const bool isDegrees = frame != NodeFrame::Plane;
    CheckAxis(nodes.x, nodes.nx, "nodes.x", isGrid, false);
    CheckAxis(nodes.y, isGrid ? nodes.ny : nodes.nx, "nodes.y", isGrid, isDegrees);
    return {isGrid, nodes.nx, nodes.ny, nodes.x, nodes.y, nodes.topography};
}

/// The mean spacing of an axis of several nodes, which must be equal.
std::optional<double> SpacingOf(const double* axis, std::size_t count, const char* name) {
    if (count < 2) {
        return std::nullopt;
    }
    const double spacing = (axis[count - 1] - axis[0]) / static_cast<double>(count - 1);
    for (std::size_t i = 0; i < count; ++i) {
        Require(std::abs(axis[i] - (axis[0] + static_cast<double>(i) * spacing)) <= kSpacingMisfit * spacing, name,
                "is not equally spaced, as the slope term needs it");
    }
    return spacing;
}

float SpacingForSlopes(const tidora::Nodes& nodes, NodeFrame frame, double stated) {
    Require(nodes.isGrid, "out.slope", "is for grids: points have no neighbours");
    const std::optional<double> x = SpacingOf(nodes.x, nodes.columns, "nodes.x");
    const std::optional<double> y = SpacingOf(nodes.y, nodes.rows, "nodes.y");
    const double spacing = x.value_or(y.value_or(1.0));
    if (frame != NodeFrame::Globe) {
        Require(!y || std::abs(*y - spacing) <= kSpacingMisfit * spacing, "nodes.y",
                "has another spacing than nodes.x");
        Require(stated == 0.0 || std::abs(stated - spacing) <= kSpacingMisfit * spacing, "options.spacing",
                "is not that of the axes");
    }
    return static_cast<float>(stated == 0.0 ? spacing : stated);
}

const float* SharesOf(const tidora_layers* layers, std::size_t elements, std::size_t& count) {
    count = 1;
    if (layers == nullptr) {
        return nullptr;
    }
    const tidora_layers taken = Taken(layers, "layers");
    if (taken.count == 0) {
        Require(taken.shares == nullptr, "layers.count", "is 0, but there are shares");
        return nullptr;
    }
    Require(taken.shares != nullptr || elements == 0, "layers.shares", "is null");
    RequireFinite(taken.shares, CountOf(taken.count, elements, "layers.count"), "layers.shares");
    count = taken.count;
    return taken.shares;
}

NodeTask TaskOf(const tidora_deform_options& options) {
    NodeTask task;
    task.frame = FrameOf(options.frame);
    task.depth = DepthOf(options.depth);
    Require(options.tolerance >= 0.0 && std::isfinite(options.tolerance), "options.tolerance",
            "is no number from 0 on");
    Require(std::isfinite(options.min_depth), "options.min_depth", "is not a finite number");
    Require(options.spacing >= 0.0 && std::isfinite(options.spacing), "options.spacing", "is no number from 0 on");
    Require(options.threads >= 0, "options.threads", "is below 0");
    Require(options.reserved == 0, "options.reserved", "is not 0");
    task.tolerance = options.tolerance;
    task.toleranceElements = options.tolerance_elements;
    task.minDepth = static_cast<float>(options.min_depth);
    task.threads = options.threads;
    task.progress = ProgressOf(options.progress, options.user);
    return task;
}

bool NeedsTopography(DepthRule depth, std::size_t elements, bool withSlopes) noexcept {
    return withSlopes || depth == DepthRule::Floor || (depth == DepthRule::Program && elements > 1);
}

int Deform(const tidora_element* elements, std::size_t elementCount, const tidora_nodes* nodes,
           const tidora_layers* layers, const tidora_deform_options* options, const tidora_displacement* out) {
    const tidora_deform_options o = Taken(options, "options");
    NodeTask task = TaskOf(o);
    const std::vector<FAULT_PARAM> taken = ElementsOf(elements, elementCount, task.frame, task.depth);
    tidora::Nodes where = NodesOf(Taken(nodes, "nodes"), task.frame);
    NodeFields fields;
    const float* const shares = SharesOf(layers, elementCount, fields.layers);
    const tidora_displacement results = Taken(out, "out");
    fields.of = {results.uz, results.ue, results.un, results.slope};
    Require(results.uz != nullptr || results.ue != nullptr || results.un != nullptr || results.slope != nullptr, "out",
            "asks for nothing");
    static_cast<void>(CountOf(fields.layers, where.Size(), "layers.count"));
    const bool withSlopes = results.slope != nullptr;
    if (withSlopes) {
        task.spacing = SpacingForSlopes(where, task.frame, o.spacing);
    }
    if (NeedsTopography(task.depth, elementCount, withSlopes)) {
        Require(where.topography != nullptr || where.Size() == 0, "nodes.topography",
                "is null, but the depth rule or the slope term need it");
        RequireFinite(where.topography, where.Size(), "nodes.topography");
    } else {
        where.topography = nullptr;
    }
    try {
        return DeformNodes(taken, shares, where, task, fields) ? TIDORA_OK : TIDORA_CANCELLED;
    } catch (const NoPlaceError& error) {
        throw BadArgument("elements.x", "has no place in the UTM zone of element " + std::to_string(error.Element()));
    }
}

int Shares(std::int32_t sharing, const double* times, std::size_t count, const double* lag, const double* duration,
           std::size_t elementCount, float* shares) {
    Require(sharing == TIDORA_SHARE_INTERVALS || sharing == TIDORA_SHARE_WINDOWS, "sharing", "is none of the rules");
    const bool areWindows = sharing == TIDORA_SHARE_WINDOWS;
    Require(count > 0, "count", "is 0");
    const std::size_t timeCount = areWindows ? count + 1 : CountOf(count, 2, "count");
    Require(times != nullptr, "times", "is null");
    RequireFinite(times, timeCount, "times");
    for (std::size_t k = 0; k < count; ++k) {
        Require(!areWindows || times[k + 1] > times[k], "times", "does not increase");
        Require(areWindows || times[2 * k + 1] >= 0.0, "times", "has a length below 0");
    }
    Require((lag != nullptr && duration != nullptr && shares != nullptr) || elementCount == 0, "lag",
            "or duration or shares are null");
    RequireFinite(lag, elementCount, "lag");
    RequireFinite(duration, elementCount, "duration");
    static_cast<void>(CountOf(count, elementCount, "count"));
    for (std::size_t n = 0; n < elementCount; ++n) {
        Require(duration[n] >= 0.0, "duration", "is below 0 somewhere");
    }
    for (std::size_t n = 0; n < elementCount; ++n) {
        const SlipTimes slip = {lag[n], duration[n]};
        if (areWindows) {
            ShareOutToWindows(times, count, slip, shares + n, elementCount);
            continue;
        }
        for (std::size_t k = 0; k < count; ++k) {
            shares[k * elementCount + n] = ShareOfInterval(times[2 * k], times[2 * k + 1], slip);
        }
    }
    return TIDORA_OK;
}

}  // namespace
}  // namespace tidora::api

int tidora_deform(const tidora_element* elements, size_t element_count, const tidora_nodes* nodes,
                  const tidora_layers* layers, const tidora_deform_options* options, const tidora_displacement* out,
                  tidora_error* error) {
    return tidora::api::Guarded(
        error, [&] { return tidora::api::Deform(elements, element_count, nodes, layers, options, out); });
}

int tidora_shares(int32_t sharing, const double* times, size_t count, const double* lag, const double* duration,
                  size_t element_count, float* shares, tidora_error* error) {
    return tidora::api::Guarded(
        error, [&] { return tidora::api::Shares(sharing, times, count, lag, duration, element_count, shares); });
}
