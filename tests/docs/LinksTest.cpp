// The links of the documents: they lead to files and headings that are there.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "cli/ChildProcess.h"
#include "docs/Documents.h"

namespace fs = std::filesystem;

namespace {

struct Link {
    std::string path;      ///< empty: the document itself
    std::string fragment;  ///< heading, without "#"; may be empty
};

// Links "[text](path#fragment)" to files of the project; addresses elsewhere are left out.
std::vector<Link> RelativeLinks(const std::string& document) {
    const std::string prose = Prose(document);
    std::vector<Link> links;
    for (std::size_t at = prose.find("]("); at != std::string::npos; at = prose.find("](", at + 1)) {
        const std::string target = prose.substr(at + 2, prose.find(')', at) - at - 2);
        const std::size_t hash = target.find('#');
        if (target.find(':') == std::string::npos) {
            links.push_back({target.substr(0, hash), hash == std::string::npos ? "" : target.substr(hash + 1)});
        }
    }
    return links;
}

// The name under which a heading is linked: lower case, blanks as dashes, without other punctuation.
std::string FragmentOf(const std::string& heading) {
    std::string fragment;
    for (const char c : heading) {
        const auto letter = static_cast<unsigned char>(c);
        if (std::isalnum(letter) != 0 || c == '-' || c == '_') {
            fragment += static_cast<char>(std::tolower(letter));
        } else if (c == ' ') {
            fragment += '-';
        }
    }
    return fragment;
}

std::vector<std::string> Fragments(const std::string& document) {
    std::vector<std::string> fragments;
    for (const std::string& line : LinesOf(Prose(document))) {
        const std::size_t text = line.find_first_not_of('#');
        if (text != 0 && text != std::string::npos && line[text] == ' ') {
            fragments.push_back(FragmentOf(line.substr(text + 1)));
        }
    }
    return fragments;
}

}  // namespace

TEST_CASE("every relative link of the documents leads to a file that is there and to a heading of it") {
    std::size_t linkCount = 0;
    for (const fs::path& path : AllDocuments()) {
        for (const Link& link : RelativeLinks(FileBytes(path.string()))) {
            ++linkCount;
            const fs::path target = link.path.empty() ? path : path.parent_path() / link.path;
            CAPTURE(path.string());
            CAPTURE(link.path);
            CAPTURE(link.fragment);
            CHECK(fs::exists(target));
            if (!link.fragment.empty() && fs::is_regular_file(target)) {
                const std::vector<std::string> there = Fragments(FileBytes(target.string()));
                CHECK(std::find(there.begin(), there.end(), link.fragment) != there.end());
            }
        }
    }
    CHECK(linkCount > 0);
}

TEST_CASE("the check of links sees files and headings and nothing in fenced blocks") {
    const std::vector<Link> links = RelativeLinks("[a](b.md#c) [d](https://e.f/g)\n```\n[h](i)\n```\n[j](#k)\n");
    REQUIRE(links.size() == 2);
    CHECK(links[0].path == "b.md");
    CHECK(links[0].fragment == "c");
    CHECK(links[1].path.empty());
    CHECK(links[1].fragment == "k");
    CHECK(Fragments("# A (b) c-d\n#e\n") == std::vector<std::string>{"a-b-c-d"});
}
