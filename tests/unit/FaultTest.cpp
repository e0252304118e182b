// The small members of the class around its file.

#include <string>

#include <doctest/doctest.h>

#include "fault/Fault.h"

using tidora::Fault;

TEST_CASE("a fault takes kind and path from its record and has no elements") {
    const Fault empty;
    CHECK(empty.fileName.empty());
    CHECK(empty.elements.empty());
    const Fault fault(tidora::PARAM_FAULT{1, "dir/fault.txt"});
    CHECK(fault.coordType == 1);
    CHECK(fault.fileName == "dir/fault.txt");
    CHECK(fault.elements.empty());
    CHECK(std::int32_t{Fault::FILE_MAX_PATH} == 1023);
}

TEST_CASE("releasing a fault empties its elements and gives their storage back") {
    Fault fault;
    fault.elements.resize(1000);
    fault.FreeVecMem();
    CHECK(fault.elements.empty());
    CHECK(fault.elements.capacity() == 0);
    CHECK(fault.TempMethod() == 1);
}

struct Replacement {
    std::string why;
    const char* text;
    const char* from;
    const char* to;
    const char* result;
};
const Replacement kReplacements[] = {
    {"every occurrence, left to right", "a-b-c", "-", "+", "a+b+c"},
    {"inserted text is not scanned again", "aa", "a", "aa", "aaaa"},
    {"occurrences do not overlap", "aaa", "aa", "b", "ba"},
    {"text that only the replacement completes is not replaced", "xab", "ab", "b", "xb"},
    {"removal", "a--b", "-", "", "ab"},
    {"nothing to replace", "abc", "x", "y", "abc"},
    {"an empty text", "", "a", "b", ""},
    {"the whole text", "abc", "abc", "", ""},
    {"an empty search text occurs nowhere", "abc", "", "x", "abc"},
    {"at both ends", "-a-", "-", "==", "==a=="},
};

TEST_CASE("replacing text leaves what it inserted alone") {
    for (const Replacement& row : kReplacements) {
        CAPTURE(row.why);
        std::string text = row.text;
        Fault::strReplace(text, row.from, row.to);
        CHECK(text == row.result);
    }
}
