#include "config/ConfReader.h"

#include <cstddef>
#include <iostream>
#include <optional>
#include <utility>

#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

// The format is positional: ten global values, the number of regions, five values per region. A value is known by its
// place alone; the captions are for people.

/// The line end separates here, unlike in the data files: a path or a name must not carry one.
constexpr const char* kConfDelimiters = " \t\n";
constexpr int kGlobalPairs = 10;  ///< spare text to band width; the number of regions is a pair of its own kind
constexpr int kRegionPairs = 5;   ///< number, name, parent, kind of co-ordinates, topography file

/// The caption and value pairs of an open configuration file, which it borrows. A line beyond the buffer goes on as the
/// next one, and from there on captions and values have changed places.
/// Test: "a line longer than 1022 characters is read in two pieces and shifts the pairing by one line".
class PairReader {
public:
    explicit PairReader(std::FILE* file) : m_lines(file, ConfReader::FILE_MAX_PATH) {}

    /// Reads a caption and the value line after it. Null at end of file. A caption may hold anything, also "#": it is
    /// not looked at. Test: "a caption is ignored whatever it contains".
    [[nodiscard]] const char* NextValueLine() { return m_lines.Next() && m_lines.Next() ? m_lines.Line() : nullptr; }

    /// Appends the first token of every value line of `pairs` pairs to `values` and echoes it; the rest of the line is
    /// free for a unit or a remark. False at end of file and at a value line without a token.
    ///
    /// Kept on purpose: a value line that starts with "#" gives no value, so that the later ones move up and the last
    /// slots of the block are empty. Test: "a value line that starts with # shifts every later global value one slot up
    /// and leaves the block short".
    [[nodiscard]] bool ReadBlock(int pairs, std::vector<std::string>& values) {
        for (int pair = 0; pair < pairs; ++pair) {
            const char* const line = NextValueLine();
            if (line == nullptr) {
                return false;
            }
            if (m_lines.IsComment()) {
                continue;
            }
            std::vector<std::string> tokens = Tokens(line, kConfDelimiters);
            if (tokens.empty()) {
                return false;
            }
            // Flushed, so that the error block on the other stream follows the last value that was read.
            std::cout << tokens.front() << std::endl;
            values.push_back(std::move(tokens.front()));
        }
        return true;
    }

private:
    BoundedLineReader m_lines;
};

/// Hands out the values of a block in order. One that is missing leaves its target alone; whether there was one is
/// asked once, at the end, so that a reader is a plain list of its slots.
class ValueSlots {
public:
    explicit ValueSlots(std::vector<std::string> values) : m_values(std::move(values)) {}

    void Take(std::string& target) {
        if (const std::string* value = Next()) {
            target = *value;
        }
    }
    void Take(int& target) {
        if (const std::string* value = Next()) {
            target = LenientInt(value->c_str());
        }
    }
    void Take(double& target) {
        if (const std::string* value = Next()) {
            target = LenientDouble(value->c_str());
        }
    }
    [[nodiscard]] bool AllThere() const noexcept { return m_next <= m_values.size(); }

private:
    /// Counts on beyond the last value: that is how AllThere() knows.
    const std::string* Next() { return m_next++ < m_values.size() ? &m_values[m_next - 1] : nullptr; }

    std::vector<std::string> m_values;
    std::size_t m_next = 0;
};

/// Values 1 to 10, in file order. Nothing is converted when the file ends within them; when values are missing, those
/// before them are, but no fault is added: a reader has one fault, or failed.
bool ReadGlobalBlock(PairReader& pairs, ConfReader& conf) {
    std::vector<std::string> values;
    if (!pairs.ReadBlock(kGlobalPairs, values)) {
        return false;
    }
    ValueSlots slots(std::move(values));
    PARAM_FAULT fault;
    slots.Take(conf.spareText);
    slots.Take(conf.outDir);
    slots.Take(conf.calcDistance);
    slots.Take(conf.horizontalEffect);
    slots.Take(conf.kajiuraFilter);
    slots.Take(fault.coordType);
    slots.Take(fault.faultFile);
    slots.Take(conf.linear.mode);
    slots.Take(conf.linear.height);
    slots.Take(conf.linear.diameter);
    if (!slots.AllThere()) {
        return false;
    }
    conf.faults.push_back(std::move(fault));
    return true;
}

/// The number of region blocks, or nothing at end of file. The whole line is converted, so that "#" means nothing here,
/// and a line without a number announces no region. It is not echoed.
/// Test: "the count line is converted as a whole and leniently and what it does not announce is not read".
std::optional<int> ReadRegionCount(PairReader& pairs) {
    const char* const line = pairs.NextValueLine();
    return line == nullptr ? std::nullopt : std::make_optional(LenientInt(line));
}

/// Reads one region block into `regions`; of two regions with one number the first is kept.
///
/// Kept on purpose: a block that the end of the file cuts short leaves a record as it starts out, under number 0. Test:
/// "a file that ends in the middle of the third of four region blocks keeps the regions read so far".
bool ReadRegionBlock(PairReader& pairs, std::map<int, PARAM_REGION>& regions) {
    PARAM_REGION region;
    std::vector<std::string> values;
    const bool isWhole = pairs.ReadBlock(kRegionPairs, values);
    ValueSlots slots(std::move(values));
    if (isWhole) {
        slots.Take(region.no);
        slots.Take(region.name);
        slots.Take(region.parentNo);
        slots.Take(region.coordType);
        slots.Take(region.topoFile);
    }
    regions.emplace(region.no, region);
    return isWhole && slots.AllThere();
}

/// A count of 0 or less reads no region; one that is too large costs nothing, as the end of the file ends the loop.
/// Tests: "a region count of -3 is a success when the 22 lines before it are there and the file ends with it",
/// "a count of two thousand million regions that are not there fails at once".
bool ReadBlocks(PairReader& pairs, ConfReader& conf) {
    if (!ReadGlobalBlock(pairs, conf)) {
        return false;
    }
    const std::optional<int> regionCount = ReadRegionCount(pairs);
    if (!regionCount) {
        return false;
    }
    for (int n = 0; n < *regionCount; ++n) {
        if (!ReadRegionBlock(pairs, conf.regions)) {
            return false;
        }
    }
    return true;
}

/// Opens, reads and closes. A file that cannot be opened gives no heading, so that the heading says a file was there.
bool ReadConfFile(ConfReader& conf) {
    FileHandle file = OpenForReading(conf.confFile, "r");
    if (!file) {
        return false;
    }
    std::cout << ">>>>>>>>> Read Conf File : " << conf.confFile << std::endl;
    PairReader pairs(file.get());
    const bool isComplete = ReadBlocks(pairs, conf);
    // Closed by hand: a close that fails shows a read that failed, and is the format error too.
    const bool isClosed = std::fclose(file.release()) == 0;
    if (!isComplete || !isClosed) {
        std::cout << " *** Conf File Format Error *** " << std::endl;
    }
    return isComplete && isClosed;
}

}  // namespace

ConfReader::ConfReader(std::string path) : confFile(std::move(path)) {}

bool ConfReader::readParam() {
    if (ReadConfFile(*this)) {
        return true;
    }
    ReportError(std::cerr, "PARAMETER FILE IS INCONSISTENCY", {"Abnormal action at Reading Parameter File Method."});
    return false;
}

}  // namespace tidora
