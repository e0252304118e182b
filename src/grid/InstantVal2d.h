#pragma once

#include <cstdint>

namespace tidora {

/// One grid of single-precision values at one rupture time interval; a value type that owns its array.
/// Index of column ix, row iy: ix * ny + iy.
class InstantVal2d {
public:
    std::uint64_t num = 0;  ///< number of values; 0 for an empty snapshot
    float* val = nullptr;   ///< `num` values, owned (array new)

    InstantVal2d() = default;
    /// Duplicates the array. A source without an array gives `num` zeros.
    InstantVal2d(const InstantVal2d& other);
    InstantVal2d(InstantVal2d&& other) noexcept;
    InstantVal2d& operator=(const InstantVal2d& other);
    InstantVal2d& operator=(InstantVal2d&& other) noexcept;
    ~InstantVal2d();

    /// Makes this a snapshot of `count` zeros; the array is replaced only when it has another size.
    void Reset(std::uint64_t count);
    /// Frees the array and puts an empty one in its place.
    void Clear();
};

}  // namespace tidora
