// Vectors of floats, and of eight doubles, on AVX2. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

using Floats = __m256;
constexpr int kFloats = 8;
constexpr int kInverseSteps = 3;  ///< from an estimate of 11 bits

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
Floats PlusProduct(Floats sum, Floats a, Floats b) {
    return _mm256_fmadd_ps(a, b, sum);
}
Floats MinusProduct(Floats sum, Floats a, Floats b) {
    return _mm256_fnmadd_ps(a, b, sum);
}
Floats Root(Floats x) {
    return _mm256_sqrt_ps(x);
}
Floats EstimatedInverse(Floats b) {
    return _mm256_rcp_ps(b);
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
Doubles Widened(__m256 values) {
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(values)), _mm256_cvtps_pd(_mm256_extractf128_ps(values, 1))};
}
__m256 Rounded(Doubles values) {
    return _mm256_set_m128(_mm256_cvtpd_ps(values.high), _mm256_cvtpd_ps(values.low));
}

/// Of sixteen values, low and high, those that the index names.
__m256 Picked(__m256 low, __m256i index, __m256 high) {
    const __m256 isHigh = _mm256_castsi256_ps(_mm256_slli_epi32(index, 28));  // 8 and more: the sign
    return _mm256_blendv_ps(_mm256_permutevar8x32_ps(low, index), _mm256_permutevar8x32_ps(high, index), isHigh);
}
// NOLINTEND(misc-definitions-in-headers)
