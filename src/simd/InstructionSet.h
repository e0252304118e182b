#pragma once

#include <vector>

namespace tidora {

/// Instruction sets for which the kernels are compiled. One executable holds them all and picks the best that the
/// machine has, when it runs.
enum class InstructionSet {
    Baseline,  ///< what the compiler was told to assume: SSE2 on x86-64, NEON on arm64; PlainLanes
    Avx2,      ///< AVX2 and FMA; Avx2Lanes
    Avx512,    ///< AVX-512 F, CD, DQ, BW and VL; Avx512Lanes
};

/// True where the kernels of Avx2Lanes and Avx512Lanes are built.
#ifdef __x86_64__
inline constexpr bool kHasAvxKernels = true;
#else
inline constexpr bool kHasAvxKernels = false;
#endif

[[nodiscard]] const char* NameOf(InstructionSet set) noexcept;

/// The sets that this executable was built with and this machine has, best last. Never empty.
[[nodiscard]] const std::vector<InstructionSet>& AvailableInstructionSets();

/// The set in use: the best one, unless a test or a benchmark has chosen another.
[[nodiscard]] InstructionSet CurrentInstructionSet() noexcept;

/// For tests and benchmarks alone: the program itself has no switch. Requires: `set` is available.
void ForceInstructionSet(InstructionSet set) noexcept;

}  // namespace tidora
