#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "config/ConfReader.h"
#include "grid/GridShape.h"
#include "grid/InstantVal2d.h"

/// The library: every name of its own that is not in C.
namespace tidora {

class DynamicParam;

/// Kind of a region grid. Each kind has a three-letter tag that prefixes its output file names. Callers and files know
/// the numbers: they are fixed.
enum RType : std::int32_t {
    RTYPE_TOPOGRAPHY = 1,    ///< "TPG": topography, m, negative below sea level
    RTYPE_INITIAL_WAVE = 2,  ///< "Tdr": initial wave height, m
    RTYPE_VERTICAL = 3,      ///< "VRT": vertical sea-floor deformation, m
    RTYPE_HORIZONTAL = 4,    ///< "HRZ": uplift from horizontal motion of slopes, m
};

/// One rectangular, regularly spaced grid of single-precision values with its snapshots.
///
/// Index of column ix, row iy in `val`, `valWork` and every snapshot: ix * ny + iy. Position: x = org_x + ix * dx,
/// y = org_y + iy * dx, the product in single precision and then widened; one spacing serves both axes.
///
/// A copy shares `val`, `valWork` and `parentValWork` with its source and duplicates the snapshots: callers keep
/// regions by value and hand them around. The destructor leaves the three arrays alone: exactly one owner calls
/// FreeVecMem(). They come from array new and go with array delete, because a caller may replace or release them.
///
/// Methods that can fail return 1, or 0 after a framed block on standard error. The standard errors of allocation pass
/// through.
class Region {
public:
    /// Size of the line buffer of text grids, of a path and of a line of a list, the NUL included: fixed by the
    /// formats.
    static constexpr std::int64_t FILE_MAX_PATH = 8191;
    static constexpr double G_ACC = 9.8;  ///< gravitational acceleration, m/s^2. Not used by a run.

    // A field is marked as not used where a run at most sets and copies it.
    RType type{};                        ///< kind; the static writers ask for it. Not used by a run.
    std::string tag;                     ///< "TPG", "Tdr", "VRT" or "HRZ"; empty for any other kind
    std::int32_t nx = 0;                 ///< columns, eastward
    std::int32_t ny = 0;                 ///< rows, northward
    double org_x = 0.0;                  ///< first column, m or degrees
    double org_y = 0.0;                  ///< first row
    double end_x = 0.0;                  ///< last column; set by the text reader only. Not used by a run.
    double end_y = 0.0;                  ///< last row; set by the text reader only. Not used by a run.
    std::int64_t dataNum = 0;            ///< values of the grid, as read or as Set2dStruct() has it
    std::int32_t coordType = 0;          ///< kPlaneCoordinates or kGeographicCoordinates
    double auxVal = 0.0;                 ///< means nothing here; a caller may keep a number in it. Not used by a run.
    float dx = 0.0F;                     ///< spacing of both axes; single on purpose: matches the file format
    float dy = 0.0F;                     ///< set by the text reader only, which requires it to equal `dx`
    std::vector<InstantVal2d> instants;  ///< one snapshot per rupture time interval
    float* val = nullptr;                ///< nx * ny values (array new)
    float* valWork = nullptr;            ///< nx * ny values: the filter's copy of a snapshot (array new)
    float* parentValWork = nullptr;      ///< parent nx * ny values: the filter's sum of the parent's snapshots
    float valMax = 0.0F;                 ///< largest value as read
    float valMin = 0.0F;                 ///< smallest value as read
    std::string outFileName;             ///< file that this region last wrote or listed. Not used by a run.
    std::string name;                    ///< part of the names of a series
    std::int32_t no = 0;                 ///< part of the names of the static grids. Not used by a run.
    std::int32_t parentNo = 0;           ///< number of the enclosing region; 0 or negative: none
    std::string inFileName;              ///< grid file to read; empty for the computed kinds
    bool noBinaryInput = false;          ///< true unless the grid comes from a binary grid file. Not used by a run.
    double constVal = 0.0;               ///< value with which Make2dStruct() fills the grid. Not used by a run.

