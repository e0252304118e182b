#pragma once

/// A rectangle of slip in a plane. Its reference point is the start of the upper edge, x eastward, y northward.
struct SlipRectangle {
    double x = 0.0, y = 0.0;                     ///< m
    double depth = 0.0;                          ///< of the upper edge, m
    double strike = 0.0, dip = 0.0, rake = 0.0;  ///< degrees
    double length = 0.0, width = 0.0;            ///< m
    double slip = 0.0;                           ///< m
};

/// Uplift (m) of the surface point (x, y) of a Poisson solid, without a dislocation formula. By Betti's theorem it is
/// the work that the stress of a unit force, upward at that point, does on the slip:
///     u = integral over the rectangle of slip_i n_j sigma_ij dA.
/// sigma is Boussinesq's solution for a normal force on a half-space. The integral is taken by Gauss's rule with 4 x 4
/// points, over cells that are halved until they are small against their distance from the point.
[[nodiscard]] double UpliftByReciprocity(const SlipRectangle& rectangle, double x, double y);
