#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "deform/FramePlan.h"
#include "deform/GeocentricNodes.h"
#include "deform/GreatCircle.h"
#include "projection/UtmZone.h"
#include "projection/ZonePlane.h"

namespace tidora {
namespace {

struct UtmElement {
    ElementPlace place;
    std::size_t zone;  ///< number in the list of zones
    GreatCircleReach reach;
    double farthest;  ///< chord from the reference point beyond which no node can be near, m
};

/// The great circle of a run is one of a sphere that takes latitudes as they are; degrees of the ellipsoid are up to
/// half a percent longer or shorter.
double FarthestChord(double reach) noexcept {
    return 1.01 * reach + 1000.0;
}

std::vector<double> LatitudesOf(const Nodes& nodes) {
    return {nodes.y, nodes.y + (nodes.isGrid ? nodes.rows : nodes.columns)};
}

struct UtmShared {
    explicit UtmShared(const Nodes& where) : nodes(where), axes(where), rows(LatitudesOf(where)) {
        for (const double lat : LatitudesOf(where)) {
            const Latitude latitude = LatitudeOf(lat);
            latitudes.sine.push_back(latitude.sine);
            latitudes.cosine.push_back(latitude.cosine);
        }
    }

    [[nodiscard]] std::size_t NumberOf(int zone) {
        const auto found = std::find(zoneNumbers.begin(), zoneNumbers.end(), zone);
        if (found == zoneNumbers.end()) {
            zoneNumbers.push_back(zone);
            zones.emplace_back(zone);
            return zones.size() - 1;
        }
        return static_cast<std::size_t>(found - zoneNumbers.begin());
    }

    const Nodes& nodes;
    GeocentricAxes axes;
    ConformalRows rows;
    Latitudes latitudes;  ///< on the sphere of the reach
    std::vector<int> zoneNumbers;
    std::vector<ZonePlane> zones;
    std::vector<UtmElement> elements;
};

/// The nodes of the tile in one zone.
struct ZoneTile {
    bool isLoaded = false;
    bool hasGaps = false;  ///< some have no place in it
    double x[kTileNodes] = {}, y[kTileNodes] = {};
};

class UtmTilePlaces : public TilePlaces {
public:
    explicit UtmTilePlaces(const UtmShared& shared) : m_shared(shared), m_zones(shared.zones.size()) {}

    void Load(const NodeTile& tile) override {
        m_tile = tile;
        m_geocentric.Load(m_shared.axes, tile);
        for (const std::unique_ptr<ZoneTile>& zone : m_zones) {
            if (zone) {
                zone->isLoaded = false;
            }
        }
    }

    PlacedTile TurnTo(std::size_t element) override {
        const UtmElement& e = m_shared.elements[element];
        const Geocentric from = PlaceOn(ParallelOf(e.place.orgY), MeridianOf(e.place.orgX));
        PlacedTile placed;
        placed.isOutOfReach = m_geocentric.bounds.AllBeyond({from.x, from.y, from.z}, e.farthest);
        if (placed.isOutOfReach) {
            return placed;
        }
        const ZoneTile& zone = InZone(e.zone);
        const bool isAllNear = MarkNear(e, zone);
        placed.x = zone.x;
        placed.y = zone.y;
        placed.origin = e.place.origin;
        placed.isNear = isAllNear ? nullptr : m_isNear;
        return placed;
    }

private:
    /// take(column, first row among the latitudes, rows, number in the tile) for what has one longitude: a column of a
    /// grid, or a point. A tile of a grid is by column.
    template <typename Take>
    void ForEachColumn(Take take) const {
        for (std::size_t c = 0; c < m_tile.columns; ++c) {
            const std::size_t column = m_tile.firstColumn + c;
            take(column, m_shared.nodes.isGrid ? m_tile.firstRow : column, m_tile.rows, c * m_tile.rows);
        }
    }

    const ZoneTile& InZone(std::size_t number) {
        std::unique_ptr<ZoneTile>& zone = m_zones[number];
        if (!zone) {
            zone = std::make_unique<ZoneTile>();
        }
        if (!zone->isLoaded) {
            bool isEveryPlace = true;
            ForEachColumn([&](std::size_t column, std::size_t first, std::size_t rows, std::size_t at) {
                const bool all = m_shared.zones[number].Column(m_shared.nodes.x[column], m_shared.rows, first, rows,
                                                               zone->x + at, zone->y + at);
                isEveryPlace = isEveryPlace && all;
            });
            zone->hasGaps = !isEveryPlace;
            zone->isLoaded = true;
        }
        return *zone;
    }

    /// True when all nodes are near.
    bool MarkNear(const UtmElement& e, const ZoneTile& zone) {
        bool isAllNear = true;
        ForEachColumn([&](std::size_t column, std::size_t first, std::size_t rows, std::size_t at) {
            const bool all = e.reach.Mark(m_shared.nodes.x[column], m_shared.latitudes, first, rows, m_isNear + at);
            isAllNear = isAllNear && all;
        });
        for (std::size_t n = 0; zone.hasGaps && n < m_tile.Count(); ++n) {
            const bool hasPlace = std::isfinite(zone.x[n]) && std::isfinite(zone.y[n]);
            m_isNear[n] = hasPlace ? m_isNear[n] : 0;
        }
        return isAllNear && !zone.hasGaps;
    }

    const UtmShared& m_shared;
    NodeTile m_tile;
    GeocentricTile m_geocentric;
    std::vector<std::unique_ptr<ZoneTile>> m_zones;
    std::uint8_t m_isNear[kTileNodes] = {};
};

class UtmPlan : public FramePlan {
public:
    UtmPlan(const Nodes& nodes, const std::vector<ElementPlace>& places) : m_shared(nodes) {
        m_shared.elements.reserve(places.size());
        for (ElementPlace place : places) {
            const std::size_t zone = m_shared.NumberOf(UtmZone(place.orgX));
            if (!m_shared.zones[zone].Points(1, &place.orgX, &place.orgY, &place.origin.x, &place.origin.y)) {
                throw NoPlaceError(m_shared.elements.size());
            }
            m_shared.elements.push_back(
                {place, zone, {place.orgX, place.orgY, place.reach}, FarthestChord(place.reach)});
        }
    }
    [[nodiscard]] std::unique_ptr<TilePlaces> MakePlaces() const override {
        return std::make_unique<UtmTilePlaces>(m_shared);
    }

private:
    UtmShared m_shared;
};

}  // namespace

std::unique_ptr<FramePlan> MakeUtmPlan(const Nodes& nodes, const std::vector<ElementPlace>& elements) {
    return std::make_unique<UtmPlan>(nodes, elements);
}

}  // namespace tidora
