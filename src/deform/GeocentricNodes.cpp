#include "deform/GeocentricNodes.h"

namespace tidora {

GeocentricAxes::GeocentricAxes(const Nodes& nodes) : isGrid(nodes.isGrid) {
    const std::size_t parallelCount = nodes.isGrid ? nodes.rows : nodes.columns;
    meridians.reserve(nodes.columns);
    parallels.reserve(parallelCount);
    for (std::size_t i = 0; i < nodes.columns; ++i) {
        meridians.push_back(MeridianOf(nodes.x[i]));
    }
    for (std::size_t i = 0; i < parallelCount; ++i) {
        parallels.push_back(ParallelOf(nodes.y[i]));
    }
}

void GeocentricTile::Load(const GeocentricAxes& axes, const NodeTile& tile) noexcept {
    tile.ForEach([&](std::size_t n, std::size_t column, std::size_t row) {
        const Geocentric place = PlaceOn(axes.ParallelAt(column, row), axes.meridians[column]);
        x[n] = place.x;
        y[n] = place.y;
        z[n] = place.z;
    });
    count = tile.Count();
    bounds.Surround({x, y, z}, count);
}

void TileAxes::Load(const GeocentricAxes& axes, const NodeTile& tile) noexcept {
    tile.ForEach([&](std::size_t n, std::size_t column, std::size_t row) {
        const Parallel& parallel = axes.ParallelAt(column, row);
        sinLat[n] = parallel.sine;
        cosLat[n] = parallel.cosine;
        sinLon[n] = axes.meridians[column].sine;
        cosLon[n] = axes.meridians[column].cosine;
    });
}

}  // namespace tidora
