#include "reference/KajiuraReference.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace tidora::reference {
namespace {

double Wide(float value) {
    return static_cast<double>(value);
}

/// Bilinear value at (px, py); false where the grid has no whole cell there.
bool Sample(const ReferenceGrid& grid, const float* w, float px, float py, float& eta) {
    const double ci = std::floor((Wide(px) - grid.orgX) / Wide(grid.dx));
    if (!(ci >= 0.0 && ci + 1.0 < grid.nx)) {
        return false;
    }
    const double cj = std::floor((Wide(py) - grid.orgY) / Wide(grid.dx));
    if (!(cj >= 0.0 && cj + 1.0 < grid.ny)) {
        return false;
    }
    const float t = (px - static_cast<float>(grid.orgX + Wide(static_cast<float>(ci) * grid.dx))) / grid.dx;
    const float u = (py - static_cast<float>(grid.orgY + Wide(static_cast<float>(cj) * grid.dx))) / grid.dx;
    const auto ny = static_cast<std::size_t>(grid.ny);
    const std::size_t at = static_cast<std::size_t>(ci) * ny + static_cast<std::size_t>(cj);
    const double products = (1.0 - Wide(t)) * (1.0 - Wide(u)) * Wide(w[at]) +
                            Wide(t) * (1.0 - Wide(u)) * Wide(w[at + ny]) + (1.0 - Wide(t)) * Wide(u) * Wide(w[at + 1]);
    eta = static_cast<float>(products + Wide(t * u * w[at + ny + 1]));
    return true;
}

}  // namespace

void KajiuraReference(const ReferenceGrid& grid, const float* depth, int parentNo, const ReferenceGrid& parent,
                      const std::vector<InstantVal2d>& parentA, const std::vector<InstantVal2d>& parentB,
                      std::vector<InstantVal2d>& instants) {
    for (std::size_t k = 0; k < instants.size(); ++k) {
        float* const result = instants[k].val;
        const std::vector<float> work(result, result + instants[k].num);
        std::vector<float> parentWork;
        if (parentNo >= 1) {
            for (std::uint64_t at = 0; at < parentA[k].num; ++at) {
                parentWork.push_back(parentB[k].val[at] + parentA[k].val[at]);
            }
        }
        for (int ix = 0; ix < grid.nx; ++ix) {
            for (int iy = 0; iy < grid.ny; ++iy) {
                const int at = ix * grid.ny + iy;
                const float h = depth[at];
                if (!(h < -10.0F)) {
                    continue;
                }
                const float d = -h;
                const float s = 0.25F * d;
                const auto x = static_cast<float>(grid.orgX + Wide(static_cast<float>(ix) * grid.dx));
                const auto y = static_cast<float>(grid.orgY + Wide(static_cast<float>(iy) * grid.dx));
                float sum = 0.0F;
                for (int i = -20; i <= 20; ++i) {
                    for (int j = -20; j <= 20; ++j) {
                        const auto q = static_cast<float>(i * i + j * j);
                        if (q > 400.0F) {
                            continue;
                        }
                        const float px = static_cast<float>(i) * s + x;
                        const float py = static_cast<float>(j) * s + y;
                        float eta = 0.0F;
                        if (!Sample(grid, work.data(), px, py, eta) && parentNo >= 1 &&
                            !Sample(parent, parentWork.data(), px, py, eta)) {
                            eta = 0.0F;
                        }
                        const float r2 = s * s * q;
                        float G = 0.0F;
                        for (int n = 0; n <= 10; ++n) {
                            const float c = static_cast<float>(n % 2 == 0 ? 2 * n + 1 : -(2 * n + 1));
                            const float xn = (c * d) * (c * d) + r2;
                            G += c / (xn * std::sqrt(xn));
                        }
                        sum += ((eta * G) * s) * s;
                    }
                }
                result[at] = static_cast<float>(Wide(sum * d) / 3.141592653589793);
            }
        }
    }
}

}  // namespace tidora::reference
