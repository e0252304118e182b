#pragma once

/// @file
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
    double SDSD;  ///< SD SD
    double CDCD;  ///< CD CD
    double SDCD;  ///< SD CD
    double S2D;   ///< sine of twice the dip
    double C2D;   ///< cosine of twice the dip
};
/// Set by dccon0_, dc3d_ and dc3d0_. Not used by a run.
extern struct TidoraBlockC0
    c0_;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

/// Station geometry of a point source, set by dccon1_. Okada (1992), Tables 2 to 5.
struct TidoraBlockC1 {
    double P;    ///< y cos(dip) + d sin(dip)
    double Q;    ///< y sin(dip) - d cos(dip)
    double S;    ///< p sin(dip) + q cos(dip)
    double T;    ///< p cos(dip) - q sin(dip)
    double XY;   ///< x y
    double X2;   ///< x^2
    double Y2;   ///< y^2
    double D2;   ///< d^2
    double R;    ///< distance from the source
    double R2;   ///< R^2
    double R3;   ///< R^3
    double R5;   ///< R^5
    double QR;   ///< 3 q / R^5
    double QRX;  ///< 15 q x / R^7
    double A3;   ///< 1 - 3 x^2 / R^2
    double A5;   ///< 1 - 5 x^2 / R^2
    double B3;   ///< 1 - 3 y^2 / R^2
    double C3;   ///< 1 - 3 d^2 / R^2
    double UY;   ///< U of Table 4
    double VY;   ///< V of Table 4
    double WY;   ///< W of Table 4
    double UZ;   ///< U' of Table 5
    double VZ;   ///< V' of Table 5
    double WZ;   ///< W' of Table 5
};
/// Set by dccon1_ and dc3d0_. Not used by a run.
extern struct TidoraBlockC1
    c1_;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): the interface is such a block

/// Station geometry of one corner of a rectangle, set by dccon2_. Okada (1992), Tables 6 to 9.
struct TidoraBlockC2 {
    double XI2;  ///< xi^2
    double ET2;  ///< eta^2
    double Q2;   ///< q^2
    double R;    ///< distance from the corner
    double R2;   ///< R^2
    double R3;   ///< R^3
    double R5;   ///< R^5
    double Y;    ///< eta cos(dip) + q sin(dip)
    double D;    ///< eta sin(dip) - q cos(dip)
    double TT;   ///< Theta = arctan(xi eta / (q R)); 0 where q = 0
    double ALX;  ///< ln(R + xi); -ln(R - xi) on the negative extension, where X11 and X32 are 0
    double ALE;  ///< ln(R + eta); -ln(R - eta) on the negative extension, where Y11 and Y32 are 0
    double X11;  ///< 1 / (R (R + xi))
    double Y11;  ///< 1 / (R (R + eta))
    double X32;  ///< (2 R + xi) / (R^3 (R + xi)^2)
    double Y32;  ///< (2 R + eta) / (R^3 (R + eta)^2)
    double EY;   ///< E of Table 8
    double EZ;   ///< E' of Table 9
    double FY;   ///< F of Table 8
    double FZ;   ///< F' of Table 9
    double GY;   ///< G of Table 8
    double GZ;   ///< G' of Table 9
    double HY;   ///< H of Table 8
    double HZ;   ///< H' of Table 9
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

/// Part A of a corner of a rectangle: Okada (1992), Tables 6 to 9. Requires c0_ and c2_. Not used by a run.
void ua_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);
/// Part B of a corner. Requires c0_ and c2_. Not used by a run.
void ub_(const double* XI, const double* ET, const double* Q, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);
/// Part C of a corner. Requires c0_ and c2_. Not used by a run.
void uc_(const double* XI, const double* ET, const double* Q, const double* Z, const double* DISL1, const double* DISL2,
         const double* DISL3, double* U);

/// Part A of a point source: Okada (1992), Tables 2 to 5. Requires c0_ and c1_. Not used by a run.
void ua0_(const double* X, const double* Y, const double* D, const double* POT1, const double* POT2, const double* POT3,
          const double* POT4, double* U);
/// Part B of a point source. Requires c0_ and c1_. Not used by a run.
void ub0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1, const double* POT2,
          const double* POT3, const double* POT4, double* U);
/// Part C of a point source. Requires c0_ and c1_. Not used by a run.
void uc0_(const double* X, const double* Y, const double* D, const double* Z, const double* POT1, const double* POT2,
          const double* POT3, const double* POT4, double* U);
}
