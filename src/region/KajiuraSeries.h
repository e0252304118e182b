// The filter's kernel by radius. Included by the kernel of the filter, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

#ifdef __AVX2__

/// The nearest number to 1 / b for b within the normal range (or its neighbour, where the digits of b are all ones): an
/// estimate, and Newton's steps until the last one starts within a unit in the last place.
Floats InverseOf(Floats b) {
    Floats y = EstimatedInverse(b);
    for (int step = 0; step < kInverseSteps; ++step) {
        y = PlusProduct(y, MinusProduct(AllOf(1.0F), b, y), y);
    }
    return y;
}

/// a / b, rounded as a division is, for the later terms of the series and b within the normal range, in half the time
/// of one: a quotient within a unit in the last place, plus its exact remainder times the nearest inverse (Markstein
/// 1990, IBM J. Res. Dev. 34, 111-119). True of all digits that b can have, but for a = 1 and digits that are all ones.
Floats Quotient(Floats a, Floats b) {
    const Floats inverse = InverseOf(b);
    const Floats quotient = Times(a, inverse);
    return PlusProduct(quotient, MinusProduct(a, b, quotient), inverse);
}

/// kernel[k] = sum over n of c[n] / (x sqrt(x)), x = (c[n] d)^2 + s^2 q[k], m^-3; q: squared radii in steps s.
void FillKernel(float depth, float step, float* kernel) {
    // Within these depths, m, nothing comes near the ends of the range.
    const bool isOrdinary = depth > 1.0F && depth < 1.0e6F;
    const Floats step2 = AllOf(step * step);
    for (int k = 0; k < kLattice.radiusCount; k += kFloats) {
        const Floats radius2 = Times(step2, LoadFloats(kLattice.squaredRadii + k));
        Floats sum = AllOf(0.0F);
        for (const float c : kSeries) {
            const Floats x = Plus(AllOf((c * depth) * (c * depth)), radius2);
            const Floats below = Times(x, Root(x));
            const bool isFirst = c == kSeries[0];
            sum = Plus(sum, isOrdinary && !isFirst ? Quotient(AllOf(c), below) : Over(AllOf(c), below));
        }
        StoreFloats(kernel + k, sum);
    }
}

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
