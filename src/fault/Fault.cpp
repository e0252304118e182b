#include "fault/Fault.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>

#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

/// Why a fault file was refused; the values are the reader's codes.
enum class FaultFileError { None = 0, CannotOpen = 1, ShortLine = 2 };

constexpr std::size_t kColumns = 10;
constexpr std::size_t kColumnsWithTiming = 13;

/// The element of a data line with at least ten columns. Latitude (or y) stands before longitude (or x); column 11 is
/// ignored, and the timing counts only when all of 13 columns are there.
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

FaultFileError AppendElements(const std::string& path, std::vector<FAULT_PARAM>& elements) {
    const FileHandle file = OpenForReading(path, "r");
    if (!file) {
        return FaultFileError::CannotOpen;
    }
    BoundedLineReader lines(file.get(), Fault::FILE_MAX_PATH);
    while (lines.Next()) {
        if (lines.IsComment()) {
            continue;
        }
        const std::vector<std::string> tokens = Tokens(lines.Line(), kDataDelimiters);
        if (tokens.size() < kColumns) {
            return FaultFileError::ShortLine;
        }
        elements.push_back(ElementOf(tokens));
    }
    return FaultFileError::None;
}

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

void ReportFileError(FaultFileError error) {
    std::vector<std::string> details = {"Abnormal action at Reading File Method."};
    if (error == FaultFileError::CannotOpen) {
        details.emplace_back("Can not open file.");
        details.emplace_back("Particular attention should be given to \"Fault File\".");
    } else {
        details.emplace_back("You should check the Format of Fault File.");
    }
    ReportError(std::cerr, "FAULT OBJECT METHOD", details);
}

}  // namespace

Fault::Fault(const PARAM_FAULT& param) : fileName(param.faultFile), coordType(param.coordType) {}

int Fault::ReadFile() {
    std::cout << "\n>>>>>>>>>>>>>>>>>> Fault Input:" << fileName << std::endl;
    const FaultFileError error = AppendElements(fileName, elements);
    if (error != FaultFileError::None) {
        ReportFileError(error);
        return 0;
    }
    for (std::size_t i = 0; i < elements.size(); ++i) {
        PrintElement(i + 1, elements[i]);
    }
    std::cout << "<<<<<<<<<<<<<<<<<< Completed Fault Input." << std::endl;
    return 1;
}

void Fault::FreeVecMem() {
    std::vector<FAULT_PARAM>().swap(elements);
}

void Fault::strReplace(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) {
        return;
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
            const bool isKnown = std::any_of(list.begin(), list.end(), [&element](const DYNAMIC_PARAM& interval) {
                return interval.validTime == element.lagtime && interval.riseTime == element.duration;
            });
            if (!isKnown) {
                list.push_back({static_cast<std::int32_t>(list.size()), element.lagtime, element.duration, true});
            }
        }
    } catch (const std::exception&) {
        ReportError(std::cerr, "FAULT OBJECT METHOD", {"Abnormal action at SetDynamicParam Method."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
