// One more source for the program, for comparisons alone: chooses the instruction set before main() starts, by the
// number in TIDORA_COMPARE_SET (0 is the plainest). "list" prints the names of the sets, one a line, and ends.
// The program itself reads no environment variable and has no such switch.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#if __has_include("simd/InstructionSet.h")
#include "simd/InstructionSet.h"
#else
#include "support/InstructionSet.h"
#endif

namespace {

// Apart from the statuses of the program, which are 0 and 1.
constexpr int kNoSuchSet = 99;

struct ChosenSet {
    ChosenSet() noexcept {
        const char* const wanted = std::getenv("TIDORA_COMPARE_SET");
        if (wanted == nullptr) {
            std::fputs("TIDORA_COMPARE_SET is not there\n", stderr);
            std::_Exit(kNoSuchSet);
        }
        const auto& sets = tidora::AvailableInstructionSets();
        if (std::strcmp(wanted, "list") == 0) {
            for (const auto set : sets) {
                std::puts(tidora::NameOf(set));
            }
            std::fflush(stdout);
            std::_Exit(0);
        }
        const unsigned long number = std::strtoul(wanted, nullptr, 10);
        if (number >= sets.size()) {
            std::fprintf(stderr, "no instruction set %s here\n", wanted);
            std::_Exit(kNoSuchSet);
        }
        tidora::ForceInstructionSet(sets[number]);
        if (tidora::CurrentInstructionSet() != sets[number]) {
            std::fprintf(stderr, "instruction set %s is not in use\n", wanted);
            std::_Exit(kNoSuchSet);
        }
    }
};

const ChosenSet chosenSet;

}  // namespace
