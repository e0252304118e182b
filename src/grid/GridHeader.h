#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tidora {

/// Header of a binary grid file.
struct GridHeader {
    double orgX = 0.0;
    double orgY = 0.0;
    std::int32_t nx = 0;
    std::int32_t ny = 0;
    float dx = 0.0F;
};

/// On disk, in native byte order and without padding: org_x at 0, org_y at 8, nx at 16, ny at 20, dx at 24.
inline constexpr std::size_t kGridHeaderSize = 28;
using GridHeaderBytes = std::array<unsigned char, kGridHeaderSize>;

[[nodiscard]] inline GridHeader UnpackGridHeader(const GridHeaderBytes& bytes) noexcept {
    GridHeader header;
    std::memcpy(&header.orgX, bytes.data(), sizeof header.orgX);
    std::memcpy(&header.orgY, bytes.data() + 8, sizeof header.orgY);
    std::memcpy(&header.nx, bytes.data() + 16, sizeof header.nx);
    std::memcpy(&header.ny, bytes.data() + 20, sizeof header.ny);
    std::memcpy(&header.dx, bytes.data() + 24, sizeof header.dx);
    return header;
}

[[nodiscard]] inline GridHeaderBytes PackGridHeader(const GridHeader& header) noexcept {
    GridHeaderBytes bytes{};
    std::memcpy(bytes.data(), &header.orgX, sizeof header.orgX);
    std::memcpy(bytes.data() + 8, &header.orgY, sizeof header.orgY);
    std::memcpy(bytes.data() + 16, &header.nx, sizeof header.nx);
    std::memcpy(bytes.data() + 20, &header.ny, sizeof header.ny);
    std::memcpy(bytes.data() + 24, &header.dx, sizeof header.dx);
    return bytes;
}

}  // namespace tidora
