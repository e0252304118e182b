#pragma once

#include <iosfwd>

namespace tidora {

/// The message of an error code, or null for a code without one (20, and every code that is not in the table).
[[nodiscard]] const char* MessageOf(int code) noexcept;

/// Writes the framed message of an error code: the frame, the message if there is one, the frame.
void ReportRunError(std::ostream& err, int code);

}  // namespace tidora
