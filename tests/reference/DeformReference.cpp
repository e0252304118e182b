#include "reference/DeformReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>

#include "okada/DC3D.h"
#include "projection/mapproject.h"

namespace tidora::reference {
namespace {

double Wide(float value) {
    return static_cast<double>(value);
}

double Rad(double degrees) {
    return degrees / 180.0 * 3.14159265359;
}

double GreatCircleAngle(const FAULT_PARAM& e, double lon, double lat) {
    const double colat0 = 1.5707963267948966 - Rad(e.org_y);
    const double colat = 1.5707963267948966 - Rad(lat);
    const double delta = Rad(lon - e.org_x);
    const double sin0 = std::cos(colat0), cos0 = std::sin(colat0);
    const double sin1 = std::cos(colat), cos1 = std::sin(colat);
    const double a = sin0 * cos1 * std::cos(delta) - cos0 * sin1;
    const double b = std::sin(delta) * cos1;
    return std::atan2(std::sqrt(a * a + b * b), cos1 * cos0 * std::cos(delta) + sin1 * sin0);
}

float SlopeX(const DeformArguments& a, int ix, int iy) {
    const float* const h = a.topo + ix * a.ny + iy;
    if (a.nx == 1) {
        return 0.0F;
    }
    if (ix == 0) {
        return -(h[a.ny] - h[0]) / a.dx;
    }
    return ix == a.nx - 1 ? -(h[0] - h[-a.ny]) / a.dx : -(h[a.ny] - h[-a.ny]) / (2.0F * a.dx);
}

float SlopeY(const DeformArguments& a, int ix, int iy) {
    const float* const h = a.topo + ix * a.ny + iy;
    if (a.ny == 1) {
        return 0.0F;
    }
    if (iy == 0) {
        return -(h[1] - h[0]) / a.dx;
    }
    return iy == a.ny - 1 ? -(h[0] - h[-1]) / a.dx : -(h[1] - h[-1]) / (2.0F * a.dx);
}

float Share(const DYNAMIC_PARAM& k, double a, double b) {
    const double T = k.validTime, R = k.riseTime;
    if (T == 0.0 && T + R == 0.0) {
        return 1.0F;
    }
    if (a >= T + R) {
        return 0.0F;
    }
    if (T > a && T >= a + b) {
        return 0.0F;
    }
    const double lo = a > T ? a : T;
    const double hi = a + b < T + R ? a + b : T + R;
    if (lo == hi) {
        return 1.0F;
    }
    return hi > lo ? static_cast<float>(Wide(static_cast<float>(hi - lo)) / b) : 0.0F;
}

void AddShares(const FAULT_PARAM& e, const DynamicParam& dyn, const std::vector<float>& field,
               std::vector<InstantVal2d>& out) {
    for (std::size_t k = 0; k < dyn.params.size(); ++k) {
        const float f = Share(dyn.params[k], e.lagtime, e.duration);
        // An interval without a share receives nothing, also where the displacement is not a number.
        for (std::size_t at = 0; f != 0.0F && at < field.size(); ++at) {
            out[k].val[at] += f * field[at];
        }
    }
}

float Largest(const std::vector<InstantVal2d>& out) {
    float largest = 0.0F;
    for (std::uint64_t at = 0; !out.empty() && at < out[0].num; ++at) {
        largest = out[0].val[at] > largest ? out[0].val[at] : largest;
    }
    return largest;
}

}  // namespace

std::vector<std::vector<Evaluation>> DeformReference(const Fault& fault, const DeformArguments& a,
                                                     const DynamicParam& dyn, std::vector<InstantVal2d>& vertOut,
                                                     std::vector<InstantVal2d>& horzOut) {
    const float ALPHA = (a.mu + a.lambda) / (2.0F * a.mu + a.lambda);
    const std::size_t N = fault.elements.size();
    const std::size_t size = static_cast<std::size_t>(a.nx) * static_cast<std::size_t>(a.ny);
    const bool isPlanar = fault.coordType == 0 && a.regionCoordType == 0;
    const bool isGeographic = fault.coordType == 1 && a.regionCoordType == 1;
    const auto gridX = [&a](int ix) { return a.orgX + Wide(static_cast<float>(ix) * a.dx); };
    const auto gridY = [&a](int iy) { return a.orgY + Wide(static_cast<float>(iy) * a.dx); };

    std::vector<std::vector<Evaluation>> evaluated(N);
    std::vector<double> planeX(size), planeY(size);
    float elementMax = 0.0F, sumMax = 0.0F;
    for (std::size_t i = 0; i < N; ++i) {
        const FAULT_PARAM& e = fault.elements[i];
        if (e.slip != 0.0) {
            const double sinRake = std::sin(Rad(e.rake)), cosRake = std::cos(Rad(e.rake));
            const auto sinTheta = static_cast<float>(std::sin(Rad(e.strike - 90.0)));
            const auto cosTheta = static_cast<float>(std::cos(Rad(e.strike - 90.0)));
            double sinDip = std::sin(Rad(e.dip)), cosDip = std::cos(Rad(e.dip));
            if (std::abs(cosDip) < 1e-5) {
                cosDip = 0.0;
                sinDip = sinDip > 0.0 ? 1.0 : -1.0;
            }

            float DF = 3335847.8F, DP = 3335847.8F;
            const bool isSwitched = a.tolerance > 1e-5;
            if (isSwitched) {
                const double L = e.length, W = e.width;
                const auto q =
                    static_cast<float>(std::abs(e.slip) / 6.283185307179586 * static_cast<double>(N) / a.tolerance);
                const float K = (1.0F - ALPHA) / ALPHA;
                const double G1 = ((std::abs(sinDip * sinRake * cosDip) + std::abs(sinDip * cosRake)) * Wide(K) +
                                   std::abs(cosRake) + std::abs(sinRake)) *
                                  10.606601717798211;
                const double G0 = ((cosDip * Wide(K) * sinDip + 1.0) * std::abs(sinRake) +
                                   std::abs(cosRake) * (Wide(K) * sinDip + 1.0)) *
                                  1.5;
                DF = static_cast<float>(0.5 * std::sqrt(L * L + W * W) +
                                        std::pow(G1 * Wide(q) * (L * L) * (W * W) * 0.0625, 0.25));
                DP = static_cast<float>(std::sqrt(G0 * Wide(q) * L * W));
                std::cout << " DC3D  distance[m] : " << DF << std::endl;
                std::cout << " DC3D0 distance[m] : " << DP << std::endl;
            }

            std::vector<unsigned char> mask(size, isPlanar || isGeographic ? 1 : 0);
            double x0 = e.org_x, y0 = e.org_y;
            if (isGeographic) {
                mapproject_initialize_using_longi_(e.org_x);
            }
            const int one = 1;
            for (int ix = 0; ix < a.nx; ++ix) {
                for (int iy = 0; iy < a.ny; ++iy) {
                    const auto at = static_cast<std::size_t>(ix * a.ny + iy);
                    planeX[at] = gridX(ix);
                    planeY[at] = gridY(iy);
                    if (isGeographic) {
                        double lon = gridX(ix), lat = gridY(iy);
                        if (GreatCircleAngle(e, lon, lat) * 6371000.0 > Wide(DP)) {
                            mask[at] = 0;
                            lon = e.org_x;
                            lat = e.org_y;
                        }
                        ll2xy_(&one, &lon, &lat, &planeX[at], &planeY[at]);
                    }
                }
            }
            if (isGeographic) {
                ll2xy_(&one, &e.org_x, &e.org_y, &x0, &y0);
                mapproject_finalize_();
                std::cout << " Fault base point Co-ordinates Translate "
                          << "   lon:" << e.org_x << " lat:" << e.org_y << "     x:" << x0 << "   y:" << y0
                          << std::endl;
            }

            elementMax = 0.0F;
            double depth = e.depth;
            std::vector<float> vertical(size, 0.0F), horizontal(size, 0.0F);
            evaluated[i].assign(size, Evaluation::None);
            for (int ix = 0; ix < a.nx; ++ix) {
                for (int iy = 0; iy < a.ny; ++iy) {
                    const auto at = static_cast<std::size_t>(ix * a.ny + iy);
                    const bool hasPlace = !isGeographic || (std::isfinite(planeX[at]) && std::isfinite(planeY[at]));
                    if (mask[at] == 0 || !hasPlace) {
                        continue;
                    }
                    const auto dxp = static_cast<float>(planeX[at] - x0);
                    const auto dyp = static_cast<float>(planeY[at] - y0);
                    const float Xf = cosTheta * dxp - sinTheta * dyp;
                    const float Yf = sinTheta * dxp + cosTheta * dyp;
                    const auto Xc = static_cast<float>(Wide(Xf) - e.length / 2.0);
                    const auto Yc = static_cast<float>(Wide(Yf) + cosDip * e.width / 2.0);
                    const auto Dc = static_cast<float>(depth + sinDip * e.width / 2.0);
                    const float r = std::sqrt(Xc * Xc + Yc * Yc);
                    if (r > DP) {
                        continue;
                    }
                    if (N > 1) {
                        depth = std::max(0.0, Wide(a.topo[at]) + e.baseOffset);
                    }
                    const float zero = 0.0F, dip = static_cast<float>(e.dip), D = static_cast<float>(depth);
                    float UX = 0.0F, UY = 0.0F, UZ = 0.0F, g[9];
                    int IRET = 0;
                    if (!isSwitched || r <= DF) {
                        const auto AL2 = static_cast<float>(e.length), AW1 = static_cast<float>(-e.width);
                        const auto DISL1 = static_cast<float>(e.slip * cosRake);
                        const auto DISL2 = static_cast<float>(e.slip * sinRake);
                        dc3d_(&ALPHA, &Xf, &Yf, &zero, &D, &dip, &zero, &AL2, &AW1, &zero, &DISL1, &DISL2, &zero, &UX,
                              &UY, &UZ, g, g + 1, g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &IRET);
                        evaluated[i][at] = Evaluation::FiniteSource;
                    } else {
                        const auto POT1 = static_cast<float>(e.slip * cosRake * e.length * e.width);
                        const auto POT2 = static_cast<float>(e.slip * sinRake * e.length * e.width);
                        dc3d0_(&ALPHA, &Xc, &Yc, &zero, &Dc, &dip, &POT1, &POT2, &zero, &zero, &UX, &UY, &UZ, g, g + 1,
                               g + 2, g + 3, g + 4, g + 5, g + 6, g + 7, g + 8, &IRET);
                        evaluated[i][at] = Evaluation::PointSource;
                    }
                    vertical[at] = UZ;
                    elementMax = UZ > elementMax ? UZ : elementMax;
                    if (a.horizontalEffect == 1 && a.topo[at] < -a.horzMinDepth) {
                        const float ue = cosTheta * UX + sinTheta * UY;
                        const float un = -sinTheta * UX + cosTheta * UY;
                        horizontal[at] = ue * SlopeX(a, ix, iy) + un * SlopeY(a, ix, iy);
                    }
                }
            }
            AddShares(e, dyn, vertical, vertOut);
            AddShares(e, dyn, horizontal, horzOut);
            sumMax = Largest(vertOut);
        }
        std::cout << i + 1 << "/" << N << " Completed "
                  << " Max Value Each ELEM. : " << elementMax << " Max Value Sum.: " << sumMax << std::endl;
    }
    return evaluated;
}

}  // namespace tidora::reference
