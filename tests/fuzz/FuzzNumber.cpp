#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "FuzzInput.h"
#include "support/TextLines.h"

namespace {

bool HasSameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The token in front of `behind`. Nothing lies beyond, so that the sanitizer sees a conversion that reads on.
double FastIn(const std::string& token, std::string_view behind) {
    std::vector<char> line(token.begin(), token.end());  // on the heap, however short
    line.insert(line.end(), behind.begin(), behind.end());
    line.push_back('\0');
    line.shrink_to_fit();
    const char* at = line.data();
    const double value = tidora::TakeDouble(at);
    Require(at == line.data() + token.size());
    return value;
}

}  // namespace

// The fast reading of a number beside strtod on the token alone: the same bits, whatever follows the token on its line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string line(data, data + size);
    const std::size_t length = std::string_view(line.c_str()).find_first_of(tidora::kDataDelimiters);
    const std::string token = line.substr(0, length == std::string::npos ? std::strlen(line.c_str()) : length);

    char* stop = nullptr;
    const double expected = std::strtod(token.c_str(), &stop);
    Require(HasSameBits(FastIn(token, std::string_view(line).substr(token.size())), expected));
    for (const char* const behind : {"", " 7", "\t1", " \n"}) {
        Require(HasSameBits(FastIn(token, behind), expected));
    }

    // What the fast way takes whole, strtod takes whole; and what it takes in part, strtod takes at least as far.
    double fast = 0.0;
    const char* const end = token.data() + token.size();
    const std::from_chars_result result = std::from_chars(token.data(), end, fast);
    if (result.ec == std::errc()) {
        Require(result.ptr <= stop);
        Require((result.ptr != end && *result.ptr != '\n') || result.ptr == stop);
    }
    return 0;
}
