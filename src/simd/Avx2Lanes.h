#pragma once

#ifndef __AVX2__
#error "for sources that are compiled for AVX2 and FMA"
#endif

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "simd/FloatingPointRules.h"

namespace tidora {

/// Four doubles, or eight floats, side by side: AVX2 with FMA. The vocabulary of all lane types; the operators + - * /
/// and unary - are the compiler's.
///
/// Card. Every operation is rounded correctly, Fma and Fnma once, on all finite numbers, infinities and zeros. What is
/// not a number stays so, but for Min, Max and the comparisons.
struct Avx2Lanes {
    // ---- doubles: kernels that compute in double precision ----

    using Doubles = __m256d;
    using Bits = std::uint64_t __attribute__((vector_size(32)));  ///< one 64-bit pattern per lane
    using Mask = __m256d;                                         ///< all bits of a lane, or none
    static constexpr std::size_t kDoubles = 4;
    static constexpr double kMaxUlpOfInverse = 0.5;  ///< largest error of Inverse, units in the last place: a division
    static constexpr double kMaxUlpOfRoot = 0.5;     ///< of Root, likewise: the square root of the processor

    static Doubles All(double value) noexcept { return _mm256_set1_pd(value); }
    static Bits AllBits(std::uint64_t value) noexcept { return Bits{value, value, value, value}; }

    /// kDoubles values; any alignment.
    static Doubles Load(const double* from) noexcept { return _mm256_loadu_pd(from); }
    static void Store(double* to, Doubles values) noexcept { _mm256_storeu_pd(to, values); }
    /// kDoubles values of single precision, widened; any alignment.
    static Doubles LoadWidened(const float* from) noexcept { return _mm256_cvtps_pd(_mm_loadu_ps(from)); }
    /// from[lane] - minus in single precision, widened: the scalar routines take this difference so.
    static Doubles LoadDifference(const float* from, float minus) noexcept {
        return _mm256_cvtps_pd(_mm_sub_ps(_mm_loadu_ps(from), _mm_set1_ps(minus)));
    }
    /// Rounds to single precision; any alignment.
    static void StoreRounded(float* to, Doubles values) noexcept { _mm_storeu_ps(to, _mm256_cvtpd_ps(values)); }

    /// a b + c
    static Doubles Fma(Doubles a, Doubles b, Doubles c) noexcept { return _mm256_fmadd_pd(a, b, c); }
    /// c - a b
    static Doubles Fnma(Doubles a, Doubles b, Doubles c) noexcept { return _mm256_fnmadd_pd(a, b, c); }
    /// 1 / x
    static Doubles Inverse(Doubles x) noexcept { return All(1.0) / x; }
    static Doubles Root(Doubles x) noexcept { return _mm256_sqrt_pd(x); }
    static Doubles Sqrt(Doubles x) noexcept { return _mm256_sqrt_pd(x); }

    /// The second where either is not a number.
    static Doubles Min(Doubles a, Doubles b) noexcept { return _mm256_min_pd(a, b); }
    static Doubles Max(Doubles a, Doubles b) noexcept { return _mm256_max_pd(a, b); }
    static Doubles Abs(Doubles x) noexcept { return _mm256_andnot_pd(All(-0.0), x); }
    static Doubles CopySign(Doubles size, Doubles sign) noexcept {
        return _mm256_or_pd(Abs(size), _mm256_and_pd(All(-0.0), sign));
    }

    // False where either is not a number.
    static Mask Less(Doubles a, Doubles b) noexcept { return _mm256_cmp_pd(a, b, _CMP_LT_OQ); }
    static Mask AtLeast(Doubles a, Doubles b) noexcept { return _mm256_cmp_pd(a, b, _CMP_GE_OQ); }
    static Mask And(Mask a, Mask b) noexcept { return _mm256_and_pd(a, b); }
    static Mask Or(Mask a, Mask b) noexcept { return _mm256_or_pd(a, b); }
    static Mask Not(Mask a) noexcept { return FromBits(~ToBits(a)); }
    /// One bit per lane, the first lane lowest.
    static unsigned BitsOf(Mask mask) noexcept { return static_cast<unsigned>(_mm256_movemask_pd(mask)); }
    static Doubles Select(Mask mask, Doubles yes, Doubles no) noexcept { return _mm256_blendv_pd(no, yes, mask); }

    static Bits ToBits(Doubles x) noexcept { return __builtin_bit_cast(Bits, x); }
    static Doubles FromBits(Bits x) noexcept { return __builtin_bit_cast(Doubles, x); }

    // ---- floats: kernels that are single precision by definition ----

    using Floats = __m256;
    static constexpr int kFloats = 8;

