#pragma once

// The first half of the finite source: what its four corners add up to before logarithms and arguments are taken.
// A template over the lane type, for sources that are compiled for one instruction set each. Every function is a member
// of it: none may be shared with code that runs on any machine, and none of the standard library is used.
//
//   paper            code                 meaning
//   xi, eta, q       xi[j], eta[k], q     co-ordinates of corner (j, k); j counts along strike, k up dip
//   R                R                    sqrt(xi^2 + eta^2 + q^2)
//   y~, d~           Y[k], D[k]           eta cos + q sin, eta sin - q cos
//   X11, Y11         x11, y11             1 / (R (R + xi)), 1 / (R (R + eta))
//   (1-alpha)/alpha  a3
//   Theta            theta                arctan(xi eta / (q R))

#include <cstddef>

#include "okada/batch/SurfaceKernels.h"
#include "simd/LaneMath.h"

namespace tidora {

/// What the four corners add up to, before logarithms and arguments are taken.
template <typename Lanes>
struct CornerSums {
    using Doubles = typename Lanes::Doubles;

    Doubles q;
    Doubles overR, y11, xiY11;  ///< 1/R, Y11, xi Y11
    Doubles dX11, yX11;         ///< d~ X11, y~ X11
    Doubles yOverRd, xiOverRd;  ///< y~ / (R + d~), xi / (R + d~)
    Doubles etaTerm, xiTerm;    ///< vertical: eta/(R+d~) + y~ q/(R+d~)^2, xi y~/(R+d~)^2
    typename LaneMath<Lanes>::Complex theta,
        a;                      ///< numbers whose arguments are the sums of Theta, but for a turn, and of A
    Doubles lowTurn, highTurn;  ///< which turn it is: the imaginary parts of both pairs of Theta, in order
    typename LaneMath<Lanes>::Fraction rd, re;  ///< of the logarithms
    typename Lanes::Mask singular;
};

template <typename Lanes>
class CornerKernel {
public:
    using Math = LaneMath<Lanes>;
    using Doubles = typename Lanes::Doubles;

