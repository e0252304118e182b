#include "projection/mapproject.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <string>

#include "projection/ProjSystems.h"
#include "projection/UtmZone.h"

namespace {

struct EpsgDefinition {
    int code;
    const char* definition;
};

constexpr const char* kGeographic4326 = "+proj=latlong +ellps=WGS84 +datum=WGS84 +no_defs";
constexpr int kDefaultGeographic = 4612;
constexpr int kDefaultPlane = 3100;

// What the rectangular zones have in common behind their centre, and the UTM zones behind their number.
// Macros, because only they join with the literals of the table.
// NOLINTBEGIN(cppcoreguidelines-macro-usage)
#define TIDORA_RECTANGULAR " +k=0.9999 +x_0=0 +y_0=0 +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs"
#define TIDORA_GRS80_METRES " +ellps=GRS80 +towgs84=0,0,0,0,0,0,0 +units=m +no_defs"
// NOLINTEND(cppcoreguidelines-macro-usage)

/// Plane systems by EPSG code: 2443 to 2461 the plane rectangular zones I to XIX, 3097 to 3101 UTM zones 51 to 55.
constexpr EpsgDefinition kPlanes[] = {
    {2443, "+proj=tmerc +lat_0=33 +lon_0=129.5" TIDORA_RECTANGULAR},
    {2444, "+proj=tmerc +lat_0=33 +lon_0=131" TIDORA_RECTANGULAR},
    {2445, "+proj=tmerc +lat_0=36 +lon_0=132.1666666666667" TIDORA_RECTANGULAR},
    {2446, "+proj=tmerc +lat_0=33 +lon_0=133.5" TIDORA_RECTANGULAR},
    {2447, "+proj=tmerc +lat_0=36 +lon_0=134.3333333333333" TIDORA_RECTANGULAR},
    {2448, "+proj=tmerc +lat_0=36 +lon_0=136" TIDORA_RECTANGULAR},
    {2449, "+proj=tmerc +lat_0=36 +lon_0=137.1666666666667" TIDORA_RECTANGULAR},
    {2450, "+proj=tmerc +lat_0=36 +lon_0=138.5" TIDORA_RECTANGULAR},
    {2451, "+proj=tmerc +lat_0=36 +lon_0=139.8333333333333" TIDORA_RECTANGULAR},
    {2452, "+proj=tmerc +lat_0=40 +lon_0=140.8333333333333" TIDORA_RECTANGULAR},
    {2453, "+proj=tmerc +lat_0=44 +lon_0=140.25" TIDORA_RECTANGULAR},
    {2454, "+proj=tmerc +lat_0=44 +lon_0=142.25" TIDORA_RECTANGULAR},
    {2455, "+proj=tmerc +lat_0=44 +lon_0=144.25" TIDORA_RECTANGULAR},
    {2456, "+proj=tmerc +lat_0=26 +lon_0=142" TIDORA_RECTANGULAR},
    {2457, "+proj=tmerc +lat_0=26 +lon_0=127.5" TIDORA_RECTANGULAR},
    {2458, "+proj=tmerc +lat_0=26 +lon_0=124" TIDORA_RECTANGULAR},
    {2459, "+proj=tmerc +lat_0=26 +lon_0=131" TIDORA_RECTANGULAR},
    {2460, "+proj=tmerc +lat_0=20 +lon_0=136" TIDORA_RECTANGULAR},
    {2461, "+proj=tmerc +lat_0=26 +lon_0=154" TIDORA_RECTANGULAR},
    {3097, "+proj=utm +zone=51" TIDORA_GRS80_METRES},
    {3098, "+proj=utm +zone=52" TIDORA_GRS80_METRES},
    {3099, "+proj=utm +zone=53" TIDORA_GRS80_METRES},
    {3100, "+proj=utm +zone=54" TIDORA_GRS80_METRES},
    {3101, "+proj=utm +zone=55" TIDORA_GRS80_METRES},
    // The repeated word is part of the definition.
    {32653, "+proj=utm +proj=utm +zone=53 +ellps=WGS84 +datum=WGS84 +units=m +no_defs"},
};

const char* PlaneDefinition(int code) noexcept {
    const auto* const found = std::find_if(std::begin(kPlanes), std::end(kPlanes),
                                           [code](const EpsgDefinition& plane) { return plane.code == code; });
    return found == std::end(kPlanes) ? nullptr : found->definition;
}

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): the interface keeps its state in the module.
// The two handles are all of the state: every conversion uses the operation between them. Null before the first
// initialisation, after a finalisation, and where PROJ could not build a system. What they point to is kept by
// ProjSystems.cpp, for the next element that asks for it.
PJ* pj_ll = nullptr;
PJ* pj_cartes = nullptr;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void Initialize(const std::string& geographic, const std::string& plane) {
    pj_ll = tidora::SystemOf(geographic);
    pj_cartes = tidora::SystemOf(plane);
}

std::size_t CountOf(const int* n) noexcept {
    return *n > 0 ? static_cast<std::size_t>(*n) : 0;
}

}  // namespace

extern "C" {

void mapproject_initialize_using_epsg_(int geoCode, int planeCode) {
    const char* const geographic = geoCode == 4326 ? kGeographic4326 : tidora::kGrs80Geographic;
    if (geoCode != 4326 && geoCode != kDefaultGeographic) {
        std::cout << "default EPSG:" << kDefaultGeographic << std::endl;
    }
    const char* plane = PlaneDefinition(planeCode);
    if (plane == nullptr) {
        std::cout << "default EPSG:" << kDefaultPlane << std::endl;
        plane = PlaneDefinition(kDefaultPlane);
    }
    Initialize(geographic, plane);
}

void mapproject_initialize_using_longi_(double lonDeg) {
    const int zone = tidora::UtmZone(lonDeg);
    std::cout << "Deformation Calc. UTM Zone:" << zone << std::endl;
    Initialize(tidora::kGrs80Geographic, tidora::UtmDefinition(zone));
}

void mapproject_finalize_() {
    pj_ll = nullptr;
    pj_cartes = nullptr;
}

void ll2xy_(const int* n, const double* lon, const double* lat, double* x, double* y) {
    tidora::ProjectPoints(pj_ll, pj_cartes, CountOf(n), lon, lat, x, y);
}

void xy2ll_(const int* n, double* lon, double* lat, const double* x, const double* y) {
    const std::size_t count = CountOf(n);
    std::copy_n(x, count, lon);
    std::copy_n(y, count, lat);
    tidora::ConvertPoints(pj_ll, pj_cartes, PJ_INV, count, lon, lat);
}
}
