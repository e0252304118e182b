#include <doctest/doctest.h>

#include <algorithm>

#include "parity/WrongQuotients.h"
#include "support/InstructionSet.h"

namespace {

bool HasSet(tidora::InstructionSet set) {
    const auto& sets = tidora::AvailableInstructionSets();
    return std::find(sets.begin(), sets.end(), set) != sets.end();
}

}  // namespace

TEST_CASE("the quotients of the filter are those of a division, whatever the digits of the divisor") {
    if (HasSet(tidora::InstructionSet::Avx2)) {
        CHECK(WrongQuotientsAvx2() == 0);
    }
    if (HasSet(tidora::InstructionSet::Avx512)) {
        CHECK(WrongQuotientsAvx512() == 0);
    }
}
