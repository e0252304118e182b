#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "simd/FloatingPointRules.h"

namespace tidora {

/// Two doubles, or four floats, side by side, in what the compiler makes of its own vectors on any machine: one
/// register of SSE2 or of NEON. The vocabulary is that of Avx2Lanes and Avx512Lanes; the operators + - * / and unary -
/// are the compiler's.
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

    // ---- floats: kernels that are single precision by definition ----

    using Floats = float __attribute__((vector_size(16)));
    static constexpr int kFloats = 4;
    static constexpr bool kPicksFast = false;  ///< Picked is no instruction on every machine: Gathered is as fast

    static Floats AllFloats(float value) noexcept {
        return Floats{value, value, value, value};
    }
    static Floats LoadFloats(const float* from) noexcept {
        return FromMemory<Floats>(from);
    }
    static void StoreFloats(float* to, Floats values) noexcept {
        __builtin_memcpy(to, &values, sizeof values);
    }
    static Floats SqrtFloats(Floats x) noexcept {
        return Floats{__builtin_sqrtf(x[0]), __builtin_sqrtf(x[1]), __builtin_sqrtf(x[2]), __builtin_sqrtf(x[3])};
    }
    /// The last value first.
    static Floats Reversed(Floats values) noexcept {
        return Floats{values[3], values[2], values[1], values[0]};
    }
    /// kFloats / 4 times four values: four.
    static Floats LoadQuarters(const float* from, std::ptrdiff_t /*stride*/) noexcept {
        return LoadFloats(from);
    }
    // Within each four lanes: the first (last) two of a and those of b in turns; the first (last) two of a, then of b.
    static Floats FirstPairs(Floats a, Floats b) noexcept {
        return Floats{a[0], b[0], a[1], b[1]};
    }
    static Floats LastPairs(Floats a, Floats b) noexcept {
        return Floats{a[2], b[2], a[3], b[3]};
    }
    static Floats FirstHalves(Floats a, Floats b) noexcept {
        return Floats{a[0], a[1], b[0], b[1]};
    }
    static Floats LastHalves(Floats a, Floats b) noexcept {
        return Floats{a[2], a[3], b[2], b[3]};
    }

    // ---- as many integers: indices of floats ----

    using Integers = std::int32_t __attribute__((vector_size(16)));

    static Integers LoadIntegers(const int* from) noexcept {
        return FromMemory<Integers>(from);
    }
    static Integers LoadIntegers(const std::int16_t* from) noexcept {
        return Integers{from[0], from[1], from[2], from[3]};
    }
    static void StoreIntegers(int* to, Integers values) noexcept {
        __builtin_memcpy(to, &values, sizeof values);
    }
    /// Wraps, as the instructions do.
    static Integers Minus(Integers a, int b) noexcept {
        return __builtin_bit_cast(Integers, __builtin_bit_cast(Unsigned, a) - static_cast<unsigned>(b));
    }
    static Integers NotNegative(Integers values) noexcept {
        return values & ~(values >> 31);
    }
    static Integers Or(Integers a, Integers b) noexcept {
        return a | b;
    }
    /// Taken as unsigned: negative values are the greatest.
    static int LeastOf(Integers values) noexcept {
        auto least = static_cast<unsigned>(values[0]);
        for (int lane = 1; lane < kFloats; ++lane) {
            const auto value = static_cast<unsigned>(values[lane]);
            least = value < least ? value : least;
        }
        return static_cast<int>(least);
    }
    static int GreatestOf(Integers values) noexcept {
        int most = values[0];
        for (int lane = 1; lane < kFloats; ++lane) {
            most = values[lane] > most ? values[lane] : most;
        }
        return most;
    }
    static Floats Gathered(const float* from, Integers index) noexcept {
        return Floats{from[index[0]], from[index[1]], from[index[2]], from[index[3]]};
    }

    /// Of twice as many values, low and high, those that the index names.
    static Floats Picked(Floats low, Integers index, Floats high) noexcept {
        float from[2 * kFloats];
        StoreFloats(from, low);
        StoreFloats(from + kFloats, high);
        return Gathered(from, index);
    }

    // ---- eight floats, widened to eight doubles and rounded again, on every vector unit ----

    struct Floats8 {
        Floats low, high;
        friend Floats8 operator*(Floats8 a, Floats8 b) noexcept { return {a.low * b.low, a.high * b.high}; }
    };
    struct Doubles8 {
        Doubles a, b, c, d;
        friend Doubles8 operator+(Doubles8 x, Doubles8 y) noexcept {
            return {x.a + y.a, x.b + y.b, x.c + y.c, x.d + y.d};
        }
        friend Doubles8 operator*(Doubles8 x, Doubles8 y) noexcept {
            return {x.a * y.a, x.b * y.b, x.c * y.c, x.d * y.d};
        }
    };

    static Floats8 ZeroFloats8() noexcept {
        return {AllFloats(0.0F), AllFloats(0.0F)};
    }
    static Floats8 LoadFloats8(const float* from) noexcept {
        return {LoadFloats(from), LoadFloats(from + kFloats)};
    }
    static void StoreFloats8(float* to, Floats8 values) noexcept {
        StoreFloats(to, values.low);
        StoreFloats(to + kFloats, values.high);
    }
    /// Stores all values but the first `count`.
    static void StoreFloats8From(int count, float* to, Floats8 values) noexcept {
        float from[2 * kFloats];
        StoreFloats8(from, values);
        for (int lane = count; lane < 2 * kFloats; ++lane) {
            to[lane] = from[lane];
        }
    }
    /// `yes` where the integer of the lane is not negative, else `no`.
    static Floats8 SelectNotNegative8(const int* integers, Floats8 yes, Floats8 no) noexcept {
        return {SelectNotNegative(LoadIntegers(integers), yes.low, no.low),
                SelectNotNegative(LoadIntegers(integers + kFloats), yes.high, no.high)};
    }
    static Doubles8 All8(double value) noexcept {
        return {All(value), All(value), All(value), All(value)};
    }
    static Doubles8 Load8(const double* from) noexcept {
        return {Load(from), Load(from + 2), Load(from + 4), Load(from + 6)};
    }
    static Doubles8 LoadWidened8(const float* from) noexcept {
        return {LoadWidened(from), LoadWidened(from + 2), LoadWidened(from + 4), LoadWidened(from + 6)};
    }
    static Floats8 Rounded8(Doubles8 values) noexcept {
        return {Rounded(values.a, values.b), Rounded(values.c, values.d)};
    }

private:
    using Unsigned = std::uint32_t __attribute__((vector_size(16)));

    template <typename Vector, typename Value>
    static Vector FromMemory(const Value* from) noexcept {
        Vector values;
        __builtin_memcpy(&values, from, sizeof values);
        return values;
    }
    static Floats SelectNotNegative(Integers integers, Floats yes, Floats no) noexcept {
        const Integers isNegative = integers >> 31;
        return __builtin_bit_cast(Floats, (__builtin_bit_cast(Integers, yes) & ~isNegative) |
                                              (__builtin_bit_cast(Integers, no) & isNegative));
    }
    static Floats Rounded(Doubles a, Doubles b) noexcept {
        return Floats{static_cast<float>(a[0]), static_cast<float>(a[1]), static_cast<float>(b[0]),
                      static_cast<float>(b[1])};
    }
};

}  // namespace tidora
