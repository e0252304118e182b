#include "deform/FloorSlopes.h"

#include "globe/Ellipsoid.h"

namespace tidora {
namespace {

/// The nodes on either side along an axis, or the node itself at an edge.
struct Neighbours {
    std::size_t before, after;
};

Neighbours Around(std::size_t at, std::size_t count) noexcept {
    return {at > 0 ? at - 1 : at, at + 1 < count ? at + 1 : at};
}

/// Less than this is no way along a parallel, m: rows at a pole are a point.
constexpr double kShortest = 1.0e-3;

}  // namespace

void FloorSlopes::Fill(const NodeTile& tile, float* slopeX, float* slopeY) const noexcept {
    tile.ForEach([&](std::size_t n, std::size_t column, std::size_t row) {
        const bool isDeep = m_nodes.topography[m_nodes.Index(column, row)] < -m_minDepth;
        slopeX[n] = isDeep ? Eastward(column, row) : 0.0F;
        slopeY[n] = isDeep ? Northward(column, row) : 0.0F;
    });
}

float FloorSlopes::Eastward(std::size_t column, std::size_t row) const noexcept {
    const auto [before, after] = Around(column, m_nodes.columns);
    if (before == after) {
        return 0.0F;
    }
    const float rise = m_nodes.topography[m_nodes.Index(after, row)] - m_nodes.topography[m_nodes.Index(before, row)];
    if (!m_isOnGlobe) {
        return -rise / (after - before == 2 ? 2.0F * m_spacing : m_spacing);
    }
    const double way = (m_nodes.x[after] - m_nodes.x[before]) * DegreeSizeAt(m_nodes.y[row]).east;
    return way > kShortest ? static_cast<float>(-static_cast<double>(rise) / way) : 0.0F;
}

float FloorSlopes::Northward(std::size_t column, std::size_t row) const noexcept {
    const auto [before, after] = Around(row, m_nodes.rows);
    if (before == after) {
        return 0.0F;
    }
    const float rise =
        m_nodes.topography[m_nodes.Index(column, after)] - m_nodes.topography[m_nodes.Index(column, before)];
    if (!m_isOnGlobe) {
        return -rise / (after - before == 2 ? 2.0F * m_spacing : m_spacing);
    }
    const double middle = 0.5 * (m_nodes.y[before] + m_nodes.y[after]);
    const double way = (m_nodes.y[after] - m_nodes.y[before]) * DegreeSizeAt(middle).north;
    return static_cast<float>(-static_cast<double>(rise) / way);
}

}  // namespace tidora
