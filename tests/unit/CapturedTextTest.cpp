#include <doctest/doctest.h>

#include <string>

namespace {

/// A value as a failing check shows it.
template <typename Value>
std::string Shown(const Value& value) {
    return doctest::toString(value).c_str();
}

}  // namespace

TEST_CASE("a failing check shows the text behind a pointer") {
    const char* const text = "why";
    const char* const none = nullptr;
    CHECK(Shown(text) == "why");
    CHECK(Shown(none) == "(null)");
}
