#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "simd/FloatingPointRules.h"

namespace tidora {

/// Two doubles side by side, in what the compiler makes of its own vectors on any machine: one register of SSE2 or of
/// NEON. The vocabulary is that of Avx2Lanes and Avx512Lanes, as far as kernels of doubles need it; the operators
/// + - * / and unary - are the compiler's.
///
/// Card. Every operation is rounded correctly, on all finite numbers, infinities and zeros; Fma and Fnma round their
/// product and their sum, since not every processor that this is for has a fused operation. What is not a number stays
/// so, but for Min, Max and the comparisons.
struct PlainLanes {
    using Doubles = double __attribute__((vector_size(16)));
    using Bits = std::uint64_t __attribute__((vector_size(16)));  ///< one 64-bit pattern per lane
    using Mask = std::int64_t __attribute__((vector_size(16)));   ///< all bits of a lane, or none
    static constexpr std::size_t kDoubles = 2;
    static constexpr double kMaxUlpOfInverse = 0.5;  ///< largest error of Inverse, units in the last place: a division
    static constexpr double kMaxUlpOfRoot = 0.5;     ///< of Root, likewise: the square root of the processor

    static Doubles All(double value) noexcept { return Doubles{value, value}; }
    static Bits AllBits(std::uint64_t value) noexcept { return Bits{value, value}; }

    /// kDoubles values; any alignment.
    static Doubles Load(const double* from) noexcept { return Doubles{from[0], from[1]}; }
    static void Store(double* to, Doubles values) noexcept {
        to[0] = values[0];
        to[1] = values[1];
    }
    /// kDoubles values of single precision, widened; any alignment.
    static Doubles LoadWidened(const float* from) noexcept {
        return Doubles{static_cast<double>(from[0]), static_cast<double>(from[1])};
    }
    /// from[lane] - minus in single precision, widened: the scalar routines take this difference so.
    static Doubles LoadDifference(const float* from, float minus) noexcept {
        return Doubles{static_cast<double>(from[0] - minus), static_cast<double>(from[1] - minus)};
    }
    /// Rounds to single precision; any alignment.
    static void StoreRounded(float* to, Doubles values) noexcept {
        to[0] = static_cast<float>(values[0]);
        to[1] = static_cast<float>(values[1]);
    }

    /// a b + c, rounded twice.
    static Doubles Fma(Doubles a, Doubles b, Doubles c) noexcept { return a * b + c; }
    /// c - a b, rounded twice.
    static Doubles Fnma(Doubles a, Doubles b, Doubles c) noexcept { return c - a * b; }
    /// 1 / x
    static Doubles Inverse(Doubles x) noexcept { return 1.0 / x; }
    static Doubles Root(Doubles x) noexcept { return Sqrt(x); }
    static Doubles Sqrt(Doubles x) noexcept { return Doubles{__builtin_sqrt(x[0]), __builtin_sqrt(x[1])}; }

    /// The second where either is not a number, as the instructions of the vector units have it.
    static Doubles Min(Doubles a, Doubles b) noexcept { return a < b ? a : b; }
    static Doubles Max(Doubles a, Doubles b) noexcept { return a > b ? a : b; }
    static Doubles Abs(Doubles x) noexcept { return Doubles{__builtin_fabs(x[0]), __builtin_fabs(x[1])}; }
    static Doubles CopySign(Doubles size, Doubles sign) noexcept {
        return Doubles{__builtin_copysign(size[0], sign[0]), __builtin_copysign(size[1], sign[1])};
    }

    static Mask Less(Doubles a, Doubles b) noexcept { return a < b; }
    static Mask AtLeast(Doubles a, Doubles b) noexcept { return a >= b; }
    static Mask And(Mask a, Mask b) noexcept { return a & b; }
    static Mask Or(Mask a, Mask b) noexcept { return a | b; }
    static Mask Not(Mask a) noexcept { return ~a; }
    /// One bit per lane, the first lane lowest.
    static unsigned BitsOf(Mask mask) noexcept {
#ifdef __SSE2__
        return static_cast<unsigned>(_mm_movemask_pd(__builtin_bit_cast(__m128d, mask)));  // not found by compilers
#else
        return (mask[0] != 0 ? 1U : 0U) | (mask[1] != 0 ? 2U : 0U);
#endif
    }
    static Doubles Select(Mask mask, Doubles yes, Doubles no) noexcept {
        return mask ? yes : no;
    }

    static Bits ToBits(Doubles x) noexcept {
        return __builtin_bit_cast(Bits, x);
    }
    static Doubles FromBits(Bits x) noexcept {
        return __builtin_bit_cast(Doubles, x);
    }
};

}  // namespace tidora
