#pragma once

#include <string>

#include "fault/Fault.h"

/// What reading a fault file leaves behind.
struct FaultReading {
    int result = -1;
    tidora::Fault fault;
    std::string out;  ///< standard output
    std::string err;  ///< standard error

    /// Reads the file that `fault` names, and keeps what is printed.
    void Read();
};

/// Reads the fault file at `path`.
[[nodiscard]] FaultReading ReadFaultFile(const std::string& path);

/// Writes `text` to a fault file and reads it.
[[nodiscard]] FaultReading ReadFault(const std::string& text);

/// First line of every read on standard output, with the empty line before it.
[[nodiscard]] std::string FaultHeading(const FaultReading& reading);

/// The block of a fault file with a line of too few tokens.
[[nodiscard]] std::string FaultFormatBlock();

inline const std::string kFaultCompleted = "<<<<<<<<<<<<<<<<<< Completed Fault Input.\n";

/// A data line of ten columns, without its line end; the slip is 12.5.
inline const std::string kTenNumbers = "38.5 143.25 100 5000 200 10 90 300000 150000 12.5";
