#include <doctest/doctest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "support/TextLines.h"

namespace {

/// The token as the data files present it: in front of what follows it on its line.
double Fast(const std::string& token, const std::string& behind) {
    const std::string line = token + behind;
    const char* at = line.c_str();
    const double value = tidora::TakeDouble(at);
    CHECK(at - line.c_str() == static_cast<std::ptrdiff_t>(token.size()));
    return value;
}

/// Same bits, also where neither is a number.
bool IsSame(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

TEST_CASE("a token of any kind has the value that strtod gives it") {
    const std::string tokens[] = {"0",
                                  "-0",
                                  "+0",
                                  "5",
                                  "-5",
                                  "+5",
                                  "5.",
                                  ".5",
                                  "-.5",
                                  "+.5",
                                  "1e5",
                                  "1E+5",
                                  "1e-5",
                                  "1e",
                                  "1e+",
                                  "1.5e3x",
                                  "0x10",
                                  "0X1p-3",
                                  "0x",
                                  "inf",
                                  "-inf",
                                  "INFINITY",
                                  "infinit",
                                  "nan",
                                  "-nan",
                                  "NAN(12)",
                                  "nan(12)",
                                  "-nan(0x7)\n",
                                  "nan()",
                                  "nan(1",
                                  "1e400",
                                  "-1e400",
                                  "1e-400",
                                  "4.9e-324",
                                  "2.2250738585072011e-308",
                                  "1.7976931348623157e308",
                                  "1.7976931348623159e308",
                                  "abc",
                                  "-",
                                  "+",
                                  ".",
                                  "-+5",
                                  "--5",
                                  "1,5",
                                  "1_000",
                                  "12abc",
                                  "\n",
                                  "\r\n",
                                  "5\n",
                                  "5\r\n",
                                  "\r5",
                                  "\v7",
                                  "\f8",
                                  "5\r",
                                  "1e5\n",
                                  "9007199254740993",
                                  "999999999999999",
                                  "-999999999999999",
                                  "9999999999999999",
                                  "0.999999999999999",
                                  ".000000000000001",
                                  "-.00000000000000",
                                  "-0.0",
                                  "1.2.3",
                                  "-.",
                                  "12-3",
                                  "5\n\n",
                                  "5\n6",
                                  "0000000000000001",
                                  "1844674407370955161600001",
                                  "0.1000000000000000055511151231257827021181583404541015625",
                                  "123456789012345678901234567890",
                                  "1e00000000000000000005",
                                  "00000000000000000000000000000000000012",
                                  "1.e3",
                                  "e5",
                                  "1d5",
                                  "1f",
                                  "0b11",
                                  "#1"};
    for (const std::string& token : tokens) {
        for (const std::string behind : {"", " 7", "\t7", " \n"}) {
            if (!behind.empty() && token.back() == '\n') {
                continue;  // the line end is the last character of its line
            }
            CAPTURE(token);
            CHECK(IsSame(Fast(token, behind), std::strtod(token.c_str(), nullptr)));
        }
    }
}

TEST_CASE("random numbers in every notation have the value that strtod gives them") {
    std::mt19937_64 random(20110311);
    char text[400];
    for (int trial = 0; trial < 200000; ++trial) {
        double value = 0.0;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        if (trial % 2 == 0) {
            value = std::uniform_real_distribution<double>(-9000.0, 9000.0)(random);
        }
        const char* const formats[] = {"%.17g", "%g", "%.1f", "%.3f", "%e", "%.20e", "%.11f", "%.9f"};
        std::snprintf(text, sizeof text, formats[trial % 8], value);
        if (!IsSame(Fast(text, " 1"), std::strtod(text, nullptr))) {
            CAPTURE(std::string(text));
            CHECK(false);
        }
    }
}
