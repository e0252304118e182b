#pragma once

// The passes over a column as plain loops: the compiler makes vectors of the width that it is told, and finds nothing
// that operations on lanes would do better. They are members of a template over the lane type all the same, so that
// each source compiles functions of its own; nothing of the standard library is used, and no instruction of one set can
// reach another.

#include "deform/ColumnPasses.h"
#include "simd/FloatingPointRules.h"

namespace tidora {

template <typename Lanes>
struct ColumnLoops {
    static std::size_t Place(const ElementFrame& frame, const double* __restrict x, const double* __restrict y,
                             std::size_t count, float limit, const PlacedPoints& placed) {
        float* const __restrict px = placed.x;
        float* const __restrict py = placed.y;
        float* const __restrict centroidX = placed.centroidX;
        float* const __restrict centroidY = placed.centroidY;
        float* const __restrict squaredDistance = placed.squaredDistance;
        const ElementFrame f = frame;
        int within = 0;  // of 32 bits, as the distances: a wider sum would halve the width of the loop
        for (std::size_t i = 0; i < count; ++i) {
            const float east = static_cast<float>(x[i] - f.originX);
            const float north = static_cast<float>(y[i] - f.originY);
            px[i] = f.cosine * east - f.sine * north;
            py[i] = f.sine * east + f.cosine * north;
            centroidX[i] = static_cast<float>(static_cast<double>(px[i]) - f.halfLength);
            centroidY[i] = static_cast<float>(static_cast<double>(py[i]) + f.halfWidth);
            squaredDistance[i] = centroidX[i] * centroidX[i] + centroidY[i] * centroidY[i];
            within += squaredDistance[i] <= limit ? 1 : 0;
        }
        return static_cast<std::size_t>(within);
    }

    /// A distance that is not a number is beyond no limit, and within none either.
    static void Sort(const SourceLimits& limits, const float* __restrict squaredDistance,
                     const std::uint8_t* __restrict isNear, std::size_t count, SourceKind* __restrict kinds) {
        const SourceLimits l = limits;
        for (std::size_t i = 0; i < count; ++i) {
            const bool isBeyond = squaredDistance[i] > l.point;
            const bool isFinite = l.isFiniteOnly || squaredDistance[i] <= l.finite;
            kinds[i] = isBeyond ? SourceKind::None : (isFinite ? SourceKind::Finite : SourceKind::Point);
        }
        if (isNear != nullptr) {
            for (std::size_t i = 0; i < count; ++i) {
                kinds[i] = isNear[i] == 0 ? SourceKind::None : kinds[i];
            }
        }
    }

    static void Depths(double offset, double below, const float* __restrict topography, std::size_t count,
                       float* __restrict depth) {
        for (std::size_t i = 0; i < count; ++i) {
            const double ofEdge = static_cast<double>(topography[i]) + offset;
            depth[i] = static_cast<float>((ofEdge > 0.0 ? ofEdge : 0.0) + below);
        }
    }

    static std::size_t MarkNear(const GreatCircleTest& test, std::size_t count, std::uint8_t* __restrict isNear) {
        const double* const __restrict sine = test.sine;
        const double* const __restrict cosine = test.cosine;
        const GreatCircleTest t = test;
        long long undecided = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double beyondLimit = cosine[i] * t.cosineFactor + sine[i] * t.sineFactor - t.limit;
            isNear[i] = beyondLimit > 0.0 ? 1 : 0;
            undecided += __builtin_fabs(beyondLimit) > t.margin ? 0 : 1;  // also where it is not a number
        }
        return static_cast<std::size_t>(undecided);
    }

