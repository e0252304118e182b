#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

/// The frame line of every error block, spelt out: 66 characters.
inline constexpr std::string_view kFrameLine = "_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/";
static_assert(kFrameLine.size() == 66);

/// An error block as it must stand on standard error: frame, "ERROR:" and `object`, one line per detail, frame.
[[nodiscard]] inline std::string ErrorBlock(std::string_view object, std::initializer_list<std::string> details) {
    std::string text = std::string(kFrameLine) + "\nERROR:" + std::string(object) + "\n";
    for (const std::string& detail : details) {
        text += "  ERROR-DETAIL:" + detail + "\n";
    }
    return text + std::string(kFrameLine) + "\n";
}

[[nodiscard]] inline bool Contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

[[nodiscard]] inline bool StartsWith(const std::string& text, std::string_view part) {
    return text.compare(0, part.size(), part) == 0;
}

[[nodiscard]] inline bool EndsWith(const std::string& text, std::string_view part) {
    return text.size() >= part.size() && text.compare(text.size() - part.size(), part.size(), part) == 0;
}

[[nodiscard]] inline std::size_t CountOf(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}
