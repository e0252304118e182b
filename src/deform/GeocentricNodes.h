#pragma once

#include <vector>

#include "deform/Nodes.h"
#include "deform/TileBounds.h"
#include "globe/GlobeKernels.h"

namespace tidora {

/// What the columns and rows of nodes in degrees have in common on the ellipsoid: one entry a column and a row of a
/// grid, one of each a point.
struct GeocentricAxes {
    explicit GeocentricAxes(const Nodes& nodes);

    [[nodiscard]] const Parallel& ParallelAt(std::size_t column, std::size_t row) const noexcept {
        return parallels[isGrid ? row : column];
    }

    bool isGrid;
    std::vector<Meridian> meridians;
    std::vector<Parallel> parallels;
};

/// The nodes of a tile by Earth-centred co-ordinates, m.
struct GeocentricTile {
    std::size_t count = 0;
    double x[kTileNodes], y[kTileNodes], z[kTileNodes];
    TileBounds<3> bounds;

    void Load(const GeocentricAxes& axes, const NodeTile& tile) noexcept;
    [[nodiscard]] GlobeNodes Nodes() const noexcept { return {count, x, y, z}; }
};

/// The axes at the nodes of a tile.
struct TileAxes {
    double sinLat[kTileNodes], cosLat[kTileNodes], sinLon[kTileNodes], cosLon[kTileNodes];

    void Load(const GeocentricAxes& axes, const NodeTile& tile) noexcept;
    [[nodiscard]] GlobeNodeAxes Axes() const noexcept { return {sinLat, cosLat, sinLon, cosLon}; }
};

}  // namespace tidora
