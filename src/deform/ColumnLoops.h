// The passes over a column. Included by one source per instruction set, which names the table it becomes with
// TIDORA_COLUMN_KERNELS: the loops are plain, so that the compiler makes vectors of the width that it is told.
// Everything is local to that source, and nothing from the standard library is used: no instruction of one set may
// reach another.

#include "deform/ColumnKernels.h"

// Each source that includes this is to have definitions of its own.
// NOLINTBEGIN(misc-definitions-in-headers)
namespace tidora {
namespace {

std::size_t Place(const ElementFrame& frame, const double* __restrict x, const double* __restrict y, std::size_t count,
                  float limit, const PlacedPoints& placed) {
    float* const __restrict px = placed.x;
    float* const __restrict py = placed.y;
    float* const __restrict centroidX = placed.centroidX;
    float* const __restrict centroidY = placed.centroidY;
    float* const __restrict distance = placed.distance;
    const ElementFrame f = frame;
    int within = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const float east = static_cast<float>(x[i] - f.originX);
        const float north = static_cast<float>(y[i] - f.originY);
        px[i] = f.cosine * east - f.sine * north;
        py[i] = f.sine * east + f.cosine * north;
        centroidX[i] = static_cast<float>(static_cast<double>(px[i]) - f.halfLength);
        centroidY[i] = static_cast<float>(static_cast<double>(py[i]) + f.halfWidth);
        distance[i] = __builtin_sqrtf(centroidX[i] * centroidX[i] + centroidY[i] * centroidY[i]);
        within += distance[i] <= limit ? 1 : 0;
    }
    return static_cast<std::size_t>(within);
}

void EdgeDepths(const float* __restrict topography, double offset, std::size_t count, float* __restrict depth) {
    for (std::size_t i = 0; i < count; ++i) {
        const double below = static_cast<double>(topography[i]) + offset;
        depth[i] = static_cast<float>(below > 0.0 ? below : 0.0);
    }
}

std::size_t CountNear(const GreatCircleTest& test, std::size_t count) {
    const double* const __restrict sine = test.sine;
    const double* const __restrict cosine = test.cosine;
    const GreatCircleTest t = test;
    long long near = 0;
    for (std::size_t i = 0; i < count; ++i) {
        near += cosine[i] * t.cosineFactor + sine[i] * t.sineFactor > t.limit ? 1 : 0;
    }
    return static_cast<std::size_t>(near);
}

/// East and north in the frame of the element times the slopes -d(topography)/dx and -d(topography)/dy.
float UpliftAt(const SlopedColumn& c, float here, float ux, float uy, float slopeX, float slopeY) {
    const float east = c.cosine * ux + c.sine * uy;
    const float north = -c.sine * ux + c.cosine * uy;
    return here < c.shallowest ? east * slopeX + north * slopeY : 0.0F;
}

/// Slopes are central, one-sided at the ends, and 0 where an axis has one point. Single precision throughout.
void UpliftBySlope(const SlopedColumn& column, const float* __restrict ux, const float* __restrict uy,
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

float Largest(const float* __restrict values, std::size_t count, float atLeast) {
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

void Add(float share, const float* __restrict values, std::size_t count, float* __restrict sum) {
    for (std::size_t i = 0; i < count; ++i) {
        sum[i] += share * values[i];
    }
}

}  // namespace

extern const ColumnKernels TIDORA_COLUMN_KERNELS;
const ColumnKernels TIDORA_COLUMN_KERNELS = {&Place, &EdgeDepths, &CountNear, &UpliftBySlope, &Largest, &Add};

}  // namespace tidora
// NOLINTEND(misc-definitions-in-headers)
