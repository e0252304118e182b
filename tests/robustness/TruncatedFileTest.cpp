// Each file that a run reads, cut off behind every one of its bytes. The whole file is the last prefix.

#include <doctest/doctest.h>

#include <algorithm>
#include <cctype>

#include "robustness/Outcome.h"
#include "unit/ExpectedText.h"

namespace {

/// Words separated by blanks or line ends.
std::size_t WordsIn(const std::string& text) {
    std::size_t words = 0;
    bool isInside = false;
    for (const char character : text) {
        const bool isBlank = std::isspace(static_cast<unsigned char>(character)) != 0;
        words += !isBlank && !isInside ? 1U : 0U;
        isInside = !isBlank;
    }
    return words;
}

}  // namespace

TEST_CASE("a configuration cut off anywhere before its last value has the wrong format") {
    const RunFolder folder;
    // Short, since every byte is a run: no band, and names of one letter.
    const std::string whole = Configuration()
                                  .Set(kFaultFile, "f")
                                  .Set(kBandMode, "0")
                                  .Set(kBandHeight, "0")
                                  .Set(kBandWidth, "1")
                                  .Set(kTopography, "g")
                                  .Text();
    folder.Put("f", FaultLine());
    folder.Put("g", kSmallGrid);
    const std::size_t lastValue = whole.size() - 2;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        CAPTURE(length);
        folder.Remove("out");
        folder.Put("TdrConf.txt", whole.substr(0, length));
        const Ending ending = RunIn(folder.Path());
        if (length <= lastValue) {
            CheckFailure(ending, folder, kParseError, "Reading Parameter File Method.");
            CHECK(Contains(ending.out, " *** Conf File Format Error *** \n"));
        } else {
            CheckSuccess(ending, folder);
        }
    }
}

TEST_CASE("a fault file cut off within a line has the wrong format until ten columns are there") {
    const RunFolder folder;
    const std::string whole = "1 1 9 9 1 45 90 9 9 1 0 5 9\n";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        CAPTURE(length);
        folder.Remove("out");
        const std::string part = whole.substr(0, length);
        folder.Put("fault.txt", part);
        const Ending ending = RunIn(folder.Path());
        const std::size_t columns = WordsIn(part);
        if (columns > 0 && columns < 10) {
            CheckFailure(ending, folder, kFaultError, "You should check the Format of Fault File.");
        } else {
            CheckSuccess(ending, folder);
        }
    }
}

TEST_CASE("a text grid cut off anywhere before its last value is refused") {
    const RunFolder folder;
    const std::string whole = "2 2\n0 0 9 9\n-9 -8\n-7 -6\n";
    const std::size_t lastValue = whole.size() - 3;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        CAPTURE(length);
        folder.Remove("out");
        const std::string part = whole.substr(0, length);
        folder.Put("topo.txt", part);
        const Ending ending = RunIn(folder.Path());
        const std::size_t words = WordsIn(part);
        if (length > lastValue) {
            CheckSuccess(ending, folder);
            continue;
        }
        // A header line that lacks words is a broken header; whole ones with too few values behind are a wrong count.
        const bool isHeaderBroken = words == 1 || (words > 2 && words < 6);
        CheckFailure(ending, folder, kTopographyError, isHeaderBroken ? "Region File > topo.txt" : "ALL DATA NUM > 0");
        CHECK(Contains(ending.err, "ALL DATA NUM > 0") != isHeaderBroken);
    }
}

TEST_CASE("a binary grid cut off anywhere is refused") {
    const RunFolder folder;
    folder.Put(Configuration().Set(kTopography, "topo.bin"));
    const std::string whole = BinaryGrid(0, 0, 2, 2, 1000);
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        CAPTURE(length);
        folder.Put("topo.bin", whole.substr(0, length));
        const Ending ending = RunIn(folder.Path());
        if (length < whole.size()) {
            CheckFailure(ending, folder, kTopographyError, "ALL DATA NUM > 0");
            CHECK_FALSE(FileExists(folder.At("out")));
        } else {
            CheckSuccess(ending, folder);
        }
    }
}
