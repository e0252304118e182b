#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// A folder of its own with a text grid of 1500 by 1500 values, lines of 500 of them, and a run over it whose only
/// element does not slip. Removed at the end.
class TextRun {
public:
    /// Throws std::runtime_error when the folder cannot be made.
    TextRun();
    ~TextRun();
    TextRun(const TextRun&) = delete;
    TextRun& operator=(const TextRun&) = delete;

    /// The values in the order of the file, by fgets, strtok and strtod.
    [[nodiscard]] std::vector<float> ValuesByStrtod() const;
    /// The same by the program's reader.
    [[nodiscard]] std::vector<float> ValuesByReader() const;

    /// Processor time, s, of the program over the grid, and of "wc -w" on its file. Each call is a process.
    [[nodiscard]] std::function<double()> ProgramTime() const;
    [[nodiscard]] std::function<double()> WordCountTime() const;

private:
    std::string m_folder, m_grid;
};

}  // namespace bench
