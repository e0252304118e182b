#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "deform/ColumnKernels.h"
#include "deform/DeformedGrid.h"
#include "deform/ElementSource.h"
#include "deform/GridPlane.h"
#include "fault/Fault.h"
#include "okada/batch/SurfaceBatch.h"

namespace tidora {

/// What holds for every element of one deformation.
struct DeformSettings {
    float alpha = 0.0F;         ///< (lambda + mu) / (lambda + 2 mu)
    float horzMinDepth = 0.0F;  ///< m
    double tolerance = 0.0;     ///< m
    bool withHorizontal = false;
};

/// One interval's share of an element's slip, and the snapshots that take it, values of the whole grid.
struct IntervalShare {
    float share;
    float* vertical;
    float* horizontal;  ///< null when the slope term is off
};

/// Work space of the deformation, kept from element to element.
class ElementBuffers {
public:
    static constexpr std::size_t kPoints = 1024;  ///< evaluated together: they stay in the first-level cache

    enum class Source : std::uint8_t { None, Finite, Point };
    /// Points that wait for one kind of source.
    struct Queue {
        std::vector<float> x, y, depth;  ///< as the source takes them
        std::vector<std::size_t> at;     ///< index in the grid
        std::size_t count = 0;

        Queue() : x(kPoints), y(kPoints), depth(kPoints), at(kPoints) {}
    };

    // Points of one column: co-ordinates in the frame of the element, what each point needs, and what comes out.
    std::vector<float> x, y, centroidX, centroidY, distance, edgeDepth, centroidDepth, ux, uy, uz, uplift;
    std::vector<Source> source;
    Queue finite, point;

    ElementBuffers() : source(kPoints) {
        for (std::vector<float>* values :
             {&x, &y, &centroidX, &centroidY, &distance, &edgeDepth, &centroidDepth, &ux, &uy, &uz, &uplift}) {
            values->resize(kPoints);
        }
    }
};

/// One element over the points of a grid within its reach. Points are taken from the columns of its window, evaluated
/// many at a time and added to the snapshots at once, so that the work follows the reach of the element and not the
/// size of the grid.
class ElementDeformation {
public:
    ElementDeformation(const FAULT_PARAM& element, std::size_t elementCount, const DeformSettings& settings,
                       const DeformedGrid& grid, ElementBuffers& buffers);

    [[nodiscard]] const SourceReach& Reach() const noexcept { return m_reach; }
    [[nodiscard]] ElementPlace Place() const noexcept;

    /// Adds the element to the snapshots of `shares` over `window`, which holds every point within reach, and returns
    /// the largest vertical displacement, at least 0. `plane` has been turned to this element and `origin` is its
    /// reference point there.
    float AddTo(const std::vector<IntervalShare>& shares, GridPlane& plane, const PlanePoint& origin,
                const GridWindow& window);

private:
    using Buffers = ElementBuffers;

    /// Points of one column, next to each other.
    struct Block {
        int ix, firstRow;
        std::size_t count;
        std::size_t at;  ///< index of the first one in the grid
    };

    [[nodiscard]] double EdgeDepth(std::size_t at) const noexcept;
    void SortPoints(const Block& block, const std::uint8_t* isNear);
    void AddBlock(const Block& block);
    void QueuePoints(const Block& block);
    void Flush(Buffers::Queue& queue, bool isFinite);
    void Displace(bool isFinite, const SurfacePoints& points);
    void UpliftBySlope(int ix, int firstRow, const float* ux, const float* uy, std::size_t count, float* uplift) const;

    const FAULT_PARAM& m_element;
    const DeformSettings& m_settings;
    const DeformedGrid& m_grid;
    Buffers& m_buffers;
    const ColumnKernels& m_kernels;
    const std::vector<IntervalShare>* m_shares = nullptr;
    ElementSource m_slip;
    SourceReach m_reach;
    RectangleSource m_finiteSource;
    PointShearSource m_pointSource;
    bool m_depthFromGrid;  ///< of several elements, each takes its depth from the topography
    double m_depth;        ///< depth of the upper edge at the point evaluated last, m
    float m_largest = 0.0F;
};

}  // namespace tidora
