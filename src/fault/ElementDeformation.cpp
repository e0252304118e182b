#include "fault/ElementDeformation.h"

#include <algorithm>
#include <cmath>

#include "okada/SurfaceBatch.h"

namespace tidora {
namespace {

/// Points that wait before a source is evaluated: enough for full vectors, few enough for the first-level cache.
constexpr std::size_t kQueueLength = 1024;
/// A column of fewer points waits for others: it would leave lanes empty.
constexpr std::size_t kWholeColumn = 64;

/// Slope -d(topography)/ds along one axis: central, one-sided at the ends, 0 where the axis has one point.
/// here: the value at index `at` of `count`; step: positions from one index to the next. Single precision throughout.
float Slope(const float* here, int at, int count, std::ptrdiff_t step, float dx) noexcept {
    if (count < 2) {
        return 0.0F;
    }
    if (at == 0) {
        return -(here[step] - here[0]) / dx;
    }
    if (at == count - 1) {
        return -(here[0] - here[-step]) / dx;
    }
    return -(here[step] - here[-step]) / (2.0F * dx);
}

}  // namespace

ElementDeformation::ElementDeformation(const FAULT_PARAM& element, std::size_t elementCount,
                                       const DeformSettings& settings, const DeformedGrid& grid)
    : m_element(element),
      m_settings(settings),
      m_grid(grid),
      m_slip(MakeElementSource(element, settings.alpha)),
      m_reach(MakeSourceReach(element, m_slip, settings.tolerance, elementCount)),
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

float ElementDeformation::Evaluate(GridPlane& plane, const PlanePoint& origin, const GridWindow& window,
                                   ElementFields& fields) {
    fields.window = window;
    fields.vertical.assign(window.Columns() * window.Rows(), 0.0F);
    fields.horizontal.assign(m_settings.withHorizontal ? fields.vertical.size() : 0, 0.0F);
    if (window.IsEmpty()) {
        return 0.0F;
    }
    m_finite.Resize(kQueueLength);
    m_point.Resize(kQueueLength);
    ColumnPlaces places;
    for (int ix = window.firstColumn; ix < window.endColumn; ++ix) {
        plane.FillColumn(ix, window, places);
        PlaceColumn(places, origin);
        SortColumn(ix, window, places);
        if (m_finiteInColumn == window.Rows() && m_finiteInColumn >= kWholeColumn) {
            EvaluateColumn(ix, fields);
        } else {
            Queue(ix, fields);
        }
    }
    Flush(m_finite, m_finiteCount, true, fields);
    Flush(m_point, m_pointCount, false, fields);
    return m_largest;
}

void ElementDeformation::Points::Resize(std::size_t count) {
    x.resize(count);
    y.resize(count);
    depth.resize(count);
    row.resize(count);
    column.resize(count);
}

/// Co-ordinates of a column in the frame of the element and relative to its centroid. Differences are formed in double
/// and rounded; the rotation and the distance are single on purpose, as the arguments of the dislocations are.
void ElementDeformation::PlaceColumn(const ColumnPlaces& places, const PlanePoint& origin) {
    const std::size_t count = places.x.size();
    for (std::vector<float>* values : {&m_x, &m_y, &m_centroidX, &m_centroidY, &m_distance}) {
        values->resize(count);
    }
    const float sine = m_slip.sinTheta;
    const float cosine = m_slip.cosTheta;
    const double halfLength = m_slip.length / 2.0;
    const double halfWidth = m_slip.cosDip * m_slip.width / 2.0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto east = static_cast<float>(places.x[i] - origin.x);
        const auto north = static_cast<float>(places.y[i] - origin.y);
        m_x[i] = cosine * east - sine * north;
        m_y[i] = sine * east + cosine * north;
        m_centroidX[i] = static_cast<float>(static_cast<double>(m_x[i]) - halfLength);
        m_centroidY[i] = static_cast<float>(static_cast<double>(m_y[i]) + halfWidth);
        m_distance[i] = std::sqrt(m_centroidX[i] * m_centroidX[i] + m_centroidY[i] * m_centroidY[i]);
    }
}

/// Decides for each point of a column which source it needs, in the order of the layout.
void ElementDeformation::SortColumn(int ix, const GridWindow& window, const ColumnPlaces& places) {
    const std::size_t count = places.x.size();
    m_source.resize(count);
    m_edgeDepth.resize(count);
    m_centroidDepth.resize(count);
    m_finiteInColumn = 0;
    const float* const topo = m_grid.topo + m_grid.Index(ix, window.firstRow);
    const double toCentroid = m_slip.sinDip * m_slip.width / 2.0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool hasPlace = std::isfinite(places.x[i]) && std::isfinite(places.y[i]);
        if (places.isNear[i] == 0 || !hasPlace || m_distance[i] > m_reach.point) {
            m_source[i] = Source::None;
            continue;
        }
        // Formed before the depth is replaced, on purpose: it is that of the point evaluated before this one.
        // Test: "the centroid depth of a point is that of the point evaluated before it".
        m_centroidDepth[i] = static_cast<float>(m_depth + toCentroid);
        if (m_depthFromGrid) {
            m_depth = std::max(0.0, static_cast<double>(topo[i]) + m_element.baseOffset);
        }
        m_edgeDepth[i] = static_cast<float>(m_depth);
        const bool isFinite = !m_reach.isSwitched || m_distance[i] <= m_reach.finite;
        m_source[i] = isFinite ? Source::Finite : Source::Point;
        m_finiteInColumn += isFinite ? 1 : 0;
    }
}

