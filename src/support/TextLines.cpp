#include "support/TextLines.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

namespace tidora {

FileHandle OpenForReading(const std::string& path, const char* mode) {
    FileHandle file(std::fopen(path.c_str(), mode));
    struct stat status {};
    if (file && (fstat(fileno(file.get()), &status) != 0 || S_ISDIR(status.st_mode))) {
        file.reset();
    }
    return file;
}

std::optional<std::uint64_t> RegularFileSize(std::FILE* file) {
    struct stat status {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

bool BoundedLineReader::Next() {
    const bool read = std::fgets(m_buffer.data(), static_cast<int>(m_buffer.size()), m_file) != nullptr;
    if (!read) {
        m_buffer.front() = '\0';
    }
    return read;
}

std::vector<std::string> Tokens(const char* line, const char* delimiters) {
    std::vector<std::string> tokens;
    for (const char* at = line + std::strspn(line, delimiters); *at != '\0'; at += std::strspn(at, delimiters)) {
        const std::size_t length = std::strcspn(at, delimiters);
        tokens.emplace_back(at, length);
        at += length;
    }
    return tokens;
}

int LenientInt(const char* text) noexcept {
    return static_cast<int>(static_cast<std::uint32_t>(std::strtol(text, nullptr, 10)));
}

double LenientDouble(const char* text) noexcept {
    return std::strtod(text, nullptr);
}

double LenientDouble(const char* text, std::size_t length) {
    // A plain number that fills its token, which is nearly every one: both conversions round correctly, and this one is
    // several times faster. Everything else (a plus sign, "0x", overflow, text behind the number) is left to strtod,
    // and so is what is no number: strtod keeps the digits of "nan(12)" in the value's bits.
    const char* const end = text + length;
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(text, end, value);
    if (result.ec == std::errc() && (result.ptr == end || *result.ptr == '\n') && !std::isnan(value)) {
        return value;
    }
    // strtod skips leading white space: a token that starts with a carriage return, say, must not run on into the next.
    const bool startsBlank = std::isspace(static_cast<unsigned char>(*text)) != 0;
    return startsBlank ? LenientDouble(std::string(text, length).c_str()) : LenientDouble(text);
}

}  // namespace tidora
