#pragma once

#ifndef __AVX512DQ__
#error "for sources that are compiled for AVX-512 F, CD, DQ, BW and VL"
#endif

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "simd/FloatingPointRules.h"

namespace tidora {

/// Eight doubles, or sixteen floats, side by side: AVX-512. The vocabulary of all lane types; the operators + - * / and
/// unary - are the compiler's.
///
/// Card. Every operation but Inverse and Root is rounded correctly, Fma and Fnma once, on all finite numbers,
/// infinities and zeros. What is not a number stays so, but for Min, Max and the comparisons.
struct Avx512Lanes {
    // ---- doubles: kernels that compute in double precision ----

    using Doubles = __m512d;
    using Bits = std::uint64_t __attribute__((vector_size(64)));  ///< one 64-bit pattern per lane
    using Mask = __mmask8;                                        ///< one bit per lane
    static constexpr std::size_t kDoubles = 8;
    /// Largest error of Inverse, units in the last place: half a unit of the last rounding and 1/8 of the second step,
    /// which squares a relative error of (2^-14)^2. Found among 10^8 numbers: 0.54.
    static constexpr double kMaxUlpOfInverse = 0.63;
    /// Largest error of Root, likewise: what the last correction leaves is some 2^-48, so that the nearest number is
    /// missed only where the root lies that close to the middle of two.
    static constexpr double kMaxUlpOfRoot = 0.501;

    static Doubles All(double value) noexcept { return _mm512_set1_pd(value); }
    static Bits AllBits(std::uint64_t value) noexcept {
        return Bits{value, value, value, value, value, value, value, value};
    }

    /// kDoubles values; any alignment.
    static Doubles Load(const double* from) noexcept { return _mm512_loadu_pd(from); }
    static void Store(double* to, Doubles values) noexcept { _mm512_storeu_pd(to, values); }
    /// kDoubles values of single precision, widened; any alignment.
    static Doubles LoadWidened(const float* from) noexcept { return _mm512_cvtps_pd(_mm256_loadu_ps(from)); }
    /// from[lane] - minus in single precision, widened: the scalar routines take this difference so.
    static Doubles LoadDifference(const float* from, float minus) noexcept {
        return _mm512_cvtps_pd(_mm256_sub_ps(_mm256_loadu_ps(from), _mm256_set1_ps(minus)));
    }
    /// Rounds to single precision; any alignment.
    static void StoreRounded(float* to, Doubles values) noexcept { _mm256_storeu_ps(to, _mm512_cvtpd_ps(values)); }

    /// a b + c
    static Doubles Fma(Doubles a, Doubles b, Doubles c) noexcept { return _mm512_fmadd_pd(a, b, c); }
    /// c - a b
    static Doubles Fnma(Doubles a, Doubles b, Doubles c) noexcept { return _mm512_fnmadd_pd(a, b, c); }
    /// 1 / x for finite x other than 0 whose inverse is finite and normal.
    static Doubles Inverse(Doubles x) noexcept {
        // Two of Newton's steps, y + y (1 - x y), from 14 bits: a fourth of the time of a division. At 0 and at
        // infinity the product of x and its first estimate is not a number, and so is the result.
        const Doubles one = All(1.0);
        Doubles y = _mm512_rcp14_pd(x);
        y = Fma(y, Fnma(x, y, one), y);
        return Fma(y, Fnma(x, y, one), y);
    }
    /// Square root of finite x from 2^-968 on, where what is left of x still has all its bits; not a number for 0 and
    /// for infinity.
    static Doubles Root(Doubles x) noexcept {
        // Two of Goldschmidt's steps from 14 bits towards sqrt(x) and 1 / (2 sqrt(x)), then one of Newton's with what
        // is left of x, exact by the fused operation.
        const Doubles half = All(0.5);
        const Doubles y = _mm512_rsqrt14_pd(x);
        Doubles root = x * y;
        Doubles inverse = y * half;
        for (int step = 0; step < 2; ++step) {
            const Doubles rest = Fnma(root, inverse, half);
            root = Fma(root, rest, root);
            inverse = Fma(inverse, rest, inverse);
        }
        return Fma(Fnma(root, root, x), inverse, root);
    }
    static Doubles Sqrt(Doubles x) noexcept { return _mm512_sqrt_pd(x); }

    /// The second where either is not a number.
    static Doubles Min(Doubles a, Doubles b) noexcept { return _mm512_min_pd(a, b); }
    static Doubles Max(Doubles a, Doubles b) noexcept { return _mm512_max_pd(a, b); }
    static Doubles Abs(Doubles x) noexcept { return _mm512_andnot_pd(All(-0.0), x); }
    static Doubles CopySign(Doubles size, Doubles sign) noexcept {
        return _mm512_or_pd(Abs(size), _mm512_and_pd(All(-0.0), sign));
    }

    // False where either is not a number.
    static Mask Less(Doubles a, Doubles b) noexcept { return _mm512_cmp_pd_mask(a, b, _CMP_LT_OQ); }
    static Mask AtLeast(Doubles a, Doubles b) noexcept { return _mm512_cmp_pd_mask(a, b, _CMP_GE_OQ); }
    static Mask And(Mask a, Mask b) noexcept { return static_cast<Mask>(a & b); }
    static Mask Or(Mask a, Mask b) noexcept { return static_cast<Mask>(a | b); }
    static Mask Not(Mask a) noexcept { return static_cast<Mask>(~a); }
    /// One bit per lane, the first lane lowest.
    static unsigned BitsOf(Mask mask) noexcept { return mask; }
    static Doubles Select(Mask mask, Doubles yes, Doubles no) noexcept { return _mm512_mask_blend_pd(mask, no, yes); }

