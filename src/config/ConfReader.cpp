#include "config/ConfReader.h"

#include <cstddef>
#include <iostream>
#include <optional>
#include <utility>

#include "support/ErrorBlock.h"
#include "support/TextLines.h"

namespace tidora {
namespace {

constexpr const char* kConfDelimiters = " \t\n";
constexpr int kGlobalPairs = 10;
constexpr int kRegionPairs = 5;

/// The caption and value pairs of an open configuration file.
class PairReader {
public:
    explicit PairReader(std::FILE* file) : m_lines(file, ConfReader::FILE_MAX_PATH) {}

    /// Reads a caption, which is ignored, and the value line behind it. Null at end of file.
    [[nodiscard]] const char* NextValueLine() { return m_lines.Next() && m_lines.Next() ? m_lines.Line() : nullptr; }

    /// Appends the first token of every value line of `pairs` pairs to `values` and echoes it. A value line that starts
    /// with "#" gives no value: the later ones move up. False at end of file and at a value line without a token.
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
            std::cout << tokens.front() << std::endl;
            values.push_back(std::move(tokens.front()));
        }
        return true;
    }

private:
    BoundedLineReader m_lines;
};

/// Hands out the values of a block in order and remembers whether one was missing.
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
    const std::string* Next() { return m_next++ < m_values.size() ? &m_values[m_next - 1] : nullptr; }

    std::vector<std::string> m_values;
    std::size_t m_next = 0;
};

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

/// The number of region blocks, or nothing at end of file. The whole line is converted; "#" and blanks have no meaning.
std::optional<int> ReadRegionCount(PairReader& pairs) {
    const char* const line = pairs.NextValueLine();
    return line == nullptr ? std::nullopt : std::make_optional(LenientInt(line));
}

/// Reads one region block into `regions`; of two regions with one number the first is kept. A block that the end of the
/// file cuts short leaves a record as it starts out, under number 0.
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

bool ReadConfFile(ConfReader& conf) {
    FileHandle file = OpenForReading(conf.confFile, "r");
    if (!file) {
        return false;
    }
    std::cout << ">>>>>>>>> Read Conf File : " << conf.confFile << std::endl;
    PairReader pairs(file.get());
    const bool isComplete = ReadBlocks(pairs, conf);
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
