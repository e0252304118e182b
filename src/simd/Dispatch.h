#pragma once

#include "simd/InstructionSet.h"

namespace tidora {

// The lane types, one header each. Only a source that is compiled for an instruction set may include its header: an
// inline function of it, compiled elsewhere, would not have the instructions.
struct PlainLanes;
struct Avx2Lanes;
struct Avx512Lanes;

/// The one place that decides which kernels run: Kernels<Lanes>::kTable of the lanes of the instruction set in use.
/// A room writes its kernels once, as templates over a lane type, puts their addresses into a table, and defines that
/// table in one short source per lane type, compiled for its instructions:
///
///     template <typename Lanes> struct FooKernelsOf { static const FooKernels kTable; };
///     template <> const FooKernels FooKernelsOf<Avx2Lanes>::kTable = MakeFooKernels<Avx2Lanes>();    // FooAvx2.cpp
///     ... DispatchedKernels<FooKernelsOf>().foo(...) ...                                             // anywhere
template <template <typename> class Kernels>
[[nodiscard]] const auto& DispatchedKernels() noexcept {
    if constexpr (kHasAvxKernels) {
        switch (CurrentInstructionSet()) {
            case InstructionSet::Avx512:
                return Kernels<Avx512Lanes>::kTable;
            case InstructionSet::Avx2:
                return Kernels<Avx2Lanes>::kTable;
            case InstructionSet::Baseline:
                break;
        }
    }
    return Kernels<PlainLanes>::kTable;
}

}  // namespace tidora
