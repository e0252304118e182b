// Lines of the text formats: other line ends, none at all, NUL characters, and lengths around the sizes of the buffers.

#include <doctest/doctest.h>

#include <algorithm>

#include "robustness/Outcome.h"
#include "unit/ExpectedText.h"

namespace {

constexpr const char* kTextFiles[] = {"TdrConf.txt", "fault.txt", "topo.txt"};

std::string WithCarriageReturns(const std::string& text) {
    std::string result;
    for (const char character : text) {
        result += character == '\n' ? "\r\n" : std::string(1, character);
    }
    return result;
}

/// Blanks, then `text`: `length` characters and a line end.
std::string Padded(const std::string& text, std::size_t length) {
    return std::string(length - text.size(), ' ') + text + "\n";
}

/// What a line of a certain length does: nothing, or the driver's message.
struct LongLine {
    std::size_t length;
    const char* why;
    const char* message;  ///< null: success
};

void CheckOutcome(const RunFolder& folder, const LongLine& line, const char* detail) {
    CAPTURE(line.length);
    CAPTURE(line.why);
    const Ending ending = RunIn(folder.Path());
    if (line.message == nullptr) {
        CheckSuccess(ending, folder);
    } else {
        CheckFailure(ending, folder, line.message, detail);
    }
}

}  // namespace

TEST_CASE("carriage returns do no harm to numbers and stay part of a name") {
    for (const std::string name : kTextFiles) {
        CAPTURE(name);
        const RunFolder folder;
        folder.Put(name, WithCarriageReturns(FileBytes(folder.At(name))));
        const Ending ending = RunIn(folder.Path());
        if (name == "TdrConf.txt") {
            CheckFailure(ending, folder, kFaultError, "Can not open file.");  // "fault.txt\r" is not there
        } else {
            CheckSuccess(ending, folder);
        }
    }
}

TEST_CASE("a last line needs no line end") {
    for (const std::string name : kTextFiles) {
        CAPTURE(name);
        const RunFolder folder;
        std::string text = FileBytes(folder.At(name));
        text.pop_back();
        folder.Put(name, text);
        CheckSuccess(RunIn(folder.Path()), folder);
    }
}

TEST_CASE("a NUL at the start of a value line of the configuration leaves the line without a value") {
    const std::string whole = Configuration().Text();
    for (std::size_t at = 1, slot = 0; slot < kSlots; ++slot) {
        CAPTURE(slot);
        const RunFolder folder;
        std::string text = whole;
        text[at] = '\0';
        folder.Put("TdrConf.txt", text);
        // The count line has no rule for an empty line: it counts 0 regions.
        const char* const message = slot == kRegionCount ? kTopographyError : kParseError;
        CheckFailure(RunIn(folder.Path()), folder, message);
        at = std::min(whole.find('\n', at) + 2, whole.size() - 1);
    }
}

TEST_CASE("a NUL in a caption means nothing") {
    const RunFolder folder;
    const std::string text = Configuration().Text();
    folder.Put("TdrConf.txt", std::string("cap\0tion", 8) + text);
    CheckSuccess(RunIn(folder.Path()), folder);
}

TEST_CASE("a NUL cuts a data line short there") {
    const RunFolder folder;
    std::string line = FaultLine();
    line[line.find("2 0 0 5")] = '\0';  // the tenth column
    folder.Put("fault.txt", line);
    CheckFailure(RunIn(folder.Path()), folder, kFaultError, "You should check the Format of Fault File.");

    folder.Put("fault.txt", FaultLine());
    std::string grid(kSmallGrid);
    grid[grid.find("-100 -130")] = '\0';
    folder.Put("topo.txt", grid);
    CheckFailure(RunIn(folder.Path()), folder, kTopographyError, "ALL DATA NUM > 0");
}

TEST_CASE("a value line of the configuration is read in pieces of 1022 characters") {
    const LongLine lines[] = {
        {1021, "fits with its line end", nullptr},
        {1022, "its line end is the next caption: the caption is a blank value", kParseError},
        {1023, "its last letter is the next caption: the caption is a blank value", kParseError},
        {1024, "its last letters are the next caption", kParseError},
        {3000, "two pieces over: caption and value, and every later pair stands where it belongs", kParseError},
    };
    for (const LongLine& line : lines) {
        const RunFolder folder;
        const std::string text = Configuration().Text();
        folder.Put("TdrConf.txt", "\n" + Padded("title", line.length) + text.substr(3));
        CheckOutcome(folder, line, "Reading Parameter File Method.");
    }
}

TEST_CASE("a line of a fault file is read in pieces of 1022 characters, each a line of its own") {
    const LongLine lines[] = {
        {1021, "fits with its line end", nullptr},
        {1022, "its line end is an empty line", kFaultError},
        {1023, "its last column is a line of one column", kFaultError},
        {1024, "the same with a blank before it", kFaultError},
    };
    const std::string columns = FaultLine().substr(0, FaultLine().size() - 1);
    for (const LongLine& line : lines) {
        const RunFolder folder;
        folder.Put("fault.txt", Padded(columns, line.length));
        CheckOutcome(folder, line, "You should check the Format of Fault File.");
    }
}

TEST_CASE("a line of a text grid is read in pieces of 8190 characters") {
    const LongLine lines[] = {
        {8189, "fits with its line end", nullptr},
        {8190, "its line end is one value more", kTopographyError},
        {8191, "the last value is cut in two", kTopographyError},
        {8194, "the last value stands in the next piece", nullptr},
    };
    for (const LongLine& line : lines) {
        const RunFolder folder;
        folder.Put("topo.txt", "2 2\n0 0 9 9\n-9 -8\n" + Padded("-7 -100", line.length));
        CheckOutcome(folder, line, "ALL DATA NUM > 0");
    }
}

TEST_CASE("a first line of a text grid beyond the buffer is continued on the second") {
    const LongLine lines[] = {
        {8189, "fits with its line end", nullptr},
        {8190, "its line end is the second line", kTopographyError},
        {8191, "its last digit is the second line", kTopographyError},
    };
    for (const LongLine& line : lines) {
        const RunFolder folder;
        folder.Put("topo.txt", Padded("2 2", line.length) + "0 0 9 9\n-9 -8\n-7 -6\n");
        CheckOutcome(folder, line, "Region File");
    }
}

TEST_CASE("a file of one line without end ends the run cleanly") {
    for (const std::string name : kTextFiles) {
        for (const char filling : {'7', ' ', '#', '-'}) {
            CAPTURE(name);
            CAPTURE(filling);
            const RunFolder folder;
            folder.Put(name, std::string(300000, filling));
            CheckCleanEnd(RunIn(folder.Path()), folder);
        }
    }
}
