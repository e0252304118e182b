#pragma once

/// @file
/// Conversion between geographic co-ordinates and a map plane. One geographic and one plane system at a time, held in
/// two module-wide handles, pj_ll and pj_cartes: initialise, convert, finalise. Without systems every point becomes
/// HUGE_VAL. For one thread: the handles have no lock.
extern "C" {

/// Chooses the systems by EPSG code. geoCode: 4326 or 4612. planeCode: 2443 to 2461 (plane rectangular zones), 3097 to
/// 3101 (UTM 51 to 55), 32653. An unknown code is announced on standard output and replaced by 4612 or 3100.
/// Not used by a run.
void mapproject_initialize_using_epsg_(int geoCode, int planeCode);

/// GRS80 longitude and latitude, and the UTM zone of a longitude in degrees, which is printed on standard output. The
/// zone is not clamped: 180 gives 61, which no plane system has.
void mapproject_initialize_using_longi_(double lonDeg);

/// Lets go of both systems.
void mapproject_finalize_();

/// *n points from degrees (lon, lat) to metres (x east, y north). Longitudes of 180 and more are taken 360 lower. A
/// point that cannot be converted, or every point when a system could not be built, becomes HUGE_VAL in both.
void ll2xy_(const int* n, const double* lon, const double* lat, double* x, double* y);

/// *n points from metres (x, y) to degrees (lon, lat); same argument order, same treatment of failures.
/// Not used by a run.
void xy2ll_(const int* n, double* lon, double* lat, const double* x, const double* y);
}
