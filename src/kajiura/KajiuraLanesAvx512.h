// Vectors of floats, and of eight doubles, on AVX-512. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

using Floats = __m512;
constexpr int kFloats = 16;

Floats AllOf(float value) {
    return _mm512_set1_ps(value);
}
Floats LoadFloats(const float* from) {
    return _mm512_loadu_ps(from);
}
void StoreFloats(float* to, Floats values) {
    _mm512_storeu_ps(to, values);
}
Floats Times(Floats a, Floats b) {
    return _mm512_mul_ps(a, b);
}
Floats Plus(Floats a, Floats b) {
    return _mm512_add_ps(a, b);
}
Floats Over(Floats a, Floats b) {
    return _mm512_div_ps(a, b);
}
Floats Root(Floats x) {
    return _mm512_sqrt_ps(x);
}

Floats GatheredFloats(const float* from, __m512i index) {
    return _mm512_i32gather_ps(index, from, sizeof(float));
}
/// The last value first.
Floats Reversed(Floats values) {
    return _mm512_permutexvar_ps(_mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0), values);
}

using Integers = __m512i;

// NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast)
Integers LoadIntegers(const int* from) {
    return _mm512_loadu_si512(from);
}
Integers LoadIntegers(const std::int16_t* from) {
    return _mm512_cvtepi16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
}
// NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)

Integers Minus(Integers a, int b) {
    return _mm512_sub_epi32(a, _mm512_set1_epi32(b));
}
Integers NotNegative(Integers values) {
    return _mm512_max_epi32(values, _mm512_setzero_si512());
}
Integers Or(Integers a, Integers b) {
    return _mm512_or_si512(a, b);
}
void StoreIntegers(int* to, Integers values) {
    _mm512_storeu_si512(to, values);
}
/// Taken as unsigned: negative values are the greatest.
int LeastOf(Integers values) {
    return static_cast<int>(_mm512_reduce_min_epu32(values));
}
int GreatestOf(Integers values) {
    return _mm512_reduce_max_epi32(values);
}
/// Of twice as many values, low and high, those that the index names.
Floats Picked(Floats low, Integers index, Floats high) {
    return _mm512_permutex2var_ps(low, index, high);
}

/// Stores all values but the first `count`.
void StoreBehind(int count, float* to, __m256 values) {
    _mm256_mask_storeu_ps(to, static_cast<__mmask8>(0xFFU << count), values);
}

/// Four values each from `from` and from `stride`, twice and three times `stride` behind it.
Floats LoadQuarters(const float* from, std::ptrdiff_t stride) {
    Floats values = _mm512_castps128_ps512(_mm_loadu_ps(from));
    values = _mm512_insertf32x4(values, _mm_loadu_ps(from + stride), 1);
    values = _mm512_insertf32x4(values, _mm_loadu_ps(from + 2 * stride), 2);
    return _mm512_insertf32x4(values, _mm_loadu_ps(from + 3 * stride), 3);
}
/// Within each four lanes the first two of a and those of b in turns; the last two.
Floats FirstPairs(Floats a, Floats b) {
    return _mm512_unpacklo_ps(a, b);
}
Floats LastPairs(Floats a, Floats b) {
    return _mm512_unpackhi_ps(a, b);
}
/// Within each four lanes the first two of a, then those of b; the last two.
Floats FirstHalves(Floats a, Floats b) {
    return _mm512_shuffle_ps(a, b, 0x44);
}
Floats LastHalves(Floats a, Floats b) {
    return _mm512_shuffle_ps(a, b, 0xEE);
}

using Doubles = __m512d;

Doubles AllOf(double value) {
    return _mm512_set1_pd(value);
}
Doubles LoadDoubles(const double* from) {
    return _mm512_loadu_pd(from);
}
Doubles Times(Doubles a, Doubles b) {
    return _mm512_mul_pd(a, b);
}
Doubles Plus(Doubles a, Doubles b) {
    return _mm512_add_pd(a, b);
}
/// Eight floats.
Doubles LoadWidened(const float* from) {
    return _mm512_cvtps_pd(_mm256_loadu_ps(from));
}
__m256 Rounded(Doubles values) {
    return _mm512_cvtpd_ps(values);
}
// NOLINTEND(misc-definitions-in-headers)
