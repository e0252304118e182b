#include "deform/GridPlane.h"

namespace tidora {
namespace {

class NoPlane : public GridPlane {
public:
    GridWindow TurnTo(const ElementPlace& /*place*/) override { return {}; }
    ColumnPlaces Column(int /*ix*/, const GridWindow& /*window*/) override { return {}; }
};

}  // namespace

std::unique_ptr<GridPlane> MakeNoPlane() {
    return std::make_unique<NoPlane>();
}

ElementPlace PlaceOf(const FAULT_PARAM& element, const ElementSource& source, const SourceReach& reach,
                     const PlanePoint& origin) noexcept {
    const double along = source.CentroidAlongStrike();
    const double left = -source.CentroidToRight();
    const auto sine = static_cast<double>(source.sinTheta);
    const auto cosine = static_cast<double>(source.cosTheta);
    return {element.org_x,
            element.org_y,
            origin,
            {cosine * along + sine * left, -sine * along + cosine * left},
            static_cast<double>(reach.point),
            element.length + element.width};
}

}  // namespace tidora
