#include "CaseFile.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>

#include "ChildProcess.h"
#include "TextPieces.h"

namespace {

constexpr std::string_view kSectionMark = "--- ";
constexpr std::string_view kNoLineEnd = "{no-newline}";

/// "--- file fault.txt" and the lines below it.
struct Section {
    std::string kind;
    std::string name;
    std::string body;  ///< every line with its line end
};

Section SectionOf(const std::string& heading) {
    const std::string text = heading.substr(kSectionMark.size());
    const std::size_t blank = text.find(' ');
    Section section;
    section.kind = text.substr(0, blank);
    section.name = blank == std::string::npos ? "" : ExpandPieces(text.substr(blank + 1));
    return section;
}

std::vector<Section> SectionsOf(const std::string& path) {
    std::vector<Section> sections;
    std::istringstream lines(FileBytes(path));
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, kSectionMark.size(), kSectionMark) == 0) {
            sections.push_back(SectionOf(line));
        } else if (sections.empty()) {
            throw CaseError("a case starts with a section");
        } else {
            sections.back().body += line + '\n';
        }
    }
    return sections;
}

/// The text of a section; one that ends in {no-newline} ends without a line end.
std::string TextOf(std::string_view body) {
    const std::size_t end = body.size() - std::min(body.size(), kNoLineEnd.size() + 1);
    const bool isOpen = body.substr(end) == std::string(kNoLineEnd) + '\n';
    return ExpandPieces(isOpen ? body.substr(0, end) : body);
}

/// "caption = value" on every line becomes two lines; a line without " = " stays as it is.
std::string PairsAsLines(const std::string& body) {
    const std::string_view separator = " = ";
    std::string text;
    std::istringstream lines(body);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t at = line.find(separator);
        text += at == std::string::npos ? line : line.substr(0, at) + '\n' + line.substr(at + separator.size());
        text += '\n';
    }
    return text;
}

std::string InputText(const std::string& body) {
    std::string text = TextOf(body);
    if (HasMarks(text)) {
        throw CaseError("an input file holds numbers, not ranges of them");
    }
    return text;
}

std::string InputValues(const std::string& body) {
    const std::vector<TypedValue> values = ParseTypedValues(body);
    if (std::any_of(values.begin(), values.end(), [](const TypedValue& value) { return value.tolerance >= 0.0; })) {
        throw CaseError("an input file holds numbers, not ranges of them");
    }
    return BytesOf(values);
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        found.push_back(line);
    }
    return found;
}

/// Puts the section where it belongs; false for a kind that takes a name.
bool TakeUnnamed(const Section& section, CaseFile& found) {
    if (section.kind == "args") {
        found.arguments = LinesOf(InputText(section.body));
    } else if (section.kind == "status") {
        found.status = section.body.substr(0, section.body.find('\n'));
    } else if (section.kind == "stdout") {
        found.out = TextOf(section.body);
    } else if (section.kind == "stderr") {
        found.err = TextOf(section.body);
    } else if (section.kind != "why") {
        return false;
    }
    return true;
}

void TakeNamed(const Section& section, CaseFile& found) {
    if (section.kind == "file") {
        found.inputs[section.name] = InputText(section.body);
    } else if (section.kind == "pairs") {
        found.inputs[section.name] = InputText(PairsAsLines(section.body));
    } else if (section.kind == "binary") {
        found.inputs[section.name] = InputValues(section.body);
    } else if (section.kind == "directory") {
        found.directories.insert(section.name);
    } else if (section.kind == "output") {
        found.outputs[section.name] = TextOf(section.body);
    } else if (section.kind == "output-binary") {
        found.binaryOutputs[section.name] = ParseTypedValues(section.body);
    } else if (section.kind == "output-directory") {
        found.newDirectories.insert(section.name);
    } else {
        throw CaseError("there is no section \"" + section.kind + "\"");
    }
}

void Take(const Section& section, CaseFile& found) {
    const bool isUnnamed = TakeUnnamed(section, found);
    if (!isUnnamed) {
        TakeNamed(section, found);
    }
    if (isUnnamed != section.name.empty()) {
        throw CaseError("section \"" + section.kind + (isUnnamed ? "\" takes no name" : "\" needs a name"));
    }
}

}  // namespace

CaseFile ReadCaseFile(const std::string& path) {
    CaseFile found;
    std::set<std::string> seen;
    for (const Section& section : SectionsOf(path)) {
        if (!seen.insert(section.kind + ' ' + section.name).second) {
            throw CaseError("section \"" + section.kind + ' ' + section.name + "\" stands twice");
        }
        Take(section, found);
    }
    for (const char* const needed : {"why ", "status ", "stdout "}) {
        if (seen.count(needed) == 0) {
            throw CaseError("a case needs a section \"" + std::string(needed) + '"');
        }
    }
    return found;
}
