#pragma once

#include <doctest/doctest.h>

/// A failing check shows a captured const char* as its text. Without this it shows the address.
template <>
struct doctest::StringMaker<const char*> {
    // NOLINTNEXTLINE(readability-identifier-naming): the name is the framework's.
    static String convert(const char* text) { return text != nullptr ? text : "(null)"; }
};