    /// Everything 0, empty or null. Not used by a run.
    Region() = default;

    /// Takes from the record what the kind of region needs; reads and allocates nothing.
    Region(RType kind, const PARAM_REGION& param);

    /// Takes over a grid's geometry; `d` is rounded to single precision. `dataNum` becomes nx * ny wrapped to 32 bits.
    void Set2dStruct(int columns, int rows, double orgX, double orgY, double d);

    /// Allocates `val` with nx * ny values, all `constVal` (or `v`) rounded to single precision, and returns it. The
    /// array that this region had is freed: copies that share it are then invalid. With nx or ny below 1 nothing is
    /// filled. Throws std::bad_array_new_length when nx * ny is negative or beyond 32 bits. Not used by a run.
    float* Make2dStruct();
    /// As the other, filled with `v`. Not used by a run.
    float* Make2dStruct(double v);

    /// Frees `val` and `valWork` and empties every snapshot; `instants` keeps its length. `parentValWork` stays: it is
    /// its caller's, and regions may share one. Harmless twice.
    void FreeVecMem();

    /// Does nothing. Returns 1. Not used by a run.
    static int TempMethod();

    /// Reads the grid named by `inFileName`: binary when the name holds ".bin" at a position other than 0, else text.
    /// Prints a summary. Returns 1, the array that `val` had being freed (copies that share it are then invalid); or 0
    /// after a framed block on standard error, `val` then being unchanged.
    int ReadFile();

    /// Writes snapshot k of `instants` for every interval k of `dp` to a binary grid of its own in `dir`, then the list
    /// of these files. Returns 1; or 0 after a framed block on standard error. Grids that were complete by then stay.
    int WriteBINDynamic(const std::string& dir, const DynamicParam& dp);

    /// Writes the binary grid "<tag><number>.bin" in `dir`: the header, and for a topography region the values. Sets
    /// `outFileName`. Returns 1; or 0 after a framed block on standard error. Not used by a run.
    int WriteBIN(const std::string& dir);

    /// Writes the text grid "<tag><number>_<snapshot>.txt" in `dir`, a line "ix iy value" per point: depths (the
    /// topography with its sign turned) or initial wave heights; other kinds give an empty file. withSnapshots: one
    /// file per snapshot, which is added to the values. Returns 1; or 0 after a framed block on standard error, and
    /// files of earlier snapshots stay. Not used by a run.
    int WriteASCII(const std::string& dir, bool withSnapshots);

    /// Appends this region's entry of the calculation-parameter text to `stream`, which stays open. Returns 1; or 0
    /// after a framed block on standard error. Not used by a run.
    int WriteCalParam(std::FILE* stream) const;

    /// Smooths every snapshot in place with the Kajiura (1963) response of the local water depth; see KajiuraFilter.h.
    /// depth: nx * ny values, m, negative below sea level. parentA, parentB: the snapshots of the enclosing region, pnx
    /// columns of pny rows, whose sum stands in for samples outside this grid; read only when parentNumber > 0.
    /// Requires: `valWork` holds nx * ny and `parentValWork` pnx * pny values. Returns 1.
    int KajiuraFilterNesting(const float* depth, int parentNumber, int pnx, int pny, double porg_x, double porg_y,
                             float pdx, const std::vector<InstantVal2d>& parentA,
                             const std::vector<InstantVal2d>& parentB);
};

/// Where the grid of a region lies.
[[nodiscard]] GridShape ShapeOf(const Region& region) noexcept;

/// 1 when both grids have equal nx, ny, org_x and org_y, else 0; a NaN equals nothing. No tolerance, and the spacing is
/// not compared, on purpose: grids of one geometry got it from one file. Not used by a run.
int isSameRegion(const Region* a, const Region* b);

}  // namespace tidora