    /// Slopes are central, one-sided at the ends, and 0 where an axis has one point. Single precision throughout.
    static void UpliftBySlope(const SlopedColumn& column, const float* __restrict ux, const float* __restrict uy,
                              std::size_t count, float* __restrict uplift) {
        const SlopedColumn c = column;
        const auto slopeX = [&c](std::size_t i) {
            return c.isSingle ? 0.0F : -(c.after[i] - c.before[i]) / c.acrossSpacing;
        };
        const auto atEnd = [&](std::size_t i) {
            const int row = c.firstRow + static_cast<int>(i);
            float slopeY = 0.0F;
            if (c.rowCount > 1) {
                const float* const from = c.here + i - (row > 0 ? 1 : 0);
                const float* const to = c.here + i + (row + 1 < c.rowCount ? 1 : 0);
                slopeY = -(*to - *from) / (to - from == 2 ? 2.0F * c.dx : c.dx);
            }
            uplift[i] = UpliftAt(c, c.here[i], ux[i], uy[i], slopeX(i), slopeY);
        };
        if (count == 0) {
            return;
        }
        atEnd(0);
        const float twoSteps = 2.0F * c.dx;
        const float* const __restrict here = c.here;
        for (std::size_t i = 1; i + 1 < count; ++i) {
            uplift[i] = UpliftAt(c, here[i], ux[i], uy[i], slopeX(i), -(here[i + 1] - here[i - 1]) / twoSteps);
        }
        if (count > 1) {
            atEnd(count - 1);
        }
    }

    static void Turn(float sine, float cosine, const float* __restrict ux, const float* __restrict uy,
                     std::size_t count, float* __restrict east, float* __restrict north) {
        for (std::size_t i = 0; i < count; ++i) {
            east[i] = cosine * ux[i] + sine * uy[i];
            north[i] = -sine * ux[i] + cosine * uy[i];
        }
    }

    static void TurnEach(const float* __restrict cosine, const float* __restrict sine, std::size_t count,
                         float* __restrict east, float* __restrict north) {
        for (std::size_t i = 0; i < count; ++i) {
            const float e = east[i];
            east[i] = cosine[i] * e + sine[i] * north[i];
            north[i] = cosine[i] * north[i] - sine[i] * e;
        }
    }

    static void UpliftByFloor(const float* __restrict east, const float* __restrict north,
                              const float* __restrict slopeX, const float* __restrict slopeY, std::size_t count,
                              float* __restrict uplift) {
        for (std::size_t i = 0; i < count; ++i) {
            uplift[i] = east[i] * slopeX[i] + north[i] * slopeY[i];
        }
    }

    static float Largest(const float* __restrict values, std::size_t count, float atLeast) {
        constexpr std::size_t kSide = 32;  // as many maxima side by side: the loop makes vectors
        float largest[kSide];
        for (float& value : largest) {
            value = atLeast;
        }
        std::size_t i = 0;
        for (; i + kSide <= count; i += kSide) {
            for (std::size_t lane = 0; lane < kSide; ++lane) {
                largest[lane] = values[i + lane] > largest[lane] ? values[i + lane] : largest[lane];
            }
        }
        for (; i < count; ++i) {
            largest[0] = values[i] > largest[0] ? values[i] : largest[0];
        }
        for (std::size_t half = kSide / 2; half > 0; half /= 2) {
            for (std::size_t lane = 0; lane < half; ++lane) {
                largest[lane] = largest[lane + half] > largest[lane] ? largest[lane + half] : largest[lane];
            }
        }
        return largest[0];
    }

    static void Add(float share, const float* __restrict values, std::size_t count, float* __restrict sum) {
        for (std::size_t i = 0; i < count; ++i) {
            sum[i] += share * values[i];
        }
    }

private:
    /// East and north in the frame of the element times the slopes -d(topography)/dx and -d(topography)/dy.
    static float UpliftAt(const SlopedColumn& c, float here, float ux, float uy, float slopeX, float slopeY) {
        const float east = c.cosine * ux + c.sine * uy;
        const float north = -c.sine * ux + c.cosine * uy;
        return here < c.shallowest ? east * slopeX + north * slopeY : 0.0F;
    }
};

/// The table of one lane type; called by its source.
template <typename Lanes>
constexpr ColumnPasses MakeColumnPasses() noexcept {
    using Loops = ColumnLoops<Lanes>;
    return {&Loops::Place, &Loops::Sort,     &Loops::Depths,        &Loops::MarkNear, &Loops::UpliftBySlope,
            &Loops::Turn,  &Loops::TurnEach, &Loops::UpliftByFloor, &Loops::Largest,  &Loops::Add};
}

}  // namespace tidora
