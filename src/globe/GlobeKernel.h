#pragma once

// The frame of an element on the globe for many nodes.
// A template over the lane type, for sources that are compiled for one instruction set each. Every function is a member
// of it: none may be shared with code that runs on any machine, and none of the standard library is used.
//
//   GlobeFrame.h   code          meaning
//   e, n           e, n          components of the chord along the local east and north, m
//   c              c2            square of the chord, m^2
//   h              h2            e^2 + n^2, m^2
//   1 / R          curvature     (n^2 / M + e^2 / N) / h^2, Euler
//   s / c          arcOfChord    arcsin(w) / w with w = c / 2R
//
// place = (e, n) (c / h) (s / c): one inverse and one root.

#include <cstddef>

#include "globe/GlobeKernels.h"
#include "simd/LaneMath.h"

namespace tidora {

template <typename Lanes>
class GlobeKernel {
public:
    static void Places(const GlobeFrame& frame, const GlobeNodes& nodes, double* east, double* north) noexcept {
        ForEach(nodes, [&](const GlobeNodes& some, std::size_t at, bool isWhole) {
            const Chord chord = ChordOf(frame, some);
            const Doubles stretch = StretchOf(frame, chord);
            Store(east, at, nodes.count, isWhole, chord.e * stretch);
            Store(north, at, nodes.count, isWhole, chord.n * stretch);
        });
    }

    static void Turns(const GlobeFrame& frame, const GlobeNodes& nodes, const GlobeNodeAxes& axes, float* cosine,
                      float* sine) noexcept {
        for (std::size_t at = 0; at < nodes.count; at += kLanes) {
            double in[7][kLanes] = {};
            const double* const from[7] = {nodes.x,     nodes.y,     nodes.z,    axes.sinLat,
                                           axes.cosLat, axes.sinLon, axes.cosLon};
            const std::size_t count = nodes.count - at < kLanes ? nodes.count - at : kLanes;
            for (std::size_t k = 0; k < 7; ++k) {
                for (std::size_t lane = 0; lane < count; ++lane) {
                    in[k][lane] = from[k][at + lane];
                }
            }
            float turned[2][kLanes];
            TurnStep(frame, {kLanes, in[0], in[1], in[2]}, {in[3], in[4], in[5], in[6]}, turned[0], turned[1]);
            for (std::size_t lane = 0; lane < count; ++lane) {
                cosine[at + lane] = turned[0][lane];
                sine[at + lane] = turned[1][lane];
            }
        }
    }

private:
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    using Math = LaneMath<Lanes>;
    static constexpr std::size_t kLanes = Lanes::kDoubles;

    /// Square of the distance from the vertical through the origin, m^2, up to which a node counts as lying on it: a
    /// micrometre, a thousand roundings of a co-ordinate. What is divided by it stays finite.
    static constexpr double kOnAxis = 1.0e-12;

    struct Chord {
        Doubles x, y, z;  ///< from the origin
        Doubles e, n, h2, c2;
    };

    /// step(nodes, at, isWhole) for kLanes nodes at a time; the last ones from a copy that is filled up with zeros.
    template <typename Step>
    static void ForEach(const GlobeNodes& nodes, Step step) noexcept {
        std::size_t at = 0;
        for (; at + kLanes <= nodes.count; at += kLanes) {
            step({kLanes, nodes.x + at, nodes.y + at, nodes.z + at}, at, true);
        }
        if (at < nodes.count) {
            double in[3][kLanes] = {};
            for (std::size_t lane = 0; at + lane < nodes.count; ++lane) {
                in[0][lane] = nodes.x[at + lane];
                in[1][lane] = nodes.y[at + lane];
                in[2][lane] = nodes.z[at + lane];
            }
            step({kLanes, in[0], in[1], in[2]}, at, false);
        }
    }

    static void Store(double* to, std::size_t at, std::size_t count, bool isWhole, Doubles values) noexcept {
        if (isWhole) {
            Lanes::Store(to + at, values);
            return;
        }
        double out[kLanes];
        Lanes::Store(out, values);
        for (std::size_t lane = 0; at + lane < count; ++lane) {
            to[at + lane] = out[lane];
        }
    }

    static Chord ChordOf(const GlobeFrame& f, const GlobeNodes& nodes) noexcept {
        const Doubles x = Lanes::Load(nodes.x) - Lanes::All(f.origin.x);
        const Doubles y = Lanes::Load(nodes.y) - Lanes::All(f.origin.y);
        const Doubles z = Lanes::Load(nodes.z) - Lanes::All(f.origin.z);
        const Doubles e = Lanes::Fma(x, Lanes::All(f.eastX), y * Lanes::All(f.eastY));
        const Doubles n =
            Lanes::Fma(x, Lanes::All(f.northX), Lanes::Fma(y, Lanes::All(f.northY), z * Lanes::All(f.northZ)));
        return {x, y, z, e, n, Lanes::Fma(e, e, n * n), Lanes::Fma(x, x, Lanes::Fma(y, y, z * z))};
    }

