#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace tidora {

/// The line that opens and closes every error block: 33 pairs of "_/", 66 characters. The text is fixed: whoever
/// watches a run's standard error finds the blocks by it.
inline constexpr std::string_view kErrorFrame = "_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/";

/// Writes one framed block to `err`, every line with a line end: the frame, "ERROR:" and `object`, one
/// "  ERROR-DETAIL:" line per entry of `details`, the frame.
void ReportError(std::ostream& err, std::string_view object, const std::vector<std::string>& details);

}  // namespace tidora