    /// R and its sums with xi, eta and d~ are formed as in the scalar routine, operation for operation and unfused:
    /// near the extension of an edge their last bits are all that counts.
    template <bool kHorizontal, bool kVertical>
    // Kept whole: every line takes what the lines above it have in registers. The branches are the four instantiations,
    // not decisions.
    // NOLINTNEXTLINE(readability-function-cognitive-complexity)
    static void SumCorners(const FiniteKernelSource& s, const SurfacePoints& in, CornerSums<Lanes>& sums) noexcept {
        constexpr bool kNeedsRd = kHorizontal || kVertical;
        const Doubles sd = Lanes::All(s.sd), cd = Lanes::All(s.cd);
        const Doubles xi[2] = {Lanes::LoadDifference(in.x, s.al1), Lanes::LoadDifference(in.x, s.al2)};
        const Doubles y = Lanes::LoadWidened(in.y), d = Lanes::LoadWidened(in.depth);
        const Doubles p = y * cd + d * sd;
        const Doubles q = y * sd - d * cd;
        const Doubles q2 = q * q;
        const Doubles sizeOfQ = Lanes::Abs(q);
        const Doubles eta[2] = {p - Lanes::All(s.aw1), p - Lanes::All(s.aw2)};
        const Doubles D[2] = {eta[0] * sd - q * cd, eta[1] * sd - q * cd};

        // The scalar routine takes values below epsilon for 0, and what then vanishes for a special case.
        Doubles least = sizeOfQ;
        for (std::size_t i = 0; i < 2; ++i) {
            least = Lanes::Min(least, Lanes::Min(Lanes::Abs(xi[i]), Lanes::Abs(eta[i])));
        }
        Corners R, rx, re, rd, rxe, inverse;
        for (std::size_t k = 0; k < 2; ++k) {
            const Doubles eta2 = eta[k] * eta[k];
            for (std::size_t j = 0; j < 2; ++j) {
                R[k][j] = Lanes::Root(xi[j] * xi[j] + eta2 + q2);
                rx[k][j] = R[k][j] + xi[j];
                re[k][j] = R[k][j] + eta[k];
                rd[k][j] = R[k][j] + D[k];
                least = Lanes::Min(least, Lanes::Min(rx[k][j], re[k][j]));
                rxe[k][j] = R[k][j] * (rx[k][j] * re[k][j]);
                inverse[k][j] = kNeedsRd ? rxe[k][j] * rd[k][j] : rxe[k][j];
            }
        }
        const Doubles largest = Lanes::Max(Lanes::Max(R[0][0], R[0][1]), Lanes::Max(R[1][0], R[1][1]));
        sums.q = q;
        // What is not a number may get past these, Min and Max taking the other one; it does not get past the noise.
        // The depth of an edge at the surface may come out a little below 0, by the rounding of eta sin - q cos, 1e-9 m
        // at 1e7 m: half the epsilon is between that and a source above the surface.
        const Mask isRegular =
            Lanes::And(Lanes::And(Lanes::AtLeast(least, Lanes::All(kKernelEpsilon)),
                                  Lanes::Less(Lanes::All(-kKernelEpsilon / 2.0), Lanes::Min(D[0], D[1]))),
                       Lanes::Less(largest, Lanes::All(kKernelLargest)));
        sums.singular = Lanes::Not(isRegular);

        // Theta is the argument of |q| R + i xi eta sign(q): with a positive real part it lies within (-pi/2, pi/2), as
        // the arctangent does. Differences of angles are arguments of products with a conjugate number.
        const Doubles signedXi[2] = {Lanes::CopySign(Lanes::All(1.0), q) * xi[0],
                                     Lanes::CopySign(Lanes::All(1.0), q) * xi[1]};
        Complex theta[2][2];
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                theta[k][j] = {sizeOfQ * R[k][j], signedXi[j] * eta[k]};
            }
        }
        const Complex first = ProductWithConjugate(theta[0][0], theta[0][1]);
        const Complex second = ProductWithConjugate(theta[1][1], theta[1][0]);
        sums.theta = Product(first, second);
        sums.lowTurn = Lanes::Min(first.im, second.im);
        sums.highTurn = Lanes::Max(first.im, second.im);
        if constexpr (!kVertical) {
            sums.a = ArgumentSumOfA(s, R, xi, eta, D);
        }
        if constexpr (!kVertical || kHorizontal) {
            sums.rd = LogSum(rd);
            sums.re = LogSum(re);
        }

        // From the inverse of the product of all factors, that of each is the product of the others times it.
        Invert(inverse);
        Corners overR, x11, y11, overRd;
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                const Doubles overRxe = kNeedsRd ? rd[k][j] * inverse[k][j] : inverse[k][j];
                x11[k][j] = re[k][j] * overRxe;
                y11[k][j] = rx[k][j] * overRxe;
                overR[k][j] = rx[k][j] * x11[k][j];
                if constexpr (kNeedsRd) {
                    overRd[k][j] = rxe[k][j] * inverse[k][j];
                }
            }
        }
        const Doubles Y[2] = {eta[0] * cd + q * sd, eta[1] * cd + q * sd};
        sums.overR = Sum(overR);
        sums.y11 = Sum(y11);
        sums.dX11 = SumWithRow(D, x11);
        if constexpr (kHorizontal) {
            sums.xiY11 = SumWithColumn(xi, y11);
            sums.yX11 = SumWithRow(Y, x11);
            sums.xiOverRd = SumWithColumn(xi, overRd);
        }
        if constexpr (kNeedsRd) {
            sums.yOverRd = SumWithRow(Y, overRd);
        }
        if constexpr (kHorizontal && kVertical) {
            Corners overRd2;
            for (std::size_t k = 0; k < 2; ++k) {
                for (std::size_t j = 0; j < 2; ++j) {
                    overRd2[k][j] = overRd[k][j] * overRd[k][j];
                }
            }
            sums.etaTerm = SumWithRow(eta, overRd) + q * SumWithRow(Y, overRd2);
            sums.xiTerm = xi[0] * (Y[0] * overRd2[0][0] - Y[1] * overRd2[1][0]) -
                          xi[1] * (Y[0] * overRd2[0][1] - Y[1] * overRd2[1][1]);
        }
    }