    static Bits ToBits(Doubles x) noexcept { return __builtin_bit_cast(Bits, x); }
    static Doubles FromBits(Bits x) noexcept { return __builtin_bit_cast(Doubles, x); }

    // ---- floats: kernels that are single precision by definition ----

    using Floats = __m512;
    static constexpr int kFloats = 16;

    static Floats AllFloats(float value) noexcept { return _mm512_set1_ps(value); }
    static Floats LoadFloats(const float* from) noexcept { return _mm512_loadu_ps(from); }
    static void StoreFloats(float* to, Floats values) noexcept { _mm512_storeu_ps(to, values); }
    static Floats SqrtFloats(Floats x) noexcept { return _mm512_sqrt_ps(x); }
    /// The last value first.
    static Floats Reversed(Floats values) noexcept {
        return _mm512_permutexvar_ps(_mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), values);
    }
    /// kFloats / 4 times four values, `stride` values apart.
    static Floats LoadQuarters(const float* from, std::ptrdiff_t stride) noexcept {
        Floats values = _mm512_castps128_ps512(_mm_loadu_ps(from));
        values = _mm512_insertf32x4(values, _mm_loadu_ps(from + stride), 1);
        values = _mm512_insertf32x4(values, _mm_loadu_ps(from + 2 * stride), 2);
        return _mm512_insertf32x4(values, _mm_loadu_ps(from + 3 * stride), 3);
    }
    // Within each four lanes: the first (last) two of a and those of b in turns; the first (last) two of a, then of b.
    static Floats FirstPairs(Floats a, Floats b) noexcept { return _mm512_unpacklo_ps(a, b); }
    static Floats LastPairs(Floats a, Floats b) noexcept { return _mm512_unpackhi_ps(a, b); }
    static Floats FirstHalves(Floats a, Floats b) noexcept { return _mm512_shuffle_ps(a, b, 0x44); }
    static Floats LastHalves(Floats a, Floats b) noexcept { return _mm512_shuffle_ps(a, b, 0xEE); }

    // ---- as many integers: indices of floats ----

    using Integers = __m512i;

    static Integers LoadIntegers(const int* from) noexcept { return _mm512_loadu_si512(from); }
    static Integers LoadIntegers(const std::int16_t* from) noexcept {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): a pointer to a whole vector, aligned or not
        return _mm512_cvtepi16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    }
    static void StoreIntegers(int* to, Integers values) noexcept { _mm512_storeu_si512(to, values); }
    static Integers Minus(Integers a, int b) noexcept { return _mm512_sub_epi32(a, _mm512_set1_epi32(b)); }
    static Integers NotNegative(Integers values) noexcept { return _mm512_max_epi32(values, _mm512_setzero_si512()); }
    static Integers Or(Integers a, Integers b) noexcept { return _mm512_or_si512(a, b); }
    /// Taken as unsigned: negative values are the greatest.
    static int LeastOf(Integers values) noexcept { return static_cast<int>(_mm512_reduce_min_epu32(values)); }
    static int GreatestOf(Integers values) noexcept { return _mm512_reduce_max_epi32(values); }
    static Floats Gathered(const float* from, Integers index) noexcept {
        return _mm512_i32gather_ps(index, from, sizeof(float));
    }
    static constexpr bool kPicksFast = true;  ///< Picked takes less than two Gathered
    /// Of twice as many values, low and high, those that the index names.
    static Floats Picked(Floats low, Integers index, Floats high) noexcept {
        return _mm512_permutex2var_ps(low, index, high);
    }

    // ---- eight floats, widened to eight doubles and rounded again, whatever the width of the vectors ----

    using Floats8 = __m256;
    using Doubles8 = __m512d;

    static Floats8 ZeroFloats8() noexcept { return _mm256_setzero_ps(); }
    static Floats8 LoadFloats8(const float* from) noexcept { return _mm256_loadu_ps(from); }
    static void StoreFloats8(float* to, Floats8 values) noexcept { _mm256_storeu_ps(to, values); }
    /// Stores all values but the first `count`.
    static void StoreFloats8From(int count, float* to, Floats8 values) noexcept {
        _mm256_mask_storeu_ps(to, static_cast<__mmask8>(0xFFU << static_cast<unsigned>(count)), values);
    }
    /// `yes` where the integer of the lane is not negative, else `no`.
    static Floats8 SelectNotNegative8(const int* integers, Floats8 yes, Floats8 no) noexcept {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): a pointer to a whole vector, aligned or not
        const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(integers));
        return _mm256_blendv_ps(yes, no, _mm256_castsi256_ps(lanes));  // by the sign
    }
    static Doubles8 All8(double value) noexcept { return _mm512_set1_pd(value); }
    static Doubles8 Load8(const double* from) noexcept { return _mm512_loadu_pd(from); }
    static Doubles8 LoadWidened8(const float* from) noexcept { return _mm512_cvtps_pd(_mm256_loadu_ps(from)); }
    static Floats8 Rounded8(Doubles8 values) noexcept { return _mm512_cvtpd_ps(values); }
};

}  // namespace tidora
