#pragma once

#include <string>

/// A pair of co-ordinates: east and north, or longitude and latitude.
struct MapPoint {
    double x = 0.0;
    double y = 0.0;
};

/// One pair of co-ordinate systems until the end of the scope.
class MapSystems {
public:
    explicit MapSystems(double lonDeg);
    MapSystems(int geoCode, int planeCode);
    ~MapSystems();
    MapSystems(const MapSystems&) = delete;
    MapSystems& operator=(const MapSystems&) = delete;

    std::string printed;  ///< what choosing the systems wrote to standard output
};

/// One point converted with the current systems.
[[nodiscard]] MapPoint ToPlane(double lon, double lat);
[[nodiscard]] MapPoint ToDegrees(double x, double y);

/// True for what stands in place of a point that could not be converted.
[[nodiscard]] bool IsUnconverted(const MapPoint& point);
