#pragma once

// Elementary functions over the lanes of a vector, for kernels of doubles: templates over a lane type, to be included
// by sources that are compiled for one instruction set.
//
// A division costs as much as some thirty multiplications, so every function takes two arguments at a time and divides
// once for both. The logarithm and the argument are made for ratios: the quotient is theirs, reduced before it is
// formed.

#include <cstddef>
#include <cstdint>

namespace tidora {

/// Card. Lanes: PlainLanes, Avx2Lanes, Avx512Lanes. Values are not the same bits on all of them: products are fused
/// where the machine can, and Lanes::Inverse has its own error. The largest errors below are sums of what each step can
/// add; "found" is the largest among 10^8 arguments. A test reads the constants. Outside of the range of a function
/// nothing is promised, also for the other argument of the pair.
template <typename Lanes>
struct LaneMath {
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;

    struct Complex {
        Doubles re, im;
    };
    struct Fraction {
        Doubles above, below;
    };
    struct Pair {
        Doubles first, second;
    };

    /// Largest error of a quotient, units in the last place: half a unit of the last product, a whole one of each of
    /// the two before, and the inverse's. A relative error may weigh twice as many units in the result as where it
    /// arose. Found among 10^8: 2.8.
    static constexpr double kQuotientMaxUlp = 2.5 + 2.0 * Lanes::kMaxUlpOfInverse;
    /// Largest error of a logarithm, units in the last place: a quotient with one rounded sum, 5.3 units near 0 and
    /// where ln 2 is taken from it or added to it, and half a unit of the last sum. Found: 3.8; 1.6 beyond 2 in size.
    static constexpr double kLogMaxUlp = 6.0;
    /// Largest error of an argument, radians: 2.8e-16 of the folded tangent and its angle, 2.1e-16 of pi/4, pi/2 and pi
    /// as doubles, 3.9e-16 of the sums with them. Found: 5.2e-16.
    static constexpr double kArgumentMaxError = 8.9e-16;

    /// first.above / first.below and second.above / second.below. Range: below != 0, and the product of both of them
    /// neither overflows nor underflows.
    static Pair Quotients(const Fraction& first, const Fraction& second) noexcept {
        const Doubles inverse = Lanes::Inverse(first.below * second.below);
        return {first.above * (second.below * inverse), second.above * (first.below * inverse)};
    }

    /// Natural logarithms of above / below; exactly 0 for equal ones. Range: positive normal numbers; both ratios,
    /// eight times the product of both `below` and its inverse are normal too.
    static Pair Logs(const Fraction& first, const Fraction& second) noexcept {
        const ReducedRatio a = Reduced(first), b = Reduced(second);
        const Pair s = Quotients(a.fraction, b.fraction);
        return {LogOf(a.exponent, s.first), LogOf(b.exponent, s.second)};
    }

    /// Arguments of complex numbers, within [-pi, pi]. Range: finite, not 0, and the product of their sizes neither
    /// overflows nor underflows.
    static Pair Arguments(const Complex& first, const Complex& second) noexcept {
        const FoldedAngle a = Folded(first), b = Folded(second);
        const Pair t = Quotients(a.fraction, b.fraction);
        return {Unfolded(first, a, t.first), Unfolded(second, b, t.second)};
    }

    /// Argument of a complex number and logarithm of a ratio, in the ranges of both. Here the pair is of one point, so
    /// that its bits do not depend on a neighbour.
    static Pair ArgumentAndLog(const Complex& z, const Fraction& ratio) noexcept {
        const FoldedAngle a = Folded(z);
        const ReducedRatio b = Reduced(ratio);
        const Pair q = Quotients(a.fraction, b.fraction);
        return {Unfolded(z, a, q.first), LogOf(b.exponent, q.second)};
    }

    /// Sum of coefficients[n] x^n; even and odd powers apart: two chains of half the length keep both multipliers busy.
    template <std::size_t kTerms>
    static Doubles Polynomial(Doubles x, const double (&coefficients)[kTerms]) noexcept {
        constexpr std::size_t kLastEven = (kTerms - 1) / 2 * 2;
        constexpr std::size_t kLastOdd = kTerms / 2 * 2 - 1;
        const Doubles x2 = x * x;
        Doubles even = Lanes::All(coefficients[kLastEven]), odd = Lanes::All(coefficients[kLastOdd]);
        for (std::size_t n = kLastEven; n >= 2; n -= 2) {
            even = Lanes::Fma(even, x2, Lanes::All(coefficients[n - 2]));
        }
        for (std::size_t n = kLastOdd; n >= 3; n -= 2) {
            odd = Lanes::Fma(odd, x2, Lanes::All(coefficients[n - 2]));
        }
        return Lanes::Fma(odd, x, even);
    }

private:
    using Bits = typename Lanes::Bits;

