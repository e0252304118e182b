#pragma once

// The plane of a UTM zone, one template for all lane types. Included by the sources that are compiled for one
// instruction set each. Every function is a member of that template: none may be shared with code that runs on any
// machine, and none of the standard library is used.
//
//   paper       code               meaning                                                             unit
//   lambda      column             longitude from the central meridian: its sine, cosine, 1 - cosine
//   chi         rows               conformal latitude: its sine, cosine, distance along the meridian   m
//   xi' - chi   turn               xi', eta': the point on the plane of the conformal sphere           radian
//   2 |eta'|    stretch                                                                                radian
//   zeta        -                  2 (xi' + i eta')                                                    radian
//   xi, eta     - , eta            the point on the plane of the ellipsoid                             radian
//   alpha_j     column.series      Krueger's coefficients, j = 1 .. 6, regrouped
//   k0 A        radius             metres of the plane per radian                                      m
//
// Karney (2011), Transverse Mercator with an accuracy of a few nanometers, J. Geodesy 85, 475-485: Krueger's series to
// the sixth order of the third flattening, eqs. (11) and (35),
//     xi + i eta = xi' + i eta' + sum over j = 1 .. 6 of alpha_j sin(j zeta),    x = x0 + k0 A eta,    y = k0 A xi
// from the conformal sphere. With the unit vector (u, v, w) = (sin(lambda) cos(chi), cos(lambda) cos(chi), sin(chi))
// and r2 = v^2 + w^2,
//     tan(xi') = w / v,                           tanh(eta') = u,
//     sin(2 xi') = 2 v w / r2,                    cos(2 xi') = (v^2 - w^2) / r2,
//     sinh(2 eta') = 2 u / r2,                    cosh(2 eta') = (1 + u^2) / r2.
//
// Departures from the paper, for the last digits and for speed:
//   xi'      is chi + arctan[sin(chi) cos(chi) m / (1 - cos(chi)^2 m)], m = 1 - cos(lambda). k0 A chi is the row's, and
//            what is added to it is small near the zone: y is rounded where it is added up, and hardly before;
//   eta'     is 1/2 ln[(r2 + 2 |u| (1 + |u|)) / r2] with the sign of u: r2 keeps its digits where 1 - u loses them, far
//            from the central meridian, and on it the logarithm is 0;
//   the sum  is sin(zeta) times a polynomial of 2 cos(zeta), see KrugerSeries in ZonePlane.cpp.
// Error: kZonePlaneMaxError, with the test that holds it, in ZonePlane.h.

#include <cstddef>

#include "projection/ZonePlaneKernels.h"
#include "simd/LaneMath.h"

namespace tidora {

template <typename Lanes>
class ZonePlaneKernel {
public:
    /// Whole vectors, the last ones of a column into a copy. A point shares its division with itself alone: its bits
    /// are the same in every part of a grid, and alone.
    static void RunColumn(const ZoneColumnSource& column, const ZoneRowTables& rows, std::size_t first, std::size_t end,
                          double* x, double* y) noexcept {
        static_assert(kLanes <= kZoneStepPoints, "the last step reads beyond the last row");
        std::size_t at = first;
        for (; at + kLanes <= end; at += kLanes) {
            Step(column, rows, at, x + (at - first), y + (at - first));
        }
        if (at < end) {
            double lastX[kLanes], lastY[kLanes];
            Step(column, rows, at, lastX, lastY);
            for (std::size_t lane = 0; at + lane < end; ++lane) {
                x[at + lane - first] = lastX[lane];
                y[at + lane - first] = lastY[lane];
            }
        }
    }

private:
    static constexpr std::size_t kLanes = Lanes::kDoubles;

    using Math = LaneMath<Lanes>;
    using Doubles = typename Lanes::Doubles;
    using Complex = typename Math::Complex;
    using Fraction = typename Math::Fraction;

    /// Points of the conformal sphere.
    struct Sphere {
        Doubles sine, cosine;  ///< of chi
        Doubles u, v, r2;
    };

