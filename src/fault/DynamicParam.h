#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "grid/InstantVal2d.h"

namespace tidora {

/// One rupture time interval.
struct DYNAMIC_PARAM {
    std::int32_t order = 0;  ///< ordinal: file column 1, or the position when collected from a fault
    double validTime = 0.0;  ///< start, s
    double riseTime = 0.0;   ///< length, s
    bool isValid = true;     ///< starts before the reader's time limit
};

/// The list of rupture time intervals and the rupture time function.
class DynamicParam {
public:
    static constexpr std::int32_t FILE_MAX_PATH = 1023;  ///< size of the line buffer

    std::string fileName;               ///< dynamic parameter file
    std::vector<DYNAMIC_PARAM> params;  ///< the intervals; their order is the order of the snapshots
    std::int32_t count = 0;             ///< not used by this class

    /// Appends the intervals of `fileName` and prints those that start before `timeLimit` (s).
    /// Returns 1; or 0 after a framed block on standard error. Intervals before a malformed line stay.
    int ReadFile(double timeLimit);

    /// Adds `field` (nx * ny values), times the share of the element's slip that falls into interval k, to snapshot k
    /// of `out`, for every interval. lagtime, duration: start and length of the element's slip, s. Returns 1.
    /// Requires: `out` holds a snapshot of nx * ny values per interval.
    int CalcDynamicAct(int nx, int ny, double lagtime, double duration, const float* field,
                       std::vector<InstantVal2d>& out) const;

    /// Releases the storage of `params`.
    void FreeVecMem();
};

/// Writes order, start and length of an interval, a line each.
void PrintInterval(std::ostream& out, const DYNAMIC_PARAM& interval);

/// Share of an element's slip that falls into an interval, 0 to 1. The slip grows linearly from `lagtime` over
/// `duration`; an interval of start 0 and length 0 takes everything. Single precision on purpose: the difference of
/// times is rounded before the division.
[[nodiscard]] float SlipShare(const DYNAMIC_PARAM& interval, double lagtime, double duration) noexcept;

}  // namespace tidora
