#pragma once

#include <cstdint>
#include <memory>

#include "deform/ElementSource.h"
#include "deform/GridWindow.h"
#include "grid/GridShape.h"

namespace tidora {

/// A point of the plane, m.
struct PlanePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Where an element lies, and how far it can be seen.
struct ElementPlace {
    double orgX = 0.0, orgY = 0.0;  ///< reference point, in the co-ordinates of the grid
    PlanePoint origin;              ///< the same in the plane
    PlanePoint toCentroid;          ///< from there to the centroid, east and north, m
    double reach = 0.0;             ///< from the centroid, m: that of the point source
    double extent = 0.0;            ///< length and width together, m: what the rounding of places may grow with
};

[[nodiscard]] ElementPlace PlaceOf(const FAULT_PARAM& element, const ElementSource& source, const SourceReach& reach,
                                   const PlanePoint& origin) noexcept;

/// Where the points of one column of a window lie in the plane of an element: one value per row of the window.
struct ColumnPlaces {
    const double *x, *y;         ///< m
    const std::uint8_t* isNear;  ///< 0: beyond the reach of the element, or without a place in the plane; null: no 0
};

/// The plane co-ordinates of a grid, element by element.
class GridPlane {
public:
    virtual ~GridPlane() = default;
    GridPlane() = default;
    GridPlane(const GridPlane&) = delete;
    GridPlane& operator=(const GridPlane&) = delete;

    /// Turns to an element and returns a window that holds every point within its reach. Requires: `place` outlives the
    /// calls of Column().
    [[nodiscard]] virtual GridWindow TurnTo(const ElementPlace& place) = 0;

    /// The places of column `ix` of that window; valid until the next call.
    [[nodiscard]] virtual ColumnPlaces Column(int ix, const GridWindow& window) = 0;
};

/// The plane of a grid in metres: as it is.
[[nodiscard]] std::unique_ptr<GridPlane> MakeMetricPlane(const GridShape& grid);

/// The plane of a grid in degrees: for each element the UTM zone of its own longitude. Points beyond the element's
/// reach from its reference point along a great circle are left out. Each grid point is projected at most once per
/// zone.
[[nodiscard]] std::unique_ptr<GridPlane> MakeProjectedPlane(const GridShape& grid);

/// The plane of co-ordinates that nobody can relate to each other: no window, no deformation.
[[nodiscard]] std::unique_ptr<GridPlane> MakeNoPlane();

}  // namespace tidora
