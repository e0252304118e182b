// What comments promise about names: the mark of what no run uses, and the tests that comments point to.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "cli/ChildProcess.h"
#include "docs/Documents.h"

namespace fs = std::filesystem;

namespace {

const std::string kMark = "Not used by a run.";

std::vector<fs::path> FilesBelow(const std::string& folder, const std::vector<std::string>& endings) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(TIDORA_SOURCE_ROOT + ("/" + folder))) {
        if (std::find(endings.begin(), endings.end(), entry.path().extension().string()) != endings.end()) {
            files.push_back(entry.path());
        }
    }
    return files;
}

std::string Trimmed(const std::string& line) {
    const std::size_t first = line.find_first_not_of(' ');
    return first == std::string::npos ? "" : line.substr(first);
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool IsOfName(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '=';
}

// The name that a declaration declares: the last word before its arguments or its value. "operator=" is a word, too.
std::string DeclaredName(const std::string& line) {
    const std::size_t operatorName = line.find("operator=");
    std::size_t end = operatorName == std::string::npos ? line.find_first_of("(;={") : operatorName + 9;
    while (end > 0 && line[end - 1] == ' ') {
        --end;
    }
    std::size_t begin = end;
    while (begin > 0 && IsOfName(line[begin - 1])) {
        --begin;
    }
    return line.substr(begin, end - begin);
}

// True for a line that begins a declaration: a later one of it is indented further.
bool BeginsDeclaration(const std::string& line, const std::string& first) {
    return line.find_first_not_of(' ') == first.find_first_not_of(' ');
}

// The names that a header marks, members with their class. A mark at the end of a comment above declarations belongs to
// all of them, up to an empty line or the next comment.
std::set<std::string> MarkedNames(const std::string& header) {
    std::set<std::string> names;
    std::string owner;
    const Lines lines = LinesOf(header);
    for (std::size_t at = 0; at < lines.size(); ++at) {
        const std::string line = Trimmed(lines[at]);
        if ((StartsWith(line, "struct ") || StartsWith(line, "class ")) && EndsWith(line, "{")) {
            owner = DeclaredName(line) + "::";
        } else if (line == "};") {
            owner.clear();
        }
        if (!EndsWith(line, kMark)) {
            continue;
        }
        if (!StartsWith(line, "///")) {
            names.insert(owner + DeclaredName(line));
            continue;
        }
        const std::size_t first = at + 1;
        for (std::size_t next = first; next < lines.size() && !Trimmed(lines[next]).empty(); ++next) {
            if (StartsWith(Trimmed(lines[next]), "//") || StartsWith(Trimmed(lines[next]), "}")) {
                break;
            }
            if (BeginsDeclaration(lines[next], lines[first])) {
                // The name of an object may stand on the line after its type.
                const bool isWhole = lines[next].find_first_of("(;=") != std::string::npos;
                names.insert(owner + DeclaredName(isWhole ? lines[next] : lines[next] + " " + lines[next + 1]));
            }
        }
    }
    return names;
}

// How often the mark stands in a text in any form, also where a line ends within it.
std::size_t CountMarks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '/'), text.end());
    std::string words;
    for (const char c : text) {
        const bool isBlank = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!isBlank || (!words.empty() && words.back() != ' ')) {
            words += isBlank ? ' ' : c;
        }
    }
    std::size_t count = 0;
    for (std::size_t at = words.find("Not used by a run"); at != std::string::npos;
         at = words.find("Not used by a run", at + 1)) {
        ++count;
    }
    return count;
}

// The published names that a run neither calls nor looks at. A name comes here when its last use goes, and leaves when
// a run begins to use it; the mark in the header with it.
const std::set<std::string> kUnused = {
    "ConfReader::IsExistDir",
    "ConfReader::MakeDir",
    "ConfReader::checkConsistency",
    "ConfReader::faultSet",
    "ConfReader::iniWaveSet",
    "ConfReader::spareText",
    "ConfReader::topoDeform",
    "DYNAMIC_PARAM::isValid",
    "DynamicParam::CalcDynamicAct",
    "DynamicParam::FILE_MAX_PATH",
    "DynamicParam::FreeVecMem",
    "DynamicParam::ReadFile",
    "DynamicParam::count",
    "DynamicParam::fileName",
    "Fault::Fault",
    "Fault::TempMethod",
    "Fault::strReplace",
    "InstantVal2d::InstantVal2d",
    "InstantVal2d::operator=",
    "Linear::FILE_MAX_PATH",
    "Linear::Linear",
    "PARAM_REGION::iniWaveConst",
    "PARAM_REGION::iniWaveFile",
    "PARAM_REGION::topoConst",
    "Region::G_ACC",
    "Region::Make2dStruct",
    "Region::Region",
    "Region::TempMethod",
    "Region::WriteASCII",
    "Region::WriteBIN",
    "Region::WriteCalParam",
    "Region::auxVal",
    "Region::constVal",
    "Region::end_x",
    "Region::end_y",
    "Region::no",
    "Region::noBinaryInput",
    "Region::outFileName",
    "Region::type",
    "c0_",
    "c1_",
    "c2_",
    "dc3d0_",
    "dc3d_",
    "dccon0_",
    "dccon1_",
    "dccon2_",
    "isSameRegion",
    "mapproject_initialize_using_epsg_",
    "ua0_",
    "ua_",
    "ub0_",
    "ub_",
    "uc0_",
    "uc_",
    "xy2ll_",
};

