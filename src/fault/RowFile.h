#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tidora {

// The lines that fault files and dynamic parameter files have in common: "#" in the first column makes a comment, every
// other line is a row of numbers, a blank line too.

/// Why a file of rows was refused; the values are the readers' codes.
enum class RowFileError { None = 0, CannotOpen = 1, ShortLine = 2 };

/// Calls `take` with the tokens of every row of the file, in order; a line of at least `bufferSize` characters is
/// several. Stops at a row of fewer than `columns` tokens: what was taken before stays.
///
/// Kept on purpose: the line end of a blank line is its one token, so that such a line is too short, be it the last.
/// Test: "an-empty-line-at-the-end-of-the-fault-file-has-the-wrong-format".
[[nodiscard]] RowFileError ReadRows(const std::string& path, std::size_t bufferSize, std::size_t columns,
                                    const std::function<void(const std::vector<std::string>&)>& take);

/// The error block of a file that was refused. object: who reports; file: its name in the texts, "Fault File".
void ReportRowFileError(RowFileError error, const std::string& object, const std::string& file);

}  // namespace tidora
