#include "api/Calls.h"

#include <cmath>
#include <cstdint>

namespace tidora::api {
namespace {

template <typename Number>
void RequireAllFinite(const Number* values, std::size_t count, const char* argument) {
    for (std::size_t i = 0; i < count; ++i) {
        if (!std::isfinite(values[i])) {
            throw BadArgument(argument, "is not a finite number at index " + std::to_string(i));
        }
    }
}

}  // namespace

void Explain(tidora_error* error, const char* argument, const char* message) noexcept {
    if (error == nullptr || error->size < sizeof(tidora_error)) {
        return;
    }
    std::snprintf(error->argument, sizeof error->argument, "%s", argument);
    std::snprintf(error->message, sizeof error->message, "%s", message);
}

void RequireFinite(const double* values, std::size_t count, const char* argument) {
    RequireAllFinite(values, count, argument);
}

void RequireFinite(const float* values, std::size_t count, const char* argument) {
    RequireAllFinite(values, count, argument);
}

std::size_t CountOf(std::size_t a, std::size_t b, const char* argument) {
    constexpr std::size_t kMost = PTRDIFF_MAX / sizeof(float);
    Require(a == 0 || b <= kMost / a, argument, "is too large");
    return a * b;
}

ProgressCallback ProgressOf(tidora_progress progress, void* user) {
    if (progress == nullptr) {
        return {};
    }
    return [progress, user](double fraction) { return progress(fraction, user) != 0; };
}

}  // namespace tidora::api
