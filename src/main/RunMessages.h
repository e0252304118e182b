#pragma once

#include <iosfwd>

namespace tidora {

/// The message of an error code, or null for a code without one (20, and every code that is not in the table). The text
/// lives as long as the program.
[[nodiscard]] const char* MessageOf(int code) noexcept;

/// Writes the framed message of an error code: the frame, the message if there is one, the frame. The last words of a
/// run that failed, after the block of the object that found the error.
void ReportRunError(std::ostream& err, int code);

}  // namespace tidora
