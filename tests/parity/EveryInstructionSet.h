#pragma once

#include <doctest/doctest.h>

#include <string>

#include "simd/InstructionSet.h"

/// Runs `body` once with every instruction set that this machine has, and leaves the best one in use.
template <typename Body>
void ForEachInstructionSet(Body body) {
    for (const tidora::InstructionSet set : tidora::AvailableInstructionSets()) {
        const std::string instructionSet = tidora::NameOf(set);
        CAPTURE(instructionSet);
        tidora::ForceInstructionSet(set);
        body();
    }
    tidora::ForceInstructionSet(tidora::AvailableInstructionSets().back());
}
