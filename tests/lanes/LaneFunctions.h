#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/Dispatch.h"

/// The vocabulary of a lane type as functions of arrays, for tests that are compiled for any machine. `count` values,
/// a multiple of 16; one value of `Bits` per step of a lane type, its lanes lowest first.
struct LaneFunctions {
    using Unary = void (*)(const double* x, std::size_t count, double* y);
    using Binary = void (*)(const double* a, const double* b, std::size_t count, double* y);
    using Ternary = void (*)(const double* a, const double* b, const double* c, std::size_t count, double* y);
    using Comparison = void (*)(const double* a, const double* b, std::size_t count, unsigned* bits);
    /// Of a < b and c < d.
    using MaskOperation = void (*)(const double* a, const double* b, const double* c, const double* d,
                                   std::size_t count, unsigned* bits);
    /// Two results from two numbers of two parts each, given as four arrays.
    using Pairwise = void (*)(const double* const (&parts)[4], std::size_t count, double* first, double* second);

    // The cards.
    std::size_t doubles;
    double maxUlpOfInverse, maxUlpOfRoot, quotientMaxUlp, logMaxUlp, argumentMaxError;

    Unary inverse, root, sqrt, abs, all;  ///< all: every lane of a step the first value of the step
    Binary add, subtract, multiply, divide, min, max, copySign;
    Ternary fma, fnma;
    Unary negative;
    Comparison less, atLeast;
    MaskOperation both, either, firstOnly;  ///< And, Or, And with Not
    void (*select)(const double* a, const double* b, const double* yes, const double* no, std::size_t count, double* y);
    void (*bits)(const double* x, std::uint64_t flipped, std::size_t count, double* y);  ///< ToBits, ^, FromBits
    void (*loadWidened)(const float* from, std::size_t count, double* y);
    void (*loadDifference)(const float* from, float minus, std::size_t count, double* y);
    void (*storeRounded)(const double* x, std::size_t count, float* y);

    Pairwise quotients, logs, arguments;
};

/// The same of a step of floats and of as many integers.
struct FloatLaneFunctions {
    using Unary = void (*)(const float* x, float* y);
    using Binary = void (*)(const float* a, const float* b, float* y);

    std::size_t floats;
    Unary copy, sqrt, all, reversed;  ///< all: the first value
    Binary firstPairs, lastPairs, firstHalves, lastHalves;
    void (*loadQuarters)(const float* from, std::ptrdiff_t stride, float* y);
    void (*copyIntegers)(const int* from, int* to);
    void (*widenIntegers)(const std::int16_t* from, int* to);
    void (*minus)(const int* a, int b, int* to);
    void (*notNegative)(const int* a, int* to);
    void (*bitwiseOr)(const int* a, const int* b, int* to);
    int (*leastOf)(const int* a);
    int (*greatestOf)(const int* a);
    void (*gathered)(const float* from, const int* index, float* y);
    void (*picked)(const float* low, const int* index, const float* high, float* y);
};

/// The same of eight floats.
struct EightFloatFunctions {
    void (*zero)(float* y);
    void (*copy)(const float* x, float* y);
    void (*storeFrom)(int count, float* to, const float* x);
    void (*selectNotNegative)(const int* integers, const float* yes, const float* no, float* y);
    /// The nearest floats to scale * wide + narrow, formed in double.
    void (*scaledSum)(double scale, const double* wide, const float* narrow, float* y);
};

/// The tables of each lane type; see simd/Dispatch.h.
template <typename Lanes>
struct LaneFunctionsOf {
    static const LaneFunctions kTable;
    static const FloatLaneFunctions kFloatTable;
    static const EightFloatFunctions kEightTable;
};
template <>
const LaneFunctions LaneFunctionsOf<tidora::PlainLanes>::kTable;
template <>
const FloatLaneFunctions LaneFunctionsOf<tidora::PlainLanes>::kFloatTable;
template <>
const EightFloatFunctions LaneFunctionsOf<tidora::PlainLanes>::kEightTable;
template <>
const LaneFunctions LaneFunctionsOf<tidora::Avx2Lanes>::kTable;
template <>
const FloatLaneFunctions LaneFunctionsOf<tidora::Avx2Lanes>::kFloatTable;
template <>
const EightFloatFunctions LaneFunctionsOf<tidora::Avx2Lanes>::kEightTable;
template <>
const LaneFunctions LaneFunctionsOf<tidora::Avx512Lanes>::kTable;
template <>
const FloatLaneFunctions LaneFunctionsOf<tidora::Avx512Lanes>::kFloatTable;
template <>
const EightFloatFunctions LaneFunctionsOf<tidora::Avx512Lanes>::kEightTable;

/// The table of the instruction set in use.
template <typename Lanes>
struct FloatLaneFunctionsOf {
    static constexpr const FloatLaneFunctions& kTable = LaneFunctionsOf<Lanes>::kFloatTable;
};
template <typename Lanes>
struct EightFloatFunctionsOf {
    static constexpr const EightFloatFunctions& kTable = LaneFunctionsOf<Lanes>::kEightTable;
};
