// The filter of a block of points. Included by one source per instruction set, which names the function it becomes with
// TIDORA_FILTER_POINTS. Loops are plain where the compiler makes vectors of them; what it does not find by itself, the
// permutations of the interpolation above all, is written for AVX2 and AVX-512 in KajiuraTermsWide.h.
// Everything is local to that source, and nothing from the standard library is used: no instruction of one set may
// reach another.
//
// Every operation, its precision and its order are those of one sample after the other:
//     sum = sum + ((eta G) s) s,  i from -20 to 20 and within it j from -20 to 20,
// only what does not depend on i, on j, or on more than i^2 + j^2, is done once. Vectors run along j, where the samples
// are independent; the sums, whose order is fixed, run side by side for several points.

#ifdef __AVX2__
#include <immintrin.h>
#endif

#include "kajiura/KajiuraLattice.h"

// Each source that includes this is to have definitions of its own.
// NOLINTBEGIN(misc-definitions-in-headers)
namespace tidora {
namespace {

constexpr float kSeries[kKernelTerms] = {1, -3, 5, -7, 9, -11, 13, -15, 17, -19, 21};  // (-1)^n (2n + 1)
constexpr double kPi = 3.141592653589793;

/// Arrays over the lattice positions of one axis are a little longer than the axis, so that loops of kChunk steps need
/// no remainder: what they write behind the end is never used.
constexpr int kChunk = 16;
constexpr int kPadded = (kLatticeWidth / kChunk + 1) * kChunk;

constexpr int kSideBySide = 16;  ///< points whose sums are taken together

/// Bilinear weights and cells of the 41 lattice positions along one axis, in one grid; weights of 0 where it has no
/// cell.
struct LatticeAxis {
    alignas(64) int cell[kPadded];           ///< -1 where the grid has no cell with both its corners
    alignas(64) float weight[kPadded];       ///< of the far corner
    alignas(64) double wideWeight[kPadded];  ///< the same
    alignas(64) double nearWeight[kPadded];  ///< 1 - weight, in double
};

/// True division on purpose: a reciprocal would move nodes across cell borders.
void FillAxis(float centre, float step, double org, float dx, int count, LatticeAxis& __restrict axis) {
    const double wideDx = static_cast<double>(dx);
    const double limit = static_cast<double>(count);
    for (int at = 0; at < kPadded; ++at) {
        const float p = static_cast<float>(at - kLatticeHalfWidth) * step + centre;
        const double cell = __builtin_floor((static_cast<double>(p) - org) / wideDx);
        // Not short-circuited: the loop makes vectors.
        const int isInside = static_cast<int>(cell >= 0.0) & static_cast<int>(cell + 1.0 < limit);
        const double index = isInside != 0 ? cell : -1.0;
        const float corner = static_cast<float>(org + static_cast<double>(static_cast<float>(index) * dx));
        axis.cell[at] = static_cast<int>(index);
        axis.weight[at] = isInside != 0 ? (p - corner) / dx : 0.0F;
        axis.wideWeight[at] = static_cast<double>(axis.weight[at]);
        axis.nearWeight[at] = isInside != 0 ? 1.0 - axis.wideWeight[at] : 0.0;
    }
}

/// |i| of lattice column `at`.
constexpr int DistanceFromCentre(int at) {
    return at < kLatticeHalfWidth ? kLatticeHalfWidth - at : at - kLatticeHalfWidth;
}

#ifdef __AVX512F__
#include "kajiura/KajiuraLanesAvx512.h"
#elif defined(__AVX2__)
#include "kajiura/KajiuraLanesAvx2.h"
#endif
#include "kajiura/KajiuraSeries.h"
#ifdef __AVX2__
#include "kajiura/KajiuraTermsWide.h"
#else
#include "kajiura/KajiuraTerms.h"
#endif

}  // namespace

void TIDORA_FILTER_POINTS(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                          float* filtered) {
    static thread_local float products[kSideBySide][kLatticeSamples + kChunk];
    ProductsInTurn turns(own, parent, points, count);
    for (int first = 0; first < count; first += kSideBySide) {
        const int number = count - first < kSideBySide ? count - first : kSideBySide;
        float steps[kSideBySide] = {};
        for (int p = 0; p < number; ++p) {
            turns.Fill(products[p]);
            steps[p] = 0.25F * points[first + p].depth;
        }
        float sums[kSideBySide] = {};
        Sum(products, steps, sums);
        for (int p = 0; p < number; ++p) {
            filtered[first + p] = static_cast<float>(static_cast<double>(sums[p] * points[first + p].depth) / kPi);
        }
    }
}

}  // namespace tidora
// NOLINTEND(misc-definitions-in-headers)
