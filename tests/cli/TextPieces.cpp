#include "TextPieces.h"

#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

// A mark is a placeholder for a number between two characters that no case and no output holds.
constexpr char kMarkOpen = '\x01';
constexpr char kMarkClose = '\x02';

constexpr const char* kFrame = "_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/";
constexpr const char* kBanner =
    "=============================================\n"
    "       Tidora version 1.0.938\n"
    "=============================================";

bool StartsWith(std::string_view text, std::string_view start) noexcept {
    return text.substr(0, start.size()) == start;
}

/// "repeat 3 ab" becomes "ababab".
std::string Repeated(const std::string& piece) {
    char* end = nullptr;
    const long times = std::strtol(piece.c_str() + std::string_view("repeat ").size(), &end, 10);
    if (times < 1 || *end != ' ') {
        throw CaseError("a repetition is {repeat COUNT TEXT}, not {" + piece + "}");
    }
    const std::string_view unit = end + 1;
    std::string text;
    for (long n = 0; n < times; ++n) {
        text += unit;
    }
    return text;
}

std::string Piece(const std::string& piece) {
    if (piece == "frame") {
        return kFrame;
    }
    if (piece == "banner") {
        return kBanner;
    }
    if (piece == "blank") {
        return " ";
    }
    if (piece == "tab") {
        return "\t";
    }
    if (piece == "return") {
        return "\r";
    }
    if (piece == "brace") {
        return "{";
    }
    if (StartsWith(piece, "repeat ")) {
        return Repeated(piece);
    }
    if (piece == "nan" || StartsWith(piece, "about ")) {
        return kMarkOpen + piece + kMarkClose;
    }
    throw CaseError("there is no placeholder {" + piece + "}");
}

/// True when `value` is what `mark` ("nan" or "about VALUE TOLERANCE") stands for.
bool FulfilsMark(const std::string& mark, double value) {
    if (mark == "nan") {
        return std::isnan(value);
    }
    double wanted = 0.0;
    double tolerance = -1.0;
    if (std::sscanf(mark.c_str(), "about %lf %lf", &wanted, &tolerance) != 2 || !(tolerance >= 0.0)) {
        throw CaseError("a tolerance is {about VALUE TOLERANCE}, not {" + mark + "}");
    }
    return std::abs(value - wanted) <= tolerance;
}

}  // namespace

std::string ExpandPieces(std::string_view body) {
    std::string text;
    std::size_t at = 0;
    while (at < body.size()) {
        const std::size_t open = body.find('{', at);
        text += body.substr(at, open - at);
        if (open == std::string_view::npos) {
            break;
        }
        const std::size_t close = body.find('}', open);
        if (close == std::string_view::npos) {
            throw CaseError("a brace is never closed: " + std::string(body.substr(open, 40)));
        }
        text += Piece(std::string(body.substr(open + 1, close - open - 1)));
        at = close + 1;
    }
    return text;
}

bool HasMarks(std::string_view text) noexcept {
    return text.find(kMarkOpen) != std::string_view::npos;
}

bool MatchesLine(const std::string& expected, const std::string& actual) {
    const char* at = actual.c_str();
    for (std::size_t e = 0; e < expected.size(); ++e) {
        if (expected[e] != kMarkOpen) {
            if (*at++ != expected[e]) {
                return false;
            }
            continue;
        }
        const std::size_t close = expected.find(kMarkClose, e);
        const std::string mark = expected.substr(e + 1, close - e - 1);
        char* end = nullptr;
        const double value = std::strtod(at, &end);
        // strtod skips blanks, which are part of the text.
        const bool isNumber = end != at && std::isspace(static_cast<unsigned char>(*at)) == 0;
        if (!isNumber || !FulfilsMark(mark, value)) {
            return false;
        }
        at = end;
        e = close;
    }
    return at == actual.c_str() + actual.size();
}

std::string Readable(std::string_view line) {
    std::string text;
    for (const char character : line) {
        if (character == kMarkOpen) {
            text += '{';
        } else if (character == kMarkClose) {
            text += '}';
        } else if (std::iscntrl(static_cast<unsigned char>(character)) != 0) {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(character)));
            text += code;
        } else {
            text += character;
        }
    }
    return text;
}