    static Sphere Load(const ZoneColumnSource& column, const ZoneRowTables& rows, std::size_t at) noexcept {
        const Doubles sine = Lanes::Load(rows.sine + at), cosine = Lanes::Load(rows.cosine + at);
        const Doubles v = Lanes::All(column.cosine) * cosine;
        return {sine, cosine, Lanes::All(column.sine) * cosine, v, Lanes::Fma(v, v, sine * sine)};
    }

    /// A number whose argument is xi' - chi.
    static Complex Turn(const ZoneColumnSource& column, const Sphere& p) noexcept {
        const Doubles mc = Lanes::All(column.versine) * p.cosine;
        return {Lanes::Fnma(mc, p.cosine, Lanes::All(1.0)), mc * p.sine};
    }

    /// The fraction whose logarithm is 2 |eta'|.
    static Fraction Stretch(const Sphere& p) noexcept {
        const Doubles size = Lanes::Abs(p.u);
        return {Lanes::Fma(size + size, Lanes::All(1.0) + size, p.r2), p.r2};
    }

    /// sum alpha_j sin(j zeta). A polynomial with real coefficients at a complex number k needs but two products a
    /// term: k^2 = 2 Re(k) k - |k|^2 takes its highest power off, term by term, down to the first. The sum is a
    /// thousandth of a radian and may lose three digits to that.
    static Complex SeriesSum(const ZoneColumnSource& column, const Sphere& p, Doubles overR2) noexcept {
        const Doubles two = Lanes::All(2.0), one = Lanes::All(1.0);
        const Doubles sin2Xi = two * p.v * p.sine * overR2;
        const Doubles cos2Xi = Lanes::Fnma(p.sine, p.sine, p.v * p.v) * overR2;
        const Doubles sinh2Eta = two * p.u * overR2;
        const Doubles cosh2Eta = Lanes::Fma(p.u, p.u, one) * overR2;
        const Complex sine = {sin2Xi * cosh2Eta, cos2Xi * sinh2Eta};
        const Complex k = {two * cos2Xi * cosh2Eta, -(two * sin2Xi * sinh2Eta)};
        const Doubles twice = k.re + k.re;
        const Doubles size2 = Lanes::Fma(k.re, k.re, k.im * k.im);
        Doubles last = Lanes::All(column.series[kKrugerTerms - 1]);
        Doubles sum = Lanes::Fma(twice, last, Lanes::All(column.series[kKrugerTerms - 2]));
        for (std::size_t power = kKrugerTerms - 2; power-- > 1;) {
            const Doubles next = Lanes::Fma(twice, sum, Lanes::Fnma(size2, last, Lanes::All(column.series[power])));
            last = sum;
            sum = next;
        }
        const Complex value = {Lanes::Fma(k.re, sum, Lanes::Fnma(size2, last, Lanes::All(column.series[0]))),
                               k.im * sum};
        return {Lanes::Fnma(sine.im, value.im, sine.re * value.re), Lanes::Fma(sine.re, value.im, sine.im * value.re)};
    }

    static void Finish(const ZoneColumnSource& column, const Sphere& p, Doubles turn, Doubles stretch, Doubles northing,
                       double* x, double* y) noexcept {
        const Doubles radius = Lanes::All(column.scaledRadius);
        const Complex sum = SeriesSum(column, p, Lanes::Inverse(p.r2));
        const Doubles eta = Lanes::CopySign(Lanes::All(0.5) * stretch, p.u) + sum.im;
        Lanes::Store(x, Lanes::Fma(radius, eta, Lanes::All(column.falseEasting)));
        Lanes::Store(y, Lanes::Fma(radius, turn + sum.re, northing));
    }

    static void Step(const ZoneColumnSource& column, const ZoneRowTables& rows, std::size_t at, double* x,
                     double* y) noexcept {
        const Sphere p = Load(column, rows, at);
        const auto both = Math::ArgumentAndLog(Turn(column, p), Stretch(p));
        Finish(column, p, both.first, both.second, Lanes::Load(rows.northing + at), x, y);
    }
};

/// The table of one lane type; called by its source.
template <typename Lanes>
constexpr ZonePlaneKernels MakeZonePlaneKernels() noexcept {
    return {&ZonePlaneKernel<Lanes>::RunColumn};
}

}  // namespace tidora
