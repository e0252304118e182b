#include "deform/ElementDeformation.h"

#include <algorithm>

namespace tidora {
namespace {

/// A shorter stretch waits for others: setting up a source costs as much as some ten points, and the last vector of
/// every call is on average half empty.
constexpr std::size_t kLongStretch = 32;

}  // namespace

ElementDeformation::ElementDeformation(const ElementSource& source, const SourceReach& reach, const ElementDepth& depth,
                                       const SlopeTerm& slope, const SeaFloor& floor, ElementBuffers& buffers) noexcept
    : m_source(source),
      m_limits(LimitsOf(reach)),
      m_depths(depth, source.CentroidBelowEdge()),
      m_slope(slope),
      m_floor(floor),
      m_buffers(buffers),
      m_passes(DispatchedKernels<ColumnPassesOf>()) {}

float ElementDeformation::AddTo(const std::vector<IntervalShare>& shares, GridPlane& plane, const PlanePoint& origin,
                                const GridWindow& window) {
    m_shares = &shares;
    ElementBuffers& b = m_buffers;
    const ElementFrame frame = {origin.x,
                                origin.y,
                                m_source.sinTheta,
                                m_source.cosTheta,
                                m_source.CentroidAlongStrike(),
                                m_source.CentroidToRight()};
    const float finiteLimit = FiniteLimitOf(m_limits);
    for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
        const ColumnPlaces places = plane.Column(ix, window);
        for (std::size_t from = 0; from < window.Rows(); from += ElementBuffers::kPoints) {
            const int firstRow = window.firstRow + static_cast<int>(from);
            const Stretch block = {ix, firstRow, std::min(ElementBuffers::kPoints, window.Rows() - from),
                                   m_floor.grid.Index(ix, firstRow)};
            const std::size_t within = m_passes.place(frame, places.x + from, places.y + from, block.count, finiteLimit,
                                                      {b.x, b.y, b.centroidX, b.centroidY, b.squaredDistance});
            AddBlock(block, within == block.count, places.isNear == nullptr ? nullptr : places.isNear + from);
        }
    }
    Flush(b.finite, SourceKind::Finite);
    Flush(b.point, SourceKind::Point);
    return m_largest;
}

/// Cuts a block into stretches of one kind of source. isNear: null when all points are.
void ElementDeformation::AddBlock(const Stretch& block, bool isAllFinite, const std::uint8_t* isNear) {
    if (isNear == nullptr && isAllFinite) {
        AddRun(block, {SourceKind::Finite, 0, block.count});
        return;
    }
    m_passes.sort(m_limits, m_buffers.squaredDistance, isNear, block.count, m_buffers.kinds);
    ForEachRun(m_buffers.kinds, block.count,
               [&](const SourceRun& run) { AddRun(Part(block, run.begin, run.end), run); });
}

ElementDeformation::Stretch ElementDeformation::Part(const Stretch& whole, std::size_t begin,
                                                     std::size_t end) noexcept {
    return {whole.ix, whole.firstRow + static_cast<int>(begin), end - begin, whole.at + begin};
}

/// The points of a run, which are those of `stretch`, in their order: the depth of a centre depends on it.
void ElementDeformation::AddRun(const Stretch& stretch, const SourceRun& run) {
    ElementBuffers& b = m_buffers;
    m_depths.Fill(run.kind, m_floor.topography + stretch.at, stretch.count, b.depth);
    if (stretch.count < kLongStretch) {
        Enqueue(stretch, run, b.depth);
        return;
    }
    const bool isFinite = run.kind == SourceKind::Finite;
    Displace(run.kind, {stretch.count, (isFinite ? b.x : b.centroidX) + run.begin,
                        (isFinite ? b.y : b.centroidY) + run.begin, b.depth});
    m_largest = m_passes.largest(b.uz, stretch.count, m_largest);
    AddStretch(stretch, 0);
}