/// A column of finite sources throughout is evaluated where it stands.
void ElementDeformation::EvaluateColumn(int ix, ElementFields& fields) {
    const std::size_t count = fields.window.Rows();
    float* const vertical = fields.vertical.data() + fields.ColumnStart(ix);
    Displace(true, {count, m_x.data(), m_y.data(), m_edgeDepth.data()}, vertical);
    for (std::size_t i = 0; i < count; ++i) {
        m_largest = std::max(m_largest, vertical[i]);
    }
    if (m_settings.withHorizontal) {
        float* const horizontal = fields.horizontal.data() + fields.ColumnStart(ix);
        for (std::size_t i = 0; i < count; ++i) {
            horizontal[i] = UpliftFromHorizontal(ix, fields.window.firstRow + static_cast<int>(i), m_ux[i], m_uy[i]);
        }
    }
}

/// Hands the points of a column to the queue of the source that they need.
void ElementDeformation::Queue(int ix, ElementFields& fields) {
    for (std::size_t i = 0; i < m_source.size(); ++i) {
        if (m_source[i] == Source::None) {
            continue;
        }
        const bool isFinite = m_source[i] == Source::Finite;
        Points& points = isFinite ? m_finite : m_point;
        std::size_t& count = isFinite ? m_finiteCount : m_pointCount;
        points.x[count] = isFinite ? m_x[i] : m_centroidX[i];
        points.y[count] = isFinite ? m_y[i] : m_centroidY[i];
        points.depth[count] = isFinite ? m_edgeDepth[i] : m_centroidDepth[i];
        points.column[count] = ix;
        points.row[count] = fields.window.firstRow + static_cast<int>(i);
        if (++count == kQueueLength) {
            Flush(points, count, isFinite, fields);
        }
    }
}

/// Evaluates the points of a queue, puts the results into the fields and empties the queue.
void ElementDeformation::Flush(Points& points, std::size_t& count, bool isFinite, ElementFields& fields) {
    m_uz.resize(kQueueLength);
    Displace(isFinite, {count, points.x.data(), points.y.data(), points.depth.data()}, m_uz.data());
    for (std::size_t i = 0; i < count; ++i) {
        const int ix = points.column[i];
        const int iy = points.row[i];
        const std::size_t at = fields.ColumnStart(ix) + static_cast<std::size_t>(iy - fields.window.firstRow);
        fields.vertical[at] = m_uz[i];
        m_largest = std::max(m_largest, m_uz[i]);
        if (m_settings.withHorizontal) {
            fields.horizontal[at] = UpliftFromHorizontal(ix, iy, m_ux[i], m_uy[i]);
        }
    }
    count = 0;
}

/// Displacements of points: the vertical ones into `uz`, the horizontal ones into m_ux and m_uy when they are wanted.
// NOLINTNEXTLINE(readability-non-const-parameter): written through the record of outputs.
void ElementDeformation::Displace(bool isFinite, const SurfacePoints& points, float* uz) {
    SurfaceDisplacements u = {nullptr, nullptr, uz};
    if (m_settings.withHorizontal) {
        m_ux.resize(std::max(m_ux.size(), points.count));
        m_uy.resize(std::max(m_uy.size(), points.count));
        u.ux = m_ux.data();
        u.uy = m_uy.data();
    }
    if (isFinite) {
        FiniteSurfaceBatch(FiniteSourceOf(m_slip), points, u);
    } else {
        PointSurfaceBatch(PointSourceOf(m_slip), points, u);
    }
}

/// Uplift at a point at rest by the sloping floor that moves below it; 0 in shallow water and on land.
float ElementDeformation::UpliftFromHorizontal(int ix, int iy, float ux, float uy) const noexcept {
    const float* const here = m_grid.topo + m_grid.Index(ix, iy);
    if (!(*here < -m_settings.horzMinDepth)) {
        return 0.0F;
    }
    const float gx = Slope(here, ix, m_grid.nx, m_grid.ny, m_grid.dx);
    const float gy = Slope(here, iy, m_grid.ny, 1, m_grid.dx);
    const float east = m_slip.cosTheta * ux + m_slip.sinTheta * uy;
    const float north = -m_slip.sinTheta * ux + m_slip.cosTheta * uy;
    return east * gx + north * gy;
}

}  // namespace tidora
