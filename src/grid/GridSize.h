#pragma once

#include <cstdint>
#include <limits>

namespace tidora {

/// nx * ny in 32-bit two's complement arithmetic, wrapped: the product that the grid formats and records carry.
[[nodiscard]] constexpr std::int32_t WrappedGridSize(int nx, int ny) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nx) * static_cast<std::uint32_t>(ny));
}

/// True when a grid of nx columns and ny rows exists: both at least 1, and nx * ny within 32 bits.
[[nodiscard]] constexpr bool IsGridSize(int nx, int ny) noexcept {
    return nx >= 1 && ny >= 1 && std::int64_t{nx} * ny <= std::numeric_limits<std::int32_t>::max();
}

}  // namespace tidora
