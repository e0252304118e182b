#include "deform/ElementDeformation.h"

#include <algorithm>
#include <cmath>

namespace tidora {
namespace {

/// A block of fewer points waits for others: it would leave lanes empty.
constexpr std::size_t kWholeBlock = 64;

}  // namespace

ElementDeformation::ElementDeformation(const FAULT_PARAM& element, std::size_t elementCount,
                                       const DeformSettings& settings, const DeformedGrid& grid,
                                       ElementBuffers& buffers)
    : m_element(element),
      m_settings(settings),
      m_grid(grid),
      m_buffers(buffers),
      m_kernels(ColumnKernelsOf(CurrentInstructionSet())),
      m_slip(MakeElementSource(element, settings.alpha)),
      m_reach(MakeSourceReach(element, m_slip, settings.tolerance, elementCount)),
      m_finiteSource(FiniteSourceOf(m_slip)),
      m_pointSource(PointSourceOf(m_slip)),
      m_depthFromGrid(elementCount > 1),
      m_depth(element.depth) {}

ElementPlace ElementDeformation::Place() const noexcept {
    // The centroid lies half a length along strike and half the horizontal part of the width to the right of it.
    const double along = m_slip.length / 2.0;
    const double left = -m_slip.cosDip * m_slip.width / 2.0;
    const auto sine = static_cast<double>(m_slip.sinTheta);
    const auto cosine = static_cast<double>(m_slip.cosTheta);
    const PlanePoint toCentroid = {cosine * along + sine * left, -sine * along + cosine * left};
    return {m_element, toCentroid, static_cast<double>(m_reach.point)};
}

float ElementDeformation::AddTo(const std::vector<IntervalShare>& shares, GridPlane& plane, const PlanePoint& origin,
                                const GridWindow& window) {
    m_shares = &shares;
    const ElementFrame frame = {
        origin.x, origin.y, m_slip.sinTheta, m_slip.cosTheta, m_slip.length / 2.0, m_slip.cosDip * m_slip.width / 2.0};
    const float finiteReach = m_reach.isSwitched ? std::min(m_reach.finite, m_reach.point) : m_reach.point;
    for (int ix = window.firstColumn; ix < window.endColumn && !window.IsEmpty(); ++ix) {
        const ColumnPlaces places = plane.Column(ix, window);
        for (std::size_t from = 0; from < window.Rows(); from += Buffers::kPoints) {
            const int firstRow = window.firstRow + static_cast<int>(from);
            const Block block = {ix, firstRow, std::min(Buffers::kPoints, window.Rows() - from),
                                 m_grid.Index(ix, firstRow)};
            const PlacedPoints placed = {m_buffers.x.data(), m_buffers.y.data(), m_buffers.centroidX.data(),
                                         m_buffers.centroidY.data(), m_buffers.distance.data()};
            const std::size_t within =
                m_kernels.place(frame, places.x + from, places.y + from, block.count, finiteReach, placed);
            if (places.isNear == nullptr && within == block.count && block.count >= kWholeBlock) {
                AddBlock(block);
            } else {
                SortPoints(block, places.isNear == nullptr ? nullptr : places.isNear + from);
                QueuePoints(block);
            }
        }
    }
    Flush(m_buffers.finite, true);
    Flush(m_buffers.point, false);
    return m_largest;
}

/// A block of finite sources throughout is evaluated where it stands.
void ElementDeformation::AddBlock(const Block& block) {
    Buffers& b = m_buffers;
    if (m_depthFromGrid) {
        m_kernels.edgeDepths(m_grid.topo + block.at, m_element.baseOffset, block.count, b.edgeDepth.data());
        m_depth = EdgeDepth(block.at + block.count - 1);
    } else {
        std::fill_n(b.edgeDepth.begin(), block.count, static_cast<float>(m_depth));
    }
    Displace(true, {block.count, b.x.data(), b.y.data(), b.edgeDepth.data()});
    m_largest = m_kernels.largest(b.uz.data(), block.count, m_largest);
    if (m_settings.withHorizontal) {
        UpliftBySlope(block.ix, block.firstRow, b.ux.data(), b.uy.data(), block.count, b.uplift.data());
    }
    for (const IntervalShare& interval : *m_shares) {
        m_kernels.add(interval.share, b.uz.data(), block.count, interval.vertical + block.at);
        if (m_settings.withHorizontal) {
            m_kernels.add(interval.share, b.uplift.data(), block.count, interval.horizontal + block.at);
        }
    }
}

/// Depth of the upper edge at a point of the grid, m, of several elements.
double ElementDeformation::EdgeDepth(std::size_t at) const noexcept {
    return std::max(0.0, static_cast<double>(m_grid.topo[at]) + m_element.baseOffset);
}

/// Decides for each point of a block which source it needs, in the order of the layout. isNear: null when all are.
void ElementDeformation::SortPoints(const Block& block, const std::uint8_t* isNear) {
    Buffers& b = m_buffers;
    const double toCentroid = m_slip.sinDip * m_slip.width / 2.0;
    for (std::size_t i = 0; i < block.count; ++i) {
        if ((isNear != nullptr && isNear[i] == 0) || b.distance[i] > m_reach.point) {
            b.source[i] = Buffers::Source::None;
            continue;
        }
        // Formed before the depth is replaced, on purpose: it is that of the point evaluated before this one.
        // Test: "the centroid depth of a point is that of the point evaluated before it".
        b.centroidDepth[i] = static_cast<float>(m_depth + toCentroid);
        if (m_depthFromGrid) {
            m_depth = EdgeDepth(block.at + i);
        }
        b.edgeDepth[i] = static_cast<float>(m_depth);
        const bool isFinite = !m_reach.isSwitched || b.distance[i] <= m_reach.finite;
        b.source[i] = isFinite ? Buffers::Source::Finite : Buffers::Source::Point;
    }
}

/// Hands the points of a block to the queue of the source that they need.
void ElementDeformation::QueuePoints(const Block& block) {
    const Buffers& b = m_buffers;
    for (std::size_t i = 0; i < block.count; ++i) {
        if (b.source[i] == Buffers::Source::None) {
            continue;
        }
        const bool isFinite = b.source[i] == Buffers::Source::Finite;
        Buffers::Queue& queue = isFinite ? m_buffers.finite : m_buffers.point;
        queue.x[queue.count] = isFinite ? b.x[i] : b.centroidX[i];
        queue.y[queue.count] = isFinite ? b.y[i] : b.centroidY[i];
        queue.depth[queue.count] = isFinite ? b.edgeDepth[i] : b.centroidDepth[i];
        queue.at[queue.count] = block.at + i;
        if (++queue.count == Buffers::kPoints) {
            Flush(queue, isFinite);
        }
    }
}

/// Evaluates the points of a queue, adds the results to the snapshots and empties the queue.
void ElementDeformation::Flush(Buffers::Queue& queue, bool isFinite) {
    const Buffers& b = m_buffers;
    Displace(isFinite, {queue.count, queue.x.data(), queue.y.data(), queue.depth.data()});
    m_largest = m_kernels.largest(b.uz.data(), queue.count, m_largest);
    const auto ny = static_cast<std::size_t>(m_grid.ny);
    for (std::size_t i = 0; m_settings.withHorizontal && i < queue.count; ++i) {
        const auto ix = static_cast<int>(queue.at[i] / ny);
        const auto iy = static_cast<int>(queue.at[i] % ny);
        UpliftBySlope(ix, iy, &b.ux[i], &b.uy[i], 1, &m_buffers.uplift[i]);
    }
    for (const IntervalShare& interval : *m_shares) {
        for (std::size_t i = 0; i < queue.count; ++i) {
            interval.vertical[queue.at[i]] += interval.share * b.uz[i];
        }
        for (std::size_t i = 0; m_settings.withHorizontal && i < queue.count; ++i) {
            interval.horizontal[queue.at[i]] += interval.share * b.uplift[i];
        }
    }
    queue.count = 0;
}

/// Displacements of points: the vertical ones, and the horizontal ones when they are wanted.
void ElementDeformation::Displace(bool isFinite, const SurfacePoints& points) {
    Buffers& b = m_buffers;
    const SurfaceDisplacements u = {m_settings.withHorizontal ? b.ux.data() : nullptr,
                                    m_settings.withHorizontal ? b.uy.data() : nullptr, b.uz.data()};
    if (isFinite) {
        FiniteSurfaceBatch(m_finiteSource, points, u);
    } else {
        PointSurfaceBatch(m_pointSource, points, u);
    }
}

/// The slope term at points of one column, from their displacements in the frame of the element.
void ElementDeformation::UpliftBySlope(int ix, int firstRow, const float* ux, const float* uy, std::size_t count,
                                       float* uplift) const {
    const float* const here = m_grid.topo + m_grid.Index(ix, firstRow);
    const bool hasBefore = ix > 0;
    const bool hasAfter = ix + 1 < m_grid.nx;
    const SlopedColumn column = {here,
                                 hasBefore ? here - m_grid.ny : here,
                                 hasAfter ? here + m_grid.ny : here,
                                 !hasBefore && !hasAfter,
                                 hasBefore && hasAfter ? 2.0F * m_grid.dx : m_grid.dx,
                                 firstRow,
                                 m_grid.ny,
                                 m_grid.dx,
                                 -m_settings.horzMinDepth,
                                 m_slip.sinTheta,
                                 m_slip.cosTheta};
    m_kernels.upliftBySlope(column, ux, uy, count, uplift);
}

}  // namespace tidora
