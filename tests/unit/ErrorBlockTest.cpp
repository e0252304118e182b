#include <sstream>

#include <doctest/doctest.h>

#include "support/ErrorBlock.h"
#include "unit/ExpectedText.h"

TEST_CASE("an error block is a frame around its object and a line a detail") {
    std::ostringstream err;
    tidora::ReportError(err, "REGION OBJECT METHOD", {"First.", "Second > 5"});
    CHECK(err.str() ==
          "_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/\n"
          "ERROR:REGION OBJECT METHOD\n"
          "  ERROR-DETAIL:First.\n"
          "  ERROR-DETAIL:Second > 5\n"
          "_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/_/\n");
    CHECK(tidora::kErrorFrame == kFrameLine);
}

TEST_CASE("an error block without details is its object between two frames") {
    std::ostringstream err;
    tidora::ReportError(err, "X", {});
    CHECK(err.str() == std::string(kFrameLine) + "\nERROR:X\n" + std::string(kFrameLine) + "\n");
}
