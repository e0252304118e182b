#pragma once

/// Surface displacement of an elastic half-space by a rectangular and by a point dislocation.
///
/// Y. Okada (1992), Internal deformation due to shear and tensile faults in a half-space, Bull. Seism. Soc. Am. 82(2),
/// 1018-1040. Frame: x along strike, y to its left, z up, the free surface at z = 0, the medium below. Lengths in any
/// common unit; displacements come out in the unit of the dislocations. Angles in degrees.
///
/// dc3d_ and dc3d0_ evaluate the surface part (B) only: at z = 0 the parts A of the source and of its image cancel and
/// part C is multiplied by z. The part routines ua_ to uc0_ are complete, so that the full solution
///     u = uA(image) - uA(source) + uB + z uC
/// can be formed. Each delivers twelve values u[0..11]: three displacements, then their x, y and z derivatives, already
/// divided by 2 pi. The z derivative is d/dz of the observation point at a fixed source.
///
/// Arguments by address. The routines share the blocks below: one thread at a time. A run evaluates the same formulas
/// without blocks, many points at a time (batch/SurfaceBatch.h): it calls none of these.
extern "C" {

/// Medium and dip, set by dccon0_.
struct TidoraBlockC0 {
    double ALP1;  ///< (1 - alpha) / 2
    double ALP2;  ///< alpha / 2
    double ALP3;  ///< (1 - alpha) / alpha
    double ALP4;  ///< 1 - alpha
    double ALP5;  ///< alpha = (lambda + mu) / (lambda + 2 mu)
    double SD;    ///< sine of the dip; 1 or -1 where the cosine is clamped
    double CD;    ///< cosine of the dip; 0 where its size is below 1e-6
    double SDSD, CDCD, SDCD;
    double S2D;  ///< sine of twice the dip
    double C2D;  ///< cosine of twice the dip
};
/// Set by dccon0_, dc3d_ and dc3d0_. Not used by a run.
extern struct TidoraBlockC0
    c0_;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

/// Station geometry of a point source, set by dccon1_. Okada (1992), Tables 2 to 5.
struct TidoraBlockC1 {
    double P, Q, S, T;
    double XY, X2, Y2, D2;
    double R, R2, R3, R5;
    double QR;                      ///< 3 q / R^5
    double QRX;                     ///< 15 q x / R^7
    double A3, A5, B3, C3;          ///< 1 - 3x^2/R^2, 1 - 5x^2/R^2, 1 - 3y^2/R^2, 1 - 3d^2/R^2
    double UY, VY, WY, UZ, VZ, WZ;  ///< U, V, W of Table 4 (y) and U', V', W' of Table 5 (z)
};
/// Set by dccon1_ and dc3d0_. Not used by a run.
extern struct TidoraBlockC1
    c1_;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

/// Station geometry of one corner of a rectangle, set by dccon2_. Okada (1992), Tables 6 to 9.
struct TidoraBlockC2 {
    double XI2, ET2, Q2;
    double R, R2, R3, R5;
    double Y;         ///< eta cos(dip) + q sin(dip)
    double D;         ///< eta sin(dip) - q cos(dip)
    double TT;        ///< Theta = arctan(xi eta / (q R)); 0 where q = 0
    double ALX, ALE;  ///< ln(R + xi), ln(R + eta), or their forms on a negative extension
    double X11, Y11, X32, Y32;
    double EY, EZ, FY, FZ, GY, GZ, HY, HZ;  ///< E, F, G, H of Table 8 (y) and E', F', G', H' of Table 9 (z)
};
/// Set by dccon2_ and dc3d_. Not used by a run.
extern struct TidoraBlockC2
    c2_;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

/// Displacement at a surface point by a finite rectangular source whose reference point lies at (0, 0, -DEPTH).
/// AL1..AL2: extent along strike; AW1..AW2: extent up dip. DISL1, DISL2, DISL3: strike-slip, dip-slip and tensile
/// dislocation. The nine derivatives are always set to 0. IRET: 0; 1 on an edge of the source, all outputs 0; 2 for a
/// positive Z, all outputs 0. Arithmetic in double precision; X - AL1, X - AL2, DEPTH + Z and DEPTH - Z are formed in
/// single precision on purpose, and the results rounded once. Not used by a run.
void dc3d_(const float* ALPHA, const float* X, const float* Y, const float* Z, const float* DEPTH, const float* DIP,
           const float* AL1, const float* AL2, const float* AW1, const float* AW2, const float* DISL1,
           const float* DISL2, const float* DISL3, float* UX, float* UY, float* UZ, float* UXX, float* UYX, float* UZX,
           float* UXY, float* UYY, float* UZY, float* UXZ, float* UYZ, float* UZZ, int* IRET);

/// Displacement at a surface point by a point source at (0, 0, -DEPTH). POT1 to POT4: strike-slip, dip-slip, tensile
/// and inflation potency, dislocation times area. Outputs and IRET as for dc3d_; 1 at the source itself.
/// Not used by a run.
void dc3d0_(const float* ALPHA, const float* X, const float* Y, const float* Z, const float* DEPTH, const float* DIP,
            const float* POT1, const float* POT2, const float* POT3, const float* POT4, float* UX, float* UY, float* UZ,
            float* UXX, float* UYX, float* UZX, float* UXY, float* UYY, float* UZY, float* UXZ, float* UYZ, float* UZZ,
            int* IRET);

/// Fills c0_. A dip whose cosine is below 1e-6 in size becomes exactly vertical. Not used by a run.
void dccon0_(const double* ALPHA, const double* DIP);

/// Fills c1_. X, Y and D below 1e-6 in size are set to 0, in the caller's variables too. At the source itself (R = 0)
/// the fields from R3 on keep their values. Not used by a run.
void dccon1_(double* X, double* Y, double* D);

/// Fills c2_. XI, ET and Q below 1e-6 in size are set to 0, in the caller's variables too. KXI, KET: 1 on the negative
/// extension of an edge, where R + XI or R + ET vanishes. At a corner (R = 0) the fields from R3 on keep their values.
/// Not used by a run.
void dccon2_(double* XI, double* ET, double* Q, const double* SD, const double* CD, const int* KXI, const int* KET);

/// Parts A, B and C of a corner of a rectangle: Okada (1992), Tables 6 to 9. Require c0_ and c2_. Not used by a run.
void ua_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);
void ub_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);
void uc_(const double* XI, const double* ET, const double* Q, const double* Z, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);

/// Parts A, B and C of a point source: Okada (1992), Tables 2 to 5. Require c0_ and c1_. Not used by a run.
void ua0_(const double* X, const double* Y, const double* D, const double* POT1, const double* POT2, const double* POT3,
          const double* POT4, double* U);
void ub0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1, const double* POT2,
          const double* POT3, const double* POT4, double* U);
void uc0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1, const double* POT2,
          const double* POT3, const double* POT4, double* U);
}
