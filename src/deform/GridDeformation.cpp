#include "deform/GridDeformation.h"

namespace tidora {
namespace {

std::unique_ptr<GridPlane> MakePlane(DeformationFrame frame, const GridShape& grid) {
    switch (frame) {
        case DeformationFrame::Plane:
            return MakeMetricPlane(grid);
        case DeformationFrame::Utm:
            return MakeProjectedPlane(grid);
        case DeformationFrame::None:
            break;
    }
    return MakeNoPlane();
}

}  // namespace

GridDeformation::GridDeformation(const SeaFloor& floor, const SlopeTerm& slope, DeformationFrame frame,
                                 const float* first)
    : m_floor(floor),
      m_slope(slope),
      m_plane(MakePlane(frame, floor.grid)),
      m_buffers(std::make_unique<ElementBuffers>()),
      m_sum(first, floor.grid) {}

DeformationMaxima GridDeformation::Add(const FAULT_PARAM& element, const ElementSource& source,
                                       const SourceReach& reach, bool isOnlyElement, const PlanePoint& origin,
                                       const std::vector<IntervalShare>& shares) {
    const GridWindow window = m_plane->TurnTo(PlaceOf(element, source, reach, origin));
    const ElementDepth depth = {element.depth, element.baseOffset, !isOnlyElement};
    ElementDeformation deformation(source, reach, depth, m_slope, m_floor, *m_buffers);
    const float largest = deformation.AddTo(shares, *m_plane, origin, window);
    m_sum.Refresh(window);
    return {largest, m_sum.Largest()};
}

}  // namespace tidora
