#pragma once

#include <vector>

#include "projection/ZonePlane.h"

/// Plane co-ordinates of a column, one value a row.
struct ZonePlaces {
    std::vector<double> x, y;
    bool isEveryPlace = false;
};

/// A column of a grid of these rows, with a plane.
inline ZonePlaces ColumnOf(const tidora::ZonePlane& plane, double lon, const std::vector<double>& lat) {
    ZonePlaces places = {std::vector<double>(lat.size()), std::vector<double>(lat.size()), false};
    places.isEveryPlace =
        plane.Column(lon, tidora::ConformalRows(lat), 0, lat.size(), places.x.data(), places.y.data());
    return places;
}
