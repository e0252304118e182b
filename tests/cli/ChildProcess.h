#pragma once

#include <string>
#include <vector>

/// What a program left behind when it ended.
struct ProcessResult {
    std::string status;  ///< "0", "1", ...; "signal N"; "no end within N min"
    std::string out;
    std::string err;
};

/// Runs `program` with `arguments` in `folder`, without a shell and without input. Its two output streams go to the
/// files `out` and `err` and come back as text. A program that does not end in time is killed. Throws
/// std::runtime_error when the program cannot be started.
[[nodiscard]] ProcessResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                                       const std::string& folder, const std::string& out, const std::string& err);

/// All bytes of a file. Throws std::runtime_error when it cannot be read.
[[nodiscard]] std::string FileBytes(const std::string& path);
