#pragma once

#include <cstddef>
#include <vector>

#include "deform/ColumnPasses.h"
#include "deform/EdgeDepths.h"
#include "deform/ElementSource.h"
#include "deform/GridPlane.h"
#include "deform/SourceRuns.h"
#include "grid/GridShape.h"
#include "okada/batch/SurfaceBatch.h"

namespace tidora {

/// The sea floor that is deformed. Does not own the topography.
struct SeaFloor {
    GridShape grid;
    const float* topography = nullptr;  ///< nx * ny values, m, negative below sea level, index ix * ny + iy
};

/// The uplift by horizontal motion of slopes.
struct SlopeTerm {
    bool isOn = false;
    float leastDepth = 0.0F;  ///< it acts where the topography is below minus this, m
};

/// One interval's share of an element's slip, and the snapshots that take it, values of the whole grid.
struct IntervalShare {
    float share;
    float* vertical;
    float* horizontal;  ///< null when the slope term is off
};

/// Work space of the deformation, kept from element to element: one block of points of a column.
struct ElementBuffers {
    static constexpr std::size_t kPoints = 1024;  ///< eleven arrays of 4 KB: they stay in the first-level cache

    /// Points of short stretches that wait for one kind of source, as it takes them, and where they lie in the grid.
    struct Queue {
        float x[kPoints], y[kPoints], depth[kPoints];
        std::size_t at[kPoints];
        std::size_t count = 0;
    };

    float x[kPoints], y[kPoints];                                            ///< in the frame of the element
    float centroidX[kPoints], centroidY[kPoints], squaredDistance[kPoints];  ///< from its centroid
    SourceKind kinds[kPoints];
    float depth[kPoints];
    float ux[kPoints], uy[kPoints], uz[kPoints], uplift[kPoints];
    Queue finite, point;
};

/// One element over the points of a grid within its reach. Points are taken column by column from its window; each
/// stretch of them that takes one kind of source is evaluated where it stands and added to the snapshots at once, so
/// that the work follows the reach of the element and not the size of the grid.
class ElementDeformation {
public:
    ElementDeformation(const ElementSource& source, const SourceReach& reach, const ElementDepth& depth,
                       const SlopeTerm& slope, const SeaFloor& floor, ElementBuffers& buffers) noexcept;

    /// Adds the element to the snapshots of `shares` over `window`, which holds every point within reach, and returns
    /// the largest vertical displacement, at least 0. `plane` has been turned to this element, whose reference point
    /// lies at `origin` there.
    float AddTo(const std::vector<IntervalShare>& shares, GridPlane& plane, const PlanePoint& origin,
                const GridWindow& window);

private:
    /// Points of one column, next to each other.
    struct Stretch {
        int ix, firstRow;
        std::size_t count;
        std::size_t at;  ///< index of the first one in the grid
    };

    [[nodiscard]] static Stretch Part(const Stretch& whole, std::size_t begin, std::size_t end) noexcept;
    void AddBlock(const Stretch& block, bool isAllFinite, const std::uint8_t* isNear);
    void AddRun(const Stretch& stretch, const SourceRun& run);
    void Enqueue(const Stretch& stretch, const SourceRun& run, const float* depth);
    void Flush(ElementBuffers::Queue& queue, SourceKind kind);
    void Displace(SourceKind kind, const SurfacePoints& points);
    void AddStretch(const Stretch& stretch, std::size_t from);
    void UpliftBySlope(const Stretch& stretch, std::size_t from);

    const ElementSource& m_source;
    SourceLimits m_limits;
    EdgeDepths m_depths;
    SlopeTerm m_slope;
    const SeaFloor& m_floor;
    ElementBuffers& m_buffers;
    const ColumnPasses& m_passes;
    const std::vector<IntervalShare>* m_shares = nullptr;
    float m_largest = 0.0F;
};

}  // namespace tidora
