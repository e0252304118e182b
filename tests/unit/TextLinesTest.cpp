// The bounded line reader and the tokens and numbers of the text formats.

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include "support/TextLines.h"
#include "unit/ScratchFolder.h"

using tidora::BoundedLineReader;
using tidora::FileHandle;
using tidora::LenientDouble;
using tidora::LenientInt;
using tidora::TakeDouble;
using tidora::Tokens;

namespace {

std::vector<std::string> LinesOf(const std::string& bytes, std::size_t bufferSize) {
    const ScratchFolder folder;
    const FileHandle file = tidora::OpenForReading(folder.Write("lines.txt", bytes), "r");
    REQUIRE(file != nullptr);
    BoundedLineReader reader(file.get(), bufferSize);
    std::vector<std::string> lines;
    while (reader.Next()) {
        lines.emplace_back(reader.Line());
    }
    CHECK(std::string(reader.Line()).empty());
    CHECK_FALSE(reader.Next());
    return lines;
}

using Lines = std::vector<std::string>;

// What strtod makes of the token alone and what is made of it in front of another one: the same bits.
bool ConvertsLikeStrtod(const std::string& token) {
    const std::string line = token + " 77";
    const char* at = line.c_str();
    const double converted = TakeDouble(at);
    const double expected = std::strtod(token.c_str(), nullptr);
    return std::isnan(expected) ? std::isnan(converted) : std::memcmp(&converted, &expected, sizeof expected) == 0;
}

std::string RandomText(std::mt19937& random, const std::string& alphabet, int largest) {
    std::string text;
    const int length = std::uniform_int_distribution<int>(1, largest)(random);
    for (int k = 0; k < length; ++k) {
        text += alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(random)];
    }
    return text;
}

}  // namespace

TEST_CASE("a bounded read delivers at most one character less than its buffer holds") {
    CHECK(LinesOf("", 4).empty());
    CHECK(LinesOf("ab\n", 4) == Lines{"ab\n"});
    CHECK(LinesOf("abc\n", 4) == Lines{"abc", "\n"});
    CHECK(LinesOf("abcd\ne", 4) == Lines{"abc", "d\n", "e"});
    CHECK(LinesOf("abc", 4) == Lines{"abc"});
    CHECK(LinesOf("\n\n", 4) == Lines{"\n", "\n"});
    CHECK(LinesOf("abcdefg", 2) == Lines{"a", "b", "c", "d", "e", "f", "g"});
    CHECK(LinesOf("a\r\nb", 10) == Lines{"a\r\n", "b"});
}

TEST_CASE("a NUL character ends a line's text and the rest of the read is dropped") {
    const std::string nul(1, '\0');
    CHECK(LinesOf("ab" + nul + "cd\nef\n", 10) == Lines{"ab", "ef\n"});
    CHECK(LinesOf(nul + "\nef\n", 10) == Lines{"", "ef\n"});
    CHECK(LinesOf("a" + nul + "bcd\n", 4) == Lines{"a", "cd\n"});
}

TEST_CASE("a comment is told by the first character of the line") {
    const ScratchFolder folder;
    const FileHandle file = tidora::OpenForReading(folder.Write("lines.txt", "#a\n #\nb\n\n"), "r");
    BoundedLineReader reader(file.get(), 100);
    std::vector<bool> comments;
    while (reader.Next()) {
        comments.push_back(reader.IsComment());
    }
    CHECK(comments == std::vector<bool>{true, false, false, false});
    CHECK_FALSE(reader.IsComment());
}

TEST_CASE("neither a folder nor a missing file can be opened for reading") {
    const ScratchFolder folder;
    CHECK(tidora::OpenForReading(folder.Path(), "r") == nullptr);
    CHECK(tidora::OpenForReading(folder.At("missing"), "r") == nullptr);
    CHECK(tidora::OpenForReading("", "r") == nullptr);
}

