#include "fault/DynamicParam.h"

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <string>
#include <utility>

#include "grid/GridShape.h"
#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

/// Why a dynamic parameter file was refused; the values are the reader's codes.
enum class DynamicFileError { None = 0, CannotOpen = 1, ShortLine = 2 };

constexpr std::size_t kColumns = 3;

DynamicFileError AppendIntervals(const std::string& path, double timeLimit, std::vector<DYNAMIC_PARAM>& params) {
    const FileHandle file = OpenForReading(path, "r");
    if (!file) {
        return DynamicFileError::CannotOpen;
    }
    BoundedLineReader lines(file.get(), DynamicParam::FILE_MAX_PATH);
    while (lines.Next()) {
        if (lines.IsComment()) {
            continue;
        }
        const std::vector<std::string> tokens = Tokens(lines.Line(), kDataDelimiters);
        if (tokens.size() < kColumns) {
            return DynamicFileError::ShortLine;
        }
        DYNAMIC_PARAM interval;
        interval.order = LenientInt(tokens[0].c_str());
        interval.validTime = LenientDouble(tokens[1].c_str());
        interval.riseTime = LenientDouble(tokens[2].c_str());
        interval.isValid = interval.validTime > 0.0 ? interval.validTime < timeLimit : true;
        params.push_back(interval);
    }
    return DynamicFileError::None;
}

void ReportFileError(DynamicFileError error) {
    std::vector<std::string> details = {"Abnormal action at Reading File Method."};
    if (error == DynamicFileError::CannotOpen) {
        details.emplace_back("Can not open file.");
        details.emplace_back("Particular attention should be given to \"Dynamic Parameter File\".");
    } else {
        details.emplace_back("You should check the Format of Dynamic Parameter File.");
    }
    ReportError(std::cerr, "DYNAMICPARAM OBJECT METHOD", details);
}

}  // namespace

void PrintInterval(std::ostream& out, const DYNAMIC_PARAM& interval) {
    out << "order       :" << interval.order << '\n'
        << " valid time :" << interval.validTime << '\n'
        << " rise  time :" << interval.riseTime << std::endl;
}

int DynamicParam::ReadFile(double timeLimit) {
    std::cout << "\n>>>>>>>>>>>>> Fault Dynamic Parameter Input:" << std::endl;
    const DynamicFileError error = AppendIntervals(fileName, timeLimit, params);
    if (error != DynamicFileError::None) {
        ReportFileError(error);
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
    const double start = interval.validTime;
    const double end = start + interval.riseTime;
    if (start == 0.0 && end == 0.0) {
        return 1.0F;  // the static interval takes everything, whatever the element's timing
    }
    // An element that starts exactly at the end of the interval is outside, on purpose: so an interval without length
    // takes nothing from an element without duration that starts with it.
    // Test: "an element that starts at the end of an interval of no length gives it nothing".
    if (lagtime >= end || (start > lagtime && start >= lagtime + duration)) {
        return 0.0F;
    }
    const double lo = std::max(lagtime, start);
    const double hi = std::min(lagtime + duration, end);
    if (lo == hi) {
        return 1.0F;
    }
    return hi > lo ? static_cast<float>(static_cast<double>(static_cast<float>(hi - lo)) / duration) : 0.0F;
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
    std::vector<DYNAMIC_PARAM>().swap(params);
}

}  // namespace tidora
