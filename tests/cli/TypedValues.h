#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class ValueType { Int32, Float32, Float64 };

/// One value of a binary file. Without a tolerance its bytes are compared, so -0 is not 0.
struct TypedValue {
    ValueType type = ValueType::Int32;
    double value = 0.0;
    double tolerance = -1.0;  ///< largest difference; negative: none allowed
};

/// The values of lines such as "i32 3 3" and "f32 -100*9 0.5~1e-6"; a line that starts with "#" is a remark. Throws
/// CaseError for anything else.
[[nodiscard]] std::vector<TypedValue> ParseTypedValues(std::string_view body);

/// The values as they stand in a file: native byte order, no padding.
[[nodiscard]] std::string BytesOf(const std::vector<TypedValue>& values);

/// One line per difference between the bytes of a file and what it should hold; empty when there is none.
[[nodiscard]] std::vector<std::string> DifferencesOf(const std::vector<TypedValue>& expected, std::string_view bytes);
