#include "fault/DynamicParam.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>
#include <utility>

#include "deform/SlipShares.h"
#include "fault/RowFile.h"
#include "grid/GridShape.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

constexpr std::size_t kColumns = 3;  // order, start and length; what follows is ignored

/// The interval of a row. One that starts at 0 or before is valid whatever the limit, and so is one whose start is not
/// a number: only a start above 0 is compared. Test: "an interval is valid when it starts at 0 or before or below the
/// limit".
DYNAMIC_PARAM IntervalOf(const std::vector<std::string>& tokens, double timeLimit) noexcept {
    DYNAMIC_PARAM interval;
    interval.order = LenientInt(tokens[0].c_str());
    interval.validTime = LenientDouble(tokens[1].c_str());
    interval.riseTime = LenientDouble(tokens[2].c_str());
    interval.isValid = interval.validTime > 0.0 ? interval.validTime < timeLimit : true;
    return interval;
}

}  // namespace

void PrintInterval(std::ostream& out, const DYNAMIC_PARAM& interval) {
    out << "order       :" << interval.order << '\n'
        << " valid time :" << interval.validTime << '\n'
        << " rise  time :" << interval.riseTime << std::endl;
}

int DynamicParam::ReadFile(double timeLimit) {
    std::cout << "\n>>>>>>>>>>>>> Fault Dynamic Parameter Input:" << std::endl;
    const RowFileError error = ReadRows(
        fileName, FILE_MAX_PATH, kColumns,
        [this, timeLimit](const std::vector<std::string>& tokens) { params.push_back(IntervalOf(tokens, timeLimit)); });
    if (error != RowFileError::None) {
        ReportRowFileError(error, "DYNAMICPARAM OBJECT METHOD", "Dynamic Parameter File");
        return 0;
    }
    for (const DYNAMIC_PARAM& interval : params) {
        if (interval.isValid) {
            PrintInterval(std::cout, interval);
        }
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed." << std::endl;
    return 1;
}

float SlipShare(const DYNAMIC_PARAM& interval, double lagtime, double duration) noexcept {
    return ShareOfInterval(interval.validTime, interval.riseTime, {lagtime, duration});
}

int DynamicParam::CalcDynamicAct(int nx, int ny, double lagtime, double duration, const float* field,
                                 std::vector<InstantVal2d>& out) const {
    if (!IsGridSize(nx, ny)) {
        return 1;
    }
    const std::ptrdiff_t size = std::ptrdiff_t{nx} * ny;
    const std::size_t intervals = std::min(params.size(), out.size());
    for (std::size_t k = 0; k < intervals; ++k) {
        const float share = SlipShare(params[k], lagtime, duration);
        if (share == 0.0F) {
            continue;  // nothing, also where the field is not a number
        }
        std::transform(field, field + size, out[k].val, out[k].val,
                       [share](float value, float sum) { return sum + share * value; });
    }
    return 1;
}

void DynamicParam::FreeVecMem() {
    std::vector<DYNAMIC_PARAM>().swap(params);  // clear() would keep the storage
}

}  // namespace tidora
