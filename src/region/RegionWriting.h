#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "region/Region.h"

namespace tidora {

/// Why a writer of a region failed; the values are the writers' codes.
enum class WriteError {
    None = 0,
    CannotWrite = 1,  ///< a file cannot be opened, written or closed, or a name is too long
    NoValues = 2,     ///< the values that should be written are not there, or are not nx * ny
};

// What the writers of a region share.

/// Text of the printf format with its arguments; empty when it does not fit the buffers of a region, 8190 characters: a
/// path is refused rather than cut to another one. The format is a literal; names are arguments, so that a "%" in them
/// means nothing. Tests: "a path beyond the buffer of 8191 bytes is a failure and never a shorter name",
/// "a folder or region name that holds format characters is taken literally".
template <typename... Arguments>
[[nodiscard]] std::string Formatted(const char* format, Arguments... arguments) {
    std::string text(static_cast<std::size_t>(Region::FILE_MAX_PATH), '\0');
    const int length = std::snprintf(text.data(), text.size(), format, arguments...);
    const bool fits = length >= 0 && static_cast<std::size_t>(length) < text.size();
    text.resize(fits ? static_cast<std::size_t>(length) : 0);
    return text;
}

/// Values of the region's grid, nx * ny: what a snapshot of it holds.
[[nodiscard]] inline std::uint64_t ValueCount(const Region& region) noexcept {
    return static_cast<std::uint64_t>(std::int64_t{region.nx} * region.ny);
}

/// Error block of a writer. kind: what it writes, "BIN" or "ASCII". A series has that of its grids for its list too.
void ReportWriteError(WriteError error, const Region& region, const std::string& kind);

}  // namespace tidora
