#pragma once

#include <cstddef>
#include <string>

#include <proj.h>

namespace tidora {

/// Longitude and latitude on GRS80, degrees.
inline constexpr const char* kGrs80Geographic = "+proj=longlat +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +no_defs";

/// The definition of the plane of a UTM zone on GRS80. Any number; PROJ builds those from 1 to 60.
[[nodiscard]] std::string UtmDefinition(int zone);

// PROJ's context, and the systems and operations that were built, are kept in one static object until the program ends:
// building one costs milliseconds, and every element of a fault asks for one. There are at most two geographic systems
// and some eighty planes. The object stands behind one lock, because neither a context nor an operation may be used by
// two threads: these functions are safe to call from several, which wait for each other.

/// The system of a definition; null where PROJ cannot build it. It belongs to this module.
[[nodiscard]] PJ* SystemOf(const std::string& definition);

/// Converts `count` points in place by the operation between two systems: forward from degrees, longitude first, to
/// metres, easting first. HUGE_VAL in both where a point cannot be converted; in all points where a system is null or
/// there is no operation.
void ConvertPoints(PJ* geographic, PJ* plane, PJ_DIRECTION direction, std::size_t count, double* first, double* second);

/// The same forward, from arrays that stay as they are. Longitudes of 180 and more are taken 360 lower.
void ProjectPoints(PJ* geographic, PJ* plane, std::size_t count, const double* lonDeg, const double* latDeg, double* x,
                   double* y);

}  // namespace tidora
