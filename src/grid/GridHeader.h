#pragma once

#include <array>
#include <cstddef>
#include <cstring>

#include "grid/GridShape.h"

namespace tidora {

// The format is little-endian; fields and values are copied as the machine holds them. Another machine would have to
// turn the bytes of both: it does not compile, rather than write files that nobody else reads.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "binary grids are read and written on little-endian machines");

/// Header of a binary grid file, without padding: org_x at 0, org_y at 8 (double), nx at 16, ny at 20 (int32), dx at 24
/// (float). The values follow at byte 28, which is no multiple of 8: a struct would be padded to 32. Field by field
/// through memcpy, which needs no alignment.
inline constexpr std::size_t kGridHeaderSize = 28;
using GridHeaderBytes = std::array<unsigned char, kGridHeaderSize>;

[[nodiscard]] inline GridShape UnpackGridHeader(const GridHeaderBytes& bytes) noexcept {
    GridShape shape;
    std::memcpy(&shape.orgX, bytes.data(), sizeof shape.orgX);
    std::memcpy(&shape.orgY, bytes.data() + 8, sizeof shape.orgY);
    std::memcpy(&shape.nx, bytes.data() + 16, sizeof shape.nx);
    std::memcpy(&shape.ny, bytes.data() + 20, sizeof shape.ny);
    std::memcpy(&shape.dx, bytes.data() + 24, sizeof shape.dx);
    return shape;
}

[[nodiscard]] inline GridHeaderBytes PackGridHeader(const GridShape& shape) noexcept {
    static_assert(sizeof shape.nx == 4 && sizeof shape.ny == 4);
    GridHeaderBytes bytes{};
    std::memcpy(bytes.data(), &shape.orgX, sizeof shape.orgX);
    std::memcpy(bytes.data() + 8, &shape.orgY, sizeof shape.orgY);
    std::memcpy(bytes.data() + 16, &shape.nx, sizeof shape.nx);
    std::memcpy(bytes.data() + 20, &shape.ny, sizeof shape.ny);
    std::memcpy(bytes.data() + 24, &shape.dx, sizeof shape.dx);
    return bytes;
}

}  // namespace tidora
