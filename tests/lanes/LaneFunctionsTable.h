#pragma once

// The table of LaneFunctions.h for one lane type. Included by the sources that are compiled for one instruction set
// each; as in a kernel, no function here may be shared with code that runs on any machine.

#include "lanes/LaneFunctions.h"
#include "simd/LaneMath.h"

template <typename Lanes>
struct LaneArrays {
    using Math = tidora::LaneMath<Lanes>;
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    static constexpr std::size_t kStep = Lanes::kDoubles;

    template <Doubles (*kFunction)(Doubles)>
    static void Unary(const double* x, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, kFunction(Lanes::Load(x + i)));
        }
    }
    template <Doubles (*kFunction)(Doubles, Doubles)>
    static void Binary(const double* a, const double* b, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, kFunction(Lanes::Load(a + i), Lanes::Load(b + i)));
        }
    }
    template <Doubles (*kFunction)(Doubles, Doubles, Doubles)>
    static void Ternary(const double* a, const double* b, const double* c, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, kFunction(Lanes::Load(a + i), Lanes::Load(b + i), Lanes::Load(c + i)));
        }
    }
    template <Mask (*kFunction)(Doubles, Doubles)>
    static void Comparison(const double* a, const double* b, std::size_t count, unsigned* bits) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            bits[i / kStep] = Lanes::BitsOf(kFunction(Lanes::Load(a + i), Lanes::Load(b + i)));
        }
    }
    template <Mask (*kFunction)(Mask, Mask)>
    static void MaskOperation(const double* a, const double* b, const double* c, const double* d, std::size_t count,
                              unsigned* bits) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            bits[i / kStep] = Lanes::BitsOf(kFunction(Lanes::Less(Lanes::Load(a + i), Lanes::Load(b + i)),
                                                      Lanes::Less(Lanes::Load(c + i), Lanes::Load(d + i))));
        }
    }
    template <typename Number, typename Math::Pair (*kFunction)(const Number&, const Number&)>
    static void Pairwise(const double* const (&parts)[4], std::size_t count, double* first, double* second) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            const Number a = {Lanes::Load(parts[0] + i), Lanes::Load(parts[1] + i)};
            const Number b = {Lanes::Load(parts[2] + i), Lanes::Load(parts[3] + i)};
            const auto pair = kFunction(a, b);
            Lanes::Store(first + i, pair.first);
            Lanes::Store(second + i, pair.second);
        }
    }

    static void All(const double* x, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, Lanes::All(x[i]));
        }
    }
    static void Select(const double* a, const double* b, const double* yes, const double* no, std::size_t count,
                       double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            const Mask isLess = Lanes::Less(Lanes::Load(a + i), Lanes::Load(b + i));
            Lanes::Store(y + i, Lanes::Select(isLess, Lanes::Load(yes + i), Lanes::Load(no + i)));
        }
    }
    static void Bits(const double* x, std::uint64_t flipped, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, Lanes::FromBits(Lanes::ToBits(Lanes::Load(x + i)) ^ Lanes::AllBits(flipped)));
        }
    }
    static void LoadWidened(const float* from, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, Lanes::LoadWidened(from + i));
        }
    }
    static void LoadDifference(const float* from, float minus, std::size_t count, double* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::Store(y + i, Lanes::LoadDifference(from + i, minus));
        }
    }
    static void StoreRounded(const double* x, std::size_t count, float* y) noexcept {
        for (std::size_t i = 0; i < count; i += kStep) {
            Lanes::StoreRounded(y + i, Lanes::Load(x + i));
        }
    }

    // The operators of the compiler's own vectors.
    static Doubles Sum(Doubles a, Doubles b) noexcept { return a + b; }
    static Doubles Difference(Doubles a, Doubles b) noexcept { return a - b; }
    static Doubles Product(Doubles a, Doubles b) noexcept { return a * b; }
    static Doubles Quotient(Doubles a, Doubles b) noexcept { return a / b; }
    static Doubles Negative(Doubles x) noexcept { return -x; }
    static Mask FirstOnly(Mask a, Mask b) noexcept { return Lanes::And(a, Lanes::Not(b)); }
    static Mask Both(Mask a, Mask b) noexcept { return Lanes::And(a, b); }
    static Mask Either(Mask a, Mask b) noexcept { return Lanes::Or(a, b); }
};

