#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidora {

/// Closes a stream when its owner forgets to; a writer closes it itself, to see whether that succeeded.
struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens `path` for reading (fopen mode `mode`). Null when it cannot be opened or is a directory: fopen opens those
/// too, and they would read like an empty file.
[[nodiscard]] FileHandle OpenForReading(const std::string& path, const char* mode);

/// Size in bytes of an open regular file; nothing for a pipe or a device.
[[nodiscard]] std::optional<std::uint64_t> RegularFileSize(std::FILE* file);

/// Lines of a text file, which it borrows, through a buffer of fixed size, as the text formats define them: one read
/// delivers at most `bufferSize` - 1 characters, a NUL takes the last place; what a longer line has left is the next
/// line, be it the line end alone. The line end is part of the line. A NUL character ends the line's text; the rest of
/// that read is dropped.
class BoundedLineReader {
public:
    /// Requires: `file` is open and outlives the reader; `bufferSize` >= 2.
    BoundedLineReader(std::FILE* file, std::size_t bufferSize) : m_file(file), m_buffer(bufferSize, '\0') {}

    /// Reads the next line into Line(). False at end of file and on a read error, which the formats do not tell apart;
    /// Line() is then empty.
    [[nodiscard]] bool Next();

    /// The current line, terminated with NUL; valid until the next call of Next().
    [[nodiscard]] const char* Line() const noexcept { return m_buffer.data(); }

    /// True when the current line is a comment: "#" in its first column.
    [[nodiscard]] bool IsComment() const noexcept { return m_buffer.front() == '#'; }

private:
    std::FILE* m_file;
    std::vector<char> m_buffer;
};

/// Tokens of `line`, separated by runs of any of the characters in `delimiters`, which may also stand at either end.
[[nodiscard]] std::vector<std::string> Tokens(const char* line, const char* delimiters);

/// Delimiters of the data files. The line end is not among them: it stays attached to the last token of a line,
/// and stands as a token of its own on a blank line or after trailing blanks, where it counts as the value 0.
inline constexpr const char* kDataDelimiters = " \t";

// No conversion fails: the formats take whatever number a text starts with. A comma for the decimal point ends it. The
// program never sets a locale, so that a caller's language changes nothing.

/// Leading decimal integer of `text` (strtol, base 10), 0 when there is none; wrapped to 32 bits, since strtol has 64.
[[nodiscard]] int LenientInt(const char* text) noexcept;

/// Leading floating-point number of `text` (strtod), 0 when there is none.
[[nodiscard]] double LenientDouble(const char* text) noexcept;

/// The same, to the bit, for the token of the data files that begins at `at`, which is moved to what ends the token: a
/// delimiter or NUL. A way of its own, because a large text grid is millions of values.
/// Test: "random numbers in every notation have the value that strtod gives them".
[[nodiscard]] double TakeDouble(const char*& at);

}  // namespace tidora
