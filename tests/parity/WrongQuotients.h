#pragma once

#include <cstdint>

/// Quotients that differ from those of a division, among all divisors of one binade and all later terms of the filter's
/// series. For machines with the instruction set only.
[[nodiscard]] std::int64_t WrongQuotientsAvx2();
[[nodiscard]] std::int64_t WrongQuotientsAvx512();
