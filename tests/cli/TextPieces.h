#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

/// What is wrong with a case file itself, as opposed to what is wrong with the program.
class CaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// `body` with its placeholders replaced, see README.md. The ones that stand for a number of unknown digits stay as
/// marks for MatchesLine. Throws CaseError for a placeholder that does not exist.
[[nodiscard]] std::string ExpandPieces(std::string_view body);

/// True when `text` holds a mark: such a text can be compared with, not written.
[[nodiscard]] bool HasMarks(std::string_view text) noexcept;

/// True when `actual` is the line `expected`, whose marks stand for numbers within their tolerance.
[[nodiscard]] bool MatchesLine(const std::string& expected, const std::string& actual);

/// A line as a person wants to read it: marks as they were written, other control characters as \xNN.
[[nodiscard]] std::string Readable(std::string_view line);