    /// A ratio times 2^-exponent, near 1, as the argument s of ln = 2 artanh(s).
    struct ReducedRatio {
        Fraction fraction;
        Doubles exponent;
    };
    /// An angle within [-pi/8, pi/8] that an angle of the plane is folded to.
    struct FoldedAngle {
        Fraction fraction;  ///< its tangent
        Mask isSteep;       ///< folded at the diagonal |im| = |re|
        Mask isWide;        ///< and there again: pi/4 less
    };

    /// ln(n / d) = k ln 2 + 2 artanh((m - d) / (m + d)) with m = n 2^-k. The bits of a number, read as an integer, are
    /// its binary logarithm to within 0.0861 (scripts/polynomials.py); the difference of two, rounded to whole
    /// exponents, leaves m / d between 2^-0.59 and 2^0.59: m - d is exact.
    static ReducedRatio Reduced(const Fraction& ratio) noexcept {
        constexpr int kMantissaBits = 52;
        constexpr std::uint64_t kOne = std::uint64_t{1} << kMantissaBits;
        constexpr std::uint64_t kBias = 1024;          // more than any exponent is below 0: the shift is of unsigned
        constexpr double kMagic = 4503599627370496.0;  // 2^52: its last bits are an integer
        constexpr std::uint64_t kMagicBits = 0x4330000000000000;
        const Bits n = Lanes::ToBits(ratio.above);
        const Bits d = Lanes::ToBits(ratio.below);
        const Bits shift = (n - d + Lanes::AllBits(kOne / 2)) & Lanes::AllBits(~(kOne - 1));
        const Bits biased = (shift + Lanes::AllBits(kBias * kOne)) >> kMantissaBits;
        const Doubles m = Lanes::FromBits(n - shift);
        return {{m - ratio.below, m + ratio.below},
                Lanes::FromBits(biased | Lanes::AllBits(kMagicBits)) - Lanes::All(kMagic + static_cast<double>(kBias))};
    }

    static Doubles LogOf(Doubles exponent, Doubles s) noexcept {
        // (2 artanh(s) / s - 2) / s^2 as a polynomial of s^2, at the Chebyshev points of 0 to 0.0401: scripts/
        // polynomials.py makes it. Up to the largest s^2, 0.04015, it adds 3.4e-19 to the logarithm's error, where the
        // best polynomial of its length with exact coefficients would add 3e-20: both are lost in one
        // rounding, 2.8e-17.
        constexpr double kArtanh[] = {0.6666666666666666,  0.4000000000000794,  0.28571428567275936,
                                      0.2222222304835159,  0.18181737626302938, 0.15388867805613718,
                                      0.13209708242059462, 0.13609030262858499};
        constexpr double kLn2 = 0.6931471805599453;
        const Doubles w = s * s;
        return Lanes::Fma(exponent, Lanes::All(kLn2), Lanes::Fma(s * w, Polynomial(w, kArtanh), s + s));
    }

    static FoldedAngle Folded(const Complex& z) noexcept {
        constexpr double kTangentOfEighth = 0.41421356237309503;  // tan(pi/8): both folds then leave up to pi/8
        const Doubles along = Lanes::Abs(z.re), across = Lanes::Abs(z.im);
        const Doubles larger = Lanes::Max(along, across), smaller = Lanes::Min(along, across);
        const Mask isWide = Lanes::Less(larger * Lanes::All(kTangentOfEighth), smaller);
        return {{Lanes::Select(isWide, smaller - larger, smaller), Lanes::Select(isWide, smaller + larger, larger)},
                Lanes::Less(along, across),
                isWide};
    }

    static Doubles Unfolded(const Complex& z, const FoldedAngle& folded, Doubles t) noexcept {
        // (arctan(t) / t - 1) / t^2 as a polynomial of t^2, at the Chebyshev points of 0 to tan^2(pi/8): scripts/
        // polynomials.py makes it. It adds 2.8e-18 to the angle's error, where the best one with exact coefficients
        // would add 2.7e-19: both are lost in one rounding, 2.8e-17.
        constexpr double kArctan[] = {-0.3333333333333333,  0.1999999999999552,   -0.14285714284666542,
                                      0.11111111015256361,  -0.09090904578123903, 0.07692183190826087,
                                      -0.06664511447381948, 0.0585814891280221,   -0.0508544973794026,
                                      0.03923165829558719,  -0.01917688711906226};
        constexpr double kPi = 3.141592653589793;
        const Doubles w = t * t;
        Doubles angle = Lanes::Fma(t * w, Polynomial(w, kArctan), t);
        angle = Lanes::Select(folded.isWide, angle + Lanes::All(kPi / 4.0), angle);
        angle = Lanes::Select(folded.isSteep, Lanes::All(kPi / 2.0) - angle, angle);
        angle = Lanes::Select(Lanes::Less(z.re, Lanes::All(0.0)), Lanes::All(kPi) - angle, angle);
        return Lanes::CopySign(angle, z.im);
    }
};

}  // namespace tidora
