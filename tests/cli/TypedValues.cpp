#include "TypedValues.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "TextPieces.h"

namespace {

std::size_t SizeOf(ValueType type) noexcept {
    return type == ValueType::Float64 ? sizeof(double) : sizeof(float);
}

template <typename T>
std::string BytesAs(double value) {
    const T typed = static_cast<T>(value);
    std::string bytes(sizeof typed, '\0');
    std::memcpy(bytes.data(), &typed, sizeof typed);
    return bytes;
}

std::string BytesOf(const TypedValue& value) {
    switch (value.type) {
        case ValueType::Int32:
            return BytesAs<std::int32_t>(value.value);
        case ValueType::Float32:
            return BytesAs<float>(value.value);
        case ValueType::Float64:
            return BytesAs<double>(value.value);
    }
    return {};
}

template <typename T>
double ValueAs(std::string_view bytes) {
    T typed{};
    std::memcpy(&typed, bytes.data(), sizeof typed);
    return static_cast<double>(typed);
}

double ValueOf(ValueType type, std::string_view bytes) {
    switch (type) {
        case ValueType::Int32:
            return ValueAs<std::int32_t>(bytes);
        case ValueType::Float32:
            return ValueAs<float>(bytes);
        case ValueType::Float64:
            return ValueAs<double>(bytes);
    }
    return 0.0;
}

ValueType TypeNamed(const std::string& name) {
    if (name == "i32") {
        return ValueType::Int32;
    }
    if (name == "f32") {
        return ValueType::Float32;
    }
    if (name == "f64") {
        return ValueType::Float64;
    }
    throw CaseError("a line of values starts with i32, f32, f64 or #, not with " + name);
}

/// Reads a number at `at` and moves behind it.
double NumberAt(const char*& at, const std::string& word) {
    char* end = nullptr;
    const double number = std::strtod(at, &end);
    if (end == at) {
        throw CaseError("not a value: " + word);
    }
    at = end;
    return number;
}

/// VALUE, VALUE*COUNT, VALUE~TOLERANCE or VALUE~TOLERANCE*COUNT.
void AppendWord(ValueType type, const std::string& word, std::vector<TypedValue>& values) {
    const char* at = word.c_str();
    TypedValue value;
    value.type = type;
    value.value = NumberAt(at, word);
    std::size_t count = 1;
    if (*at == '~') {
        value.tolerance = NumberAt(++at, word);
    }
    if (*at == '*') {
        count = static_cast<std::size_t>(NumberAt(++at, word));
    }
    if (*at != '\0') {
        throw CaseError("not a value: " + word);
    }
    values.insert(values.end(), count, value);
}

bool IsAsExpected(const TypedValue& expected, std::string_view bytes) {
    if (expected.tolerance < 0.0) {
        return BytesOf(expected) == bytes;
    }
    return std::abs(ValueOf(expected.type, bytes) - expected.value) <= expected.tolerance;
}

std::string Difference(const TypedValue& expected, std::size_t number, std::size_t offset, std::string_view bytes) {
    std::ostringstream text;
    text.precision(9);
    text << "value " << number << " at byte " << offset << ": expected " << expected.value;
    if (expected.tolerance >= 0.0) {
        text << " within " << expected.tolerance;
    }
    text << ", found " << ValueOf(expected.type, bytes);
    return text.str();
}

}  // namespace

std::vector<TypedValue> ParseTypedValues(std::string_view body) {
    std::vector<TypedValue> values;
    std::istringstream lines{std::string(body)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        if (line.empty() || line.front() == '#' || !(words >> word)) {
            continue;
        }
        const ValueType type = TypeNamed(word);
        while (words >> word) {
            AppendWord(type, word, values);
        }
    }
    return values;
}

std::string BytesOf(const std::vector<TypedValue>& values) {
    std::string bytes;
    for (const TypedValue& value : values) {
        bytes += BytesOf(value);
    }
    return bytes;
}

std::vector<std::string> DifferencesOf(const std::vector<TypedValue>& expected, std::string_view bytes) {
    std::vector<std::string> differences;
    std::size_t offset = 0;
    for (std::size_t n = 0; n < expected.size() && offset + SizeOf(expected[n].type) <= bytes.size(); ++n) {
        const std::string_view found = bytes.substr(offset, SizeOf(expected[n].type));
        if (!IsAsExpected(expected[n], found)) {
            differences.push_back(Difference(expected[n], n + 1, offset, found));
        }
        offset += found.size();
    }
    const std::size_t size = BytesOf(expected).size();
    if (size != bytes.size()) {
        differences.push_back(std::to_string(bytes.size()) + " bytes instead of " + std::to_string(size));
    }
    return differences;
}
