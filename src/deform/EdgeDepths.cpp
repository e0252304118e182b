#include "deform/EdgeDepths.h"

#include <algorithm>

namespace tidora {

void EdgeDepths::Fill(SourceKind kind, const float* topography, std::size_t count, float* depth) noexcept {
    const bool isPoint = kind == SourceKind::Point;
    const double below = isPoint ? m_below : 0.0;
    if (!m_depth.followsFloor) {
        std::fill_n(depth, count, static_cast<float>(m_last + below));
        return;
    }
    const ColumnPasses& passes = DispatchedKernels<ColumnPassesOf>();
    if (isPoint && !m_depth.hasOwnCentroid) {
        depth[0] = static_cast<float>(m_last + below);
        passes.depths(m_depth.baseOffset, below, topography, count - 1, depth + 1);
    } else {
        passes.depths(m_depth.baseOffset, below, topography, count, depth);
    }
    PassBy(topography[count - 1]);
}

void EdgeDepths::PassBy(float topography) noexcept {
    if (m_depth.followsFloor) {
        m_last = std::max(0.0, static_cast<double>(topography) + m_depth.baseOffset);
    }
}

}  // namespace tidora
