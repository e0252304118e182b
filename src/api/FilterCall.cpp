// tidora_filter: arguments are checked here, and only here.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "api/Calls.h"
#include "grid/GridShape.h"
#include "grid/Transpose.h"
#include "kajiura/ConvergedFilter.h"
#include "kajiura/KajiuraFilter.h"
#include "tidora/tidora.h"

namespace tidora::api {
namespace {

constexpr double kPole = 90.0;

RegularGrid GridOf(const tidora_field_grid& grid, const char* argument, bool isGeographic) {
    Require(grid.nx > 0 && grid.ny > 0, argument, "has no nodes");
    static_cast<void>(CountOf(grid.nx, grid.ny, argument));
    Require(std::isfinite(grid.west) && std::isfinite(grid.south), argument, "has an origin that is not finite");
    Require(grid.spacing > 0.0 && std::isfinite(grid.spacing), argument, "has no spacing above 0");
    const double north = grid.south + static_cast<double>(grid.ny - 1) * grid.spacing;
    // A thousandth of a spacing for the rounding of sums.
    const double most = kPole + 1.0e-3 * grid.spacing;
    Require(!isGeographic || (grid.south >= -most && north <= most), argument, "goes beyond a pole");
    return {grid.nx, grid.ny, grid.west, grid.south, grid.spacing};
}

/// The grid as a run has it.
GridShape ShapeOf(const RegularGrid& grid, const char* argument) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    Require(grid.nx <= kMost && grid.ny <= kMost && grid.nx * grid.ny <= kMost, argument,
            "has 2^31 nodes or more, which the program's filter does not take");
    const auto spacing = static_cast<float>(grid.spacing);
    Require(spacing > 0.0F && std::isfinite(spacing), argument, "has a spacing beyond single precision");
    return {static_cast<int>(grid.nx), static_cast<int>(grid.ny), grid.west, grid.south, spacing};
}

struct FilterTask {
    RegularGrid grid;
    std::optional<RegularGrid> parent;
    const float *topography, *parentUplift;
    bool isGeographic;
    int threads;
    ProgressCallback progress;
};

/// Shares parts of one layer out to threads. False when the work was cancelled.
bool ForEachPart(const FilterTask& task, std::size_t layer, std::size_t layers, std::size_t parts,
                 const std::function<void(std::size_t)>& take) {
    ProgressCallback progress;
    if (task.progress) {
        progress = [&task, layer, layers](double fraction) {
            return task.progress((static_cast<double>(layer) + fraction) / static_cast<double>(layers));
        };
    }
    WorkBoard board(parts, std::move(progress));
    const int threads = static_cast<int>(std::min(parts, static_cast<std::size_t>(ThreadCount(task.threads))));
    RunTeam(threads, board, [&] {
        for (std::size_t part = 0; board.Take(part);) {
            take(part);
            board.Poll(1.0);
        }
    });
    return !board.IsCancelled();
}

bool FilterConverged(const FilterTask& task, std::size_t layers, const float* uplift, float* surface) {
    const std::size_t size = task.grid.nx * task.grid.ny;
    const std::size_t parentSize = task.parent ? task.parent->nx * task.parent->ny : 0;
    for (std::size_t layer = 0; layer < layers; ++layer) {
        const float* const own = uplift + layer * size;
        const UpliftTable table(task.grid, own);
        std::optional<UpliftTable> parent;
        if (task.parent) {
            parent.emplace(*task.parent, task.parentUplift + layer * parentSize);
        }
        const ConvergedFilter filter(table, parent ? &*parent : nullptr, task.isGeographic);
        const bool isDone = ForEachPart(task, layer, layers, task.grid.ny, [&](std::size_t row) {
            filter.FilterRows(row, row + 1, own, task.topography, surface + layer * size);
        });
        if (!isDone) {
            return false;
        }
    }
    return true;
}

/// A row-major field as columns.
std::vector<float> ColumnsOf(const float* rows, const RegularGrid& grid) {
    std::vector<float> columns(grid.nx * grid.ny);
    Transpose(rows, grid.ny, grid.nx, grid.nx, columns.data());
    return columns;
}

bool FilterAsProgram(const FilterTask& task, std::size_t layers, const float* uplift, float* surface) {
    constexpr std::size_t kColumns = 4;  // of a part
    const GridShape shape = ShapeOf(task.grid, "grid");
    const std::size_t size = shape.Size();
    const std::vector<float> topography = ColumnsOf(task.topography, task.grid);
    for (std::size_t layer = 0; layer < layers; ++layer) {
        const std::vector<float> own = ColumnsOf(uplift + layer * size, task.grid);
        std::vector<float> parentValues;
        std::optional<SampledGrid> parent;
        if (task.parent) {
            const GridShape parentShape = ShapeOf(*task.parent, "options.parent");
            parentValues = ColumnsOf(task.parentUplift + layer * parentShape.Size(), *task.parent);
            parent = {parentShape, parentValues.data()};
        }
        std::vector<float> result = own;
        const ProgramFilter filter({shape, own.data()}, parent ? &*parent : nullptr);
        const std::size_t parts = (task.grid.nx + kColumns - 1) / kColumns;
        const bool isDone = ForEachPart(task, layer, layers, parts, [&](std::size_t part) {
            const std::size_t first = part * kColumns, end = std::min(task.grid.nx, first + kColumns);
            filter.FilterColumns(static_cast<int>(first), static_cast<int>(end), topography.data(), result.data());
        });
        if (!isDone) {
            return false;
        }
        Transpose(result.data(), task.grid.nx, task.grid.ny, task.grid.ny, surface + layer * size);
    }
    return true;
}

int Filter(const tidora_field_grid* grid, const float* topography, std::size_t layers, const float* uplift,
           const tidora_filter_options* options, float* surface) {
    const tidora_filter_options o = Taken(options, "options");
    Require(o.coordinates == TIDORA_PLANE || o.coordinates == TIDORA_GEOGRAPHIC, "options.coordinates",
            "are neither plane nor geographic");
    Require(o.kernel == TIDORA_KERNEL_CONVERGED || o.kernel == TIDORA_KERNEL_PROGRAM, "options.kernel",
            "is none of the kernels");
    Require(o.threads >= 0, "options.threads", "is below 0");
    Require(o.reserved == 0, "options.reserved", "is not 0");
    const bool isGeographic = o.coordinates == TIDORA_GEOGRAPHIC;
    const bool isConverged = o.kernel == TIDORA_KERNEL_CONVERGED;
    FilterTask task = {GridOf(Taken(grid, "grid"), "grid", isGeographic),
                       std::nullopt,
                       topography,
                       o.parent_uplift,
                       isGeographic,
                       o.threads,
                       ProgressOf(o.progress, o.user)};
    const std::size_t size = task.grid.nx * task.grid.ny;
    const std::size_t all = CountOf(size, layers, "layers");
    Require(topography != nullptr, "topography", "is null");
    Require(uplift != nullptr || layers == 0, "uplift", "is null");
    Require(surface != nullptr || layers == 0, "surface", "is null");
    Require((o.parent == nullptr) == (o.parent_uplift == nullptr), "options.parent",
            "and options.parent_uplift are given together or not at all");
    if (o.parent != nullptr) {
        task.parent = GridOf(Taken(o.parent, "options.parent"), "options.parent", isGeographic);
        const std::size_t parentSize = CountOf(task.parent->nx * task.parent->ny, layers, "options.parent");
        if (isConverged) {
            RequireFinite(o.parent_uplift, parentSize, "options.parent_uplift");
        }
    }
    if (isConverged) {
        RequireFinite(topography, size, "topography");
        RequireFinite(uplift, all, "uplift");
        return FilterConverged(task, layers, uplift, surface) ? TIDORA_OK : TIDORA_CANCELLED;
    }
    return FilterAsProgram(task, layers, uplift, surface) ? TIDORA_OK : TIDORA_CANCELLED;
}

}  // namespace
}  // namespace tidora::api

int tidora_filter(const tidora_field_grid* grid, const float* topography, size_t layers, const float* uplift,
                  const tidora_filter_options* options, float* surface, tidora_error* error) {
    return tidora::api::Guarded(
        error, [&] { return tidora::api::Filter(grid, topography, layers, uplift, options, surface); });
}
