#include "region/Region.h"

#include <algorithm>
#include <new>
#include <utility>

#include "grid/GridShape.h"

namespace tidora {
namespace {

/// What the kind of a region decides: tag, input file and the constant in its place.
struct KindOfRegion {
    const char* tag = "";
    std::string inFileName;
    double constVal = 0.0;
    bool hasInput = false;
};

KindOfRegion KindOf(RType type, const PARAM_REGION& param) {
    switch (type) {  // the last field says whether a file is named
        case RTYPE_TOPOGRAPHY:
            return {"TPG", param.topoFile, param.topoConst, !param.topoFile.empty()};
        case RTYPE_INITIAL_WAVE:
            return {"Tdr", param.iniWaveFile, param.iniWaveConst, !param.iniWaveFile.empty()};
        case RTYPE_VERTICAL:
            return {"VRT", {}, 0.0, false};
        case RTYPE_HORIZONTAL:
            return {"HRZ", {}, 0.0, false};
    }
    // No other kind has a name; `noBinaryInput` then stays as a region without a kind has it.
    // Test: "a region of any other kind has neither tag nor file nor constant".
    return {"", {}, 0.0, true};
}

}  // namespace

Region::Region(RType kind, const PARAM_REGION& param)
    : type(kind), coordType(param.coordType), name(param.name), no(param.no), parentNo(param.parentNo) {
    KindOfRegion of = KindOf(kind, param);
    tag = of.tag;
    inFileName = std::move(of.inFileName);
    constVal = of.constVal;
    noBinaryInput = !of.hasInput;
}

void Region::Set2dStruct(int columns, int rows, double orgX, double orgY, double d) {
    nx = columns;
    ny = rows;
    org_x = orgX;
    org_y = orgY;
    dx = static_cast<float>(d);  // widened by the caller, from the single precision of a file: exact
    // Wrapped on purpose, as the record has it; sizes of arrays are formed in 64 bits.
    // Test: "the number of grid values is the 32-bit product and wraps beyond it".
    dataNum = WrappedGridSize(columns, rows);
}

float* Region::Make2dStruct() {
    return Make2dStruct(constVal);
}

float* Region::Make2dStruct(double v) {
    const std::int64_t count = std::int64_t{nx} * ny;
    // The interface counts in 32 bits: more is a length error here, before a huge array is asked for.
    // Test: "a grid of more values than an array can have raises the standard length error and allocates nothing".
    if (count < 0 || count > std::numeric_limits<std::int32_t>::max()) {
        throw std::bad_array_new_length();
    }
    // Naked: the field is published, and released with array delete. New before old, which stays when this throws.
    float* const fresh = new float[static_cast<std::size_t>(count)];
    delete[] std::exchange(val, fresh);
    if (IsGridSize(nx, ny)) {  // two negative counts have a positive product, and no grid
        std::fill_n(val, count, static_cast<float>(v));
    }
    return val;
}

void Region::FreeVecMem() {
    delete[] std::exchange(val, nullptr);
    delete[] std::exchange(valWork, nullptr);
    for (InstantVal2d& instant : instants) {
        if (instant.num != 0) {  // an empty one keeps its empty array
            instant.Clear();
        }
    }
}

int Region::TempMethod() {
    return 1;
}

GridShape ShapeOf(const Region& region) noexcept {
    return {region.nx, region.ny, region.org_x, region.org_y, region.dx};
}

int isSameRegion(const Region* a, const Region* b) {
    const bool same = a->nx == b->nx && a->ny == b->ny && a->org_x == b->org_x && a->org_y == b->org_y;
    return same ? 1 : 0;
}

}  // namespace tidora
