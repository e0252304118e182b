#include "simd/InstructionSet.h"

#include <algorithm>
#include <atomic>
#include <cassert>

namespace tidora {
namespace {

/// Every extension that a set is compiled with is asked for: one that is missing would end the program.
std::vector<InstructionSet> FindInstructionSets() {
    std::vector<InstructionSet> sets = {InstructionSet::Baseline};
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) {
        sets.push_back(InstructionSet::Avx2);
    }
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) {
        sets.push_back(InstructionSet::Avx512);
    }
#endif
    return sets;
}

/// Atomic: kernels run in several threads while a test may choose another set. Made at its first use, so that no order
/// of start-up of the program's parts matters.
std::atomic<InstructionSet>& Current() {
    static std::atomic<InstructionSet> current{AvailableInstructionSets().back()};
    return current;
}

}  // namespace

const char* NameOf(InstructionSet set) noexcept {
    switch (set) {
        case InstructionSet::Baseline:
            return "baseline";
        case InstructionSet::Avx2:
            return "AVX2";
        case InstructionSet::Avx512:
            return "AVX-512";
    }
    return "";  // no other value; compilers want an end
}

const std::vector<InstructionSet>& AvailableInstructionSets() {
    static const std::vector<InstructionSet> sets = FindInstructionSets();
    return sets;
}

InstructionSet CurrentInstructionSet() noexcept {
    return Current();
}

void ForceInstructionSet(InstructionSet set) noexcept {
    assert(std::count(AvailableInstructionSets().begin(), AvailableInstructionSets().end(), set) == 1);
    Current() = set;
}

}  // namespace tidora
