#pragma once

// Elementary functions over the lanes of a vector, for the batched surface kernels. Included by the sources that are
// compiled for one instruction set each, and by nothing else.
//
// Divisions cost as much as some thirty multiplications, so every function here takes two arguments at a time and
// divides once for both.

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <xsimd/xsimd.hpp>

namespace tidora {

/// The operations that the vector library offers not at all, or by way of memory, on some machines.
template <typename Arch, typename = void>
struct LaneOperations {
    using Batch = xsimd::batch<double, Arch>;

    /// a b + c, rounded once where the machine can.
    static Batch Fma(const Batch& a, const Batch& b, const Batch& c) noexcept { return xsimd::fma(a, b, c); }
    /// c - a b
    static Batch Fnma(const Batch& a, const Batch& b, const Batch& c) noexcept { return xsimd::fnma(a, b, c); }

    /// Batch::size values of single precision, widened; any alignment.
    static Batch Widened(const float* values) noexcept {
        alignas(64) double wide[Batch::size];
        for (std::size_t lane = 0; lane < Batch::size; ++lane) {
            wide[lane] = static_cast<double>(values[lane]);
        }
        return Batch::load_aligned(wide);
    }
    /// Rounds to single precision; any alignment.
    static void Round(const Batch& values, float* rounded) noexcept {
        alignas(64) double wide[Batch::size];
        values.store_aligned(wide);
        for (std::size_t lane = 0; lane < Batch::size; ++lane) {
            rounded[lane] = static_cast<float>(wide[lane]);
        }
    }

    /// 1 / x for finite x other than 0, to within two units in the last place.
    static Batch Inverse(const Batch& x) noexcept { return Batch(1.0) / x; }
    /// Square root of finite x above 0; the nearest number but for one argument in millions, and then its neighbour.
    static Batch Root(const Batch& x) noexcept { return xsimd::sqrt(x); }
};

#ifdef __AVX2__
template <>
struct LaneOperations<xsimd::fma3<xsimd::avx2>> : LaneOperations<xsimd::fma3<xsimd::avx2>, int> {
    static Batch Widened(const float* values) noexcept { return _mm256_cvtps_pd(_mm_loadu_ps(values)); }
    static void Round(const Batch& values, float* rounded) noexcept { _mm_storeu_ps(rounded, _mm256_cvtpd_ps(values)); }
};
#endif

#ifdef __AVX512F__
template <typename Arch>
struct LaneOperations<Arch, std::enable_if_t<std::is_base_of_v<xsimd::avx512f, Arch>>> {
    using Batch = xsimd::batch<double, Arch>;

    static Batch Fma(const Batch& a, const Batch& b, const Batch& c) noexcept { return _mm512_fmadd_pd(a, b, c); }
    static Batch Fnma(const Batch& a, const Batch& b, const Batch& c) noexcept { return _mm512_fnmadd_pd(a, b, c); }
    static Batch Widened(const float* values) noexcept { return _mm512_cvtps_pd(_mm256_loadu_ps(values)); }
    static void Round(const Batch& values, float* rounded) noexcept {
        _mm256_storeu_ps(rounded, _mm512_cvtpd_ps(values));
    }
    static Batch Inverse(const Batch& x) noexcept {
        // Two of Newton's steps from 14 bits: a fourth of the time of a division.
        const Batch one(1.0);
        Batch y = _mm512_rcp14_pd(x);
        y = Fma(y, Fnma(x, y, one), y);
        return Fma(y, Fnma(x, y, one), y);
    }
    static Batch Root(const Batch& x) noexcept {
        // Two of Goldschmidt's steps from 14 bits towards sqrt(x) and 1 / (2 sqrt(x)), and what then is left of x.
        const Batch half(0.5);
        const Batch y = _mm512_rsqrt14_pd(x);
        Batch root = x * y;
        Batch inverse = y * half;
        for (int step = 0; step < 2; ++step) {
            const Batch rest = Fnma(root, inverse, half);
            root = Fma(root, rest, root);
            inverse = Fma(inverse, rest, inverse);
        }
        return Fma(Fnma(root, root, x), inverse, root);
    }
};
#endif

/// Functions of whole vectors of double precision.
template <typename Arch>
class LaneMath : public LaneOperations<Arch> {
public:
    using LaneOperations<Arch>::Fma;
    using LaneOperations<Arch>::Inverse;
    using Batch = xsimd::batch<double, Arch>;
    using Mask = typename Batch::batch_bool_type;
    static constexpr std::size_t kLanes = Batch::size;

    struct Complex {
        Batch re, im;
    };
    struct Fraction {
        Batch above, below;
    };
    struct Pair {
        Batch first, second;
    };

    /// first.above / first.below and second.above / second.below.
    static Pair Quotients(const Fraction& first, const Fraction& second) noexcept {
        const Batch inverse = Inverse(first.below * second.below);
        return {first.above * (second.below * inverse), second.above * (first.below * inverse)};
    }

    /// Natural logarithms of above / below, of positive numbers, to within 2e-16 or a unit in the last place.
    static Pair Logs(const Fraction& first, const Fraction& second) noexcept {
        const ReducedRatio a = Reduced(first), b = Reduced(second);
        const Pair s = Quotients(a.fraction, b.fraction);
        return {LogOf(a.exponent, s.first), LogOf(b.exponent, s.second)};
    }

