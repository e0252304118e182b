#include <cmath>

#include "deform/FramePlan.h"
#include "deform/GeocentricNodes.h"
#include "globe/GlobeKernels.h"

namespace tidora {
namespace {

/// An element on the globe.
struct GlobeElement {
    GlobeFrame frame;
    double reach;  ///< from the reference point, m
};

struct GlobeShared {
    GeocentricAxes axes;
    std::vector<GlobeElement> elements;
    bool withTurns = false;
};

class GlobeTilePlaces : public TilePlaces {
public:
    explicit GlobeTilePlaces(const GlobeShared& shared) : m_shared(shared) {}

    void Load(const NodeTile& tile) override {
        m_tile.Load(m_shared.axes, tile);
        if (m_shared.withTurns) {
            m_axes.Load(m_shared.axes, tile);
        }
    }

    PlacedTile TurnTo(std::size_t element) override {
        const GlobeElement& e = m_shared.elements[element];
        PlacedTile placed;
        // The way along the surface is never shorter than the chord.
        placed.isOutOfReach = m_tile.bounds.AllBeyond({e.frame.origin.x, e.frame.origin.y, e.frame.origin.z}, e.reach);
        if (placed.isOutOfReach) {
            return placed;
        }
        m_kernels.places(e.frame, m_tile.Nodes(), m_x, m_y);
        placed.x = m_x;
        placed.y = m_y;
        if (m_shared.withTurns) {
            m_kernels.turns(e.frame, m_tile.Nodes(), m_axes.Axes(), m_turnCosine, m_turnSine);
            placed.turnCosine = m_turnCosine;
            placed.turnSine = m_turnSine;
        }
        return placed;
    }

private:
    const GlobeShared& m_shared;
    const GlobeKernels& m_kernels = DispatchedKernels<GlobeKernelsOf>();
    GeocentricTile m_tile;
    TileAxes m_axes = {};
    double m_x[kTileNodes] = {}, m_y[kTileNodes] = {};
    float m_turnCosine[kTileNodes] = {}, m_turnSine[kTileNodes] = {};
};

class GlobePlan : public FramePlan {
public:
    GlobePlan(const Nodes& nodes, const std::vector<ElementPlace>& places, bool withTurns)
        : m_shared{GeocentricAxes(nodes), {}, withTurns} {
        m_shared.elements.reserve(places.size());
        for (const ElementPlace& place : places) {
            m_shared.elements.push_back(
                {MakeGlobeFrame(place.orgX, place.orgY),
                 ReachFromReference(place.reach, std::hypot(place.toCentroid.x, place.toCentroid.y), place.extent)});
        }
    }
    [[nodiscard]] std::unique_ptr<TilePlaces> MakePlaces() const override {
        return std::make_unique<GlobeTilePlaces>(m_shared);
    }

private:
    GlobeShared m_shared;
};

}  // namespace

std::unique_ptr<FramePlan> MakeGlobePlan(const Nodes& nodes, const std::vector<ElementPlace>& elements,
                                         bool withTurns) {
    return std::make_unique<GlobePlan>(nodes, elements, withTurns);
}

}  // namespace tidora
