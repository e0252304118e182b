#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "deform/DeformedGrid.h"
#include "fault/Fault.h"

namespace tidora {

/// A point of the plane, m.
struct PlanePoint {
    double x = 0.0;
    double y = 0.0;
};

/// Where the points of one column of a window lie in the plane of an element: one value per row of the window.
struct ColumnPlaces {
    const double *x, *y;         ///< m
    const std::uint8_t* isNear;  ///< 0: beyond the reach of the element, or without a place in the plane; null: no 0
};

/// Where an element lies, and how far it can be seen.
struct ElementPlace {
    const FAULT_PARAM& element;
    PlanePoint toCentroid;  ///< from the reference point to the centroid, east and north, m
    double reach = 0.0;     ///< from the centroid, m
};

/// The plane co-ordinates of a grid, element by element.
class GridPlane {
public:
    virtual ~GridPlane() = default;
    GridPlane() = default;
    GridPlane(const GridPlane&) = delete;
    GridPlane& operator=(const GridPlane&) = delete;

    /// Turns to an element: sets `origin` to the plane co-ordinates of its reference point and returns a window that
    /// holds every point within its reach. False when the reference point has no place in the plane.
    [[nodiscard]] virtual bool TurnTo(const ElementPlace& place, PlanePoint& origin, GridWindow& window) = 0;

    /// The places of column `ix` of that window; valid until the next call.
    [[nodiscard]] virtual ColumnPlaces Column(int ix, const GridWindow& window) = 0;
};

/// The plane of a grid in metres.
[[nodiscard]] std::unique_ptr<GridPlane> MakeMetricPlane(const DeformedGrid& grid);

/// The plane of a grid in degrees: for each element the UTM zone of its own longitude, which is announced on standard
/// output. Points beyond the element's reach from its reference point along a great circle are left out. Each grid
/// point is projected at most once per zone.
[[nodiscard]] std::unique_ptr<GridPlane> MakeProjectedPlane(const DeformedGrid& grid);

}  // namespace tidora
