// Vectors of floats, and of eight doubles, on AVX-512. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

using Floats = __m512;
constexpr int kFloats = 16;
constexpr int kInverseSteps = 2;  ///< from an estimate of 14 bits

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
Floats PlusProduct(Floats sum, Floats a, Floats b) {
    return _mm512_fmadd_ps(a, b, sum);
}
Floats MinusProduct(Floats sum, Floats a, Floats b) {
    return _mm512_fnmadd_ps(a, b, sum);
}
Floats Root(Floats x) {
    return _mm512_sqrt_ps(x);
}
Floats EstimatedInverse(Floats b) {
    return _mm512_rcp14_ps(b);
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
Doubles Widened(__m256 values) {
    return _mm512_cvtps_pd(values);
}
__m256 Rounded(Doubles values) {
    return _mm512_cvtpd_ps(values);
}

/// Of sixteen values, low and high, those that the index names.
__m256 Picked(__m256 low, __m256i index, __m256 high) {
    return _mm256_permutex2var_ps(low, index, high);
}
// NOLINTEND(misc-definitions-in-headers)