template <typename Lanes>
constexpr LaneFunctions MakeLaneFunctions() noexcept {
    using A = LaneArrays<Lanes>;
    using Math = tidora::LaneMath<Lanes>;
    using Fraction = typename Math::Fraction;
    LaneFunctions f = {};
    f.doubles = Lanes::kDoubles;
    f.maxUlpOfInverse = Lanes::kMaxUlpOfInverse;
    f.maxUlpOfRoot = Lanes::kMaxUlpOfRoot;
    f.quotientMaxUlp = Math::kQuotientMaxUlp;
    f.logMaxUlp = Math::kLogMaxUlp;
    f.argumentMaxError = Math::kArgumentMaxError;
    f.inverse = &A::template Unary<&Lanes::Inverse>;
    f.root = &A::template Unary<&Lanes::Root>;
    f.sqrt = &A::template Unary<&Lanes::Sqrt>;
    f.abs = &A::template Unary<&Lanes::Abs>;
    f.all = &A::All;
    f.negative = &A::template Unary<&A::Negative>;
    f.add = &A::template Binary<&A::Sum>;
    f.subtract = &A::template Binary<&A::Difference>;
    f.multiply = &A::template Binary<&A::Product>;
    f.divide = &A::template Binary<&A::Quotient>;
    f.min = &A::template Binary<&Lanes::Min>;
    f.max = &A::template Binary<&Lanes::Max>;
    f.copySign = &A::template Binary<&Lanes::CopySign>;
    f.fma = &A::template Ternary<&Lanes::Fma>;
    f.fnma = &A::template Ternary<&Lanes::Fnma>;
    f.less = &A::template Comparison<&Lanes::Less>;
    f.atLeast = &A::template Comparison<&Lanes::AtLeast>;
    f.both = &A::template MaskOperation<&A::Both>;
    f.either = &A::template MaskOperation<&A::Either>;
    f.firstOnly = &A::template MaskOperation<&A::FirstOnly>;
    f.select = &A::Select;
    f.bits = &A::Bits;
    f.loadWidened = &A::LoadWidened;
    f.loadDifference = &A::LoadDifference;
    f.storeRounded = &A::StoreRounded;
    f.quotients = &A::template Pairwise<Fraction, &Math::Quotients>;
    f.logs = &A::template Pairwise<Fraction, &Math::Logs>;
    f.arguments = &A::template Pairwise<typename Math::Complex, &Math::Arguments>;
    return f;
}

template <typename Lanes>
struct FloatLaneArrays {
    using Floats = typename Lanes::Floats;