private:
    using Mask = typename Lanes::Mask;
    using Complex = typename Math::Complex;

    /// Values at the four corners, [k][j].
    using Corners = Doubles[2][2];

    /// f(1,1) - f(1,2) - f(2,1) + f(2,2). Neighbours along eta first: far from the source their values are the closest.
    static Doubles Sum(const Corners& f) noexcept { return (f[0][0] - f[1][0]) - (f[0][1] - f[1][1]); }
    /// The same with a factor of eta alone, or of xi alone.
    static Doubles SumWithRow(const Doubles (&factor)[2], const Corners& f) noexcept {
        return Lanes::Fnma(factor[1], f[1][0] - f[1][1], factor[0] * (f[0][0] - f[0][1]));
    }
    static Doubles SumWithColumn(const Doubles (&factor)[2], const Corners& f) noexcept {
        return Lanes::Fnma(factor[1], f[0][1] - f[1][1], factor[0] * (f[0][0] - f[1][0]));
    }

    static Complex Product(const Complex& a, const Complex& b) noexcept {
        return {Lanes::Fnma(a.im, b.im, a.re * b.re), Lanes::Fma(a.im, b.re, a.re * b.im)};
    }
    static Complex ProductWithConjugate(const Complex& a, const Complex& b) noexcept {
        return {Lanes::Fma(a.re, b.re, a.im * b.im), Lanes::Fnma(a.re, b.im, a.im * b.re)};
    }

    /// The number whose argument is the corner sum of A. Up to terms that the sum cancels,
    ///     A = -arctan[xi cos / (R (1 + sin) + eta + d~)] = arctan[xi cos / (R (1 - sin) - eta + d~)]:
    /// 2A is the solid angle between the dip line and the vertical at the corner. Of the two denominators the one with
    /// R (1 + |sin|) cannot vanish below the surface, where d~ >= 0. The numerators of the corners of one xi are equal,
    /// so that their difference lies within (-pi/2, pi/2), and the sum of two within (-pi, pi).
    static Complex ArgumentSumOfA(const FiniteKernelSource& s, const Corners& R, const Doubles (&xi)[2],
                                  const Doubles (&eta)[2], const Doubles (&D)[2]) noexcept {
        const Doubles up = Lanes::All(s.sd >= 0.0 ? 1.0 : -1.0),
                      rFactor = Lanes::All(1.0 + (s.sd >= 0.0 ? s.sd : -s.sd));
        Complex pair[2];
        const Doubles rest[2] = {Lanes::Fma(up, eta[0], D[0]), Lanes::Fma(up, eta[1], D[1])};
        for (std::size_t j = 0; j < 2; ++j) {
            const Doubles below[2] = {Lanes::Fma(rFactor, R[0][j], rest[0]), Lanes::Fma(rFactor, R[1][j], rest[1])};
            const Doubles above = xi[j] * Lanes::All(s.cd);
            // The sign of the first form for dips of at least 0, of the second for the others.
            pair[j] = {Lanes::Fma(below[0], below[1], above * above), up * above * (below[0] - below[1])};
        }
        return ProductWithConjugate(pair[0], pair[1]);
    }

    /// ln v(1,1) - ln v(1,2) - ln v(2,1) + ln v(2,2) is the logarithm of this.
    static typename Math::Fraction LogSum(const Corners& v) noexcept { return {v[0][0] * v[1][1], v[0][1] * v[1][0]}; }

    /// Replaces each value by its inverse, for one division: the inverse of the product of all, times the other three.
    static void Invert(Corners& v) noexcept {
        const Doubles first = v[0][0] * v[0][1], second = v[1][0] * v[1][1];
        const Doubles inverse = Lanes::Inverse(first * second);
        const Doubles overFirst = inverse * second, overSecond = inverse * first;
        const Doubles v00 = v[0][0], v10 = v[1][0];
        v[0][0] = overFirst * v[0][1];
        v[0][1] = overFirst * v00;
        v[1][0] = overSecond * v[1][1];
        v[1][1] = overSecond * v10;
    }
};

}  // namespace tidora