TEST_CASE("tokens are separated by runs of delimiters and the line end is one where it is named") {
    CHECK(Tokens("", " \t").empty());
    CHECK(Tokens(" \t ", " \t").empty());
    CHECK(Tokens("a b", " \t") == Lines{"a", "b"});
    CHECK(Tokens(" \ta \t b\n", " \t") == Lines{"a", "b\n"});
    CHECK(Tokens("a \n", " \t") == Lines{"a", "\n"});
    CHECK(Tokens("\n", " \t") == Lines{"\n"});
    CHECK(Tokens("a \n", " \t\n") == Lines{"a"});
    CHECK(Tokens("\n", " \t\n").empty());
    CHECK(Tokens("a\r\n", " \t\n") == Lines{"a\r"});
}

TEST_CASE("a lenient integer is the leading decimal number wrapped to 32 bits") {
    CHECK(LenientInt("12") == 12);
    CHECK(LenientInt("  -7x") == -7);
    CHECK(LenientInt("x") == 0);
    CHECK(LenientInt("") == 0);
    CHECK(LenientInt("2147483647") == std::numeric_limits<int>::max());
    CHECK(LenientInt("-2147483648") == std::numeric_limits<int>::min());
    CHECK(LenientInt("2147483648") == std::numeric_limits<int>::min());
    CHECK(LenientInt("4294967297") == 1);
    CHECK(LenientInt("99999999999999999999999") == -1);  // the largest 64-bit number, wrapped
}

TEST_CASE("a number taken from a line does not run on into the next token") {
    const struct {
        const char* line;
        double value;
        const char* rest;
    } cases[] = {
        {"1.5 2", 1.5, " 2"},   {"-1.5\t2", -1.5, "\t2"}, {"\r 7", 0.0, " 7"}, {"\r5 7", 5.0, " 7"},
        {"\n", 0.0, ""},        {"abc", 0.0, ""},         {"7", 7.0, ""},      {"7\n", 7.0, ""},
        {"1.5.2 3", 1.5, " 3"}, {"1e3 4", 1000.0, " 4"},  {"", 0.0, ""},
    };
    for (const auto& one : cases) {
        CAPTURE(one.line);
        const char* at = one.line;
        CHECK(TakeDouble(at) == one.value);
        CHECK(std::string(at) == one.rest);
    }
    const char* notANumber = "nan";
    CHECK(std::isnan(TakeDouble(notANumber)));
    CHECK(LenientDouble("0x1p-2") == 0.25);
}

TEST_CASE("odd tokens are converted as strtod converts them") {
    for (const std::string token :
         {"1",       "-1",      "+1",   "+-1",   "--1",   "1.",     ".5",       "-.5",     ".",        "-",
          "+",       "e5",      ".e5",  "1e",    "1e+",   "1e5",    "1E-5",     "1e5.5",   "0x",       "0x1",
          "0X1.8p3", "-0x10",   "0x.8", "0xg",   "inf",   "-INF",   "infinity", "infinit", "nan",      "-nan",
          "NAN(1)",  "nan(",    "nano", "1e308", "1e309", "-1e309", "1e-307",   "1e-310",  "4.9e-324", "2e-324",
          "1e-400",  "0e999",   "-0",   "00012", "1_000", "1,5",    "1;5",      "1\n",     "1\r\n",    "1\r",
          "\r1",     "\v\f2\n", "\n",   "abc",   "1\n2",  "-\n"}) {
        CAPTURE(token);
        CHECK(ConvertsLikeStrtod(token));
    }
}

TEST_CASE("random tokens are converted as strtod converts them") {
    std::mt19937 random(42);
    for (int k = 0; k < 20000; ++k) {
        // Noise made of the characters of numbers, and numbers of up to 30 digits with a point and an exponent.
        const std::string noise = RandomText(random, "0123456789+-.eExXpinfa\n\r", 9);
        const std::string number = RandomText(random, "0123456789", 18) + "." + RandomText(random, "0123456789", 12) +
                                   "e" + std::to_string(std::uniform_int_distribution<int>(-330, 310)(random));
        CAPTURE(noise);
        CAPTURE(number);
        const bool noiseConverts = ConvertsLikeStrtod(noise);
        const bool numberConverts = ConvertsLikeStrtod(number);
        REQUIRE(noiseConverts);
        REQUIRE(numberConverts);
    }
}
