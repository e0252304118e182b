#pragma once

#include <string>
#include <vector>

using Lines = std::vector<std::string>;

/// Lines of a text, without their line ends and the blanks before them; processor times are masked.
[[nodiscard]] Lines LinesOf(const std::string& text);

/// Bytes of a file of the project.
[[nodiscard]] std::string SourceText(const std::string& path);

/// Content of the fenced block that follows the remark "<!-- remark -->" in a document. Throws std::runtime_error when
/// there is no such block.
[[nodiscard]] std::string ShownBlock(const std::string& document, const std::string& remark);

/// True when `actual` is what is shown; a shown line "[...]" stands for any number of lines.
[[nodiscard]] bool IsAsShown(const Lines& shown, const Lines& actual);