// The quoted names after "Test:" or "Tests:" in the comments of a source, joined over line ends.
std::vector<std::string> NamedTests(const std::string& source) {
    std::string comments;
    for (const std::string& line : LinesOf(source)) {
        const std::size_t comment = line.find("//");
        if (comment != std::string::npos) {
            const std::size_t text = line.find_first_not_of('/', comment);
            comments += " " + (text == std::string::npos ? "" : Trimmed(line.substr(text)));
        } else {
            comments += '\n';
        }
    }
    std::vector<std::string> names;
    for (std::size_t at = comments.find("Test"); at != std::string::npos; at = comments.find("Test", at + 1)) {
        const std::string from = comments.substr(at, comments.find('\n', at) - at);
        if (!StartsWith(from, "Test: ") && !StartsWith(from, "Tests: ")) {
            continue;
        }
        // A list: quoted names with commas between.
        std::size_t open = from.find('"');
        while (open != std::string::npos) {
            const std::size_t close = from.find('"', open + 1);
            names.push_back(from.substr(open + 1, close - open - 1));
            const std::string rest = close == std::string::npos ? "" : from.substr(close);
            open = std::string::npos;
            for (const std::string between : {"\", \"", "\" and \""}) {
                open = StartsWith(rest, between) ? close + between.size() - 1 : open;
            }
        }
    }
    return names;
}

// Everything under which a test runs: the names of test cases, and those of the command-line cases.
std::set<std::string> AllTests() {
    std::set<std::string> names;
    for (const fs::path& path : FilesBelow("tests", {".cpp", ".case"})) {
        if (path.extension() == ".case") {
            names.insert(path.stem().string());
            continue;
        }
        const std::string text = FileBytes(path.string());
        const std::string opening = "TEST_CASE(\"";
        for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at + 1)) {
            const std::size_t begin = at + opening.size();
            names.insert(text.substr(begin, text.find('"', begin) - begin));
        }
    }
    return names;
}

}  // namespace

TEST_CASE("the names that headers mark as not used by a run are those of the list") {
    std::set<std::string> marked;
    for (const fs::path& path : FilesBelow("src", {".h"})) {
        marked.merge(MarkedNames(FileBytes(path.string())));
    }
    for (const std::string& name : kUnused) {
        CAPTURE(name);
        CHECK(marked.count(name) == 1);
    }
    for (const std::string& name : marked) {
        CAPTURE(name);
        CHECK(kUnused.count(name) == 1);
    }
}

TEST_CASE("a mark stands whole at the end of its line and nowhere but in headers") {
    for (const fs::path& path : FilesBelow("src", {".h", ".cpp"})) {
        CAPTURE(path.string());
        std::size_t atEnds = 0;
        const std::string text = FileBytes(path.string());
        for (const std::string& line : LinesOf(text)) {
            atEnds += EndsWith(line, kMark) ? 1 : 0;
        }
        CHECK(CountMarks(text) == atEnds);
        CHECK((atEnds == 0 || path.extension() == ".h"));
    }
}

TEST_CASE("the search for marks sees fields, functions, groups and the class they belong to") {
    const std::string header =
        "class A {\n    int a = 0;  ///< one. Not used by a run.\n    int b = 0;  ///< two\n\n"
        "    /// Three. Not used by a run.\n    static float* C(int x,\n                    int y);\n    int D();\n\n"
        "    int E();\n    /// Four. Not used by a run.\n    A& operator=(const A& other);\n    /// Five.\n    int "
        "F();\n};\n"
        "/// Six. Not used by a run.\nextern struct B\n    g_;  // seven\n";
    CHECK(MarkedNames(header) == std::set<std::string>{"A::a", "A::C", "A::D", "A::operator=", "g_"});
    CHECK(CountMarks("/// Not used\n/// by a run.\n// Not used by a run.\n") == 2);
}

TEST_CASE("every test that a comment of the sources names is there") {
    const std::set<std::string> tests = AllTests();
    std::size_t count = 0;
    for (const fs::path& path : FilesBelow("src", {".h", ".cpp"})) {
        for (const std::string& name : NamedTests(FileBytes(path.string()))) {
            ++count;
            CAPTURE(path.string());
            CAPTURE(name);
            CHECK(tests.count(name) == 1);
        }
    }
    CHECK(count > 0);
}

TEST_CASE("the search for named tests joins lines and takes lists") {
    const std::string source =
        "// Why. Test: \"one\n// two\".\n///\n// More \"words\".\nint x;  ///< Why. Tests: \"a\", \"b\" and\n/// "
        "\"c\".\n";
    CHECK(NamedTests(source) == std::vector<std::string>{"one two", "a", "b", "c"});
}
