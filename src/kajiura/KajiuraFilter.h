#pragma once

#include <memory>

#include "kajiura/SampledGrid.h"

namespace tidora {

/// Smooths a sea-floor uplift into the sea-surface elevation that it leaves:
///     eta_s = 1 / (pi d^2) * integral of eta(r) G(r / d) dA
///     G(rho) = sum over n = 0..10 of (-1)^n (2n + 1) / ((2n + 1)^2 + rho^2)^(3/2)
/// Kajiura (1963), Bull. Earthq. Res. Inst. 41, 535-571; the series is cut after 11 terms. d is the water depth at the
/// point that is filtered, used throughout its disc. The integral is a sum over a square lattice of step d / 4 within
/// 5 d (Disc.h sets both), 1257 samples, bilinear in the uplift, and is not normalised: a uniform uplift of 1 m gives
/// 1.0229 m.
///
/// uplift: the grid to be filtered, unfiltered. parent: where the samples outside of it come from, or null. A sample
/// that neither grid has a whole cell for counts as 0. topography: values of the uplift's grid, m, negative below sea
/// level; points at -10 and above keep their value. result: nx * ny values, holding the uplift on entry; must not
/// overlap `uplift.values`. Single precision and a fixed order of the sum on purpose: the bits repeat, on every
/// instruction set. Keeps no state: safe to call from several threads.
void FilterUplift(const SampledGrid& uplift, const SampledGrid* parent, const float* topography, float* result);

/// The same in parts, so that threads can share a grid: what is known of the uplift beforehand is found once. The bits
/// are those of FilterUplift, for any cut into columns.
class ProgramFilter {
public:
    /// The values of both grids outlive this.
    ProgramFilter(const SampledGrid& uplift, const SampledGrid* parent);
    ~ProgramFilter();
    ProgramFilter(const ProgramFilter&) = delete;
    ProgramFilter& operator=(const ProgramFilter&) = delete;

    /// Columns [first, end) of the result; topography, result: whole fields, as for FilterUplift. Safe to call from
    /// several threads for different columns. Nothing where the grid has no columns or rows.
    void FilterColumns(int first, int end, const float* topography, float* result) const;

private:
    class FlatDiscs;

    SampledGrid m_uplift;
    SampledGrid m_parent;
    bool m_hasParent;
    std::unique_ptr<const FlatDiscs> m_flat;  ///< null: the grid has no columns or rows
};

}  // namespace tidora
