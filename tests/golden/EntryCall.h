#pragma once

#include <array>

namespace tidora::golden {

/// What dc3d_ and dc3d0_ leave behind.
struct EntryResult {
    std::array<float, 3> u{};
    std::array<float, 9> derivatives{};
    int iret = -1;

    [[nodiscard]] bool operator==(const EntryResult& other) const {
        return u == other.u && derivatives == other.derivatives && iret == other.iret;
    }
};

/// The result of a point where the routine gives none: zeros and the code.
[[nodiscard]] inline EntryResult ZerosWith(int iret) {
    EntryResult result;
    result.iret = iret;
    return result;
}

/// Arguments of dc3d_.
struct FiniteCall {
    float alpha = 2.0F / 3.0F;
    float x = 0.0F, y = 0.0F, z = 0.0F;
    float depth = 0.0F, dip = 0.0F;
    float al1 = 0.0F, al2 = 0.0F, aw1 = 0.0F, aw2 = 0.0F;
    std::array<float, 3> slip = {1.0F, 1.0F, 1.0F};
};

/// Arguments of dc3d0_.
struct PointCall {
    float alpha = 2.0F / 3.0F;
    float x = 0.0F, y = 0.0F, z = 0.0F;
    float depth = 0.0F, dip = 0.0F;
    std::array<float, 4> potency = {1.0F, 1.0F, 1.0F, 1.0F};
};

/// Calls the routine. Every output holds 7 before the call.
[[nodiscard]] EntryResult Call(const FiniteCall& arguments);
[[nodiscard]] EntryResult Call(const PointCall& arguments);

}  // namespace tidora::golden
