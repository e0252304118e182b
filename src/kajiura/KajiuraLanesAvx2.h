// Vectors of floats, and of eight doubles, on AVX2. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

using Floats = __m256;
constexpr int kFloats = 8;

Floats AllOf(float value) {
    return _mm256_set1_ps(value);
}
Floats LoadFloats(const float* from) {
    return _mm256_loadu_ps(from);
}
void StoreFloats(float* to, Floats values) {
    _mm256_storeu_ps(to, values);
}
Floats Times(Floats a, Floats b) {
    return _mm256_mul_ps(a, b);
}
Floats Plus(Floats a, Floats b) {
    return _mm256_add_ps(a, b);
}
Floats Over(Floats a, Floats b) {
    return _mm256_div_ps(a, b);
}
Floats Root(Floats x) {
    return _mm256_sqrt_ps(x);
}

Floats GatheredFloats(const float* from, __m256i index) {
    return _mm256_i32gather_ps(from, index, sizeof(float));
}
/// The last value first.
Floats Reversed(Floats values) {
    return _mm256_permutevar8x32_ps(values, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}

using Integers = __m256i;

// NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast)
Integers LoadIntegers(const int* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
Integers LoadIntegers(const std::int16_t* from) {
    return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}
// NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)

Integers Minus(Integers a, int b) {
    return _mm256_sub_epi32(a, _mm256_set1_epi32(b));
}
Integers NotNegative(Integers values) {
    return _mm256_max_epi32(values, _mm256_setzero_si256());
}
Integers Or(Integers a, Integers b) {
    return _mm256_or_si256(a, b);
}
void StoreIntegers(int* to, Integers values) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), values);
}
/// Taken as unsigned: negative values are the greatest.
int LeastOf(Integers values) {
    const __m128i four = _mm_min_epu32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    const __m128i two = _mm_min_epu32(four, _mm_shuffle_epi32(four, 0x4E));
    return _mm_cvtsi128_si32(_mm_min_epu32(two, _mm_shuffle_epi32(two, 0xB1)));
}
int GreatestOf(Integers values) {
    const __m128i four = _mm_max_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    const __m128i two = _mm_max_epi32(four, _mm_shuffle_epi32(four, 0x4E));
    return _mm_cvtsi128_si32(_mm_max_epi32(two, _mm_shuffle_epi32(two, 0xB1)));
}
/// Of twice as many values, low and high, those that the index names.
Floats Picked(Floats low, Integers index, Floats high) {
    const __m256 isHigh = _mm256_castsi256_ps(_mm256_slli_epi32(index, 28));  // 8 and more: the sign
    return _mm256_blendv_ps(_mm256_permutevar8x32_ps(low, index), _mm256_permutevar8x32_ps(high, index), isHigh);
}

/// Stores all values but the first `count`.
void StoreBehind(int count, float* to, __m256 values) {
    const __m256i position = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    _mm256_maskstore_ps(to, _mm256_cmpgt_epi32(position, _mm256_set1_epi32(count - 1)), values);
}

/// Four values each from `from` and from `stride` behind it.
Floats LoadQuarters(const float* from, std::ptrdiff_t stride) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from)), _mm_loadu_ps(from + stride), 1);
}
/// Within each four lanes the first two of a and those of b in turns; the last two.
Floats FirstPairs(Floats a, Floats b) {
    return _mm256_unpacklo_ps(a, b);
}
Floats LastPairs(Floats a, Floats b) {
    return _mm256_unpackhi_ps(a, b);
}
/// Within each four lanes the first two of a, then those of b; the last two.
Floats FirstHalves(Floats a, Floats b) {
    return _mm256_shuffle_ps(a, b, 0x44);
}
Floats LastHalves(Floats a, Floats b) {
    return _mm256_shuffle_ps(a, b, 0xEE);
}

struct Doubles {
    __m256d low, high;
};

Doubles AllOf(double value) {
    return {_mm256_set1_pd(value), _mm256_set1_pd(value)};
}
Doubles LoadDoubles(const double* from) {
    return {_mm256_loadu_pd(from), _mm256_loadu_pd(from + 4)};
}
Doubles Times(Doubles a, Doubles b) {
    return {_mm256_mul_pd(a.low, b.low), _mm256_mul_pd(a.high, b.high)};
}
Doubles Plus(Doubles a, Doubles b) {
    return {_mm256_add_pd(a.low, b.low), _mm256_add_pd(a.high, b.high)};
}
/// Eight floats.
Doubles LoadWidened(const float* from) {
    return {_mm256_cvtps_pd(_mm_loadu_ps(from)), _mm256_cvtps_pd(_mm_loadu_ps(from + 4))};
}
__m256 Rounded(Doubles values) {
    return _mm256_set_m128(_mm256_cvtpd_ps(values.high), _mm256_cvtpd_ps(values.low));
}

// NOLINTEND(misc-definitions-in-headers)
