#include "fault/Fault.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>

#include "fault/RowFile.h"
#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

constexpr std::size_t kColumns = 10;            // as far as the slip
constexpr std::size_t kColumnsWithTiming = 13;  // as far as the duration; later ones are ignored

/// The element of a row of at least ten columns, numbered from 1 as in the documents. Kept on purpose, as the format
/// has them: latitude (or y) stands before longitude (or x); column 11 is ignored, also where the timing follows it;
/// and lag time and duration count only together. Tests: "a fault file becomes elements and is echoed without its third
/// column", "lag time and duration count only on a line of thirteen tokens or more".
FAULT_PARAM ElementOf(const std::vector<std::string>& tokens) {
    const auto column = [&tokens](std::size_t number) { return LenientDouble(tokens[number - 1].c_str()); };
    FAULT_PARAM element;
    element.org_y = column(1);
    element.org_x = column(2);
    element.baseOffset = column(3);
    element.depth = column(4);
    element.strike = column(5);
    element.dip = column(6);
    element.rake = column(7);
    element.length = column(8);
    element.width = column(9);
    element.slip = column(10);
    if (tokens.size() >= kColumnsWithTiming) {
        element.lagtime = column(12);
        element.duration = column(13);
    }
    return element;
}

/// Co-ordinates and lengths have six decimals, the rest up to six significant digits; x comes before y, unlike in the
/// file. The base offset is not shown. Test: "a fault file becomes elements and is echoed without its third column".
void PrintElement(std::size_t number, const FAULT_PARAM& element) {
    std::cout << "----- Fault No.:" << number << '\n'
              << "org_x   :" << std::to_string(element.org_x) << '\n'
              << "org_y   :" << std::to_string(element.org_y) << '\n'
              << "depth   :" << element.depth << '\n'
              << "strike  :" << element.strike << '\n'
              << "dip     :" << element.dip << '\n'
              << "rake    :" << element.rake << '\n'
              << "length  :" << std::to_string(element.length) << '\n'
              << "width   :" << std::to_string(element.width) << '\n'
              << "slip    :" << element.slip << '\n'
              << "lagtime :" << element.lagtime << '\n'
              << "duration:" << element.duration << std::endl;
}

}  // namespace

Fault::Fault(const PARAM_FAULT& param) : fileName(param.faultFile), coordType(param.coordType) {}

int Fault::ReadFile() {
    std::cout << "\n>>>>>>>>>>>>>>>>>> Fault Input:" << fileName << std::endl;
    const RowFileError error =
        ReadRows(fileName, FILE_MAX_PATH, kColumns,
                 [this](const std::vector<std::string>& tokens) { elements.push_back(ElementOf(tokens)); });
    if (error != RowFileError::None) {
        ReportRowFileError(error, "FAULT OBJECT METHOD", "Fault File");
        return 0;
    }
    // All of them, also those of an earlier call.
    // Test: "reading a fault file twice appends its elements a second time and echoes all of them".
    for (std::size_t i = 0; i < elements.size(); ++i) {
        PrintElement(i + 1, elements[i]);
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed Fault Input." << std::endl;
    return 1;
}

void Fault::FreeVecMem() {
    std::vector<FAULT_PARAM>().swap(elements);  // clear() would keep the storage
}

void Fault::strReplace(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) {
        return;  // found everywhere, it would never come to an end
    }
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

int Fault::TempMethod() {
    return 1;
}

int Fault::SetDynamicParam(std::vector<DYNAMIC_PARAM>& list) {
    try {
        for (const FAULT_PARAM& element : elements) {
            // Exactly equal, on purpose: intervals that nearly agree are two. A NaN equals none and makes one each
            // time. Test: "lag times are compared exactly and a NaN equals none".
            const bool isKnown = std::any_of(list.begin(), list.end(), [&element](const DYNAMIC_PARAM& interval) {
                return interval.validTime == element.lagtime && interval.riseTime == element.duration;
            });
            if (!isKnown) {
                list.push_back({static_cast<std::int32_t>(list.size()), element.lagtime, element.duration, true});
            }
        }
    } catch (const std::exception&) {  // of the storage; the block is what callers know this failure by
        ReportError(std::cerr, "FAULT OBJECT METHOD", {"Abnormal action at SetDynamicParam Method."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
