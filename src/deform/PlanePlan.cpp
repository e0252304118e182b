#include <cmath>
#include <utility>

#include "deform/FramePlan.h"
#include "deform/TileBounds.h"

namespace tidora {
namespace {

class PlaneTilePlaces : public TilePlaces {
public:
    PlaneTilePlaces(const Nodes& nodes, const std::vector<ElementPlace>& elements)
        : m_nodes(nodes), m_elements(elements) {}

    void Load(const NodeTile& tile) override {
        tile.ForEach([this](std::size_t n, std::size_t column, std::size_t row) {
            m_x[n] = m_nodes.X(column);
            m_y[n] = m_nodes.Y(column, row);
        });
        m_bounds.Surround({m_x, m_y}, tile.Count());
    }

    PlacedTile TurnTo(std::size_t element) override {
        const ElementPlace& e = m_elements[element];
        const double reach = ReachFromReference(e.reach, std::hypot(e.toCentroid.x, e.toCentroid.y), e.extent);
        PlacedTile placed;
        placed.isOutOfReach = m_bounds.AllBeyond({e.origin.x, e.origin.y}, reach);
        placed.x = m_x;
        placed.y = m_y;
        placed.origin = e.origin;
        return placed;
    }

private:
    const Nodes& m_nodes;
    const std::vector<ElementPlace>& m_elements;
    TileBounds<2> m_bounds;
    double m_x[kTileNodes] = {}, m_y[kTileNodes] = {};
};

class PlanePlan : public FramePlan {
public:
    PlanePlan(const Nodes& nodes, std::vector<ElementPlace> elements)
        : m_nodes(nodes), m_elements(std::move(elements)) {
        for (ElementPlace& element : m_elements) {
            element.origin = {element.orgX, element.orgY};
        }
    }
    [[nodiscard]] std::unique_ptr<TilePlaces> MakePlaces() const override {
        return std::make_unique<PlaneTilePlaces>(m_nodes, m_elements);
    }

private:
    const Nodes& m_nodes;
    std::vector<ElementPlace> m_elements;
};

}  // namespace

std::unique_ptr<FramePlan> MakePlanePlan(const Nodes& nodes, const std::vector<ElementPlace>& elements) {
    return std::make_unique<PlanePlan>(nodes, elements);
}

}  // namespace tidora
