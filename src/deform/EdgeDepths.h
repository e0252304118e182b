#pragma once

#include <cstddef>

#include "deform/ColumnPasses.h"

namespace tidora {

/// Where the upper edge of an element lies below the surface of the half-space.
struct ElementDepth {
    double depth = 0.0;         ///< m: of the reference point, everywhere, unless it follows the floor
    double baseOffset = 0.0;    ///< below the topography, m: of one that follows the floor
    bool followsFloor = false;  ///< max(0, topography + baseOffset) at each point
    /// The depth of the centroid, too, is that of its own point. If not, it is formed from the depth of the point that
    /// was evaluated before, which is the rule of a run.
    /// Test: "the centroid depth of a point is that of the point evaluated before it".
    bool hasOwnCentroid = false;
};

/// The depths of one element at points in the order in which they are evaluated. Keeps that of the last one.
class EdgeDepths {
public:
    /// below: how far the centroid lies below the upper edge, m.
    EdgeDepths(const ElementDepth& depth, double below) noexcept
        : m_depth(depth), m_below(below), m_last(depth.depth) {}

    /// Depths of `count` points as their source takes them: of the upper edge, or of the centroid. Requires: count > 0.
    void Fill(SourceKind kind, const float* topography, std::size_t count, float* depth) noexcept;

    /// True when the depth of a point source depends on the point before it.
    [[nodiscard]] bool DependOnOrder() const noexcept { return m_depth.followsFloor && !m_depth.hasOwnCentroid; }

    /// Makes a point the last one evaluated.
    void PassBy(float topography) noexcept;

private:
    ElementDepth m_depth;
    double m_below;
    double m_last;  ///< of the upper edge at the point evaluated last, m
};

}  // namespace tidora
