#pragma once

#include <memory>
#include <vector>

#include "deform/ElementDeformation.h"
#include "deform/GridPlane.h"
#include "deform/RunningMaximum.h"

namespace tidora {

/// How the co-ordinates of a grid become metres east and north of an element.
enum class DeformationFrame {
    Plane,  ///< as they are
    Utm,    ///< degrees, in the UTM zone of the element
    None,   ///< not at all: nothing is deformed
};

/// Largest values after an element, m, each at least 0.
struct DeformationMaxima {
    float element = 0.0F;  ///< of the vertical displacement by this element
    float sum = 0.0F;      ///< of the first snapshot so far
};

/// The deformation of one grid, element after element. Sums in single precision depend on the order of the elements:
/// each is added to the snapshots before the next begins.
class GridDeformation {
public:
    /// first: values of the snapshot whose maximum is kept, or null.
    GridDeformation(const SeaFloor& floor, const SlopeTerm& slope, DeformationFrame frame, const float* first);

    /// Adds one element to the snapshots of `shares`. origin: its reference point in the plane of the frame, m.
    DeformationMaxima Add(const FAULT_PARAM& element, const ElementSource& source, const SourceReach& reach,
                          bool isOnlyElement, const PlanePoint& origin, const std::vector<IntervalShare>& shares);

private:
    SeaFloor m_floor;
    SlopeTerm m_slope;
    std::unique_ptr<GridPlane> m_plane;
    std::unique_ptr<ElementBuffers> m_buffers;
    RunningMaximum m_sum;
};

}  // namespace tidora
