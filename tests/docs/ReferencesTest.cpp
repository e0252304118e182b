// The bibliography: what sources and documents cite stands in it, and what it names speaks of its author.

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "cli/ChildProcess.h"
#include "docs/Documents.h"

namespace fs = std::filesystem;

namespace {

struct Entry {
    std::string tag;   ///< "Okada1985"
    std::string text;  ///< all of it
};

std::vector<std::smatch> Matches(const std::string& text, const std::regex& pattern) {
    return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

std::vector<Entry> Entries(const std::string& references) {
    std::vector<Entry> entries;
    const std::regex tag(R"(\n- \*\*\[([A-Za-z0-9]+)\]\*\*)");
    const std::vector<std::smatch> found = Matches(references, tag);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto begin = static_cast<std::size_t>(found[i].position(0)) + 1;
        const std::size_t next =
            i + 1 < found.size() ? static_cast<std::size_t>(found[i + 1].position(0)) : references.size();
        entries.push_back(
            {found[i][1], references.substr(begin, std::min(next, references.find("\n\n", begin)) - begin)});
    }
    return entries;
}

struct Citation {
    std::string name, year;
};

// "Okada (1985)", "Satake et al. (2013)", "(Clinger 1990, ...", "Okada (1985, 1992)" by its first year; of several
// authors the last.
std::vector<Citation> Citations(const std::string& text) {
    const std::regex inParentheses(R"(([A-Z][a-z]+)(?: et al\.)? \(((?:18|19|20)[0-9]{2})[,)])");
    const std::regex bare(R"(\((?:[A-Z][a-z]+ and )?([A-Z][a-z]+) ((?:18|19|20)[0-9]{2})[,;)])");
    std::vector<Citation> found;
    for (const std::regex& pattern : {inParentheses, bare}) {
        for (const std::smatch& match : Matches(text, pattern)) {
            found.push_back({match[1], match[2]});
        }
    }
    return found;
}

bool IsListed(const std::vector<Entry>& entries, const Citation& citation) {
    return std::any_of(entries.begin(), entries.end(), [&citation](const Entry& entry) {
        return entry.text.find('(' + citation.year + ')') != std::string::npos &&
               entry.text.find(citation.name) != std::string::npos;
    });
}

std::vector<fs::path> CitingFiles() {
    std::vector<fs::path> files;
    const fs::path root = TIDORA_SOURCE_ROOT;
    for (const char* const folder : {"src", "include", "bench", "tests", "docs", "examples", "python"}) {
        if (!fs::is_directory(root / folder)) {
            continue;
        }
        for (const auto& at : fs::recursive_directory_iterator(root / folder)) {
            const std::string kind = at.path().extension().string();
            const bool isRead = kind == ".h" || kind == ".cpp" || kind == ".md" || kind == ".py";
            if (isRead && at.path().filename() != "ReferencesTest.cpp" && at.path().filename() != "references.md") {
                files.push_back(at.path());
            }
        }
    }
    return files;
}

}  // namespace

TEST_CASE("everything cited by name and year stands in the references") {
    const std::vector<Entry> entries = Entries(SourceText("docs/references.md"));
    std::size_t citationCount = 0;
    for (const fs::path& path : CitingFiles()) {
        const std::string text = FileBytes(path.string());
        for (const Citation& citation : Citations(text)) {
            ++citationCount;
            CAPTURE(path.string());
            CAPTURE(citation.name);
            CAPTURE(citation.year);
            CHECK(IsListed(entries, citation));
        }
    }
    CHECK(citationCount > 30);
}

TEST_CASE("every file that a reference names speaks of its author") {
    const std::vector<Entry> entries = Entries(SourceText("docs/references.md"));
    CHECK(entries.size() > 10);
    for (const Entry& entry : entries) {
        CAPTURE(entry.tag);
        const std::string author = entry.tag == "ETOPO5" ? entry.tag : entry.tag.substr(0, entry.tag.size() - 4);
        const std::vector<std::smatch> links = Matches(entry.text, std::regex(R"(\]\(([^)]+)\))"));
        CHECK(!links.empty());
        for (const std::smatch& link : links) {
            CAPTURE(link[1].str());
            CHECK(SourceText("docs/" + link[1].str()).find(author) != std::string::npos);
        }
    }
}

TEST_CASE("the check of citations sees their forms, and an entry ends where the next one starts") {
    const std::vector<Citation> found =
        Citations("Okada (1985), Satake et al. (2013) (Clinger 1990, a) (Tanioka and Satake 1996). In 2011 (or 2012).");
    REQUIRE(found.size() == 4);
    CHECK((found[0].name == "Okada" && found[0].year == "1985"));
    CHECK((found[1].name == "Satake" && found[1].year == "2013"));
    CHECK((found[2].name == "Clinger" && found[2].year == "1990"));
    CHECK((found[3].name == "Satake" && found[3].year == "1996"));
    const std::vector<Entry> entries =
        Entries("# R\n\n- **[A1900]** A (1900)\n  more\n- **[B1901]** B (1901)\n\n## Next\n");
    REQUIRE(entries.size() == 2);
    CHECK(entries[0].text == "- **[A1900]** A (1900)\n  more");
    CHECK(entries[1].text == "- **[B1901]** B (1901)");
    CHECK(IsListed(entries, {"A", "1900"}));
    CHECK(!IsListed(entries, {"A", "1901"}));
}
