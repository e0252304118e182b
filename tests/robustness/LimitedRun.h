#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

/// What surrounds a run of the program, beside its folder.
struct Surroundings {
    std::optional<std::uint64_t> largestFile;  ///< bytes; a write beyond them fails
    bool isKilledByLargeFile = false;          ///< such a write ends the program by a signal instead
    bool isOrdinaryUser = false;               ///< what file modes forbid is forbidden
    bool hasStreams = true;                    ///< false: standard input, output and error are closed
};

/// How a run ended.
struct Ending {
    std::string status;  ///< "0", "1", ...; "signal N"; "no end within N min"
    std::string out;
    std::string err;
};

/// The program under test, running on "TdrConf.txt" of a folder: without a shell, within limits of processor time and
/// (where no sanitizer needs the address space) of memory, its two streams behind pipes.
class RunningProgram {
public:
    /// Throws std::runtime_error when no process can be started.
    explicit RunningProgram(const std::string& folder, const Surroundings& surroundings = {});
    /// Ends the process if it still runs.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Waits until standard output holds `text` for the `count`-th time. False when the output or the time ends first.
    [[nodiscard]] bool WaitForOutput(const std::string& text, int count = 1);
    void Send(int signalNumber) const;
    /// From here on nobody reads what the program prints.
    void StopReading();
    /// Waits for the end.
    [[nodiscard]] Ending End();

private:
    bool ReadMore();

    pid_t m_process = -1;
    int m_out = -1;
    int m_err = -1;
    Ending m_ending;
};

/// A whole run.
[[nodiscard]] Ending RunIn(const std::string& folder, const Surroundings& surroundings = {});

/// Whether a run can be denied what file modes forbid. Prints the reason when not.
[[nodiscard]] bool CanRunAsOrdinaryUser();
