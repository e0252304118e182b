#include "kajiura/KajiuraFilter.h"

#include <cstddef>
#include <memory>
#include <optional>

#include "kajiura/Disc.h"
#include "kajiura/FilterKernels.h"
#include "kajiura/UpliftMap.h"

namespace tidora {

/// Tells which discs have nothing to sum.
class ProgramFilter::FlatDiscs {
public:
    FlatDiscs(const SampledGrid& own, const SampledGrid* parent) : m_own(own) {
        if (parent != nullptr) {
            m_parent.emplace(*parent);
        }
    }

    [[nodiscard]] bool IsOwnFinite() const noexcept { return m_own.IsFinite(); }

    /// True if the filter turns the point to +0.
    [[nodiscard]] bool Has(const FilterPoint& point) const noexcept {
        return point.disc.hasFiniteKernel && !m_own.MayHaveUplift(point.x, point.y, point.disc.radius) &&
               !(m_parent && m_parent->MayHaveUplift(point.x, point.y, point.disc.radius));
    }

private:
    UpliftMap m_own;
    std::optional<UpliftMap> m_parent;
};

namespace {

/// Gathers points into blocks, filters them and puts them where they belong.
class FilterQueue {
public:
    FilterQueue(const UpliftGrids& grids, float* result) : m_grids(grids), m_result(result) {}

    void Add(const FilterPoint& point, std::size_t at) {
        m_points[m_count] = point;
        m_at[m_count++] = at;
        if (m_count == kFilterBlock) {
            Flush();
        }
    }

    void Flush() {
        if (m_count == 0) {
            return;
        }
        float filtered[kFilterBlock];
        m_kernels.filterPoints(m_grids, m_points, m_count, *m_work, filtered);
        for (int p = 0; p < m_count; ++p) {
            m_result[m_at[p]] = filtered[p];
        }
        m_count = 0;
    }

private:
    const FilterKernels& m_kernels = DispatchedKernels<FilterKernelsOf>();
    UpliftGrids m_grids;
    float* m_result;
    std::unique_ptr<FilterWork> m_work = std::make_unique<FilterWork>();  // 81 kB: too much for some threads' stacks
    FilterPoint m_points[kFilterBlock] = {};
    std::size_t m_at[kFilterBlock] = {};
    int m_count = 0;
};

}  // namespace

ProgramFilter::ProgramFilter(const SampledGrid& uplift, const SampledGrid* parent)
    : m_uplift(uplift), m_hasParent(parent != nullptr) {
    if (parent != nullptr) {
        m_parent = *parent;
    }
    if (uplift.shape.Size() > 0) {
        m_flat = std::make_unique<const FlatDiscs>(uplift, parent);
    }
}

ProgramFilter::~ProgramFilter() = default;

void ProgramFilter::FilterColumns(int first, int end, const float* topography, float* result) const {
    if (m_flat == nullptr) {
        return;
    }
    const GridShape& shape = m_uplift.shape;
    FilterQueue queue({m_uplift, m_hasParent ? &m_parent : nullptr, m_flat->IsOwnFinite()}, result);
    for (int ix = first; ix < end; ++ix) {
        for (int iy = 0; iy < shape.ny; ++iy) {
            const std::size_t at = shape.Index(ix, iy);
            if (!IsFiltered(topography[at])) {
                continue;
            }
            const FilterPoint point = {static_cast<float>(shape.X(ix)), static_cast<float>(shape.Y(iy)),
                                       DiscOf(-topography[at])};
            if (m_flat->Has(point)) {
                result[at] = 0.0F;
            } else {
                queue.Add(point, at);
            }
        }
    }
    queue.Flush();
}

void FilterUplift(const SampledGrid& uplift, const SampledGrid* parent, const float* topography, float* result) {
    ProgramFilter(uplift, parent).FilterColumns(0, uplift.shape.nx, topography, result);
}

}  // namespace tidora