    static Floats AllFloats(float value) noexcept { return _mm256_set1_ps(value); }
    static Floats LoadFloats(const float* from) noexcept { return _mm256_loadu_ps(from); }
    static void StoreFloats(float* to, Floats values) noexcept { _mm256_storeu_ps(to, values); }
    static Floats SqrtFloats(Floats x) noexcept { return _mm256_sqrt_ps(x); }
    /// The last value first.
    static Floats Reversed(Floats values) noexcept {
        return _mm256_permutevar8x32_ps(values, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
    }
    /// kFloats / 4 times four values, `stride` values apart.
    static Floats LoadQuarters(const float* from, std::ptrdiff_t stride) noexcept {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from)), _mm_loadu_ps(from + stride), 1);
    }
    // Within each four lanes: the first (last) two of a and those of b in turns; the first (last) two of a, then of b.
    static Floats FirstPairs(Floats a, Floats b) noexcept { return _mm256_unpacklo_ps(a, b); }
    static Floats LastPairs(Floats a, Floats b) noexcept { return _mm256_unpackhi_ps(a, b); }
    static Floats FirstHalves(Floats a, Floats b) noexcept { return _mm256_shuffle_ps(a, b, 0x44); }
    static Floats LastHalves(Floats a, Floats b) noexcept { return _mm256_shuffle_ps(a, b, 0xEE); }

    // ---- as many integers: indices of floats ----

    using Integers = __m256i;

    // A pointer to a whole vector, aligned or not.
    // NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast)
    static Integers LoadIntegers(const int* from) noexcept {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
    }
    static Integers LoadIntegers(const std::int16_t* from) noexcept {
        return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
    }
    static void StoreIntegers(int* to, Integers values) noexcept {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), values);
    }
    // NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)
    static Integers Minus(Integers a, int b) noexcept { return _mm256_sub_epi32(a, _mm256_set1_epi32(b)); }
    static Integers NotNegative(Integers values) noexcept { return _mm256_max_epi32(values, _mm256_setzero_si256()); }
    static Integers Or(Integers a, Integers b) noexcept { return _mm256_or_si256(a, b); }
    /// Taken as unsigned: negative values are the greatest.
    static int LeastOf(Integers values) noexcept {
        const __m128i four = _mm_min_epu32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
        const __m128i two = _mm_min_epu32(four, _mm_shuffle_epi32(four, 0x4E));
        return _mm_cvtsi128_si32(_mm_min_epu32(two, _mm_shuffle_epi32(two, 0xB1)));
    }
    static int GreatestOf(Integers values) noexcept {
        const __m128i four = _mm_max_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
        const __m128i two = _mm_max_epi32(four, _mm_shuffle_epi32(four, 0x4E));
        return _mm_cvtsi128_si32(_mm_max_epi32(two, _mm_shuffle_epi32(two, 0xB1)));
    }
    static Floats Gathered(const float* from, Integers index) noexcept {
        return _mm256_i32gather_ps(from, index, sizeof(float));
    }
    static constexpr bool kPicksFast = true;  ///< Picked takes less than two Gathered
    /// Of twice as many values, low and high, those that the index names.
    static Floats Picked(Floats low, Integers index, Floats high) noexcept {
        // Bit 3, set from 8 on, becomes the sign that the blend looks at; the permutations look at the bits below.
        const __m256 isHigh = _mm256_castsi256_ps(_mm256_slli_epi32(index, 28));
        return _mm256_blendv_ps(_mm256_permutevar8x32_ps(low, index), _mm256_permutevar8x32_ps(high, index), isHigh);
    }

    // ---- eight floats, widened to eight doubles and rounded again, whatever the width of the vectors ----

    using Floats8 = __m256;
    struct Doubles8 {
        __m256d low, high;
        friend Doubles8 operator+(Doubles8 a, Doubles8 b) noexcept { return {a.low + b.low, a.high + b.high}; }
        friend Doubles8 operator*(Doubles8 a, Doubles8 b) noexcept { return {a.low * b.low, a.high * b.high}; }
    };

    static Floats8 ZeroFloats8() noexcept { return _mm256_setzero_ps(); }
    static Floats8 LoadFloats8(const float* from) noexcept { return _mm256_loadu_ps(from); }
    static void StoreFloats8(float* to, Floats8 values) noexcept { _mm256_storeu_ps(to, values); }
    /// Stores all values but the first `count`.
    static void StoreFloats8From(int count, float* to, Floats8 values) noexcept {
        const __m256i position = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        _mm256_maskstore_ps(to, _mm256_cmpgt_epi32(position, _mm256_set1_epi32(count - 1)), values);
    }
    /// `yes` where the integer of the lane is not negative, else `no`.
    static Floats8 SelectNotNegative8(const int* integers, Floats8 yes, Floats8 no) noexcept {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): a pointer to a whole vector, aligned or not
        const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(integers));
        return _mm256_blendv_ps(yes, no, _mm256_castsi256_ps(lanes));  // by the sign
    }
    static Doubles8 All8(double value) noexcept { return {_mm256_set1_pd(value), _mm256_set1_pd(value)}; }
    static Doubles8 Load8(const double* from) noexcept { return {_mm256_loadu_pd(from), _mm256_loadu_pd(from + 4)}; }
    static Doubles8 LoadWidened8(const float* from) noexcept {
        return {_mm256_cvtps_pd(_mm_loadu_ps(from)), _mm256_cvtps_pd(_mm_loadu_ps(from + 4))};
    }
    static Floats8 Rounded8(Doubles8 values) noexcept {
        return _mm256_set_m128(_mm256_cvtpd_ps(values.high), _mm256_cvtpd_ps(values.low));
    }
};

}  // namespace tidora
