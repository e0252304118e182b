#include "unit/MapSystems.h"

#include <cmath>

#include "projection/mapproject.h"
#include "unit/PrintedText.h"

MapSystems::MapSystems(double lonDeg) {
    const PrintedText print;
    mapproject_initialize_using_longi_(lonDeg);
    printed = print.Out();
}

MapSystems::MapSystems(int geoCode, int planeCode) {
    const PrintedText print;
    mapproject_initialize_using_epsg_(geoCode, planeCode);
    printed = print.Out();
}

MapSystems::~MapSystems() {
    mapproject_finalize_();
}

MapPoint ToPlane(double lon, double lat) {
    const int one = 1;
    MapPoint plane;
    ll2xy_(&one, &lon, &lat, &plane.x, &plane.y);
    return plane;
}

MapPoint ToDegrees(double x, double y) {
    const int one = 1;
    MapPoint degrees;
    xy2ll_(&one, &degrees.x, &degrees.y, &x, &y);
    return degrees;
}

bool IsUnconverted(const MapPoint& point) {
    return point.x == HUGE_VAL && point.y == HUGE_VAL;
}
