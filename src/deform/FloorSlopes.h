#pragma once

#include <cstddef>

#include "deform/FramePlan.h"
#include "deform/Nodes.h"

namespace tidora {

/// The slopes of the sea floor at the nodes of a grid of equal spacing, with the sign that the uplift takes: -dh/de and
/// -dh/dn. Central differences, one-sided at the edges, 0 where an axis has one node and where the floor is not deeper
/// than `minDepth`.
class FloorSlopes {
public:
    /// spacing: of both axes in the units of the grid. On the globe slopes are per metre on the ellipsoid, in the other
    /// frames per unit of the grid and formed in single precision, as in a run. Borrows the nodes.
    FloorSlopes(const Nodes& nodes, NodeFrame frame, float spacing, float minDepth) noexcept
        : m_nodes(nodes), m_isOnGlobe(frame == NodeFrame::Globe), m_spacing(spacing), m_minDepth(minDepth) {}

    /// One value a node of the tile, in its order.
    void Fill(const NodeTile& tile, float* slopeX, float* slopeY) const noexcept;

private:
    [[nodiscard]] float Eastward(std::size_t column, std::size_t row) const noexcept;
    [[nodiscard]] float Northward(std::size_t column, std::size_t row) const noexcept;

    const Nodes& m_nodes;
    bool m_isOnGlobe;
    float m_spacing, m_minDepth;
};

}  // namespace tidora
