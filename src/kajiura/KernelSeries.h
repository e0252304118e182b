#pragma once

#include <cstddef>

#include "kajiura/Disc.h"
#include "kajiura/Lattice.h"

namespace tidora {

inline constexpr int kKernelTerms = 11;

/// The kernel of one point at the distinct distances of its lattice, m^-3:
///     values[k] = sum over n = 0..10 of c[n] / (x sqrt(x)),  x = (c[n] d)^2 + s^2 q[k],  c[n] = (-1)^n (2n + 1)
/// d: depth of the point, s: step of the lattice, m; q: squared radii in steps. Kajiura (1963), Bull. Earthq. Res.
/// Inst. 41, 535-571, cut after 11 terms.
///
/// Single precision; the same bits with every lane type: the terms are added in their order, roots and quotients are
/// rounded correctly and not replaced by estimates. Any alignment.
///
/// It is made a slice at a time. Roots and quotients occupy one unit of the processor while the others are free, so the
/// slices of the next point are put between the columns of the current one.
template <typename Lanes>
class KernelByRadius {
public:
    void Start(const Disc& disc) noexcept {
        for (int n = 0; n < kKernelTerms; ++n) {
            m_squares[n] = (kSeries[n] * disc.depth) * (kSeries[n] * disc.depth);
        }
        const Floats step2 = Lanes::AllFloats(disc.step * disc.step);
#pragma GCC unroll 20
        for (int k = 0; k < kRadii; k += kFloats) {
            Lanes::StoreFloats(m_radius2 + k, step2 * Lanes::LoadFloats(kLattice.squaredRadii + k));
            Lanes::StoreFloats(m_values + k, Lanes::AllFloats(0.0F));
        }
        m_next = 0;
    }
    /// Makes the next slice, if there is one left.
    void Advance() noexcept {
        if (m_next == kSlices) {
            return;
        }
        const unsigned n = m_next / kSlicesOfTerm;
        const unsigned slice = m_next % kSlicesOfTerm;
        const std::ptrdiff_t from = std::ptrdiff_t{slice} * kSliceWidth;
        float* const values = m_values + from;
        const float* const radius2 = m_radius2 + from;
        const Floats square = Lanes::AllFloats(m_squares[n]);
        const Floats c = Lanes::AllFloats(kSeries[n]);
#pragma GCC unroll 10
        for (int k = 0; k < kSliceWidth; k += kFloats) {
            if (k >= kLastSliceWidth && slice == kSlicesOfTerm - 1) {
                break;
            }
            const Floats x = square + Lanes::LoadFloats(radius2 + k);
            Lanes::StoreFloats(values + k, Lanes::LoadFloats(values + k) + c / (x * Lanes::SqrtFloats(x)));
        }
        ++m_next;
    }
    void Finish() noexcept {
        while (m_next != kSlices) {
            Advance();
        }
    }
    [[nodiscard]] const float* Values() const noexcept {
        return m_values;
    }

private:
    using Floats = typename Lanes::Floats;
    static constexpr int kFloats = Lanes::kFloats;

    static constexpr float kSeries[kKernelTerms] = {1, -3, 5, -7, 9, -11, 13, -15, 17, -19, 21};  // (-1)^n (2n + 1)

    // A slice stands between two columns, of which a point has 39 beside its tips: eleven terms of three slices are 33.
    // Four would be 44, of which the last would stand alone.
    static constexpr unsigned kSlicesOfTerm = 3;
    static constexpr unsigned kSlices = kKernelTerms * kSlicesOfTerm;
    static constexpr int kVectors = (kLattice.radiusCount + kFloats - 1) / kFloats;
    static constexpr int kRadii = kVectors * kFloats;  ///< 146 and what fills the last vector
    static constexpr int kSliceWidth = (kVectors + int{kSlicesOfTerm} - 1) / int{kSlicesOfTerm} * kFloats;
    static constexpr int kLastSliceWidth = kRadii - (int{kSlicesOfTerm} - 1) * kSliceWidth;
    static_assert(kRadii <= kLatticeRadiusSquared + 1, "squaredRadii is read in whole vectors");

    alignas(64) float m_values[kRadii];
    alignas(64) float m_radius2[kRadii];  ///< s^2 q
    float m_squares[kKernelTerms];        ///< (c[n] d)^2
    unsigned m_next = kSlices;
};

/// The kernel of one point by |i| and lattice position, spread from its values by radius. Copies: any bits stay. Any
/// alignment.
template <typename Lanes>
class KernelColumns {
public:
    /// Fills the columns at |i| = distance: the half from the centre on, and its mirror image.
    void Spread(const float* kernel, int distance) noexcept {
        float* const centre = m_values + kFront + std::ptrdiff_t{distance} * kStride + kLatticeHalfWidth;
#pragma GCC unroll 3
        for (int j = 0; j <= kLatticeHalfWidth; j += kFloats) {
            if (j > 0 && j > kLattice.reach[distance]) {
                break;
            }
            const auto values = Lanes::Gathered(kernel, Lanes::LoadIntegers(kLattice.radiusIndex[distance] + j));
            Lanes::StoreFloats(centre + j, values);
            Lanes::StoreFloats(centre - j - (kFloats - 1), Lanes::Reversed(values));
        }
    }
    /// From position 0 on, for |i| = distance.
    [[nodiscard]] const float* Of(int distance) const noexcept {
        return m_values + kFront + std::ptrdiff_t{distance} * kStride;
    }

private:
    static constexpr int kFloats = Lanes::kFloats;
    // Whole vectors reach beyond a column's positions by less than a vector on either side, into room of its own.
    static constexpr int kFront = kWidestVector;
    static constexpr int kStride = 2 * kPaddedHalf;
    alignas(64) float m_values[kFront + (kLatticeHalfWidth + 1) * kStride] = {};
};

}  // namespace tidora