/// Hands the points of a short run to the queue of the source that they take.
void ElementDeformation::Enqueue(const Stretch& stretch, const SourceRun& run, const float* depth) {
    ElementBuffers& b = m_buffers;
    const bool isFinite = run.kind == SourceKind::Finite;
    ElementBuffers::Queue& queue = isFinite ? b.finite : b.point;
    if (queue.count + stretch.count > ElementBuffers::kPoints) {
        Flush(queue, run.kind);
    }
    std::copy_n((isFinite ? b.x : b.centroidX) + run.begin, stretch.count, queue.x + queue.count);
    std::copy_n((isFinite ? b.y : b.centroidY) + run.begin, stretch.count, queue.y + queue.count);
    std::copy_n(depth, stretch.count, queue.depth + queue.count);
    for (std::size_t i = 0; i < stretch.count; ++i) {
        queue.at[queue.count + i] = stretch.at + i;
    }
    queue.count += stretch.count;
}

/// Evaluates the points of a queue, adds the results to the snapshots and empties the queue.
void ElementDeformation::Flush(ElementBuffers::Queue& queue, SourceKind kind) {
    if (queue.count == 0) {
        return;
    }
    Displace(kind, {queue.count, queue.x, queue.y, queue.depth});
    m_largest = m_passes.largest(m_buffers.uz, queue.count, m_largest);
    const auto ny = static_cast<std::size_t>(m_floor.grid.ny);
    for (std::size_t begin = 0; begin < queue.count;) {
        // Points that follow each other in one column are one stretch again.
        const std::size_t row = queue.at[begin] % ny;
        std::size_t end = begin + 1;
        while (end < queue.count && queue.at[end] == queue.at[begin] + (end - begin) && row + (end - begin) < ny) {
            ++end;
        }
        const auto ix = static_cast<int>(queue.at[begin] / ny);
        AddStretch({ix, static_cast<int>(row), end - begin, queue.at[begin]}, begin);
        begin = end;
    }
    queue.count = 0;
}

/// Displacements of points: the vertical ones, and the horizontal ones when they are wanted.
void ElementDeformation::Displace(SourceKind kind, const SurfacePoints& points) {
    ElementBuffers& b = m_buffers;
    const SurfaceDisplacements u = {m_slope.isOn ? b.ux : nullptr, m_slope.isOn ? b.uy : nullptr, b.uz};
    if (kind == SourceKind::Finite) {
        FiniteSurfaceBatch(m_source.finite, points, u);
    } else {
        PointSurfaceBatch(m_source.point, points, u);
    }
}

/// Adds the displacements from number `from` on to the snapshots, each interval its share.
void ElementDeformation::AddStretch(const Stretch& stretch, std::size_t from) {
    if (m_slope.isOn) {
        UpliftBySlope(stretch, from);
    }
    for (const IntervalShare& interval : *m_shares) {
        m_passes.add(interval.share, m_buffers.uz + from, stretch.count, interval.vertical + stretch.at);
        if (m_slope.isOn) {
            m_passes.add(interval.share, m_buffers.uplift + from, stretch.count, interval.horizontal + stretch.at);
        }
    }
}

/// The slope term of a stretch, from the displacements from number `from` on.
void ElementDeformation::UpliftBySlope(const Stretch& stretch, std::size_t from) {
    const GridShape& grid = m_floor.grid;
    const float* const here = m_floor.topography + stretch.at;
    const bool hasBefore = stretch.ix > 0;
    const bool hasAfter = stretch.ix + 1 < grid.nx;
    const SlopedColumn column = {here,
                                 hasBefore ? here - grid.ny : here,
                                 hasAfter ? here + grid.ny : here,
                                 !hasBefore && !hasAfter,
                                 hasBefore && hasAfter ? 2.0F * grid.dx : grid.dx,
                                 stretch.firstRow,
                                 grid.ny,
                                 grid.dx,
                                 -m_slope.leastDepth,
                                 m_source.sinTheta,
                                 m_source.cosTheta};
    m_passes.upliftBySlope(column, m_buffers.ux + from, m_buffers.uy + from, stretch.count, m_buffers.uplift + from);
}

}  // namespace tidora
