#pragma once

#include <cstdint>

namespace tidora {

/// One grid of single-precision values at one rupture time interval, m; a value type that owns its array. Index of
/// column ix, row iy: ix * ny + iy.
///
/// Both fields are published: a caller may put an array of its own in place of `val`, from array new, since it is
/// released with array delete. Hence no std::vector, and the naked new of the source. Throws std::bad_alloc where there
/// is no memory; what was held before is then still there.
class InstantVal2d {
public:
    std::uint64_t num = 0;  ///< number of values; 0 for an empty snapshot
    float* val = nullptr;   ///< `num` values, owned (array new)

    InstantVal2d() = default;
    /// Duplicates the array. A source without an array gives `num` zeros. Not used by a run.
    InstantVal2d(const InstantVal2d& other);
    /// Takes the array over and leaves `other` empty.
    InstantVal2d(InstantVal2d&& other) noexcept;
    /// As the copy; an assignment to itself changes nothing. Not used by a run.
    InstantVal2d& operator=(const InstantVal2d& other);

    /// Changes places with `other`, which releases what this held. Not used by a run.
    InstantVal2d& operator=(InstantVal2d&& other) noexcept;
    ~InstantVal2d();

    /// Makes this a snapshot of `count` zeros; the array is replaced only when it has another size, so that a region
    /// that is processed again does not ask for its memory again.
    void Reset(std::uint64_t count);
    /// Frees the array and puts an empty one in its place: `val` may be passed on and deleted, but holds nothing.
    void Clear();
};

}  // namespace tidora
