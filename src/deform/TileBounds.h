#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tidora {

/// A ball around the nodes of a tile.
template <std::size_t kAxes>
class TileBounds {
public:
    using Point = std::array<double, kAxes>;

    /// One array of `count` co-ordinates an axis.
    void Surround(const std::array<const double*, kAxes>& co, std::size_t count) noexcept {
        double squares = 0.0;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            const auto [least, most] = std::minmax_element(co[axis], co[axis] + count);
            m_centre[axis] = 0.5 * (*least + *most);
            squares += (*most - *least) * (*most - *least);
        }
        m_radius = 0.5 * std::sqrt(squares);
    }

    /// True when every node is farther than `distance` from a point.
    [[nodiscard]] bool AllBeyond(const Point& point, double distance) const noexcept {
        double squares = 0.0;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            squares += (m_centre[axis] - point[axis]) * (m_centre[axis] - point[axis]);
        }
        return std::sqrt(squares) - m_radius > distance;  // false where something is not a number
    }

private:
    Point m_centre = {};
    double m_radius = std::numeric_limits<double>::infinity();
};

/// How far from the reference point of an element, m, a node may lie that its source still reaches: the reach from the
/// centroid, the way there, and what the rounding of places and distances to single precision can move, 6e-8 of what it
/// holds in some operations, a hundred times over.
[[nodiscard]] inline double ReachFromReference(double reach, double toCentroid, double extent) noexcept {
    return (reach + toCentroid) * (1.0 + 1.0e-5) + 1.0e-5 * extent + 1.0;
}

}  // namespace tidora
