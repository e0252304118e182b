#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/ConfReader.h"
#include "deform/FaultElement.h"
#include "fault/DynamicParam.h"
#include "grid/InstantVal2d.h"

namespace tidora {

/// A fault source: the elements of one fault file, which it owns. Slip at depth, as rectangles; see FaultElement.h.
/// Methods that can fail return 1, or 0 after a framed block on standard error.
class Fault {
public:
    /// Size of the line buffer, fixed by the format: 1022 characters and a NUL.
    static constexpr std::int32_t FILE_MAX_PATH = 1023;

    std::string fileName;               ///< fault parameter file
    std::int32_t coordType = 0;         ///< kPlaneCoordinates or kGeographicCoordinates
    std::vector<FAULT_PARAM> elements;  ///< in file order

    /// No path and no elements. Not used by a run.
    Fault() = default;

    /// Takes over path and kind; opens nothing.
    explicit Fault(const PARAM_FAULT& param);

    /// Appends the elements of `fileName` to `elements` and echoes all of them on standard output.
    /// Returns 1; or 0 after a framed block on standard error, and then echoes none. Elements before a malformed line
    /// stay.
    int ReadFile();

    /// Releases the storage of `elements`.
    void FreeVecMem();

    /// Replaces every occurrence of `from` in `text` by `to`, left to right; inserted text is not scanned again. An
    /// empty `from` occurs nowhere. Not used by a run.
    static void strReplace(std::string& text, const std::string& from, const std::string& to);

    /// Does nothing. Returns 1. Not used by a run.
    static int TempMethod();

    /// Adds one interval per distinct pair of lag time and duration to `list`, in order of first appearance, unless it
    /// is there; elements without slip count too. Returns 1; or 0 after a framed block on standard error when storage
    /// is exhausted.
    int SetDynamicParam(std::vector<DYNAMIC_PARAM>& list);

    /// Adds the sea-floor displacement of every element, shared out over the intervals of `dyn`, into the snapshots.
    ///
    /// mu, lambda: Lame constants, any common unit. horzMinDepth: the horizontal term acts where the topography is
    /// below minus this, m. tolerance: displacement that sets the distances of the finite and the point source, m; at
    /// most 1e-5: finite sources everywhere within 30 degrees of arc. horizontalEffect: 1 computes the horizontal term.
    /// nx, ny, org_x, org_y, dx: the grid, in metres or degrees by regionCoordType. topo: nx * ny values, m.
    /// vertOut, horzOut: one snapshot of nx * ny values per interval; Okada (1992) vertical displacement, and the
    /// uplift ux * gx + uy * gy of the slope -grad(topo).
    ///
    /// Returns 1; or 0 after a framed block on standard error: a negative tolerance, or an element origin that cannot
    /// be projected. Contributions of earlier elements stay. Kinds of co-ordinates that differ give no deformation.
    int Deform2D(float mu, float lambda, float horzMinDepth, double tolerance, int horizontalEffect,
                 int regionCoordType, int nx, int ny, double org_x, double org_y, float dx, const float* topo,
                 std::vector<InstantVal2d>& vertOut, std::vector<InstantVal2d>& horzOut, const DynamicParam& dyn);
};

}  // namespace tidora
