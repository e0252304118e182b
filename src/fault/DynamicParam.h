#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "grid/InstantVal2d.h"

namespace tidora {

/// One rupture time interval, from `validTime` to `validTime` + `riseTime`. Start and length 0 make the static
/// interval.
struct DYNAMIC_PARAM {
    std::int32_t order = 0;  ///< ordinal: file column 1, or the position when collected from a fault
    double validTime = 0.0;  ///< start, s
    double riseTime = 0.0;   ///< length, s
    bool isValid = true;  ///< starts before the reader's time limit; CalcDynamicAct() does not ask. Not used by a run.
};

/// The list of rupture time intervals and the rupture time function. A copy shares nothing. A run has one, with the
/// intervals that Fault::SetDynamicParam() collects; callers of the library may read them from a file instead.
class DynamicParam {
public:
    /// Size of the line buffer, fixed by the format: 1022 characters and a NUL. Not used by a run.
    static constexpr std::int32_t FILE_MAX_PATH = 1023;

    std::string fileName;               ///< dynamic parameter file; the caller sets it. Not used by a run.
    std::vector<DYNAMIC_PARAM> params;  ///< the intervals; their order is the order of the snapshots
    std::int32_t count = 0;             ///< means nothing here; callers may count in it. Not used by a run.

    /// Appends the intervals of `fileName` and prints those that start before `timeLimit` (s).
    /// Returns 1; or 0 after a framed block on standard error, and then prints none. Intervals before a malformed line
    /// stay, and so do those that start later than the limit. Not used by a run.
    int ReadFile(double timeLimit);

    /// Adds `field` (nx * ny values), times the share of the element's slip that falls into interval k, to snapshot k
    /// of `out`, for every interval. lagtime, duration: start and length of the element's slip, s. Returns 1.
    /// The product is rounded to single precision before it is added. Requires: `out` holds a snapshot of nx * ny
    /// values per interval. Not used by a run.
    int CalcDynamicAct(int nx, int ny, double lagtime, double duration, const float* field,
                       std::vector<InstantVal2d>& out) const;

    /// Releases the storage of `params`. Not used by a run.
    void FreeVecMem();
};

/// Writes order, start (s) and length (s) of an interval, a line each, with up to six significant digits.
void PrintInterval(std::ostream& out, const DYNAMIC_PARAM& interval);

/// Share of an element's slip that falls into an interval, 0 to 1. The slip grows linearly from `lagtime` over
/// `duration`, in s; an interval of start 0 and length 0 takes everything. Intervals that overlap each take their
/// share: the sum may exceed 1. Test: "overlapping intervals of two elements count their slip twice". Single precision
/// on purpose: the difference of times is rounded before the division.
[[nodiscard]] float SlipShare(const DYNAMIC_PARAM& interval, double lagtime, double duration) noexcept;

}  // namespace tidora
