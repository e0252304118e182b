#include "docs/Documents.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "cli/ChildProcess.h"

namespace {

const std::string kFence = "```";
const std::string kElision = "[...]";

// A processor time is never the same twice.
std::string WithMaskedTime(std::string line) {
    const std::string before = "Calc Time : ";
    const std::size_t at = line.find(before);
    const std::size_t end = line.rfind("[sec]");
    if (at != std::string::npos && end != std::string::npos) {
        const std::size_t number = at + before.size();
        line.replace(number, end - number, "*");
    }
    return line;
}

}  // namespace

Lines LinesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(WithMaskedTime(std::move(line)));
    }
    return lines;
}

std::string SourceText(const std::string& path) {
    return FileBytes(std::string(TIDORA_SOURCE_ROOT) + "/" + path);
}

std::string ShownBlock(const std::string& document, const std::string& remark) {
    const std::size_t at = document.find("<!-- " + remark + " -->\n" + kFence);
    if (at == std::string::npos) {
        throw std::runtime_error("no block under the remark " + remark);
    }
    const std::size_t fence = document.find('\n', at) + 1;
    const std::size_t first = document.find('\n', fence) + 1;
    return document.substr(first, document.find('\n' + kFence, first) + 1 - first);
}

bool IsAsShown(const Lines& shown, const Lines& actual) {
    auto from = actual.begin();
    auto piece = shown.begin();
    for (bool isAnchored = true;; isAnchored = false) {
        const auto end = std::find(piece, shown.end(), kElision);
        // The last piece stands at the end, so that nothing is left over; an empty one, behind an elision, too.
        const bool isLast = end == shown.end();
        const auto found = isLast && !isAnchored ? std::find_end(from, actual.end(), piece, end)
                                                 : std::search(from, actual.end(), piece, end);
        const bool isThere = found != actual.end() || piece == end;
        if (!isThere || (isAnchored && found != from)) {
            return false;
        }
        if (isLast) {
            return piece == end ? (!isAnchored || actual.empty()) : found + (end - piece) == actual.end();
        }
        from = found + (end - piece);
        piece = end + 1;
    }
}
