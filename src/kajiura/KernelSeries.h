#pragma once

#include <cstddef>

#include "kajiura/Lattice.h"

namespace tidora {

/// The kernel of one point at the distinct distances of its lattice, m^-3:
///     values[k] = sum over n of c[n] / (x sqrt(x)),  x = (c[n] d)^2 + s^2 q[k],  c[n] = (-1)^n (2n + 1)
/// d: depth of the point, s: step of the lattice, m; q: squared radii in steps. Kajiura (1963), cut after 11 terms.
/// Single precision, the roots and quotients rounded correctly: the bits are those of the formula, term by term.
///
/// It is made a slice at a time: divisions and roots keep one unit of the processor busy for long while the others are
/// free, so the slices of the next point stand between the columns of the current one.
template <typename Lanes>
class KernelByRadius {
public:
    void Start(float depth, float step) {
        for (int n = 0; n < kKernelTerms; ++n) {
            m_squares[n] = (kSeries[n] * depth) * (kSeries[n] * depth);
        }
        const Floats step2 = Lanes::AllFloats(step * step);
#pragma GCC unroll 20
        for (int k = 0; k < kRadii; k += kFloats) {
            Lanes::StoreFloats(m_radius2 + k, step2 * Lanes::LoadFloats(kLattice.squaredRadii + k));
            Lanes::StoreFloats(m_values + k, Lanes::AllFloats(0.0F));
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
        const Floats first = Lanes::AllFloats(m_squares[n]);
        const Floats c = Lanes::AllFloats(kSeries[n]);
#pragma GCC unroll 10
        for (int k = 0; k < kSliceWidth; k += kFloats) {
            if (k >= kLastSliceWidth && slice == kSlicesOfTerm - 1) {
                break;
            }
            const Floats x = first + Lanes::LoadFloats(radius2 + k);
            Lanes::StoreFloats(values + k, Lanes::LoadFloats(values + k) + c / (x * Lanes::SqrtFloats(x)));
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
    using Floats = typename Lanes::Floats;
    static constexpr int kFloats = Lanes::kFloats;

    static constexpr float kSeries[kKernelTerms] = {1, -3, 5, -7, 9, -11, 13, -15, 17, -19, 21};  // (-1)^n (2n + 1)

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

/// The kernel of one point by |i| and lattice position j + 20, spread from its values by radius.
template <typename Lanes>
class KernelColumns {
public:
    void Spread(const float* kernel, int distance) {
        float* const centre = m_values + kFront + std::ptrdiff_t{distance} * kStride + kLatticeHalfWidth;
#pragma GCC unroll 3
        for (int j = 0; j <= kLatticeHalfWidth; j += kFloats) {
            if (j > 0 && j > kLattice.reach[distance]) {
                break;
            }
            const auto values = Lanes::Gathered(kernel, Lanes::LoadIntegers(kPaddedRadii.index[distance] + j));
            Lanes::StoreFloats(centre + j, values);
            Lanes::StoreFloats(centre - j - (kFloats - 1), Lanes::Reversed(values));
        }
    }
    /// From position 0 on, for |i| = distance.
    [[nodiscard]] const float* Of(int distance) const {
        return m_values + kFront + std::ptrdiff_t{distance} * kStride;
    }

private:
    static constexpr int kFloats = Lanes::kFloats;
    // What is stored before and after a column's positions is not used: it may reach into the next column's room.
    static constexpr int kFront = 16, kStride = 64;
    alignas(64) float m_values[kFront + (kLatticeHalfWidth + 1) * kStride] = {};
};

}  // namespace tidora