    /// Arguments of complex numbers other than 0, within [-pi, pi].
    static Pair Arguments(const Complex& first, const Complex& second) noexcept {
        const FoldedAngle a = Folded(first), b = Folded(second);
        const Pair t = Quotients(a.fraction, b.fraction);
        return {Unfolded(first, a, t.first), Unfolded(second, b, t.second)};
    }

private:
    using Bits = xsimd::batch<std::uint64_t, Arch>;

    /// above / below * 2^-exponent, near 1, as twice the inverse hyperbolic tangent's argument.
    struct ReducedRatio {
        Fraction fraction;
        Batch exponent;
    };
    /// An angle within [-pi/8, pi/8] that an angle of the plane is folded to.
    struct FoldedAngle {
        Fraction fraction;  ///< its tangent
        Mask isSteep;       ///< folded at the diagonal |im| = |re|
        Mask isWide;        ///< and there again: pi/4 less
    };

    /// Sum of coefficients[n] x^n; even and odd powers apart, for two chains of half the length.
    template <std::size_t kTerms>
    static Batch Polynomial(const Batch& x, const double (&coefficients)[kTerms]) noexcept {
        constexpr std::size_t kLastEven = (kTerms - 1) / 2 * 2;
        constexpr std::size_t kLastOdd = kTerms / 2 * 2 - 1;
        const Batch x2 = x * x;
        Batch even(coefficients[kLastEven]), odd(coefficients[kLastOdd]);
        for (std::size_t n = kLastEven; n >= 2; n -= 2) {
            even = Fma(even, x2, Batch(coefficients[n - 2]));
        }
        for (std::size_t n = kLastOdd; n >= 3; n -= 2) {
            odd = Fma(odd, x2, Batch(coefficients[n - 2]));
        }
        return Fma(odd, x, even);
    }

    /// ln(n / d) = k ln 2 + 2 artanh((m - d) / (m + d)) with m = n 2^-k. The bits of a number, read as an integer, are
    /// its binary logarithm to within 0.086; their difference, rounded to whole exponents, leaves m / d between 2^-0.59
    /// and 2^0.59.
    static ReducedRatio Reduced(const Fraction& ratio) noexcept {
        constexpr int kMantissaBits = 52;
        constexpr std::uint64_t kOne = std::uint64_t{1} << kMantissaBits;
        constexpr std::uint64_t kBias = 1024;
        constexpr double kMagic = 4503599627370496.0;  // 2^52: its last bits are an integer
        constexpr std::uint64_t kMagicBits = 0x4330000000000000;
        const Bits n = xsimd::bitwise_cast<Bits>(ratio.above);
        const Bits d = xsimd::bitwise_cast<Bits>(ratio.below);
        const Bits shift = (n - d + Bits(kOne / 2)) & Bits(~(kOne - 1));
        const Bits biased = (shift + Bits(kBias * kOne)) >> kMantissaBits;
        const Batch m = xsimd::bitwise_cast<Batch>(n - shift);
        return {{m - ratio.below, m + ratio.below},
                xsimd::bitwise_cast<Batch>(biased | Bits(kMagicBits)) - Batch(kMagic + static_cast<double>(kBias))};
    }

    static Batch LogOf(const Batch& exponent, const Batch& s) noexcept {
        // (2 artanh(s) / s - 2) / s^2 as a polynomial of s^2 up to 0.04, to within 1.1e-18 of the logarithm.
        constexpr double kArtanh[] = {0.6666666666666666,  0.4000000000000794,  0.28571428567275936,
                                      0.2222222304835159,  0.18181737626302938, 0.15388867805613718,
                                      0.13209708242059462, 0.13609030262858499};
        constexpr double kLn2 = 0.6931471805599453;
        const Batch w = s * s;
        return Fma(exponent, Batch(kLn2), Fma(s * w, Polynomial(w, kArtanh), s + s));
    }

    static FoldedAngle Folded(const Complex& z) noexcept {
        constexpr double kTangentOfEighth = 0.41421356237309503;  // tan(pi/8)
        const Batch along = xsimd::abs(z.re), across = xsimd::abs(z.im);
        const Batch larger = xsimd::max(along, across), smaller = xsimd::min(along, across);
        const Mask isWide = smaller > larger * Batch(kTangentOfEighth);
        return {{xsimd::select(isWide, smaller - larger, smaller), xsimd::select(isWide, smaller + larger, larger)},
                across > along,
                isWide};
    }

    static Batch Unfolded(const Complex& z, const FoldedAngle& folded, const Batch& t) noexcept {
        // (arctan(t) / t - 1) / t^2 as a polynomial of t^2 up to tan^2(pi/8), to within 5.5e-18 of the angle.
        constexpr double kArctan[] = {-0.3333333333333333,  0.1999999999999552,   -0.14285714284666542,
                                      0.11111111015256361,  -0.09090904578123903, 0.07692183190826087,
                                      -0.06664511447381948, 0.0585814891280221,   -0.0508544973794026,
                                      0.03923165829558719,  -0.01917688711906226};
        constexpr double kPi = 3.141592653589793;
        const Batch w = t * t;
        Batch angle = Fma(t * w, Polynomial(w, kArctan), t);
        angle = xsimd::select(folded.isWide, angle + Batch(kPi / 4.0), angle);
        angle = xsimd::select(folded.isSteep, Batch(kPi / 2.0) - angle, angle);
        angle = xsimd::select(z.re < Batch(0.0), Batch(kPi) - angle, angle);
        return xsimd::copysign(angle, z.im);
    }
};

}  // namespace tidora