    template <Floats (*kFunction)(Floats)>
    static void Unary(const float* x, float* y) noexcept {
        Lanes::StoreFloats(y, kFunction(Lanes::LoadFloats(x)));
    }
    template <Floats (*kFunction)(Floats, Floats)>
    static void Binary(const float* a, const float* b, float* y) noexcept {
        Lanes::StoreFloats(y, kFunction(Lanes::LoadFloats(a), Lanes::LoadFloats(b)));
    }
    static Floats Same(Floats x) noexcept { return x; }
    static void All(const float* x, float* y) noexcept { Lanes::StoreFloats(y, Lanes::AllFloats(x[0])); }
    static void LoadQuarters(const float* from, std::ptrdiff_t stride, float* y) noexcept {
        Lanes::StoreFloats(y, Lanes::LoadQuarters(from, stride));
    }
    static void CopyIntegers(const int* from, int* to) noexcept { Lanes::StoreIntegers(to, Lanes::LoadIntegers(from)); }
    static void WidenIntegers(const std::int16_t* from, int* to) noexcept {
        Lanes::StoreIntegers(to, Lanes::LoadIntegers(from));
    }
    static void Minus(const int* a, int b, int* to) noexcept {
        Lanes::StoreIntegers(to, Lanes::Minus(Lanes::LoadIntegers(a), b));
    }
    static void NotNegative(const int* a, int* to) noexcept {
        Lanes::StoreIntegers(to, Lanes::NotNegative(Lanes::LoadIntegers(a)));
    }
    static void BitwiseOr(const int* a, const int* b, int* to) noexcept {
        Lanes::StoreIntegers(to, Lanes::Or(Lanes::LoadIntegers(a), Lanes::LoadIntegers(b)));
    }
    static int LeastOf(const int* a) noexcept { return Lanes::LeastOf(Lanes::LoadIntegers(a)); }
    static int GreatestOf(const int* a) noexcept { return Lanes::GreatestOf(Lanes::LoadIntegers(a)); }
    static void Gathered(const float* from, const int* index, float* y) noexcept {
        Lanes::StoreFloats(y, Lanes::Gathered(from, Lanes::LoadIntegers(index)));
    }
    static void Picked(const float* low, const int* index, const float* high, float* y) noexcept {
        Lanes::StoreFloats(y,
                           Lanes::Picked(Lanes::LoadFloats(low), Lanes::LoadIntegers(index), Lanes::LoadFloats(high)));
    }
};

template <typename Lanes>
constexpr FloatLaneFunctions MakeFloatLaneFunctions() noexcept {
    using A = FloatLaneArrays<Lanes>;
    FloatLaneFunctions f = {};
    f.floats = Lanes::kFloats;
    f.copy = &A::template Unary<&A::Same>;
    f.sqrt = &A::template Unary<&Lanes::SqrtFloats>;
    f.all = &A::All;
    f.reversed = &A::template Unary<&Lanes::Reversed>;
    f.firstPairs = &A::template Binary<&Lanes::FirstPairs>;
    f.lastPairs = &A::template Binary<&Lanes::LastPairs>;
    f.firstHalves = &A::template Binary<&Lanes::FirstHalves>;
    f.lastHalves = &A::template Binary<&Lanes::LastHalves>;
    f.loadQuarters = &A::LoadQuarters;
    f.copyIntegers = &A::CopyIntegers;
    f.widenIntegers = &A::WidenIntegers;
    f.minus = &A::Minus;
    f.notNegative = &A::NotNegative;
    f.bitwiseOr = &A::BitwiseOr;
    f.leastOf = &A::LeastOf;
    f.greatestOf = &A::GreatestOf;
    f.gathered = &A::Gathered;
    f.picked = &A::Picked;
    return f;
}

template <typename Lanes>
struct EightFloatArrays {
    static void Zero(float* y) noexcept { Lanes::StoreFloats8(y, Lanes::ZeroFloats8()); }
    static void Copy(const float* x, float* y) noexcept { Lanes::StoreFloats8(y, Lanes::LoadFloats8(x)); }
    static void StoreFrom(int count, float* to, const float* x) noexcept {
        Lanes::StoreFloats8From(count, to, Lanes::LoadFloats8(x));
    }
    static void SelectNotNegative(const int* integers, const float* yes, const float* no, float* y) noexcept {
        Lanes::StoreFloats8(y, Lanes::SelectNotNegative8(integers, Lanes::LoadFloats8(yes), Lanes::LoadFloats8(no)));
    }
    static void ScaledSum(double scale, const double* wide, const float* narrow, float* y) noexcept {
        Lanes::StoreFloats8(y, Lanes::Rounded8(Lanes::All8(scale) * Lanes::Load8(wide) + Lanes::LoadWidened8(narrow)));
    }
};

template <typename Lanes>
constexpr EightFloatFunctions MakeEightFloatFunctions() noexcept {
    using A = EightFloatArrays<Lanes>;
    return {&A::Zero, &A::Copy, &A::StoreFrom, &A::SelectNotNegative, &A::ScaledSum};
}
