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
    if (!read) {  // fgets leaves the line before in the buffer
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
    // By way of an unsigned type: the low 32 bits, defined for every value.
    return static_cast<int>(static_cast<std::uint32_t>(std::strtol(text, nullptr, 10)));
}

double LenientDouble(const char* text) noexcept {
    return std::strtod(text, nullptr);
}

namespace {

/// kDataDelimiters and the end of the line's text.
bool EndsToken(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\0';
}

/// Takes a token of the usual form: a minus or none, at most 15 digits, with or without a point, a line end or none.
/// The digits and the power of ten are then exact in double precision, and one division rounds as it must
/// (Clinger 1990, How to read floating point numbers accurately). False for every other form; `at` stays.
bool TakeShortDecimal(const char*& at, double& value) noexcept {
    constexpr int kDigits = 15;  // 10^15 - 1 is below 2^53, up to which a double holds every integer; 10^16 is not
    constexpr double kPowers[kDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const char* next = at;
    const bool isNegative = *next == '-';
    next += isNegative ? 1 : 0;
    std::uint64_t digits = 0;
    // Counts leading zeros as digits: a token with many of them is only slower.
    const auto takeDigits = [&next, &digits] {
        const char* const first = next;
        for (unsigned digit = 0; (digit = static_cast<unsigned>(*next) - unsigned{'0'}) <= 9; ++next) {
            digits = digits * 10 + digit;  // wraps for a number of too many digits, which is left to others
        }
        return next - first;
    };
    auto count = takeDigits();
    std::ptrdiff_t decimals = 0;
    if (*next == '.') {
        ++next;
        decimals = takeDigits();
        count += decimals;
    }
    next += *next == '\n' ? 1 : 0;
    if (count == 0 || count > kDigits || !EndsToken(*next)) {
        return false;
    }
    const double size = static_cast<double>(digits) / kPowers[decimals];
    value = isNegative ? -size : size;  // the sign last: "-0" is a negative zero
    at = next;
    return true;
}

}  // namespace

double TakeDouble(const char*& at) {
    double value = 0.0;
    if (TakeShortDecimal(at, value)) {
        return value;
    }
    const char* const text = at;
    while (!EndsToken(*at)) {
        ++at;
    }
    // A plain number that fills its token: both conversions round correctly, and this one is several times faster.
    // Everything else (a plus sign, "0x", overflow, text after the number) is left to strtod, and so is what is no
    // number: strtod keeps the digits of "nan(12)" in the value's bits.
    const std::from_chars_result result = std::from_chars(text, at, value);
    if (result.ec == std::errc() && (result.ptr == at || *result.ptr == '\n') && !std::isnan(value)) {
        return value;
    }
    // strtod skips leading white space: a token that starts with a carriage return, say, must not run on into the next.
    const bool startsBlank = std::isspace(static_cast<unsigned char>(*text)) != 0;
    return startsBlank ? LenientDouble(std::string(text, at).c_str()) : LenientDouble(text);
}

}  // namespace tidora
