#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

#include "support/WorkTeam.h"
#include "tidora/tidora.h"

namespace tidora::api {

/// An argument that cannot be used.
class BadArgument : public std::runtime_error {
public:
    /// argument: dotted name; what: what is wrong with it, without a full stop.
    BadArgument(std::string argument, const std::string& what)
        : std::runtime_error(what), m_argument(std::move(argument)) {}
    [[nodiscard]] const std::string& Argument() const noexcept { return m_argument; }

private:
    std::string m_argument;
};

inline void Require(bool holds, const char* argument, const char* what) {
    if (!holds) {
        throw BadArgument(argument, what);
    }
}

/// Fills the caller's error, if there is one that is large enough, with texts that are cut where they do not fit.
void Explain(tidora_error* error, const char* argument, const char* message) noexcept;

/// Runs call(), which returns a status, and makes a status and an explanation of whatever it throws: no exception
/// leaves the library.
template <typename Call>
int Guarded(tidora_error* error, Call call) noexcept {
    Explain(error, "", "");
    try {
        return call();
    } catch (const BadArgument& bad) {
        Explain(error, bad.Argument().c_str(), bad.what());
        return TIDORA_INVALID;
    } catch (const std::bad_alloc&) {
        Explain(error, "", "there is not enough memory");
        return TIDORA_NO_MEMORY;
    } catch (const std::length_error&) {
        Explain(error, "", "there is not enough memory");
        return TIDORA_NO_MEMORY;
    } catch (const std::exception& other) {
        Explain(error, "", other.what());
        return TIDORA_FAILED;
    } catch (...) {
        Explain(error, "", "an unknown failure");
        return TIDORA_FAILED;
    }
}

/// A structure of the caller as this library knows it: what the caller does not know is 0. Throws where it is null, its
/// size is none, or it holds something that this library does not know.
template <typename Struct>
Struct Taken(const Struct* from, const char* argument) {
    constexpr std::size_t kMost = 4096;  // bytes: more is no size
    Require(from != nullptr, argument, "is null");
    // Fields come in groups of eight bytes: a size between two of them would cut a pointer in half.
    const bool isSize = from->size >= sizeof(std::size_t) && from->size <= kMost && from->size % alignof(Struct) == 0;
    Require(isSize, argument, "has no size: set it to sizeof");
    Struct to = {};
    std::memcpy(&to, from, from->size < sizeof(Struct) ? from->size : sizeof(Struct));
    const auto* const bytes = reinterpret_cast<const unsigned char*>(from);  // NOLINT: bytes of any structure
    for (std::size_t at = sizeof(Struct); at < from->size; ++at) {
        Require(bytes[at] == 0, argument, "asks for something that this version of the library does not know");
    }
    return to;
}

/// Throws where one of `count` numbers is not finite.
void RequireFinite(const double* values, std::size_t count, const char* argument);
void RequireFinite(const float* values, std::size_t count, const char* argument);

/// a * b; throws where arrays of as many floats cannot be.
[[nodiscard]] std::size_t CountOf(std::size_t a, std::size_t b, const char* argument);

/// The callback of the caller as that of the library; empty for null.
[[nodiscard]] ProgressCallback ProgressOf(tidora_progress progress, void* user);

}  // namespace tidora::api
