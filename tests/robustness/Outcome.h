#pragma once

#include <string>
#include <vector>

#include "robustness/LimitedRun.h"
#include "robustness/RunFiles.h"

/// What the program's last error block says.
inline constexpr const char* kParseError = "ERROR:Parameter File Parse";
inline constexpr const char* kFaultError = "ERROR:Read Fault Parameter";
inline constexpr const char* kTopographyError = "ERROR:Read Topography";  // also a series of the initial wave
inline constexpr const char* kDeformError = "ERROR:Deform Topography";
inline constexpr const char* kMapFileError = "ERROR:Write Wave-Breaker Map File";

/// The files of a run of `intervals` starts of the region "bay", in the order in which they are written.
[[nodiscard]] std::vector<std::string> SeriesFilesInOrder(const std::vector<int>& starts = {0});

/// A run ends in one of two ways. Success: status 0, the message of success, nothing on standard error, a complete
/// series. Failure: status 1, nothing but whole error blocks on standard error, the last of them the driver's. In both
/// cases no result is half written, and nothing is left beside the results.
void CheckCleanEnd(const Ending& ending, const RunFolder& folder);

/// A clean end that is a success.
void CheckSuccess(const Ending& ending, const RunFolder& folder);

/// A clean end that is a failure, with `message` in the driver's block. `detail`: a text of a block before it.
void CheckFailure(const Ending& ending, const RunFolder& folder, const std::string& message,
                  const std::string& detail = "");

/// Every file with the name of a result is complete.
void CheckResultsAreWhole(const std::string& outFolder);

/// No file is left that was being written.
void CheckNoPartIsLeft(const std::string& outFolder);