    /// s / h. A chord is never shorter than its own h: what rounding makes of their ratio is not let below 1.
    static Doubles StretchOf(const GlobeFrame& f, const Chord& chord) noexcept {
        const Doubles overH2 = Lanes::Inverse(Lanes::Max(chord.h2, Lanes::All(kOnAxis)));
        const Doubles n2 = chord.n * chord.n, e2 = chord.e * chord.e;
        const Doubles euler =
            Lanes::Fma(n2, Lanes::All(f.meridianCurvature), e2 * Lanes::All(f.primeCurvature)) * overH2;
        const Doubles curvature =
            Lanes::Select(Lanes::Less(chord.h2, Lanes::All(kOnAxis)), Lanes::All(f.primeCurvature), euler);
        const Doubles w2 = chord.c2 * (Lanes::All(0.25) * curvature * curvature);
        const Doubles cOverH = Lanes::Root(Lanes::Max(chord.c2 * overH2, Lanes::All(1.0)));
        return cOverH * ArcOfChord(w2);
    }

    /// arcsin(w) / w of w^2. Beyond 1/4, 60 degrees away, by arcsin(w) = pi/2 - 2 arcsin(sqrt((1 - w) / 2)).
    static Doubles ArcOfChord(Doubles w2) noexcept {
        constexpr double kQuarter = 0.25, kHalfPi = 1.5707963267948966;
        const Mask isFar = Lanes::Less(Lanes::All(kQuarter), w2);
        if (Lanes::BitsOf(isFar) == 0) {
            return NearArcOfChord(w2);
        }
        const Doubles w = Lanes::Sqrt(Lanes::Min(w2, Lanes::All(1.0)));
        const Doubles v2 = Lanes::All(0.5) - Lanes::All(0.5) * w;
        const Doubles part = NearArcOfChord(Lanes::Select(isFar, v2, w2));
        const Doubles arc = Lanes::All(kHalfPi) - (part + part) * Lanes::Sqrt(v2);
        return Lanes::Select(isFar, arc / Lanes::Max(w, Lanes::All(0.5)), part);
    }

    /// For w^2 from 0 to 1/4.
    static Doubles NearArcOfChord(Doubles w2) noexcept {
        // (arcsin(w) / w - 1) / w^2 as a polynomial of w^2, at the Chebyshev points of 0 to 1/4: scripts/polynomials.py
        // makes it. It adds 7.3e-15 to the arc, where the best one would add 1.1e-15: 1e-7 m on the earth.
        constexpr double kArcsine[] = {0.1666666666666218,   0.07500000003584559,  0.04464285243793872,
                                       0.030382182776212484, 0.02236606593888501,  0.017441495685492855,
                                       0.01318791613675373,  0.015675662527070935, -0.0029397929067241963,
                                       0.0279070314326661};
        return Lanes::Fma(w2, Math::Polynomial(w2, kArcsine), Lanes::All(1.0));
    }

    static void TurnStep(const GlobeFrame& frame, const GlobeNodes& nodes, const GlobeNodeAxes& axes, float* cosine,
                         float* sine) noexcept {
        const Chord chord = ChordOf(frame, nodes);
        const Doubles sinLat = Lanes::Load(axes.sinLat), cosLat = Lanes::Load(axes.cosLat);
        const Doubles sinLon = Lanes::Load(axes.sinLon), cosLon = Lanes::Load(axes.cosLon);
        // The chord along east and north at the node: a normal section seen from its other end.
        const Doubles e = Lanes::Fma(chord.y, cosLon, -(chord.x * sinLon));
        const Doubles outward = Lanes::Fma(chord.x, cosLon, chord.y * sinLon);
        const Doubles n = Lanes::Fma(chord.z, cosLat, -(outward * sinLat));
        const Doubles size2 = chord.h2 * Lanes::Fma(e, e, n * n);
        const Mask isOnAxis = Lanes::Less(Lanes::Min(chord.h2, Lanes::Fma(e, e, n * n)), Lanes::All(kOnAxis));
        const Doubles inverse = Lanes::Inverse(Lanes::Root(Lanes::Max(size2, Lanes::All(kOnAxis * kOnAxis))));
        const Doubles along = Lanes::Fma(chord.e, e, chord.n * n) * inverse;
        const Doubles across = Lanes::Fma(e, chord.n, -(n * chord.e)) * inverse;
        // From axes to axes: the node's east along the frame's east and north.
        const Doubles east = Lanes::Fma(cosLon, Lanes::All(frame.eastY), -(sinLon * Lanes::All(frame.eastX)));
        const Doubles north = Lanes::Fma(cosLon, Lanes::All(frame.northY), -(sinLon * Lanes::All(frame.northX)));
        Lanes::StoreRounded(cosine, Lanes::Select(isOnAxis, east, along));
        Lanes::StoreRounded(sine, Lanes::Select(isOnAxis, north, across));
    }
};

/// The table of one lane type; called by its source.
template <typename Lanes>
constexpr GlobeKernels MakeGlobeKernels() noexcept {
    return {&GlobeKernel<Lanes>::Places, &GlobeKernel<Lanes>::Turns};
}

}  // namespace tidora
