// The filter's kernel by radius. Included by the kernel of the filter, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

#ifdef __AVX2__

/// The kernel by radius, values[k] = sum over n of c[n] / (x sqrt(x)), x = (c[n] d)^2 + s^2 q[k], m^-3; q: squared
/// radii in steps s. It is made a slice at a time: the processor is long with roots and divisions, but its other units
/// are free meanwhile for what stands between the slices.
class KernelByRadius {
public:
    void Start(float depth, float step) {
        for (int n = 0; n < kKernelTerms; ++n) {
            m_squares[n] = (kSeries[n] * depth) * (kSeries[n] * depth);
        }
#pragma GCC unroll 20
        for (int k = 0; k < kRadii; k += kFloats) {
            StoreFloats(m_radius2 + k, Times(AllOf(step * step), LoadFloats(kLattice.squaredRadii + k)));
            StoreFloats(m_values + k, AllOf(0.0F));
        }
        m_next = 0;
    }
    /// Makes the next slice, if there is one left.
    void Advance() {
        if (m_next == kSlices) {
            return;
        }
        const unsigned n = m_next / kSlicesOfTerm;
        const unsigned slice = m_next % kSlicesOfTerm;
        const std::ptrdiff_t from = std::ptrdiff_t{slice} * kSliceWidth;
        float* const values = m_values + from;
        const float* const radius2 = m_radius2 + from;
        const Floats first = AllOf(m_squares[n]);
        const Floats c = AllOf(kSeries[n]);
#pragma GCC unroll 10
        for (int k = 0; k < kSliceWidth; k += kFloats) {
            if (k >= kLastSliceWidth && slice == kSlicesOfTerm - 1) {
                break;
            }
            const Floats x = Plus(first, LoadFloats(radius2 + k));
            StoreFloats(values + k, Plus(LoadFloats(values + k), Over(c, Times(x, Root(x)))));
        }
        ++m_next;
    }
    void Finish() {
        while (m_next != kSlices) {
            Advance();
        }
    }
    [[nodiscard]] const float* Values() const {
        return m_values;
    }

private:
    static constexpr unsigned kSlicesOfTerm = 3;
    static constexpr unsigned kSlices = kKernelTerms * kSlicesOfTerm;
    static constexpr int kVectors = (kLattice.radiusCount + kFloats - 1) / kFloats;
    static constexpr int kRadii = kVectors * kFloats;
    static constexpr int kSliceWidth = (kVectors + int{kSlicesOfTerm} - 1) / int{kSlicesOfTerm} * kFloats;
    static constexpr int kLastSliceWidth = kRadii - (int{kSlicesOfTerm} - 1) * kSliceWidth;

    alignas(64) float m_values[kRadii];
    alignas(64) float m_radius2[kRadii];  ///< s^2 q
    float m_squares[kKernelTerms];        ///< (c[n] d)^2
    unsigned m_next = kSlices;
};

#else

/// kernel[k] = sum over n of c[n] / (x sqrt(x)), x = (c[n] d)^2 + s^2 q[k], m^-3; q: squared radii in steps s.
void FillKernel(float depth, float step, float* kernel) {
    const int count = kLattice.radiusCount;
    for (int k = 0; k < count; ++k) {
        kernel[k] = 0.0F;
    }
    for (const float c : kSeries) {
        const float a = (c * depth) * (c * depth);
        for (int k = 0; k < count; ++k) {
            const float x = a + (step * step) * kLattice.squaredRadii[k];
            kernel[k] += c / (x * __builtin_sqrtf(x));
        }
    }
}

#endif
// NOLINTEND(misc-definitions-in-headers)
