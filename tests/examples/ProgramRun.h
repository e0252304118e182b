#pragma once

#include <string>
#include <vector>

#include "unit/ScratchFolder.h"

/// What a run of the program printed, and its exit status: -1 when it did not end by itself.
struct ProgramResult {
    int exitStatus = -1;
    std::string out;
    std::string err;
};

/// Runs the program in `folder` on the configuration file `configuration`, without a shell.
[[nodiscard]] ProgramResult RunProgram(const std::string& folder, const std::string& configuration);

/// A copy of the examples below the build folder, removed at the end of its scope. Results that a user left in an
/// `out` folder are not copied.
class ExampleCopy {
public:
    /// folders: what is copied, relative to the folder of the examples. The first of them is run in.
    explicit ExampleCopy(const std::vector<std::string>& folders);

    /// The folder that is run in.
    [[nodiscard]] const std::string& Folder() const noexcept { return m_folder; }
    /// Path of `name` in that folder.
    [[nodiscard]] std::string At(const std::string& name) const { return m_folder + "/" + name; }
    /// Writes `text` to `name` in that folder.
    void Write(const std::string& name, const std::string& text) const;
    [[nodiscard]] ProgramResult Run(const std::string& configuration) const {
        return RunProgram(m_folder, configuration);
    }

private:
    ScratchFolder m_scratch;
    std::string m_folder;
};

/// A copy of an example in which one configuration has been run.
struct ExampleRun {
    ExampleRun(const std::vector<std::string>& folders, const std::string& configuration);

    ExampleCopy copy;
    ProgramResult result;
};

/// Number of lines of `text` that begin with `start`.
[[nodiscard]] int CountLinesFrom(const std::string& text, const std::string& start);

/// Number of lines "i/count Completed ...", i from 1 on, in this order; lines of other shape do not matter. Several
/// regions give several such sequences.
[[nodiscard]] int CountProgressLines(const std::string& text, int elementCount);

/// Names of the files in `folder`, sorted.
[[nodiscard]] std::vector<std::string> FileNames(const std::string& folder);
