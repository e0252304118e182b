#include "Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "TextPieces.h"

namespace {

namespace fs = std::filesystem;

/// The lines of a text; the last one says so when it has no line end.
std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = text.find('\n', at);
        const bool isOpen = end == std::string::npos;
        lines.push_back(text.substr(at, end - at) + (isOpen ? " (no line end)" : ""));
        at = isOpen ? text.size() : end + 1;
    }
    return lines;
}

/// "12", "0.25", "1e-06": a number as it is printed, without a sign.
bool IsPlainNumber(const std::string& text) {
    const bool hasOnlyItsLetters = text.find_first_not_of("0123456789.e-") == std::string::npos;
    if (text.empty() || !hasOnlyItsLetters || text.front() < '0' || text.front() > '9') {
        return false;
    }
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    return *end == '\0' && std::isfinite(value);
}

/// Processor times differ from run to run. Only a plain number is taken out: anything else there stays and is found.
std::string WithoutTimes(std::string text) {
    const std::string start = "Calc Time : ";
    const std::string unit = "[sec]";
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        at += start.size();
        const std::size_t end = text.find(unit, at);
        if (end != std::string::npos && IsPlainNumber(text.substr(at, end - at))) {
            text.replace(at, end - at, "*");
        }
    }
    return text;
}

/// Lines of a difference: "=" for two that agree, "-" for an expected one, "+" for what came instead.
std::string TextDifference(const std::string& expectedText, const std::string& actualText) {
    const std::vector<std::string> expected = LinesOf(expectedText);
    const std::vector<std::string> actual = LinesOf(actualText);
    const std::size_t shorter = std::min(expected.size(), actual.size());
    std::size_t start = 0;
    while (start < shorter && MatchesLine(expected[start], actual[start])) {
        ++start;
    }
    if (start == expected.size() && start == actual.size()) {
        return {};
    }
    std::size_t end = 0;
    while (end < shorter - start && MatchesLine(expected[expected.size() - 1 - end], actual[actual.size() - 1 - end])) {
        ++end;
    }
    std::string text = "from line " + std::to_string(start + 1) + " on\n";
    if (start > 0) {
        text += "  = " + Readable(actual[start - 1]) + '\n';
    }
    for (std::size_t n = start; n < expected.size() - end; ++n) {
        text += "  - " + Readable(expected[n]) + '\n';
    }
    for (std::size_t n = start; n < actual.size() - end; ++n) {
        text += "  + " + Readable(actual[n]) + '\n';
    }
    if (end > 0) {
        text += "  = " + Readable(actual[actual.size() - end]) + '\n';
    }
    return text;
}

/// Files under their path, directories with a "/" behind it.
std::set<std::string> NamesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).string();
        names.insert(entry.is_directory() && !entry.is_symlink() ? name + '/' : name);
    }
    return names;
}

std::set<std::string> NamesAfter(const CaseFile& expected) {
    std::set<std::string> names;
    const auto add = [&names](const std::string& name, const char* ending) {
        names.insert(name + ending);
        for (std::size_t slash = name.find('/'); slash != std::string::npos; slash = name.find('/', slash + 1)) {
            names.insert(name.substr(0, slash + 1));
        }
    };
    for (const auto& [name, bytes] : expected.inputs) {
        add(name, "");
    }
    for (const auto& [name, text] : expected.outputs) {
        add(name, "");
    }
    for (const auto& [name, values] : expected.binaryOutputs) {
        add(name, "");
    }
    for (const std::set<std::string>* const directories : {&expected.directories, &expected.newDirectories}) {
        for (const std::string& name : *directories) {
            add(name, "/");
        }
    }
    return names;
}

void CompareNames(const std::set<std::string>& expected, const std::set<std::string>& found,
                  std::vector<std::string>& differences) {
    for (const std::string& name : expected) {
        if (found.count(name) == 0) {
            differences.push_back("missing: " + Readable(name));
        }
    }
    for (const std::string& name : found) {
        if (expected.count(name) == 0) {
            differences.push_back("not expected: " + Readable(name));
        }
    }
}

void CompareText(const std::string& what, const std::string& expected, const std::string& actual,
                 std::vector<std::string>& differences) {
    const std::string difference = TextDifference(expected, actual);
    if (!difference.empty()) {
        differences.push_back(what + " differs " + difference);
    }
}

void CompareFiles(const CaseFile& expected, const std::string& folder, std::vector<std::string>& differences) {
    const auto isThere = [&folder](const std::string& name) { return fs::is_regular_file(folder + '/' + name); };
    for (const auto& [name, text] : expected.outputs) {
        if (isThere(name)) {
            CompareText(name, text, FileBytes(folder + '/' + name), differences);
        }
    }
    for (const auto& [name, values] : expected.binaryOutputs) {
        if (isThere(name)) {
            for (const std::string& difference : DifferencesOf(values, FileBytes(folder + '/' + name))) {
                differences.push_back(name + " differs: " + difference);
            }
        }
    }
    for (const auto& [name, bytes] : expected.inputs) {
        const bool isReplaced = expected.outputs.count(name) + expected.binaryOutputs.count(name) > 0;
        if (!isReplaced && isThere(name) && FileBytes(folder + '/' + name) != bytes) {
            differences.push_back("an input file was changed: " + Readable(name));
        }
    }
}

}  // namespace

std::vector<std::string> DifferencesOf(const CaseFile& expected, const ProcessResult& result,
                                       const std::string& folder) {
    std::vector<std::string> differences;
    if (result.status != expected.status) {
        differences.push_back("exit status: expected " + expected.status + ", found " + result.status);
    }
    CompareText("stdout", expected.out, WithoutTimes(result.out), differences);
    CompareText("stderr", expected.err, result.err, differences);
    CompareNames(NamesAfter(expected), NamesIn(folder), differences);
    CompareFiles(expected, folder, differences);
    return differences;
}
